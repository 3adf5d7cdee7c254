// The symbols of the two games: stones and regalia, fruit and a lucky number.
#include "Symbols.h"

#include <algorithm>
#include <cmath>

#include "Light.h"
#include "Metal.h"
#include "Typeface.h"

namespace {
// Draws raised metal on a canvas of the symbol's own size: the work grows with the canvas.
void relief(const Canvas& canvas, double x, double y, double radius, const Metal& metal, double bevel,
            const std::function<void(cairo_t*)>& path) {
  const double margin = 12;
  const int side = static_cast<int>(std::ceil(2 * (radius + margin)));
  const Canvas own(side, side);
  const double left = std::floor(x - side / 2.0), top = std::floor(y - side / 2.0);
  const auto moved = [&](cairo_t* cr) {
    cairo_translate(cr, x - left, y - top);
    path(cr);
    cairo_translate(cr, left - x, top - y);
  };
  drawHalo(own, {0, 0, 0, 0.8}, 2, 5, moved);
  drawRelief(own, metal, {bevel, 0.0, y - top - radius, y - top + radius}, moved);
  canvas.paint(own, left, top, 1);
}

const Metal& redMetal() {
  static const Metal metal = {"RED",
                              {{0.0, {0.20, 0.0, 0.02}},
                               {0.35, {0.55, 0.02, 0.05}},
                               {0.6, {0.95, 0.16, 0.12}},
                               {0.85, {1.0, 0.62, 0.45}},
                               {1.0, {1.0, 0.95, 0.88}}},
                              {{0.0, {1.0, 0.36, 0.26}}, {0.5, {0.86, 0.05, 0.08}}, {1.0, {0.50, 0.0, 0.05}}},
                              {0.1, 0, 0},
                              {1.0, 0.25, 0.15}};
  return metal;
}

// What a stone shows from its shaded to its lit facets, and how it is cut.
struct Cut {
  Ramp colours;
  Colour glow;
  int sides;
  double wide, high;  // parts of the radius
};

void stone(const Canvas& canvas, double x, double y, double radius, const Cut& cut) {
  cairo_t* cr = canvas.cr();
  addGlow(canvas, x, y, radius * 1.12, cut.glow.withAlpha(0.34));
  const double step = 2 * M_PI / cut.sides;
  const auto to = [&](double angle, double part) {
    cairo_line_to(cr, x + radius * cut.wide * part * std::sin(angle),
                  y - radius * cut.high * part * std::cos(angle));
  };
  const auto facet = [&](double light) {
    cairo_close_path(cr);
    canvas.setColour(sample(cut.colours, std::clamp(light, 0.0, 1.0)));
    cairo_fill_preserve(cr);
    cairo_set_line_width(cr, 0.8);
    cairo_stroke(cr);
  };
  for (int i = 0; i < cut.sides; ++i) {
    const double from = (i - 0.5) * step, middle = i * step, end = (i + 0.5) * step;
    const double lit = 0.5 + 0.5 * std::cos(middle + 0.7);
    const double spark = grain(static_cast<unsigned>(i), static_cast<unsigned>(cut.sides), 31);
    to(from, 1), to(end, 1), to(middle, 0.78);
    facet(0.16 + 0.62 * lit + 0.16 * spark);
    to(from, 1), to(middle, 0.78), to(from, 0.56);
    facet(0.06 + 0.52 * lit + 0.22 * (1 - spark));
    to(end, 1), to(middle, 0.78), to(end, 0.56);
    facet(0.20 + 0.48 * lit + 0.2 * spark);
    to(from, 0.56), to(middle, 0.78), to(end, 0.56);
    facet(0.34 + 0.60 * lit);
    to(from, 0.56), to(end, 0.56), to(middle, 0);
    facet(0.42 + 0.34 * std::cos(middle - 2.2) + 0.2 * spark);
  }
  // The table throws the room back.
  for (int i = 0; i < cut.sides; ++i) to((i - 0.5) * step, 0.56);
  cairo_close_path(cr);
  setGradient(cr, x - radius * 0.4, y - radius * 0.5, x + radius * 0.3, y + radius * 0.5,
              {{0, {1, 1, 1, 0.62}}, {0.45, {1, 1, 1, 0.10}}, {1, {0, 0, 0, 0.22}}});
  cairo_fill(cr);
  addGlint(canvas, x - radius * cut.wide * 0.42, y - radius * cut.high * 0.46, radius * 0.30, 0, {1, 1, 1, 0.95});
}

// A round fruit: dark below, its colour in the middle, the lamp's reflection above left.
void ball(const Canvas& canvas, double x, double y, double radius, const Colour& dark, const Colour& mid,
          const Colour& light) {
  cairo_t* cr = canvas.cr();
  cairo_pattern_t* pattern =
    cairo_pattern_create_radial(x - radius * 0.34, y - radius * 0.38, radius * 0.08, x, y, radius);
  const auto stop = [pattern](double at, const Colour& c) {
    cairo_pattern_add_color_stop_rgba(pattern, at, c.r, c.g, c.b, 1);
  };
  stop(0, light);
  stop(0.38, mid);
  stop(0.80, mix(mid, dark, 0.65));
  stop(0.93, dark);
  stop(1, mix(dark, mid, 0.55));
  cairo_arc(cr, x, y, radius, 0, 2 * M_PI);
  cairo_set_source(cr, pattern);
  cairo_fill(cr);
  cairo_pattern_destroy(pattern);
  cairo_save(cr);
  cairo_translate(cr, x - radius * 0.36, y - radius * 0.46);
  cairo_rotate(cr, -0.6);
  cairo_scale(cr, 1, 0.55);
  setRadial(cr, 0, 0, radius * 0.34, {{0, {1, 1, 1, 0.85}}, {0.5, {1, 1, 1, 0.35}}, {1, {1, 1, 1, 0}}});
  cairo_arc(cr, 0, 0, radius * 0.34, 0, 2 * M_PI);
  cairo_fill(cr);
  cairo_restore(cr);
}

void leaf(const Canvas& canvas, double x, double y, double length, double angle) {
  cairo_t* cr = canvas.cr();
  cairo_save(cr);
  cairo_translate(cr, x, y);
  cairo_rotate(cr, angle);
  cairo_move_to(cr, 0, 0);
  cairo_curve_to(cr, length * 0.25, -length * 0.42, length * 0.75, -length * 0.32, length, 0);
  cairo_curve_to(cr, length * 0.72, length * 0.20, length * 0.28, length * 0.26, 0, 0);
  setGradient(cr, 0, -length * 0.3, 0, length * 0.25,
              {{0, {0.62, 0.92, 0.28}}, {0.55, {0.20, 0.60, 0.12}}, {1, {0.04, 0.28, 0.05}}});
  cairo_fill(cr);
  cairo_move_to(cr, length * 0.06, 0);
  cairo_curve_to(cr, length * 0.4, -length * 0.10, length * 0.7, -length * 0.06, length * 0.95, 0);
  canvas.setColour({0.85, 1.0, 0.6, 0.55});
  cairo_set_line_width(cr, std::max(1.0, length * 0.03));
  cairo_stroke(cr);
  cairo_restore(cr);
}
}  // namespace

