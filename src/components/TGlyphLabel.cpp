#include "components/TGlyphLabel.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <utility>

#include "common/TBitmapFont.h"
#include "vendelo-sdl2/Drawing.h"
#include "vendelo-sdl2/MyUtils.h"

using namespace vendelo_sdl2;

TGlyphLabel::TGlyphLabel(SDL_Renderer* pRenderer, int x, int y, int width, int height, std::string defaultText,
                         std::string bitmapFontXML, std::string ComponentName)
  : TGuiComponent(pRenderer, x, y, width, height, std::move(ComponentName)),
    mNewText(std::move(defaultText)),
    mFont(TBitmapFont::FindBitmapFont(bitmapFontXML)) {
  if (!mFont) mFont = TBitmapFont::Open(GetRenderer(), bitmapFontXML, bitmapFontXML + ".fnt");
}

TGlyphLabel::TGlyphLabel(SDL_Renderer* pRenderer, int x, int y, int width, int height, std::string bitmapFontXML,
                         std::string ComponentName)
  : TGlyphLabel(pRenderer, x, y, width, height, std::string(), std::move(bitmapFontXML), std::move(ComponentName)) {
}

TGlyphLabel::~TGlyphLabel() = default;

void TGlyphLabel::SetText(std::string text) { mNewText = std::move(text); }

void TGlyphLabel::SetAlignment(TAlignment align) {
  mAlign = align;
  mSomethingChanged = true;
}

void TGlyphLabel::SetFont(const std::string& name) { mFont = TBitmapFont::FindBitmapFont(name); }

void TGlyphLabel::SetResize(bool resize) {
  mResize = resize;
  mResizeOnlyDown = false;
  mAutosizeX = false;
  mAutosizeY = false;
}

void TGlyphLabel::SetResizeOnlyDown(bool) {
  mResize = true;
  mResizeOnlyDown = true;  // by design also for false
  mAutosizeX = false;
  mAutosizeY = false;
}

void TGlyphLabel::SetAutosize(bool x, bool y) {
  mAutosizeX = x;
  mAutosizeY = y;
  mResize = false;
}

void TGlyphLabel::SetOffset(int x, int y) {
  mDrawXOfset = x;
  mDrawYOfset = y;
}

void TGlyphLabel::SetRotation(double angle) { mAngle = angle; }

void TGlyphLabel::SetResizeFactor(double x, double y) {
  mResizeFactorX = static_cast<float>(x);
  mResizeFactorY = static_cast<float>(y);
}

int TGlyphLabel::GetCharCode(std::string text) const { return MyUtils::GetUTF8CodePoint(text.c_str(), nullptr); }

void TGlyphLabel::UpdateCachedTextures() {
  if (!mSomethingChanged && mText == mNewText && mpTargetTexture) return;
  mText = mNewText;
  mpTargetTexture = nullptr;
  mpTextTexture.reset();
  mSomethingChanged = false;
  if (mText.empty() || !mFont) return;
  mpTextTexture.reset(mFont->RenderText(GetRenderer(), mText, &mTextureW, &mTextureH, mAlign));
  mpTargetTexture = mpTextTexture.get();
  if (mAutosizeX) mDestRect.w = mTextureW;
  if (mAutosizeY) mDestRect.h = mTextureH;
}

void TGlyphLabel::OnTexturesLost() {
  mSomethingChanged = true;
  TGuiComponent::OnTexturesLost();
}

bool TGlyphLabel::staysInside() const {
  const bool isRendered = mpTargetTexture && !mSomethingChanged && mText == mNewText;
  const bool fits = mResize || (mTextureW <= mDestRect.w && mTextureH <= mDestRect.h);
  const bool isStraight = mAngle == 0.0 && mResizeFactorX == 1.0f && mResizeFactorY == 1.0f;
  return isRendered && fits && isStraight && mDrawXOfset == 0 && mDrawYOfset == 0;
}

void TGlyphLabel::draw() {
  if (!mVisible) return;
  UpdateCachedTextures();
  if (!mpTargetTexture) return;

  SDL_Rect dst = mDestRect;
  if (mpParent) {
    dst.x = static_cast<int>(static_cast<float>(mOrigPosX) * mResizeFactorX + static_cast<float>(mpParent->getX()));
    dst.y = static_cast<int>(static_cast<float>(mOrigPosY) * mResizeFactorY + static_cast<float>(mpParent->getY()));
  }
  float W = static_cast<float>(mDestRect.w), H = static_cast<float>(mDestRect.h);
  float w = static_cast<float>(mTextureW), h = static_cast<float>(mTextureH);
  if (mResize) {
    double f = std::min(static_cast<double>(W) / w, static_cast<double>(H) / h);
    if (mResizeOnlyDown) f = std::min(f, 1.0);
    w = static_cast<float>(w * f);
    h = static_cast<float>(h * f);
  } else {
    // A text larger than its rectangle grows out of it to the right and downwards.
    W = std::max(W, w);
    H = std::max(H, h);
  }

  const auto shift = [](int& position, float by) {
    position = static_cast<int>(static_cast<float>(position) + by);
  };
  const auto before = [](TPart part, float spare) {
    return part == TPart::FIRST ? 0.0f : part == TPart::MIDDLE ? spare / 2 : spare;
  };
  shift(dst.x, before(horizontalPart(mAlign), W - w));
  shift(dst.y, before(verticalPart(mAlign), H - h));
  dst.x += mDrawXOfset;
  dst.y += mDrawYOfset;
  dst.w = static_cast<int>(w);
  dst.h = static_cast<int>(h);

  // One factor alone is not applied. Under a parent the position is scaled already.
  if (mResizeFactorX != 1.0f && mResizeFactorY != 1.0f) {
    const int W2 = static_cast<int>(roundf(w * mResizeFactorX));
    const int H2 = static_cast<int>(roundf(h * mResizeFactorY));
    if (!mpParent) {
      shift(dst.x, -(static_cast<float>(W2) - w) / 2);
      shift(dst.y, -(static_cast<float>(H2) - h) / 2);
    }
    dst.w = W2;
    dst.h = H2;
  }

  SDL_SetTextureAlphaMod(mpTargetTexture, static_cast<Uint8>(mAlpha));
  if (0.0 >= mAngle)
    drawing::Copy(GetRenderer(), mpTargetTexture, nullptr, &dst);
  else
    drawing::CopyEx(GetRenderer(), mpTargetTexture, nullptr, &dst, mAngle, nullptr, SDL_FLIP_NONE);
}

Uint32 TGlyphLabel::getpixel(SDL_Surface* surface, int x, int y) {
  const Uint8 size = surface->format->BytesPerPixel;
  Uint8* pixels = static_cast<Uint8*>(surface->pixels);
  return MyUtils::GetPixel(pixels + static_cast<ptrdiff_t>(y) * surface->pitch + static_cast<ptrdiff_t>(x) * size,
                           size);
}

void TGlyphLabel::putpixel(SDL_Surface* surface, int x, int y, Uint32 pixel, bool) {
  const Uint8 size = surface->format->BytesPerPixel;
  if (size > 4) return;
  Uint8* start = static_cast<Uint8*>(surface->pixels) + static_cast<ptrdiff_t>(y) * surface->pitch +
                 static_cast<ptrdiff_t>(x) * size;
  for (int i = 0; i < size; ++i) start[i] = static_cast<Uint8>(pixel >> (8 * i));
}
