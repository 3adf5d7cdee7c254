#pragma once

#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "components/TGlyphLabel.h"
#include "components/Tlabel.h"
#include "tests/support/PanelSkin.h"
#include "tests/support/TopScreenHarness.h"
#include "vesperatopscreen/TPaytablesPanel.h"

// What the tests of the paytables on the whole screen share.
namespace paytabletest {

using namespace vendelo_sdl2;
using paneldata::gameValue;
using paneldata::page;
using paneldata::setup;
using paneldata::Text;
using xmlrpc_c::value_int;

inline const std::string kPanel = "pPaytablesPanel/";
inline const std::string kPage = "pPaytablesPanel/HelpScreen/";

inline Text text(const char* symbol, const char* mode, int win, int occurs) {
  Text text;
  text.symbol = symbol;
  text.mode = mode;
  text.win = win;
  text.occurs = occurs;
  return text;
}

inline Uint32 rgb(SDL_Color colour) {
  return static_cast<Uint32>(colour.r) << 16 | static_cast<Uint32>(colour.g) << 8 | colour.b;
}

// A bet of 100 between 20 and 2000 and no game. With a divisor the screen is drawn smaller.
class Paytables : public testing::Test {
 protected:
  explicit Paytables(const char* folder, int divisor = 4) : screen(folder, divisor) {
    screen.status([](PlatformState& state) {
      state.ActiveGame = GAME_MENU;
      state.CurrentBet = 100;
      state.MinBet = 20;
      state.MaxBet = 2000;
    });
  }

  TPaytablesPanel* panel() { return screen.find<TPaytablesPanel>("pPaytablesPanel"); }
  // The texture of the page that is shown; null without one.
  SDL_Texture* texture() { return screen.find("pPaytablesPanel/HelpScreen")->GetTargetTexture(); }
  void enter(const std::string& game) { screen.send(T_GAME_LOADED, gameValue(game, GAMETYPE_VESPERA_SLOTGAME)); }
  void turnTo(int number) { screen.send(T_PAYTABLE_STATE, value_int(number)); }
  void sendExtra(const xmlrpc_c::cstruct& extra) { screen.send(T_EXTRA_DATA, xmlrpc_c::value_struct(extra)); }
  // A game with this setup stands on its first page.
  void open(const xmlrpc_c::cstruct& extra, const std::string& game = "Reels") {
    sendExtra(extra);
    enter(game);
    turnTo(1);
    ASSERT_TRUE(
      screen.until([this] { return screen.visible("pPaytablesPanel") && panel()->updatePaytable() == 0; }));
    screen.skip(600);
  }
  // What the panel writes on the standard output while a game with this setup is opened.
  std::string opened(const xmlrpc_c::cstruct& extra, const std::string& game = "Reels") {
    testing::internal::CaptureStdout();
    open(extra, game);
    return testing::internal::GetCapturedStdout();
  }
  TGlyphLabel* label(const std::string& name) { return screen.find<TGlyphLabel>(kPage + name); }
  std::string shown(const std::string& name) { return label(name) ? label(name)->GetText() : "no label"; }
  size_t loads(const std::string& game) {
    return screen.app().linesWith("1|Loading paytable images for game " + game + " in folder ");
  }

  TopScreenHarness screen;
};

}  // namespace paytabletest
