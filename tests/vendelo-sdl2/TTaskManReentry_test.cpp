#include "tests/vendelo-sdl2/TTaskManFixture.h"

#include <array>
#include <atomic>
#include <thread>
#include <vector>

#include "tests/support/ThreadState.h"

using namespace tasktest;

namespace {

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
  constexpr int kCount = 8;
  std::vector<Probe*> probes;
  int runs = 0;
  for (int i = 0; i < kCount; ++i) probes.push_back(add(10, Task::ENDLESS));
  for (auto* probe : probes)
    probe->onRun = [&, probe] {
      ++runs;
      for (auto* other : probes)
        if (other != probe) manager->RemoveTimedTask(other, true);
    };
  poll(11);
  EXPECT_EQ(runs, 1);
  EXPECT_EQ(deaths, kCount - 1);
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

TEST_F(Tasks, AWalkBlocksItsOwnSetAndNoOther) {
  Probe* probe = add(10, Task::ENDLESS);
  Probe* inDraw = add(10, Task::ENDLESS, TASK_DRAW);
  Probe* goes = add(1000, Task::ENDLESS);
  const std::function<void()> asks[] = {
    [&] { EXPECT_TRUE(manager->IsTimedTaskValid(probe, TASK_NORMAL)); },
    [&] { EXPECT_NE(manager->GetTimedTask(nullptr), nullptr); },
    [&] { manager->AddTimedTask(inDraw, TASK_NORMAL); },
    [&] { manager->RemoveTimedTask(goes, true); },
  };
  std::array<std::atomic<pid_t>, 4> asking{};
  std::atomic<int> answered{0};
  std::vector<std::thread> same;
  probe->onRun = [&] {
    std::thread([&] { EXPECT_TRUE(manager->IsTimedTaskValid(inDraw, TASK_DRAW)); }).join();
    for (size_t n = 0; n < asking.size(); ++n)
      same.emplace_back([&, n] {
        asking[n] = gettid();
        asks[n]();
        ++answered;
      });
    for (const auto& thread : asking)
      while (answered == 0 && !(thread && isAsleep(thread))) std::this_thread::yield();
    EXPECT_EQ(answered, 0);
  };
  poll(11);
  for (auto& thread : same) thread.join();
  EXPECT_EQ(answered, 4);
  EXPECT_EQ(deaths, 1);
  manager->RemoveTimedTask(inDraw, false);  // it stood in two sets
}

// Each stands in a task and wants the other one's set: would one of them keep its own, both would wait for ever.
TEST_F(Tasks, TasksThatCrossLetGoOfTheirOwnSets) {
  std::atomic<int> inside{0};
  const auto cross = [&](TimedTaskType own, TimedTaskType other) {
    Probe* probe = add(10, Task::ENDLESS, own);
    probe->onRun = [&, probe, other] {
      ++inside;
      while (inside < 2) std::this_thread::yield();
      EXPECT_FALSE(manager->IsTimedTaskValid(probe, other));
      add(10, Task::ENDLESS, other);
    };
    return probe;
  };
  const Probe* const normal = cross(TASK_NORMAL, TASK_DRAW);
  const Probe* const inDraw = cross(TASK_DRAW, TASK_NORMAL);
  clock.advance(11);
  std::thread draw([&] { manager->ProcessTasks(TASK_DRAW); });
  manager->ProcessTasks(TASK_NORMAL);
  draw.join();
  EXPECT_EQ(normal->runs + inDraw->runs, 2);
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
  constexpr int kPerThread = 300;
  std::atomic<int> running{4};
  std::vector<std::thread> threads;
  std::atomic<int> made{0};
  for (int i = 0; i < 4; ++i)
    threads.emplace_back([&, i] {
      int mine = 0;
      for (int n = 0; n < kPerThread; ++n) {
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
  EXPECT_EQ(made, 4 * kPerThread);
}

}  // namespace
