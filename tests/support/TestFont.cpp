#include "tests/support/TestFont.h"
#include "tests/support/TestPaths.h"

#include <SDL_image.h>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace fs = std::filesystem;

namespace testfont {
namespace {

struct Shape {
  int id;
  Uint8 rows[7];  // five dots each, the leftmost in bit 4
};

constexpr Shape kShapes[] = {
  {' ', {0, 0, 0, 0, 0, 0, 0}},
  {'!', {0x04, 0x04, 0x04, 0x04, 0x04, 0, 0x04}},
  {'%', {0x19, 0x1A, 0x02, 0x04, 0x08, 0x0B, 0x13}},
  {'(', {0x02, 0x04, 0x08, 0x08, 0x08, 0x04, 0x02}},
  {')', {0x08, 0x04, 0x02, 0x02, 0x02, 0x04, 0x08}},
  {'+', {0, 0x04, 0x04, 0x1F, 0x04, 0x04, 0}},
  {',', {0, 0, 0, 0, 0x0C, 0x04, 0x08}},
  {'-', {0, 0, 0, 0x1F, 0, 0, 0}},
  {'.', {0, 0, 0, 0, 0, 0x0C, 0x0C}},
  {'/', {0x01, 0x01, 0x02, 0x04, 0x08, 0x10, 0x10}},
  {'0', {0x0E, 0x11, 0x13, 0x15, 0x19, 0x11, 0x0E}},
  {'1', {0x04, 0x0C, 0x04, 0x04, 0x04, 0x04, 0x0E}},
  {'2', {0x0E, 0x11, 0x01, 0x06, 0x08, 0x10, 0x1F}},
  {'3', {0x0E, 0x11, 0x01, 0x06, 0x01, 0x11, 0x0E}},
  {'4', {0x02, 0x06, 0x0A, 0x12, 0x1F, 0x02, 0x02}},
  {'5', {0x1F, 0x10, 0x1E, 0x01, 0x01, 0x11, 0x0E}},
  {'6', {0x0E, 0x10, 0x10, 0x1E, 0x11, 0x11, 0x0E}},
  {'7', {0x1F, 0x01, 0x02, 0x04, 0x04, 0x08, 0x08}},
  {'8', {0x0E, 0x11, 0x11, 0x0E, 0x11, 0x11, 0x0E}},
  {'9', {0x0E, 0x11, 0x11, 0x0F, 0x01, 0x01, 0x0E}},
  {':', {0, 0x0C, 0x0C, 0, 0x0C, 0x0C, 0}},
  {'=', {0, 0, 0x1F, 0, 0x1F, 0, 0}},
  {'?', {0x0E, 0x11, 0x01, 0x06, 0x04, 0, 0x04}},
  {'A', {0x0E, 0x11, 0x11, 0x1F, 0x11, 0x11, 0x11}},
  {'B', {0x1E, 0x11, 0x11, 0x1E, 0x11, 0x11, 0x1E}},
  {'C', {0x0E, 0x11, 0x10, 0x10, 0x10, 0x11, 0x0E}},
  {'D', {0x1E, 0x11, 0x11, 0x11, 0x11, 0x11, 0x1E}},
  {'E', {0x1F, 0x10, 0x10, 0x1E, 0x10, 0x10, 0x1F}},
  {'F', {0x1F, 0x10, 0x10, 0x1E, 0x10, 0x10, 0x10}},
  {'G', {0x0E, 0x11, 0x10, 0x17, 0x11, 0x11, 0x0E}},
  {'H', {0x11, 0x11, 0x11, 0x1F, 0x11, 0x11, 0x11}},
  {'I', {0x0E, 0x04, 0x04, 0x04, 0x04, 0x04, 0x0E}},
  {'J', {0x01, 0x01, 0x01, 0x01, 0x11, 0x11, 0x0E}},
  {'K', {0x11, 0x12, 0x14, 0x18, 0x14, 0x12, 0x11}},
  {'L', {0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x1F}},
  {'M', {0x11, 0x1B, 0x15, 0x15, 0x11, 0x11, 0x11}},
  {'N', {0x11, 0x19, 0x19, 0x15, 0x13, 0x13, 0x11}},
  {'O', {0x0E, 0x11, 0x11, 0x11, 0x11, 0x11, 0x0E}},
  {'P', {0x1E, 0x11, 0x11, 0x1E, 0x10, 0x10, 0x10}},
  {'Q', {0x0E, 0x11, 0x11, 0x11, 0x15, 0x12, 0x0D}},
  {'R', {0x1E, 0x11, 0x11, 0x1E, 0x14, 0x12, 0x11}},
  {'S', {0x0F, 0x10, 0x10, 0x0E, 0x01, 0x01, 0x1E}},
  {'T', {0x1F, 0x04, 0x04, 0x04, 0x04, 0x04, 0x04}},
  {'U', {0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x0E}},
  {'V', {0x11, 0x11, 0x11, 0x11, 0x11, 0x0A, 0x04}},
  {'W', {0x11, 0x11, 0x11, 0x15, 0x15, 0x1B, 0x11}},
  {'X', {0x11, 0x11, 0x0A, 0x04, 0x0A, 0x11, 0x11}},
  {'Y', {0x11, 0x11, 0x0A, 0x04, 0x04, 0x04, 0x04}},
  {'Z', {0x1F, 0x01, 0x02, 0x04, 0x08, 0x10, 0x1F}},
  {0x20AC, {0x07, 0x08, 0x1E, 0x08, 0x1E, 0x08, 0x07}},
};
constexpr int kColumns = 10;
constexpr int kCellWidth = 6;
constexpr int kCellHeight = 8;

}  // namespace

std::string freshFolder(const std::string& name) {
  const fs::path folder = fs::path(testpaths::binary) / "testdata" / name;
  fs::remove_all(folder);
  fs::create_directories(folder);
  return folder.string() + "/";
}

std::string toXml(const Description& d) {
  std::ostringstream xml;
  xml.imbue(std::locale::classic());
  xml << "<?xml version=\"1.0\"?>\n<font>\n<info face=\"test\" padding=\"" << d.padding << "\"";
  if (!d.backgroundColor.empty()) xml << " backgroundColor=\"" << d.backgroundColor << "\"";
  xml << "/>\n<common lineHeight=\"" << d.lineHeight << "\" base=\"" << d.base << "\"/>\n<pages><page id=\"0\" "
      << d.pageAttribute << "=\"" << d.image << "\"/></pages>\n<chars count=\"" << d.glyphs.size() << "\">\n";
  for (const Glyph& g : d.glyphs)
    xml << "<char id=\"" << g.id << "\" x=\"" << g.x << "\" y=\"" << g.y << "\" width=\"" << g.width
        << "\" height=\"" << g.height << "\" xoffset=\"" << g.xoffset << "\" yoffset=\"" << g.yoffset
        << "\" xadvance=\"" << g.xadvance << "\"/>\n";
  xml << "</chars>\n";
  if (!d.kernings.empty()) {
    xml << "<kernings>\n";
    for (const Kerning& k : d.kernings)
      xml << "<kerning first=\"" << k.first << "\" second=\"" << k.second << "\" amount=\"" << k.amount << "\"/>\n";
    xml << "</kernings>\n";
  }
  xml << "</font>\n";
  return xml.str();
}

void writeText(const std::string& path, const std::string& text) { std::ofstream(path, std::ios::binary) << text; }

void writePicture(const std::string& path, int width, int height, SDL_Color colour) {
  SDL_Surface* surface = SDL_CreateRGBSurfaceWithFormat(0, width, height, 32, SDL_PIXELFORMAT_RGBA32);
  SDL_FillRect(surface, nullptr, SDL_MapRGBA(surface->format, colour.r, colour.g, colour.b, colour.a));
  IMG_SavePNG(surface, path.c_str());
  SDL_FreeSurface(surface);
}

std::string write(const std::string& folder, const std::string& name, int scale) {
  constexpr int count = static_cast<int>(std::size(kShapes));
  constexpr int lines = (count + kColumns - 1) / kColumns;
  SDL_Surface* atlas = SDL_CreateRGBSurfaceWithFormat(0, kColumns * kCellWidth * scale, lines * kCellHeight * scale,
                                                      32, SDL_PIXELFORMAT_RGBA32);
  SDL_FillRect(atlas, nullptr, SDL_MapRGBA(atlas->format, 255, 255, 255, 0));
  Description description;
  description.lineHeight = 9 * scale;
  description.base = 7 * scale;
  description.image = name + ".png";
  for (int i = 0; i < count; ++i) {
    const int x = i % kColumns * kCellWidth * scale, y = i / kColumns * kCellHeight * scale;
    for (int row = 0; row < 7; ++row)
      for (int column = 0; column < 5; ++column)
        if (kShapes[i].rows[row] >> (4 - column) & 1) {
          const SDL_Rect dot{x + column * scale, y + row * scale, scale, scale};
          SDL_FillRect(atlas, &dot, SDL_MapRGBA(atlas->format, 255, 255, 255, 255));
        }
    Glyph glyph{kShapes[i].id, x, y, 5 * scale, 7 * scale, 0, 0, 6 * scale};
    description.glyphs.push_back(glyph);
    if (glyph.id >= 'A' && glyph.id <= 'Z') {
      glyph.id += 'a' - 'A';
      description.glyphs.push_back(glyph);
    }
  }
  description.kernings = {{'A', 'V', -scale}, {'V', 'A', -scale}};
  IMG_SavePNG(atlas, (folder + description.image).c_str());
  SDL_FreeSurface(atlas);
  writeText(folder + name + ".fnt", toXml(description));
  return folder + name;
}

}  // namespace testfont
