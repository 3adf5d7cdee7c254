#include "vesperatopscreen/TPaytablesPanel.h"

#include <gtest/gtest.h>
#include <filesystem>

#include "components/TGlyphLabel.h"
#include "components/Tlabel.h"
#include "tests/support/PanelSkin.h"
#include "tests/support/TopScreenHarness.h"

using namespace vendelo_sdl2;
using paneldata::game;
using paneldata::gameValue;
using paneldata::page;
using paneldata::setup;
using paneldata::Text;
using xmlrpc_c::value_int;
namespace fs = std::filesystem;

namespace {

constexpr const char* kPanel = "pPaytablesPanel";
constexpr const char* kPage = "pPaytablesPanel/HelpScreen";
constexpr const char* kBackground = "pPaytablesPanel/Background";

Uint32 rgb(SDL_Color colour) {
  return static_cast<Uint32>(colour.r) << 16 | static_cast<Uint32>(colour.g) << 8 | colour.b;
}

// The small screen: a pixel in four of each direction.
class PaytablesPanel : public testing::Test {
 protected:
  PaytablesPanel() : screen("paytables", 4) {
    screen.status([](PlatformState& state) {
      state.ActiveGame = GAME_MENU;
      state.CurrentBet = 100;
      state.MinBet = 20;
      state.MaxBet = 2000;
      state.ExtraData = setup({page("paytable", {Text{}})}, 20, -1);
    });
  }

  TPaytablesPanel* panel() { return screen.find<TPaytablesPanel>(kPanel); }
  // The texture of the page that is shown; null without one.
  SDL_Texture* texture() { return screen.find(kPage)->GetTargetTexture(); }
  // Opens page `number` of a game and waits until it is on the screen.
  void open(const std::string& name, int number) {
    screen.send(T_GAME_LOADED, gameValue(name, GAMETYPE_VESPERA_SLOTGAME));
    screen.send(T_PAYTABLE_STATE, value_int(number));
    settle();
  }
  // Until a page stands and the fade has ended.
  void settle() {
    ASSERT_TRUE(screen.until([this] { return texture() && screen.visible(kPanel); }));
    screen.skip(600);
  }
  // A pixel inside the page's card, away from its mark and its texts.
  Uint32 pageColour() { return screen.pixel(960, 640); }
  size_t loads(const std::string& game, const std::string& folder) {
    return screen.app().linesOf("1|Loading paytable images for game " + game + " in folder " + folder + ".");
  }

  TopScreenHarness screen;
};

}  // namespace

TEST(PaytablePages, HaveTheirNamesInThisOrder) {
  const char* const names[] = {"background",
                               "InfoPage_Paytable",
                               "InfoPage_Paytable_Bonus",
                               "InfoPage_ExpandFeature",
                               "InfoPage_Features",
                               "InfoPages_BonusFeature",
                               "InfoPage_Features2",
                               "InfoPages_Features2",
                               "InfoPages_BonusFeature2",
                               "InfoPage_Rules"};
  for (size_t i = 0; i < 10; ++i) EXPECT_STREQ(names[i], possibleScreensArray[i]);
}

TEST_F(PaytablesPanel, IsMadeOfABackgroundAndAPageInFrontOfIt) {
  TGuiComponent *background = screen.find(kBackground), *page = screen.find(kPage);
  ASSERT_NE(nullptr, background);
  ASSERT_NE(nullptr, page);
  EXPECT_EQ(1920, background->getWidth());
  EXPECT_EQ(1080, page->getHeight());
  EXPECT_FALSE(screen.visible(kPanel));
}

TEST_F(PaytablesPanel, ThePageNumbersCountFromTheBackground) {
  const struct {
    int number;
    SDL_Color colour;
    SDL_Rect place;
  } rows[] = {{1, panelskin::kPage, {610, 340, 700, 400}},
              {2, panelskin::kBonus, {660, 360, 600, 360}},
              {3, panelskin::kRules, {800, 440, 320, 200}}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.number);
    open("Reels", row.number);
    const SDL_Rect place = screen.find(kPage)->getDestRect();
    EXPECT_TRUE(SDL_RectEquals(&row.place, &place))
      << place.x << "," << place.y << " " << place.w << "," << place.h;
    const Uint32 seen = screen.pixel(960, 620), wanted = rgb(row.colour);
    for (int shift : {0, 8, 16}) EXPECT_NEAR(wanted >> shift & 255, seen >> shift & 255, 3);
    EXPECT_EQ(rgb(panelskin::kBackground), screen.pixel(100, 500)) << "the game's background lies around it";
  }
  EXPECT_EQ(1u, loads("Reels", "Games/Reels/Icons/paytable")) << "one load serves all pages";
}

