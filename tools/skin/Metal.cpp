#include "Metal.h"

#include <algorithm>
#include <cmath>
#include <limits>

const Metal& goldMetal() {
  static const Metal metal = {"GOLD",
                              {{0.0, {0.20, 0.09, 0.01}},
                               {0.30, {0.55, 0.32, 0.06}},
                               {0.48, {0.80, 0.55, 0.16}},
                               {0.62, {0.96, 0.76, 0.34}},
                               {0.82, {1.00, 0.93, 0.66}},
                               {1.0, {1.00, 0.99, 0.90}}},
                              {{0.0, {1.00, 0.95, 0.70}},
                               {0.22, {0.97, 0.80, 0.38}},
                               {0.47, {0.80, 0.55, 0.14}},
                               {0.53, {0.56, 0.34, 0.06}},
                               {0.75, {0.85, 0.62, 0.20}},
                               {1.0, {1.00, 0.88, 0.52}}},
                              {0.145, 0.085, 0.020},
                              {1.00, 0.74, 0.22}};
  return metal;
}

const Metal& silverMetal() {
  static const Metal metal = {"SILVER",
                              {{0.0, {0.09, 0.10, 0.13}},
                               {0.30, {0.33, 0.36, 0.41}},
                               {0.48, {0.58, 0.61, 0.66}},
                               {0.62, {0.78, 0.81, 0.86}},
                               {0.82, {0.94, 0.96, 0.99}},
                               {1.0, {1.00, 1.00, 1.00}}},
                              {{0.0, {0.97, 0.98, 1.00}},
                               {0.22, {0.80, 0.83, 0.88}},
                               {0.47, {0.55, 0.58, 0.64}},
                               {0.53, {0.33, 0.36, 0.42}},
                               {0.75, {0.64, 0.67, 0.73}},
                               {1.0, {0.90, 0.93, 0.98}}},
                              {0.075, 0.085, 0.115},
                              {0.72, 0.84, 1.00}};
  return metal;
}

const Metal& bronzeMetal() {
  static const Metal metal = {"BRONZE",
                              {{0.0, {0.13, 0.04, 0.02}},
                               {0.30, {0.40, 0.17, 0.07}},
                               {0.48, {0.64, 0.32, 0.15}},
                               {0.62, {0.83, 0.49, 0.27}},
                               {0.82, {0.97, 0.74, 0.52}},
                               {1.0, {1.00, 0.91, 0.78}}},
                              {{0.0, {0.98, 0.79, 0.60}},
                               {0.22, {0.84, 0.53, 0.31}},
                               {0.47, {0.60, 0.30, 0.14}},
                               {0.53, {0.39, 0.17, 0.07}},
                               {0.75, {0.68, 0.37, 0.19}},
                               {1.0, {0.93, 0.64, 0.42}}},
                              {0.130, 0.052, 0.026},
                              {1.00, 0.50, 0.22}};
  return metal;
}

const Metal& emeraldMetal() {
  static const Metal metal = {"EMERALD",
                              {{0.0, {0.00, 0.09, 0.05}},
                               {0.30, {0.01, 0.28, 0.16}},
                               {0.48, {0.05, 0.50, 0.30}},
                               {0.62, {0.17, 0.72, 0.46}},
                               {0.82, {0.60, 0.95, 0.76}},
                               {1.0, {0.90, 1.00, 0.95}}},
                              {{0.0, {0.68, 0.98, 0.82}},
                               {0.22, {0.26, 0.79, 0.53}},
                               {0.47, {0.05, 0.49, 0.29}},
                               {0.53, {0.01, 0.29, 0.16}},
                               {0.75, {0.09, 0.58, 0.36}},
                               {1.0, {0.48, 0.90, 0.68}}},
                              {0.012, 0.105, 0.065},
                              {0.20, 1.00, 0.60}};
  return metal;
}

