#include "tests/components/CyphersFixture.h"

#include <cmath>
#include <limits>

#include "tests/components/AllocationCount.h"

using namespace cypherstest;

namespace {

// What a new display holds.
struct Inside : Digits {
  using Digits::Digits;
  using TControlCyphers3::mChangeDuration;
  using TControlCyphers3::mCommaRect;
  using TControlCyphers3::mCypherGap;
  using TControlCyphers3::mCypherWidth;
  using TControlCyphers3::mDecimalNumberOffset;
  using TControlCyphers3::mDecimalNumberSize;
  using TControlCyphers3::mDecimalPlaces;
  using TControlCyphers3::mDigitChangeDuration;
  using TControlCyphers3::mDotRect;
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

// What shows nowhere.
struct Stored : Digits {
  using Digits::Digits;
  using TControlCyphers3::mResizeFactorX;
  using TControlCyphers3::mResizeFactorY;
};

struct Plain : TGuiComponent {
  Plain(int x, int y) : TGuiComponent(nullptr, x, y, 10, 10, "parent") {}
};

}  // namespace

TEST(CyphersCurves, FollowTheirFormulas) {
  EXPECT_DOUBLE_EQ(0.5, linearSpinFunction(0.25, 77.0));  // a square root, whatever its name
  EXPECT_DOUBLE_EQ(1.0, linearSpinFunction(1.0, 4000.0));
  EXPECT_EQ(0.3f, linearFunction(0.3f));
  EXPECT_EQ(0.0f, cosFunction(0.0f));
  EXPECT_NEAR(0.146447f, cosFunction(0.25f), 1e-6);
  EXPECT_NEAR(0.5f, cosFunction(0.5f), 1e-6);
  EXPECT_NEAR(0.853553f, cosFunction(0.75f), 1e-6);
  EXPECT_EQ(1.0f, cosFunction(1.0f));
}

TEST_F(Cyphers, StartsAsDocumented) {
  Inside digits(1, 2, 3, 4);
  EXPECT_EQ(0, digits.FinalValue());
  EXPECT_EQ(0.0, digits.mLastValue);
  EXPECT_EQ(0, digits.mCurrentValue);
  EXPECT_EQ(0u, digits.mLastChangeTime);
  EXPECT_EQ(4000.0f, digits.mChangeDuration);
  EXPECT_EQ(200.0f, digits.mDigitChangeDuration);
  EXPECT_FALSE(digits.mSpinDirection);
  EXPECT_FALSE(digits.mShowLeadingZeros);
  EXPECT_EQ(1.0f, digits.mDecimalNumberSize);
  EXPECT_EQ(1.0f, digits.mDecimalNumberOffset);
  EXPECT_EQ(TControlCyphers3::COMMA_DECIMAL_DOT_THOUSANDS, digits.mLocale);
  EXPECT_DOUBLE_EQ(0.3, digits.mfSpinFunction(0.09, 1.0));
  EXPECT_FALSE(digits.mUseKernings);
  EXPECT_EQ(0, digits.mCypherGap);
  EXPECT_EQ(0, digits.mCypherWidth);
  EXPECT_EQ(2, digits.mDecimalPlaces);
  EXPECT_EQ(1.0, digits.mResizeFactorX);
  EXPECT_EQ(1.0, digits.mResizeFactorY);
  EXPECT_EQ(nullptr, digits.mpCyphers);
  EXPECT_EQ(nullptr, digits.mpDot);
  EXPECT_EQ(nullptr, digits.mpComma);
  EXPECT_EQ(0, digits.mGlyphHeight);
  EXPECT_EQ(0, digits.mGlyphWidth);
  EXPECT_EQ((SDL_Rect{0, 0, 0, 0}), digits.mDotRect);
  EXPECT_EQ((SDL_Rect{0, 0, 0, 0}), digits.mCommaRect);
  EXPECT_FALSE(digits.mIsMovingUp);
  EXPECT_EQ(18u, std::size(digits.mCypherPositions));
  EXPECT_EQ(0, TControlCyphers3::COMMA_THOUSANDS_DOT_DECIMAL);
  EXPECT_EQ(1, TControlCyphers3::COMMA_DECIMAL_DOT_THOUSANDS);
}

TEST_F(Cyphers, WithoutAFontNothingIsDrawnAndNoColourSet) {
  Digits digits(0, 0, 390, 50);
  for (const char* font : {"none yet", "null"}) {
    clear(1, 2, 3);
    digits.draw();
    Uint8 r = 0, g = 0, b = 0, a = 0;
    SDL_GetRenderDrawColor(renderer, &r, &g, &b, &a);
    EXPECT_EQ(1, r) << font;
    EXPECT_EQ(0, inked(0x010203).w) << font;
    digits.SetFont(static_cast<TBitmapFont*>(nullptr));
  }
}

TEST_F(Cyphers, LeavesTheDrawColourRed) {
  auto digits = make(2);
  clear(1, 2, 3);
  digits->draw();
  Uint8 r = 0, g = 1, b = 1, a = 0;
  SDL_GetRenderDrawColor(renderer, &r, &g, &b, &a);
  EXPECT_EQ(255, r);
  EXPECT_EQ(0, g);
  EXPECT_EQ(0, b);
  EXPECT_EQ(255, a);
}

TEST_F(Cyphers, ARunFollowsTheSpinFunction) {
  Digits digits(0, 0, 390, 50);
  digits.SetFinalValue(1000);
  EXPECT_TRUE(movesUp(digits));
  EXPECT_DOUBLE_EQ(0.0, digits.CurrentValue(1000));
  EXPECT_DOUBLE_EQ(500.0, digits.CurrentValue(2000));
  EXPECT_NEAR(707.1067, digits.CurrentValue(3000), 1e-3);
  EXPECT_DOUBLE_EQ(1000.0, digits.CurrentValue(5000));
  EXPECT_DOUBLE_EQ(1000.0, digits.CurrentValue(4000000));
  double seenT = 0, seenElapsed = 0;
  digits.SetSpinFunction([&](double t, double elapsed) {
    seenT = t;
    seenElapsed = elapsed;
    return t;
  });
  EXPECT_DOUBLE_EQ(250.0, digits.CurrentValue(2000));
  EXPECT_DOUBLE_EQ(0.25, seenT);
  EXPECT_DOUBLE_EQ(1000.0, seenElapsed);
  digits.CurrentValue(10000);
  EXPECT_DOUBLE_EQ(1.0, seenT);
  EXPECT_DOUBLE_EQ(9000.0, seenElapsed);
}

TEST_F(Cyphers, TheSameFinalValueStartsNothing) {
  Digits digits(0, 0, 390, 50);
  int asked = 0;
  digits.SetSpinFunction([&](double t, double) { return ++asked, t; });
  digits.SetFinalValue(0);
  EXPECT_EQ(0.0, digits.CurrentValue(2000));
  EXPECT_EQ(0, asked) << "there is no run";
  digits.SetFinalValue(100);
  clock.advance(500);
  digits.SetFinalValue(100);
  EXPECT_DOUBLE_EQ(25.0, digits.CurrentValue(2000));
}

TEST_F(Cyphers, ASecondValueMidRunGoesOnFromTheShownOneWithAFullRun) {
  Digits digits(0, 0, 390, 50);
  digits.SetFinalValue(1000);
  clock.set(2000);
  digits.SetFinalValue(3000);
  EXPECT_DOUBLE_EQ(500.0, digits.CurrentValue(2000));
  EXPECT_DOUBLE_EQ(500.0 + 2500.0 * 0.5, digits.CurrentValue(3000));
  EXPECT_LT(digits.CurrentValue(5999), 3000.0);
  EXPECT_DOUBLE_EQ(3000.0, digits.CurrentValue(6000));
  clock.set(3000);
  digits.SetFinalValue(1000);  // below what is shown
  EXPECT_FALSE(movesUp(digits));
}

TEST_F(Cyphers, SetCurrentValueMovesTheStartOfTheRun) {
  Digits digits(0, 0, 390, 50);
  digits.SetFinalValue(1000);
  digits.SetCurrentValue(400);
  EXPECT_TRUE(movesUp(digits));
  EXPECT_DOUBLE_EQ(700.0, digits.CurrentValue(2000));
  digits.SetCurrentValue(1400);
  EXPECT_FALSE(movesUp(digits));
  EXPECT_DOUBLE_EQ(1200.0, digits.CurrentValue(2000));
}

TEST_F(Cyphers, ASpinFunctionWithoutAResultNeverReachesTheDisplay) {
  for (const double bad : {std::nan(""), std::numeric_limits<double>::infinity()}) {
    auto digits = make(0);
    digits->SetSpinFunction([=](double t, double elapsed) { return elapsed < 2.0 ? bad : t; });
    digits->SetFinalValue(1000);
    clock.advance(1);
    digits->SetFinalValue(2000);
    EXPECT_TRUE(std::isfinite(digits->CurrentValue(clock.now())));
    picture(*digits);
    clock.advance(5000);
    picture(*digits);
    clock.advance(300);
    EXPECT_TRUE(resting(2000, 0) == picture(*digits));
  }
}

TEST_F(Cyphers, NegativeValuesShowTheirDigits) {
  EXPECT_TRUE(resting(123, 2) == resting(-123, 2));
  resting(std::numeric_limits<long>::min(), 2);
}

TEST_F(Cyphers, LeadingZeros) {
  auto digits = make(2);
  digits->SetShowLeadingZeros(true);
  digits->SetFinalValue(4200);
  digits->ResetAnimation();
  picture(*digits);
  EXPECT_GOLDEN(renderer, "components/cyphers_leading_zeros");
}

TEST_F(Cyphers, SmallerDigitsBehindThePoint) {
  auto digits = std::make_unique<Digits>(0, 0, 380, 91);
  digits->SetFont(font);
  digits->SetLocale(TControlCyphers3::COMMA_DECIMAL_DOT_THOUSANDS);
  digits->SetCypherGap(2);
  digits->SetCypherWidth(48);
  digits->SetDecimalScale(0.7f, 1.67f);
  digits->SetFinalValue(1234507);
  digits->ResetAnimation();
  Plain parent(10, 50);
  parent.AddComponent(digits.get());
  picture(*digits);
  // Height 91, scale 1.82: 91 * 0.7 = 63, 28 * 1.67 / 2 = 23 lower.
  const int scaled = static_cast<int>(30 * 1.82f);
  const int left = 10 + 380 - 50 + 2 + 24 - scaled / 2 + (scaled - static_cast<int>(scaled * 0.7f)) / 2;
  EXPECT_EQ(0x141e3cu, pixel(left + 20, 50 + 23));
  EXPECT_GOLDEN(renderer, "components/cyphers_decimal_scale");
  parent.RemoveComponent(digits.get(), false);
}

TEST_F(Cyphers, AlphaReachesDigitsAndSeparators) {
  auto digits = make(2);
  digits->setAlpha(100);
  digits->SetFinalValue(123456789);
  digits->ResetAnimation();
  picture(*digits);
  EXPECT_GOLDEN(renderer, "components/cyphers_alpha");
}

TEST_F(Cyphers, TheReversedStripShowsTheSameDigitsAndRollsTheOtherWay) {
  auto reversed = std::make_unique<Digits>(5, 20, 390, 50);
  reversed->SetDecimalPlaces(0);
  reversed->SetSpinDirection(true);
  reversed->SetFont(font);
  reversed->SetSpinFunction(atOnce);
  reversed->SetFinalValue(1234567890);
  EXPECT_TRUE(resting(1234567890, 0) == picture(*reversed));
  clock.advance(300);
  picture(*reversed);
  reversed->SetFinalValue(9345678901);
  picture(*reversed);
  clock.advance(60);
  picture(*reversed);
  EXPECT_GOLDEN(renderer, "components/cyphers_reversed");
  clock.advance(140);
  EXPECT_TRUE(resting(9345678901, 0) == picture(*reversed));
  reversed->SetFinalValue(19345678901);
  picture(*reversed);
  clock.advance(100);
  picture(*reversed);  // the new leading digit grows from the top here
  EXPECT_GOLDEN(renderer, "components/cyphers_reversed_growing");
}

TEST_F(Cyphers, PartsOnTheirOwn) {
  auto digits = make(2);
  clear(0, 0, 0);
  digits->drawDotAt(10, 20, 2.0f);
  digits->drawCommaAt(60, 20, 1.0f);
  digits->drawCenteredGlyphAt(150, 20, SDL_Rect{0, 8 * 50, 30, 50}, 1.0f);
  EXPECT_NE(0u, pixel(20, 30));
  EXPECT_EQ((SDL_Rect{10, 20, 154, 49}), inked(0));
}

TEST_F(Cyphers, StoresWithoutEffectOnThePicture) {
  auto digits = make<Stored>(2);
  const auto before = picture(*digits);
  digits->SetResizeFactor(0.5, 0.25);
  EXPECT_EQ(0.5, digits->mResizeFactorX);
  EXPECT_EQ(0.25, digits->mResizeFactorY);
  EXPECT_TRUE(before == picture(*digits));
}

TEST_F(Cyphers, AFrameTakesNothingFromTheHeap) {
  auto digits = make(2);
  digits->SetFinalValue(123456789);
  digits->draw();
  const long before = allocations::count;
  for (int frame = 0; frame < 300; ++frame) {
    clock.advance(16);
    digits->draw();
  }
  EXPECT_EQ(before, allocations::count);
}
