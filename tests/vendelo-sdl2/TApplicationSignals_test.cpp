// Every end of the process by a signal, in child processes of their own; the backtrace in this one.
#include <gtest/gtest.h>
#include <unistd.h>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "tests/support/FakeClock.h"
#include "tests/support/TestApplication.h"
#include "vendelo-sdl2/MyUtils.h"

using namespace vendelo_sdl2;
using testing::ExitedWithCode;
using testing::KilledBySignal;

namespace {

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
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    SystemSeams.Alarm = [](unsigned) { return 0u; };  // a busy machine may take its time over a backtrace
  }
};

TEST_F(Signals, PoliteOnesCloseTheModulesAndExitWithTheirNumber) {
  for (const int signal : {SIGHUP, SIGINT, SIGQUIT, SIGTERM}) {
    const std::string number = std::to_string(signal);
    EXPECT_EXIT(Child(Gui::NONE).runAndDo([=] { std::raise(signal); }), ExitedWithCode(signal),
                "\\[request\\]\\[close\\]0\\|Signal " + number + " received. Exiting...\n.*\\[destroy\\]");
  }
}

TEST_F(Signals, PoliteOneDuringAFrameEndsTheProgramTheSameWay) {
  const auto child = [] {
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
  };
  EXPECT_EXIT(child(), ExitedWithCode(SIGTERM), "\\[request\\]\\[close\\].*Signal 15 received.*\\[destroy\\]");
}

TEST_F(Signals, PoliteOneDuringTheLoadStillClosesTheModules) {
  const auto child = [] {
    Child child(Gui::STUB);
    StubGui::onLoad() = [&](void*) {
      kill(getpid(), SIGTERM);
      while (!child.app->shuttingDown()) SDL_Delay(1);
      return 0;
    };
    child.run();
  };
  EXPECT_EXIT(child(), ExitedWithCode(SIGTERM), "\\[request\\]\\[close\\].*\\[destroy\\]");
}

TEST_F(Signals, DirectCallInsideAPassOrOnAnotherThreadIsServedWithoutLocks) {
  const auto inPass = [] {
    Child child(Gui::STUB);
    child.runAndDo([&] { EXPECT_TRUE(child.app->SignalHandler(SIGTERM)); });
  };
  EXPECT_EXIT(inPass(), ExitedWithCode(SIGTERM), "\\[close\\]");
  const auto onDraw = [] {
    Child child(Gui::STUB);
    child.runAndDo([&] { child.app->DeferToDraw([&] { child.app->SignalHandler(SIGHUP); }, false); });
  };
  EXPECT_EXIT(onDraw(), ExitedWithCode(SIGHUP), "\\[close\\]");
}

TEST_F(Signals, SameOneAgainIsIgnoredAnotherOneTakesOver) {
  const auto twice = [](int second) {
    TalkingModule::signalOnRequest = second;
    Child child(Gui::NONE);
    child.app->onDestroy = [&] {
      std::fprintf(stderr, "%d of the first", child.app->log.count("0|Signal 15 received. Exiting...\n"));
    };
    child.runAndDo([] { std::raise(SIGTERM); });
  };
  EXPECT_EXIT(twice(SIGTERM), ExitedWithCode(SIGTERM), "1 of the first");
  EXPECT_EXIT(twice(SIGINT), ExitedWithCode(SIGINT), "1 of the first");
}

TEST_F(Signals, PoliteOneAfterTheLastStateIsIgnored) {
  const auto child = [] {
    Child child(Gui::NONE);
    child.app->setStatus(TApplication::APP_QUIT);
    std::raise(SIGTERM);
    child.app->ServePendingSignal();
    std::fprintf(stderr, "still here");
    _exit(3);
  };
  EXPECT_EXIT(child(), ExitedWithCode(3), "still here");
}

// The shell is the program's child, and its command sends the signal from there: it comes while the command runs.
TEST_F(Signals, PoliteOneWhileAShellCommandRunsIsServed) {
  for (const int signal : {SIGHUP, SIGINT, SIGQUIT, SIGTERM}) {
    const std::string command = "kill -" + std::to_string(signal) + " $PPID";
    EXPECT_EXIT(Child(Gui::NONE).runAndDo([=] { MyUtils::SystemAsync(command); }), ExitedWithCode(signal),
                "\\[request\\]\\[close\\].*\\[destroy\\]");
  }
}

TEST_F(Signals, SleepThatASignalInterruptsIsNoFailure) {
  const auto child = [] {
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
  };
  EXPECT_EXIT(child(), ExitedWithCode(SIGTERM), "silent");
}

