// What the framework's classes give back of the locks, semaphores and threads that they make.
#include "tests/support/SdlHandles.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <thread>

#include "tests/support/TestApplication.h"
#include "vendelo-sdl2/TActionMan.h"
#include "vendelo-sdl2/TAsyncJobs.h"
#include "vendelo-sdl2/TParamMan.h"
#include "vendelo-sdl2/TTaskMan.h"

namespace vendelo_sdl2 {
namespace {

class SdlHandles : public testing::Test {
 protected:
  void TearDown() override { EXPECT_EQ(mBefore, sdlhandles::alive().kinds()); }
  // How many there are now that were not there at the start.
  int alive(const char* kind) const { return of(sdlhandles::alive().kinds(), kind) - of(mBefore, kind); }

 private:
  static int of(const std::map<std::string, int>& kinds, const char* kind) {
    const auto found = kinds.find(kind);
    return found == kinds.end() ? 0 : found->second;
  }
  const std::map<std::string, int> mBefore = sdlhandles::alive().kinds();
};

TEST_F(SdlHandles, OfAStoreOfParameters) {
  TParamMan store;
  store.SetParam("n", std::string("1"), PARAM_GLOBAL, "", "", false);
  EXPECT_GE(alive("mutex"), 2);
}

TEST_F(SdlHandles, OfABus) {
  TActionMan bus;
  bus.AddActionListener("Name", new TahLambda([](std::string, void*) {}, TActionHandler::ahtExecuteEndless),
                        ACTION_ASYNC);
  bus.GenerateAction("Name", nullptr, ACTION_ANY);
  bus.ProcessActions();
  bus.ExecuteActions(ACTION_ASYNC);
  ASSERT_TRUE(TAsyncJob::WaitForNone(60000));
  EXPECT_GE(alive("mutex"), 2);
}

TEST_F(SdlHandles, OfTasksWithAThread) {
  for (const bool start : {false, true}) {
    TAsyncTimedTaskHandler task([] {}, 1, TTimedTaskHandler::ENDLESS, "kept", start, false);
    EXPECT_GE(alive("semaphore"), 2);
    while (start && task.completedCount() < 3) std::this_thread::yield();
  }
  // One that frees itself is not there any more when its thread has ended.
  new TAsyncTimedTaskHandler([] {}, 1, TTimedTaskHandler::EXECUTE_ONCE, "freed", true, true);
  while (alive("semaphore") > 0) std::this_thread::yield();
}

TEST_F(SdlHandles, OfAnApplicationAndOfWhoWaitsForIt) {
  NoticeCapture notices;
  TestApplication app;
  const int own = alive("semaphore");
  EXPECT_GE(own, 8) << "one for each state";
  std::atomic<int> done{0};
  std::thread other([&] {
    for (int i = 0; i < 10; ++i) app.DeferSync([&] { ++done; }, false);
  });
  while (done < 10) app.ExecuteDeferredMethods();
  other.join();
  EXPECT_EQ(alive("semaphore"), own);
}

}  // namespace
}  // namespace vendelo_sdl2
