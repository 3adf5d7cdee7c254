// The part of the digit display that builds its strip and separators out of a font.
#include <algorithm>
#include <cstdio>

#include "common/TBitmapFont.h"
#include "components/TControlCyphers3.h"
#include "vendelo-sdl2/PictureFormat.h"
#include "vendelo-sdl2/TAppGuiModule.h"

using namespace vendelo_sdl2;

namespace {

constexpr int kStripRows = 11;

// The strip's row of a digit. The second row of 0 closes the circle, so that the turn from 9 to 0 is continuous.
int rowOf(int digit, bool reversed) { return reversed ? 10 - digit : digit; }
int secondZeroRow(bool reversed) { return reversed ? 0 : 10; }

void reportMissing(const std::string& component, char glyph) {
  std::printf("Component %s: the font has no glyph '%c', its cell stays empty.\n", component.c_str(), glyph);
}

// Copies one glyph to the middle of its row, and the 0 to the extra row too.
void copyDigit(SDL_Surface* strip, const SDL_Surface* source, const SDL_Rect& srcRect, int digit, bool reversed,
               int rowHeight) {
  const int x = (strip->w - srcRect.w) / 2, y = (rowHeight - srcRect.h) / 2;
  MyUtils::BlendInto(strip, x, rowOf(digit, reversed) * rowHeight + y, source, srcRect);
  if (digit == 0) MyUtils::BlendInto(strip, x, secondZeroRow(reversed) * rowHeight + y, source, srcRect);
}

// A layer with one glyph on it; the rectangle keeps its size and goes to the origin.
TTexturePtr separatorLayer(SDL_Renderer* renderer, const SDL_Surface* source, SDL_Rect& rect) {
  const MyUtils::TSurfacePtr layer(TAppGuiModule::CreateLayerSurface(rect.w, rect.h, 0, 0, 0));
  MyUtils::BlendInto(layer.get(), 0, 0, source, rect);
  rect.x = rect.y = 0;
  return MyUtils::LayerOf(renderer, layer.get());
}

// Null when the font has no such glyph or there is no memory.
MyUtils::TSurfacePtr glyphPicture(TTF_Font* font, SDL_Color color, char charCode) {
  const Uint16 codePoint = static_cast<unsigned char>(charCode);
  if (!font || !TTF_GlyphIsProvided(font, codePoint)) return nullptr;
  return MyUtils::TSurfacePtr(TTF_RenderGlyph_Blended(font, codePoint, color));
}

}  // namespace

void TControlCyphers3::SetFont(TBitmapFont* font) {
  SDL_Renderer* renderer = GetRenderer();
  if (!font || !renderer) return;
  releaseTextures();
  mFontName = font->Name();
  mDotRect = mCommaRect = SDL_Rect{};
  mGlyphWidth = font->MaxGlyphWidth();
  mGlyphHeight = font->MaxGlyphHeight();
  const MyUtils::TSurfacePtr strip(
    TAppGuiModule::CreateLayerSurface(mGlyphWidth, mGlyphHeight * kStripRows, 0, 0, 0));
  const SDL_Surface* const atlas = font->GlyphPicture();

  bool reported = false;
  auto find = [&](int codePoint) {
    const TBitmapFont::TGlyph* glyph = font->FindGlyph(codePoint);
    if (!glyph && !reported) reportMissing(mName, static_cast<char>(codePoint));
    reported = reported || !glyph;
    return glyph;
  };
  for (int i = 0; strip && i <= 9; ++i)
    if (const TBitmapFont::TGlyph* glyph = find(48 + i))
      copyDigit(strip.get(), atlas, SDL_Rect{glyph->x, glyph->y, glyph->width, glyph->height}, i, mSpinDirection,
                mGlyphHeight);
  mpCyphers = MyUtils::LayerOf(renderer, strip.get());
  if (const TBitmapFont::TGlyph* glyph = find(44)) {
    mCommaRect = SDL_Rect{glyph->x, glyph->y, glyph->width, glyph->height};
    mpComma = separatorLayer(renderer, atlas, mCommaRect);
  }
  if (const TBitmapFont::TGlyph* glyph = find(46)) {
    mDotRect = SDL_Rect{glyph->x, glyph->y, glyph->width, glyph->height};
    mpDot = separatorLayer(renderer, atlas, mDotRect);
  }
  if (mLocale == COMMA_DECIMAL_DOT_THOUSANDS) swapSeparators();
}

void TControlCyphers3::OnTexturesLost() {
  const bool swapped = mSeparatorsSwapped;
  if (!mFontName.empty()) SetFont(TBitmapFont::FindBitmapFont(mFontName));
  if (mSeparatorsSwapped != swapped) swapSeparators();
  TGuiComponent::OnTexturesLost();
}

void TControlCyphers3::SetFont(TTF_Font* font, SDL_Color color) {
  SDL_Renderer* renderer = GetRenderer();
  if (!font || !renderer) return;
  releaseTextures();
  mFontName.clear();
  mDotRect = mCommaRect = SDL_Rect{};
  mGlyphWidth = 0;
  for (Uint16 c = '0'; c <= '9'; ++c) {
    int minx = 0, maxx = 0;
    TTF_GlyphMetrics(font, c, &minx, &maxx, nullptr, nullptr, nullptr);
    mGlyphWidth = std::max(mGlyphWidth, maxx - minx);
  }
  // The height comes from the width figures here while the rows are as high as the component: as designed.
  mGlyphHeight = mGlyphWidth;
  const int rowHeight = mDestRect.h;
  const MyUtils::TSurfacePtr strip(TAppGuiModule::CreateLayerSurface(mGlyphWidth, rowHeight * kStripRows, 0, 0, 0));

  bool reported = false;
  auto render = [&](char c, SDL_Rect& bounds) {
    MyUtils::TSurfacePtr glyph = MyUtils::InDrawnFormat(glyphPicture(font, color, c));
    bounds = glyph ? SDL_Rect{0, 0, glyph->w, glyph->h} : SDL_Rect{};
    if (!glyph && !reported) reportMissing(mName, c);
    reported = reported || !glyph;
    return glyph;
  };
  for (int i = 0; strip && i <= 9; ++i) {
    SDL_Rect bounds;
    if (const MyUtils::TSurfacePtr glyph = render(static_cast<char>('0' + i), bounds))
      copyDigit(strip.get(), glyph.get(), bounds, i, mSpinDirection, rowHeight);
  }
  mpCyphers = MyUtils::LayerOf(renderer, strip.get());
  if (const MyUtils::TSurfacePtr glyph = render(',', mCommaRect))
    mpComma = separatorLayer(renderer, glyph.get(), mCommaRect);
  if (const MyUtils::TSurfacePtr glyph = render('.', mDotRect))
    mpDot = separatorLayer(renderer, glyph.get(), mDotRect);
  if (mLocale == COMMA_DECIMAL_DOT_THOUSANDS) swapSeparators();
}

SDL_Texture* TControlCyphers3::GlyphOfFont(TTF_Font* font, SDL_Color color, char charCode,
                                           SDL_Rect* boundsOut) const {
  SDL_Rect bounds{};
  const MyUtils::TSurfacePtr picture = glyphPicture(font, color, charCode);
  TTexturePtr texture = MyUtils::TextureOf(GetRenderer(), picture.get());
  if (texture) SDL_QueryTexture(texture.get(), nullptr, nullptr, &bounds.w, &bounds.h);
  if (boundsOut) *boundsOut = bounds;
  return texture.release();
}
