// What is shown while the platform service has not answered yet: dots, a large logo, the font of the status line.
#include <cmath>

#include "Canvas.h"
#include "Family.h"
#include "Metal.h"
#include "Typeface.h"

namespace {
void drawDot(const Output& output) {
  constexpr int size = 44;
  constexpr double middle = size / 2.0;
  Canvas canvas(size, size);
  setRadial(canvas.cr(), middle, middle, middle,
            {{0, {1.0, 0.70, 0.20, 0.55}}, {0.55, {1.0, 0.62, 0.15, 0.28}}, {1, {1.0, 0.55, 0.1, 0}}});
  cairo_paint(canvas.cr());
  const auto ball = [](cairo_t* cr) { cairo_arc(cr, middle, middle, 11, 0, 2 * M_PI); };
  drawRelief(canvas, goldMetal(), {10.5, 0, middle - 11, middle + 11}, ball);
  setRadial(canvas.cr(), middle - 3.5, middle - 4.5, 4.5, {{0, {1, 1, 0.95, 0.95}}, {1, {1, 1, 0.9, 0}}});
  cairo_paint(canvas.cr());
  output.image("dot.png", canvas);

  Canvas shadow(size, size);
  setRadial(shadow.cr(), middle + 2, middle + 4, 15, {{0, {0, 0, 0, 0.7}}, {1, {0, 0, 0, 0}}});
  cairo_paint(shadow.cr());
  output.image("dot_shadow.png", shadow);
}

void drawSplash(const Output& output) {
  Canvas canvas(900, 240);
  cairo_t* cr = canvas.cr();
  const Typeface face(fontfile::kSerifBold, 128);
  const Typeface small(fontfile::kBold, 25);
  const std::string text = "VESPERA";
  const double width = face.textWidth(text, 16);
  const double x = (canvas.width() - width) / 2;
  const double baseline = 158;
  const auto letters = [&](cairo_t* c) { face.appendText(c, text, x, baseline, 16); };
  drawHalo(canvas, {1.0, 0.60, 0.15, 0.42}, 6, 22, letters);
  drawHalo(canvas, {0.08, 0.03, 0.0, 0.95}, 4, 2, letters);
  drawRelief(canvas, goldMetal(), {6.5, 0, baseline - face.capHeight(), baseline}, letters);
  // The evening star over the name.
  const auto evening = [](cairo_t* c) { star(c, 450, 28, 25, 4.5, 4); };
  drawHalo(canvas, {1.0, 0.85, 0.5, 0.8}, 2, 14, evening);
  drawRelief(canvas, goldMetal(), {5, 0, 4, 52}, evening);
  const std::string line = "TOP SCREEN";
  const double lineWidth = small.textWidth(line, 14);
  small.appendText(cr, line, (canvas.width() - lineWidth) / 2, 214, 14);
  canvas.setColour({0.93, 0.80, 0.52});
  cairo_fill(cr);
  for (const double side : {-1.0, 1.0}) {
    const double from = 450 + side * (lineWidth / 2 + 28), to = 450 + side * 400;
    setGradient(cr, from, 0, to, 0, {{0, {1.0, 0.85, 0.5, 0.9}}, {1, {0.9, 0.6, 0.2, 0}}});
    cairo_move_to(cr, from, 203);
    cairo_line_to(cr, to, 205);
    cairo_line_to(cr, from, 207);
    cairo_close_path(cr);
    cairo_fill(cr);
  }
  output.image("splashLogo.png", canvas);
}
}  // namespace

void drawLoader(const Output& output) {
  drawDot(output);
  drawSplash(output);
  output.copy(fontfile::kRegular, "VESPERA/TOP_SKIN/AppFont.ttf");
}
