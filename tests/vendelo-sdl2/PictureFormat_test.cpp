// Pixel formats by driver, opacity, and pictures put together in memory.
#include <SDL_image.h>
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <algorithm>
#include <cstdlib>
#include <functional>
#include <random>
#include <string>

#include "tests/support/TestFont.h"
#include "tests/support/WidgetHarness.h"
#include "vendelo-sdl2/MyUtils.h"
#include "vendelo-sdl2/PictureFormat.h"
#include "vendelo-sdl2/TTexturePixels.h"
#include "vendelo-sdl2/TextureContent.h"

using namespace vendelo_sdl2;
using MyUtils::TSurfacePtr;

namespace {
bool accelerated = false;  // what the renderer says of itself
}

// In front of SDL.
extern "C" int SDL_GetRendererInfo(SDL_Renderer* renderer, SDL_RendererInfo* info) {
  static const auto sdl = reinterpret_cast<decltype(&SDL_GetRendererInfo)>(dlsym(RTLD_NEXT, "SDL_GetRendererInfo"));
  const int result = sdl(renderer, info);
  if (accelerated) info->name = "opengl";
  return result;
}

namespace {

TSurfacePtr picture(Uint32 format, int w, int h) {
  return TSurfacePtr(SDL_CreateRGBSurfaceWithFormat(0, w, h, static_cast<int>(SDL_BITSPERPIXEL(format)), format));
}

Uint32& pixel(const TSurfacePtr& surface, int x, int y) {
  return reinterpret_cast<Uint32*>(static_cast<Uint8*>(surface->pixels) +
                                   static_cast<ptrdiff_t>(y) * surface->pitch)[x];
}

SDL_Color colour(const TSurfacePtr& surface, int x, int y) {
  SDL_Color c{};
  SDL_GetRGBA(pixel(surface, x, y), surface->format, &c.r, &c.g, &c.b, &c.a);
  return c;
}

TSurfacePtr noise(Uint32 format, int w, int h, unsigned seed) {
  TSurfacePtr surface = picture(format, w, h);
  std::minstd_rand random(seed);
  const auto channel = [&random] { return static_cast<Uint8>(random() >> 8); };
  for (int y = 0; y < h; ++y)
    for (int x = 0; x < w; ++x) {
      const auto r = static_cast<Uint8>(y);
      const Uint8 g = channel(), b = channel();
      pixel(surface, x, y) = SDL_MapRGBA(surface->format, r, g, b, static_cast<Uint8>(x));
    }
  return surface;
}

int largestDifference(const TSurfacePtr& one, const TSurfacePtr& other) {
  int largest = 0;
  for (int y = 0; y < one->h; ++y)
    for (int x = 0; x < one->w; ++x) {
      const SDL_Color a = colour(one, x, y), b = colour(other, x, y);
      for (const int d : {a.r - b.r, a.g - b.g, a.b - b.b, a.a - b.a}) largest = std::max(largest, std::abs(d));
    }
  return largest;
}

class PictureFormat : public testing::Test {
 protected:
  ~PictureFormat() override { accelerated = false; }
  WidgetHarness harness{256, 256};
};

}  // namespace

TEST_F(PictureFormat, BlendingInMemoryIsThatOfTheExactBlitters) {
  // Every alpha in every line; RGBA8888 is a format that the library has nothing faster for than whole numbers.
  for (const SDL_Color ground : {SDL_Color{0, 0, 0, 0}, SDL_Color{200, 30, 90, 0}, SDL_Color{9, 99, 199, 255}}) {
    const TSurfacePtr ours = picture(MyUtils::kDrawnFormat, 256, 256),
                      theirs = picture(SDL_PIXELFORMAT_RGBA8888, 256, 256);
    for (const TSurfacePtr& to : {std::cref(ours), std::cref(theirs)})
      SDL_FillRect(to.get(), nullptr, SDL_MapRGBA(to->format, ground.r, ground.g, ground.b, ground.a));
    for (unsigned layer = 1; layer <= 4; ++layer) {
      TSurfacePtr above = noise(MyUtils::kDrawnFormat, 256, 256, layer);
      const int shift = layer % 2 ? 0 : 100;  // other pairs of alphas
      SDL_Rect part{shift, 0, 256 - shift, 256};
      MyUtils::BlendInto(ours.get(), 0, 0, above.get(), part);
      SDL_BlitSurface(above.get(), &part, theirs.get(), nullptr);
      ASSERT_EQ(0, largestDifference(ours, theirs)) << "layer " << layer;
    }
  }
}

