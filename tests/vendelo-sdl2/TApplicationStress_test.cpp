// Many threads at once on what the application shares with them, for a bounded count.
#include <gtest/gtest.h>
#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <memory>
#include <thread>

#include "tests/support/TestApplication.h"
#include "vendelo-sdl2/TAsyncJobs.h"

using namespace vendelo_sdl2;

namespace {

constexpr int kThreads = 4;
constexpr int kRounds = 200;

class Stress : public testing::Test {
 protected:
  Stress() {
    setenv("SDL_VIDEODRIVER", "dummy", 1);
    SDL_Init(SDL_INIT_VIDEO);
    StubGui::onLoad() = nullptr;
    StubGui::onMainLogic() = nullptr;
    app->onSetupGraphics = [] { return true; };
    EXPECT_EQ(app->SetGUI<StubGui>(nullptr), 0);
    app->LoadGUI(nullptr);
  }
  ~Stress() override {
    app.reset();
    SDL_Quit();
  }
  // Runs `work` with the number of each thread.
  void startThreads(const std::function<void(int)>& work) {
    for (int thread = 0; thread < kThreads; ++thread) threads.emplace_back(work, thread);
  }
  void join() {
    for (auto& thread : threads) thread.join();
    threads.clear();
  }

  NoticeCapture notices;
  std::unique_ptr<TestApplication> app = std::make_unique<TestApplication>();
  std::vector<std::thread> threads;
};

// What one queue ran of each thread's calls.
struct Ran {
  std::array<int, kThreads> next{};
  int wrong = 0;  // out of order, or on another thread
  std::atomic<int> total{0};
  void count(int thread, int number, bool rightThread) {
    if (next[thread]++ != number || !rightThread) ++wrong;
    ++total;
  }
};

TEST_F(Stress, EveryDeferredCallRunsOnceInItsThreadsOrderOnTheRightThread) {
  Ran onMain, onDraw;
  std::atomic<int> notWaitedFor{0};
  app->onStartup = [&] {
    startThreads([&](int thread) {
      for (int i = 0; i < kRounds; ++i) {
        const auto toMain = [&, thread, i] { onMain.count(thread, i, app->IsInMainThread()); };
        const bool waits = i % 8 == 0;
        const int before = onMain.total;
        app->Defer(toMain, i % 3 == 0, waits);
        if (waits && onMain.total == before) ++notWaitedFor;
        if (i % 2)
          app->DeferToDraw([&, thread, i] { onDraw.count(thread, i, app->IsInDrawThread()); }, i % 3 == 0);
        else
          app->DeferToDrawRender([&, thread, i](SDL_Renderer*) { onDraw.count(thread, i, app->IsInDrawThread()); },
                                 i % 3 == 0);
      }
    });
  };
  app->onRunOnce = [&] {
    if (onMain.total == kThreads * kRounds && onDraw.total == kThreads * kRounds) app->terminate(DEFAULT, false);
    return 0;
  };
  EXPECT_EQ(app->Run(), 0);
  join();
  EXPECT_EQ(onMain.total, kThreads * kRounds);
  EXPECT_EQ(onDraw.total, kThreads * kRounds);
  EXPECT_EQ(onMain.wrong, 0);
  EXPECT_EQ(onDraw.wrong, 0);
  EXPECT_EQ(notWaitedFor, 0);
}

// The program ends under threads that go on deferring, and waiting for what they deferred.
TEST_F(Stress, TheEndLetsEveryWaiterGoAndDestroysWhatIsLeft) {
  const auto token = std::make_shared<int>(0);
  std::atomic<int> deferred{0};
  app->onRunOnce = [&] {
    if (deferred >= 100) app->terminate(DEFAULT, false);
    return 0;
  };
  app->onStartup = [&] {
    startThreads([&](int) {
      for (int after = 0; after < 50;) {  // and some more once it is over
        app->DeferSync([token] {}, false);
        app->DeferToDraw([token] {}, false);
        ++deferred;
        if (app->status() == TApplication::APP_QUIT) ++after;
      }
    });
  };
  EXPECT_EQ(app->Run(), 0);
  join();
  app.reset();
  EXPECT_EQ(token.use_count(), 1);
}

TEST(StressOfStates, TheStateGrowsStepByStepWhoeverChangesItAndWakesItsWaiters) {
  NoticeCapture notices;
  auto states = std::make_unique<TestApplication>();
  std::vector<std::thread> threads;
  std::vector<int> seen;
  states->onState = [&](TApplication::ApplicationState state) { seen.push_back(state); };
  std::vector<std::thread> waiters;
  for (int state = TApplication::APP_LOADING_GRAPHICS; state <= TApplication::APP_TERMINATE; ++state)
    waiters.emplace_back([&, state] {
      states->waitForStatus(static_cast<TApplication::ApplicationState>(state));
      EXPECT_GE(states->status(), state);
    });
  const auto change = [&](int thread) {
    for (int state = TApplication::APP_LOADING; state <= TApplication::APP_TERMINATE; ++state) {
      if (thread % 2)
        states->advanceStatus();
      else
        states->setStatus(static_cast<TApplication::ApplicationState>(state));
      if (thread == 0) states->terminate(DEFAULT, true);
    }
  };
  for (int thread = 0; thread < kThreads; ++thread) threads.emplace_back(change, thread);
  for (auto& thread : threads) thread.join();
  states->setStatus(TApplication::APP_TERMINATE);
  for (auto& waiter : waiters) waiter.join();
  EXPECT_TRUE(std::is_sorted(seen.begin(), seen.end()));
  EXPECT_TRUE(std::adjacent_find(seen.begin(), seen.end()) == seen.end());
  EXPECT_EQ(seen.back(), TApplication::APP_TERMINATE);
}

// Notes how far the others are when it is destroyed.
class Watching : public TAppModule {
 public:
  Watching(std::atomic<int>& ended, int& endedBefore) : mEnded(ended), mEndedBefore(endedBefore) {}
  int Load(void*) override { return 0; }
  int Unload() override { return mEndedBefore = mEnded, 0; }

 private:
  std::atomic<int>& mEnded;
  int& mEndedBefore;
};

// Detached work uses the application: the teardown waits for it before it destroys anything.
TEST_F(Stress, TheTeardownWaitsForAsynchronousHandlers) {
  std::atomic<int> begun{0}, ended{0};
  app->AddActionListener(
    "LongJob",
    new TahLambda(
      [&](std::string, void*) {
        ++begun;
        while (!app->shuttingDown()) std::this_thread::yield();
        std::this_thread::sleep_for(std::chrono::milliseconds(200));  // longer than the end takes
        app->WriteLog(1, 0, "still logging");
        ++ended;
      },
      TActionHandler::ahtExecuteOnce),
    ACTION_ASYNC);
  app->onStartup = [&] { app->GenerateAction("LongJob", nullptr, ACTION_ANY); };
  app->onRunOnce = [&] {
    if (begun == 1) app->terminate(DEFAULT, false);
    return 0;
  };
  int endedBefore = -1;
  (new Watching(ended, endedBefore))->Init(app.get(), "watching", nullptr, 1);
  EXPECT_EQ(app->Run(), 0);
  EXPECT_EQ(endedBefore, 1);
  EXPECT_EQ(TAsyncJob::Running(), 0);
}

}  // namespace
