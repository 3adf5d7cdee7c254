#include "vesperatopscreen/TopScreenScreen.h"

#include <SDL_ttf.h>
#include <gtest/gtest.h>
#include <filesystem>

#include "components/TGlyphLabel.h"
#include "components/Tlabel.h"
#include "kslplatform/TPlatformLoader.h"
#include "tests/support/ComponentPeek.h"
#include "tests/support/TopScreenHarness.h"

using namespace vendelo_sdl2;
using paneldata::gameValue;
using paneldata::levels;
using xmlrpc_c::value_boolean;
using xmlrpc_c::value_int;

namespace {

constexpr const char *kJackpots = "pJackpotsPanel", *kInstructions = "pInstructionsPanel",
                     *kPaytables = "pPaytablesPanel", *kHint = "infoLabel";

class Screen : public testing::Test {
 protected:
  explicit Screen(int divisor = 4) : screen("screen", divisor) {}

  // The menu without instructions, with that many levels.
  void start(int count) {
    screen.status([count](PlatformState& state) {
      state.ActiveGame = GAME_MENU;
      state.JackpotData = levels(count);
    });
    screen.skip(600);
  }
  // The one panel that is visible; "several" or "none".
  std::string panel() {
    std::string found = "none";
    for (const char* name : {kJackpots, kInstructions, kPaytables})
      if (screen.visible(name)) found = found == "none" ? name : "several";
    return found;
  }
  void showFps() {
    screen.app().GenerateAction("ShowFPS", nullptr, ACTION_ANY);
    screen.frame();
  }
  int alpha(const char* name) { return screen.find(name)->alpha(); }

  TopScreenHarness screen;
};

class ScreenPictures : public Screen {
 protected:
  ScreenPictures() : Screen(1) {}
};

}  // namespace

TEST_F(Screen, IsBuiltFromBackToFront) {
  EXPECT_EQ((std::vector<std::string>{"pBackground", "pDemoBackground", kJackpots, kInstructions, kPaytables,
                                      "plFPS", "plRealFPS", kHint}),
            screen.screen().rootNames());
  for (const char* name : {"pBackground", "pDemoBackground", kJackpots, kInstructions, kPaytables}) {
    const SDL_Rect place = screen.find(name)->getDestRect();
    EXPECT_TRUE(place.x == 0 && place.y == 0 && place.w == 1920 && place.h == 1080) << name;
  }
  EXPECT_EQ(1030, screen.find(kHint)->getY());
  EXPECT_EQ(25, screen.find(kHint)->getHeight());
  EXPECT_EQ("Select bet per line with BET+/- and press SPIN button to start new game.",
            screen.find<TGlyphLabel>(kHint)->GetText());
  for (const char* name : {kInstructions, kPaytables, "plFPS", "plRealFPS", kHint})
    EXPECT_FALSE(screen.visible(name)) << name;
  EXPECT_TRUE(screen.visible(kJackpots));
  EXPECT_TRUE(screen.visible("pDemoBackground")) << "until the platform has spoken of the demo mode";
  SDL_BlendMode mode = SDL_BLENDMODE_INVALID;
  SDL_GetTextureBlendMode(screen.find("pBackground")->GetTargetTexture(), &mode);
  EXPECT_EQ(SDL_BLENDMODE_NONE, mode);
  SDL_GetTextureBlendMode(screen.find("pDemoBackground")->GetTargetTexture(), &mode);
  EXPECT_EQ(SDL_BLENDMODE_BLEND, mode);
}

TEST_F(Screen, ItsLabelsHaveTheirPlaces) {
  const auto place = [this](const char* name) { return placeText(screen.find(name)->getDestRect()); };
  EXPECT_EQ("10, 10, 200, 16", place("plFPS"));
  EXPECT_EQ("10, 50, 300, 16", place("plRealFPS"));
  EXPECT_EQ("0, 1030, 1920, 25", place(kHint));
  for (const char* name : {"plFPS", "plRealFPS"}) EXPECT_EQ("", screen.find<Tlabel>(name)->GetText());
  EXPECT_EQ("Fonts/uni_font 4 shrinks",
            peek::Label::look(*screen.find<TGlyphLabel>(kHint), screen.folder() + "VESPERA/TOP_SKIN/"));
  EXPECT_EQ("0, 0, 1920, 1080", placeText(screen.screen().Loader()->getDestRect()));
}

TEST_F(Screen, RefreshesTheFrequenciesByATaskOfTheDrawThread) {
  TTimedTaskHandler* task = screen.app().GetTimedTask(&screen.screen());
  ASSERT_NE(nullptr, task);
  EXPECT_EQ("TopScreenScreen::UpdateGraphics, 1000", task->GetName());
  EXPECT_EQ(1000u, task->GetInterval());
  EXPECT_EQ(TTimedTaskHandler::ENDLESS, task->GetType());
  EXPECT_TRUE(screen.app().IsTimedTaskValid(task, TASK_DRAW));
}

