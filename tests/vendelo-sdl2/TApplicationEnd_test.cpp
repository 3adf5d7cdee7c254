// Ends that begin where locks are held: whoever was to come next can still have them.
#include <gtest/gtest.h>
#include <unistd.h>
#include <atomic>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <thread>

#include "tests/support/ChildProcess.h"
#include "tests/support/TestApplication.h"
#include "tests/support/ThreadState.h"

using namespace vendelo_sdl2;

namespace {

struct NoGui : StubGui {
  NoGui() { throw std::runtime_error("no gui"); }
};

class SetGuiThatThrows : public testing::Test {
 protected:
  SetGuiThatThrows() {
    setenv("SDL_VIDEODRIVER", "dummy", 1);
    StubGui::onLoad() = [](void*) -> int { throw std::runtime_error("no pictures"); };
  }
  ~SetGuiThatThrows() override { StubGui::onLoad() = nullptr; }

  NoticeCapture notices;
  TestApplication app;
};

TEST_F(SetGuiThatThrows, InTheLoadOfTheModuleLeavesTheDrawMutexFree) {
  int data = 0;
  EXPECT_THROW(app.SetGUI<StubGui>(&data), std::runtime_error);
  EXPECT_TRUE(drawMutexIsFree(app));
  EXPECT_EQ(app.status(), TApplication::APP_INITIALIZING);
}

TEST_F(SetGuiThatThrows, InTheModulesConstructorLeavesTheDrawMutexFreeAndNoModule) {
  EXPECT_THROW(app.SetGUI<NoGui>(nullptr), std::runtime_error);
  EXPECT_TRUE(drawMutexIsFree(app));
  EXPECT_EQ(app.GUI(), nullptr);
  EXPECT_EQ(app.status(), TApplication::APP_INITIALIZING);
}

// A crashed thread does not wait for ever for what another one draws under.
TEST(CrashEnd, AsksForTheDrawMutexForAFifthOfASecond) {
  ChildProcess child([] {
    static std::atomic<int> sleeps{0};
    static std::atomic<bool> held{false};
    auto* app = new TestApplication;  // never deleted: the process ends
    SystemSeams.MicroSleep = [](useconds_t microseconds) {
      sleeps += microseconds == 1000;
      return 0;
    };
    SystemSeams.Kill = [](pid_t, int) {
      dprintf(STDERR_FILENO, "[slept %d]", sleeps.load());
      _exit(9);
      return 0;
    };
    std::thread([app] {
      app->lockDrawMutex();
      held = true;
      for (;;) usleep(1000);
    }).detach();
    while (!held) usleep(1000);
    std::raise(SIGSEGV);
  });
  EXPECT_EQ(child.end(), "exit 9");
  EXPECT_EQ(occurrences("[slept 200]", child.output()), 1) << child.output();
}

// The main mutex is held there, and the teardown takes it on the draw thread.
TEST(PoliteEnd, AskedForBySomeWorkBeforeTheMainLoopWaitsForTheEndOfTheWork) {
  ChildProcess child([] {
    setenv("SDL_VIDEODRIVER", "dummy", 1);
    auto* app = new TestApplication;  // never deleted: the process ends
    app->onSetupGraphics = [] { return true; };
    app->onState = [](TApplication::ApplicationState state) { dprintf(STDERR_FILENO, "[state %d]", state); };
    app->onDestroy = [] { dprintf(STDERR_FILENO, "[destroy]"); };
    app->onStartup = [app] {
      app->AddActionListener("Work",
                             new TahLambda(
                               [app](std::string, void*) {
                                 EXPECT_TRUE(app->SignalHandler(SIGTERM));
                                 dprintf(STDERR_FILENO, "[work done]");
                               },
                               TActionHandler::ahtExecuteOnce),
                             ACTION_THREAD_SAFE);
      app->GenerateAction("Work", nullptr, ACTION_ANY);
    };
    app->SetGUI<StubGui>(nullptr);
    app->LoadGUI(nullptr);
    app->Run();
  });
  EXPECT_EQ(child.end(), "exit " + std::to_string(SIGTERM));
  EXPECT_NE(child.output().find("[work done][state 5]"), std::string::npos) << child.output();
  EXPECT_NE(child.output().find("[state 7][state 8][destroy][state 9]"), std::string::npos) << child.output();
}

}  // namespace