void drawCrown(const Canvas& canvas, double x, double y, double radius) {
  const double r = radius;
  addGlow(canvas, x, y, r * 1.15, goldMetal().glow.withAlpha(0.38));
  relief(canvas, x, y, r, goldMetal(), r * 0.075, [r](cairo_t* cr) {
    cairo_move_to(cr, -0.74 * r, 0.62 * r);
    cairo_line_to(cr, -0.92 * r, -0.36 * r);
    cairo_line_to(cr, -0.46 * r, 0.08 * r);
    cairo_line_to(cr, -0.36 * r, -0.62 * r);
    cairo_line_to(cr, -0.14 * r, -0.02 * r);
    cairo_line_to(cr, 0, -0.80 * r);
    cairo_line_to(cr, 0.14 * r, -0.02 * r);
    cairo_line_to(cr, 0.36 * r, -0.62 * r);
    cairo_line_to(cr, 0.46 * r, 0.08 * r);
    cairo_line_to(cr, 0.92 * r, -0.36 * r);
    cairo_line_to(cr, 0.74 * r, 0.62 * r);
    cairo_close_path(cr);
    for (const auto& [px, py, pr] : {std::tuple{-0.92, -0.42, 0.10},
                                     {-0.36, -0.68, 0.10},
                                     {0.0, -0.87, 0.12},
                                     {0.36, -0.68, 0.10},
                                     {0.92, -0.42, 0.10}}) {
      cairo_new_sub_path(cr);
      cairo_arc(cr, px * r, py * r, pr * r, 0, 2 * M_PI);
    }
  });
  relief(canvas, x, y, r, goldMetal(), r * 0.06,
         [r](cairo_t* cr) { roundRect(cr, -0.80 * r, 0.50 * r, 1.60 * r, 0.30 * r, 0.10 * r); });
  const Colour deep[] = {{0.10, 0.25, 0.80}, {0.80, 0.04, 0.10}, {0.05, 0.60, 0.30}};
  for (int i = -2; i <= 2; ++i) {
    const Colour& colour = deep[static_cast<size_t>(std::abs(i))];
    ball(canvas, x + i * 0.31 * r, y + 0.65 * r, r * 0.088, mix(colour, {0, 0, 0}, 0.6), colour,
         mix(colour, {1, 1, 1}, 0.6));
  }
  ball(canvas, x, y + 0.20 * r, r * 0.15, {0.30, 0, 0.03}, {0.90, 0.05, 0.10}, {1, 0.62, 0.55});
  addGlint(canvas, x - 0.36 * r, y - 0.70 * r, r * 0.26, 0, {1, 0.95, 0.8, 1});
}