TEST(ScreenFont, OneThatCannotBeOpenedIsToldInTheLog) {
  const auto told = [] {
    TopScreenHarness screen("screen", 4);
    const std::string file = screen.folder() + "/AppFontBold.ttf";
    const size_t lines = screen.app().linesWith("AppFontBold");
    if (TTF_Font* font = TTF_OpenFont(file.c_str(), 34)) TTF_CloseFont(font);
    EXPECT_EQ(lines, screen.app().linesOf("4|Font " + file + " is not usable: " + TTF_GetError() + "."));
    return lines;
  };
  EXPECT_EQ(0U, told());
  std::filesystem::rename("AppFontBold.ttf", "elsewhere.ttf");
  EXPECT_EQ(1U, told());
  std::filesystem::rename("elsewhere.ttf", "AppFontBold.ttf");
}

TEST_F(Screen, TheLoaderStandsUntilTheFirstGoodData) {
  auto* loader = dynamic_cast<TPlatformLoader*>(screen.screen().Loader());
  ASSERT_NE(nullptr, loader);
  EXPECT_EQ("KSL loader", loader->getName());
  EXPECT_EQ("Waiting for KSL connection...",
            dynamic_cast<Tlabel*>(loader->FindComponentByName("statusLabelKSLLoader"))->GetText());
  KSLError error(E_INTERNAL_ERROR, "no answer");
  screen.app().StatusReceived(&error, true);
  EXPECT_EQ(TApplication::APP_STARTUP_GRAPHICS, screen.app().status());
  start(1);
  EXPECT_EQ(TApplication::APP_RUNNING, screen.app().status());
  EXPECT_EQ("HINT LINE", screen.find<TGlyphLabel>(kHint)->GetText()) << "with the first data the texts came";
}

TEST_F(Screen, EachStateOfThePlatformHasItsPanel) {
  start(2);
  EXPECT_EQ(kJackpots, panel());
  const auto win = [](PlatformState& state, const char* status) { state.JackpotData[0].status = status; };
  const struct {
    const char* name;
    std::function<void(PlatformState&)> change;
    const char* wanted;
    bool hint, rendering;
  } rows[] = {
    {"menu, instructions", [](PlatformState& s) { s.Instructions = {"SPIN"}; }, kInstructions, false, true},
    {"no game, instructions", [](PlatformState& s) { s.ActiveGame = GAME_NULL; }, kInstructions, false, true},
    {"no game", [](PlatformState& s) { s.Instructions.clear(); }, kJackpots, false, true},
    {"slot game", [](PlatformState& s) { s.ActiveGame = paneldata::game("Reels"); }, kJackpots, true, true},
    {"top screen", [](PlatformState& s) { s.ActiveGame = GAME_TOPSCREEN; }, kJackpots, true, true},
    {"slot game, paytable",
     [](PlatformState& s) {
       s.ActiveGame = paneldata::game("Reels");
       s.ShowingPaytable = 1;
     },
     kPaytables, true, true},
    {"slot game, paytable, win", [&](PlatformState& s) { win(s, "WIN"); }, kJackpots, true, true},
    {"slot game, paytable, another status", [&](PlatformState& s) { win(s, "WINNER"); }, kPaytables, true, true},
    {"roulette, loading",
     [](PlatformState& s) {
       s.ActiveGame = GameRegistryEntry(9, "Wheel", GAMETYPE_ROULETTE);
       s.IsLoading = true;
     },
     kPaytables, true, true},
    {"roulette", [](PlatformState& s) { s.IsLoading = false; }, kPaytables, true, false},
    {"menu again", [](PlatformState& s) { s.ActiveGame = GAME_MENU; }, kJackpots, false, true},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    screen.status(row.change);
    EXPECT_TRUE(screen.until([&] { return screen.visible(row.wanted); }));
    screen.skip(600);
    EXPECT_EQ(row.wanted, panel());
    EXPECT_EQ(row.hint, screen.visible(kHint));
    EXPECT_EQ(row.rendering, screen.screen().IsRendering());
  }
}

TEST_F(Screen, APanelFadesInOverHalfASecondWhileTheOtherFadesOut) {
  start(1);
  screen.send(T_INSTRUCTIONS, paneldata::texts({"SPIN"}));
  EXPECT_EQ(0, alpha(kInstructions));
  EXPECT_TRUE(screen.visible(kJackpots));
  screen.frames(250);
  EXPECT_NEAR(127, alpha(kInstructions), 10);
  EXPECT_NEAR(127, alpha(kJackpots), 10);
  screen.frames(300);
  EXPECT_EQ(255, alpha(kInstructions));
  EXPECT_FALSE(screen.visible(kJackpots));
}

