// No number of the service is too large, too small or too odd for the paytables.
#include <SDL_ttf.h>
#include <limits>

#include "tests/vesperatopscreen/PaytablesFixture.h"

using namespace paytabletest;

namespace {

constexpr int kLeast = std::numeric_limits<int>::min(), kMost = std::numeric_limits<int>::max();
constexpr int64_t kLeast64 = std::numeric_limits<int64_t>::min(), kMost64 = std::numeric_limits<int64_t>::max();

class PaytableNumbers : public Paytables {
 protected:
  PaytableNumbers() : Paytables("paytablenumbers") {}
};

}  // namespace

TEST(PaytableWin, TakesAnyNumbers) {
  const struct {
    int win;
    int64_t bet;
    int cost;
    int line, scatter;
  } rows[] = {{1, kLeast64, -1, 0, 0},
              {-1, kLeast64, -1, 0, 0},
              {1, kLeast64, 1, 0, 0},
              {1, kMost64, 1, -1, -1},
              {1, kMost64, -1, 1, -1},
              {kLeast, 1, -1, kLeast, kLeast},
              {kLeast, 1, 1, kLeast, kLeast},
              {kLeast, -1, 1, kLeast, kLeast},
              {kMost, 1, -1, -kMost, kMost},
              {7, 10, -1, -70, 70},
              {7, 10, -20, -3, 70},
              {-7, 10, -20, 3, -70},
              {7, 10, kLeast, 0, 70},
              {7, 10, kMost, 0, 70},
              {1, int64_t{1} << 33, 4, kLeast, 0},
              {1, (int64_t{1} << 33) + 5, 1, 5, 5},
              {1, kLeast64, 0, 0, 0},
              {0, kLeast64, kLeast, 0, 0}};
  for (const auto& row : rows) {
    SCOPED_TRACE(testing::Message() << row.win << " * " << row.bet << " / " << row.cost);
    EXPECT_EQ(row.scatter, paytableWin({"scatter", row.win}, row.bet, row.cost));
    EXPECT_EQ(row.scatter, paytableWin({"consecutive", row.win}, row.bet, row.cost));
    EXPECT_EQ(row.line, paytableWin({"line", row.win}, row.bet, row.cost));
  }
  const int ints[] = {kLeast, kLeast + 1, -65536, -2, -1, 0, 1, 2, 3, 65536, kMost - 1, kMost};
  const int64_t longs[] = {kLeast64, kLeast64 + 1, kLeast,           -2,          -1,     0, 1,
                           2,        kMost,        int64_t{1} << 32, kMost64 - 1, kMost64};
  for (int win : ints)
    for (int64_t bet : longs)
      for (int cost : ints)
        for (const char* mode : {"line", "scatter"}) paytableWin({mode, win}, bet, cost);
}

TEST_F(PaytableNumbers, TheLeastBetAtACostOfMinusOneIsShown) {
  xmlrpc_c::cstruct extra =
    setup({page("paytable", {text("A", "line", 1, 3), text("S", "scatter", 1, 3)})}, -1, -1);
  extra.insert({"betCost", value_int(-1)});
  open(extra);
  screen.send(T_BET_LIMITS, paneldata::bets(kLeast64, kLeast64, kMost64));
  EXPECT_EQ("0", shown("A_3"));
  EXPECT_EQ("0", shown("S_3"));
  EXPECT_EQ("MIN: -9.223.372.036.854.775.808", screen.find<Tlabel>(kPanel + "minBetLabel")->GetText());
  EXPECT_EQ("MAX: 9.223.372.036.854.775.808 ", screen.find<Tlabel>(kPanel + "maxBetLabel")->GetText());
}

TEST_F(PaytableNumbers, AnyPlaceSizeAndColourOfATextIsDrawn) {
  for (int number : {kLeast, kLeast + 1, -100000, -1, 0, 1, 100000, kMost - 1, kMost})
    for (int alignedLeft : {0, 1}) {
      SCOPED_TRACE(number);
      Text all = text("A", "line", number, number);
      all.x = all.y = all.w = all.h = number;
      all.color = number;
      all.fontSize = number;
      all.alignedLeft = alignedLeft;
      Text apart = text("B", "scatter", number, 3);
      apart.x = number;
      apart.y = ~number;
      apart.w = number;
      apart.h = ~number;
      apart.fontSize = number;
      open(setup({page("paytable", {apart, all})}, -1, -1));
      screen.skip(20);
      EXPECT_NE("no label", shown("A_" + std::to_string(number)));
      EXPECT_NE("no label", shown("B_3"));
    }
}

TEST_F(PaytableNumbers, AnyNumberOfAPageIsAnswered) {
  open(setup({page("paytable", {Text{}})}, 20, -1));
  for (int number : {kLeast, -1, 4, kMost}) {
    SCOPED_TRACE(number);
    turnTo(number);
    EXPECT_EQ(screen.find("pPaytablesPanel/Background")->GetTargetTexture(), texture());
    EXPECT_TRUE(screen.visible(kPage + "A_3"));
  }
}

TEST_F(PaytableNumbers, NoBetLabelIsHigherThanTheScreen) {
  for (int size : {kMost, 100000, 1081, 1080, 24}) {
    SCOPED_TRACE(size);
    Text huge;
    huge.fontSize = size;
    open(setup({page("paytable", {huge})}, 20, -1));
    auto* minimum = screen.find<Tlabel>(kPanel + "minBetLabel");
    ASSERT_NE(nullptr, minimum);
    ASSERT_NE(nullptr, minimum->GetFont());
    TTF_Font* const same = TTF_OpenFont("Games/Reels/Icons/digits.ttf", std::min(size, 1080));
    EXPECT_EQ(TTF_FontHeight(same), TTF_FontHeight(minimum->GetFont()));
    TTF_CloseFont(same);
  }
}
