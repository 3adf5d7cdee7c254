#include "Lettering.h"

#include "Metal.h"

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

void flourish(const Canvas& canvas, double x0, double x1, double y) {
  const Ramp fade = {{0, {1.0, 0.88, 0.52, 0.95}}, {0.4, {0.90, 0.64, 0.22, 0.7}}, {1, {0.9, 0.6, 0.2, 0}}};
  setGradient(canvas.cr(), x0, 0, x1, 0, fade);
  cairo_move_to(canvas.cr(), x0, y - 2.2);
  cairo_line_to(canvas.cr(), x1, y);
  cairo_line_to(canvas.cr(), x0, y + 2.2);
  cairo_close_path(canvas.cr());
  cairo_fill(canvas.cr());
}
