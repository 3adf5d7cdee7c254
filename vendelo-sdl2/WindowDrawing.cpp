#include "vendelo-sdl2/WindowDrawing.h"

#include "vendelo-sdl2/DrawnRows.h"
#include "vendelo-sdl2/PictureFormat.h"
#include "vendelo-sdl2/TDirtyRects.h"
#include "vendelo-sdl2/TTexturePixels.h"

namespace vendelo_sdl2 {
namespace {

constexpr Uint32 kWindowFormat = SDL_PIXELFORMAT_RGB888;

bool isPlain(const TDrawCommand& c) {
  const bool white = c.colour.r == 255 && c.colour.g == 255 && c.colour.b == 255;
  return !c.isClear() && !c.isTurned() && !c.isScaled() && white && int64_t{c.source.w} * c.source.h >= kManyPixels;
}

bool isCopied(const TDrawCommand& c) {
  return c.blend == SDL_BLENDMODE_NONE ? c.colour.a == 255
                                       : c.blend == SDL_BLENDMODE_BLEND && c.showsNothingBehind();
}

// Null where SDL draws in yet another way.
TDrawnRow rowsOf(Uint32 format, const TDrawCommand& c) {
  if (isCopied(c)) return format == kWindowFormat || format == SDL_PIXELFORMAT_ARGB8888 ? copiedRow : nullptr;
  if (c.blend != SDL_BLENDMODE_BLEND) return nullptr;
  const bool fades = c.colour.a != 255;
  if (format == SDL_PIXELFORMAT_ABGR8888) return fades ? fadedSwappedRow : blendedSwappedRow;
  if (format == SDL_PIXELFORMAT_ARGB8888) return fades ? fadedRow : nullptr;
  return format == kWindowFormat && fades ? fadedOpaqueRow : nullptr;
}

// Null where the renderer does not draw into a window's memory.
SDL_Surface* windowDrawnInto(SDL_Renderer* renderer) {
  SDL_Window* const window = SDL_RenderGetWindow(renderer);
  if (!window || MyUtils::HasTextureMemory(renderer)) return nullptr;
  SDL_RenderFlush(renderer);
  SDL_Surface* const surface = SDL_GetWindowSurface(window);
  return surface && surface->format->format == kWindowFormat && !SDL_MUSTLOCK(surface) ? surface : nullptr;
}

}  // namespace

bool drawOntoWindow(SDL_Renderer* renderer, const TDrawCommand& c) {
  if (!isPlain(c) || SDL_GetRenderTarget(renderer)) return false;
  const TTexturePixels from(c.texture, c.source);
  const TDrawnRow draw = from ? rowsOf(from.format(), c) : nullptr;
  const SDL_Surface* const window = draw ? windowDrawnInto(renderer) : nullptr;
  if (!window) return false;
  SDL_Rect part = common(c.destination, {0, 0, window->w, window->h});
  if (SDL_RenderIsClipEnabled(renderer)) {
    SDL_Rect clip{0, 0, 0, 0};
    SDL_RenderGetClipRect(renderer, &clip);
    part = common(part, clip);
  }
  auto* const first = static_cast<Uint8*>(window->pixels);
  for (int y = part.y; y < part.y + part.h; ++y) {
    auto* const to = reinterpret_cast<Uint32*>(first + static_cast<ptrdiff_t>(y) * window->pitch);
    draw(to + part.x, from.row(y - c.destination.y) + (part.x - c.destination.x), part.w, c.colour.a);
  }
  return true;
}

}  // namespace vendelo_sdl2
