#include "tests/vesperatopscreen/JackpotsPanelFixture.h"

#include <climits>
#include <cmath>

#include "components/TControlCyphers3.h"
#include "components/TGlyphLabel.h"
#include "components/TScrollingComponent.h"

using namespace vendelo_sdl2;
using jackpottest::JackpotsPanel;
using paneldata::levels;

TEST(JackpotLayout, StepsByTheNumberOfLevels) {
  const struct {
    int levels, gap, step, offset;
    std::vector<int> y;
  } rows[] = {{1, 310, 518, 318, {478}},
              {2, 210, 418, 109, {269, 687}},
              {3, 110, 318, 0, {160, 478, 796}},
              {4, 10, 218, -9, {151, 369, 587, 805}},
              {5, -90, 118, 82, {242, 360, 478, 596, 714}}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.levels);
    const TJackpotLayout layout(row.levels);
    EXPECT_EQ(row.gap, layout.levelGap);
    EXPECT_EQ(row.step, layout.odmikNivoja);
    EXPECT_EQ(row.offset, layout.zacetniOdmikY);
    for (int id = 0; id < row.levels; ++id) {
      const SDL_Rect place = layout.levelRect(id);
      EXPECT_EQ(51 + 48 * id, place.x);
      EXPECT_EQ(row.y[static_cast<size_t>(id)], place.y);
      EXPECT_EQ(908, place.w);
      EXPECT_EQ(208, place.h);
    }
  }
}

TEST(JackpotLayout, NoNumberOfLevelsLeavesTheRangeOfThePlaces) {
  const TJackpotLayout many(1000);
  EXPECT_EQ(-99590, many.levelGap);
  for (int levels : {1001, 5000, 1000000, INT_MAX}) {
    const SDL_Rect place = TJackpotLayout(levels).levelRect(3), wanted = many.levelRect(3);
    EXPECT_TRUE(SDL_RectEquals(&place, &wanted)) << levels;
  }
}

TEST(JackpotCurves, PassThroughTheirEnds) {
  for (double elapsed : {2.0, 10.0, 1000.0, 1e6}) {
    EXPECT_NEAR(0, jackpotSpinFunction(0, elapsed), 1e-9);
    EXPECT_NEAR(1, jackpotSpinFunction(1, elapsed), 1e-9);
  }
  EXPECT_NEAR(std::log((std::exp(3.0) - 1) * 0.5 + 1) / 3, jackpotSpinFunction(0.5, 1000), 1e-12);
  for (double degenerate : {0.0, 1.0, -1.0}) EXPECT_EQ(0.25, jackpotSpinFunction(0.25, degenerate));
  EXPECT_FLOAT_EQ(0.5f, jackpotTextMovement(0.5f, 9));
  EXPECT_NEAR(0.1464466f, jackpotTextMovement(0.25f, 0), 1e-6);
  const TAnimation any;
  EXPECT_NEAR(0, move_to_center(any, 0), 1e-6);
  EXPECT_NEAR(1, move_to_center(any, 1), 1e-6);
  EXPECT_NEAR(0.92416, move_to_center(any, 0.5f), 1e-4);
  EXPECT_NEAR(0, panel_grow_function(any, 0), 1e-6);
  EXPECT_NEAR(0, panel_grow_function(any, 1), 1e-6);
  EXPECT_NEAR(0.5, panel_grow_function(any, 0.25f), 1e-6);
}

TEST_F(JackpotsPanel, FirstDataBuildTheLevelsInTheNextFrame) {
  EXPECT_EQ(1, update(levels(4), ""));
  EXPECT_EQ(nullptr, find("pJackpotLabel"));
  harness.frame();
  ASSERT_NE(nullptr, find("pJackpotLabel"));
  EXPECT_EQ(645, find("pJackpotLabel")->getX());
  EXPECT_EQ(1u, linesWith("Creating jackpot panel with 4 levels."));
  for (int id = 0; id < 4; ++id) {
    SCOPED_TRACE(id);
    TGuiComponent* container = find("pJackpotPanel[" + std::to_string(id) + "]");
    ASSERT_NE(nullptr, container);
    const SDL_Rect place = container->getDestRect(), wanted = TJackpotLayout(4).levelRect(id);
    EXPECT_TRUE(SDL_RectEquals(&place, &wanted));
    auto* digits = part<TControlCyphers3>(id, "ControlCyphers");
    ASSERT_NE(nullptr, digits);
    EXPECT_EQ(1234567 + id, digits->FinalValue());
    EXPECT_EQ(90, digits->getX());
    EXPECT_EQ(87, digits->getY());
    EXPECT_EQ(709, part(id, "pJackpotCurrency")->getX());
    EXPECT_EQ(nullptr, part(id, "pJackpotHours"));
  }
  EXPECT_FALSE(visible("logo"));
}

