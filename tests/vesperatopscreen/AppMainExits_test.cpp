// Every way in which the program ends but for crashes, each in a process of its own.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>
#include <atomic>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <thread>

#include "common/Logger.h"
#include "tests/vesperatopscreen/ToldProgram.h"
#include "vendelo-sdl2/MyUtils.h"

namespace {

const int politeSignals[] = {SIGHUP, SIGINT, SIGQUIT, SIGTERM};

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
  const auto make = [](const auto& row) { return program(row.prepare); };
  endAll(rows, make, [](const auto&, ChildProcess& child) {
    EXPECT_EQ(child.end(), "exit 0");
    EXPECT_TRUE(tells(child.output(), {"state 8", "[destroy] on draw", "unload, gui deleted", "state 9",
                                       "========== APP EXITED SUCCESSFULLY =========="}));
    EXPECT_EQ(occurrences("request on main", child.output()), 0);
    EXPECT_EQ(occurrences("[destroy] on draw", child.output()), 1);
  });
}

// The real shell runs it: the delayed copy sleeps, here until the direct one has come.
TEST(NormalEnd, RunsTheRestartCommandOnceDelayedAndOnceDirectly) {
  std::string folder = testing::TempDir() + "exitXXXXXX";
  ASSERT_TRUE(mkdtemp(folder.data()));
  const std::string ran = folder + "/ran";
  {
    std::FILE* sleep = std::fopen((folder + "/sleep").c_str(), "w");
    ASSERT_TRUE(sleep);
    std::fprintf(
      sleep,
      "#!/bin/sh\necho slept $1 >> %s\nwhile [ -e %s ] && ! grep -q restarted %s; do /bin/sleep 0.01; done\n",
      ran.c_str(), ran.c_str(), ran.c_str());
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
  const auto make = [](const auto& row) { return program(row.prepare); };
  endAll(rows, make, [](const auto&, ChildProcess& child) {
    EXPECT_EQ(child.end(), "exit 254");
    EXPECT_TRUE(tells(child.output(), {"========== APP EXITED WITH FAILURE =========="}));
    EXPECT_EQ(occurrences("[startup]", child.output()), 0);
  });
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
  const auto make = [](const auto& row) { return program(row.prepare); };
  endAll(rows, make, [](const auto& row, ChildProcess& child) {
    EXPECT_EQ(child.end(), row.end);
    EXPECT_TRUE(tells(child.output(), {row.message}));
    EXPECT_EQ(occurrences("APP EXITED", child.output()), 0);
  });
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

}  // namespace
