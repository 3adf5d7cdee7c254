// What the GUI module asks of SDL, and in which order: at its making, for the window, in a frame, at its end.
#include "tests/support/TestFont.h"
#include "tests/vendelo-sdl2/SdlCalls.h"
#include "tests/vendelo-sdl2/TAppGuiModuleFixture.h"
#include "vendelo-sdl2/MyUtils.h"

using namespace guitest;

namespace {

constexpr Uint32 kWindowFlags = SDL_WINDOW_OPENGL | SDL_WINDOW_BORDERLESS;
constexpr Uint32 kRendererFlags = SDL_RENDERER_ACCELERATED | SDL_RENDERER_TARGETTEXTURE;

class Module : public TestModule {
 public:
  Module() : TestModule(nullptr) {}
  using TestModule::mGlobalPixelFormat;
};

class Calls : public testing::Test {
 protected:
  Calls() {
    events.clear();
    sdlcalls::windowPixels = SDL_CreateRGBSurfaceWithFormat(0, 64, 48, 32, SDL_PIXELFORMAT_ARGB8888);
    sdlcalls::windowSurface = nullptr;
    sdlcalls::windowFails = sdlcalls::rendererFails = sdlcalls::textureFails = false;
    sdlcalls::displays.clear();
    sdlcalls::names.clear();
    TestModule::Displays.clear();
    testClock = &clock;
    SystemSeams.MicroSleep = [](useconds_t microseconds) {
      events.push_back("sleep " + std::to_string(microseconds));
      return 0;
    };
  }
  ~Calls() override {
    sdlcalls::log = nullptr;
    app.destroyGui();
    SystemSeams = original;
    SDL_FreeSurface(sdlcalls::windowPixels);
    TestModule::Displays.clear();
  }
  void make() {
    module = new Module;
    app.adopt(module);
  }
  // What SDL was asked for meanwhile.
  static Names during(const std::function<void()>& action) {
    events.clear();
    sdlcalls::log = &events;
    action();
    sdlcalls::log = nullptr;
    Names taken;
    taken.swap(events);
    return taken;
  }
  int create() { return module->CreateWindow("Top", 3, 4, 64, 48, kWindowFlags, -1, kRendererFlags, 0); }
  // A window with its back buffer.
  void open(TApplication::ApplicationState status = TApplication::APP_RUNNING) {
    make();
    app.VSync = true;
    ASSERT_EQ(0, create());
    module->WindowNativeSize = module->WindowCurrentSize = {0, 0, 64, 48};
    sdlcalls::names[module->mpBackBuffer.get()] = "back";
    app.setStatus(status);
  }

