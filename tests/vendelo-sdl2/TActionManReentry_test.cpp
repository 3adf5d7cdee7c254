#include "tests/vendelo-sdl2/TActionManFixture.h"

using namespace bustest;

namespace {

// Handlers that change the bus while they run.

TEST(ActionReentry, AHandlerThatDeletesItselfLivesToTheEndOfItsRun) {
  Bus bus;
  int deaths = 0;
  auto* handler = new Mortal(deaths, Handler::ahtExecuteEndless);
  handler->onRun = [&] {
    bus.UnregisterAllActionHandlers(handler, true);
    EXPECT_EQ(deaths, 0);
  };
  bus.AddActionListener("abcd", handler, ACTION_NORMAL);
  bus.listen("abcd", "next");
  EXPECT_EQ(bus.fire("abcd"), "next");
  EXPECT_EQ(deaths, 1);
}

TEST(ActionReentry, AHandlerThatDeletesTheNextOneSkipsIt) {
  Bus bus;
  int deaths = 0;
  auto* first = new Mortal(deaths, Handler::ahtExecuteEndless);
  auto* second = new Mortal(deaths, Handler::ahtExecuteEndless);
  first->onRun = [&] { bus.UnregisterAllActionHandlers(second, true); };
  bus.AddActionListener("abcd", first, ACTION_NORMAL);
  bus.AddActionListener("abcd", second, ACTION_NORMAL);
  bus.listen("abcd", "third");
  EXPECT_EQ(bus.fire("abcd"), "third");
  EXPECT_EQ(deaths, 1);
  EXPECT_EQ(first->runs, 1);
}

TEST(ActionReentry, AHandlerAddedDuringTheRunOfTheLastOneRunsInTheSameWalk) {
  Bus bus;
  bus.AddActionListener(
    "abcd", new TahLambda([&bus](std::string, void*) { bus.listen("abcd", "new"); }, Handler::ahtExecuteOnce),
    ACTION_NORMAL);
  EXPECT_EQ(bus.fire("abcd"), "new");
}

// The refusal of a type is a place in the middle of a registration that a test can reach.
TEST(ActionReentry, AnActionThatIsDeletedDuringARegistrationLivesToItsEnd) {
  struct Hook : LogLines {
    int _WriteLog(char, TLogType, unsigned long, const std::string&) override {
      if (onLine) onLine();
      return 0;
    }
    std::function<void()> onLine;
  } log;
  Bus bus;
  int deaths = 0;
  bus.AddActionListener("abcd", new Mortal(deaths, Handler::ahtExecuteEndless), ACTION_NORMAL);
  Mortal refused(deaths, Handler::ahtExecuteEndless);
  bool asked = false;
  log.onLine = [&] {
    asked = true;
    EXPECT_EQ(bus.UnregisterAction("abcd", true), 0);
    EXPECT_EQ(deaths, 0);
  };
  bus.AddActionListener("abcd", &refused, ACTION_ANY);
  EXPECT_TRUE(asked);
  EXPECT_EQ(deaths, 1);
  EXPECT_EQ(bus.GetAction("abcd"), nullptr);
}

TEST(ActionReentry, AHandlerThatDeletesItsActionEndsTheWalkAndDropsTheEntries) {
  for (const bool byName : {true, false}) {
    Bus bus;
    int deaths = 0;
    auto* handler = new Mortal(deaths, Handler::ahtExecuteEndless);
    TAction* action = bus.AddActionListener("abcd", handler, ACTION_NORMAL);
    handler->onRun = [&] {
      if (byName)
        bus.UnregisterAction("abcd", true);
      else
        bus.UnregisterAction(action, true);
    };
    bus.listen("abcd", "behind");
    bus.listen("other", "o");
    bus.GenerateAction("abcd", nullptr, ACTION_ANY);
    bus.GenerateAction("abcd", nullptr, ACTION_ANY);
    EXPECT_EQ(bus.fire("other"), "o");
    EXPECT_EQ(deaths, 1);
    EXPECT_EQ(bus.GetAction("abcd"), nullptr);
  }
}

TEST(ActionReentry, AnImmediateHandlerMayDeleteItsActionAndItsNeighbours) {
  Bus bus;
  bus.AddActionListener("abcd",
                        new TahLambda(
                          [&bus](std::string, void*) {
                            bus.UnregisterAction("abcd", true);
                            bus.UnregisterAction("abcde", true);
                          },
                          Handler::ahtExecuteEndless),
                        ACTION_NORMAL);
  bus.listen("abcd", "draw", ACTION_DRAW);
  bus.listen("abcde", "neighbour");
  bus.listen("abcdef", "last");
  bus.GenerateAction_immediate("abcdef", nullptr, ACTION_ANY);
  EXPECT_EQ(bus.ran, "last");
}

TEST(ActionReentry, AOnceHandlerRegisteredTwiceIsDeletedOnce) {
  Bus bus;
  int deaths = 0;
  auto* handler = new Mortal(deaths, Handler::ahtExecuteOnce);
  bus.AddActionListener("abcd", handler, ACTION_NORMAL);
  bus.AddActionListener("abcd", handler, ACTION_NORMAL);
  bus.fire("abcd");
  EXPECT_EQ(deaths, 1);
}

TEST(ActionReentry, ANestedExecutionOfTheSameTypeEndsAndSaysSo) {
  LogLines log;
  Bus bus;
  int runs = 0;
  bus.AddActionListener("abcd",
                        new TahLambda(
                          [&](std::string, void*) {
                            ++runs;
                            bus.ExecuteActions(ACTION_NORMAL);
                          },
                          Handler::ahtExecuteEndless),
                        ACTION_NORMAL);
  bus.fire("abcd");
  EXPECT_EQ(runs, 1);
  EXPECT_EQ(log.lines(), std::vector<std::string>{"4 ActionMan: nested execution of type 0 is ignored"});
  bus.fire("abcd");
  EXPECT_EQ(runs, 2) << "the next call works again";
}

}  // namespace
