#pragma once

#include <SDL_image.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "tools/skincheck/Inventory.h"

// A skin and a game of plain pictures in which there is nothing to find, quick to write and to check.
namespace smallskin {

namespace fs = std::filesystem;

inline const std::string kSkin = "VESPERA/TOP_SKIN/";
inline const std::string kIcons = "Games/Reels/Icons/";
inline const char* const kOutlines = "/usr/share/fonts/truetype/dejavu/DejaVuSans-Bold.ttf";

inline void writeText(const std::string& path, const std::string& text) {
  std::ofstream(path, std::ios::binary) << text;
}

// A picture of one colour, in the form that its extension names: PNG or JPEG.
inline void paint(const std::string& path, int width, int height, Uint8 alpha = 255) {
  SDL_Surface* picture = SDL_CreateRGBSurfaceWithFormat(0, width, height, 32, SDL_PIXELFORMAT_RGBA32);
  ASSERT_NE(nullptr, picture);
  SDL_FillRect(picture, nullptr, SDL_MapRGBA(picture->format, 90, 120, 150, alpha));
  const bool png = fs::path(path).extension() == ".png";
  ASSERT_EQ(0, png ? IMG_SavePNG(picture, path.c_str()) : IMG_SaveJPG(picture, path.c_str(), 80)) << path;
  SDL_FreeSurface(picture);
}

// All its characters share one rectangle, that of the digits one twice as wide.
inline void writeFont(const std::string& base, int width, int height) {
  const auto attribute = [](const char* name, int value) {
    return std::string(" ") + name + "=\"" + std::to_string(value) + "\"";
  };
  std::string xml = "<font><info padding=\"0,0,0,0\"/><common" + attribute("lineHeight", height) +
                    attribute("base", height * 4 / 5) + "/><pages><page id=\"0\" file=\"" +
                    fs::path(base).filename().string() + ".png\"/></pages><chars>\n";
  for (int code = 32; code <= 0x20ac; code = code == 0x17f ? 0x20ac : code + 1) {
    const int w = code >= '0' && code <= '9' ? 2 * width : width;
    xml += "<char" + attribute("id", code) + attribute("x", 0) + attribute("y", 0) + attribute("width", w) +
           attribute("height", height) + attribute("xoffset", 0) + attribute("yoffset", 0) +
           attribute("xadvance", w) + "/>\n";
  }
  writeText(base + ".fnt", xml + "</chars></font>\n");
  paint(base + ".png", 2 * width, height);
}

inline void writeAnimation(const std::string& base, int width, int height, int frames) {
  std::string xml =
    "<TextureAtlas imagePath=\"" + fs::path(base).filename().string() + ".png\" blendMode=\"ADD\">\n";
  for (int i = 0; i < frames; ++i)
    xml += "<sprite n=\"" + std::to_string(i) + "\" x=\"0\" y=\"0\" w=\"8\" h=\"8\" oX=\"4\" oY=\"4\" oW=\"" +
           std::to_string(width) + "\" oH=\"" + std::to_string(height) + "\"/>\n";
  writeText(base + ".xml", xml + "</TextureAtlas>\n");
  paint(base + ".png", 8, 8);
}

inline void writeFile(const SkinFile& file, const std::string& folder) {
  const std::string path = folder + file.name;
  switch (file.kind) {
    case SkinFileKind::Picture:
      if (file.fit == Fit::Stretched)
        paint(path, file.width / 20, file.height / 20);
      else
        paint(path, file.width, file.height);
      break;
    case SkinFileKind::BitmapFont:
      if (file.name == "Fonts/currency")
        writeFont(path, 20, 91);
      else
        writeFont(path, 8, 20);
      break;
    case SkinFileKind::Animation:
      writeAnimation(path, file.width, file.height, 31);
      break;
    case SkinFileKind::TrueTypeFont:
      fs::copy_file(kOutlines, path);
      break;
  }
}

// Into an empty folder, whose path ends in a slash.
inline void write(const std::string& root) {
  for (const char* folder : {"Fonts", "Animation"}) fs::create_directories(root + kSkin + folder);
  for (const SkinFile& file : skinFiles()) writeFile(file, root + kSkin);
  const std::string icons = root + kIcons;
  for (const char* folder : {"paytable", "paytable_de"}) {
    fs::create_directories(icons + folder);
    for (const char* page : {"/InfoPage_Paytable.png", "/InfoPage_Rules.jpg"})
      paint(icons + folder + page, 200, 100);
  }
  for (const SkinFile& file : gameFiles()) writeFile(file, icons);
  writeFont(icons + "prize", 8, 20);
  fs::copy_file(kOutlines, icons + "prize.ttf");
}

}  // namespace smallskin
