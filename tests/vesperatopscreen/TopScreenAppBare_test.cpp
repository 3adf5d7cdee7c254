// The application without its screen, without its client, and with errors that say nothing.
#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <utility>

#include "common/TBitmapFont.h"
#include "tests/support/TestApplication.h"
#include "tests/support/TestFont.h"
#include "tests/support/TopScreenHarness.h"
#include "tests/vesperatopscreen/TopScreenAppFixture.h"
#include "vesperatopscreen/InitData.h"

using namespace apptest;

namespace {

class BareApp : public TopScreenAppTest {
 protected:
  BareApp() { app.screen = nullptr; }
  long written(const std::string& line, TLogType type) const {
    return std::count_if(app.lines.begin(), app.lines.end(),
                         [&](const TestApp::Line& one) { return one.text == line && one.type == type; });
  }
};

}  // namespace

TEST_F(BareApp, EveryStateIsTakenWithoutAScreen) {
  struct {
    const char* name;
    PlatformState state;
  } rows[] = {{"no game", {}}, {"menu", {}},     {"instructions", {}},
              {"levels", {}},  {"paytable", {}}, {"roulette", {}}};
  rows[1].state.ActiveGame = GAME_MENU;
  rows[2].state.Instructions = {"SPIN"};
  rows[3].state.ActiveGame = GameRegistryEntry(8, "Reels", GAMETYPE_VESPERA_SLOTGAME);
  rows[4].state = rows[3].state;
  rows[4].state.ShowingPaytable = 1;
  rows[5].state.ActiveGame = GameRegistryEntry(9, "Wheel", GAMETYPE_ROULETTE);
  for (auto& row : rows) {
    SCOPED_TRACE(row.name);
    for (bool loading : {false, true}) {
      row.state.IsLoading = loading;
      EXPECT_EQ(0, app.StatusReceived(&row.state, false));
      EXPECT_EQ(0, app.Update());
    }
  }
  app.updatedJp = true;
  EXPECT_EQ(0u, app.deferred());
  EXPECT_FALSE(app.SetupGraphics());
  EXPECT_EQ(2, app.DrawOnce());
}

TEST_F(BareApp, EveryEventIsTakenWithoutAScreen) {
  const auto texts = [](const std::vector<std::string>& list) { return paneldata::texts(list); };
  send(T_GAME_LOADING, paneldata::gameValue("Reels", GAMETYPE_VESPERA_SLOTGAME));
  send(T_GAME_LOADED, paneldata::gameValue("Reels", GAMETYPE_VESPERA_SLOTGAME));
  send(T_DEMO_MODE, xmlrpc_c::value_boolean(true));
  send(T_INTEGRITY_DATA, xmlrpc_c::value_string("checked"));
  send(T_BET_LIMITS, paneldata::bets(100, 20, 500));
  for (const std::vector<std::string>& list : {std::vector<std::string>{"SPIN"}, std::vector<std::string>{}})
    send(T_INSTRUCTIONS, texts(list));
  send(T_PAYTABLE_STATE, xmlrpc_c::value_int(1));
  send(T_JACKPOT_ERROR, xmlrpc_c::value_string("no link"));
  send(T_JACKPOT_REFRESH, xmlrpc_c::value_nil());
  send(T_JACKPOT_DATA, paneldata::levelsValue(paneldata::levels(2)));
  send(T_EXTRA_DATA, xmlrpc_c::value_struct(paneldata::setup({}, 10, 10)));
  send(T_LANGUAGE, texts({"en", "a", "b", "c", "d"}));
  send(T_GAME_EXITED, xmlrpc_c::value_nil());
  EXPECT_EQ(0u, app.deferred());
  EXPECT_EQ(100, app.getState()->CurrentBet) << "what it said is kept";
}

TEST_F(BareApp, TheFirstDataEndTheLoaderWithoutAScreenToo) {
  app.setStatus(TApplication::APP_STARTUP_GRAPHICS);
  PlatformState data;
  app.StatusReceived(&data, false);
  EXPECT_EQ(TApplication::APP_RUNNING, app.status());
}

struct WindowedScreen : TopScreenScreen {
  using TAppGuiModule::mpWindow;
};

