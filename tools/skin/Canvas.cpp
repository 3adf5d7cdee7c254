#include "Canvas.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <stdexcept>

// Needs the size types that it does not declare itself.
#include <jpeglib.h>

Colour mix(const Colour& from, const Colour& to, double t) {
  t = std::clamp(t, 0.0, 1.0);
  return {from.r + (to.r - from.r) * t, from.g + (to.g - from.g) * t, from.b + (to.b - from.b) * t,
          from.a + (to.a - from.a) * t};
}

Canvas::Canvas(int width, int height)
  : mWidth(width),
    mHeight(height),
    mSurface(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, width, height)),
    mContext(cairo_create(mSurface)) {
  if (cairo_status(mContext) != CAIRO_STATUS_SUCCESS)
    throw std::runtime_error(cairo_status_to_string(cairo_status(mContext)));
  cairo_set_antialias(mContext, CAIRO_ANTIALIAS_BEST);
}

static cairo_surface_t* readPng(const std::string& path) {
  cairo_surface_t* read = cairo_image_surface_create_from_png(path.c_str());
  const cairo_status_t status = cairo_surface_status(read);
  if (status == CAIRO_STATUS_SUCCESS) return read;
  cairo_surface_destroy(read);
  // For a file of another form the library tells of its memory.
  throw std::runtime_error(path + (status == CAIRO_STATUS_FILE_NOT_FOUND ? ": there is no such file"
                                                                         : ": cannot be read as a PNG picture"));
}

Canvas::Canvas(const std::string& path) : mWidth(0), mHeight(0), mSurface(readPng(path)), mContext(nullptr) {
  mWidth = cairo_image_surface_get_width(mSurface);
  mHeight = cairo_image_surface_get_height(mSurface);
  // A file without alpha or with deeper colours comes in another form.
  cairo_surface_t* own = cairo_image_surface_create(CAIRO_FORMAT_ARGB32, mWidth, mHeight);
  mContext = cairo_create(own);
  cairo_set_source_surface(mContext, mSurface, 0, 0);
  cairo_paint(mContext);
  cairo_surface_destroy(mSurface);
  mSurface = own;
  cairo_set_antialias(mContext, CAIRO_ANTIALIAS_BEST);
}

Canvas::~Canvas() {
  cairo_destroy(mContext);
  cairo_surface_destroy(mSurface);
}

unsigned char* Canvas::row(int y) const {
  cairo_surface_flush(mSurface);
  return cairo_image_surface_get_data(mSurface) +
         static_cast<size_t>(y) * static_cast<size_t>(cairo_image_surface_get_stride(mSurface));
}

void Canvas::put(unsigned char* row, int x, unsigned char r, unsigned char g, unsigned char b, unsigned char a) {
  unsigned char* pixel = row + ptrdiff_t{4} * x;
  pixel[0] = b;
  pixel[1] = g;
  pixel[2] = r;
  pixel[3] = a;
}

void Canvas::setColour(const Colour& colour) const {
  cairo_set_source_rgba(mContext, colour.r, colour.g, colour.b, colour.a);
}

void Canvas::paint(const Canvas& other, double x, double y, double alpha) const {
  cairo_set_source_surface(mContext, other.mSurface, x, y);
  cairo_paint_with_alpha(mContext, alpha);
}

void Canvas::paintLight(const Canvas& other, double x, double y, double alpha) const {
  cairo_save(mContext);
  cairo_set_operator(mContext, CAIRO_OPERATOR_ADD);
  paint(other, x, y, alpha);
  cairo_restore(mContext);
}

namespace {
// One box blur of a line of `count` pixels that lie `step` bytes apart; `line` is a work buffer.
void blurLine(unsigned char* first, int count, ptrdiff_t step, int radius, std::vector<uint8_t>& line) {
  const int span = 2 * radius + 1;
  line.resize(static_cast<size_t>(count));
  for (int channel = 0; channel < 4; ++channel) {
    unsigned char* data = first + channel;
    int sum = 0;
    for (int i = 0; i < std::min(radius, count); ++i) sum += data[i * step];
    for (int i = 0; i < count; ++i) {
      if (i + radius < count) sum += data[(i + radius) * step];
      if (i - radius - 1 >= 0) sum -= data[(i - radius - 1) * step];
      line[static_cast<size_t>(i)] = static_cast<uint8_t>((sum + span / 2) / span);
    }
    for (int i = 0; i < count; ++i) data[i * step] = line[static_cast<size_t>(i)];
  }
}
}  // namespace

