#include "tools/kslsim/Simulator.h"

#include <gtest/gtest.h>

namespace kslsim {
namespace {

class SimulatorTest : public testing::Test {
 protected:
  void apply(const char* step) { simulator.apply(Json::parse(step)); }
  void at(int64_t time) {
    now = time;
    simulator.advance();
  }
  int registered() { return fromWire(simulator.init("TopScreen", "1.5.0"))["ID"].get<int>(); }
  Json pop(int client) { return fromWire(simulator.popEvents(client)); }
  Json state() { return simulator.report()["state"]; }

  std::atomic<int64_t> now{0};
  Simulator simulator{[this] { return now.load(); }};
};

TEST_F(SimulatorTest, RegistrationGivesRisingIdentifiersAndTheNumberFormat) {
  const Json first = fromWire(simulator.init("TopScreen", "1.5.0"));
  EXPECT_EQ(first, (Json{{"ID", 1},
                         {"Locale", "C.UTF-8"},
                         {"DecimalSeparator", "."},
                         {"ThousandSeparator", ","},
                         {"ThousandGrouping", 3},
                         {"Language", "en"}}));
  apply(R"({"do": "init", "set": {"DecimalSeparator": ",", "ThousandGrouping": 4}})");
  const Json second = fromWire(simulator.init("TopScreen", "1.5.0"));
  EXPECT_EQ(second["ID"], 2);
  EXPECT_EQ(second["DecimalSeparator"], ",");
  EXPECT_EQ(second["ThousandGrouping"], 4);
}

TEST_F(SimulatorTest, AnotherProtocolVersionIsTurnedAway) {
  const Json answer = fromWire(simulator.init("TopScreen", "1.4.0"));
  EXPECT_EQ(answer["faultCode"], -7);
  EXPECT_TRUE(answer["faultString"].is_string());
  EXPECT_TRUE(simulator.report()["clients"].empty());
}

TEST_F(SimulatorTest, UnregisteredClientGetsAFaultStruct) {
  for (const Json& answer : {pop(1), fromWire(simulator.pushEvents(1, 0, {}))}) {
    EXPECT_EQ(answer["faultCode"], -1);
    EXPECT_EQ(answer["faultString"], "Client 1 is not registered.");
  }
}

TEST_F(SimulatorTest, ForgottenClientIsNotRegisteredAndItsIdentifierIsNotGivenAgain) {
  const int old = registered();
  apply(R"({"do": "forget"})");
  EXPECT_EQ(pop(old)["faultCode"], -1);
  EXPECT_NE(registered(), old);
}

TEST_F(SimulatorTest, EachClientHasItsOwnQueueFromItsRegistrationOn) {
  const int first = registered();
  apply(R"({"do": "set", "state": {"DemoMode": true}})");
  const int second = registered();
  apply(R"({"do": "set", "state": {"ShowingPaytable": 2}})");
  EXPECT_EQ(pop(first), Json::parse(R"([{"eventID": 102, "context": true}, {"eventID": 107, "context": 2}])"));
  EXPECT_EQ(pop(first), nullptr);
  EXPECT_EQ(pop(second), Json::parse(R"([{"eventID": 107, "context": 2}])"));
}

TEST_F(SimulatorTest, ReplyHoldsAtMostFiftyEventsAndTheRestWaits) {
  const int client = registered();
  for (int i = 0; i < 70; ++i) simulator.apply({{"do", "event"}, {"id", 107}, {"value", i}});
  const Json first = pop(client), second = pop(client);
  ASSERT_EQ(first.size(), 50u);
  ASSERT_EQ(second.size(), 20u);
  EXPECT_EQ(first[0]["context"], 0);
  EXPECT_EQ(second[0]["context"], 50);
}

TEST_F(SimulatorTest, ClientThatNeverAsksIsForgottenAndTheOthersAreNot) {
  const int silent = registered(), lively = registered();
  for (size_t i = 0; i <= EventQueue::kLimit; ++i) {
    simulator.apply({{"do", "event"}, {"id", 109}});
    pop(lively);
  }
  EXPECT_EQ(pop(silent)["faultCode"], -1);
  EXPECT_EQ(pop(lively), nullptr);
}

TEST_F(SimulatorTest, RepeatedPackageGetsItsOldAnswerAndANewOneItsOwn) {
  const int client = registered();
  const xmlrpc_c::value event = toWire({{"eventID", 1}, {"context", nullptr}}, Kind::Any);
  const std::vector<xmlrpc_c::value> three(3, event), two(2, event);
  EXPECT_EQ(fromWire(simulator.pushEvents(client, 0, three)), 3);
  EXPECT_EQ(fromWire(simulator.pushEvents(client, 0, two)), 3);
  EXPECT_EQ(fromWire(simulator.pushEvents(client, 1, two)), 2);
  EXPECT_EQ(fromWire(simulator.pushEvents(client, 0, three))["faultCode"], -8);
  EXPECT_EQ(fromWire(simulator.pushEvents(client, 3, three))["faultCode"], -9);
  EXPECT_EQ(fromWire(simulator.pushEvents(client, 2, {})), 0);
}

TEST_F(SimulatorTest, ANewRegistrationMayGoOnWithAnyPackageNumber) {
  const int client = registered();
  EXPECT_EQ(fromWire(simulator.pushEvents(client, 7, {})), 0);
  EXPECT_EQ(fromWire(simulator.pushEvents(client, 8, {})), 0);
}

struct FieldChange {
  const char* state;
  const char* events;
};

class FieldChanges : public SimulatorTest, public testing::WithParamInterface<FieldChange> {};

TEST_P(FieldChanges, BecomeTheirEvent) {
  const int client = registered();
  const Json part = Json::parse(GetParam().state);
  simulator.apply({{"do", "set"}, {"state", part}});
  EXPECT_EQ(pop(client), Json::parse(GetParam().events));
  const Json reply = fromWire(simulator.platformState());
  for (const auto& [key, value] : part.items()) {
    const Json& sent = reply[key];
    EXPECT_EQ(sent.is_object() && sent.contains("$i8") ? sent["$i8"] : sent, value) << key;
  }
}

INSTANTIATE_TEST_SUITE_P(
  All, FieldChanges,
  testing::Values(
    FieldChange{R"({"IntegrityCheckData": "a&b"})", R"([{"eventID": 103, "context": "a&b"}])"},
    FieldChange{R"({"ActiveGame": {"ID": 5, "Name": "G", "Type": 4}})",
                R"([{"eventID": 101, "context": {"ID": 5, "Name": "G", "Type": 4}}])"},
    FieldChange{R"({"IsLoading": true})", R"([{"eventID": 100, "context": {"ID": 0, "Name": "", "Type": 1}}])"},
    FieldChange{R"({"ShowingPaytable": 3})", R"([{"eventID": 107, "context": 3}])"},
    FieldChange{R"({"LanguageMessages": ["a", "b"]})", R"([{"eventID": 112, "context": ["a", "b"]}])"},
    FieldChange{R"({"DemoMode": true})", R"([{"eventID": 102, "context": true}])"},
    FieldChange{R"({"Instructions": ["x"]})", R"([{"eventID": 106, "context": ["x"]}])"},
    FieldChange{R"({"CurrentBet": 100, "MaxBet": 9000000000})",
                R"([{"eventID": 104, "context": {"current": {"$i8": 100}, "min": {"$i8": 0},
                                                 "max": {"$i8": 9000000000}}}])"},
    FieldChange{R"({"ExtraData": {"paylines": 20}})", R"([{"eventID": 111, "context": {"paylines": 20}}])"},
    FieldChange{R"({"JackpotErrorString": "down"})", R"([{"eventID": 108, "context": "down"}])"},
    FieldChange{R"({"JackpotData": []})", R"([{"eventID": 110, "context": []}])"}));

