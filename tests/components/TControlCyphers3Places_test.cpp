// Where the rolling digits stand, what they are drawn from, and which way they say they move.
#include <memory>

#include "tests/components/CyphersFixture.h"

using namespace cypherstest;

namespace {

const Uint32 ground = 0x141e3c;

class CyphersPlaces : public Cyphers {
 protected:
  Digits* dress(Digits* digits, int decimalPlaces, long value) {
    digits->SetDecimalPlaces(decimalPlaces);
    digits->SetFont(font);
    digits->SetFinalValue(value);
    digits->ResetAnimation();
    return digits;
  }
};

struct Child : TGuiComponent {
  Child() : TGuiComponent(nullptr, 0, 0, 400, 200, "child") {}
  void draw() override { ++draws; }
  int draws = 0;
};

struct Narrow : Digits {
  using Digits::Digits;
  short getWidth() override { return 150; }
};

struct Plain : TGuiComponent {
  Plain(int x, int y) : TGuiComponent(nullptr, x, y, 10, 10, "parent") {}
};

}  // namespace

TEST_F(CyphersPlaces, NoChildIsDrawn) {
  auto digits = make(2);
  auto* child = new Child;
  digits->AddComponent(child);
  picture(*digits);
  EXPECT_EQ(0, child->draws);
}

TEST_F(CyphersPlaces, TheRightEdgeIsThatOfTheVirtualWidth) {
  Narrow digits(5, 20, 390, 50);
  dress(&digits, 2, 8888888);
  picture(digits);
  // Five of the seven digits begin left of 5 + 150 - 7 * 30 < 0: what is seen ends at 154.
  const SDL_Rect seen = inked(ground);
  EXPECT_EQ(0, seen.x);
  EXPECT_EQ(154, seen.x + seen.w);
  EXPECT_NE(ground, pixel(5 + 150 - 60 + 3, 20 + 45)) << "the separators go by it as well";
}

TEST_F(CyphersPlaces, UnderAParentThePlaceIsRelative) {
  Plain parent(30, 40);
  auto* digits = dress(new Digits(-25, 10, 390, 50), 0, 8);
  parent.AddComponent(digits);
  picture(*digits);
  EXPECT_EQ((SDL_Rect{5 + 390 - 30 + 1, 50 + 1, 28, 48}), inked(ground));
  EXPECT_EQ((SDL_Rect{-25, 10, 390, 50}), digits->getDestRect()) << "the own rectangle is not written";
}

TEST_F(CyphersPlaces, GapAndWidthOfTheCells) {
  const struct {
    const char* name;
    int gap, width;
    int left;  // of the left-most of two digits
  } rows[] = {{"neither", 0, 0, 395 - 60},
              {"gap", 4, 0, 395 - 64},
              {"width", 0, 50, 395 - 100 + 10},
              {"both", 6, 51, 395 - 114 + 6 + 10}};
  for (const auto& row : rows) {
    Digits digits(5, 20, 390, 50);
    digits.SetCypherGap(row.gap);
    digits.SetCypherWidth(row.width);
    dress(&digits, 0, 88);
    picture(digits);
    EXPECT_EQ(row.left + 1, inked(ground).x) << row.name;
  }
}

TEST_F(CyphersPlaces, TheWidthOfAScaledDigitIsTruncatedAndHalvedAboutTheCentre) {
  Digits digits(0, 20, 200, 33);  // scale 0.66, 19.8 wide
  dress(&digits, 0, 8);
  picture(digits);
  const SDL_Rect seen = inked(ground);
  EXPECT_GE(seen.x, 200 - 30 + 15 - 9);
  EXPECT_LE(seen.x + seen.w, 200 - 30 + 15 - 9 + 19);
  EXPECT_GE(seen.w, 16);
}

TEST_F(CyphersPlaces, TheDigitBeforeThePointAlwaysShows) {
  const struct {
    int places;
    long value;
    int digits;
  } rows[] = {{0, 0, 1}, {0, 7, 1}, {1, 0, 2}, {2, 0, 3}, {2, 5, 3}, {2, 123, 3}, {2, 1234, 4}, {3, 10, 4}};
  for (const auto& row : rows) {
    auto digits = make(row.places);
    digits->SetFinalValue(row.value);
    digits->ResetAnimation();
    picture(*digits);
    const int cell = (395 - inked(ground).x) / 30 + 1;
    EXPECT_EQ(row.digits, cell) << row.value << " with " << row.places;
  }
}

