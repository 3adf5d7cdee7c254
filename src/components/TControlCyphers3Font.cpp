// The part of the digit display that builds its strip and separators out of a font.
#include <algorithm>
#include <cstdio>

#include "common/TBitmapFont.h"
#include "components/TControlCyphers3.h"
#include "vendelo-sdl2/TAppGuiModule.h"
#include "vendelo-sdl2/TRenderGuard.h"

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
void copyDigit(SDL_Renderer* renderer, SDL_Texture* source, const SDL_Rect& srcRect, int digit, bool reversed,
               int rowWidth, int rowHeight) {
  SDL_Rect destRect{(rowWidth - srcRect.w) / 2, 0, srcRect.w, srcRect.h};
  destRect.y = rowOf(digit, reversed) * rowHeight + (rowHeight - srcRect.h) / 2;
  SDL_RenderCopy(renderer, source, &srcRect, &destRect);
  if (digit != 0) return;
  destRect.y = secondZeroRow(reversed) * rowHeight + (rowHeight - srcRect.h) / 2;
  SDL_RenderCopy(renderer, source, &srcRect, &destRect);
}

// A layer with one glyph on it; the rectangle keeps its size and goes to the origin.
TTexturePtr separatorLayer(SDL_Renderer* renderer, SDL_Texture* source, SDL_Rect& rect) {
  TTexturePtr layer(TAppGuiModule::CreateLayer(nullptr, rect.w, rect.h, 0, 0, 0, 0, 16));
  if (layer) {
    TRenderGuard guard(renderer);
    guard.target(layer.get());
    SDL_RenderCopy(renderer, source, &rect, nullptr);
  }
  rect.x = rect.y = 0;
  return layer;
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
  mpCyphers.reset(TAppGuiModule::CreateLayer(nullptr, mGlyphWidth, mGlyphHeight * kStripRows, 0, 0, 0, 0, 16));
  TRenderGuard guard(renderer);
  guard.target(mpCyphers.get());

  bool reported = false;
  auto find = [&](int codePoint) {
    const TBitmapFont::TGlyph* glyph = font->FindGlyph(codePoint);
    if (!glyph && !reported) reportMissing(mName, static_cast<char>(codePoint));
    reported = reported || !glyph;
    return glyph;
  };
  for (int i = 0; mpCyphers && i <= 9; ++i)
    if (const TBitmapFont::TGlyph* glyph = find(48 + i))
      copyDigit(renderer, font->GlyphTexture(), SDL_Rect{glyph->x, glyph->y, glyph->width, glyph->height}, i,
                mSpinDirection, mGlyphWidth, mGlyphHeight);
  if (const TBitmapFont::TGlyph* glyph = find(44)) {
    mCommaRect = SDL_Rect{glyph->x, glyph->y, glyph->width, glyph->height};
    mpComma = separatorLayer(renderer, font->GlyphTexture(), mCommaRect);
  }
  if (const TBitmapFont::TGlyph* glyph = find(46)) {
    mDotRect = SDL_Rect{glyph->x, glyph->y, glyph->width, glyph->height};
    mpDot = separatorLayer(renderer, font->GlyphTexture(), mDotRect);
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
  mpCyphers.reset(TAppGuiModule::CreateLayer(nullptr, mGlyphWidth, rowHeight * kStripRows, 0, 0, 0, 0, 16));
  TRenderGuard guard(renderer);
  guard.target(mpCyphers.get());

  bool reported = false;
  auto render = [&](char c, SDL_Rect& bounds) {
    TTexturePtr glyph(GlyphOfFont(font, color, c, &bounds));
    if (!glyph && !reported) reportMissing(mName, c);
    reported = reported || !glyph;
    return glyph;
  };
  for (int i = 0; mpCyphers && i <= 9; ++i) {
    SDL_Rect bounds;
    if (const TTexturePtr glyph = render(static_cast<char>('0' + i), bounds))
      copyDigit(renderer, glyph.get(), bounds, i, mSpinDirection, mGlyphWidth, rowHeight);
  }
  if (const TTexturePtr glyph = render(',', mCommaRect))
    mpComma = separatorLayer(renderer, glyph.get(), mCommaRect);
  if (const TTexturePtr glyph = render('.', mDotRect)) mpDot = separatorLayer(renderer, glyph.get(), mDotRect);
  if (mLocale == COMMA_DECIMAL_DOT_THOUSANDS) swapSeparators();
}

SDL_Texture* TControlCyphers3::GlyphOfFont(TTF_Font* font, SDL_Color color, char charCode,
                                           SDL_Rect* boundsOut) const {
  SDL_Rect bounds{};
  SDL_Texture* texture = nullptr;
  const Uint16 codePoint = static_cast<unsigned char>(charCode);
  if (font && TTF_GlyphIsProvided(font, codePoint)) {
    if (SDL_Surface* surface = TTF_RenderGlyph_Blended(font, codePoint, color)) {
      texture = SDL_CreateTextureFromSurface(GetRenderer(), surface);
      SDL_FreeSurface(surface);
    }
  }
  if (texture) SDL_QueryTexture(texture, nullptr, nullptr, &bounds.w, &bounds.h);
  if (boundsOut) *boundsOut = bounds;
  return texture;
}
