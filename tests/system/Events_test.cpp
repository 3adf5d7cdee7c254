// What each event of the platform does to the screen.
#include "tests/system/PanelHarness.h"

namespace systest {
namespace {

const std::string JACKPOTS = "background title gold";
const std::string BUTTONS_SHOWN = "background button-1 button-2-off low=1345";
const std::string GAME_A = "background title gold overlay-A hint=345";
const std::string GAME_B = "background title gold overlay-B hint=345";
const std::string PAGE_A = "paper-A page-A1";

const Json BUTTONS = {"1", "", "3", "4", "5", "6", "7", "8"};

// Where the texts of the least and of the highest bet stand, in pure green.
const Box LEAST_BET{10, 1030, 300, 40}, MOST_BET{1610, 1030, 300, 40};

Json gameNamed(const char* name, int type) { return {{"ID", 9}, {"Name", name}, {"Type", type}}; }

Json bets(int64_t current, int64_t least, int64_t most) {
  return {{"current", current}, {"min", least}, {"max", most}};
}

class Events : public PanelTest {
 protected:
  struct Row {
    const char* name;
    int id;
    Json value;
    std::string due;
  };

  // Sends each event in turn and compares what is shown after it. What is due again must be kept.
  void expectRows(const std::vector<Row>& rows) {
    std::string before = screen();
    for (const Row& row : rows) {
      SCOPED_TRACE(std::to_string(row.id) + ", " + row.name);
      event(row.id, row.value);
      ASSERT_TRUE(row.due == before ? keeps(row.due) : shows(row.due));
      before = row.due;
    }
  }