TEST_F(CyphersPlaces, WithoutDecimalsThereIsNoPointAndGroupsCountFromTheRight) {
  auto digits = make(0);
  digits->SetFinalValue(8888888);
  digits->ResetAnimation();
  picture(*digits);
  for (int n = 1; n <= 6; ++n)
    // The middle of the gap right of digit n, where an 8 has nothing: 30 pixels a cell.
    EXPECT_EQ(n == 3 || n == 6, pixel(395 - 30 * n, 20 + 45) != ground) << n;
}

TEST_F(CyphersPlaces, SetCurrentValueToTheFinalOneMovesNothingUp) {
  Digits digits(0, 0, 390, 50);
  digits.SetFinalValue(1000);
  EXPECT_TRUE(movesUp(digits));
  digits.SetCurrentValue(1000);
  EXPECT_FALSE(movesUp(digits));
  EXPECT_EQ(1000.0, digits.CurrentValue(1000));
  digits.SetCurrentValue(999);
  EXPECT_TRUE(movesUp(digits));
  digits.SetCurrentValue(1001);
  EXPECT_FALSE(movesUp(digits));
}

TEST_F(CyphersPlaces, AFinalValueAtTheShownOneMovesNothingUp) {
  Digits digits(0, 0, 390, 50);
  digits.SetFinalValue(1000);
  clock.advance(1000);
  ASSERT_EQ(500.0, digits.CurrentValue(clock.now()));
  digits.SetFinalValue(500);
  EXPECT_FALSE(movesUp(digits));
  digits.SetFinalValue(501);
  EXPECT_TRUE(movesUp(digits));
}

TEST_F(CyphersPlaces, TheShownValueIsRounded) {
  auto digits = make(0);
  digits->SetSpinFunction([](double t, double) { return t; });
  digits->SetFinalValue(40);
  for (const auto& [elapsed, shown] : {std::pair{49u, 0L}, {50u, 1L}, {149u, 1L}, {151u, 2L}, {3949u, 39L}}) {
    clock.set(1000 + elapsed);
    picture(*digits);
    EXPECT_EQ(shown, digits->mCurrentValue) << elapsed;
  }
}

TEST_F(CyphersPlaces, EveryWheelHasItsOwnDigit) {
  auto digits = make(0);
  digits->SetFinalValue(123456789012345678);
  digits->ResetAnimation();
  picture(*digits);
  const char* const expected = "876543210987654321";
  for (int n = 0; n < 18; ++n) EXPECT_EQ(expected[n] - '0', digits->mCypherPositions[n].targetDigit) << n;
  digits->SetFinalValue(2123456789012345678);
  digits->ResetAnimation();
  picture(*digits);
  for (int n = 0; n < 18; ++n) EXPECT_EQ(expected[n] - '0', digits->mCypherPositions[n].targetDigit) << n;
}

TEST_F(CyphersPlaces, PartsOnTheirOwnAreScaledAboutTheirCentre) {
  auto digits = make(2);
  const struct {
    const char* name;
    std::function<void()> draw;
    SDL_Rect expected;
  } rows[] = {
    // An 8 in the middle of its 30 pixels: 1 pixel of margin all around.
    {"glyph",
     [&] {
       digits->drawCenteredGlyphAt(150, 20, SDL_Rect{0, 8 * 50, 30, 50}, 1.0f);
     },
     {136, 21, 28, 48}},
    {"twice",
     [&] {
       digits->drawCenteredGlyphAt(150, 20, SDL_Rect{0, 8 * 50, 30, 50}, 2.0f);
     },
     {122, 22, 56, 96}},
    {"comma as the decimal", [&] { digits->drawDotAt(10, 20, 2.0f); }, {10, 20, 16, 36}},
    {"dot as the group", [&] { digits->drawCommaAt(60, 20, 2.0f); }, {64, 24, 12, 12}},
  };
  for (const auto& row : rows) {
    clear(0, 0, 0);
    row.draw();
    EXPECT_EQ(row.expected, inked(0)) << row.name;
  }
}
