#include "Light.h"

#include <cmath>

namespace {
// Paints the current source where the path is, as light.
void fillLight(cairo_t* cr) {
  cairo_save(cr);
  cairo_set_operator(cr, CAIRO_OPERATOR_ADD);
  cairo_fill(cr);
  cairo_restore(cr);
}
}  // namespace

void addGlow(const Canvas& canvas, double x, double y, double radius, const Colour& colour) {
  setRadial(canvas.cr(), x, y, radius,
            {{0, colour},
             {0.25, colour.withAlpha(colour.a * 0.52)},
             {0.55, colour.withAlpha(colour.a * 0.14)},
             {1, colour.withAlpha(0)}});
  cairo_arc(canvas.cr(), x, y, radius, 0, 2 * M_PI);
  fillLight(canvas.cr());
}

void addGlint(const Canvas& canvas, double x, double y, double size, double angle, const Colour& colour) {
  cairo_t* cr = canvas.cr();
  addGlow(canvas, x, y, size * 0.62, colour.withAlpha(colour.a * 0.7));
  const Colour core = mix(colour, {1, 1, 1}, 0.8);
  for (const double turn : {0.0, M_PI / 4}) {
    const double reach = turn == 0 ? size : size * 0.45;
    cairo_save(cr);
    cairo_translate(cr, x, y);
    cairo_rotate(cr, angle + turn);
    star(cr, 0, 0, reach, reach * 0.055, 4);
    cairo_restore(cr);
    setRadial(cr, x, y, reach,
              {{0, core.withAlpha(colour.a)},
               {0.3, core.withAlpha(colour.a * 0.85)},
               {1, colour.withAlpha(colour.a * 0.05)}});
    fillLight(cr);
  }
  addGlow(canvas, x, y, size * 0.16, core.withAlpha(colour.a));
}

void addStreak(const Canvas& canvas, double x0, double y0, double x1, double y1, double width,
               const Colour& colour) {
  cairo_t* cr = canvas.cr();
  const double length = std::hypot(x1 - x0, y1 - y0);
  if (length < 0.5) return;
  const double nx = -(y1 - y0) / length * width / 2, ny = (x1 - x0) / length * width / 2;
  cairo_move_to(cr, x0, y0);
  cairo_line_to(cr, x1 + nx, y1 + ny);
  cairo_arc(cr, x1, y1, width / 2, std::atan2(ny, nx), std::atan2(ny, nx) - M_PI);
  cairo_close_path(cr);
  setGradient(cr, x0, y0, x1, y1, {{0, colour.withAlpha(0)}, {0.6, colour.withAlpha(colour.a * 0.5)}, {1, colour}});
  fillLight(cr);
}
