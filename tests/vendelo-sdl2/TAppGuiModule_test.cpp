#include "vendelo-sdl2/TAppGuiModule.h"

#include <gtest/gtest.h>
#include <cstdlib>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "common/TBitmapFont.h"
#include "tests/support/FakeClock.h"
#include "tests/support/TestFont.h"
#include "tests/support/WidgetHarness.h"
#include "vendelo-sdl2/SystemSeams.h"
#include "vendelo-sdl2/TGuiComponent.h"

using namespace vendelo_sdl2;

namespace {

using Names = std::vector<std::string>;

Names events;
FakeClock* testClock = nullptr;
std::vector<long> sleeps;  // microseconds asked for
Uint32 overshoot = 0;      // milliseconds by which the next sleeps last longer

int fakeMicroSleep(useconds_t microseconds) {
  sleeps.push_back(static_cast<long>(microseconds));
  testClock->advance(microseconds / 1000 + overshoot);
  return 0;
}

std::string printed(const std::function<void()>& action) {
  testing::internal::CaptureStdout();
  action();
  return testing::internal::GetCapturedStdout();
}

class TestModule : public TAppGuiModule {
 public:
  explicit TestModule(SDL_Renderer* renderer) {
    SetRenderer(renderer);
    SetRendererStatic(renderer);
  }
  ~TestModule() override { events.push_back("~module"); }

  void OnShow() override { events.push_back("OnShow"); }
  void OnHide() override { events.push_back("OnHide"); }
  void RefreshSize() override {
    events.push_back("RefreshSize");
    TAppGuiModule::RefreshSize();
  }
  void BeforeDrawComponents() override { events.push_back("before"); }
  void AfterDrawComponents() override { events.push_back("after"); }

  using TAppGuiModule::Displays;
  using TAppGuiModule::mNumFrames;
  using TAppGuiModule::mpBackBuffer;
  using TAppGuiModule::mpGUIRendererStatic;
  using TAppGuiModule::mpWindowStatic;
  using TAppGuiModule::mSleepDiff;
  using TAppGuiModule::mTargetFPS;
  using TAppGuiModule::mVsync;
  using TAppGuiModule::selected_screen;
  using TAppGuiModule::WindowCurrentSize;
  using TAppGuiModule::WindowNativeSize;

  void makeBackBuffer(int w, int h) {
    mpBackBuffer = SDL_CreateTexture(GetRenderer(), SDL_PIXELFORMAT_ARGB8888, SDL_TEXTUREACCESS_TARGET, w, h);
    WindowNativeSize = WindowCurrentSize = {0, 0, w, h};
    SDL_SetRenderTarget(GetRenderer(), mpBackBuffer);
  }
};

class Root : public TGuiComponent {
 public:
  explicit Root(const std::string& name) : TGuiComponent(nullptr, 0, 0, 4, 4, name) {}
  ~Root() override { events.push_back("~" + mName); }
  int load() override {
    events.push_back("load " + mName);
    return mLoadResult;
  }
  void drawLogic() override {
    events.push_back("logic " + mName);
    if (mOnLogic) mOnLogic();
  }
  void draw() override {
    events.push_back("draw " + mName);
    TGuiComponent::draw();
  }
  void mainLogic() override { events.push_back("main " + mName); }
  int mLoadResult = 0;
  std::function<void()> mOnLogic;
};

// An application with a module that paints into a surface of 32 by 16 pixels.
class AppGuiModule : public testing::Test {
 protected:
  AppGuiModule() {
    events.clear();
    sleeps.clear();
    overshoot = 0;
    testClock = &clock;
    SystemSeams.MicroSleep = fakeMicroSleep;
    picture = SDL_CreateRGBSurfaceWithFormat(0, 32, 16, 32, SDL_PIXELFORMAT_ARGB8888);
    module = new TestModule(SDL_CreateSoftwareRenderer(picture));
    renderer = module->GetRenderer();
    SDL_SetRenderDrawColor(renderer, 0, 0, 0, 0);
    TestModule::Displays.clear();
    app.adopt(module);
  }
  ~AppGuiModule() override {
    SystemSeams = original;
    app.destroyGui();
    SDL_FreeSurface(picture);
    TestModule::Displays.clear();
    TerminalFlavour = UNKNOWN_FLAVOUR;
  }

