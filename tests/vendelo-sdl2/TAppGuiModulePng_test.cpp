// SavePNG and GetPNGInfo of the GUI module.
#include <SDL_image.h>
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <png.h>
#include <cstring>
#include <fstream>
#include <functional>
#include <string>

#include "tests/support/TestFont.h"
#include "vendelo-sdl2/TAppGuiModule.h"

using namespace vendelo_sdl2;

namespace {
bool writerFails = false, infoFails = false, memoryFails = false;
std::string version;  // that the writer was made for
int compression = 0;

template <class F>
F real(const char* name) {
  return reinterpret_cast<F>(dlsym(RTLD_NEXT, name));
}
}  // namespace

// Linked in front of the libraries', to fail on request.
extern "C" {

png_structp png_create_write_struct(png_const_charp ver, png_voidp error, png_error_ptr onError,
                                    png_error_ptr onWarning) {
  version = ver;
  EXPECT_TRUE(!error && !onError && !onWarning);
  static const auto png = real<decltype(&png_create_write_struct)>("png_create_write_struct");
  return writerFails ? nullptr : png(ver, error, onError, onWarning);
}

png_infop png_create_info_struct(png_const_structrp png) {
  static const auto create = real<decltype(&png_create_info_struct)>("png_create_info_struct");
  return infoFails ? nullptr : create(png);
}

void png_set_compression_level(png_structrp png, int level) {
  compression = level;
  static const auto set = real<decltype(&png_set_compression_level)>("png_set_compression_level");
  set(png, level);
}

// A surface for which nobody has memory.
SDL_Surface* SDL_ConvertSurface(SDL_Surface* source, const SDL_PixelFormat* format, Uint32 flags) {
  static const auto sdl = real<decltype(&SDL_ConvertSurface)>("SDL_ConvertSurface");
  SDL_Surface* converted = sdl(source, format, flags);
  if (memoryFails) converted->h = -1;
  return converted;
}

}  // extern "C"

