#include "components/TControlCyphers3.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>

#include "vendelo-sdl2/Drawing.h"
#include "vendelo-sdl2/Saturate.h"
#include "vendelo-sdl2/Ticks.h"

using namespace vendelo_sdl2;

double linearSpinFunction(double t, double) { return std::sqrt(t); }

float linearFunction(float t) { return t; }

float cosFunction(float t) {
  return static_cast<float>((1.0 - std::cos(static_cast<float>(t * 3.141592653589793))) * 0.5);
}

namespace {

// The part of a time span that has gone by, 0 to 1; a span of nothing is over.
float partDone(Uint32 now, Uint32 begin, float duration) {
  if (!(duration > 0.0f)) return 1.0f;
  return std::clamp(static_cast<float>(now - begin) / duration, 0.0f, 1.0f);
}

}  // namespace

struct TControlCyphers3::Frame {
  SDL_Renderer* renderer;
  SDL_Rect parentRect;
  int width;
  int cypherW;
  float scaleFactor;
  int hasHitFirstDigit;
};

TControlCyphers3::TControlCyphers3(SDL_Renderer* pRenderer, int x, int y, int w, int h, int /*cyphersCount*/,
                                   std::string ComponentName)
  : TGuiComponent(pRenderer, x, y, w, h, std::move(ComponentName)),
    mFinalValue(0),
    mLastValue(0),
    mCurrentValue(0),
    mLastChangeTime(0),
    mChangeDuration(4000.0f),
    mDigitChangeDuration(200.0f),
    mSpinDirection(false),
    mShowLeadingZeros(false),
    mDecimalNumberSize(1.0f),
    mDecimalNumberOffset(1.0f),
    mLocale(COMMA_DECIMAL_DOT_THOUSANDS),
    mfSpinFunction(linearSpinFunction),
    mUseKernings(false),
    mCypherGap(0),
    mCypherWidth(0),
    mDecimalPlaces(2),
    mResizeFactorX(1.0),
    mResizeFactorY(1.0),
    mDotRect{0, 0, 0, 0},
    mCommaRect{0, 0, 0, 0},
    mGlyphHeight(0),
    mGlyphWidth(0),
    mIsMovingUp(false),
    mCypherPositions{} {}

TControlCyphers3::~TControlCyphers3() = default;

void TControlCyphers3::SetFinalValue(long value) {
  if (value == mFinalValue) return;
  const Uint32 now = SDL_GetTicks();
  mLastValue = CurrentValue(now);
  mFinalValue = value;
  mIsMovingUp = static_cast<double>(mFinalValue) > mLastValue;
  mLastChangeTime = MyUtils::startTick(now);
  mRunOver = 0;
}

long TControlCyphers3::FinalValue() const { return mFinalValue; }

void TControlCyphers3::SetCurrentValue(long value) {
  mIsMovingUp = mFinalValue > value;
  mLastValue = static_cast<double>(value);
}

double TControlCyphers3::CurrentValue(Uint32 time) const {
  const double finalValue = static_cast<double>(mFinalValue);
  if (mLastChangeTime == 0) return finalValue;
  double t = partDone(time, mLastChangeTime, mChangeDuration);
  double elapsed = static_cast<double>(time - mLastChangeTime);
  if (runIsOver()) {
    t = 1.0;
    elapsed = std::max(elapsed, static_cast<double>(mChangeDuration));
  }
  double s = mfSpinFunction ? mfSpinFunction(t, elapsed) : t;
  // A result that is no number would stay in mLastValue for good; one a rounding error short of the end would miss
  // the last digits of a large value.
  if (!std::isfinite(s)) s = t;
  if (std::abs(s - 1.0) < 1e-9) return finalValue;
  return s * finalValue + (1.0 - s) * mLastValue;
}

void TControlCyphers3::ResetAnimation() {
  mLastChangeTime = 0;
  mLastValue = static_cast<double>(mFinalValue);
  for (Cypher& cypher : mCypherPositions) cypher.lastChange = 0;
}

void TControlCyphers3::SetDecimalPlaces(int places) { mDecimalPlaces = places; }

void TControlCyphers3::SetDecimalScale(float size, float offset) {
  mDecimalNumberSize = size;
  mDecimalNumberOffset = offset;
}

void TControlCyphers3::SetLocale(DenominationLocale locale) {
  // mLocale itself stays: each call with the other locale swaps, as documented.
  if (locale != mLocale) swapSeparators();
}

void TControlCyphers3::SetCypherGap(int gap) { mCypherGap = gap; }
void TControlCyphers3::SetCypherWidth(int width) { mCypherWidth = width; }
void TControlCyphers3::SetShowLeadingZeros(bool show) { mShowLeadingZeros = show; }
void TControlCyphers3::SetSpinDirection(bool direction) { mSpinDirection = direction; }
void TControlCyphers3::SetSpinFunction(std::function<double(double, double)> function) {
  mfSpinFunction = std::move(function);
}
void TControlCyphers3::SetDigitChangeDuration(float duration) { mDigitChangeDuration = duration; }
void TControlCyphers3::SetResizeFactor(double x, double y) {
  mResizeFactorX = x;
  mResizeFactorY = y;
}

