// Where the screen puts its window, and what it asks of SDL for it. The window is a fake one.
#include <gtest/gtest.h>

#include "kslplatform/TPlatformLoader.h"
#include "tests/support/ComponentPeek.h"
#include "tests/support/TopScreenHarness.h"
#include "tests/vendelo-sdl2/SdlCalls.h"

using namespace vendelo_sdl2;
using Names = std::vector<std::string>;

namespace {

class WindowScreen : public PanelScreen {
 public:
  WindowScreen() : PanelScreen(nullptr) {}
  int Load(void* data) override { return TopScreenScreen::Load(data); }
  void RefreshSize() override { sdlcalls::note("RefreshSize"); }
  using TAppGuiModule::Displays;
};

constexpr SDL_Rect kFirst{0, 0, 1920, 1080}, kSecond{1920, 10, 1280, 1024};
const std::string kNoSecond = "ERROR: Cannot find the second screen..moving top screen to display ";

class ScreenWindow : public testing::Test {
 protected:
  ScreenWindow() {
    sdlcalls::windowPixels = SDL_CreateRGBSurfaceWithFormat(0, 192, 108, 32, SDL_PIXELFORMAT_ARGB8888);
    app.VSync = false;
  }
  ~ScreenWindow() override {
    sdlcalls::log = nullptr;
    app.destroyGui();
    SDL_FreeSurface(sdlcalls::windowPixels);
  }
  // The result of a load on these displays.
  int load(std::vector<SDL_Rect> displays) {
    screen = new WindowScreen;
    WindowScreen::Displays = std::move(displays);
    app.adopt(screen);
    testing::internal::CaptureStdout();
    calls.clear();
    sdlcalls::log = &calls;
    const int result = screen->Load(nullptr);
    sdlcalls::log = nullptr;
    output = testing::internal::GetCapturedStdout();
    return result;
  }
  // What was asked for that begins so, in order.
  Names asked(std::initializer_list<const char*> beginnings) const {
    Names found;
    for (const std::string& call : calls)
      for (const char* beginning : beginnings)
        if (call.rfind(beginning, 0) == 0) found.push_back(call);
    return found;
  }
  Names placing() const { return asked({"place ", "size ", "RefreshSize"}); }

  FakeClock clock{1000};
  PanelApplication app;
  WindowScreen* screen = nullptr;
  Names calls;
  std::string output;
};

}  // namespace

TEST_F(ScreenWindow, IsBorderlessAndFillsTheSecondDisplay) {
  EXPECT_EQ(0, load({kFirst, kSecond}));
  EXPECT_EQ((Names{"window TopScreen 0,0,1920,1080 " + std::to_string(SDL_WINDOW_OPENGL | SDL_WINDOW_BORDERLESS)}),
            asked({"window TopScreen"}));
  EXPECT_EQ((Names{"renderer -1 " + std::to_string(SDL_RENDERER_ACCELERATED | SDL_RENDERER_TARGETTEXTURE)}),
            asked({"renderer "}));
  EXPECT_EQ((Names{"place 1920 10", "size 1280 1024", "RefreshSize"}), placing());
  EXPECT_EQ(0u, app.linesWith("second screen"));
  EXPECT_EQ(std::string::npos, output.find("Unable to set"));
}

TEST_F(ScreenWindow, ItsSizeIsOnTheParametersAndThatOfItsParts) {
  EXPECT_EQ(0, load({kFirst, kSecond}));
  EXPECT_EQ("1920", app.GetParam("ScreenW", PARAM_CACHE)->AsString());
  EXPECT_EQ("1080", app.GetParam("ScreenH", PARAM_CACHE)->AsString());
  for (const char* name : {"ScreenW", "ScreenH"}) {
    EXPECT_EQ("", app.GetParam(name, PARAM_CACHE)->Caption());
    EXPECT_EQ("", app.GetParam(name, PARAM_CACHE)->Description());
  }
  for (const char* name :
       {"pBackground", "pDemoBackground", "pJackpotsPanel", "pInstructionsPanel", "pPaytablesPanel"})
    EXPECT_EQ("0, 0, 1920, 1080", placeText(screen->FindComponentByName(name)->getDestRect())) << name;
  ASSERT_NE(nullptr, dynamic_cast<TPlatformLoader*>(screen->Loader()));
  EXPECT_EQ("0, 0, 1920, 1080", placeText(screen->Loader()->getDestRect()));
}

TEST_F(ScreenWindow, OneDisplayTakesItWithAnErrorInTheLog) {
  EXPECT_EQ(0, load({kFirst}));
  EXPECT_EQ((Names{"place 0 0", "size 1920 1080", "RefreshSize"}), placing());
  EXPECT_EQ(1u, app.linesOf("5|" + kNoSecond + "0!!!"));
}

TEST_F(ScreenWindow, OfThreeDisplaysItIsStillTheSecond) {
  EXPECT_EQ(0, load({kFirst, kSecond, {3200, 0, 640, 480}}));
  EXPECT_EQ((Names{"place 1920 10", "size 1280 1024", "RefreshSize"}), placing());
  EXPECT_EQ(0u, app.linesWith("second screen"));
}

TEST_F(ScreenWindow, WithoutADisplayOrItsSizeItStaysWhereItIs) {
  EXPECT_EQ(0, load({}));
  EXPECT_EQ(Names{}, placing());
  EXPECT_EQ(1u, app.linesOf("5|" + kNoSecond + "-1!!!"));
  for (const SDL_Rect& second : {SDL_Rect{1920, 0, 0, 1080}, SDL_Rect{1920, 0, 1920, 0}}) {
    app.destroyGui();
    EXPECT_EQ(0, load({kFirst, second}));
    EXPECT_EQ(Names{}, placing());
    EXPECT_NE(nullptr, screen->FindComponentByName("pJackpotsPanel")) << "the contents stand all the same";
  }
}

TEST_F(ScreenWindow, AnUnloadClosesItAndTheEndNeedsNoApplication) {
  EXPECT_EQ(0, load({kFirst, kSecond}));
  calls.clear();
  sdlcalls::log = &calls;
  EXPECT_EQ(0, screen->Unload());
  EXPECT_EQ(0, screen->Unload());
  EXPECT_EQ((Names{"destroy window"}), asked({"destroy window"}));
  void* const former = screen;
  app.destroyGui();
  EXPECT_EQ(nullptr, app.GetTimedTask(former));
  EXPECT_EQ(0, app.UnregisterAllActionHandlersByRelatedObject(former, false));
  TApplication* const application = std::exchange(pApp, nullptr);
  delete new TopScreenScreen;
  pApp = application;
}

TEST_F(ScreenWindow, OneThatCannotBeMadeIsToldAndHasNoContents) {
  sdlcalls::windowFails = true;
  SDL_SetError("no such luck");
  EXPECT_EQ(-1, load({kFirst, kSecond}));
  sdlcalls::windowFails = false;
  EXPECT_EQ("Unable to set 1920x1080 video: no such luck\n", output);
  EXPECT_EQ(Names{}, placing());
  EXPECT_EQ(Names{}, screen->rootNames());
  EXPECT_EQ(nullptr, screen->Loader());
}
