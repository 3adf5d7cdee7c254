#include "vesperatopscreen/PanelDecision.h"

#include <gtest/gtest.h>

#include "common/TKSLReturnStructures.h"

namespace {

struct Row {
  const char* situation;
  GameTypes type;
  bool loading;
  int paytable;
  bool instructions;
  std::vector<std::string> statuses;
  TPanelDecision::Panel panel;
  bool rendering;
  bool endsLoader;
};

const Row rows[] = {
  {"no game, instructions", GAMETYPE_NULL_TYPE, false, 0, true, {}, TPanelDecision::INSTRUCTIONS, true, true},
  {"menu, instructions", GAMETYPE_MENU, false, 0, true, {}, TPanelDecision::INSTRUCTIONS, true, true},
  {"no game, no instructions",
   GAMETYPE_NULL_TYPE,
   true,
   0,
   false,
   {},
   TPanelDecision::JACKPOTS_NO_GAME,
   true,
   true},
  {"menu, no instructions", GAMETYPE_MENU, false, 2, false, {"WIN"}, TPanelDecision::JACKPOTS_NO_GAME, true, true},
  {"slot game", GAMETYPE_VESPERA_SLOTGAME, false, 0, true, {""}, TPanelDecision::JACKPOTS, true, true},
  {"slot game, win", GAMETYPE_VESPERA_SLOTGAME, false, 0, true, {"WIN"}, TPanelDecision::JACKPOTS, true, true},
  {"slot game, paytable", GAMETYPE_VESPERA_SLOTGAME, false, 1, false, {""}, TPanelDecision::PAYTABLES, true, false},
  {"slot game, negative paytable",
   GAMETYPE_VESPERA_SLOTGAME,
   false,
   -1,
   false,
   {},
   TPanelDecision::PAYTABLES,
   true,
   false},
  {"slot game, paytable, second level wins",
   GAMETYPE_VESPERA_SLOTGAME,
   false,
   1,
   false,
   {"", "WIN"},
   TPanelDecision::JACKPOTS,
   true,
   true},
  {"slot game, paytable, status is not exactly WIN",
   GAMETYPE_VESPERA_SLOTGAME,
   false,
   1,
   false,
   {"win", "WIN "},
   TPanelDecision::PAYTABLES,
   true,
   false},
  {"roulette runs", GAMETYPE_ROULETTE, false, 0, true, {"WIN"}, TPanelDecision::STOP_RENDERING, false, false},
  {"roulette loads", GAMETYPE_ROULETTE, true, 0, true, {}, TPanelDecision::KEEP, false, false},
  {"top screen type", GAMETYPE_TOPSCREEN, false, 1, true, {"WIN"}, TPanelDecision::KEEP, true, true},
};

}  // namespace

TEST(PanelDecision, FollowsTheStateOfThePlatform) {
  for (const Row& row : rows) {
    SCOPED_TRACE(row.situation);
    PlatformState state;
    state.ActiveGame = GameRegistryEntry(7, "any", row.type);
    state.IsLoading = row.loading;
    state.ShowingPaytable = row.paytable;
    if (row.instructions) state.Instructions = {"Spin"};
    for (const std::string& status : row.statuses) {
      JackpotsData level{};
      level.status = status;
      state.JackpotData.push_back(level);
    }
    const TPanelDecision due = decidePanel(state);
    EXPECT_EQ(row.panel, due.panel);
    EXPECT_EQ(row.rendering, due.rendering);
    EXPECT_EQ(row.endsLoader, due.endsLoader);
  }
}
