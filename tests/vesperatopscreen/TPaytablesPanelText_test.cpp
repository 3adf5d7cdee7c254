// The prizes over the pages.
#include <SDL_ttf.h>
#include <gtest/gtest.h>
#include <limits>

#include "tests/vesperatopscreen/PaytablesFixture.h"

using namespace paytabletest;

namespace {

class PaytableTexts : public Paytables {
 protected:
  explicit PaytableTexts(int divisor = 4) : Paytables("paytabletexts", divisor) {}
};

class PaytablePictures : public PaytableTexts {
 protected:
  PaytablePictures() : PaytableTexts(1) {}
};

// A setup as a game sends it, for both pages with texts.
xmlrpc_c::cstruct fullSetup() {
  std::vector<Text> first, bonus;
  const struct {
    const char* symbol;
    int color, altColor, wins[3];
  } rows[] = {{"SEVEN", 0xFFC000, -1, {1000, 200, 50}},
              {"BELL", 0xFFFFFF, 0x40C0FE, {400, 100, 20}},
              {"PLUM", 0xFFFFFF, 0xFF40C0, {150, 40, 10}}};
  int y = 60;
  for (const auto& row : rows) {
    for (int i = 0; i < 3; ++i) {
      Text entry = text(row.symbol, "line", row.wins[i], 5 - i);
      entry.x = 60 + 210 * i;
      entry.y = y;
      entry.color = row.color;
      entry.altColor = row.altColor;
      first.push_back(entry);
    }
    y += 90;
  }
  Text star = text("STAR", "scatter", 5, 3);
  star.x = 60;
  star.y = 330;
  star.alignedLeft = 1;
  star.color = 0x40FF80;
  first.push_back(star);
  Text free = text("FREE", "consecutive", 2, 5);
  free.x = 120;
  free.y = 200;
  free.w = 300;
  bonus.push_back(free);
  return setup({page("paytable", first), page("paytableBonus", bonus), page("rules", {text("RULE", "line", 1, 1)})},
               20, 20);
}

}  // namespace

TEST(PaytableWin, MultipliesByTheBetAndDividesLineWins) {
  const struct {
    const char* mode;
    int win;
    int64_t bet;
    int cost, shown;
  } rows[] = {{"line", 50, 100, 20, 250},
              {"scatter", 5, 100, 20, 500},
              {"consecutive", 5, 100, 20, 500},
              {"line", 7, 10, 20, 3},
              {"line", -7, 10, 20, -3},
              {"Scatter", 5, 100, 20, 25},
              {"", 1, 100, 1, 100},
              {"line", 50, 100, 0, 0},
              {"scatter", 50, 100, 0, 5000},
              {"line", 1000000, 10000, 100, 100000000}};
  for (const auto& row : rows)
    EXPECT_EQ(row.shown, paytableWin({row.mode, row.win}, row.bet, row.cost)) << row.mode << row.win;
}

TEST_F(PaytableTexts, AreNamedBySymbolAndNumberAndShowThePrizeAtTheBet) {
  open(setup({page("paytable", {text("A", "line", 50, 3), text("A", "line", 200, 4), text("S", "scatter", 5, 3)})},
             20, -1));
  EXPECT_EQ("250", shown("A_3"));
  EXPECT_EQ("1.000", shown("A_4"));
  EXPECT_EQ("500", shown("S_3"));
  screen.send(T_BET_LIMITS, paneldata::bets(1000, 20, 2000));
  EXPECT_EQ("2.500", shown("A_3"));
  EXPECT_EQ("10.000", shown("A_4"));
  EXPECT_EQ("5.000", shown("S_3"));
}

TEST_F(PaytableTexts, TheCostOfABetIsTheNumberOfLinesUnlessItIsGiven) {
  const struct {
    int paylines, betCost;
    const char* shown;
  } rows[] = {{-1, -1, "5.000"}, {10, -1, "500"}, {10, 25, "200"}, {-1, 50, "100"}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.shown);
    open(setup({page("paytable", {text("A", "line", 50, 3)})}, row.paylines, row.betCost));
    EXPECT_EQ(row.shown, shown("A_3"));
  }
}

