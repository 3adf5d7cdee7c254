#include "vesperatopscreen/TJackpotsPanel.h"

#include <gtest/gtest.h>
#include <cmath>
#include <thread>

#include "components/TControlCyphers3.h"
#include "components/TGlyphLabel.h"
#include "components/TScrollingComponent.h"
#include "tests/support/FakeClock.h"
#include "tests/support/PanelSkin.h"
#include "tests/support/TopScreenHarness.h"
#include "tests/support/WidgetHarness.h"
#include "vendelo-sdl2/MyUtils.h"

using namespace vendelo_sdl2;

namespace {

// The skin is written once for the process.
const std::string& skin() {
  static const std::string& folder = *new std::string(panelskin::write("jackpots") + "VESPERA/TOP_SKIN/");
  return folder;
}

// The screen is drawn at a quarter of its size; all places are those of the full one.
constexpr int kDivisor = 4;

std::vector<std::string> logged;
void keepLine(void*, const TLogEntry& entry, int) { logged.push_back(entry.Message); }

using paneldata::levels;

class JackpotsPanel : public testing::Test {
 protected:
  JackpotsPanel() : clock(100000), harness(1920 / kDivisor, 1080 / kDivisor) {
    SDL_RenderSetScale(harness.renderer(), 1.0f / kDivisor, 1.0f / kDivisor);
    MyUtils::SetImageDir(skin());
    MyUtils::decimal_separator = ',';
    MyUtils::thousand_separator = '.';
    MyUtils::thousand_grouping[0] = 3;
    logged.clear();
    harness.application().TLogManager::Init("", keepLine, nullptr, false);
    harness.application().SetOutputToConsole(false);
    panel = harness.add(new TJackpotsPanel(harness.renderer(), 0, 0, 1920, 1080, "pJackpotsPanel"));
  }

  // Data as the main thread gives them, so that what is meant for the draw thread waits for the next frame.
  int update(const std::vector<JackpotsData>& data, const std::string& error) {
    int result = -1;
    std::thread([&] { result = panel->UpdateData(data, error); }).join();
    return result;
  }
  // New data arrive, and a frame is drawn.
  int show(const std::vector<JackpotsData>& data) {
    const int result = update(data, "");
    harness.frame();
    return result;
  }
  void framesFor(Uint32 milliseconds) {
    for (Uint32 passed = 0; passed < milliseconds; passed += 20) {
      clock.advance(20);
      harness.frame();
    }
  }
  template <class T = TGuiComponent>
  T* find(const std::string& name) {
    return dynamic_cast<T*>(panel->FindComponentByName(name));
  }
  template <class T = TGuiComponent>
  T* part(int id, const char* name) {
    const std::string index = "[" + std::to_string(id) + "]";
    TGuiComponent* container = find("pJackpotPanel" + index);
    return container ? dynamic_cast<T*>(container->FindComponentByName(name + index)) : nullptr;
  }
  bool visible(const char* name) { return find(name)->isVisible(); }
  size_t linesWith(const char* text) {
    harness.application().TLogManager::Poll();
    size_t count = 0;
    for (const std::string& line : logged) count += line.find(text) != std::string::npos;
    return count;
  }

  FakeClock clock;
  WidgetHarness harness;
  TJackpotsPanel* panel;
};

}  // namespace

TEST(JackpotLayout, StepsByTheNumberOfLevels) {
  const struct {
    int levels, gap, step, offset;
    std::vector<int> y;
  } rows[] = {{1, 310, 518, 318, {478}},
              {2, 210, 418, 109, {269, 687}},
              {3, 110, 318, 0, {160, 478, 796}},
              {4, 10, 218, -9, {151, 369, 587, 805}}};
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
  EXPECT_EQ(0x5a3c0au, harness.pixel(200 / kDivisor, 500 / kDivisor)) << "the frame for the left side";
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

TEST_F(JackpotsPanel, APanelIsWaitedForAndRefusedWhenItsRetriesAreUsedUp) {
  EXPECT_EQ(1, update(levels(1), ""));
  for (int i = 0; i < 10; ++i) EXPECT_EQ(0, update(levels(1), ""));
  harness.frame();  // the creation comes at exactly 0 retries and is refused
  EXPECT_EQ(nullptr, find("pJackpotPanel[0]"));
  EXPECT_EQ(0, update(levels(1), ""));  // without a tree: nothing to show, and no harm
  EXPECT_EQ(1, show(levels(2)));
  EXPECT_NE(nullptr, find("pJackpotPanel[0]"));
  EXPECT_TRUE(visible("logo")) << "a panel built after its retries keeps the logo over it";
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