TEST_F(PictureFormat, TheAlphaOfAWholePartScalesThatOfItsPixels) {
  const TSurfacePtr to = picture(MyUtils::kDrawnFormat, 3, 1), from = picture(MyUtils::kDrawnFormat, 3, 1);
  for (int x = 0; x < 3; ++x)
    pixel(from, x, 0) = SDL_MapRGBA(from->format, 200, 100, 50, x == 0 ? 0 : x == 1 ? 128 : 255);
  MyUtils::BlendInto(to.get(), 0, 0, from.get(), {0, 0, 3, 1}, 100);
  EXPECT_EQ(0u, pixel(to, 0, 0));
  EXPECT_EQ(SDL_MapRGBA(to->format, 200 * 50 / 255, 100 * 50 / 255, 50 * 50 / 255, 50), pixel(to, 1, 0));
  EXPECT_EQ(SDL_MapRGBA(to->format, 200 * 100 / 255, 100 * 100 / 255, 50 * 100 / 255, 100), pixel(to, 2, 0));
  MyUtils::BlendInto(to.get(), 0, 0, from.get(), {0, 0, 3, 1}, 0);
  EXPECT_EQ(SDL_MapRGBA(to->format, 200 * 100 / 255, 100 * 100 / 255, 50 * 100 / 255, 100), pixel(to, 2, 0));
}

TEST_F(PictureFormat, WhatLiesOutsideEitherPictureIsLeftOut) {
  const struct {
    int64_t x, y;
    SDL_Rect part;
    const char* expected;  // which pixel of "abcd" / "efgh" stands where
  } rows[] = {
    {0, 0, {0, 0, 4, 2}, "abcdefgh"},
    {1, 1, {0, 0, 4, 2}, "     abc"},
    {-1, -1, {0, 0, 4, 2}, "fgh     "},
    {1, 0, {1, 0, 2, 2}, " bc  fg "},
    {0, 0, {-1, -1, 3, 3}, "     ab "},
    {0, 0, {-1, 0, 3, 2}, " ab  ef "},
    {2, 1, {3, 1, 9, 9}, "      h "},
    {-2, 0, {-1, 0, 4, 2}, "bc  fg  "},
    {4, 0, {0, 0, 4, 2}, "        "},
    {0, -2, {0, 0, 4, 2}, "        "},
    {0, 0, {4, 0, 4, 2}, "        "},
    {0, 0, {0, 0, -4, 2}, "        "},
    {int64_t{1} << 40, 0, {0, 0, 4, 2}, "        "},
    {-(int64_t{1} << 40), 0, {2147483647, 0, 2147483647, 2}, "        "},
  };
  const TSurfacePtr from = picture(MyUtils::kDrawnFormat, 4, 2);
  for (int i = 0; i < 8; ++i) pixel(from, i % 4, i / 4) = 0xff000000u + static_cast<Uint32>('a' + i);
  for (const auto& row : rows) {
    const TSurfacePtr to = picture(MyUtils::kDrawnFormat, 4, 2);
    MyUtils::BlendInto(to.get(), row.x, row.y, from.get(), row.part);
    std::string found;
    for (int i = 0; i < 8; ++i) {
      const Uint32 value = pixel(to, i % 4, i / 4);
      found += value == 0 ? ' ' : static_cast<char>(value & 255);
    }
    EXPECT_EQ(row.expected, found) << row.x << "," << row.y << " from " << row.part.x << "," << row.part.y;
  }
  MyUtils::BlendInto(nullptr, 0, 0, from.get(), {0, 0, 4, 2});
  MyUtils::BlendInto(from.get(), 0, 0, nullptr, {0, 0, 4, 2});
  EXPECT_EQ(0xff000000u + 'a', pixel(from, 0, 0));
}

