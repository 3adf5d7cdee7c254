// Which files are asked for, with which renderer, and what is freed: the loaders and the two caches.
#include <SDL_image.h>
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <algorithm>
#include <cmath>
#include <functional>
#include <string>
#include <vector>

#include "tests/support/TestFont.h"
#include "vendelo-sdl2/MyUtils.h"
#include "vendelo-sdl2/MyUtilsImages.h"

namespace {

using Names = std::vector<std::string>;

Names asked;
SDL_Renderer* askedRenderer = nullptr;
Names freed;
const void *texture = nullptr, *surface = nullptr;  // those that `freed` names

template <class F>
F real(const char* name) {
  return reinterpret_cast<F>(dlsym(RTLD_NEXT, name));
}

}  // namespace

// Linked in front of the libraries'.
extern "C" {

SDL_Texture* SDL_CreateTextureFromSurface(SDL_Renderer* renderer, SDL_Surface* picture) {
  askedRenderer = renderer;
  static const auto sdl = real<decltype(&SDL_CreateTextureFromSurface)>("SDL_CreateTextureFromSurface");
  return sdl(renderer, picture);
}

SDL_Surface* IMG_Load(const char* file) {
  asked.emplace_back(file);
  static const auto img = real<decltype(&IMG_Load)>("IMG_Load");
  return img(file);
}

void SDL_DestroyTexture(SDL_Texture* which) {
  freed.push_back(which == texture ? "texture" : which ? "other texture" : "no texture");
  static const auto sdl = real<decltype(&SDL_DestroyTexture)>("SDL_DestroyTexture");
  sdl(which);
}

void SDL_FreeSurface(SDL_Surface* which) {
  freed.push_back(which == surface ? "surface" : which ? "other surface" : "no surface");
  static const auto sdl = real<decltype(&SDL_FreeSurface)>("SDL_FreeSurface");
  sdl(which);
}

}  // extern "C"

namespace {

class ImageCache : public testing::Test {
 protected:
  ImageCache() {
    target = SDL_CreateRGBSurfaceWithFormat(0, 4, 4, 32, SDL_PIXELFORMAT_ARGB8888);
    renderer = SDL_CreateSoftwareRenderer(target);
    MyUtils::SetImageDir(folder);
  }
  ~ImageCache() override {
    MyUtils::DestroyImages();
    MyUtils::SetImageDir("");
    SDL_DestroyRenderer(renderer);
    SDL_FreeSurface(target);
  }
  void write(const std::string& name) { testfont::writePicture(folder + name, 3, 2, {1, 2, 3, 255}); }
  static Names during(const std::function<void()>& action) {
    testing::internal::CaptureStdout();
    asked.clear();
    action();
    testing::internal::GetCapturedStdout();
    return asked;
  }
  Names nine(const std::string& name, const std::string& extension) const {
    Names all;
    for (const std::string& e :
         {extension, std::string(".png"), std::string(".jpg"), std::string(".jpeg"), std::string(".webp"),
          std::string(".tiff"), std::string(".gif"), std::string(".exif"), std::string(".bmp")})
      all.push_back(folder + name + e);
    return all;
  }

  const std::string folder = testfont::freshFolder("ImageCache");
  SDL_Surface* target;
  SDL_Renderer* renderer;
};

TEST_F(ImageCache, AMissingPictureIsLookedForUnderNineNamesEachTime) {
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ(nine("logo", ".png"), during([&] { EXPECT_EQ(nullptr, MyUtils::GetTexture(renderer, "logo.png")); }));
    EXPECT_EQ(nine("logo", ".png"), during([&] { EXPECT_EQ(nullptr, MyUtils::GetSurface("logo.png")); }));
  }
  EXPECT_EQ(nine("logo", ".tga"), during([&] { EXPECT_EQ(nullptr, MyUtils::LoadSurface(folder + "logo.tga")); }));
  EXPECT_EQ(nine("logo", ""), during([&] { EXPECT_EQ(nullptr, MyUtils::LoadTexture(renderer, folder + "logo")); }));
}

TEST_F(ImageCache, TheSearchEndsWithTheFirstThatLoads) {
  write("logo.jpeg");
  write("logo.bmp");
  const Names files = during([&] { EXPECT_NE(nullptr, MyUtils::GetTexture(renderer, "logo.gif")); });
  EXPECT_EQ((Names{folder + "logo.gif", folder + "logo.png", folder + "logo.jpg", folder + "logo.jpeg"}), files);
  EXPECT_TRUE(during([&] { EXPECT_NE(nullptr, MyUtils::GetTexture(renderer, "logo.gif")); }).empty());
  EXPECT_EQ((Names{folder + "logo.bmp"}),
            during([&] { EXPECT_NE(nullptr, MyUtils::GetTexture(renderer, "logo.bmp")); }));
}

