// The ground, the emblem and the animated overlay of a game.
#include <algorithm>
#include <cmath>

#include "AtlasPack.h"
#include "Games.h"
#include "Lettering.h"
#include "Light.h"
#include "Metal.h"

std::unique_ptr<Canvas> drawGameGround(const Game& game, int width) {
  const int height = width * 9 / 16;
  auto canvas = std::make_unique<Canvas>(width, height);
  for (int y = 0; y < height; ++y) {
    unsigned char* row = canvas->row(y);
    for (int x = 0; x < width; ++x) {
      const double fx = 2.0 * x / width - 1, fy = 2.0 * y / height - 1;
      const double far = std::hypot(fx, fy * 0.8 + 0.1);
      const double angle = std::atan2(fx, fy + 1.9);
      const double beam = std::pow(0.5 + 0.5 * std::sin(angle * 30 + 1.3 * std::sin(angle * 7)), 2.0);
      const double light = std::exp(-far * far * 1.7) * (0.55 + 0.22 * beam);
      const double noise = (grain(static_cast<unsigned>(x), static_cast<unsigned>(y), 51) - 0.5) / 255;
      const auto part = [&](double deep, double lit) {
        const double value = (deep * (1.35 - 0.55 * std::min(far, 1.5)) + lit * light) + noise;
        return static_cast<unsigned char>(std::clamp(std::lround(value * 255), 0L, 255L));
      };
      Canvas::put(row, x, part(game.deep.r, game.light.r), part(game.deep.g, game.light.g),
                  part(game.deep.b, game.light.b), 255);
    }
  }
  canvas->changed();
  // Lamps out of focus, larger and fainter towards the edges.
  const double unit = width / 1920.0;
  for (unsigned i = 0; i < 46; ++i) {
    const double x = width * grain(i, 1, 52), y = height * grain(i, 2, 52);
    const double away = std::abs(2 * x / width - 1);
    const double radius = unit * (14 + 60 * away * grain(i, 3, 52) + 14 * grain(i, 4, 52));
    const Colour colour = mix(mix(game.light, {1.0, 0.78, 0.36}, grain(i, 5, 52)), {1, 1, 1}, 0.15);
    const double strength = 0.05 + 0.09 * grain(i, 6, 52);
    setRadial(canvas->cr(), x, y, radius,
              {{0, colour.withAlpha(strength)},
               {0.80, colour.withAlpha(strength * 0.8)},
               {0.92, colour.withAlpha(strength * 1.5)},
               {1, colour.withAlpha(0)}});
    cairo_arc(canvas->cr(), x, y, radius, 0, 2 * M_PI);
    cairo_fill(canvas->cr());
  }
  return canvas;
}

namespace {
// Largest size up to `size` at which the text is at most `width` wide.
double fittingSize(const std::string& text, double size, double spacing, double width) {
  const double natural = Typeface(fontfile::kSerifBold, size).textWidth(text, spacing);
  return natural <= width ? size : size * width / natural;
}
}  // namespace

std::unique_ptr<Canvas> drawEmblem(const Game& game, double scale) {
  const double s = scale;
  auto made = std::make_unique<Canvas>(static_cast<int>(500 * s), static_cast<int>(560 * s));
  const Canvas& canvas = *made;
  cairo_t* cr = canvas.cr();
  const double cx = 250 * s, cy = 208 * s;
  const auto disc = [&](double radius) {
    cairo_new_sub_path(cr);
    cairo_arc(cr, cx, cy, radius * s, 0, 2 * M_PI);
  };
  addGlow(canvas, cx, cy, 246 * s, mix(game.light, {1, 0.85, 0.5}, 0.35).withAlpha(0.55));
  disc(168);
  cairo_pattern_t* glass = cairo_pattern_create_radial(cx, cy - 60 * s, 10 * s, cx, cy, 170 * s);
  const Colour lit = mix(game.light, {1, 1, 1}, 0.08);
  cairo_pattern_add_color_stop_rgb(glass, 0, lit.r, lit.g, lit.b);
  cairo_pattern_add_color_stop_rgb(glass, 0.55, game.light.r * 0.42, game.light.g * 0.42, game.light.b * 0.42);
  cairo_pattern_add_color_stop_rgb(glass, 1, game.deep.r, game.deep.g, game.deep.b);
  cairo_set_source(cr, glass);
  cairo_fill(cr);
  cairo_pattern_destroy(glass);
  // Fine rays behind the symbol.
  cairo_save(cr);
  disc(160);
  cairo_clip(cr);
  for (int i = 0; i < 24; ++i) {
    cairo_move_to(cr, cx, cy);
    cairo_arc(cr, cx, cy, 165 * s, 2 * M_PI * i / 24, 2 * M_PI * (i + 0.5) / 24);
    cairo_close_path(cr);
    setRadial(cr, cx, cy, 165 * s, {{0, {1, 1, 0.9, 0.16}}, {1, {1, 1, 0.9, 0.01}}});
    cairo_fill(cr);
  }
  cairo_restore(cr);
  const auto ring = [&](cairo_t* c) {
    cairo_set_fill_rule(c, CAIRO_FILL_RULE_EVEN_ODD);
    for (const double radius : {184.0, 156.0}) {
      cairo_new_sub_path(c);
      cairo_arc(c, cx, cy, radius * s, 0, 2 * M_PI);
    }
  };
  drawRelief(canvas, goldMetal(), {9 * s, 0.0, cy - 184 * s, cy + 184 * s}, ring);
  for (int i = 0; i < 32; ++i) {
    const double angle = 2 * M_PI * i / 32;
    const double x = cx + 170 * s * std::sin(angle), y = cy - 170 * s * std::cos(angle);
    addGlow(canvas, x, y, 10 * s, {1.0, 0.90, 0.60, 0.9});
    addGlow(canvas, x, y, 5 * s, {1, 1, 1, 0.9});
  }
  game.main(canvas, cx, cy, 118 * s);
  // The title below, over the ring's lower edge.
  const double baselines[] = {456, 530};
  for (int line = 0; line < 2; ++line) {
    const std::string& text = game.title[line];
    const double spacing = 3 * s;
    const Typeface face(fontfile::kSerifBold, fittingSize(text, (line == 0 ? 78 : 84) * s, spacing, 452 * s));
    const double width = face.textWidth(text, spacing);
    goldText(canvas, face, text, cx - width / 2, baselines[line] * s, spacing, 4.2 * s, static_cast<int>(9 * s));
  }
  return made;
}

