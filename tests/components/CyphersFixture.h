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
  // What the last draw showed.
  using TControlCyphers3::mCurrentValue;
  using TControlCyphers3::mCypherPositions;
};

inline double atOnce(double, double) { return 1.0; }

class Cyphers : public WidgetTest {
 protected:
  ~Cyphers() override { TBitmapFont::CleanupBitmapFonts(); }
  // A display of 390 by 50 pixels: cells of 30 pixels.
  template <typename AnyDigits = Digits>
  std::unique_ptr<AnyDigits> make(int decimalPlaces) {
    auto digits = std::make_unique<AnyDigits>(5, 20, 390, 50);
    digits->SetDecimalPlaces(decimalPlaces);
    digits->SetFont(font);
    return digits;
  }
  // Whether a wheel from 5 to 7 passes the 6, or all the other digits.
  static bool movesUp(const Digits& digits) {
    return digits.cypherPos(TControlCyphers3::Cypher{5, 0, 1000, 7}, 1100) > 5.0f;
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
