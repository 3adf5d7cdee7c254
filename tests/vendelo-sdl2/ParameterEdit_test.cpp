#include "tests/vendelo-sdl2/ParametersFixture.h"

using namespace parametertest;

namespace {

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
  parameter.reports.clear();
  EXPECT_EQ(parameter.EndEdit(), -1) << "the data's edit is over: what changed since is not known";
  EXPECT_EQ(parameter.reports, Reports{-1});
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
  EXPECT_EQ(one.EndEdit(), -1);
  EXPECT_EQ(two.reports.back(), -1);
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
  parameter.reports.clear();
  EXPECT_EQ(parameter.EndEdit(), -1) << "the new data's edit was never begun";
  EXPECT_EQ(parameter.reports, Reports{-1});
  EXPECT_EQ(parameter.Changes(), -1);
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

TEST(ParameterEdit, AnEndOutsideAnEditTellsTheDatasListenersOfEverything) {
  auto data = std::make_shared<ParameterData>();
  Watcher parameter;
  parameter.SetData(data);
  parameter.reports.clear();
  EXPECT_EQ(data->EndEdit(), -1);
  EXPECT_EQ(parameter.reports, Reports{-1});
  data->BeginEdit();
  EXPECT_EQ(data->EndEdit(), 0) << "an edit of nothing";
  EXPECT_EQ(data->EndEdit(), -1) << "and it is over";
  EXPECT_EQ(parameter.reports, (Reports{-1, -1}));
}

TEST(ParameterEdit, DataThatGoInAnEditEndItWithNothing) {
  Watcher parameter;
  parameter.SetValue("1");
  parameter.BeginEdit();
  parameter.SetValue("2");
  parameter.Clear();
  EXPECT_EQ(parameter.EndEdit(), 0);
  EXPECT_TRUE(parameter.IsNull());
}

TEST(ParameterEdit, OneEndTooManyIsForgottenByTheNextEdit) {
  Watcher parameter;
  parameter.SetValue("1");
  EXPECT_EQ(parameter.EndEdit(), 0);
  EXPECT_EQ(parameter.EndEdit(), 0);
  parameter.reports.clear();
  parameter.BeginEdit();
  parameter.SetValue("2");
  parameter.SetCaption("c");
  EXPECT_TRUE(parameter.reports.empty()) << "the first begin opens the edit again";
  EXPECT_EQ(parameter.EndEdit(), ParamChangeListener::VALUE | ParamChangeListener::CAPTION);
  EXPECT_EQ(parameter.reports.size(), 1u);
}

TEST(ParameterEdit, AnAssignmentTakesTheEditAlong) {
  Watcher parameter("a");
  parameter.SetValue("1");
  parameter.BeginEdit();
  Watcher other;
  other = parameter;
  parameter.SetCaption("c");
  EXPECT_EQ(other.EndEdit(), ParamChangeListener::ALL) << "the newcomer's own arrival was collected too";
}

}  // namespace