TEST_F(PaytablesPanel, APageThatIsNotThereGivesTheFirstEntry) {
  open("Reels", 1);
  for (int number : {4, 99, -1}) {
    SCOPED_TRACE(number);
    screen.send(T_PAYTABLE_STATE, value_int(2));
    testing::internal::CaptureStdout();
    screen.send(T_PAYTABLE_STATE, value_int(number));
    EXPECT_EQ("Can not show paytayble 'Reels' - was expecting it to be loaded -> going to first page\n",
              testing::internal::GetCapturedStdout());
    EXPECT_EQ(screen.find(kBackground)->GetTargetTexture(), texture());
    EXPECT_TRUE(screen.visible("pPaytablesPanel/HelpScreen/A_3")) << "with the texts of the first page";
  }
}

TEST_F(PaytablesPanel, APngGoesBeforeAJpgOfTheSameName) {
  screen.send(T_LANGUAGE, paneldata::texts({"sl", "NAJMANJ", "NAJVEC", "NAMIG", "DOBITKI"}));
  open("Reels", 1);
  EXPECT_EQ(1u, loads("Reels", "Games/Reels/Icons/paytable_sl"));
  int w = 0;
  SDL_QueryTexture(texture(), nullptr, nullptr, &w, nullptr);
  EXPECT_EQ(700, w) << "the .jpg is 320 wide";
  EXPECT_EQ(rgb(panelskin::kPageSl), pageColour());
  EXPECT_EQ(rgb(panelskin::kBackground), screen.pixel(100, 500)) << "from above the folders of the languages";
}

TEST_F(PaytablesPanel, ALanguageWithoutAFolderFallsBack) {
  for (const char* language : {"de", "", "../../Wheels/Icons/paytable"}) {
    SCOPED_TRACE(language);
    screen.app().forgetLines();
    screen.send(T_LANGUAGE, paneldata::texts({language, "MIN", "MAX", "HINT", "PRIZES"}));
    open("Reels", 1);
    EXPECT_EQ(1u, loads("Reels", "Games/Reels/Icons/paytable"));
    EXPECT_EQ(rgb(panelskin::kPage), pageColour());
  }
}

TEST_F(PaytablesPanel, AnotherLanguageLooksForItsFilesAtTheNextUpdate) {
  open("Reels", 1);
  auto* minimum = screen.find<Tlabel>("pPaytablesPanel/minBetLabel");
  ASSERT_NE(nullptr, minimum);
  EXPECT_EQ("MIN: 20", minimum->GetText());
  screen.send(T_LANGUAGE, paneldata::texts({"sl", "NAJMANJ", "NAJVEC", "NAMIG", "DOBITKI"}));
  EXPECT_EQ(rgb(panelskin::kPage), pageColour()) << "nothing changes before the next update";
  screen.send(T_BET_LIMITS, paneldata::bets(100, 20, 2000));
  EXPECT_EQ(nullptr, texture()) << "the old pages are gone while the new ones are decoded";
  settle();
  EXPECT_EQ(rgb(panelskin::kPageSl), pageColour());
  minimum = screen.find<Tlabel>("pPaytablesPanel/minBetLabel");
  ASSERT_NE(nullptr, minimum);
  EXPECT_EQ("NAJMANJ: 20", minimum->GetText());
  EXPECT_EQ("NAJVEC: 2.000 ", screen.find<Tlabel>("pPaytablesPanel/maxBetLabel")->GetText());
  EXPECT_EQ("DOBITKI", screen.find<TGlyphLabel>("pPaytablesPanel/prizeLabel")->GetText());
}

