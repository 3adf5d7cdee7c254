// What the rolling digits take from their font: the separators and the strip of the digits.
#include <algorithm>

#include "tests/components/CyphersFixture.h"

using namespace cypherstest;

namespace {

const char* const ttfFile = "/usr/share/fonts/truetype/dejavu/DejaVuSans-Bold.ttf";

// The strip of the digits 0 to 9, and 0 again.
struct Strip : Digits {
  using Digits::Digits;
  using TControlCyphers3::mGlyphHeight;
  using TControlCyphers3::mGlyphWidth;
  using TControlCyphers3::mpCyphers;
};

}  // namespace

// The separator before the decimals and that of the groups, each drawn at 100, 20: a comma has 8 by 18 pixels
// there, and a dot 6 by 6, which begin 2 behind that.
class CyphersSeparators : public Cyphers {
 protected:
  static constexpr SDL_Rect kComma{100, 20, 8, 18}, kDot{102, 22, 6, 6}, kNothing{0, 0, 0, 0};
  SDL_Rect decimal(Digits& digits) {
    clear(0, 0, 0);
    digits.drawDotAt(100, 20, 1.0f);
    return inked(0);
  }
  SDL_Rect group(Digits& digits) {
    clear(0, 0, 0);
    digits.drawCommaAt(100, 20, 1.0f);
    return inked(0);
  }
};

TEST_F(CyphersSeparators, TheLocaleIsNotStored) {
  auto digits = make(2);
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ(kComma, decimal(*digits));
    EXPECT_EQ(kDot, group(*digits));
    digits->SetLocale(TControlCyphers3::COMMA_DECIMAL_DOT_THOUSANDS);  // that of the start
  }
  digits->SetLocale(TControlCyphers3::COMMA_THOUSANDS_DOT_DECIMAL);
  EXPECT_EQ(kDot, decimal(*digits));
  EXPECT_EQ(kComma, group(*digits));
  digits->SetFinalValue(123456789);
  digits->ResetAnimation();
  picture(*digits);
  EXPECT_GOLDEN(renderer, "components/cyphers_dot_decimal");
  digits->SetLocale(TControlCyphers3::COMMA_THOUSANDS_DOT_DECIMAL);
  EXPECT_EQ(kComma, decimal(*digits)) << "each call swaps";
  EXPECT_EQ(kDot, group(*digits));
}

TEST_F(CyphersSeparators, MissingGlyphsLeaveTheirCellsEmptyAndAreToldOnce) {
  TBitmapFont* const holes = segmentFont(renderer, "47,");
  Digits digits(5, 20, 390, 50);
  testing::internal::CaptureStdout();
  digits.SetFont(holes);
  const std::string told = testing::internal::GetCapturedStdout();
  EXPECT_EQ("Component digits: the font has no glyph '4', its cell stays empty.\n", told);
  EXPECT_EQ(kNothing, decimal(digits));
  digits.SetFont(font);
  EXPECT_EQ(kComma, decimal(digits));
  testing::internal::CaptureStdout();
  digits.SetFont(holes);
  testing::internal::GetCapturedStdout();
  EXPECT_EQ(kNothing, decimal(digits)) << "nothing is left of the other font";
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
  auto digits = make<Strip>(2);
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
      Strip digits(0, 0, 390, height);
      digits.SetSpinDirection(reversed);
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
  Strip digits(5, 20, 390, 48);
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
