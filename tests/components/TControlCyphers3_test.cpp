#include "components/TControlCyphers3.h"

#include <cmath>
#include <limits>
#include <memory>

#include "tests/components/AllocationCount.h"
#include "tests/components/SegmentFont.h"
#include "tests/components/WidgetFixture.h"

using namespace vendelo_sdl2;

namespace {

const char* const ttfFile = "/usr/share/fonts/truetype/dejavu/DejaVuSans-Bold.ttf";

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

double atOnce(double, double) { return 1.0; }

struct Plain : TGuiComponent {
  Plain(int x, int y) : TGuiComponent(nullptr, x, y, 10, 10, "parent") {}
};

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
    std::vector<Uint8> rgb(static_cast<size_t>(screenW) * screenH * 3);
    EXPECT_EQ(0, SDL_RenderReadPixels(renderer, nullptr, SDL_PIXELFORMAT_RGB24, rgb.data(), screenW * 3));
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
  Digits digits(1, 2, 3, 4);
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
  EXPECT_FALSE(digits.mIsMovingUp);
  EXPECT_EQ(18u, std::size(digits.mCypherPositions));
  EXPECT_EQ(0, TControlCyphers3::COMMA_THOUSANDS_DOT_DECIMAL);
  EXPECT_EQ(1, TControlCyphers3::COMMA_DECIMAL_DOT_THOUSANDS);
}

TEST_F(Cyphers, WithoutAFontNothingIsDrawnAndNoColourSet) {
  Digits digits(0, 0, 390, 50);
  clear(1, 2, 3);
  digits.draw();
  Uint8 r = 0, g = 0, b = 0, a = 0;
  SDL_GetRenderDrawColor(renderer, &r, &g, &b, &a);
  EXPECT_EQ(1, r);
  EXPECT_EQ(0, inked(0x010203).w);
  digits.SetFont(static_cast<TBitmapFont*>(nullptr));
  EXPECT_EQ(nullptr, digits.mpCyphers);
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
  EXPECT_EQ(1000u, digits.mLastChangeTime);
  EXPECT_TRUE(digits.mIsMovingUp);
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
  digits.SetFinalValue(0);
  EXPECT_EQ(0u, digits.mLastChangeTime);
  digits.SetFinalValue(100);
  clock.advance(500);
  digits.SetFinalValue(100);
  EXPECT_EQ(1000u, digits.mLastChangeTime);
}

TEST_F(Cyphers, ASecondValueMidRunGoesOnFromTheShownOneWithAFullRun) {
  Digits digits(0, 0, 390, 50);
  digits.SetFinalValue(1000);
  clock.set(2000);
  digits.SetFinalValue(3000);
  EXPECT_DOUBLE_EQ(500.0, digits.mLastValue);
  EXPECT_DOUBLE_EQ(500.0, digits.CurrentValue(2000));
  EXPECT_DOUBLE_EQ(500.0 + 2500.0 * 0.5, digits.CurrentValue(3000));
  EXPECT_LT(digits.CurrentValue(5999), 3000.0);
  EXPECT_DOUBLE_EQ(3000.0, digits.CurrentValue(6000));
  clock.set(3000);
  digits.SetFinalValue(1000);  // below what is shown
  EXPECT_FALSE(digits.mIsMovingUp);
}

TEST_F(Cyphers, SetCurrentValueMovesTheStartOfTheRun) {
  Digits digits(0, 0, 390, 50);
  digits.SetFinalValue(1000);
  digits.SetCurrentValue(400);
  EXPECT_TRUE(digits.mIsMovingUp);
  EXPECT_DOUBLE_EQ(700.0, digits.CurrentValue(2000));
  digits.SetCurrentValue(1400);
  EXPECT_FALSE(digits.mIsMovingUp);
  EXPECT_DOUBLE_EQ(1200.0, digits.CurrentValue(2000));
}

