// What happens while the pages of a game are being decoded.
#include <SDL_image.h>
#include <SDL_ttf.h>
#include <filesystem>

#include "tests/support/TestFont.h"
#include "tests/vesperatopscreen/PaytablesFixture.h"

using namespace paytabletest;
namespace fs = std::filesystem;

namespace {

class PaytableLoads : public Paytables {
 protected:
  PaytableLoads() : Paytables("paytableloads") {
    screen.app().AddActionListener("PaytableLoaded",
                                   new TahLambda([this](std::string, void* data) { loaded += data == nullptr; },
                                                 TActionHandler::ahtExecuteEndless),
                                   ACTION_NORMAL);
    screen.status([](PlatformState& state) { state.ExtraData = setup({page("paytable", {Text{}})}, 20, -1); });
  }

  // What the service says, without a frame.
  void change(const std::function<void(PlatformState&)>& change) {
    ScopedLock lock(screen.app().getState());
    change(&screen.app().getState());
  }
  // The paytable of Reels is opened and its pages are being decoded; their end waits for a frame.
  void startLoading() {
    change([](PlatformState& state) {
      state.ActiveGame = paneldata::game("Reels");
      state.ShowingPaytable = 1;
    });
    ASSERT_EQ(-1, panel()->UpdateData(true));
    ASSERT_EQ(1u, loads("Reels"));
  }
  // As before the first load.
  void forget() {
    panel()->clearPaytable();
    panel()->UpdateLanguage({});
    screen.app().forgetLines();
    loaded = 0;
  }
  // Until the pages of some game stand; -2 is "nothing loaded".
  void finishLoading() {
    ASSERT_TRUE(screen.until([this] { return panel()->updatePaytable() == 0; }));
  }
  void frames(int count) {
    for (int i = 0; i < count; ++i) screen.skip(200);
  }
  bool levelsAreShown() { return screen.visible("pJackpotsPanel") && !screen.visible("pPaytablesPanel"); }

  int loaded = 0;
};

std::string writeGame(const std::string& name) {
  const std::string icons = "Games/" + name + "/Icons/";
  fs::create_directories(icons + "paytable");
  return icons;
}

void writeJpg(const std::string& path, int width, int height, SDL_Color colour) {
  SDL_Surface* picture = SDL_CreateRGBSurfaceWithFormat(0, width, height, 32, SDL_PIXELFORMAT_RGBA32);
  SDL_FillRect(picture, nullptr, SDL_MapRGB(picture->format, colour.r, colour.g, colour.b));
  IMG_SaveJPG(picture, path.c_str(), 95);
  SDL_FreeSurface(picture);
}

struct Closing {
  const char* how;
  std::function<void(TopScreenHarness&)> close;
};

const Closing closings[] = {
  {"the paytable is closed",
   [](TopScreenHarness& screen) {
     screen.app().deliver({{T_PAYTABLE_STATE, value_int(0)}});
   }},
  {"the game is left",
   [](TopScreenHarness& screen) {
     screen.app().deliver({{T_GAME_EXITED, xmlrpc_c::value_nil()}});
   }},
  {"a level is won",
   [](TopScreenHarness& screen) {
     std::vector<JackpotsData> levels = paneldata::levels(1);
     levels[0].status = "WIN";
     screen.app().deliver({{T_JACKPOT_DATA, paneldata::levelsValue(levels)}, {T_PAYTABLE_STATE, value_int(1)}});
   }},
  {"the service fails", [](TopScreenHarness& screen) {
     screen.app().asMainThread([&] { screen.app().handleError(M_POPEVENTS, E_INTERNAL_ERROR, "gone"); });
   }}};

}  // namespace

TEST_F(PaytableLoads, APaytableThatIsClosedMeanwhileStaysClosedAndKeepsItsPages) {
  for (const Closing& row : closings) {
    SCOPED_TRACE(row.how);
    forget();
    ASSERT_TRUE(levelsAreShown());
    startLoading();
    row.close(screen);
    finishLoading();
    frames(10);
    EXPECT_EQ(0, loaded);
    EXPECT_TRUE(levelsAreShown());
    change([](PlatformState& state) { state.JackpotData.clear(); });
    enter("Reels");
    turnTo(1);
    EXPECT_TRUE(screen.visible("pPaytablesPanel")) << "at once";
    EXPECT_EQ("250", shown("A_3"));
    EXPECT_EQ(1u, loads("Reels"));
    EXPECT_EQ(0, panel()->UpdateData(true));
    frames(10);
    turnTo(0);
    frames(10);
  }
}

TEST_F(PaytableLoads, APaytableThatIsClosedWhileItsFadeInIsOnTheWayStaysClosed) {
  for (const Closing& row : closings) {
    if (std::string(row.how) == "the service fails") continue;  // changes no panel
    SCOPED_TRACE(row.how);
    forget();
    startLoading();
    finishLoading();  // the action was generated in that frame and is heard in the next
    row.close(screen);
    frames(10);
    EXPECT_EQ(1, loaded);
    EXPECT_TRUE(levelsAreShown());
    change([](PlatformState& state) { state.JackpotData.clear(); });
  }
}

