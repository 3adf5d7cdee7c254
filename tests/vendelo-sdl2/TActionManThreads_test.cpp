#include "tests/vendelo-sdl2/TActionManFixture.h"

#include <pthread.h>

#include <atomic>
#include <mutex>
#include <set>
#include <stdexcept>
#include <thread>
#include <vector>

#include "tests/support/ChildProcess.h"
#include "tests/support/ThreadState.h"
#include "vendelo-sdl2/TAsyncJobs.h"

using namespace bustest;

namespace {

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

// Suites of this ending run first, while the process has one thread.
TEST(ActionAsyncDeathTest, AnExceptionEndsTheProcess) {
  ChildProcess child([] {
    Bus bus;
    bus.AddActionListener("thrower", new TahLambda([](std::string, void*) { throw 1; }, Handler::ahtExecuteEndless),
                          ACTION_ASYNC);
    bus.fire("thrower", ACTION_ANY, ACTION_ASYNC);
    TAsyncJob::WaitForNone(60000);
  });
  EXPECT_EQ(child.end(), "signal 6");
}

TEST(ActionThreads, GeneratingWaitsForTheQueueAndForNothingElse) {
  Bus bus;
  bus.listen("abcd", "x");
  SDL_LockMutex(bus.ActionListMutex);
  for (auto* mutex : bus.ToRunMutex) SDL_LockMutex(mutex);
  std::thread([&] { bus.GenerateAction("abcd", nullptr, ACTION_ANY); }).join();
  for (auto* mutex : bus.ToRunMutex) SDL_UnlockMutex(mutex);
  SDL_UnlockMutex(bus.ActionListMutex);
  std::atomic<pid_t> asking{0};
  std::atomic<bool> done{false};
  SDL_LockMutex(bus.ActionQueueMutex);
  std::thread waiting([&] {
    asking = gettid();
    bus.GenerateAction("abcd", nullptr, ACTION_ANY);
    done = true;
  });
  while (!done && !(asking && isAsleep(asking))) std::this_thread::yield();
  EXPECT_FALSE(done);
  SDL_UnlockMutex(bus.ActionQueueMutex);
  waiting.join();
  bus.ProcessActions();
  bus.ExecuteActions(ACTION_NORMAL);
  EXPECT_EQ(bus.ran, "xx");
}

TEST(ActionStress, FourThreadsGenerateWhileTwoExecuteAndRegister) {
  Bus bus;
  std::atomic<int> runs{0};
  constexpr int kPerThread = 500;
  for (const auto type : {ACTION_NORMAL, ACTION_DRAW})
    bus.AddActionListener("count",
                          new TahLambda([&runs](std::string, void*) { ++runs; }, Handler::ahtExecuteEndless), type);
  std::atomic<int> generating{4};
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i)
    threads.emplace_back([&] {
      for (int n = 0; n < kPerThread; ++n) bus.GenerateAction("counted", nullptr, ACTION_ANY);
      --generating;
    });
  threads.emplace_back([&] {
    while (generating > 0) bus.ExecuteActions(ACTION_DRAW);
  });
  threads.emplace_back([&] {
    Target target;
    for (int n = 0; n < kPerThread; ++n) {
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
  EXPECT_EQ(runs, 2 * 4 * kPerThread);
  EXPECT_EQ(bus.GetAction("count")->GetHandlersCount(ACTION_THREAD_SAFE), 0);
}

}  // namespace
