#pragma once

#include <string>
#include <vector>
#include <xmlrpc-c/base.hpp>

#include "vesperatopscreen/TPaytablesPanel.h"

struct TextPos {
  int x, y;
};

// One win text of a page, as the game's setup gives it.
struct TPaytableText {
  std::string symbol;  // with the number of symbols, the label's name
  PaytableText prize;
  std::string font;  // in the game's folder of pictures, without its ending
  int fontSize;
  bool alignedLeft;
  SDL_Color sdlColor;
  SDL_Color shadowColor;
  TextPos pos;
  int w, h;
};

// What a game's "ExtraData" say of its paytable, read as a whole before anything is built of it. Any thread, with
// the lock of whoever owns the data. Reading throws std::exception, which names the key, for a missing key or a
// wrong type.
struct TPaytableSetup {
  struct TPage {
    std::string name;  // "paytable" or "paytableBonus"; pages of other names are left out
    std::vector<TPaytableText> texts;
  };

  explicit TPaytableSetup(const xmlrpc_c::cstruct& extra);

  // The cost of one bet: "betCost", or without it "paylines", or without that 1.
  static int betCostOf(const xmlrpc_c::cstruct& extra);
  // The pages' data as one text: equal for equal data, whatever their types; empty without them. Never throws.
  static std::string contentOf(const xmlrpc_c::cstruct& extra, const char* key = "paytableSetup");

  bool isEmpty = true;  // there is not even a page to leave out
  std::vector<TPage> pages;
  int betCost = 1;
};