namespace {
constexpr int kScale = 3;

// Squared distance transform of one line of samples (lower envelope of parabolas), in place.
void distanceLine(std::vector<float>& f, std::vector<float>& out, std::vector<int>& v, std::vector<float>& z,
                  int n) {
  int k = 0;
  v[0] = 0;
  z[0] = -std::numeric_limits<float>::max();
  z[1] = std::numeric_limits<float>::max();
  const auto at = [](int i) { return static_cast<size_t>(i); };
  for (int q = 1; q < n; ++q) {
    float s;
    do {
      const int p = v[at(k)];
      s = ((f[at(q)] + static_cast<float>(q) * static_cast<float>(q)) -
           (f[at(p)] + static_cast<float>(p) * static_cast<float>(p))) /
          static_cast<float>(2 * q - 2 * p);
    } while (s <= z[at(k)] && --k >= 0);
    ++k;
    v[at(k)] = q;
    z[at(k)] = s;
    z[at(k) + 1] = std::numeric_limits<float>::max();
  }
  k = 0;
  for (int q = 0; q < n; ++q) {
    while (z[at(k) + 1] < static_cast<float>(q)) ++k;
    const auto d = static_cast<float>(q - v[at(k)]);
    out[at(q)] = d * d + f[at(v[at(k)])];
  }
}

// Distance of every sample inside the mask to the mask's edge, in samples; 0 outside.
std::vector<float> insideDistance(const std::vector<float>& mask, int w, int h) {
  constexpr float far = 1e8F;
  std::vector<float> field(mask.size());
  for (size_t i = 0; i < mask.size(); ++i) field[i] = mask[i] > 0.5F ? far : 0.0F;
  const auto longest = static_cast<size_t>(std::max(w, h));
  std::vector<float> line(longest), out(longest), z(longest + 1);
  std::vector<int> v(longest);
  for (int x = 0; x < w; ++x) {
    for (int y = 0; y < h; ++y)
      line[static_cast<size_t>(y)] =
        field[static_cast<size_t>(y) * static_cast<size_t>(w) + static_cast<size_t>(x)];
    distanceLine(line, out, v, z, h);
    for (int y = 0; y < h; ++y)
      field[static_cast<size_t>(y) * static_cast<size_t>(w) + static_cast<size_t>(x)] = out[static_cast<size_t>(y)];
  }
  for (int y = 0; y < h; ++y) {
    float* rowStart = field.data() + static_cast<size_t>(y) * static_cast<size_t>(w);
    std::copy(rowStart, rowStart + w, line.begin());
    distanceLine(line, out, v, z, w);
    for (int x = 0; x < w; ++x) rowStart[x] = std::sqrt(out[static_cast<size_t>(x)]);
  }
  return field;
}

// Softens a field with one small box filter in both directions, so that ridges do not look cut with a knife.
void soften(std::vector<float>& field, int w, int h, int radius) {
  std::vector<float> copy(field.size());
  const auto pass = [&](const std::vector<float>& in, std::vector<float>& result, bool across) {
    for (int y = 0; y < h; ++y)
      for (int x = 0; x < w; ++x) {
        float sum = 0;
        for (int d = -radius; d <= radius; ++d) {
          const int sx = across ? std::clamp(x + d, 0, w - 1) : x;
          const int sy = across ? y : std::clamp(y + d, 0, h - 1);
          sum += in[static_cast<size_t>(sy) * static_cast<size_t>(w) + static_cast<size_t>(sx)];
        }
        result[static_cast<size_t>(y) * static_cast<size_t>(w) + static_cast<size_t>(x)] =
          sum / static_cast<float>(2 * radius + 1);
      }
  };
  pass(field, copy, true);
  pass(copy, field, false);
}

// Brush marks: grain drawn out along x.
double brushMark(int x, int y) {
  double sum = 0;
  for (unsigned octave = 0; octave < 3; ++octave) {
    const unsigned length = 24U << octave;
    const auto cell = static_cast<unsigned>(x) / length;
    const double t = (static_cast<unsigned>(x) % length) / static_cast<double>(length);
    const auto line = static_cast<unsigned>(y);
    sum += grain(cell, line, octave) * (1 - t) + grain(cell + 1, line, octave) * t;
  }
  return sum / 3.0 - 0.5;
}
}  // namespace

