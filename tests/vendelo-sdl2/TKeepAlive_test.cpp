// Who of several users and deleters is the one that deletes.
#include "vendelo-sdl2/TKeepAlive.h"

#include <gtest/gtest.h>
#include <atomic>
#include <thread>
#include <vector>

using vendelo_sdl2::TKeepAlive;

TEST(KeepAlive, WithoutAUseTheDeleteIsDueAtOnce) {
  TKeepAlive object;
  EXPECT_TRUE(object.AskDelete());
  object.Begin();
  EXPECT_FALSE(object.End());
  EXPECT_TRUE(object.AskDelete());
}

TEST(KeepAlive, ADeleteWaitsForTheLastUse) {
  TKeepAlive object;
  object.Begin();
  object.Begin();
  EXPECT_FALSE(object.IsDeleteAsked());
  EXPECT_FALSE(object.AskDelete());
  EXPECT_TRUE(object.IsDeleteAsked());
  EXPECT_FALSE(object.AskDelete());  // asked twice, deleted once
  EXPECT_FALSE(object.End());
  EXPECT_TRUE(object.IsDeleteAsked());
  EXPECT_TRUE(object.End());
}

TEST(KeepAlive, AUseThatBeginsMeanwhileIsWaitedForToo) {
  TKeepAlive object;
  object.Begin();
  EXPECT_FALSE(object.AskDelete());
  object.Begin();
  EXPECT_FALSE(object.End());
  EXPECT_TRUE(object.End());
}

TEST(KeepAlive, ExactlyOneOfManyThreadsDeletes) {
  for (int round = 0; round < 50; ++round) {
    TKeepAlive object;
    std::atomic<int> deleters{0};
    for (int use = 0; use < 8; ++use) object.Begin();
    std::vector<std::thread> threads;
    for (int use = 0; use < 8; ++use) threads.emplace_back([&] { deleters += object.End(); });
    threads.emplace_back([&] { deleters += object.AskDelete(); });
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(deleters, 1);
  }
}