TEST_F(PaytableTexts, ACostOfZeroShowsZeroForLineWinsAndIsLoggedOnce) {
  open(setup({page("paytable", {text("A", "line", 50, 3), text("S", "scatter", 5, 3)})}, 20, 0));
  screen.send(T_BET_LIMITS, paneldata::bets(1000, 20, 2000));
  EXPECT_EQ("0", shown("A_3"));
  EXPECT_EQ("5.000", shown("S_3"));
  EXPECT_EQ(1u, screen.app().linesOf("4|The bet cost of game 'Reels' is 0: its line wins show 0."));
}

TEST_F(PaytableTexts, TheBetLabelsStandAtTheBottomWithTheirCaptions) {
  Text small = text("B", "line", 1, 3);
  small.fontSize = 30;
  open(setup({page("paytable", {text("A", "line", 50, 3), small})}, 20, -1));
  auto *minimum = screen.find<Tlabel>(kPanel + "minBetLabel"),
       *maximum = screen.find<Tlabel>(kPanel + "maxBetLabel");
  ASSERT_NE(nullptr, minimum);
  ASSERT_NE(nullptr, maximum);
  EXPECT_EQ("MIN: 20", minimum->GetText());
  EXPECT_EQ("MAX: 2.000 ", maximum->GetText()) << "the trailing blank belongs to the text";
  EXPECT_EQ(10, minimum->getX());
  EXPECT_EQ(1920 - 10, maximum->getX() + maximum->getWidth());
  for (Tlabel* label : {minimum, maximum})
    EXPECT_NEAR(1080 - 30 - 10 + 15, label->getY() + label->getHeight() / 2, 1) << "by the size of the last text";
  EXPECT_EQ(minimum->GetFont(), maximum->GetFont());
  auto* prizes = screen.find<TGlyphLabel>(kPanel + "prizeLabel");
  ASSERT_NE(nullptr, prizes);
  EXPECT_EQ("PRIZES ARE SHOWN AT THE PRESENT BET", prizes->GetText());
  EXPECT_EQ(1055, prizes->getY());
  screen.send(T_BET_LIMITS, paneldata::bets(100, 40, 4000));
  EXPECT_EQ("MIN: 40", minimum->GetText());
  EXPECT_EQ("MAX: 4.000 ", maximum->GetText());
}

TEST_F(PaytableTexts, EachPageShowsItsOwnTexts) {
  open(fullSetup());
  EXPECT_EQ(nullptr, screen.find(kPage + "RULE_1")) << "a page of another name is not built";
  const auto expectShown = [this](bool first, bool bonus, bool prizes) {
    EXPECT_EQ(first, screen.visible(kPage + "SEVEN_5"));
    EXPECT_EQ(first, screen.visible(kPanel + "minBetLabel"));
    EXPECT_EQ(first, screen.visible(kPanel + "maxBetLabel"));
    EXPECT_EQ(bonus, screen.visible(kPage + "FREE_5"));
    EXPECT_EQ(prizes, screen.visible(kPanel + "prizeLabel"));
  };
  {
    SCOPED_TRACE("page 1");
    expectShown(true, false, false);  // the prize text obeys the last page that has it
  }
  screen.send(T_PAYTABLE_STATE, value_int(2));
  {
    SCOPED_TRACE("page 2");
    expectShown(false, true, true);
  }
  screen.send(T_PAYTABLE_STATE, value_int(3));
  {
    SCOPED_TRACE("page 3");
    expectShown(false, false, false);
  }
  screen.send(T_PAYTABLE_STATE, value_int(1));
  {
    SCOPED_TRACE("page 1 again");
    expectShown(true, false, false);
  }
}

TEST_F(PaytableTexts, ThePrizeTextStandsOnTheFirstPageWhenThatIsAlone) {
  open(setup({page("paytable", {text("A", "line", 50, 3)})}, 20, -1));
  EXPECT_TRUE(screen.visible(kPanel + "prizeLabel")) << "the empty list of the other pages has no say";
  screen.send(T_PAYTABLE_STATE, value_int(2));
  EXPECT_FALSE(screen.visible(kPanel + "prizeLabel"));
}

TEST_F(PaytableTexts, NoSetupIsToldAndThePagesShowAllTheSame) {
  const std::string output = opened({});
  EXPECT_NE(std::string::npos, output.find("WARNING: Could not create paytable because no paytable setup data was "
                                           "recieved!\n"));
  EXPECT_NE(nullptr, screen.find("pPaytablesPanel/HelpScreen")->GetTargetTexture());
  EXPECT_EQ(nullptr, screen.find(kPanel + "prizeLabel"));
  EXPECT_NE(std::string::npos, opened(setup({}, 20, -1)).find("no paytable setup data")) << "an empty one is none";
  EXPECT_EQ(std::string::npos, opened(setup({page("paytable", {Text{}})}, 20, -1)).find("no paytable setup data"));
  EXPECT_EQ("250", shown("A_3")) << "the setup may come after the pages";
}

