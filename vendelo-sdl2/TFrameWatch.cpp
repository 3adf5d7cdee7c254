#include "vendelo-sdl2/TFrameWatch.h"

#include <utility>

#include "vendelo-sdl2/TRenderGuard.h"

namespace vendelo_sdl2 {

void TFrameWatch::frameDone(const TFrameEnd& end) {
  if (mFrames > 0) {
    const Uint32 took = end.now - mLastEnd;
    if (took >= 2 * end.targetMs) ++mLate;
    for (Uint32 longest = mLongestMs; took > longest && !mLongestMs.compare_exchange_weak(longest, took);) {
    }
  }
  mLastEnd = end.now;
  if (end.presented) ++mPresented;
  ++mFrames;
  if (end.renderer && mPresented > 0 && mAsked) givePicture(end);
}

void TFrameWatch::askForPicture(TPictureTaker taker) {
  const std::lock_guard<std::mutex> lock(mTakerMutex);
  mTaker = std::move(taker);
  mAsked = true;
}

void TFrameWatch::givePicture(const TFrameEnd& end) {
  TPictureTaker taker;
  {
    const std::lock_guard<std::mutex> lock(mTakerMutex);
    mAsked = false;
    taker.swap(mTaker);
  }
  int w = 0, h = 0;
  TRenderGuard guard(end.renderer);
  guard.target(end.picture);
  if (end.picture)
    SDL_QueryTexture(end.picture, nullptr, nullptr, &w, &h);
  else
    SDL_GetRendererOutputSize(end.renderer, &w, &h);
  SDL_Surface* surface = SDL_CreateRGBSurfaceWithFormat(0, w, h, 24, SDL_PIXELFORMAT_RGB24);
  if (!surface) return;
  if (SDL_RenderReadPixels(end.renderer, nullptr, SDL_PIXELFORMAT_RGB24, surface->pixels, surface->pitch) != 0) {
    SDL_FreeSurface(surface);
    return;
  }
  taker(surface);
}

}  // namespace vendelo_sdl2