namespace {
// The program shows the overlay in 810 by 900 pixels and repeats it from frame 30 on.
constexpr int kOverlayWidth = 810, kOverlayHeight = 900, kLoopStart = 30;
constexpr int kArrival = 20;  // frames of the glint that comes down before the emblem opens
constexpr int kSweep = 10, kRest = 14;

// The emblem with a band of light across it; `t` from 0 to 1 takes the band from left to right.
std::unique_ptr<Canvas> litEmblem(const Canvas& emblem, double t) {
  auto lit = std::make_unique<Canvas>(emblem.width(), emblem.height());
  lit->paint(emblem, 0, 0, 1);
  const double w = emblem.width(), middle = -0.25 * w + 1.5 * w * t;
  cairo_set_operator(lit->cr(), CAIRO_OPERATOR_ATOP);
  setGradient(lit->cr(), middle - 70, 0, middle + 70, 46,
              {{0, {1, 1, 0.9, 0}}, {0.5, {1, 1, 0.92, 0.62}}, {1, {1, 1, 0.9, 0}}});
  cairo_paint(lit->cr());
  return lit;
}
}  // namespace

void drawOverlay(const Game& game, const Output& output) {
  AtlasPack atlas("BLEND");
  const std::unique_ptr<Canvas> emblem = drawEmblem(game, 1);
  const int left = (kOverlayWidth - emblem->width()) / 2, top = (kOverlayHeight - emblem->height()) / 2 - 30;
  const double cx = left + 250, cy = top + 208;
  int number = 0;
  const auto name = [&number] { return "overlay_" + std::to_string(number++); };
  // A glint falls on a curve to where the emblem will stand.
  for (int frame = 0; frame < kArrival; ++frame) {
    const double t = (frame + 0.5) / kArrival, back = 1 - t;
    const double x = cx + 210 * std::sin(5 * back) * back, y = cy - 330 * back * back;
    constexpr int box = 130;
    const Canvas canvas(box, box);
    addGlint(canvas, box / 2.0, box / 2.0, 22 + 40 * t, 4 * t, Colour{1.0, 0.88, 0.58}.withAlpha(0.35 + 0.65 * t));
    atlas.addPart(name(), canvas, static_cast<int>(x) - box / 2, static_cast<int>(y) - box / 2, kOverlayWidth,
                  kOverlayHeight);
  }
  for (int frame = kArrival; frame < kLoopStart; ++frame) {
    const double t = (frame - kArrival + 1.0) / (kLoopStart - kArrival);
    const double grow = 1 - std::pow(1 - t, 3.0);
    const int w = static_cast<int>(emblem->width() * grow), h = static_cast<int>(emblem->height() * grow);
    const Canvas canvas(w, h);
    cairo_scale(canvas.cr(), grow, grow);
    canvas.paint(*emblem, 0, 0, std::min(1.0, 0.3 + t));
    atlas.addPart(name(), canvas, static_cast<int>(cx - 250 * grow), static_cast<int>(cy - 208 * grow),
                  kOverlayWidth, kOverlayHeight);
  }
  for (int frame = 0; frame < kSweep; ++frame)
    atlas.addPart(name(), *litEmblem(*emblem, (frame + 0.5) / kSweep), left, top, kOverlayWidth, kOverlayHeight);
  for (int frame = 0; frame < kRest; ++frame)
    atlas.addPart(name(), *emblem, left, top, kOverlayWidth, kOverlayHeight);
  atlas.save(output.path("Games/" + game.name + "/Icons/overlay"));
}