void drawRuby(const Canvas& canvas, double x, double y, double radius) {
  stone(canvas, x, y, radius,
        {{{0, {0.22, 0.0, 0.03}}, {0.4, {0.66, 0.01, 0.08}}, {0.75, {0.98, 0.20, 0.24}}, {1, {1.0, 0.80, 0.76}}},
         {1.0, 0.12, 0.16},
         8,
         0.94,
         0.94});
}

void drawSapphire(const Canvas& canvas, double x, double y, double radius) {
  stone(canvas, x, y, radius,
        {{{0, {0.01, 0.03, 0.25}}, {0.4, {0.04, 0.16, 0.70}}, {0.75, {0.24, 0.50, 1.0}}, {1, {0.84, 0.93, 1.0}}},
         {0.20, 0.42, 1.0},
         12,
         0.80,
         1.0});
}

void drawJade(const Canvas& canvas, double x, double y, double radius) {
  stone(canvas, x, y, radius,
        {{{0, {0.0, 0.14, 0.07}}, {0.4, {0.0, 0.45, 0.22}}, {0.75, {0.16, 0.85, 0.50}}, {1, {0.82, 1.0, 0.92}}},
         {0.10, 0.95, 0.50},
         4,
         1.14,
         1.20});
}

void drawTopaz(const Canvas& canvas, double x, double y, double radius) {
  stone(canvas, x, y, radius,
        {{{0, {0.28, 0.10, 0.0}}, {0.4, {0.78, 0.36, 0.02}}, {0.75, {1.0, 0.72, 0.16}}, {1, {1.0, 0.96, 0.78}}},
         {1.0, 0.62, 0.10},
         6,
         0.98,
         0.98});
}

void drawAmethyst(const Canvas& canvas, double x, double y, double radius) {
  stone(canvas, x, y, radius,
        {{{0, {0.14, 0.01, 0.24}}, {0.4, {0.42, 0.06, 0.66}}, {0.75, {0.76, 0.36, 1.0}}, {1, {0.96, 0.87, 1.0}}},
         {0.66, 0.25, 1.0},
         3,
         1.16,
         1.12});
}

void drawStar(const Canvas& canvas, double x, double y, double radius) {
  addGlow(canvas, x, y, radius * 1.2, goldMetal().glow.withAlpha(0.5));
  relief(canvas, x, y, radius, goldMetal(), radius * 0.20,
         [radius](cairo_t* cr) { star(cr, 0, 0, radius * 0.98, radius * 0.45, 5); });
  addGlint(canvas, x - radius * 0.20, y - radius * 0.30, radius * 0.34, 0, {1, 0.97, 0.85, 1});
}

