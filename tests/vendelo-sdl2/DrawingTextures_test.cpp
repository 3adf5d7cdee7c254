// How many textures there are, and how much memory they take.
#include <gtest/gtest.h>

#include "tests/support/WidgetHarness.h"
#include "vendelo-sdl2/Drawing.h"
#include "vendelo-sdl2/TFramePicture.h"
#include "vendelo-sdl2/TTexturePtr.h"

using namespace vendelo_sdl2;

namespace {

class DrawingTextures : public testing::Test {
 protected:
  // Since the test began.
  long count() const { return drawing::Textures().count - mBefore.count; }
  int64_t bytes() const { return drawing::Textures().bytes - mBefore.bytes; }
  TTexturePtr make(Uint32 format, int width, int height) {
    return TTexturePtr(drawing::Create(renderer, format, SDL_TEXTUREACCESS_TARGET, width, height));
  }

  WidgetHarness harness{8, 8};
  SDL_Renderer* renderer = harness.renderer();

 private:
  const drawing::TTextures mBefore = drawing::Textures();
};

TEST_F(DrawingTextures, CountFromTheirMakingToTheirEndByTheBytesOfTheirPixels) {
  TTexturePtr wide = make(SDL_PIXELFORMAT_ARGB8888, 30, 7);
  ASSERT_TRUE(wide);
  EXPECT_EQ(count(), 1);
  EXPECT_EQ(bytes(), 30 * 7 * 4);
  TTexturePtr narrow = make(SDL_PIXELFORMAT_RGB565, 11, 3);
  ASSERT_TRUE(narrow);
  EXPECT_EQ(count(), 2);
  EXPECT_EQ(bytes(), 30 * 7 * 4 + 11 * 3 * 2);
  wide.reset();
  EXPECT_EQ(count(), 1);
  EXPECT_EQ(bytes(), 11 * 3 * 2);
  narrow.reset();
  EXPECT_EQ(count(), 0);
  EXPECT_EQ(bytes(), 0);
}

TEST_F(DrawingTextures, ThoseOfPicturesCountToo) {
  SDL_Surface* const picture = SDL_CreateRGBSurfaceWithFormat(0, 5, 9, 32, SDL_PIXELFORMAT_ARGB8888);
  const TTexturePtr texture(drawing::CreateFromSurface(renderer, picture));
  SDL_FreeSurface(picture);
  ASSERT_TRUE(texture);
  EXPECT_EQ(count(), 1);
  EXPECT_EQ(bytes(), 5 * 9 * 4);
}

TEST_F(DrawingTextures, WhatCouldNotBeMadeOrIsNoneDoesNotCount) {
  EXPECT_FALSE(make(SDL_PIXELFORMAT_ARGB8888, 0, 5));
  EXPECT_EQ(drawing::CreateFromSurface(renderer, nullptr), nullptr);
  drawing::Destroy(nullptr);
  EXPECT_EQ(count(), 0);
  EXPECT_EQ(bytes(), 0);
}

TEST_F(DrawingTextures, OneThatTheFrameStillNeedsCountsUntilTheFrameIsDone) {
  const TTexturePtr back = make(SDL_PIXELFORMAT_ARGB8888, 8, 8);
  TFramePicture picture;
  picture.begin(renderer, back.get());
  TTexturePtr passing = make(SDL_PIXELFORMAT_ARGB8888, 4, 4);
  drawing::Copy(renderer, passing.get(), nullptr, nullptr);
  passing.reset();
  EXPECT_EQ(count(), 2);
  picture.finish(false);
  EXPECT_EQ(count(), 1);
  EXPECT_EQ(bytes(), 8 * 8 * 4);
  picture.end();
}

}  // namespace