TEST_F(Cyphers, ASpinFunctionWithoutAResultNeverReachesTheDisplay) {
  for (const double bad : {std::nan(""), std::numeric_limits<double>::infinity()}) {
    auto digits = make(0);
    digits->SetSpinFunction([=](double t, double elapsed) { return elapsed < 2.0 ? bad : t; });
    digits->SetFinalValue(1000);
    clock.advance(1);
    digits->SetFinalValue(2000);
    EXPECT_TRUE(std::isfinite(digits->mLastValue));
    picture(*digits);
    clock.advance(5000);
    picture(*digits);
    clock.advance(300);
    EXPECT_TRUE(resting(2000, 0) == picture(*digits));
  }
}

TEST_F(Cyphers, WheelPositions) {
  const struct {
    const char* name;
    bool up;
    float digit, phase;
    int target;
    Uint32 elapsed;  // of a turn of 200 ms
    float expected;
  } rows[] = {
    {"forwards, begin", true, 2, 0, 5, 0, 2.0f},
    {"forwards, a quarter", true, 2, 0, 5, 50, 2.439340f},
    {"forwards, half", true, 2, 0, 5, 100, 3.5f},
    {"forwards, end", true, 2, 0, 5, 200, 5.0f},
    {"forwards, long after", true, 2, 0, 5, 90000, 5.0f},
    {"up through the wrap, half", true, 8, 0, 1, 100, 9.5f},
    {"up through the wrap, three quarters", true, 8, 0, 1, 150, 0.560660f},
    {"up through the wrap, end", true, 8.3f, 0, 0, 200, 0.0f},
    {"down, half", false, 5, 0, 2, 100, 3.5f},
    {"down through the wrap, a quarter", false, 1, 0, 8, 50, 0.560660f},
    {"down through the wrap, half", false, 1, 0, 8, 100, 9.5f},
    {"down from 0 to 9", false, 0, 0, 9, 100, 9.5f},
    {"down, end", false, 0, 0, 9, 200, 9.0f},
    {"within a thousandth above is not behind", true, 5.0005f, 0, 5, 100, 5.00025f},
    {"within a thousandth below is not ahead", false, 4.9995f, 0, 5, 100, 4.99975f},
    {"a turn begun part way along the ease", true, 2, 0.5f, 5, 0, 3.5f},
    {"its middle", true, 2, 0.5f, 5, 100, 4.560660f},
    {"its end", true, 2, 0.5f, 5, 200, 5.0f},
  };
  Digits digits(0, 0, 390, 50);
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    digits.mIsMovingUp = row.up;
    const TControlCyphers3::Cypher wheel{row.digit, row.phase, 1000, row.target};
    EXPECT_NEAR(row.expected, digits.cypherPos(wheel, 1000 + row.elapsed), 2e-5);
  }
  EXPECT_EQ(7.0f, digits.cypherPos(TControlCyphers3::Cypher{3, 0, 0, 7}, 1)) << "a wheel that never moved";
  digits.SetDigitChangeDuration(400.0f);
  digits.mIsMovingUp = true;
  EXPECT_NEAR(3.5f, digits.cypherPos(TControlCyphers3::Cypher{2, 0, 1000, 5}, 1200), 2e-5);
  digits.SetDigitChangeDuration(0.0f);
  EXPECT_EQ(5.0f, digits.cypherPos(TControlCyphers3::Cypher{2, 0, 1000, 5}, 1000));
}

TEST_F(Cyphers, AnInterruptedWheelKeepsItsPlaceAndSpeed) {
  auto digits = make(0);
  digits->SetSpinFunction(atOnce);
  picture(*digits);
  const TControlCyphers3::Cypher& wheel = digits->mCypherPositions[0];
  const struct {
    Uint32 wait;
    float phase;
  } rows[] = {{500, 0.0f}, {100, 0.5f}, {100, 0.5f}, {50, 0.25f}, {150, 0.25f}, {200, 0.0f}};
  long value = 0;
  for (const auto& row : rows) {
    clock.advance(row.wait);
    const float reached = digits->cypherPos(wheel, clock.now());
    digits->SetFinalValue(++value);
    picture(*digits);
    EXPECT_NEAR(reached, wheel.digit, 1e-5);
    EXPECT_NEAR(row.phase, wheel.lastTransition, 1e-6);
    EXPECT_EQ(clock.now(), wheel.lastChange);
    EXPECT_EQ(value, wheel.targetDigit);
  }
  const Uint32 last = wheel.lastChange;
  clock.advance(40);
  picture(*digits);
  EXPECT_EQ(last, wheel.lastChange) << "the same digit begins no turn";
}

