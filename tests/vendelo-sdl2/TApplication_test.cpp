// States, environment and identity; the event pump, the loops and the signals have tests of their own.
#include "vendelo-sdl2/TApplication.h"

#include <SDL_image.h>
#include <gtest/gtest.h>
#include <unistd.h>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <thread>

#include "tests/support/ChildProcess.h"
#include "tests/support/FakeClock.h"
#include "tests/support/TestApplication.h"

using namespace vendelo_sdl2;
using Status = TApplication::ApplicationState;

namespace {
int syncs = 0;
}  // namespace

// Linked in front of the system's, to count.
extern "C" void sync() noexcept { ++syncs; }

namespace {

class Application : public testing::Test {
 protected:
  std::vector<int> semaphores() const {
    std::vector<int> values;
    for (SDL_semaphore* waiter : app->mStatusWaiter) values.push_back(static_cast<int>(SDL_SemValue(waiter)));
    return values;
  }
  // Without a GUI module the draw thread ends at once.
  void endDrawThread() {
    app->setStatus(TApplication::APP_LOADING);
    while (!notices.trace.contains("Critical|DRAW: No GUI module found, exiting!")) std::this_thread::yield();
    SDL_SemTryWait(app->mStatusWaiter[TApplication::APP_LOADING]);  // which it left alone if it came late
  }
  NoticeCapture notices;
  std::unique_ptr<TestApplication> app = std::make_unique<TestApplication>();
};

TEST_F(Application, StartsInitializingAndIsReachable) {
  EXPECT_EQ(pApp, app.get());
  EXPECT_EQ(app->status(), TApplication::APP_INITIALIZING);
  EXPECT_EQ(app->GUI(), nullptr);
  EXPECT_EQ(app->LogicInterval(), 10u);
  EXPECT_EQ(app->CurrentFrequency(), 0);
  EXPECT_EQ(app->TerminationType, DEFAULT);
  EXPECT_EQ(app->ClientID(), "");
  EXPECT_TRUE(app->IsInMainThread());
  EXPECT_FALSE(app->IsInDrawThread());
  EXPECT_EQ(app->Version() + app->Copyright(), "");
  EXPECT_FALSE(app->mDisableFunctionKeys);
  EXPECT_FALSE(app->ComponentLogicCalled);
  EXPECT_EQ(app->mSwipeDist, -1);
  EXPECT_STREQ(SDL_GetThreadName(app->mpDrawThread), "draw");
  EXPECT_TRUE(app->TApplication::CanExit());
  EXPECT_FALSE(app->TApplication::SetupGraphics());
  app.reset();
  EXPECT_EQ(pApp, nullptr);
}

TEST(ApplicationStart, TakesItsTicksFromTheClock) {
  const FakeClock clock(4711);
  const TestApplication app;
  EXPECT_EQ(app.AppStartTicks, 4711u);
}

TEST_F(Application, DestroyEndsModulesThenImagesThenTheLogAndSyncs) {
  char folder[] = "/tmp/destroyXXXXXX";
  ASSERT_NE(mkdtemp(folder), nullptr);
  struct Last : TAppModule {
    int Load(void*) override { return 0; }
    int Unload() override {
      EXPECT_EQ(IMG_Init(0), IMG_INIT_PNG);
      EXPECT_EQ(pApplication->_WriteLog(0, 0, 0, "still written"), 0);
      return syncs = 0;
    }
  };
  app->TLogManager::Init(std::string(folder) + "/destroy.log", nullptr, nullptr, false);
  ASSERT_EQ(IMG_Init(IMG_INIT_PNG), IMG_INIT_PNG);
  (new Last)->Init(app.get(), "last", nullptr, 1);
  app->TApplication::Destroy();
  EXPECT_TRUE(notices.trace.contains("Info|Successfully destroyed all modules."));
  EXPECT_TRUE(app->moduleNames().empty());
  EXPECT_EQ(IMG_Init(0), 0);
  EXPECT_EQ(app->_WriteLog(0, 0, 0, "too late"), -1);
  EXPECT_GE(syncs, 1);
  std::filesystem::remove_all(folder);
}

TEST_F(Application, DestructionReleasesTheWaitingDrawThread) {
  app.reset();
  EXPECT_TRUE(notices.trace.contains("Info|DRAW: Thread started, waiting for start of init..."));
  EXPECT_TRUE(notices.trace.contains("Critical|DRAW: No GUI module found, exiting!"));
}

TEST_F(Application, StateOnlyGrows) {
  std::vector<Status> seen;
  app->onState = [&](Status state) { seen.push_back(state); };
  app->setStatus(TApplication::APP_STARTUP);
  app->setStatus(TApplication::APP_STARTUP);
  app->setStatus(TApplication::APP_LOADING);
  EXPECT_EQ(app->status(), TApplication::APP_STARTUP);
  EXPECT_EQ(seen, std::vector<Status>{TApplication::APP_STARTUP});
  app->setStatus(TApplication::APP_QUIT);
  app->setStatus(static_cast<Status>(10));
  EXPECT_EQ(app->status(), TApplication::APP_QUIT);
  EXPECT_EQ(seen.size(), 2u);
}

// A change from another thread inside the report would come between only if the report were made without the lock.
TEST_F(Application, StateChangeIsReportedUnderItsLock) {
  std::vector<std::string> order;
  std::thread other;
  std::atomic<bool> started{false};
  app->onState = [&](Status state) {
    order.push_back("begin " + std::to_string(state));
    if (state == TApplication::APP_LOADING) {
      other = std::thread([&] {
        started = true;
        app->setStatus(TApplication::APP_STARTUP);
      });
      while (!started) std::this_thread::yield();
      for (int i = 0; i < 1000; ++i) std::this_thread::yield();
      EXPECT_EQ(app->status(), TApplication::APP_LOADING);
    }
    order.push_back("end " + std::to_string(state));
  };
  app->setStatus(TApplication::APP_LOADING);
  other.join();
  EXPECT_EQ(order, (std::vector<std::string>{"begin 1", "end 1", "begin 4", "end 4"}));
}

TEST_F(Application, SemaphoresOfAllPassedStatesArePostedOnce) {
  endDrawThread();
  EXPECT_EQ(semaphores(), (std::vector<int>{1, 0, 0, 0, 0, 0, 0, 0, 0, 0}));
  app->setStatus(TApplication::APP_STARTUP);
  EXPECT_EQ(semaphores(), (std::vector<int>{1, 0, 1, 1, 1, 0, 0, 0, 0, 0}));
  app->setStatus(TApplication::APP_TERMINATE);
  EXPECT_EQ(semaphores(), (std::vector<int>{1, 0, 1, 1, 1, 1, 1, 1, 1, 0}));
  app->setStatus(TApplication::APP_QUIT);
  EXPECT_EQ(semaphores(), (std::vector<int>{1, 1, 1, 1, 1, 1, 1, 1, 1, 1}));
}

TEST_F(Application, AdvancingStopsAtTerminate) {
  for (int state = TApplication::APP_LOADING; state <= TApplication::APP_TERMINATE; ++state) {
    app->advanceStatus();
    EXPECT_EQ(app->status(), state);
  }
  app->advanceStatus();
  EXPECT_EQ(app->status(), TApplication::APP_TERMINATE);
}

TEST_F(Application, ShuttingDownFromThatStateOn) {
  app->setStatus(TApplication::APP_RUNNING);
  EXPECT_FALSE(app->shuttingDown());
  app->setStatus(TApplication::APP_SHUTTING_DOWN);
  EXPECT_TRUE(app->shuttingDown());
}

TEST_F(Application, TerminateStoresTheTypeEvenWhenTheStateStays) {
  app->terminate(SHUTDOWN, true);
  EXPECT_EQ(app->status(), TApplication::APP_SHUTTING_DOWN);
  EXPECT_EQ(app->TerminationType, SHUTDOWN);
  app->terminate(RESTART, false);
  EXPECT_EQ(app->status(), TApplication::APP_TERMINATE);
  app->terminate(SHUTDOWN, true);
  EXPECT_EQ(app->status(), TApplication::APP_TERMINATE);
  EXPECT_EQ(app->TerminationType, SHUTDOWN);
}

TEST_F(Application, WaitReturnsWhenTheStateComesOrHasPassed) {
  std::atomic<bool> passed{false};
  std::thread waiter([&] {
    app->waitForStatus(TApplication::APP_RUNNING);
    passed = true;
  });
  app->setStatus(TApplication::APP_STARTUP);
  EXPECT_FALSE(passed);
  app->setStatus(TApplication::APP_RUNNING);
  waiter.join();
  app->waitForStatus(TApplication::APP_STARTUP);  // passed already
  app->setStatus(TApplication::APP_TERMINATE);
  app->waitForStatus(TApplication::APP_QUIT);  // has not come, but nothing is waited for in this state
}

TEST_F(Application, TheLoopLeavesAtOnceInAndAfterTheLastStates) {
  int logic = 0;
  app->onRunOnce = [&] { return ++logic, 0; };
  app->terminate(DEFAULT, false);
  EXPECT_EQ(app->MainLoop(), 0);
  EXPECT_EQ(app->status(), TApplication::APP_QUIT);
  EXPECT_EQ(app->MainLoop(), 0);
  EXPECT_EQ(logic, 0);
  EXPECT_EQ(app->destroyCalls(), 1);
}

TEST(ApplicationEnvironment, RatesAndVerticalSync) {
  const struct {
    const char *fps, *cpu, *vsync;
    unsigned targetFps, targetFrequency;
    bool sync;
  } rows[] = {
    {nullptr, nullptr, nullptr, 60, 1000, false},
    {"25", "200", "1", 25, 200, true},
    {"30fps", "x", "true", 30, 0, false},
    {"-1", "2000", "01", 4294967295u, 2000, false},
    {"", "", "", 0, 0, false},
    {"60", "500", "0", 60, 500, false},
    // Beyond the range: the nearest that there is, and above all not 0.
    {"4294967296", "4294967296", "0", 2147483647, 2147483647, false},
    {"-4294967296", "99999999999999999999", "0", 2147483648u, 2147483647, false},
  };
  for (const auto& row : rows) {
    const ScopedEnvironment fps("FPS", row.fps), cpu("CPU_FPS", row.cpu), vsync("VSYNC", row.vsync);
    TestApplication app;
    const std::string name = row.fps ? row.fps : "unset";
    EXPECT_EQ(app.TargetFPS.getCopy(), row.targetFps) << name;
    EXPECT_EQ(app.TargetFrequency.getCopy(), row.targetFrequency) << name;
    EXPECT_EQ(app.VSync.getCopy(), row.sync) << name;
  }
}

TEST(ApplicationEnvironment, RebootOnExit) {
  const struct {
    const char* value;
    bool reboots, logged;
  } rows[] = {{nullptr, true, false}, {"", true, true},     {"0", true, true},
              {"1", false, false},    {"no", false, false}, {"00", false, false}};
  for (const auto& row : rows) {
    const ScopedEnvironment disable("DISABLE_REBOOT_ON_EXIT", row.value);
    NoticeCapture notices;
    TestApplication app;
    const std::string name = row.value ? row.value : "unset";
    EXPECT_EQ(app.mRebootOnExit, row.reboots) << name;
    EXPECT_EQ(notices.trace.contains("Important|Will reboot system after close!"), row.logged) << name;
  }
}

TEST(ApplicationEnvironment, LogFileName) {
  // A folder alone is no name either: all its logs would count as ours, and the oldest be deleted.
  for (const char* none : {static_cast<const char*>(nullptr), "", "   ", "/tmp/logs/", " /tmp/logs/ ", "/"}) {
    const ScopedEnvironment file("LOG_FILENAME", none);
    NoticeCapture notices;
    TestApplication app;
    EXPECT_EQ(app.LogFile(), "tmpLog.txt") << (none ? none : "unset");
    EXPECT_TRUE(notices.trace.contains("Warning|No Log file set! Writing to tmpLog.txt"))
      << (none ? none : "unset");
  }
  const ScopedEnvironment file("LOG_FILENAME", "  /tmp/screen.log ");
  NoticeCapture notices;
  TestApplication app;
  EXPECT_EQ(app.LogFile(), "/tmp/screen.log");
  for (const auto& line : notices.trace.lines()) EXPECT_EQ(line.find("No Log file"), std::string::npos);
  app.SetLogFile("other.log");
  EXPECT_EQ(app.LogFile(), "other.log");
}

TEST_F(Application, KnowsItsBinaryAndItsInterval) {
  EXPECT_EQ(app->GetBinaryPath(), std::filesystem::read_symlink("/proc/self/exe").string());
  app->SetLogicInterval(25);
  EXPECT_EQ(app->LogicInterval(), 25u);
}

// This program again, under a name of 300 bytes.
TEST(BinaryPath, IsCutAt255Bytes) {
  if (std::getenv("TELL_BINARY_PATH")) {
    std::fprintf(stderr, "[%s]", TestApplication().GetBinaryPath().c_str());
    return;
  }
  namespace fs = std::filesystem;
  const fs::path self = fs::read_symlink("/proc/self/exe");
  const fs::path top = self.parent_path() / std::string(100, 'a');
  const fs::path program = top / std::string(100, 'b') / std::string(100, 'c');
  fs::create_directories(program.parent_path());
  fs::remove(program);
  fs::create_hard_link(self, program);
  ChildProcess child([&] {
    setenv("TELL_BINARY_PATH", "1", 1);
    execl(program.c_str(), program.c_str(), "--gtest_filter=BinaryPath.*", nullptr);
  });
  EXPECT_EQ(child.end(), "exit 0");
  EXPECT_EQ(occurrences("[" + program.string().substr(0, 255) + "]", child.output()), 1) << child.output();
  fs::remove_all(top);
}

TEST_F(Application, ClientIdentifierTakesItsParametersAlong) {
  app->SetClientID("7");
  EXPECT_EQ(app->ClientID(), "7");
  app->SetParam("Volume", std::string("5"), PARAM_CACHE, "", "", true);
  app->SetClientID("8");
  EXPECT_EQ(app->ClientID(), "8");
  EXPECT_EQ(app->GetParam("Volume", PARAM_MASK_ALL)->AsString(), "5");
}

TEST_F(Application, PollCombinesBothResults) {
  EXPECT_EQ(app->Poll(), app->TLogManager::Poll() | (app->TParamMan::Poll() << 8));
}

TEST_F(Application, UsageNamesTheVendor) {
  testing::internal::CaptureStdout();
  app->PrintUsage();
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "Application usage not defined. Contact vendor.\n");
}

}  // namespace
