// The static image helpers of the GUI module.
#include <algorithm>
#include <cstdio>

#include "vendelo-sdl2/Drawing.h"
#include "vendelo-sdl2/MyUtils.h"
#include "vendelo-sdl2/PictureFormat.h"
#include "vendelo-sdl2/PictureHeader.h"
#include "vendelo-sdl2/TAppGuiModule.h"
#include "vendelo-sdl2/TApplication.h"
#include "vendelo-sdl2/TDirtyRects.h"
#include "vendelo-sdl2/TRenderGuard.h"
#include "vendelo-sdl2/TextureContent.h"

namespace vendelo_sdl2 {
namespace {

bool isEmpty(const char* file) { return !file || !*file; }

// On these terminals an empty layer takes the caller's colour, so that scaled edges blend into it.
bool layersKeepColour() {
  return TerminalFlavour == QUIRA_FLAVOUR || TerminalFlavour == ZOD_FLAVOUR || TerminalFlavour == VESPERA_FLAVOUR;
}

bool isTooLarge(int width, int height) {
  return int64_t{width} * height > MyUtils::kMostLayerPixels || std::max(width, height) > MyUtils::kLongestSide;
}

}  // namespace

SDL_Texture* TAppGuiModule::LoadImage(const char* file, int, int, int, int, int) {
  if (isEmpty(file)) return nullptr;
  SDL_Texture* texture = MyUtils::LoadTexture(mpGUIRendererStatic, file);
  if (!texture) {
    std::printf("\n*******************TAppGuiModule::LoadImage: Unable to load image file: %s\n\n", file);
    return nullptr;
  }
  int w = 0, h = 0;
  SDL_QueryTexture(texture, nullptr, nullptr, &w, &h);
  SDL_SetTextureBlendMode(texture, SDL_BLENDMODE_BLEND);
  // The loaded texture stays with the renderer until that goes: by design it is not destroyed here.
  return SubImage(texture, 0, 0, w, h);
}

SDL_Surface* TAppGuiModule::LoadSurface(const char* file, int, int, int, int, int) {
  if (isEmpty(file)) return nullptr;
  SDL_Surface* surface = MyUtils::LoadSurface(file);
  if (!surface) {
    std::printf("Error loading: %s", file);
    return nullptr;
  }
  SDL_SetSurfaceBlendMode(surface, SDL_BLENDMODE_BLEND);
  return surface;
}

SDL_Texture* TAppGuiModule::SubImage(SDL_Texture* pSrc, int x, int y, int w, int h) {
  if (!pSrc) return nullptr;
  SDL_Texture* layer = CreateLayer(pSrc, w, h, 0, 0, 0, 0, 16);
  if (!layer) return nullptr;
  const SDL_Rect rect{x, y, w, h};
  {
    TRenderGuard guard(mpGUIRendererStatic);
    guard.blendMode(pSrc, SDL_BLENDMODE_NONE);
    guard.target(layer);
    drawing::Copy(mpGUIRendererStatic, pSrc, &rect, nullptr);
  }
  SDL_Rect whole{0, 0, 0, 0};
  SDL_QueryTexture(pSrc, nullptr, nullptr, &whole.w, &whole.h);
  if (isOpaque(contentOf(pSrc)) && contains(whole, rect)) markOpaque(layer);
  return layer;
}

SDL_Texture* TAppGuiModule::CreateLayer(SDL_Texture*, int width, int height, int, int tR, int tG, int tB, int) {
  if (isTooLarge(width, height)) return nullptr;
  SDL_Texture* layer = drawing::Create(mpGUIRendererStatic, MyUtils::LayerFormat(mpGUIRendererStatic),
                                       SDL_TEXTUREACCESS_TARGET, width, height);
  if (!layer) return nullptr;
  SDL_SetTextureBlendMode(layer, SDL_BLENDMODE_NONE);
  TRenderGuard guard(mpGUIRendererStatic);
  guard.target(layer);
  if (layersKeepColour())
    guard.clear(static_cast<Uint8>(tR), static_cast<Uint8>(tG), static_cast<Uint8>(tB), 0);
  else
    guard.clear(0, 0, 0, 0);
  SDL_SetTextureBlendMode(layer, SDL_BLENDMODE_BLEND);
  return layer;
}

SDL_Surface* TAppGuiModule::CreateLayerSurface(int width, int height, int tR, int tG, int tB) {
  if (width <= 0 || height <= 0 || isTooLarge(width, height)) return nullptr;
  SDL_Surface* layer = SDL_CreateRGBSurfaceWithFormat(0, width, height, 32, MyUtils::kDrawnFormat);
  if (layer && layersKeepColour())
    SDL_FillRect(
      layer, nullptr,
      SDL_MapRGBA(layer->format, static_cast<Uint8>(tR), static_cast<Uint8>(tG), static_cast<Uint8>(tB), 0));
  return layer;
}

SDL_Surface* TAppGuiModule::CreateSurface(SDL_Surface*, int width, int height, int, int tR, int tG, int tB, int) {
  SDL_Surface* surface = SDL_CreateRGBSurface(0, width, height, 32, 0xff0000, 0xff00, 0xff, 0);
  if (!surface) return nullptr;
  const auto r = static_cast<Uint8>(tR), g = static_cast<Uint8>(tG), b = static_cast<Uint8>(tB);
  SDL_SetSurfaceBlendMode(surface, SDL_BLENDMODE_BLEND);
  SDL_SetColorKey(surface, SDL_TRUE, SDL_MapRGB(surface->format, r, g, b));
  SDL_FillRect(surface, nullptr, SDL_MapRGBA(surface->format, r, g, b, 0));
  return surface;
}

SDL_Surface* TAppGuiModule::SubSurface(SDL_Surface* pSrc, int x, int y, int w, int h) {
  if (!pSrc) return nullptr;
  SDL_Surface* surface = CreateSurface(pSrc, w, h, 1, 255, 0, 255, 32);
  SDL_Rect rect{x, y, w, h};
  SDL_BlitSurface(pSrc, &rect, surface, nullptr);  // refuses to draw to none
  return surface;
}

SDL_Texture* TAppGuiModule::GetSlideFromImage(SDL_Texture* pSourceImage, int SlideWidth, int SlideHeight,
                                              int SlideIndex) {
  if (!pSourceImage || SlideIndex < 0 || SlideWidth <= 0 || SlideHeight <= 0) return nullptr;
  int w = 0, h = 0;
  SDL_QueryTexture(pSourceImage, nullptr, nullptr, &w, &h);
  int SlidesCount = 0;
  if (w == SlideWidth) SlidesCount = h / SlideHeight;
  if (h == SlideHeight) SlidesCount = w / SlideWidth;
  if (SlideIndex >= SlidesCount) return nullptr;
  const int x = h == SlideHeight ? SlideIndex * SlideWidth : 0;
  const int y = w == SlideWidth ? SlideIndex * SlideHeight : 0;
  return SubImage(pSourceImage, x, y, SlideWidth, SlideHeight);
}

}  // namespace vendelo_sdl2
