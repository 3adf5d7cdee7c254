#include "vendelo-sdl2/TextureContent.h"

#include <gtest/gtest.h>

#include "tests/support/WidgetHarness.h"
#include "vendelo-sdl2/PictureFormat.h"

using namespace vendelo_sdl2;
using MyUtils::TSurfacePtr;

namespace {

// A picture of one colour in the rows told, and of nothing elsewhere.
TSurfacePtr rows(Uint32 format, int h, int top, int end, Uint8 alpha = 100) {
  TSurfacePtr picture(SDL_CreateRGBSurfaceWithFormat(0, 7, h, 32, format));
  SDL_FillRect(picture.get(), nullptr, SDL_MapRGBA(picture->format, 9, 8, 7, 0));
  const SDL_Rect ink{3, top, 1, end - top};  // one pixel in a row is ink
  SDL_FillRect(picture.get(), &ink, SDL_MapRGBA(picture->format, 200, 100, 50, alpha));
  return picture;
}

class TextureContent : public testing::Test {
 protected:
  WidgetHarness harness{16, 16};
};

}  // namespace

// No row with ink is ever left out, and not much more than those is told.
TEST_F(TextureContent, RowsWithInkAreToldToA32ndOfTheHeight) {
  for (const int height : {1, 2, 7, 31, 32, 33, 91, 1000, 16384})
    for (int top = 0; top < height; top += 1 + height / 40)
      for (int end = top + 1; end <= height; end += 1 + height / 30) {
        const TInk ink = inkOf(inkBits({top, end}, height), height);
        const int step = height / 32 + 1;
        ASSERT_LE(ink.top, top) << height;
        ASSERT_GE(ink.end, end) << height;
        ASSERT_LE(top - ink.top, step) << height;
        ASSERT_LE(ink.end - end, step) << height;
      }
}

TEST_F(TextureContent, NoFactMeansInkEverywhere) {
  const TInk ink = inkOf(freshContent(), 50);
  EXPECT_EQ(0, ink.top);
  EXPECT_EQ(50, ink.end);
  EXPECT_FALSE(isOpaque(freshContent()));
}

TEST_F(TextureContent, NoInkAtAll) {
  for (const int height : {1, 40, 999}) {
    EXPECT_TRUE(inkOf(inkBits({5, 5}, height), height).isNone());
    EXPECT_TRUE(inkOf(kNoInk, height).isNone());
  }
}

TEST_F(TextureContent, ANumberIsNeverThatOfOtherFacts) {
  const uint64_t first = freshContent(), second = freshContent();
  EXPECT_NE(first | kFactBits, second);
  EXPECT_EQ(0u, first & kFactBits);
}

TEST_F(TextureContent, ACopysInkLiesInItsDestination) {
  const uint64_t content = inkBits({8, 24}, 32);
  const struct {
    SDL_Rect source, destination, ink;
  } copies[] = {
    {{0, 0, 9, 32}, {5, 100, 9, 32}, {5, 108, 9, 16}},
    {{0, 10, 9, 10}, {5, 100, 9, 10}, {5, 100, 9, 10}},
    {{0, 20, 9, 12}, {5, -3, 9, 12}, {5, -3, 9, 4}},
    {{0, 0, 9, 8}, {5, 100, 9, 8}, {5, 100, 0, 0}},
    {{0, 24, 9, 8}, {5, 100, 9, 8}, {5, 100, 0, 0}},
    // Scaled: some rows more, for how drivers interpolate and round.
    {{0, 0, 9, 32}, {5, 100, 9, 128}, {5, 126, 9, 76}},
    {{0, 0, 9, 32}, {5, 100, 9, 16}, {5, 102, 9, 12}},
  };
  for (const auto& copy : copies) {
    const SDL_Rect ink = inkOfCopy(content, 32, copy.source, copy.destination);
    EXPECT_TRUE(SDL_RectEquals(&copy.ink, &ink)) << ink.x << "," << ink.y << " " << ink.w << "x" << ink.h;
  }
}

