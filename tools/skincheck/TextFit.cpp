#include "TextFit.h"

#include <algorithm>
#include <cstdio>

namespace {
// The program makes a text's texture so much wider than its widest line.
constexpr int kSpareWidth = 5;
}  // namespace

const FontGlyph* FontData::find(int id) const {
  const auto found = first.find(id);
  return found == first.end() ? nullptr : &glyphs[found->second];
}

std::vector<int> codePoints(const std::string& text) {
  std::vector<int> out;
  for (const char c : text) {
    const int byte = static_cast<unsigned char>(c);
    if (byte < 0x80)
      out.push_back(byte);
    else if (byte >= 0xc0)
      out.push_back(byte < 0xe0 ? byte & 0x1f : byte < 0xf0 ? byte & 0x0f : byte & 0x07);
    else if (!out.empty())
      out.back() = out.back() * 64 + (byte & 0x3f);
  }
  return out;
}

std::string characterName(int codePoint) {
  std::string number(16, '\0');
  number.resize(
    static_cast<size_t>(std::snprintf(number.data(), number.size(), "U+%04X", static_cast<unsigned>(codePoint))));
  if (codePoint <= 32 || (codePoint >= 0x7f && codePoint <= 0xa0) || codePoint == 0xad ||
      (codePoint >= 0x2000 && codePoint < 0x2010) || (codePoint >= 0x2028 && codePoint < 0x2030) ||
      codePoint > 0xffff || (codePoint & 0xf800) == 0xd800)
    return number;
  std::string text;
  if (codePoint < 0x80) {
    text = static_cast<char>(codePoint);
  } else {
    if (codePoint < 0x800) {
      text = static_cast<char>(0xc0 | codePoint >> 6);
    } else {
      text = static_cast<char>(0xe0 | codePoint >> 12);
      text += static_cast<char>(0x80 | (codePoint >> 6 & 0x3f));
    }
    text += static_cast<char>(0x80 | (codePoint & 0x3f));
  }
  return text + " (" + number + ")";
}

TextSize measureText(const FontData& font, const std::string& text) {
  TextSize size;
  if (text.empty()) return size;
  const std::vector<int> codes = codePoints(text);
  std::vector<const FontGlyph*> glyphs;
  for (const int code : codes) glyphs.push_back(code == '\n' ? nullptr : font.find(code));
  int64_t lines = 1, line = 0, lineHeight = font.lineHeight;
  for (size_t i = 0; i < codes.size(); ++i) {
    if (codes[i] == '\n') {
      ++lines;
      line = 0;
    }
    if (const FontGlyph* glyph = glyphs[i]) {
      line += glyph->width;
      if (i > 0 && glyphs[i - 1]) line += int64_t{glyphs[i - 1]->xadvance} - glyphs[i - 1]->width;
      lineHeight = std::max(lineHeight, int64_t{glyph->height} + std::max(glyph->yoffset, 0));
      const FontGlyph* next = i + 1 < codes.size() ? glyphs[i + 1] : nullptr;
      for (const FontGlyph::Kerning& pair : glyph->kernings)
        if (next && pair.second == next->id) {
          line += pair.amount;
          break;
        }
    }
    // Only whole lines count: an advance below 0 takes back what stood before it.
    if (i + 1 == codes.size() || codes[i + 1] == '\n') size.line = std::max(size.line, line);
  }
  size.width = size.line + kSpareWidth;
  size.height = lines * font.lineHeight + (lineHeight - font.lineHeight);
  return size;
}

double shrunkScale(const TextSize& size, int width, int height) {
  if (size.width < 1 || size.height < 1) return 1.0;
  return std::min({1.0, width / static_cast<double>(size.width), height / static_cast<double>(size.height)});
}
