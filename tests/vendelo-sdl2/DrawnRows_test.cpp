// Each row beside what SDL makes of the same pixels, over a surface of a window's format.
#include "vendelo-sdl2/DrawnRows.h"

#include <SDL.h>
#include <gtest/gtest.h>
#include <algorithm>
#include <array>
#include <memory>
#include <random>
#include <string>
#include <vector>

using namespace vendelo_sdl2;

namespace {

using TPixels = std::vector<Uint32>;

struct Rows {
  const char* name;
  Uint32 format;
  TDrawnRow row;
  bool isWhole;  // drawn at an alpha of 255
  SDL_BlendMode mode = SDL_BLENDMODE_BLEND;
};

constexpr std::array kAll = {
  Rows{"copied", SDL_PIXELFORMAT_ARGB8888, copiedRow, true, SDL_BLENDMODE_NONE},
  Rows{"copied", SDL_PIXELFORMAT_RGB888, copiedRow, true, SDL_BLENDMODE_NONE},
  Rows{"blendedSwapped", SDL_PIXELFORMAT_ABGR8888, blendedSwappedRow, true},
  Rows{"faded", SDL_PIXELFORMAT_ARGB8888, fadedRow, false},
  Rows{"fadedSwapped", SDL_PIXELFORMAT_ABGR8888, fadedSwappedRow, false},
  Rows{"fadedOpaque", SDL_PIXELFORMAT_RGB888, fadedOpaqueRow, false},
};

// What is seen of them.
TPixels seen(TPixels pixels) {
  for (Uint32& pixel : pixels) pixel &= 0xffffff;
  return pixels;
}

TPixels bySdl(const Rows& rows, TPixels below, TPixels above, Uint8 alpha) {
  const auto surface = [](TPixels& pixels, Uint32 format) {
    const int width = static_cast<int>(pixels.size());
    return std::unique_ptr<SDL_Surface, decltype(&SDL_FreeSurface)>(
      SDL_CreateRGBSurfaceWithFormatFrom(pixels.data(), width, 1, 32, width * 4, format), SDL_FreeSurface);
  };
  const auto to = surface(below, SDL_PIXELFORMAT_RGB888), from = surface(above, rows.format);
  SDL_SetSurfaceBlendMode(from.get(), rows.mode);
  SDL_SetSurfaceAlphaMod(from.get(), alpha);
  EXPECT_EQ(0, SDL_BlitSurface(from.get(), nullptr, to.get(), nullptr));
  return seen(below);
}

TPixels byUs(const Rows& rows, TPixels below, const TPixels& above, Uint8 alpha) {
  rows.row(below.data(), above.data(), static_cast<int>(below.size()), alpha);
  return seen(below);
}

void expectSame(const Rows& rows, const TPixels& below, const TPixels& above, Uint8 alpha) {
  const TPixels due = bySdl(rows, below, above, alpha), is = byUs(rows, below, above, alpha);
  if (due == is) return;
  const auto at = static_cast<size_t>(std::mismatch(due.begin(), due.end(), is.begin()).first - due.begin());
  FAIL() << rows.name << " at " << int{alpha} << ", pixel " << at << ": " << std::hex << above[at] << " over "
         << below[at] << " should be " << due[at] << " and is " << is[at];
}

// The alphas that a picture has, of those that differ in the result.
std::vector<Uint8> alphas(const Rows& rows) {
  std::vector<Uint8> all;
  for (int alpha = rows.isWhole ? 255 : 0; alpha < (rows.isWhole ? 256 : 255); ++alpha)
    all.push_back(static_cast<Uint8>(alpha));
  return all;
}

// Every value of a channel over every other one.
TEST(DrawnRows, EachChannelOverEachOther) {
  TPixels below, above;
  for (Uint32 s = 0; s < 256; ++s)
    for (Uint32 d = 0; d < 256; ++d) {
      below.push_back(d * 0x010101);
      above.push_back(s * 0x010101);
    }
  for (const Rows& rows : kAll)
    for (Uint32 alpha = 0; alpha < 256; ++alpha) {
      // Of the two alphas of a pixel the result knows only the product.
      const Uint8 ofPicture = rows.isWhole                            ? Uint8{255}
                              : rows.format == SDL_PIXELFORMAT_RGB888 ? static_cast<Uint8>(std::min(alpha, 254u))
                                                                      : Uint8{254};
      for (Uint32& pixel : above) pixel = (pixel & 0xffffff) | alpha << 24;
      expectSame(rows, below, above, ofPicture);
      if (HasFatalFailure()) return;
    }
}

TEST(DrawnRows, EachAlphaOfAPixelWithEachOfThePicture) {
  std::mt19937 random(7);
  for (const Rows& rows : kAll)
    for (const Uint8 alpha : alphas(rows)) {
      TPixels below, above;
      for (Uint32 own = 0; own < 256; ++own)
        for (int i = 0; i < 16; ++i) {
          below.push_back(static_cast<Uint32>(random()));
          above.push_back((static_cast<Uint32>(random()) & 0xffffff) | own << 24);
        }
      expectSame(rows, below, above, alpha);
      if (HasFatalFailure()) return;
    }
}

// Four pixels are one step: what is left over is drawn, and nothing beside it is touched.
TEST(DrawnRows, OfAnyLength) {
  std::mt19937 random(3);
  for (const Rows& rows : kAll)
    for (int count = 0; count < 20; ++count) {
      TPixels below(32), above(32);
      for (Uint32& pixel : below) pixel = static_cast<Uint32>(random()) & 0xffffff;
      // Also of pixels that are not there, one, two or three in a step.
      for (Uint32& pixel : above) pixel = static_cast<Uint32>(random()) & (random() % 2 ? 0xffffffu : 0xffffffffu);
      const Uint8 alpha = rows.isWhole ? 255 : 200;
      TPixels drawn = below;
      rows.row(drawn.data() + 5, above.data() + 3, count, alpha);
      const auto first = below.begin() + 5, source = above.begin() + 3;
      TPixels due = below;
      if (count > 0) {
        const TPixels part = bySdl(rows, {first, first + count}, {source, source + count}, alpha);
        std::copy(part.begin(), part.end(), due.begin() + 5);
      }
      EXPECT_EQ(due, seen(drawn)) << rows.name << ", " << count;
    }
}

}  // namespace
