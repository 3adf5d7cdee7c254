#pragma once

#include <memory>
#include <vector>

#include "components/TControlCyphers3.h"
#include "tests/components/SegmentFont.h"
#include "tests/components/WidgetFixture.h"

// What the tests of the rolling digits share.
namespace cypherstest {

using namespace vendelo_sdl2;

struct Digits : TControlCyphers3 {
  Digits(int x, int y, int w, int h) : TControlCyphers3(nullptr, x, y, w, h, 10, "digits") {}
  using TControlCyphers3::mChangeDuration;
  using TControlCyphers3::mCommaRect;
  using TControlCyphers3::mCurrentValue;
  using TControlCyphers3::mCypherGap;
  using TControlCyphers3::mCypherPositions;
  using TControlCyphers3::mCypherWidth;
  using TControlCyphers3::mDecimalNumberOffset;
  using TControlCyphers3::mDecimalNumberSize;
  using TControlCyphers3::mDecimalPlaces;
  using TControlCyphers3::mDigitChangeDuration;
  using TControlCyphers3::mDotRect;
  using TControlCyphers3::mFinalValue;
  using TControlCyphers3::mfSpinFunction;
  using TControlCyphers3::mGlyphHeight;
  using TControlCyphers3::mGlyphWidth;
  using TControlCyphers3::mIsMovingUp;
  using TControlCyphers3::mLastChangeTime;
  using TControlCyphers3::mLastValue;
  using TControlCyphers3::mLocale;
  using TControlCyphers3::mpComma;
  using TControlCyphers3::mpCyphers;
  using TControlCyphers3::mpDot;
  using TControlCyphers3::mResizeFactorX;
  using TControlCyphers3::mResizeFactorY;
  using TControlCyphers3::mShowLeadingZeros;
  using TControlCyphers3::mSpinDirection;
  using TControlCyphers3::mUseKernings;
};

inline double atOnce(double, double) { return 1.0; }

class Cyphers : public WidgetTest {
 protected:
  ~Cyphers() override { TBitmapFont::CleanupBitmapFonts(); }
  // A display of 390 by 50 pixels: cells of 30 pixels.
  std::unique_ptr<Digits> make(int decimalPlaces) {
    auto digits = std::make_unique<Digits>(5, 20, 390, 50);
    digits->SetDecimalPlaces(decimalPlaces);
    digits->SetFont(font);
    return digits;
  }
  std::vector<Uint8> picture(Digits& digits) {
    clear(20, 30, 60);
    digits.draw();
    std::vector<Uint8> rgb(static_cast<size_t>(kScreenW) * kScreenH * 3);
    EXPECT_EQ(0, SDL_RenderReadPixels(renderer, nullptr, SDL_PIXELFORMAT_RGB24, rgb.data(), kScreenW * 3));
    return rgb;
  }
  // The picture of a value at rest.
  std::vector<Uint8> resting(long value, int decimalPlaces) {
    auto digits = make(decimalPlaces);
    digits->SetFinalValue(value);
    digits->ResetAnimation();
    return picture(*digits);
  }
  TBitmapFont* const font = segmentFont(renderer, "");
};

}  // namespace cypherstest
