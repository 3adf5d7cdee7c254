// The two pictures of a cabinet button: lit, and without a function.
#include "Canvas.h"
#include "Family.h"
#include "Light.h"
#include "Metal.h"

namespace {
constexpr int kWidth = 177, kHeight = 179;

// The program writes the button's function into 101 by 80 pixels at (32, 31), its name into 101 by 20 at (32,
// 117).
void drawButton(const Output& output, const std::string& file, bool lit) {
  Canvas canvas(kWidth, kHeight);
  cairo_t* cr = canvas.cr();
  const Metal& metal = lit ? goldMetal() : silverMetal();
  const auto outer = [](cairo_t* c) { roundRect(c, 12, 12, 153, 153, 24); };
  drawHalo(canvas, {0, 0, 0, 0.9}, 2, 8, outer);
  if (lit) drawHalo(canvas, metal.glow.withAlpha(0.55), 2, 9, outer);
  drawRelief(canvas, metal, {5, 0.4, 8, 170}, [](cairo_t* c) {
    cairo_set_fill_rule(c, CAIRO_FILL_RULE_EVEN_ODD);
    roundRect(c, 12, 12, 153, 153, 24);
    roundRect(c, 22, 22, 133, 133, 15);
  });
  // The cap: red glass with a light inside, or the same glass in the dark.
  roundRect(cr, 21.5, 21.5, 134, 134, 15.5);
  cairo_save(cr);
  cairo_clip(cr);
  if (lit)
    setGradient(cr, 0, 22, 0, 156, {{0, {0.46, 0.05, 0.07}}, {0.5, {0.30, 0.015, 0.04}}, {1, {0.13, 0.0, 0.02}}});
  else
    setGradient(cr, 0, 22, 0, 156, {{0, {0.10, 0.10, 0.12}}, {0.5, {0.055, 0.055, 0.07}}, {1, {0.03, 0.03, 0.04}}});
  cairo_paint(cr);
  if (lit) addGlow(canvas, 88, 80, 92, {1.0, 0.30, 0.16, 0.40});
  setGradient(cr, 0, 22, 0, 34, {{0, {0, 0, 0, 0.7}}, {1, {0, 0, 0, 0}}});
  cairo_rectangle(cr, 20, 20, 140, 14);
  cairo_fill(cr);
  cairo_move_to(cr, 20, 20);
  cairo_line_to(cr, 157, 20);
  cairo_line_to(cr, 157, 62);
  cairo_curve_to(cr, 120, 76, 57, 76, 20, 62);
  cairo_close_path(cr);
  setGradient(cr, 0, 20, 0, 74, {{0, {1, 1, 1, lit ? 0.20 : 0.07}}, {1, {1, 1, 1, 0.02}}});
  cairo_fill(cr);
  // The name's band.
  setGradient(cr, 0, 114, 0, 142, {{0, {0, 0, 0, 0.62}}, {1, {0, 0, 0, 0.45}}});
  cairo_rectangle(cr, 20, 114, 140, 27);
  cairo_fill(cr);
  const Colour line = sample(metal.mirror, 0.7).withAlpha(lit ? 0.9 : 0.35);
  for (const double y : {113.0, 141.0}) {
    setGradient(cr, 22, 0, 156, 0, {{0, line.withAlpha(0)}, {0.5, line}, {1, line.withAlpha(0)}});
    cairo_rectangle(cr, 22, y, 134, 1.4);
    cairo_fill(cr);
  }
  cairo_restore(cr);
  if (!lit) {
    // Unlit metal: the whole button stands back.
    cairo_set_operator(cr, CAIRO_OPERATOR_ATOP);
    canvas.setColour({0.02, 0.02, 0.04, 0.42});
    cairo_paint(cr);
  }
  output.image(file, canvas);
}
}  // namespace

void drawButtons(const Output& output) {
  drawButton(output, "buttonE.png", true);
  drawButton(output, "buttonD.png", false);
}
