#include "vendelo-sdl2/TActionMan.h"

#include <gtest/gtest.h>
#include <pthread.h>

#include <atomic>
#include <mutex>
#include <set>
#include <stdexcept>
#include <thread>

#include "tests/support/LogLines.h"
#include "vendelo-sdl2/TAsyncJobs.h"

namespace vendelo_sdl2 {
namespace {

using Handler = TActionHandler;

// Opens what tests look at, and writes down what ran.
class Bus : public TActionMan {
 public:
  using TActionMan::ActionGenerated;

  // A handler that adds `mark` to the record.
  TAction* listen(const std::string& name, const std::string& mark, ActionHandleType type = ACTION_NORMAL,
                  Handler::TAHType kind = Handler::ahtExecuteEndless) {
    return AddActionListener(name, new TahLambda([this, mark](std::string, void*) { ran += mark; }, kind), type);
  }
  // Generates, matches and runs the type's queue; what ran.
  std::string fire(const std::string& name, ActionHandleType filter = ACTION_ANY,
                   ActionHandleType type = ACTION_NORMAL) {
    ran.clear();
    GenerateAction(name, nullptr, filter);
    ProcessActions();
    ExecuteActions(type);
    return ran;
  }

  std::string ran;
};

// Tells its death.
class Mortal : public Handler {
 public:
  Mortal(int& deaths, TAHType kind) : Handler(nullptr, kind), mDeaths(deaths) {}
  ~Mortal() override { ++mDeaths; }
  void execute(std::string, void*) override {
    ++runs;
    if (onRun) onRun();
    alive = 1234;
  }
  int runs = 0;
  int alive = 0;
  std::function<void()> onRun;

