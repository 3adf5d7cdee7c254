#include "common/TBitmapFont.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <utility>

#include "vendelo-sdl2/MyUtils.h"
#include "vendelo-sdl2/PixelLimits.h"
#include "vendelo-sdl2/TAppGuiModule.h"

using namespace vendelo_sdl2;

namespace {

// Added to the width of the widest line.
constexpr int kSpareWidth = 5;

// The code point at `position`, which moves behind it. A byte that starts no sequence, or a sequence that the end
// of the text cuts, is -1 and costs at least one byte.
int decode(const std::string& text, size_t& position) {
  char bytes[8] = {};
  const size_t left = text.size() - position;
  text.copy(bytes, std::min<size_t>(left, 4), position);
  const char* end = bytes;
  const int codePoint = MyUtils::GetUTF8CodePoint(bytes, &end);
  const auto length = static_cast<size_t>(std::max<ptrdiff_t>(end - bytes, 1));
  position += std::min(length, left);
  return length > left ? -1 : codePoint;
}

}  // namespace

std::vector<TBitmapFont*>& TBitmapFont::BitmapFonts = *new std::vector<TBitmapFont*>;
std::vector<TBitmapFont*>& TBitmapFont::UnregisteredFonts = *new std::vector<TBitmapFont*>;

// A text taken apart: code points with their glyphs, and the sizes that its texture needs.
struct TBitmapFont::Layout {
  std::vector<int> text;
  std::vector<TGlyph*> glyphs;  // null for a line break and for a code point without a glyph
  std::vector<int64_t> lineWidths;
  int64_t max_width = 0;
  int64_t max_height = 0;

  bool fitsATexture() const {
    return max_width <= MyUtils::kMostLayerPixels && max_height <= MyUtils::kMostLayerPixels &&
           max_width * max_height <= MyUtils::kMostLayerPixels;
  }

  // What the pair of entry i and the one after it adds to the pen.
  int kerning(size_t i) const {
    if (i + 1 >= text.size() || text[i + 1] < 1 || !glyphs[i + 1]) return 0;
    for (const TGlyph::TKerning& pair : glyphs[i]->kernings)
      if (pair.second_id == glyphs[i + 1]->id) return pair.amount;
    return 0;
  }
};

TBitmapFont::~TBitmapFont() {
  std::erase(BitmapFonts, this);
  std::erase(UnregisteredFonts, this);
  // Fonts that borrow this atlas may be asked to draw once more.
  if (!mpOwnAtlas) return;
  for (const auto* fonts : {&BitmapFonts, &UnregisteredFonts})
    for (TBitmapFont* other : *fonts)
      if (other->mpAtlas == mpAtlas) other->mpAtlas = nullptr;
}

bool TBitmapFont::isRegistered() const {
  return std::find(BitmapFonts.begin(), BitmapFonts.end(), this) != BitmapFonts.end();
}

TBitmapFont* TBitmapFont::Open(SDL_Renderer* renderer, const std::string& name, const std::string& XMLfilename) {
  auto* font = new TBitmapFont(renderer, name, XMLfilename);
  if (font->isRegistered() || !font->mGlyphChars.empty()) return font;
  for (TBitmapFont* earlier : UnregisteredFonts) {
    if (earlier == font || earlier->mName != name || earlier->mXML != XMLfilename) continue;
    if (!earlier->mGlyphChars.empty()) continue;
    // Whoever has the earlier one keeps it, with the sizes that this file has told now: neither draws a glyph.
    earlier->copySizes(*font);
    delete font;
    return earlier;
  }
  return font;
}

TBitmapFont* TBitmapFont::FindBitmapFont(const std::string& name) {
  for (TBitmapFont* font : BitmapFonts)
    if (font->mName == name) return font;
  return nullptr;
}

void TBitmapFont::CleanupBitmapFonts() {
  std::vector<TBitmapFont*> fonts;
  fonts.swap(BitmapFonts);
  for (const TBitmapFont* font : fonts) delete font;
}

void TBitmapFont::shareWith(const TBitmapFont& original) {
  mpAtlas = original.mpAtlas;
  mGlyphChars = original.mGlyphChars;
  copySizes(original);
}

void TBitmapFont::copySizes(const TBitmapFont& original) {
  mMaxHeight = original.mMaxHeight;
  mMaxWidth = original.mMaxWidth;
  mLineHeight = original.mLineHeight;
  mBase = original.mBase;
  mBackgroundColor = original.mBackgroundColor;
  mPaddingTop = original.mPaddingTop;
  mPaddingBottom = original.mPaddingBottom;
  mPaddingLeft = original.mPaddingLeft;
  mPaddingRight = original.mPaddingRight;
}

