#include "tools/kslsim/Console.h"

#include "tools/kslsim/BadReplies.h"
#include "tools/kslsim/Errors.h"
#include "tools/kslsim/Methods.h"
#include "tools/kslsim/UsualLevels.h"

namespace kslsim {
namespace {

struct EventRow {
  int id;
  const char* name;
  const char* form;
  Json fields;
  Json sample;
  const char* tells;
};

struct ReplyRow {
  const char* name;
  const char* group;
  const char* tells;
};

// In the order of the page.
constexpr ReplyRow REPLIES[] = {{"refuse", "No answer", "hangs up before the answer"},
                                {"silent", "No answer", "takes the call, never answers"},
                                {"slow", "No answer", "the right answer, late"},
                                {"drip", "No answer", "the right answer, byte by byte"},
                                {"cut", "No answer", "hangs up in the middle"},
                                {"http500", "Not XML-RPC", "HTTP status 500"},
                                {"html", "Not XML-RPC", "a web page"},
                                {"notxml", "Not XML-RPC", "a text that is no XML"},
                                {"utf8", "Not XML-RPC", "a text that is not UTF-8"},
                                {"empty", "Wrong contents", "a struct without keys"},
                                {"type", "Wrong contents", "another type: the field, or all"},
                                {"missing", "Wrong contents", "the field is left out"},
                                {"range", "Wrong contents", "a number too large for its type"},
                                {"i8", "Wrong contents", "an i8 too large for 64 bits"},
                                {"large", "Too much", "600 KiB"},
                                {"flood", "Too much", "so many events"},
                                {"deep", "Too much", "arrays nested 200 deep"},
                                {"fault", "Errors and texts", "the service's own error"},
                                {"rpcfault", "Errors and texts", "a fault of XML-RPC"},
                                {"body", "Errors and texts", "the text, with the HTTP status"},
                                {"raw", "Errors and texts", "the text alone, no HTTP"}};

// The prizes on two of the pictures of the demo skin's paytable.
Json sampleExtraData() {
  const struct {
    const char* symbol;
    int x;
    int wins[3];
  } symbols[] = {{"CROWN", 280, {5000, 1000, 200}}, {"RUBY", 755, {2000, 400, 100}}};
  Json texts = Json::array();
  for (const auto& symbol : symbols)
    for (int row = 0; row < 3; ++row)
      texts.push_back({{"symbol", symbol.symbol},
                       {"occurs", 5 - row},
                       {"mode", "line"},
                       {"win", symbol.wins[row]},
                       {"font", "prize"},
                       {"fontSize", 34},
                       {"alignedLeft", 0},
                       {"color", 0xFFD95A},
                       {"x", symbol.x},
                       {"y", 202 + 86 * row},
                       {"w", 190},
                       {"h", 56}});
  return {
    {"paylines", 10}, {"betCost", 10}, {"paytableSetup", Json::array({{{"name", "paytable"}, {"texts", texts}}})}};
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

std::vector<EventRow> events() {
  const Json game{{"ID", 11}, {"Name", "VesperCrown"}, {"Type", 4}}, gameFields{"ActiveGame", "IsLoading"};
  return {
    {100, "T_GAME_LOADING", "game", gameFields, game,
     "A game loads: its emblem comes beside the levels. The name is a folder of Games/. Roulette changes nothing "
     "yet."},
    {101, "T_GAME_LOADED", "game", gameFields, game,
     "The game is ready, to be seen as with 100. Roulette stops the drawing: the last picture stays."},
    {102, "T_DEMO_MODE", "flag", {"DemoMode"}, true, "Marks the background as that of a demonstration."},
    {103,
     "T_INTEGRITY_DATA",
     "text",
     {"IntegrityCheckData"},
     "INTEGRITY CHECK IN PROGRESS  -  PLEASE WAIT",
     "A text in the place of the levels. Empty takes it away; the levels come back with the next 109 or 110."},
    {104,
     "T_BET_LIMITS",
     "bets",
     {"CurrentBet", "MinBet", "MaxBet"},
     {{"current", 100}, {"min", 20}, {"max", 500}},
     "The prizes of an open paytable follow the bet (107, 111)."},
    {105, "T_GAME_EXITED", "nothing", gameFields, nullptr, "Back to the menu: the levels without an emblem."},
    {106,
     "T_INSTRUCTIONS",
     "texts",
     {"Instructions"},
     {"AUTO", "", "GAMES", "STAFF", "BET -", "PAYS", "BET +", "START"},
     "What the buttons of the cabinet do, in the place of the levels. Empty brings the levels back."},
    {107,
     "T_PAYTABLE_STATE",
     "number",
     {"ShowingPaytable"},
     1,
     "Opens that page of the paytable of a slot game (101); 0 closes it. A win keeps it away."},
    {108,
     "T_JACKPOT_ERROR",
     "text",
     {"JackpotErrorString"},
     "JACKPOT IS OUT OF SERVICE",
     "A text in the place of the levels. Empty brings the levels back."},
    {109, "T_JACKPOT_REFRESH", "nothing", Json::array(), nullptr,
     "The levels are shown anew; to be seen only after 103."},
    {110,
     "T_JACKPOT_DATA",
     "json",
     {"JackpotData"},
     sampleLevels(),
     "All levels. \"Status\": \"WIN\" plays a win."},
    {111,
     "T_EXTRA_DATA",
     "json",
     {"ExtraData"},
     sampleExtraData(),
     "What a game says of its prizes: the amounts on an open paytable (107). They need a bet (104)."},
    {112,
     "T_LANGUAGE",
     "texts",
     {"LanguageMessages"},
     {"de", "Mindesteinsatz", "H\u00f6chsteinsatz",
      "Einsatz pro Linie mit BET+/- w\u00e4hlen und mit SPIN ein neues Spiel beginnen.",
      "Alle Preise gelten f\u00fcr den aktuellen Einsatz."},
     "The player's language: its code, then the captions of the paytable and the line under a game."}};
}

}  // namespace

Json consoleForms() {
  Json out;
  for (const EventRow& row : events())
    out["events"].push_back({{"id", row.id},
                             {"name", row.name},
                             {"form", row.form},
                             {"fields", row.fields},
                             {"sample", row.sample},
                             {"tells", row.tells}});
  out["methods"] = methodNames();
  for (const ErrorRow& row : errorRows()) out["errors"].push_back({{"code", row.code}, {"name", row.name}});
  for (const ReplyRow& row : REPLIES) {
    const Bad bad = *badByName(row.name);
    out["replies"].push_back({{"name", row.name},
                              {"takes", argumentsOf(bad)},
                              {"needs", neededBy(bad)},
                              {"group", row.group},
                              {"tells", row.tells}});
  }
  out["levels"] = houseSteps(HOUSE_LEVELS, 1);
  return out;
}

}  // namespace kslsim
