#include "common/CreditArray.h"

#include <gtest/gtest.h>

#include <limits>

using namespace credit;

namespace {

constexpr long kMost = std::numeric_limits<long>::max();
constexpr long kLeast = std::numeric_limits<long>::min();

CreditArray amounts(long a, long b, long c, long d, long e, long f) {
  return CreditArray(std::array<long, 6>{a, b, c, d, e, f});
}

template <class Call>
std::string errorOf(Call call) {
  try {
    call();
  } catch (const CreditError& error) {
    return error.what();
  }
  return "nothing thrown";
}

}  // namespace

TEST(CreditArray, StartsAtZero) {
  EXPECT_EQ(amounts(0, 0, 0, 0, 0, 0), CreditArray());
  EXPECT_EQ(CreditArray(), CreditArray::ZeroCredits);
}

TEST(CreditArray, KindsHaveTheirPlaces) {
  const CreditType kinds[] = {CREDIT_NON_RESTRICTED, CREDIT_RESTRICTED, CREDIT_CASHABLE,
                              CREDIT_FICHAS,         CREDIT_RESERVA,    CREDIT_BANCO};
  for (int i = 0; i < 6; ++i) {
    EXPECT_EQ(i, kinds[i]);
    const CreditArray one(kinds[i], 7);
    for (int j = 0; j < 6; ++j) EXPECT_EQ(i == j ? 7 : 0, one[j]);
    EXPECT_EQ(7, one[kinds[i]]);
    EXPECT_EQ(7, one.Total());
  }
  EXPECT_EQ(6, CREDIT_ALL);
}

TEST(CreditArray, SetsOneKindOrAll) {
  EXPECT_EQ(amounts(0, 5, 0, 0, 0, 0), CreditArray(CREDIT_RESTRICTED, 5));
  EXPECT_EQ(amounts(3, 3, 3, 3, 3, 3), CreditArray(CREDIT_ALL, 3));
  EXPECT_EQ("No such credit type", errorOf([] { CreditArray(static_cast<CreditType>(7), 1); }));
}

TEST(CreditArray, ReadingAllGivesTheSum) {
  const CreditArray credits = amounts(1, 2, 3, 4, 5, 6);
  EXPECT_EQ(21, credits[CREDIT_ALL]);
  EXPECT_EQ(21, credits[6]);
  EXPECT_EQ(6, credits[CREDIT_BANCO]);
  EXPECT_EQ(1, credits[0]);
  EXPECT_EQ("No such credit type", errorOf([&] { return credits[7]; }));
  EXPECT_EQ("No such credit type", errorOf([&] { return credits[-1]; }));
}

TEST(CreditArray, TheSumCannotBeWritten) {
  CreditArray credits;
  credits[CREDIT_CASHABLE] = 4;
  credits[3] = 5;
  EXPECT_EQ(amounts(0, 0, 4, 5, 0, 0), credits);
  EXPECT_EQ("Cannot alter the sum of all credits!", errorOf([&] { credits[CREDIT_ALL] = 1; }));
  EXPECT_EQ("Cannot alter the sum of all credits!", errorOf([&] { credits[6] = 1; }));
  EXPECT_EQ("No such credit type", errorOf([&] { credits[7] = 1; }));
  EXPECT_EQ("No such credit type", errorOf([&] { credits[-1] = 1; }));
}

TEST(CreditArray, Clears) {
  CreditArray credits = amounts(1, 2, 3, 4, 5, 6);
  credits.ClearMin();
  EXPECT_EQ(CreditArray(CREDIT_ALL, -1), credits);
  credits.ClearMax();
  EXPECT_EQ(CreditArray(CREDIT_ALL, kMost), credits);
  EXPECT_EQ(kMost, credits.Total());
  credits.Clear();
  EXPECT_TRUE(credits.IsEmpty());
}

TEST(CreditArray, AddsAndSubtractsPerKind) {
  const CreditArray a = amounts(1, 2, 3, 4, 5, 6);
  const CreditArray b = amounts(6, 5, 4, 3, 2, 1);
  EXPECT_EQ(CreditArray(CREDIT_ALL, 7), a + b);
  EXPECT_EQ(amounts(-5, -3, -1, 1, 3, 5), a - b);
  EXPECT_EQ(amounts(-1, -2, -3, -4, -5, -6), -a);
  CreditArray sum = a;
  sum += b;
  sum -= a;
  EXPECT_EQ(b, sum);
  EXPECT_EQ(CreditArray(CREDIT_ALL, kMost), CreditArray(CREDIT_ALL, kMost) + a);
}

TEST(CreditArray, ComparisonIsPartial) {
  const CreditArray small = amounts(1, 1, 1, 1, 1, 1);
  const CreditArray large = amounts(1, 1, 1, 1, 1, 2);
  const CreditArray other = amounts(9, 0, 1, 1, 1, 1);
  EXPECT_TRUE(large.Covers(small));
  EXPECT_FALSE(small.Covers(large));
  EXPECT_TRUE(large >= small && large > small && small <= large && small < large);
  EXPECT_TRUE(small >= small && small <= small);
  EXPECT_FALSE(small > small || small < small);
  EXPECT_FALSE(other >= small || other <= small || other > small || other < small);
  EXPECT_TRUE(small != large);
}

TEST(CreditArray, StrictSignsAskEveryKind) {
  EXPECT_TRUE(amounts(0, 1, 0, 0, 0, 0).IsStrictlyPositive(false));
  EXPECT_FALSE(CreditArray().IsStrictlyPositive(false));
  EXPECT_TRUE(CreditArray().IsStrictlyPositive(true));
  EXPECT_FALSE(amounts(5, -1, 0, 0, 0, 0).IsStrictlyPositive(true));
  EXPECT_TRUE(amounts(0, -1, 0, 0, 0, 0).IsStrictlyNegative(false));
  EXPECT_FALSE(CreditArray().IsStrictlyNegative(false));
  EXPECT_TRUE(CreditArray().IsStrictlyNegative(true));
  EXPECT_FALSE(amounts(-5, 1, 0, 0, 0, 0).IsStrictlyNegative(true));
}

