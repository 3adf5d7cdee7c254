#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <memory>

#include "tests/support/FakeClock.h"
#include "tests/support/LogLines.h"
#include "vendelo-sdl2/TTaskMan.h"

// What the tests of the timed tasks share.
namespace tasktest {

using namespace vendelo_sdl2;

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

}  // namespace tasktest
