// Every way in which the program ends, each in a process of its own with an application without a window: from the
// entry point to the exit code.
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <stdexcept>
#include <thread>

#include "common/Logger.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/TestApplication.h"
#include "vendelo-sdl2/MyUtils.h"
#include "vesperatopscreen/AppMain.h"

using namespace vendelo_sdl2;

namespace {

int StubAppMain(int argc, char** argv);

// The program's own entry point, with another application behind it.
#define main ProgramMain
#define AppMain StubAppMain
#include "../../src/vesperatopscreen/main.cpp"
#undef AppMain
#undef main

// Tells what is going on, in one piece.
void say(const std::string& line) {
  if (write(STDERR_FILENO, (line + "\n").c_str(), line.size() + 1) < 0) std::abort();
}

void say(const std::string& line, int number) { say(line + " " + std::to_string(number)); }

// Tells how it is closed.
class ToldModule : public TAppModule {
 public:
  int Load(void*) override { return 0; }
  void RequestClose() override {
    say(pApp->IsInMainThread() ? "request on main" : "request elsewhere");
    if (onRequest()) onRequest()();
  }
  int Close() override { return say("close"), 0; }
  int Unload() override {
    return say(StubGui::trace().contains("deleted") ? "unload, gui deleted" : "unload, gui left alone"), 0;
  }
  static std::function<void()>& onRequest() {
    static auto& hook = *new std::function<void()>;
    return hook;
  }
};

// Tells every line of its log.
class ToldApplication : public TestApplication {
 public:
  int _WriteLog(char color, TLogType type, unsigned long gameId, const std::string& text) override {
    say(std::to_string(type) + "|" + text);
    return TestApplication::_WriteLog(color, type, gameId, text);
  }
};

using Preparation = std::function<void(TestApplication&)>;
const Preparation* preparation = nullptr;

// A program with a GUI module, its draw thread and a module that tells how it is closed. Left alone it runs for
// ever.
TApplication* makeApplication(const std::string*) {
  auto* app = new ToldApplication;
  (new ToldModule)->Init(app, "told", nullptr, 5);
  app->onInit = [app] {
    app->SetGUI<StubGui>(nullptr);
    app->LoadGUI(nullptr);
    return 0;
  };
  app->onStartup = [] { say("[startup]"); };
  app->onSetupGraphics = [] { return true; };
  app->onState = [](TApplication::ApplicationState state) { say("state", state); };
  app->onDestroy = [app] { say(app->IsInDrawThread() ? "[destroy] on draw" : "[destroy] elsewhere"); };
  (*preparation)(*app);
  return app;
}

int StubAppMain(int argc, char** argv) { return AppMain(argc, argv, makeApplication); }

std::unique_ptr<ChildProcess> program(const Preparation& prepare) {
  return std::make_unique<ChildProcess>([&] {
    setenv("SDL_VIDEODRIVER", "dummy", 1);
    SDL_Init(SDL_INIT_VIDEO);
    preparation = &prepare;
    char name[] = "topscreen";
    char* arguments[] = {name, nullptr};
    std::exit(ProgramMain(1, arguments));
  });
}

// A moment of the program's life, on the thread that makes it, in the state that is told.
struct Moment {
  const char* name;
  TApplication::ApplicationState state;
  void (*arrange)(TestApplication&, const std::function<void()>& act);
};

const Moment moments[] = {
  {"Init before the GUI", TApplication::APP_INITIALIZING,
   [](TestApplication& app, const std::function<void()>& act) {
     app.onInit = [act, init = app.onInit] { return act(), init(); };
   }},
  {"Init before the load", TApplication::APP_LOADING,
   [](TestApplication& app, const std::function<void()>& act) {
     app.onInit = [act, &app] {
       app.SetGUI<StubGui>(nullptr);
       act();
       return app.LoadGUI(nullptr), 0;
     };
   }},
  {"the load", TApplication::APP_LOADING_GRAPHICS,
   [](TestApplication& app, const std::function<void()>& act) {
     StubGui::onLoad() = [act, &app](void*) {
       act();
       while (!app.shuttingDown()) SDL_Delay(1);
       return 0;
     };
   }},
  {"Init after the load", TApplication::APP_LOADING_2,
   [](TestApplication& app, const std::function<void()>& act) {
     app.onInit = [act, init = app.onInit] { return init(), act(), 0; };
   }},
  {"Startup", TApplication::APP_STARTUP,
   [](TestApplication& app, const std::function<void()>& act) { app.onStartup = act; }},
  {"SetupGraphics", TApplication::APP_STARTUP_GRAPHICS,
   [](TestApplication& app, const std::function<void()>& act) {
     app.onSetupGraphics = [act] { return act(), false; };
   }},
  {"the logic", TApplication::APP_RUNNING,
   [](TestApplication& app, const std::function<void()>& act) {
     app.onRunOnce = [act, &app, done = false]() mutable {
       if (app.status() == TApplication::APP_RUNNING && !std::exchange(done, true)) act();
       return 0;
     };
   }},
};

const int politeSignals[] = {SIGHUP, SIGINT, SIGQUIT, SIGTERM};

// The lines in this order, whatever stands between them.
testing::AssertionResult tells(const std::string& output, const std::vector<std::string>& lines) {
  size_t at = 0;
  for (const auto& line : lines) {
    const size_t found = output.find(line + "\n", at);
    if (found == std::string::npos) return testing::AssertionFailure() << "no \"" << line << "\" in:\n" << output;
    at = found + line.size();
  }
  return testing::AssertionSuccess();
}

// ---- the polite signals

struct SignalRow {
  const Moment* moment;
  int signal;
  std::unique_ptr<ChildProcess> child;
};

// All moments and signals at once; in every moment the signal comes `times` times in a row, and as often again
// while the first one is being served when that is more than once.
void endInEveryState(int times) {
  std::vector<SignalRow> rows;
  for (const Moment& moment : moments)
    for (const int signal : politeSignals)
      rows.push_back({&moment, signal, program([&](TestApplication& app) {
                        const auto raise = [=] {
                          for (int i = 0; i < times; ++i) kill(getpid(), signal);
                        };
                        if (times > 1) ToldModule::onRequest() = raise;
                        moment.arrange(app, [raise, &app] {
                          say("signal in", app.status());
                          raise();
                        });
                      })});
  for (auto& [moment, signal, child] : rows) {
    SCOPED_TRACE(std::string(moment->name) + ", signal " + std::to_string(signal));
    EXPECT_EQ(child->end(), "exit " + std::to_string(signal));
    const std::string received = "0|Signal " + std::to_string(signal) + " received. Exiting...\n";
    EXPECT_TRUE(tells(child->output(), {"signal in " + std::to_string(moment->state), received, "state 7",
                                        "request on main", "close", "state 8", "[destroy] on draw", "state 9"}));
    EXPECT_EQ(occurrences(received, child->output()), 1);
    EXPECT_EQ(occurrences("[destroy]", child->output()), 1);
    EXPECT_EQ(occurrences("[startup]", child->output()), moment->state > TApplication::APP_STARTUP ? 1 : 0);
    EXPECT_EQ(occurrences("APP EXITED", child->output()), 0);
  }
}

TEST(PoliteSignal, EndsTheProgramWithItsNumberInEveryState) { endInEveryState(1); }

TEST(PoliteSignal, InARowEndsTheProgramOnceInEveryState) { endInEveryState(2); }

TEST(PoliteSignal, ASecondOneGivesTheExitItsNumber) {
  const auto raiseBoth = [](TestApplication& app) {
    app.onStartup = [] {
      kill(getpid(), SIGTERM);
      kill(getpid(), SIGHUP);
    };
  };
  const auto raiseLater = [](TestApplication& app) {
    app.onStartup = [] { kill(getpid(), SIGTERM); };
    ToldModule::onRequest() = [] { kill(getpid(), SIGINT); };
  };
  const auto atOnce = program(raiseBoth), later = program(raiseLater);
  EXPECT_EQ(atOnce->end(), "exit " + std::to_string(SIGHUP));
  EXPECT_EQ(later->end(), "exit " + std::to_string(SIGINT));
  EXPECT_EQ(occurrences("[destroy] on draw", later->output()), 1);
}

TEST(PoliteSignal, EndsAProgramThatHasNoGui) {
  const auto child = program([](TestApplication& app) {
    app.onInit = [] { return 0; };
    app.onStartup = [&app] { app.setStatus(TApplication::APP_STARTUP); };
    app.onRunOnce = [] { return kill(getpid(), SIGTERM), 0; };
  });
  EXPECT_EQ(child->end(), "exit 15");
  EXPECT_TRUE(tells(child->output(), {"request on main", "close", "state 8", "[destroy] elsewhere", "state 9"}));
}

TEST(PoliteSignal, WaitsForModulesThatAreNotReady) {
  struct Slow : TAppModule {
    int Load(void*) override { return 0; }
    bool ReadyToExit() const override { return ++asked > 50; }
    mutable int asked = 0;
  };
  const auto child = program([](TestApplication& app) {
    (new Slow)->Init(&app, "slow", nullptr, 9);  // is asked last
    app.onRunOnce = [] { return kill(getpid(), SIGTERM), 0; };
  });
  EXPECT_EQ(child->end(), "exit 15");
  EXPECT_EQ(occurrences("close", child->output()), 51);
}

TEST(PoliteSignal, OutOfAnInitThatFailsStillEndsWithItsNumber) {
  const auto child = program([](TestApplication& app) { app.onInit = [] { return kill(getpid(), SIGTERM), -1; }; });
  EXPECT_EQ(child->end(), "exit 15");
  EXPECT_TRUE(tells(child->output(), {"state 7", "close", "state 8", "[destroy] elsewhere"}));
  EXPECT_EQ(occurrences("APP EXITED WITH FAILURE", child->output()), 0);
}

TEST(PoliteSignal, DuringTheTeardownChangesNothing) {
  const auto child = program([](TestApplication& app) {
    app.onRunOnce = [&app] {
      if (app.status() == TApplication::APP_RUNNING) app.terminate(DEFAULT, false);
      return 0;
    };
    app.onDestroy = [] {
      kill(getpid(), SIGTERM);
      say("[destroy]");
    };
  });
  EXPECT_EQ(child->end(), "exit 0");
  EXPECT_TRUE(tells(child->output(), {"[destroy]", "state 9", "========== APP EXITED SUCCESSFULLY =========="}));
}

// exit() runs while other threads still log, read parameters and look at the state.
TEST(PoliteSignal, EndsAProgramWhoseOtherThreadsGoOn) {
  const auto child = program([](TestApplication& app) {
    app.onStartup = [&app] {
      static std::atomic<int> busy{0};
      for (int i = 0; i < 4; ++i)
        std::thread([&app] {
          for (int round = 0;; ++round) {
            app.WriteLog(1, 0, "round %d", round);
            KLOG(LogApp, logs::Verbose, "round %d", round);
            app.GetParam("Round", PARAM_MASK_ALL)->AsString();
            app.status();
            app.GenerateAction("Nobody", nullptr, ACTION_ANY);
            MyUtils::currency2string(round, 2);
            if (round == 3) ++busy;
            std::this_thread::yield();
          }
        }).detach();
      while (busy < 4) std::this_thread::yield();
      kill(getpid(), SIGTERM);
    };
    app.onDestroy = [] { say("[destroy]"); };
  });
  EXPECT_EQ(child->end(), "exit 15");
  EXPECT_EQ(occurrences("Error: signal", child->output()), 0);
}

// ---- normal ends

TEST(NormalEnd, IsExit0WhoeverAsksForIt) {
  const struct {
    const char* name;
    Preparation prepare;
  } rows[] = {
    {"the logic, as for Escape and a closed window",
     [](TestApplication& app) {
       app.onRunOnce = [&app] {
         if (app.status() != TApplication::APP_RUNNING) return 0;
         app.terminate(DEFAULT, false);
         return 1;
       };
     }},
    {"the logic's result alone",
     [](TestApplication& app) {
       app.onRunOnce = [&app] { return app.status() == TApplication::APP_RUNNING ? 7 : 0; };
     }},
    {"a frame",
     [](TestApplication& app) {
       app.onDrawOnce = [&app] { return app.status() == TApplication::APP_RUNNING ? 3 : 0; };
     }},
    {"another thread",
     [](TestApplication& app) {
       app.onStartup = [&app] { std::thread([&app] { app.terminate(DEFAULT, false); }).detach(); };
     }},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    const auto child = program(row.prepare);
    EXPECT_EQ(child->end(), "exit 0");
    EXPECT_TRUE(tells(child->output(), {"state 8", "[destroy] on draw", "unload, gui deleted", "state 9",
                                        "========== APP EXITED SUCCESSFULLY =========="}));
    EXPECT_EQ(occurrences("request on main", child->output()), 0);
    EXPECT_EQ(occurrences("[destroy] on draw", child->output()), 1);
  }
}

// The real shell runs it: the delayed copy sleeps, here until the direct one has come.
TEST(NormalEnd, RunsTheRestartCommandOnceDelayedAndOnceDirectly) {
  std::string folder = testing::TempDir() + "exitXXXXXX";
  ASSERT_TRUE(mkdtemp(folder.data()));
  const std::string ran = folder + "/ran";
  {
    std::FILE* sleep = std::fopen((folder + "/sleep").c_str(), "w");
    ASSERT_TRUE(sleep);
    std::fprintf(sleep, "#!/bin/sh\necho slept $1 >> %s\nuntil grep -q restarted %s; do /bin/sleep 0.01; done\n",
                 ran.c_str(), ran.c_str());
    std::fclose(sleep);
    ASSERT_EQ(chmod((folder + "/sleep").c_str(), 0755), 0);
  }
  const auto child = program([&](TestApplication& app) {
    setenv("PATH", (folder + ":" + std::getenv("PATH")).c_str(), 1);
    app.SetParam("SHELL_CMD_RESTART", "echo restarted >> " + ran, PARAM_CACHE, "", "", true);
    app.onRunOnce = [&app] {
      if (app.status() == TApplication::APP_RUNNING) app.terminate(RESTART, false);
      return 0;
    };
    app.onDestroy = [ran] {  // the delayed copy is in the air before anything is destroyed
      while (access(ran.c_str(), F_OK) != 0) SDL_Delay(1);
    };
  });
  EXPECT_EQ(child->end(), "exit 0");  // the end of the output, and so of the delayed copy too
  std::FILE* file = std::fopen(ran.c_str(), "r");
  ASSERT_TRUE(file);
  char text[100] = "";
  const size_t length = std::fread(text, 1, sizeof text, file);
  std::fclose(file);
  EXPECT_EQ(std::string(text, length), "slept 2\nrestarted\nrestarted\n");
  std::remove(ran.c_str());
  std::remove((folder + "/sleep").c_str());
  rmdir(folder.c_str());
}

// ---- failures of Init, exceptions

TEST(FailedInit, IsExit254AtEachOfItsSteps) {
  const struct {
    const char* name;
    Preparation prepare;
  } rows[] = {
    {"at the start", [](TestApplication& app) { app.onInit = [] { return -1; }; }},
    {"before the load",
     [](TestApplication& app) { app.onInit = [&app] { return app.SetGUI<StubGui>(nullptr), 5; }; }},
    {"after the load", [](TestApplication& app) { app.onInit = [init = app.onInit] { return init(), -1; }; }},
    {"a GUI that cannot be set",
     [](TestApplication& app) {
       StubGui::onLoad() = [](void*) { return 8; };
       app.onInit = [&app] {
         int data = 0;
         const int result = app.SetGUI<StubGui>(&data);
         say("set", result);
         return result;
       };
     }},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    const auto child = program(row.prepare);
    EXPECT_EQ(child->end(), "exit 254");
    EXPECT_TRUE(tells(child->output(), {"========== APP EXITED WITH FAILURE =========="}));
    EXPECT_EQ(occurrences("[startup]", child->output()), 0);
  }
}

TEST(Exception, EndsTheProcessUnderItsThreads) {
  const auto fail = [] { throw std::runtime_error("no disk"); };
  const std::string loading = "Unhadled exception occoured while loading application";
  const std::string running = "Unhadled exception occoured";
  const struct {
    const char* name;
    Preparation prepare;
    const char* end;
    std::string message;
  } rows[] = {
    {"Init", [=](TestApplication& app) { moments[0].arrange(app, fail); }, "exit 252", loading},
    {"Init, draw thread waiting", [=](TestApplication& app) { moments[1].arrange(app, fail); }, "exit 252",
     loading},
    {"Init, frames under way", [=](TestApplication& app) { moments[3].arrange(app, fail); }, "exit 252", loading},
    {"clean-up of Init",
     [=](TestApplication& app) {
       app.onInit = [] { return -1; };
       app.onDestroy = fail;
     },
     "exit 252", loading},
    {"Startup", [=](TestApplication& app) { app.onStartup = fail; }, "exit 250", running},
    {"main loop",
     [=](TestApplication& app) {
       app.onRunOnce = [&app] {
         if (app.status() == TApplication::APP_RUNNING) app.terminate(DEFAULT, true);
         return 0;
       };
       app.onCanExit = [=] { return fail(), true; };
     },
     "exit 250", running},
    {"thrown number", [](TestApplication& app) { app.onStartup = [] { throw 4; }; }, "exit 250", running},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    const auto child = program(row.prepare);
    EXPECT_EQ(child->end(), row.end);
    EXPECT_TRUE(tells(child->output(), {row.message}));
    EXPECT_EQ(occurrences("APP EXITED", child->output()), 0);
  }
}

TEST(Exception, InTheLogicIsPrintedAndTheProgramGoesOn) {
  const auto child = program([](TestApplication& app) {
    app.onRunOnce = [&app, thrown = false]() mutable {
      if (app.status() != TApplication::APP_RUNNING) return 0;
      if (!std::exchange(thrown, true)) throw std::runtime_error("out of paper");
      app.terminate(DEFAULT, false);
      return 0;
    };
  });
  EXPECT_EQ(child->end(), "exit 0");
  EXPECT_EQ(occurrences("Std exception: out of paper\n", child->output()), 1);
}

// ---- crashes: what the signals' own tests do not meet

TEST(Crash, InEveryStateEndsByTheSignalWithABacktrace) {
  std::vector<std::unique_ptr<ChildProcess>> children;
  for (const Moment& moment : moments)
    children.push_back(program([&](TestApplication& app) {
      app.onState = nullptr;
      moment.arrange(app, [&app] {
        say("crash in", app.status());
        std::raise(SIGSEGV);
      });
    }));
  for (size_t i = 0; i < std::size(moments); ++i) {
    SCOPED_TRACE(moments[i].name);
    EXPECT_EQ(children[i]->end(), "signal 11");
    EXPECT_TRUE(tells(
      children[i]->output(),
      {"crash in " + std::to_string(moments[i].state), "0|Signal 11 received. Exiting...\n", "Error: signal 11:",
       "0|================== BACKTRACE ==================", "0|================ BACKTRACE END ================"}));
    EXPECT_EQ(occurrences("unload, gui", children[i]->output()), 1);
    EXPECT_EQ(occurrences("WILL REBOOT", children[i]->output()), 0);
  }
}

TEST(Crash, OfAMemoryAccessDoesNotRunIntoTheFaultAgain) {
  const auto child = program([](TestApplication& app) {
    app.onStartup = [] {
      void* page = mmap(nullptr, 4096, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
      *static_cast<volatile char*>(page) = 1;
    };
  });
  EXPECT_EQ(child->end(), "signal 11");
  EXPECT_EQ(occurrences("Error: signal 11:", child->output()), 1);
}

TEST(Crash, ByAbortOnTheDrawThreadIsThatOfAnExceptionThere) {
  const auto child = program([](TestApplication& app) {
    app.onStartup = nullptr;
    StubGui::onLoad() = [](void*) -> int { throw std::runtime_error("malformed font"); };
  });
  EXPECT_EQ(child->end(), "signal 6");
  EXPECT_TRUE(tells(child->output(), {"Error: signal 6:", "0|================ BACKTRACE END ================"}));
}

TEST(Crash, DuringTheCrashPathEntersItAgainAndEndsTheProcess) {
  const auto child = program([](TestApplication& app) {
    app.onStartup = [] { std::raise(SIGSEGV); };
    app.onDestroy = [] {
      say("[destroy]");
      std::raise(SIGABRT);
    };
  });
  EXPECT_EQ(child->end(), "signal 6");
  EXPECT_TRUE(tells(child->output(), {"Error: signal 11:", "[destroy]", "Error: signal 6:"}));
  EXPECT_EQ(occurrences("[destroy]", child->output()), 1);
}

TEST(Crash, InsideTheTeardownEndsTheProcessWhileTheMainThreadWaits) {
  const auto child = program([](TestApplication& app) {
    app.onRunOnce = [&app] { return app.status() == TApplication::APP_RUNNING ? 1 : 0; };
    app.onDestroy = [] {
      say("[destroy]");
      std::raise(SIGSEGV);
    };
  });
  EXPECT_EQ(child->end(), "signal 11");
  EXPECT_EQ(occurrences("[destroy]", child->output()), 1);
}

TEST(Crash, BesideATeardownThatNeverEndsEndsTheProcessAllTheSame) {
  const auto child = program([](TestApplication& app) {
    app.onRunOnce = [&app] { return app.status() == TApplication::APP_RUNNING ? 1 : 0; };
    app.onDestroy = [] {
      say("[destroy]");
      std::thread([] { std::raise(SIGFPE); }).join();
    };
  });
  EXPECT_EQ(child->end(), "signal 8");
  EXPECT_EQ(occurrences("[destroy]", child->output()), 1);
}

TEST(Crash, OfAFailedThreadCheckInTheLogicTellsWhere) {
  const auto child = program([](TestApplication& app) {
    app.onRunOnce = [&app] {
      if (app.status() == TApplication::APP_RUNNING) app.ThreadCheck(THREAD_DRAW);
      return 0;
    };
  });
  EXPECT_EQ(child->end(), "signal 6");
  EXPECT_TRUE(tells(child->output(), {"0|Signal 6 received. Exiting...\n",
                                      "Error: signal 6:", "0|================== BACKTRACE ==================",
                                      "0|================ BACKTRACE END ================"}));
  EXPECT_GE(occurrences("0|(", child->output()), 5);
}

TEST(Crash, RebootsTheMachineUnlessItIsForbidden) {
  std::vector<std::unique_ptr<ChildProcess>> children;
  for (const char* disabled : {"", "0", "1"})
    children.push_back(std::make_unique<ChildProcess>([=] {
      setenv("DISABLE_REBOOT_ON_EXIT", disabled, 1);
      SystemSeams.Reboot = [](int command) {
        say("reboot", command);
        _exit(77);
        return 0;
      };
      SystemSeams.System = [](const char*) { return 0; };
      const Preparation crash = [](TestApplication& app) { app.onInit = [] { return std::raise(SIGFPE); }; };
      preparation = &crash;
      char name[] = "topscreen";
      char* arguments[] = {name, nullptr};
      std::exit(ProgramMain(1, arguments));
    }));
  for (int i : {0, 1}) {
    EXPECT_EQ(children[i]->end(), "exit 77");
    EXPECT_TRUE(tells(children[i]->output(), {"0|================ WILL REBOOT ON EXIT!!!!! ================",
                                              "[destroy] elsewhere", "reboot " + std::to_string(0x1234567)}));
  }
  EXPECT_EQ(children[2]->end(), "signal 8");
  EXPECT_EQ(occurrences("reboot", children[2]->output()), 0);
}

}  // namespace
