// The same evening twice, with seeded events: once all of every frame is drawn, once only what changes. What the
// window shows is the same after each frame, pixel for pixel.
#include <gtest/gtest.h>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

#include "tests/support/TestFont.h"
#include "tests/support/TopScreenHarness.h"
#include "vendelo-sdl2/TAsyncJobs.h"

using namespace vendelo_sdl2;
using paneldata::gameValue;
using paneldata::Text;
using xmlrpc_c::value_boolean;
using xmlrpc_c::value_int;
using xmlrpc_c::value_string;

namespace {

class Evening {
 public:
  Evening(unsigned seed, bool everything) : mScreen("redraw"), mRandom(seed) {
    mScreen.composeFrames(everything);
    mScreen.status([](PlatformState& state) {
      state.ActiveGame = GAME_MENU;
      state.CurrentBet = 100;
      state.ExtraData = paneldata::setup(
        {paneldata::page("paytable", {Text{}}), paneldata::page("paytableBonus", {Text{}})}, 20, -1);
    });
    mLevels = paneldata::levels(4);
    jackpots();
  }

  // What the window has shown after each of so many frames.
  std::vector<uint64_t> live(int frames) {
    std::vector<uint64_t> shown;
    while (static_cast<int>(shown.size()) < frames) {
      happen();
      settle();
      // Back to the levels, which have most that moves.
      if (number(0, 3) == 0) {
        mScreen.send(T_GAME_EXITED);
        mScreen.send(T_INSTRUCTIONS, paneldata::texts({}));
      }
      for (int i = number(1, 12); i > 0; --i) {
        std::srand(mRandom());  // which the panel takes its chances from, also while it waits for pictures
        mScreen.skip(static_cast<Uint32>(number(0, 3) ? 16 : number(1, 400)));
        shown.push_back(mScreen.shown());
      }
    }
    return shown;
  }

 private:
  int number(int least, int most) {
    return least + static_cast<int>(mRandom() % static_cast<unsigned>(most - least + 1));
  }
  JackpotsData& anyLevel() { return mLevels[static_cast<size_t>(number(0, 3))]; }
  void jackpots() { mScreen.send(T_JACKPOT_DATA, paneldata::levelsValue(mLevels)); }

  // Pictures that are being decoded come at a moment that the machine chooses: the evening waits for them.
  void settle() {
    mScreen.joinSprites();
    ASSERT_TRUE(TAsyncJob::WaitForNone(60000));
    for (int i = 0; i < 3; ++i) mScreen.frame();
    ASSERT_TRUE(TAsyncJob::WaitForNone(60000));
    for (int i = 0; i < 3; ++i) mScreen.frame();
  }

  void happen() {
    static constexpr const char* kGames[] = {"Reels", "Wheels"};
    switch (number(0, 15)) {
      case 0:
      case 1:
      case 2:
        for (JackpotsData& level : mLevels) level.potValue += number(0, 5000);
        return jackpots();
      case 3:
        anyLevel().status = "WIN";
        return jackpots();
      case 4:
        for (JackpotsData& level : mLevels) level.status = "";
        return jackpots();
      case 5:
        anyLevel().LastWinData = "LAST WIN " + std::to_string(number(1, 99999));
        return jackpots();
      case 6:
        mLevels = paneldata::levels(number(0, 1) ? 4 : number(1, 4));
        jackpots();
        mLevels = paneldata::levels(4);
        return;
      case 7:
        return mScreen.send(T_GAME_LOADED, gameValue(kGames[number(0, 1)], GAMETYPE_VESPERA_SLOTGAME));
      case 8:
        return mScreen.send(T_GAME_EXITED);
      case 9:
        return mScreen.send(T_PAYTABLE_STATE, value_int(number(0, 3)));
      case 10:
        return mScreen.send(T_BET_LIMITS, paneldata::bets(number(1, 9) * 100, 20, 2000));
      case 11:
        return mScreen.send(T_LANGUAGE, paneldata::texts({number(0, 1) ? "en" : "sl", "MIN", "MAX", "A", "B"}));
      case 12:
        return mScreen.send(T_INSTRUCTIONS, number(0, 1)
                                              ? paneldata::texts({"SPIN", "", std::to_string(number(1, 9))})
                                              : paneldata::texts({}));
      case 13:
        return mScreen.send(T_DEMO_MODE, value_boolean(number(0, 1) != 0));
      case 14:
        return mScreen.send(number(0, 1) ? T_JACKPOT_ERROR : T_INTEGRITY_DATA,
                            value_string(number(0, 1) ? "X 1" : ""));
      default:
        if (number(0, 2) == 0) return mScreen.screen().TexturesLost();
        mScreen.send(T_GAME_LOADED, gameValue("Wheel", GAMETYPE_ROULETTE));
        mScreen.skip(40);
        return mScreen.send(T_GAME_EXITED);
    }
  }

  TopScreenHarness mScreen;
  std::mt19937 mRandom;
  std::vector<JackpotsData> mLevels;
};

}  // namespace

TEST(RedrawOfChanges, ShowsWhatDrawingEverythingShows) {
  // Grounds of the screen's size, as skins have them: a scaled one would have to be drawn whole each time.
  const std::string skin = TopScreenHarness("redraw").folder() + "VESPERA/TOP_SKIN/";
  testfont::writePicture(skin + "Background.png", 1920, 1080, {20, 30, 60, 255});
  testfont::writePicture(skin + "ClientDemo.png", 1920, 1080, {90, 0, 60, 40});
  const char* const told = std::getenv("REDRAW_FRAMES");
  const int frames = told ? std::atoi(told) : 150;
  for (unsigned seed = 1; seed <= 2; ++seed) {
    std::array<std::vector<uint64_t>, 2> shown;
    for (const bool everything : {false, true}) {
      Evening evening(seed, everything);
      shown[everything] = evening.live(frames);
      if (testing::Test::HasFatalFailure()) return;
    }
    ASSERT_EQ(shown[0].size(), shown[1].size());
    size_t pictures = 0;
    for (size_t i = 0; i < shown[0].size(); ++i) {
      ASSERT_EQ(shown[1][i], shown[0][i]) << "evening " << seed << ", frame " << i;
      pictures += i > 0 && shown[0][i] != shown[0][i - 1];
    }
    EXPECT_GT(pictures, shown[0].size() / 5) << "an evening in which something happens";
    EXPECT_LT(pictures, shown[0].size());
  }
}