float TControlCyphers3::cypherPos(const Cypher& cypher, const Uint32& now) const {
  const bool atRest = cypher.lastChange == 0 || cypher.over == cypher.lastChange;
  float t = atRest ? 1.0f : partDone(now, cypher.lastChange, mDigitChangeDuration);
  const float target = static_cast<float>(cypher.targetDigit);
  if (t >= 1.0f) return target;  // exactly: a position a rounding error above 0 would show a leading zero
  t = cosFunction(cypher.lastTransition + t * (1.0f - cypher.lastTransition));
  if (mIsMovingUp) {
    if (target - cypher.digit < -0.001f)
      return std::fmod(cypher.digit + t * (target + 10.0f - cypher.digit), 10.0f);
  } else if (target - cypher.digit > 0.001f) {
    const float pos = cypher.digit - t * (10.0f + cypher.digit - target);
    if (pos >= 0.0f) return pos;
    return pos < -0.001f ? 10.0f + pos : 0.0f;
  }
  return cypher.digit * (1.0f - t) + target * t;
}

void TControlCyphers3::noteRest(Uint32 now) {
  if (mLastChangeTime != 0 && partDone(now, mLastChangeTime, mChangeDuration) >= 1.0f) mRunOver = mLastChangeTime;
  for (Cypher& cypher : mCypherPositions)
    if (cypher.lastChange != 0 && partDone(now, cypher.lastChange, mDigitChangeDuration) >= 1.0f)
      cypher.over = cypher.lastChange;
}

void TControlCyphers3::updateWheels(long value, Uint32 now) {
  const unsigned long digits =
    value < 0 ? 0UL - static_cast<unsigned long>(value) : static_cast<unsigned long>(value);
  unsigned long orderOfMagnitude = 1;
  for (Cypher& cypher : mCypherPositions) {
    const int currentDigit = static_cast<int>(digits % (orderOfMagnitude * 10) / orderOfMagnitude);
    orderOfMagnitude *= 10;
    if (cypher.lastChange != 0 && cypher.targetDigit == currentDigit) continue;
    if (cypher.lastChange != 0) {
      cypher.digit = cypherPos(cypher, now);
      const float c =
        cypher.over == cypher.lastChange ? 1.0f : partDone(now, cypher.lastChange, mDigitChangeDuration);
      cypher.lastTransition = 0.5f - std::abs(0.5f - c);
    } else {
      // A wheel at rest takes its digit without a turn, so that a reset snaps to the final value.
      cypher.digit = static_cast<float>(currentDigit);
      cypher.lastTransition = 0.0f;
    }
    cypher.lastChange = MyUtils::startTick(now);
    cypher.targetDigit = currentDigit;
    cypher.over = 0;
  }
}

void TControlCyphers3::draw() {
  if (!mpCyphers) return;
  Frame frame{GetRenderer(), mDestRect, 0, 0, 0.0f, -1};
  // The colour is left as it is for whatever clears next with the current one.
  SDL_SetRenderDrawColor(frame.renderer, 255, 0, 0, 255);
  if (mpParent) {
    frame.parentRect.x = mOrigPosX + mpParent->getX();
    frame.parentRect.y = mOrigPosY + mpParent->getY();
  }
  frame.width = getWidth();
  frame.cypherW = mCypherWidth ? mCypherWidth : mGlyphWidth;
  if (mGlyphHeight != 0)
    frame.scaleFactor = static_cast<float>(static_cast<double>(frame.parentRect.h) / mGlyphHeight);

  const Uint32 now = SDL_GetTicks();
  noteRest(now);
  const double currentValue = CurrentValue(now);
  const long currentValueRounded = currentValue == static_cast<double>(mFinalValue)
                                     ? mFinalValue
                                     : MyUtils::saturated<long>(std::round(currentValue));
  updateWheels(currentValueRounded, now);

  for (int n = kCypherCount - 1; n >= 0; --n) {
    const float cypherPosition = cypherPos(mCypherPositions[n], now);
    if (cypherPosition != 0.0f && frame.hasHitFirstDigit == -1) frame.hasHitFirstDigit = n;
    if (n == mDecimalPlaces && frame.hasHitFirstDigit < 0) frame.hasHitFirstDigit = n;
    if (frame.hasHitFirstDigit == -1 && !mShowLeadingZeros) continue;
    drawWheel(n, cypherPosition, frame);
    const int64_t beforePoint = int64_t{n} - mDecimalPlaces;  // any number of places may have come
    if (beforePoint > 0 && beforePoint % 3 == 0) drawSeparator(mpComma.get(), mCommaRect, n, frame);
  }
  if (mDecimalPlaces != 0) drawSeparator(mpDot.get(), mDotRect, mDecimalPlaces, frame);
  mCurrentValue = currentValueRounded;
}

