// A cabinet whose skin and games are gone, for years: every change of the platform's state asks for files that are
// not there, and leaves nothing behind.
#include <gtest/gtest.h>

#include "tests/vesperatopscreen/Holdings.h"

using namespace vendelo_sdl2;
using paneldata::gameValue;
using paneldata::levels;
using paneldata::levelsValue;
using paneldata::Text;
using xmlrpc_c::value_int;
using xmlrpc_c::value_string;

namespace {

class BareState : public testing::Test {
 protected:
  BareState() : screen((mallopt(M_ARENA_MAX, 1), "bare"), 8) {
    for (const char* folder : {"VESPERA", "Games"}) std::filesystem::remove_all(screen.folder() + folder);
  }

  void scene(int id, const xmlrpc_c::value& value) {
    screen.send(id, value);
    screen.skip(600);
  }
  // The jackpot levels are built four times, and the pages of two games asked for.
  void round(int number) {
    scene(T_JACKPOT_DATA, levelsValue(levels(1 + number % 3)));
    scene(T_JACKPOT_DATA, levelsValue(levels(4)));
    scene(T_JACKPOT_ERROR, value_string("METER FAULT"));
    scene(T_JACKPOT_ERROR, value_string(""));
    scene(T_JACKPOT_DATA, levelsValue(levels(4)));
    for (const char* game : {"Reels", "Wheels"}) {
      scene(T_GAME_LOADED, gameValue(game, GAMETYPE_VESPERA_SLOTGAME));
      scene(T_PAYTABLE_STATE, value_int(1));
      EXPECT_TRUE(screen.until([] { return holdings::entries("/proc/self/task") <= holdings::kThreadsAtRest; }));
      screen.skip(600);
      scene(T_PAYTABLE_STATE, value_int(0));
    }
    scene(T_GAME_EXITED, xmlrpc_c::value_nil());
    scene(T_INSTRUCTIONS, paneldata::texts({"SPIN", "", std::to_string(number)}));
    scene(T_INSTRUCTIONS, paneldata::texts({}));
    scene(T_INTEGRITY_DATA, value_string("CRC"));
    scene(T_INTEGRITY_DATA, value_string(""));
  }
  holdings::Holdings rounds(int first, int count) {
    // What is printed about each file is of no interest here.
    testing::internal::CaptureStdout();
    for (int number = first; number < first + count; ++number) round(number);
    testing::internal::GetCapturedStdout();
    return holdings::now(screen);
  }

  TopScreenHarness screen;
};

}  // namespace

TEST_F(BareState, ScenesWithoutAnyFileLeaveNothingBehind) {
  screen.status([](PlatformState& state) {
    state.ActiveGame = GAME_MENU;
    state.CurrentBet = 100;
    state.ExtraData =
      paneldata::setup({paneldata::page("paytable", {Text{}}), paneldata::page("paytableBonus", {Text{}})}, 20, -1);
  });
  const holdings::Holdings before = rounds(0, 12);
  const holdings::Holdings after = rounds(12, 30);
  std::printf("textures %ld -> %ld, heap %ld -> %ld bytes, files %ld -> %ld, threads %ld -> %ld\n", before.textures,
              after.textures, before.heap, after.heap, before.files, after.files, before.threads, after.threads);
  EXPECT_EQ(before.textures, after.textures);
  EXPECT_EQ(before.files, after.files);
  EXPECT_EQ(before.threads, after.threads);
  // The image cache keeps an element for each failed request, as it is required to: the title and four frames
  // each time that the levels are built, at most 128 bytes each.
  constexpr long elements = 30 * 4 * 5 * 128;
  EXPECT_LT(after.heap - before.heap, elements + 24 * 1024);
}
