#include "vendelo-sdl2/TTaskMan.h"

#include <gtest/gtest.h>
#include <pthread.h>

#include <atomic>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>

#include "tests/support/FakeClock.h"
#include "tests/support/LogLines.h"
#include "vendelo-sdl2/TAsyncJobs.h"

namespace vendelo_sdl2 {
namespace {

using Task = TTimedTaskHandler;

// Counts runs and deaths and does what a test tells it to.
class Probe : public Task {
 public:
  Probe(Uint32 interval, TTaskType type, int& deaths, void* user = nullptr)
    : Task(user, interval, type, "probe"), mDeaths(deaths) {}
  ~Probe() override { ++mDeaths; }
  void execute(void* user) override {
    ++runs;
    lastUser = user;
    if (onRun) onRun();
    alive = 99;  // touches the object behind the callback, so that a freed one is noticed
  }
  int runs = 0;
  int alive = 0;
  void* lastUser = nullptr;
  std::function<void()> onRun;

 private:
  int& mDeaths;
};

class Tasks : public testing::Test {
 protected:
  Probe* add(Uint32 interval, Task::TTaskType type, TimedTaskType set = TASK_NORMAL) {
    auto* probe = new Probe(interval, type, deaths);
    EXPECT_EQ(manager->AddTimedTask(probe, set), probe);
    return probe;
  }
  void poll(Uint32 later, TimedTaskType set = TASK_NORMAL) {
    clock.advance(later);
    manager->ProcessTasks(set);
  }