TEST_F(SimulatorTest, StateHasEveryKeyInItsWireType) {
  apply(R"({"do": "add", "level": {"Name": "Gold", "CurrentPot": 5, "Mode": 2, "TimeFrom": "10:00"}})");
  EXPECT_EQ(fromWire(simulator.platformState()), Json::parse(R"({
    "IntegrityCheckData": "", "ActiveGame": {"ID": 0, "Name": "", "Type": 1}, "IsLoading": false,
    "ShowingPaytable": 0, "DemoMode": false, "Instructions": [], "CurrentBet": {"$i8": 0}, "MinBet": {"$i8": 0},
    "MaxBet": {"$i8": 0}, "ExtraData": null, "JackpotErrorString": "",
    "LanguageMessages": ["en", "Minimum bet", "Maximum bet",
      "Select bet per line with BET+/- and press SPIN button to start new game.",
      "Prizes are shown for the current bet."],
    "JackpotData": [{"Name": "Gold", "Id": 0, "Status": "ACTIVE", "Mode": 2, "CurrentPot": {"$i8": 5},
      "MinPot": {"$i8": 0}, "MaxPot": {"$i8": 0}, "MinBet": {"$i8": 0}, "MaxBet": {"$i8": 0}, "DecimalPlaces": 2,
      "ShowCurrencySign": true, "Currency": "EUR", "NumWins": 0, "LastWinData": "", "TimeFrom": "10:00",
      "TimeTo": ""}]})"));
}

