#pragma once

#include <SDL.h>
#include <cstdint>
#include <memory>

#include "vendelo-sdl2/TTexturePtr.h"

// Pixel formats: which one a renderer's driver is fast in, and pictures put together in memory.
//
// With the "software" driver SDL blends ABGR8888 and ARGB8888 onto a window (XRGB8888 or ARGB8888) several times as
// fast as any other format. Of the two, ABGR8888 is at most one step of a channel beside the exact result, ARGB8888
// up to three; so layers are ABGR8888. Blending into a layer is exact in no fast pair of formats, which is why what
// stays for long (a text, a strip of digits) is put together here and not by the renderer. A graphics card has no
// such differences: there everything stays as the file or the caller has it.
namespace MyUtils {

struct TSurfaceDeleter {
  void operator()(SDL_Surface* surface) const { SDL_FreeSurface(surface); }
};
using TSurfacePtr = std::unique_ptr<SDL_Surface, TSurfaceDeleter>;

// The format of BlendInto, on every machine.
constexpr Uint32 kDrawnFormat = SDL_PIXELFORMAT_ABGR8888;

// The format of a texture that is drawn into. Any thread while the renderer lives, as all of these.
Uint32 LayerFormat(SDL_Renderer* renderer);

// Whether textures lie elsewhere than pictures, which then is scarcer memory.
bool HasTextureMemory(SDL_Renderer* renderer);

// Whether no pixel lets anything shine through: no alpha and no colour key, or 255 in all of them. Remembered by
// InFastFormat, otherwise every pixel of a picture with alpha is looked at. Null is not opaque.
bool IsOpaque(const SDL_Surface* picture);

// The picture as the renderer's driver is fast with it: the same one, or another and the old one is freed. Its
// opacity is known from then on; it must not be drawn into any more. Null stays null. To be called where the
// picture is decoded, best beside the draw thread.
SDL_Surface* InFastFormat(SDL_Renderer* renderer, SDL_Surface* picture);

// A texture of the picture, which knows what is opaque and where its ink is; null without one. Draw thread. The
// picture stays the caller's. With the "software" driver TTexturePixels has the pixels of a large one.
vendelo_sdl2::TTexturePtr TextureOf(SDL_Renderer* renderer, SDL_Surface* picture);

// A layer of the picture, which is in kDrawnFormat: a texture that can be drawn into, with blending on; null
// without one. Draw thread. The picture stays the caller's.
vendelo_sdl2::TTexturePtr LayerOf(SDL_Renderer* renderer, const SDL_Surface* picture);

// The picture in kDrawnFormat: the same one, or another and the old one is freed. Null stays null.
TSurfacePtr InDrawnFormat(TSurfacePtr picture);

// Blends a part of a picture, both in kDrawnFormat, over another one, at its size: the result is that of SDL's
// exact blitters, c + (s - c) * a / 255 in whole numbers, also of the alpha. `alpha` scales that of the part. What
// lies outside either picture is left out; null does nothing.
void BlendInto(SDL_Surface* to, int64_t x, int64_t y, const SDL_Surface* from, const SDL_Rect& part,
               Uint8 alpha = 255);

}  // namespace MyUtils
