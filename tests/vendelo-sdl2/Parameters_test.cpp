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