TEST_F(SimulatorTest, SilentChangeTellsNobody) {
  const int client = registered();
  apply(R"({"do": "set", "state": {"DemoMode": true}, "silent": true})");
  EXPECT_EQ(pop(client), nullptr);
  EXPECT_EQ(state()["DemoMode"], true);
  apply(R"({"do": "set", "state": {"ShowingPaytable": 1}})");
  EXPECT_EQ(pop(client).size(), 1u);
}

TEST_F(SimulatorTest, LevelsComeAndGoByTheirIds) {
  const int client = registered();
  apply(R"({"do": "add"})");
  apply(R"({"do": "add"})");
  apply(R"({"do": "add", "index": 0})");
  EXPECT_EQ(state()["JackpotData"][0]["Id"], 2);
  apply(R"({"do": "remove", "id": 1})");
  ASSERT_EQ(state()["JackpotData"].size(), 2u);
  EXPECT_EQ(state()["JackpotData"][1]["Id"], 0);
  apply(R"({"do": "add"})");
  EXPECT_EQ(state()["JackpotData"][2]["Id"], 1);
  const Json events = pop(client);
  ASSERT_EQ(events.size(), 5u);
  EXPECT_EQ(events[4]["eventID"], 110);
  EXPECT_EQ(events[4]["context"].size(), 3u);
}

TEST_F(SimulatorTest, RefusedStepsChangeNothing) {
  apply(R"({"do": "add"})");
  const Json before = simulator.report();
  for (const char* step : {R"({"do": "add", "level": {"Id": 0}})",
                           R"({"do": "add", "index": 9})",
                           R"({"do": "remove", "id": 4})",
                           R"({"do": "level", "id": 0, "set": {"Id": 3}})",
                           R"({"do": "level", "id": 0, "set": {"Name": 3}})",
                           R"({"do": "pot", "id": 0})",
                           R"({"do": "pot", "id": 0, "value": 1, "raise": 1})",
                           R"({"do": "pot", "id": 0, "value": 9223372036854775808})",
                           R"({"do": "event", "id": 107, "value": "x"})",
                           R"({"do": "event", "id": 107})",
                           R"({"do": "event", "id": 107, "value": 1, "raw": 1})",
                           R"({"do": "game", "event": "exited", "ID": 1})",
                           R"({"do": "game", "event": "paused"})",
                           R"({"do": "set", "state": {"MinBet": 1, "MaxBet": "x"}})",
                           R"({"do": "set", "state": {"JackpotErrorString": "\u0001"}})",
                           R"({"do": "grow", "id": 0, "min": 5, "max": 4})",
                           R"({"do": "bad", "method": "*", "reply": "cut", "calls": 0})",
                           R"({"do": 1})",
                           R"([])",
                           R"({"do": "nothing"})"}) {
    EXPECT_THROW(apply(step), InputError) << step;
    EXPECT_EQ(simulator.report(), before) << step;
  }
  apply(R"({"do": "pot", "id": 0, "value": 9223372036854775807})");
  EXPECT_THROW(apply(R"({"do": "pot", "id": 0, "raise": 1})"), InputError);
}

TEST_F(SimulatorTest, WinIsAStatusThatGivesTheOldOneBack) {
  apply(R"({"do": "add", "level": {"Status": "OPEN"}})");
  apply(R"({"do": "win", "id": 0, "text": "Won today"})");
  apply(R"({"do": "win", "id": 0})");
  Json level = state()["JackpotData"][0];
  EXPECT_EQ(level["Status"], "WIN");
  EXPECT_EQ(level["NumWins"], 2);
  EXPECT_EQ(level["LastWinData"], "Won today");
  apply(R"({"do": "win", "id": 0, "on": false})");
  level = state()["JackpotData"][0];
  EXPECT_EQ(level["Status"], "OPEN");
  EXPECT_EQ(level["NumWins"], 2);
}

