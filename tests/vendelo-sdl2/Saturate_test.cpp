#include "vendelo-sdl2/Saturate.h"

#include <gtest/gtest.h>

#include <cstdint>

namespace {

using MyUtils::saturated;

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNoNumber = std::numeric_limits<double>::quiet_NaN();
constexpr double kLargest = std::numeric_limits<double>::max();

TEST(Saturated, FractionsAreCut) {
  EXPECT_EQ(saturated<int>(0.0), 0);
  EXPECT_EQ(saturated<int>(2.999), 2);
  EXPECT_EQ(saturated<int>(-2.999), -2);
  EXPECT_EQ(saturated<unsigned>(-0.5), 0u);
  EXPECT_EQ(saturated<unsigned char>(255.9), 255);
}

TEST(Saturated, TheEndsOfTheRangeAreItsOwn) {
  EXPECT_EQ(saturated<int>(2147483646.0), 2147483646);
  EXPECT_EQ(saturated<int>(2147483647.0), INT32_MAX);
  EXPECT_EQ(saturated<int>(-2147483647.0), -2147483647);
  EXPECT_EQ(saturated<int>(-2147483648.0), INT32_MIN);
  EXPECT_EQ(saturated<unsigned>(4294967295.0), UINT32_MAX);
  EXPECT_EQ(saturated<int64_t>(9223372036854774784.0), 9223372036854774784);  // the last double below the end
  EXPECT_EQ(saturated<int64_t>(-9223372036854775808.0), INT64_MIN);
  EXPECT_EQ(saturated<uint64_t>(18446744073709549568.0), 18446744073709549568u);
}

TEST(Saturated, WhatLiesBeyondBecomesTheEnd) {
  for (const double value : {2147483648.0, 1e10, 1e300, kLargest, kInfinity}) {
    EXPECT_EQ(saturated<int>(value), INT32_MAX) << value;
    EXPECT_EQ(saturated<int>(-value * 2), INT32_MIN) << value;
    EXPECT_EQ(saturated<unsigned>(value * 2), UINT32_MAX) << value;
    EXPECT_EQ(saturated<unsigned>(-value), 0u) << value;
  }
  for (const double value : {9223372036854775808.0, 1e19, kLargest, kInfinity}) {
    EXPECT_EQ(saturated<int64_t>(value), INT64_MAX) << value;
    EXPECT_EQ(saturated<int64_t>(-value), INT64_MIN) << value;
    EXPECT_EQ(saturated<uint64_t>(value * 2), UINT64_MAX) << value;
  }
}

TEST(Saturated, NoNumberIsZero) {
  EXPECT_EQ(saturated<int>(kNoNumber), 0);
  EXPECT_EQ(saturated<int64_t>(-kNoNumber), 0);
  EXPECT_EQ(MyUtils::toPixels(kNoNumber), 0);
}

TEST(ToPixels, PlacesStayWithinWhatCanBeAddedUp) {
  EXPECT_EQ(MyUtils::toPixels(-1919.7), -1919);
  EXPECT_EQ(MyUtils::toPixels(268435455.0), 268435455);
  for (const double value : {268435457.0, 1e10, kLargest, kInfinity}) {
    EXPECT_EQ(MyUtils::toPixels(value), 268435456) << value;
    EXPECT_EQ(MyUtils::toPixels(-value), -268435456) << value;
  }
}

}  // namespace
