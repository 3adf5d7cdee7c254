#pragma once

#include <memory>
#include <string>
#include <vector>

#include "Canvas.h"
#include "Family.h"
#include "Symbols.h"

// The texts of one language; the page layout is the same in all.
struct PageTexts {
  std::string folder;  // "paytable" is what the program falls back to
  std::string paytable, bonus, rules;
  std::string scatter;
  std::vector<std::string> bonusLines, ruleLines;
};

// One of the two games: what is drawn on its pictures.
struct Game {
  std::string name;  // folder below Games/
  std::string title[2];
  Colour deep, light;  // of its background
  Symbol main;         // on emblem and overlay
  Symbol symbols[6];   // on the paytable, the dearest first
  std::vector<PageTexts> languages;
};

// Where the program writes amounts on a page; the layout that the platform sends names the same places.
constexpr int kPageWidth = 1480, kPageHeight = 860;
constexpr int kCardWidth = 450, kCardHeight = 330;
constexpr int cardX(int card) { return 40 + card % 3 * 475; }
constexpr int cardY(int card) { return 150 + card / 3 * 345; }
constexpr int kFieldWidth = 190, kFieldHeight = 56;
constexpr int fieldX(int card) { return cardX(card) + 240; }
constexpr int fieldY(int card, int row) { return cardY(card) + 52 + row * 86; }
constexpr int kScatterX = 250, kScatterWidth = 290;
constexpr int scatterY(int row) { return 470 + row * 105; }

// The game's ground, `width` wide and 9/16 of it high.
std::unique_ptr<Canvas> drawGameGround(const Game& game, int width);
// The game's sign, 500 by 560 at scale 1.
std::unique_ptr<Canvas> drawEmblem(const Game& game, double scale);
void drawOverlay(const Game& game, const Output& output);
void drawPages(const Game& game, const Output& output);