  Root* add(const std::string& name) {
    auto* root = new Root(name);
    module->AddComponent(root);
    return root;
  }
  Names take() {
    Names taken;
    taken.swap(events);
    return taken;
  }
  void setScreenIndex(const std::string& value) { app.SetParam("SCREEN_INDEX", value, PARAM_CACHE, "", "", true); }
  static SDL_Texture* texture(SDL_Renderer* to, int w, int h, SDL_Color colour) {
    SDL_Texture* made = SDL_CreateTexture(to, SDL_PIXELFORMAT_RGBA8888, SDL_TEXTUREACCESS_TARGET, w, h);
    SDL_Texture* target = SDL_GetRenderTarget(to);
    SDL_SetRenderTarget(to, made);
    SDL_SetRenderDrawColor(to, colour.r, colour.g, colour.b, colour.a);
    SDL_RenderClear(to);
    SDL_SetRenderDrawColor(to, 0, 0, 0, 0);
    SDL_SetRenderTarget(to, target);
    return made;
  }
  void fill(SDL_Texture* on, SDL_Rect rect, SDL_Color colour) {
    SDL_Texture* target = SDL_GetRenderTarget(renderer);
    SDL_SetRenderTarget(renderer, on);
    SDL_SetRenderDrawBlendMode(renderer, SDL_BLENDMODE_NONE);
    SDL_SetRenderDrawColor(renderer, colour.r, colour.g, colour.b, colour.a);
    SDL_RenderFillRect(renderer, &rect);
    SDL_SetRenderDrawColor(renderer, 0, 0, 0, 0);
    SDL_SetRenderTarget(renderer, target);
  }
  // 0xRRGGBBAA of one pixel of a texture.
  Uint32 at(SDL_Texture* on, int x, int y) {
    SDL_Texture* target = SDL_GetRenderTarget(renderer);
    SDL_SetRenderTarget(renderer, on);
    const SDL_Rect rect{x, y, 1, 1};
    Uint32 value = 0xdeadbeef;
    SDL_RenderReadPixels(renderer, &rect, SDL_PIXELFORMAT_RGBA8888, &value, 4);
    SDL_SetRenderTarget(renderer, target);
    return value;
  }