TEST_F(PaytableTexts, AMissingFontAndAMissingPlaceAreToldAndTheLabelStays) {
  Text bad = text("A", "line", 50, 3);
  bad.font = "nofont";
  bad.x = bad.y = 0;
  const std::string output = opened(setup({page("paytable", {bad})}, 20, -1));
  EXPECT_NE(std::string::npos, output.find("WARNING: Could not find font \"Games/Reels/Icons/nofont\"!\n"));
  EXPECT_NE(std::string::npos, output.find("WARNING: Could not find position for symbol \"A_3\"!\n"));
  EXPECT_EQ("250", shown("A_3"));
  ASSERT_NE(nullptr, screen.find<Tlabel>(kPanel + "minBetLabel"));
  EXPECT_EQ(nullptr, screen.find<Tlabel>(kPanel + "minBetLabel")->GetFont()) << "no .ttf and no .otf";
  panel()->clearPaytable();
}

TEST_F(PaytableTexts, AMissingKeyBuildsNothingAndTheNextSetupStartsAfresh) {
  for (const char* key :
       {"symbol", "mode", "win", "font", "fontSize", "occurs", "alignedLeft", "color", "x", "y", "w", "h"}) {
    SCOPED_TRACE(key);
    xmlrpc_c::cstruct broken = text("B", "line", 50, 3).value().cvalue();
    broken.erase(key);
    const xmlrpc_c::value good = text("A", "line", 50, 3).value();
    const xmlrpc_c::value texts = xmlrpc_c::value_array(xmlrpc_c::carray{good, xmlrpc_c::value_struct(broken)});
    const xmlrpc_c::value record =
      xmlrpc_c::value_struct({{"name", xmlrpc_c::value_string("paytable")}, {"texts", texts}});
    screen.send(T_EXTRA_DATA, xmlrpc_c::value_struct(setup({record}, 20, -1)));
    screen.send(T_GAME_LOADED, gameValue("Reels", GAMETYPE_VESPERA_SLOTGAME));
    screen.send(T_PAYTABLE_STATE, value_int(1));
    screen.until([this] { return screen.find("pPaytablesPanel/Background")->GetTargetTexture() != nullptr; });
    EXPECT_THROW(panel()->createPaytable("Reels"), std::exception);
    EXPECT_EQ("no label", shown("A_3")) << "half a page would stand in the way";
    EXPECT_EQ(nullptr, screen.find(kPanel + "prizeLabel"));
  }
  open(setup({page("paytable", {text("A", "line", 50, 3)})}, 20, -1));
  EXPECT_EQ("250", shown("A_3"));
}

TEST_F(PaytableTexts, TheSameTextTwiceStandsOnce) {
  const Text same = text("A", "line", 50, 3);
  open(setup({page("paytable", {same, same}), page("paytableBonus", {same}), page("paytable", {same})}, 20, -1));
  EXPECT_EQ("250", shown("A_3"));
  EXPECT_TRUE(screen.visible(kPage + "A_3"));
  EXPECT_NE(nullptr, screen.find(kPanel + "maxBetLabel"));
  panel()->clearPaytable();
  EXPECT_EQ("no label", shown("A_3"));
}

TEST_F(PaytableTexts, APrizeStandsOnlyBesideItsLabel) {
  open(setup({page("paytable", {text("A", "line", 50, 3), text("A", "line", 900, 3)}),
              page("paytableBonus", {text("A", "scatter", 70, 3), text("B", "line", 10, 3)})},
             20, -1));
  EXPECT_EQ("250", shown("A_3")) << "the first text of a name stays, with its own prize";
  screen.send(T_BET_LIMITS, paneldata::bets(1000, 20, 2000));
  EXPECT_EQ("2.500", shown("A_3"));
  EXPECT_EQ("500", shown("B_3"));
  turnTo(2);
  EXPECT_FALSE(screen.visible(kPage + "A_3"));
}