TEST_F(SimulatorTest, GameIsLoadedAndLeft) {
  const int client = registered();
  apply(R"({"do": "game", "event": "loading", "ID": 7, "Name": "Fruits", "Type": 4})");
  EXPECT_EQ(state()["IsLoading"], true);
  apply(R"({"do": "game", "event": "loaded", "ID": 7, "Name": "Fruits", "Type": 4})");
  EXPECT_EQ(state()["IsLoading"], false);
  apply(R"({"do": "game", "event": "exited"})");
  EXPECT_EQ(state()["ActiveGame"]["Type"], 1);
  EXPECT_EQ(pop(client), Json::parse(R"([
    {"eventID": 100, "context": {"ID": 7, "Name": "Fruits", "Type": 4}},
    {"eventID": 101, "context": {"ID": 7, "Name": "Fruits", "Type": 4}},
    {"eventID": 105, "context": null}])"));
}

TEST_F(SimulatorTest, RawEventSendsAnyTypeAndLeavesTheStateAlone) {
  const int client = registered();
  const Json before = state();
  apply(R"({"do": "event", "id": 110, "raw": [{"Name": 1}, {"$i8": 5}, 3000000000, 1.5, null]})");
  EXPECT_EQ(pop(client), Json::parse(R"([{"eventID": 110,
    "context": [{"Name": 1}, {"$i8": 5}, {"$i8": 3000000000}, 1.5, null]}])"));
  EXPECT_EQ(state(), before);
}

TEST_F(SimulatorTest, RampGoesStraightAndEndsExactly) {
  const int client = registered();
  apply(R"({"do": "add", "level": {"CurrentPot": 1000}})");
  apply(R"({"do": "ramp", "id": 0, "to": 2000, "ms": 1000, "every": 300})");
  const auto pot = [this] { return state()["JackpotData"][0]["CurrentPot"].get<int>(); };
  at(299);
  EXPECT_EQ(pot(), 1000);
  at(300);
  EXPECT_EQ(pot(), 1300);
  at(650);
  EXPECT_EQ(pot(), 1600);
  at(1000);
  EXPECT_EQ(pot(), 2000);
  at(5000);
  EXPECT_EQ(pot(), 2000);
  EXPECT_EQ(pop(client).size(), 4u);  // the added level and three changes
}

TEST_F(SimulatorTest, RampSurvivesTheLargestAmounts) {
  apply(R"({"do": "add", "level": {"CurrentPot": -9223372036854775808}})");
  apply(R"({"do": "ramp", "id": 0, "to": 9223372036854775807, "ms": 1000, "every": 500})");
  at(500);
  EXPECT_EQ(state()["JackpotData"][0]["CurrentPot"], -1);
  at(1000);
  EXPECT_EQ(state()["JackpotData"][0]["CurrentPot"], INT64_MAX);
}

TEST_F(SimulatorTest, GrowthIsTheSameForTheSameSeedAndStopsAtTheLimit) {
  const auto grownBy = [](int seed) {
    int64_t now = 0;
    Simulator simulator([&now] { return now; });
    simulator.apply({{"do", "add"}});
    simulator.apply({{"do", "grow"}, {"id", 0}, {"every", 100}, {"min", 5}, {"max", 500}, {"seed", seed}});
    now = 1000;
    simulator.advance();
    return simulator.report()["state"]["JackpotData"][0]["CurrentPot"].get<int>();
  };
  EXPECT_EQ(grownBy(1), grownBy(1));
  EXPECT_NE(grownBy(1), grownBy(2));
  EXPECT_GE(grownBy(1), 10 * 5);
  EXPECT_LE(grownBy(1), 10 * 500);

  apply(R"({"do": "add", "level": {"CurrentPot": 90, "MaxPot": 100}})");
  apply(R"({"do": "grow", "id": 0, "every": 100, "min": 7, "max": 7})");
  at(100);
  EXPECT_EQ(state()["JackpotData"][0]["CurrentPot"], 97);
  at(100000);
  EXPECT_EQ(state()["JackpotData"][0]["CurrentPot"], 100);
}

TEST_F(SimulatorTest, StoppedPotStandsAndSoDoesOneWhoseLevelIsGone) {
  apply(R"({"do": "add"})");
  apply(R"({"do": "add"})");
  apply(R"({"do": "grow", "id": 0, "every": 100})");
  apply(R"({"do": "grow", "id": 1, "every": 100})");
  at(100);
  const Json before = state()["JackpotData"];
  EXPECT_GT(before[0]["CurrentPot"], 0);
  apply(R"({"do": "stop", "id": 0})");
  apply(R"({"do": "remove", "id": 1})");
  at(1000);
  apply(R"({"do": "add", "level": {"Id": 1}})");
  at(2000);
  EXPECT_EQ(state()["JackpotData"][0]["CurrentPot"], before[0]["CurrentPot"]);
  EXPECT_EQ(state()["JackpotData"][1]["CurrentPot"], 0);
}

