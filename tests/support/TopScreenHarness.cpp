#include "tests/support/TopScreenHarness.h"

#include <SDL_ttf.h>
#include <gtest/gtest.h>
#include <algorithm>
#include <filesystem>
#include <sstream>

#include "common/ThreadSafeProperty.h"
#include "components/TSpriteAnimation.h"
#include "tests/support/Golden.h"
#include "tests/support/PanelSkin.h"
#include "vendelo-sdl2/Drawing.h"
#include "vendelo-sdl2/MyUtils.h"
#include "vendelo-sdl2/SystemSeams.h"
#include "vendelo-sdl2/WindowEventGate.h"
#include "vesperatopscreen/TInstructionsPanel.h"
#include "vesperatopscreen/TJackpotsPanel.h"
#include "vesperatopscreen/TPaytablesPanel.h"

using namespace vendelo_sdl2;

namespace {

// Once for each process: a test program uses one folder.
const std::string& skinOnce(const std::string& name) {
  static const std::string& folder = *new std::string(name.front() == '/' ? name : panelskin::write(name));
  return folder;
}

}  // namespace

PanelScreen::PanelScreen(SDL_Renderer* renderer) {
  SetRenderer(renderer);
  SetRendererStatic(renderer);
}

PanelScreen::PanelScreen(DrawnBy drawnBy) : mDrawnBy(drawnBy), mHasWindow(true) {}

int PanelScreen::Load(void*) {
  if (mHasWindow && openWindow() != 0) return -1;
  loadContents(1920, 1080);
  return 0;
}

int PanelScreen::openWindow() {
  if (mDrawnBy == DrawnBy::ALL)
    setenv("TOPSCREEN_REDRAW", "all", 1);
  else
    unsetenv("TOPSCREEN_REDRAW");
  pApp->VSync = false;
  const int result = CreateWindow("TopScreen", 0, 0, 1920, 1080, SDL_WINDOW_BORDERLESS, -1,
                                  SDL_RENDERER_ACCELERATED | SDL_RENDERER_TARGETTEXTURE, 0);
  EXPECT_EQ(0, result) << SDL_GetError();
  return result;
}

int PanelScreen::draw() {
  if (mDrawnBy != DrawnBy::HAND) return TopScreenScreen::draw();
  WindowEventGate::release();
  SDL_Renderer* const to = GetRenderer();
  const bool running = pApp->status() == TApplication::APP_RUNNING, rendering = IsRendering();
  SDL_SetRenderTarget(to, mpBackBuffer.get());
  if (rendering) SDL_RenderClear(to);
  serveAndDraw(running, rendering);
  if (!rendering) return 0;
  SDL_Rect window{0, 0, 0, 0};
  SDL_GetWindowSize(getWindow(), &window.w, &window.h);
  SDL_SetRenderTarget(to, nullptr);
  SDL_RenderSetViewport(to, nullptr);
  SDL_RenderClear(to);
  SDL_RenderCopyEx(to, mpBackBuffer.get(), nullptr, &window, IsScreenRotated() ? 180.0 : 0.0, nullptr,
                   SDL_FLIP_NONE);
  SDL_RenderPresent(to);
  SDL_SetRenderTarget(to, mpBackBuffer.get());
  return 0;
}

std::vector<std::string> PanelScreen::rootNames() {
  std::vector<std::string> names;
  for (TComponentList::Walk walk(GuiComponentList); TGuiComponent* root = walk.next();)
    names.push_back(root->getName());
  return names;
}

PanelApplication::PanelApplication() { setStatus(APP_STARTUP_GRAPHICS); }

int PanelApplication::_WriteLog(char, TLogType type, unsigned long gameId, const std::string& text) {
  EXPECT_EQ(0UL, gameId) << "the program's own lines belong to no game: " << text;
  const std::lock_guard lock(mLinesMutex);
  mLines.push_back(std::to_string(type) + "|" + text);
  return 0;
}

size_t PanelApplication::linesWith(const std::string& text) const {
  const std::lock_guard lock(mLinesMutex);
  return static_cast<size_t>(std::count_if(
    mLines.begin(), mLines.end(), [&](const std::string& line) { return line.find(text) != std::string::npos; }));
}

size_t PanelApplication::linesOf(const std::string& line) const {
  const std::lock_guard lock(mLinesMutex);
  return static_cast<size_t>(std::count(mLines.begin(), mLines.end(), line));
}