TEST_F(ImageCache, TheDirectoryIsPutInFrontAsItStands) {
  write("skin_a.png");
  MyUtils::SetImageDir(folder + "skin_");
  EXPECT_EQ((Names{folder + "skin_a.png"}), during([] { EXPECT_NE(nullptr, MyUtils::GetSurface("a.png")); }));
  // What is not cached takes the path as it is given.
  EXPECT_EQ((Names{folder + "skin_a.png"}),
            during([&] { SDL_FreeSurface(MyUtils::LoadSurface(folder + "skin_a.png")); }));
}

TEST_F(ImageCache, WhatIsNotCachedIsNewEachTime) {
  write("a.png");
  SDL_Surface* one = MyUtils::LoadSurface(folder + "a.png");
  SDL_Surface* two = MyUtils::LoadSurface(folder + "a.png");
  EXPECT_NE(one, two);
  EXPECT_NE(one, MyUtils::GetSurface("a.png"));
  SDL_FreeSurface(one);
  SDL_FreeSurface(two);
  SDL_Texture* first = MyUtils::LoadTexture(renderer, folder + "a.png");
  EXPECT_NE(first, MyUtils::GetTexture(renderer, "a.png"));
  SDL_DestroyTexture(first);
}

TEST_F(ImageCache, TheRendererOfTheLatestRequestMakesTheTexture) {
  write("a.png");
  write("b.png");
  SDL_Surface* otherTarget = SDL_CreateRGBSurfaceWithFormat(0, 4, 4, 32, SDL_PIXELFORMAT_ARGB8888);
  SDL_Renderer* other = SDL_CreateSoftwareRenderer(otherTarget);
  SDL_Texture* a = nullptr;
  during([&] { a = MyUtils::GetTexture(renderer, "a.png"); });
  EXPECT_EQ(renderer, askedRenderer);
  during([&] { MyUtils::GetTexture(other, "b.png"); });
  EXPECT_EQ(other, askedRenderer);
  EXPECT_EQ(a, MyUtils::GetTexture(other, "a.png"));  // whoever asks
  MyUtils::DestroyImages();
  SDL_DestroyRenderer(other);
  SDL_FreeSurface(otherTarget);
}

TEST_F(ImageCache, DestroyingFreesSurfacesAndThenTextures) {
  write("a.png");
  write("b.png");
  texture = MyUtils::GetTexture(renderer, "a.png");
  surface = MyUtils::GetSurface("a.png");
  during([&] {
    MyUtils::GetTexture(renderer, "missing");
    MyUtils::GetSurface("missing");
  });
  MyUtils::GetTexture(renderer, "b.png");
  MyUtils::GetSurface("b.png");
  freed.clear();
  MyUtils::DestroyImages();
  EXPECT_EQ((Names{"surface", "other surface", "no surface", "texture", "other texture"}), freed);
  freed.clear();
  MyUtils::DestroyImages();
  EXPECT_TRUE(freed.empty());
}

// The formula of a colour's grey, for every eighth step of each colour and the darkest ones.
TEST(Grayscale, IsTheLuminanceWithTheCurveOfTheScreen) {
  std::vector<Uint32> colours;
  for (Uint32 r = 0; r < 256; r += 8)
    for (Uint32 g = 0; g < 256; g += 8)
      for (Uint32 b = 0; b < 256; b += 8) colours.push_back(0x80000000 | r << 16 | g << 8 | b);
  for (Uint32 r = 0; r < 8; ++r)
    for (Uint32 g = 0; g < 4; ++g)
      for (Uint32 b = 0; b < 16; ++b) colours.push_back(0x80000000 | r << 16 | g << 8 | b);
  const int count = static_cast<int>(colours.size());
  SDL_Surface* row = SDL_CreateRGBSurfaceWithFormat(0, count, 1, 32, SDL_PIXELFORMAT_ARGB8888);
  auto* pixels = static_cast<Uint32*>(row->pixels);
  std::copy(colours.begin(), colours.end(), pixels);
  MyUtils::SDL_ConvertToGrayscale(row);
  for (int i = 0; i < count; ++i) {
    const Uint32 c = colours[static_cast<size_t>(i)];
    const double linear = (0.2126 * (c >> 16 & 255) + 0.7152 * (c >> 8 & 255) + 0.0722 * (c & 255)) / 255;
    const double grey = linear > 0.0031308 ? 1.055 * std::pow(linear, 1 / 2.4) - 0.055 : 12.92 * linear;
    const Uint32 level = pixels[i] & 255;
    ASSERT_EQ(0x80000000 | level << 16 | level << 8 | level, pixels[i]);
    // Beside the border between two levels either may come out.
    ASSERT_NEAR(grey * 255, level, 0.5 + 1e-9) << std::hex << c;
  }
  SDL_FreeSurface(row);
}

}  // namespace