TEST_F(Cyphers, ZeroShowsTheDigitBeforeThePointAndThoseBehind) {
  const auto zero = resting(0, 2);
  // Three digits, right-aligned in cells of 30: the left-most begins at 5 + 390 - 90.
  EXPECT_EQ(306, inked(0x141e3c).x);
  EXPECT_NE(0x141e3cu, pixel(5 + 390 - 60, 20 + 35)) << "the point between the third and the second digit";
  EXPECT_GOLDEN(renderer, "components/cyphers_zero");
  EXPECT_TRUE(zero == resting(0, 2));
}

TEST_F(Cyphers, GroupsAndPoint) {
  resting(123456789012, 2);
  EXPECT_GOLDEN(renderer, "components/cyphers_groups");
  auto digits = std::make_unique<Digits>(0, 20, 400, 25);
  digits->SetFont(font);
  digits->SetCypherWidth(20);
  digits->SetCypherGap(2);
  digits->SetFinalValue(123456789012345678);
  digits->ResetAnimation();
  picture(*digits);
  // At half the size "." of 10 by 10 is 5 by 5: cells of 22 pixels, in the gap to the right of a digit.
  for (int n = 1; n <= 17; ++n) {
    const bool separator = n == 2 || n == 5 || n == 8 || n == 11 || n == 14 || n == 17;
    const int y = n == 2 ? 38 : 42;  // the comma is 9 pixels high
    EXPECT_EQ(separator, pixel(400 - n * 22 + (2 - 5) / 2 + 2, y) != 0x141e3cu) << n;
  }
  EXPECT_GOLDEN(renderer, "components/cyphers_groups_half");
}

TEST_F(Cyphers, ANewLeadingDigitGrowsFromTheBottom) {
  auto digits = make(0);
  digits->SetSpinFunction(atOnce);
  digits->SetFinalValue(999);
  picture(*digits);
  clock.advance(300);
  EXPECT_TRUE(resting(999, 0) == picture(*digits));
  digits->SetFinalValue(1000);
  picture(*digits);
  EXPECT_EQ(5 + 390 - 3 * 30 + 1, inked(0x141e3c).x) << "the fourth wheel is still at 0";
  clock.advance(100);
  picture(*digits);  // the fourth wheel at 0.5: the upper half of the 1 in the lower half of the box
  for (int y = 20; y < 70; ++y) {
    const bool ink = pixel(5 + 390 - 4 * 30 + 15 + 5, y) != 0x141e3cu;
    EXPECT_EQ(y >= 20 + 25 + 3 && y < 20 + 25 + 23, ink) << y;
  }
  EXPECT_GOLDEN(renderer, "components/cyphers_growing");
  clock.advance(100);
  EXPECT_TRUE(resting(1000, 0) == picture(*digits));
}

TEST_F(Cyphers, FallingWheelsTurnTheOtherWay) {
  auto digits = make(0);
  digits->SetSpinFunction(atOnce);
  digits->SetFinalValue(1000);
  picture(*digits);
  clock.advance(300);
  picture(*digits);
  digits->SetFinalValue(999);
  picture(*digits);
  clock.advance(100);
  picture(*digits);
  EXPECT_NEAR(9.5f, digits->cypherPos(digits->mCypherPositions[0], clock.now()), 1e-5);
  EXPECT_NEAR(0.5f, digits->cypherPos(digits->mCypherPositions[3], clock.now()), 1e-5);
  EXPECT_GOLDEN(renderer, "components/cyphers_falling");
  clock.advance(100);
  EXPECT_TRUE(resting(999, 0) == picture(*digits));
}

