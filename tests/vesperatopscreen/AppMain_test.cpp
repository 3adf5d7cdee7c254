#include "vesperatopscreen/AppMain.h"

#include <gtest/gtest.h>
#include <malloc.h>
#include <unistd.h>
#include <csignal>
#include <cstdlib>
#include <optional>
#include <stdexcept>

#include "tests/support/ChildProcess.h"
#include "tests/support/TestApplication.h"
#include "vesperatopscreen/TopScreenApp.h"

using namespace vendelo_sdl2;

namespace {

class MainProgram : public testing::Test {
 protected:
  // An application without GUI that runs for one pass, apart from what `prepare` changes.
  int run(std::vector<const char*> arguments, const std::function<void(TestApplication&)>& prepare) {
    arguments.insert(arguments.begin(), "topscreen");
    testing::internal::CaptureStdout();
    const int result = AppMain(static_cast<int>(arguments.size()), const_cast<char**>(arguments.data()),
                               [&](const std::string* given) {
                                 address = given ? std::optional<std::string>(*given) : std::nullopt;
                                 auto* app = new Deleted(trace);
                                 app->onInit = [this] { return trace.add("init"), 0; };
                                 app->onStartup = [app] { app->setStatus(TApplication::APP_STARTUP); };
                                 app->onRunOnce = [this] { return trace.add("run"), 5; };
                                 app->onDestroy = [this] { trace.add("destroy"); };
                                 if (prepare) prepare(*app);
                                 pApp = nullptr;  // the program stores it again
                                 return app;
                               });
    printed = testing::internal::GetCapturedStdout();
    return result;
  }
  bool prints(const std::string& text) const { return printed.find(text) != std::string::npos; }

  struct Deleted : TestApplication {
    explicit Deleted(Trace& trace) : trace(trace) {}
    ~Deleted() override { trace.add("deleted"); }
    Trace& trace;
  };