  TSystemSeams original = SystemSeams;
  FakeClock clock{1000};
  LoggedApplication app;
  Module* module = nullptr;
};

// ---- The making

TEST_F(Calls, TheModuleReadsTheDisplaysOnceAndHidesTheCursor) {
  sdlcalls::displays = {{0, 0, 100, 50}, {0, 0, -1, 0}, {100, 10, 80, 60}};
  EXPECT_EQ((Names{"display 0", "display 1", "display 2", "pictures 3", "cursor 0"}), during([this] { make(); }));
  EXPECT_EQ(IMG_INIT_JPG | IMG_INIT_PNG, 3);
  ASSERT_EQ(3u, TestModule::Displays.size());
  const SDL_Rect expected[] = {{0, 0, 100, 50}, {0, 0, 0, 0}, {100, 10, 80, 60}};
  for (int i = 0; i < 3; ++i)
    EXPECT_TRUE(SDL_RectEquals(&expected[i], &TestModule::Displays[static_cast<size_t>(i)]));
  EXPECT_EQ(1000u, module->mLastDrawTime);
  sdlcalls::displays = {{0, 0, 7, 7}};
  app.destroyGui();
  EXPECT_EQ((Names{"pictures 3", "cursor 0"}), during([this] { make(); }));
  EXPECT_EQ(3u, TestModule::Displays.size());
}

TEST_F(Calls, TheWindowComesWithItsHintsRendererAndBackBufferInOrder) {
  for (const bool vsync : {false, true}) {
    SCOPED_TRACE(vsync);
    make();
    app.VSync = vsync;
    const Uint32 rendererFlags = kRendererFlags | (vsync ? Uint32{SDL_RENDERER_PRESENTVSYNC} : 0u);
    EXPECT_EQ((Names{"hint SDL_RENDER_SCALE_QUALITY best", "window Top 3,4,64,48 " + std::to_string(kWindowFlags),
                     "hint SDL_RENDER_DRIVER opengl", "hint SDL_VIDEO_MINIMIZE_ON_FOCUS_LOSS false",
                     "renderer -1 " + std::to_string(rendererFlags), "blend 1", "colour 0 0 0 0",
                     "texture SDL_PIXELFORMAT_ABGR8888 2 64 48", "target ?", "window surface"}),
              during([this] { EXPECT_EQ(0, create()); }));
    EXPECT_EQ(vsync, module->mVsync);
    EXPECT_EQ(sdlcalls::window, module->getWindow());
    const SDL_Rect place{3, 4, 64, 48};
    EXPECT_TRUE(SDL_RectEquals(&place, &module->WindowNativeSize));
    EXPECT_TRUE(SDL_RectEquals(&place, &module->WindowCurrentSize));
    app.destroyGui();
  }
}

TEST_F(Calls, TheDriverIsTheOneAskedFor) {
  make();
  app.VSync = false;
  const Names calls = during([this] { module->CreateWindow("Top", 0, 0, 8, 8, 0, 5, 0, 1); });
  EXPECT_EQ("window Top 0,0,8,8 0", calls.at(1));
  EXPECT_EQ("renderer 5 0", calls.at(4));
}

TEST_F(Calls, AFailureEndsTheMakingOfTheWindowWhereItHappens) {
  make();
  sdlcalls::windowFails = true;
  EXPECT_EQ(2u, during([this] { EXPECT_EQ(-2, create()); }).size());
  sdlcalls::windowFails = false;
  sdlcalls::rendererFails = true;
  EXPECT_EQ(5u, during([this] { EXPECT_EQ(-3, create()); }).size());
  sdlcalls::rendererFails = false;
  sdlcalls::textureFails = true;
  EXPECT_EQ(8u, during([this] { EXPECT_EQ(-4, create()); }).size());
  EXPECT_EQ(nullptr, TestModule::mpWindowStatic);
  EXPECT_EQ(nullptr, TestModule::mpGUIRendererStatic);
}

TEST_F(Calls, TheGlobalPixelFormatIsThatOfTheWindowsSurface) {
  make();
  SDL_PixelFormat before{};
  before.format = SDL_PIXELFORMAT_RGB332;
  TAppGuiModule::SetGlobalPixelFormat(&before);
  ASSERT_EQ(0, create());  // no surface
  EXPECT_EQ(static_cast<Uint32>(SDL_PIXELFORMAT_RGB332), Module::mGlobalPixelFormat.format);
  module->DestroyWindow();
  SDL_Surface bare{};  // one without a format
  sdlcalls::windowSurface = &bare;
  ASSERT_EQ(0, create());
  EXPECT_EQ(static_cast<Uint32>(SDL_PIXELFORMAT_RGB332), Module::mGlobalPixelFormat.format);
  module->DestroyWindow();
  sdlcalls::windowSurface = SDL_CreateRGBSurfaceWithFormat(0, 2, 2, 16, SDL_PIXELFORMAT_RGB565);
  ASSERT_EQ(0, create());
  EXPECT_EQ(static_cast<Uint32>(SDL_PIXELFORMAT_RGB565), Module::mGlobalPixelFormat.format);
  EXPECT_EQ(0xf800u, Module::mGlobalPixelFormat.Rmask);
  EXPECT_EQ(2, Module::mGlobalPixelFormat.BytesPerPixel);
  SDL_FreeSurface(sdlcalls::windowSurface);
}

// ---- The display

TEST_F(Calls, LoadPutsTheWindowOnTheDisplayOfTheParameter) {
  sdlcalls::displays = {{0, 0, 100, 50}, {100, 10, 80, 60}};
  make();
  EXPECT_EQ((Names{"place 0 0", "size 100 50", "RefreshSize"}), during([this] { module->Load(nullptr); }));
  const TAppParam* param = app.GetParam("SCREEN_INDEX", PARAM_CACHE);
  EXPECT_EQ("1", param->AsString());
  EXPECT_EQ("Screen index", param->Caption());
  EXPECT_EQ("Index of screen on which the app will be shown.", param->Description());
  app.SetParam("SCREEN_INDEX", "2", PARAM_CACHE, "", "", true);
  EXPECT_TRUE(during([this] {
                module->selected_screen = 1;
                module->Load(nullptr);
              }).front() == "place 0 0")
    << "chosen already: not read again";
  module->selected_screen = -1;
  EXPECT_EQ((Names{"place 100 10", "size 80 60", "RefreshSize"}), during([this] { module->Load(nullptr); }));
  const SDL_Rect bounds = module->GetScreenBounds(nullptr);
  EXPECT_TRUE(SDL_RectEquals(&sdlcalls::displays[1], &bounds));
}

TEST_F(Calls, ADisplayWithoutWidthOrHeightMovesNothing) {
  for (const SDL_Rect& display : {SDL_Rect{5, 6, 0, 50}, SDL_Rect{5, 6, 50, 0}}) {
    make();
    TestModule::Displays = {display};
    EXPECT_TRUE(during([this] { EXPECT_EQ(0, module->Load(nullptr)); }).empty());
    app.destroyGui();
  }
}

// ---- A frame

TEST_F(Calls, AFrameOfTheRunningApplication) {
  open();
  module->SetTargetFPS(30);
  module->AddComponent(new Root("a"));
  module->AddComponent(new Root("b"));
  module->SetLoader(new Root("loader"));
  app.DeferToDrawRender(
    [this](SDL_Renderer* r) { events.push_back(r == module->GetRenderer() ? "deferred" : "?"); }, true);
  app.AddTimedTask(new TtthLambda([] { events.push_back("task"); }, 0, TTimedTaskHandler::ENDLESS, "task"),
                   TASK_DRAW);
  clock.advance(5);
  EXPECT_EQ((Names{"deferred", "task", "logic a", "logic b", "before", "draw a", "draw b", "after", "target back",
                   "colour 0 0 0 0", "clear", "colour 0 0 0 0", "target window",
                   "copy back 0,0,64,48 to 0,0,64,48 0 0", "sleep 28000", "present", "target back"}),
            during([this] { EXPECT_EQ(0, module->draw()); }));
  // The next one draws the same: it is on the window already.
  clock.advance(32);
  EXPECT_EQ(
    (Names{"task", "logic a", "logic b", "before", "draw a", "draw b", "after", "target back", "sleep 29000"}),
    during([this] { EXPECT_EQ(0, module->draw()); }));
}

TEST_F(Calls, AFrameThatDrawsEverything) {
  setenv("TOPSCREEN_REDRAW", "all", 1);
  open();
  unsetenv("TOPSCREEN_REDRAW");
  module->AddComponent(new Root("a"));
  for (int i = 0; i < 3; ++i)
    EXPECT_EQ(
      (Names{"logic a", "before", "draw a", "after", "target back", "colour 0 0 0 0", "clear", "colour 0 0 0 0",
             "target back", "target window", "copy back 0,0,64,48 to 0,0,64,48 0 0", "present", "target back"}),
      during([this] { EXPECT_EQ(0, module->draw()); }));
}

TEST_F(Calls, AnotherWordForWhatIsDrawnIsToldAndMeansNothing) {
  const auto told = [this] {
    return std::count(app.lines.begin(), app.lines.end(),
                      "4 TOPSCREEN_REDRAW is neither all nor show, drawing what changes.");
  };
  setenv("TOPSCREEN_REDRAW", "", 1);
  open();
  EXPECT_EQ(0, told());
  app.destroyGui();
  setenv("TOPSCREEN_REDRAW", "ALL", 1);
  open();
  unsetenv("TOPSCREEN_REDRAW");
  EXPECT_EQ(1, told());
  module->draw();
  const Names second = during([this] { module->draw(); });
  EXPECT_EQ(0, std::count(second.begin(), second.end(), "present"));
}

TEST_F(Calls, WhatChangesIsOutlinedOnTheWindowAloneAndForOneFrame) {
  setenv("TOPSCREEN_REDRAW", "show", 1);
  open();
  unsetenv("TOPSCREEN_REDRAW");
  constexpr Uint32 magenta = 0xff00ff;
  const auto pixel = [this](SDL_Texture* on, int x, int y) {
    SDL_SetRenderTarget(module->GetRenderer(), on);
    const SDL_Rect place{x, y, 1, 1};
    Uint32 value = 0;
    SDL_RenderReadPixels(module->GetRenderer(), &place, SDL_PIXELFORMAT_RGB888, &value, 4);
    SDL_SetRenderTarget(module->GetRenderer(), module->mpBackBuffer.get());
    return value & 0xffffff;
  };
  module->draw();
  EXPECT_EQ(magenta, pixel(nullptr, 0, 0)) << "all of the first frame";
  auto* root = new TGuiComponent(nullptr, 10, 12, 8, 6, "root");
  root->SetTargetTexture(
    SDL_CreateTexture(module->GetRenderer(), SDL_PIXELFORMAT_ARGB8888, SDL_TEXTUREACCESS_TARGET, 8, 6));
  module->AddComponent(root);
  module->draw();
  EXPECT_EQ(magenta, pixel(nullptr, 10, 12));
  EXPECT_EQ(magenta, pixel(nullptr, 17, 17));
  EXPECT_NE(magenta, pixel(nullptr, 11, 13));
  EXPECT_NE(magenta, pixel(nullptr, 0, 0));
  EXPECT_NE(magenta, pixel(module->mpBackBuffer.get(), 10, 12));
  module->draw();
  EXPECT_NE(magenta, pixel(nullptr, 10, 12)) << "nothing has changed since";
}

TEST_F(Calls, AFrameBeforeRunningShowsTheLoader) {
  open(TApplication::APP_STARTUP_GRAPHICS);
  module->AddComponent(new Root("a"));
  module->SetLoader(new Root("loader"));
  for (const auto status : {TApplication::APP_STARTUP_GRAPHICS, TApplication::APP_SHUTTING_DOWN}) {
    app.setStatus(status);
    app.ComponentLogicCalled = true;
    module->RedrawAll();
    EXPECT_EQ((Names{"logic loader", "draw loader", "target back", "colour 0 0 0 0", "clear", "colour 0 0 0 0",
                     "target window", "copy back 0,0,64,48 to 0,0,64,48 0 0", "present", "target back"}),
              during([this] { EXPECT_EQ(0, module->draw()); }));
    EXPECT_FALSE(app.ComponentLogicCalled);
  }
}

TEST_F(Calls, AFrameWithoutRendering) {
  open();
  module->AddComponent(new Root("a"));
  module->StopRendering();
  module->TAppGuiModule::RefreshSize();
  app.ComponentLogicCalled = true;
  app.DeferToDraw([] { events.push_back("deferred"); }, true);
  EXPECT_EQ((Names{"deferred", "sleep 16000"}), during([this] { EXPECT_EQ(0, module->draw()); }));
  EXPECT_FALSE(app.ComponentLogicCalled);
  module->StartRendering();  // the size has waited
  EXPECT_EQ("window size", during([this] { module->draw(); }).at(0));
}

TEST_F(Calls, ANewWindowSizeIsReadOnceAndScalesTheLastCopy) {
  open();
  module->AddComponent(new Root("a"));
  module->WindowNativeSize = {1, 2, 64, 48};
  module->WindowCurrentSize = {1, 2, 64, 48};
  sdlcalls::windowW = 50;
  sdlcalls::windowH = 20;
  module->TAppGuiModule::RefreshSize();
  app.DeferToDraw([] { events.push_back("deferred"); }, true);
  EXPECT_EQ((Names{"deferred", "window size", "target window", "viewport 1,2,50,20", "target back", "logic a",
                   "before", "draw a", "after", "target back", "colour 0 0 0 0", "clear", "colour 0 0 0 0",
                   "target window", "clear", "copy back 1,2,64,48 to 1,2,50,20 0 0", "present", "target back"}),
            during([this] { module->draw(); }));
  module->RotateScreen(true);
  EXPECT_EQ(
    (Names{"logic a", "before", "draw a", "after", "target back", "colour 0 0 0 0", "clear", "colour 0 0 0 0",
           "target window", "clear", "copy back 1,2,64,48 to 1,2,50,20 180 0", "present", "target back"}),
    during([this] { module->draw(); }));
}

TEST_F(Calls, NoRendererComesBeforeTermination) {
  open();
  SDL_Renderer* renderer = module->GetRenderer();
  app.setStatus(TApplication::APP_TERMINATE);
  app.ComponentLogicCalled = true;
  EXPECT_TRUE(during([this] { EXPECT_EQ(1, module->draw()); }).empty());
  module->SetRenderer(nullptr);
  EXPECT_TRUE(during([this] { EXPECT_EQ(2, module->draw()); }).empty());
  EXPECT_TRUE(app.ComponentLogicCalled);
  EXPECT_EQ(0u, module->mNumFrames);
  module->SetRenderer(renderer);
}

TEST_F(Calls, TheDurationOfAFrameIsThatOfItsWorkAndItsDrawing) {
  open();
  app.VSync = false;
  module->mVsync = false;
  app.DeferToDraw([this] { clock.advance(3); }, true);
  module->mOnAfter = [this] { clock.advance(4); };
  module->draw();
  EXPECT_EQ(7, app.DrawDurationMs);
}

// ---- The end

TEST_F(Calls, TheEndFreesPicturesThenRootsThenTheWindow) {
  open();
  const std::string folder = testfont::freshFolder("AppGuiModule_Calls");
  testfont::writePicture(folder + "a.png", 2, 2, {1, 2, 3, 255});
  MyUtils::SetImageDir(folder);
  sdlcalls::names[MyUtils::GetTexture(module->GetRenderer(), "a.png")] = "texture";
  sdlcalls::names[MyUtils::GetSurface("a.png")] = "surface";
  module->SetLoader(new Root("loader"));
  module->AddComponent(new Root("a"));
  module->AddComponent(new Root("b"));
  TAppGuiModule* gui = app.TakeGUI();
  EXPECT_EQ(module, gui);
  EXPECT_EQ((Names{"~loader", "free surface", "destroy texture", "~a", "~b", "destroy back", "destroy renderer",
                   "destroy window", "~module"}),
            during([gui] { EXPECT_EQ(0, gui->Destroy()); }));
  MyUtils::SetImageDir("");
}

TEST_F(Calls, WhatIsNotThereIsNotDestroyed) {
  make();
  EXPECT_TRUE(during([this] { module->DestroyWindow(); }).empty());
  ASSERT_EQ(0, create());
  sdlcalls::names[module->mpBackBuffer.get()] = "back";
  const Names all = {"destroy back", "destroy renderer", "destroy window"};
  EXPECT_EQ(all, during([this] { module->DestroyWindow(); }));
  EXPECT_EQ(nullptr, module->mpBackBuffer);
  EXPECT_EQ(nullptr, module->GetRenderer());
  EXPECT_EQ(nullptr, module->getWindow());
  EXPECT_TRUE(during([this] { module->DestroyWindow(); }).empty());
}

TEST_F(Calls, WithoutAnApplicationTheEndIsRefused) {
  Module alone;
  EXPECT_EQ(-1, alone.Destroy());
}

}  // namespace