SDL_Texture* TBitmapFont::GlyphTexture() const {
  if (!mpAtlas) return nullptr;
  if (!mpAtlas->mpGlyphTexture)
    mpAtlas->mpGlyphTexture = MyUtils::TextureOf(mpAtlas->renderer, mpAtlas->picture.get());
  return mpAtlas->mpGlyphTexture.get();
}

TBitmapFont::TGlyph* TBitmapFont::FindGlyph(int id) const {
  for (TGlyph* glyph : mGlyphChars)
    if (glyph->id == id) return glyph;
  return nullptr;
}

// A code point without a glyph counts nothing here, and the glyph before it counts with its width, although the
// drawing moves the pen by its advance: the two differ by design.
TBitmapFont::Layout TBitmapFont::measure(const std::string& text) const {
  Layout layout;
  int64_t line_height = mLineHeight;
  size_t position = 0;
  do {
    const size_t first = layout.text.size();
    int codePoint = 0;
    while (position < text.size() && codePoint != '\n') {
      codePoint = decode(text, position);
      layout.text.push_back(codePoint);
      layout.glyphs.push_back(codePoint == '\n' || codePoint < 0 ? nullptr : FindGlyph(codePoint));
    }
    int64_t line_width = 0;
    for (size_t i = first; i < layout.text.size(); ++i) {
      const TGlyph* glyph = layout.glyphs[i];
      if (!glyph) continue;
      line_width += glyph->width;
      if (const TGlyph* before = i > 0 ? layout.glyphs[i - 1] : nullptr)
        line_width += int64_t{before->xadvance} - before->width;
      line_height = std::max(line_height, int64_t{glyph->height} + (glyph->yoffset < 1 ? 0 : glyph->yoffset));
      line_width += layout.kerning(i);
    }
    layout.lineWidths.push_back(line_width);
    layout.max_width = std::max(layout.max_width, line_width);
  } while (position < text.size());
  layout.lineWidths.push_back(0);  // of what stands behind a last "\n"
  // By the bytes: in a text that is no UTF-8 a broken sequence may have swallowed one, which still makes its line.
  const int64_t lines = 1 + std::count(text.begin(), text.end(), '\n');
  layout.max_width += kSpareWidth;
  layout.max_height = lines * mLineHeight + (line_height - mLineHeight);
  return layout;
}

SDL_Texture* TBitmapFont::RenderText(SDL_Renderer* renderer, const std::string& text, int* widthOut, int* heightOut,
                                     TAlignment textAlignment) const {
  if (widthOut) *widthOut = 0;
  if (heightOut) *heightOut = 0;
  if (text.empty()) return nullptr;
  const Layout layout = measure(text);
  if (!layout.fitsATexture()) return nullptr;
  const int max_width = static_cast<int>(layout.max_width);
  const int max_height = static_cast<int>(std::max(layout.max_height, -MyUtils::kMostLayerPixels));
  if (widthOut) *widthOut = max_width;
  if (heightOut) *heightOut = max_height;

  // An empty font has lines of height 0, a texture has not.
  const MyUtils::TSurfacePtr picture(TAppGuiModule::CreateLayerSurface(
    max_width, std::max(max_height, 1), mBackgroundColor.r, mBackgroundColor.g, mBackgroundColor.b));
  if (!picture) return nullptr;

  const auto lineStart = [&](size_t line) -> int64_t {
    const int64_t spare = layout.max_width - layout.lineWidths[line];
    switch (horizontalPart(textAlignment)) {
      case TPart::MIDDLE:
        return std::llround(static_cast<double>(spare) / 2.0);
      case TPart::LAST:
        return spare;
      default:
        return 0;
    }
  };

  size_t line = 0;
  int64_t cursorx = lineStart(line);
  int64_t cursory = 0;
  for (size_t i = 0; i < layout.text.size(); ++i) {
    if (layout.text[i] == '\n') {
      cursorx = lineStart(++line);
      cursory += mLineHeight;
      continue;
    }
    const TGlyph* glyph = layout.glyphs[i];
    if (!glyph) continue;
    const int64_t x = cursorx + glyph->xoffset + mPaddingLeft, y = cursory + glyph->yoffset + mPaddingTop;
    MyUtils::BlendInto(picture.get(), x, y, GlyphPicture(), {glyph->x, glyph->y, glyph->width, glyph->height});
    cursorx += int64_t{glyph->xadvance} + layout.kerning(i);
  }
  return MyUtils::LayerOf(renderer, picture.get()).release();
}
