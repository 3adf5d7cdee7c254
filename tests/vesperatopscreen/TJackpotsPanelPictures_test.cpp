// The jackpot panel on the whole screen, in pictures.
#include "tests/vesperatopscreen/JackpotsFixture.h"

#include "vendelo-sdl2/MyUtils.h"

using namespace jackpottest;
using xmlrpc_c::value_string;

namespace {

// Small pictures of the whole screen: each state at a chosen tick.
class JackpotPictures : public Jackpots {
 protected:
  JackpotPictures() : Jackpots("jackpotpictures", 1) {}
  std::string whole(const char* name) {
    return screen.picture("vesperatopscreen/JackpotsPanel_" + std::string(name), TopScreenHarness::whole(), 4);
  }
  // Until the digits stand still and the sparkle has gone.
  void settle() {
    for (Uint32 milliseconds : {30000, 1000, 400}) screen.skip(milliseconds);
  }
};

}  // namespace

TEST_F(JackpotPictures, TheLevelsStandAtTheirPlaces) {
  const struct {
    const char* name;
    int count;
  } rows[] = {{"OneLevel", 1}, {"TwoLevels", 2}, {"ThreeLevels", 3}, {"FourLevels", 4}};
  for (const auto& row : rows) {
    data = levels(row.count);
    for (JackpotsData& level : data) level.mode = 2;
    start(data);
    settle();
    EXPECT_EQ("", whole(row.name));
    if (row.count == 1) {
      EXPECT_EQ("", screen.picture("vesperatopscreen/JackpotsPanel_Level", {40, 470, 940, 230}, 2));
    }
  }
}

TEST_F(JackpotPictures, TheCurrencyGoesLeftWithoutTheSign) {
  data = levels(4);
  for (JackpotsData& level : data) level.showCurrencySign = false;
  data[2].showCurrencySign = true;
  start(data);
  settle();
  EXPECT_EQ("", whole("CurrencyLeft"));
}

TEST_F(JackpotPictures, ThePlatformsDecimalSignStandsBeforeTheDecimals) {
  MyUtils::decimal_separator = '.';
  start(1);
  settle();
  EXPECT_EQ("", screen.picture("vesperatopscreen/JackpotsPanel_Level_DecimalPoint", {40, 470, 940, 230}, 2));
}

TEST_F(JackpotPictures, TheInfoBarScrolls) {
  start(1);
  const SDL_Rect bar{900, 540, 1020, 140};
  screen.skip(500);
  EXPECT_EQ("", screen.picture("vesperatopscreen/JackpotsPanel_InfoBar_Waiting", bar, 4));
  screen.skip(2000);
  EXPECT_EQ("", screen.picture("vesperatopscreen/JackpotsPanel_InfoBar_Scrolling", bar, 4));
}

TEST_F(JackpotPictures, TheSparkleCrossesItsFrame) {
  start(1);
  screen.skip(400);
  EXPECT_EQ("", screen.picture("vesperatopscreen/JackpotsPanel_Sparkle", {0, 380, 1040, 400}, 4));
}

TEST_F(JackpotPictures, AWinLooksLikeThis) {
  const char* const names[] = {"Gold", "Silver", "Bronze", "Emerald"};
  data = levels(4);
  data[3].mode = 2;
  start(data);
  settle();
  for (int id = 0; id < 4; ++id) {
    SCOPED_TRACE(names[id]);
    win(id, true);
    screen.skip(201);
    screen.skip(150);
    EXPECT_EQ("", whole((std::string("Win") + names[id] + "_Flying").c_str()));
    screen.skip(850);
    screen.skip(700);
    EXPECT_EQ("", whole((std::string("Win") + names[id] + "_Pulsing").c_str()));
    win(id, false);
    settle();
  }
  EXPECT_EQ("", whole("AfterTheWins"));
}

TEST_F(JackpotPictures, TheOverlaysLookLikeThis) {
  start(2);
  settle();
  screen.send(T_GAME_LOADED, gameValue("Reels", GAMETYPE_VESPERA_SLOTGAME));
  screen.joinSprites();
  screen.frame();
  screen.skip(400);
  EXPECT_EQ("", whole("Overlay"));
  data.clear();
  screen.send(T_GAME_EXITED);
  sendData();
  screen.send(T_GAME_LOADED, gameValue("Reels", GAMETYPE_VESPERA_SLOTGAME));
  screen.frame();
  EXPECT_EQ("", whole("StillOverlay"));
}

TEST_F(JackpotPictures, TheTextsLookLikeThis) {
  start(2);
  screen.send(T_JACKPOT_ERROR, value_string("METER FAULT"));
  screen.frame();
  EXPECT_EQ("", whole("Error"));
  screen.send(T_INTEGRITY_DATA, value_string("CRC 1234"));
  screen.frame();
  EXPECT_EQ("", whole("ErrorAndIntegrity"));
}

TEST_F(JackpotPictures, NoLevelsLookLikeThis) {
  start(0);
  EXPECT_EQ("", whole("NoLevels"));
}
