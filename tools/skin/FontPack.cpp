#include "FontPack.h"

#include "Metal.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <numeric>
#include <sstream>
#include <stdexcept>

namespace {
constexpr int kGap = 2;  // empty pixels between cells, so that scaled drawing never reads a neighbour
constexpr int kMaxHeight = 8192;
constexpr int kMaxPadding = 5;  // the program makes a text's texture 5 pixels wider than measured

constexpr double kUnseen = 1;  // pixels of a letter that nobody misses

using Ink = FontPack::Ink;

Ink inkOf(const Typeface& face, char32_t code) {
  Canvas probe(1, 1);
  face.appendGlyph(probe.cr(), code, 0, 0);
  Ink ink{};
  cairo_path_extents(probe.cr(), &ink.left, &ink.top, &ink.right, &ink.bottom);
  return ink;
}
}  // namespace

FontPack::FontPack(FontStyle style, int lineHeight, int base)
  : mStyle(std::move(style)), mLineHeight(lineHeight), mBase(base) {}

void FontPack::store(const GlyphCell& cell) {
  for (const GlyphCell& known : mCells)
    if (known.code == cell.code) return;
  mCells.push_back(cell);
}

std::u32string FontPack::cut() const {
  std::u32string codes;
  for (const GlyphCell& cell : mCells)
    if (cell.cut) codes.push_back(cell.code);
  return codes;
}

bool FontPack::leavesLine(const Ink& ink) const {
  return mBase + ink.top < -kUnseen || mBase + ink.bottom > mLineHeight + kUnseen;
}

GlyphCell FontPack::naturalCell(const Typeface& face, char32_t code) const {
  GlyphCell cell;
  cell.code = code;
  cell.face = &face;
  cell.advance = static_cast<int>(std::lround(face.advance(code) + mStyle.spacing));
  const Ink ink = inkOf(face, code);
  if (ink.right <= ink.left) return cell;
  const double margin = mStyle.rimWidth + mStyle.softness + 1;
  // Left edge at the pen or before it, never further than the padding brings it back.
  const int left = std::clamp(static_cast<int>(std::floor(ink.left - margin)), -kMaxPadding, 0);
  const double shift = std::max(0.0, left - (ink.left - margin));
  const int right = static_cast<int>(std::ceil(ink.right + margin + shift));
  const int top = std::max(0, static_cast<int>(std::floor(mBase + ink.top - margin)));
  const int bottom = std::min(mLineHeight, static_cast<int>(std::ceil(mBase + ink.bottom + margin)));
  if (bottom <= top) {
    char name[16];
    std::snprintf(name, sizeof name, "U+%04X", static_cast<unsigned>(code));
    throw std::runtime_error("a line of " + std::to_string(mLineHeight) + " pixels with the baseline at " +
                             std::to_string(mBase) + " shows nothing of " + name);
  }
  cell.xOffset = left;
  cell.yOffset = top;
  cell.width = right - left;
  cell.height = bottom - top;
  cell.penX = shift - left;
  cell.baseline = mBase - top;
  cell.cut = leavesLine(ink);
  return cell;
}

void FontPack::add(const Typeface& face, const std::u32string& codes) {
  for (const char32_t code : codes)
    if (face.has(code)) store(naturalCell(face, code));
}

void FontPack::addFixed(const Typeface& face, const std::u32string& codes, int width, int advance) {
  for (const char32_t code : codes) {
    if (!face.has(code)) continue;
    const Ink ink = inkOf(face, code);
    GlyphCell cell;
    cell.code = code;
    cell.face = &face;
    cell.width = width;
    cell.height = mLineHeight;
    cell.advance = advance;
    cell.penX = (width - (ink.right - ink.left)) / 2 - ink.left;
    cell.baseline = mBase;
    cell.cut = leavesLine(ink) || ink.right - ink.left > width + kUnseen;
    store(cell);
  }
}

void FontPack::addHanging(const Typeface& face, char32_t code) {
  if (!face.has(code)) return;
  GlyphCell cell = naturalCell(face, code);
  cell.height = mLineHeight - cell.yOffset;
  store(cell);
}

int FontPack::pack(int atlasWidth) {
  std::vector<size_t> order(mCells.size());
  std::iota(order.begin(), order.end(), size_t{0});
  std::stable_sort(order.begin(), order.end(),
                   [this](size_t a, size_t b) { return mCells[a].height > mCells[b].height; });
  int x = kGap, y = kGap, shelf = 0;
  for (const size_t i : order) {
    GlyphCell& cell = mCells[i];
    if (cell.width == 0) continue;
    if (x + cell.width + kGap > atlasWidth) {
      x = kGap;
      y += shelf + kGap;
      shelf = 0;
    }
    cell.atlasX = x;
    cell.atlasY = y;
    x += cell.width + kGap;
    shelf = std::max(shelf, cell.height);
  }
  return (y + shelf + kGap + 3) / 4 * 4;
}

void FontPack::drawCell(const Canvas& atlas, const GlyphCell& cell) const {
  if (cell.width == 0) return;
  Canvas glyph(cell.width, cell.height);
  cairo_t* cr = glyph.cr();
  const auto path = [&](cairo_t* c) { cell.face->appendGlyph(c, cell.code, cell.penX, cell.baseline); };
  if (mStyle.softness > 0) drawHalo(glyph, mStyle.rim.withAlpha(0.9), mStyle.rimWidth, mStyle.softness, path);
  cairo_set_line_join(cr, CAIRO_LINE_JOIN_ROUND);
  if (mStyle.rimWidth > 0) {
    path(cr);
    glyph.setColour(mStyle.rim);
    cairo_set_line_width(cr, 2 * mStyle.rimWidth);
    cairo_stroke(cr);
  }
  const double capTop = cell.baseline - cell.face->capHeight();
  path(cr);
  setGradient(cr, 0, capTop, 0, cell.baseline, mStyle.fill);
  cairo_fill(cr);
  atlas.paint(glyph, cell.atlasX, cell.atlasY, 1);
}

