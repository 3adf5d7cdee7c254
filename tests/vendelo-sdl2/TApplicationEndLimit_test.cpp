// Orderly ends that hang: after ten seconds, here after a fifth of one, the process ends all the same, with the
// code that was due, and what the end owes to the machine is done. Each in a process of its own.
#include <gtest/gtest.h>
#include <unistd.h>
#include <atomic>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "tests/support/ChildProcess.h"
#include "tests/support/TestApplication.h"

using namespace vendelo_sdl2;

namespace {

const char line[] = ": ERROR: The end has taken ten seconds, what is left of it is left out\n";
const char delayed[] = "[run bash -c 'sleep 2; again' &]";
const char direct[] = "[run again]";

[[noreturn]] void hang() {
  for (;;) usleep(1000);
}

class HangingEnd : public testing::Test {
 protected:
  HangingEnd() {
    char name[] = "/tmp/hangingXXXXXX";
    folder = mkdtemp(name);
  }
  ~HangingEnd() override { std::filesystem::remove_all(folder); }

  // The application of a process whose end may take 200 ms; with the command that the machine restarts it by.
  TestApplication* make() const {
    setenv("DISABLE_REBOOT_ON_EXIT", "0", 1);
    setenv("SDL_VIDEODRIVER", "dummy", 1);
    SystemSeams.Poll = [](pollfd* files, nfds_t count, int) { return ::poll(files, count, 200); };
    SystemSeams.ExitNow = [](int code) { _exit(code); };
    SystemSeams.Reboot = [](int) { return -1; };
    SystemSeams.Alarm = [](unsigned seconds) {
      dprintf(STDERR_FILENO, "[alarm %u]", seconds);
      return ::alarm(seconds);
    };
    SystemSeams.System = [](const char* command) {
      dprintf(STDERR_FILENO, "[run %s]", command);
      return 0;
    };
    auto* app = new TestApplication;  // never deleted: the process ends
    app->onSetupGraphics = [] { return true; };
    app->TLogManager::Init(folder + "/top.log", nullptr, nullptr, false);
    app->SetParam("SHELL_CMD_RESTART", std::string("again"), PARAM_CACHE, "", "", true);
    return app;
  }
  static void run(TestApplication* app) {
    app->SetGUI<StubGui>(nullptr);
    app->LoadGUI(nullptr);
    app->Run();
    delete app;
    _exit(88);
  }
  std::string log() const {
    std::string text;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
      std::ifstream file(entry.path());
      text.append(std::istreambuf_iterator<char>(file), {});
    }
    return text;
  }

  std::string folder;
};

TEST_F(HangingEnd, OfAStuckDrawThreadHasItsCodeItsLineAndBothCopiesOfTheCommand) {
  const struct {
    const char* name;
    int signal;  // 0: the logic ends it
    const char* end;
  } rows[] = {{"logic", 0, "exit 0"}, {"signal", SIGTERM, "exit 15"}, {"other signal", SIGHUP, "exit 1"}};
  endAll(
    rows,
    [this](const auto& row) {
      return std::make_unique<ChildProcess>([&] {
        TestApplication* app = make();
        app->onDrawOnce = [app] {
          if (app->status() == TApplication::APP_RUNNING) hang();
          return 0;
        };
        app->onRunOnce = [app, &row] {
          if (app->status() != TApplication::APP_RUNNING) return 0;
          if (row.signal != 0) return std::raise(row.signal);
          app->terminate(DEFAULT, false);
          return 1;
        };
        run(app);
      });
    },
    [](const auto& row, ChildProcess& child) {
      EXPECT_EQ(child.end(), row.end);
      EXPECT_TRUE(tellsInOrder(child.output(), {"[alarm 1]", delayed, direct}));
      EXPECT_EQ(occurrences(delayed, child.output()), 1);
      EXPECT_EQ(occurrences(direct, child.output()), 1);
    });
  EXPECT_EQ(occurrences(line, log()), 3) << log();
  EXPECT_EQ(occurrences("Signal 15 received. Exiting...", log()), 1) << "what was queued is saved as well";
}

// The signal is noted and nobody serves it.
TEST_F(HangingEnd, OfAStuckMainThreadIsThatOfTheSignal) {
  ChildProcess child([this] {
    TestApplication* app = make();
    app->onRunOnce = [app] {
      if (app->status() != TApplication::APP_RUNNING) return 0;
      std::raise(SIGINT);
      hang();
    };
    run(app);
  });
  EXPECT_EQ(child.end(), "exit 2");
  EXPECT_TRUE(tellsInOrder(child.output(), {delayed, direct})) << child.output();
  EXPECT_EQ(occurrences(line, log()), 1);
}

TEST_F(HangingEnd, InsideTheTeardownRunsTheCommandThatHasNotRunYetAndTheOtherNotAgain) {
  ChildProcess child([this] {
    TestApplication* app = make();
    app->onDestroy = [] { hang(); };
    app->onRunOnce = [app] {
      app->terminate(DEFAULT, false);
      return 1;
    };
    run(app);
  });
  EXPECT_EQ(child.end(), "exit 0");
  EXPECT_TRUE(tellsInOrder(child.output(), {delayed, "[alarm 1]", direct})) << child.output();
  EXPECT_EQ(occurrences(delayed, child.output()), 1);
  EXPECT_EQ(occurrences(direct, child.output()), 1);
}