TEST_F(Screen, ShowingAPanelAgainStartsNoOtherFade) {
  start(1);
  for (int i = 0; i < 3; ++i) {
    screen.screen().ShowJackpotsPanel();
    screen.frame();
    EXPECT_EQ(255, alpha(kJackpots));
  }
  EXPECT_EQ(kJackpots, panel());
}

TEST_F(Screen, InstructionsDuringAGameStandUntilTheNextChangeOfTheGame) {
  start(1);
  screen.send(T_GAME_LOADED, gameValue("Reels", GAMETYPE_VESPERA_SLOTGAME));
  screen.skip(600);
  screen.send(T_INSTRUCTIONS, paneldata::texts({"SPIN"}));
  screen.skip(600);
  EXPECT_EQ(kInstructions, panel());
  screen.send(T_BET_LIMITS, paneldata::bets(100, 20, 200));
  screen.skip(600);
  EXPECT_EQ(kJackpots, panel());
  screen.send(T_INSTRUCTIONS, paneldata::texts({}));
  screen.skip(600);
  EXPECT_EQ(kJackpots, panel());
}

TEST_F(Screen, TheHintLineStandsInAGameWithLevels) {
  start(0);
  EXPECT_FALSE(screen.visible(kHint));
  screen.send(T_GAME_LOADED, gameValue("Reels", GAMETYPE_VESPERA_SLOTGAME));
  EXPECT_FALSE(screen.visible(kHint)) << "no levels";
  screen.status([](PlatformState& state) {
    state.ActiveGame = paneldata::game("Reels");
    state.JackpotData = levels(1);
  });
  EXPECT_TRUE(screen.visible(kHint));
  screen.send(T_GAME_EXITED);
  EXPECT_FALSE(screen.visible(kHint));
}

TEST_F(Screen, TheHintLineIsTheFourthMessage) {
  start(1);
  screen.send(T_LANGUAGE, paneldata::texts({"sl", "a", "b", "NAMIG"}));
  EXPECT_EQ("NAMIG", screen.find<TGlyphLabel>(kHint)->GetText());
  screen.send(T_LANGUAGE, paneldata::texts({"sl", "a", "b"}));
  EXPECT_EQ("NAMIG", screen.find<TGlyphLabel>(kHint)->GetText());
  EXPECT_EQ(1u,
            screen.app().linesOf("4|The platform sent 3 language messages, 4 are needed: the hint line stays."));
}

TEST_F(Screen, AStateBringsDemoModeAndErrorAndItsMessagesOnlyAtFirst) {
  start(1);
  EXPECT_FALSE(screen.visible("pDemoBackground")) << "the first state has spoken of it";
  screen.status([](PlatformState& state) {
    state.DemoMode = true;
    state.JackpotErrorString = "METER FAULT";
    state.LanguageMessages = {"sl", "a", "b", "NAMIG"};
  });
  EXPECT_TRUE(screen.visible("pDemoBackground"));
  EXPECT_TRUE(screen.visible("pJackpotsPanel/jackpotErrorLabel"));
  EXPECT_EQ("HINT LINE", screen.find<TGlyphLabel>(kHint)->GetText());
  screen.status([](PlatformState& state) {
    state.DemoMode = false;
    state.JackpotErrorString.clear();
  });
  EXPECT_FALSE(screen.visible("pDemoBackground"));
  EXPECT_FALSE(screen.visible("pJackpotsPanel/jackpotErrorLabel"));
  EXPECT_NE(nullptr, screen.find("pJackpotsPanel/pJackpotPanel[0]"));
}

TEST_F(Screen, ShowingTheLevelsAgainLooksAtTheOverlayAgain) {
  start(1);
  screen.find("pJackpotsPanel/logo")->_setVisible(true);
  screen.screen().ShowJackpotsPanel();
  EXPECT_FALSE(screen.visible("pJackpotsPanel/logo"));
  EXPECT_EQ(255, alpha(kJackpots));
}

TEST_F(Screen, TheHintLineFollowsThePanel) {
  start(1);
  screen.screen().ShowPaytablesPanel();
  EXPECT_TRUE(screen.visible(kHint));
  screen.screen().ShowInstructionsPanel();
  EXPECT_TRUE(screen.visible(kHint)) << "the instructions leave it";
  screen.screen().ShowJackpotsPanel();
  EXPECT_FALSE(screen.visible(kHint));
  screen.screen().ShowInstructionsPanel();
  EXPECT_FALSE(screen.visible(kHint));
}

