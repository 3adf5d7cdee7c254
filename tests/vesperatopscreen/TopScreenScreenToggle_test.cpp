// Changes of the panel that come before the fade of the one before is over.
#include <gtest/gtest.h>

#include "tests/support/TopScreenHarness.h"

using namespace vendelo_sdl2;

namespace {

const char* const kPanels[] = {"pJackpotsPanel", "pInstructionsPanel", "pPaytablesPanel"};
constexpr int kCount = 3;

class Toggle : public testing::Test {
 protected:
  Toggle() : screen("screentoggle", 8) {
    screen.status([](PlatformState& state) {
      state.ActiveGame = GAME_MENU;
      state.JackpotData = paneldata::levels(1);
    });
    settle();
  }
  // What the deferred work of a frame calls.
  void show(int panel) {
    if (panel == 0)
      screen.screen().ShowJackpotsPanel();
    else if (panel == 1)
      screen.screen().ShowInstructionsPanel();
    else
      screen.screen().ShowPaytablesPanel();
  }
  void settle() {
    for (int i = 0; i < 3; ++i) screen.skip(501);
  }
  // What the eye sees of a panel.
  int alpha(int panel) { return screen.visible(kPanels[panel]) ? screen.find(kPanels[panel])->alpha() : 0; }
  // The panel stands alone and whole.
  testing::AssertionResult only(int panel) {
    for (int i = 0; i < kCount; ++i)
      if (alpha(i) != (i == panel ? 255 : 0))
        return testing::AssertionFailure() << kPanels[i] << " has the alpha " << alpha(i);
    return testing::AssertionSuccess();
  }

  TopScreenHarness screen;
};

}  // namespace

TEST_F(Toggle, EndsOnThePanelThatWasAskedForLast) {
  for (int first = 0; first < kCount; ++first)
    for (int second = 0; second < kCount; ++second)
      for (int third = 0; third < kCount; ++third)
        for (Uint32 moment : {0, 1, 40, 250, 460, 499, 500, 501}) {
          if (first == second || second == third) continue;
          SCOPED_TRACE(std::string(kPanels[first]) + ", " + kPanels[second] + ", after " + std::to_string(moment) +
                       " ms " + kPanels[third]);
          show(first);
          settle();
          ASSERT_TRUE(only(first));
          show(second);
          screen.skip(moment);
          show(third);
          settle();
          ASSERT_TRUE(only(third));
        }
}

TEST_F(Toggle, ComesBackFromTheAlphaThatItHas) {
  for (int first = 0; first < kCount; ++first)
    for (int second = 0; second < kCount; ++second)
      for (int moment : {20, 100, 250, 400, 480, 499}) {
        if (first == second) continue;
        SCOPED_TRACE(std::string(kPanels[first]) + ", " + kPanels[second] + ", " + std::to_string(moment) + " ms");
        show(first);
        settle();
        show(second);
        screen.frames(static_cast<Uint32>(moment));
        const int left = 255 * (500 - moment) / 500;
        EXPECT_NEAR(left, alpha(first), 1);
        EXPECT_NEAR(255 - left, alpha(second), 1);
        show(first);
        screen.frame();
        EXPECT_NEAR(left, alpha(first), 1);
        EXPECT_NEAR(255 - left, alpha(second), 1);
        for (int passed = 20; passed <= moment; passed += 20) {
          screen.frames(20);
          EXPECT_NEAR(left + 255 * passed / 500, alpha(first), 2);
          EXPECT_NEAR(255 - left - 255 * passed / 500, alpha(second), 2);
        }
        screen.frames(20);
        EXPECT_TRUE(only(first));
      }
}

TEST_F(Toggle, ASeriesOfThemNeverLeavesTheBareBackground) {
  unsigned int random = 7;
  int last = 0;
  for (int i = 0; i < 300; ++i) {
    random = random * 1664525 + 1013904223;
    last = static_cast<int>(random >> 16) % kCount;
    show(last);
    for (Uint32 step = 0; step < (random >> 8) % 12; ++step) {
      screen.frames(20);
      ASSERT_GT(alpha(0) + alpha(1) + alpha(2), 0) << i;
    }
  }
  settle();
  EXPECT_TRUE(only(last));
}

TEST_F(Toggle, InstructionsThatComeAndGoLeaveTheLevels) {
  screen.send(T_INSTRUCTIONS, paneldata::texts({"SPIN"}));
  screen.frames(120);
  screen.send(T_INSTRUCTIONS, paneldata::texts({}));
  settle();
  EXPECT_TRUE(only(0));
  screen.app().deliver({{T_INSTRUCTIONS, paneldata::texts({"SPIN"})}, {T_INSTRUCTIONS, paneldata::texts({})}});
  settle();
  EXPECT_TRUE(only(0)) << "also in one frame";
  screen.send(T_INSTRUCTIONS, paneldata::texts({"SPIN"}));
  settle();
  screen.app().deliver({{T_INSTRUCTIONS, paneldata::texts({})}, {T_INSTRUCTIONS, paneldata::texts({"SPIN"})}});
  settle();
  EXPECT_TRUE(only(1));
}

TEST_F(Toggle, APanelThatStandsIsNotFadedAgain) {
  for (int panel = 0; panel < kCount; ++panel) {
    show(panel);
    settle();
    for (int i = 0; i < 3; ++i) {
      show(panel);
      screen.frames(20);
      EXPECT_TRUE(only(panel));
    }
  }
  show(0);
  screen.frames(100);
  const int before = alpha(0);
  show(0);
  screen.frame();
  EXPECT_EQ(before, alpha(0)) << "one that is fading in goes on";
}
