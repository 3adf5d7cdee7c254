#include "tests/vesperatopscreen/TopScreenAppFixture.h"

#include <algorithm>
#include <climits>
#include <cstdlib>

#include "tests/support/FakeClock.h"
#include "vesperatopscreen/InitData.h"

using namespace apptest;

TEST_F(TopScreenAppTest, StartsWithNothingKnown) {
  EXPECT_EQ("http://127.0.0.1:9011/KSL", app.serverUrl);
  EXPECT_TRUE(app.hasNoData);
  EXPECT_TRUE(state().IsLoading);
  app.setServerAddress("10.1.2.3:8080");
  EXPECT_EQ("http://10.1.2.3:8080/KSL", app.serverUrl);
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
  MyUtils::thousand_grouping[1] = 2;
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

TEST_F(TopScreenAppTest, AnEmptySeparatorIsNone) {
  int errorCode = 0;
  void* data = ParseInitResponse(xmlrpc_c::value_struct({{"ID", xmlrpc_c::value_int(1)},
                                                         {"Locale", xmlrpc_c::value_string("C")},
                                                         {"DecimalSeparator", xmlrpc_c::value_string("")},
                                                         {"ThousandSeparator", xmlrpc_c::value_string("'")},
                                                         {"ThousandGrouping", xmlrpc_c::value_int(INT_MIN)},
                                                         {"Language", xmlrpc_c::value_string("")}}),
                                 errorCode);
  EXPECT_EQ(0, app.handleInitResponse(E_NO_ERROR, data));
  EXPECT_EQ('\0', MyUtils::decimal_separator);
  EXPECT_EQ('\'', MyUtils::thousand_separator);
  EXPECT_EQ(0, MyUtils::thousand_grouping[0]) << "its last eight bits";
  DestroyInitObject(data);
}

TEST_F(TopScreenAppTest, AReplyWithAMissingKeyIsAFailedRegistration) {
  auto* transport = new ScriptedTransport;
  transport->replies["topscreen.init"] =
    "<struct><member><name>ID</name><value><int>5</int></value></member></struct>";
  TKSLClient client("TopScreen", "http://nowhere/KSL", 0, xmlrpc_c::clientXmlTransportPtr(transport));
  client.SetListener(&app);
  client.SetInitMethod("topscreen.init", ParseInitResponse, DestroyInitObject);
  EXPECT_EQ(-1, client.Start(true, 0));
  // More than one where the machine is so busy that the next series of attempts has begun meanwhile.
  EXPECT_LE(1, std::count_if(app.lines.begin(), app.lines.end(), [](const TestApp::Line& line) {
              return line.text == "KSL: ERROR on init [Parsing of topscreen.init response failed.]!!!";
            }));
  EXPECT_EQ(',', MyUtils::decimal_separator);
  EXPECT_EQ(-1, client.ID());
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
  struct Client : TKSLClient {
    static unsigned int retries(const TKSLClient& client) { return client.*(&Client::NumRetries); }
  };
  EXPECT_EQ(3u, Client::retries(*app.pKSL));
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
