// One frame of the GUI module: drawing under the draw mutex, pacing, presentation and the frame rate.
#include <algorithm>

#include "vendelo-sdl2/SystemSeams.h"
#include "vendelo-sdl2/TAppGuiModule.h"
#include "vendelo-sdl2/TApplication.h"
#include "vendelo-sdl2/TGuiComponent.h"
#include "vendelo-sdl2/WindowEventGate.h"

namespace vendelo_sdl2 {
namespace {

// From this rate on vertical sync alone holds the pace.
constexpr int kVsyncFps = 60;

}  // namespace

int TAppGuiModule::draw() {
  bool rendering = false;
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
    if (rendering) SDL_RenderClear(mpGUIRenderer);
    serveAndDraw(running, rendering);
    if (rendering) copyToWindow();
    const Uint32 thisDrawMs = SDL_GetTicks() - start;
    pApplication->DrawDurationMs = static_cast<int>(thisDrawMs);
  }
  const Uint32 beforePresent = pace(rendering);
  if (rendering) {
    SDL_RenderPresent(mpGUIRenderer);
    SDL_SetRenderTarget(mpGUIRenderer, mpBackBuffer.get());
    SDL_RenderClear(mpGUIRenderer);
  }
  countFrame(beforePresent);
  return 0;
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
void TAppGuiModule::copyToWindow() {
  SDL_SetRenderTarget(mpGUIRenderer, nullptr);
  SDL_RenderClear(mpGUIRenderer);
  SDL_RenderCopyEx(mpGUIRenderer, mpBackBuffer.get(), &WindowNativeSize, &WindowCurrentSize,
                   ScreenRotate ? 180.0 : 0.0, nullptr, SDL_FLIP_NONE);
}

void TAppGuiModule::rebuildTextures() {
  Uint32 format = 0;
  int w = 0, h = 0;
  SDL_QueryTexture(mpBackBuffer.get(), &format, nullptr, &w, &h);
  if (SDL_Texture* fresh = SDL_CreateTexture(mpGUIRenderer, format, SDL_TEXTUREACCESS_TARGET, w, h))
    mpBackBuffer.reset(fresh);
  SDL_SetRenderTarget(mpGUIRenderer, mpBackBuffer.get());
  for (TComponentList::Walk walk(GuiComponentList); TGuiComponent* root = walk.next();) root->OnTexturesLost();
  if (pLoader) pLoader->OnTexturesLost();
}

void TAppGuiModule::applyWindowSize() {
  SDL_GetWindowSize(mpWindow, &WindowCurrentSize.w, &WindowCurrentSize.h);
  SDL_SetRenderTarget(mpGUIRenderer, nullptr);
  SDL_RenderSetViewport(mpGUIRenderer, &WindowCurrentSize);
  SDL_SetRenderTarget(mpGUIRenderer, mpBackBuffer.get());
}

// Sleeps for what is left of the frame; the next sleep is shortened by what this one overshot. The result is the
// time before presentation.
Uint32 TAppGuiModule::pace(bool rendering) {
  const int64_t frameDurationMs = 1000 / mTargetFPS;
  Uint32 now = SDL_GetTicks();
  const int64_t msElapsed = static_cast<Uint32>(now - mLastDrawTime);
  const bool sleeps = !rendering || !mVsync || mTargetFPS < kVsyncFps;
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