TEST_F(PictureFormat, OpaqueIsWhatHasNoTransparentPixel) {
  EXPECT_FALSE(MyUtils::IsOpaque(nullptr));
  for (const Uint32 format : {SDL_PIXELFORMAT_RGB24, SDL_PIXELFORMAT_RGB888, SDL_PIXELFORMAT_RGB565}) {
    const TSurfacePtr plain = picture(format, 5, 4);
    EXPECT_TRUE(MyUtils::IsOpaque(plain.get())) << SDL_GetPixelFormatName(format);
    SDL_SetColorKey(plain.get(), SDL_TRUE, 0);
    EXPECT_FALSE(MyUtils::IsOpaque(plain.get())) << "with a colour key, " << SDL_GetPixelFormatName(format);
  }
  for (const Uint32 format : {SDL_PIXELFORMAT_ARGB8888, SDL_PIXELFORMAT_ABGR8888, SDL_PIXELFORMAT_RGBA8888}) {
    const TSurfacePtr full = picture(format, 5, 4);
    const Uint32 opaque = SDL_MapRGBA(full->format, 1, 2, 3, 255);
    SDL_FillRect(full.get(), nullptr, opaque);
    EXPECT_TRUE(MyUtils::IsOpaque(full.get())) << SDL_GetPixelFormatName(format);
    for (const SDL_Point hole : {SDL_Point{0, 0}, SDL_Point{4, 0}, SDL_Point{2, 2}, SDL_Point{4, 3}}) {
      pixel(full, hole.x, hole.y) = SDL_MapRGBA(full->format, 1, 2, 3, 254);
      EXPECT_FALSE(MyUtils::IsOpaque(full.get())) << SDL_GetPixelFormatName(format);
      pixel(full, hole.x, hole.y) = opaque;
    }
    EXPECT_TRUE(MyUtils::IsOpaque(full.get()));
  }
  const TSurfacePtr indexed = picture(SDL_PIXELFORMAT_INDEX8, 5, 4);
  EXPECT_TRUE(MyUtils::IsOpaque(indexed.get()));
  indexed->format->palette->colors[7].a = 0;
  EXPECT_FALSE(MyUtils::IsOpaque(indexed.get()));
  EXPECT_FALSE(MyUtils::IsOpaque(picture(SDL_PIXELFORMAT_ARGB4444, 5, 4).get()));
}

TEST_F(PictureFormat, TheSoftwareDriverGetsWhatItIsFastWith) {
  const struct {
    Uint32 format;
    bool opaque;
    Uint32 expected;
  } rows[] = {
    {SDL_PIXELFORMAT_ABGR8888, false, SDL_PIXELFORMAT_ABGR8888},
    {SDL_PIXELFORMAT_ARGB8888, false, SDL_PIXELFORMAT_ARGB8888},
    {SDL_PIXELFORMAT_RGBA8888, false, SDL_PIXELFORMAT_ABGR8888},
    {SDL_PIXELFORMAT_BGRA8888, false, SDL_PIXELFORMAT_ABGR8888},
    {SDL_PIXELFORMAT_ABGR8888, true, SDL_PIXELFORMAT_ARGB8888},
    {SDL_PIXELFORMAT_RGBA8888, true, SDL_PIXELFORMAT_ARGB8888},
    {SDL_PIXELFORMAT_ARGB8888, true, SDL_PIXELFORMAT_ARGB8888},
    {SDL_PIXELFORMAT_RGB888, true, SDL_PIXELFORMAT_RGB888},
    {SDL_PIXELFORMAT_BGR888, true, SDL_PIXELFORMAT_RGB888},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(std::string(SDL_GetPixelFormatName(row.format)) + (row.opaque ? ", opaque" : ""));
    TSurfacePtr source = noise(row.format, 256, 3, 1);
    if (row.opaque)
      for (int i = 0; i < 3 * 256; ++i) pixel(source, i % 256, i / 256) |= source->format->Amask;
    const TSurfacePtr before(SDL_ConvertSurfaceFormat(source.get(), SDL_PIXELFORMAT_ARGB8888, 0));
    accelerated = true;
    SDL_Surface* const same = source.get();
    source.reset(MyUtils::InFastFormat(harness.renderer(), source.release()));
    EXPECT_EQ(same, source.get()) << "a graphics card takes it as it is";
    EXPECT_EQ(row.opaque, MyUtils::IsOpaque(source.get()));
    accelerated = false;
    source.reset(MyUtils::InFastFormat(harness.renderer(), source.release()));
    EXPECT_EQ(row.expected, source->format->format);
    EXPECT_EQ(0, largestDifference(before, source));
    EXPECT_EQ(row.opaque, MyUtils::IsOpaque(source.get()));
  }
  EXPECT_EQ(nullptr, MyUtils::InFastFormat(harness.renderer(), nullptr));
  TSurfacePtr keyed = picture(SDL_PIXELFORMAT_RGB24, 2, 1);
  SDL_SetColorKey(keyed.get(), SDL_TRUE, 0);
  keyed.reset(MyUtils::InFastFormat(harness.renderer(), keyed.release()));
  EXPECT_EQ(SDL_PIXELFORMAT_ABGR8888, keyed->format->format);
  EXPECT_EQ(0, colour(keyed, 1, 0).a);
}

