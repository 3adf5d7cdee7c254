#pragma once

#include <gtest/gtest.h>
#include <functional>
#include <string>
#include <vector>

#include "tests/support/FakeClock.h"
#include "tests/support/WidgetHarness.h"
#include "vendelo-sdl2/SystemSeams.h"
#include "vendelo-sdl2/TAppGuiModule.h"
#include "vendelo-sdl2/TGuiComponent.h"
#include "vendelo-sdl2/TextureContent.h"

// What the tests of the GUI module share: a module whose hooks and roots write down what happens, an application
// around it, a clock that stands still and sleeps that move it.
namespace guitest {

using namespace vendelo_sdl2;

using Names = std::vector<std::string>;

inline Names events;
inline FakeClock* testClock = nullptr;
inline std::vector<long> sleeps;  // microseconds asked for
inline Uint32 overshoot = 0;      // milliseconds by which the next sleeps last longer

inline int fakeMicroSleep(useconds_t microseconds) {
  sleeps.push_back(static_cast<long>(microseconds));
  testClock->advance(microseconds / 1000 + overshoot);
  return 0;
}

inline std::string printed(const std::function<void()>& action) {
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
  void BeforeDrawComponents() override {
    events.push_back("before");
    if (mOnBefore) mOnBefore();
  }
  void AfterDrawComponents() override {
    events.push_back("after");
    if (mOnAfter) mOnAfter();
  }
  std::function<void()> mOnBefore, mOnAfter;

  using TAppGuiModule::Displays;
  using TAppGuiModule::mLastDrawTime;
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
    mpBackBuffer.reset(SDL_CreateTexture(GetRenderer(), SDL_PIXELFORMAT_ARGB8888, SDL_TEXTUREACCESS_TARGET, w, h));
    WindowNativeSize = WindowCurrentSize = {0, 0, w, h};
    SDL_SetRenderTarget(GetRenderer(), mpBackBuffer.get());
  }
};

// Keeps its log lines, as "type text".
class LoggedApplication : public HarnessApplication {
 public:
  int _WriteLog(char color, TLogType type, unsigned long gameId, const std::string& text) override {
    lines.push_back(std::to_string(static_cast<int>(type)) + " " + text);
    return HarnessApplication::_WriteLog(color, type, gameId, text);
  }
  std::vector<std::string> lines;
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
    if (mOnDraw) mOnDraw();
    TGuiComponent::draw();
  }
  void mainLogic() override { events.push_back("main " + mName); }
  int mLoadResult = 0;
  std::function<void()> mOnLogic, mOnDraw;
};

// An application with a module that paints into a surface, of 32 by 16 pixels unless told otherwise.
class AppGuiModule : public testing::Test {
 protected:
  AppGuiModule() : AppGuiModule(32, 16) {}
  AppGuiModule(int width, int height) {
    events.clear();
    sleeps.clear();
    overshoot = 0;
    testClock = &clock;
    SystemSeams.MicroSleep = fakeMicroSleep;
    picture = SDL_CreateRGBSurfaceWithFormat(0, width, height, 32, SDL_PIXELFORMAT_ARGB8888);
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
    if (on) contentChanged(on);
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
  LoggedApplication app;
  SDL_Surface* picture = nullptr;
  TestModule* module = nullptr;
  SDL_Renderer* renderer = nullptr;
};
}  // namespace guitest
