#include <gtest/gtest.h>

#include <climits>
#include <clocale>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <locale>

#include "vendelo-sdl2/MyUtils.h"

namespace {

// Every test starts with the separators and locales of a fresh program.
class NumbersTest : public testing::Test {
 protected:
  void SetUp() override { reset(); }
  void TearDown() override { reset(); }
  static void reset() {
    std::locale::global(std::locale::classic());
    MyUtils::decimal_separator = ',';
    MyUtils::thousand_separator = '.';
    std::memcpy(MyUtils::thousand_grouping, "\3\0\0", 4);
    MyUtils::user_locale = std::locale(std::locale::classic(), &MyUtils::separators);
  }
};

TEST_F(NumbersTest, CurrencyWithTheDefaults) {
  const struct {
    double value;
    int precision;
    const char* expected;
  } rows[] = {{1000000, 0, "1.000.000"}, {1000000, 2, "1.000.000,00"},        {0, 2, "0,00"},
              {999, 0, "999"},           {1234.567, 2, "1.234,57"},           {-1234.5, 1, "-1.234,5"},
              {0.005, 3, "0,005"},       {12345678901.0, 0, "12.345.678.901"}};
  for (const auto& row : rows) EXPECT_EQ(MyUtils::currency2string(row.value, row.precision), row.expected);
}

TEST_F(NumbersTest, AnyNumberOfDecimalsCanBeAskedFor) {
  EXPECT_EQ(MyUtils::currency2string(0.5, 20), "0,50000000000000000000");
  EXPECT_EQ(MyUtils::currency2string(1234.5, -1), "1.234,500000");  // as the library takes it
  EXPECT_EQ(MyUtils::currency2string(1234.5, INT_MIN), "1.234,500000");
  EXPECT_EQ(MyUtils::dtos(0.5, 1000).size(), 1002u);
  // No double has more than 1074 decimals; the smallest one has that many.
  const double smallest = std::numeric_limits<double>::denorm_min();
  for (const int precision : {1074, 1075, 100000000, INT_MAX}) {
    const std::string text = MyUtils::dtos(smallest, precision);
    EXPECT_EQ(text.size(), 1076u);
    EXPECT_EQ(text.back(), '5');
    EXPECT_EQ(MyUtils::currency2string(1, precision), "1," + std::string(1074, '0'));
  }
}

TEST_F(NumbersTest, NoAmountIsBeyondAText) {
  const double infinity = std::numeric_limits<double>::infinity();
  EXPECT_EQ(MyUtils::currency2string(infinity, 2), "inf");
  EXPECT_EQ(MyUtils::currency2string(-infinity, 2), "-inf");
  EXPECT_EQ(MyUtils::currency2string(std::nan(""), 2), "nan");
  EXPECT_EQ(MyUtils::currency2string(9223372036854775807.0, 0), "9.223.372.036.854.775.808");
  EXPECT_EQ(MyUtils::currency2string(-9223372036854775808.0, 0), "-9.223.372.036.854.775.808");
  EXPECT_EQ(MyUtils::currency2string(std::numeric_limits<double>::max(), 0).size(), 309u + 102);
  EXPECT_EQ(MyUtils::dtos(infinity, 2), "inf");
  EXPECT_EQ(MyUtils::double2string(std::nan("")), "nan");
}

// The service names it as a number of any size, of which the lowest byte arrives.
TEST_F(NumbersTest, AnyGroupingIsTaken) {
  for (int grouping = -128; grouping < 128; ++grouping) {
    MyUtils::thousand_grouping[0] = static_cast<char>(grouping);
    std::string expected = "12345678";
    if (grouping > 0 && grouping != 127)
      for (int at = 8 - grouping; at > 0; at -= grouping) expected.insert(static_cast<size_t>(at), ".");
    EXPECT_EQ(MyUtils::currency2string(12345678, 0), expected) << grouping;
  }
}

TEST_F(NumbersTest, CurrencyReadsTheSeparatorsLive) {
  EXPECT_EQ(MyUtils::currency2string(1234567.5, 1), "1.234.567,5");
  MyUtils::decimal_separator = '.';
  MyUtils::thousand_separator = ' ';
  EXPECT_EQ(MyUtils::currency2string(1234567.5, 1), "1 234 567.5");
  MyUtils::thousand_grouping[0] = 2;
  EXPECT_EQ(MyUtils::currency2string(1234567.5, 1), "1 23 45 67.5");
  std::memcpy(MyUtils::thousand_grouping, "\3\2", 3);
  EXPECT_EQ(MyUtils::currency2string(1234567, 0), "12 34 567");
  MyUtils::thousand_grouping[0] = 0;
  EXPECT_EQ(MyUtils::currency2string(1234567, 0), "1234567");
  std::memcpy(MyUtils::thousand_grouping, "\1\1\1\2", 4);  // no zero behind the four
  EXPECT_EQ(MyUtils::currency2string(1234567, 0), "12 34 5 6 7");
}

TEST_F(NumbersTest, CurrencyIgnoresTheGlobalLocaleBeforeUpdateLocale) {
  EXPECT_EQ(MyUtils::int2str(1234567), "1234567");
  EXPECT_EQ(MyUtils::double2string(1234.5), "1234.5");
}

TEST_F(NumbersTest, UpdateLocaleMakesTheSeparatorsGlobal) {
  MyUtils::UpdateLocale("C");
  EXPECT_EQ(MyUtils::baseLocaleName, "C");
  EXPECT_EQ(MyUtils::int2str(-1234567), "-1.234.567");
  EXPECT_EQ(MyUtils::double2string(1234.5), "1.234,5");
  EXPECT_EQ(MyUtils::itos(1234567), "1234567");
  EXPECT_EQ(MyUtils::dtos(1234567.891, 2), "1234567.89");
  EXPECT_EQ(MyUtils::currency2string(1234567.5, 1), "1.234.567,5");
  MyUtils::thousand_separator = '\'';
  MyUtils::UpdateLocale("C");
  EXPECT_EQ(MyUtils::int2str(1234567), "1'234'567");
}

TEST_F(NumbersTest, TheCLibraryKeepsItsLocale) {
  MyUtils::UpdateLocale("C.UTF-8");
  EXPECT_EQ(MyUtils::baseLocaleName, "C.UTF-8");
  EXPECT_EQ(MyUtils::currency2string(1234567.5, 1), "1.234.567,5");
  char text[32];
  std::snprintf(text, sizeof text, "%.1f", 1234567.5);
  EXPECT_STREQ(text, "1234567.5");
  EXPECT_EQ(std::strtod("1234.5", nullptr), 1234.5);
  EXPECT_STREQ(std::setlocale(LC_ALL, nullptr), "C");
}

TEST_F(NumbersTest, AnUnknownLocaleThrowsAndKeepsTheOldOne) {
  EXPECT_THROW(MyUtils::UpdateLocale("xx_NOWHERE.UTF-8"), std::runtime_error);
  EXPECT_EQ(MyUtils::baseLocaleName, "xx_NOWHERE.UTF-8");  // the name is stored first
  EXPECT_EQ(MyUtils::int2str(1234567), "1234567");
}

TEST_F(NumbersTest, DoublesHaveTwelveDigitsAndNoTrailingZeros) {
  const struct {
    double value;
    const char* expected;
  } rows[] = {{0.5, "0.5"},
              {1234.5, "1234.5"},
              {0, "0"},
              {-2, "-2"},
              {1.0 / 3, "0.333333333333"},
              {123456789012.0, "123456789012"},
              {1234567890123.0, "1.23456789012e+12"}};
  for (const auto& row : rows) EXPECT_EQ(MyUtils::double2string(row.value), row.expected);
}

TEST_F(NumbersTest, IntegersOfAllSizes) {
  EXPECT_EQ(MyUtils::int2str(0), "0");
  EXPECT_EQ(MyUtils::int2str(INT64_MAX), "9223372036854775807");
  EXPECT_EQ(MyUtils::int2str(INT64_MIN), "-9223372036854775808");
  EXPECT_EQ(MyUtils::itos(LONG_MIN), "-9223372036854775808");
  EXPECT_EQ(MyUtils::dtos(-0.5, 0), "-0");
  EXPECT_EQ(MyUtils::dtos(2.25, 1), "2.2");
}

TEST_F(NumbersTest, ItoaInItsBases) {
  const struct {
    long value;
    int base;
    const char* expected;
  } rows[] = {{0, 10, "0"},
              {0, 2, "0"},
              {12345, 10, "12345"},
              {-12345, 10, "-12345"},
              {255, 16, "ff"},
              {-255, 16, "-ff"},
              {5, 2, "101"},
              {-5, 2, "-101"},
              {LONG_MAX, 10, "9223372036854775807"},
              {LONG_MIN, 10, "-9223372036854775808"},
              {LONG_MIN, 16, "-8000000000000000"},
              {(1l << 29) - 1, 2, "11111111111111111111111111111"},
              {(1l << 30) + 5, 2, "000000000000000000000000000101"},    // 30 digits, the first is cut off
              {-(1l << 30) - 5, 2, "-000000000000000000000000000101"},  // 31 characters and the zero
              {7, 1, ""},
              {7, 0, ""},
              {7, -3, ""}};
  for (const auto& row : rows) {
    char buffer[40];
    std::memset(buffer, '#', sizeof buffer);
    MyUtils::itoa(row.value, buffer, row.base);
    EXPECT_STREQ(buffer, row.expected);
    EXPECT_EQ(buffer[32], '#');
    EXPECT_STREQ(MyUtils::itoa(row.value, row.base), row.expected);
  }
  EXPECT_STREQ(MyUtils::itoa(35, 36), "f");  // beyond base 16 the digits end, the memory does not
  EXPECT_EQ(MyUtils::itoa(1, 10), MyUtils::itoa(2, 10));
  MyUtils::itoa(1, nullptr, 10);
}

TEST_F(NumbersTest, Itoa4InItsBases) {
  const struct {
    int64_t value;
    int base;
    const char* expected;
  } rows[] = {{0, 10, "0"},
              {35, 36, "z"},
              {36, 36, "10"},
              {-35, 36, "-z"},
              {-255, 16, "-ff"},
              {10, 2, "1010"},
              {INT64_MIN, 10, "-9223372036854775808"},
              {INT64_MAX, 36, "1y2p0ij32e8e7"},
              {INT64_MIN, 2, "-1000000000000000000000000000000000000000000000000000000000000000"},
              {5, 1, ""},
              {5, 37, ""}};
  for (const auto& row : rows) {
    char buffer[66] = "#";
    EXPECT_EQ(MyUtils::itoa4(row.value, buffer, row.base), buffer);
    EXPECT_STREQ(buffer, row.expected);
  }
  EXPECT_EQ(MyUtils::itoa4(1, nullptr, 10), nullptr);
}

TEST_F(NumbersTest, LerpAndRound) {
  EXPECT_FLOAT_EQ(MyUtils::lerp(2, 6, 0), 2);
  EXPECT_FLOAT_EQ(MyUtils::lerp(2, 6, 0.25f), 3);
  EXPECT_FLOAT_EQ(MyUtils::lerp(2, 6, 1.5f), 8);
  EXPECT_FLOAT_EQ(MyUtils::lerp(6, 2, 1), 2);
  const struct {
    double value;
    unsigned decimals;
    double expected;
  } rows[] = {{2.5, 0, 3},    {-2.5, 0, -2},    {2.4999, 0, 2},
              {1.25, 1, 1.3}, {-1.25, 1, -1.2}, {1234.5678, 2, 1234.57}};
  for (const auto& row : rows) EXPECT_DOUBLE_EQ(MyUtils::round(row.value, row.decimals), row.expected);
}

}  // namespace
