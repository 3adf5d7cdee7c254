// Rendering that stops and starts again in the middle of anything: the frame under way ends as it began, the next
// ones draw and present nothing, and the first one after it is a whole picture.
#include <memory>

#include "tests/vendelo-sdl2/TAppGuiModuleFixture.h"

using namespace guitest;

namespace {
int presentations = 0;
}  // namespace

// Linked in front of SDL's, to count.
extern "C" void SDL_RenderPresent(SDL_Renderer*) { ++presentations; }

namespace {

constexpr Uint32 kRed = 0xff0000ff;

class StopRendering : public AppGuiModule {
 protected:
  void SetUp() override {
    presentations = 0;
    module->makeBackBuffer(32, 16);
    module->SetTargetFPS(50);
    mark = add("mark");
    mark->SetTargetTexture(texture(renderer, 4, 4, {255, 0, 0, 255}));
    app.setStatus(TApplication::APP_RUNNING);
  }
  // Does it once, at the place in the frame that the row names.
  void at_(const std::string& place, std::function<void()> what) {
    auto once = [what, done = std::make_shared<bool>(false)] {
      if (!*done) what();
      *done = true;
    };
    if (place == "a deferred method") app.DeferToDraw(once, true);
    if (place == "a draw action") {
      app.AddActionListener(
        "StopOrStart", new TahLambda([once](std::string, void*) { once(); }, TActionHandler::ahtExecuteEndless),
        ACTION_DRAW);
      app.GenerateAction("StopOrStart", nullptr, ACTION_ANY);
      app.ProcessActions();
    }
    if (place == "a draw task") {
      app.AddTimedTask(new TtthLambda(once, 0, TTimedTaskHandler::EXECUTE_ONCE, "task"), TASK_DRAW);
      clock.advance(1);
    }
    if (place == "a root's logic") mark->mOnLogic = once;
    if (place == "before the components") module->mOnBefore = once;
    if (place == "a root's drawing") mark->mOnDraw = once;
    if (place == "after the components") module->mOnAfter = once;
    if (place == "the sleep") {
      static std::function<void()> inSleep;
      inSleep = once;
      SystemSeams.MicroSleep = [](useconds_t microseconds) {
        inSleep();
        return fakeMicroSleep(microseconds);
      };
    }
  }
  void expectWholeFrame() {
    take();
    const int before = presentations;
    fill(nullptr, {0, 0, 32, 16}, {0, 0, 255, 255});
    EXPECT_EQ(0, module->draw());
    EXPECT_EQ((Names{"logic mark", "before", "draw mark", "after"}), take());
    EXPECT_EQ(before + 1, presentations);
    EXPECT_EQ(kRed, at(nullptr, 1, 1));
    EXPECT_EQ(0u, at(nullptr, 10, 10));
    EXPECT_EQ(module->mpBackBuffer.get(), SDL_GetRenderTarget(renderer));
    EXPECT_EQ(kRed, at(module->mpBackBuffer.get(), 1, 1));
  }
  void expectNoFrame() {
    take();
    const int before = presentations;
    fill(nullptr, {0, 0, 32, 16}, {0, 0, 255, 255});
    app.DeferToDraw([] { events.push_back("deferred"); }, true);
    EXPECT_EQ(0, module->draw());
    EXPECT_EQ((Names{"deferred"}), take());
    EXPECT_EQ(before, presentations);
    EXPECT_EQ(0x0000ffffu, at(nullptr, 1, 1));  // the window is left as it is
    EXPECT_EQ(module->mpBackBuffer.get(), SDL_GetRenderTarget(renderer));
  }

  Root* mark = nullptr;
};

const char* const kPlaces[] = {
  "a deferred method",     "a draw action",    "a draw task",          "a root's logic",
  "before the components", "a root's drawing", "after the components", "the sleep"};

TEST_F(StopRendering, AnywhereInAFrameTakesEffectWithTheNext) {
  for (const char* place : kPlaces) {
    SCOPED_TRACE(place);
    int reached = 0;
    at_(place, [&] {
      ++reached;
      module->StopRendering();
    });
    module->RedrawAll();
    expectWholeFrame();
    EXPECT_EQ(1, reached);
    EXPECT_FALSE(module->IsRendering());
    expectNoFrame();
    expectNoFrame();
    module->StartRendering();
    expectWholeFrame();
    mark->mOnLogic = mark->mOnDraw = module->mOnBefore = module->mOnAfter = nullptr;
    SystemSeams.MicroSleep = fakeMicroSleep;
  }
}

TEST_F(StopRendering, AStartAnywhereInAnIdleFrameTakesEffectWithTheNext) {
  for (const char* place : {"a deferred method", "a draw action", "a draw task", "the sleep"}) {
    SCOPED_TRACE(place);
    module->StopRendering();
    int reached = 0;
    at_(place, [&] {
      ++reached;
      module->StartRendering();
    });
    expectNoFrame();
    EXPECT_EQ(1, reached);
    expectWholeFrame();
    SystemSeams.MicroSleep = fakeMicroSleep;
  }
}

TEST_F(StopRendering, StopAndStartInOneFrameChangeNothing) {
  for (const char* place : kPlaces) {
    SCOPED_TRACE(place);
    at_(place, [&] {
      module->StopRendering();
      module->StartRendering();
    });
    for (int i = 0; i < 2; ++i) {
      module->RedrawAll();
      expectWholeFrame();
    }
    mark->mOnLogic = mark->mOnDraw = module->mOnBefore = module->mOnAfter = nullptr;
    SystemSeams.MicroSleep = fakeMicroSleep;
  }
}

TEST_F(StopRendering, WhileTheLoaderIsShown) {
  app.setStatus(TApplication::APP_SHUTTING_DOWN);
  auto* loader = new Root("loader");
  module->SetLoader(loader);
  loader->mOnLogic = [this] { module->StopRendering(); };
  take();
  module->draw();
  EXPECT_EQ((Names{"logic loader", "draw loader"}), take());
  EXPECT_EQ(1, presentations);
  module->draw();
  EXPECT_TRUE(take().empty());
  EXPECT_EQ(1, presentations);
  loader->mOnLogic = nullptr;
  module->StartRendering();
  module->draw();
  EXPECT_EQ((Names{"logic loader", "draw loader"}), take());
  EXPECT_EQ(2, presentations);
}

TEST_F(StopRendering, AFadeGoesOnByTheClock) {
  mark->fadeIn();
  module->draw();
  module->StopRendering();
  for (int i = 0; i < 5; ++i) module->draw();  // 20 ms each
  EXPECT_EQ(0, mark->alpha());
  const Uint32 begun = 1000;
  module->StartRendering();
  mark->mOnLogic = [&] {
    mark->mOnLogic = nullptr;
    mark->TGuiComponent::drawLogic();
  };
  const Uint32 elapsed = clock.now() - begun;
  EXPECT_GE(elapsed, 100u);
  module->draw();
  EXPECT_EQ(static_cast<int>(255.0f * static_cast<float>(elapsed) / 500.0f), mark->alpha());
}

TEST_F(StopRendering, TerminationIsSeenAllTheSame) {
  module->StopRendering();
  app.setStatus(TApplication::APP_TERMINATE);
  EXPECT_EQ(1, module->draw());
}

}  // namespace
