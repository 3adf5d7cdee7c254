#pragma once

#include <SDL.h>
#include <string>
#include <vector>

// Bitmap fonts that tests make for themselves, the same on every machine.
namespace testfont {

// An empty folder of that name below the build folder, with a slash at its end.
std::string freshFolder(const std::string& name);

struct Glyph {
  int id, x, y, width, height, xoffset, yoffset, xadvance;
};
struct Kerning {
  int first, second, amount;
};

// What goes into a description file. The defaults make a font that loads.
struct Description {
  std::string padding = "0,0,0,0";
  std::string backgroundColor;  // left out when empty
  int lineHeight = 20;
  int base = 16;
  std::string pageAttribute = "file";
  std::string image = "atlas.png";
  std::vector<Glyph> glyphs;
  std::vector<Kerning> kernings;
};

std::string toXml(const Description& description);
void writeText(const std::string& path, const std::string& text);
// A picture of one colour.
void writePicture(const std::string& path, int width, int height, SDL_Color colour);

// Writes folder + name + ".fnt" and its atlas: capitals, digits, punctuation and the euro sign as 5 by 7 dots in
// white, each dot `scale` pixels wide; small letters show as capitals. Advance 6, line height 9, base 7 dots; "AV"
// and "VA" are kerned by one dot. The result is the path without ".fnt".
std::string write(const std::string& folder, const std::string& name, int scale);

}  // namespace testfont