TEST_F(JackpotsPanel, TheCurrencyStandsLeftOfTheDigitsWithoutTheSign) {
  auto data = levels(1);
  data[0].showCurrencySign = false;
  show(data);
  EXPECT_EQ(68, part(0, "pJackpotCurrency")->getX());
  EXPECT_EQ(229, part(0, "ControlCyphers")->getX());
  EXPECT_EQ(0x5a3c0au, pixel(200, 500)) << "the frame for the left side";
}

TEST_F(JackpotsPanel, OnlyEmeraldShowsItsHours) {
  auto data = levels(4);
  for (JackpotsData& level : data) level.mode = 2;
  show(data);
  for (int id = 0; id < 3; ++id) EXPECT_EQ(nullptr, part(id, "pJackpotHours")) << id;
  auto* hours = part<TGlyphLabel>(3, "pJackpotHours");
  ASSERT_NE(nullptr, hours);
  EXPECT_EQ("18:00 - 22:00", hours->GetText());
  data[3].mode = 1;
  data.pop_back();
  show(data);
  data.push_back(paneldata::level(3, 1));
  show(data);
  EXPECT_EQ(nullptr, part(3, "pJackpotHours"));
}

TEST_F(JackpotsPanel, NewValuesReachTheDigitsAndTheInfoBar) {
  auto data = levels(2);
  show(data);
  data[1].potValue = 7654321;
  data[1].LastWinData = "NEW";
  EXPECT_EQ(0, show(data));
  EXPECT_EQ(7654321, part<TControlCyphers3>(1, "ControlCyphers")->FinalValue());
  EXPECT_EQ("NEW", part<TScrollingComponent>(1, "pJackpotInfo")->ContentAt<TGlyphLabel>(0)->GetText());
  clock.advance(60000);
  harness.frame();
  EXPECT_DOUBLE_EQ(7654321, part<TControlCyphers3>(1, "ControlCyphers")->CurrentValue(clock.now()));
}

TEST_F(JackpotsPanel, AnotherNumberOfLevelsRebuildsTheTree) {
  show(levels(4));
  EXPECT_EQ(1, show(levels(2)));
  EXPECT_EQ(nullptr, find("pJackpotPanel[2]"));
  ASSERT_NE(nullptr, find("pJackpotPanel[1]"));
  EXPECT_EQ(687, find("pJackpotPanel[1]")->getY());
  EXPECT_EQ(1, show({}));
  EXPECT_EQ(nullptr, find("pJackpotPanel[0]"));
  EXPECT_EQ(nullptr, find("pJackpotLabel"));
}

TEST_F(JackpotsPanel, LevelsWithoutAPlaceAreLoggedAndSkipped) {
  auto data = levels(2);
  data.push_back(paneldata::level(4, 1));
  data.push_back(paneldata::level(1, 99));
  data.push_back(paneldata::level(-1, 1));
  show(data);
  EXPECT_EQ(3u, linesWith("cannot be shown: ids are 0 to 3, each once."));
  EXPECT_EQ(1234568, part<TControlCyphers3>(1, "ControlCyphers")->FinalValue());
  data[1].potValue = 5;
  show(data);
  EXPECT_EQ(5, part<TControlCyphers3>(1, "ControlCyphers")->FinalValue());
}

TEST_F(JackpotsPanel, AnErrorTextTakesTheLevelsAndTheyComeBackAfterIt) {
  show(levels(2));
  EXPECT_EQ(0, update(levels(2), "METER FAULT"));
  harness.frame();
  EXPECT_EQ(nullptr, find("pJackpotPanel[0]"));
  EXPECT_TRUE(visible("logo"));
  EXPECT_TRUE(visible("jackpotErrorLabel"));
  EXPECT_EQ("METER FAULT", find<TGlyphLabel>("jackpotErrorLabel")->GetText());
  EXPECT_EQ(830, find("jackpotErrorLabel")->getY());
  EXPECT_EQ(0, update(levels(3), "METER FAULT")) << "nothing is built while the text stands";
  harness.frame();
  EXPECT_EQ(nullptr, find("pJackpotPanel[0]"));
  EXPECT_EQ(1, update(levels(2), ""));
  harness.frame();
  EXPECT_FALSE(visible("jackpotErrorLabel"));
  EXPECT_FALSE(visible("logo"));
  EXPECT_NE(nullptr, find("pJackpotPanel[1]"));
}