  TSystemSeams original = SystemSeams;
  FakeClock clock{1000};
  HarnessApplication app;
  SDL_Surface* picture = nullptr;
  TestModule* module = nullptr;
  SDL_Renderer* renderer = nullptr;
};

TEST_F(AppGuiModule, StandsAsBuilt) {
  EXPECT_EQ(0, module->IsVisible());
  EXPECT_TRUE(module->IsRendering());
  EXPECT_FALSE(module->IsScreenRotated());
  EXPECT_EQ(nullptr, module->Loader());
  EXPECT_EQ(nullptr, module->getWindow());
  EXPECT_EQ(-1, module->selected_screen);
  EXPECT_EQ(60, module->mTargetFPS);
  EXPECT_TRUE(module->mVsync);
  float noVsync = -1;
  EXPECT_EQ(0.0f, module->getFPS(&noVsync));
  EXPECT_EQ(0.0f, noVsync);
  EXPECT_EQ(0.0f, module->getFPS(nullptr));
}

TEST_F(AppGuiModule, ShowAndHideCallTheirHooksOnce) {
  module->Show();
  module->Show();
  EXPECT_EQ(1, module->IsVisible());
  module->Hide();
  module->Hide();
  EXPECT_EQ(0, module->IsVisible());
  EXPECT_EQ((Names{"OnShow", "OnHide"}), take());
}

// ---- Displays

TEST_F(AppGuiModule, LoadTakesTheDisplayOfTheParameter) {
  const struct {
    const char* name;
    const char* value;  // null: the parameter is not there
    int expectedIndex;
  } rows[] = {
    {"absent", nullptr, 0}, {"zero", "0", 0},  {"one", "1", 0},
    {"two", "2", 1},        {"three", "3", 1}, {"negative", "-4", 0},
  };
  TestModule::Displays = {{0, 0, 100, 50}, {100, 0, 80, 60}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    if (row.value) setScreenIndex(row.value);
    module->selected_screen = -1;
    take();
    EXPECT_EQ(0, module->Load(nullptr));
    int index = -1;
    const SDL_Rect bounds = module->GetScreenBounds(&index);
    EXPECT_EQ(row.expectedIndex, index);
    EXPECT_EQ(row.expectedIndex == 0 ? 100 : 80, bounds.w);
    EXPECT_EQ((Names{"RefreshSize"}), take());
  }
  EXPECT_LE(module->selected_screen, 2);
}

TEST_F(AppGuiModule, LoadKeepsADisplayThatIsChosenAlreadyAndLowersItToTheirNumber) {
  TestModule::Displays = {{0, 0, 100, 50}, {100, 0, 80, 60}};
  setScreenIndex("1");
  module->selected_screen = 2;
  EXPECT_EQ(0, module->Load(nullptr));
  EXPECT_EQ(2, module->selected_screen);
  module->selected_screen = 7;
  EXPECT_EQ(0, module->Load(nullptr));
  EXPECT_EQ(2, module->selected_screen);
}

TEST_F(AppGuiModule, LoadWithoutDisplaysLeavesTheWindowAlone) {
  EXPECT_EQ(-1, module->Load(nullptr));
  EXPECT_TRUE(take().empty());
  int index = 42;
  const SDL_Rect bounds = module->GetScreenBounds(&index);
  EXPECT_EQ(42, index);
  EXPECT_EQ(0, bounds.w);
  EXPECT_EQ(0, bounds.h);
}

TEST_F(AppGuiModule, ADisplayWithoutSizeMovesNothing) {
  TestModule::Displays = {{5, 5, 0, 50}};
  EXPECT_EQ(0, module->Load(nullptr));
  EXPECT_TRUE(take().empty());
}

TEST_F(AppGuiModule, CombinedBoundsAreSums) {
  TestModule::Displays = {{0, 0, 100, 50}, {100, 20, 80, 60}};
  const SDL_Rect all = module->GetCombinedScreenBounds();
  EXPECT_EQ(0, all.x);
  EXPECT_EQ(0, all.y);
  EXPECT_EQ(180, all.w);
  EXPECT_EQ(110, all.h);
  EXPECT_EQ(100, module->GetScreenBounds(nullptr).w);
}

// ---- Components

TEST_F(AppGuiModule, RootsHaveNoParentAndTheSameRulesAsChildren) {
  auto* a = new Root("a");
  TGuiComponent other(nullptr, 0, 0, 1, 1, "other");
  a->setParent(&other);
  EXPECT_EQ(a, module->AddComponent(a));
  EXPECT_EQ(nullptr, a->getParent());
  Root twin("a");
  EXPECT_EQ("application::Component \"a\" already exists in module \"GUI1\".",
            printed([&] { EXPECT_EQ(nullptr, module->AddComponent(&twin)); }));
  auto* bad = new Root("bad");
  bad->mLoadResult = 1;
  EXPECT_EQ("application::load() error for bad while adding on \"GUI1\".",
            printed([&] { EXPECT_EQ(bad, module->AddComponent(bad)); }));
  EXPECT_EQ(nullptr, module->AddComponent(nullptr));
  EXPECT_EQ(a, module->FindComponentByName("a"));
  EXPECT_TRUE(module->FindComponent(bad));
  EXPECT_FALSE(module->FindComponent(&twin));
  EXPECT_FALSE(module->SendComponentToBack(a));
  EXPECT_TRUE(module->SendComponentToBack(bad));
  EXPECT_TRUE(module->BringComponentToFront(a));
  EXPECT_FALSE(module->SendComponentToBack(&twin));
  EXPECT_EQ("application::Dropping component a from GUI1",
            printed([&] { EXPECT_TRUE(module->RemoveComponent(a, true)); }));
  EXPECT_EQ("application::Dropping component bad from GUI1",
            printed([&] { EXPECT_TRUE(module->RemoveComponent(std::string("bad"), true)); }));
  EXPECT_FALSE(module->RemoveComponent(std::string("bad"), true));
}

TEST_F(AppGuiModule, MainLogicRunsForEveryRoot) {
  add("a");
  add("b")->Hide();
  take();
  module->mainLogic();
  EXPECT_EQ((Names{"main a", "main b"}), take());
}

TEST_F(AppGuiModule, DestroyDropsTheLoaderFirstAndEveryRootByName) {
  module->SetLoader(new Root("loader"));
  add("a");
  add("b");
  const std::string folder = testfont::freshFolder("AppGuiModule");
  new TBitmapFont(renderer, "font", testfont::write(folder, "font", 1) + ".fnt");
  EXPECT_NE(nullptr, TBitmapFont::FindBitmapFont("font"));
  take();
  const std::string expected =
    "application::Dropping component a from GUI1application::Dropping component b from GUI1";
  EXPECT_EQ(expected, printed([&] { app.destroyGui(); }).substr(0, expected.size()));
  EXPECT_EQ((Names{"~loader", "~a", "~b", "~module"}), take());
  EXPECT_EQ(nullptr, TBitmapFont::FindBitmapFont("font"));  // gone before the renderer that its atlas belongs to
  EXPECT_EQ(nullptr, TestModule::mpGUIRendererStatic);
  EXPECT_EQ(nullptr, app.GUI());
}

// ---- The frame

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
  EXPECT_EQ(module->mpBackBuffer, SDL_GetRenderTarget(renderer));
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
  const auto mutexIsFree = [this] {
    bool free = false;
    std::thread([&] {
      free = app.tryLockDrawMutex();
      if (free) app.unlockDrawMutex();
    }).join();
    return free;
  };
  module->SetRenderer(nullptr);
  EXPECT_EQ(2, module->draw());
  EXPECT_TRUE(mutexIsFree());
  module->SetRenderer(renderer);
  EXPECT_EQ(0, module->draw());
  EXPECT_TRUE(mutexIsFree());
  app.setStatus(TApplication::APP_TERMINATE);
  EXPECT_EQ(1, module->draw());
  EXPECT_TRUE(mutexIsFree());
}

