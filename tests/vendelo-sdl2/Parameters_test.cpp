#include "vendelo-sdl2/Parameters.h"

#include <gtest/gtest.h>

#include <functional>
#include <locale>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

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

// Writes the reports down.
class Watcher : public Parameter {
 public:
  using Parameter::Parameter;
  Watcher() = default;
  Watcher(const Watcher& other) : Parameter(other) {}  // without its record
  Watcher& operator=(const Watcher& other) {
    Parameter::operator=(other);
    return *this;
  }
  void OnValueChanged(int changes) override {
    reports.push_back(changes);
    if (onChange) onChange();
  }
  std::vector<int> reports;
  std::function<void()> onChange;
};

using Reports = std::vector<int>;

TEST(ParameterValue, ANullParameterReadsAsEmptyAndIgnoresTexts) {
  Parameter parameter;
  EXPECT_TRUE(parameter.IsNull());
  parameter.SetCaption("c");
  parameter.SetDescription("d");
  parameter.SetRestrictions(4);
  parameter.SetLimits("=1");
  EXPECT_TRUE(parameter.IsNull());
  EXPECT_EQ(parameter.Value() + parameter.AsString() + parameter.Caption() + parameter.Description() +
              parameter.OldValue() + parameter.GetRawDomain(),
            "");
  EXPECT_EQ(parameter.Restrictions(), 0);
  EXPECT_EQ(&parameter.Limits(), &NoLimit);
  EXPECT_FALSE(parameter.Modified());
  EXPECT_TRUE(parameter.IsValueOK("anything"));
  EXPECT_EQ(parameter.AsInteger(7), 7);
  EXPECT_EQ(parameter.Changes(), 0);
  parameter.UpdateOldValue();
  parameter.Reset();
  EXPECT_TRUE(parameter.IsNull());
}

TEST(ParameterValue, TheFirstValueGivesDataAndReportsEverythingOnce) {
  Watcher parameter;
  parameter.SetValue("x");
  EXPECT_EQ(parameter.reports, Reports{ParamChangeListener::ALL});
  EXPECT_EQ(parameter.Value(), "x");
  EXPECT_EQ(parameter.OldValue(), "x");
  EXPECT_FALSE(parameter.Modified());
  EXPECT_EQ(parameter.Changes(), ParamChangeListener::ALL);
}

TEST(ParameterValue, TheSameTextReportsNothing) {
  Watcher parameter;
  parameter.SetValue("x");
  parameter.UpdateOldValue();
  parameter.reports.clear();
  parameter.SetValue("x");
  EXPECT_TRUE(parameter.reports.empty());
  EXPECT_EQ(parameter.Changes(), 0);
}

TEST(ParameterValue, AnotherTextReportsTheValueAndKeepsTheOldOne) {
  Watcher parameter;
  parameter.SetValue("x");
  parameter.UpdateOldValue();
  parameter.reports.clear();
  parameter.SetValue("y");
  EXPECT_EQ(parameter.reports, Reports{ParamChangeListener::VALUE});
  EXPECT_EQ(parameter.OldValue(), "x");
  EXPECT_TRUE(parameter.Modified());
  EXPECT_EQ(parameter.Changes(), ParamChangeListener::VALUE);
  parameter.Reset();
  EXPECT_EQ(parameter.Value(), "x");
  EXPECT_EQ(parameter.Changes(), 0);
  parameter.SetValue("z");
  parameter.reports.clear();
  parameter.UpdateOldValue();
  EXPECT_EQ(parameter.reports, Reports{ParamChangeListener::OLD_VALUE});
  EXPECT_EQ(parameter.OldValue(), "z");
  EXPECT_EQ(parameter.Changes(), 0);
  parameter.UpdateOldValue();
  EXPECT_EQ(parameter.reports.size(), 1u);
}

TEST(ParameterValue, ARefusedValueLeavesNoTrace) {
  Watcher parameter;
  parameter.SetValue("7");
  parameter.SetLimits(">=5");
  parameter.UpdateOldValue();
  parameter.reports.clear();
  EXPECT_FALSE(parameter.IsValueOK("3"));
  EXPECT_TRUE(parameter.IsValueOK("5"));
  parameter.SetValue("3");
  EXPECT_EQ(parameter.Value(), "7");
  EXPECT_TRUE(parameter.reports.empty());
  EXPECT_EQ(parameter.Changes(), 0);
  parameter.SetLimits(">5");
  EXPECT_TRUE(parameter.IsValueOK("3")) << "a strict bound never refuses";
}

