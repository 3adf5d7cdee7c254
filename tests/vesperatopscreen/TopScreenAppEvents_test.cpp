#include "tests/vesperatopscreen/TopScreenAppFixture.h"

using namespace apptest;

TEST_F(TopScreenAppTest, GameEventsChangeTheGameAndAskForADecision) {
  send(T_GAME_LOADED, game(7, "Reels", GAMETYPE_VESPERA_SLOTGAME));
  EXPECT_EQ(GameRegistryEntry(7, "Reels", GAMETYPE_VESPERA_SLOTGAME), state().ActiveGame);
  EXPECT_FALSE(state().IsLoading);
  EXPECT_TRUE(app.updatedGame);
  app.updatedGame = false;
  send(T_GAME_LOADING, game(8, "Wheel", GAMETYPE_ROULETTE));
  EXPECT_EQ(GameRegistryEntry(8, "Wheel", GAMETYPE_ROULETTE), state().ActiveGame);
  EXPECT_TRUE(state().IsLoading);
  EXPECT_TRUE(app.updatedGame);
  app.updatedGame = false;
  app.handlePlatformEvent(Event(T_GAME_EXITED, xmlrpc_c::value_nil()));
  EXPECT_EQ(GAME_MENU, state().ActiveGame);
  EXPECT_FALSE(state().IsLoading);
  EXPECT_TRUE(app.updatedGame);
  EXPECT_FALSE(app.updatedJp);
}

TEST_F(TopScreenAppTest, ValueEventsUpdateTheirFieldAndTheirFlag) {
  send(T_DEMO_MODE, xmlrpc_c::value_boolean(true));
  EXPECT_TRUE(state().DemoMode);
  send(T_INTEGRITY_DATA, xmlrpc_c::value_string("a &lt; b"));
  EXPECT_EQ("a < b", state().IntegrityCheckData);
  EXPECT_TRUE(app.updatedJp) << "the levels come back with its end";
  EXPECT_FALSE(app.updatedGame);
  app.updatedJp = false;
  send(T_JACKPOT_ERROR, xmlrpc_c::value_string("a &amp;lt; b"));
  EXPECT_EQ("a &amp;lt; b", state().JackpotErrorString) << "only the integrity text is unescaped";
  EXPECT_TRUE(app.updatedJp);
  EXPECT_FALSE(app.updatedGame);
  app.updatedJp = false;
  app.handlePlatformEvent(Event(T_JACKPOT_REFRESH, xmlrpc_c::value_nil()));
  EXPECT_TRUE(app.updatedJp);
  send(T_PAYTABLE_STATE, xmlrpc_c::value_int(3));
  EXPECT_EQ(3, state().ShowingPaytable);
  EXPECT_TRUE(app.updatedGame);
  app.updatedGame = false;
  send(T_EXTRA_DATA, xmlrpc_c::value_struct({{"paylines", xmlrpc_c::value_int(20)}}));
  EXPECT_EQ(1u, state().ExtraData.count("paylines"));
  EXPECT_TRUE(app.updatedGame);
  app.updatedGame = false;
  send(T_LANGUAGE, texts({"en", "min", "max", "hint", "prizes"}));
  EXPECT_EQ((std::vector<std::string>{"en", "min", "max", "hint", "prizes"}), state().LanguageMessages);
  EXPECT_FALSE(app.updatedGame);
}

TEST_F(TopScreenAppTest, JackpotDataReplaceTheLevels) {
  JackpotsData level{};
  level.name = "Grand";
  level.potValue = 9000000000;
  send(T_JACKPOT_DATA, xmlrpc_c::value_array(xmlrpc_c::carray{level.toXml()}));
  ASSERT_EQ(1u, state().JackpotData.size());
  EXPECT_EQ(9000000000, state().JackpotData[0].potValue);
  EXPECT_TRUE(app.updatedJp);
}

