// Scenarios and recordings that a seeded hand has broken: each is read or refused with a place, and nothing else.
#include <gtest/gtest.h>
#include <algorithm>
#include <cstdlib>

#include "tests/support/Mutator.h"
#include "tools/kslsim/Recording.h"
#include "tools/kslsim/Scenario.h"

namespace kslsim {
namespace {

const std::string SCENARIO = R"([
  {"at": 0, "do": "init", "set": {"Locale": "C.UTF-8", "ThousandGrouping": 3}},
  {"at": 0, "do": "add", "level": {"Name": "GOLD", "CurrentPot": 1000000, "MaxPot": 2000000}},
  {"at": 5, "do": "grow", "id": 0, "every": 300, "min": 1, "max": 250, "seed": 7},
  {"at": 6, "do": "play", "id": 0, "bets": 600, "share": 20, "show": 6000},
  {"at": 7, "do": "ramp", "id": 0, "to": -5, "ms": 1000},
  {"at": 8, "do": "win", "id": 0, "text": "Last won: today", "silent": true},
  {"at": 9, "do": "game", "event": "loaded", "ID": 7, "Name": "Fruits", "Type": 4},
  {"at": 10, "do": "set", "state": {"ExtraData": {"a": [1, null, {"$i8": 5}], "b": 1.5}, "Instructions": ["x"]}},
  {"at": 11, "do": "event", "id": 110, "raw": [{"Name": 1}]},
  {"at": 12, "do": "service", "set": {"Names": ["a"], "MaxClients": 3}},
  {"at": 13, "do": "counters", "set": {"Spins": 4}},
  {"at": 14, "do": "bad", "method": "*", "reply": "type", "field": "a/0/b", "calls": 2, "for": 100},
  {"at": 14, "do": "bad", "method": "game.bye", "reply": "fault", "code": -3, "text": "no"},
  {"at": 15, "do": "down", "ms": 10, "keep": true}, {"at": 16, "do": "stop"}, {"at": 17, "do": "remove", "id": 0}
])";

const std::string RECORDING = R"({"what":"kslsim recording","version":1,"service":"http://127.0.0.1:9011/KSL"}
{"at":4,"ms":1,"method":"topscreen.init","params":["TopScreen","1.5.0"],"answer":{"ID":1,"Language":"en"}}
{"at":5,"ms":1,"method":"platform.state","params":[],"answer":{"CurrentBet":{"$i8":5},"ExtraData":null}}
{"at":310,"ms":0,"method":"game.popEvents","params":[1],"answer":[{"eventID":107,"context":3}]}
{"at":612,"ms":2,"method":"game.popEvents","params":[1],"status":500,"body":""}
{"at":700,"ms":2,"method":"game.popEvents","params":[1],"status":200,"hex":"ff00"}
{"at":800,"ms":2,"method":"game.popEvents","params":[1],"fault":{"code":-500,"text":"x"}}
{"at":913,"ms":5003,"method":"game.popEvents","params":[1],"error":"Read"}
)";

// The variable BROKEN_FILES asks for more of them.
int files(int usual) {
  const char* wanted = std::getenv("BROKEN_FILES");
  return wanted ? std::atoi(wanted) : usual;
}

// How many of them were read, and how many refused.
template <typename Read>
std::pair<int, int> tryAll(const std::string& text, int count, Read read) {
  std::pair<int, int> out{0, 0};
  for (int seed = 0; seed < count; ++seed) {
    const std::string file = Mutator(static_cast<unsigned>(seed)).broken(text, Mutator::JSON);
    try {
      read(file);
      ++out.first;
    } catch (const ScenarioError& error) {
      ++out.second;
      const Place place = error.place();
      EXPECT_GE(place.line, 1u);
      EXPECT_LE(place.line, static_cast<size_t>(std::count(file.begin(), file.end(), '\n')) + 1) << seed;
      EXPECT_GE(place.column, 1u);
    } catch (const std::exception& error) {
      ADD_FAILURE() << "seed " << seed << ": " << error.what();
    }
  }
  return out;
}

TEST(BrokenFiles, ScenariosAreReadOrRefused) {
  EXPECT_NO_THROW(Scenario::parse(SCENARIO));
  const auto [good, bad] = tryAll(SCENARIO, files(3300), [](const std::string& text) { Scenario::parse(text); });
  EXPECT_GT(good, 10);
  EXPECT_GT(bad, 200);
}

TEST(BrokenFiles, RecordingsAreReadAndPlayedOrRefused) {
  EXPECT_EQ(Replay(RECORDING, Replay::Pace::Recorded).size(), 7u);
  const auto [good, bad] = tryAll(RECORDING, files(500), [](const std::string& text) {
    Replay replay(text, Replay::Pace::Recorded);
    for (int now = 0; now < 10; ++now)
      for (const char* method : {"topscreen.init", "platform.state", "game.popEvents"})
        replay.answer(method, method == std::string("game.popEvents") ? Json{1} : Json::array(), now * 200);
  });
  EXPECT_GT(good, 10);
  EXPECT_GT(bad, 100);
}

}  // namespace
}  // namespace kslsim