void PanelApplication::forgetLines() {
  const std::lock_guard lock(mLinesMutex);
  std::vector<std::string>().swap(mLines);  // with what it holds on the heap
}

void PanelApplication::adopt(PanelScreen* module) {
  DrawnHere::adopt(module);
  screen = module;
}

void PanelApplication::destroyGui() {
  screen = nullptr;
  DrawnHere::destroyGui();
}

void PanelApplication::deliver(const std::vector<std::pair<int, xmlrpc_c::value>>& events) {
  asMainThread([&] {
    updatedJp = false;
    updatedGame = false;
    for (const auto& [id, value] : events) handlePlatformEvent(Event(id, value));
    if (updatedJp) updateJackpotPanel();
    if (updatedGame) Update();
  });
}

TopScreenHarness::TopScreenHarness(const std::string& folder, int divisor)
  : TopScreenHarness(folder, divisor, false, DrawnBy::CHANGES) {}

TopScreenHarness::TopScreenHarness(const std::string& folder, DrawnBy drawnBy)
  : TopScreenHarness(folder, 1, true, drawnBy) {}

TopScreenHarness::TopScreenHarness(const std::string& folder, int divisor, bool hasWindow, DrawnBy drawnBy)
  : mClock(100000),
    mFolder(skinOnce(folder)),
    mDivisor(divisor),
    mpApplication(new PanelApplication),
    mpPicture(SDL_CreateRGBSurfaceWithFormat(0, 1920 / divisor, 1080 / divisor, 32, SDL_PIXELFORMAT_ARGB8888)),
    mHasWindow(hasWindow) {
  std::filesystem::current_path(mFolder);
  TTF_Init();
  std::srand(1);
  MyUtils::SetImageDir(mFolder + "VESPERA/TOP_SKIN/");
  MyUtils::decimal_separator = ',';
  MyUtils::thousand_separator = '.';
  MyUtils::thousand_grouping[0] = 3;
  MyUtils::thousand_grouping[1] = 0;
  mpApplication->SetParam("WorkingDir", mFolder, PARAM_CACHE, "", "", false);
  if (mHasWindow)
    adoptWindow(drawnBy);
  else
    adoptPicture();
  mpScreen->Load(nullptr);
  mStatus.LanguageMessages = {"", "MIN", "MAX", "HINT LINE", "PRIZES ARE SHOWN AT THE PRESENT BET"};
  mStatus.IsLoading = false;
}

void TopScreenHarness::adoptPicture() {
  mpScreen = new PanelScreen(SDL_CreateSoftwareRenderer(mpPicture));
  SDL_RenderSetScale(renderer(), 1.0f / static_cast<float>(mDivisor), 1.0f / static_cast<float>(mDivisor));
  SDL_SetRenderDrawBlendMode(renderer(), SDL_BLENDMODE_BLEND);
  SDL_SetRenderDrawColor(renderer(), 0, 0, 0, 0);
  mpApplication->adopt(mpScreen);
  if (mDivisor == 1) {
    mBackBuffer.reset(drawing::Create(renderer(), SDL_PIXELFORMAT_RGB888, SDL_TEXTUREACCESS_TARGET, 1920, 1080));
    SDL_SetTextureBlendMode(mBackBuffer.get(), SDL_BLENDMODE_NONE);
  }
}

void TopScreenHarness::adoptWindow(DrawnBy drawnBy) {
  setenv("SDL_VIDEODRIVER", "dummy", 1);
  setenv("SDL_RENDER_DRIVER", "software", 1);
  setenv("SDL_FRAMEBUFFER_ACCELERATION", "0", 1);
  EXPECT_EQ(0, SDL_InitSubSystem(SDL_INIT_VIDEO)) << SDL_GetError();
  SystemSeams.MicroSleep = [](useconds_t) { return 0; };
  mpScreen = new PanelScreen(drawnBy);
  mpApplication->adopt(mpScreen);
}

TopScreenHarness::~TopScreenHarness() {
  mFrame.end();
  mBackBuffer.reset();
  mpApplication->destroyGui();
  SDL_FreeSurface(mpPicture);
  delete mpApplication;
  if (mHasWindow) SDL_QuitSubSystem(SDL_INIT_VIDEO);
  TTF_Quit();
}

