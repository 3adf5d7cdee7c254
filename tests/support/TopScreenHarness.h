#pragma once

#include <SDL.h>
#include <atomic>
#include <functional>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "common/Event.h"
#include "common/TKSLReturnStructures.h"
#include "tests/support/DrawnHere.h"
#include "tests/support/FakeClock.h"
#include "vendelo-sdl2/TFramePicture.h"
#include "vendelo-sdl2/TGuiComponent.h"
#include "vendelo-sdl2/TTexturePtr.h"
#include "vesperatopscreen/TopScreenApp.h"
#include "vesperatopscreen/TopScreenScreen.h"

// Who draws the frames of a window: a hand that knows nothing of what stood there before and has SDL carry out
// every call as it comes, or the module, as TOPSCREEN_REDRAW says.
enum class DrawnBy { HAND, ALL, CHANGES };

// The program's own screen with everything but its window: the renderer paints into a surface.
class PanelScreen : public TopScreenScreen {
 public:
  // The renderer is destroyed with the module.
  explicit PanelScreen(SDL_Renderer* renderer);
  // On a window of SDL's video driver without a screen, opened by Load, that SDL's software renderer draws.
  explicit PanelScreen(DrawnBy drawnBy);

  int Load(void*) override;
  int draw() override;
  // Names of the root components, rear-most first.
  std::vector<std::string> rootNames();

  using TAppGuiModule::mFPS;
  using TAppGuiModule::mFPS_noVsync;
  using TAppGuiModule::serveAndDraw;
  using TopScreenScreen::mpInfo;
  using TopScreenScreen::pDemoBackground;
  using TopScreenScreen::pInstructionsPanel;
  using TopScreenScreen::pJackpotsPanel;
  using TopScreenScreen::plFPS;
  using TopScreenScreen::plRealFPS;
  using TopScreenScreen::pPaytablesPanel;

 private:
  int openWindow();

  const DrawnBy mDrawnBy = DrawnBy::CHANGES;
  const bool mHasWindow = false;
};

// The program's own application without a service, its log kept in memory. Starts in APP_STARTUP_GRAPHICS, so that
// the first good data end the loader.
class PanelApplication : public DrawnHere<TopScreenApp> {
 public:
  PanelApplication();

  int _WriteLog(char color, vendelo_sdl2::TLogType type, unsigned long gameId, const std::string& text) override;
  // Written lines, as "type|text", that hold the text.
  size_t linesWith(const std::string& text) const;
  // Those that are it and no more.
  size_t linesOf(const std::string& line) const;
  void forgetLines();

  void adopt(PanelScreen* module);
  void destroyGui();
  // Events as one poll of the client delivers them, and what follows from them.
  void deliver(const std::vector<std::pair<int, xmlrpc_c::value>>& events);

  using TopScreenApp::gotFirstInit;
  using TopScreenApp::mCurrentFreq;
  using TopScreenApp::screen;
  using TopScreenApp::updatedJp;

 private:
  mutable std::mutex mLinesMutex;
  std::vector<std::string> mLines;  // mLinesMutex
};

// Application, screen, software renderer and fake clock for tests of the panels: no X server, no service, one
// thread (but for those that decode pictures). One at a time. The working directory becomes the folder of
// panelskin, which is written by the first harness of the process, or the one that is given as "/.../".
//   TopScreenHarness screen("paytables");
//   screen.state([](PlatformState& state) { state.ActiveGame = ...; });
//   screen.frames(600);
//   EXPECT_EQ("", screen.picture("vesperatopscreen/Paytables_First", screen.whole(), 4));
class TopScreenHarness {
 public:
  // With a divisor the screen is drawn smaller, which makes frames cheaper; places stay those of the full screen.
  explicit TopScreenHarness(const std::string& folder, int divisor = 1);
  // With a window, as large as the screen. Its frames are those of draw(), its events are served by each pass.
  TopScreenHarness(const std::string& folder, DrawnBy drawnBy);
  ~TopScreenHarness();
  TopScreenHarness(const TopScreenHarness&) = delete;
  TopScreenHarness& operator=(const TopScreenHarness&) = delete;

