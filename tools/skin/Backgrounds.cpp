// The three full-screen pictures: the ground of every panel, the demo marking over it and the veil behind a win.
#include <algorithm>
#include <cmath>

#include "Canvas.h"
#include "Family.h"
#include "Metal.h"
#include "Typeface.h"

namespace {
constexpr int kWidth = 1920;
constexpr int kHeight = 1080;

double bell(double distance, double width) { return std::exp(-distance * distance / (width * width)); }

// Height of the quilted cloth at (x, y), 0 in the seams to 1 on the cushions.
double quilt(double x, double y) {
  constexpr double cell = 96;
  const double u = (x * 0.72 + y) / cell;
  const double v = (x * 0.72 - y) / cell;
  return std::pow(std::abs(std::sin(M_PI * u) * std::sin(M_PI * v)), 0.42);
}

// Light that fans out from above the title, 0 to 1.
double rays(double x, double y) {
  const double dx = x - kWidth / 2.0;
  const double dy = y + 260;
  const double angle = std::atan2(dx, dy);
  const double fan = 0.5 + 0.5 * std::sin(angle * 34) * std::sin(angle * 13 + 1.1);
  return fan * bell(angle, 0.95) * std::clamp(1.15 - std::hypot(dx, dy) / 1350, 0.0, 1.0);
}

unsigned char dithered(double value, int x, int y, unsigned seed) {
  const double noise = grain(static_cast<unsigned>(x), static_cast<unsigned>(y), seed) +
                       grain(static_cast<unsigned>(x), static_cast<unsigned>(y), seed + 7) - 1;
  return static_cast<unsigned char>(std::clamp(std::lround(value * 255 + noise), 0L, 255L));
}

void paintGround(const Canvas& canvas) {
  for (int y = 0; y < kHeight; ++y) {
    unsigned char* row = canvas.row(y);
    for (int x = 0; x < kWidth; ++x) {
      const double fx = (x - kWidth / 2.0) / (kWidth / 2.0);
      const double fy = static_cast<double>(y) / kHeight;
      // Light of the room: warm from the title, violet in the middle, almost none in the corners.
      const double warm = bell(std::hypot(fx * 1.15, (fy + 0.05) * 1.25), 0.62);
      const double violet = bell(std::hypot(fx * 0.8, (fy - 0.48) * 1.2), 0.85);
      const double corner = std::clamp(1.25 - std::hypot(fx, (fy - 0.45) * 1.5) * 0.78, 0.16, 1.0);
      // The cloth: its slope towards the light decides how bright a cushion's side is.
      const double here = quilt(x, y);
      const double slopeY = quilt(x, y + 1.5) - quilt(x, y - 1.5);
      const double slopeX = quilt(x + 1.5, y) - quilt(x - 1.5, y);
      const double cloth = 0.74 + 0.26 * here + 2.6 * slopeY - 1.2 * slopeX * fx;
      const double beam = rays(x, y);
      const double r = (0.020 + 0.085 * violet + 0.300 * warm) * cloth * corner + 0.085 * beam;
      const double g = (0.014 + 0.036 * violet + 0.135 * warm) * cloth * corner + 0.055 * beam;
      const double b = (0.048 + 0.190 * violet + 0.085 * warm) * cloth * corner + 0.030 * beam;
      Canvas::put(row, x, dithered(r, x, y, 3), dithered(g, x, y, 2), dithered(b, x, y, 1), 255);
    }
  }
  canvas.changed();
}

// Gold studs where the seams of the cloth cross, as bright as the light there allows.
void paintStuds(const Canvas& canvas) {
  constexpr double cell = 96;
  for (int i = -12; i < 40; ++i)
    for (int j = -24; j < 30; ++j) {
      const double x = (i + j) * cell / 1.44;
      const double y = (i - j) * cell / 2;
      if (x < -8 || x > kWidth + 8 || y < -8 || y > kHeight + 8) continue;
      const double fx = (x - kWidth / 2.0) / (kWidth / 2.0);
      const double light = 0.20 + 0.8 * bell(std::hypot(fx, y / kHeight), 0.75);
      setRadial(canvas.cr(), x, y, 10, {{0, {0, 0, 0, 0.45}}, {1, {0, 0, 0, 0}}});
      cairo_arc(canvas.cr(), x, y, 10, 0, 2 * M_PI);
      cairo_fill(canvas.cr());
      setRadial(canvas.cr(), x - 1, y - 1.4, 4.2,
                {{0, {1.0, 0.93, 0.70, 0.85 * light}},
                 {0.45, {0.80, 0.56, 0.18, 0.75 * light}},
                 {1, {0.30, 0.17, 0.03, 0.6 * light}}});
      cairo_arc(canvas.cr(), x, y, 3.4, 0, 2 * M_PI);
      cairo_fill(canvas.cr());
    }
}

// A thin gold line that fades towards both ends, with its glow.
void goldLine(const Canvas& canvas, double y, double strength) {
  const Ramp fade = {{0, {0.95, 0.70, 0.26, 0}},
                     {0.2, {0.95, 0.70, 0.26, 0.55 * strength}},
                     {0.5, {1.0, 0.92, 0.66, strength}},
                     {0.8, {0.95, 0.70, 0.26, 0.55 * strength}},
                     {1, {0.95, 0.70, 0.26, 0}}};
  setGradient(canvas.cr(), 0, 0, kWidth, 0, fade);
  cairo_rectangle(canvas.cr(), 0, y, kWidth, 2);
  cairo_fill(canvas.cr());
}

void drawGround(const Output& output) {
  Canvas canvas(kWidth, kHeight);
  paintGround(canvas);
  paintStuds(canvas);
  // Head and foot rails keep the picture together when the middle is empty.
  setGradient(canvas.cr(), 0, 0, 0, 14, {{0, {0, 0, 0, 0.75}}, {1, {0, 0, 0, 0}}});
  cairo_rectangle(canvas.cr(), 0, 0, kWidth, 14);
  cairo_fill(canvas.cr());
  setGradient(canvas.cr(), 0, 1010, 0, kHeight, {{0, {0, 0, 0, 0}}, {1, {0, 0, 0, 0.72}}});
  cairo_rectangle(canvas.cr(), 0, 1010, kWidth, 70);
  cairo_fill(canvas.cr());
  goldLine(canvas, 6, 0.9);
  goldLine(canvas, 10, 0.35);
  goldLine(canvas, 1068, 0.35);
  goldLine(canvas, 1072, 0.9);
  output.image("Background.png", canvas);
}

void drawDemoMarking(const Output& output) {
  Canvas canvas(kWidth, kHeight);
  const Typeface face(fontfile::kCondensedBold, 64);
  const Typeface large(fontfile::kSerifBold, 215);
  const std::string word = "DEMO";
  // A large, faint word in the free right half, and a ribbon across the right upper corner.
  const double width = large.textWidth(word, 20);
  cairo_save(canvas.cr());
  cairo_translate(canvas.cr(), 1480, 650);
  cairo_rotate(canvas.cr(), -0.30);
  large.appendText(canvas.cr(), word, -width / 2, large.capHeight() / 2, 20);
  canvas.setColour({1.0, 0.86, 0.55, 0.055});
  cairo_fill_preserve(canvas.cr());
  cairo_set_line_width(canvas.cr(), 2);
  canvas.setColour({1.0, 0.86, 0.55, 0.16});
  cairo_stroke(canvas.cr());
  cairo_restore(canvas.cr());

  const auto ribbon = [](cairo_t* cr) {
    cairo_save(cr);
    cairo_translate(cr, 1920, 0);
    cairo_rotate(cr, M_PI / 4);
    cairo_rectangle(cr, -300, 148, 600, 84);
    cairo_restore(cr);
  };
  drawHalo(canvas, {0, 0, 0, 0.7}, 2, 12, ribbon);
  drawRelief(canvas, goldMetal(), {5, 0.0, -60, 330}, ribbon);
  cairo_save(canvas.cr());
  cairo_translate(canvas.cr(), 1920, 0);
  cairo_rotate(canvas.cr(), M_PI / 4);
  cairo_rectangle(canvas.cr(), -300, 158, 600, 64);
  setGradient(canvas.cr(), 0, 158, 0, 222,
              {{0, {0.36, 0.02, 0.05}}, {0.5, {0.60, 0.05, 0.09}}, {1, {0.30, 0.01, 0.04}}});
  cairo_fill(canvas.cr());
  const double text = face.textWidth(word, 9);
  face.appendText(canvas.cr(), word, -text / 2, 190 + face.capHeight() / 2, 9);
  canvas.setColour({1.0, 0.93, 0.72});
  cairo_fill(canvas.cr());
  cairo_restore(canvas.cr());
  output.image("ClientDemo.png", canvas);
}

// Soft throughout, so half the size is enough: the program stretches it over the screen.
void drawWinVeil(const Output& output) {
  constexpr int width = kWidth / 2, height = kHeight / 2;
  Canvas canvas(width, height);
  for (int y = 0; y < height; ++y) {
    unsigned char* row = canvas.row(y);
    for (int x = 0; x < width; ++x) {
      const double dx = 2.0 * x - kWidth / 2.0;
      const double dy = 2.0 * y - kHeight / 2.0;
      const double distance = std::hypot(dx, dy) / 1100;
      const double angle = std::atan2(dy, dx);
      const double beam = std::pow(0.5 + 0.5 * std::sin(angle * 18), 3.0) * bell(distance, 0.55) * 0.16;
      const double warm = 0.20 * bell(distance, 0.45) + beam;
      const double alpha = std::clamp(0.70 + 0.26 * distance, 0.0, 0.94);
      Canvas::put(row, x, dithered(1.0 * warm * alpha, x, y, 13), dithered(0.62 * warm * alpha, x, y, 12),
                  dithered(0.16 * warm * alpha, x, y, 11), static_cast<unsigned char>(std::lround(alpha * 255)));
    }
  }
  canvas.changed();
  output.image("Animation/Backround.png", canvas);
}
}  // namespace

void drawBackgrounds(const Output& output) {
  drawGround(output);
  drawDemoMarking(output);
  drawWinVeil(output);
}