  NoticeCapture notices;
  Trace trace;
  std::optional<std::string> address;
  std::string printed;
};

const char* const success = "========== APP EXITED SUCCESSFULLY ==========\n";
const char* const failure = "========== APP EXITED WITH FAILURE ==========\n";
const char* const loading = "Unhadled exception occoured while loading application\n";
const char* const running = "Unhadled exception occoured\n";

TEST_F(MainProgram, NormalRunIsZeroWhateverRunReturned) {
  TestApplication* stored = nullptr;
  EXPECT_EQ(run({},
                [&](TestApplication& app) {
                  app.onInit = [&] {
                    stored = static_cast<TestApplication*>(pApp);
                    EXPECT_EQ(stored, &app);
                    return 0;
                  };
                }),
            0);
  EXPECT_NE(stored, nullptr);
  EXPECT_EQ(trace.lines(), (std::vector<std::string>{"run", "destroy", "deleted"}));
  EXPECT_TRUE(prints(success));
  EXPECT_EQ(pApp, nullptr);
}

// The sanitizers have allocators of their own.
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
TEST_F(MainProgram, PicturesGoBackToTheSystemHoweverManyHaveGoneBefore) {
  // Bytes in blocks of their own, without a block of this size and with it, and once it is freed.
  const auto own = [] { return mallinfo2().hblkhd; };
  const auto hold = [](size_t size) { return std::make_unique<std::vector<char>>(size); };
  int pictures = 0;
  run({}, [&](TestApplication& app) {
    app.onInit = [&] {
      for (const size_t size : {size_t{33177600}, size_t{8294400}}) hold(size);
      for (const size_t size : {size_t{8294400}, size_t{2} << 20}) {
        const size_t before = own();
        auto picture = hold(size);
        EXPECT_GE(own(), before + size);
        picture.reset();
        EXPECT_EQ(own(), before);
        ++pictures;
      }
      return 0;
    };
  });
  EXPECT_EQ(pictures, 2);
}
#endif

TEST_F(MainProgram, ExactlyOneArgumentIsTheServer) {
  run({}, nullptr);
  EXPECT_EQ(address, std::nullopt);
  run({"127.0.0.1:9100"}, nullptr);
  EXPECT_EQ(address, "127.0.0.1:9100");
  run({"127.0.0.1:9100", "x"}, nullptr);
  EXPECT_EQ(address, std::nullopt);
}

TEST_F(MainProgram, FailedInitDestroysAndDeletes) {
  EXPECT_EQ(run({}, [](TestApplication& app) { app.onInit = [] { return 1; }; }), -2);
  EXPECT_EQ(trace.lines(), (std::vector<std::string>{"destroy", "deleted"}));
  EXPECT_TRUE(prints(failure));
  EXPECT_FALSE(prints(success));
  EXPECT_EQ(pApp, nullptr);
}

TEST_F(MainProgram, RefusedInitHasACodeOfItsOwnAndNoOtherFailureHas) {
  EXPECT_EQ(run({}, [](TestApplication& app) { app.onInit = [] { return TopScreenApp::kInitRefused; }; }), -3);
  EXPECT_EQ(trace.lines(), (std::vector<std::string>{"destroy", "deleted"}));
  EXPECT_TRUE(prints(failure));
  for (const int code : {-4, -2, 2, 3, 253})
    EXPECT_EQ(run({}, [code](TestApplication& app) { app.onInit = [code] { return code; }; }), -2) << code;
}

TEST_F(MainProgram, FailedInitThatHangsEndsWithItsCodeAllTheSame) {
  const struct {
    const char* name;
    int init;
    const char* end;
  } rows[] = {{"failed", 1, "exit 254"}, {"refused", TopScreenApp::kInitRefused, "exit 253"}};
  endAll(
    rows,
    [this](const auto& row) {
      return std::make_unique<ChildProcess>([&] {
        SystemSeams.Poll = [](pollfd* files, nfds_t count, int) { return ::poll(files, count, 100); };
        SystemSeams.ExitNow = [](int code) { _exit(code); };
        run({}, [&](TestApplication& app) {
          app.onInit = [&row] { return row.init; };
          app.onDestroy = [] {
            for (;;) usleep(1000);
          };
        });
      });
    },
    [](const auto& row, ChildProcess& child) { EXPECT_EQ(child.end(), row.end); });
}

TEST_F(MainProgram, FailedInitAfterTheGuiWasSetLeavesTheDrawThreadFirst) {
  setenv("SDL_VIDEODRIVER", "dummy", 1);
  SDL_Init(SDL_INIT_VIDEO);
  StubGui::onLoad() = [](void*) { return 0; };
  EXPECT_EQ(run({},
                [](TestApplication& app) {
                  app.onInit = [&app] {
                    app.SetGUI<StubGui>(nullptr);
                    app.LoadGUI(nullptr);
                    return -1;
                  };
                }),
            -2);
  EXPECT_EQ(trace.lines(), (std::vector<std::string>{"destroy", "deleted"}));
  SDL_Quit();
}

TEST_F(MainProgram, ExceptionWhileLoadingIsReported) {
  EXPECT_EQ(
    run({}, [](TestApplication& app) { app.onInit = []() -> int { throw std::runtime_error("no disk"); }; }), -4);
  EXPECT_TRUE(prints(loading));
  EXPECT_TRUE(trace.lines().empty());  // neither destroyed nor deleted
  delete pApp;
}

TEST_F(MainProgram, ExceptionWhileCleaningUpIsReportedAsOneWhileLoading) {
  EXPECT_EQ(run({},
                [](TestApplication& app) {
                  app.onInit = [] { return -1; };
                  app.onDestroy = [] { throw 3; };
                }),
            -4);
  EXPECT_TRUE(prints(loading));
  EXPECT_FALSE(prints(failure));
  delete pApp;
}

TEST_F(MainProgram, ExceptionWhileRunningLeavesTheApplicationAlone) {
  EXPECT_EQ(run({}, [](TestApplication& app) { app.onStartup = [] { throw 4; }; }), -6);
  EXPECT_TRUE(prints(running));
  EXPECT_FALSE(prints(success));
  EXPECT_FALSE(trace.contains("deleted"));
  delete pApp;
}

TEST_F(MainProgram, SignalDuringInitIsServedBeforeTheRun) {
  ChildProcess child([this] {
    run({}, [](TestApplication& app) {
      app.onInit = [] { return std::raise(SIGTERM); };
      app.onStartup = [] { _exit(98); };
    });
  });
  EXPECT_EQ(child.end(), "exit " + std::to_string(SIGTERM));
}

}  // namespace
