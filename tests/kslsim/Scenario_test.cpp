#include "tools/kslsim/Scenario.h"

#include <gtest/gtest.h>

namespace kslsim {
namespace {

struct BadScenario {
  const char* name;
  const char* text;
  const char* complaint;
};

class ScenarioErrors : public testing::TestWithParam<BadScenario> {};

TEST_P(ScenarioErrors, NameLineAndColumn) {
  try {
    Scenario::parse(GetParam().text);
    FAIL() << "was accepted";
  } catch (const ScenarioError& error) {
    EXPECT_EQ(std::string(error.what()).substr(0, std::string(GetParam().complaint).size()), GetParam().complaint);
  }
}

INSTANTIATE_TEST_SUITE_P(
  All, ScenarioErrors,
  testing::Values(
    BadScenario{"Empty", "", "1:1: "}, BadScenario{"Syntax", "[\n  {\"at\": 0 \"do\": \"up\"}\n]", "2:"},
    BadScenario{"SyntaxColumn", "[\n  {\"at\": }\n]", "2:10: "}, BadScenario{"CutOff", "[\n{\"at\": 0,", "2:"},
    BadScenario{"NoList", "{\"at\": 0}", "1:1: expected a list of steps"},
    BadScenario{"NoStep", "[\n\n   17]", "3:4: expected a step, an object"},
    BadScenario{"NoTime", "[{\"do\": \"up\"}]", "1:2: \"at\" is missing"},
    BadScenario{"NegativeTime", "[{\"at\": -1, \"do\": \"up\"}]",
                "1:9: expected milliseconds from the start, 0 or more"},
    BadScenario{"TextTime", "[{\"at\": \"1\", \"do\": \"up\"}]", "1:9: expected milliseconds"},
    BadScenario{"NoVerb", "[{\"at\": 1}]", "1:2: \"do\" is missing"},
    BadScenario{"UnknownVerb", "[{\"at\": 1,\n \"do\":\n\t\"jump\"}]", "3:2: there is no such step"},
    BadScenario{"VerbOfNoText", "[{\"at\": 1, \"do\": 7}]", "1:18: there is no such step"},
    BadScenario{"UnknownArgument", "[{\"at\": 1, \"do\": \"up\", \"now\": 1}]", "1:31: \"up\" takes no \"now\""},
    BadScenario{"MissingArgument", "[{\"at\": 1, \"do\": \"remove\"}]", "1:2: \"id\" is missing"},
    BadScenario{"WrongForm", "[{\"at\": 1, \"do\": \"remove\", \"id\": \"a\"}]", "1:34: expected a number from"},
    BadScenario{"OutOfRange", "[{\"at\": 1, \"do\": \"down\", \"ms\": 0}]", "1:32: expected a number from 1 to"},
    BadScenario{"UnknownField", "[{\"at\":0,\"do\":\"set\",\"state\":\n{\"Bet\":1}}]",
                "2:8: unknown field \"Bet\""},
    BadScenario{"FieldOfWrongForm", "[{\"at\":0,\"do\":\"set\",\"state\":\n{\"MinBet\":\"1\"}}]",
                "2:11: expected a number of 64 bits"},
    BadScenario{"DeepField", "[{\"at\":0,\"do\":\"set\",\"state\":{\"Instructions\":[\"a\",\n  5]}}]",
                "2:3: expected a text"},
    BadScenario{"MissingLevel", "[{\"at\":0,\"do\":\"pot\",\n\"id\":2,\"value\":1}]",
                "2:6: no level has the \"Id\" 2"},
    BadScenario{"LevelAddedTooLate", "[{\"at\":5,\"do\":\"add\"},\n{\"at\":4,\"do\":\"win\",\"id\":0}]",
                "2:25: no level has the \"Id\" 0"},
    BadScenario{"KeyTwice", "[{\"at\": 0, \"do\": \"up\",\n \"at\": 2}]", "2:2: the key \"at\" stands here twice"},
    BadScenario{"IncompleteGame", "[{\"at\":0,\"do\":\"game\",\"event\":\"loaded\",\"ID\":5}]",
                "1:2: \"Name\" is missing"},
    BadScenario{"BadReplyName", "[{\"at\":0,\"do\":\"bad\",\"method\":\"*\",\"reply\":\"odd\"}]",
                "1:42: expected one of refuse, silent"},
    BadScenario{"BadMethodName", "[{\"at\":0,\"do\":\"bad\",\n\"method\":\"game.pop\",\"reply\":\"html\"}]",
                "2:10: expected * or one of topscreen.init, game.popEvents"},
    BadScenario{"BadUnsupported",
                "[{\"at\":0,\"do\":\"service\",\"set\":{\"Unsupported\":[\"game.bye\",\n\"bye\"]}}]",
                "2:1: expected one of topscreen.init"},
    BadScenario{"BadReplyTakesNot", "[{\"at\":0,\"do\":\"bad\",\"method\":\"*\",\"reply\":\"http500\",\n\"ms\":5}]",
                "2:6: \"http500\" takes no \"ms\""}),
  [](const auto& info) { return std::string(info.param.name); });

TEST(Scenario, StepsOfOneTimeKeepTheirOrderAndOthersAreSorted) {
  const Scenario scenario = Scenario::parse(R"([
    {"at": 20, "do": "up", "note": "c"},
    {"at": 10, "do": "up", "note": "a"},
    {"at": 10, "do": "up", "note": "b"}
  ])");
  ASSERT_EQ(scenario.steps().size(), 3u);
  EXPECT_EQ(scenario.steps()[0].step["note"], "a");
  EXPECT_EQ(scenario.steps()[1].step["note"], "b");
  EXPECT_EQ(scenario.steps()[2].step["note"], "c");
  EXPECT_EQ(scenario.steps()[0].place.line, 3u);
  EXPECT_EQ(scenario.steps()[2].at, 20);
}

TEST(Scenario, GoesOnWhereTheStepsBeforeItEnd) {
  const char* win = "[{\"at\": 0, \"do\": \"win\", \"id\": 0}]";
  EXPECT_THROW(Scenario::parse(win), ScenarioError);
  EXPECT_EQ(Scenario::parse(win, {Json{{"do", "add"}}}).steps().size(), 1u);
  EXPECT_THROW(Scenario::parse("[{\"at\": 0, \"do\": \"add\", \"level\": {\"Id\": 0}}]", {Json{{"do", "add"}}}),
               ScenarioError);
}

TEST(Scenario, EmptyListIsFine) { EXPECT_TRUE(Scenario::parse("[]").steps().empty()); }

TEST(PlacedJson, KnowsWhereEveryValueBegins) {
  const PlacedJson json = PlacedJson::parse("{\"a\" : 12,\n \"b\":[true , null,\"x\"],\"c\":{\"d\":-1.5}}");
  const auto at = [&](const char* pointer) {
    const Place place = json.placeOf(pointer);
    return std::to_string(place.line) + ":" + std::to_string(place.column);
  };
  EXPECT_EQ(at(""), "1:1");
  EXPECT_EQ(at("/a"), "1:8");
  EXPECT_EQ(at("/b"), "2:6");
  EXPECT_EQ(at("/b/0"), "2:7");
  EXPECT_EQ(at("/b/1"), "2:14");
  EXPECT_EQ(at("/b/2"), "2:19");
  EXPECT_EQ(at("/c/d"), "2:33");
  EXPECT_EQ(at("/c/missing/deeper"), "2:28");
  EXPECT_EQ(json.value["c"]["d"], -1.5);
}

TEST(PlacedJson, RefusesWhatWouldOverrunTheStack) {
  const size_t depth = PlacedJson::kDepth;
  EXPECT_NO_THROW(PlacedJson::parse(std::string(depth, '[') + std::string(depth, ']')));
  EXPECT_THROW(PlacedJson::parse(std::string(100000, '[')), ScenarioError);
}

}  // namespace
}  // namespace kslsim
