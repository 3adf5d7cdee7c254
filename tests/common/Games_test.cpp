#include "common/Games.h"

#include <gtest/gtest.h>

#include <limits>
#include <vector>

class Games : public testing::Test {
 protected:
  Games() { GameRegistryEntry::Init(); }
};

TEST_F(Games, TheDefaultEntryIsTheNullGame) {
  EXPECT_EQ(GAME_NULL, GameRegistryEntry());
  EXPECT_EQ(-1, GAME_NULL.ID);
  EXPECT_EQ("", GAME_NULL.name);
  EXPECT_EQ(GAMETYPE_NULL_TYPE, GAME_NULL.type);
}

TEST_F(Games, EqualityAsksAllThree) {
  const GameRegistryEntry game(5, "Five", GAMETYPE_ROULETTE);
  EXPECT_EQ(game, GameRegistryEntry(5, "Five", GAMETYPE_ROULETTE));
  EXPECT_NE(game, GameRegistryEntry(6, "Five", GAMETYPE_ROULETTE));
  EXPECT_NE(game, GameRegistryEntry(5, "Four", GAMETYPE_ROULETTE));
  EXPECT_NE(game, GameRegistryEntry(5, "Five", GAMETYPE_MENU));
}

TEST_F(Games, InitEntersMenuAndTopScreenAndNothingElse) {
  ASSERT_TRUE(GameRegistryEntry::RegisterGame(5, "Five", "ROULETTE"));
  GameRegistryEntry::Init();
  EXPECT_EQ(GAME_MENU, AllGames[0]);
  EXPECT_EQ(GAME_TOPSCREEN, AllGames[1]);
  EXPECT_EQ(GAME_NULL, AllGames[5]);
  EXPECT_EQ(2U, AllGamesMap.size());
  EXPECT_EQ(1001U, AllGames.size());
  EXPECT_EQ(GAME_TOPSCREEN, GameRegistryEntry(1, "TopScreen", GAMETYPE_TOPSCREEN));
  EXPECT_EQ(GAME_MENU, GameRegistryEntry(0, "", GAMETYPE_MENU));
}

TEST_F(Games, RegistersOnlyFreeSlotsInRangeWithAKnownType) {
  EXPECT_FALSE(GameRegistryEntry::RegisterGame(-1, "a", "ROULETTE"));
  EXPECT_FALSE(GameRegistryEntry::RegisterGame(1001, "a", "ROULETTE"));
  EXPECT_FALSE(GameRegistryEntry::RegisterGame(0, "a", "ROULETTE"));
  EXPECT_FALSE(GameRegistryEntry::RegisterGame(7, "a", "POKER"));
  EXPECT_FALSE(GameRegistryEntry::RegisterGame(7, "a", ""));
  EXPECT_TRUE(GameRegistryEntry::RegisterGame(1000, "last", "VESPERA_SLOTGAME"));
  EXPECT_FALSE(GameRegistryEntry::RegisterGame(1000, "again", "VESPERA_SLOTGAME"));
  EXPECT_EQ(GameRegistryEntry(1000, "last", GAMETYPE_VESPERA_SLOTGAME), AllGames[1000]);
}

TEST_F(Games, TheIdsBeginAtZeroAndEndAtAThousand) {
  AllGames[0] = GameRegistryEntry();  // the menu's place
  EXPECT_TRUE(GameRegistryEntry::RegisterGame(0, "first", "ROULETTE"));
  EXPECT_TRUE(GameRegistryEntry::RegisterGame(1000, "last", "ROULETTE"));
  for (const int none : {std::numeric_limits<int>::min(), -1, 1001, std::numeric_limits<int>::max()}) {
    EXPECT_FALSE(GameRegistryEntry::RegisterGame(none, "none", "ROULETTE")) << none;
    EXPECT_EQ(&GAME_NULL, &GameRegistryEntry::findGameByID(none)) << none;
  }
}