TEST_F(PaytableTexts, ASetupOfOtherPagesAloneLeavesNothingBehindAClear) {
  open(setup({page("rules", {text("A", "line", 50, 3)})}, 20, -1));
  EXPECT_NE(nullptr, screen.find(kPanel + "prizeLabel"));
  panel()->clearPaytable();
  EXPECT_EQ(nullptr, screen.find(kPanel + "prizeLabel"));
}

TEST_F(PaytableTexts, AShortListOfMessagesGivesEmptyCaptions) {
  screen.send(T_LANGUAGE, paneldata::texts({"", "MIN"}));
  open(setup({page("paytable", {text("A", "line", 50, 3)})}, 20, -1));
  EXPECT_EQ("MIN: 20", screen.find<Tlabel>(kPanel + "minBetLabel")->GetText());
  EXPECT_EQ(": 2.000 ", screen.find<Tlabel>(kPanel + "maxBetLabel")->GetText());
  EXPECT_EQ("", screen.find<TGlyphLabel>(kPanel + "prizeLabel")->GetText());
}

// The colours are those of the last text of the page; the bet labels show them.
TEST_F(PaytablePictures, OnlyPureWhiteGivesWayToTheOtherColour) {
  const struct {
    int color, altColor;
    Uint32 seen;
  } rows[] = {{0xFFFFFF, 0x10C020, 0x10C020}, {0xFFFFFF, -1, 0xFFFFFF},       {0xFFFFFF, 0xFF0000, 0xFFFFFF},
              {0xFFFFFF, 0x00FF00, 0xFFFFFF}, {0xFFFFFF, 0x0000FF, 0xFFFFFF}, {0xFFFFFE, 0x10C020, 0xFFFFFE}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.seen);
    panel()->clearPaytable();
    Text last = text("A", "line", 50, 3);
    last.color = row.color;
    last.altColor = row.altColor;
    last.fontSize = 40;
    open(setup({page("paytable", {last})}, 20, -1));
    int found = 0, black = 0;
    const auto stands = [&] {
      found = black = 0;
      for (int y = 1020; y < 1080; ++y)
        for (int x = 0; x < 200; ++x) {
          found += screen.pixel(x, y) == row.seen;
          black += screen.pixel(x, y) == 0;
        }
      return found > 100 && black > 20;
    };
    EXPECT_TRUE(screen.until(stands)) << found << " of the colour, " << black << " of the black shadow";
  }
}

TEST_F(PaytablePictures, AVeryDarkTextHasAGreyShadow) {
  Text last = text("A", "line", 50, 3);
  last.color = 0x100020;
  last.fontSize = 40;
  open(setup({page("paytable", {last})}, 20, -1));
  int grey = 0;
  for (int y = 1020; y < 1080; ++y)
    for (int x = 0; x < 200; ++x) grey += screen.pixel(x, y) == 0x808080;
  EXPECT_GT(grey, 20);
}

TEST_F(PaytablePictures, TheFirstPageLooksLikeThis) {
  open(fullSetup());
  EXPECT_EQ("", screen.picture("vesperatopscreen/Paytables_First", TopScreenHarness::whole(), 4));
  EXPECT_EQ("", screen.picture("vesperatopscreen/Paytables_FirstTexts", {610, 340, 700, 400}, 2));
}

TEST_F(PaytablePictures, TheBonusPageLooksLikeThis) {
  open(fullSetup());
  screen.send(T_PAYTABLE_STATE, value_int(2));
  screen.skip(100);
  EXPECT_EQ("", screen.picture("vesperatopscreen/Paytables_Bonus", TopScreenHarness::whole(), 4));
}

TEST_F(PaytablePictures, ThePrizesFollowTheBet) {
  open(fullSetup());
  screen.send(T_BET_LIMITS, paneldata::bets(2000, 40, 4000));
  screen.skip(100);
  EXPECT_EQ("", screen.picture("vesperatopscreen/Paytables_HigherBet", TopScreenHarness::whole(), 4));
}

TEST_F(PaytablePictures, TheOtherLanguageLooksLikeThis) {
  screen.send(T_LANGUAGE, paneldata::texts({"sl", "NAJMANJ", "NAJVEC", "STAVA", "DOBITKI PRI STAVI"}));
  open(fullSetup());
  EXPECT_EQ("", screen.picture("vesperatopscreen/Paytables_OtherLanguage", TopScreenHarness::whole(), 4));
}
