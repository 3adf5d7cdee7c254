#pragma once

#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

#include "XmlFile.h"

// One character of a font as the program holds it, and where the file describes it.
struct FontGlyph {
  int id = 0, x = 0, y = 0, width = 0, height = 0, xoffset = 0, yoffset = 0, xadvance = 0;
  struct Kerning {
    int second, amount;
  };
  std::vector<Kerning> kernings;
  TextPlace place;
};

// A font as the program holds it: all numbers as they stand in the file, in the file's order.
struct FontData {
  std::vector<FontGlyph> glyphs;
  std::unordered_map<int, size_t> first;  // by code point, the first glyph of each
  int lineHeight = 0, base = 0;
  int paddingTop = 0, paddingRight = 0, paddingBottom = 0, paddingLeft = 0;
  std::string page;  // path of the picture, empty for none
  TextPlace pagePlace, linePlace, charsPlace;

  const FontGlyph* find(int id) const;
};

// The code points of a text in correct UTF-8.
std::vector<int> codePoints(const std::string& text);
// A code point for people: the character and its number, the number alone where it shows nothing.
std::string characterName(int codePoint);

// What a text measures.
struct TextSize {
  int64_t width = 0, height = 0;  // of the texture that the program makes of it, 0 for an empty text
  int64_t line = 0;               // width of the widest line, without the pixels that the program adds
};

// Measures exactly as the program does, which counts a glyph before a missing one by its width.
TextSize measureText(const FontData& font, const std::string& text);

// A text that is drawn smaller than this part of its size has lost its outlines and is hard to read.
constexpr double kLegibleScale = 0.6;

// The scale at which the program shows a text of that size in a place that shrinks it: 1 or less.
double shrunkScale(const TextSize& size, int width, int height);