  PanelApplication& app() { return *mpApplication; }
  PanelScreen& screen() { return *mpScreen; }
  FakeClock& clock() { return mClock; }
  SDL_Renderer* renderer() const { return mpScreen->GetRenderer(); }
  // The working directory, with a slash at its end.
  const std::string& folder() const { return mFolder; }

  // A status reply of the service: the last one, changed by the test.
  void status(const std::function<void(PlatformState&)>& change);
  // One event of the service, and a frame.
  void send(int id, const xmlrpc_c::value& value);
  void send(int id);

  // One pass of the main loop, then one frame, both as in the running program: without a divisor what has changed
  // is drawn into a back buffer, which is copied to the picture.
  void frame();
  // Time passes in steps of 20 ms with a frame each; the last step is the rest.
  void frames(Uint32 milliseconds);
  // That much time passes, and one frame is drawn.
  void skip(Uint32 milliseconds);
  // Frames without passing time until the condition holds; false when it does not within some three seconds.
  bool until(const std::function<bool()>& condition);
  // Waits for the sprite loaders of all animations that the jackpot panel has at present.
  void joinSprites();

  // A component by the names on its way from the root, with slashes between them; null when it is not there or of
  // another type.
  template <class T = vendelo_sdl2::TGuiComponent>
  T* find(const std::string& path) const {
    return dynamic_cast<T*>(findAny(path));
  }
  // Part of a jackpot level: "<name>[<id>]" in "pJackpotPanel[<id>]".
  template <class T = vendelo_sdl2::TGuiComponent>
  T* part(int id, const char* name) const {
    const std::string index = "[" + std::to_string(id) + "]";
    return find<T>("pJackpotsPanel/pJackpotPanel" + index + "/" + name + index);
  }
  // Whether it is there and is drawn itself (its parents may be hidden).
  bool visible(const std::string& path) const;

  // The colour of a pixel of the screen as 0xRRGGBB.
  Uint32 pixel(int x, int y) const;
  static SDL_Rect whole() { return {0, 0, 1920, 1080}; }
  // Compares a region of the last frame, averaged over squares of that many pixels, with a golden picture; empty
  // when they are equal. For a harness without a divisor.
  std::string picture(const std::string& name, SDL_Rect region, int square) const;

 private:
  TopScreenHarness(const std::string& folder, int divisor, bool hasWindow, DrawnBy drawnBy);
  void adoptPicture();
  void adoptWindow(DrawnBy drawnBy);
  vendelo_sdl2::TGuiComponent* findAny(const std::string& path) const;

  FakeClock mClock;
  const std::string mFolder;
  const int mDivisor;
  PanelApplication* mpApplication;
  SDL_Surface* mpPicture;
  PanelScreen* mpScreen;
  const bool mHasWindow;
  vendelo_sdl2::TTexturePtr mBackBuffer;  // without a divisor, and without a window
  vendelo_sdl2::TFramePicture mFrame;
  PlatformState mStatus;
};

namespace paneldata {

// A level with two decimals, the currency at its right and an info text.
JackpotsData level(int id, int64_t pot);
// Levels 0 to count - 1.
std::vector<JackpotsData> levels(int count);
xmlrpc_c::value levelsValue(const std::vector<JackpotsData>& data);
xmlrpc_c::value texts(const std::vector<std::string>& list);
GameRegistryEntry game(const std::string& name);
xmlrpc_c::value gameValue(const std::string& name, GameTypes type);
xmlrpc_c::value bets(int64_t current, int64_t least, int64_t most);

// A text of a paytable page with all its keys.
struct Text {
  std::string symbol = "A";
  std::string mode = "line";
  int win = 50;
  std::string font = "digits";
  int fontSize = 24;
  int occurs = 3;
  int alignedLeft = 0;
  int color = 0xFFC000;
  int altColor = -1;  // left out when negative
  int x = 100, y = 100, w = 160, h = 30;

  xmlrpc_c::value_struct value() const;
};
xmlrpc_c::value page(const std::string& name, const std::vector<Text>& texts);
// "ExtraData"; a negative number leaves its key out.
xmlrpc_c::cstruct setup(const std::vector<xmlrpc_c::value>& pages, int paylines, int betCost);

}  // namespace paneldata