void drawRelief(const Canvas& target, const Metal& metal, const Relief& relief,
                const std::function<void(cairo_t*)>& path) {
  const int w = target.width() * kScale;
  const int h = target.height() * kScale;
  Canvas shape(w, h);
  cairo_scale(shape.cr(), kScale, kScale);
  path(shape.cr());
  shape.setColour({1, 1, 1});
  cairo_fill(shape.cr());
  const auto index = [w](int x, int y) {
    return static_cast<size_t>(y) * static_cast<size_t>(w) + static_cast<size_t>(x);
  };
  std::vector<float> mask(static_cast<size_t>(w) * static_cast<size_t>(h));
  for (int y = 0; y < h; ++y) {
    const unsigned char* data = shape.row(y);
    for (int x = 0; x < w; ++x) mask[index(x, y)] = static_cast<float>(data[4 * x + 3]) / 255.0F;
  }
  const double bevel = relief.bevel * kScale;
  std::vector<float> height = insideDistance(mask, w, h);
  for (float& value : height) value = static_cast<float>(bevel * std::sin(std::min(value / bevel, 1.0) * M_PI / 2));
  soften(height, w, h, 2);

  Canvas result(target.width(), target.height());
  for (int y = 0; y < result.height(); ++y) {
    unsigned char* out = result.row(y);
    for (int x = 0; x < result.width(); ++x) {
      double sum[4] = {0, 0, 0, 0};
      for (int sub = 0; sub < kScale * kScale; ++sub) {
        const int sx = x * kScale + sub % kScale;
        const int sy = y * kScale + sub / kScale;
        const double cover = mask[index(sx, sy)];
        if (cover <= 0) continue;
        const double gx = height[index(std::min(sx + 1, w - 1), sy)] - height[index(std::max(sx - 1, 0), sy)];
        const double gy = height[index(sx, std::min(sy + 1, h - 1))] - height[index(sx, std::max(sy - 1, 0))];
        const double slope = std::min(1.0, std::hypot(gx, gy) / 2);
        const double up = 0.5 + (gy * 0.85 + gx * 0.45) / 4;
        const double along = (static_cast<double>(sy) / kScale - relief.top) / (relief.bottom - relief.top);
        Colour face = sample(metal.face, along);
        const double mark = 1 + relief.brushed * brushMark(sx / kScale, sy / kScale);
        face = {face.r * mark, face.g * mark, face.b * mark};
        const Colour colour = mix(face, sample(metal.mirror, up), std::pow(slope, 0.7));
        sum[0] += std::clamp(colour.b, 0.0, 1.0) * cover;
        sum[1] += std::clamp(colour.g, 0.0, 1.0) * cover;
        sum[2] += std::clamp(colour.r, 0.0, 1.0) * cover;
        sum[3] += cover;
      }
      for (int c = 0; c < 4; ++c)
        out[4 * x + c] = static_cast<unsigned char>(std::lround(sum[c] * 255 / (kScale * kScale)));
    }
  }
  result.changed();
  target.paint(result, 0, 0, 1);
}

void drawHalo(const Canvas& target, const Colour& colour, double spread, int radius,
              const std::function<void(cairo_t*)>& path) {
  Canvas halo(target.width(), target.height());
  path(halo.cr());
  halo.setColour(colour.withAlpha(1));
  cairo_fill_preserve(halo.cr());
  cairo_set_line_join(halo.cr(), CAIRO_LINE_JOIN_ROUND);
  cairo_set_line_width(halo.cr(), 2 * spread);
  cairo_stroke(halo.cr());
  halo.blur(radius);
  target.paint(halo, 0, 0, colour.a);
}