void TopScreenHarness::status(const std::function<void(PlatformState&)>& change) {
  change(mStatus);
  mpApplication->asMainThread([this] {
    PlatformState reply = mStatus;
    mpApplication->StatusReceived(&reply, false);
  });
  frame();
}

void TopScreenHarness::send(int id, const xmlrpc_c::value& value) {
  mpApplication->deliver({{id, value}});
  frame();
}

void TopScreenHarness::send(int id) { send(id, xmlrpc_c::value_nil()); }

void TopScreenHarness::frame() {
  mpApplication->asMainThread([this] {
    while (mHasWindow && mpApplication->ProcessNextEvent() > 0) continue;
    mpApplication->ProcessActions();
    mpApplication->ExecuteDeferredMethods();
    mpScreen->mainLogic();
    mpApplication->ExecuteActionsAndTasks(false);
  });
  SDL_Renderer* to = renderer();
  if (mHasWindow) {
    mpScreen->draw();
    return;
  }
  const bool running = mpApplication->status() == TApplication::APP_RUNNING;
  if (mBackBuffer) {
    mFrame.begin(to, mBackBuffer.get());
    mpScreen->serveAndDraw(running, true);
    mFrame.finish(false);
    SDL_SetRenderTarget(to, nullptr);
    SDL_RenderCopy(to, mBackBuffer.get(), nullptr, nullptr);
  } else {
    SDL_SetRenderTarget(to, nullptr);
    SDL_RenderClear(to);
    mpScreen->serveAndDraw(running, true);
  }
  SDL_RenderFlush(to);  // as presenting it would
}

void TopScreenHarness::frames(Uint32 milliseconds) {
  for (Uint32 passed = 0; passed < milliseconds;) {
    const Uint32 step = std::min<Uint32>(20, milliseconds - passed);
    mClock.advance(step);
    passed += step;
    frame();
  }
}

void TopScreenHarness::skip(Uint32 milliseconds) {
  mClock.advance(milliseconds);
  frame();
}

bool TopScreenHarness::until(const std::function<bool()>& condition) {
  for (int i = 0; i < 3000; ++i) {
    if (condition()) return true;
    SDL_Delay(1);
    frame();
  }
  return condition();
}

void TopScreenHarness::joinSprites() {
  const auto join = [](TSpriteAnimation* sprites) {
    if (sprites) sprites->SetFrame(0, true);  // waits for the loader; only the mode NONE follows this frame
  };
  for (int id = 0; id < TJackpotsPanel::kMaxLevels; ++id) {
    join(part<TSpriteAnimation>(id, "pIdleAnimation"));
    join(part<TSpriteAnimation>(id, "pPanelAnimation"));
    join(find<TSpriteAnimation>("pJackpotsPanel/pParticleAnimation[" + std::to_string(id) + "]"));
  }
  for (const char* game : {"Reels", "Wheels", "VesperCrown", "SevenOrchards"})
    join(find<TSpriteAnimation>("pJackpotsPanel/pAnimationOverlay[" + std::string(game) + "]"));
}

TGuiComponent* TopScreenHarness::findAny(const std::string& path) const {
  std::istringstream names(path);
  std::string name;
  TGuiComponent* component = nullptr;
  while (std::getline(names, name, '/')) {
    component = component ? component->FindComponentByName(name) : mpScreen->FindComponentByName(name);
    if (!component) return nullptr;
  }
  return component;
}

bool TopScreenHarness::visible(const std::string& path) const {
  const TGuiComponent* component = findAny(path);
  return component && component->isVisible();
}

Uint32 TopScreenHarness::pixel(int x, int y) const {
  SDL_RenderFlush(renderer());
  const auto* row =
    static_cast<const Uint8*>(mpPicture->pixels) + static_cast<ptrdiff_t>(y / mDivisor) * mpPicture->pitch;
  return reinterpret_cast<const Uint32*>(row)[x / mDivisor] & 0xffffff;
}

