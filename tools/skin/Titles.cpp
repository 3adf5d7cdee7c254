// The title over the levels and the logo that stands in when there are none.
#include <cmath>

#include "Canvas.h"
#include "Family.h"
#include "Lettering.h"
#include "Metal.h"
#include "Typeface.h"

namespace {
// A four-pointed glint.
void glint(const Canvas& canvas, double x, double y, double size) {
  setRadial(canvas.cr(), x, y, size * 0.75,
            {{0, {1, 0.97, 0.85, 0.75}}, {0.3, {1, 0.85, 0.5, 0.25}}, {1, {1, 0.8, 0.4, 0}}});
  cairo_arc(canvas.cr(), x, y, size * 0.75, 0, 2 * M_PI);
  cairo_fill(canvas.cr());
  star(canvas.cr(), x, y, size, size * 0.07, 4);
  setRadial(canvas.cr(), x, y, size, {{0, {1, 1, 0.96, 1}}, {0.35, {1, 0.97, 0.85, 0.9}}, {1, {1, 0.9, 0.6, 0.1}}});
  cairo_fill(canvas.cr());
}

void drawJackpotTitle(const Output& output) {
  Canvas canvas(630, 156);
  const Typeface face(fontfile::kSerifBold, 103);
  const std::string text = "JACKPOT";
  const double spacing = 3;
  const double x = (canvas.width() - face.textWidth(text, spacing)) / 2;
  const double baseline = 98;
  goldText(canvas, face, text, x, baseline, spacing, 5.2, 14);
  const auto diamond = [](cairo_t* cr) { star(cr, 315, 126, 9, 6.3, 4); };
  flourish(canvas, 300, 70, 126);
  flourish(canvas, 330, 560, 126);
  drawHalo(canvas, {1.0, 0.7, 0.2, 0.7}, 2, 8, diamond);
  drawRelief(canvas, goldMetal(), {4, 0, 116, 136}, diamond);
  glint(canvas, x + 40, baseline - 76, 20);
  glint(canvas, canvas.width() - x - 8, baseline - 70, 15);
  output.image("JACKPOT.png", canvas);
}

void drawLogo(const Output& output) {
  Canvas canvas(596, 76);
  const Typeface face(fontfile::kSerifBold, 62);
  const std::string text = "VESPERA";
  const double width = face.textWidth(text, 12);
  const double x = (canvas.width() - width) / 2;
  goldText(canvas, face, text, x, 60, 12, 3.4, 6);
  flourish(canvas, x - 14, 6, 38);
  flourish(canvas, x + width + 14, 590, 38);
  output.image("logo.png", canvas);
}
}  // namespace

void drawTitles(const Output& output) {
  drawJackpotTitle(output);
  drawLogo(output);
}