  FakeClock clock{1000};
  int deaths = 0;
  std::unique_ptr<TTaskMan> manager = std::make_unique<TTaskMan>();
};

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

// Tasks that change the sets while they run.

TEST_F(Tasks, ATaskThatRemovesItselfIsInvalidAtOnceAndDiesAfterItsRun) {
  for (const auto type : {Task::ENDLESS, Task::EXECUTE_ONCE}) {
    deaths = 0;
    Probe* probe = add(10, type);
    probe->onRun = [&, probe] {
      manager->RemoveTimedTask(probe, true);
      EXPECT_FALSE(manager->IsTimedTaskValid(probe, TASK_ANY));
      EXPECT_EQ(deaths, 0);
    };
    poll(11);
    EXPECT_EQ(deaths, 1);
  }
}

TEST_F(Tasks, ATaskThatTakesItselfOutBelongsToItsTakerWhateverItsType) {
  Probe* probe = add(10, Task::EXECUTE_ONCE);
  probe->onRun = [&, probe] { manager->RemoveTimedTask(probe, false); };
  poll(11);
  EXPECT_EQ(deaths, 0);
  EXPECT_EQ(probe->runs, 1);
  delete probe;
}

TEST_F(Tasks, ATaskThatIsTakenOutAndPutBackInItsRunStaysRegistered) {
  Probe* probe = add(10, Task::EXECUTE_ONCE);
  probe->onRun = [&, probe] {
    if (probe->runs > 1) return;
    manager->RemoveTimedTask(probe, false);
    manager->AddTimedTask(probe, TASK_NORMAL);
  };
  poll(11);
  EXPECT_EQ(deaths, 0) << "the run's verdict is about the registration before";
  EXPECT_TRUE(manager->IsTimedTaskValid(probe, TASK_NORMAL));
  poll(11);
  EXPECT_EQ(deaths, 1);
}

TEST_F(Tasks, EachOfManyTasksMayRemoveAllOthers) {
  constexpr int COUNT = 8;
  std::vector<Probe*> probes;
  int runs = 0;
  for (int i = 0; i < COUNT; ++i) probes.push_back(add(10, Task::ENDLESS));
  for (auto* probe : probes)
    probe->onRun = [&, probe] {
      ++runs;
      for (auto* other : probes)
        if (other != probe) manager->RemoveTimedTask(other, true);
    };
  poll(11);
  EXPECT_EQ(runs, 1);
  EXPECT_EQ(deaths, COUNT - 1);
}

TEST_F(Tasks, InsertionsDuringAWalkAreHarmless) {
  Probe* probe = add(10, Task::ENDLESS);
  probe->onRun = [&] {
    for (int i = 0; i < 20; ++i) add(0, Task::EXECUTE_ONCE);
  };
  poll(11);
  EXPECT_EQ(probe->runs, 1);
  poll(1);
  EXPECT_EQ(deaths, 20);
}

TEST_F(Tasks, ATaskMayWorkOnAllSetsAndTheWalkGoesOn) {
  Probe* probe = add(10, Task::ENDLESS);
  Probe* inDraw = add(10, Task::ENDLESS, TASK_DRAW);
  Probe* behind[4];
  for (auto& other : behind) other = add(10, Task::ENDLESS);
  probe->onRun = [&] {
    add(10, Task::ENDLESS, TASK_NORMAL);
    add(10, Task::ENDLESS, TASK_DRAW);
    manager->RemoveTimedTask(inDraw, true);
    add(10, Task::ENDLESS, TASK_THREAD_SAFE);
  };
  poll(11);
  EXPECT_EQ(deaths, 1);
  for (auto* other : behind) EXPECT_EQ(other->runs, 1);
}

TEST_F(Tasks, ANestedWalkOfTheSameSetMayEndTheTaskOfTheOuterOne) {
  Probe* probe = add(10, Task::EXECUTE_COUNT);
  probe->SetExecutionsLimit(1);
  probe->onRun = [&, probe] {
    if (probe->runs > 1) return;
    poll(11);  // runs the same task to its limit
    EXPECT_EQ(deaths, 0);
  };
  poll(11);
  EXPECT_EQ(deaths, 1);
}

TEST_F(Tasks, NoThreadHoldsTwoSets) {
  // A task of one set works on the other while a second thread does the same the other way round.
  std::atomic<int> done{0};
  const auto cross = [&](TimedTaskType own, TimedTaskType other) {
    for (int i = 0; i < 200; ++i) {
      auto task = std::make_unique<TtthLambda>(
        [&, other] {
          int ignored = 0;
          auto* guest = new Probe(1000000, Task::ENDLESS, ignored);
          manager->AddTimedTask(guest, other);
          manager->RemoveTimedTask(guest, true);
          ++done;
        },
        0, Task::ENDLESS, "cross");
      manager->AddTimedTask(task.get(), own);
      task->EnableAndExecuteImmediate();
      manager->ProcessTasks(own);
      manager->RemoveTimedTask(task.get(), false);
    }
  };
  clock.set(2000);
  std::atomic<bool> stop{false};
  std::thread second([&] { cross(TASK_DRAW, TASK_NORMAL); });
  std::thread ticking([&] {
    while (!stop) clock.advance(1);
  });
  cross(TASK_NORMAL, TASK_DRAW);
  second.join();
  stop = true;
  ticking.join();
  EXPECT_GE(done, 400);
}

TEST_F(Tasks, FourThreadsAddAndRemoveWhileTwoProcess) {
  constexpr int PER_THREAD = 300;
  std::atomic<int> running{4};
  std::vector<std::thread> threads;
  std::atomic<int> made{0};
  for (int i = 0; i < 4; ++i)
    threads.emplace_back([&, i] {
      int mine = 0;
      for (int n = 0; n < PER_THREAD; ++n) {
        auto* probe = new Probe(0, Task::ENDLESS, mine);
        const auto set = static_cast<TimedTaskType>((i + n) % 2);
        manager->AddTimedTask(probe, set);
        EXPECT_TRUE(manager->IsTimedTaskValid(probe, TASK_ANY));
        probe->SetInterval(1);
        manager->RemoveTimedTask(probe, true);
      }
      made += mine;
      --running;
    });
  threads.emplace_back([&] {
    while (running > 0) manager->ProcessTasks(TASK_DRAW);
  });
  while (running > 0) {
    clock.advance(1);
    manager->ProcessTasks(TASK_NORMAL);
  }
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(made, 4 * PER_THREAD);
}

// Asynchronous tasks run by the real clock.

TEST(AsyncTask, ASelfFreeingTaskRunsAtOnceOnItsOwnThreadAndGoes) {
  std::atomic<int> runs{0};
  const auto self = std::this_thread::get_id();
  std::atomic<bool> other{false};
  auto payload = std::make_shared<int>(0);
  new TAsyncTimedTaskHandler(
    [&, payload] {
      other = std::this_thread::get_id() != self;
      ++runs;
    },
    3600000, Task::EXECUTE_ONCE, "loader", true, true);
  ASSERT_TRUE(TAsyncJob::WaitForNone(10000));
  EXPECT_EQ(runs, 1);
  EXPECT_TRUE(other);
  EXPECT_EQ(payload.use_count(), 1) << "the task deleted itself";
}

TEST(AsyncTask, NothingRunsWithoutAStart) {
  for (const bool autoFree : {false, true}) {
    int runs = 0;
    auto task =
      std::make_unique<TAsyncTimedTaskHandler>([&] { ++runs; }, 0, Task::ENDLESS, "idle", false, autoFree);
    task->free();
    EXPECT_EQ(task->completedCount(), 0u);
    task.reset();
    EXPECT_EQ(runs, 0);
  }
  EXPECT_EQ(TAsyncJob::Running(), 0);
}

TEST(AsyncTask, ItsThreadBearsItsName) {
  std::string name;
  new TAsyncTimedTaskHandler(
    [&] {
      char text[16] = "";
      pthread_getname_np(pthread_self(), text, sizeof text);
      name = text;
    },
    0, Task::EXECUTE_ONCE, "loader", true, true);
  ASSERT_TRUE(TAsyncJob::WaitForNone(10000));
  EXPECT_EQ(name, "async_loader");
}

TEST(AsyncTask, ADisabledOneCompletesItsRunsWithoutCalling) {
  std::atomic<int> runs{0};
  TAsyncTimedTaskHandler task([&] { ++runs; }, 1, Task::ENDLESS, "off", false, false);
  task.Disable();
  task.start();
  while (task.completedCount() < 3) SDL_Delay(1);
  task.free();
  EXPECT_EQ(runs, 0);
}

TEST(AsyncTask, HundredSelfFreeingTasksStartAndGo) {
  std::atomic<int> runs{0};
  for (int i = 0; i < 100; ++i)
    new TAsyncTimedTaskHandler([&] { ++runs; }, 0, Task::EXECUTE_ONCE, "many", true, true);
  ASSERT_TRUE(TAsyncJob::WaitForNone(30000));
  EXPECT_EQ(runs, 100);
  EXPECT_EQ(TAsyncJob::Running(), 0);
}

TEST(AsyncTask, AnOwnedTaskRunsOnUntilFreeAndCountsItsRuns) {
  std::atomic<int> runs{0};
  TAsyncTimedTaskHandler task([&] { ++runs; }, 1, Task::ENDLESS, "owned", false, false);
  EXPECT_EQ(task.completedCount(), 0u);
  task.start();
  while (runs < 3) SDL_Delay(1);
  task.free();
  EXPECT_EQ(task.completedCount(), static_cast<Uint32>(runs.load()));
  const int stopped = runs;
  task.start();
  while (runs == stopped) SDL_Delay(1);
  task.free();
  EXPECT_EQ(TAsyncJob::Running(), 0) << "an owned worker is waited for by its owner";
}

TEST(AsyncTask, AnOwnedOnceTaskRunsOnceAndIsFreedByItsDestructor) {
  std::atomic<int> runs{0};
  {
    TAsyncTimedTaskHandler task([&] { ++runs; }, 1, Task::EXECUTE_ONCE, "once", true, false);
    while (task.completedCount() == 0) SDL_Delay(1);
  }
  EXPECT_EQ(runs, 1);
}

TEST(AsyncTask, ADestructorWithoutFreeStopsTheWorker) {
  std::atomic<int> runs{0};
  {
    TAsyncTimedTaskHandler task([&] { ++runs; }, 3600000, Task::ENDLESS, "forgotten", true, false);
    while (runs == 0) SDL_Delay(1);
  }
  EXPECT_EQ(runs, 1);
}

TEST(AsyncTask, FreeOnItsOwnWorkerStopsWithoutWaiting) {
  std::atomic<int> runs{0};
  std::atomic<TAsyncTimedTaskHandler*> self{nullptr};
  TAsyncTimedTaskHandler task(
    [&] {
      ++runs;
      self.load()->free();
    },
    3600000, Task::ENDLESS, "suicidal", false, false);
  self = &task;
  task.start();
  while (task.completedCount() == 0) SDL_Delay(1);
  task.free();
  EXPECT_EQ(runs, 1);
}

// The counter of the worker never grows: a limit of 0 ends it after one run, a limit above 0 does not end it.
TEST(AsyncTask, ALimitAboveZeroDoesNotEndTheWorker) {
  for (const auto type : {Task::EXECUTE_COUNT, Task::EXECUTE_COUNT_NO_FREE}) {
    std::atomic<int> runs{0};
    TAsyncTimedTaskHandler task([&] { ++runs; }, 0, type, "limited", false, false);
    task.SetExecutionsLimit(2);
    task.start();
    while (runs < 6) SDL_Delay(1);
    task.free();
  }
  std::atomic<int> runs{0};
  auto payload = std::make_shared<int>(0);
  new TAsyncTimedTaskHandler([&, payload] { ++runs; }, 0, Task::EXECUTE_COUNT, "limit 0", true, true);
  ASSERT_TRUE(TAsyncJob::WaitForNone(10000)) << "a limit of 0 ends it";
  EXPECT_EQ(runs, 1);
}

TEST(AsyncTask, AnExceptionIsLoggedAndTheTaskGoesOn) {
  LogLines log;
  std::atomic<int> runs{0};
  TAsyncTimedTaskHandler task(
    [&] {
      if (++runs == 1) throw std::runtime_error("no");
    },
    0, Task::ENDLESS, "breaker", true, false);
  while (runs < 2) SDL_Delay(1);
  task.free();
  EXPECT_EQ(log.count("0 Async task unhandled exception...breaker"), 1);
  EXPECT_EQ(task.completedCount(), static_cast<Uint32>(runs - 1)) << "a run that threw is not completed";
}

}  // namespace
}  // namespace vendelo_sdl2