TEST_F(TextureContent, PicturesTellTheirInk) {
  for (const Uint32 format : {SDL_PIXELFORMAT_ABGR8888, SDL_PIXELFORMAT_ARGB8888, SDL_PIXELFORMAT_RGBA8888})
    for (const Uint8 alpha : {1, 255}) {
      const TSurfacePtr picture = rows(format, 64, 20, 41, alpha);
      const TTexturePtr texture = MyUtils::TextureOf(harness.renderer(), picture.get());
      const TInk ink = inkOf(contentOf(texture.get()), 64);
      EXPECT_EQ(20, ink.top);
      EXPECT_EQ(42, ink.end) << "in steps of two";
    }
  const TSurfacePtr nothing = rows(SDL_PIXELFORMAT_ABGR8888, 64, 20, 20);
  EXPECT_TRUE(inkOf(contentOf(MyUtils::LayerOf(harness.renderer(), nothing.get()).get()), 64).isNone());
  const TSurfacePtr drawn = rows(MyUtils::kDrawnFormat, 64, 20, 41);
  const TTexturePtr layer = MyUtils::LayerOf(harness.renderer(), drawn.get());
  EXPECT_EQ(20, inkOf(contentOf(layer.get()), 64).top);
  const TSurfacePtr plain(SDL_CreateRGBSurfaceWithFormat(0, 7, 64, 32, SDL_PIXELFORMAT_RGB888));
  const TTexturePtr full = MyUtils::TextureOf(harness.renderer(), plain.get());
  EXPECT_EQ(0, inkOf(contentOf(full.get()), 64).top);
  EXPECT_EQ(64, inkOf(contentOf(full.get()), 64).end);
}

TEST_F(TextureContent, RowsWithoutInkAreLeftOutWhereTheyChangeNothing) {
  const TSurfacePtr picture = rows(SDL_PIXELFORMAT_ABGR8888, 64, 20, 42);
  const TTexturePtr texture = MyUtils::TextureOf(harness.renderer(), picture.get());
  const struct {
    const char* what;
    SDL_BlendMode blend;
    SDL_Rect source, destination;
    bool cut;
  } copies[] = {
    {"blended", SDL_BLENDMODE_BLEND, {0, 0, 7, 64}, {3, 10, 7, 64}, true},
    {"added", SDL_BLENDMODE_ADD, {0, 0, 7, 64}, {3, 10, 7, 64}, true},
    {"multiplied", SDL_BLENDMODE_MOD, {0, 0, 7, 64}, {3, 10, 7, 64}, false},
    {"as it is", SDL_BLENDMODE_NONE, {0, 0, 7, 64}, {3, 10, 7, 64}, false},
    {"scaled", SDL_BLENDMODE_BLEND, {0, 0, 7, 64}, {3, 10, 7, 65}, false},
    {"scaled across", SDL_BLENDMODE_BLEND, {0, 0, 7, 64}, {3, 10, 8, 64}, false},
    {"beyond the picture", SDL_BLENDMODE_BLEND, {0, 1, 7, 64}, {3, 10, 7, 64}, false},
  };
  for (const auto& copy : copies) {
    SDL_SetTextureBlendMode(texture.get(), copy.blend);
    SDL_Rect source = copy.source, destination = copy.destination;
    EXPECT_TRUE(keepInk(texture.get(), source, destination));
    EXPECT_EQ(copy.cut ? 30 : copy.destination.y, destination.y) << copy.what;
    EXPECT_EQ(copy.cut ? 22 : copy.destination.h, destination.h) << copy.what;
    EXPECT_EQ(copy.cut ? 20 : copy.source.y, source.y) << copy.what;
    EXPECT_EQ(copy.cut ? 22 : copy.source.h, source.h) << copy.what;
    EXPECT_EQ(3, destination.x);
  }
  SDL_SetTextureBlendMode(texture.get(), SDL_BLENDMODE_BLEND);
  SDL_Rect source{0, 50, 7, 10}, destination{3, 10, 7, 10};
  EXPECT_FALSE(keepInk(texture.get(), source, destination)) << "nothing is left of it";
}
