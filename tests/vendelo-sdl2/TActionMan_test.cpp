#include "tests/vendelo-sdl2/TActionManFixture.h"

#include <atomic>
#include <stdexcept>
#include <thread>

using namespace bustest;

namespace {

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

TEST(ActionMan, TheSampleHandlerForwardsEveryOneOfItsActionsToAllTypes) {
  Bus bus;
  const TAction* const sample = bus.GetAction("SACalculateWinsCreate");
  ASSERT_NE(sample, nullptr);
  EXPECT_EQ(sample->GetHandlersCount(ACTION_NORMAL), 1);
  EXPECT_EQ(sample->GetHandlersCount(ACTION_ANY), 1);
  std::vector<void*> seen;
  for (const auto type : {ACTION_NORMAL, ACTION_DRAW, ACTION_THREAD_SAFE})
    bus.AddActionListener(
      "OnActionHandlerExecute",
      new TahLambda([&](std::string, void* d) { seen.push_back(d); }, Handler::ahtExecuteEndless), type);
  int data[2] = {};
  for (auto& one : data) {
    seen.clear();
    bus.GenerateAction("SACalculateWinsCreate", &one, ACTION_ANY);
    bus.ProcessActions();
    bus.ExecuteActions(ACTION_NORMAL);
    bus.ProcessActions();
    for (const auto type : {ACTION_NORMAL, ACTION_DRAW, ACTION_THREAD_SAFE}) bus.ExecuteActions(type);
    EXPECT_EQ(seen, (std::vector<void*>(3, &one)));
  }
}

TEST(ActionMan, ItsRunQueueIsLockedWhileTheHandlersRunAndTheOthersAreNot) {
  for (int type = ACTION_NORMAL; type <= ACTION_THREAD_SAFE; ++type) {
    Bus bus;
    int asked = 0;
    bus.AddActionListener("abcd",
                          new TahLambda(
                            [&](std::string, void*) {
                              ++asked;
                              for (int other = ACTION_NORMAL; other <= ACTION_ASYNC; ++other)
                                EXPECT_EQ(IsHeld(bus.ToRunMutex[other]), other == type) << other;
                              EXPECT_FALSE(IsHeld(bus.ActionListMutex));
                            },
                            Handler::ahtExecuteEndless),
                          static_cast<ActionHandleType>(type));
    for (int run = 0; run < 2; ++run) bus.GenerateAction("abcd", nullptr, ACTION_ANY);
    bus.ProcessActions();
    bus.ExecuteActions(static_cast<ActionHandleType>(type));
    EXPECT_EQ(asked, 2);
    EXPECT_FALSE(IsHeld(bus.ToRunMutex[type]));
  }
}

TEST(ActionMan, TheListIsLockedWhileImmediateHandlersRun) {
  Bus bus;
  bool asked = false;
  bus.AddActionListener("abcd",
                        new TahLambda(
                          [&](std::string, void*) {
                            asked = true;
                            EXPECT_TRUE(IsHeld(bus.ActionListMutex));
                            EXPECT_FALSE(IsHeld(bus.ToRunMutex[ACTION_NORMAL]));
                          },
                          Handler::ahtExecuteEndless),
                        ACTION_NORMAL);
  bus.GenerateAction_immediate("abcd", nullptr, ACTION_ANY);
  EXPECT_TRUE(asked);
  EXPECT_FALSE(IsHeld(bus.ActionListMutex));
}

TEST(ActionMan, HandlersAreCountedByTheirType) {
  Bus bus;
  int count = 0;
  for (const auto type : {ACTION_NORMAL, ACTION_DRAW, ACTION_THREAD_SAFE, ACTION_ASYNC}) {
    ++count;
    for (int i = 0; i < count; ++i) bus.listen("abcd", "x", type);
  }
  const TAction* const action = bus.GetAction("abcd");
  EXPECT_EQ(action->GetHandlersCount(ACTION_NORMAL), 1);
  EXPECT_EQ(action->GetHandlersCount(ACTION_DRAW), 2);
  EXPECT_EQ(action->GetHandlersCount(ACTION_THREAD_SAFE), 3);
  EXPECT_EQ(action->GetHandlersCount(ACTION_ASYNC), 4);
  EXPECT_EQ(action->GetHandlersCount(ACTION_ANY), 10);
}

TEST(ActionMan, EachTypeRunsInItsOwnTurnAndOnce) {
  Bus bus;
  bus.listen("abcd", "n", ACTION_NORMAL);
  bus.listen("abcd", "t", ACTION_THREAD_SAFE);
  bus.listen("abcd", "d", ACTION_DRAW);
  bus.GenerateAction("abcd", nullptr, ACTION_ANY);
  bus.ProcessActions();
  for (const auto type : {ACTION_THREAD_SAFE, ACTION_NORMAL, ACTION_DRAW, ACTION_NORMAL}) bus.ExecuteActions(type);
  EXPECT_EQ(bus.ran, "tnd") << "each type when its own turn comes, and once";
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

}  // namespace
