#pragma once

#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "components/TSpriteAnimation.h"
#include "tests/support/TopScreenHarness.h"
#include "vesperatopscreen/TJackpotsPanel.h"

// What the tests of the jackpot panel on the whole screen share.
namespace jackpottest {

using namespace vendelo_sdl2;
using paneldata::gameValue;
using paneldata::levels;

inline const std::string kPanel = "pJackpotsPanel/";

class Jackpots : public testing::Test {
 protected:
  explicit Jackpots(const char* folder = "jackpotwins", int divisor = 4) : screen(folder, divisor) {}

  void start(const std::vector<JackpotsData>& levels) {
    data = levels;
    screen.status([this](PlatformState& state) {
      state.ActiveGame = GAME_MENU;
      state.JackpotData = data;
    });
    screen.joinSprites();
    screen.frames(40);
  }
  void start(int count) { start(paneldata::levels(count)); }
  void sendData() { screen.send(T_JACKPOT_DATA, paneldata::levelsValue(data)); }
  // A level gets or loses the status "WIN".
  void win(int id, bool on) {
    for (JackpotsData& level : data)
      if (level.id == id) level.status = on ? "WIN" : "";
    sendData();
  }
  TJackpotsPanel* panel() { return screen.find<TJackpotsPanel>("pJackpotsPanel"); }
  bool shown(const std::string& name) { return screen.visible(kPanel + name); }
  SDL_Rect place(const std::string& name) { return screen.find(kPanel + name)->getDestRect(); }
  // The levels whose sparkle is visible.
  std::vector<int> sparkles() {
    std::vector<int> ids;
    for (int id = 0; id < 4; ++id)
      if (auto* sparkle = screen.part(id, "pIdleAnimation"))
        if (sparkle->isVisible()) ids.push_back(id);
    return ids;
  }
  bool historyShown(int id) {
    return screen.part(id, "pJackpotInfo")->isVisible() && screen.part(id, "pJackpotInfoBackground")->isVisible();
  }
  void toggle(intptr_t number) {
    screen.app().GenerateAction("ToggleWinAnimation", reinterpret_cast<void*>(number), ACTION_ANY);
    screen.frame();
  }

  TopScreenHarness screen;
  std::vector<JackpotsData> data;
};

}  // namespace jackpottest