TEST_F(JackpotsPanel, AnIntegrityTextStandsBeforeEverythingElse) {
  show(levels(1));
  panel->SetIntegrityCheckData("CRC 1234");
  harness.frame();
  EXPECT_EQ(nullptr, find("pJackpotPanel[0]"));
  EXPECT_TRUE(visible("integrityLabel"));
  EXPECT_EQ(100, find("integrityLabel")->getY());
  EXPECT_EQ(0, update(levels(1), "METER FAULT")) << "not even the error text is taken";
  EXPECT_FALSE(visible("jackpotErrorLabel"));
  panel->OnShowOverlays("");
  EXPECT_TRUE(visible("logo"));
  panel->SetIntegrityCheckData("");
  EXPECT_FALSE(visible("logo"));
  EXPECT_EQ(0, update(levels(1), "METER FAULT"));
  EXPECT_TRUE(visible("jackpotErrorLabel"));
  panel->SetIntegrityCheckData("CRC 1234");
  panel->SetIntegrityCheckData("");
  EXPECT_TRUE(visible("logo")) << "the error text still wants it";
}

TEST_F(JackpotsPanel, TheLogoStandsWhenNoLevelsAreWanted) {
  panel->OnShowOverlays("");
  EXPECT_TRUE(visible("logo"));
  show(levels(1));
  panel->OnShowOverlays("");
  EXPECT_FALSE(visible("logo"));
}

TEST_F(JackpotsPanel, APanelIsWaitedForTenUpdatesBeforeTheLogoStandsOverIt) {
  const struct {
    int updates;  // that find no panel before the frame that may make it
    bool stands, logo;
  } rows[] = {{0, true, false}, {9, true, false}, {10, false, false}, {11, true, true}, {30, true, true}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.updates);
    EXPECT_EQ(1, update(levels(1), ""));
    for (int i = 0; i < row.updates; ++i) EXPECT_EQ(0, update(levels(1), ""));
    harness.frame();
    EXPECT_EQ(row.stands, find("pJackpotPanel[0]") != nullptr);
    EXPECT_EQ(row.logo, visible("logo"));
    harness.frame();
    EXPECT_NE(nullptr, find("pJackpotPanel[0]"));
    // So that the next row begins with all its retries.
    update(levels(1), "METER FAULT");
    harness.frame();
    EXPECT_EQ(nullptr, find("pJackpotPanel[0]"));
  }
}

TEST_F(JackpotsPanel, ACreationThatIsRefusedIsMadeUpForInTheNextFrame) {
  auto data = levels(3);
  EXPECT_EQ(1, update(data, ""));
  for (int i = 0; i < 10; ++i) EXPECT_EQ(0, update(data, ""));
  harness.frame();
  EXPECT_EQ(nullptr, find("pJackpotPanel[0]")) << "the retries stand at exactly 0";
  EXPECT_EQ(0u, linesWith("Creating jackpot panel"));
  harness.frame();
  ASSERT_NE(nullptr, find("pJackpotPanel[2]")) << "without new data";
  EXPECT_EQ(1u, linesWith("Creating jackpot panel with 3 levels."));
  EXPECT_TRUE(visible("logo")) << "it stands over a panel whose retries were used up";
  data[2].potValue = 77;
  EXPECT_EQ(0, show(data));
  EXPECT_EQ(77, part<TControlCyphers3>(2, "ControlCyphers")->FinalValue());
  EXPECT_TRUE(visible("logo"));
  for (int i = 0; i < 3; ++i) harness.frame();
  EXPECT_EQ(1u, linesWith("Creating jackpot panel")) << "once";
}

TEST_F(JackpotsPanel, ARefusedCreationIsMadeUpForByNewDataToo) {
  EXPECT_EQ(1, update(levels(1), ""));
  for (int i = 0; i < 10; ++i) update(levels(1), "");
  harness.frame();
  EXPECT_EQ(0, update(levels(1), "")) << "the update that waited has queued the levels already";
  harness.frame();
  EXPECT_NE(nullptr, find("pJackpotPanel[0]"));
  EXPECT_EQ(1u, linesWith("Creating jackpot panel"));
}

TEST_F(JackpotsPanel, AClearGivesAllTheRetriesBack) {
  EXPECT_EQ(1, update(levels(1), ""));
  for (int i = 0; i < 7; ++i) update(levels(1), "");
  harness.frame();
  ASSERT_NE(nullptr, find("pJackpotPanel[0]"));
  update(levels(1), "METER FAULT");
  harness.frame();
  ASSERT_EQ(nullptr, find("pJackpotPanel[0]"));
  EXPECT_EQ(1, update(levels(1), ""));
  for (int i = 0; i < 9; ++i) EXPECT_EQ(0, update(levels(1), ""));
  harness.frame();
  EXPECT_NE(nullptr, find("pJackpotPanel[0]"));
  EXPECT_FALSE(visible("logo"));
}

