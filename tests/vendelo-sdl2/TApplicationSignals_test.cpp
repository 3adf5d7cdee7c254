// Every end of the process by a signal, in child processes of their own; the backtrace in this one.
#include <gtest/gtest.h>
#include <unistd.h>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "tests/support/ChildProcess.h"
#include "tests/support/FakeClock.h"
#include "tests/support/TestApplication.h"
#include "vendelo-sdl2/MyUtils.h"

using namespace vendelo_sdl2;

namespace {

const std::string begin = "0|================== BACKTRACE ==================";
const std::string end = "0|================ BACKTRACE END ================";
const std::string reboot = "0|================ WILL REBOOT ON EXIT!!!!! ================";

// Tells on standard error how it is closed.
class TalkingModule : public TAppModule {
 public:
  int Load(void*) override { return 0; }
  void RequestClose() override {
    std::fprintf(stderr, "[request]");
    if (signalOnRequest) std::raise(signalOnRequest);
  }
  int Close() override { return std::fprintf(stderr, "[close]"), 0; }
  int Unload() override {
    return std::fprintf(stderr, "[gui %s]", StubGui::trace().contains("deleted") ? "deleted" : "left alone"), 0;
  }
  static int signalOnRequest;
};
int TalkingModule::signalOnRequest = 0;

enum class Gui { NONE, STUB };

// An application in a child process that writes its log to standard error when it is destroyed.
struct Child {
  explicit Child(Gui gui) : app(new TestApplication) {
    (new TalkingModule)->Init(app, "talking", nullptr, 5);
    app->onSetupGraphics = [] { return true; };
    app->onStartup = [this, gui] {
      if (gui == Gui::NONE) app->setStatus(TApplication::APP_STARTUP);
    };
    app->onDestroy = [this] {
      for (const auto& line : app->log.lines()) std::fprintf(stderr, "%s\n", line.c_str());
      std::fprintf(stderr, "[destroy]");
    };
    if (gui == Gui::NONE) return;
    setenv("SDL_VIDEODRIVER", "dummy", 1);
    SDL_Init(SDL_INIT_VIDEO);
    app->SetGUI<StubGui>(nullptr);
  }
  // Runs to the end, which must come by a signal.
  void run() {
    if (app->GUI()) app->LoadGUI(nullptr);
    app->Run();
    _exit(99);
  }
  // The logic of the first pass in APP_RUNNING does `act`.
  void runAndDo(const std::function<void()>& act) {
    bool done = false;
    app->onRunOnce = [&, this] {
      if (app->status() == TApplication::APP_RUNNING && !done) {
        done = true;
        act();
      }
      return 0;
    };
    run();
  }
  TestApplication* app;  // never deleted: the process ends
};

class Signals : public testing::Test {
 protected:
  Signals() {
    SystemSeams.Alarm = [](unsigned) { return 0u; };  // a busy machine may take its time over a backtrace
  }
  SeamsGuard seams;
};

// A signal of a table, and what to call it.
struct SignalRow {
  std::string name;
  int signal;
};
std::vector<SignalRow> rowsOf(const std::vector<int>& signals) {
  std::vector<SignalRow> rows;
  for (const int signal : signals) rows.push_back({"signal " + std::to_string(signal), signal});
  return rows;
}
const std::vector<SignalRow> polite = rowsOf({SIGHUP, SIGINT, SIGQUIT, SIGTERM});

std::string exitWith(int code) { return "exit " + std::to_string(code); }
std::string killedBy(int signal) { return "signal " + std::to_string(signal); }

TEST_F(Signals, PoliteOnesCloseTheModulesAndExitWithTheirNumber) {
  endAll(
    polite,
    [](const auto& row) {
      return std::make_unique<ChildProcess>([&] { Child(Gui::NONE).runAndDo([&] { std::raise(row.signal); }); });
    },
    [](const auto& row, ChildProcess& child) {
      EXPECT_EQ(child.end(), exitWith(row.signal));
      EXPECT_TRUE(tellsInOrder(
        child.output(),
        {"[request][close]0|Signal " + std::to_string(row.signal) + " received. Exiting...\n", "[destroy]"}));
    });
}

TEST_F(Signals, PoliteOneDuringAFrameEndsTheProgramTheSameWay) {
  ChildProcess process([] {
    Child child(Gui::STUB);
    child.app->onDrawOnce = [&] {
      static bool raised = false;
      if (child.app->status() == TApplication::APP_RUNNING && !raised) {
        raised = true;
        child.app->lockDrawMutex();
        kill(getpid(), SIGTERM);  // inside a frame; the draw thread itself is closed to polite signals
        child.app->unlockDrawMutex();
      }
      SDL_Delay(1);
      return 0;
    };
    child.run();
  });
  EXPECT_EQ(process.end(), exitWith(SIGTERM));
  EXPECT_TRUE(tellsInOrder(process.output(), {"[request][close]", "Signal 15 received", "[destroy]"}));
}

TEST_F(Signals, PoliteOneDuringTheLoadStillClosesTheModules) {
  ChildProcess process([] {
    Child child(Gui::STUB);
    StubGui::onLoad() = [&](void*) {
      kill(getpid(), SIGTERM);
      while (!child.app->shuttingDown()) SDL_Delay(1);
      return 0;
    };
    child.run();
  });
  EXPECT_EQ(process.end(), exitWith(SIGTERM));
  EXPECT_TRUE(tellsInOrder(process.output(), {"[request][close]", "[destroy]"}));
}

TEST_F(Signals, DirectCallInsideAPassIsServedWithoutLocks) {
  ChildProcess process([] {
    Child child(Gui::STUB);
    child.runAndDo([&] {
      if (child.app->SignalHandler(SIGTERM)) std::fprintf(stderr, "[served]");
    });
  });
  EXPECT_EQ(process.end(), exitWith(SIGTERM));
  EXPECT_TRUE(tellsInOrder(process.output(), {"[served]", "[close]"}));
}

TEST_F(Signals, DirectCallOnTheDrawThreadIsServedWithoutLocks) {
  ChildProcess process([] {
    Child child(Gui::STUB);
    child.runAndDo([&] { child.app->DeferToDraw([&] { child.app->SignalHandler(SIGHUP); }, false); });
  });
  EXPECT_EQ(process.end(), exitWith(SIGHUP));
  EXPECT_TRUE(tellsInOrder(process.output(), {"[close]"}));
}

TEST_F(Signals, SameOneAgainIsIgnoredAnotherOneTakesOver) {
  endAll(
    rowsOf({SIGTERM, SIGINT}),
    [](const auto& second) {
      return std::make_unique<ChildProcess>([&] {
        TalkingModule::signalOnRequest = second.signal;
        Child child(Gui::NONE);
        child.app->onDestroy = [&] {
          std::fprintf(stderr, "%d of the first", child.app->log.count("0|Signal 15 received. Exiting...\n"));
        };
        child.runAndDo([] { std::raise(SIGTERM); });
      });
    },
    [](const auto& second, ChildProcess& child) {
      EXPECT_EQ(child.end(), exitWith(second.signal));
      EXPECT_TRUE(tellsInOrder(child.output(), {"1 of the first"}));
    });
}

TEST_F(Signals, PoliteOneAfterTheLastStateIsIgnored) {
  ChildProcess process([] {
    Child child(Gui::NONE);
    child.app->setStatus(TApplication::APP_QUIT);
    std::raise(SIGTERM);
    child.app->ServePendingSignal();
    _exit(3);
  });
  EXPECT_EQ(process.end(), exitWith(3));
}

// The shell is the program's child, and its command sends the signal from there: it comes while the command runs.
TEST_F(Signals, PoliteOneWhileAShellCommandRunsIsServed) {
  endAll(
    polite,
    [](const auto& row) {
      return std::make_unique<ChildProcess>([&] {
        const std::string command = "kill -" + std::to_string(row.signal) + " $PPID";
        Child(Gui::NONE).runAndDo([&] { MyUtils::SystemAsync(command); });
      });
    },
    [](const auto& row, ChildProcess& child) {
      EXPECT_EQ(child.end(), exitWith(row.signal));
      EXPECT_TRUE(tellsInOrder(child.output(), {"[request][close]", "[destroy]"}));
    });
}

TEST_F(Signals, SleepThatASignalInterruptsIsNoFailure) {
  ChildProcess process([] {
    SystemSeams.NanoSleep = [](const timespec*, timespec*) {
      std::raise(SIGTERM);
      return -1;
    };
    Child child(Gui::NONE);
    testing::internal::CaptureStdout();
    child.app->onDestroy = [] {
      const bool complained = testing::internal::GetCapturedStdout().find("Nano sleep") != std::string::npos;
      std::fprintf(stderr, complained ? "complained" : "silent");
    };
    child.run();
  });
  EXPECT_EQ(process.end(), exitWith(SIGTERM));
  EXPECT_TRUE(tellsInOrder(process.output(), {"silent"}));
}

TEST_F(Signals, CrashesLeaveABacktraceAndEndByTheSignal) {
  endAll(
    rowsOf({SIGILL, SIGABRT, SIGFPE, SIGSEGV}),
    [](const auto& row) {
      return std::make_unique<ChildProcess>([&] { Child(Gui::NONE).runAndDo([&] { std::raise(row.signal); }); });
    },
    [](const auto& row, ChildProcess& child) {
      EXPECT_EQ(child.end(), killedBy(row.signal));
      const std::string number = std::to_string(row.signal);
      EXPECT_TRUE(tellsInOrder(
        child.output(),
        {"Error: signal " + number + ":\n", "0|Signal " + number + " received. Exiting...\n\n" + begin + "\n0|(1) ",
         "\n0|(2) ", "\n" + end + "\n[destroy]"}));
    });
}

TEST_F(Signals, CrashOnTheDrawThreadDestroysThere) {
  ChildProcess process([] {
    Child child(Gui::STUB);
    child.app->onRunOnce = nullptr;
    child.app->onDrawOnce = [&] {
      child.app->lockDrawMutex();
      if (child.app->status() == TApplication::APP_RUNNING) std::raise(SIGSEGV);
      child.app->unlockDrawMutex();
      return 0;
    };
    child.run();
  });
  EXPECT_EQ(process.end(), killedBy(SIGSEGV));
  EXPECT_TRUE(tellsInOrder(process.output(), {"[destroy][gui deleted]"}));
}

TEST_F(Signals, CrashBesideAFrameThatNeverEndsLeavesTheGuiAlone) {
  ChildProcess process([] {
    Child child(Gui::STUB);
    std::atomic<bool> inFrame{false};
    child.app->onDrawOnce = [&] {
      if (child.app->status() != TApplication::APP_RUNNING) return 0;
      child.app->lockDrawMutex();
      inFrame = true;
      for (;;) SDL_Delay(1000);
    };
    child.app->AddTimedTask(new TtthLambda(
                              [&] {
                                if (inFrame) std::raise(SIGSEGV);
                              },
                              0, TTimedTaskHandler::ENDLESS, "crash"),
                            TASK_THREAD_SAFE);
    child.run();
  });
  EXPECT_EQ(process.end(), killedBy(SIGSEGV));
  EXPECT_TRUE(tellsInOrder(process.output(), {"[gui left alone]"}));
}

TEST_F(Signals, CrashReboots) {
  const struct {
    const char* name;
    const char* disable;
    int result;
    std::string end;
  } rows[] = {{"nobody disables it", nullptr, 0, exitWith(77)},
              {"zero does not disable it", "0", 0, exitWith(77)},
              {"not allowed to, the signal ends the process", nullptr, -1, killedBy(SIGSEGV)}};
  endAll(
    rows,
    [](const auto& row) {
      return std::make_unique<ChildProcess>([&] {
        const ScopedEnvironment environment("DISABLE_REBOOT_ON_EXIT", row.disable);
        static int result;
        result = row.result;
        SystemSeams.Reboot = [](int command) {
          std::fprintf(stderr, "[reboot %x]", static_cast<unsigned>(command));
          if (result == 0) _exit(77);
          return result;
        };
        SystemSeams.System = [](const char*) { return 0; };
        Child child(Gui::NONE);
        child.runAndDo([] { std::raise(SIGSEGV); });
      });
    },
    [](const auto& row, ChildProcess& child) {
      EXPECT_EQ(child.end(), row.end);
      EXPECT_TRUE(tellsInOrder(child.output(), {reboot + "\n[destroy]", "[reboot 1234567]"}));
    });
}

TEST_F(Signals, FrequencyOfZeroIsADivisionFault) {
  ChildProcess process([] {
    Child child(Gui::NONE);
    child.app->TargetFrequency = 0;
    child.run();
  });
  EXPECT_EQ(process.end(), killedBy(SIGFPE));
  EXPECT_TRUE(tellsInOrder(process.output(), {"Error: signal 8:"}));
}

TEST_F(Signals, FailedThreadCheckIsACrash) {
  const struct {
    const char* name;
    int thread;
    std::string end;
    std::vector<std::string> told;
  } rows[] = {
    {"this thread", THREAD_MAIN, exitWith(0), {}},
    {"another thread", THREAD_DRAW, killedBy(SIGABRT), {"Error: signal 6:", "[destroy]"}},
    {"no thread", 2, killedBy(SIGABRT), {"Error: signal 6:", "[destroy]"}},
  };
  endAll(
    rows,
    [](const auto& row) {
      return std::make_unique<ChildProcess>([&] {
        Child child(Gui::NONE);
        child.app->ThreadCheck(static_cast<Threads>(row.thread));
        _exit(0);
      });
    },
    [](const auto& row, ChildProcess& child) {
      EXPECT_EQ(child.end(), row.end);
      EXPECT_TRUE(tellsInOrder(child.output(), row.told));
    });
}

TEST_F(Signals, ThreadCheckIsSilentOnceTheThreadHasCrashed) {
  ChildProcess process([] {
    Child child(Gui::NONE);
    child.app->onDestroy = [&] {
      child.app->ThreadCheck(THREAD_DRAW);
      std::fprintf(stderr, "[went on]");
    };
    child.runAndDo([] { std::raise(SIGSEGV); });
  });
  EXPECT_EQ(process.end(), killedBy(SIGSEGV));
  EXPECT_TRUE(tellsInOrder(process.output(), {"[went on]"}));
}

TEST_F(Signals, WithoutAnApplicationTheyEndTheProcessOrLetItEnd) {
  const struct {
    const char* name;
    int signal;
    std::string end;
  } rows[] = {{"memory", SIGSEGV, killedBy(SIGSEGV)},
              {"division", SIGFPE, killedBy(SIGFPE)},
              {"abort", SIGABRT, killedBy(SIGABRT)},
              {"end", SIGTERM, killedBy(SIGABRT)},
              {"interrupt", SIGINT, exitWith(5)}};
  endAll(
    rows,
    [](const auto& row) {
      return std::make_unique<ChildProcess>([&] {
        delete new TestApplication;
        std::raise(row.signal);
        _exit(5);
      });
    },
    [](const auto& row, ChildProcess& child) { EXPECT_EQ(child.end(), row.end); });
}

// ---- the backtrace itself

TEST(Backtrace, OneFrameHasNoBannersButTheRebootLine) {
  TestApplication app;
  void* frames[] = {reinterpret_cast<void*>(&std::raise)};
  app.LogBacktrace(frames, 1);
  EXPECT_TRUE(app.log.lines().empty());
  app.mRebootOnExit = true;
  app.LogBacktrace(frames, 1);
  EXPECT_EQ(app.log.lines(), std::vector<std::string>{reboot});
}

TEST(Backtrace, NamesEveryFrameButTheFirst) {
  TestApplication app;
  void* frame = reinterpret_cast<void*>(&std::raise);
  void* frames[] = {frame, frame, frame};
  app.LogBacktrace(frames, 3);
  const auto lines = app.log.lines();
  ASSERT_EQ(lines.size(), 4u);
  EXPECT_EQ(lines[0], begin);
  EXPECT_EQ(lines[1].rfind("0|(1) ", 0), 0u);
  EXPECT_EQ(lines[2].rfind("0|(2) ", 0), 0u);
  EXPECT_EQ(lines[3], end);
  EXPECT_GT(lines[1].size(), std::string("0|(1) ").size());  // what the tool answered
}

// Nothing after it may be needed for that: the process can end at any step from here on.
TEST(Backtrace, StandsInTheFileWhenItIsWritten) {
  const FakeClock clock(1000);
  char folder[] = "/tmp/backtraceXXXXXX";
  ASSERT_NE(mkdtemp(folder), nullptr);
  TestApplication app;
  app.TLogManager::Destroy();
  app.TLogManager::Init(std::string(folder) + "/app.log", nullptr, nullptr, false);
  void* frames[] = {nullptr, nullptr};
  app.LogBacktrace(frames, 2);
  std::ifstream file(app.GetLogFileName());
  const std::string log(std::istreambuf_iterator<char>(file), {});
  EXPECT_NE(log.find(end.substr(2)), std::string::npos) << log;
  app.TLogManager::Destroy();
  std::filesystem::remove_all(folder);
}

}  // namespace
