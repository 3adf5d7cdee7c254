#include "tests/vendelo-sdl2/ParametersFixture.h"

#include <limits>
#include <locale>
#include <stdexcept>
#include <thread>

using namespace parametertest;

namespace {

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

TEST(ParameterValue, NothingIsAssignedToAFrozenOne) {
  struct Frozen : Parameter {
    Frozen() : Parameter("mine") { Freeze(); }
    using Parameter::operator=;
  } frozen;
  Parameter other("theirs");
  other.SetValue("5");
  frozen = other;
  EXPECT_EQ(frozen.GetRawDomain(), "mine");
  EXPECT_TRUE(frozen.IsNull());
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

TEST(ParameterValue, GoingBackToTheSavedValueReportsAndObeysTheLimits) {
  Watcher parameter;
  parameter.SetValue("1");
  parameter.SetValue("2");
  parameter.reports.clear();
  parameter.Reset();
  EXPECT_EQ(parameter.reports, Reports{ParamChangeListener::VALUE});
  parameter.SetValue("7");
  parameter.SetLimits(">=5");
  parameter.Reset();
  EXPECT_EQ(parameter.Value(), "7") << "the saved value breaks the new limits";
  EXPECT_EQ(parameter.OldValue(), "1");
  EXPECT_EQ(parameter.Changes(), 0);
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
                  NumberCase{"1e60", 1, 7.5, false, true}, NumberCase{" 5", 5, 5.0, true, true},
                  NumberCase{"5 ", 5, 5.0, false, false}, NumberCase{"5a", 5, 5.0, false, false},
                  NumberCase{"+8", 8, 8.0, true, true}, NumberCase{"2.5x", 2, 2.5, false, false},
                  NumberCase{"0x10", 0, 16.0, false, true},
                  NumberCase{"-9223372036854775808", std::numeric_limits<long>::min(), -9223372036854775808.0, true,
                             true},
                  NumberCase{"-9223372036854775809", 0, -9223372036854775808.0, true, true}));

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

TEST(ParameterSharing, EachFieldHasItsBitOfTheDifference) {
  const struct {
    const char* field;
    std::function<void(Parameter&)> set;
    int bits;
  } rows[] = {{"value", [](Parameter& p) { p.SetValue("2"); }, ParamChangeListener::VALUE},
              {"caption", [](Parameter& p) { p.SetCaption("c"); }, ParamChangeListener::CAPTION},
              {"description", [](Parameter& p) { p.SetDescription("d"); }, ParamChangeListener::DESCRIPTION},
              {"restrictions", [](Parameter& p) { p.SetRestrictions(4); }, ParamChangeListener::RESTRICTION},
              {"all of them",
               [](Parameter& p) {
                 p.SetValue("2");
                 p.SetCaption("c");
                 p.SetDescription("d");
                 p.SetRestrictions(4);
               },
               ParamChangeListener::VALUE | ParamChangeListener::CAPTION | ParamChangeListener::DESCRIPTION |
                 ParamChangeListener::RESTRICTION},
              {"limits", [](Parameter& p) { p.SetLimits("=1"); }, ParamChangeListener::NONE},
              {"old value",
               [](Parameter& p) {
                 p.SetValue("0");
                 p.UpdateOldValue();
                 p.SetValue("1");
               },
               ParamChangeListener::NONE}};
  for (const auto& row : rows) {
    Parameter plain;
    plain.SetValue("1");
    Parameter other;
    other.SetValue("1");
    row.set(other);
    EXPECT_EQ(plain.StealFrom(other), row.bits) << row.field;
  }
}

TEST(ParameterSharing, ACopyHasNotChangedItself) {
  Parameter one;
  one.SetValue("1");
  EXPECT_EQ(Parameter(one).Changes(), 0);
  EXPECT_EQ(one.Changes(), ParamChangeListener::ALL);
}

TEST(ParameterSharing, TheDataGoWithTheirLastHandle) {
  const int before = ParameterData::GetNumInstances();
  auto one = std::make_unique<Parameter>();
  one->Instantiate();
  auto two = std::make_unique<Parameter>(*one);
  EXPECT_EQ(ParameterData::GetNumInstances(), before + 1);
  one.reset();
  EXPECT_EQ(ParameterData::GetNumInstances(), before + 1);
  two->Clear();
  EXPECT_EQ(ParameterData::GetNumInstances(), before);
}

TEST(ParameterSharing, InstantiatingGivesEmptyDataOnceAndSilently) {
  Watcher parameter;
  parameter.Instantiate();
  EXPECT_FALSE(parameter.IsNull());
  EXPECT_EQ(parameter.Value(), "");
  EXPECT_TRUE(parameter.reports.empty());
  EXPECT_EQ(parameter.Changes(), 0);
  parameter.SetValue("1");
  parameter.Instantiate();
  EXPECT_EQ(parameter.Value(), "1");
  EXPECT_EQ(parameter.OldValue(), "") << "it had a value already, the empty one";
}

// The copied value has to please the limits that are there, not those that come with it.
TEST(ParameterSharing, CopyFromSetsTheValueBeforeTheLimits) {
  Parameter source;
  source.SetValue("6");
  source.SetLimits(">=5");
  Parameter strict;
  strict.SetValue("20");
  strict.SetLimits(">=10");
  strict.CopyFrom(source);
  EXPECT_EQ(strict.Value(), "20") << "refused by the former limits";
  EXPECT_EQ(strict.Limits().OriginalString(), ">=5");
  source.SetLimits(">=9");  // which its own value breaks
  Parameter open;
  open.SetValue("1");
  open.CopyFrom(source);
  EXPECT_EQ(open.Value(), "6");
  EXPECT_EQ(open.Limits().OriginalString(), ">=9");
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