TEST(ParameterValue, TextsAndRestrictionsReportTheirOwnBits) {
  Watcher parameter;
  parameter.SetValue("x");
  parameter.reports.clear();
  parameter.SetCaption("c");
  parameter.SetCaption("c");
  parameter.SetDescription("d");
  parameter.SetRestrictions(RESTRICTION_HIDDEN | RESTRICTION_UNEDITABLE);
  parameter.SetRestrictions(RESTRICTION_HIDDEN | RESTRICTION_UNEDITABLE);
  EXPECT_EQ(parameter.reports, (Reports{ParamChangeListener::CAPTION, ParamChangeListener::DESCRIPTION,
                                        ParamChangeListener::RESTRICTION}));
  EXPECT_EQ(parameter.Caption(), "c");
  EXPECT_EQ(parameter.Description(), "d");
  EXPECT_EQ(parameter.Restrictions(), 1025);
  EXPECT_EQ(parameter.IsRestricted(RESTRICTION_HIDDEN | RESTRICTION_RAM_CLEAR), RESTRICTION_HIDDEN);
}

struct NumberCase {
  const char* text;
  long integer;
  double real;
  bool isInteger;
  bool isDouble;
};

class ParameterNumbers : public testing::TestWithParam<NumberCase> {};

TEST_P(ParameterNumbers, ReadAsTold) {
  Parameter parameter;
  parameter.SetValue(GetParam().text);
  EXPECT_EQ(parameter.AsInteger(7), GetParam().integer);
  EXPECT_EQ(parameter.AsFloat(7.5), GetParam().real);
  EXPECT_EQ(parameter.IsInteger(), GetParam().isInteger);
  EXPECT_EQ(parameter.IsDouble(), GetParam().isDouble);
}

INSTANTIATE_TEST_SUITE_P(
  Cases, ParameterNumbers,
  testing::Values(NumberCase{"", 7, 7.5, true, true}, NumberCase{"abc", 0, 7.5, false, false},
                  NumberCase{"12x", 12, 12.0, false, false}, NumberCase{"-3", -3, -3.0, true, true},
                  NumberCase{"1920", 1920, 1920.0, true, true},
                  NumberCase{"0.1", 0, static_cast<double>(0.1f), false, true},
                  NumberCase{"16777217", 16777217, 16777216.0, true, true},
                  NumberCase{"99999999999999999999", 0, static_cast<double>(1e20f), true, true},
                  NumberCase{"1e60", 1, 7.5, false, true}));

struct GroupedDigits : std::numpunct<char> {
  char do_decimal_point() const override { return ','; }
  char do_thousands_sep() const override { return '.'; }
  std::string do_grouping() const override { return "\3"; }
};

TEST(ParameterNumbersLocale, TheScreensLanguageDoesNotChangeThem) {
  const std::locale before = std::locale::global(std::locale(std::locale::classic(), new GroupedDigits));
  Parameter parameter;
  parameter.SetValue("1.920");
  EXPECT_EQ(parameter.AsInteger(0), 1);
  EXPECT_EQ(parameter.AsFloat(0), static_cast<double>(1.92f));
  std::locale::global(before);
}

TEST(ParameterDomains, AreReadInTheirOrder) {
  struct {
    const char* raw;
    const char* client;
    ParameterDomain domain;
  } const cases[] = {{"GLOBAL", "GLOBAL", PARAM_GLOBAL}, {"GLOBAL", "a_b", PARAM_GLOBAL},
                     {"a_b", "a_b", PARAM_MINE},         {"", "", PARAM_MINE},
                     {"", "a_b", PARAM_CACHE},           {"a_c", "a_b", PARAM_OTHER},
                     {"a", "a_b", PARAM_GROUP}};
  for (const auto& c : cases)
    EXPECT_EQ(Parameter(std::string(c.raw)).Domain(c.client), c.domain) << c.raw << " for " << c.client;
}

TEST(ParameterSharing, CopiesShareTheDataAndHearOfChanges) {
  const int before = ParameterData::GetNumInstances();
  Watcher one("a");
  one.SetValue("1");
  EXPECT_EQ(ParameterData::GetNumInstances(), before + 1);
  Watcher two(one);
  EXPECT_EQ(two.GetRawDomain(), "a");
  EXPECT_EQ(ParameterData::GetNumInstances(), before + 1);
  one.SetValue("2");
  EXPECT_EQ(two.Value(), "2");
  EXPECT_EQ(two.reports, Reports{ParamChangeListener::VALUE});
  Watcher three;
  three = one;
  EXPECT_EQ(three.GetRawDomain(), "a");
  EXPECT_EQ(three.Value(), "2");
  EXPECT_EQ(one.reports.back(), ParamChangeListener::ALL) << "everybody at the data hears of a newcomer's change";
  const Watcher& itself = three;
  three = itself;
  EXPECT_EQ(three.Value(), "2");
}

