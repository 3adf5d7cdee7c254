// The bar behind the running text of a level: it comes out from under the frame and leaves the screen at the right.
#include "Canvas.h"
#include "Family.h"

void drawInfoBar(const Output& output) {
  Canvas canvas(1220, 91);
  cairo_t* cr = canvas.cr();
  // Soft shade, dark glass, a light upper half.
  setGradient(cr, 0, 0, 0, 91,
              {{0, {0, 0, 0, 0}}, {0.09, {0, 0, 0, 0.55}}, {0.91, {0, 0, 0, 0.55}}, {1, {0, 0, 0, 0}}});
  cairo_paint(cr);
  setGradient(cr, 0, 9, 0, 82,
              {{0, {0.16, 0.12, 0.24, 0.88}},
               {0.48, {0.070, 0.050, 0.125, 0.90}},
               {0.52, {0.030, 0.020, 0.065, 0.92}},
               {1, {0.085, 0.055, 0.120, 0.90}}});
  cairo_rectangle(cr, 0, 9, 1220, 73);
  cairo_fill(cr);
  // The gold edges are bright beside the frame and calm down along the text.
  const auto edge = [&](double y, double h, double strength) {
    setGradient(cr, 0, 0, 1220, 0,
                {{0, {1.0, 0.90, 0.58, strength}},
                 {0.35, {0.86, 0.62, 0.24, strength * 0.8}},
                 {1, {0.70, 0.48, 0.16, strength * 0.5}}});
    cairo_rectangle(cr, 0, y, 1220, h);
    cairo_fill(cr);
  };
  edge(8, 2, 1.0);
  edge(12, 1, 0.35);
  edge(78, 1, 0.35);
  edge(81, 2, 1.0);
  // Shade that the frame throws on its first pixels.
  setGradient(cr, 22, 0, 66, 0, {{0, {0, 0, 0, 0.65}}, {1, {0, 0, 0, 0}}});
  cairo_rectangle(cr, 0, 9, 66, 73);
  cairo_fill(cr);
  output.image("bar.png", canvas);
}