namespace {

std::string printed(const std::function<void()>& action) {
  testing::internal::CaptureStdout();
  action();
  return testing::internal::GetCapturedStdout();
}

SDL_Surface* picture() {
  SDL_Surface* surface = SDL_CreateRGBSurfaceWithFormat(0, 5, 3, 32, SDL_PIXELFORMAT_ARGB8888);
  SDL_FillRect(surface, nullptr, 0xff102030);
  static_cast<Uint32*>(surface->pixels)[1] = 0xffc08040;
  return surface;
}

// Records with buffers, as GetPNGInfo wants them.
struct Texts {
  png_text records[3] = {};
  char keys[3][80] = {};
  char texts[3][80] = {};
  Texts() {
    for (int i = 0; i < 3; ++i) {
      records[i].key = keys[i];
      records[i].text = texts[i];
    }
  }
};

TEST(Png, SavesColoursWithoutAlpha) {
  const std::string file = testfont::freshFolder("Png") + "a.png";
  SDL_Surface* source = picture();
  ASSERT_EQ(0, TAppGuiModule::SavePNG(source, file.c_str(), nullptr, 0));
  SDL_FreeSurface(source);
  SDL_Surface* read = IMG_Load(file.c_str());
  ASSERT_NE(nullptr, read);
  EXPECT_EQ(5, read->w);
  EXPECT_EQ(3, read->h);
  EXPECT_EQ(3, read->format->BytesPerPixel);
  const auto* bytes = static_cast<const Uint8*>(read->pixels);
  EXPECT_EQ(0x10, bytes[0]);
  EXPECT_EQ(0x20, bytes[1]);
  EXPECT_EQ(0x30, bytes[2]);
  EXPECT_EQ(0xc0, bytes[3]);
  EXPECT_EQ(0x80, bytes[4]);
  EXPECT_EQ(0x40, bytes[5]);
  SDL_FreeSurface(read);
}

TEST(Png, FailuresHaveTheirCodes) {
  SDL_Surface* source = picture();
  EXPECT_EQ(-7, TAppGuiModule::SavePNG(nullptr, nullptr, nullptr, 0));
  EXPECT_EQ(-6, TAppGuiModule::SavePNG(source, nullptr, nullptr, 0));
  const std::string file = testfont::freshFolder("Png") + "no/such/folder.png";
  testing::internal::CaptureStderr();
  EXPECT_EQ("Error opening file: No such file or directory.",
            printed([&] { EXPECT_EQ(-3, TAppGuiModule::SavePNG(source, file.c_str(), nullptr, 0)); }));
  EXPECT_EQ(file + ": No such file or directory\n", testing::internal::GetCapturedStderr());
  testing::internal::CaptureStderr();
  EXPECT_EQ(-4, TAppGuiModule::SavePNG(source, "/dev/full", nullptr, 0));
  testing::internal::GetCapturedStderr();
  SDL_FreeSurface(source);
}

TEST(Png, WithoutMemoryOrAWriterNoFileIsMade) {
  const std::string file = testfont::freshFolder("Png") + "none.png";
  SDL_Surface* source = picture();
  memoryFails = true;
  EXPECT_EQ("OUT OF MEMORY!!!!",
            printed([&] { EXPECT_EQ(-2, TAppGuiModule::SavePNG(source, file.c_str(), nullptr, 0)); }));
  memoryFails = false;
  for (bool* fails : {&writerFails, &infoFails}) {
    *fails = true;
    EXPECT_EQ("", printed([&] { EXPECT_EQ(-5, TAppGuiModule::SavePNG(source, file.c_str(), nullptr, 0)); }));
    *fails = false;
  }
  EXPECT_FALSE(std::ifstream(file).good());
  EXPECT_EQ(0, TAppGuiModule::SavePNG(source, file.c_str(), nullptr, 0));
  EXPECT_EQ("1.6.34", version);
  SDL_FreeSurface(source);
}

TEST(Png, TheFileIs8BitRgbAtTheThirdLevelOfCompression) {
  const std::string file = testfont::freshFolder("Png") + "head.png";
  SDL_Surface* source = picture();
  ASSERT_EQ(0, TAppGuiModule::SavePNG(source, file.c_str(), nullptr, 0));
  SDL_FreeSurface(source);
  std::ifstream stream(file, std::ios::binary);
  const std::string bytes{std::istreambuf_iterator<char>(stream), {}};
  const size_t head = bytes.find("IHDR"), data = bytes.find("IDAT");
  ASSERT_NE(std::string::npos, head);
  ASSERT_NE(std::string::npos, data);
  // Width, height, bit depth, colour type, compression, filter, interlace.
  EXPECT_EQ((std::string{0, 0, 0, 5, 0, 0, 0, 3, 8, PNG_COLOR_TYPE_RGB, 0, 0, PNG_INTERLACE_NONE}),
            bytes.substr(head + 4, 13));
  EXPECT_EQ(3, compression);
  EXPECT_EQ(1, static_cast<unsigned char>(bytes[data + 5]) >> 6);  // as the data say of levels 2 to 5
  EXPECT_EQ(std::string::npos, bytes.find("tEXt"));
}

TEST(Png, TextsComeBack) {
  const std::string file = testfont::freshFolder("Png") + "text.png";
  char key1[] = "Title", text1[] = "Jackpot", key2[] = "Author", text2[] = "Terminal 5";
  png_text out[2] = {};
  out[0].compression = PNG_TEXT_COMPRESSION_NONE;
  out[0].key = key1;
  out[0].text = text1;
  out[1].compression = PNG_TEXT_COMPRESSION_zTXt;
  out[1].key = key2;
  out[1].text = text2;
  SDL_Surface* source = picture();
  ASSERT_EQ(0, TAppGuiModule::SavePNG(source, file.c_str(), out, 2));
  SDL_FreeSurface(source);

  Texts in;
  int count = 3;
  EXPECT_EQ(0, TAppGuiModule::GetPNGInfo(file, in.records, &count));
  EXPECT_EQ(2, count);
  EXPECT_STREQ("Title", in.keys[0]);
  EXPECT_STREQ("Jackpot", in.texts[0]);
  EXPECT_EQ(7u, in.records[0].text_length);
  EXPECT_EQ(PNG_TEXT_COMPRESSION_NONE, in.records[0].compression);
  EXPECT_STREQ("Author", in.keys[1]);
  EXPECT_STREQ("Terminal 5", in.texts[1]);
  EXPECT_EQ(PNG_TEXT_COMPRESSION_zTXt, in.records[1].compression);

  Texts one;
  count = 1;
  EXPECT_EQ(0, TAppGuiModule::GetPNGInfo(file, one.records, &count));
  EXPECT_EQ(1, count);
  EXPECT_STREQ("Title", one.keys[0]);
  EXPECT_STREQ("", one.keys[1]);
}

TEST(Png, WithoutTextsTheCountStays) {
  const std::string file = testfont::freshFolder("Png") + "plain.png";
  SDL_Surface* source = picture();
  ASSERT_EQ(0, TAppGuiModule::SavePNG(source, file.c_str(), nullptr, 0));
  SDL_FreeSurface(source);
  Texts in;
  int count = 3;
  EXPECT_EQ(0, TAppGuiModule::GetPNGInfo(file, in.records, &count));
  EXPECT_EQ(3, count);
}

TEST(Png, UnreadableFilesAreRefused) {
  const std::string folder = testfont::freshFolder("Png");
  Texts in;
  int count = 3;
  EXPECT_EQ(-1, TAppGuiModule::GetPNGInfo(folder + "a.png", nullptr, &count));
  EXPECT_EQ(-1, TAppGuiModule::GetPNGInfo(folder + "a.png", in.records, nullptr));
  EXPECT_EQ("Can not load " + folder + "missing.png",
            printed([&] { EXPECT_EQ(-1, TAppGuiModule::GetPNGInfo(folder + "missing.png", in.records, &count)); }));
  testfont::writeText(folder + "text.png", "this is no picture at all");
  testing::internal::CaptureStderr();
  EXPECT_EQ(-1, TAppGuiModule::GetPNGInfo(folder + "text.png", in.records, &count));
  testfont::writeText(folder + "empty.png", "");
  EXPECT_EQ(-1, TAppGuiModule::GetPNGInfo(folder + "empty.png", in.records, &count));
  testing::internal::GetCapturedStderr();
  EXPECT_EQ(3, count);
}

}  // namespace
