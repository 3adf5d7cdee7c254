#include "tests/support/WidgetHarness.h"

#include "vendelo-sdl2/TRenderGuard.h"

using namespace vendelo_sdl2;

HarnessGuiModule::HarnessGuiModule(SDL_Renderer* renderer) {
  SetRenderer(renderer);
  SetRendererStatic(renderer);
}

WidgetHarness::WidgetHarness(int width, int height)
  : mpApplication(new HarnessApplication),
    mpPicture(SDL_CreateRGBSurfaceWithFormat(0, width, height, 32, SDL_PIXELFORMAT_ARGB8888)) {
  mpModule = new HarnessGuiModule(SDL_CreateSoftwareRenderer(mpPicture));
  SDL_SetRenderDrawBlendMode(mpModule->GetRenderer(), SDL_BLENDMODE_BLEND);
  SDL_SetRenderDrawColor(mpModule->GetRenderer(), 0, 0, 0, 0);
  mpApplication->adopt(mpModule);
  mBackBuffer.reset(
    SDL_CreateTexture(renderer(), SDL_PIXELFORMAT_ARGB8888, SDL_TEXTUREACCESS_TARGET, width, height));
  SDL_SetTextureBlendMode(mBackBuffer.get(), SDL_BLENDMODE_NONE);
  mpFrame = std::make_unique<TFramePicture>();
}

WidgetHarness::~WidgetHarness() {
  mpFrame->end();
  mBackBuffer.reset();
  mpApplication->destroyGui();
  SDL_FreeSurface(mpPicture);
  delete mpApplication;
}

Uint32 WidgetHarness::pixel(int x, int y) const {
  SDL_RenderFlush(renderer());
  const auto* row = static_cast<const Uint8*>(mpPicture->pixels) + static_cast<ptrdiff_t>(y) * mpPicture->pitch;
  return reinterpret_cast<const Uint32*>(row)[x] & 0xffffff;
}

void WidgetHarness::frame() {
  SDL_Renderer* to = renderer();
  float scale = 1.0f;
  SDL_SetRenderTarget(to, nullptr);
  SDL_RenderGetScale(to, &scale, nullptr);
  if (scale != 1.0f) {  // which SDL knows for the window only
    TRenderGuard(to).clear(mBackdrop.r, mBackdrop.g, mBackdrop.b, mBackdrop.a);
    mpModule->serveAndDraw(true, true);
    return;
  }
  {
    TRenderGuard guard(to);
    guard.colour(mBackdrop.r, mBackdrop.g, mBackdrop.b, mBackdrop.a);
    mpFrame->begin(to, mBackBuffer.get());
  }
  mpModule->serveAndDraw(true, true);
  mpFrame->finish(false);
  SDL_SetRenderTarget(to, nullptr);
  SDL_RenderCopy(to, mBackBuffer.get(), nullptr, nullptr);
}

SDL_Texture* WidgetHarness::makeTexture(int width, int height, SDL_Color colour) {
  SDL_Surface* surface = SDL_CreateRGBSurfaceWithFormat(0, width, height, 32, SDL_PIXELFORMAT_ARGB8888);
  SDL_FillRect(surface, nullptr, SDL_MapRGBA(surface->format, colour.r, colour.g, colour.b, colour.a));
  SDL_Texture* texture = SDL_CreateTextureFromSurface(renderer(), surface);
  SDL_FreeSurface(surface);
  return texture;
}
