#include "vesperatopscreen/TopScreenApp.h"

#include <gtest/gtest.h>
#include <cstdlib>
#include <map>

#include "common/Event.h"
#include "tests/support/FakeClock.h"
#include "vendelo-sdl2/MyUtils.h"
#include "vesperatopscreen/InitData.h"
#include "vesperatopscreen/TopScreenScreen.h"

using namespace vendelo_sdl2;

namespace {

// The application without a window and without a service. What it logs is kept; what it defers to the draw thread
// stays queued, since the application is never running here.
class TestApp : public TopScreenApp {
 public:
  using TopScreenApp::getState;
  using TopScreenApp::hasNoData;
  using TopScreenApp::lastInitError;
  using TopScreenApp::pKSL;
  using TopScreenApp::screen;
  using TopScreenApp::serverUrl;
  using TopScreenApp::updatedGame;
  using TopScreenApp::updatedJp;

  int _WriteLog(char, TLogType type, unsigned long, const std::string& text) override {
    lines.push_back({type, text});
    return 0;
  }
  size_t deferred() const { return mDeferToDrawQueue.size(); }

  struct Line {
    TLogType type;
    std::string text;
  };
  std::vector<Line> lines;
};

// Answers every call with the reply that stands for its method; a missing one is a refused connection.
class ScriptedTransport : public xmlrpc_c::clientXmlTransport {
 public:
  void call(xmlrpc_c::carriageParm*, std::string const& request, std::string* reply) override {
    for (const auto& [method, xml] : replies)
      if (request.find("<methodName>" + method + "</methodName>") != std::string::npos) {
        *reply = "<?xml version=\"1.0\"?><methodResponse><params><param><value>" + xml +
                 "</value></param></params></methodResponse>";
        return;
      }
    throw girerr::error("Failed to connect");
  }
  std::map<std::string, std::string> replies;
};

class TopScreenAppTest : public testing::Test {
 protected:
  TopScreenAppTest() {
    app.screen = &screen;
    MyUtils::decimal_separator = ',';
    MyUtils::thousand_separator = '.';
  }
  ~TopScreenAppTest() override { app.screen = nullptr; }

  void send(int id, const xmlrpc_c::value& value) { app.handlePlatformEvent(Event(id, value)); }
  PlatformState state() { return app.getState().getCopy(); }
  int statusError(const char* text) {
    KSLError error(E_INTERNAL_ERROR, text);
    return app.StatusReceived(&error, true);
  }
  int initError(const char* text) {
    KSLError error(E_INIT_REJECTED, text);
    return app.handleInitResponse(E_INIT_REJECTED, &error);
  }
  static xmlrpc_c::value game(int id, const char* name, GameTypes type) {
    return xmlrpc_c::value_struct({{"ID", xmlrpc_c::value_int(id)},
                                   {"Name", xmlrpc_c::value_string(name)},
                                   {"Type", xmlrpc_c::value_int(type)}});
  }
  static xmlrpc_c::value texts(std::initializer_list<const char*> list) {
    xmlrpc_c::carray items;
    for (const char* text : list) items.push_back(xmlrpc_c::value_string(text));
    return xmlrpc_c::value_array(items);
  }

  TestApp app;
  TopScreenScreen screen;
};

}  // namespace

TEST_F(TopScreenAppTest, StartsWithNothingKnown) {
  EXPECT_EQ("http://127.0.0.1:9011/KSL", app.serverUrl);
  EXPECT_TRUE(app.hasNoData);
  EXPECT_TRUE(state().IsLoading);
  app.setServerAddress("10.1.2.3:8080");
  EXPECT_EQ("http://10.1.2.3:8080/KSL", app.serverUrl);
}

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

TEST_F(TopScreenAppTest, TheFirstGoodDataEndTheLoaderOnce) {
  app.setStatus(TApplication::APP_STARTUP_GRAPHICS);
  PlatformState data;
  data.LanguageMessages = {"en", "", "", "hint"};
  EXPECT_EQ(0, app.StatusReceived(&data, false));
  EXPECT_EQ(TApplication::APP_RUNNING, app.status());
  EXPECT_EQ(0, app.StatusReceived(&data, false));
  EXPECT_EQ(TApplication::APP_RUNNING, app.status());
}

