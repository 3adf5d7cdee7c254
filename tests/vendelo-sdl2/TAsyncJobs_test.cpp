#include "vendelo-sdl2/TAsyncJobs.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <optional>
#include <thread>

#include "tests/support/ThreadState.h"

namespace vendelo_sdl2 {
namespace {

TEST(AsyncJobs, AreCountedFromTheirBeginToTheirEnd) {
  EXPECT_EQ(TAsyncJob::Running(), 0);
  EXPECT_TRUE(TAsyncJob::WaitForNone(0));
  {
    const TAsyncJob one, two;
    EXPECT_EQ(TAsyncJob::Running(), 2);
    EXPECT_FALSE(TAsyncJob::WaitForNone(1));
  }
  EXPECT_EQ(TAsyncJob::Running(), 0);
  EXPECT_TRUE(TAsyncJob::WaitForNone(0));
}

TEST(AsyncJobs, TheEndOfTheLastOneWakesWhoWaits) {
  constexpr Uint32 kTenMinutes = 600000;
  std::optional<TAsyncJob> one, two;
  one.emplace();
  two.emplace();
  std::atomic<pid_t> waiting{0};
  std::atomic<bool> woken{false};
  const auto before = std::chrono::steady_clock::now();
  std::thread waiter([&] {
    waiting = gettid();
    EXPECT_TRUE(TAsyncJob::WaitForNone(kTenMinutes));
    woken = true;
  });
  const auto sleeps = [&] { return waiting != 0 && isAsleep(waiting); };
  while (!sleeps()) std::this_thread::yield();
  one.reset();
  while (!woken && !sleeps()) std::this_thread::yield();
  EXPECT_FALSE(woken) << "one of them runs";
  std::thread([&] { two.reset(); }).join();
  waiter.join();
  EXPECT_LT(std::chrono::steady_clock::now() - before, std::chrono::minutes(5)) << "it has not waited to the end";
}

}  // namespace
}  // namespace vendelo_sdl2
