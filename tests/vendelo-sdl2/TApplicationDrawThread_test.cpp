#include <gtest/gtest.h>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <thread>

#include "tests/support/FakeClock.h"
#include "tests/support/TestApplication.h"

using namespace vendelo_sdl2;

namespace {

Trace* commands = nullptr;

int recordCommand(const char* command) {
  commands->add(std::string(SDL_WasInit(SDL_INIT_VIDEO) ? "up|" : "down|") + command);
  return 0;
}

// A program with a GUI module and the real draw thread, from Init to the end of Run.
class DrawThread : public testing::Test {
 protected:
  DrawThread() {
    setenv("SDL_VIDEODRIVER", "dummy", 1);
    SDL_Init(SDL_INIT_VIDEO);
    commands = &shell;
    SystemSeams.System = recordCommand;
    SystemSeams.Reboot = [](int) { return -1; };
    StubGui::onLoad() = nullptr;
    StubGui::onMainLogic() = nullptr;
    make();
  }
  ~DrawThread() override {
    app.reset();
    StubGui::onLoad() = nullptr;
    StubGui::onMainLogic() = nullptr;
    SDL_Quit();
  }
  void make() {
    app.reset();
    app = std::make_unique<TestApplication>();
    app->onSetupGraphics = [] { return true; };
    app->onRunOnce = [this] {
      if (app->status() == TApplication::APP_RUNNING) app->terminate(DEFAULT, false);
      return 0;
    };
  }
  int run() {
    EXPECT_EQ(app->SetGUI<StubGui>(nullptr), 0);
    app->LoadGUI(nullptr);
    return app->Run();
  }

  bool drawnEnough() const { return drawn[TApplication::APP_RUNNING] > 0 || !app->onDrawOnce; }