TEST_F(PaytablesPanel, AnotherGameTakesThePlaceOfTheOld) {
  open("Reels", 2);
  open("Wheels", 1);
  EXPECT_EQ(rgb(panelskin::kWheels), pageColour());
  open("Reels", 1);
  EXPECT_EQ(rgb(panelskin::kPage), pageColour());
  EXPECT_EQ(1u, loads("Reels", "Games/Reels/Icons/paytable")) << "the files are not searched again";
}

TEST_F(PaytablesPanel, TheDrawThreadNeverWaitsForTheFiles) {
  screen.send(T_GAME_LOADED, gameValue("Reels", GAMETYPE_VESPERA_SLOTGAME));
  screen.app().deliver({{T_PAYTABLE_STATE, value_int(1)}});
  screen.frame();
  EXPECT_EQ(1u, loads("Reels", "Games/Reels/Icons/paytable"));
  EXPECT_EQ(nullptr, texture()) << "the pictures come with a later frame";
  EXPECT_FALSE(screen.visible(kPanel));
  settle();
}

TEST_F(PaytablesPanel, TheEndOfTheLoadFadesThePanelIn) {
  int loaded = 0;
  screen.app().AddActionListener("PaytableLoaded",
                                 new TahLambda([&loaded](std::string, void* data) { loaded += data == nullptr; },
                                               TActionHandler::ahtExecuteEndless),
                                 ACTION_NORMAL);
  open("Reels", 1);
  EXPECT_EQ(1, loaded);
  EXPECT_FALSE(screen.visible("pJackpotsPanel"));
  screen.send(T_PAYTABLE_STATE, value_int(2));
  screen.send(T_BET_LIMITS, paneldata::bets(200, 20, 2000));
  EXPECT_EQ(1, loaded) << "once for each load";
}

TEST_F(PaytablesPanel, UpdatesDuringALoadStartNoOther) {
  screen.send(T_GAME_LOADED, gameValue("Reels", GAMETYPE_VESPERA_SLOTGAME));
  int loaded = 0;
  screen.app().AddActionListener(
    "PaytableLoaded", new TahLambda([&loaded](std::string, void*) { ++loaded; }, TActionHandler::ahtExecuteEndless),
    ACTION_NORMAL);
  {
    ScopedLock lock(screen.app().getState());
    screen.app().getState()->ShowingPaytable = 1;
  }
  for (int i = 0; i < 20; ++i) EXPECT_EQ(0, panel()->loadImagesOfGame("Reels", i == 7));
  screen.until([&] { return loaded > 0; });
  for (int i = 0; i < 5; ++i) screen.frame();
  EXPECT_EQ(1, loaded) << "one load, which took the fade-in over";
}

TEST_F(PaytablesPanel, AStaleLoadOfAnotherGameGivesWayToTheRightOne) {
  screen.send(T_GAME_LOADED, gameValue("Reels", GAMETYPE_VESPERA_SLOTGAME));
  screen.app().deliver({{T_PAYTABLE_STATE, value_int(1)}});
  screen.frame();
  screen.send(T_GAME_LOADED, gameValue("Wheels", GAMETYPE_VESPERA_SLOTGAME));
  // The first game's pages may stand for a moment before the second's come.
  ASSERT_TRUE(screen.until([this] {
    screen.skip(600);
    return pageColour() == rgb(panelskin::kWheels);
  }));
  for (int i = 0; i < 50; ++i) {
    SDL_Delay(1);
    screen.frame();
  }
  EXPECT_TRUE(screen.until([this] { return texture() != nullptr; }));
  screen.skip(600);
  EXPECT_EQ(rgb(panelskin::kWheels), pageColour());
}

TEST_F(PaytablesPanel, AGameWithoutFilesShowsItsEmptyPage) {
  screen.send(T_GAME_LOADED, gameValue("Nothing", GAMETYPE_VESPERA_SLOTGAME));
  testing::internal::CaptureStdout();
  screen.send(T_PAYTABLE_STATE, value_int(1));
  const bool shown = screen.until([this] { return screen.visible(kPanel); });
  EXPECT_NE(std::string::npos,
            testing::internal::GetCapturedStdout().find("Can not show paytayble 'Nothing' - was expecting it"));
  EXPECT_TRUE(shown);
  EXPECT_EQ(nullptr, texture());
  EXPECT_EQ(1u, loads("Nothing", "Games/Nothing/Icons/paytable"));
  screen.send(T_PAYTABLE_STATE, value_int(2));
  EXPECT_EQ(1u, loads("Nothing", "Games/Nothing/Icons/paytable")) << "a list with one empty entry counts as filled";
}

