// Which panel the state of the platform brings, from the first reply on.
#include "tests/system/PanelHarness.h"

namespace systest {
namespace {

const Json BUTTONS = {"1", "", "3", "4", "5", "6", "7", "8"};
const std::string INSTRUCTIONS = "background button-1 button-2-off low=1345";
const std::string JACKPOTS = "background title gold";
const std::string GAME_A = "background title gold overlay-A hint=345";
const std::string GAME_B = "background title gold overlay-B hint=345";
const std::string WON = "dark-title hint=345";

const Box LOADER_CIRCLE{960 - 130, 540 - 130, 260, 260};

Json gameOf(int type) { return {{"ID", 9}, {"Name", type == kSlot ? "A" : ""}, {"Type", type}}; }

class Panels : public PanelTest {
 protected:
  void SetUp() override {
    PanelTest::SetUp();
    if (HasFatalFailure()) return;
    mFresh = mSimulator.state()["state"];
  }

  // Starts the program on a fresh platform with these fields set.
  void startOn(const Json& fields) {
    mProgram.kill();
    set(mFresh);
    mSimulator.apply({{"do", "forget"}});
    set(fields);
    mStatesBefore = mSimulator.calls("platform.state");
    startProgramHere();
  }

  // The program has had its first state.
  bool hasItsState() {
    return within(20000, [this] { return mSimulator.calls("platform.state") > mStatesBefore; }) && asksForEvents(2);
  }

  // The next events that are pushed go out together.
  void holdEventsBack() {
    const uint64_t n = mSimulator.latest();
    mSimulator.apply(
      {{"do", "bad"}, {"method", "game.popEvents"}, {"reply", "slow"}, {"ms", bound(1000)}, {"calls", 1}});
    ASSERT_TRUE(within(10000, [&] {
      for (const Json& entry : mSimulator.log(n))
        if (entry.value("bad", "") == "slow") return true;
      return false;
    }));
  }

