#include <gtest/gtest.h>
#include <atomic>
#include <cstdlib>
#include <memory>
#include <stdexcept>
#include <thread>
#include <xmlrpc-c/girerr.hpp>

#include "tests/support/TestApplication.h"

using namespace vendelo_sdl2;

namespace {

const std::string mainFailure = "0|TApplication: ExecuteDefreredMethods unhandled exception";
const std::string drawFailure = "0|TApplication: ExecuteDeferredDrawMethods unhandled exception";

class Defer : public testing::Test {
 protected:
  std::function<void()> note(const std::string& line) {
    return [this, line] { trace.add(line); };
  }
  Trace trace;
  NoticeCapture notices;
  std::unique_ptr<TestApplication> app = std::make_unique<TestApplication>();
};

TEST_F(Defer, RunsAtOnceOnTheMainThreadUnlessToldToQueue) {
  app->Defer(note("now"), false, false);
  EXPECT_TRUE(trace.contains("now"));
  app->Defer(note("waiting now"), false, true);
  EXPECT_TRUE(trace.contains("waiting now"));
  app->Defer(note("later"), true, false);
  EXPECT_FALSE(trace.contains("later"));
  app->ExecuteDeferredMethods();
  EXPECT_TRUE(trace.contains("later"));
}

TEST_F(Defer, FromInsideADeferredMethodKeepsTheQueuesOrder) {
  app->Defer(
    [this] {
      app->Defer(note("inner"), false, false);
      trace.add("first");
    },
    true, false);
  app->Defer(note("second"), true, false);
  app->ExecuteDeferredMethods();  // the queue was not seen empty: the inner one runs in the same call
  EXPECT_EQ(trace.lines(), (std::vector<std::string>{"first", "second", "inner"}));
}

TEST_F(Defer, FromInsideTheLastMethodWaitsForTheNextCall) {
  std::function<void()> again = [&] {
    trace.add("run");
    app->Defer(again, false, false);
  };
  app->Defer(again, true, false);
  app->ExecuteDeferredMethods();
  EXPECT_EQ(trace.count("run"), 1);
  app->ExecuteDeferredMethods();
  EXPECT_EQ(trace.count("run"), 2);
}

TEST_F(Defer, ExceptionIsLoggedAndTheQueueGoesOn) {
  app->Defer([] { throw std::runtime_error("x"); }, true, false);
  app->Defer([] { throw 1; }, true, false);
  app->Defer(nullptr, true, false);
  app->Defer(note("after"), true, false);
  app->ExecuteDeferredMethods();
  EXPECT_EQ(app->log.count(mainFailure), 2);
  EXPECT_TRUE(trace.contains("after"));
}

// What comes out of the work itself, so that a field report tells more than that something failed.
const struct {
  const char* name;
  std::function<void()> work;
  const char* cause;
} failures[] = {
  {"a standard exception", [] { throw std::out_of_range("no page 7, 100%s"); }, "no page 7, 100%s"},
  {"one of the transport", [] { throw girerr::error("no route"); }, "no route"},
  {"a string", [] { throw std::string("out of paper"); }, "out of paper"},
  {"a text", [] { throw "jammed"; }, "jammed"},
  {"a null text", [] { throw static_cast<const char*>(nullptr); }, "unknown"},
  {"a number", [] { throw 7; }, "unknown"},
};

TEST_F(Defer, CauseOfAFailureFollowsInTheLog) {
  for (const auto& failure : failures) {
    SCOPED_TRACE(failure.name);
    const std::string cause = std::string("0|TApplication: its cause: ") + failure.cause;
    app->Defer(failure.work, true, false);
    size_t before = app->log.lines().size();
    app->ExecuteDeferredMethods();
    auto lines = app->log.lines();
    lines.erase(lines.begin(), lines.begin() + static_cast<std::ptrdiff_t>(before));
    EXPECT_EQ(lines, (std::vector<std::string>{mainFailure, cause}));

    app->DeferToDraw(failure.work, true);
    before = app->log.lines().size();
    app->ExecuteDeferredDrawMethods(nullptr);
    lines = app->log.lines();
    lines.erase(lines.begin(), lines.begin() + static_cast<std::ptrdiff_t>(before));
    EXPECT_EQ(lines, (std::vector<std::string>{drawFailure, cause}));
  }
}

TEST_F(Defer, WaitingCallerReturnsWhenTheMethodHasRunOrThrown) {
  for (const bool throws : {false, true}) {
    std::atomic<bool> returned{false};
    std::atomic<int> ranOnMain{0};
    std::thread caller([&] {
      app->DeferSync(
        [&] {
          ranOnMain += app->IsInMainThread();
          if (throws) throw 1;
        },
        false);
      EXPECT_EQ(ranOnMain, 1);
      returned = true;
    });
    while (!returned) app->ExecuteDeferredMethods();
    caller.join();
  }
  EXPECT_EQ(app->log.count(mainFailure), 1);
}

TEST_F(Defer, EndOfTheMainLoopLetsWaitersGo) {
  std::atomic<bool> queued{false};
  app->onRunOnce = [&] {
    app->terminate(DEFAULT, false);
    return 0;
  };
  std::thread caller;
  // Queued behind the pass that has served the queue for the last time.
  app->onState = [&](TApplication::ApplicationState state) {
    if (state != TApplication::APP_TERMINATE) return;
    caller = std::thread([&] {
      queued = true;
      app->Defer(note("never"), true, true);
    });
    while (!queued) std::this_thread::yield();
  };
  app->setStatus(TApplication::APP_RUNNING);
  app->MainLoop();
  caller.join();
  std::thread late([&] { app->Defer(note("never"), true, true); });
  late.join();
  EXPECT_FALSE(trace.contains("never"));
}

TEST_F(Defer, DrawQueueRunsInOrderWithTheRenderer) {
  auto* renderer = reinterpret_cast<SDL_Renderer*>(this);  // only passed on
  SDL_Renderer* seen = nullptr;
  app->DeferToDraw(note("first"), false);  // the main thread: queued
  app->DeferToDrawRender([&](SDL_Renderer* given) { seen = given; }, false);
  app->DeferToDraw([] { throw 1; }, false);
  app->DeferToDrawRender(nullptr, false);
  app->DeferToDraw(note("last"), false);
  EXPECT_TRUE(trace.lines().empty());
  app->ExecuteDeferredDrawMethods(renderer);
  EXPECT_EQ(trace.lines(), (std::vector<std::string>{"first", "last"}));
  EXPECT_EQ(seen, renderer);
  EXPECT_EQ(app->log.count(drawFailure), 1);
}

// The rest needs the real draw thread: `frame` runs in its frames, with the draw mutex held, until it says so.
class DeferOnDrawThread : public Defer {
 protected:
  DeferOnDrawThread() {
    setenv("SDL_VIDEODRIVER", "dummy", 1);
    SDL_Init(SDL_INIT_VIDEO);
  }
  // Starts, runs until the draw thread's `onDrawOnce` has ended the program.
  void run(const std::function<int()>& onDrawOnce) {
    app->onDrawOnce = onDrawOnce;
    ASSERT_EQ(app->SetGUI<StubGui>(nullptr), 0);
    app->LoadGUI(nullptr);
    app->onSetupGraphics = [] { return true; };
    app->Run();
  }
  int frames = 0;  // draw thread, in APP_RUNNING
};

TEST_F(DeferOnDrawThread, RunsAtOnceOutsideTheQueueAndQueuesInside) {
  run([&] {
    if (app->status() != TApplication::APP_RUNNING) return 0;
    if (++frames == 1) {
      app->DeferToDraw(note("at once"), false);
      EXPECT_TRUE(trace.contains("at once"));
      app->DeferToDraw(note("next frame"), true);
      EXPECT_FALSE(trace.contains("next frame"));
      return 0;
    }
    app->DeferToDraw(
      [&] {
        app->DeferToDraw(note("inner"), false);
        trace.add("outer");
      },
      true);
    app->DeferToDraw(note("second"), true);
    app->ExecuteDeferredDrawMethods(nullptr);
    return 1;
  });
  EXPECT_EQ(trace.lines(), (std::vector<std::string>{"at once", "next frame", "outer", "second", "inner"}));
}

TEST_F(DeferOnDrawThread, WorkDeferredBeforeRunningWaitsForIt) {
  app->DeferToDraw([&] { trace.add("first in " + std::to_string(app->status())); }, false);
  app->DeferToDraw([&] { trace.add("second in " + std::to_string(app->status())); }, false);
  app->DeferToDraw([&] { app->terminate(DEFAULT, false); }, false);
  run(nullptr);
  EXPECT_EQ(trace.lines(), (std::vector<std::string>{"first in 6", "second in 6"}));
}

TEST_F(DeferOnDrawThread, WorkLeftOverIsDroppedBeforeTheGuiGoes) {
  auto token = std::make_shared<int>(1);
  const std::weak_ptr<int> watch = token;
  app->onDestroy = [&] { trace.add(watch.expired() ? "dropped" : "still held"); };
  run([&] {
    if (app->status() != TApplication::APP_RUNNING) return 0;
    app->DeferToDraw([token, this] { trace.add("ran"); }, true);
    token.reset();
    return 1;
  });
  EXPECT_EQ(trace.lines(), std::vector<std::string>{"dropped"});
}

TEST_F(DeferOnDrawThread, WaitsForTheMainThreadOutsideAFrameOnly) {
  run([&] {
    if (app->status() != TApplication::APP_RUNNING) return 0;
    if (frames++ > 0) return 1;
    app->Defer([&] { trace.add(app->IsInMainThread() ? "on main" : "elsewhere"); }, false, true);
    EXPECT_TRUE(trace.contains("on main"));
    app->lockDrawMutex();
    app->Defer(note("not waited for"), false, true);  // would never return
    EXPECT_FALSE(trace.contains("not waited for"));
    app->unlockDrawMutex();
    return 0;
  });
  EXPECT_TRUE(app->log.contains("5|TApplication: Defer inside a frame can not wait for the main thread"));
}

TEST_F(DeferOnDrawThread, AFrameLastsUntilItsLastUnlockAndNoLonger) {
  std::atomic<int> done{0};
  run([&] {
    if (app->status() != TApplication::APP_RUNNING) return 0;
    if (frames++ > 0) return 1;
    for (int round = 1; round <= 20; ++round) {
      app->lockDrawMutex();
      app->lockDrawMutex();
      app->unlockDrawMutex();
      const size_t refusals = app->log.lines().size();
      app->Defer([] {}, false, true);
      EXPECT_EQ(app->log.lines().size(), refusals + 1) << "of two locks one is left";
      app->unlockDrawMutex();
      app->Defer([&] { ++done; }, false, true);
      EXPECT_EQ(done, round) << "no frame any more";
    }
    return 0;
  });
}

// The main thread waits for the load: a call that waited for it there would never return.
TEST_F(DeferOnDrawThread, InsideTheLoadItIsRefusedItsWaitAndRunsLater) {
  StubGui::onLoad() = [&](void*) {
    app->Defer([&] { trace.add(app->IsInMainThread() ? "on main" : "elsewhere"); }, false, true);
    trace.add("load goes on");
    EXPECT_TRUE(
      app->log.contains("5|TApplication: Defer inside the load of the GUI can not wait for the main thread"));
    return 0;
  };
  run([&] {
    if (app->status() != TApplication::APP_RUNNING || !trace.contains("on main")) return 0;
    if (trace.contains("waited for")) return 1;
    app->Defer(note("waited for"), false, true);
    EXPECT_TRUE(trace.contains("waited for"));
    return 1;
  });
  StubGui::onLoad() = nullptr;
  EXPECT_EQ(trace.lines(), (std::vector<std::string>{"load goes on", "on main", "waited for"}));
}

TEST_F(DeferOnDrawThread, RunsAtOnceWithTheRendererOfTheGui) {
  auto* renderer = reinterpret_cast<SDL_Renderer*>(this);  // only passed on
  SDL_Renderer* seen = nullptr;
  run([&] {
    if (app->status() != TApplication::APP_RUNNING) return 0;
    app->GUI()->SetRenderer(renderer);
    app->DeferToDrawRender([&](SDL_Renderer* given) { seen = given; }, false);
    app->GUI()->SetRenderer(nullptr);
    return 1;
  });
  EXPECT_EQ(seen, renderer);
}

TEST_F(DeferOnDrawThread, KnowsItsThreads) {
  std::atomic<bool> draw{false}, main{true};
  run([&] {
    draw = app->IsInDrawThread();
    main = app->IsInMainThread();
    app->ThreadCheck(THREAD_DRAW);
    return app->status() == TApplication::APP_RUNNING ? 1 : 0;
  });
  EXPECT_TRUE(draw);
  EXPECT_FALSE(main);
  app->ThreadCheck(THREAD_MAIN);
}

}  // namespace
