// The window itself, on SDL's drivers without a screen.
#include <cstdlib>
#include <thread>

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
  EXPECT_EQ(module->mpBackBuffer.get(), SDL_GetRenderTarget(module->GetRenderer()));
  EXPECT_EQ(64, module->WindowNativeSize.w);
  EXPECT_EQ(48, module->WindowCurrentSize.h);
  int w = 0, h = 0;
  SDL_QueryTexture(module->mpBackBuffer.get(), nullptr, nullptr, &w, &h);
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
  EXPECT_EQ(module->mpBackBuffer.get(), SDL_GetRenderTarget(module->GetRenderer()));
}

// ---- Window events and the thread on which SDL's renderer sees them

struct Seen {
  SDL_threadID thread;
  Uint8 event;
};

class WindowEvents : public Window {
 protected:
  void SetUp() override {
    Window::SetUp();
    start("offscreen");
    app.VSync = false;
    ASSERT_EQ(0, create(64, 48, 0, -1));
    SDL_FlushEvents(SDL_FIRSTEVENT, SDL_LASTEVENT);
    SDL_AddEventWatch(watch, this);
  }
  void TearDown() override {
    SDL_DelEventWatch(watch, this);
    Window::TearDown();
  }
  static int watch(void* self, SDL_Event* event) {
    if (event->type == SDL_WINDOWEVENT)
      static_cast<WindowEvents*>(self)->seen.push_back({SDL_ThreadID(), event->window.event});
    return 0;
  }
  // From the thread that pumps the events, which is not the draw thread.
  static void pump(Uint32 type, Uint8 windowEvent) {
    std::thread([=] {
      SDL_Event event{};
      event.type = type;
      event.window.event = windowEvent;
      SDL_PushEvent(&event);
    }).join();
  }
  static std::vector<Uint8> polled() {
    std::vector<Uint8> out;
    SDL_Event event;
    while (SDL_PollEvent(&event))
      if (event.type == SDL_WINDOWEVENT) out.push_back(event.window.event);
    return out;
  }
  std::vector<Seen> seen;
};

TEST_F(WindowEvents, ReachTheRendererOnTheDrawThreadOnly) {
  pump(SDL_WINDOWEVENT, SDL_WINDOWEVENT_SIZE_CHANGED);
  pump(SDL_WINDOWEVENT, SDL_WINDOWEVENT_EXPOSED);
  EXPECT_TRUE(seen.empty());
  EXPECT_TRUE(polled().empty());
  EXPECT_EQ(0, module->draw());
  ASSERT_EQ(2u, seen.size());
  EXPECT_EQ(SDL_ThreadID(), seen[0].thread);
  EXPECT_EQ(SDL_WINDOWEVENT_SIZE_CHANGED, seen[0].event);
  EXPECT_EQ(SDL_WINDOWEVENT_EXPOSED, seen[1].event);
  EXPECT_EQ((std::vector<Uint8>{SDL_WINDOWEVENT_SIZE_CHANGED, SDL_WINDOWEVENT_EXPOSED}), polled());
  module->draw();
  EXPECT_EQ(2u, seen.size());
}

TEST_F(WindowEvents, OfTheDrawThreadItselfPassAtOnce) {
  SDL_Event event{};
  event.type = SDL_WINDOWEVENT;
  event.window.event = SDL_WINDOWEVENT_MOVED;
  EXPECT_EQ(1, SDL_PushEvent(&event));
  EXPECT_EQ(1u, seen.size());
}

TEST_F(WindowEvents, OtherEventsPassOnAnyThread) {
  pump(SDL_USEREVENT, 0);
  SDL_Event event;
  EXPECT_EQ(1, SDL_PollEvent(&event));
  EXPECT_EQ(static_cast<Uint32>(SDL_USEREVENT), event.type);
}

TEST_F(WindowEvents, WithoutFramesOnlyTheLatestAreKept) {
  for (int i = 0; i < 63; ++i) pump(SDL_WINDOWEVENT, SDL_WINDOWEVENT_EXPOSED);
  pump(SDL_WINDOWEVENT, SDL_WINDOWEVENT_MOVED);
  pump(SDL_WINDOWEVENT, SDL_WINDOWEVENT_LEAVE);
  module->draw();
  ASSERT_EQ(64u, seen.size());
  EXPECT_EQ(SDL_WINDOWEVENT_EXPOSED, seen[0].event);
  EXPECT_EQ(SDL_WINDOWEVENT_MOVED, seen[62].event);
  EXPECT_EQ(SDL_WINDOWEVENT_LEAVE, seen[63].event);
}

TEST_F(WindowEvents, TheGateTakesThePlaceOfAnyOtherFilter) {
  module->DestroyWindow();
  SDL_SetEventFilter([](void*, SDL_Event*) { return 1; }, nullptr);
  ASSERT_EQ(0, create(32, 32, 0, -1));
  SDL_FlushEvent(SDL_WINDOWEVENT);
  pump(SDL_WINDOWEVENT, SDL_WINDOWEVENT_SIZE_CHANGED);
  EXPECT_FALSE(SDL_HasEvent(SDL_WINDOWEVENT));
}

TEST_F(WindowEvents, AnotherWindowLeavesTheGateAndTheQueueAlone) {
  pump(SDL_USEREVENT, 0);
  module->DestroyWindow();
  ASSERT_EQ(0, create(32, 32, 0, -1));
  EXPECT_TRUE(SDL_HasEvent(SDL_USEREVENT));
  SDL_FlushEvent(SDL_WINDOWEVENT);
  pump(SDL_WINDOWEVENT, SDL_WINDOWEVENT_SIZE_CHANGED);
  EXPECT_FALSE(SDL_HasEvent(SDL_WINDOWEVENT));
}

}  // namespace