TEST(ParameterSharing, OtherDataReportsOnlyWhatDiffers) {
  Parameter source;
  source.SetValue("1");
  source.SetCaption("c");
  Watcher sink;
  sink.SetValue("1");
  sink.SetDescription("d");
  sink.reports.clear();
  EXPECT_EQ(sink.StealFrom(source), ParamChangeListener::CAPTION | ParamChangeListener::DESCRIPTION);
  EXPECT_EQ(sink.reports, Reports{ParamChangeListener::CAPTION | ParamChangeListener::DESCRIPTION});
  EXPECT_EQ(sink.StealFrom(source), 0) << "the same data";
  EXPECT_EQ(sink.reports.size(), 1u);
  source.SetValue("2");
  EXPECT_EQ(sink.Value(), "2");
  sink.Clear();
  EXPECT_TRUE(sink.IsNull());
  EXPECT_EQ(sink.Changes() & ParamChangeListener::ALL, ParamChangeListener::ALL);
  sink.reports.clear();
  source.SetValue("3");
  EXPECT_TRUE(sink.reports.empty()) << "it has left the data's listeners";
  EXPECT_EQ(sink.StealFrom(source), ParamChangeListener::ALL);
}

TEST(ParameterSharing, CopyFromKeepsTheOwnDataAndReportsOnce) {
  Parameter source;
  source.SetValue("6");
  source.SetCaption("c");
  source.SetDescription("d");
  source.SetRestrictions(2);
  source.SetLimits(">=5");
  Watcher sink;
  sink.SetValue("1");
  sink.reports.clear();
  const int all = ParamChangeListener::VALUE | ParamChangeListener::CAPTION | ParamChangeListener::DESCRIPTION |
                  ParamChangeListener::RESTRICTION;
  EXPECT_EQ(sink.CopyFrom(source), all);
  EXPECT_EQ(sink.reports, Reports{all});
  EXPECT_EQ(sink.Value() + sink.Caption() + sink.Description(), "6cd");
  EXPECT_EQ(sink.Restrictions(), 2);
  EXPECT_EQ(sink.Limits().OriginalString(), ">=5");
  EXPECT_EQ(sink.OldValue(), "1");
  source.SetValue("8");
  EXPECT_EQ(sink.Value(), "6");
  Watcher fresh;
  EXPECT_EQ(fresh.CopyFrom(source) & ParamChangeListener::VALUE, ParamChangeListener::VALUE);
  EXPECT_EQ(fresh.reports.size(), 1u);
  EXPECT_EQ(fresh.Value(), "8");
}

TEST(ParameterEdit, CollectsUntilTheOutermostEnd) {
  Watcher parameter;
  parameter.SetValue("1");
  parameter.UpdateOldValue();
  parameter.reports.clear();
  parameter.BeginEdit();
  parameter.BeginEdit();
  parameter.SetValue("2");
  parameter.SetCaption("c");
  EXPECT_EQ(parameter.EndEdit(), 0);
  EXPECT_TRUE(parameter.reports.empty());
  EXPECT_EQ(parameter.EndEdit(), ParamChangeListener::VALUE | ParamChangeListener::CAPTION);
  EXPECT_EQ(parameter.reports, Reports{ParamChangeListener::VALUE | ParamChangeListener::CAPTION});
  EXPECT_EQ(parameter.EndEdit(), 0) << "one end too many";
  parameter.SetValue("3");
  EXPECT_EQ(parameter.reports.size(), 2u) << "and the next change is reported at once";
  EXPECT_EQ(parameter.Changes(), ParamChangeListener::VALUE | ParamChangeListener::CAPTION);
}

TEST(ParameterEdit, ACopyTakesTheEditAlong) {
  Watcher parameter;
  parameter.SetValue("1");
  parameter.reports.clear();
  parameter.BeginEdit();
  parameter.SetValue("2");
  Watcher copy(parameter);
  EXPECT_EQ(copy.EndEdit(), ParamChangeListener::VALUE);
  EXPECT_EQ(parameter.reports, Reports{ParamChangeListener::VALUE});
  EXPECT_EQ(parameter.EndEdit(), 0) << "the data's edit is over";
}

// The data collect for one edit only: a second one through another handle begins anew.
TEST(ParameterEdit, ASecondEditOfTheSameDataForgetsWhatTheFirstCollected) {
  Watcher one;
  one.SetValue("1");
  Watcher two(one);
  one.reports.clear();
  one.BeginEdit();
  one.SetValue("2");
  two.BeginEdit();
  two.SetCaption("c");
  EXPECT_EQ(two.EndEdit(), ParamChangeListener::CAPTION);
  EXPECT_EQ(one.reports, Reports{ParamChangeListener::CAPTION});
  EXPECT_EQ(one.EndEdit(), 0);
}