void TControlCyphers3::drawWheel(int n, float position, const Frame& frame) {
  const float row = mSpinDirection ? 10.0f - position : position;
  SDL_Rect srcRect{0, MyUtils::toPixels(roundf(row * static_cast<float>(mGlyphHeight))), mGlyphWidth, mGlyphHeight};
  const int left = frame.width - (n + 1) * (frame.cypherW + mCypherGap) + mCypherGap;
  const int centerx = left + frame.cypherW / 2;
  const int scaledGlyphWidth = MyUtils::toPixels(static_cast<float>(mGlyphWidth) * frame.scaleFactor);
  SDL_Rect destRect{centerx - scaledGlyphWidth / 2, 0, scaledGlyphWidth, frame.parentRect.h};

  // A new leading digit grows in from the bottom while its wheel climbs from 0 to 1.
  if (n == frame.hasHitFirstDigit && n > mDecimalPlaces && position < 1.0f && !mShowLeadingZeros) {
    srcRect.h = MyUtils::toPixels(static_cast<float>(srcRect.h) * position);
    if (!mSpinDirection) {
      destRect.y = MyUtils::toPixels((1.0f - position) * static_cast<float>(frame.parentRect.h));
      srcRect.y += destRect.y;
    }
    destRect.h = MyUtils::toPixels(static_cast<float>(srcRect.h) * frame.scaleFactor);
  }
  if (n < mDecimalPlaces) {
    const int oldW = destRect.w, oldH = destRect.h;
    destRect.w = MyUtils::toPixels(static_cast<float>(destRect.w) * mDecimalNumberSize);
    destRect.h = MyUtils::toPixels(static_cast<float>(destRect.h) * mDecimalNumberSize);
    destRect.y += MyUtils::toPixels(static_cast<float>(oldH - destRect.h) * mDecimalNumberOffset / 2.0f);
    destRect.x += (oldW - destRect.w) / 2;
  }
  destRect.x += frame.parentRect.x;
  destRect.y += frame.parentRect.y;
  SDL_SetTextureAlphaMod(mpCyphers.get(), static_cast<Uint8>(mAlpha & 255));
  drawing::Copy(frame.renderer, mpCyphers.get(), &srcRect, &destRect);
}

void TControlCyphers3::drawSeparator(SDL_Texture* texture, const SDL_Rect& source, int n, const Frame& frame) {
  if (!texture) return;
  SDL_Rect scaledCommaRect;
  scaledCommaRect.w = MyUtils::toPixels(roundf(static_cast<float>(source.w) * frame.scaleFactor));
  scaledCommaRect.h = MyUtils::toPixels(roundf(static_cast<float>(source.h) * frame.scaleFactor));
  scaledCommaRect.x = frame.parentRect.x + frame.width -
                      MyUtils::toPixels(static_cast<double>(n) * (frame.cypherW + mCypherGap)) +
                      (mCypherGap - scaledCommaRect.w) / 2;
  scaledCommaRect.y = frame.parentRect.y + frame.parentRect.h - scaledCommaRect.h;
  SDL_SetTextureAlphaMod(texture, static_cast<Uint8>(mAlpha & 255));
  drawing::Copy(frame.renderer, texture, &source, &scaledCommaRect);
}

void TControlCyphers3::drawDotAt(int x, int y, float scale) {
  const SDL_Rect dest{x, y, MyUtils::toPixels(roundf(static_cast<float>(mDotRect.w) * scale)),
                      MyUtils::toPixels(roundf(static_cast<float>(mDotRect.h) * scale))};
  if (mpDot) drawing::Copy(GetRenderer(), mpDot.get(), &mDotRect, &dest);
}

void TControlCyphers3::drawCommaAt(int x, int y, float scale) {
  const SDL_Rect dest{x, y, MyUtils::toPixels(roundf(static_cast<float>(mCommaRect.w) * scale)),
                      MyUtils::toPixels(roundf(static_cast<float>(mCommaRect.h) * scale))};
  if (mpComma) drawing::Copy(GetRenderer(), mpComma.get(), &mCommaRect, &dest);
}

void TControlCyphers3::drawCenteredGlyphAt(int centerx, int y, const SDL_Rect& srcRect, float scale) {
  SDL_Rect dest{centerx, y, MyUtils::toPixels(roundf(static_cast<float>(srcRect.w) * scale)),
                MyUtils::toPixels(roundf(static_cast<float>(srcRect.h) * scale))};
  dest.x -= dest.w / 2;
  if (mpCyphers) drawing::Copy(GetRenderer(), mpCyphers.get(), &srcRect, &dest);
}

void TControlCyphers3::swapSeparators() {
  std::swap(mpDot, mpComma);
  std::swap(mDotRect, mCommaRect);
  mSeparatorsSwapped = !mSeparatorsSwapped;
}

void TControlCyphers3::releaseTextures() {
  for (TTexturePtr* texture : {&mpCyphers, &mpDot, &mpComma}) texture->reset();
  mSeparatorsSwapped = false;
}