TEST_F(PictureFormat, AConvertedPictureIsBlendedAsBefore) {
  for (const SDL_BlendMode mode : {SDL_BLENDMODE_NONE, SDL_BLENDMODE_BLEND, SDL_BLENDMODE_ADD}) {
    TSurfacePtr source = picture(SDL_PIXELFORMAT_RGBA8888, 2, 2);
    SDL_SetSurfaceBlendMode(source.get(), mode);
    source.reset(MyUtils::InFastFormat(harness.renderer(), source.release()));
    ASSERT_EQ(SDL_PIXELFORMAT_ABGR8888, source->format->format);
    SDL_BlendMode found = SDL_BLENDMODE_INVALID;
    SDL_GetTextureBlendMode(MyUtils::TextureOf(harness.renderer(), source.get()).get(), &found);
    EXPECT_EQ(mode, found);
  }
}

TEST_F(PictureFormat, OpacityIsLookedForOnce) {
  for (const Uint32 format : {SDL_PIXELFORMAT_ARGB8888, SDL_PIXELFORMAT_RGBA8888}) {
    TSurfacePtr full = picture(format, 2, 2);
    SDL_FillRect(full.get(), nullptr, SDL_MapRGBA(full->format, 1, 2, 3, 255));
    full.reset(MyUtils::InFastFormat(harness.renderer(), full.release()));
    SDL_FillRect(full.get(), nullptr, 0);  // against its contract, to see that nobody looks again
    EXPECT_TRUE(isOpaque(MyUtils::TextureOf(harness.renderer(), full.get()).get()))
      << SDL_GetPixelFormatName(format);
  }
}

TEST_F(PictureFormat, ATextureKnowsThatItsPictureIsOpaque) {
  const TSurfacePtr full = picture(SDL_PIXELFORMAT_ARGB8888, 2, 2);
  EXPECT_FALSE(isOpaque(MyUtils::TextureOf(harness.renderer(), full.get()).get()));
  SDL_FillRect(full.get(), nullptr, 0xff123456);
  const TTexturePtr texture = MyUtils::TextureOf(harness.renderer(), full.get());
  EXPECT_TRUE(isOpaque(texture.get()));
  EXPECT_EQ(nullptr, MyUtils::TextureOf(harness.renderer(), nullptr));
  EXPECT_FALSE(isOpaque(nullptr));
  markOpaque(nullptr);
}

TEST_F(PictureFormat, ThatIsTheLowestBitAndTheOthersAreNotTouched) {
  SDL_Texture* const texture = harness.makeTexture(2, 2, {1, 2, 3, 4});
  SDL_SetTextureUserData(texture, reinterpret_cast<void*>(std::uintptr_t{0xab000}));
  EXPECT_FALSE(isOpaque(texture));
  markOpaque(texture);
  EXPECT_TRUE(isOpaque(texture));
  EXPECT_EQ(std::uintptr_t{0xab001}, reinterpret_cast<std::uintptr_t>(SDL_GetTextureUserData(texture)));
}

TEST_F(PictureFormat, ALoadedPictureKnowsToo) {
  const std::string folder = testfont::freshFolder("PictureFormat");
  testfont::writePicture(folder + "full.png", 9, 7, {10, 20, 30, 255});
  testfont::writePicture(folder + "glass.png", 9, 7, {10, 20, 30, 128});
  for (const bool card : {false, true}) {
    accelerated = card;
    EXPECT_TRUE(isOpaque(TTexturePtr(MyUtils::LoadTexture(harness.renderer(), folder + "full.png")).get()));
    EXPECT_FALSE(isOpaque(TTexturePtr(MyUtils::LoadTexture(harness.renderer(), folder + "glass.png")).get()));
  }
}

TEST_F(PictureFormat, ALargePicturesTextureHasItsPixelsWithTheSoftwareDriver) {
  for (const Uint32 format : {SDL_PIXELFORMAT_ABGR8888, SDL_PIXELFORMAT_ARGB8888, SDL_PIXELFORMAT_RGB888}) {
    const TSurfacePtr made = noise(format, 150, 100, 5);
    SDL_SetSurfaceBlendMode(made.get(), SDL_BLENDMODE_ADD);
    const TTexturePtr texture = MyUtils::TextureOf(harness.renderer(), made.get());
    SDL_BlendMode mode = SDL_BLENDMODE_NONE;
    SDL_GetTextureBlendMode(texture.get(), &mode);
    EXPECT_EQ(SDL_BLENDMODE_ADD, mode);
    const SDL_Rect part{7, 9, 120, 80};
    const TTexturePixels pixels(texture.get(), part);
    ASSERT_TRUE(pixels);
    EXPECT_EQ(format, pixels.format());
    for (int y = 0; y < part.h; ++y)
      ASSERT_TRUE(std::equal(pixels.row(y), pixels.row(y) + part.w, &pixel(made, part.x, part.y + y))) << y;
  }
}

