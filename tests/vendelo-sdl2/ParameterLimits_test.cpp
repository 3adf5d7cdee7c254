#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

#include "vendelo-sdl2/Parameters.h"

namespace vendelo_sdl2 {
namespace {

using Limit = ParameterLimits::Limit;

struct CheckCase {
  const char* name;
  const char* limits;
  const char* value;
  const char* checked;
};

class LimitCheck : public testing::TestWithParam<CheckCase> {};

TEST_P(LimitCheck, GivesTheValueOrTheNearestOne) {
  const ParameterLimits limits((std::string(GetParam().limits)));
  EXPECT_EQ(limits.Check(GetParam().value), GetParam().checked);
  EXPECT_EQ(limits.SatisfiesLimit(GetParam().value), std::string(GetParam().value) == GetParam().checked);
}

INSTANTIATE_TEST_SUITE_P(
  Cases, LimitCheck,
  testing::Values(
    CheckCase{"NoLimits", "", "anything", "anything"}, CheckCase{"StrictMinimumNeverRefuses", ">5", "3", "3"},
    CheckCase{"StrictMaximumNeverRefuses", "<5", "9", "9"},
    CheckCase{"MinimumClampsWithSixDecimals", ">=5", "3", "5.000000"},
    CheckCase{"MinimumHoldsItself", ">=5", "5", "5"}, CheckCase{"AboveTheMinimum", ">=5", "6", "6"},
    CheckCase{"MaximumClampsWithSixDecimals", "<=5", "9", "5.000000"},
    CheckCase{"MaximumHoldsItself", "<=5", "5", "5"}, CheckCase{"BelowTheMaximum", "<=5", "4", "4"},
    CheckCase{"RangeBelow", ">=2|<=4", "1", "2.000000"}, CheckCase{"RangeAbove", ">=2|<=4", "7", "4.000000"},
    CheckCase{"RangeInside", ">=2|<=4", "3", "3"}, CheckCase{"FloatBound", ">=1.5", "1", "1.500000"},
    CheckCase{"FloatValue", "<=2", "2.5", "2.000000"}, CheckCase{"FloatEquality", "=1.5|=2.5", "2.5", "2.5"},
    CheckCase{"IntegerEqualsFloat", "=2.0", "2", "2"}, CheckCase{"FirstEqualityForAMiss", "=1|=2", "3", "1"},
    CheckCase{"SecondEqualityMatches", "=1|=2", "2", "2"}, CheckCase{"TextMatches", "=\"on\"|=\"off\"", "on", "on"},
    CheckCase{"SecondTextMatches", "=\"on\"|=\"off\"", "off", "off"},
    CheckCase{"NumberAgainstTexts", "=\"on\"|=\"off\"", "1", "on"}, CheckCase{"NumericText", "=\"1\"", "1", "1"},
    CheckCase{"EmptyTextLimit", "=\"\"", "x", ""}, CheckCase{"TextAgainstBounds", ">=0|<=10", "abc", "abc"},
    CheckCase{"TextAgainstNumericEquality", "=1|=2", "abc", "abc"},
    CheckCase{"NegativeValueIsText", ">=0", "-3", "-3"}, CheckCase{"EmptyValueIsText", ">=5", "", ""},
    CheckCase{"EqualityThenBoundMissesBoth", "=1|>=5", "3", "1"},
    CheckCase{"EqualityThenBoundHoldsByTheBound", "=1|>=5", "7", "7"},
    CheckCase{"LastOfTwoMinimums", ">=5|>=3", "1", "3.000000"},
    CheckCase{"LastOfTwoMaximums", "<=5|<=3", "9", "3.000000"},
    CheckCase{"LastOfTwoMaximumsRising", "<=3|<=5", "9", "5.000000"},
    CheckCase{"MinimumBeforeMaximum", "<=3|>=9", "5", "9.000000"},
    CheckCase{"AMinimumThatIsMetCountsForTheClamp", ">5|<=3", "5", "5.000000"},
    CheckCase{"AMaximumThatIsMetCountsForTheClamp", ">=9|>5|<7", "7", "7.000000"},
    CheckCase{"AMinimumBelowTheValueIsNoClamp", ">=9|>5|<7", "6", "6"},
    CheckCase{"EqualityBehindABrokenBoundHolds", ">=5|=1|=2", "2", "2"},
    CheckCase{"EqualityBehindABrokenBoundMisses", ">=5|=1|=2", "3", "1"},
    CheckCase{"BoundBehindAMatchedEqualityBreaks", "=1|=2|>=5", "2", "1"},
    CheckCase{"BelowAMaximumBesideAMissedEquality", "=20|<=10", "5", "5"},
    CheckCase{"AboveAMaximumBesideAMissedEquality", "<=10|=20", "15", "20"},
    CheckCase{"StrictBoundsBesideAMissedEquality", "=1|>5|<2", "3", "3"},
    CheckCase{"TextEqualityBesideABound", "=\"on\"|>=5", "3", "on"},
    CheckCase{"TextEqualityIsNoNumber", "=\"1\"|=\"2\"", "02", "1"},
    CheckCase{"FirstOfMixedEqualities", "=7|=\"on\"", "x", "on"}, CheckCase{"LeadingZeros", "=007", "7", "7"},
    CheckCase{"ACommaEndsTheNumber", "<=1,9", "5", "1.000000"}, CheckCase{"AValueWithAComma", "<=1", "1,9", "1,9"},
    CheckCase{"FloatAgainstAnInteger", "=1|=2", "2.5", "1"},
    CheckCase{"BadEqualityEndsTheRuleOfOneMatch", "=1|=\"", "3", "3"}),
  [](const auto& info) { return info.param.name; });

// A bad block is dropped with one message, the others stay.
struct ParseCase {
  const char* name;
  const char* limits;
  const char* details;
  bool anyLeft;
};

class LimitParse : public testing::TestWithParam<ParseCase> {};

TEST_P(LimitParse, PrintsWhatIsWrongAndGoesOn) {
  testing::internal::CaptureStdout();
  const ParameterLimits limits((std::string(GetParam().limits)));
  const std::string out = testing::internal::GetCapturedStdout();
  const std::string line = std::string("Error parsing limit <") + GetParam().limits + ">! Details: ";
  EXPECT_EQ(out, GetParam().details[0] == '\0' ? "" : line + GetParam().details + "\n");
  EXPECT_EQ(limits.HasAnyLimits(), GetParam().anyLeft);
  EXPECT_EQ(limits.OriginalString(), GetParam().limits);
}

INSTANTIATE_TEST_SUITE_P(
  Cases, LimitParse,
  testing::Values(ParseCase{"Empty", "", "", false},
                  ParseCase{"Good", "=1|<=2|>\t", "Unsupported limit type - \t", true},
                  ParseCase{"NoComparator", "5", "Unsupported comparator - ", false},
                  ParseCase{"EmptyBlockInTheMiddle", "=1||=2", "Unsupported comparator - ", true},
                  ParseCase{"EmptyBlockInFront", "|=1", "Unsupported comparator - ", true},
                  ParseCase{"TrailingSeparator", "=1|", "", true},
                  ParseCase{"NoArgument", "<=", "Argument after comparator cannot be empty", false},
                  ParseCase{"LoneQuote", "=\"", "Missing closing quotes", false},
                  ParseCase{"OpenQuote", "=\"on", "Missing closing quotes", false},
                  ParseCase{"QuoteNotAtTheEnd", "=\"on\"x", "Missing closing quotes", false},
                  ParseCase{"Negative", ">=-5", "Unsupported limit type - -5", false},
                  ParseCase{"TwoPoints", "=1.2.3", "Unsupported limit type - 1.2.3", false},
                  ParseCase{"LeadingPoint", "=.5", "Unsupported limit type - .5", false},
                  ParseCase{"TextWithABound", "<\"on\"", "Inappropriate comparator for string type - \"on\"",
                            false},
                  ParseCase{"GoodAfterBad", "x|=1", "Unsupported comparator - ", true}),
  [](const auto& info) { return info.param.name; });

TEST(IsIntOrDouble, TellsDigitsOneSeparatorAndTheRestApart) {
  for (const char* text : {"0", "007", "1234567890"}) EXPECT_EQ(isIntOrDouble(text), Limit::INTEGER) << text;
  for (const char* text : {"1.5", "1,5", "5.", "0.0"}) EXPECT_EQ(isIntOrDouble(text), Limit::FLOAT) << text;
  for (const char* text : {"", ".5", ",5", "-1", "+1", "1e3", " 1", "1.2,3", "abc", "\xc3\xa9"})
    EXPECT_EQ(isIntOrDouble(text), Limit::UNDEFINED) << text;
}

TEST(LimitErrors, ANumberOutOfRangeThrows) {
  const std::string huge(40, '9');
  EXPECT_THROW(ParameterLimits(">=1").Check(huge), std::out_of_range);
  EXPECT_EQ(ParameterLimits("=\"a\"").Check(huge), "a") << "texts are not read as numbers";
  Parameter parameter;
  parameter.SetValue("1");
  parameter.SetLimits(">=1");
  EXPECT_THROW((void)parameter.IsValueOK(huge), std::out_of_range);
  EXPECT_THROW(parameter.SetValue(huge), std::out_of_range);
  EXPECT_EQ(parameter.Value(), "1");
}

TEST(LimitValues, TheConstantsAreTheirBits) {
  EXPECT_EQ(Limit::MIN_INCLUSIVE, Limit::EQUAL | Limit::MIN);
  EXPECT_EQ(Limit::MAX_INCLUSIVE, Limit::EQUAL | Limit::MAX);
  EXPECT_EQ(ParamChangeListener::ALL, ParamChangeListener::VALUE | ParamChangeListener::CAPTION |
                                        ParamChangeListener::DESCRIPTION | ParamChangeListener::RESTRICTION |
                                        ParamChangeListener::OLD_VALUE);
  EXPECT_EQ(RESTRICTION_ALL,
            RESTRICTION_UNEDITABLE | RESTRICTION_RAM_CLEAR | RESTRICTION_LOGIC_DOOR | RESTRICTION_HIDDEN);
  EXPECT_EQ(LimitSeparator, '|');
  const int numbers[] = {PARAM_CACHE, PARAM_GLOBAL, PARAM_GROUP, PARAM_MINE, PARAM_OTHER};
  for (int bit = 0; bit < 5; ++bit) EXPECT_EQ(numbers[bit], 1 << bit);
  const int properties[] = {ParamChangeListener::VALUE, ParamChangeListener::CAPTION,
                            ParamChangeListener::DESCRIPTION, ParamChangeListener::RESTRICTION,
                            ParamChangeListener::OLD_VALUE};
  for (int bit = 0; bit < 5; ++bit) EXPECT_EQ(properties[bit], 1 << bit);
  EXPECT_EQ(ParamChangeListener::NONE, 0);
  EXPECT_EQ(RESTRICTION_NONE, 0);
  EXPECT_EQ(RESTRICTION_UNEDITABLE, 1);
  EXPECT_EQ(RESTRICTION_RAM_CLEAR, 2);
  EXPECT_EQ(RESTRICTION_LOGIC_DOOR, 4);
  EXPECT_EQ(RESTRICTION_HIDDEN, 1024);
  EXPECT_EQ(Limit::UNDEFINED, 0);
  EXPECT_EQ(Limit::STRING, 1);
  EXPECT_EQ(Limit::INTEGER, 2);
  EXPECT_EQ(Limit::FLOAT, 3);
  EXPECT_EQ(Limit::EQUAL, 1);
  EXPECT_EQ(Limit::MIN, 2);
  EXPECT_EQ(Limit::MAX, 4);
  EXPECT_FALSE(NoLimit.HasAnyLimits());
}

}  // namespace
}  // namespace vendelo_sdl2