TEST(ParameterEdit, AnEditThatThrowsIsOverAndHasReported) {
  Watcher parameter;
  parameter.SetValue("1");
  parameter.reports.clear();
  EXPECT_THROW(parameter.InEdit([&] {
    parameter.SetCaption("c");
    throw 1;
  }),
               int);
  EXPECT_EQ(parameter.reports, Reports{ParamChangeListener::CAPTION});
  parameter.SetValue("2");
  EXPECT_EQ(parameter.reports.size(), 2u);
}

TEST(ParameterEdit, AnEditOfNothingReportsNothing) {
  Watcher parameter;
  parameter.SetValue("1");
  parameter.reports.clear();
  parameter.BeginEdit();
  EXPECT_EQ(parameter.EndEdit(), 0);
  EXPECT_TRUE(parameter.reports.empty());
}

TEST(ParameterEdit, ANullParameterThatGetsItsValueInAnEditReportsAtTheEnd) {
  Watcher parameter;
  parameter.BeginEdit();
  parameter.SetValue("1");
  EXPECT_TRUE(parameter.reports.empty());
  EXPECT_EQ(parameter.EndEdit(), ParamChangeListener::ALL);
  EXPECT_EQ(parameter.reports, Reports{ParamChangeListener::ALL});
}

TEST(ParameterEdit, OtherDataInAnEditEndsTheOldDatasEdit) {
  Parameter source;
  source.SetValue("2");
  Watcher parameter;
  parameter.SetValue("1");
  Watcher beside(parameter);
  parameter.BeginEdit();
  parameter.SetCaption("c");
  EXPECT_TRUE(beside.reports.empty());
  parameter.StealFrom(source);
  EXPECT_EQ(beside.reports, Reports{ParamChangeListener::CAPTION});
  EXPECT_EQ(parameter.EndEdit(), 0);
  beside.SetValue("5");
  EXPECT_EQ(beside.reports.back(), ParamChangeListener::VALUE);
}

TEST(ParameterEdit, NullDataIntoAnEditBeginsItThere) {
  auto data = std::make_shared<ParameterData>();
  Watcher parameter;
  parameter.BeginEdit();
  EXPECT_EQ(parameter.SetData(data), ParamChangeListener::ALL);
  EXPECT_TRUE(parameter.reports.empty());
  EXPECT_EQ(parameter.EndEdit(), ParamChangeListener::ALL);
  EXPECT_EQ(parameter.reports.size(), 1u);
}

TEST(ParameterListeners, MayComeAndGoDuringAReport) {
  Watcher one;
  one.SetValue("1");
  auto two = std::make_unique<Watcher>(one);
  Watcher three(one);
  std::unique_ptr<Watcher> late;
  bool done = false;
  one.onChange = [&] {
    if (done) return;
    done = true;
    two.reset();
    late = std::make_unique<Watcher>(three);
  };
  one.SetValue("2");
  EXPECT_EQ(three.reports, Reports{ParamChangeListener::VALUE}) << "those behind the gone one are still told";
  EXPECT_TRUE(late->reports.empty());
  one.SetValue("3");
  EXPECT_EQ(late->reports, Reports{ParamChangeListener::VALUE});
}

TEST(ParameterListeners, AListenerMayTakeItsOwnParameterToOtherData) {
  Parameter source;
  source.SetValue("other");
  Watcher parameter;
  parameter.SetValue("1");
  bool done = false;
  parameter.onChange = [&] {
    if (done) return;
    done = true;
    parameter.StealFrom(source);  // the old data has no other holder
  };
  parameter.SetValue("2");
  EXPECT_EQ(parameter.Value(), "other");
}

TEST(ParameterListeners, ThreadsThatCopyAndDropHandlesDoNotDisturbReports) {
  Watcher parameter;
  parameter.SetValue("0");
  const std::shared_ptr<ParameterData> data = std::make_shared<ParameterData>();
  parameter.SetData(data);
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i)
    threads.emplace_back([&] {
      for (int n = 0; n < 300; ++n) {
        struct : ParamChangeListener {
          void OnValueChanged(int) override {}
        } listener;
        data->AddListener(&listener);
        data->RemoveListener(&listener);
      }
    });
  parameter.reports.clear();
  for (int n = 1; n <= 300; ++n) parameter.SetValue(std::to_string(n));
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(parameter.reports.size(), 300u);
}

}  // namespace
}  // namespace vendelo_sdl2
