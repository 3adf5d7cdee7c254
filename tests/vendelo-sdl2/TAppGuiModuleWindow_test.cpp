// The window itself, on SDL's drivers without a screen.
#include <cstdlib>

#include "tests/vendelo-sdl2/TAppGuiModuleFixture.h"

using namespace guitest;

namespace {

class Window : public testing::Test {
 protected:
  void start(const char* driver) {
    setenv("SDL_RENDER_DRIVER", "software", 1);
    setenv("SDL_FRAMEBUFFER_ACCELERATION", "0", 1);
    setenv("SDL_VIDEODRIVER", driver, 1);
    ASSERT_EQ(0, SDL_InitSubSystem(SDL_INIT_VIDEO)) << SDL_GetError();
    TestModule::Displays.clear();
    module = new TestModule(nullptr);
    app.adopt(module);
  }
  int create(int w, int h, Uint32 windowFlags, int driverIndex) {
    return module->CreateWindow("test", 0, 0, w, h, windowFlags | SDL_WINDOW_BORDERLESS, driverIndex,
                                SDL_RENDERER_ACCELERATED | SDL_RENDERER_TARGETTEXTURE, 0);
  }
  void SetUp() override { events.clear(); }
  void TearDown() override {
    app.destroyGui();
    SDL_QuitSubSystem(SDL_INIT_VIDEO);
    TestModule::Displays.clear();
  }
  HarnessApplication app;
  TestModule* module = nullptr;
};

TEST_F(Window, IsCreatedWithItsBackBuffer) {
  start("offscreen");
  EXPECT_EQ(static_cast<size_t>(SDL_GetNumVideoDisplays()), TestModule::Displays.size());
  app.TargetFPS = 25u;
  app.VSync = false;
  ASSERT_EQ(0, create(64, 48, 0, -1)) << SDL_GetError();
  EXPECT_EQ(25, module->mTargetFPS);
  EXPECT_FALSE(module->mVsync);
  EXPECT_STREQ("best", SDL_GetHint(SDL_HINT_RENDER_SCALE_QUALITY));
  EXPECT_STREQ("false", SDL_GetHint(SDL_HINT_VIDEO_MINIMIZE_ON_FOCUS_LOSS));
  EXPECT_NE(nullptr, module->getWindow());
  EXPECT_EQ(module->GetRenderer(), TestModule::mpGUIRendererStatic);
  EXPECT_EQ(module->getWindow(), TestModule::mpWindowStatic);
  EXPECT_EQ(module->mpBackBuffer, SDL_GetRenderTarget(module->GetRenderer()));
  EXPECT_EQ(64, module->WindowNativeSize.w);
  EXPECT_EQ(48, module->WindowCurrentSize.h);
  int w = 0, h = 0;
  SDL_QueryTexture(module->mpBackBuffer, nullptr, nullptr, &w, &h);
  EXPECT_EQ(64, w);
  EXPECT_EQ(48, h);
  SDL_BlendMode mode = SDL_BLENDMODE_NONE;
  SDL_GetRenderDrawBlendMode(module->GetRenderer(), &mode);
  EXPECT_EQ(SDL_BLENDMODE_BLEND, mode);
  module->DestroyWindow();
  EXPECT_EQ(nullptr, module->GetRenderer());
  EXPECT_EQ(nullptr, module->getWindow());
  EXPECT_EQ(nullptr, TestModule::mpGUIRendererStatic);
  EXPECT_EQ(2, module->draw());
}

TEST_F(Window, AnUnusableFrameRateBecomes60) {
  start("offscreen");
  app.TargetFPS = 0u;
  ASSERT_EQ(0, create(8, 8, 0, -1));
  EXPECT_EQ(60, module->mTargetFPS);
  EXPECT_EQ(0u, app.TargetFPS.getCopy());
  module->DestroyWindow();
  app.TargetFPS = static_cast<unsigned>(-5);
  ASSERT_EQ(0, create(8, 8, 0, -1));
  EXPECT_EQ(60, module->mTargetFPS);
}

TEST_F(Window, APlaceLeftToTheSystemCountsAsZero) {
  start("offscreen");
  ASSERT_EQ(0, module->CreateWindow("test", static_cast<int>(SDL_WINDOWPOS_CENTERED),
                                    static_cast<int>(SDL_WINDOWPOS_UNDEFINED), 8, 8, 0, -1, 0, 0));
  EXPECT_EQ(0, module->WindowNativeSize.x);
  EXPECT_EQ(0, module->WindowNativeSize.y);
  module->DestroyWindow();
  ASSERT_EQ(0, module->CreateWindow("test", 3, 4, 8, 8, 0, -1, 0, 0));
  EXPECT_EQ(3, module->WindowNativeSize.x);
  EXPECT_EQ(4, module->WindowCurrentSize.y);
}

TEST_F(Window, FailuresHaveTheirCodes) {
  start("dummy");
  EXPECT_EQ(-2, create(64, 48, SDL_WINDOW_OPENGL, -1));
  EXPECT_EQ(-3, create(64, 48, 0, 99));
  module->DestroyWindow();
  EXPECT_EQ(-4, create(0, 0, 0, -1));
}

TEST_F(Window, ANewSizeIsReadAtTheNextFrame) {
  start("offscreen");
  app.VSync = false;
  ASSERT_EQ(0, create(64, 48, 0, -1));
  SDL_SetWindowSize(module->getWindow(), 32, 24);
  EXPECT_EQ(0, module->draw());
  EXPECT_EQ(64, module->WindowCurrentSize.w);
  module->RefreshSize();
  EXPECT_EQ(0, module->draw());
  EXPECT_EQ(32, module->WindowCurrentSize.w);
  EXPECT_EQ(24, module->WindowCurrentSize.h);
  EXPECT_EQ(64, module->WindowNativeSize.w);
  EXPECT_EQ(module->mpBackBuffer, SDL_GetRenderTarget(module->GetRenderer()));
}

}  // namespace
