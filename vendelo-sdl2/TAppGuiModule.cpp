#include "vendelo-sdl2/TAppGuiModule.h"

#include <SDL_image.h>
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <limits>

#include "common/TBitmapFont.h"
#include "vendelo-sdl2/Drawing.h"
#include "vendelo-sdl2/MyUtils.h"
#include "vendelo-sdl2/TApplication.h"
#include "vendelo-sdl2/TFramePicture.h"
#include "vendelo-sdl2/TGuiComponent.h"
#include "vendelo-sdl2/WindowEventGate.h"

namespace vendelo_sdl2 {
namespace {
constexpr int kDefaultFps = 60;
}

SDL_PixelFormat TAppGuiModule::mGlobalPixelFormat{};
SDL_Renderer* TAppGuiModule::mpGUIRendererStatic = nullptr;
SDL_Window* TAppGuiModule::mpWindowStatic = nullptr;
std::vector<SDL_Rect>& TAppGuiModule::Displays = *new std::vector<SDL_Rect>;
SDL_Rect TAppGuiModule::GlobalRect{};
SDL_Rect TAppGuiModule::GlobalRect2{};

TAppGuiModule::TAppGuiModule() : mLastDrawTime(SDL_GetTicks()), mpPicture(std::make_unique<TFramePicture>()) {
  if (Displays.empty()) {
    for (int i = 0; i < SDL_GetNumVideoDisplays(); ++i) {
      SDL_Rect bounds{0, 0, 0, 0};
      SDL_GetDisplayBounds(i, &bounds);
      Displays.push_back(bounds);
    }
  }
  IMG_Init(IMG_INIT_JPG | IMG_INIT_PNG);
  SDL_ShowCursor(0);
}

TAppGuiModule::~TAppGuiModule() { delete pLoader; }

int TAppGuiModule::CreateWindow(std::string WindowTitle, int x, int y, int w, int h, Uint32 CreateWindowFlags,
                                int DriverIndex4Renderer, Uint32 CreateRendererFlags, int) {
  WindowEventGate::install();
  SDL_SetHint(SDL_HINT_RENDER_SCALE_QUALITY, "best");
  mpWindow = SDL_CreateWindow(WindowTitle.c_str(), x, y, w, h, CreateWindowFlags);
  if (!mpWindow) return -2;

  mTargetFPS = static_cast<int>(pApplication->TargetFPS.getCopy());
  if (mTargetFPS < 1) {
    pApplication->WriteLog(4, 0, "Frame rate %d is not usable, drawing at %d.", mTargetFPS, kDefaultFps);
    mTargetFPS = kDefaultFps;
  }
  mVsync = pApplication->VSync.getCopy();
  readRedraw();

  SDL_SetHint(SDL_HINT_RENDER_DRIVER, "opengl");
  SDL_SetHint(SDL_HINT_VIDEO_MINIMIZE_ON_FOCUS_LOSS, "false");
  if (mVsync) CreateRendererFlags |= SDL_RENDERER_PRESENTVSYNC;
  mpGUIRenderer = SDL_CreateRenderer(mpWindow, DriverIndex4Renderer, CreateRendererFlags);
  if (!mpGUIRenderer) return -3;
  SDL_SetRenderDrawBlendMode(mpGUIRenderer, SDL_BLENDMODE_BLEND);
  SDL_SetRenderDrawColor(mpGUIRenderer, 0, 0, 0, 0);

  const auto placed = [](int position) {
    const bool free =
      position == static_cast<int>(SDL_WINDOWPOS_CENTERED) || position == static_cast<int>(SDL_WINDOWPOS_UNDEFINED);
    return free ? 0 : position;
  };
  WindowNativeSize = {placed(x), placed(y), w, h};
  WindowCurrentSize = WindowNativeSize;
  mpBackBuffer.reset(drawing::Create(mpGUIRenderer, SDL_GetWindowPixelFormat(mpWindow), SDL_TEXTUREACCESS_TARGET,
                                     WindowNativeSize.w, WindowNativeSize.h));
  if (!mpBackBuffer) return -4;
  SDL_SetRenderTarget(mpGUIRenderer, mpBackBuffer.get());

  if (SDL_Surface* surface = SDL_GetWindowSurface(mpWindow))
    if (surface->format) SetGlobalPixelFormat(surface->format);
  SetRendererStatic(mpGUIRenderer);
  SetWindowStatic(mpWindow);
  return 0;
}

void TAppGuiModule::DestroyWindow() {
  // Destroying the renderer frees its textures: the fonts let go of theirs before.
  TBitmapFont::CleanupBitmapFonts();
  mpPicture->end();
  mpBackBuffer.reset();
  if (mpGUIRenderer) {
    if (mpGUIRendererStatic == mpGUIRenderer) mpGUIRendererStatic = nullptr;
    SDL_DestroyRenderer(mpGUIRenderer);
  }
  mpGUIRenderer = nullptr;
  if (mpWindow) {
    if (mpWindowStatic == mpWindow) mpWindowStatic = nullptr;
    SDL_DestroyWindow(mpWindow);
  }
  mpWindow = nullptr;
}

void TAppGuiModule::WindowToFullscreen() {
  SDL_SetWindowFullscreen(mpWindow, SDL_WINDOW_FULLSCREEN_DESKTOP);
  RefreshSize();
}

int TAppGuiModule::Load(void*) {
  if (selected_screen < 0) {
    const int64_t wanted =
      pApplication
        ->GetOrSetParam("SCREEN_INDEX", std::string("1"), "Screen index",
                        "Index of screen on which the app will be shown.", PARAM_READ_MINE_WRITE_MINE, false)
        ->AsInteger(1);
    selected_screen = static_cast<int>(std::clamp<int64_t>(wanted, -1, std::numeric_limits<int>::max()));
  }
  selected_screen = std::min(selected_screen, static_cast<int>(Displays.size()));
  int screen_index = -1;
  const SDL_Rect rect = GetScreenBounds(&screen_index);
  if (rect.w != 0 && rect.h != 0) {
    SDL_SetWindowPosition(mpWindow, rect.x, rect.y);
    SDL_SetWindowSize(mpWindow, rect.w, rect.h);
    RefreshSize();
  }
  return screen_index >= 0 ? 0 : -1;
}

int TAppGuiModule::Destroy() {
  delete pLoader;
  pLoader = nullptr;
  MyUtils::DestroyImages();
  while (!GuiComponentList.empty()) GuiComponentList.remove(GuiComponentList.front(), true, ModuleName);
  DestroyWindow();
  return TAppModule::Destroy();
}

SDL_Rect TAppGuiModule::GetScreenBounds(int* screen_index) const {
  if (Displays.empty()) return {0, 0, 0, 0};
  const int last = static_cast<int>(Displays.size()) - 1;
  const int index = std::clamp(selected_screen, 1, last + 1) - 1;
  if (screen_index) *screen_index = index;
  return Displays[static_cast<size_t>(index)];
}

SDL_Rect TAppGuiModule::GetCombinedScreenBounds() const {
  SDL_Rect all{0, 0, 0, 0};
  for (const SDL_Rect& display : Displays) {
    all.w += display.w;
    all.h += display.h;
  }
  return all;
}

void TAppGuiModule::mainLogic() {
  for (TComponentList::Walk walk(GuiComponentList); TGuiComponent* root = walk.next();) root->mainLogic();
}

void TAppGuiModule::OnShow() {}
void TAppGuiModule::OnHide() {}
void TAppGuiModule::BeforeDrawComponents() {}
void TAppGuiModule::AfterDrawComponents() {}
void TAppGuiModule::RefreshSize() { mbRefreshSize = true; }
void TAppGuiModule::updateLastDrawTime() { mLastDrawTime = SDL_GetTicks(); }

void TAppGuiModule::Show() {
  if (Visible == 0) OnShow();
  Visible = 1;
}

void TAppGuiModule::Hide() {
  if (Visible != 0) OnHide();
  Visible = 0;
}

TGuiComponent* TAppGuiModule::AddComponent(TGuiComponent* pNewComponent) {
  return GuiComponentList.add(pNewComponent, nullptr, ModuleName);
}

bool TAppGuiModule::RemoveComponent(TGuiComponent* pComponent, bool deleteInstance) {
  return GuiComponentList.remove(pComponent, deleteInstance, ModuleName);
}

bool TAppGuiModule::RemoveComponent(std::string sComponent, bool deleteInstance) {
  return GuiComponentList.remove(GuiComponentList.findByName(sComponent), deleteInstance, ModuleName);
}

TGuiComponent* TAppGuiModule::FindComponentByName(std::string name) const {
  return GuiComponentList.findByName(name);
}

bool TAppGuiModule::FindComponent(TGuiComponent* pComponent) const { return GuiComponentList.contains(pComponent); }

bool TAppGuiModule::BringComponentToFront(TGuiComponent* pComponent) {
  return GuiComponentList.bringToFront(pComponent);
}

bool TAppGuiModule::SendComponentToBack(TGuiComponent* pComponent) {
  return GuiComponentList.sendToBack(pComponent);
}

SDL_Rect* TAppGuiModule::CreateRect(int x, int y, int w, int h) {
  GlobalRect = {x, y, w, h};
  return &GlobalRect;
}

SDL_Rect* TAppGuiModule::CreateRect2(int x, int y, int w, int h) {
  GlobalRect2 = {x, y, w, h};
  return &GlobalRect2;
}

}  // namespace vendelo_sdl2