TEST_F(Screen, TheDemoBackgroundComesAndGoesAtOnce) {
  screen.screen().SetDemoMode(0);
  EXPECT_FALSE(screen.visible("pDemoBackground"));
  start(1);
  screen.send(T_DEMO_MODE, value_boolean(true));
  EXPECT_TRUE(screen.visible("pDemoBackground"));
  EXPECT_EQ(255, alpha("pDemoBackground"));
  screen.send(T_DEMO_MODE, value_boolean(false));
  EXPECT_FALSE(screen.visible("pDemoBackground"));
}

TEST_F(Screen, TheFrequenciesAreToggledAndRefreshedOnceASecond) {
  start(1);
  auto *loop = screen.find<Tlabel>("plFPS"), *frames = screen.find<Tlabel>("plRealFPS");
  EXPECT_EQ(10, loop->getX());
  EXPECT_EQ(50, frames->getY());
  showFps();
  EXPECT_TRUE(loop->isVisible());
  EXPECT_TRUE(frames->isVisible());
  loop->SetText("");
  frames->SetText("");
  screen.frames(400);
  screen.frames(700);
  EXPECT_EQ("Loop freq.: 0", loop->GetText());
  EXPECT_EQ("FPS: 0.0 (0.0)", frames->GetText());
  showFps();
  EXPECT_FALSE(loop->isVisible());
  EXPECT_FALSE(frames->isVisible());
}

TEST_F(Screen, TheFrequenciesAreToldWithOneDecimalInThirtyOneLetters) {
  start(1);
  auto *loop = screen.find<Tlabel>("plFPS"), *frames = screen.find<Tlabel>("plRealFPS");
  const struct {
    float fps, noVsync;
    const char* text;
  } rows[] = {{59.94f, 1000.0f, "FPS: 59.9 (1000.0)"},
              {7.25f, 0.0f, "FPS: 7.2 (0.0)"},
              {1e9f, 1e9f, "FPS: 1000000000.0 (1000000000.0"},
              {-1e20f, 1.0f, "FPS: -100000002004087734272.0 ("}};
  screen.app().mCurrentFreq = 61;
  for (const auto& row : rows) {
    screen.screen().mFPS = row.fps;
    screen.screen().mFPS_noVsync = row.noVsync;
    loop->SetText("");
    EXPECT_EQ(0, screen.screen().UpdateGraphics());
    EXPECT_EQ(row.text, frames->GetText());
    EXPECT_EQ("Loop freq.: 61", loop->GetText()) << "hidden or not";
  }
}

TEST_F(Screen, TwoEventsInOnePollLeadToOneRebuild) {
  start(1);
  screen.app().forgetLines();
  screen.app().deliver({{T_JACKPOT_DATA, paneldata::levelsValue(levels(2))},
                        {T_JACKPOT_DATA, paneldata::levelsValue(levels(4))},
                        {T_JACKPOT_REFRESH, xmlrpc_c::value_nil()}});
  screen.frame();
  EXPECT_EQ(1u, screen.app().linesWith("1|Creating jackpot panel with"));
  EXPECT_EQ(1u, screen.app().linesOf("1|Creating jackpot panel with 4 levels."));
}

TEST_F(ScreenPictures, TheLoaderLooksLikeThis) {
  screen.clock().set(99750);  // half a breath after a whole number of them
  screen.frame();
  EXPECT_EQ("", screen.picture("vesperatopscreen/Screen_Loader", TopScreenHarness::whole(), 4));
}

TEST_F(ScreenPictures, DemoModeFrequenciesAndHintLineLookLikeThis) {
  start(2);
  screen.send(T_DEMO_MODE, value_boolean(true));
  screen.send(T_GAME_LOADED, gameValue("Nothing", GAMETYPE_VESPERA_SLOTGAME));
  showFps();
  screen.frames(1100);
  screen.joinSprites();
  screen.frame();
  EXPECT_EQ("", screen.picture("vesperatopscreen/Screen_DemoAndFrequencies", {0, 0, 960, 160}, 2));
  EXPECT_EQ("", screen.picture("vesperatopscreen/Screen_HintLine", {640, 960, 640, 120}, 2));
}

TEST_F(ScreenPictures, HalfAFadeLooksLikeThis) {
  start(2);
  screen.joinSprites();
  screen.send(T_INSTRUCTIONS, paneldata::texts({"SPIN"}));
  screen.frames(260);
  EXPECT_EQ("", screen.picture("vesperatopscreen/Screen_HalfAFade", TopScreenHarness::whole(), 4));
}
