#include "tests/components/CyphersFixture.h"

#include <cmath>
#include <limits>

#include "tests/components/AllocationCount.h"

using namespace cypherstest;

namespace {

const char* const ttfFile = "/usr/share/fonts/truetype/dejavu/DejaVuSans-Bold.ttf";

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
  SDL_Texture* const dot = digits->mpDot.get();
  digits->SetLocale(TControlCyphers3::COMMA_DECIMAL_DOT_THOUSANDS);
  EXPECT_EQ(dot, digits->mpDot.get());
  digits->SetLocale(TControlCyphers3::COMMA_THOUSANDS_DOT_DECIMAL);
  EXPECT_EQ(dot, digits->mpComma.get());
  EXPECT_EQ((SDL_Rect{0, 0, 10, 10}), digits->mDotRect);
  digits->SetFinalValue(123456789);
  digits->ResetAnimation();
  picture(*digits);
  EXPECT_GOLDEN(renderer, "components/cyphers_dot_decimal");
  digits->SetLocale(TControlCyphers3::COMMA_THOUSANDS_DOT_DECIMAL);
  EXPECT_EQ(dot, digits->mpDot.get()) << "each call swaps";
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
  const SDL_Rect dot = digits.mDotRect;
  digits.SetFont(font);
  EXPECT_EQ((SDL_Rect{0, 0, 10, 18}), digits.mDotRect);
  testing::internal::CaptureStdout();
  digits.SetFont(holes);
  testing::internal::GetCapturedStdout();
  EXPECT_EQ(dot, digits.mDotRect) << "nothing is left of the other font";
  EXPECT_EQ((SDL_Rect{0, 0, 0, 0}), dot);
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
  SDL_QueryTexture(digits->mpCyphers.get(), nullptr, nullptr, &w, &h);
  EXPECT_EQ(30, w);
  EXPECT_EQ(550, h);
  EXPECT_EQ(30, digits->mGlyphWidth);
  EXPECT_EQ(50, digits->mGlyphHeight);
}

TEST_F(Cyphers, TheExtraZeroOfATrueTypeStripLooksLikeTheFirst) {
  ASSERT_EQ(0, TTF_Init());
  TTF_Font* ttf = TTF_OpenFont(ttfFile, 40);
  ASSERT_NE(nullptr, ttf);
  for (const int height : {30, 48, 91, 120})
    for (const bool reversed : {false, true}) {
      Digits digits(0, 0, 390, height);
      digits.mSpinDirection = reversed;
      digits.SetFont(ttf, SDL_Color{255, 255, 255, 255});
      SDL_SetRenderTarget(renderer, digits.mpCyphers.get());
      const auto row = [&](int number) {
        std::vector<Uint32> pixels(static_cast<size_t>(digits.mGlyphWidth) * static_cast<size_t>(height));
        const SDL_Rect place{0, number * height, digits.mGlyphWidth, height};
        EXPECT_EQ(0, SDL_RenderReadPixels(renderer, &place, SDL_PIXELFORMAT_ARGB8888, pixels.data(),
                                          digits.mGlyphWidth * 4));
        return pixels;
      };
      EXPECT_EQ(row(0), row(10)) << height << reversed;
      EXPECT_NE(row(0), row(5)) << height << reversed;
      SDL_SetRenderTarget(renderer, nullptr);
    }
  TTF_CloseFont(ttf);
  TTF_Quit();
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
  SDL_QueryTexture(digits.mpCyphers.get(), nullptr, nullptr, &w, &h);
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
    SDL_RenderCopy(renderer, digits.mpCyphers.get(), &from, &to);
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
