#include "tests/vendelo-sdl2/TTaskManFixture.h"

#include <pthread.h>

#include <atomic>
#include <stdexcept>
#include <thread>

#include "vendelo-sdl2/TAsyncJobs.h"

using namespace tasktest;

namespace {

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
    task.SetExecutionsLimit(1);
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

// The pause is the interval at least; how much more, only the machine knows.
TEST(AsyncTask, BetweenTwoRunsLiesTheInterval) {
  for (const bool autoFree : {false, true}) {
    std::atomic<TAsyncTimedTaskHandler*> self{nullptr};
    std::atomic<int> runs{0};
    std::atomic<Uint32> first{0};
    std::atomic<Uint32> second{0};
    auto* task = new TAsyncTimedTaskHandler(
      [&] {
        if (runs == 0) {
          first = SDL_GetTicks();
        } else {
          second = SDL_GetTicks();
          self.load()->SetExecutionsLimit(0);  // the end, also for one that nobody else may touch
        }
        ++runs;
      },
      60, Task::EXECUTE_COUNT, "paced", false, autoFree);
    self = task;
    task->SetExecutionsLimit(2);
    task->start();
    if (autoFree) {
      ASSERT_TRUE(TAsyncJob::WaitForNone(30000));
    } else {
      while (task->completedCount() < 2) SDL_Delay(1);
      delete task;
    }
    EXPECT_EQ(runs, 2);
    EXPECT_GE(second - first, 59u);  // the ticks are cut off
  }
}

TEST(AsyncTask, BothCountedKindsEndAtALimitOfZero) {
  for (const auto type : {Task::EXECUTE_COUNT, Task::EXECUTE_COUNT_NO_FREE}) {
    std::atomic<int> runs{0};
    new TAsyncTimedTaskHandler([&] { ++runs; }, 0, type, "limit 0", true, true);
    ASSERT_TRUE(TAsyncJob::WaitForNone(30000));
    EXPECT_EQ(runs, 1);
  }
}

}  // namespace
