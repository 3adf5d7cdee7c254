// The title over the levels and the logo that stands in when there are none.
#include <cmath>

#include "Canvas.h"
#include "Family.h"
#include "Metal.h"
#include "Typeface.h"

namespace {
/// A text in raised gold with a dark rim and a warm glow, its letters between `top` and `baseline`.
void goldText(const Canvas& canvas, const Typeface& face, const std::string& text, double x, double baseline,
              double spacing, double bevel, int glow) {
  const auto path = [&](cairo_t* cr) { face.appendText(cr, text, x, baseline, spacing); };
  drawHalo(canvas, {1.0, 0.62, 0.16, 0.50}, 5, glow, path);
  drawHalo(canvas, {1.0, 0.80, 0.40, 0.35}, 2, glow / 3, path);
  drawHalo(canvas, {0.05, 0.02, 0.0, 0.95}, 3.2, 2, path);
  path(canvas.cr());
  cairo_set_line_join(canvas.cr(), CAIRO_LINE_JOIN_ROUND);
  cairo_set_line_width(canvas.cr(), 6.4);
  canvas.setColour({0.10, 0.045, 0.0});
  cairo_stroke(canvas.cr());
  path(canvas.cr());
  cairo_set_line_width(canvas.cr(), 3.2);
  setGradient(canvas.cr(), 0, baseline - face.capHeight(), 0, baseline,
              {{0, {0.98, 0.82, 0.42}}, {0.5, {0.52, 0.30, 0.05}}, {1, {0.86, 0.60, 0.20}}});
  cairo_stroke(canvas.cr());
  drawRelief(canvas, goldMetal(), {bevel, 0.0, baseline - face.capHeight(), baseline}, path);
}

/// A four-pointed glint.
void glint(const Canvas& canvas, double x, double y, double size) {
  setRadial(canvas.cr(), x, y, size * 0.75,
            {{0, {1, 0.97, 0.85, 0.75}}, {0.3, {1, 0.85, 0.5, 0.25}}, {1, {1, 0.8, 0.4, 0}}});
  cairo_arc(canvas.cr(), x, y, size * 0.75, 0, 2 * M_PI);
  cairo_fill(canvas.cr());
  star(canvas.cr(), x, y, size, size * 0.07, 4);
  setRadial(canvas.cr(), x, y, size, {{0, {1, 1, 0.96, 1}}, {0.35, {1, 0.97, 0.85, 0.9}}, {1, {1, 0.9, 0.6, 0.1}}});
  cairo_fill(canvas.cr());
}

/// An ornament line from (x0, y) to (x1, y) that is strong at x0 and fades out at x1.
void flourish(const Canvas& canvas, double x0, double x1, double y) {
  const Ramp fade = {{0, {1.0, 0.88, 0.52, 0.95}}, {0.4, {0.90, 0.64, 0.22, 0.7}}, {1, {0.9, 0.6, 0.2, 0}}};
  setGradient(canvas.cr(), x0, 0, x1, 0, fade);
  cairo_move_to(canvas.cr(), x0, y - 2.2);
  cairo_line_to(canvas.cr(), x1, y);
  cairo_line_to(canvas.cr(), x0, y + 2.2);
  cairo_close_path(canvas.cr());
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
