#include "tests/components/CyphersFixture.h"

#include <cmath>

using namespace cypherstest;

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
  digits.SetFinalValue(5);
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    digits.SetCurrentValue(row.up ? 0 : 10);
    const TControlCyphers3::Cypher wheel{row.digit, row.phase, 1000, row.target};
    EXPECT_NEAR(row.expected, digits.cypherPos(wheel, 1000 + row.elapsed), 2e-5);
  }
  EXPECT_EQ(7.0f, digits.cypherPos(TControlCyphers3::Cypher{3, 0, 0, 7}, 1)) << "a wheel that never moved";
  digits.SetDigitChangeDuration(400.0f);
  digits.SetCurrentValue(0);
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
  int asked = 0;
  digits->SetSpinFunction([&](double t, double) { return ++asked, t; });
  EXPECT_TRUE(resting(123456, 2) == picture(*digits));
  EXPECT_EQ(0, asked) << "there is no run any more";
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