// As with a client that waits for its service. The log has been closed by then.
TEST_F(HangingEnd, BehindTheTeardownIsToldByTheLogAndRunsNoCommandAgain) {
  struct TWaitsInTheEnd : TestApplication {
    ~TWaitsInTheEnd() override { hang(); }
  };
  ChildProcess child([this] {
    delete make();
    auto* app = new TWaitsInTheEnd;
    app->onSetupGraphics = [] { return true; };
    app->TLogManager::Init(folder + "/top.log", nullptr, nullptr, false);
    app->SetParam("SHELL_CMD_RESTART", std::string("again"), PARAM_CACHE, "", "", true);
    app->onRunOnce = [app] {
      app->terminate(DEFAULT, false);
      return 1;
    };
    app->SetGUI<StubGui>(nullptr);
    app->LoadGUI(nullptr);
    app->Run();
    delete static_cast<TestApplication*>(app);
  });
  EXPECT_EQ(child.end(), "exit 0");
  EXPECT_EQ(occurrences(delayed, child.output()), 1);
  EXPECT_EQ(occurrences(direct, child.output()), 1);
  EXPECT_EQ(occurrences(line, log()), 1);
}

TEST_F(HangingEnd, DoesNotCutOffACommandThatTakesLong) {
  ChildProcess child([this] {
    static std::atomic<int> waits{0};
    static std::atomic<bool> runs{false};
    TestApplication* app = make();
    // Each time is over at once while the command runs, and never when it is done.
    SystemSeams.Poll = [](pollfd* files, nfds_t count, int) {
      while (!runs && waits == 0) usleep(1000);
      ++waits;
      return ::poll(files, count, runs ? 1 : 60000);
    };
    SystemSeams.System = [](const char* command) {
      dprintf(STDERR_FILENO, "[run %s]", command);
      if (std::string(command) != "again") return 0;
      runs = true;
      while (waits < 5) usleep(1000);
      runs = false;
      dprintf(STDERR_FILENO, "[done]");
      usleep(20000);  // to let the last of the short times pass
      return 0;
    };
    app->onRunOnce = [app] {
      app->terminate(DEFAULT, false);
      return 1;
    };
    run(app);
  });
  EXPECT_EQ(child.end(), "exit 88");
  EXPECT_TRUE(tellsInOrder(child.output(), {direct, "[done]"})) << child.output();
  EXPECT_EQ(occurrences("[alarm", child.output()), 0);
}

TEST_F(HangingEnd, WhoseLastStepsHangEndsASecondLater) {
  ChildProcess child([this] {
    TestApplication* app = make();
    SystemSeams.System = [](const char*) -> int { hang(); };
    app->onDrawOnce = [app] {
      if (app->status() == TApplication::APP_RUNNING) hang();
      return 0;
    };
    app->onRunOnce = [app] { return app->status() == TApplication::APP_RUNNING ? std::raise(SIGTERM) : 0; };
    run(app);
  });
  EXPECT_EQ(child.end(), "exit 15");
  EXPECT_EQ(occurrences("[alarm 1]", child.output()), 1);
}

TEST_F(HangingEnd, OfAFrameThatFailedBesideAStuckMainThreadIs0) {
  ChildProcess child([this] {
    TestApplication* app = make();
    static std::atomic<bool> stuck{false};
    app->onDrawOnce = [] { return stuck ? 1 : 0; };
    app->onRunOnce = [app]() -> int {
      if (app->status() != TApplication::APP_RUNNING) return 0;
      stuck = true;
      hang();
    };
    run(app);
  });
  EXPECT_EQ(child.end(), "exit 0");
  EXPECT_EQ(occurrences(line, log()), 1);
}

// The crash path has a limit of its own, and its own end.
TEST_F(HangingEnd, ThatCrashesEndsAsACrash) {
  ChildProcess child([this] {
    TestApplication* app = make();
    static std::atomic<int> waits{0};
    SystemSeams.Poll = [](pollfd* files, nfds_t count, int) { return ++waits, ::poll(files, count, 20); };
    SystemSeams.Alarm = [](unsigned seconds) {
      dprintf(STDERR_FILENO, "[alarm %u]", seconds);
      while (waits < 1) usleep(1000);
      return ::alarm(1);
    };
    app->onDestroy = [] { hang(); };
    app->onRunOnce = [app] {
      app->terminate(DEFAULT, false);
      return std::raise(SIGSEGV);
    };
    run(app);
  });
  EXPECT_EQ(child.end(), "signal 11");
  EXPECT_EQ(occurrences("[alarm 10]", child.output()), 1);
  EXPECT_EQ(occurrences("[alarm 1]", child.output()), 0);
  EXPECT_EQ(occurrences(line, log()), 0);
}

TEST_F(HangingEnd, OneThatEndsInTimeIsLeftAlone) {
  ChildProcess child([this] {
    TestApplication* app = make();
    SystemSeams.Poll = [](pollfd* files, nfds_t count, int) { return ::poll(files, count, 60000); };
    app->onRunOnce = [app] {
      app->terminate(DEFAULT, false);
      return 1;
    };
    run(app);
  });
  EXPECT_EQ(child.end(), "exit 88");
  EXPECT_EQ(occurrences(line, log()), 0);
}

}  // namespace
