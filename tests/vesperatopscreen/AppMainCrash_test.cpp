// The crashes that the signals' own tests do not meet: in every state, on both threads, inside each other.
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>
#include <csignal>
#include <cstdlib>
#include <stdexcept>
#include <thread>

#include "tests/vesperatopscreen/ToldProgram.h"

namespace {

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
  EXPECT_TRUE(tells(child->output(), {"Error: signal 11:", "[destroy]"}));
#ifdef __SANITIZE_THREAD__
  EXPECT_EQ(child->end(), "signal 11");  // it keeps all other signals out of a handler
#else
  EXPECT_EQ(child->end(), "signal 6");
  EXPECT_TRUE(tells(child->output(), {"[destroy]", "Error: signal 6:"}));
#endif
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
      ExitProgram(AppMain(1, arguments, makeApplication));
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