  SeamsGuard seams;
  NoticeCapture notices;
  Trace shell, trace;
  std::array<std::atomic<int>, 10> drawn{};  // frames by state
  std::unique_ptr<TestApplication> app;
};

TEST_F(DrawThread, WalksThroughItsStagesInOrder) {
  std::vector<TApplication::ApplicationState> states;
  app->onState = [&](TApplication::ApplicationState state) { states.push_back(state); };
  EXPECT_EQ(run(), 0);
  std::vector<std::string> lines;
  for (const auto& line : notices.trace.lines())
    if (line.find("|DRAW: ") != std::string::npos) lines.push_back(line);
  EXPECT_EQ(lines, (std::vector<std::string>{"Info|DRAW: Thread started, waiting for start of init...",
                                             "Info|DRAW: waiting for end of main init (APP_LOADING)...",
                                             "Info|DRAW: Loading GUI (APP_LOADING_GRAPHICS)...",
                                             "Info|DRAW: Waiting for end of startup procedures (APP_STARTUP)...",
                                             "Info|DRAW: Setting up graphics (APP_STARTUP_GRAPHICS)...",
                                             "Info|DRAW: Starting draw!"}));
  ASSERT_EQ(states.size(), 8u);
  for (int index = 0; index < 6; ++index) EXPECT_EQ(states[index], index + 1);
  EXPECT_EQ(states[6], TApplication::APP_TERMINATE);
  EXPECT_EQ(states[7], TApplication::APP_QUIT);
}

TEST_F(DrawThread, LoadsTheGuiOnItselfAndHandsItsResultOver) {
  int data = 5;
  StubGui::onLoad() = [&](void* given) {
    EXPECT_TRUE(app->IsInDrawThread());
    EXPECT_EQ(given, &data);
    EXPECT_EQ(app->status(), TApplication::APP_LOADING_GRAPHICS);
    return -3;
  };
  ASSERT_EQ(app->SetGUI<StubGui>(nullptr), 0);
  EXPECT_EQ(app->status(), TApplication::APP_LOADING);
  EXPECT_EQ(app->moduleNames(), std::vector<std::string>{"GUI1"});
  EXPECT_NE(app->GUI(), nullptr);
  EXPECT_EQ(app->LoadGUI(&data), -3);
  EXPECT_GE(app->status(), TApplication::APP_LOADING_2);
  EXPECT_EQ(GUI_LoadData, nullptr);
  EXPECT_TRUE(notices.trace.contains("Important|========== MAIN THREAD: LoadGUI started =========="));
  EXPECT_TRUE(notices.trace.contains("Important|========== MAIN THREAD: LoadGUI completed =========="));
  EXPECT_EQ(app->Run(), 0);  // a failed load is for the application to judge
}

TEST_F(DrawThread, DrawsAtLeastOnceBeforeEachNextStage) {
  app->onSetupGraphics = [&] {
    EXPECT_TRUE(app->IsInDrawThread());
    EXPECT_EQ(app->status(), TApplication::APP_STARTUP_GRAPHICS);
    trace.add("setup");
    return true;
  };
  app->onDrawOnce = [&] {
    EXPECT_TRUE(app->IsInDrawThread());
    ++drawn[app->status()];
    trace.add("draw");
    // A result is looked at only in the draw loop proper.
    return app->status() < TApplication::APP_RUNNING ? 9 : 0;
  };
  app->onRunOnce = [&] {
    if (drawnEnough()) app->terminate(DEFAULT, false);
    return 0;
  };
  EXPECT_EQ(run(), 0);
  EXPECT_LT(trace.indexOf("draw"), trace.indexOf("setup"));
  EXPECT_GE(drawn[TApplication::APP_LOADING_2] + drawn[TApplication::APP_STARTUP] +
              drawn[TApplication::APP_STARTUP_GRAPHICS],
            1);
  EXPECT_GE(drawn[TApplication::APP_RUNNING], 1);
}

TEST_F(DrawThread, WithoutSetUpGraphicsTheApplicationAdvancesItself) {
  app->onSetupGraphics = nullptr;
  std::vector<int> seen;
  app->onRunOnce = [&] {
    seen.push_back(app->status());
    if (app->status() == TApplication::APP_STARTUP_GRAPHICS && seen.size() > 3) app->advanceStatus();
    if (app->status() == TApplication::APP_RUNNING && drawnEnough()) app->terminate(DEFAULT, false);
    return 0;
  };
  EXPECT_EQ(run(), 0);
  EXPECT_EQ(seen.front(), TApplication::APP_STARTUP_GRAPHICS);  // the logic runs before APP_RUNNING all the same
  EXPECT_TRUE(
    notices.trace.contains("Info|DRAW: Done! Waiting for application to advance status (APP_RUNNING)..."));
}

TEST_F(DrawThread, ResultOfAFrameEndsTheProgramAndIsNegatedIntoTheLoops) {
  app->onRunOnce = nullptr;
  app->onDrawOnce = [this] { return app->status() == TApplication::APP_RUNNING ? 3 : 0; };
  EXPECT_EQ(run(), -3);
  EXPECT_EQ(app->TerminationType, DEFAULT);
}

TEST_F(DrawThread, EndOfTheLogicAloneEndsTheDrawThreadToo) {
  app->onRunOnce = [this] { return app->status() == TApplication::APP_RUNNING ? 6 : 0; };
  EXPECT_EQ(run(), 6);
  EXPECT_EQ(app->destroyCalls(), 1);
}

TEST_F(DrawThread, TearsDownOnceOnItselfBeforeTheLastState) {
  app->onDestroy = [&] {
    EXPECT_TRUE(app->IsInDrawThread());
    EXPECT_EQ(app->status(), TApplication::APP_TERMINATE);
    EXPECT_NE(SDL_WasInit(SDL_INIT_VIDEO), 0u);
    trace.add("destroy");
  };
  EXPECT_EQ(run(), 0);
  EXPECT_EQ(trace.count("destroy"), 1);
  EXPECT_EQ(SDL_WasInit(SDL_INIT_VIDEO), 0u);
  EXPECT_EQ(app->GUI(), nullptr);
  EXPECT_TRUE(app->moduleNames().empty());
  EXPECT_EQ(app->status(), TApplication::APP_QUIT);
}

TEST_F(DrawThread, GracefulEndClosesTheModulesBeforeTheTeardown) {
  struct Slow : TAppModule {
    explicit Slow(Trace& trace) : trace(trace) {}
    int Load(void*) override { return 0; }
    bool ReadyToExit() const override { return ++asked > 200; }
    int Close() override {
      trace.add("close");
      return 0;
    }
    Trace& trace;
    mutable int asked = 0;
  };
  (new Slow(trace))->Init(app.get(), "slow", nullptr, 1);
  app->onRunOnce = [this] {
    if (app->status() == TApplication::APP_RUNNING) app->terminate(DEFAULT, true);
    return 0;
  };
  app->onDestroy = [&] { trace.add("destroy"); };
  EXPECT_EQ(run(), 0);
  EXPECT_EQ(trace.lines(), (std::vector<std::string>{"close", "destroy"}));
}

TEST_F(DrawThread, ExceptionInTheTeardownIsDropped) {
  const ScopedEnvironment reboots("DISABLE_REBOOT_ON_EXIT", "0");
  make();
  app->SetParam("SHELL_CMD_RESTART", std::string("restart it"), PARAM_CACHE, "", "", true);
  app->onDestroy = [] { throw std::runtime_error("stuck"); };
  EXPECT_EQ(run(), 0);
  EXPECT_TRUE(shell.contains("down|restart it"));
  app->onDestroy = nullptr;
  app->Destroy();
}

TEST_F(DrawThread, ExitCommandRunsTwiceUnlessItIsForbiddenOrUnknown) {
  const std::vector<std::string> none;
  const std::vector<std::string> restart = {"up|bash -c 'sleep 2; restart it' &", "down|restart it"};
  const std::vector<std::string> shutdown = {"up|bash -c 'sleep 2; power off' &", "down|power off"};
  const struct {
    const char* name;
    const char* disableReboot;
    ETerminateType type;
    bool parameters;
    std::vector<std::string> commands;
    ETerminateType typeAfter;
  } rows[] = {
    {"a normal end", nullptr, DEFAULT, true, restart, RESTART},
    {"a normal end, variable 0", "0", DEFAULT, true, restart, RESTART},
    {"a normal end, forbidden", "1", DEFAULT, true, none, DEFAULT},
    {"no parameter", nullptr, DEFAULT, false, none, RESTART},
    {"restart asked for", "1", RESTART, true, restart, RESTART},
    {"shutdown asked for", nullptr, SHUTDOWN, true, shutdown, SHUTDOWN},
    {"shutdown without parameter", nullptr, SHUTDOWN, false, none, SHUTDOWN},
  };
  for (const auto& row : rows) {
    const ScopedEnvironment disable("DISABLE_REBOOT_ON_EXIT", row.disableReboot);
    SDL_Init(SDL_INIT_VIDEO);
    make();
    Trace ran;
    commands = &ran;
    if (row.parameters) {
      app->SetParam("SHELL_CMD_RESTART", std::string("restart it"), PARAM_CACHE, "", "", true);
      app->SetParam("SHELL_CMD_SHUTDOWN", std::string("power off"), PARAM_CACHE, "", "", true);
    }
    app->onRunOnce = [&] {
      if (app->status() == TApplication::APP_RUNNING) app->terminate(row.type, false);
      return 0;
    };
    app->onDestroy = [&] { EXPECT_EQ(ran.lines().size(), row.commands.empty() ? 0u : 1u) << row.name; };
    EXPECT_EQ(run(), 0) << row.name;
    EXPECT_EQ(ran.lines(), row.commands) << row.name;
    EXPECT_EQ(app->TerminationType, row.typeAfter) << row.name;
    app.reset();
  }
  commands = &shell;
}

TEST_F(DrawThread, ExitCommandIsFoundInEveryDomain) {
  for (const ParameterDomain domain : {PARAM_CACHE, PARAM_GLOBAL, PARAM_GROUP, PARAM_MINE}) {
    SDL_Init(SDL_INIT_VIDEO);
    make();
    Trace ran;
    commands = &ran;
    app->SetClientID("hall_7");
    app->SetParam("SHELL_CMD_SHUTDOWN", std::string("power off"), domain, "", "", true);
    app->onRunOnce = [&] {
      if (app->status() == TApplication::APP_RUNNING) app->terminate(SHUTDOWN, false);
      return 0;
    };
    run();
    EXPECT_EQ(ran.lines(), (std::vector<std::string>{"up|bash -c 'sleep 2; power off' &", "down|power off"}))
      << domain;
    app.reset();
  }
  commands = &shell;
}

// A lock that another thread finds taken.
std::string heldElsewhere(TestApplication& app) {
  std::string held;
  std::thread([&] {
    if (app.tryLockDrawMutex())
      app.unlockDrawMutex();
    else
      held += "draw ";
    if (SDL_TryLockMutex(app.mpMainMutex) == 0)
      SDL_UnlockMutex(app.mpMainMutex);
    else
      held += "main ";
  }).join();
  return held;
}

TEST_F(DrawThread, LocksEverybodyOutWhileItDestroysAndNobodyAfterwards) {
  app->onDestroy = [&] { trace.add(heldElsewhere(*app)); };
  run();
  EXPECT_EQ(trace.lines(), std::vector<std::string>{"draw main "});
  EXPECT_EQ(heldElsewhere(*app), "");
}

TEST_F(DrawThread, DrawMutexIsFreeOnceTheGuiIsMadeOrCannotBeMade) {
  struct Refused : StubGui {
    Refused() { throw std::runtime_error("no window"); }
  };
  EXPECT_THROW(app->SetGUI<Refused>(nullptr), std::runtime_error);
  EXPECT_EQ(heldElsewhere(*app), "");
  EXPECT_EQ(app->GUI(), nullptr);
  EXPECT_EQ(app->SetGUI<StubGui>(nullptr), 0);
  EXPECT_EQ(heldElsewhere(*app), "");
  app->EndDrawThread();
  app->Destroy();
}

TEST_F(DrawThread, GuiIsMadeUnderTheDrawMutexAndStandsBehindTheOtherModules) {
  struct Bare : TAppModule {
    int Load(void*) override { return 0; }
  };
  (new Bare)->Init(app.get(), "behind", nullptr, -2);
  (new Bare)->Init(app.get(), "before", nullptr, -1);
  (new Bare)->Init(app.get(), "front", nullptr, 0);
  app->TerminationType = RESTART;
  int data = 0;
  StubGui::onLoad() = [&](void* given) {
    if (app->IsInMainThread()) {
      EXPECT_EQ(given, &data);
      EXPECT_EQ(heldElsewhere(*app), "draw ");
      EXPECT_EQ(app->status(), TApplication::APP_INITIALIZING);
    }
    return app->IsInMainThread() ? 1 : 0;
  };
  EXPECT_EQ(app->SetGUI<StubGui>(&data), 1);
  EXPECT_EQ(app->TerminationType, DEFAULT);
  EXPECT_EQ(app->moduleNames(), (std::vector<std::string>{"front", "before", "GUI1", "behind"}));
  app->EndDrawThread();
}

// The load can take long: parameters are stored and the log is written all the while.
TEST_F(DrawThread, LoadGuiServesParametersAndLog) {
  char folder[] = "/tmp/loadXXXXXX";
  ASSERT_NE(mkdtemp(folder), nullptr);
  const auto noteLog = [](void* trace, const TLogEntry&, int) {
    if (!static_cast<Trace*>(trace)->contains("log")) static_cast<Trace*>(trace)->add("log");
  };
  app->TLogManager::Init(std::string(folder) + "/load.log", noteLog, &trace, false);
  app->onStoreParameters = [&] { trace.add("parameters"); };
  StubGui::onLoad() = [&](void*) {
    EXPECT_EQ(GUI_LoadResult, -1);
    app->WriteLog(0, 0, "a line");
    app->SetParam("Volume", std::string("5"), PARAM_GLOBAL, "", "", false);
    for (int waited = 0; waited < 60000 && trace.lines().size() < 2; ++waited) SDL_Delay(1);
    EXPECT_EQ(trace.lines().size(), 2u);
    return 0;
  };
  run();
  app->onStoreParameters = nullptr;
  std::filesystem::remove_all(folder);
}

TEST_F(DrawThread, ResultOfAFrameLeavesAShutdownThatIsUnderWayAlone) {
  std::atomic<bool> frameEnded{false};
  app->onDrawOnce = [&, frames = 0]() mutable {
    if (app->status() < TApplication::APP_RUNNING || ++frames < 3) return 0;
    while (!app->shuttingDown()) SDL_Delay(1);
    frameEnded = true;
    return 3;
  };
  app->onCanExit = [&] { return frameEnded.load(); };
  app->onRunOnce = [&] {
    if (app->status() == TApplication::APP_RUNNING) app->terminate(RESTART, true);
    return 0;
  };
  EXPECT_EQ(run(), -3);
  EXPECT_EQ(app->TerminationType, RESTART);
}

TEST_F(DrawThread, FailingSetUpReleasesItAndItStillWalksThrough) {
  int data = 1;
  StubGui::onLoad() = [&](void*) {
    trace.add(app->IsInDrawThread() ? "load on draw" : "load on main");
    return 8;
  };
  EXPECT_EQ(app->SetGUI<StubGui>(&data), 8);
  EXPECT_EQ(app->status(), TApplication::APP_TERMINATE);
  while (!trace.contains("load on draw")) SDL_Delay(1);
  app->EndDrawThread();
  EXPECT_EQ(trace.lines(), (std::vector<std::string>{"load on main", "load on draw"}));
}

TEST_F(DrawThread, IsLeftBeforeTheLoadWhenInitFailsAfterSetUp) {
  StubGui::onLoad() = [&](void*) {
    trace.add("load");
    return 0;
  };
  ASSERT_EQ(app->SetGUI<StubGui>(nullptr), 0);
  app->EndDrawThread();
  EXPECT_FALSE(trace.contains("load"));
  EXPECT_EQ(app->destroyCalls(), 0);
  app->Destroy();
  EXPECT_EQ(app->GUI(), nullptr);
}

TEST_F(DrawThread, LogicOfTheComponentsRunsOncePerFrame) {
  std::atomic<int> logic{0};
  int frames = 0;
  StubGui::onMainLogic() = [&] {
    EXPECT_TRUE(app->IsInMainThread());
    ++logic;
  };
  app->onRunOnce = nullptr;
  app->onDrawOnce = [&] {
    app->lockDrawMutex();
    const bool called = app->ComponentLogicCalled;
    app->ComponentLogicCalled = false;
    app->unlockDrawMutex();
    if (app->status() != TApplication::APP_RUNNING) return 0;
    if (called) ++frames;
    SDL_Delay(3);  // many passes
    return frames == 10 ? 1 : 0;
  };
  run();
  EXPECT_GE(logic, 10);
  EXPECT_LE(logic, 10 + 40);  // one for each frame, and for each of the few before APP_RUNNING
}

TEST_F(DrawThread, FrequencyIsMeasuredInRunning) {
  static FakeClock* ticks = nullptr;
  FakeClock clock(1000);
  ticks = &clock;
  SystemSeams.NanoSleep = [](const timespec* time, timespec*) {
    ticks->advance(static_cast<Uint32>(time->tv_sec * 1000 + time->tv_nsec / 1000000));
    return 0;
  };
  make();
  app->TargetFrequency = 100;
  app->SetLogicInterval(0);
  app->onDrawOnce = [] { return SDL_Delay(1), 0; };
  app->onRunOnce = [&] {
    if (app->status() < TApplication::APP_RUNNING)
      EXPECT_EQ(app->CurrentFrequency(), 0);
    else if (clock.now() > 3500)  // the first figure still counts the passes before
      app->terminate(DEFAULT, false);
    return 0;
  };
  run();
  EXPECT_NEAR(app->CurrentFrequency(), 100, 1);
}

}  // namespace
