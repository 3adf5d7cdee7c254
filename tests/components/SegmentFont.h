#pragma once

#include <SDL_image.h>
#include <errno.h>
#include <fstream>
#include <string>

#include "common/TBitmapFont.h"

#include "tests/support/TestFont.h"

// A bitmap font of seven-segment digits, a comma and a full stop, drawn by the test itself, so that pictures made
// with it depend on no font library. Digits are 30 by 50 pixels (1 only 20 by 50), "," 10 by 18, "." 10 by 10.
// The registry owns the font. Characters in `without` are left out of the description file.
inline TBitmapFont* segmentFont(SDL_Renderer* renderer, const std::string& without) {
  // A folder for each program: they run side by side.
  static const std::string folder = testfont::freshFolder(std::string("segments_") + program_invocation_short_name);
  static int made = 0;
  const std::string base = folder + "segment" + std::to_string(++made);
  SDL_Surface* atlas = SDL_CreateRGBSurfaceWithFormat(0, 340, 60, 32, SDL_PIXELFORMAT_RGBA32);
  auto bar = [&](int x, int y, int w, int h) {
    const SDL_Rect rect{x, y, w, h};
    SDL_FillRect(atlas, &rect, SDL_MapRGBA(atlas->format, 240, 200, 40, 255));
  };
  // Segments: top, top right, bottom right, bottom, bottom left, top left, middle.
  const int lit[10] = {0x3f, 0x06, 0x5b, 0x4f, 0x66, 0x6d, 0x7d, 0x07, 0x7f, 0x6f};
  std::string chars;
  auto describe = [&](char c, int x, int y, int w, int h) {
    if (without.find(c) != std::string::npos) return;
    chars += "<char id=\"" + std::to_string(static_cast<int>(c)) + "\" x=\"" + std::to_string(x) + "\" y=\"" +
             std::to_string(y) + "\" width=\"" + std::to_string(w) + "\" height=\"" + std::to_string(h) +
             "\" xoffset=\"0\" yoffset=\"0\" xadvance=\"" + std::to_string(w + 2) + "\"/>";
  };
  for (int d = 0; d < 10; ++d) {
    const int w = d == 1 ? 20 : 30, x = d * 32;
    if (lit[d] & 0x01) bar(x + 3, 1, w - 6, 6);
    if (lit[d] & 0x02) bar(x + w - 7, 3, 6, 20);
    if (lit[d] & 0x04) bar(x + w - 7, 27, 6, 20);
    if (lit[d] & 0x08) bar(x + 3, 43, w - 6, 6);
    if (lit[d] & 0x10) bar(x + 1, 27, 6, 20);
    if (lit[d] & 0x20) bar(x + 1, 3, 6, 20);
    if (lit[d] & 0x40) bar(x + 3, 22, w - 6, 6);
    describe(static_cast<char>('0' + d), x, 0, w, 50);
  }
  bar(322, 0, 6, 12);
  bar(320, 12, 4, 6);
  describe(',', 320, 0, 10, 18);
  bar(332, 2, 6, 6);
  describe('.', 330, 0, 10, 10);
  IMG_SavePNG(atlas, (base + ".png").c_str());
  SDL_FreeSurface(atlas);
  std::ofstream(base + ".fnt") << "<font><info padding=\"0,0,0,0\"/><common lineHeight=\"50\" base=\"50\"/><pages>"
                               << "<page file=\"segment" << made << ".png\"/></pages><chars>" << chars
                               << "</chars></font>";
  return new TBitmapFont(renderer, base, base + ".fnt");
}
