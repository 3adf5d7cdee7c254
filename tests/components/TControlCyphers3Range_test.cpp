// Values and numbers of decimals from the ends of their ranges: a service may send any of them.
#include <climits>
#include <cmath>
#include <limits>

#include "tests/components/CyphersFixture.h"

namespace {

using namespace cypherstest;

class CyphersRange : public Cyphers {
 protected:
  // The digits that the wheels stand at or turn to, the left-most first.
  static std::string wheels(const Digits& digits) {
    std::string text;
    for (const auto& wheel : digits.mCypherPositions)
      text.insert(text.begin(), static_cast<char>('0' + wheel.targetDigit));
    return text;
  }
};

TEST_F(CyphersRange, EveryValueShowsTheLastEighteenOfItsDigits) {
  const struct {
    long value;
    const char* digits;
  } rows[] = {{LONG_MIN, "223372036854775808"},
              {LONG_MIN + 1, "223372036854775807"},
              {-1000000000000000000, "000000000000000000"},
              {-999999999999999999, "999999999999999999"},
              {-1, "000000000000000001"},
              {0, "000000000000000000"},
              {1, "000000000000000001"},
              {999999999999999999, "999999999999999999"},
              {1000000000000000001, "000000000000000001"},
              {LONG_MAX - 1, "223372036854775806"},
              {LONG_MAX, "223372036854775807"}};
  for (const auto& row : rows) {
    auto digits = make(2);
    digits->SetFinalValue(row.value);
    digits->ResetAnimation();
    picture(*digits);
    EXPECT_EQ(wheels(*digits), row.digits);
    EXPECT_EQ(digits->mCurrentValue, row.value);
  }
}

TEST_F(CyphersRange, RunsBetweenTheEndsGoFromOneToTheOtherAndNeverTurnBack) {
  for (const long from : {LONG_MIN, -1L, 0L, 1L, LONG_MAX})
    for (const long to : {LONG_MIN, -1L, 0L, 1L, LONG_MAX - 1, LONG_MAX}) {
      auto digits = make(2);
      digits->SetFinalValue(from);
      digits->ResetAnimation();
      digits->SetFinalValue(to);
      long last = from;
      for (int i = 0; i <= 50; ++i) {
        picture(*digits);
        const long shown = digits->mCurrentValue;
        EXPECT_TRUE(from <= to ? shown >= last : shown <= last)
          << from << " to " << to << ": " << last << ", " << shown;
        last = shown;
        clock.advance(100);
      }
      EXPECT_EQ(last, to);
    }
}

TEST_F(CyphersRange, ASpinThatLeavesTheRangeStopsAtItsEnds) {
  static double result = 0;
  const double none = std::numeric_limits<double>::quiet_NaN();
  const struct {
    double spin;
    long shown;
  } rows[] = {{2.0, LONG_MAX}, {1e300, LONG_MAX}, {-1.0, LONG_MIN}, {-1e300, LONG_MIN}, {0.0, -LONG_MAX / 2}};
  for (const auto& row : rows) {
    auto digits = make(0);
    digits->SetFinalValue(-LONG_MAX / 2);
    digits->ResetAnimation();
    digits->SetSpinFunction([](double, double) { return result; });
    result = row.spin;
    digits->SetFinalValue(LONG_MAX);
    picture(*digits);
    EXPECT_NEAR(static_cast<double>(digits->mCurrentValue), static_cast<double>(row.shown), 1e4) << row.spin;
    result = none;
    picture(*digits);
  }
}

TEST_F(CyphersRange, AnyNumberOfDecimalsIsDrawn) {
  for (const int places : {INT_MIN, INT_MIN + 1, -1000000000, -1, 0, 1, 17, 18, 19, 50000000, INT_MAX - 1, INT_MAX})
    for (const long value : {LONG_MIN, 0L, 1234567L, LONG_MAX}) {
      auto digits = make(places);
      digits->SetFinalValue(value);
      digits->ResetAnimation();
      picture(*digits);
      EXPECT_EQ(digits->mCurrentValue, value) << places;
      digits->SetFinalValue(-1);
      clock.advance(2000);
      picture(*digits);
    }
}

TEST_F(CyphersRange, PointsFarOutOfTheDisplayAreNotSeen) {
  // All wheels stand behind the point, or none does; what is left is where the groups begin.
  EXPECT_EQ(resting(1234567, INT_MAX), resting(1234567, 1000));
  EXPECT_EQ(resting(1234567, 50000000), resting(1234567, 1000));
  EXPECT_EQ(resting(1234567, INT_MIN), resting(1234567, -2000));  // both two less than a multiple of three
  EXPECT_NE(resting(1234567, INT_MIN), resting(1234567, -2001));
}

}  // namespace
