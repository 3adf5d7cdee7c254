// The paytable pages: prizes on lines, prizes of the scatter, rules. The amounts are left free for the program.
#include <cmath>

#include "Games.h"
#include "Lettering.h"
#include "Light.h"
#include "Metal.h"

namespace {
const Colour kText = {0.97, 0.94, 0.86};
const Colour kGold = {1.0, 0.84, 0.46};

void write(const Canvas& canvas, const Typeface& face, const std::string& text, double x, double baseline,
           const Colour& colour) {
  face.appendText(canvas.cr(), text, x, baseline, 0.4);
  cairo_set_line_join(canvas.cr(), CAIRO_LINE_JOIN_ROUND);
  canvas.setColour({0, 0, 0, 0.8});
  cairo_set_line_width(canvas.cr(), 3);
  cairo_stroke_preserve(canvas.cr());
  canvas.setColour(colour);
  cairo_fill(canvas.cr());
}

void writeCentred(const Canvas& canvas, const Typeface& face, const std::string& text, double x, double baseline,
                  const Colour& colour) {
  write(canvas, face, text, x - face.textWidth(text, 0.4) / 2, baseline, colour);
}

// A dark place with a fine rim that an amount is written into.
void field(const Canvas& canvas, double x, double y, double w, double h) {
  cairo_t* cr = canvas.cr();
  roundRect(cr, x, y, w, h, 10);
  setGradient(cr, 0, y, 0, y + h, {{0, {0, 0, 0, 0.85}}, {1, {0.05, 0.04, 0.03, 0.75}}});
  cairo_fill_preserve(cr);
  canvas.setColour(kGold.withAlpha(0.45));
  cairo_set_line_width(cr, 1.2);
  cairo_stroke(cr);
}

void card(const Canvas& canvas, const Game& game, double x, double y, double w, double h) {
  cairo_t* cr = canvas.cr();
  roundRect(cr, x, y, w, h, 18);
  const Colour lit = mix(game.deep, game.light, 0.26);
  setGradient(cr, 0, y, 0, y + h,
              {{0, lit.withAlpha(0.92)},
               {0.5, mix(game.deep, game.light, 0.08).withAlpha(0.92)},
               {1, game.deep.withAlpha(0.95)}});
  cairo_fill_preserve(cr);
  setGradient(cr, 0, y, 0, y + h,
              {{0, {1.0, 0.93, 0.66, 0.95}}, {0.5, {0.62, 0.42, 0.12, 0.85}}, {1, {0.95, 0.74, 0.32, 0.9}}});
  cairo_set_line_width(cr, 2);
  cairo_stroke(cr);
}

// The panel of every page with its title; what is common is drawn once and copied.
std::unique_ptr<Canvas> panel(const Game& game) {
  auto made = std::make_unique<Canvas>(kPageWidth, kPageHeight);
  const Canvas& canvas = *made;
  cairo_t* cr = canvas.cr();
  roundRect(cr, 3, 3, kPageWidth - 6, kPageHeight - 6, 30);
  setGradient(cr, 0, 0, 0, kPageHeight,
              {{0, mix(game.deep, game.light, 0.10).withAlpha(0.90)},
               {0.2, {0.012, 0.010, 0.022, 0.88}},
               {1, {0.008, 0.007, 0.016, 0.92}}});
  cairo_fill(cr);
  const Ramp metal = {{0, {1.0, 0.95, 0.70}},
                      {0.25, {0.72, 0.48, 0.14}},
                      {0.5, {1.0, 0.86, 0.46}},
                      {0.75, {0.58, 0.36, 0.08}},
                      {1, {0.98, 0.80, 0.40}}};
  for (const auto& [inset, width] : {std::pair{4.0, 5.0}, {13.0, 1.5}}) {
    roundRect(cr, inset, inset, kPageWidth - 2 * inset, kPageHeight - 2 * inset, 30 - inset * 0.7);
    setGradient(cr, 0, 0, kPageWidth, kPageHeight, metal);
    cairo_set_line_width(cr, width);
    cairo_stroke(cr);
  }
  return made;
}

std::unique_ptr<Canvas> page(const Canvas& ground, const std::string& title) {
  auto made = std::make_unique<Canvas>(kPageWidth, kPageHeight);
  made->paint(ground, 0, 0, 1);
  constexpr int headHeight = 120;
  const Canvas head(kPageWidth, headHeight);
  const Typeface face(fontfile::kSerifBold, 62);
  const double width = face.textWidth(title, 6);
  const double x = (kPageWidth - width) / 2;
  goldText(head, face, title, x, 84, 6, 3.2, 9);
  flourish(head, x - 26, 70, 64);
  flourish(head, x + width + 26, kPageWidth - 70, 64);
  made->paint(head, 0, 8, 1);
  return made;
}

std::unique_ptr<Canvas> drawCards(const Game& game, const Canvas& ground) {
  auto made = std::make_unique<Canvas>(kPageWidth, kPageHeight);
  made->paint(ground, 0, 0, 1);
  const Typeface count(fontfile::kCondensedBold, 40);
  for (int i = 0; i < 6; ++i) {
    const double x = cardX(i), y = cardY(i);
    card(*made, game, x, y, kCardWidth, kCardHeight);
    game.symbols[i](*made, x + 96, y + kCardHeight / 2.0, 76);
    for (int row = 0; row < 3; ++row) {
      const double top = fieldY(i, row);
      field(*made, fieldX(i), top, kFieldWidth, kFieldHeight);
      write(*made, count, std::to_string(5 - row), x + 190, top + 43, kGold);
      write(*made, count, "\u00d7", x + 212, top + 42, kText);
    }
  }
  return made;
}

void drawBonusPage(const Game& game, const Canvas& canvas, const PageTexts& texts) {
  card(canvas, game, 40, 150, 590, 675);
  drawStar(canvas, 335, 288, 108);
  const Typeface count(fontfile::kCondensedBold, 46), small(fontfile::kBold, 27), lines(fontfile::kBold, 34);
  for (int row = 0; row < 3; ++row) {
    field(canvas, kScatterX, scatterY(row), kScatterWidth, kFieldHeight);
    write(canvas, count, std::to_string(5 - row), 198, scatterY(row) + 44, kGold);
    write(canvas, count, "\u00d7", 223, scatterY(row) + 43, kText);
  }
  writeCentred(canvas, small, texts.scatter, 335, 436, kGold);
  card(canvas, game, 655, 150, 785, 675);
  const double top = 487 - 29.0 * static_cast<double>(texts.bonusLines.size()) + 12;
  for (size_t i = 0; i < texts.bonusLines.size(); ++i)
    writeCentred(canvas, lines, texts.bonusLines[i], 1047, top + 58 * (static_cast<double>(i) + 0.5), kText);
}

void drawRulesPage(const Game& game, const Canvas& canvas, const PageTexts& texts) {
  // Ten lines over five reels: the row of each on every reel.
  constexpr const char* paths[] = {"11111", "00000", "22222", "01210", "21012",
                                   "00122", "22100", "10001", "12221", "01010"};
  const Typeface number(fontfile::kCondensedBold, 40), lines(fontfile::kBold, 28);
  for (int i = 0; i < 10; ++i) {
    const int deck = i / 5;
    const double x = 48 + i % 5 * 280, y = 150 + deck * 235;
    card(canvas, game, x, y, 264, 220);
    const auto at = [&](int reel) {
      return std::pair{x + 76 + reel * 40.0, y + 62 + (paths[i][reel] - '0') * 48.0};
    };
    for (int reel = 0; reel < 5; ++reel)
      for (int row = 0; row < 3; ++row) {
        const bool onLine = paths[i][reel] - '0' == row;
        roundRect(canvas.cr(), x + 59 + reel * 40, y + 41 + row * 48, 34, 42, 6);
        canvas.setColour(onLine ? kGold.withAlpha(0.85) : Colour{0, 0, 0, 0.55});
        cairo_fill(canvas.cr());
      }
    for (int reel = 0; reel < 5; ++reel) cairo_line_to(canvas.cr(), at(reel).first, at(reel).second);
    cairo_set_line_join(canvas.cr(), CAIRO_LINE_JOIN_ROUND);
    canvas.setColour({0.75, 0.08, 0.08});
    cairo_set_line_width(canvas.cr(), 5);
    cairo_stroke(canvas.cr());
    writeCentred(canvas, number, std::to_string(i + 1), x + 30, y + 124, kGold);
  }
  for (size_t i = 0; i < texts.ruleLines.size(); ++i)
    writeCentred(canvas, lines, texts.ruleLines[i], kPageWidth / 2.0, 686 + 52 * static_cast<double>(i), kText);
}
}  // namespace

void drawPages(const Game& game, const Output& output) {
  const std::unique_ptr<Canvas> ground = panel(game);
  const std::unique_ptr<Canvas> cards = drawCards(game, *ground);
  for (const PageTexts& texts : game.languages) {
    const std::string folder = "Games/" + game.name + "/Icons/" + texts.folder + "/";
    page(*cards, texts.paytable)->save(output.path(folder + "InfoPage_Paytable.png"));
    const std::unique_ptr<Canvas> bonus = page(*ground, texts.bonus);
    drawBonusPage(game, *bonus, texts);
    bonus->save(output.path(folder + "InfoPage_Paytable_Bonus.png"));
    const std::unique_ptr<Canvas> rules = page(*ground, texts.rules);
    drawRulesPage(game, *rules, texts);
    rules->save(output.path(folder + "InfoPage_Rules.png"));
  }
}
