// The animations of the levels: the idle sparkle, the ring of lights around a winning level, the fireworks behind
// it.
#include <algorithm>
#include <cmath>
#include <memory>

#include "AtlasPack.h"
#include "Family.h"
#include "Light.h"
#include "Metal.h"
#include "Plate.h"

namespace {
struct Point {
  double x, y;
};

// Points at equal distances along the plate's edge, `inset` pixels inside it, clockwise.
std::vector<Point> alongPlate(double inset, int count) {
  const Canvas probe(1, 1);
  cairo_set_tolerance(probe.cr(), 0.05);
  plate(probe.cr(), inset);
  cairo_path_t* flat = cairo_copy_path_flat(probe.cr());
  std::vector<Point> corners;
  for (int i = 0; i < flat->num_data; i += flat->data[i].header.length) {
    const cairo_path_data_t& part = flat->data[i];
    if (part.header.type == CAIRO_PATH_MOVE_TO && !corners.empty()) break;
    if (part.header.type != CAIRO_PATH_CLOSE_PATH)
      corners.push_back({flat->data[i + 1].point.x, flat->data[i + 1].point.y});
  }
  cairo_path_destroy(flat);
  corners.push_back(corners.front());
  const auto length = [&corners](size_t i) {
    return std::hypot(corners[i + 1].x - corners[i].x, corners[i + 1].y - corners[i].y);
  };
  double around = 0;
  for (size_t i = 0; i + 1 < corners.size(); ++i) around += length(i);
  std::vector<Point> points;
  double passed = 0;
  size_t i = 0;
  for (int n = 0; n < count; ++n) {
    const double at = around * n / count;
    while (i + 2 < corners.size() && passed + length(i) < at) passed += length(i++);
    const double t = (at - passed) / length(i);
    points.push_back(
      {corners[i].x + (corners[i + 1].x - corners[i].x) * t, corners[i].y + (corners[i + 1].y - corners[i].y) * t});
  }
  return points;
}

// Around a winning level 1600 by 600 pixels are drawn, the plate at (346, 176) in them.
constexpr int kWinWidth = 1600, kWinHeight = 600, kWinX = 346, kWinY = 176;
constexpr int kMargin = 26;  // how far the light reaches over the plate's picture
constexpr int kBulbs = 69;   // a multiple of the steps
constexpr int kSteps = 3;    // every third bulb is lit, and the lit ones move on
constexpr int kFramesOfStep = 2;

// One step of the lights: a glow all around, bulbs on the bezel, glints at three of them.
void drawWinStep(const Canvas& canvas, const Metal& metal, int step) {
  cairo_t* cr = canvas.cr();
  cairo_translate(cr, kMargin, kMargin);
  const Canvas halo(canvas.width(), canvas.height());
  cairo_translate(halo.cr(), kMargin, kMargin);
  plate(halo.cr(), 4);
  cairo_set_line_width(halo.cr(), 13);
  halo.setColour(metal.glow.withAlpha(0.9));
  cairo_stroke(halo.cr());
  halo.blur(17);
  canvas.paintLight(halo, -kMargin, -kMargin, 0.9);
  const Colour white = mix(metal.glow, {1, 1, 1}, 0.82);
  const std::vector<Point> bulbs = alongPlate(5.5, kBulbs);
  for (int i = 0; i < kBulbs; ++i) {
    const auto [x, y] = bulbs[static_cast<size_t>(i)];
    const int phase = (i - step + kBulbs) % kSteps;
    const double strength = phase == 0 ? 1.0 : phase == 1 ? 0.32 : 0.12;
    addGlow(canvas, x, y, 21, metal.glow.withAlpha(0.85 * strength));
    addGlow(canvas, x, y, 9, white.withAlpha(strength));
    addGlow(canvas, x, y, 5, white.withAlpha(strength));
    if (phase == 0 && i % 9 == (step * 4) % 9) addGlint(canvas, x, y, 32, 0, metal.glow);
  }
}

void drawWin(const Output& output, const Metal& metal, const std::string& name) {
  AtlasPack atlas("ADD");
  for (int step = 0; step < kSteps; ++step) {
    const Canvas canvas(kPlateWidth + 2 * kMargin, kPlateHeight + 2 * kMargin);
    drawWinStep(canvas, metal, step);
    for (int frame = 0; frame < kFramesOfStep; ++frame)
      atlas.addPart(name + "_" + std::to_string(step) + "_" + std::to_string(frame), canvas, kWinX - kMargin,
                    kWinY - kMargin, kWinWidth, kWinHeight);
  }
  atlas.save(output.skinPath("Animation/" + name));
}

constexpr int kBurst = 400;  // side of the square in which one firework opens
constexpr int kBurstFrames = 10;

// A firework at the time t from 0 to 1: sparks that fly apart, slow down, fall and die.
void drawBurst(const Canvas& canvas, double t) {
  constexpr double middle = kBurst / 2.0;
  constexpr int sparks = 96;
  const auto place = [](double angle, double speed, double time) {
    const double reach = 172 * speed * (1 - std::exp(-3.2 * time)) / (1 - std::exp(-3.2));
    return Point{middle + reach * std::cos(angle), middle - 14 + reach * std::sin(angle) + 42 * time * time};
  };
  const double fade = std::clamp(1.5 * (1 - t * t * t), 0.0, 1.0);
  addGlow(canvas, middle, middle - 14, 40 + 90 * std::min(1.0, t * 3),
          Colour{1.0, 0.82, 0.45}.withAlpha(0.9 * std::max(0.0, 1 - 2.2 * t)));
  for (unsigned i = 0; i < sparks; ++i) {
    const double angle = 2 * M_PI * (i + 0.8 * grain(i, 1, 21)) / sparks;
    const double speed = 0.12 + 0.88 * std::sqrt(grain(i, 2, 21));
    const Point here = place(angle, speed, t);
    const Point before = place(angle, speed, std::max(0.0, t - 0.05 - 0.35 * t));
    const double flicker = 0.55 + 0.45 * grain(i, static_cast<unsigned>(t * 40), 22);
    const Colour hot = mix({1.0, 0.95, 0.72}, {1.0, 0.52, 0.10}, t * 1.1 + 0.25 * grain(i, 3, 21));
    addStreak(canvas, before.x, before.y, here.x, here.y, 4.2, hot.withAlpha(0.9 * fade));
    addGlow(canvas, here.x, here.y, 8, hot.withAlpha(fade * flicker));
    if (i % 5 == 0) addGlint(canvas, here.x, here.y, 15 + 9 * flicker, 0.3 * i, hot.withAlpha(fade * flicker));
  }
}

// Fireworks one after the other around the middle of the screen, where the winning level stands.
void drawParticles(const Output& output) {
  constexpr Point places[] = {{330, 250}, {1540, 800}, {1480, 210}, {400, 850}};
  std::vector<std::unique_ptr<Canvas>> bursts;
  for (int frame = 0; frame < kBurstFrames; ++frame) {
    bursts.push_back(std::make_unique<Canvas>(kBurst, kBurst));
    drawBurst(*bursts.back(), (frame + 0.6) / kBurstFrames);
  }
  AtlasPack atlas("ADD");
  int number = 0;
  for (const Point& place : places)
    for (const auto& burst : bursts)
      atlas.addPart("GoldPrtclWin_" + std::to_string(number++), *burst, static_cast<int>(place.x) - kBurst / 2,
                    static_cast<int>(place.y) - kBurst / 2, 1920, 1080);
  atlas.save(output.skinPath("Animation/GoldPrtclWin"));
}

// The sparkle is drawn in 1000 by 380 pixels, the plate at (46, 86) in them.
constexpr int kIdleWidth = 1000, kIdleHeight = 380, kIdleX = 46, kIdleY = 86;

// A light runs along the upper bezel towards the side of the currency; where it arrives a glint flares up and
// dies.
void drawIdle(const Output& output, const std::string& name, bool toTheRight) {
  constexpr int run = 12, flare = 10, box = 170;
  const Colour light = {1.0, 0.90, 0.66};
  AtlasPack atlas("ADD");
  const double from = kIdleX + (toTheRight ? 60 : 848), to = kIdleX + (toTheRight ? 868 : 40);
  constexpr double edge = kIdleY + 15.5;
  for (int frame = 0; frame < run; ++frame) {
    const double t = (frame + 0.5) / run;
    const double x = from + (to - from) * t * t * (3 - 2 * t);
    const double tail = x + (toTheRight ? -1 : 1) * (30 + 110 * std::sin(M_PI * t));
    const int left = static_cast<int>(std::min(x, tail)) - 26;
    const Canvas canvas(static_cast<int>(std::abs(tail - x)) + 52, 52);
    cairo_translate(canvas.cr(), -left, 26 - edge);
    addStreak(canvas, tail, edge, x, edge, 7, light.withAlpha(0.85));
    addGlow(canvas, x, edge, 24, light.withAlpha(0.8));
    addGlint(canvas, x, edge, 25, 0, light);
    atlas.addPart(name + "_run_" + std::to_string(frame), canvas, left, static_cast<int>(edge - 26), kIdleWidth,
                  kIdleHeight);
  }
  const int left = static_cast<int>(to) - box / 2, top = static_cast<int>(edge) + 6 - box / 2;
  for (int frame = 0; frame < flare; ++frame) {
    const double t = (frame + 0.5) / flare;
    const double strength = std::pow(std::sin(M_PI * std::pow(t, 0.6)), 1.4);
    const Canvas canvas(box, box);
    addGlint(canvas, box / 2.0, box / 2.0, 18 + 64 * strength, 0.5 * t, light.withAlpha(strength));
    atlas.addPart(name + "_flare_" + std::to_string(frame), canvas, left, top, kIdleWidth, kIdleHeight);
  }
  atlas.save(output.skinPath("Animation/" + name));
}
}  // namespace

void drawAnimations(const Output& output) {
  drawWin(output, goldMetal(), "GoldPnlWin");
  drawWin(output, silverMetal(), "SilverPnlWin");
  drawWin(output, bronzeMetal(), "BronzePnlWin");
  drawWin(output, emeraldMetal(), "EmeraldPnlWin");
  drawParticles(output);
  drawIdle(output, "IdleRight", true);
  drawIdle(output, "IdleLeft", false);
}