TEST_F(PictureFormat, OtherTexturesHaveNone) {
  const auto hasPixels = [this](const TSurfacePtr& made) {
    const TTexturePtr texture = MyUtils::TextureOf(harness.renderer(), made.get());
    return static_cast<bool>(TTexturePixels(texture.get(), {0, 0, made->w, made->h}));
  };
  const TSurfacePtr large = noise(SDL_PIXELFORMAT_ARGB8888, 64, 64, 1);
  EXPECT_TRUE(hasPixels(large));
  EXPECT_FALSE(hasPixels(noise(SDL_PIXELFORMAT_ARGB8888, 64, 63, 1)));
  EXPECT_FALSE(hasPixels(noise(SDL_PIXELFORMAT_RGBA8888, 64, 64, 1)));
  const TSurfacePtr keyed = noise(SDL_PIXELFORMAT_RGB888, 64, 64, 1);
  SDL_SetColorKey(keyed.get(), SDL_TRUE, 0xff00ff);
  EXPECT_FALSE(hasPixels(keyed));
  EXPECT_FALSE(TTexturePixels(MyUtils::LayerOf(harness.renderer(), large.get()).get(), {0, 0, 64, 64}));
  accelerated = true;
  EXPECT_FALSE(hasPixels(large));
}

TEST_F(PictureFormat, LayersAreWhatTheDriverIsFastWith) {
  const TSurfacePtr drawn = noise(MyUtils::kDrawnFormat, 256, 4, 1);
  for (const Uint32 expected : {SDL_PIXELFORMAT_ABGR8888, SDL_PIXELFORMAT_RGBA8888}) {
    accelerated = expected == SDL_PIXELFORMAT_RGBA8888;
    const TTexturePtr empty(TAppGuiModule::CreateLayer(nullptr, 4, 4, 0, 0, 0, 0, 16));
    const TTexturePtr full = MyUtils::LayerOf(harness.renderer(), drawn.get());
    for (SDL_Texture* layer : {empty.get(), full.get()}) {
      Uint32 format = 0;
      int access = 0;
      SDL_BlendMode mode = SDL_BLENDMODE_NONE;
      SDL_QueryTexture(layer, &format, &access, nullptr, nullptr);
      SDL_GetTextureBlendMode(layer, &mode);
      EXPECT_EQ(expected, format);
      EXPECT_EQ(SDL_TEXTUREACCESS_TARGET, access);
      EXPECT_EQ(SDL_BLENDMODE_BLEND, mode);
    }
    const TSurfacePtr read = picture(SDL_PIXELFORMAT_ARGB8888, 256, 4);
    SDL_SetRenderTarget(harness.renderer(), full.get());
    SDL_RenderReadPixels(harness.renderer(), nullptr, SDL_PIXELFORMAT_ARGB8888, read->pixels, read->pitch);
    SDL_SetRenderTarget(harness.renderer(), nullptr);
    EXPECT_EQ(0, largestDifference(drawn, read));
  }
  EXPECT_EQ(nullptr, MyUtils::LayerOf(harness.renderer(), nullptr));
}

// What a text goes through: blended into an empty layer, and with that onto the screen.
TEST_F(PictureFormat, ALayerOnTheScreenIsWithinOneStepOfTheExactOne) {
  const TSurfacePtr glyph = picture(MyUtils::kDrawnFormat, 256, 256);
  for (int y = 0; y < 256; ++y)
    for (int x = 0; x < 256; ++x) {
      const auto value = static_cast<Uint8>(x);
      pixel(glyph, x, y) = SDL_MapRGBA(glyph->format, value, value, value, static_cast<Uint8>(y));
    }
  const TSurfacePtr layer(TAppGuiModule::CreateLayerSurface(256, 256, 0, 0, 0));
  MyUtils::BlendInto(layer.get(), 0, 0, glyph.get(), {0, 0, 256, 256});
  const TTexturePtr texture = MyUtils::LayerOf(harness.renderer(), layer.get());
  for (int ground = 0; ground < 256; ground += 5) {
    const auto grey = static_cast<Uint8>(ground);
    harness.setBackdrop({grey, grey, grey, 255});
    harness.frame();
    SDL_RenderCopy(harness.renderer(), texture.get(), nullptr, nullptr);
    SDL_RenderFlush(harness.renderer());
    int largest = 0;
    for (int a = 0; a < 256; ++a)
      for (int c = 0; c < 256; ++c) {
        const int exact = (c * a / 255 - ground) * a / 255 + ground;
        largest = std::max(largest, std::abs(exact - static_cast<int>(harness.pixel(c, a) & 255)));
      }
    ASSERT_LE(largest, 1) << "on " << ground;
  }
}
