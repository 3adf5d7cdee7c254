#include "tests/vendelo-sdl2/TTaskManFixture.h"

#include <stdexcept>

using namespace tasktest;

namespace {

TEST_F(Tasks, AnEndlessTaskRunsWhenMoreThanItsIntervalHasPassed) {
  Probe* probe = add(100, Task::ENDLESS);
  poll(100);
  EXPECT_EQ(probe->runs, 0) << "met, not exceeded";
  poll(1);
  EXPECT_EQ(probe->runs, 1);
  poll(100);
  EXPECT_EQ(probe->runs, 1);
  poll(1);
  EXPECT_EQ(probe->runs, 2);
  EXPECT_EQ(deaths, 0);
}

TEST_F(Tasks, LateRunsAddUpWithoutRealTime) {
  Probe* probe = add(100, Task::ENDLESS);
  poll(1000);
  poll(50);
  poll(50);
  EXPECT_EQ(probe->runs, 1) << "the period began anew at the late run";
  poll(1);
  EXPECT_EQ(probe->runs, 2);
}

TEST_F(Tasks, ARealTimeTaskCatchesUpWithOneRunPerPoll) {
  Probe* probe = add(100, Task::ENDLESS);
  probe->SetRealTime(true);
  poll(1001);  // ten intervals and a little
  for (int run = 1; run <= 10; ++run) {
    EXPECT_EQ(probe->runs, run);
    manager->ProcessTasks(TASK_NORMAL);
  }
  EXPECT_EQ(probe->runs, 10);
  poll(99);  // 2100: the grid point is met
  EXPECT_EQ(probe->runs, 10);
  poll(1);
  EXPECT_EQ(probe->runs, 11) << "the grid did not move";
}

TEST_F(Tasks, ARealTimeTaskMadeAtTickZeroTakesTheFirstPollAsItsGrid) {
  clock.set(0);
  Probe* probe = add(100, Task::ENDLESS);
  probe->SetRealTime(true);
  poll(7);
  EXPECT_EQ(probe->runs, 1) << "a last run of 0 is always due";
  poll(100);
  EXPECT_EQ(probe->runs, 1);
  poll(1);
  EXPECT_EQ(probe->runs, 2);
}

TEST_F(Tasks, AOnceTaskOfIntervalZeroWaitsForTheNextTick) {
  Probe* probe = add(0, Task::EXECUTE_ONCE);
  manager->ProcessTasks(TASK_NORMAL);
  EXPECT_EQ(probe->runs, 0);
  poll(1);
  EXPECT_EQ(deaths, 1);
  EXPECT_FALSE(manager->IsTimedTaskValid(probe, TASK_ANY));
}

TEST_F(Tasks, ADisabledTaskNeitherCountsNorMovesAndEnableBeginsAFullInterval) {
  Probe* probe = add(100, Task::EXECUTE_COUNT);
  probe->SetExecutionsLimit(1);
  probe->Disable();
  EXPECT_FALSE(probe->IsEnabled());
  poll(500);
  EXPECT_EQ(probe->runs, 0);
  probe->Enable();
  EXPECT_TRUE(probe->IsEnabled());
  poll(100);
  EXPECT_EQ(probe->runs, 0);
  poll(1);
  EXPECT_EQ(deaths, 1);
}

TEST_F(Tasks, ACountedTaskGoesAtItsLimit) {
  Probe* probe = add(10, Task::EXECUTE_COUNT);
  probe->SetExecutionsLimit(3);
  EXPECT_EQ(probe->GetExecutionLimit(), 3u);
  poll(11);
  poll(11);
  EXPECT_EQ(probe->runs, 2);
  EXPECT_EQ(deaths, 0);
  poll(11);
  EXPECT_EQ(deaths, 1);
}

TEST_F(Tasks, ACountedTaskWithoutALimitGoesAfterItsFirstRun) {
  add(10, Task::EXECUTE_COUNT);
  poll(10);
  EXPECT_EQ(deaths, 0);
  poll(1);
  EXPECT_EQ(deaths, 1);
}

TEST_F(Tasks, AKeptCountedTaskStopsAtItsLimitAndStays) {
  Probe* probe = add(10, Task::EXECUTE_COUNT_NO_FREE);
  poll(50);
  EXPECT_EQ(probe->runs, 0) << "a limit of 0 never runs";
  probe->SetExecutionsLimit(2);
  for (int i = 0; i < 4; ++i) poll(11);
  EXPECT_EQ(probe->runs, 2);
  EXPECT_TRUE(manager->IsTimedTaskValid(probe, TASK_NORMAL));
  probe->SetExecutionsLimit(3);
  poll(11);
  EXPECT_EQ(probe->runs, 3);
}

TEST_F(Tasks, AWrapOfTheTickCounterBeginsThePeriodAnewAndIsLogged) {
  LogLines log;
  clock.set(0xffffff00u);
  Probe* probe = add(1000, Task::ENDLESS);
  clock.set(16);
  manager->ProcessTasks(TASK_NORMAL);
  EXPECT_EQ(probe->runs, 0);
  EXPECT_EQ(log.lines(), std::vector<std::string>{"0 SDLGetTicks overflow detected (LastTime=4294967040, "
                                                  "GetTicks()=16, overflow_constant=2147483647)"});
  poll(1000);
  EXPECT_EQ(probe->runs, 0);
  poll(1);
  EXPECT_EQ(probe->runs, 1);
}

TEST_F(Tasks, ARealTimeTaskBeginsItsGridAnewAtAWrap) {
  LogLines log;
  clock.set(0xffffff00u);
  Probe* probe = add(100, Task::ENDLESS);
  probe->SetRealTime(true);
  poll(201);
  manager->ProcessTasks(TASK_NORMAL);
  EXPECT_EQ(probe->runs, 2) << "the grid stands at 200";
  clock.set(16);
  for (int i = 0; i < 3; ++i) manager->ProcessTasks(TASK_NORMAL);
  EXPECT_EQ(probe->runs, 2) << "nothing to catch up from before the wrap";
  EXPECT_EQ(log.size(), 1u) << "told once";
  poll(100);
  EXPECT_EQ(probe->runs, 2);
  poll(1);
  EXPECT_EQ(probe->runs, 3);
  poll(90);  // 207, and the grid goes by 16, 116, 216
  poll(9);
  EXPECT_EQ(probe->runs, 3);
  poll(1);
  EXPECT_EQ(probe->runs, 4);
}

TEST_F(Tasks, EnablingAnEnabledTaskBeginsItsIntervalAnew) {
  Probe* probe = add(100, Task::ENDLESS);
  poll(60);
  probe->Enable();
  poll(100);
  EXPECT_EQ(probe->runs, 0);
  poll(1);
  EXPECT_EQ(probe->runs, 1);
}

TEST_F(Tasks, ADisabledTaskDoesNotLookAtTheTime) {
  LogLines log;
  Probe* probe = add(100, Task::ENDLESS);
  probe->Disable();
  poll(500);
  EXPECT_EQ(probe->GetTimeRemainigToExecute(), 0u) << "its last run lies where it lay";
  clock.set(0xffffff00u);
  poll(16);
  EXPECT_EQ(log.size(), 0u);
}

TEST_F(Tasks, AFinishedKeptTaskDoesNotLookAtTheTime) {
  LogLines log;
  Probe* probe = add(100, Task::EXECUTE_COUNT_NO_FREE);
  probe->SetExecutionsLimit(1);
  poll(101);
  EXPECT_EQ(probe->runs, 1);
  poll(150);
  EXPECT_EQ(probe->GetTimeRemainigToExecute(), 0u);
  probe->SetExecutionsLimit(2);
  poll(0);
  EXPECT_EQ(probe->runs, 2) << "its interval is over since the run before";
  clock.set(0xffffff00u);
  poll(1);
  EXPECT_EQ(log.size(), 0u) << "and a leap of the clock is none of its business";
}

TEST_F(Tasks, ALimitBelowTheRunsThatWereMadeEndsACountedTask) {
  Probe* goes = add(10, Task::EXECUTE_COUNT);
  Probe* stays = add(10, Task::EXECUTE_COUNT_NO_FREE);
  for (auto* probe : {goes, stays}) probe->SetExecutionsLimit(5);
  for (int i = 0; i < 3; ++i) poll(11);
  for (auto* probe : {goes, stays}) probe->SetExecutionsLimit(2);
  EXPECT_EQ(goes->runs * 10 + stays->runs, 33);
  poll(11);
  EXPECT_EQ(deaths, 1) << "after one run more";
  EXPECT_FALSE(manager->IsTimedTaskValid(goes, TASK_ANY));
  EXPECT_EQ(stays->runs, 3);
}

TEST_F(Tasks, ARunThatThrowsCountsTowardsTheLimit) {
  LogLines log;
  Probe* probe = add(10, Task::EXECUTE_COUNT);
  probe->SetExecutionsLimit(2);
  probe->onRun = [] { throw 1; };
  poll(11);
  EXPECT_EQ(deaths, 0);
  poll(11);
  EXPECT_EQ(deaths, 1);
  EXPECT_EQ(log.count("0 ExecuteConditional unhandled exception...probe"), 2);
}

TEST_F(Tasks, AnExceptionIsLoggedAndCountsAsARun) {
  LogLines log;
  manager->AddTimedTask(new TtthLambda([] { throw std::runtime_error("no"); }, 10, Task::EXECUTE_ONCE, "breaker"),
                        TASK_NORMAL);
  Probe* other = add(10, Task::ENDLESS);
  poll(11);
  EXPECT_EQ(log.lines(), std::vector<std::string>{"0 ExecuteConditional unhandled exception...breaker"});
  EXPECT_EQ(other->runs, 1);
  EXPECT_EQ(manager->GetTimedTask(nullptr), other) << "the once-task is gone";
}

// An empty action handler is passed over; a task is not that patient.
TEST_F(Tasks, AnEmptyFunctionIsAnExceptionLikeAnyOther) {
  LogLines log;
  TtthLambda off(nullptr, 10, Task::ENDLESS, "off");
  off.Disable();
  off.execute(nullptr);
  manager->AddTimedTask(new TtthLambda(nullptr, 10, Task::EXECUTE_ONCE, "empty"), TASK_NORMAL);
  poll(11);
  EXPECT_EQ(log.lines(), std::vector<std::string>{"0 ExecuteConditional unhandled exception...empty"});
  EXPECT_EQ(manager->GetTimedTask(nullptr), nullptr) << "and it counted as the one run";
}

TEST_F(Tasks, AnExceptionOfTheTaskMachineryItselfIsDroppedAndTheTaskStays) {
  struct Breaking : LogLines {
    int _WriteLog(char, TLogType, unsigned long, const std::string&) override { throw 1; }
  } log;
  Probe* probe = add(10, Task::EXECUTE_ONCE);
  Probe* other = add(10, Task::ENDLESS);
  probe->onRun = [] { throw 1; };  // whose message cannot be logged
  poll(11);
  EXPECT_EQ(probe->runs, 1);
  EXPECT_TRUE(manager->IsTimedTaskValid(probe, TASK_NORMAL));
  EXPECT_EQ(other->runs, 1);
}

TEST_F(Tasks, EachSetRunsOnItsOwnAndAnyRunsAll) {
  Probe* normal = add(10, Task::ENDLESS, TASK_NORMAL);
  Probe* draw = add(10, Task::ENDLESS, TASK_DRAW);
  Probe* safe = add(10, Task::ENDLESS, TASK_THREAD_SAFE);
  poll(11, TASK_DRAW);
  EXPECT_EQ(normal->runs * 100 + draw->runs * 10 + safe->runs, 10);
  poll(0, TASK_THREAD_SAFE);
  EXPECT_EQ(normal->runs * 100 + draw->runs * 10 + safe->runs, 11);
  poll(11, TASK_ANY);
  EXPECT_EQ(normal->runs * 100 + draw->runs * 10 + safe->runs, 122);
}

TEST_F(Tasks, AnyRunsTheSetsInTheirOrder) {
  std::string order;
  const TimedTaskType sets[] = {TASK_THREAD_SAFE, TASK_DRAW, TASK_NORMAL};
  for (const auto set : sets) add(10, Task::ENDLESS, set)->onRun = [&order, set] { order += std::to_string(set); };
  poll(11, TASK_ANY);
  EXPECT_EQ(order, "012");
}

TEST_F(Tasks, ATaskOfTwoSetsLeavesTheFirstOneFirst) {
  Probe* probe = add(10, Task::ENDLESS, TASK_THREAD_SAFE);
  manager->AddTimedTask(probe, TASK_DRAW);
  EXPECT_EQ(manager->_IsTimedTaskValid(probe, TASK_ANY), TASK_DRAW);
  manager->RemoveTimedTask(probe, false);
  EXPECT_EQ(manager->_IsTimedTaskValid(probe, TASK_ANY), TASK_THREAD_SAFE);
  manager->RemoveTimedTask(probe, true);
  EXPECT_EQ(deaths, 1);
}

TEST_F(Tasks, AddRefusesNullAndAnyAndLeavesTheTaskWithTheCaller) {
  EXPECT_EQ(manager->AddTimedTask(nullptr, TASK_NORMAL), nullptr);
  auto* probe = new Probe(10, Task::ENDLESS, deaths);
  EXPECT_EQ(manager->AddTimedTask(probe, TASK_ANY), nullptr);
  manager.reset();
  EXPECT_EQ(deaths, 0);
  delete probe;
}

TEST_F(Tasks, RemoveDeletesOnlyWhatASetHolds) {
  Probe* kept = add(10, Task::ENDLESS, TASK_DRAW);
  manager->RemoveTimedTask(kept, false);
  EXPECT_EQ(deaths, 0);
  manager->RemoveTimedTask(kept, true);
  EXPECT_EQ(deaths, 0) << "no set holds it any more";
  manager->RemoveTimedTask(nullptr, true);
  delete kept;
  Probe* gone = add(10, Task::ENDLESS, TASK_THREAD_SAFE);
  manager->RemoveTimedTask(gone, true);
  EXPECT_EQ(deaths, 2);
}

TEST_F(Tasks, TasksAreFoundByTheirRelatedObjectInTheOrderOfTheTypes) {
  struct Owner {
    int call() { return ++calls; }
    int calls = 0;
  } owner;
  int user = 0;
  auto* draw = new TtthMember<Owner, int>(&owner, &Owner::call, 10, Task::ENDLESS, "member");
  manager->AddTimedTask(draw, TASK_DRAW);
  auto* byUser = new Probe(10, Task::ENDLESS, deaths, &user);
  manager->AddTimedTask(byUser, TASK_THREAD_SAFE);
  EXPECT_EQ(manager->GetTimedTask(&owner), draw);
  EXPECT_EQ(manager->GetTimedTask(&user), byUser);
  EXPECT_EQ(manager->GetTimedTask(&deaths), nullptr);
  auto* first = new TtthMember<Owner, int>(&owner, &Owner::call, 10, Task::ENDLESS, "member");
  manager->AddTimedTask(first, TASK_NORMAL);
  EXPECT_EQ(manager->GetTimedTask(&owner), first);
  poll(11, TASK_ANY);
  EXPECT_EQ(owner.calls, 2);
  EXPECT_EQ(byUser->lastUser, &user);
}

TEST_F(Tasks, ValidityIsAskedForOneSetOrForAll) {
  Probe* probe = add(10, Task::ENDLESS, TASK_NORMAL);
  EXPECT_TRUE(manager->IsTimedTaskValid(probe, TASK_ANY));
  EXPECT_TRUE(manager->IsTimedTaskValid(probe, TASK_NORMAL));
  EXPECT_FALSE(manager->IsTimedTaskValid(probe, TASK_DRAW));
  EXPECT_FALSE(manager->IsTimedTaskValid(nullptr, TASK_ANY));
  EXPECT_EQ(manager->_IsTimedTaskValid(probe, TASK_ANY), TASK_NORMAL);
  EXPECT_EQ(manager->_IsTimedTaskValid(probe, TASK_DRAW), TASK_ANY);
  EXPECT_EQ(manager->_IsTimedTaskValid(nullptr, TASK_NORMAL), TASK_ANY);
}

TEST_F(Tasks, TheManagersEndDeletesTheTasksOfAllSets) {
  add(10, Task::ENDLESS, TASK_NORMAL);
  add(10, Task::EXECUTE_ONCE, TASK_DRAW);
  add(10, Task::ENDLESS, TASK_THREAD_SAFE);
  manager.reset();
  EXPECT_EQ(deaths, 3);
}

TEST(TaskTypes, HaveTheirNumbers) {
  EXPECT_EQ(TASK_NORMAL, 0);
  EXPECT_EQ(TASK_DRAW, 1);
  EXPECT_EQ(TASK_THREAD_SAFE, 2);
  EXPECT_EQ(TASK_ANY, 3);
  EXPECT_EQ(Task::EXECUTE_ONCE, 0);
  EXPECT_EQ(Task::EXECUTE_COUNT, 1);
  EXPECT_EQ(Task::ENDLESS, 2);
  EXPECT_EQ(Task::EXECUTE_COUNT_NO_FREE, 3);
}

TEST_F(Tasks, SettingsAreReadBack) {
  int user = 0;
  TtthLambda task([] {}, 10, Task::ENDLESS, "name");
  EXPECT_EQ(task.GetName(), "name");
  EXPECT_EQ(task.GetType(), Task::ENDLESS);
  EXPECT_EQ(task.GetInterval(), 10u);
  EXPECT_EQ(task.GetExecutionLimit(), 0u);
  EXPECT_EQ(task.GetUserData(), nullptr);
  EXPECT_TRUE(task.IsEnabled());
  task.SetInterval(25);
  task.SetUserData(&user);
  EXPECT_EQ(task.GetInterval(), 25u);
  EXPECT_EQ(task.GetUserData(), &user);
  EXPECT_EQ(task.GetRelatedObject(), &user);
}

TEST_F(Tasks, TheTimeLeftCountsDownAndAnImmediateRunBeginsTheIntervalAnew) {
  Probe* probe = add(100, Task::ENDLESS);
  EXPECT_EQ(probe->GetTimeRemainigToExecute(), 101u);
  clock.advance(100);
  EXPECT_EQ(probe->GetTimeRemainigToExecute(), 1u);
  clock.advance(1);
  EXPECT_EQ(probe->GetTimeRemainigToExecute(), 0u);
  probe->Disable();
  probe->EnableAndExecuteImmediate();
  EXPECT_EQ(probe->runs, 1);
  poll(100);
  EXPECT_EQ(probe->runs, 1);
  poll(1);
  EXPECT_EQ(probe->runs, 2);
}

TEST_F(Tasks, MembersAndLambdasRunOnlyEnabledAndWithAnObject) {
  struct Owner {
    void call() { ++calls; }
    int calls = 0;
  } owner;
  TtthMember<Owner, void> member(&owner, &Owner::call, 10, Task::ENDLESS, "m");
  member.execute(nullptr);
  member.Disable();
  member.execute(nullptr);
  EXPECT_EQ(owner.calls, 1);
  TtthMember<Owner, void> none(nullptr, &Owner::call, 10, Task::ENDLESS, "m");
  none.execute(nullptr);
  EXPECT_EQ(none.GetRelatedObject(), nullptr);
  TtthLambda lambda([&owner] { ++owner.calls; }, 10, Task::ENDLESS, "l");
  lambda.execute(nullptr);
  lambda.Disable();
  lambda.execute(nullptr);
  EXPECT_EQ(owner.calls, 2);
  EXPECT_EQ(lambda.GetRelatedObject(), nullptr);
}

}  // namespace
