#pragma once

#include <SDL.h>
#include <gtest/gtest.h>
#include <vector>

#include "tests/support/FakeClock.h"
#include "tests/support/Golden.h"
#include "tests/support/WidgetHarness.h"
#include "vendelo-sdl2/TApplication.h"

// An application with a software renderer of 400 by 200 pixels and a tick clock that stands at 1000.
class WidgetTest : public testing::Test {
 protected:
  static constexpr int kScreenW = 400, kScreenH = 200;

  ~WidgetTest() override {
    for (SDL_Texture* texture : textures) SDL_DestroyTexture(texture);
  }

  void clear(Uint8 r, Uint8 g, Uint8 b) {
    SDL_SetRenderDrawColor(renderer, r, g, b, 255);
    SDL_RenderClear(renderer);
  }

  // What stands at a place, as 0xRRGGBB.
  Uint32 pixel(int x, int y) {
    Uint8 rgb[3] = {0, 0, 0};
    const SDL_Rect rect{x, y, 1, 1};
    EXPECT_EQ(0, SDL_RenderReadPixels(renderer, &rect, SDL_PIXELFORMAT_RGB24, rgb, 3)) << x << ", " << y;
    return static_cast<Uint32>(rgb[0]) << 16 | static_cast<Uint32>(rgb[1]) << 8 | rgb[2];
  }

  // The smallest rectangle around everything that is not of the colour.
  SDL_Rect inked(Uint32 background) {
    SDL_Rect box{0, 0, 0, 0};
    bool any = false;
    std::vector<Uint8> rgb(static_cast<size_t>(kScreenW) * kScreenH * 3);
    EXPECT_EQ(0, SDL_RenderReadPixels(renderer, nullptr, SDL_PIXELFORMAT_RGB24, rgb.data(), kScreenW * 3));
    for (int y = 0; y < kScreenH; ++y)
      for (int x = 0; x < kScreenW; ++x) {
        const Uint8* p = &rgb[(static_cast<size_t>(y) * kScreenW + static_cast<size_t>(x)) * 3];
        if ((static_cast<Uint32>(p[0]) << 16 | static_cast<Uint32>(p[1]) << 8 | p[2]) == background) continue;
        const SDL_Rect one{x, y, 1, 1};
        if (any)
          SDL_UnionRect(&box, &one, &box);
        else
          box = one;
        any = true;
      }
    return box;
  }

  // How many pixels are of the colour.
  int pixelsOf(Uint32 colour) {
    int count = 0;
    for (int y = 0; y < kScreenH; ++y)
      for (int x = 0; x < kScreenW; ++x) count += app.pixel(x, y) == colour;
    return count;
  }

  // A texture of one colour; the fixture frees it.
  SDL_Texture* solid(int w, int h, SDL_Color color) {
    SDL_Surface* surface = SDL_CreateRGBSurfaceWithFormat(0, w, h, 32, SDL_PIXELFORMAT_RGBA32);
    SDL_FillRect(surface, nullptr, SDL_MapRGBA(surface->format, color.r, color.g, color.b, color.a));
    SDL_Texture* texture = SDL_CreateTextureFromSurface(renderer, surface);
    SDL_FreeSurface(surface);
    SDL_SetTextureBlendMode(texture, SDL_BLENDMODE_BLEND);
    textures.push_back(texture);
    return texture;
  }

  WidgetHarness app{kScreenW, kScreenH};
  SDL_Renderer* const renderer = app.renderer();
  FakeClock clock{1000};
  std::vector<SDL_Texture*> textures;
};

inline bool operator==(const SDL_Rect& a, const SDL_Rect& b) { return SDL_RectEquals(&a, &b); }
inline bool operator==(const SDL_Point& a, const SDL_Point& b) { return a.x == b.x && a.y == b.y; }
inline void PrintTo(const SDL_Point& p, std::ostream* out) { *out << "(" << p.x << ", " << p.y << ")"; }
inline void PrintTo(const SDL_Rect& r, std::ostream* out) {
  *out << "(" << r.x << ", " << r.y << ", " << r.w << " by " << r.h << ")";
}