TEST_F(Cyphers, ResetSnapsToTheFinalValue) {
  auto digits = make(2);
  digits->SetFinalValue(123456);
  picture(*digits);
  clock.advance(700);
  EXPECT_FALSE(resting(123456, 2) == picture(*digits));
  digits->ResetAnimation();
  EXPECT_EQ(0u, digits->mLastChangeTime);
  EXPECT_TRUE(resting(123456, 2) == picture(*digits));
  EXPECT_EQ(123456, digits->mCurrentValue);
}

TEST_F(Cyphers, EveryRunEndsOnTheExactValue) {
  // The last ones are beyond what a double tells apart.
  const long values[] = {1,
                         9,
                         10,
                         99,
                         100,
                         123456,
                         99,
                         0,
                         999999999,
                         12345678901,
                         123456789012345679,
                         999999999999999999,
                         123456789012345678,
                         5};
  auto digits = make(0);
  digits->SetSpinFunction([](double t, double elapsed) {  // ends a rounding error off 1
    const double a = 1.0 / std::log10(std::max(elapsed, 2.0));
    return a * std::log((std::exp(1.0 / a) - 1.0) * t + 1.0);
  });
  for (const long value : values) {
    digits->SetFinalValue(value);
    for (int frame = 0; frame < 270; ++frame) {
      digits->draw();
      for (const auto& wheel : digits->mCypherPositions) {
        const float position = digits->cypherPos(wheel, clock.now());
        ASSERT_TRUE(position >= 0.0f && position <= 10.0f) << position;
      }
      clock.advance(16);
    }
    EXPECT_EQ(value, digits->mCurrentValue);
    EXPECT_TRUE(resting(value, 0) == picture(*digits)) << value;
  }
}

