// The rolling digits where their tick clock comes round, every 49.7 days: 2^32 ms after 0 it begins at 0 again.
#include <algorithm>
#include <cstdint>

#include "tests/components/AllocationCount.h"
#include "tests/components/CyphersFixture.h"

using namespace cypherstest;

namespace {

constexpr uint64_t kRound = uint64_t{1} << 32;

// Where a run began, which shows nowhere any more once it is over.
struct Began : Digits {
  using Digits::Digits;
  using TControlCyphers3::mLastValue;
};

class CyphersClock : public Cyphers {
 protected:
  void at(uint64_t tick) { clock.set(static_cast<Uint32>(tick)); }
  // Draws every 20 ms from one tick to another, both counted on over the rounds of the clock.
  void draw(Digits& digits, uint64_t from, uint64_t to) {
    for (uint64_t tick = from; tick <= to; tick += 20) {
      at(tick);
      digits.draw();
    }
  }
};

}  // namespace

TEST_F(CyphersClock, DigitsAtRestDoNotRollAgainWhenTheClockHasComeRound) {
  const auto rest = resting(123456, 2);
  auto digits = make(2);
  picture(*digits);
  digits->SetFinalValue(123456);
  draw(*digits, 1000, 5400);
  ASSERT_TRUE(rest == picture(*digits));
  for (const uint64_t rounds : {kRound, 2 * kRound})
    for (uint64_t tick = 800; tick < 5600; tick += 50) {
      at(rounds + tick);
      ASSERT_TRUE(rest == picture(*digits)) << tick;
      ASSERT_EQ(123456.0, digits->CurrentValue(clock.now()));
    }
}

TEST_F(CyphersClock, AWheelAtRestTurnsFromItsDigitWhenTheClockHasComeRound) {
  auto digits = make(0);
  digits->SetSpinFunction(atOnce);
  picture(*digits);
  digits->SetFinalValue(3);
  draw(*digits, 1000, 1400);
  const TControlCyphers3::Cypher& wheel = digits->mCypherPositions[0];
  at(kRound + 1100);  // 100 ms after the turn's start, by the numbers
  EXPECT_EQ(3.0f, digits->cypherPos(wheel, clock.now()));
  digits->SetFinalValue(5);
  picture(*digits);
  EXPECT_EQ(3.0f, wheel.digit);
  EXPECT_EQ(0.0f, wheel.lastTransition) << "from a standstill";
  at(kRound + 1200);
  EXPECT_NEAR(4.0f, digits->cypherPos(wheel, clock.now()), 1e-5) << "and the new turn turns";
  draw(*digits, kRound + 1200, kRound + 1400);
  EXPECT_TRUE(resting(5, 0) == picture(*digits));
}

TEST_F(CyphersClock, ATurnOnTheSameTickOfTheNextRoundTurns) {
  auto digits = make(0);
  digits->SetSpinFunction(atOnce);
  picture(*digits);
  digits->SetFinalValue(3);
  draw(*digits, 2000, 2400);
  at(kRound + 2000);
  digits->SetFinalValue(5);
  picture(*digits);
  at(kRound + 2100);
  EXPECT_NEAR(4.0f, digits->cypherPos(digits->mCypherPositions[0], clock.now()), 1e-5);
}

TEST_F(CyphersClock, ARunOnTheSameTickOfTheNextRoundRuns) {
  auto digits = make(0);
  at(1000);
  digits->SetFinalValue(1000);
  draw(*digits, 1000, 5400);
  at(kRound + 1000);
  digits->SetFinalValue(3000);
  EXPECT_DOUBLE_EQ(1000.0, digits->CurrentValue(1000));
  EXPECT_DOUBLE_EQ(2000.0, digits->CurrentValue(2000));
  EXPECT_DOUBLE_EQ(3000.0, digits->CurrentValue(5000));
}

TEST_F(CyphersClock, ANewValueAfterARoundStartsFromTheFinalOne) {
  auto digits = make(0);
  at(1000);
  digits->SetFinalValue(1000);
  draw(*digits, 1000, 5400);
  at(kRound + 2000);  // a quarter of the way, by the numbers
  digits->SetFinalValue(3000);
  EXPECT_DOUBLE_EQ(1000.0, digits->CurrentValue(2000));
}

