#pragma once

#include <SDL.h>
#include <dlfcn.h>
#include <algorithm>
#include <array>
#include <cstdint>
#include <set>
#include <string>
#include <vector>

// Linked in front of SDL's: the glass of a screen behind a window that SDL's software renderer draws. It shows what
// has been sent to it, and no more: what has been drawn and was not sent is not seen, and what stands on it stays
// until something else is sent. For one window at a time. Include it in one file of a test program only.
namespace glass {

constexpr Uint32 kSpoilt = 0xff00ff;

inline int width = 0, height = 0;
inline std::vector<Uint32> pixels;
inline std::set<SDL_Texture*> targets;  // textures that are drawn into

template <class F>
F real(const char* name) {
  return reinterpret_cast<F>(dlsym(RTLD_NEXT, name));
}

// The surface's part goes to the glass. One of another size is another glass.
inline void show(const SDL_Surface* surface, const SDL_Rect& part) {
  if (surface->w != width || surface->h != height) {
    width = surface->w;
    height = surface->h;
    pixels.assign(static_cast<size_t>(width) * static_cast<size_t>(height), kSpoilt);
  }
  SDL_Rect rect;
  const SDL_Rect all{0, 0, width, height};
  if (!SDL_IntersectRect(&part, &all, &rect)) return;
  for (int y = rect.y; y < rect.y + rect.h; ++y)
    std::copy_n(reinterpret_cast<const Uint32*>(static_cast<const Uint8*>(surface->pixels) +
                                                static_cast<ptrdiff_t>(y) * surface->pitch) +
                  rect.x,
                rect.w, pixels.begin() + static_cast<ptrdiff_t>(y) * width + rect.x);
}

// Another window's picture covers all of it.
inline void spoil() { std::fill(pixels.begin(), pixels.end(), kSpoilt); }

// What the glass shows, in twelve fields each way: one number for each, from left to right and down.
constexpr int kFields = 12;
using Sums = std::array<uint64_t, kFields * kFields>;

inline Sums sums() {
  Sums sums;
  sums.fill(0xcbf29ce484222325u ^ (static_cast<uint64_t>(width) << 32 | static_cast<uint32_t>(height)));
  for (int y = 0; y < height; ++y) {
    const Uint32* pixel = pixels.data() + static_cast<ptrdiff_t>(y) * width;
    for (int field = 0, x = 0; field < kFields; ++field) {
      uint64_t& sum = sums[static_cast<size_t>(y * kFields / height * kFields + field)];
      uint64_t own = sum;
      for (const int end = width * (field + 1) / kFields; x < end; ++x)
        own = (own ^ (*pixel++ & 0xffffff)) * 0x100000001b3u;
      sum = own;
    }
  }
  return sums;
}

// A frame, and what had happened before it.
struct Seen {
  Sums sums;
  std::string after;
};

// Where two runs are not the same first; empty when they are.
inline std::string difference(const std::vector<Seen>& due, const std::vector<Seen>& is) {
  for (size_t i = 0; i < std::min(due.size(), is.size()); ++i) {
    if (due[i].sums == is[i].sums) continue;
    const auto at =
      std::mismatch(due[i].sums.begin(), due[i].sums.end(), is[i].sums.begin()).first - due[i].sums.begin();
    return "frame " + std::to_string(i) + ", after " + is[i].after + ", first in field " +
           std::to_string(at % kFields) + "," + std::to_string(at / kFields);
  }
  return due.size() == is.size() ? "" : "not as many frames";
}

// How many of them are other than the one before.
inline size_t pictures(const std::vector<Seen>& seen) {
  size_t count = 0;
  for (size_t i = 1; i < seen.size(); ++i) count += seen[i].sums != seen[i - 1].sums;
  return count;
}

// Nothing is left of what was drawn into textures, as after the loss of a device; those made from now on are well.
inline void loseTargets(SDL_Renderer* renderer) {
  SDL_Texture* const target = SDL_GetRenderTarget(renderer);
  Uint8 r = 0, g = 0, b = 0, a = 0;
  SDL_GetRenderDrawColor(renderer, &r, &g, &b, &a);
  SDL_SetRenderDrawColor(renderer, 255, 0, 255, 255);
  for (SDL_Texture* texture : targets) {
    SDL_SetRenderTarget(renderer, texture);
    SDL_RenderClear(renderer);
  }
  SDL_SetRenderDrawColor(renderer, r, g, b, a);
  SDL_SetRenderTarget(renderer, target);
}

}  // namespace glass

extern "C" {

void SDL_RenderPresent(SDL_Renderer* renderer) {
  static const auto sdl = glass::real<decltype(&SDL_RenderPresent)>("SDL_RenderPresent");
  sdl(renderer);
  if (SDL_Surface* surface = SDL_GetWindowSurface(SDL_RenderGetWindow(renderer)))
    glass::show(surface, {0, 0, surface->w, surface->h});
}

int SDL_UpdateWindowSurfaceRects(SDL_Window* window, const SDL_Rect* rects, int count) {
  static const auto sdl = glass::real<decltype(&SDL_UpdateWindowSurfaceRects)>("SDL_UpdateWindowSurfaceRects");
  const int result = sdl(window, rects, count);
  if (SDL_Surface* surface = SDL_GetWindowSurface(window))
    for (int i = 0; i < count; ++i) glass::show(surface, rects[i]);
  return result;
}

SDL_Texture* SDL_CreateTexture(SDL_Renderer* renderer, Uint32 format, int access, int w, int h) {
  static const auto sdl = glass::real<decltype(&SDL_CreateTexture)>("SDL_CreateTexture");
  SDL_Texture* const texture = sdl(renderer, format, access, w, h);
  if (texture && access == SDL_TEXTUREACCESS_TARGET) glass::targets.insert(texture);
  return texture;
}

void SDL_DestroyTexture(SDL_Texture* texture) {
  static const auto sdl = glass::real<decltype(&SDL_DestroyTexture)>("SDL_DestroyTexture");
  glass::targets.erase(texture);
  sdl(texture);
}

void SDL_DestroyRenderer(SDL_Renderer* renderer) {
  static const auto sdl = glass::real<decltype(&SDL_DestroyRenderer)>("SDL_DestroyRenderer");
  glass::targets.clear();
  sdl(renderer);
}

}  // extern "C"