TEST_F(Cyphers, ARunInPictures) {
  auto digits = make(2);
  digits->SetFinalValue(250000);
  digits->ResetAnimation();
  picture(*digits);
  digits->SetFinalValue(1234567);
  const struct {
    Uint32 tick;
    const char* name;
  } rows[] = {{1100, "components/cyphers_run_100"},
              {1400, "components/cyphers_run_400"},
              {2000, "components/cyphers_run_1000"},
              {4900, "components/cyphers_run_3900"}};
  for (Uint32 tick = 1000; tick <= 5300; tick += 20) {
    clock.set(tick);
    picture(*digits);
    for (const auto& row : rows) {
      if (row.tick == tick) {
        EXPECT_GOLDEN(renderer, row.name);
      }
    }
  }
  EXPECT_TRUE(resting(1234567, 2) == picture(*digits));
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

TEST_F(Cyphers, TheLocaleIsNotStored) {
  auto digits = make(2);
  EXPECT_EQ((SDL_Rect{0, 0, 10, 18}), digits->mDotRect) << "a comma before the decimals at first";
  EXPECT_EQ((SDL_Rect{0, 0, 10, 10}), digits->mCommaRect);
  SDL_Texture* const dot = digits->mpDot;
  digits->SetLocale(TControlCyphers3::COMMA_DECIMAL_DOT_THOUSANDS);
  EXPECT_EQ(dot, digits->mpDot);
  digits->SetLocale(TControlCyphers3::COMMA_THOUSANDS_DOT_DECIMAL);
  EXPECT_EQ(dot, digits->mpComma);
  EXPECT_EQ((SDL_Rect{0, 0, 10, 10}), digits->mDotRect);
  digits->SetFinalValue(123456789);
  digits->ResetAnimation();
  picture(*digits);
  EXPECT_GOLDEN(renderer, "components/cyphers_dot_decimal");
  digits->SetLocale(TControlCyphers3::COMMA_THOUSANDS_DOT_DECIMAL);
  EXPECT_EQ(dot, digits->mpDot) << "each call swaps";
  EXPECT_EQ(TControlCyphers3::COMMA_DECIMAL_DOT_THOUSANDS, digits->mLocale);
}

TEST_F(Cyphers, MissingGlyphsLeaveTheirCellsEmptyAndAreToldOnce) {
  TBitmapFont* const holes = segmentFont(renderer, "47,");
  Digits digits(5, 20, 390, 50);
  testing::internal::CaptureStdout();
  digits.SetFont(holes);
  const std::string told = testing::internal::GetCapturedStdout();
  EXPECT_EQ("Component digits: the font has no glyph '4', its cell stays empty.\n", told);
  EXPECT_EQ(nullptr, digits.mpDot);
  digits.SetFinalValue(1234567);
  digits.ResetAnimation();
  picture(digits);
  EXPECT_GOLDEN(renderer, "components/cyphers_missing");
}

TEST_F(Cyphers, SetFontKeepsTargetAndGivesBackTheOldTextures) {
  SDL_Texture* target = solid(1, 1, SDL_Color{0, 0, 0, 255});
  target = SDL_CreateTexture(renderer, SDL_PIXELFORMAT_RGBA8888, SDL_TEXTUREACCESS_TARGET, 20, 20);
  textures.push_back(target);
  SDL_SetRenderTarget(renderer, target);
  auto digits = make(2);
  EXPECT_EQ(target, SDL_GetRenderTarget(renderer));
  digits->SetFont(font);
  SDL_SetRenderTarget(renderer, nullptr);
  int w = 0, h = 0;
  SDL_QueryTexture(digits->mpCyphers, nullptr, nullptr, &w, &h);
  EXPECT_EQ(30, w);
  EXPECT_EQ(550, h);
  EXPECT_EQ(30, digits->mGlyphWidth);
  EXPECT_EQ(50, digits->mGlyphHeight);
}

TEST_F(Cyphers, TrueTypeStrip) {
  ASSERT_EQ(0, TTF_Init());
  TTF_Font* ttf = TTF_OpenFont(ttfFile, 40);
  ASSERT_NE(nullptr, ttf);
  int widest = 0;
  for (Uint16 c = '0'; c <= '9'; ++c) {
    int minx = 0, maxx = 0;
    TTF_GlyphMetrics(ttf, c, &minx, &maxx, nullptr, nullptr, nullptr);
    widest = std::max(widest, maxx - minx);
  }
  Digits digits(5, 20, 390, 48);
  digits.SetFont(ttf, SDL_Color{255, 255, 255, 255});
  EXPECT_EQ(widest, digits.mGlyphWidth);
  EXPECT_EQ(widest, digits.mGlyphHeight) << "from the same width figures";
  int w = 0, h = 0;
  SDL_QueryTexture(digits.mpCyphers, nullptr, nullptr, &w, &h);
  EXPECT_EQ(widest, w);
  EXPECT_EQ(48 * 11, h);
  SDL_Rect bounds{9, 9, 9, 9};
  SDL_Texture* glyph = digits.GlyphOfFont(ttf, SDL_Color{255, 0, 0, 255}, '8', &bounds);
  ASSERT_NE(nullptr, glyph);
  SDL_QueryTexture(glyph, nullptr, nullptr, &w, &h);
  EXPECT_EQ((SDL_Rect{0, 0, w, h}), bounds);
  SDL_DestroyTexture(glyph);
  EXPECT_EQ(nullptr, digits.GlyphOfFont(nullptr, SDL_Color{255, 0, 0, 255}, '8', &bounds));
  EXPECT_EQ((SDL_Rect{0, 0, 0, 0}), bounds);
  digits.SetFont(static_cast<TTF_Font*>(nullptr), SDL_Color{0, 0, 0, 255});
  EXPECT_NE(nullptr, digits.mpCyphers);
  clear(0, 0, 0);
  for (int row = 0; row < 11; ++row) {
    const SDL_Rect from{0, row * 48, widest, 48}, to{row * 35, 20, widest, 48};
    SDL_RenderCopy(renderer, digits.mpCyphers, &from, &to);
  }
  EXPECT_GOLDEN(renderer, "components/cyphers_ttf_strip");
  TTF_CloseFont(ttf);
  TTF_Quit();
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
  auto digits = make(2);
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