TEST_F(BareApp, TheWindowIsAskedToStayAboveTheOthers) {
  const SeamsGuard seams;
  static std::mutex mutex;
  static std::condition_variable said;
  static std::vector<std::string> commands;
  SystemSeams.System = [](const char* command) {
    const std::lock_guard lock(mutex);
    commands.emplace_back(command);
    said.notify_all();
    return 0;
  };
  setenv("SDL_VIDEODRIVER", "dummy", 1);
  ASSERT_EQ(0, SDL_Init(SDL_INIT_VIDEO));
  WindowedScreen screen;
  app.screen = &screen;
  EXPECT_FALSE(app.SetupGraphics());  // without a window there is nothing to ask for
  screen.mpWindow = SDL_CreateWindow("Top of all", 0, 0, 8, 8, SDL_WINDOW_HIDDEN);
  EXPECT_FALSE(app.SetupGraphics());
  std::unique_lock lock(mutex);
  ASSERT_TRUE(said.wait_for(lock, std::chrono::seconds(60), [] { return !commands.empty(); }));
  ASSERT_EQ(1u, commands.size());
  EXPECT_NE(std::string::npos, commands[0].find("Top of all"));
  EXPECT_NE(std::string::npos, commands[0].find("-b add,above"));
  SDL_DestroyWindow(std::exchange(screen.mpWindow, nullptr));
  app.screen = nullptr;
}

TEST_F(BareApp, ADestroyedApplicationHasNoFonts) {
  SDL_Surface* const picture = SDL_CreateRGBSurfaceWithFormat(0, 4, 4, 32, SDL_PIXELFORMAT_ARGB8888);
  SDL_Renderer* const renderer = SDL_CreateSoftwareRenderer(picture);
  const std::string file = testfont::write(testfont::freshFolder("bareapp"), "left", 2) + ".fnt";
  auto* const font = new TBitmapFont(renderer, "left over", file);  // registers itself
  ASSERT_EQ(font, TBitmapFont::FindBitmapFont("left over"));
  app.Destroy();
  EXPECT_EQ(nullptr, TBitmapFont::FindBitmapFont("left over"));
  SDL_DestroyRenderer(renderer);
  SDL_FreeSurface(picture);
}

TEST_F(BareApp, AFailureThatSaysNothingIsNoNews) {
  app.hasNoData = false;
  EXPECT_EQ(0, app.StatusReceived(nullptr, true));
  EXPECT_TRUE(app.hasNoData);
  KSLError silent(E_INTERNAL_ERROR, "");
  app.hasNoData = false;
  EXPECT_EQ(0, app.StatusReceived(&silent, true));
  EXPECT_TRUE(app.lines.empty());
  EXPECT_EQ(0, statusError("spoken"));
}

TEST_F(BareApp, ARegistrationThatFailsWithoutACauseIsIncomplete) {
  EXPECT_EQ(1, app.handleInitResponse(E_INIT_REJECTED, nullptr));
  EXPECT_EQ(1, written("KSL: ERROR on init [the registration reply is incomplete]!!!", 5));
  EXPECT_EQ(1u, app.lines.size());
}

TEST_F(BareApp, EachTextOfARegistrationIsNeeded) {
  for (const char* InitData::*missing :
       {&InitData::Locale, &InitData::DecimalSeparator, &InitData::ThousandSeparator, &InitData::Language}) {
    InitData data;
    for (const char* InitData::*text :
         {&InitData::Locale, &InitData::DecimalSeparator, &InitData::ThousandSeparator, &InitData::Language})
      data.*text = text == missing ? nullptr : strdup("C");
    const bool fails = missing != &InitData::Language;  // which nobody uses
    EXPECT_EQ(fails, app.handleInitResponse(E_NO_ERROR, &data));
  }
}

TEST_F(BareApp, AnErrorBeforeThereIsAClientHasNoAddress) {
  EXPECT_EQ(0, app.handleError(M_POPEVENTS, E_INTERNAL_ERROR, "gone"));
  EXPECT_EQ(1, written("KSL CLIENT: Received error from  -> " + std::to_string(E_INTERNAL_ERROR) + " - gone", 5));
}