void FontPack::writeDescription(const std::string& path, const std::string& name, int atlasWidth,
                                int atlasHeight) const {
  const auto byte = [](double value) { return static_cast<int>(std::lround(value * 255)); };
  int padding = 0;
  for (const GlyphCell& cell : mCells) padding = std::max(padding, -cell.xOffset);
  std::ostringstream xml;
  xml.imbue(std::locale::classic());
  xml << "<?xml version=\"1.0\"?>\n<font>\n"
      << "  <info face=\"" << name << "\" size=\"" << mLineHeight << "\" padding=\"0,0,0," << padding
      << "\" backgroundColor=\"" << byte(mStyle.rim.r) << ',' << byte(mStyle.rim.g) << ',' << byte(mStyle.rim.b)
      << ",0\"/>\n"
      << "  <common lineHeight=\"" << mLineHeight << "\" base=\"" << mBase << "\" scaleW=\"" << atlasWidth
      << "\" scaleH=\"" << atlasHeight << "\" pages=\"1\"/>\n"
      << "  <pages>\n    <page id=\"0\" file=\"" << name << ".png\"/>\n  </pages>\n"
      << "  <chars count=\"" << mCells.size() << "\">\n";
  for (const GlyphCell& cell : mCells)
    xml << "    <char id=\"" << static_cast<unsigned>(cell.code) << "\" x=\"" << cell.atlasX << "\" y=\""
        << cell.atlasY << "\" width=\"" << cell.width << "\" height=\"" << cell.height << "\" xoffset=\""
        << cell.xOffset << "\" yoffset=\"" << cell.yOffset << "\" xadvance=\"" << cell.advance << "\"/>\n";
  xml << "  </chars>\n  <kernings>\n";
  // Pairs of the first two Latin blocks; beyond them the gain is not worth the longer search at run time.
  for (const GlyphCell& first : mCells)
    for (const GlyphCell& second : mCells) {
      if (first.code > 0xff || second.code > 0xff || first.face != second.face) continue;
      const long amount = std::lround(first.face->kerning(first.code, second.code));
      if (amount != 0)
        xml << "    <kerning first=\"" << static_cast<unsigned>(first.code) << "\" second=\""
            << static_cast<unsigned>(second.code) << "\" amount=\"" << amount << "\"/>\n";
    }
  xml << "  </kernings>\n</font>\n";
  std::ofstream file(path, std::ios::binary);
  file << xml.str();
  if (!file.flush()) throw std::runtime_error(path + ": cannot be written");
}

void FontPack::save(const std::string& basePath, const std::string& name, int atlasWidth) {
  if (mCells.empty()) throw std::runtime_error(basePath + ": a font needs at least one character");
  if (name.ends_with(".fnt") || name.ends_with(".png"))
    throw std::runtime_error(basePath + ": give the name without the extension");
  if (name.empty() || name[0] == '.' || name.find_first_of("/<>&\"") != std::string::npos)
    throw std::runtime_error(basePath + ": \"" + name + "\" is no name for a font");
  for (const GlyphCell& cell : mCells)
    if (cell.width + 2 * kGap > atlasWidth)
      throw std::runtime_error(basePath + ": a glyph of " + std::to_string(cell.width) +
                               " pixels does not fit into an atlas of " + std::to_string(atlasWidth));
  const int height = pack(atlasWidth);
  if (height > kMaxHeight)
    throw std::runtime_error(basePath + ": the atlas would be " + std::to_string(height) + " pixels high");
  Canvas atlas(atlasWidth, height);
  for (const GlyphCell& cell : mCells) drawCell(atlas, cell);
  atlas.save(basePath + ".png");
  writeDescription(basePath + ".fnt", name, atlasWidth, height);
}

std::u32string westernCharacters() {
  // The reader searches its list from the front: digits and ASCII come first.
  std::u32string codes = U"0123456789";
  for (char32_t code = 0x20; code <= 0x7e; ++code) codes.push_back(code);
  for (char32_t code = 0xa0; code <= 0xff; ++code) codes.push_back(code);
  codes += U"\u2013\u2014\u2018\u2019\u201e\u2026\u2212\u202f\u2009";
  codes += U"\u20ac\u20a4\u20a6\u20a9\u20aa\u20ab\u20b1\u20b4\u20b8\u20b9\u20ba\u20bd\u20be\u20bf\u2116";
  return codes;
}

std::u32string latinCharacters() {
  std::u32string codes = westernCharacters();
  for (char32_t code = 0x100; code <= 0x17f; ++code) codes.push_back(code);
  codes += U"\u0218\u0219\u021a\u021b\u1e9e\u201a\u201c\u201d\u2020\u2022\u2030\u2039\u203a\u2122\u00d7";
  return codes;
}

std::u32string easternCharacters() {
  std::u32string codes;
  for (char32_t code = 0x386; code <= 0x3ce; ++code) codes.push_back(code);
  for (char32_t code = 0x400; code <= 0x45f; ++code) codes.push_back(code);
  codes += U"\u0490\u0491";
  return codes;
}
