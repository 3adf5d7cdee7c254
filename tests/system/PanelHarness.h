#pragma once

#include "tests/system/SystemHarness.h"

namespace systest {

// The program on the whole test skin and a platform with one level. What the screen shows is told in words, so that
// a test compares it with what is due and a failure says what stood there instead.
class PanelTest : public SystemTest {
 protected:
  void SetUp() override;

  // The words for what stands complete on the screen, in the order of the marks in PanelHarness.cpp, then texts:
  // "background title gold" is the jackpot panel of one level. What is still fading is not told.
  std::string screen();

  // The screen comes to show exactly this.
  testing::AssertionResult shows(const std::string& due);

  // It shows this and still does when the program has asked for events three times more: what the platform has said
  // before has been handled by then, and a fade that came of it is over.
  testing::AssertionResult keeps(const std::string& due);

  // The digits, and an x for each other letter, that the pixels of this row belong to.
  std::string textAt(int x, int y, int width);

  void set(const Json& fields) { mSimulator.apply({{"do", "set"}, {"state", fields}}); }
  void event(int id, const Json& value) { mSimulator.apply({{"do", "event"}, {"id", id}, {"value", value}}); }
  void rawEvent(int id, const Json& value) { mSimulator.apply({{"do", "event"}, {"id", id}, {"raw", value}}); }
  void game(const std::string& how, const std::string& name, int type) {
    mSimulator.apply({{"do", "game"}, {"event", how}, {"ID", 9}, {"Name", name}, {"Type", type}});
  }

  // Starts the program on the simulator as it is.
  void startProgramHere() { startProgram(mSimulator.address(), Renderer::Software, {}); }

  // The same, until the first panel stands, that of a menu without instructions.
  void startOnTheMenu();

  // What the platform knows of a game's prizes: one text of 12 times the bet on the first page, a line win, and one
  // of 3 times on the second, a scatter.
  static Json prizes(int betCost);

  // A level of no pot on the platform, with this id.
  static Json level(int id, const std::string& status);
};

constexpr int kMenu = 1, kTopscreen = 2, kRoulette = 3, kSlot = 4;

}  // namespace systest