TEST_F(AppGuiModule, TheMutexIsHeldWhileDrawingAndFreeWhileSleeping) {
  static HarnessApplication* application;
  static bool freeInSleep;
  application = &app;
  const auto probe = [] {
    bool free = false;
    std::thread([&free] {
      free = application->tryLockDrawMutex();
      if (free) application->unlockDrawMutex();
    }).join();
    return free;
  };
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
  EXPECT_EQ(module->mpBackBuffer, SDL_GetRenderTarget(renderer));
  EXPECT_TRUE(sleeps.empty());
  module->draw();
  EXPECT_EQ(module->mpBackBuffer, SDL_GetRenderTarget(renderer));
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
  EXPECT_EQ(0x00000000u, at(module->mpBackBuffer, 0, 0));  // cleared for the next frame
}

// ---- Pacing

class Pacing : public AppGuiModule {
 protected:
  void SetUp() override {
    module->SetTargetFPS(50);  // 20 ms
    module->updateLastDrawTime();
  }
};

TEST_F(Pacing, SleepsTheRestOfTheFrame) {
  clock.advance(5);
  module->draw();
  EXPECT_EQ((std::vector<long>{15000}), sleeps);
  EXPECT_EQ(0, module->mSleepDiff);
  EXPECT_EQ(1020u, clock.now());
}

TEST_F(Pacing, AnOvershootShortensTheNextSleep) {
  clock.advance(10);
  overshoot = 2;
  module->draw();
  EXPECT_EQ((std::vector<long>{10000}), sleeps);
  EXPECT_EQ(2, module->mSleepDiff);
  overshoot = 0;
  clock.advance(10);
  module->draw();
  EXPECT_EQ((std::vector<long>{10000, 8000}), sleeps);
  EXPECT_EQ(0, module->mSleepDiff);
}

TEST_F(Pacing, ALongFrameDoesNotSleep) {
  clock.advance(10);
  overshoot = 3;
  module->draw();
  EXPECT_EQ(3, module->mSleepDiff);
  clock.advance(20);
  module->draw();
  EXPECT_EQ(1u, sleeps.size());
  EXPECT_EQ(0, module->mSleepDiff);
}

TEST_F(Pacing, ElapsedAndOvershootTogetherDecide) {
  overshoot = 5;
  clock.advance(10);
  module->draw();
  clock.advance(15);  // 15 + 5 is the whole frame
  module->draw();
  EXPECT_EQ(1u, sleeps.size());
  EXPECT_EQ(0, module->mSleepDiff);
}