TEST_F(TopScreenAppTest, RouletteAndAnOpenPaytableLeaveTheLoader) {
  app.setStatus(TApplication::APP_STARTUP_GRAPHICS);
  PlatformState data;
  data.ActiveGame = GameRegistryEntry(7, "Wheel", GAMETYPE_ROULETTE);
  data.IsLoading = true;
  app.StatusReceived(&data, false);
  EXPECT_TRUE(screen.IsRendering());
  data.IsLoading = false;
  app.StatusReceived(&data, false);
  EXPECT_FALSE(screen.IsRendering());
  data.ActiveGame = GameRegistryEntry(8, "Reels", GAMETYPE_VESPERA_SLOTGAME);
  data.ShowingPaytable = 1;
  app.StatusReceived(&data, false);
  EXPECT_TRUE(screen.IsRendering()) << "any other game draws again";
  EXPECT_EQ(TApplication::APP_STARTUP_GRAPHICS, app.status());
}

TEST_F(TopScreenAppTest, AFailedStatusKeepsTheDataClearsTheGameAndIsLoggedOnce) {
  PlatformState data;
  data.ActiveGame = GAME_MENU;
  data.Instructions = {"Spin"};
  app.StatusReceived(&data, false);
  app.lines.clear();
  statusError("no answer");
  EXPECT_TRUE(app.lines.empty()) << "while no data are there yet nothing is logged";
  EXPECT_EQ(GAME_NULL, state().ActiveGame);
  EXPECT_EQ(1u, state().Instructions.size());
  app.hasNoData = false;
  statusError("no answer");
  EXPECT_TRUE(app.hasNoData);
  app.hasNoData = false;
  statusError("no answer");
  ASSERT_EQ(1u, app.lines.size());
  EXPECT_EQ("WARNING: Update of top screen data returned error - no answer", app.lines[0].text);
  EXPECT_EQ(0u, app.lines[0].type);
  app.hasNoData = false;
  statusError("another");
  EXPECT_EQ(2u, app.lines.size());
  app.StatusReceived(&data, false);
  app.lines.clear();
  app.hasNoData = false;
  statusError("another");
  EXPECT_EQ(1u, app.lines.size()) << "a good reply makes the same failure worth a line again";
}

TEST_F(TopScreenAppTest, AnErrorOfTheClientClearsTheGameAndAsksForAFullStatus) {
  send(T_GAME_LOADED, game(7, "Reels", GAMETYPE_VESPERA_SLOTGAME));
  app.hasNoData = false;
  app.pKSL = std::make_unique<TKSLClient>("TopScreen", "http://127.0.0.1:1/KSL", 0);
  EXPECT_EQ(0, app.handleError(M_POPEVENTS, E_NOT_REGISTERED, "100% unknown %s client"));
  ASSERT_FALSE(app.lines.empty());
  EXPECT_EQ("KSL CLIENT: Received error from game.popEvents -> -1 - 100% unknown %s client", app.lines.back().text);
  EXPECT_EQ(5u, app.lines.back().type);
  EXPECT_EQ(GAME_NULL, state().ActiveGame);
  EXPECT_TRUE(app.hasNoData);
}

// A client that never starts, so that what is queued stays.
struct QueueOnly : TKSLClient {
  QueueOnly() : TKSLClient("TopScreen", "http://127.0.0.1:1/KSL", 0) {}
  size_t queued() const { return mCallQueue.size(); }
  void take() {
    xmlrpc_DECREF(mCallQueue.front().parameters);
    mCallQueue.pop_front();
  }
};

TEST_F(TopScreenAppTest, RequestsForTheStatusDoNotPileUpBehindEventsThatFailForYears) {
  auto* client = new QueueOnly;
  app.pKSL.reset(client);
  for (int i = 0; i < 1000; ++i) {
    app.handleError(M_POPEVENTS, E_INTERNAL_ERROR, "slow");
    EXPECT_EQ(0, app.RunOnce());
    EXPECT_FALSE(app.hasNoData) << "asked for";
  }
  EXPECT_EQ(1u, client->queued());
  client->take();
  app.RunOnce();
  EXPECT_EQ(1u, client->queued()) << "the last errors are followed by a request of their own";
  client->take();
  app.RunOnce();
  EXPECT_EQ(0u, client->queued());
  app.handleError(M_POPEVENTS, E_INTERNAL_ERROR, "slow");
  app.RunOnce();
  EXPECT_EQ(1u, client->queued());
}