void drawSeven(const Canvas& canvas, double x, double y, double radius) {
  const Typeface face(fontfile::kSerifBold, radius * 2.25);
  const double width = face.textWidth("7", 0), height = face.capHeight();
  addGlow(canvas, x, y, radius * 1.15, redMetal().glow.withAlpha(0.36));
  const auto seven = [&](cairo_t* cr) { face.appendText(cr, "7", -width / 2, height / 2, 0); };
  // A gold rim around the number: the same shape, widened, below it.
  cairo_save(canvas.cr());
  cairo_translate(canvas.cr(), x, y);
  seven(canvas.cr());
  cairo_restore(canvas.cr());
  cairo_set_line_join(canvas.cr(), CAIRO_LINE_JOIN_ROUND);
  cairo_set_line_width(canvas.cr(), radius * 0.17);
  canvas.setColour({0.12, 0.04, 0.0});
  cairo_stroke_preserve(canvas.cr());
  cairo_set_line_width(canvas.cr(), radius * 0.12);
  setGradient(
    canvas.cr(), 0, y - radius, 0, y + radius,
    {{0, {1.0, 0.95, 0.70}}, {0.45, {0.80, 0.55, 0.14}}, {0.55, {0.56, 0.34, 0.06}}, {1, {1.0, 0.86, 0.48}}});
  cairo_stroke(canvas.cr());
  relief(canvas, x, y, radius, redMetal(), radius * 0.09, seven);
  addGlint(canvas, x - radius * 0.42, y - radius * 0.62, radius * 0.24, 0, {1, 0.95, 0.85, 1});
}

void drawCherries(const Canvas& canvas, double x, double y, double radius) {
  cairo_t* cr = canvas.cr();
  const double r = radius;
  cairo_set_line_cap(cr, CAIRO_LINE_CAP_ROUND);
  for (const auto& [width, colour] :
       {std::pair{0.105, Colour{0.05, 0.16, 0.02}}, {0.065, Colour{0.36, 0.66, 0.14}}}) {
    cairo_move_to(cr, x - 0.44 * r, y + 0.14 * r);
    cairo_curve_to(cr, x - 0.30 * r, y - 0.40 * r, x - 0.05 * r, y - 0.70 * r, x + 0.20 * r, y - 0.86 * r);
    cairo_curve_to(cr, x + 0.24 * r, y - 0.50 * r, x + 0.36 * r, y - 0.20 * r, x + 0.46 * r, y + 0.20 * r);
    cairo_set_line_width(cr, width * r);
    canvas.setColour(colour);
    cairo_stroke(cr);
  }
  ball(canvas, x - 0.46 * r, y + 0.42 * r, 0.43 * r, {0.22, 0.0, 0.03}, {0.84, 0.03, 0.08}, {1.0, 0.50, 0.44});
  ball(canvas, x + 0.46 * r, y + 0.52 * r, 0.43 * r, {0.20, 0.0, 0.03}, {0.78, 0.02, 0.08}, {1.0, 0.48, 0.42});
  leaf(canvas, x + 0.18 * r, y - 0.84 * r, 0.74 * r, 0.22);
}

void drawLemon(const Canvas& canvas, double x, double y, double radius) {
  cairo_t* cr = canvas.cr();
  const double r = radius;
  cairo_save(cr);
  cairo_translate(cr, x, y);
  cairo_rotate(cr, -0.42);
  cairo_move_to(cr, -0.98 * r, 0);
  cairo_curve_to(cr, -0.82 * r, -0.10 * r, -0.78 * r, -0.66 * r, 0, -0.66 * r);
  cairo_curve_to(cr, 0.78 * r, -0.66 * r, 0.82 * r, -0.10 * r, 0.98 * r, 0);
  cairo_curve_to(cr, 0.82 * r, 0.10 * r, 0.78 * r, 0.66 * r, 0, 0.66 * r);
  cairo_curve_to(cr, -0.78 * r, 0.66 * r, -0.82 * r, 0.10 * r, -0.98 * r, 0);
  cairo_close_path(cr);
  cairo_clip(cr);
  cairo_scale(cr, 1, 0.70);
  ball(canvas, 0, 0, r, {0.45, 0.28, 0.0}, {0.99, 0.84, 0.08}, {1.0, 1.0, 0.72});
  cairo_restore(cr);
  leaf(canvas, x + 0.42 * r, y - 0.58 * r, 0.56 * r, -0.85);
}