TEST_F(Games, FindsByNameAndByNumberOrAnswersTheNullGame) {
  ASSERT_TRUE(GameRegistryEntry::RegisterGame(9, "Nine", "ROULETTE"));
  EXPECT_EQ(9, GameRegistryEntry::findGameByName("Nine").ID);
  EXPECT_EQ("Nine", GameRegistryEntry::findGameByID(9).name);
  EXPECT_EQ(&GAME_NULL, &GameRegistryEntry::findGameByName("Ten"));
  EXPECT_EQ(&GAME_NULL, &GameRegistryEntry::findGameByID(10));
  EXPECT_EQ(&GAME_NULL, &GameRegistryEntry::findGameByID(-1));
}

TEST_F(Games, VisitsTheGamesProperInTheOrderOfNamesUntilToldToStop) {
  GameRegistryEntry::RegisterGame(2, "Zebra", "ROULETTE");
  GameRegistryEntry::RegisterGame(3, "Apple", "VESPERA_SLOTGAME");
  GameRegistryEntry::RegisterGame(4, "Melon", "TOPSCREEN");
  std::vector<std::string> visited;
  GameRegistryEntry::forEachGame([&](const GameRegistryEntry& game) {
    visited.push_back(game.name);
    return true;
  });
  EXPECT_EQ((std::vector<std::string>{"Apple", "Zebra"}), visited);
  visited.clear();
  GameRegistryEntry::forEachGame([&](const GameRegistryEntry& game) {
    visited.push_back(game.name);
    return false;
  });
  EXPECT_EQ((std::vector<std::string>{"Apple"}), visited);
}

TEST_F(Games, ANameLeadsToTheGameThatTookItLast) {
  ASSERT_TRUE(GameRegistryEntry::RegisterGame(5, "Wheel", "ROULETTE"));
  ASSERT_TRUE(GameRegistryEntry::RegisterGame(6, "Wheel", "VESPERA_SLOTGAME"));
  EXPECT_EQ(6, GameRegistryEntry::findGameByName("Wheel").ID);
  EXPECT_EQ("Wheel", AllGames[5].name);
  EXPECT_EQ(&GAME_NULL, &GameRegistryEntry::findGameByID(5));  // the search walks the names
  EXPECT_EQ(&AllGames[6], &GameRegistryEntry::findGameByID(6));
}

TEST_F(Games, TheMenuHasTheEmptyName) {
  EXPECT_EQ(GAME_MENU, GameRegistryEntry::findGameByName(""));
  EXPECT_EQ(GAME_MENU, GameRegistryEntry::findGameByID(0));
  EXPECT_EQ(GAME_TOPSCREEN, GameRegistryEntry::findGameByName("TopScreen"));
  EXPECT_EQ(GAME_TOPSCREEN, GameRegistryEntry::findGameByID(1));
}

TEST_F(Games, TypesHaveNumbersAndNames) {
  const struct {
    GameTypes type;
    int number;
    const char* name;
  } rows[] = {{GAMETYPE_MENU, 1, "MENU"},
              {GAMETYPE_TOPSCREEN, 2, "TOPSCREEN"},
              {GAMETYPE_ROULETTE, 3, "ROULETTE"},
              {GAMETYPE_VESPERA_SLOTGAME, 4, "VESPERA_SLOTGAME"}};
  for (const auto& row : rows) {
    EXPECT_EQ(row.number, row.type);
    EXPECT_EQ(row.type, parseGameType(row.name));
    EXPECT_EQ(row.name, getTypeName(row.type));
    EXPECT_EQ(row.type, GameTypeStrings.at(row.name));
  }
  EXPECT_EQ(4U, GameTypeStrings.size());
  EXPECT_EQ(0, GAMETYPE_NULL_TYPE);
  EXPECT_EQ(GAMETYPE_NULL_TYPE, parseGameType("menu"));
  EXPECT_EQ(GAMETYPE_NULL_TYPE, parseGameType(""));
  EXPECT_EQ("", getTypeName(GAMETYPE_NULL_TYPE));
  EXPECT_EQ("", getTypeName(static_cast<GameTypes>(99)));
}
