// One frame of the GUI module: drawing under the draw mutex, pacing, presentation and the frame rate.
#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "vendelo-sdl2/Drawing.h"
#include "vendelo-sdl2/SystemSeams.h"
#include "vendelo-sdl2/TAppGuiModule.h"
#include "vendelo-sdl2/TApplication.h"
#include "vendelo-sdl2/TFramePicture.h"
#include "vendelo-sdl2/TGuiComponent.h"
#include "vendelo-sdl2/WindowEventGate.h"

namespace vendelo_sdl2 {
namespace {

// From this rate on vertical sync alone holds the pace.
constexpr int kVsyncFps = 60;
// So often all is drawn anew, whatever another program or a driver may have done to the window.
constexpr Uint32 kRenewMs = 8000;

}  // namespace

int TAppGuiModule::draw() {
  bool rendering = false;
  Way way = Way::NOTHING;
  {
    const TDrawMutexGuard guard(*pApplication);
    if (!mpGUIRenderer) return 2;
    const auto state = pApplication->status();
    if (state == TApplication::APP_TERMINATE) return 1;
    WindowEventGate::release();
    const Uint32 start = SDL_GetTicks();
    // Read once: a change in the middle of a frame would leave the wrong render target behind.
    rendering = mDrawEnabled;
    const bool running = state == TApplication::APP_RUNNING;
    if (rendering && mbTexturesLost.exchange(false)) rebuildTextures();
    if (rendering) beginPicture();
    serveAndDraw(running, rendering);
    if (rendering) way = finishPicture(start);
    const Uint32 thisDrawMs = SDL_GetTicks() - start;
    pApplication->DrawDurationMs = static_cast<int>(thisDrawMs);
  }
  const Uint32 beforePresent = pace(way == Way::WHOLE);
  present(way);
  countFrame(beforePresent);
  mFrameWatch.frameDone({mpGUIRenderer, mbOnWindow ? nullptr : mpBackBuffer.get(), way != Way::NOTHING,
                         mLastDrawTime, static_cast<Uint32>(1000 / mTargetFPS)});
  return 0;
}

// The picture is either recorded, to draw what has changed in it, or drawn as it comes. A window that keeps what is
// drawn into it, and shows it as it is, needs no back buffer.
void TAppGuiModule::beginPicture() {
  mbOnWindow = windowKeepsPicture() && mRedraw != Redraw::SHOW;
  if (mbOnWindow || mpBackBuffer)
    mpPicture->begin(mpGUIRenderer, mbOnWindow ? nullptr : mpBackBuffer.get(), mRedraw == Redraw::ALL);
  else
    SDL_RenderClear(mpGUIRenderer);
}

TAppGuiModule::Way TAppGuiModule::finishPicture(Uint32 now) {
  if (!mpPicture->renderer()) {
    copyWhole();
    return Way::WHOLE;
  }
  const bool due = now - mDrawnWholeAt >= kRenewMs;
  const TDirtyRects& changed = mpPicture->finish(mbRedrawAll.exchange(false) || due);
  if (changed.isWhole()) mDrawnWholeAt = now;
  if (changed.rects().empty() && mRedraw != Redraw::SHOW) return Way::NOTHING;
  if (mbOnWindow) return changed.isWhole() ? Way::WHOLE : Way::PARTS;
  copyWhole();
  if (mRedraw == Redraw::SHOW) outline(changed);
  return Way::WHOLE;
}

void TAppGuiModule::serveAndDraw(bool running, bool rendering) {
  if (running) {
    pApplication->ExecuteDeferredDrawMethods(mpGUIRenderer);
    pApplication->ExecuteActions(ACTION_DRAW);
    pApplication->ProcessTasks(TASK_DRAW);
  }
  if (rendering) drawPicture(running);
  pApplication->ComponentLogicCalled = false;
}

void TAppGuiModule::drawPicture(bool running) {
  if (mbRefreshSize.exchange(false)) applyWindowSize();
  if (running) {
    // All logic before any drawing: one component's logic may change what another one draws.
    for (TComponentList::Walk walk(GuiComponentList); TGuiComponent* root = walk.next();)
      if (root->isVisible()) root->drawLogic();
    BeforeDrawComponents();
    for (TComponentList::Walk walk(GuiComponentList); TGuiComponent* root = walk.next();)
      if (root->isVisible()) root->draw();
    AfterDrawComponents();
  } else if (pLoader && pLoader->isVisible()) {
    pLoader->drawLogic();
    pLoader->draw();
  }
}

// The window stays the render target.
void TAppGuiModule::copyWhole() {
  SDL_SetRenderTarget(mpGUIRenderer, nullptr);
  int w = 0, h = 0;
  SDL_BlendMode blend = SDL_BLENDMODE_BLEND;
  SDL_GetRendererOutputSize(mpGUIRenderer, &w, &h);
  SDL_GetTextureBlendMode(mpBackBuffer.get(), &blend);
  const bool hidesAll = blend == SDL_BLENDMODE_NONE && contains(WindowCurrentSize, {0, 0, w, h});
  if (!hidesAll) SDL_RenderClear(mpGUIRenderer);
  SDL_RenderCopyEx(mpGUIRenderer, mpBackBuffer.get(), &WindowNativeSize, &WindowCurrentSize,
                   ScreenRotate ? 180.0 : 0.0, nullptr, SDL_FLIP_NONE);
}

// Only the software driver's does; another one's is undefined after it has been presented.
bool TAppGuiModule::windowKeepsPicture() const {
  SDL_RendererInfo info{};
  int w = 0, h = 0;
  if (!SDL_RenderGetWindow(mpGUIRenderer) || SDL_GetRendererInfo(mpGUIRenderer, &info) != 0) return false;
  if (std::strcmp(info.name, "software") != 0 || ScreenRotate) return false;
  SDL_GetWindowSize(mpWindow, &w, &h);
  const SDL_Rect window{0, 0, w, h};
  return SDL_RectEquals(&window, &WindowNativeSize) && SDL_RectEquals(&window, &WindowCurrentSize);
}

// One pixel wide, in magenta.
void TAppGuiModule::outline(const TDirtyRects& changed) {
  SDL_Color colour{};
  SDL_GetRenderDrawColor(mpGUIRenderer, &colour.r, &colour.g, &colour.b, &colour.a);
  SDL_SetRenderDrawColor(mpGUIRenderer, 255, 0, 255, 255);
  for (const SDL_Rect& rect : changed.rects()) SDL_RenderDrawRect(mpGUIRenderer, &rect);
  SDL_SetRenderDrawColor(mpGUIRenderer, colour.r, colour.g, colour.b, colour.a);
}

void TAppGuiModule::present(Way way) {
  if (way == Way::NOTHING) return;
  if (way == Way::WHOLE) {
    SDL_RenderPresent(mpGUIRenderer);
  } else {
    SDL_RenderFlush(mpGUIRenderer);
    const std::vector<SDL_Rect>& parts = mpPicture->changed().rects();
    if (SDL_UpdateWindowSurfaceRects(mpWindow, parts.data(), static_cast<int>(parts.size())) != 0) RedrawAll();
  }
  SDL_SetRenderTarget(mpGUIRenderer, mpBackBuffer.get());
}

void TAppGuiModule::readRedraw() {
  const char* const wanted = std::getenv("TOPSCREEN_REDRAW");
  mRedraw = Redraw::CHANGES;
  if (!wanted || !*wanted) return;
  if (std::strcmp(wanted, "all") == 0)
    mRedraw = Redraw::ALL;
  else if (std::strcmp(wanted, "show") == 0)
    mRedraw = Redraw::SHOW;
  else
    pApplication->WriteLog(4, 0, "TOPSCREEN_REDRAW is neither all nor show, drawing what changes.");
}

void TAppGuiModule::rebuildTextures() {
  mpPicture->forget();
  Uint32 format = 0;
  int w = 0, h = 0;
  SDL_QueryTexture(mpBackBuffer.get(), &format, nullptr, &w, &h);
  if (SDL_Texture* fresh = drawing::Create(mpGUIRenderer, format, SDL_TEXTUREACCESS_TARGET, w, h))
    mpBackBuffer.reset(fresh);
  SDL_SetRenderTarget(mpGUIRenderer, mpBackBuffer.get());
  for (TComponentList::Walk walk(GuiComponentList); TGuiComponent* root = walk.next();) root->OnTexturesLost();
  if (pLoader) pLoader->OnTexturesLost();
}

void TAppGuiModule::applyWindowSize() {
  RedrawAll();
  SDL_GetWindowSize(mpWindow, &WindowCurrentSize.w, &WindowCurrentSize.h);
  SDL_SetRenderTarget(mpGUIRenderer, nullptr);
  SDL_RenderSetViewport(mpGUIRenderer, &WindowCurrentSize);
  SDL_SetRenderTarget(mpGUIRenderer, mpBackBuffer.get());
}

// Sleeps for what is left of the frame; the next sleep is shortened by what this one overshot. The result is the
// time before presentation.
Uint32 TAppGuiModule::pace(bool waitsForWindow) {
  const int64_t frameDurationMs = 1000 / mTargetFPS;
  Uint32 now = SDL_GetTicks();
  const int64_t msElapsed = static_cast<Uint32>(now - mLastDrawTime);
  const bool sleeps = !waitsForWindow || !mVsync || mTargetFPS < kVsyncFps;
  if (msElapsed + mSleepDiff >= frameDurationMs || !sleeps) {
    mSleepDiff = 0;
    return now;
  }
  const int64_t toSleep = frameDurationMs - msElapsed - mSleepDiff;
  SystemSeams.MicroSleep(static_cast<useconds_t>(toSleep * 1000));
  const Uint32 before = now;
  now = SDL_GetTicks();
  mSleepDiff = static_cast<int64_t>(static_cast<Uint32>(now - before)) - toSleep;
  return now;
}

void TAppGuiModule::countFrame(Uint32 beforePresent) {
  const Uint32 now = SDL_GetTicks();
  const auto interval = [](Uint32 ms) { return static_cast<float>(ms < 1 ? 1000 : ms); };
  const float c1 = interval(now - mLastDrawTime);
  const float c2 = interval(beforePresent - mLastDrawTime);
  mNumFrames = std::min(mNumFrames + 1, static_cast<unsigned long>(mTargetFPS));
  const float n = static_cast<float>(mNumFrames);
  mFPS = ((n - 1.0f) * mFPS + 1000.0f / c1) / n;
  mFPS_noVsync = ((n - 1.0f) * mFPS_noVsync + 1000.0f / c2) / n;
  mLastDrawTime = now;
}

float TAppGuiModule::getFPS(float* noVsync) const {
  if (noVsync) *noVsync = mFPS_noVsync;
  return mFPS;
}

}  // namespace vendelo_sdl2