void drawPlum(const Canvas& canvas, double x, double y, double radius) {
  cairo_t* cr = canvas.cr();
  const double r = radius;
  cairo_save(cr);
  cairo_translate(cr, x, y + 0.08 * r);
  cairo_rotate(cr, 0.35);
  cairo_scale(cr, 0.76, 0.90);
  ball(canvas, 0, 0, r, {0.09, 0.01, 0.19}, {0.38, 0.10, 0.62}, {0.83, 0.65, 1.0});
  cairo_move_to(cr, 0.02 * r, -r);
  cairo_curve_to(cr, 0.46 * r, -0.5 * r, 0.46 * r, 0.4 * r, 0.1 * r, 0.96 * r);
  canvas.setColour({0.08, 0.0, 0.18, 0.55});
  cairo_set_line_width(cr, 0.045 * r);
  cairo_stroke(cr);
  cairo_restore(cr);
  leaf(canvas, x + 0.22 * r, y - 0.72 * r, 0.62 * r, -0.30);
}

void drawOrange(const Canvas& canvas, double x, double y, double radius) {
  const double r = radius * 0.86;
  const double cy = y + 0.10 * radius;
  ball(canvas, x, cy, r, {0.42, 0.13, 0.0}, {0.98, 0.52, 0.03}, {1.0, 0.86, 0.50});
  for (unsigned i = 0; i < 90; ++i) {
    const double angle = 2 * M_PI * grain(i, 1, 41), reach = 0.92 * std::sqrt(grain(i, 2, 41));
    cairo_arc(canvas.cr(), x + r * reach * std::cos(angle), cy + r * reach * std::sin(angle), r * 0.017, 0,
              2 * M_PI);
    canvas.setColour({0.45, 0.16, 0.0, 0.34});
    cairo_fill(canvas.cr());
  }
  star(canvas.cr(), x + 0.04 * r, cy - 0.80 * r, 0.15 * r, 0.07 * r, 5);
  canvas.setColour({0.16, 0.34, 0.05});
  cairo_fill(canvas.cr());
  leaf(canvas, x + 0.05 * r, cy - 0.84 * r, 0.66 * r, -0.28);
}

void drawMelon(const Canvas& canvas, double x, double y, double radius) {
  cairo_t* cr = canvas.cr();
  const double r = radius * 1.02;
  cairo_save(cr);
  cairo_translate(cr, x, y - 0.34 * r);
  cairo_rotate(cr, -0.20);
  const auto half = [&](double part) {
    cairo_arc(cr, 0, 0, part * r, 0, M_PI);
    cairo_close_path(cr);
  };
  half(1.0);
  setRadial(cr, 0, 0, r, {{0, {0.1, 0.5, 0.1}}, {0.86, {0.10, 0.42, 0.10}}, {1, {0.02, 0.20, 0.04}}});
  cairo_fill(cr);
  half(0.90);
  canvas.setColour({0.80, 0.96, 0.66});
  cairo_fill(cr);
  half(0.83);
  setRadial(cr, -0.2 * r, 0.1 * r, r, {{0, {1.0, 0.50, 0.42}}, {0.5, {0.95, 0.16, 0.20}}, {1, {0.66, 0.02, 0.10}}});
  cairo_fill(cr);
  for (int i = 0; i < 9; ++i) {
    const double angle = M_PI * (i + 0.5) / 9, reach = (i % 2 ? 0.38 : 0.62) * r;
    cairo_save(cr);
    cairo_translate(cr, reach * std::cos(angle), reach * std::sin(angle));
    cairo_rotate(cr, angle - M_PI / 2);
    cairo_scale(cr, 0.55, 1);
    cairo_arc(cr, 0, 0, 0.062 * r, 0, 2 * M_PI);
    cairo_restore(cr);
    canvas.setColour({0.10, 0.02, 0.02});
    cairo_fill(cr);
  }
  setGradient(cr, 0, 0, 0, 0.30 * r, {{0, {1, 1, 1, 0.40}}, {1, {1, 1, 1, 0}}});
  half(0.83);
  cairo_fill(cr);
  cairo_restore(cr);
}