  int failedEvents(int id) {
    return logged("KSL: Exception thrown handling platform event (" + std::to_string(id) + ")");
  }
};

// 100, 101, 105, and 102 to see whether frames are drawn.
TEST_F(Events, GamesLoadRunAndEnd) {
  startOnTheMenu();
  if (HasFatalFailure()) return;
  expectRows({
    {"game loads", 100, gameNamed("A", kSlot), GAME_A},
    {"another has loaded", 101, gameNamed("B", kSlot), GAME_B},
    {"roulette loads, the picture stays", 100, gameNamed("R", kRoulette), GAME_B},
    {"and is drawn", 102, true, "demo title gold overlay-B hint=345"},
    {"roulette has loaded", 101, gameNamed("R", kRoulette), "demo title gold overlay-B hint=345"},
    {"nothing is drawn", 102, false, "demo title gold overlay-B hint=345"},
    {"loading does not start the drawing", 100, gameNamed("R", kRoulette), "demo title gold overlay-B hint=345"},
    {"game left", 105, nullptr, JACKPOTS},
    {"game of another type", 101, gameNamed("X", 77), JACKPOTS},
    {"game without files", 101, gameNamed("C", kSlot), JACKPOTS + " hint=345"},
    {"game left again", 105, nullptr, JACKPOTS},
  });
  rawEvent(101, {{"ID", 9}, {"Name", "A"}});
  rawEvent(102, 1);
  EXPECT_TRUE(keeps(JACKPOTS));
  EXPECT_EQ(failedEvents(101), 1);
  EXPECT_EQ(failedEvents(102), 1);
}

// 103, 108, 109 and 110: integrity before error before levels, and only 103 is unescaped.
TEST_F(Events, TextsTakeTheLevelsAwayInTheirOrder) {
  startOnTheMenu();
  if (HasFatalFailure()) return;
  const Json two = {level(0, "ACTIVE"), level(1, "ACTIVE")};
  expectRows({
    {"error", 108, "1&amp;2", "background logo low=1xxxxx2"},
    {"levels wait for its end", 110, two, "background logo low=1xxxxx2"},
    {"so does a refresh", 109, nullptr, "background logo low=1xxxxx2"},
    {"another error", 108, "33", "background logo low=33"},
    {"its end", 108, "", "background title upper-gold lower-silver"},
    {"integrity text", 103, "1&amp;2", "background logo high=1x2"},
    {"an error waits for its end", 108, "44", "background logo high=1x2"},
    {"one level waits too", 110, Json::array({level(0, "ACTIVE")}), "background logo high=1x2"},
    {"its end brings the error", 103, "", "background logo low=44"},
    {"a refresh changes nothing", 109, nullptr, "background logo low=44"},
    {"integrity text over the error", 103, "5", "background logo high=5 low=44"},
    {"its end leaves the error", 103, "", "background logo low=44"},
    {"the error's end", 108, "", JACKPOTS},
    {"integrity text over the level", 103, "7", "background logo high=7"},
    {"its end brings the level", 103, "", JACKPOTS},
    {"instructions", 106, BUTTONS, BUTTONS_SHOWN},
    {"integrity text over them", 103, "6", "background button-1 button-2-off high=6 low=1345"},
    {"its end", 103, "", BUTTONS_SHOWN},
  });
  rawEvent(108, 5);
  EXPECT_TRUE(keeps(BUTTONS_SHOWN));
  EXPECT_EQ(failedEvents(108), 1);
}

// 104, 107 and 111 are decisions each, and all three are on the paytable's pages.
TEST_F(Events, PaytableFollowsPageBetsAndSetup) {
  set({{"ActiveGame", gameNamed("A", kSlot)}});
  startProgramHere();
  ASSERT_TRUE(shows(GAME_A));
  expectRows({
    {"page", 107, 1, PAGE_A + " hint=345"},
    {"setup", 111, prizes(4), PAGE_A + " prize=0 hint=345"},
    {"bet", 104, bets(8, 1, 9), PAGE_A + " prize=24 hint=345"},
    {"cost of a bet", 111, prizes(2), PAGE_A + " prize=48 hint=345"},
    {"second page", 107, 2, "paper-A page-A2 prize=24 hint=345"},
    {"its bet", 104, bets(4, 1, 9), "paper-A page-A2 prize=12 hint=345"},
    {"first page", 107, 1, PAGE_A + " prize=24 hint=345"},
  });
  if (HasFatalFailure()) return;
  // Each limit has its own text. A field of a wrong type leaves itself and those behind it.
  Picture least = mX.picture(LEAST_BET), most = mX.picture(MOST_BET);
  EXPECT_GT(least.count({0, 0, 300, 40}, {0, 255, 0}), 100);
  EXPECT_GT(most.count({0, 0, 300, 40}, {0, 255, 0}), 100);
  rawEvent(104, {{"current", {{"$i8", 6}}}, {"min", "no number"}, {"max", {{"$i8", 77}}}});
  EXPECT_TRUE(shows(PAGE_A + " prize=36 hint=345"));
  EXPECT_TRUE(mX.picture(LEAST_BET) == least);
  EXPECT_TRUE(mX.picture(MOST_BET) == most);
  event(104, bets(6, 2, 9));
  EXPECT_TRUE(within(5000, [&] { return mX.picture(LEAST_BET) != least; }));
  EXPECT_TRUE(mX.picture(MOST_BET) == most);
  least = mX.picture(LEAST_BET);
  event(104, bets(6, 2, 10));
  EXPECT_TRUE(within(5000, [&] { return mX.picture(MOST_BET) != most; }));
  EXPECT_TRUE(mX.picture(LEAST_BET) == least);

  rawEvent(107, "1");
  rawEvent(111, 5);
  EXPECT_TRUE(keeps(PAGE_A + " prize=36 hint=345"));
  EXPECT_EQ(failedEvents(107), 1);
  EXPECT_EQ(failedEvents(111), 1);
  event(107, 0);
  EXPECT_TRUE(shows(GAME_A));
}

// 106 acts at once, whatever the game; 112 too, but the pages of the language come with the next decision.
TEST_F(Events, InstructionsAndLanguageComeWhateverTheGame) {
  set({{"ActiveGame", gameNamed("B", kSlot)}});
  startProgramHere();
  ASSERT_TRUE(shows(GAME_B));
  const std::string shown = "background button-1 button-2-off low=1345 hint=345";
  expectRows({
    {"instructions over a game", 106, BUTTONS, shown},
    {"fewer leave the other buttons", 106, {"", "2"}, "background button-1-off button-2 low=345 hint=345"},
    {"the next decision goes back", 104, bets(1, 1, 1), GAME_B},
    {"a paytable", 107, 1, "paper-B page-B1 hint=345"},
    {"instructions over it", 106, BUTTONS, shown},
    {"no instructions, whatever is due", 106, Json::array(), GAME_B},
    {"the paytable is still due", 104, bets(1, 1, 1), "paper-B page-B1 hint=345"},
    {"language", 112, {"SI", "a", "b", "21", ""}, "paper-B page-B1 hint=21"},
    {"its pages with the next decision", 104, bets(2, 1, 1), "paper-B page-SI1 hint=21"},
    {"a language without pages", 112, {"DE", "a", "b", "53", ""}, "paper-B page-SI1 hint=53"},
    {"has the common ones", 104, bets(3, 1, 1), "paper-B page-B1 hint=53"},
    {"too few messages", 112, {"SI", "a", "b"}, "paper-B page-B1 hint=53"},
  });
  EXPECT_EQ(logged("The platform sent 3 language messages, 4 are needed: the hint line stays."), 1);
  rawEvent(106, "1");
  rawEvent(112, {1, 2, 3, 4, 5});
  EXPECT_TRUE(keeps("paper-B page-B1 hint=53"));
  EXPECT_EQ(failedEvents(106), 1);
  EXPECT_EQ(failedEvents(112), 1);
}

// 110 replaces the levels and decides nothing; 109 shows what the platform has said; no other number does anything.
TEST_F(Events, LevelsAreReplacedAndOtherNumbersChangeNothing) {
  startOnTheMenu();
  if (HasFatalFailure()) return;
  const Json one = Json::array({level(0, "ACTIVE")}), two = {level(0, "ACTIVE"), level(1, "ACTIVE")};
  expectRows({
    {"two levels", 110, two, "background title upper-gold lower-silver"},
    {"none", 110, Json::array(), "background logo"},
    {"one", 110, one, JACKPOTS},
    {"a win", 110, Json::array({level(0, "WIN")}), "dark-title"},
    {"its end", 110, one, JACKPOTS},
  });
  if (HasFatalFailure()) return;
  Json broken = {level(0, "ACTIVE"), level(1, "ACTIVE"), level(2, "ACTIVE")};
  broken[2]["Mode"] = "no number";
  for (Json& item : broken)
    for (const char* key : {"CurrentPot", "MinPot", "MaxPot", "MinBet", "MaxBet"}) item[key] = {{"$i8", 0}};
  rawEvent(110, broken);
  EXPECT_TRUE(keeps(JACKPOTS));
  EXPECT_EQ(failedEvents(110), 1);
  event(109, nullptr);
  EXPECT_TRUE(shows("background title upper-gold lower-silver"));

  const Picture before = mX.picture();
  for (const int id : {-1, 0, 1, 3, 12, 13, 14, 99, 113, 114, 200, 1100})
    for (const Json& value : {Json(), Json(true), Json(1), Json("1"), Json::array({"1"}), gameNamed("A", kSlot)})
      rawEvent(id, value);
  EXPECT_TRUE(keeps("background title upper-gold lower-silver"));
  EXPECT_TRUE(mX.picture() == before);
  EXPECT_EQ(logged("Exception thrown handling platform event"), 1);
  event(105, nullptr);
  EXPECT_TRUE(keeps("background title upper-gold lower-silver"));
}

}  // namespace
}  // namespace systest
