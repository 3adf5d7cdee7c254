#include "vendelo-sdl2/FaultyFiles.h"

#include <gtest/gtest.h>
#include <filesystem>

#include "tests/support/TestApplication.h"
#include "vendelo-sdl2/MyUtils.h"

namespace {

// One order for all: what has been told stays told for the whole run.
class FaultyFiles : public testing::Test {
 protected:
  FaultyFiles() {
    char name[] = "/tmp/faultyXXXXXX";
    folder = mkdtemp(name);
    app.TLogManager::Init(folder + "/log.log", nullptr, nullptr, false);
  }
  ~FaultyFiles() override { std::filesystem::remove_all(folder); }
  std::string folder;
  TestApplication app;
};

TEST_F(FaultyFiles, EachIsToldOnceInTheLog) {
  const int before = MyUtils::FaultyFiles();
  MyUtils::TellFaultyFile("a.png is missing 100%s");
  MyUtils::TellFaultyFile("b.png is missing");
  MyUtils::TellFaultyFile("a.png is missing 100%s");
  EXPECT_EQ(app.log.count("4|a.png is missing 100%s"), 1);
  EXPECT_EQ(app.log.count("4|b.png is missing"), 1);
  EXPECT_EQ(MyUtils::FaultyFiles(), before + 2);
}

TEST_F(FaultyFiles, MissingPictureIsOneHoweverOftenItIsAskedFor) {
  const int before = MyUtils::FaultyFiles();
  testing::internal::CaptureStdout();
  for (int i = 0; i < 3; ++i) EXPECT_EQ(MyUtils::LoadSurface(folder + "/none.png"), nullptr);
  testing::internal::GetCapturedStdout();
  EXPECT_EQ(app.log.count("4|Unable to load image file " + folder + "/none"), 1);
  EXPECT_EQ(MyUtils::FaultyFiles(), before + 1);
}

TEST_F(FaultyFiles, PictureOfAnotherKindIsTold) {
  SDL_Surface* surface = SDL_CreateRGBSurfaceWithFormat(0, 2, 2, 32, SDL_PIXELFORMAT_ARGB8888);
  ASSERT_EQ(SDL_SaveBMP(surface, (folder + "/other.bmp").c_str()), 0);
  SDL_FreeSurface(surface);
  testing::internal::CaptureStdout();
  SDL_Surface* loaded = MyUtils::LoadSurface(folder + "/other.png");
  testing::internal::GetCapturedStdout();
  EXPECT_NE(loaded, nullptr);
  SDL_FreeSurface(loaded);
  EXPECT_EQ(
    app.log.count("4|Tried to load image file " + folder + "/other.png, but loaded " + folder + "/other.bmp"), 1);
}

// Last: nothing is told in this process behind it.
TEST_F(FaultyFiles, ZBehindAThousandNoMoreAreTold) {
  for (int i = 0; i < 1500; ++i) MyUtils::TellFaultyFile("file " + std::to_string(i));
  EXPECT_EQ(MyUtils::FaultyFiles(), 1000);
  EXPECT_EQ(app.log.count("4|file 0"), 1);
  EXPECT_EQ(app.log.count("4|file 1499"), 0);
}

}  // namespace