TEST_F(TopScreenAppTest, AGoodRegistrationSetsTheNumberFormat) {
  int errorCode = 0;
  void* data = ParseInitResponse(xmlrpc_c::value_struct({{"ID", xmlrpc_c::value_int(42)},
                                                         {"Locale", xmlrpc_c::value_string("C")},
                                                         {"DecimalSeparator", xmlrpc_c::value_string(".x")},
                                                         {"ThousandSeparator", xmlrpc_c::value_string("")},
                                                         {"ThousandGrouping", xmlrpc_c::value_int(4)},
                                                         {"Language", xmlrpc_c::value_string("en")}}),
                                 errorCode);
  EXPECT_EQ(42, app.getIDFromInitData(data));
  app.lastInitError = "earlier";
  EXPECT_EQ(0, app.handleInitResponse(E_NO_ERROR, data));
  EXPECT_EQ("KSL: Init response OK!", app.lines.back().text);
  EXPECT_EQ(1u, app.lines.back().type);
  EXPECT_EQ('.', MyUtils::decimal_separator);
  EXPECT_EQ('\0', MyUtils::thousand_separator);
  EXPECT_EQ(4, MyUtils::thousand_grouping[0]);
  EXPECT_EQ(0, MyUtils::thousand_grouping[1]);
  EXPECT_EQ("", app.lastInitError);
  DestroyInitObject(data);
  EXPECT_EQ(0, app.getIDFromInitData(nullptr));
}

TEST_F(TopScreenAppTest, AFailedRegistrationIsLoggedOnceForEachText) {
  EXPECT_EQ(1, initError("full"));
  EXPECT_EQ(1, initError("full"));
  ASSERT_EQ(1u, app.lines.size());
  EXPECT_EQ("KSL: ERROR on init [full]!!!", app.lines[0].text);
  EXPECT_EQ(5u, app.lines[0].type);
  EXPECT_EQ(1, initError("rejected"));
  EXPECT_EQ(2u, app.lines.size());
}

TEST_F(TopScreenAppTest, ARegistrationWithoutItsTextsIsAnError) {
  EXPECT_EQ(1, app.handleInitResponse(E_NO_ERROR, nullptr));
  InitData incomplete;
  EXPECT_EQ(1, app.handleInitResponse(E_NO_ERROR, &incomplete));
  EXPECT_EQ(1u, app.lines.size());
  EXPECT_EQ(',', MyUtils::decimal_separator);
}

TEST_F(TopScreenAppTest, TwoEventsInOnePollLeadToOneDecision) {
  auto* transport = new ScriptedTransport;
  const std::string event =
    "<value><struct><member><name>eventID</name><value><int>105</int></value></member>"
    "<member><name>context</name><value><nil/></value></member></struct></value>";
  PlatformState data;
  data.ActiveGame = GAME_MENU;
  transport->replies["topscreen.init"] =
    "<struct><member><name>ID</name><value><int>5</int></value></member>"
    "<member><name>Locale</name><value>C</value></member>"
    "<member><name>DecimalSeparator</name><value>,</value></member>"
    "<member><name>ThousandSeparator</name><value>.</value></member>"
    "<member><name>ThousandGrouping</name><value><int>3</int></value></member>"
    "<member><name>Language</name><value>en</value></member></struct>";
  transport->replies["game.popEvents"] = "<array><data>" + event + event + "</data></array>";
  app.pKSL =
    std::make_unique<TKSLClient>("TopScreen", "http://nowhere/KSL", 0, xmlrpc_c::clientXmlTransportPtr(transport));
  app.pKSL->SetListener(&app);
  app.pKSL->SetPopRequestFrequency(300);
  app.pKSL->SetInitMethod("topscreen.init", ParseInitResponse, DestroyInitObject);
  app.hasNoData = false;
  ASSERT_EQ(0, app.pKSL->Start(true, 0));
  for (int i = 0; i < 10000 && !app.updatedGame; ++i) {
    EXPECT_EQ(0, app.RunOnce());
    SDL_Delay(1);
  }
  EXPECT_TRUE(app.updatedGame);
  EXPECT_EQ(2u, app.deferred()) << "clear the overlay, show the levels: once";
  app.pKSL->Stop();
}

TEST_F(TopScreenAppTest, ADeadClientIsStartedAgainAfterFiveSeconds) {
  FakeClock clock(1000);
  app.pKSL = std::make_unique<TKSLClient>("TopScreen", "http://nowhere/KSL", 0,
                                          xmlrpc_c::clientXmlTransportPtr(new ScriptedTransport));
  app.pKSL->SetInitMethod("topscreen.init", ParseInitResponse, DestroyInitObject);
  app.handleClientDied();
  app.ProcessTasks(TASK_NORMAL);
  clock.advance(5000);
  app.ProcessTasks(TASK_NORMAL);
  EXPECT_FALSE(app.pKSL->Running());
  clock.advance(1);
  app.ProcessTasks(TASK_NORMAL);
  EXPECT_TRUE(app.pKSL->Running());
  app.pKSL->Stop();
}

TEST_F(TopScreenAppTest, TheStartFiresPowerUp) {
  int fired = 0;
  app.AddActionListener("PowerUP",
                        new TahLambda([&fired](std::string, void* data) { fired += data == nullptr; },
                                      TActionHandler::ahtExecuteEndless),
                        ACTION_NORMAL);
  app.Startup();
  app.ProcessActions();
  app.ExecuteActions(ACTION_NORMAL);
  EXPECT_EQ(1, fired);
}