TEST_F(CyphersClock, ASpinFunctionIsToldNoMoreThanTheEndOfARunThatIsOver) {
  auto digits = make(0);
  double seenT = 0, seenElapsed = 0;
  digits->SetSpinFunction([&](double t, double elapsed) {
    seenT = t;
    seenElapsed = elapsed;
    return t;
  });
  at(1000);
  digits->SetFinalValue(1000);
  draw(*digits, 1000, 5400);
  at(kRound + 1001);
  picture(*digits);
  EXPECT_EQ(1.0, seenT);
  EXPECT_EQ(4000.0, seenElapsed);
}

TEST_F(CyphersClock, RunsAndTurnsGoOnOverTheEndOfTheClock) {
  // Beside one another: the same run far from the end of the clock, across it, and begun on tick 0.
  const auto run = [&](uint64_t start) {
    auto digits = make(2);
    digits->SetFinalValue(250000);
    digits->ResetAnimation();
    draw(*digits, start - 400, start - 20);
    at(start);
    digits->SetFinalValue(1234567);
    std::vector<std::vector<Uint8>> pictures;
    for (uint64_t tick = start + 20; tick <= start + 4400; tick += 60) {
      at(tick);
      pictures.push_back(picture(*digits));
    }
    EXPECT_EQ(1234567, digits->mCurrentValue);
    return pictures;
  };
  const auto far = run(10000);
  EXPECT_TRUE(far == run(kRound - 2010)) << "the run passes the end";
  EXPECT_TRUE(far == run(kRound + 300)) << "wheels at rest pass it";
}

TEST_F(CyphersClock, ARunBegunOnTickZeroRuns) {
  auto digits = make(0);
  digits->draw();
  at(kRound);
  digits->SetFinalValue(1000);
  // 0 stands for no run: counted from the millisecond before.
  EXPECT_NEAR(1000.0 / 63.0, digits->CurrentValue(0), 0.3);
  EXPECT_NEAR(500.0, digits->CurrentValue(999), 1e-6);
  digits->SetSpinFunction(atOnce);
  picture(*digits);
  const TControlCyphers3::Cypher& wheel = digits->mCypherPositions[3];
  EXPECT_NE(0u, wheel.lastChange) << "0 stands for a wheel that never moved";
  EXPECT_NEAR(0.5f, digits->cypherPos(wheel, 99), 1e-4);
}

// ---- Wheels that stand still from the beginning

TEST_F(CyphersClock, TheVeryFirstDrawShowsItsValueWithoutATurn) {
  auto digits = make(2);
  digits->SetSpinFunction(atOnce);
  digits->SetFinalValue(987654);  // a run, whose value is the final one at once
  EXPECT_TRUE(resting(987654, 2) == picture(*digits));
  for (const TControlCyphers3::Cypher& wheel : digits->mCypherPositions) {
    EXPECT_EQ(1000u, wheel.lastChange);
    EXPECT_EQ(static_cast<float>(wheel.targetDigit), wheel.digit);
    EXPECT_EQ(0.0f, wheel.lastTransition);
  }
  for (int i = 0; i < 12; ++i) {
    clock.advance(20);
    EXPECT_TRUE(resting(987654, 2) == picture(*digits)) << i;
  }
}

TEST_F(CyphersClock, TheFirstDrawInTheMiddleOfARunShowsTheRunningValueWithoutATurn) {
  auto digits = make(0);
  digits->SetFinalValue(1000);
  clock.advance(1000);  // half of the way
  EXPECT_TRUE(resting(500, 0) == picture(*digits));
}

TEST_F(CyphersClock, AfterAResetInMidTurnTheWheelsStandAtOnce) {
  auto digits = make<Began>(0);
  digits->SetSpinFunction(atOnce);
  digits->SetFinalValue(111111);
  picture(*digits);
  clock.advance(300);
  digits->SetFinalValue(999999);
  picture(*digits);
  clock.advance(100);
  EXPECT_FALSE(resting(999999, 0) == picture(*digits));
  digits->ResetAnimation();
  for (const TControlCyphers3::Cypher& wheel : digits->mCypherPositions) EXPECT_EQ(0u, wheel.lastChange);
  EXPECT_EQ(999999.0, digits->mLastValue);
  for (int i = 0; i < 12; ++i) {
    EXPECT_TRUE(resting(999999, 0) == picture(*digits)) << i;
    clock.advance(20);
  }
}

TEST_F(CyphersClock, AFrameAtRestTakesNothingFromTheHeapAfterARoundEither) {
  auto digits = make(2);
  digits->SetFinalValue(123456789);
  draw(*digits, 1000, 5400);
  const long before = allocations::count;
  draw(*digits, kRound, kRound + 6000);
  EXPECT_EQ(before, allocations::count);
}
