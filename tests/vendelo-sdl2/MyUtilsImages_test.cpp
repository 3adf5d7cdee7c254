#include "vendelo-sdl2/MyUtilsImages.h"

#include <SDL_image.h>
#include <gtest/gtest.h>
#include <condition_variable>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <mutex>
#include <string>

#include "tests/support/TestFont.h"
#include "vendelo-sdl2/MyUtils.h"
#include "vendelo-sdl2/SystemSeams.h"

namespace {

namespace fs = std::filesystem;

std::string printed(const std::function<void()>& action) {
  testing::internal::CaptureStdout();
  action();
  return testing::internal::GetCapturedStdout();
}

std::string tried(const std::string& path, const std::string& loaded) {
  return "\n******************* Tried to load image file " + path + ", but loaded " + loaded + "!!!\n\n";
}

std::string unable(const std::string& filename) {
  return "\n******************* Unable to load image file " + filename + "!!!\n\n";
}

class Images : public testing::Test {
 protected:
  Images() {
    target = SDL_CreateRGBSurfaceWithFormat(0, 4, 4, 32, SDL_PIXELFORMAT_ARGB8888);
    renderer = SDL_CreateSoftwareRenderer(target);
  }
  ~Images() override {
    MyUtils::DestroyImages();
    MyUtils::SetImageDir("");
    SDL_DestroyRenderer(renderer);
    SDL_FreeSurface(target);
  }
  void write(const std::string& name, int width) {
    fs::create_directories(fs::path(folder + name).parent_path());
    testfont::writePicture(folder + name, width, 2, {1, 2, 3, 255});
  }
  int widthOf(const std::string& name) {
    SDL_Surface* surface = MyUtils::LoadSurface(folder + name);
    const int width = surface ? surface->w : 0;
    SDL_FreeSurface(surface);
    return width;
  }

