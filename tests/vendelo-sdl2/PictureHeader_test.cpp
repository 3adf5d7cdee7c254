#include "vendelo-sdl2/PictureHeader.h"

#include <SDL_image.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <algorithm>
#include <fstream>
#include <string>

#include "tests/support/TestFont.h"
#include "vendelo-sdl2/MyUtils.h"

namespace {

using namespace std::string_literals;

std::string bytes(unsigned long value, int count) {
  std::string out;
  for (int i = count - 1; i >= 0; --i) out += static_cast<char>(value >> (8 * i));
  return out;
}

// What a decoder sees of a PNG before its pixels; the check sum is not looked at.
std::string png(unsigned long width, unsigned long height, int depth, int type) {
  return "\x89PNG\r\n\x1a\n\0\0\0\rIHDR"s + bytes(width, 4) + bytes(height, 4) + static_cast<char>(depth) +
         static_cast<char>(type) + "\0\0\0"s + "sum.";
}

// A JPEG whose frame header stands behind a segment of the application's and a table.
std::string jpeg(unsigned long width, unsigned long height, int frame) {
  return "\xff\xd8\xff\xe0"s + bytes(16, 2) + std::string(14, 'J') + "\xff\xc4"s + bytes(5, 2) + "\xff\xc0\1" +
         "\xff"s + static_cast<char>(frame) + bytes(17, 2) + '\x8' + bytes(height, 2) + bytes(width, 2) +
         std::string(10, '\1');
}

class PictureHeader : public testing::Test {
 protected:
  // The header's answer for a file of that length, filled up with zeros.
  bool tooMany(const std::string& head, size_t length) {
    testfont::writeText(folder + "picture", head + std::string(length - std::min(length, head.size()), '\0'));
    return MyUtils::PromisesTooManyPixels(folder + "picture");
  }
  const std::string folder = testfont::freshFolder("PictureHeader");
};

TEST_F(PictureHeader, NeverSoManyThatNoRendererDrawsThem) {
  EXPECT_TRUE(tooMany(png(46341, 46341, 8, 6), 20000000));
  EXPECT_TRUE(tooMany(png(16385, 16384, 8, 2), 20000000));
  EXPECT_TRUE(tooMany(png(2147483647, 2147483647, 16, 6), 20000000));
  EXPECT_TRUE(tooMany(png(4294967295, 4294967295, 255, 255), 20000000));
  EXPECT_TRUE(tooMany(png(4294967295, 4294967295, 8, 6).substr(0, 26), 26)) << "all that is asked for is there";
  EXPECT_FALSE(tooMany(png(4294967295, 4294967295, 8, 6).substr(0, 25), 25));
  EXPECT_TRUE(tooMany(jpeg(65535, 65535, 0xc0), 20000000));
  EXPECT_TRUE(tooMany(jpeg(65535, 65535, 0xc9), 20000000)) << "however it is coded";
  EXPECT_FALSE(tooMany(png(16384, 16384, 8, 6), 20000000));
}

TEST_F(PictureHeader, NotMoreThanTheFileCanHold) {
  const struct {
    const char* name;
    std::string head;
    size_t least;  // length of the file from which on it can
  } rows[] = {{"four bytes a pixel", png(8192, 8192, 8, 6), 260096},
              {"one bit", png(8192, 8192, 1, 0), 8128},
              {"a palette", png(8192, 8192, 8, 3), 65024},
              {"six bytes", png(8192, 8192, 16, 2), 390144},
              {"a baseline JPEG", jpeg(8192, 8192, 0xc0), 32768},
              {"a progressive one", jpeg(8192, 8192, 0xc2), 32768},
              {"one coded arithmetically", jpeg(8192, 8192, 0xc9), 100}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    EXPECT_FALSE(tooMany(row.head, row.least));
    EXPECT_EQ(row.least > 100, tooMany(row.head, std::max<size_t>(row.least, 400) - 300));
  }
}

TEST_F(PictureHeader, OrdinarySizesAreLeftToTheDecoder) {
  EXPECT_FALSE(tooMany(png(1920, 1080, 8, 6), 100)) << "cut off";
  EXPECT_FALSE(tooMany(jpeg(4096, 4096, 0xc0), 100)) << "cut off, and drawn as far as it goes";
  EXPECT_FALSE(tooMany(png(0, 0, 0, 0), 100));
}

TEST_F(PictureHeader, WhatIsNoPictureIsLeftToTheDecoder) {
  const std::string wide = jpeg(65535, 65535, 0xc0);
  EXPECT_FALSE(tooMany("\xff\xd8\xff\xda"s + bytes(8, 2) + "scan.." + wide.substr(2), 20000000))
    << "behind the pixels there is no header any more";
  for (const std::string& file : {""s, "\x89PNG\r\n\x1a\n"s, "no picture at all"s, "\xff\xd8"s,
                                  "\xff\xd8\xff\xe0\0\0\0\0\0\0\0\0"s, "\xff\xd8\xff\xda"s + wide.substr(2),
                                  wide.substr(0, 33), "GIF89a\xff\xff\xff\xff"s + std::string(50, '\0')})
    EXPECT_FALSE(tooMany(file, file.size())) << file;
  EXPECT_FALSE(MyUtils::PromisesTooManyPixels(folder + "nothing"));
  EXPECT_FALSE(MyUtils::PromisesTooManyPixels(folder));
  ASSERT_EQ(0, mkfifo((folder + "pipe").c_str(), 0600));
  EXPECT_FALSE(MyUtils::PromisesTooManyPixels(folder + "pipe")) << "and does not wait for a writer";
}

TEST_F(PictureHeader, TheLoadersAskItAndTryTheOtherExtensions) {
  testfont::writeText(folder + "logo.jpg", jpeg(65535, 65535, 0xc0));
  testfont::writePicture(folder + "logo.png", 3, 4, {1, 2, 3, 255});
  testing::internal::CaptureStdout();
  SDL_Surface* surface = MyUtils::LoadSurface(folder + "logo.jpg");
  const std::string told = testing::internal::GetCapturedStdout();
  ASSERT_NE(nullptr, surface);
  EXPECT_EQ(4, surface->h);
  SDL_FreeSurface(surface);
  EXPECT_EQ("\n******************* Tried to load image file " + folder + "logo.jpg, but loaded " + folder +
              "logo.png!!!\n\n",
            told);
}

// Drawn smaller by software, such a texture is read outside its memory.
TEST_F(PictureHeader, NoTextureIsLongerThanItsScalingCanCount) {
  SDL_Surface* picture = SDL_CreateRGBSurfaceWithFormat(0, 8, 8, 32, SDL_PIXELFORMAT_ARGB8888);
  SDL_Renderer* renderer = SDL_CreateSoftwareRenderer(picture);
  const struct {
    int w, h;
    bool loaded;
  } rows[] = {{32767, 1, true}, {32768, 1, false}, {1, 32767, true}, {1, 65500, false}};
  for (const auto& row : rows) {
    SCOPED_TRACE(std::to_string(row.w) + " by " + std::to_string(row.h));
    testfont::writePicture(folder + "long.png", row.w, row.h, {1, 2, 3, 255});
    testing::internal::CaptureStdout();
    SDL_Texture* texture = MyUtils::LoadTexture(renderer, folder + "long.png");
    const std::string told = testing::internal::GetCapturedStdout();
    EXPECT_EQ(row.loaded, texture != nullptr);
    EXPECT_EQ(row.loaded, told.empty());
    if (texture) SDL_DestroyTexture(texture);
    SDL_Surface* surface = MyUtils::LoadSurface(folder + "long.png");
    ASSERT_NE(nullptr, surface) << "as an atlas it is only cut";
    EXPECT_EQ(!row.loaded, MyUtils::IsTooLong(surface));
    SDL_FreeSurface(surface);
  }
  EXPECT_FALSE(MyUtils::IsTooLong(nullptr));
  SDL_DestroyRenderer(renderer);
  SDL_FreeSurface(picture);
}

}  // namespace
