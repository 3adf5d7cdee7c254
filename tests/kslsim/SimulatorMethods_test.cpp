// The methods beside registration, events and state; and each error code that a call can earn.
#include <gtest/gtest.h>

#include "tools/kslsim/Simulator.h"

namespace kslsim {
namespace {

class SimulatorMethods : public testing::Test {
 protected:
  void apply(const char* step) { simulator.apply(Json::parse(step)); }
  Json init(const char* name) { return fromWire(simulator.init(name, "1.5.0")); }
  int registered() { return init("TopScreen")["ID"].get<int>(); }
  void playing() { apply(R"({"do": "game", "event": "loaded", "ID": 7, "Name": "Fruits", "Type": 4})"); }

  std::atomic<int64_t> now{0};
  Simulator simulator{[this] { return now.load(); }};
};

Json amount(int64_t value) { return {{"$i8", value}}; }

TEST_F(SimulatorMethods, ParametersKeepTheirTypeAndUnknownOnesAreMinusTen) {
  const int client = registered();
  EXPECT_EQ(fromWire(simulator.getParam(client, "Speed"))["faultCode"], kUnknownParameter);
  const Json value{{"a", amount(5)}, {"b", {1, "x", nullptr, true}}};
  EXPECT_EQ(fromWire(simulator.setParam(client, "Speed", toWire(value, Kind::Any))), value);
  EXPECT_EQ(fromWire(simulator.getParam(client, "Speed")), value);
  apply(R"({"do": "params", "set": {"Speed": 3}})");
  EXPECT_EQ(fromWire(simulator.getParam(client, "Speed")), 3);
  EXPECT_EQ(simulator.report()["params"], Json({{"Speed", 3}}));
}

TEST_F(SimulatorMethods, AStructThatLooksLikeAnAmountIsKeptAsItIs) {
  const int client = registered();
  const xmlrpc_c::value odd = xmlrpc_c::value_struct(xmlrpc_c::cstruct{{"$i8", xmlrpc_c::value_string("five")}});
  EXPECT_EQ(fromWire(simulator.setParam(client, "Odd", odd)), Json({{"$i8", "five"}}));
  EXPECT_EQ(fromWire(simulator.getParam(client, "Odd")), Json({{"$i8", "five"}}));
}

TEST_F(SimulatorMethods, TextsAndKeysThatWouldSpoilTheWholeAnswerAreRefused) {
  struct {
    Json step;
    const char* complaint;
  } const rows[] = {
    {{{"do", "set"}, {"state", {{"JackpotErrorString", "a\xFF"}}}}, "expected a text in UTF-8"},
    {{{"do", "set"}, {"state", {{"Instructions", {"\uFFFF"}}}}},
     "expected a text without U+FFFE and U+FFFF, which are no characters"},
    {{{"do", "set"}, {"state", {{"ExtraData", {{"\x01", 1}}}}}}, "expected a text without control characters"},
    {{{"do", "params"}, {"set", {{"a", {{"\x02", 1}}}}}}, "expected a text without control characters"},
    {{{"do", "event"}, {"id", 111}, {"raw", {{{"\x03", 1}}}}}, "expected a text without control characters"}};
  for (const auto& row : rows) {
    try {
      simulator.apply(row.step);
      ADD_FAILURE() << "was accepted: " << row.complaint;
    } catch (const InputError& error) {
      EXPECT_STREQ(error.what(), row.complaint);
    }
  }
  apply(R"({"do": "set", "state": {"ExtraData": {"\u00e9": "\ud83d\ude00"}}})");
}

TEST_F(SimulatorMethods, TheLargestNumberOfWinsStays) {
  apply(R"({"do": "add", "level": {"NumWins": 2147483646}})");
  for (int i = 0; i < 2; ++i) {
    apply(R"({"do": "win", "id": 0})");
    EXPECT_EQ(simulator.report()["state"]["JackpotData"][0]["NumWins"], INT32_MAX);
  }
}

TEST_F(SimulatorMethods, CountersBelongToTheActiveGame) {
  const int client = registered();
  EXPECT_EQ(fromWire(simulator.getCounter(client, "Spins"))["faultCode"], kNoActiveGame);
  EXPECT_EQ(fromWire(simulator.setCounter(client, "Spins", 1))["faultCode"], kNoActiveGame);
  EXPECT_EQ(fromWire(simulator.shiftCounter(client, "Spins", 1))["faultCode"], kNoActiveGame);
  playing();
  EXPECT_EQ(fromWire(simulator.getCounter(client, "Spins"))["faultCode"], kUnknownParameter);
  EXPECT_EQ(fromWire(simulator.shiftCounter(client, "Spins", 1))["faultCode"], kUnknownParameter);
  EXPECT_EQ(fromWire(simulator.setCounter(client, "Spins", 40)), amount(40));
  EXPECT_EQ(fromWire(simulator.shiftCounter(client, "Spins", -2)), amount(38));
  EXPECT_EQ(fromWire(simulator.getCounter(client, "Spins")), amount(38));
  apply(R"({"do": "counters", "set": {"Spins": 9223372036854775807}})");
  EXPECT_EQ(fromWire(simulator.shiftCounter(client, "Spins", 1))["faultCode"], kInternalError);
  EXPECT_EQ(fromWire(simulator.getCounter(client, "Spins")), amount(INT64_MAX));
}

TEST_F(SimulatorMethods, ByeEndsTheRegistration) {
  const int first = registered(), second = registered();
  EXPECT_EQ(fromWire(simulator.bye(first)), true);
  EXPECT_EQ(fromWire(simulator.bye(first))["faultCode"], kNotRegistered);
  EXPECT_EQ(fromWire(simulator.popEvents(first))["faultCode"], kNotRegistered);
  EXPECT_EQ(fromWire(simulator.popEvents(second)), nullptr);
}

TEST_F(SimulatorMethods, VolumeAndDenominationAreReadAndSetWithoutAClient) {
  EXPECT_EQ(fromWire(simulator.volume(std::nullopt)), 50);
  EXPECT_EQ(fromWire(simulator.volume(80)), 80);
  EXPECT_EQ(fromWire(simulator.volume(101))["faultCode"], kProtocolError);
  EXPECT_EQ(fromWire(simulator.volume(-1))["faultCode"], kProtocolError);
  EXPECT_EQ(fromWire(simulator.volume(std::nullopt)), 80);
  EXPECT_EQ(fromWire(simulator.denomination(std::nullopt)), amount(1));
  EXPECT_EQ(fromWire(simulator.denomination(250)), amount(250));
  EXPECT_EQ(fromWire(simulator.denomination(0))["faultCode"], kProtocolError);
}

TEST_F(SimulatorMethods, EveryMethodOfAClientWantsItRegistered) {
  const xmlrpc_c::value nil = xmlrpc_c::value_nil();
  for (const xmlrpc_c::value& answer :
       {simulator.popEvents(3), simulator.pushEvents(3, 0, {}), simulator.getParam(3, "a"),
        simulator.setParam(3, "a", nil), simulator.getCounter(3, "a"), simulator.setCounter(3, "a", 1),
        simulator.shiftCounter(3, "a", 1), simulator.bye(3)})
    EXPECT_EQ(fromWire(answer)["faultCode"], kNotRegistered);
}

TEST_F(SimulatorMethods, RegistrationIsRefusedAsTheServiceWasTold) {
  registered();
  apply(R"({"do": "service", "set": {"UniqueNames": true}})");
  EXPECT_EQ(init("TopScreen")["faultCode"], kAlreadyRegistered);
  EXPECT_EQ(init("Other")["ID"], 2);
  apply(R"({"do": "service", "set": {"UniqueNames": false, "Names": ["Fruits", "TopScreen"]}})");
  EXPECT_EQ(init("Other")["faultCode"], kUnknownGame);
  EXPECT_EQ(init("Fruits")["ID"], 3);
  apply(R"({"do": "service", "set": {"Names": [], "Admit": false}})");
  EXPECT_EQ(init("TopScreen")["faultCode"], kInitRejected);
  apply(R"({"do": "service", "set": {"Admit": true, "MaxClients": 3}})");
  EXPECT_EQ(init("TopScreen")["faultCode"], kServerFull);
  EXPECT_EQ(simulator.report()["clients"].size(), 3u);
}

TEST_F(SimulatorMethods, AFullServiceGivesThePlaceOfAClientThatHasGone) {
  apply(R"({"do": "service", "set": {"MaxClients": 2}})");
  const int gone = registered(), lively = registered();
  now = Clients::kIdleMilliseconds - 1;
  simulator.popEvents(lively);
  EXPECT_EQ(init("TopScreen")["faultCode"], kServerFull);
  now = Clients::kIdleMilliseconds;
  EXPECT_EQ(init("TopScreen")["ID"], 3);
  EXPECT_EQ(fromWire(simulator.popEvents(gone))["faultCode"], kNotRegistered);
  EXPECT_EQ(fromWire(simulator.popEvents(lively)), nullptr);
}

TEST_F(SimulatorMethods, EventsOfAWrongFormAreNotTaken) {
  const int client = registered();
  for (const char* bad : {R"({"eventID": 1})", R"({"eventID": "1", "context": 1})", "7", "null"}) {
    const xmlrpc_c::value event = toWire(Json::parse(bad), Kind::Any);
    EXPECT_EQ(fromWire(simulator.pushEvents(client, 0, {event}))["faultCode"], kProtocolError) << bad;
  }
  EXPECT_EQ(simulator.report()["clients"][0]["package"], -1);
  const xmlrpc_c::value good = toWire({{"eventID", 1}, {"context", 2}}, Kind::Any);
  EXPECT_EQ(fromWire(simulator.pushEvents(client, 0, {good})), 1);
}

TEST_F(SimulatorMethods, EveryErrorCodeCanBeOrderedByNumberAndByName) {
  EXPECT_EQ(errorRows().size(), 13u);
  for (const ErrorRow& row : errorRows()) {
    for (const Json& code : {Json(row.code), Json(row.name)}) {
      simulator.apply({{"do", "bad"}, {"method", "*"}, {"reply", "fault"}, {"code", code}});
      const auto reply = simulator.takeBadReply("game.bye");
      ASSERT_TRUE(reply);
      EXPECT_NE(reply->body().find("<int>" + std::to_string(row.code) + "</int>"), std::string::npos) << row.name;
    }
  }
  EXPECT_THROW(apply(R"({"do": "bad", "method": "*", "reply": "fault", "code": "E_ODD"})"), InputError);
}

TEST_F(SimulatorMethods, KnowsWhatEachClientKnows) {
  const int first = registered();
  EXPECT_EQ(simulator.knownTo(first), nullptr);
  simulator.platformState();
  const int second = registered();
  apply(R"({"do": "set", "state": {"DemoMode": true, "CurrentBet": 5, "JackpotErrorString": "x"}})");
  playing();
  apply(R"({"do": "add"})");
  EXPECT_EQ(simulator.knownTo(first)["DemoMode"], false);
  simulator.popEvents(first);
  simulator.popEvents(second);
  EXPECT_EQ(simulator.knownTo(first), simulator.report()["state"]);
  EXPECT_EQ(simulator.knownTo(second), nullptr);
  apply(R"({"do": "game", "event": "exited"})");
  apply(R"({"do": "event", "id": 107, "raw": "odd"})");
  EXPECT_EQ(simulator.knownTo(first)["ActiveGame"]["ID"], 7);
  simulator.popEvents(first);
  EXPECT_EQ(simulator.knownTo(first), simulator.report()["state"]);
}

}  // namespace
}  // namespace kslsim