TEST_F(TopScreenAppTest, OnlyThePressOfF10AsksForTheFrequencies) {
  ASSERT_EQ(0, SDL_InitSubSystem(SDL_INIT_EVENTS));
  app.pKSL = std::make_unique<TKSLClient>("TopScreen", "http://nowhere/KSL", 0,
                                          xmlrpc_c::clientXmlTransportPtr(new ScriptedTransport));
  app.hasNoData = false;
  int asked = 0;
  app.AddActionListener("ShowFPS",
                        new TahLambda([&asked](std::string, void*) { ++asked; }, TActionHandler::ahtExecuteEndless),
                        ACTION_NORMAL);
  const auto key = [this](Uint32 type, SDL_Keycode code) {
    SDL_Event event{};
    event.type = type;
    event.key.keysym.sym = code;
    SDL_PushEvent(&event);
    const int result = app.RunOnce();
    app.ProcessActions();
    app.ExecuteActions(ACTION_NORMAL);
    return result;
  };
  EXPECT_EQ(0, key(SDL_KEYUP, SDLK_F10));
  EXPECT_EQ(0, key(SDL_KEYDOWN, SDLK_F9));
  EXPECT_EQ(0, asked);
  EXPECT_EQ(0, key(SDL_KEYDOWN, SDLK_F10));
  EXPECT_EQ(1, asked);
  EXPECT_EQ(0, key(SDL_KEYDOWN, SDLK_ESCAPE));
  EXPECT_FALSE(app.shuttingDown());
  EXPECT_EQ(1, key(SDL_KEYUP, SDLK_ESCAPE));
  SDL_QuitSubSystem(SDL_INIT_EVENTS);
}

TEST_F(TopScreenAppTest, AScreenWithoutAWindowDoesNothing) {
  screen.ShowJackpotsPanel();
  screen.ShowPaytablesPanel();
  screen.ShowInstructionsPanel();
  screen.UpdatePaytablesPanel(true);
  EXPECT_EQ(-1, screen.UpdateInstructionsPanel());
  EXPECT_EQ(-1, screen.UpdateJackpotPanel({}, ""));
  screen.ClearJackpotOverlay();
  screen.UpdateLanguage({"en", "min", "max", "hint", "prizes"});
  screen.SetDemoMode(1);
  screen.SetIntegrityCheckData("x");
  screen.ShowFPS();
  EXPECT_EQ(0, screen.UpdateGraphics());
}

TEST_F(TopScreenAppTest, InitNeedsTheHomeDirectory) {
  setenv("SDL_VIDEODRIVER", "dummy", 1);
  unsetenv("HOME_DIR");
  EXPECT_EQ(-1, app.Init());
}

TEST_F(TopScreenAppTest, ReleasedEscapeAndAClosedWindowEndTheLoopAndAPressDoesNot) {
  const struct {
    const char* name;
    std::function<void(TestApp&)> post;
    int result;
  } rows[] = {
    {"press", [](TestApp& a) { a.Quit(); }, 0},
    {"release of another key", [](TestApp& a) { a.PostSDLKeyboardEvent(false, SDLK_RETURN, KMOD_NONE); }, 0},
    {"release", [](TestApp& a) { a.PostSDLKeyboardEvent(false, SDLK_ESCAPE, KMOD_NONE); }, 1},
    {"closed",
     [](TestApp&) {
       SDL_Event quit{};
       quit.type = SDL_QUIT;
       SDL_PushEvent(&quit);
     },
     1},
  };
  setenv("SDL_VIDEODRIVER", "dummy", 1);
  for (const auto& row : rows) {
    TestApp fresh;
    ASSERT_EQ(SDL_Init(SDL_INIT_VIDEO | SDL_INIT_EVENTS), 0);
    SDL_FlushEvents(SDL_FIRSTEVENT, SDL_LASTEVENT);
    row.post(fresh);
    EXPECT_EQ(fresh.RunOnce(), row.result) << row.name;
    EXPECT_EQ(fresh.status() == TApplication::APP_TERMINATE, row.result == 1) << row.name;
    EXPECT_EQ(fresh.TerminationType, DEFAULT);
  }
}

TEST_F(TopScreenAppTest, TheLogicRunsBeforeThereIsAClientAndAsksLater) {
  app.updatedGame = true;
  EXPECT_EQ(app.RunOnce(), 0);
  EXPECT_TRUE(app.hasNoData);
  EXPECT_TRUE(app.updatedGame);
}