TEST_F(Signals, CrashesLeaveABacktraceAndEndByTheSignal) {
  for (const int signal : {SIGILL, SIGABRT, SIGFPE, SIGSEGV}) {
    const std::string number = std::to_string(signal);
    EXPECT_EXIT(Child(Gui::NONE).runAndDo([=] { std::raise(signal); }), KilledBySignal(signal),
                "Error: signal " + number + ":\n.*0\\|Signal " + number +
                  " received. Exiting...\n\n"
                  "0\\|================== BACKTRACE ==================\n0\\|\\(1\\) .*0\\|\\(2\\) .*"
                  "0\\|================ BACKTRACE END ================\n\\[destroy\\]");
  }
}

TEST_F(Signals, CrashOnTheDrawThreadDestroysThere) {
  const auto child = [] {
    Child child(Gui::STUB);
    child.app->onRunOnce = nullptr;
    child.app->onDrawOnce = [&] {
      child.app->lockDrawMutex();
      if (child.app->status() == TApplication::APP_RUNNING) std::raise(SIGSEGV);
      child.app->unlockDrawMutex();
      return 0;
    };
    child.run();
  };
  EXPECT_EXIT(child(), KilledBySignal(SIGSEGV), "\\[destroy\\]\\[gui deleted\\]");
}

TEST_F(Signals, CrashBesideAFrameThatNeverEndsLeavesTheGuiAlone) {
  const auto child = [] {
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
  };
  EXPECT_EXIT(child(), KilledBySignal(SIGSEGV), "\\[gui left alone\\]");
}

TEST_F(Signals, CrashReboots) {
  const auto child = [](const char* disable, int rebootResult) {
    const ScopedEnvironment environment("DISABLE_REBOOT_ON_EXIT", disable);
    static int result;
    result = rebootResult;
    SystemSeams.Reboot = [](int command) {
      std::fprintf(stderr, "[reboot %x]", static_cast<unsigned>(command));
      if (result == 0) _exit(77);
      return result;
    };
    SystemSeams.System = [](const char*) { return 0; };
    Child child(Gui::NONE);
    child.runAndDo([] { std::raise(SIGSEGV); });
  };
  const char* ending = "WILL REBOOT ON EXIT!!!!! ================\n\\[destroy\\].*\\[reboot 1234567\\]";
  EXPECT_EXIT(child(nullptr, 0), ExitedWithCode(77), ending);
  EXPECT_EXIT(child("0", 0), ExitedWithCode(77), ending);
  EXPECT_EXIT(child(nullptr, -1), KilledBySignal(SIGSEGV), ending);  // not allowed to: the signal ends the process
}

TEST_F(Signals, FrequencyOfZeroIsADivisionFault) {
  const auto child = [] {
    Child child(Gui::NONE);
    child.app->TargetFrequency = 0;
    child.run();
  };
  EXPECT_EXIT(child(), KilledBySignal(SIGFPE), "Error: signal 8:");
}

TEST_F(Signals, FailedThreadCheckIsACrash) {
  const auto check = [](Threads thread) {
    Child child(Gui::NONE);
    child.app->ThreadCheck(thread);
    _exit(0);
  };
  EXPECT_EXIT(check(THREAD_MAIN), ExitedWithCode(0), "");
  EXPECT_EXIT(check(THREAD_DRAW), KilledBySignal(SIGABRT), "Error: signal 6:.*\\[destroy\\]");
  EXPECT_EXIT(check(static_cast<Threads>(2)), KilledBySignal(SIGABRT), "Error: signal 6:.*\\[destroy\\]");
}

TEST_F(Signals, ThreadCheckIsSilentOnceTheThreadHasCrashed) {
  const auto child = [] {
    Child child(Gui::NONE);
    child.app->onDestroy = [&] {
      child.app->ThreadCheck(THREAD_DRAW);
      std::fprintf(stderr, "[went on]");
    };
    child.runAndDo([] { std::raise(SIGSEGV); });
  };
  EXPECT_EXIT(child(), KilledBySignal(SIGSEGV), "\\[went on\\]");
}

TEST_F(Signals, WithoutAnApplicationTheyEndTheProcessOrLetItEnd) {
  const auto child = [](int signal) {
    delete new TestApplication;
    std::raise(signal);
    _exit(5);
  };
  EXPECT_EXIT(child(SIGSEGV), KilledBySignal(SIGSEGV), "");
  EXPECT_EXIT(child(SIGFPE), KilledBySignal(SIGFPE), "");
  EXPECT_EXIT(child(SIGABRT), KilledBySignal(SIGABRT), "");
  EXPECT_EXIT(child(SIGTERM), KilledBySignal(SIGABRT), "");
  EXPECT_EXIT(child(SIGINT), ExitedWithCode(5), "");
}

// ---- the backtrace itself

const std::string begin = "0|================== BACKTRACE ==================";
const std::string end = "0|================ BACKTRACE END ================";
const std::string reboot = "0|================ WILL REBOOT ON EXIT!!!!! ================";

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
