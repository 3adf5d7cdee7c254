#pragma once

#include <SDL.h>
#include <string>

// A working directory for tests of the whole screen: a skin of plain pictures with small fonts and short
// animations, and two games with paytable pages in two languages. Pictures that the screen stretches are small.
namespace panelskin {

// Writes it into an empty folder of that name below the build folder; the path ends in a slash.
std::string write(const std::string& name);

// A picture of one colour with a soft edge (alpha 128) of eight pixels and a white mark in its upper left corner.
void writeCard(const std::string& path, int width, int height, SDL_Color colour);

// An animation "<base>.xml" of moving blocks: frame i stands at (i * stepX, i * stepY) of the frame's full size.
struct Blocks {
  int frames;
  int width, height;          // of the block
  int fullWidth, fullHeight;  // of the frame
  int stepX, stepY;
  SDL_Color colour;
};
void writeBlocks(const std::string& base, const Blocks& blocks);

// Colours of the paytable pages, so that a pixel tells which one is shown.
constexpr SDL_Color kPage{30, 30, 90, 255}, kPageSl{30, 90, 30, 255}, kBonus{90, 30, 90, 255},
  kRules{90, 90, 30, 255}, kWheels{120, 40, 40, 255}, kBackground{60, 10, 10, 255};

}  // namespace panelskin
