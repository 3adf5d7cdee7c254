// What the tasks of a screen that runs for weeks take from the heap.
#include <gtest/gtest.h>

#include "tests/components/AllocationCount.h"
#include "tests/support/FakeClock.h"
#include "vendelo-sdl2/TTaskMan.h"

namespace vendelo_sdl2 {
namespace {

TEST(TaskManMemory, AOneShotTaskThatComesAgainInItsOwnRunTakesNothing) {
  FakeClock clock(1000);
  TTaskMan tasks;
  int runs = 0;
  TTimedTaskHandler* task = nullptr;
  task = tasks.AddTimedTask(new TtthLambda(
                              [&] {
                                ++runs;
                                if (runs == 100) return;
                                tasks.RemoveTimedTask(task, false);
                                task->Enable();
                                tasks.AddTimedTask(task, TASK_DRAW);
                              },
                              2200, TTimedTaskHandler::EXECUTE_ONCE, "again"),
                            TASK_DRAW);
  auto due = [&] {
    clock.advance(2201);
    tasks.ProcessTasks(TASK_DRAW);
  };
  due();
  EXPECT_EQ(1, runs);
  const long before = allocations::count;
  for (int i = 0; i < 98; ++i) due();
  EXPECT_EQ(before, allocations::count);
  EXPECT_EQ(99, runs);
  EXPECT_TRUE(tasks.IsTimedTaskValid(task, TASK_DRAW));
  clock.advance(2200);
  tasks.ProcessTasks(TASK_DRAW);
  EXPECT_EQ(99, runs) << "its time counts from when it came again";
  due();
  EXPECT_EQ(100, runs);
  EXPECT_FALSE(tasks.IsTimedTaskValid(task, TASK_ANY)) << "the run that does not ask for more is the last";
}

TEST(TaskManMemory, ATaskInThePlaceOfARemovedOneIsFoundAndTheOtherIsNot) {
  FakeClock clock(1000);
  TTaskMan tasks;
  TtthLambda first([] {}, 1, TTimedTaskHandler::ENDLESS, "first"),
    second([] {}, 1, TTimedTaskHandler::ENDLESS, "second");
  for (int i = 0; i < 3; ++i) {
    tasks.AddTimedTask(&first, TASK_NORMAL);
    tasks.AddTimedTask(&first, TASK_NORMAL);  // twice is once
    tasks.RemoveTimedTask(&first, false);
    tasks.AddTimedTask(&second, TASK_NORMAL);
    EXPECT_FALSE(tasks.IsTimedTaskValid(&first, TASK_ANY));
    EXPECT_TRUE(tasks.IsTimedTaskValid(&second, TASK_NORMAL));
    EXPECT_FALSE(tasks.IsTimedTaskValid(&second, TASK_DRAW));
    tasks.RemoveTimedTask(&second, false);
    EXPECT_FALSE(tasks.IsTimedTaskValid(&second, TASK_ANY));
  }
}

}  // namespace
}  // namespace vendelo_sdl2
