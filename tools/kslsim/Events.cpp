#include "tools/kslsim/Events.h"

#include "tools/kslsim/UsualLevels.h"

namespace kslsim {
namespace {

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
  for (const Json& step : houseSteps(kHouseLevels, 1)) {
    if (step["do"] != "add") continue;
    Json level = startOf(levelFields());
    level.update(step["level"]);
    out.push_back(level);
  }
  return out;
}

std::vector<EventRow> makeRows() {
  const Json game{{"ID", 11}, {"Name", "VesperCrown"}, {"Type", 4}}, menu = startOf(gameFields());
  return {
    {.id = kGameLoading,
     .name = "T_GAME_LOADING",
     .context = Kind::Game,
     .fields = {{.field = "ActiveGame"}, {.field = "IsLoading", .always = true}},
     .game = "loading",
     .sample = game,
     .tells = "A game loads: its emblem comes beside the levels. The name is a folder of Games/. Roulette changes "
              "nothing yet."},
    {.id = kGameLoaded,
     .name = "T_GAME_LOADED",
     .context = Kind::Game,
     .fields = {{.field = "ActiveGame"}, {.field = "IsLoading", .always = false}},
     .game = "loaded",
     .sample = game,
     .tells = "The game is ready, to be seen as with 100. Roulette stops the drawing: the last picture stays."},
    {.id = 102,
     .name = "T_DEMO_MODE",
     .context = Kind::Bool,
     .fields = {{.field = "DemoMode"}},
     .sample = true,
     .tells = "Marks the background as that of a demonstration."},
    {.id = 103,
     .name = "T_INTEGRITY_DATA",
     .context = Kind::String,
     .fields = {{.field = "IntegrityCheckData"}},
     .sample = "INTEGRITY CHECK IN PROGRESS  -  PLEASE WAIT",
     .tells = "A text in the place of the levels. Empty takes it away; the levels come back with the next 109 or "
              "110."},
    {.id = 104,
     .name = "T_BET_LIMITS",
     .context = Kind::Bets,
     .fields = {{.field = "CurrentBet", .key = "current", .caption = "Current"},
                {.field = "MinBet", .key = "min", .caption = "Minimum"},
                {.field = "MaxBet", .key = "max", .caption = "Maximum"}},
     .sample = {{"current", 100}, {"min", 20}, {"max", 500}},
     .tells = "The prizes of an open paytable follow the bet (107, 111)."},
    {.id = 105,
     .name = "T_GAME_EXITED",
     .context = Kind::Nil,
     .fields = {{.field = "ActiveGame", .always = menu}, {.field = "IsLoading", .always = false}},
     .game = "exited",
     .tells = "Back to the menu: the levels without an emblem."},
    {.id = 106,
     .name = "T_INSTRUCTIONS",
     .context = Kind::Strings,
     .fields = {{.field = "Instructions"}},
     .sample = {"AUTO", "", "GAMES", "STAFF", "BET -", "PAYS", "BET +", "START"},
     .tells = "What the buttons of the cabinet do, in the place of the levels. Empty brings the levels back."},
    {.id = 107,
     .name = "T_PAYTABLE_STATE",
     .context = Kind::Int,
     .fields = {{.field = "ShowingPaytable"}},
     .sample = 1,
     .tells = "Opens that page of the paytable of a slot game (101); 0 closes it. A win keeps it away."},
    {.id = 108,
     .name = "T_JACKPOT_ERROR",
     .context = Kind::String,
     .fields = {{.field = "JackpotErrorString"}},
     .sample = "JACKPOT IS OUT OF SERVICE",
     .tells = "A text in the place of the levels. Empty brings the levels back."},
    {.id = kJackpotRefresh,
     .name = "T_JACKPOT_REFRESH",
     .context = Kind::Nil,
     .tells = "The levels are shown anew; to be seen only after 103."},
    {.id = kJackpotData,
     .name = "T_JACKPOT_DATA",
     .context = Kind::Levels,
     .fields = {{.field = "JackpotData"}},
     .sample = sampleLevels(),
     .tells = "All levels. \"Status\": \"WIN\" plays a win."},
    {.id = 111,
     .name = "T_EXTRA_DATA",
     .context = Kind::Struct,
     .fields = {{.field = "ExtraData"}},
     .sample = sampleExtraData(),
     .tells = "What a game says of its prizes: the amounts on an open paytable (107). They need a bet (104)."},
    {.id = 112,
     .name = "T_LANGUAGE",
     .context = Kind::Strings,
     .fields = {{.field = "LanguageMessages"}},
     .sample = {"de", "Mindesteinsatz", "H\u00f6chsteinsatz",
                "Einsatz pro Linie mit BET+/- w\u00e4hlen und mit SPIN ein neues Spiel beginnen.",
                "Alle Preise gelten f\u00fcr den aktuellen Einsatz."},
     .tells = "The player's language: its code, then the captions of the paytable and the line under a game."}};
}

}  // namespace

const std::vector<EventRow>& eventRows() {
  static const auto& rows = *new std::vector<EventRow>(makeRows());
  return rows;
}

const EventRow* findEvent(int id) {
  for (const EventRow& row : eventRows())
    if (row.id == id) return &row;
  return nullptr;
}

const EventRow* eventOfField(const std::string& field) {
  for (const EventRow& row : eventRows())
    for (const ToldField& told : row.fields)
      if (!row.game && field == told.field) return &row;
  return nullptr;
}

Kind contextKind(int id) {
  const EventRow* row = findEvent(id);
  return row ? row->context : Kind::Any;
}

}  // namespace kslsim