TEST_F(PaytableLoads, TheFadeInIsDecidedInTheFrameAfterItsAction) {
  startLoading();
  finishLoading();
  screen.frame();
  EXPECT_EQ(1, loaded);
  EXPECT_FALSE(screen.visible("pPaytablesPanel")) << "a draw action does not ask for the state";
  screen.frame();
  EXPECT_TRUE(screen.visible("pPaytablesPanel"));
}

TEST_F(PaytableLoads, TheActionOfAnybodyElseShowsThePanel) {
  screen.app().GenerateAction("PaytableLoaded", nullptr, ACTION_ANY);
  frames(3);
  EXPECT_TRUE(screen.visible("pPaytablesPanel"));
}

TEST_F(PaytableLoads, APaytableThatIsClosedAndOpenedMeanwhileFadesInOnce) {
  startLoading();
  screen.app().deliver({{T_PAYTABLE_STATE, value_int(0)}});
  screen.app().deliver({{T_PAYTABLE_STATE, value_int(1)}});
  finishLoading();
  frames(10);
  EXPECT_EQ(1, loaded);
  EXPECT_TRUE(screen.visible("pPaytablesPanel"));
  EXPECT_FALSE(screen.visible("pJackpotsPanel"));
}

TEST_F(PaytableLoads, ALoadThatIsNotToFadeInLeavesThePanelAlone) {
  change([](PlatformState& state) {
    state.ActiveGame = paneldata::game("Reels");
    state.ShowingPaytable = 1;
  });
  EXPECT_EQ(-1, panel()->UpdateData(false));
  finishLoading();
  frames(10);
  EXPECT_EQ(0, loaded);
  EXPECT_TRUE(levelsAreShown());
  EXPECT_NE(nullptr, texture()) << "the page is set all the same";
}

TEST_F(PaytableLoads, AnotherGameThatShowsNoPaytableGetsItsPagesWithoutAFadeIn) {
  startLoading();
  screen.app().deliver(
    {{T_GAME_LOADED, gameValue("Wheels", GAMETYPE_VESPERA_SLOTGAME)}, {T_PAYTABLE_STATE, value_int(0)}});
  ASSERT_TRUE(screen.until([this] { return loads("Wheels") == 1; }));
  finishLoading();
  frames(10);
  EXPECT_EQ(0, loaded);
  EXPECT_TRUE(levelsAreShown());
  turnTo(1);
  EXPECT_TRUE(screen.visible("pPaytablesPanel"));
  EXPECT_EQ(1u, loads("Wheels"));
}

TEST_F(PaytableLoads, ALanguageThatChangesMeanwhileFadesInWithItsOwnPages) {
  startLoading();
  screen.app().deliver({{T_LANGUAGE, paneldata::texts({"sl", "NAJMANJ", "NAJVEC", "NAMIG", "DOBITKI"})}});
  ASSERT_TRUE(screen.until([this] { return loaded > 0; }));
  EXPECT_EQ(0, panel()->updatePaytable()) << "the pages stand by then";
  frames(10);
  EXPECT_EQ(1, loaded);
  EXPECT_EQ(2u, loads("Reels"));
  EXPECT_EQ(1u, screen.app().linesWith("in folder Games/Reels/Icons/paytable_sl."));
  EXPECT_TRUE(screen.visible("pPaytablesPanel"));
  EXPECT_EQ(rgb(panelskin::kPageSl), screen.pixel(960, 640));
}

TEST_F(PaytableLoads, AGameWithoutANameHasElevenAttempts) {
  const auto attempts = [this](int count) {
    change([](PlatformState& state) { state.ActiveGame = paneldata::game(""); });
    for (int i = 0; i < count; ++i) EXPECT_EQ(-1, panel()->UpdateData(false));
    change([](PlatformState& state) { state.ActiveGame = paneldata::game("Reels"); });
    EXPECT_EQ(-1, panel()->UpdateData(false));
  };
  attempts(10);
  EXPECT_EQ(1u, loads("Reels")) << "the eleventh is left for it";
  finishLoading();
  panel()->clearPaytable();
  panel()->UpdateLanguage({});  // the files are not known any more, and the pages have given all attempts back
  screen.app().forgetLines();
  attempts(11);
  EXPECT_EQ(0u, loads("Reels"));
  for (int i = 0; i < 5; ++i) EXPECT_EQ(-1, panel()->UpdateData(false));
  EXPECT_EQ(0u, loads("Reels")) << "and none comes back by waiting";
}