  Json mFresh;
  int mStatesBefore = 0;
};

TEST_F(Panels, FirstDataThatEndTheLoaderBringTheirPanel) {
  const struct {
    const char* name;
    Json fields;
    std::string due;
  } rows[] = {
    {"no game", {{"ActiveGame", gameOf(0)}}, JACKPOTS},
    {"menu with instructions", {{"Instructions", BUTTONS}}, INSTRUCTIONS},
    {"slot game", {{"ActiveGame", gameOf(kSlot)}}, GAME_A},
    {"slot game that loads", {{"ActiveGame", gameOf(kSlot)}, {"IsLoading", true}}, GAME_A},
    {"slot game with instructions", {{"ActiveGame", gameOf(kSlot)}, {"Instructions", BUTTONS}}, GAME_A},
    {"win over a paytable",
     {{"ActiveGame", gameOf(kSlot)}, {"ShowingPaytable", 1}, {"JackpotData", Json::array({level(0, "WIN")})}},
     WON},
    {"top screen", {{"ActiveGame", gameOf(kTopscreen)}, {"Instructions", BUTTONS}}, JACKPOTS},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    startOn(row.fields);
    EXPECT_TRUE(shows(row.due));
  }
}

TEST_F(Panels, OpenPaytableKeepsTheLoaderUntilTheGameIsLeft) {
  startOn({{"ActiveGame", gameOf(kSlot)}, {"ShowingPaytable", 1}, {"JackpotData", Json::array({level(0, "win")})}});
  ASSERT_TRUE(hasItsState());
  EXPECT_TRUE(keeps("loader"));
  set({{"ShowingPaytable", 2}});
  EXPECT_TRUE(keeps("loader"));
  set({{"ActiveGame", gameOf(0)}});
  EXPECT_TRUE(shows(JACKPOTS));
  EXPECT_TRUE(keeps(JACKPOTS));
}

TEST_F(Panels, RouletteKeepsTheLoaderThatMovesOnlyWhileTheGameLoads) {
  startOn({{"ActiveGame", gameOf(kRoulette)}, {"IsLoading", true}});
  ASSERT_TRUE(hasItsState());
  EXPECT_TRUE(keeps("loader"));
  Picture before = mX.picture(LOADER_CIRCLE);
  EXPECT_TRUE(within(5000, [&] { return mX.picture(LOADER_CIRCLE) != before; }));

  game("loaded", "", kRoulette);
  ASSERT_TRUE(asksForEvents(3));
  before = mX.picture(LOADER_CIRCLE);
  EXPECT_TRUE(keeps("loader"));
  EXPECT_TRUE(mX.picture(LOADER_CIRCLE) == before);
  mSimulator.apply({{"do", "game"}, {"event", "exited"}});
  EXPECT_TRUE(shows(JACKPOTS));
}

// The first of the two would end the loader if it were decided upon by itself, and an open paytable would show.
TEST_F(Panels, TwoEventsInOneReplyAreOneDecision) {
  startOn({{"ActiveGame", gameOf(kRoulette)}});
  ASSERT_TRUE(hasItsState());
  holdEventsBack();
  if (HasFatalFailure()) return;
  mSimulator.apply({{"do", "game"}, {"event", "exited"}});
  game("loaded", "", kRoulette);
  ASSERT_TRUE(asksForEvents(3));
  set({{"ActiveGame", gameOf(kSlot)}, {"ShowingPaytable", 1}});
  EXPECT_TRUE(keeps("loader"));
  set({{"ActiveGame", gameOf(0)}});
  EXPECT_TRUE(shows(JACKPOTS));
  EXPECT_TRUE(keeps(JACKPOTS));
}

TEST_F(Panels, EachChangeOfTheStateBringsItsPanel) {
  startOn(Json::object());
  const Json bets = {{"current", 5}, {"min", 1}, {"max", 9}};
  const struct {
    const char* name;
    Json step;
    std::string due;
  } rows[] = {
    {"menu", {{"do", "set"}, {"state", {{"ActiveGame", gameOf(kMenu)}}}}, JACKPOTS},
    {"instructions come", {{"do", "set"}, {"state", {{"Instructions", BUTTONS}}}}, INSTRUCTIONS},
    {"slot game", {{"do", "game"}, {"event", "loading"}, {"ID", 9}, {"Name", "A"}, {"Type", kSlot}}, GAME_A},
    {"paytable opens", {{"do", "set"}, {"state", {{"ShowingPaytable", 1}}}}, "paper-A page-A1 hint=345"},
    {"its second page", {{"do", "set"}, {"state", {{"ShowingPaytable", 2}}}}, "paper-A page-A2 hint=345"},
    {"another game's",
     {{"do", "game"}, {"event", "loaded"}, {"ID", 8}, {"Name", "B"}, {"Type", kSlot}},
     "paper-B page-B2 hint=345"},
    {"a win by itself", {{"do", "win"}, {"id", 0}}, "paper-B page-B2 hint=345"},
    {"the next decision", {{"do", "event"}, {"id", 104}, {"value", bets}}, "dark-title overlay-B hint=345"},
    {"the win is over", {{"do", "win"}, {"id", 0}, {"on", false}}, GAME_B},
    {"the decision after it", {{"do", "event"}, {"id", 104}, {"value", bets}}, "paper-B page-B2 hint=345"},
    {"roulette loads",
     {{"do", "game"}, {"event", "loading"}, {"ID", 3}, {"Name", "R"}, {"Type", kRoulette}},
     "paper-B page-B2 hint=345"},
    {"slot game again, paytable closed",
     {{"do", "set"}, {"state", {{"ActiveGame", gameOf(kSlot)}, {"ShowingPaytable", 0}}}},
     GAME_A},
    {"roulette loads from there",
     {{"do", "game"}, {"event", "loading"}, {"ID", 3}, {"Name", "R"}, {"Type", kRoulette}},
     GAME_A},
    {"and goes on being drawn",
     {{"do", "set"}, {"state", {{"DemoMode", true}}}},
     "demo title gold overlay-A hint=345"},
    {"roulette runs",
     {{"do", "game"}, {"event", "loaded"}, {"ID", 3}, {"Name", "R"}, {"Type", kRoulette}},
     "demo title gold overlay-A hint=345"},
    {"and nothing is drawn",
     {{"do", "set"}, {"state", {{"DemoMode", false}}}},
     "demo title gold overlay-A hint=345"},
    {"top screen draws as before", {{"do", "set"}, {"state", {{"ActiveGame", gameOf(kTopscreen)}}}}, GAME_A},
    {"game left with instructions", {{"do", "game"}, {"event", "exited"}}, INSTRUCTIONS + " hint=345"},
    {"top screen again",
     {{"do", "set"}, {"state", {{"ActiveGame", gameOf(kTopscreen)}}}},
     INSTRUCTIONS + " hint=345"},
    {"slot game from instructions", {{"do", "set"}, {"state", {{"ActiveGame", gameOf(kSlot)}}}}, GAME_A},
    {"no game with instructions",
     {{"do", "set"}, {"state", {{"ActiveGame", gameOf(0)}}}},
     INSTRUCTIONS + " hint=345"},
    {"instructions go", {{"do", "set"}, {"state", {{"Instructions", Json::array()}}}}, JACKPOTS},
    {"slot game B", {{"do", "game"}, {"event", "loaded"}, {"ID", 8}, {"Name", "B"}, {"Type", kSlot}}, GAME_B},
    {"game left", {{"do", "game"}, {"event", "exited"}}, JACKPOTS},
  };
  std::string before;
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    mSimulator.apply(row.step);
    ASSERT_TRUE(row.due == before ? keeps(row.due) : shows(row.due));
    before = row.due;
  }
}

TEST_F(Panels, FailedCallForgetsTheGameAndChangesNoPanel) {
  startOn({{"ActiveGame", gameOf(kSlot)}});
  ASSERT_TRUE(shows(GAME_A));
  const auto fault = [this](const char* method, int calls) {
    mSimulator.apply({{"do", "bad"}, {"method", method}, {"reply", "fault"}, {"code", -7}, {"calls", calls}});
  };
  fault("platform.state", -1);
  fault("game.popEvents", 1);
  ASSERT_TRUE(
    within(10000, [this] { return logged("KSL CLIENT: Received error from game.popEvents -> -7 - ") == 1; }));
  ASSERT_TRUE(within(10000, [this] { return mSimulator.calls("platform.state") >= mStatesBefore + 2; }));
  EXPECT_TRUE(keeps(GAME_A));
  // The next decision knows of no game; the next good state knows it again.
  event(104, {{"current", 5}, {"min", 1}, {"max", 9}});
  EXPECT_TRUE(shows(JACKPOTS));
  mSimulator.apply({{"do", "good"}});
  EXPECT_TRUE(shows(GAME_A));
}

}  // namespace
}  // namespace systest