TEST_F(JackpotsPanel, AWinFliesPulsesAndEndsWithItsStatus) {
  auto data = levels(4);
  show(data);
  data[2].status = "WIN";
  data[3].status = "WIN";
  data[3].potValue = 1;
  show(data);
  EXPECT_EQ(1u, linesWith("Jackpot LEVEL3 was won! Showing win animation!"));
  EXPECT_EQ(1234570, part<TControlCyphers3>(3, "ControlCyphers")->FinalValue())
    << "behind the winner nothing moves";
  EXPECT_FALSE(visible("pDarkBackground"));
  framesFor(220);
  EXPECT_TRUE(visible("pDarkBackground"));
  EXPECT_TRUE(visible("JackpotWinPanel"));
  EXPECT_FALSE(part(2, "pJackpotFrame")->isVisible());
  EXPECT_FALSE(part(2, "ControlCyphers")->isVisible());
  EXPECT_TRUE(part(1, "pJackpotFrame")->isVisible());
  framesFor(960);
  const SDL_Rect arriving = find("JackpotWinPanel")->getDestRect();
  EXPECT_NEAR((1920 - 908) / 2, arriving.x, 6);
  EXPECT_NEAR((1080 - 208) / 2, arriving.y, 6);
  framesFor(1000);
  EXPECT_GT(find("JackpotWinPanel")->getDestRect().w, 908) << "it pulses in the middle";
  show(data);
  EXPECT_EQ(1u, linesWith("was won!")) << "the running win goes on";
  data[2].status.clear();
  data[3].status.clear();
  show(data);
  EXPECT_EQ(1u, linesWith("Hiding jackpot win animation."));
  EXPECT_FALSE(visible("pDarkBackground"));
  EXPECT_FALSE(visible("JackpotWinPanel"));
  EXPECT_TRUE(part(2, "pJackpotFrame")->isVisible());
  const SDL_Rect back = find("pJackpotPanel[2]")->getDestRect(), wanted = TJackpotLayout(4).levelRect(2);
  EXPECT_TRUE(SDL_RectEquals(&back, &wanted));
  EXPECT_EQ(1, part<TControlCyphers3>(3, "ControlCyphers")->FinalValue());
}

TEST_F(JackpotsPanel, AWinThatEndsBeforeItsAnimationLeavesTheLevelAlone) {
  auto data = levels(2);
  show(data);
  data[1].status = "WIN";
  show(data);
  data[1].status.clear();
  show(data);
  framesFor(400);
  EXPECT_FALSE(visible("pDarkBackground"));
  const SDL_Rect place = find("pJackpotPanel[1]")->getDestRect(), wanted = TJackpotLayout(2).levelRect(1);
  EXPECT_TRUE(SDL_RectEquals(&place, &wanted));
}

TEST_F(JackpotsPanel, AChangeOfLevelsDuringAWinClearsItsPicture) {
  auto data = levels(4);
  show(data);
  data[3].status = "WIN";
  show(data);
  framesFor(300);
  show(levels(2));
  framesFor(300);
  show(levels(2));
  EXPECT_FALSE(visible("JackpotWinPanel") && find("JackpotWinPanel")->GetTargetTexture() == nullptr &&
               visible("pDarkBackground"));
  EXPECT_NE(nullptr, part(1, "pJackpotFrame"));
}

TEST_F(JackpotsPanel, TheToggleActionPlaysTheWinOfALevelByItsNumber) {
  show(levels(2));
  const auto toggle = [this](intptr_t number) {
    harness.application().GenerateAction("ToggleWinAnimation", reinterpret_cast<void*>(number), ACTION_ANY);
    harness.application().ProcessActions();
    harness.frame();
  };
  toggle(1);
  EXPECT_TRUE(visible("pDarkBackground"));
  EXPECT_FALSE(part(0, "pJackpotFrame")->isVisible());
  toggle(1);
  EXPECT_FALSE(visible("pDarkBackground"));
  EXPECT_TRUE(part(0, "pJackpotFrame")->isVisible());
  toggle(0);
  toggle(5);
  EXPECT_EQ(2u, linesWith("No win to toggle on jackpot level"));
  EXPECT_FALSE(visible("pDarkBackground"));
}

TEST_F(JackpotsPanel, AGameNameThatLeadsOutOfTheGameFoldersLoadsNothing) {
  show(levels(1));
  panel->OnShowOverlays("../secret");
  panel->OnShowOverlays("../secret");
  EXPECT_EQ(1u, linesWith("leads out of the game folders"));
  EXPECT_EQ(0u, linesWith("Loading overlay for game"));
  panel->OnShowOverlays("Reels");
  EXPECT_EQ(1u, linesWith("Loading overlay for game 'Reels' inside Games/Reels/Icons/"));
}
