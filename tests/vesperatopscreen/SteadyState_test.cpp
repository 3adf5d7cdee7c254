// What the screen holds after thousands of scene changes: textures, heap, files and threads stay what they were.
#include <gtest/gtest.h>

#include "tests/vesperatopscreen/Holdings.h"

using namespace vendelo_sdl2;
using paneldata::bets;
using paneldata::gameValue;
using paneldata::level;
using paneldata::levels;
using paneldata::levelsValue;
using paneldata::page;
using paneldata::Text;
using xmlrpc_c::value_boolean;
using xmlrpc_c::value_int;
using xmlrpc_c::value_string;

namespace {

class SteadyState : public testing::Test {
 protected:
  SteadyState() : screen((mallopt(M_ARENA_MAX, 1), "steady"), 8) {}

  void scene(int id, const xmlrpc_c::value& value, Uint32 milliseconds) {
    screen.send(id, value);
    screen.skip(milliseconds);
    ++scenes;
  }
  void scene(int id, Uint32 milliseconds) { scene(id, xmlrpc_c::value_nil(), milliseconds); }
  void jackpots(const std::vector<JackpotsData>& data, Uint32 milliseconds) {
    scene(T_JACKPOT_DATA, levelsValue(data), milliseconds);
  }
  // Until the page stands that the last events have asked for.
  void page(int number) {
    scene(T_PAYTABLE_STATE, value_int(number), 0);
    ASSERT_TRUE(screen.until([this] {
      return screen.find("pPaytablesPanel/HelpScreen")->GetTargetTexture() && screen.visible("pPaytablesPanel");
    }));
    screen.skip(600);
  }
  void language(const char* code) { scene(T_LANGUAGE, paneldata::texts({code, "MIN", "MAX", code, "PRIZES"}), 20); }
  void win(int id) {
    std::vector<JackpotsData> data = levels(4);
    data[static_cast<size_t>(id)].status = "WIN";
    jackpots(data, 201);
    for (Uint32 milliseconds : {500, 520, 700, 600}) screen.skip(milliseconds);
    jackpots(levels(4), 100);
  }
  // Each scene that the screen knows, at least once.
  void round(int number) {
    jackpots(levels(1 + number % 4), 300);
    jackpots(levels(4), 300);
    for (int pot = 0; pot < 4; ++pot) {
      std::vector<JackpotsData> data = levels(4);
      for (JackpotsData& one : data) one.potValue += 1000 * pot + number;
      jackpots(data, 400);
    }
    win(number % 4);
    scene(T_GAME_LOADING, gameValue("Reels", GAMETYPE_VESPERA_SLOTGAME), 20);
    scene(T_GAME_LOADED, gameValue("Reels", GAMETYPE_VESPERA_SLOTGAME), 300);
    language(number % 2 ? "sl" : "en");
    page(1);
    for (int bet = 1; bet < 5; ++bet) scene(T_BET_LIMITS, bets(100 * bet, 20, 2000), 20);
    page(2);
    win((number + 1) % 4);
    page(1);
    scene(T_GAME_LOADED, gameValue("Wheels", GAMETYPE_VESPERA_SLOTGAME), 20);
    page(1);
    scene(T_PAYTABLE_STATE, value_int(0), 600);
    scene(T_GAME_EXITED, 600);
    scene(T_INSTRUCTIONS, paneldata::texts({"SPIN", "", std::to_string(number)}), 600);
    scene(T_INSTRUCTIONS, paneldata::texts({}), 600);
    scene(T_DEMO_MODE, value_boolean(true), 20);
    scene(T_DEMO_MODE, value_boolean(false), 20);
    scene(T_JACKPOT_ERROR, value_string("METER FAULT " + std::to_string(number)), 50);
    scene(T_JACKPOT_ERROR, value_string(""), 50);
    scene(T_INTEGRITY_DATA, value_string("CRC " + std::to_string(number)), 50);
    scene(T_INTEGRITY_DATA, value_string(""), 50);
    jackpots({}, 50);
    scene(T_GAME_LOADED, gameValue("Reels", GAMETYPE_VESPERA_SLOTGAME), 50);
    scene(T_GAME_LOADED, gameValue("Wheel", GAMETYPE_ROULETTE), 50);
    scene(T_GAME_EXITED, 50);
    screen.app().GenerateAction("ShowFPS", nullptr, ACTION_ANY);
    screen.skip(1001);
    ++scenes;
    screen.app().forgetLines();
  }
  TopScreenHarness screen;
  int scenes = 0;
};

}  // namespace

TEST_F(SteadyState, TwoThousandScenesLeaveNothingBehind) {
  screen.status([](PlatformState& state) {
    state.ActiveGame = GAME_MENU;
    state.CurrentBet = 100;
    state.ExtraData =
      paneldata::setup({paneldata::page("paytable", {Text{}}), paneldata::page("paytableBonus", {Text{}})}, 20, -1);
  });
  // Each level, colour and language has been seen, and the renderer's own stores have grown to what they need.
  for (int number = 0; number < 12; ++number) round(number);
  const holdings::Holdings before = holdings::now(screen);
  scenes = 0;
  for (int number = 12; scenes < 2000; ++number) {
    round(number);
    if (HasFatalFailure()) return;
  }
  const holdings::Holdings after = holdings::now(screen);
  RecordProperty("scenes", scenes);
  std::printf("%d scenes: textures %ld -> %ld, heap %ld -> %ld bytes, files %ld -> %ld, threads %ld -> %ld\n",
              scenes, before.textures, after.textures, before.heap, after.heap, before.files, after.files,
              before.threads, after.threads);
  EXPECT_GT(before.textures, 20) << "the count sees the textures";
  EXPECT_EQ(before.textures, after.textures);
  EXPECT_EQ(drawing::Textures().count, after.textures) << "what the figures say";
  EXPECT_EQ(before.files, after.files);
  EXPECT_EQ(before.threads, after.threads);
  // The C library counts what it keeps back for each thread as used: some 10 kB more or less.
  EXPECT_LT(after.heap - before.heap, 24 * 1024) << "twelve bytes for a scene";
}