 private:
  int& mDeaths;
};

struct PrefixCase {
  const char* name;
  std::vector<std::string> registered;
  const char* generated;
  const char* ran;
};

class ActionPrefix : public testing::TestWithParam<PrefixCase> {};

TEST_P(ActionPrefix, RunsTheRegisteredPrefixesInAscendingOrder) {
  Bus bus;
  for (const auto& name : GetParam().registered) bus.listen(name, name + ";");
  EXPECT_EQ(bus.fire(GetParam().generated), GetParam().ran);
}

INSTANTIATE_TEST_SUITE_P(
  Names, ActionPrefix,
  testing::Values(
    PrefixCase{"ThreeCharactersNeverMatchThemselves", {"abc"}, "abc", ""},
    PrefixCase{"ThreeCharactersNeverMatchLongerOnes", {"abc"}, "abcdef", ""},
    PrefixCase{"TwoCharactersNeverMatch", {"ab"}, "abcdef", ""},
    PrefixCase{"FourCharactersMatchThemselves", {"abcd"}, "abcd", "abcd;"},
    PrefixCase{"FourCharactersMatchLongerOnes", {"abcd"}, "abcdef", "abcd;"},
    PrefixCase{"FourCharactersDoNotMatchThree", {"abcd"}, "abc", ""},
    PrefixCase{
      "AllPrefixesFireWhateverTheOrderOfRegistration", {"abcdef", "abcde", "abcd"}, "abcdef", "abcd;abcde;abcdef;"},
    PrefixCase{"TheWalkSkipsNamesBesideTheRoad", {"abcaa", "abcd", "abcda", "abcde"}, "abcdef", "abcd;abcde;"},
    PrefixCase{"LongerNamesDoNotMatch", {"abcdefg"}, "abcdef", ""},
    PrefixCase{"CaseCounts", {"Paytable"}, "paytableLoaded", ""},
    PrefixCase{"AWordAndItsContinuation", {"Paytable"}, "PaytableLoaded", "Paytable;"},
    PrefixCase{"EmptyGeneratedName", {"abcd"}, "", ""}, PrefixCase{"ShortGeneratedName", {"abcd"}, "a", ""}),
  [](const auto& info) { return info.param.name; });

TEST(ActionMan, TheWalkStopsWhereTheFirstMatchsLengthNoLongerAgrees) {
  Bus bus;
  bus.listen("abcd", "1");
  bus.listen("abce", "2");
  bus.listen("abcdz", "3");
  EXPECT_EQ(bus.ActionGenerated("abcdef", nullptr, ACTION_ANY, false), 1);
}

TEST(ActionMan, CountsThePairsOfActionAndTypeThatHadHandlers) {
  Bus bus;
  bus.listen("abcd", "1", ACTION_NORMAL);
  bus.listen("abcd", "1", ACTION_NORMAL);
  bus.listen("abcd", "2", ACTION_DRAW);
  bus.listen("abcde", "3", ACTION_THREAD_SAFE);
  EXPECT_EQ(bus.ActionGenerated("abcdef", nullptr, ACTION_ANY, false), 3);
  EXPECT_EQ(bus.ActionGenerated("abcdef", nullptr, ACTION_DRAW, false), 1);
  EXPECT_EQ(bus.ActionGenerated("abcdef", nullptr, ACTION_ASYNC, false), 0);
}

TEST(ActionMan, AFilterOfAnotherTypeQueuesNothing) {
  Bus bus;
  bus.listen("drawMe", "d", ACTION_DRAW);
  EXPECT_EQ(bus.fire("drawMe", ACTION_NORMAL, ACTION_DRAW), "");
  EXPECT_EQ(bus.fire("drawMe", ACTION_DRAW, ACTION_DRAW), "d");
}

TEST(ActionMan, HandlersOfOneTypeRunInOrderOfRegistration) {
  Bus bus;
  for (const char* mark : {"c", "a", "b"}) bus.listen("order", mark);
  EXPECT_EQ(bus.fire("order"), "cab");
}

TEST(ActionMan, NameAndDataReachTheLambdaAsGiven) {
  Bus bus;
  int data = 0;
  std::string name;
  void* seen = nullptr;
  bus.AddActionListener(
    "Paytable", new TahLambda([&](std::string n, void* d) { name = n, seen = d; }, Handler::ahtExecuteEndless),
    ACTION_NORMAL);
  bus.GenerateAction("PaytableLoaded", &data, ACTION_ANY);
  bus.ProcessActions();
  bus.ExecuteActions(ACTION_NORMAL);
  // The name is the registered one, not the generated one.
  EXPECT_EQ(name, "Paytable");
  EXPECT_EQ(seen, &data);
}

struct Target {
  int small() { return ++calls; }
  void large(std::string name, void* data, void* user) { text = name, seen = data, seenUser = user; }
  int calls = 0;
  std::string text;
  void* seen = nullptr;
  void* seenUser = nullptr;
};

TEST(ActionTypes, HaveTheirNumbers) {
  EXPECT_EQ(ACTION_NORMAL, 0);
  EXPECT_EQ(ACTION_DRAW, 1);
  EXPECT_EQ(ACTION_THREAD_SAFE, 2);
  EXPECT_EQ(ACTION_ASYNC, 3);
  EXPECT_EQ(ACTION_ANY, 4);
  EXPECT_EQ(Handler::ahtExecuteOnce, 0);
  EXPECT_EQ(Handler::ahtExecuteEndless, 1);
}

TEST(ActionHandlers, MembersRunOnlyWithAnObjectAndEnabled) {
  Target target;
  TahMember<Target, int> member(&target, &Target::small, Handler::ahtExecuteEndless);
  member.execute("x", nullptr);
  EXPECT_EQ(target.calls, 1);
  member.Disable();
  EXPECT_FALSE(member.IsEnabled());
  member.execute("x", nullptr);
  EXPECT_EQ(target.calls, 1);
  member.Enable();
  member.execute("x", nullptr);
  EXPECT_EQ(target.calls, 2);
  EXPECT_EQ(member.GetRelatedObject(), &target);
  TahMember<Target, int> none(nullptr, &Target::small, Handler::ahtExecuteEndless);
  none.execute("x", nullptr);
  EXPECT_EQ(none.GetRelatedObject(), nullptr);
}

TEST(ActionHandlers, LargeMembersGetNameDataAndUserData) {
  Target target;
  int data = 0;
  int user = 0;
  TahMemberLarge<Target> member(&target, &Target::large, &user, Handler::ahtExecuteOnce);
  member.execute("name", &data);
  EXPECT_EQ(target.text, "name");
  EXPECT_EQ(target.seen, &data);
  EXPECT_EQ(target.seenUser, &user);
  EXPECT_EQ(member.GetRelatedObject(), &target);
  EXPECT_EQ(member.GetType(), Handler::ahtExecuteOnce);
  member.SetType(Handler::ahtExecuteEndless);
  EXPECT_EQ(member.GetType(), Handler::ahtExecuteEndless);
  member.Disable();
  member.execute("other", nullptr);
  EXPECT_EQ(target.text, "name");
}

TEST(ActionHandlers, ALambdaDoesNotLookAtEnabled) {
  int runs = 0;
  TahLambda lambda([&runs](std::string, void*) { ++runs; }, Handler::ahtExecuteEndless);
  lambda.Disable();
  lambda.execute("x", nullptr);
  EXPECT_EQ(runs, 1);
  EXPECT_EQ(lambda.GetRelatedObject(), nullptr);
  TahLambda empty(nullptr, Handler::ahtExecuteEndless);
  empty.execute("x", nullptr);
}

TEST(ActionMan, AOnceHandlerRunsOnceHoweverManyEntriesWait) {
  Bus bus;
  TAction* action = bus.listen("onceOnly", "x", ACTION_NORMAL, Handler::ahtExecuteOnce);
  for (int i = 0; i < 3; ++i) bus.GenerateAction("onceOnly", nullptr, ACTION_ANY);
  bus.ProcessActions();
  bus.ExecuteActions(ACTION_NORMAL);
  EXPECT_EQ(bus.ran, "x");
  EXPECT_EQ(action->GetHandlersCount(ACTION_ANY), 0);
}

TEST(ActionMan, ADisabledActionDropsItsEntriesAndKeepsOnceHandlers) {
  Bus bus;
  TAction* action = bus.listen("paused", "x", ACTION_NORMAL, Handler::ahtExecuteOnce);
  action->Disable();
  EXPECT_FALSE(action->IsEnabled());
  EXPECT_EQ(bus.fire("paused"), "");
  EXPECT_EQ(action->GetHandlersCount(ACTION_NORMAL), 1);
  action->Enable();
  bus.ExecuteActions(ACTION_NORMAL);
  EXPECT_EQ(bus.ran, "") << "the entry of the disabled time is gone";
  EXPECT_EQ(bus.fire("paused"), "x");
}

TEST(ActionMan, ImmediateActionsRunAtOnceForAllTypesAndLeaveNothingBehind) {
  Bus bus;
  bus.listen("atOnce", "n", ACTION_NORMAL);
  bus.listen("atOnce", "d", ACTION_DRAW);
  bus.listen("atOnce", "t", ACTION_THREAD_SAFE);
  bus.GenerateAction_immediate("atOnce", nullptr, ACTION_ANY);
  EXPECT_EQ(bus.ran, "ndt");
  bus.GenerateAction_immediate("atOnce", nullptr, ACTION_DRAW);
  EXPECT_EQ(bus.ran, "ndtd");
  for (const auto type : {ACTION_NORMAL, ACTION_DRAW, ACTION_THREAD_SAFE}) bus.ExecuteActions(type);
  EXPECT_EQ(bus.ran, "ndtd");
}

TEST(ActionMan, WhatIsGeneratedWhileMatchingIsMatchedInTheSameCall) {
  Bus bus;
  bus.listen("first", "1", ACTION_NORMAL);
  bus.listen("second", "2", ACTION_NORMAL);
  std::atomic<bool> processing{false};
  std::thread matcher;
  // An immediate run holds the list, so that the matching stands still until it is over.
  bus.AddActionListener("hold",
                        new TahLambda(
                          [&](std::string, void*) {
                            bus.GenerateAction("first", nullptr, ACTION_ANY);
                            bus.GenerateAction("first", nullptr, ACTION_ANY);
                            matcher = std::thread([&] {
                              processing = true;
                              bus.ProcessActions();
                            });
                            while (!processing) std::this_thread::yield();
                            SDL_Delay(5);  // not needed, but then the first one has been taken already
                            bus.GenerateAction("second", nullptr, ACTION_ANY);
                          },
                          Handler::ahtExecuteEndless),
                        ACTION_DRAW);
  bus.GenerateAction_immediate("hold", nullptr, ACTION_DRAW);
  matcher.join();
  bus.ExecuteActions(ACTION_NORMAL);
  EXPECT_EQ(bus.ran, "112");
}

TEST(ActionMan, AnImmediateActionRunsOnTheCallingThread) {
  Bus bus;
  std::thread::id ranOn;
  bus.AddActionListener(
    "where",
    new TahLambda([&](std::string, void*) { ranOn = std::this_thread::get_id(); }, Handler::ahtExecuteEndless),
    ACTION_DRAW);
  std::thread other([&] {
    bus.GenerateAction_immediate("where", nullptr, ACTION_ANY);
    EXPECT_EQ(ranOn, std::this_thread::get_id());
  });
  other.join();
}

TEST(ActionMan, ExecutingAnEmptyQueueAndProcessingNothingDoNothing) {
  Bus bus;
  bus.ProcessActions();
  for (const auto type : {ACTION_NORMAL, ACTION_DRAW, ACTION_THREAD_SAFE, ACTION_ASYNC}) bus.ExecuteActions(type);
  EXPECT_EQ(bus.ran, "");
}

TEST(ActionMan, LookupsAreExact) {
  Bus bus;
  TAction* action = bus.listen("abcd", "1");
  EXPECT_EQ(bus.GetAction("abcd"), action);
  EXPECT_EQ(action->GetName(), "abcd");
  for (const char* name : {"", "abc", "abcde"}) EXPECT_EQ(bus.GetAction(name), nullptr) << name;
  EXPECT_EQ(bus.listen("abcd", "2"), action) << "one action for one name";
}

TEST(ActionMan, TheSampleHandlerForwardsItsAction) {
  Bus bus;
  int data = 0;
  void* seen = nullptr;
  bus.AddActionListener("OnActionHandlerExecute",
                        new TahLambda([&](std::string, void* d) { seen = d; }, Handler::ahtExecuteEndless),
                        ACTION_THREAD_SAFE);
  EXPECT_NE(bus.GetAction("SACalculateWinsCreate"), nullptr);
  bus.GenerateAction("SACalculateWinsCreate", &data, ACTION_ANY);
  bus.ProcessActions();
  bus.ExecuteActions(ACTION_NORMAL);
  bus.ProcessActions();
  bus.ExecuteActions(ACTION_THREAD_SAFE);
  EXPECT_EQ(seen, &data);
}

// Messages.

TEST(ActionMessages, RegisteringForAnyIsRefusedAndTheHandlerStaysTheCallers) {
  LogLines log;
  Bus bus;
  int deaths = 0;
  auto* handler = new Mortal(deaths, Handler::ahtExecuteEndless);
  TAction* action = bus.AddActionListener("anyType", handler, ACTION_ANY);
  EXPECT_EQ(log.lines(), std::vector<std::string>{
                           "4 Tried to use handle type ANY for action anyType will effectively trigger it "
                           "3 times and is not allowed!"});
  EXPECT_EQ(action->GetHandlersCount(ACTION_ANY), 0);
  EXPECT_EQ(deaths, 0);
  delete handler;
}

TEST(ActionMessages, ExecutingAnyIsRefused) {
  LogLines log;
  Bus bus;
  TAction* action = bus.listen("anyType", "x");
  bus.ExecuteActions(ACTION_ANY);
  action->Execute(nullptr, ACTION_ANY);
  EXPECT_EQ(log.lines(), (std::vector<std::string>{
                           "4 Tried to execute actions as ANY, which is not allowed! Execution type must be "
                           "specified.",
                           "4 Tried to execute action anyType as ANY, which is not allowed! Execution type must be "
                           "specified."}));
  EXPECT_EQ(bus.ran, "");
}

TEST(ActionMessages, AQueuedExceptionIsLoggedAndTheNextEntryRuns) {
  LogLines log;
  Bus bus;
  TAction* action = bus.AddActionListener(
    "thrower", new TahLambda([](std::string, void*) { throw std::runtime_error("no"); }, Handler::ahtExecuteOnce),
    ACTION_DRAW);
  bus.listen("thrower", "behind", ACTION_DRAW);
  bus.listen("runner", "r", ACTION_DRAW);
  bus.GenerateAction("thrower", nullptr, ACTION_ANY);
  bus.GenerateAction("runner", nullptr, ACTION_ANY);
  bus.ProcessActions();
  bus.ExecuteActions(ACTION_DRAW);
  EXPECT_EQ(bus.ran, "r") << "the exception leaves the walk of its action only";
  EXPECT_EQ(log.lines(),
            std::vector<std::string>{
              "4 ActionMan: handler Execute() threw exception [triggered by action thrower and type 1]"});
  EXPECT_EQ(action->GetHandlersCount(ACTION_DRAW), 2) << "the handler that threw stays";
}

TEST(ActionMessages, AnImmediateExceptionIsLoggedWithTheGeneratedName) {
  LogLines log;
  Bus bus;
  bus.AddActionListener("thrower", new TahLambda([](std::string, void*) { throw 1; }, Handler::ahtExecuteEndless),
                        ACTION_NORMAL);
  bus.listen("throwerMore", "m");
  bus.GenerateAction_immediate("throwerMore", nullptr, ACTION_ANY);
  EXPECT_EQ(bus.ran, "m");
  EXPECT_EQ(log.lines(), std::vector<std::string>{"4 ActionMan: handler throwerMore->Execute() threw exception "
                                                  "[triggered by action throwerMore]"});
}

TEST(ActionMessages, AnUnmatchedNameLogsNothing) {
  LogLines log;
  Bus bus;
  EXPECT_EQ(bus.fire("nobody listens"), "");
  EXPECT_TRUE(log.lines().empty());
}

// Unregistering.

TEST(Unregister, AnActionByName) {
  Bus bus;
  bus.listen("abcd", "x");
  EXPECT_EQ(bus.UnregisterAction("", true), -1);
  EXPECT_EQ(bus.UnregisterAction("abcde", true), -1);
  EXPECT_EQ(bus.UnregisterAction("abcd", true), 0);
  EXPECT_EQ(bus.GetAction("abcd"), nullptr);
  EXPECT_EQ(bus.UnregisterAction("abcd", true), -1);
}

TEST(Unregister, AnActionByPointerWithAndWithoutItsInstance) {
  Bus bus;
  bus.UnregisterAction(static_cast<TAction*>(nullptr), true);
  TAction* action = bus.listen("abcd", "x");
  bus.UnregisterAction(action, false);
  EXPECT_EQ(bus.GetAction("abcd"), nullptr);
  EXPECT_EQ(action->GetName(), "abcd") << "the caller's now";
  // Not in the list any more and deleted all the same; LeakSanitizer and its like watch.
  bus.UnregisterAction(action, true);
  TAction* nameless = bus.listen("", "x");
  bus.UnregisterAction(nameless, true);
}

TEST(Unregister, QueuedRunsOfADeletedActionAreDropped) {
  Bus bus;
  bus.listen("gone", "g");
  bus.listen("stays", "s");
  bus.GenerateAction("gone", nullptr, ACTION_ANY);
  bus.GenerateAction("stays", nullptr, ACTION_ANY);
  bus.GenerateAction("gone", nullptr, ACTION_ANY);
  bus.ProcessActions();
  bus.UnregisterAction("gone", true);
  bus.ExecuteActions(ACTION_NORMAL);
  EXPECT_EQ(bus.ran, "s");
}

TEST(Unregister, AHandlerOfAllActionsIsDeletedOnce) {
  Bus bus;
  int deaths = 0;
  auto* handler = new Mortal(deaths, Handler::ahtExecuteEndless);
  TAction* action = bus.AddActionListener("abcd", handler, ACTION_NORMAL);
  bus.listen("efgh", "x");
  EXPECT_EQ(bus.UnregisterAllActionHandlers(handler, true), 0);
  EXPECT_EQ(deaths, 1);
  EXPECT_EQ(action->GetHandlersCount(ACTION_ANY), 0);
  EXPECT_EQ(bus.UnregisterAllActionHandlers(nullptr, true), 0);
}

TEST(Unregister, AHandlerOnTwoActionsIsDeletedOnce) {
  Bus bus;
  int deaths = 0;
  auto* handler = new Mortal(deaths, Handler::ahtExecuteEndless);
  bus.AddActionListener("abcd", handler, ACTION_NORMAL);
  bus.AddActionListener("efgh", handler, ACTION_DRAW);
  bus.UnregisterAllActionHandlers(handler, true);
  EXPECT_EQ(deaths, 1);
  EXPECT_EQ(bus.GetAction("abcd")->GetHandlersCount(ACTION_ANY), 0);
  EXPECT_EQ(bus.GetAction("efgh")->GetHandlersCount(ACTION_ANY), 0);
}

TEST(Unregister, AHandlerOfOneActionEveryOccurrenceByFilter) {
  TAction action("abcd");
  int deaths = 0;
  auto* handler = new Mortal(deaths, Handler::ahtExecuteEndless);
  action.RegisterActionHandler(handler, ACTION_NORMAL);
  action.RegisterActionHandler(handler, ACTION_NORMAL);
  action.RegisterActionHandler(handler, ACTION_DRAW);
  action.RegisterActionHandler(nullptr, ACTION_DRAW);
  EXPECT_EQ(action.GetHandlersCount(ACTION_ANY), 3);
  EXPECT_EQ(action.UnregisterActionHandler(handler, false, ACTION_NORMAL), 0);
  EXPECT_EQ(action.GetHandlersCount(ACTION_NORMAL), 0);
  EXPECT_EQ(action.GetHandlersCount(ACTION_DRAW), 1);
  EXPECT_EQ(action.UnregisterActionHandler(handler, true, ACTION_ANY), 0);
  EXPECT_EQ(action.GetHandlersCount(ACTION_ANY), 0);
  EXPECT_EQ(deaths, 1);
  // Deleted although it was found nowhere.
  EXPECT_EQ(action.UnregisterActionHandler(new Mortal(deaths, Handler::ahtExecuteOnce), true, ACTION_ANY), 0);
  EXPECT_EQ(deaths, 2);
}

TEST(Unregister, HandlersByTheirRelatedObject) {
  Bus bus;
  Target one;
  Target two;
  for (auto* target : {&one, &two, &one})
    bus.AddActionListener("abcd", new TahMember<Target, int>(target, &Target::small, Handler::ahtExecuteEndless),
                          ACTION_NORMAL);
  TAction* action = bus.GetAction("abcd");
  EXPECT_EQ(action->UnregisterActionHandlersByRelatedObject(&one, true), 2);
  EXPECT_EQ(action->GetHandlersCount(ACTION_ANY), 1);
  EXPECT_EQ(bus.UnregisterAllActionHandlersByRelatedObject(&two, true), 0);
  EXPECT_EQ(action->GetHandlersCount(ACTION_ANY), 0);
  bus.fire("abcd");
  EXPECT_EQ(one.calls + two.calls, 0);
}

TEST(Unregister, HandlersTakenOutWithoutTheirInstanceAreTheCallers) {
  TAction action("abcd");
  int deaths = 0;
  auto* handler = new Mortal(deaths, Handler::ahtExecuteEndless);
  action.RegisterActionHandler(handler, ACTION_NORMAL);
  action.RegisterActionHandler(handler, ACTION_THREAD_SAFE);
  EXPECT_EQ(action.UnregisterActionHandlersByRelatedObject(&deaths, true), 0);
  EXPECT_EQ(action.UnregisterActionHandlersByRelatedObject(nullptr, false), 2);
  EXPECT_EQ(action.GetHandlersCount(ACTION_ANY), 0);
  EXPECT_EQ(deaths, 0);
  delete handler;
}

TEST(Unregister, AnAsynchronousHandlerIsNotFoundByItsOwnPointer) {
  TAction action("abcd");
  Target target;
  auto* handler = new TahMember<Target, int>(&target, &Target::small, Handler::ahtExecuteEndless);
  action.RegisterActionHandler(handler, ACTION_ASYNC);
  action.UnregisterActionHandler(handler, false, ACTION_ANY);
  EXPECT_EQ(action.GetHandlersCount(ACTION_ASYNC), 1);
  // Nor by the object: the wrapper knows the user data only.
  EXPECT_EQ(action.UnregisterActionHandlersByRelatedObject(&target, true), 0);
  int user = 0;
  action.RegisterActionHandler(
    new TahMemberLarge<Target>(&target, &Target::large, &user, Handler::ahtExecuteEndless), ACTION_ASYNC);
  EXPECT_EQ(action.UnregisterActionHandlersByRelatedObject(&user, true), 1);
}

TEST(Unregister, TheManagersEndDeletesHandlersOfEveryType) {
  int deaths = 0;
  {
    Bus bus;
    for (const auto type : {ACTION_NORMAL, ACTION_DRAW, ACTION_THREAD_SAFE, ACTION_ASYNC})
      bus.AddActionListener("abcd", new Mortal(deaths, Handler::ahtExecuteEndless), type);
    bus.GenerateAction("abcd", nullptr, ACTION_ANY);
    bus.ProcessActions();
    bus.GenerateAction("abcd", nullptr, ACTION_ANY);
  }
  EXPECT_EQ(deaths, 4);
}

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
      if (byName) {
        bus.UnregisterAction("abcd", true);
      } else {
        bus.UnregisterAction(action, true);
      }
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

// Threads.

TEST(ActionAsync, RunsOnAThreadOfItsOwnAndMayGenerate) {
  Bus bus;
  std::atomic<bool> otherThread{false};
  std::string asked;
  const auto self = std::this_thread::get_id();
  bus.listen("answer", "a");
  bus.AddActionListener("question",
                        new TahLambda(
                          [&](std::string name, void*) {
                            otherThread = std::this_thread::get_id() != self;
                            asked = std::move(name);
                            bus.GenerateAction("answer", nullptr, ACTION_ANY);
                          },
                          Handler::ahtExecuteEndless),
                        ACTION_ASYNC);
  bus.GenerateAction("question", nullptr, ACTION_ANY);
  bus.ProcessActions();
  bus.ExecuteActions(ACTION_ASYNC);
  ASSERT_TRUE(TAsyncJob::WaitForNone(10000));
  EXPECT_TRUE(otherThread);
  EXPECT_EQ(asked, "question");
  bus.ProcessActions();
  bus.ExecuteActions(ACTION_NORMAL);
  EXPECT_EQ(bus.ran, "a");
}

TEST(ActionAsync, EveryRunOfEveryHandlerHasAThreadOfItsOwnWithTheSameName) {
  Bus bus;
  std::mutex mutex;
  std::set<std::thread::id> threads;
  std::set<std::string> names;
  std::atomic<int> started{0};
  int data = 0;
  for (int handler = 0; handler < 2; ++handler)
    bus.AddActionListener("work",
                          new TahLambda(
                            [&](std::string, void* d) {
                              char name[16] = "";
                              pthread_getname_np(pthread_self(), name, sizeof name);
                              {
                                const std::lock_guard lock(mutex);
                                threads.insert(std::this_thread::get_id());
                                names.insert(name);
                                EXPECT_EQ(d, &data);
                              }
                              ++started;
                              while (started < 4) SDL_Delay(1);  // all four are alive at once
                            },
                            Handler::ahtExecuteEndless),
                          ACTION_ASYNC);
  for (int run = 0; run < 2; ++run) bus.GenerateAction("work", &data, ACTION_ASYNC);
  bus.ProcessActions();
  bus.ExecuteActions(ACTION_ASYNC);
  ASSERT_TRUE(TAsyncJob::WaitForNone(30000));
  EXPECT_EQ(threads.size(), 4u);
  EXPECT_EQ(names, std::set<std::string>{"asyncAction"});
}

TEST(ActionAsync, AOnceHandlerOutlivesItsWrapperUntilItsThreadIsDone) {
  Bus bus;
  std::atomic<bool> go{false};
  std::atomic<int> runs{0};
  auto payload = std::make_shared<int>(42);
  bus.AddActionListener("slow",
                        new TahLambda(
                          [&go, &runs, payload](std::string, void*) {
                            while (!go) SDL_Delay(1);
                            runs += *payload;
                          },
                          Handler::ahtExecuteOnce),
                        ACTION_ASYNC);
  bus.fire("slow", ACTION_ANY, ACTION_ASYNC);
  EXPECT_EQ(bus.GetAction("slow")->GetHandlersCount(ACTION_ANY), 0);
  EXPECT_EQ(TAsyncJob::Running(), 1);
  EXPECT_FALSE(TAsyncJob::WaitForNone(5));
  go = true;
  ASSERT_TRUE(TAsyncJob::WaitForNone(10000));
  EXPECT_EQ(runs, 42);
  EXPECT_EQ(payload.use_count(), 1) << "the handler went with its thread";
}

TEST(ActionAsyncDeathTest, AnExceptionEndsTheProcess) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_DEATH(
    {
      Bus bus;
      bus.AddActionListener(
        "thrower", new TahLambda([](std::string, void*) { throw 1; }, Handler::ahtExecuteEndless), ACTION_ASYNC);
      bus.fire("thrower", ACTION_ANY, ACTION_ASYNC);
      TAsyncJob::WaitForNone(10000);
      std::exit(0);
    },
    "");
}

TEST(ActionStress, FourThreadsGenerateWhileTwoExecuteAndRegister) {
  Bus bus;
  std::atomic<int> runs{0};
  constexpr int PER_THREAD = 500;
  for (const auto type : {ACTION_NORMAL, ACTION_DRAW})
    bus.AddActionListener("count",
                          new TahLambda([&runs](std::string, void*) { ++runs; }, Handler::ahtExecuteEndless), type);
  std::atomic<int> generating{4};
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i)
    threads.emplace_back([&] {
      for (int n = 0; n < PER_THREAD; ++n) bus.GenerateAction("counted", nullptr, ACTION_ANY);
      --generating;
    });
  threads.emplace_back([&] {
    while (generating > 0) bus.ExecuteActions(ACTION_DRAW);
  });
  threads.emplace_back([&] {
    Target target;
    for (int n = 0; n < PER_THREAD; ++n) {
      bus.AddActionListener("count",
                            new TahMember<Target, int>(&target, &Target::small, Handler::ahtExecuteEndless),
                            ACTION_THREAD_SAFE);
      bus.UnregisterAllActionHandlersByRelatedObject(&target, true);
    }
  });
  while (generating > 0) {
    bus.ProcessActions();
    bus.ExecuteActions(ACTION_NORMAL);
  }
  for (auto& thread : threads) thread.join();
  bus.ProcessActions();
  bus.ExecuteActions(ACTION_NORMAL);
  bus.ExecuteActions(ACTION_DRAW);
  EXPECT_EQ(runs, 2 * 4 * PER_THREAD);
  EXPECT_EQ(bus.GetAction("count")->GetHandlersCount(ACTION_THREAD_SAFE), 0);
}

}  // namespace
}  // namespace vendelo_sdl2