TEST_F(TopScreenAppTest, BetLimitsBehindAMistypedKeyKeepTheirValue) {
  send(T_BET_LIMITS, xmlrpc_c::value_struct({{"current", xmlrpc_c::value_i8(100)},
                                             {"min", xmlrpc_c::value_i8(20)},
                                             {"max", xmlrpc_c::value_i8(9000000000)}}));
  EXPECT_EQ(100, state().CurrentBet);
  EXPECT_EQ(20, state().MinBet);
  EXPECT_EQ(9000000000, state().MaxBet);
  EXPECT_TRUE(app.updatedGame);
  send(T_BET_LIMITS, xmlrpc_c::value_struct({{"current", xmlrpc_c::value_i8(200)},
                                             {"min", xmlrpc_c::value_string("40")},
                                             {"max", xmlrpc_c::value_i8(80)}}));
  EXPECT_EQ(200, state().CurrentBet);
  EXPECT_EQ(20, state().MinBet);
  EXPECT_EQ(9000000000, state().MaxBet);
}

TEST_F(TopScreenAppTest, InstructionsShowTheirPanelAtOnceWhateverTheGame) {
  send(T_GAME_LOADED, game(7, "Reels", GAMETYPE_VESPERA_SLOTGAME));
  app.updatedGame = false;
  send(T_INSTRUCTIONS, texts({"Spin", ""}));
  EXPECT_EQ((std::vector<std::string>{"Spin", ""}), state().Instructions);
  EXPECT_EQ(1u, app.deferred());
  EXPECT_FALSE(app.updatedGame) << "the next change of game puts the panel right again";
  send(T_INSTRUCTIONS, texts({}));
  EXPECT_EQ(2u, app.deferred());
}

TEST_F(TopScreenAppTest, OtherEventsChangeNothing) {
  for (int id : {-1, 0, 1, 16, 99, 113, 300}) {
    send(id, xmlrpc_c::value_int(1));
    EXPECT_FALSE(app.updatedGame || app.updatedJp) << id;
  }
  EXPECT_EQ(0u, app.deferred());
  EXPECT_EQ(GAME_NULL, state().ActiveGame);
}

TEST_F(TopScreenAppTest, AnEventWithoutItsValueThrowsAndLeavesTheState) {
  send(T_PAYTABLE_STATE, xmlrpc_c::value_int(3));
  app.updatedGame = false;
  EXPECT_ANY_THROW(app.handlePlatformEvent(Event(T_PAYTABLE_STATE, static_cast<xmlrpc_value*>(nullptr))));
  EXPECT_ANY_THROW(send(T_PAYTABLE_STATE, xmlrpc_c::value_string("3")));
  EXPECT_EQ(3, state().ShowingPaytable);
  EXPECT_FALSE(app.updatedGame);
}

// Only what stands behind the game is lost with it.
TEST_F(TopScreenAppTest, AGameThatCannotBeReadLoadsOrHasLoadedAllTheSame) {
  app.handlePlatformEvent(Event(T_GAME_EXITED, xmlrpc_c::value_nil()));
  app.updatedGame = false;
  const xmlrpc_c::value bad = xmlrpc_c::value_string("Reels");
  EXPECT_ANY_THROW(send(T_GAME_LOADING, bad));
  EXPECT_TRUE(state().IsLoading);
  EXPECT_EQ(GAME_MENU, state().ActiveGame);
  EXPECT_FALSE(app.updatedGame);
  EXPECT_ANY_THROW(send(T_GAME_LOADED, bad));
  EXPECT_FALSE(state().IsLoading);
  EXPECT_EQ(GAME_MENU, state().ActiveGame);
  EXPECT_FALSE(app.updatedGame);
}

TEST_F(TopScreenAppTest, EventsWorkWithoutAScreen) {
  app.screen = nullptr;
  send(T_LANGUAGE, texts({"en"}));
  send(T_DEMO_MODE, xmlrpc_c::value_boolean(true));
  send(T_INTEGRITY_DATA, xmlrpc_c::value_string("x"));
  send(T_INSTRUCTIONS, texts({"Spin"}));
  EXPECT_EQ(0, app.Update());
  EXPECT_EQ(2, app.DrawOnce());
  EXPECT_FALSE(app.SetupGraphics());
}
