#pragma once

#include <string>
#include <vector>

#include "Canvas.h"
#include "Typeface.h"

// How the letters of one bitmap font look and how they are set.
struct FontStyle {
  Ramp fill;            // 0 at the height of the capitals, 1 at the baseline
  Colour rim;           // outline and soft edge; the description names it as the background colour
  double rimWidth = 0;  // pixels around the letters
  int softness = 0;     // radius of the shade behind the rim; 0 for none
  double spacing = 0;   // pixels more between letters
};

// One glyph on its way into the atlas. Rectangles are relative to the pen and to the top of the line.
struct GlyphCell {
  char32_t code = 0;
  int xOffset = 0, yOffset = 0, width = 0, height = 0, advance = 0;
  int atlasX = 0, atlasY = 0;
  double penX = 0, baseline = 0;  // where the outline is drawn inside the cell
  bool cut = false;               // whether the cell is too small for the outline, without its rim
  const Typeface* face = nullptr;
};

// Builds one `.fnt` description with its atlas.
//
// Every cell starts at the pen or left of it and stays within the line, as the program measures a line by the sum
// of the advances and the last cell's width: a text is then cut on no side. Characters that the typeface does not
// have are left out; the first character added wins over a later one with the same code. What the reader could not
// take throws `std::runtime_error` with the reason: no character, a name that is no plain file name or has the
// ending already, an atlas that is narrower than a cell or higher than 8192 pixels; and, on being added, a
// character that lies wholly outside the line.
class FontPack {
 public:
  // What is drawn of one glyph around its pen, y downwards from the baseline.
  struct Ink {
    double left, top, right, bottom;
  };

  FontPack(FontStyle style, int lineHeight, int base);

  // Adds characters with their natural cells.
  void add(const Typeface& face, const std::u32string& codes);
  // Adds characters in cells of one width and of the full line's height, for the rolling wheels.
  void addFixed(const Typeface& face, const std::u32string& codes, int width, int advance);
  // Adds a mark whose cell reaches down to the end of the line: the wheels set separators on the box's lower edge.
  void addHanging(const Typeface& face, char32_t code);

  size_t count() const { return mCells.size(); }
  // The characters that the line's height or a fixed cell's width cuts by more than a pixel.
  std::u32string cut() const;

  // Writes `basePath` + ".fnt" and ".png"; the atlas is `atlasWidth` wide and as high as needed.
  void save(const std::string& basePath, const std::string& name, int atlasWidth);

 private:
  GlyphCell naturalCell(const Typeface& face, char32_t code) const;
  bool leavesLine(const Ink& ink) const;
  void store(const GlyphCell& cell);
  int pack(int atlasWidth);
  void drawCell(const Canvas& atlas, const GlyphCell& cell) const;
  void writeDescription(const std::string& path, const std::string& name, int atlasWidth, int atlasHeight) const;

  FontStyle mStyle;
  int mLineHeight;
  int mBase;
  std::vector<GlyphCell> mCells;
};

// ASCII, Latin-1, the usual dashes and the currency signs: what a currency's name or a time is made of.
std::u32string westernCharacters();
// ASCII, Latin-1 and Latin Extended-A letters, the usual quotation marks and dashes, and currency signs.
std::u32string latinCharacters();
// Greek and Cyrillic letters.
std::u32string easternCharacters();