void Canvas::blur(int radius) const {
  if (radius < 1) return;
  std::vector<uint8_t> line;
  const int box = std::max(1, static_cast<int>(std::lround(radius * 0.6)));
  const ptrdiff_t stride = cairo_image_surface_get_stride(mSurface);
  unsigned char* data = row(0);
  for (int pass = 0; pass < 3; ++pass) {
    for (int y = 0; y < mHeight; ++y) blurLine(data + y * stride, mWidth, 4, box, line);
    for (int x = 0; x < mWidth; ++x) blurLine(data + ptrdiff_t{4} * x, mHeight, stride, box, line);
  }
  changed();
}

void Canvas::save(const std::string& path) const {
  cairo_surface_flush(mSurface);
  const cairo_status_t status = cairo_surface_write_to_png(mSurface, path.c_str());
  if (status != CAIRO_STATUS_SUCCESS) throw std::runtime_error(path + ": " + cairo_status_to_string(status));
}

void Canvas::saveJpeg(const std::string& path, int quality) const {
  FILE* file = std::fopen(path.c_str(), "wb");
  if (!file) throw std::runtime_error(path + ": cannot be written");
  jpeg_compress_struct work{};
  jpeg_error_mgr errors{};
  work.err = jpeg_std_error(&errors);
  jpeg_create_compress(&work);
  jpeg_stdio_dest(&work, file);
  work.image_width = static_cast<JDIMENSION>(mWidth);
  work.image_height = static_cast<JDIMENSION>(mHeight);
  work.input_components = 3;
  work.in_color_space = JCS_RGB;
  jpeg_set_defaults(&work);
  jpeg_set_quality(&work, quality, TRUE);
  jpeg_start_compress(&work, TRUE);
  std::vector<JSAMPLE> line(static_cast<size_t>(mWidth) * 3);
  for (int y = 0; y < mHeight; ++y) {
    const unsigned char* pixel = row(y);
    for (size_t x = 0; x < line.size(); x += 3, pixel += 4) {
      line[x] = pixel[2];
      line[x + 1] = pixel[1];
      line[x + 2] = pixel[0];
    }
    JSAMPROW rows[] = {line.data()};
    jpeg_write_scanlines(&work, rows, 1);
  }
  jpeg_finish_compress(&work);
  jpeg_destroy_compress(&work);
  if (std::fclose(file) != 0) throw std::runtime_error(path + ": cannot be written");
}

Colour sample(const Ramp& ramp, double at) {
  if (at <= ramp.front().at) return ramp.front().colour;
  for (size_t i = 1; i < ramp.size(); ++i)
    if (at <= ramp[i].at)
      return mix(ramp[i - 1].colour, ramp[i].colour, (at - ramp[i - 1].at) / (ramp[i].at - ramp[i - 1].at));
  return ramp.back().colour;
}

static void applyGradient(cairo_t* cr, cairo_pattern_t* pattern, const Ramp& ramp) {
  for (const Stop& stop : ramp)
    cairo_pattern_add_color_stop_rgba(pattern, stop.at, stop.colour.r, stop.colour.g, stop.colour.b, stop.colour.a);
  cairo_set_source(cr, pattern);
  cairo_pattern_destroy(pattern);
}

void setGradient(cairo_t* cr, double x0, double y0, double x1, double y1, const Ramp& ramp) {
  applyGradient(cr, cairo_pattern_create_linear(x0, y0, x1, y1), ramp);
}

void setRadial(cairo_t* cr, double x, double y, double radius, const Ramp& ramp) {
  applyGradient(cr, cairo_pattern_create_radial(x, y, 0, x, y, radius), ramp);
}

void roundRect(cairo_t* cr, double x, double y, double w, double h, double radius) {
  cairo_new_sub_path(cr);
  cairo_arc(cr, x + w - radius, y + radius, radius, -M_PI / 2, 0);
  cairo_arc(cr, x + w - radius, y + h - radius, radius, 0, M_PI / 2);
  cairo_arc(cr, x + radius, y + h - radius, radius, M_PI / 2, M_PI);
  cairo_arc(cr, x + radius, y + radius, radius, M_PI, 1.5 * M_PI);
  cairo_close_path(cr);
}

void star(cairo_t* cr, double x, double y, double outer, double inner, int points) {
  cairo_new_sub_path(cr);
  for (int i = 0; i < 2 * points; ++i) {
    const double radius = i % 2 == 0 ? outer : inner;
    const double angle = M_PI * i / points - M_PI / 2;
    cairo_line_to(cr, x + radius * std::cos(angle), y + radius * std::sin(angle));
  }
  cairo_close_path(cr);
}

double grain(unsigned x, unsigned y, unsigned seed) {
  uint32_t h = x * 0x8da6b343U + y * 0xd8163841U + seed * 0xcb1ab31fU;
  h ^= h >> 15;
  h *= 0x2c1b3c6dU;
  h ^= h >> 12;
  h *= 0x297a2d39U;
  h ^= h >> 15;
  return (h & 0xffffffU) / double(0x1000000);
}