TEST_F(SimulatorTest, ScenarioPlaysInItsTime) {
  simulator.play(Scenario::parse(R"([
    {"at": 100, "do": "add"}, {"at": 200, "do": "win", "id": 0}, {"at": 300, "do": "remove", "id": 0}])"));
  at(99);
  EXPECT_TRUE(state()["JackpotData"].empty());
  at(100);
  EXPECT_EQ(state()["JackpotData"][0]["Status"], "ACTIVE");
  at(250);
  EXPECT_EQ(state()["JackpotData"][0]["Status"], "WIN");
  EXPECT_EQ(simulator.report()["stepsLeft"], 1);
  apply(R"({"do": "remove", "id": 0})");
  at(300);
  EXPECT_EQ(simulator.report()["stepsLeft"], 0);
  const Json last = simulator.log().since(0).back();
  EXPECT_EQ(last["error"], "no level has the \"Id\" 0");
  EXPECT_EQ(last["line"], 2);
}

TEST_F(SimulatorTest, ServiceGoesDownForAWhileAndForgetsItsClients) {
  const int client = registered();
  apply(R"({"do": "down", "ms": 500})");
  EXPECT_FALSE(simulator.wantsToListen());
  at(499);
  EXPECT_FALSE(simulator.wantsToListen());
  at(500);
  EXPECT_TRUE(simulator.wantsToListen());
  EXPECT_EQ(pop(client)["faultCode"], -1);
}

TEST_F(SimulatorTest, ServiceCanKeepItsClientsWhileItIsDown) {
  const int client = registered();
  apply(R"({"do": "down", "keep": true})");
  at(1000000);
  EXPECT_FALSE(simulator.wantsToListen());
  apply(R"({"do": "up"})");
  EXPECT_TRUE(simulator.wantsToListen());
  EXPECT_EQ(pop(client), nullptr);
}

TEST_F(SimulatorTest, BadRepliesAreUsedUpInTheirOrder) {
  apply(R"({"do": "bad", "method": "game.popEvents", "reply": "html", "calls": 2})");
  apply(R"({"do": "bad", "method": "game.popEvents", "reply": "cut"})");
  apply(R"({"do": "bad", "method": "*", "reply": "http500", "calls": -1})");
  const auto next = [this](const char* method) {
    const auto bad = simulator.takeBadReply(method);
    return bad ? std::string(bad->row->name) : "";
  };
  EXPECT_EQ(next("game.popEvents"), "html");
  EXPECT_EQ(next("platform.state"), "http500");
  EXPECT_EQ(next("game.popEvents"), "html");
  EXPECT_EQ(next("game.popEvents"), "cut");
  EXPECT_EQ(next("game.popEvents"), "http500");
  apply(R"({"do": "good"})");
  EXPECT_EQ(next("game.popEvents"), "");
}

TEST_F(SimulatorTest, LogCountsWithoutGapsAndGivesWhatIsNew) {
  apply(R"({"do": "up"})");
  now = 40;
  apply(R"({"do": "add"})");
  const Json all = simulator.log().since(0);
  ASSERT_EQ(all.size(), 2u);
  EXPECT_EQ(all[0]["n"], 1);
  EXPECT_EQ(all[1]["step"]["do"], "add");
  EXPECT_EQ(all[1]["t"], 40);
  EXPECT_EQ(simulator.log().since(1).size(), 1u);
  EXPECT_TRUE(simulator.log().since(2).empty());
  EXPECT_TRUE(simulator.log().since(99).empty());
}

TEST(RequestLog, KeepsTheNewestEntries) {
  RequestLog log;
  for (size_t i = 0; i < RequestLog::kLimit + 3; ++i) log.add(0, Json::object());
  const Json kept = log.since(0);
  ASSERT_EQ(kept.size(), RequestLog::kLimit);
  EXPECT_EQ(kept[0]["n"], 4);
  EXPECT_EQ(log.since(RequestLog::kLimit + 2).size(), 1u);
}

}  // namespace
}  // namespace kslsim