TEST_F(PaytablesPanel, AGameWithoutANameIsTriedElevenTimes) {
  screen.status([](PlatformState& state) { state.ActiveGame = game(""); });
  for (int i = 0; i < 11; ++i) EXPECT_EQ(-1, panel()->UpdateData(false)) << i;
  screen.status([](PlatformState& state) { state.ActiveGame = game("Reels"); });
  EXPECT_EQ(-1, panel()->UpdateData(false));
  EXPECT_EQ(0u, screen.app().linesWith("Loading paytable images")) << "the attempts are used up";
}

TEST_F(PaytablesPanel, AShownPageGivesAllAttemptsBack) {
  screen.status([](PlatformState& state) { state.ActiveGame = game(""); });
  for (int i = 0; i < 10; ++i) EXPECT_EQ(-1, panel()->UpdateData(false));
  open("Reels", 1);
  screen.status([](PlatformState& state) { state.ActiveGame = game(""); });
  screen.skip(600);  // a panel that is still fading out would not be faded in
  for (int i = 0; i < 10; ++i) EXPECT_EQ(-1, panel()->UpdateData(false));
  open("Wheels", 1);
  EXPECT_EQ(rgb(panelskin::kWheels), pageColour());
}

TEST_F(PaytablesPanel, ABrokenPictureShowsNothingInItsPlace) {
  fs::create_directories("Games/Broken/Icons/paytable");
  std::FILE* file = std::fopen("Games/Broken/Icons/paytable/InfoPage_Paytable.png", "w");
  ASSERT_NE(nullptr, file);
  std::fputs("no picture", file);
  std::fclose(file);
  screen.send(T_GAME_LOADED, gameValue("Broken", GAMETYPE_VESPERA_SLOTGAME));
  screen.send(T_PAYTABLE_STATE, value_int(1));
  EXPECT_TRUE(screen.until([this] { return screen.visible(kPanel); }));
  EXPECT_EQ(nullptr, texture());
}

TEST_F(PaytablesPanel, ANameThatLeadsOutOfTheGameFoldersReadsNothing) {
  for (const char* name : {"../Reels", "Reels/Icons", ".."}) {
    SCOPED_TRACE(name);
    screen.app().forgetLines();
    screen.status([&](PlatformState& state) { state.ActiveGame = game(name); });
    for (int i = 0; i < 3; ++i) panel()->UpdateData(false);
    EXPECT_EQ(1u, screen.app().linesOf(std::string("4|The game name '") + name +
                                       "' leads out of the game folders: no paytable."));
    EXPECT_EQ(0u, screen.app().linesWith("Loading paytable images"));
  }
}

TEST_F(PaytablesPanel, AClearLetsEverythingGoAndCanBeRepeated) {
  open("Reels", 1);
  EXPECT_NE(nullptr, screen.find("pPaytablesPanel/HelpScreen/A_3"));
  for (int i = 0; i < 2; ++i) {
    panel()->clearPaytable();
    EXPECT_EQ(nullptr, texture());
    EXPECT_EQ(nullptr, screen.find(kBackground)->GetTargetTexture());
    for (const char* label : {"HelpScreen/A_3", "prizeLabel", "minBetLabel", "maxBetLabel"})
      EXPECT_EQ(nullptr, screen.find(std::string(kPanel) + "/" + label)) << label;
    EXPECT_EQ(-2, panel()->updatePaytable()) << "nothing is loaded";
  }
  EXPECT_EQ(-1, panel()->UpdateData(true));
  settle();
  EXPECT_NE(nullptr, screen.find("pPaytablesPanel/HelpScreen/A_3"));
}

TEST_F(PaytablesPanel, EndsWithALoadUnderWay) {
  screen.send(T_GAME_LOADED, gameValue("Reels", GAMETYPE_VESPERA_SLOTGAME));
  screen.app().deliver({{T_PAYTABLE_STATE, value_int(1)}});
  screen.frame();  // the harness goes while the files are being decoded
}