TEST_F(Pacing, VerticalSyncHoldsTheRateFrom60On) {
  const struct {
    const char* name;
    bool vsync;
    int fps;
    bool sleeps;
  } rows[] = {
    {"vsync at 60", true, 60, false}, {"vsync at 100", true, 100, false},  {"vsync at 59", true, 59, true},
    {"vsync at 30", true, 30, true},  {"no vsync at 60", false, 60, true},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    module->mVsync = row.vsync;
    module->SetTargetFPS(row.fps);
    module->updateLastDrawTime();
    sleeps.clear();
    module->draw();
    EXPECT_EQ(row.sleeps ? std::vector<long>{1000 / row.fps * 1000} : std::vector<long>{}, sleeps);
  }
}

TEST_F(Pacing, FrameRateIsARunningAverage) {
  float noVsync = 0;
  clock.advance(20);
  module->draw();
  EXPECT_FLOAT_EQ(50.0f, module->getFPS(&noVsync));
  EXPECT_FLOAT_EQ(50.0f, noVsync);
  clock.advance(40);
  module->draw();
  EXPECT_FLOAT_EQ((50.0f + 25.0f) / 2, module->getFPS(nullptr));
  EXPECT_EQ(2u, module->mNumFrames);
  clock.advance(40);
  module->draw();
  EXPECT_FLOAT_EQ((2 * 37.5f + 25.0f) / 3, module->getFPS(nullptr));
}

TEST_F(Pacing, TwoFramesInOneMillisecondCountAsOneASecond) {
  module->mVsync = true;
  module->SetTargetFPS(60);
  clock.advance(20);
  module->draw();
  module->draw();
  float noVsync = 0;
  EXPECT_FLOAT_EQ((50.0f + 1.0f) / 2, module->getFPS(&noVsync));
  EXPECT_FLOAT_EQ((50.0f + 1.0f) / 2, noVsync);
}

TEST_F(Pacing, TheAverageForgetsBeyondTheTargetRate) {
  module->SetTargetFPS(2);
  for (int i = 0; i < 5; ++i) {
    clock.advance(1000);
    module->draw();
  }
  EXPECT_EQ(2u, module->mNumFrames);
  clock.advance(2000);
  module->draw();
  EXPECT_FLOAT_EQ((1.0f + 0.5f) / 2, module->getFPS(nullptr));
}

// ---- Image helpers

TEST_F(AppGuiModule, RectanglesAreStatic) {
  SDL_Rect* one = TAppGuiModule::CreateRect(1, 2, 3, 4);
  SDL_Rect* two = TAppGuiModule::CreateRect2(5, 6, 7, 8);
  EXPECT_NE(one, two);
  EXPECT_EQ(4, one->h);
  EXPECT_EQ(5, two->x);
  EXPECT_EQ(one, TAppGuiModule::CreateRect(9, 0, 0, 0));
  EXPECT_EQ(9, one->x);
  EXPECT_EQ(8, two->h);
}

TEST_F(AppGuiModule, LayersTakeTheirColourFromTheFlavour) {
  const struct {
    TFlavour flavour;
    bool keepsColour;
  } rows[] = {
    {UNKNOWN_FLAVOUR, false}, {RONDELL_FLAVOUR, false}, {TAVE_FLAVOUR, false}, {TAVE2_FLAVOUR, false},
    {PELIX_FLAVOUR, false},   {UDO_FLAVOUR, false},     {LOMA_FLAVOUR, false}, {QUIRA_FLAVOUR, true},
    {ZOD_FLAVOUR, true},      {VESPERA_FLAVOUR, true},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.flavour);
    TerminalFlavour = row.flavour;
    SDL_Texture* layer = TAppGuiModule::CreateLayer(nullptr, 3, 2, 1, 10, 20, 30, 32);
    EXPECT_EQ(row.keepsColour ? 0x0a141e00u : 0u, at(layer, 1, 1));
    SDL_DestroyTexture(layer);
  }
}

