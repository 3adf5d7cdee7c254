#include "vendelo-sdl2/TDirtyRects.h"

#include <gtest/gtest.h>
#include <cstdint>
#include <limits>
#include <random>
#include <vector>

using namespace vendelo_sdl2;

namespace {

constexpr SDL_Rect kScreen{0, 0, 1920, 1080};

std::vector<SDL_Rect> after(const std::vector<SDL_Rect>& added) {
  TDirtyRects dirty;
  dirty.reset(kScreen);
  for (const SDL_Rect& rect : added) dirty.add(rect);
  return dirty.rects();
}

bool same(const SDL_Rect& a, const SDL_Rect& b) { return SDL_RectEquals(&a, &b); }

TEST(DirtyRects, WhatLiesFarApartStaysApart) {
  const auto rects = after({{10, 10, 40, 40}, {1500, 900, 40, 40}});
  ASSERT_EQ(2u, rects.size());
  EXPECT_TRUE(same({10, 10, 40, 40}, rects[0]));
  EXPECT_TRUE(same({1500, 900, 40, 40}, rects[1]));
}

TEST(DirtyRects, NeighboursBecomeOne) {
  const auto rects = after({{100, 100, 60, 90}, {160, 100, 60, 90}, {224, 100, 60, 90}});
  ASSERT_EQ(1u, rects.size());
  EXPECT_TRUE(same({100, 100, 184, 90}, rects[0]));
}

TEST(DirtyRects, AThirdOneMayJoinTwoThatWereTooFarApart) {
  const auto rects = after({{100, 100, 300, 300}, {600, 100, 300, 300}, {380, 100, 240, 300}});
  ASSERT_EQ(1u, rects.size());
  EXPECT_TRUE(same({100, 100, 800, 300}, rects[0]));
}

TEST(DirtyRects, NothingBeyondThePictureCounts) {
  EXPECT_TRUE(after({{-50, 0, 50, 50}, {1920, 0, 9, 9}, {0, 1080, 9, 9}, {5, 5, 0, 9}, {5, 5, 9, -3}}).empty());
  const auto cut = after({{-10, -20, 40, 50}});
  ASSERT_EQ(1u, cut.size());
  EXPECT_TRUE(same({0, 0, 30, 30}, cut[0]));
  constexpr int far = std::numeric_limits<int>::max();
  const auto huge = after({{1900, 1070, far, far}});
  ASSERT_EQ(1u, huge.size());
  EXPECT_TRUE(same({1900, 1070, 20, 10}, huge[0]));
}

TEST(DirtyRects, MostOfThePictureIsAllOfIt) {
  TDirtyRects dirty;
  dirty.reset(kScreen);
  dirty.add({0, 0, 1000, 1080});
  EXPECT_FALSE(dirty.isWhole());
  dirty.add({1400, 0, 500, 1080});
  ASSERT_TRUE(dirty.isWhole());
  EXPECT_TRUE(same(kScreen, dirty.rects()[0]));
  dirty.add({10, 10, 10, 10});
  EXPECT_TRUE(dirty.isWhole());
  dirty.reset(kScreen);
  EXPECT_TRUE(dirty.rects().empty());
}

// Whatever is added, each of its pixels lies in one of the rectangles, which stay few and within the picture.
TEST(DirtyRects, NoPixelIsLost) {
  std::mt19937 random(7);
  for (int round = 0; round < 300; ++round) {
    TDirtyRects dirty;
    dirty.reset(kScreen);
    std::vector<SDL_Rect> added;
    const auto number = [&random](int least, int most) {
      return std::uniform_int_distribution<int>(least, most)(random);
    };
    for (int i = number(1, 80); i > 0; --i) {
      added.push_back({number(-100, 1950), number(-100, 1100), number(0, 200), number(0, 150)});
      dirty.add(added.back());
    }
    EXPECT_LE(dirty.rects().size(), 24u);
    for (const SDL_Rect& rect : dirty.rects()) EXPECT_TRUE(contains(kScreen, rect));
    for (const SDL_Rect& rect : added) {
      const SDL_Rect seen = common(rect, kScreen);
      if (isEmpty(seen)) continue;
      bool held = false;
      for (const SDL_Rect& each : dirty.rects()) held = held || contains(each, seen);
      EXPECT_TRUE(held) << rect.x << ',' << rect.y << ' ' << rect.w << 'x' << rect.h;
    }
  }
}

}  // namespace
