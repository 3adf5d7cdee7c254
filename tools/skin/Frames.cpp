// The frames of the four levels, each with the currency at the right and at the left of the digits.
#include <cmath>

#include "Canvas.h"
#include "Family.h"
#include "Metal.h"
#include "Plate.h"
#include "Typeface.h"

void plate(cairo_t* cr, double inset) {
  const double left = 12 + inset, right = 896 - inset, top = 10 + inset, bottom = 200 - inset;
  const double cut = 26 - inset * 0.55, round = 22 - inset * 0.8;
  cairo_new_sub_path(cr);
  cairo_move_to(cr, left + cut, top);
  cairo_line_to(cr, right - cut, top);
  cairo_line_to(cr, right, top + cut);
  cairo_arc(cr, right - round, bottom - round, round, 0, M_PI / 2);
  cairo_arc(cr, left + round, bottom - round, round, M_PI / 2, M_PI);
  cairo_line_to(cr, left, top + cut);
  cairo_close_path(cr);
}

namespace {
constexpr int kWidth = kPlateWidth;
constexpr int kHeight = kPlateHeight;

// What the program draws into a frame: the digits' box, the currency's box.
struct Layout {
  const char* suffix;
  double digitsFrom, digitsTo, currencyFrom, currencyTo;
};

// The program draws digits in 594 by 91 pixels at (90, 87) or (229, 87) and the currency in 130 by 91 at (709, 87)
// or (68, 87); the windows leave a margin around these boxes.
constexpr Layout kLayouts[] = {{"_RIGHT.png", 70, 688, 704, 846}, {"_LEFT.png", 220, 834, 62, 204}};
constexpr double kWindowY = 83;
constexpr double kWindowHeight = 97;

// A window of dark glass set into the plate.
void glass(const Canvas& canvas, const Metal& metal, double x, double w) {
  cairo_t* cr = canvas.cr();
  constexpr double y = kWindowY, h = kWindowHeight, radius = 13;
  const auto rim = [&](cairo_t* c) {
    cairo_set_fill_rule(c, CAIRO_FILL_RULE_EVEN_ODD);
    roundRect(c, x - 5, y - 5, w + 10, h + 10, radius + 5);
    roundRect(c, x, y, w, h, radius);
  };
  drawRelief(canvas, metal, {2.6, 0.0, y - 8, y + h + 8}, rim);
  cairo_save(cr);
  roundRect(cr, x, y, w, h, radius);
  cairo_clip(cr);
  const Colour deep = metal.lacquer;
  setGradient(cr, 0, y, 0, y + h,
              {{0, {0.004, 0.004, 0.008}},
               {0.55, {deep.r * 0.28, deep.g * 0.28, deep.b * 0.28}},
               {1, {deep.r * 1.05, deep.g * 1.05, deep.b * 1.05}}});
  cairo_paint(cr);
  // Light of the metal on the floor of the window.
  cairo_save(cr);
  cairo_translate(cr, x + w / 2, y + h);
  cairo_scale(cr, 1, 0.11);
  setRadial(cr, 0, 0, w / 2, {{0, metal.glow.withAlpha(0.42)}, {1, metal.glow.withAlpha(0)}});
  cairo_paint(cr);
  cairo_restore(cr);
  // Shade of the rim at the top, reflection of the room on the upper half.
  setGradient(cr, 0, y, 0, y + 16, {{0, {0, 0, 0, 0.8}}, {1, {0, 0, 0, 0}}});
  cairo_rectangle(cr, x, y, w, 16);
  cairo_fill(cr);
  cairo_move_to(cr, x, y);
  cairo_line_to(cr, x + w, y);
  cairo_line_to(cr, x + w, y + h * 0.34);
  cairo_curve_to(cr, x + w * 0.7, y + h * 0.44, x + w * 0.3, y + h * 0.44, x, y + h * 0.34);
  cairo_close_path(cr);
  setGradient(cr, 0, y, 0, y + h * 0.44, {{0, {1, 1, 1, 0.13}}, {1, {1, 1, 1, 0.035}}});
  cairo_fill(cr);
  cairo_restore(cr);
}

// A cut stone in the level's colour.
void gem(const Canvas& canvas, const Metal& metal, double x, double y, double radius) {
  cairo_t* cr = canvas.cr();
  const auto setting = [&](cairo_t* c) { star(c, x, y, radius + 4.5, (radius + 4.5) * 0.93, 4); };
  drawHalo(canvas, metal.glow.withAlpha(0.75), 1, 8, setting);
  drawRelief(canvas, metal, {3, 0, y - radius - 4, y + radius + 4}, setting);
  constexpr int facets = 8;
  for (int i = 0; i < facets; ++i) {
    const double from = 2 * M_PI * i / facets - M_PI / 8, to = 2 * M_PI * (i + 1) / facets - M_PI / 8;
    const double up = 0.5 - 0.5 * std::sin((from + to) / 2 + 0.5);
    cairo_move_to(cr, x + radius * std::cos(from), y + radius * std::sin(from));
    cairo_line_to(cr, x + radius * std::cos(to), y + radius * std::sin(to));
    cairo_line_to(cr, x + radius * 0.52 * std::cos(to), y + radius * 0.52 * std::sin(to));
    cairo_line_to(cr, x + radius * 0.52 * std::cos(from), y + radius * 0.52 * std::sin(from));
    cairo_close_path(cr);
    canvas.setColour(sample(metal.mirror, 0.12 + 0.8 * up));
    cairo_fill(cr);
    cairo_move_to(cr, x, y);
    cairo_line_to(cr, x + radius * 0.52 * std::cos(from), y + radius * 0.52 * std::sin(from));
    cairo_line_to(cr, x + radius * 0.52 * std::cos(to), y + radius * 0.52 * std::sin(to));
    cairo_close_path(cr);
    canvas.setColour(sample(metal.mirror, 0.42 + 0.5 * std::abs(up - 0.15)));
    cairo_fill(cr);
  }
  star(cr, x - radius * 0.30, y - radius * 0.36, radius * 0.42, radius * 0.05, 4);
  canvas.setColour({1, 1, 1, 0.95});
  cairo_fill(cr);
}

// Fine lines that close the head of the plate at the right of the hours' place.
void pinstripes(const Canvas& canvas, const Metal& metal, double from, double to, double y, bool fadeLeft) {
  const Colour bright = sample(metal.mirror, 0.75);
  const Ramp ramp = fadeLeft ? Ramp{{0, bright.withAlpha(0)}, {1, bright.withAlpha(0.9)}}
                             : Ramp{{0, bright.withAlpha(0.9)}, {1, bright.withAlpha(0)}};
  for (int line = -1; line <= 1; ++line) {
    setGradient(canvas.cr(), from, 0, to, 0, ramp);
    cairo_rectangle(canvas.cr(), from, y + line * 7 - 0.8, to - from, 1.6);
    cairo_fill(canvas.cr());
  }
}

void head(const Canvas& canvas, const Metal& metal) {
  const Typeface face(fontfile::kSerifBold, 39);
  constexpr double middle = 49;
  const double baseline = middle + face.capHeight() / 2;
  const auto name = [&](cairo_t* cr) { face.appendText(cr, metal.name, 92, baseline, 3.5); };
  drawHalo(canvas, metal.glow.withAlpha(0.32), 2, 9, name);
  drawHalo(canvas, {0, 0, 0, 0.9}, 2, 2, name);
  // The thin strokes of the serifs leave no room for a bevel: a bright run of the metal's own reflections instead.
  name(canvas.cr());
  setGradient(canvas.cr(), 0, baseline - face.capHeight(), 0, baseline,
              {{0, sample(metal.mirror, 0.98)},
               {0.45, sample(metal.mirror, 0.80)},
               {0.55, sample(metal.mirror, 0.62)},
               {1, sample(metal.mirror, 0.88)}});
  cairo_fill(canvas.cr());
  gem(canvas, metal, 62, middle, 15);
  pinstripes(canvas, metal, 720, 846, middle, true);
  const auto tip = [&](cairo_t* cr) { star(cr, 856, middle, 11, 7.6, 4); };
  drawRelief(canvas, metal, {4, 0, middle - 11, middle + 11}, tip);
}

void drawFrame(const Output& output, const Metal& metal, const Layout& layout) {
  Canvas canvas(kWidth, kHeight);
  cairo_t* cr = canvas.cr();
  const auto outer = [](cairo_t* c) { plate(c, 0); };
  drawHalo(canvas, {0, 0, 0, 0.85}, 1, 9, outer);
  drawHalo(canvas, metal.glow.withAlpha(0.38), 1, 7, outer);
  // The bezel is a ring: brushed metal between the outer edge and the lacquer.
  drawRelief(canvas, metal, {4.5, 0.55, 6, 202}, [](cairo_t* c) {
    cairo_set_fill_rule(c, CAIRO_FILL_RULE_EVEN_ODD);
    plate(c, 0);
    plate(c, 11);
  });
  cairo_save(cr);
  plate(cr, 10.5);
  cairo_clip(cr);
  const Colour deep = metal.lacquer;
  setGradient(cr, 0, 20, 0, 190,
              {{0, {deep.r * 2.1, deep.g * 2.1, deep.b * 2.1}},
               {0.30, {deep.r * 1.15, deep.g * 1.15, deep.b * 1.15}},
               {1, {deep.r * 0.5, deep.g * 0.5, deep.b * 0.5}}});
  cairo_paint(cr);
  setRadial(cr, 200, 20, 420, {{0, metal.glow.withAlpha(0.17)}, {1, metal.glow.withAlpha(0)}});
  cairo_paint(cr);
  setGradient(cr, 0, 20, 0, 34, {{0, {0, 0, 0, 0.6}}, {1, {0, 0, 0, 0}}});
  cairo_rectangle(cr, 0, 20, kWidth, 14);
  cairo_fill(cr);
  cairo_restore(cr);
  plate(cr, 11.4);
  canvas.setColour(sample(metal.mirror, 0.9).withAlpha(0.35));
  cairo_set_line_width(cr, 1);
  cairo_stroke(cr);

  glass(canvas, metal, layout.digitsFrom, layout.digitsTo - layout.digitsFrom);
  glass(canvas, metal, layout.currencyFrom, layout.currencyTo - layout.currencyFrom);
  head(canvas, metal);
  output.image(metal.name + std::string(layout.suffix), canvas);
}
}  // namespace

void drawFrames(const Output& output) {
  for (const Metal* metal : {&goldMetal(), &silverMetal(), &bronzeMetal(), &emeraldMetal()})
    for (const Layout& layout : kLayouts) drawFrame(output, *metal, layout);
}