TEST_F(AppGuiModule, ALayerLeavesTargetAndColourAsTheyWere) {
  SDL_Texture* target = texture(renderer, 4, 4, {1, 2, 3, 255});
  SDL_SetRenderTarget(renderer, target);
  SDL_SetRenderDrawColor(renderer, 9, 8, 7, 6);
  SDL_Texture* layer = TAppGuiModule::CreateLayer(target, 7, 5, 0, 0, 0, 0, 16);
  EXPECT_EQ(target, SDL_GetRenderTarget(renderer));
  Uint8 r, g, b, a;
  SDL_GetRenderDrawColor(renderer, &r, &g, &b, &a);
  EXPECT_EQ(0x09080706, r << 24 | g << 16 | b << 8 | a);
  Uint32 format = 0;
  int access = 0, w = 0, h = 0;
  SDL_BlendMode mode = SDL_BLENDMODE_NONE;
  SDL_QueryTexture(layer, &format, &access, &w, &h);
  SDL_GetTextureBlendMode(layer, &mode);
  EXPECT_EQ(static_cast<Uint32>(SDL_PIXELFORMAT_RGBA8888), format);
  EXPECT_EQ(SDL_TEXTUREACCESS_TARGET, access);
  EXPECT_EQ(7, w);
  EXPECT_EQ(5, h);
  EXPECT_EQ(SDL_BLENDMODE_BLEND, mode);
  SDL_SetRenderTarget(renderer, nullptr);
  EXPECT_EQ(nullptr, TAppGuiModule::CreateLayer(nullptr, 0, 5, 0, 0, 0, 0, 16));
}

TEST_F(AppGuiModule, SubImageCopiesAlphaAsItStands) {
  EXPECT_EQ(nullptr, TAppGuiModule::SubImage(nullptr, 0, 0, 1, 1));
  SDL_Texture* source = texture(renderer, 8, 8, {10, 20, 30, 40});
  fill(source, {4, 4, 4, 4}, {200, 100, 50, 128});
  SDL_SetTextureBlendMode(source, SDL_BLENDMODE_ADD);
  SDL_Texture* target = texture(renderer, 4, 4, {0, 0, 0, 0});
  SDL_SetRenderTarget(renderer, target);
  SDL_Texture* part = TAppGuiModule::SubImage(source, 2, 2, 4, 4);
  EXPECT_EQ(target, SDL_GetRenderTarget(renderer));
  EXPECT_EQ(0x0a141e28u, at(part, 1, 1));
  EXPECT_EQ(0xc8643280u, at(part, 2, 2));
  SDL_BlendMode mode = SDL_BLENDMODE_NONE;
  SDL_GetTextureBlendMode(source, &mode);
  EXPECT_EQ(SDL_BLENDMODE_ADD, mode);
  SDL_SetRenderTarget(renderer, nullptr);
}

TEST_F(AppGuiModule, SlidesOfAStrip) {
  const struct {
    const char* name;
    int w, h, slideW, slideH, index;
    int x, y;  // -1: none
  } rows[] = {
    {"vertical first", 10, 30, 10, 10, 0, 0, 0},
    {"vertical last", 10, 30, 10, 10, 2, 0, 20},
    {"vertical beyond", 10, 30, 10, 10, 3, -1, -1},
    {"horizontal last", 40, 10, 10, 10, 3, 30, 0},
    {"horizontal beyond", 40, 10, 10, 10, 4, -1, -1},
    {"one slide", 100, 100, 100, 100, 0, 0, 0},
    {"one slide, second", 100, 100, 100, 100, 1, -1, -1},
    {"no strip", 40, 40, 10, 10, 0, -1, -1},
    {"negative index", 10, 30, 10, 10, -1, -1, -1},
    {"remainder is no slide", 10, 35, 10, 10, 3, -1, -1},
    {"width 0", 10, 30, 0, 30, 0, -1, -1},
    {"height 0", 10, 30, 10, 0, 0, -1, -1},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    SDL_Texture* strip = texture(renderer, row.w, row.h, {1, 1, 1, 255});
    if (row.x >= 0) fill(strip, {row.x, row.y, 1, 1}, {255, 0, 0, 255});
    SDL_Texture* slide = TAppGuiModule::GetSlideFromImage(strip, row.slideW, row.slideH, row.index);
    EXPECT_EQ(row.x >= 0, slide != nullptr);
    if (slide) {
      int w = 0, h = 0;
      SDL_QueryTexture(slide, nullptr, nullptr, &w, &h);
      EXPECT_EQ(row.slideW, w);
      EXPECT_EQ(row.slideH, h);
      EXPECT_EQ(0xff0000ffu, at(slide, 0, 0));
    }
  }
  EXPECT_EQ(nullptr, TAppGuiModule::GetSlideFromImage(nullptr, 1, 1, 0));
}