TEST_F(PaytableLoads, AnUnknownGameLetsThePagesOfTheOldOneGo) {
  startLoading();
  finishLoading();
  ASSERT_NE(nullptr, texture());
  change([](PlatformState& state) { state.ActiveGame = paneldata::game(""); });
  EXPECT_EQ(-1, panel()->UpdateData(true));
  EXPECT_EQ(nullptr, texture());
  EXPECT_EQ(-2, panel()->updatePaytable());
}

TEST_F(PaytableLoads, NoGameIsNoLoad) {
  EXPECT_EQ(0, panel()->loadImagesOfGame("", true));
  EXPECT_EQ(0u, screen.app().linesWith("Loading paytable images"));
}

TEST_F(PaytableLoads, TheBackgroundMayBeAJpgAndAPngGoesBeforeIt) {
  const std::string icons = writeGame("Paper");
  writeJpg(icons + "background.jpg", 120, 60, {0, 200, 0, 255});
  writeJpg(icons + "paytable/InfoPage_Paytable.jpg", 400, 200, {0, 0, 200, 255});
  const auto backgroundWidth = [this] {
    int w = 0;
    SDL_QueryTexture(screen.find("pPaytablesPanel/Background")->GetTargetTexture(), nullptr, nullptr, &w, nullptr);
    return w;
  };
  open({}, "Paper");
  EXPECT_EQ(120, backgroundWidth()) << "without a setup, too";
  testfont::writePicture(icons + "background.png", 96, 54, {200, 0, 0, 255});
  panel()->clearPaytable();
  panel()->UpdateLanguage({});
  turnTo(0);
  frames(5);
  open(setup({page("paytable", {Text{}})}, 20, -1), "Paper");
  EXPECT_EQ(96, backgroundWidth());
  fs::remove_all("Games/Paper");
}

TEST_F(PaytableLoads, APageBelongsToTheFolderOfItsLanguageAlone) {
  const std::string icons = writeGame("Tongues");
  fs::create_directories(icons + "paytable_sl");
  testfont::writePicture(icons + "paytable/InfoPage_Paytable.png", 40, 40, {0, 200, 0, 255});
  testfont::writePicture(icons + "paytable/InfoPage_Features.png", 50, 40, {0, 200, 0, 255});
  testfont::writePicture(icons + "paytable_sl/InfoPages_BonusFeature.png", 60, 40, {0, 200, 0, 255});
  testfont::writePicture(icons + "paytable_sl/background.png", 70, 40, {0, 200, 0, 255});
  testfont::writeText(icons + "paytable_de", "a file is no folder");
  const auto width = [this] {
    int w = 0;
    SDL_QueryTexture(texture(), nullptr, nullptr, &w, nullptr);
    return w;
  };
  screen.send(T_LANGUAGE, paneldata::texts({"sl", "", "", "", ""}));
  open({}, "Tongues");
  EXPECT_EQ(60, width()) << "the only page of this language is the first";
  turnTo(2);
  EXPECT_EQ(nullptr, texture()) << "the background lies above the folders";
  screen.send(T_LANGUAGE, paneldata::texts({"de", "", "", "", ""}));
  turnTo(0);
  frames(5);
  open({}, "Tongues");
  EXPECT_EQ(40, width());
  turnTo(2);
  EXPECT_EQ(50, width());
  fs::remove_all("Games/Tongues");
}

TEST_F(PaytableLoads, EveryPageIsBlendedAlsoOneWithoutAnAlphaChannel) {
  open(setup({page("paytable", {Text{}})}, 20, -1));
  for (int number : {1, 2, 3}) {
    SCOPED_TRACE(number);
    turnTo(number);
    SDL_BlendMode mode = SDL_BLENDMODE_INVALID;
    SDL_GetTextureBlendMode(texture(), &mode);
    EXPECT_EQ(SDL_BLENDMODE_BLEND, mode);
  }
  SDL_BlendMode mode = SDL_BLENDMODE_INVALID;
  SDL_GetTextureBlendMode(screen.find("pPaytablesPanel/Background")->GetTargetTexture(), &mode);
  EXPECT_EQ(SDL_BLENDMODE_BLEND, mode);
}

TEST_F(PaytableLoads, ThePagesOfALoadOfTheSameGameTakeThePlaceOfTheOldOnes) {
  open(setup({page("paytable", {Text{}})}, 20, -1));
  SDL_Texture* const before = texture();
  TGlyphLabel* const label = this->label("A_3");
  EXPECT_EQ(0, panel()->loadImagesOfGame("Reels", false));
  ASSERT_TRUE(screen.until([&] { return texture() != before; }));
  EXPECT_NE(nullptr, texture());
  EXPECT_EQ(label, this->label("A_3")) << "the texts stand";
  frames(2);
  EXPECT_EQ(rgb(panelskin::kPage), screen.pixel(960, 640));
  EXPECT_EQ(rgb(panelskin::kBackground), screen.pixel(100, 500));
}
