// One frame of the GUI module: what runs, in which order and under which lock.
#include <thread>

#include "tests/support/ThreadState.h"
#include "tests/vendelo-sdl2/TAppGuiModuleFixture.h"

using namespace guitest;

namespace {

TEST_F(AppGuiModule, AFrameOfTheRunningApplicationInOrder) {
  app.setStatus(TApplication::APP_RUNNING);
  module->makeBackBuffer(32, 16);
  module->SetLoader(new Root("loader"));
  add("a");
  add("hidden")->Hide();
  add("b");
  app.DeferToDraw([] { events.push_back("deferred"); }, true);
  app.AddActionListener(
    "DrawNow",
    new TahLambda([](std::string, void*) { events.push_back("action"); }, TActionHandler::ahtExecuteEndless),
    ACTION_DRAW);
  app.GenerateAction("DrawNow", nullptr, ACTION_ANY);
  app.ProcessActions();
  app.AddTimedTask(new TtthLambda([] { events.push_back("task"); }, 0, TTimedTaskHandler::ENDLESS, "task"),
                   TASK_DRAW);
  clock.advance(5);
  take();
  app.ComponentLogicCalled = true;
  app.DrawDurationMs = 77;
  EXPECT_EQ(0, module->draw());
  EXPECT_EQ((Names{"deferred", "action", "task", "logic a", "logic b", "before", "draw a", "draw b", "after"}),
            take());
  EXPECT_FALSE(app.ComponentLogicCalled);
  EXPECT_EQ(0, app.DrawDurationMs);
  EXPECT_EQ(module->mpBackBuffer.get(), SDL_GetRenderTarget(renderer));
}

TEST_F(AppGuiModule, BeforeRunningOnlyTheLoaderIsDrawn) {
  module->makeBackBuffer(32, 16);
  add("a");
  app.DeferToDraw([] { events.push_back("deferred"); }, true);
  take();
  EXPECT_EQ(0, module->draw());
  EXPECT_TRUE(take().empty());
  module->SetLoader(new Root("loader"));
  EXPECT_EQ(0, module->draw());
  EXPECT_EQ((Names{"logic loader", "draw loader"}), take());
  module->Loader()->Hide();
  EXPECT_EQ(0, module->draw());
  EXPECT_TRUE(take().empty());
  module->Loader()->Show();
  app.setStatus(TApplication::APP_SHUTTING_DOWN);
  EXPECT_EQ(0, module->draw());
  EXPECT_EQ((Names{"logic loader", "draw loader"}), take());
}

TEST_F(AppGuiModule, DrawDurationIsWhatTheDrawingTook) {
  app.setStatus(TApplication::APP_RUNNING);
  module->makeBackBuffer(32, 16);
  add("slow")->mOnLogic = [this] { clock.advance(7); };
  module->draw();
  EXPECT_EQ(7, app.DrawDurationMs);
}

TEST_F(AppGuiModule, NoRendererAndTerminationEndTheFrameAndLetTheMutexGo) {
  module->SetRenderer(nullptr);
  EXPECT_EQ(2, module->draw());
  EXPECT_TRUE(drawMutexIsFree(app));
  module->SetRenderer(renderer);
  EXPECT_EQ(0, module->draw());
  EXPECT_TRUE(drawMutexIsFree(app));
  app.setStatus(TApplication::APP_TERMINATE);
  EXPECT_EQ(1, module->draw());
  EXPECT_TRUE(drawMutexIsFree(app));
}

TEST_F(AppGuiModule, TheMutexIsHeldWhileDrawingAndFreeWhileSleeping) {
  static HarnessApplication* application;
  static bool freeInSleep;
  application = &app;
  const auto probe = [] { return drawMutexIsFree(*application); };
  app.setStatus(TApplication::APP_RUNNING);
  module->makeBackBuffer(32, 16);
  module->SetTargetFPS(30);
  bool freeInLogic = true;
  add("a")->mOnLogic = [&] { freeInLogic = probe(); };
  freeInSleep = false;
  static bool (*inSleep)();
  inSleep = probe;
  SystemSeams.MicroSleep = [](useconds_t) {
    freeInSleep = inSleep();
    return 0;
  };
  module->draw();
  EXPECT_FALSE(freeInLogic);
  EXPECT_TRUE(freeInSleep);
}

TEST_F(AppGuiModule, WithoutRenderingTheWorkGoesOnAndSleepHoldsTheRate) {
  app.setStatus(TApplication::APP_RUNNING);
  module->makeBackBuffer(32, 16);
  add("a");
  app.DeferToDraw([] { events.push_back("deferred"); }, true);
  module->StopRendering();
  EXPECT_FALSE(module->IsRendering());
  module->updateLastDrawTime();
  take();
  EXPECT_EQ(0, module->draw());
  EXPECT_EQ((Names{"deferred"}), take());
  EXPECT_EQ((std::vector<long>{16000}), sleeps);  // although vertical sync at 60 would hold it
  module->StartRendering();
  EXPECT_EQ(0, module->draw());
  EXPECT_EQ((Names{"logic a", "before", "draw a", "after"}), take());
}

TEST_F(AppGuiModule, AChangeOfRenderingTakesEffectBetweenFrames) {
  app.setStatus(TApplication::APP_RUNNING);
  module->makeBackBuffer(32, 16);
  add("a")->mOnLogic = [this] { module->StopRendering(); };
  module->draw();
  // The frame was presented in full, so that the next one that draws finds the back buffer as its target.
  EXPECT_EQ(module->mpBackBuffer.get(), SDL_GetRenderTarget(renderer));
  EXPECT_TRUE(sleeps.empty());
  module->draw();
  EXPECT_EQ(module->mpBackBuffer.get(), SDL_GetRenderTarget(renderer));
  EXPECT_EQ(1u, sleeps.size());
}

TEST_F(AppGuiModule, TheBackBufferReachesTheWindowTurnedOnRequest) {
  app.setStatus(TApplication::APP_RUNNING);
  module->makeBackBuffer(32, 16);
  auto* mark = new TGuiComponent(nullptr, 0, 0, 8, 4, "mark");
  mark->SetTargetTexture(texture(renderer, 8, 4, {255, 0, 0, 255}));
  module->AddComponent(mark);
  EXPECT_FALSE(module->IsScreenRotated());
  module->draw();
  EXPECT_EQ(0xff0000ffu, at(nullptr, 0, 0));
  EXPECT_NE(0xff0000ffu, at(nullptr, 31, 15));
  module->RotateScreen(true);
  EXPECT_TRUE(module->IsScreenRotated());
  module->draw();
  EXPECT_NE(0xff0000ffu, at(nullptr, 0, 0));
  EXPECT_EQ(0xff0000ffu, at(nullptr, 31, 15));
  EXPECT_EQ(0xff0000ffu, at(module->mpBackBuffer.get(), 0, 0));  // what the next frame is compared with
}

}  // namespace