TEST(CreditArray, ASumOfZeroIsNotEmpty) {
  const CreditArray credits = amounts(5, -5, 0, 0, 0, 0);
  EXPECT_TRUE(credits.IsZero());
  EXPECT_FALSE(credits.IsEmpty());
}

TEST(CreditArray, SignsOfASumAreThoseOfItsKinds) {
  const struct {
    CreditArray credits;
    bool positive, positiveOrZero, negative, negativeOrZero;
  } rows[] = {{amounts(0, 0, 0, 0, 0, 0), false, true, false, true},
              {amounts(1, 0, 0, 0, 0, 0), true, true, false, false},
              {amounts(0, 0, 0, 0, 0, -1), false, false, true, true},
              {amounts(5, -5, 0, 0, 0, 0), false, false, false, false},
              {amounts(9, 0, 0, -1, 0, 0), false, false, false, false},
              {amounts(-9, 0, 0, 1, 0, 0), false, false, false, false}};
  for (const auto& row : rows) {
    EXPECT_EQ(row.positive, row.credits.IsStrictlyPositive(false));
    EXPECT_EQ(row.positiveOrZero, row.credits.IsStrictlyPositive(true));
    EXPECT_EQ(row.negative, row.credits.IsStrictlyNegative(false));
    EXPECT_EQ(row.negativeOrZero, row.credits.IsStrictlyNegative(true));
  }
}

TEST(CreditArray, NegativeKindsBecomeZero) {
  CreditArray credits = amounts(5, -5, 0, -1, 2, 0);
  credits.ZeroOutNegative();
  EXPECT_EQ(amounts(5, 0, 0, 0, 2, 0), credits);
}

TEST(CreditArray, WhatLeavesTheRangeStaysAtItsEnd) {
  const CreditArray largest(CREDIT_ALL, kMost), smallest(CREDIT_ALL, kLeast), one(CREDIT_ALL, 1);
  EXPECT_EQ(largest, largest + one);
  EXPECT_EQ(largest, largest + largest);
  EXPECT_EQ(largest, largest - smallest);
  EXPECT_EQ(smallest, smallest - one);
  EXPECT_EQ(smallest, smallest + smallest);
  EXPECT_EQ(smallest, smallest - largest);
  EXPECT_EQ(CreditArray(CREDIT_ALL, -1), largest + smallest);
  EXPECT_EQ(largest, -smallest);
  EXPECT_EQ(CreditArray(CREDIT_ALL, -kMost), -largest);
  EXPECT_EQ(kMost, largest.Total());
  EXPECT_EQ(kLeast, smallest.Total());
  EXPECT_EQ(kLeast, smallest[CREDIT_ALL]);
  EXPECT_EQ(-3, amounts(kMost, kMost, kMost, kLeast, kLeast, kLeast).Total());  // the sum itself is exact
  EXPECT_TRUE(amounts(kMost, 1, kLeast, 0, 0, 0).IsZero());
  EXPECT_TRUE(largest > smallest && smallest < largest);
  EXPECT_TRUE(largest.IsStrictlyPositive(false) && smallest.IsStrictlyNegative(false));
}

TEST(CreditArray, BetsAndHoldingsFromTheEndsOfTheirRanges) {
  const uint64_t all = std::numeric_limits<uint64_t>::max();
  EXPECT_EQ(amounts(kMost, kMost, 1, 0, 0, 0), amounts(kMost, kMost, kMost, 0, 0, 0).MakeBet(all));
  EXPECT_EQ(amounts(1, kMost, 0, 0, 0, 0), amounts(kMost, kMost, kMost, 0, 0, 0).MakeBet(uint64_t{1} << 63));
  EXPECT_EQ(CreditArray(), CreditArray(CREDIT_ALL, kLeast).MakeBet(all));
  EXPECT_EQ(amounts(0, 1, 0, 0, 0, 0), CreditArray(CREDIT_ALL, kMost).MakeBet(1));
  EXPECT_EQ(amounts(1, 0, 0, 0, 0, 0), amounts(kMost, kLeast, kMost, 0, 0, 0).MakeBet(1));
}

TEST(CreditArray, ABetIsPaidFromThreeKindsInOrder) {
  const CreditArray held = amounts(4, 3, 1, 100, 100, 100);
  EXPECT_EQ(CreditArray(), held.MakeBet(0));
  EXPECT_EQ(amounts(0, 2, 0, 0, 0, 0), held.MakeBet(2));
  EXPECT_EQ(amounts(0, 3, 0, 0, 0, 0), held.MakeBet(3));
  EXPECT_EQ(amounts(2, 3, 0, 0, 0, 0), held.MakeBet(5));
  EXPECT_EQ(amounts(4, 3, 1, 0, 0, 0), held.MakeBet(8));
  EXPECT_EQ(amounts(4, 3, 1, 0, 0, 0), held.MakeBet(10));
  EXPECT_EQ(8, held.MakeBet(10).Total());
  EXPECT_EQ(amounts(4, 3, 1, 0, 0, 0), held.MakeBet(std::numeric_limits<uint64_t>::max()));
  EXPECT_EQ(amounts(4, 3, 1, 100, 100, 100), held);  // nothing is taken from what is asked
}

TEST(CreditArray, AKindInTheRedPaysNothing) {
  EXPECT_EQ(amounts(4, 0, 0, 0, 0, 0), amounts(4, -3, 0, 0, 0, 0).MakeBet(5));
}