TEST_F(AppGuiModule, LoadImageGivesACopyThatTheCallerOwns) {
  const std::string folder = testfont::freshFolder("AppGuiModule_LoadImage");
  testfont::writePicture(folder + "a.png", 6, 4, {10, 20, 30, 128});
  SDL_Texture* image = TAppGuiModule::LoadImage((folder + "a.png").c_str(), 0, 0, 0, 0, 0);
  ASSERT_NE(nullptr, image);
  int access = 0, w = 0, h = 0;
  SDL_QueryTexture(image, nullptr, &access, &w, &h);
  EXPECT_EQ(SDL_TEXTUREACCESS_TARGET, access);
  EXPECT_EQ(6, w);
  EXPECT_EQ(4, h);
  EXPECT_EQ(0x0a141e80u, at(image, 0, 0));
  EXPECT_EQ("", printed([] {
              EXPECT_EQ(nullptr, TAppGuiModule::LoadImage("", 0, 0, 0, 0, 0));
              EXPECT_EQ(nullptr, TAppGuiModule::LoadSurface("", 0, 0, 0, 0, 0));
            }));
  const std::string missing = folder + "missing.png";
  const std::string message = printed([&] { TAppGuiModule::LoadImage(missing.c_str(), 0, 0, 0, 0, 0); });
  EXPECT_NE(std::string::npos, message.find("\n*******************TAppGuiModule::LoadImage: Unable to load image "
                                            "file: " +
                                            missing + "\n\n"));
}

TEST_F(AppGuiModule, LoadSurfaceBlends) {
  const std::string folder = testfont::freshFolder("AppGuiModule_LoadSurface");
  testfont::writePicture(folder + "a.png", 6, 4, {10, 20, 30, 128});
  SDL_Surface* surface = TAppGuiModule::LoadSurface((folder + "a.png").c_str(), 0, 0, 0, 0, 0);
  ASSERT_NE(nullptr, surface);
  SDL_BlendMode mode = SDL_BLENDMODE_NONE;
  SDL_GetSurfaceBlendMode(surface, &mode);
  EXPECT_EQ(SDL_BLENDMODE_BLEND, mode);
  EXPECT_EQ(6, surface->w);
  SDL_FreeSurface(surface);
  const std::string missing = folder + "missing.png";
  const std::string message =
    printed([&] { EXPECT_EQ(nullptr, TAppGuiModule::LoadSurface(missing.c_str(), 0, 0, 0, 0, 0)); });
  const std::string expected = "Error loading: " + missing;
  ASSERT_GE(message.size(), expected.size());
  EXPECT_EQ(expected, message.substr(message.size() - expected.size()));
}

TEST_F(AppGuiModule, SurfacesAreKeyedAndFilled) {
  SDL_Surface* surface = TAppGuiModule::CreateSurface(nullptr, 5, 3, 0, 255, 0, 255, 8);
  ASSERT_NE(nullptr, surface);
  EXPECT_EQ(32, surface->format->BitsPerPixel);
  EXPECT_EQ(0xff0000u, surface->format->Rmask);
  EXPECT_EQ(0u, surface->format->Amask);
  Uint32 key = 0;
  SDL_BlendMode mode = SDL_BLENDMODE_NONE;
  EXPECT_EQ(0, SDL_GetColorKey(surface, &key));
  SDL_GetSurfaceBlendMode(surface, &mode);
  EXPECT_EQ(0xff00ffu, key);
  EXPECT_EQ(SDL_BLENDMODE_BLEND, mode);
  EXPECT_EQ(0xff00ffu, *static_cast<Uint32*>(surface->pixels));
  SDL_FreeSurface(surface);

  EXPECT_EQ(nullptr, TAppGuiModule::SubSurface(nullptr, 0, 0, 1, 1));
  SDL_Surface* source = SDL_CreateRGBSurfaceWithFormat(0, 8, 8, 32, SDL_PIXELFORMAT_RGB888);
  const SDL_Rect square{4, 4, 4, 4};
  SDL_FillRect(source, &square, 0x00ff00);
  SDL_Surface* part = TAppGuiModule::SubSurface(source, 3, 4, 2, 2);
  ASSERT_NE(nullptr, part);
  EXPECT_EQ(2, part->w);
  EXPECT_EQ(0x000000u, static_cast<Uint32*>(part->pixels)[0]);
  EXPECT_EQ(0x00ff00u, static_cast<Uint32*>(part->pixels)[1]);
  SDL_FreeSurface(part);
  SDL_FreeSurface(source);
}

// ---- The window itself, on SDL's drivers without a screen

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