std::string TopScreenHarness::picture(const std::string& name, SDL_Rect region, int square) const {
  SDL_RenderFlush(renderer());
  SDL_Surface* small =
    SDL_CreateRGBSurfaceWithFormat(0, region.w / square, region.h / square, 32, SDL_PIXELFORMAT_ARGB8888);
  for (int y = 0; y < small->h; ++y)
    for (int x = 0; x < small->w; ++x) {
      Uint32 red = 0, green = 0, blue = 0;
      for (int dy = 0; dy < square; ++dy) {
        const auto* row =
          reinterpret_cast<const Uint32*>(static_cast<const Uint8*>(mpPicture->pixels) +
                                          static_cast<ptrdiff_t>(region.y + y * square + dy) * mpPicture->pitch);
        for (int dx = 0; dx < square; ++dx) {
          const Uint32 colour = row[region.x + x * square + dx];
          red += colour >> 16 & 255;
          green += colour >> 8 & 255;
          blue += colour & 255;
        }
      }
      const auto count = static_cast<Uint32>(square * square);
      auto* to =
        reinterpret_cast<Uint32*>(static_cast<Uint8*>(small->pixels) + static_cast<ptrdiff_t>(y) * small->pitch);
      to[x] = 0xff000000u | (red / count) << 16 | (green / count) << 8 | blue / count;
    }
  const std::string result = golden::compare(small, name);
  SDL_FreeSurface(small);
  return result;
}

namespace paneldata {

using xmlrpc_c::value_int;
using xmlrpc_c::value_string;

JackpotsData level(int id, int64_t pot) {
  JackpotsData level{};
  level.id = id;
  level.potValue = pot;
  level.decimalPlaces = 2;
  level.showCurrencySign = true;
  level.currency = "EUR";
  level.LastWinData = "LAST WIN 100";
  level.TimeFrom = "18:00";
  level.TimeTo = "22:00";
  return level;
}

std::vector<JackpotsData> levels(int count) {
  std::vector<JackpotsData> data;
  for (int id = 0; id < count; ++id) data.push_back(level(id, 1234567 + id));
  return data;
}

xmlrpc_c::value levelsValue(const std::vector<JackpotsData>& data) {
  xmlrpc_c::carray items;
  for (const JackpotsData& level : data) items.push_back(level.toXml());
  return xmlrpc_c::value_array(items);
}

xmlrpc_c::value texts(const std::vector<std::string>& list) {
  xmlrpc_c::carray items;
  for (const std::string& text : list) items.push_back(value_string(text));
  return xmlrpc_c::value_array(items);
}

GameRegistryEntry game(const std::string& name) { return GameRegistryEntry(7, name, GAMETYPE_VESPERA_SLOTGAME); }

xmlrpc_c::value gameValue(const std::string& name, GameTypes type) {
  return xmlrpc_c::value_struct({{"ID", value_int(7)}, {"Name", value_string(name)}, {"Type", value_int(type)}});
}

xmlrpc_c::value bets(int64_t current, int64_t least, int64_t most) {
  return xmlrpc_c::value_struct({{"current", xmlrpc_c::value_i8(current)},
                                 {"min", xmlrpc_c::value_i8(least)},
                                 {"max", xmlrpc_c::value_i8(most)}});
}

xmlrpc_c::value_struct Text::value() const {
  xmlrpc_c::cstruct record{{"symbol", value_string(symbol)},
                           {"mode", value_string(mode)},
                           {"win", value_int(win)},
                           {"font", value_string(font)},
                           {"fontSize", value_int(fontSize)},
                           {"occurs", value_int(occurs)},
                           {"alignedLeft", value_int(alignedLeft)},
                           {"color", value_int(color)},
                           {"x", value_int(x)},
                           {"y", value_int(y)},
                           {"w", value_int(w)},
                           {"h", value_int(h)}};
  if (altColor >= 0) record.insert({"altColor", value_int(altColor)});
  return xmlrpc_c::value_struct(record);
}

xmlrpc_c::value page(const std::string& name, const std::vector<Text>& texts) {
  xmlrpc_c::carray items;
  for (const Text& text : texts) items.push_back(text.value());
  return xmlrpc_c::value_struct({{"name", value_string(name)}, {"texts", xmlrpc_c::value_array(items)}});
}

xmlrpc_c::cstruct setup(const std::vector<xmlrpc_c::value>& pages, int paylines, int betCost) {
  xmlrpc_c::cstruct extra{{"paytableSetup", xmlrpc_c::value_array(xmlrpc_c::carray(pages.begin(), pages.end()))}};
  if (paylines >= 0) extra.insert({"paylines", value_int(paylines)});
  if (betCost >= 0) extra.insert({"betCost", value_int(betCost)});
  return extra;
}

}  // namespace paneldata
