// Levels with guests.
#include <gtest/gtest.h>

#include "tools/kslsim/Simulator.h"
#include "tools/kslsim/UsualLevels.h"

namespace kslsim {
namespace {

struct Life {
  std::vector<int64_t> pots;
  std::vector<std::string> wins;  // "LastWinData" of each
  std::vector<int64_t> afterWin;  // pot when the status came back
};

// One level for half an hour, looked at each `pace` milliseconds.
Life lifeOf(const Json& level, const House::Guests& guests, int64_t pace) {
  Platform platform;
  platform.addLevel(level, -1, "");
  House house;
  house.open(0, guests, 0);
  Life out;
  std::string status = "ACTIVE";
  for (int64_t now = 0; now <= 30 * 60000; now += pace) {
    house.advance(now, platform);
    const Json& seen = platform.level(0, "");
    out.pots.push_back(seen["CurrentPot"].get<int64_t>());
    if (seen["Status"] != status) {
      status = seen["Status"].get<std::string>();
      if (status == "WIN")
        out.wins.push_back(seen["LastWinData"].get<std::string>());
      else
        out.afterWin.push_back(out.pots.back());
    }
  }
  return out;
}

const Json LEVEL{{"CurrentPot", 50000}, {"MinPot", 20000}, {"MaxPot", 60000}};
const House::Guests PLAY{300, 600, 100, 20, 6000, 5};  // every, bets, bet, share, show, seed

TEST(House, PotsGrowAreWonBetweenTheirLimitsAndStartAgain) {
  const Life life = lifeOf(LEVEL, PLAY, 300);
  ASSERT_GE(life.wins.size(), 2u);
  ASSERT_GE(life.afterWin.size(), 1u);
  for (int64_t pot : life.afterWin) EXPECT_NEAR(static_cast<double>(pot), 20000, 200);
  for (int64_t pot : life.pots) {
    EXPECT_GE(pot, 20000);
    EXPECT_LE(pot, 60000);
  }
  EXPECT_EQ(life.wins[0].substr(0, 10), "Last won: ");
  EXPECT_EQ(life.wins[0].substr(life.wins[0].size() - 4), " EUR");
  EXPECT_EQ(life.wins[0][life.wins[0].size() - 7], '.');
  EXPECT_NE(life.wins[0], life.wins[1]);
}

TEST(House, BetsComeIrregularlyAtTheRateThatWasOrdered) {
  const Json level{{"CurrentPot", 0}};
  const Life life = lifeOf(level, PLAY, 300);
  EXPECT_TRUE(life.wins.empty());
  std::set<int64_t> steps;
  for (size_t i = 1; i < life.pots.size(); ++i) {
    EXPECT_GE(life.pots[i], life.pots[i - 1]);
    steps.insert(life.pots[i] - life.pots[i - 1]);
  }
  EXPECT_GT(steps.size(), 10u);
  // 600 bets a minute of 100 times 32/12 on average, 2 % of it to the pot, for 30 minutes.
  const double expected = 30.0 * 600 * 100 * 32 / 12 * 0.02;
  EXPECT_NEAR(static_cast<double>(life.pots.back()), expected, expected / 20);
}

TEST(House, SameSeedIsTheSameLifeHoweverOftenItIsLookedAt) {
  const Life fine = lifeOf(LEVEL, PLAY, 300), coarse = lifeOf(LEVEL, PLAY, 900);
  for (size_t i = 0; i < coarse.pots.size(); ++i) ASSERT_EQ(coarse.pots[i], fine.pots[i * 3]) << i;
  House::Guests other = PLAY;
  other.seed = 6;
  EXPECT_NE(lifeOf(LEVEL, other, 300).pots, fine.pots);
}

TEST(House, WinStandsForItsTime) {
  int64_t now = 0;
  Simulator simulator([&now] { return now; });
  simulator.apply(
    {{"do", "add"}, {"level", {{"CurrentPot", 99}, {"MinPot", 10}, {"MaxPot", 100}, {"Status", "OPEN"}}}});
  simulator.apply({{"do", "play"}, {"id", 0}, {"bets", 1000000}, {"share", 1000}, {"every", 100}, {"show", 500}});
  const auto level = [&](int64_t time) {
    now = time;
    simulator.advance();
    return simulator.report()["state"]["JackpotData"][0];
  };
  EXPECT_EQ(level(99)["Status"], "OPEN");
  EXPECT_EQ(level(100)["Status"], "WIN");
  EXPECT_EQ(level(100)["CurrentPot"], 100);
  EXPECT_EQ(level(100)["NumWins"], 1);
  EXPECT_EQ(level(100)["LastWinData"], "Last won: 1.00 EUR");
  EXPECT_EQ(level(500)["Status"], "WIN");
  EXPECT_EQ(level(600)["Status"], "OPEN");
  EXPECT_EQ(level(600)["CurrentPot"], 10);
  EXPECT_EQ(level(600)["NumWins"], 1);
  // So many guests win it again at once, but not unseen.
  EXPECT_EQ(level(700)["Status"], "WIN");
  EXPECT_EQ(level(700)["NumWins"], 2);
}

TEST(House, SurvivesTheLargestAmountsAndNumbers) {
  const House::Guests many{300, 100000, 1000000, 1000, 600, 5};
  const Json wide{{"CurrentPot", INT64_MIN}, {"MinPot", INT64_MIN}, {"MaxPot", INT64_MAX}};
  const Life life = lifeOf(wide, many, 300);
  EXPECT_GT(life.pots.back(), life.pots.front());
  const Json won{{"CurrentPot", 99}, {"MinPot", 1}, {"MaxPot", 100}, {"NumWins", INT32_MAX}};
  EXPECT_GE(lifeOf(won, many, 300).wins.size(), 2u);
  EXPECT_EQ(oneMoreWin({{"NumWins", INT32_MAX}}), INT32_MAX);
  EXPECT_EQ(oneMoreWin({{"NumWins", 4}}), 5);
}

TEST(House, StopGrowAndRampEndThePlay) {
  for (const char* step :
       {R"({"do": "stop", "id": 0})", R"({"do": "stop"})", R"({"do": "grow", "id": 0, "min": 0, "max": 0})",
        R"({"do": "ramp", "id": 0, "to": 0, "ms": 1})"}) {
    int64_t now = 0;
    Simulator simulator([&now] { return now; });
    simulator.apply({{"do", "add"}});
    simulator.apply({{"do", "play"}, {"id", 0}, {"bets", 60000}});
    simulator.apply(Json::parse(step));
    now = 60000;
    simulator.advance();
    EXPECT_EQ(simulator.report()["state"]["JackpotData"][0]["CurrentPot"], 0) << step;
  }
}

TEST(House, UsualHouseCanBePlayed) {
  for (int levels = 1; levels <= kHouseLevels; ++levels) {
    int64_t now = 0;
    Simulator simulator([&now] { return now; });
    for (const Json& step : houseSteps(levels, 7)) simulator.apply(step);
    const Json before = simulator.report()["state"]["JackpotData"];
    ASSERT_EQ(before.size(), static_cast<size_t>(levels));
    now = 30000;
    simulator.advance();
    const Json after = simulator.report()["state"]["JackpotData"];
    for (size_t i = 0; i < before.size(); ++i)
      EXPECT_GT(after[i]["CurrentPot"].get<int64_t>(), before[i]["CurrentPot"].get<int64_t>()) << after[i]["Name"];
  }
}

}  // namespace
}  // namespace kslsim