  const std::string folder =
    testfont::freshFolder(std::string("Images_") + testing::UnitTest::GetInstance()->current_test_info()->name());
  SDL_Surface* target;
  SDL_Renderer* renderer;
};

TEST_F(Images, ThePathAsGivenComesFirst) {
  write("logo.png", 3);
  write("logo.bmp", 5);  // a PNG all the same: the content decides
  EXPECT_EQ("", printed([&] { EXPECT_EQ(5, widthOf("logo.bmp")); }));
  EXPECT_EQ("", printed([&] { EXPECT_EQ(3, widthOf("logo.png")); }));
}

TEST_F(Images, AWrongOrMissingExtensionFallsBack) {
  write("logo.png", 3);
  write("img/logo.png", 4);
  const struct {
    const char* name;
    const char* loaded;
    int width;
  } rows[] = {
    {"logo.jpg", "logo.png", 3},
    {"img/logo", "img/logo.png", 4},
    {"logo.", "logo.png", 3},
    {"logo.unknown", "logo.png", 3},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(tried(folder + row.name, folder + row.loaded),
              printed([&] { EXPECT_EQ(row.width, widthOf(row.name)); }));
  }
}

TEST_F(Images, ExtensionsAreTriedInTheirOrder) {
  const char* order[] = {".png", ".jpg", ".jpeg", ".webp", ".tiff", ".gif", ".exif", ".bmp"};
  for (int i = 7; i >= 0; --i) {
    write(std::string("logo") + order[i], i + 10);
    EXPECT_EQ(tried(folder + "logo", folder + "logo" + order[i]),
              printed([&] { EXPECT_EQ(i + 10, widthOf("logo")); }));
  }
}

TEST_F(Images, TheLastDotOfTheWholePathCounts) {
  write("dir.v2/logo.png", 3);
  write("dir.png", 6);
  EXPECT_EQ(tried(folder + "dir.v2/logo", folder + "dir.png"),
            printed([&] { EXPECT_EQ(6, widthOf("dir.v2/logo")); }));
}

TEST_F(Images, AFailureNamesTheFileWithoutItsExtension) {
  EXPECT_EQ(unable(folder + "logo"), printed([&] { EXPECT_EQ(0, widthOf("logo.png")); }));
  EXPECT_EQ(unable(folder + "logo"),
            printed([&] { EXPECT_EQ(nullptr, MyUtils::LoadTexture(renderer, folder + "logo.png")); }));
}

TEST_F(Images, TexturesFallBackAlike) {
  write("logo.png", 3);
  SDL_Texture* texture = nullptr;
  EXPECT_EQ(tried(folder + "logo.jpg", folder + "logo.png"),
            printed([&] { texture = MyUtils::LoadTexture(renderer, folder + "logo.jpg"); }));
  int w = 0;
  SDL_QueryTexture(texture, nullptr, nullptr, &w, nullptr);
  EXPECT_EQ(3, w);
  SDL_DestroyTexture(texture);
}

TEST_F(Images, CachesLookInTheImageDirectoryAndGiveTheSamePointer) {
  write("skin/a.png", 3);
  write("skin/b.png", 4);
  MyUtils::SetImageDir(folder + "skin/");
  EXPECT_EQ(folder + "skin/", MyUtils::ImageDir());
  SDL_Texture* a = MyUtils::GetTexture(renderer, "a.png");
  SDL_Texture* b = MyUtils::GetTexture(renderer, "b.png");
  ASSERT_NE(nullptr, a);
  ASSERT_NE(nullptr, b);
  EXPECT_NE(a, b);
  EXPECT_EQ(a, MyUtils::GetTexture(renderer, "a.png"));
  SDL_Surface* surface = MyUtils::GetSurface("a.png");
  ASSERT_NE(nullptr, surface);
  EXPECT_EQ(3, surface->w);
  EXPECT_EQ(surface, MyUtils::GetSurface("a.png"));
  EXPECT_NE(surface, MyUtils::GetSurface("b.png"));
}

TEST_F(Images, AMissingImageIsTriedAtEachRequest) {
  MyUtils::SetImageDir(folder);
  const std::string message = unable(folder + "logo");
  EXPECT_EQ(message, printed([&] { EXPECT_EQ(nullptr, MyUtils::GetTexture(renderer, "logo.png")); }));
  EXPECT_EQ(message, printed([&] { EXPECT_EQ(nullptr, MyUtils::GetTexture(renderer, "logo.png")); }));
  write("logo.gif", 3);
  EXPECT_NE("", printed([&] { EXPECT_NE(nullptr, MyUtils::GetTexture(renderer, "logo.png")); }));
  EXPECT_EQ("", printed([&] { EXPECT_NE(nullptr, MyUtils::GetTexture(renderer, "logo.png")); }));
}

TEST_F(Images, DestroyingEmptiesBothCaches) {
  write("a.png", 3);
  MyUtils::SetImageDir(folder);
  MyUtils::GetTexture(renderer, "a.png");
  MyUtils::GetSurface("a.png");
  printed([&] { MyUtils::GetSurface("missing"); });
  MyUtils::DestroyImages();
  fs::remove(folder + "a.png");
  printed([&] {
    EXPECT_EQ(nullptr, MyUtils::GetTexture(renderer, "a.png"));
    EXPECT_EQ(nullptr, MyUtils::GetSurface("a.png"));
  });
}

// ---- Files that are no pictures, or not the one that their name says

class BadImages : public Images {
 protected:
  std::string content(const std::string& name) {
    std::ifstream stream(folder + name, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
  }
  void writeBytes(const std::string& name, const std::string& bytes) { testfont::writeText(folder + name, bytes); }
};

TEST_F(BadImages, AreOneLineAndNull) {
  write("good.png", 7);
  const std::string png = content("good.png");
  const struct {
    const char* name;
    const char* file;
    std::string bytes;
  } rows[] = {
    {"0 bytes", "empty.png", ""},
    {"0 bytes of another kind", "empty2.bmp", ""},
    {"words", "words.png", "this is no picture"},
    {"words called a tga", "words2.tga", "this is no picture"},
    {"the signature alone", "signature.png", png.substr(0, 8)},
    {"cut in the head", "head.png", png.substr(0, 20)},
    {"cut in the pixels", "pixels.png", png.substr(0, png.find("IDAT") + 6)},
    {"a broken head", "broken.png", std::string(png).replace(png.find("IHDR") + 4, 4, "\xff\xff\xff\xff")},
    {"a picture called a tga", "png.tga", png},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    writeBytes(row.file, row.bytes);
    const std::string path = folder + row.file;
    const std::string line = unable(path.substr(0, path.rfind('.')));
    EXPECT_EQ(line, printed([&] { EXPECT_EQ(nullptr, MyUtils::LoadSurface(path)); }));
    EXPECT_EQ(line, printed([&] { EXPECT_EQ(nullptr, MyUtils::LoadTexture(renderer, path)); }));
  }
  fs::create_directories(folder + "folder.png");
  EXPECT_EQ(unable(folder + "folder"),
            printed([&] { EXPECT_EQ(nullptr, MyUtils::LoadSurface(folder + "folder.png")); }));
}

TEST_F(BadImages, AWrongExtensionIsReadByWhatTheFileIs) {
  write("good.png", 7);
  for (const char* name : {"a.jpg", "a.bmp", "a.gif", "a.xyz", "noextension"}) {
    SCOPED_TRACE(name);
    writeBytes(name, content("good.png"));
    EXPECT_EQ("", printed([&] { EXPECT_EQ(7, widthOf(name)); }));
  }
}

TEST_F(BadImages, AnEmptyFileGivesWayToOneOfAnotherExtension) {
  writeBytes("logo.jpg", "");
  write("logo.png", 9);
  EXPECT_EQ(tried(folder + "logo.jpg", folder + "logo.png"), printed([&] { EXPECT_EQ(9, widthOf("logo.jpg")); }));
}

TEST(Pixels, AreReadLittleEndian) {
  Uint8 bytes[] = {0x11, 0x22, 0x33, 0x44, 0x55};
  EXPECT_EQ(0x11u, MyUtils::GetPixel(bytes, 1));
  EXPECT_EQ(0x2211u, MyUtils::GetPixel(bytes, 2));
  EXPECT_EQ(0x332211u, MyUtils::GetPixel(bytes, 3));
  EXPECT_EQ(0x44332211u, MyUtils::GetPixel(bytes, 4));
  EXPECT_EQ(0u, MyUtils::GetPixel(bytes, 0));
  EXPECT_EQ(0u, MyUtils::GetPixel(bytes, 5));
}

TEST(Pixels, AreWrittenInOrderButThreeBytesInReverse) {
  const struct {
    Uint8 size;
    Uint8 expected[4];
  } rows[] = {
    {0, {9, 9, 9, 9}}, {1, {1, 9, 9, 9}}, {2, {1, 2, 9, 9}},
    {3, {3, 2, 1, 9}}, {4, {1, 2, 3, 4}}, {5, {9, 9, 9, 9}},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(static_cast<int>(row.size));
    Uint8 pixel[] = {9, 9, 9, 9}, data[] = {1, 2, 3, 4};
    MyUtils::SetPixel(pixel, row.size, data);
    for (int i = 0; i < 4; ++i) EXPECT_EQ(row.expected[i], pixel[i]);
  }
}

TEST(Pixels, OutAndInAgainSwapsTheOuterBytesOf24Bits) {
  Uint8 pixel[] = {0x10, 0x20, 0x30};
  Uint32 value = MyUtils::GetPixel(pixel, 3);
  MyUtils::SetPixel(pixel, 3, reinterpret_cast<Uint8*>(&value));
  EXPECT_EQ(0x30, pixel[0]);
  EXPECT_EQ(0x20, pixel[1]);
  EXPECT_EQ(0x10, pixel[2]);
}

TEST(Grayscale, WeighsTheColoursAndKeepsAlpha) {
  SDL_Surface* surface = SDL_CreateRGBSurfaceWithFormat(0, 6, 1, 32, SDL_PIXELFORMAT_ARGB8888);
  auto* pixels = static_cast<Uint32*>(surface->pixels);
  const Uint32 before[] = {0xffff0000, 0x8000ff00, 0x400000ff, 0xffffffff, 0x00000000, 0xff010000};
  // 255 * (1.055 * Y ^ (1 / 2.4) - 0.055), or 12.92 * Y * 255 for the darkest: Y = 0.2126, 0.7152, 0.0722, 1, 0.
  const Uint32 after[] = {0xff7f7f7f, 0x80dcdcdc, 0x404c4c4c, 0xffffffff, 0x00000000, 0xff030303};
  std::copy(std::begin(before), std::end(before), pixels);
  MyUtils::SDL_ConvertToGrayscale(surface);
  for (int i = 0; i < 6; ++i) EXPECT_EQ(after[i], pixels[i]) << i;
  SDL_FreeSurface(surface);
}

TEST(Grayscale, WorksOnRunLengthSurfacesAndLeavesThemUnlocked) {
  SDL_Surface* surface = SDL_CreateRGBSurfaceWithFormat(0, 4, 2, 24, SDL_PIXELFORMAT_RGB24);
  SDL_FillRect(surface, nullptr, SDL_MapRGB(surface->format, 255, 0, 0));
  SDL_SetColorKey(surface, SDL_TRUE, SDL_MapRGB(surface->format, 0, 255, 0));
  SDL_SetSurfaceRLE(surface, 1);
  SDL_Surface* other = SDL_CreateRGBSurfaceWithFormat(0, 4, 2, 24, SDL_PIXELFORMAT_RGB24);
  SDL_BlitSurface(surface, nullptr, other, nullptr);  // makes the run lengths
  ASSERT_NE(0u, surface->flags & SDL_RLEACCEL);
  MyUtils::SDL_ConvertToGrayscale(surface);
  EXPECT_EQ(0, surface->locked);
  EXPECT_EQ(0, SDL_BlitSurface(surface, nullptr, other, nullptr));
  EXPECT_EQ(0x7f, static_cast<Uint8*>(other->pixels)[0]);
  EXPECT_EQ(0x7f, static_cast<Uint8*>(other->pixels)[other->pitch + 11]);
  SDL_FreeSurface(other);
  SDL_FreeSurface(surface);
}

std::mutex commandMutex;
std::condition_variable commandSeen;
std::string command;  // commandMutex

TEST(WindowProperties, AreOneShellLine) {
  const vendelo_sdl2::TSystemSeams original = vendelo_sdl2::SystemSeams;
  vendelo_sdl2::SystemSeams.System = [](const char* line) {
    const std::lock_guard<std::mutex> lock(commandMutex);
    command = line;
    commandSeen.notify_all();
    return 0;
  };
  MyUtils::SetWindowsProperties("Top Screen", {"add,above", "remove,below"}, "echo done");
  std::unique_lock<std::mutex> lock(commandMutex);
  ASSERT_TRUE(commandSeen.wait_for(lock, std::chrono::seconds(30), [] { return !command.empty(); }));
  EXPECT_EQ(
    "WINID=`wmctrl -l | grep \"$HOSTNAME Top Screen\\b\" | cut -d \" \" -f1`;"
    "wmctrl -i -r $WINID -b add,above;wmctrl -i -r $WINID -b remove,below;echo done",
    command);
  vendelo_sdl2::SystemSeams = original;
}

}  // namespace
