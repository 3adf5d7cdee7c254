#include "tools/kslsim/Console.h"

#include "tools/kslsim/BadReplies.h"
#include "tools/kslsim/Errors.h"
#include "tools/kslsim/Methods.h"

namespace kslsim {
namespace {

Json event(int id, const char* name, const char* form, const Json& fields, const Json& sample) {
  return {{"id", id}, {"name", name}, {"form", form}, {"fields", fields}, {"sample", sample}};
}

// A page of prizes as the paytable panel reads it.
Json sampleExtraData() {
  Json texts = Json::array();
  for (int occurs = 5; occurs >= 3; --occurs)
    texts.push_back({{"symbol", "A"},
                     {"mode", "line"},
                     {"win", occurs * occurs * 4},
                     {"font", "Fonts/uni_font"},
                     {"fontSize", 32},
                     {"occurs", occurs},
                     {"alignedLeft", 1},
                     {"color", 0xFFFFFF},
                     {"x", 300},
                     {"y", 200 + (5 - occurs) * 50},
                     {"w", 300},
                     {"h", 40}});
  return {
    {"paylines", 20}, {"betCost", 20}, {"paytableSetup", Json::array({{{"name", "paytable"}, {"texts", texts}}})}};
}

Json sampleLevels() {
  Json out = Json::array();
  for (const Json& step : houseSteps(HOUSE_LEVELS, 1)) {
    if (step["do"] != "add") continue;
    Json level = startOf(levelFields());
    level.update(step["level"]);
    out.push_back(level);
  }
  return out;
}

Json sampleLanguage() {
  Json out = Json::array();
  for (const Json& text : findField(stateFields(), "LanguageMessages")->start) out.push_back(text);
  return out;
}

}  // namespace

Json consoleForms() {
  const Json game{{"ID", 7}, {"Name", "Fruits"}, {"Type", 4}};
  Json out;
  out["events"] = Json::array(
    {event(100, "T_GAME_LOADING", "game", {"ActiveGame", "IsLoading"}, game),
     event(101, "T_GAME_LOADED", "game", {"ActiveGame", "IsLoading"}, game),
     event(102, "T_DEMO_MODE", "flag", {"DemoMode"}, true),
     event(103, "T_INTEGRITY_DATA", "text", {"IntegrityCheckData"}, "Integrity check\nCRC 5A3C 09F1\nRunning ..."),
     event(104, "T_BET_LIMITS", "bets", {"CurrentBet", "MinBet", "MaxBet"},
           {{"current", 100}, {"min", 20}, {"max", 500}}),
     event(105, "T_GAME_EXITED", "nothing", {"ActiveGame", "IsLoading"}, nullptr),
     event(106, "T_INSTRUCTIONS", "texts", {"Instructions"},
           {"SPIN - starts a game", "BET + / BET - - changes the bet", "COLLECT - pays the credit out"}),
     event(107, "T_PAYTABLE_STATE", "number", {"ShowingPaytable"}, 1),
     event(108, "T_JACKPOT_ERROR", "text", {"JackpotErrorString"}, "Jackpot controller offline"),
     event(109, "T_JACKPOT_REFRESH", "nothing", Json::array(), nullptr),
     event(110, "T_JACKPOT_DATA", "json", {"JackpotData"}, sampleLevels()),
     event(111, "T_EXTRA_DATA", "json", {"ExtraData"}, sampleExtraData()),
     event(112, "T_LANGUAGE", "texts", {"LanguageMessages"}, sampleLanguage())});
  out["methods"] = methodNames();
  for (const ErrorRow& row : errorRows()) out["errors"].push_back({{"code", row.code}, {"name", row.name}});
  for (const std::string& name : badNames())
    out["replies"].push_back({{"name", name}, {"takes", argumentsOf(*badByName(name))}});
  out["levels"] = houseSteps(HOUSE_LEVELS, 1);
  return out;
}

}  // namespace kslsim
