#pragma once

#include <cairo.h>

#include <string>
#include <vector>

// A colour with straight alpha, each part 0 to 1.
struct Colour {
  double r = 0, g = 0, b = 0, a = 1;

  Colour withAlpha(double alpha) const { return {r, g, b, alpha}; }
};

// The colour between `from` (t = 0) and `to` (t = 1); t is clamped.
Colour mix(const Colour& from, const Colour& to, double t);

// A picture under work: a cairo image surface with premultiplied alpha and one drawing context on it.
//
// One thread. Units are pixels of the finished picture. The object owns both cairo handles; what is drawn is the
// same on every run, because hinting and subpixel order are off and nothing reads a clock. A surface that cannot
// be made throws `std::runtime_error`.
class Canvas {
 public:
  Canvas(int width, int height);
  // Reads a PNG file; throws `std::runtime_error` with the path when that is none.
  explicit Canvas(const std::string& path);
  ~Canvas();
  Canvas(const Canvas&) = delete;
  Canvas& operator=(const Canvas&) = delete;

  int width() const { return mWidth; }
  int height() const { return mHeight; }
  cairo_t* cr() const { return mContext; }

  // First byte of row y, four bytes a pixel (blue, green, red, alpha, premultiplied). Call `changed()` after
  // writing.
  unsigned char* row(int y) const;
  // Sets one pixel, already premultiplied, of a row got from `row`.
  static void put(unsigned char* row, int x, unsigned char r, unsigned char g, unsigned char b, unsigned char a);
  void changed() const { cairo_surface_mark_dirty(mSurface); }

  void setColour(const Colour& colour) const;
  // Paints `other` with its top left corner at (x, y).
  void paint(const Canvas& other, double x, double y, double alpha) const;
  // As `paint`, but adds light instead of covering.
  void paintLight(const Canvas& other, double x, double y, double alpha) const;

  // Softens the whole picture with three box blurs that together look like a Gaussian of about this radius.
  void blur(int radius) const;

  // Writes an 8-bit RGBA PNG; throws `std::runtime_error` when the file cannot be written.
  void save(const std::string& path) const;
  // Writes a JPEG of quality 0 to 100 without the alpha, on black; throws as `save` does.
  void saveJpeg(const std::string& path, int quality) const;

 private:
  int mWidth;
  int mHeight;
  cairo_surface_t* mSurface;
  cairo_t* mContext;
};

// A vertical run of colours: positions 0 to 1 in rising order.
struct Stop {
  double at;
  Colour colour;
};
using Ramp = std::vector<Stop>;

Colour sample(const Ramp& ramp, double at);

// Sets a linear gradient from (x0, y0) to (x1, y1) as the source of `cr`.
void setGradient(cairo_t* cr, double x0, double y0, double x1, double y1, const Ramp& ramp);
// Sets a radial gradient around (x, y) as the source of `cr`.
void setRadial(cairo_t* cr, double x, double y, double radius, const Ramp& ramp);

// Appends a rectangle with round corners to the path.
void roundRect(cairo_t* cr, double x, double y, double w, double h, double radius);
// Appends a star with `points` spikes, the first one upwards.
void star(cairo_t* cr, double x, double y, double outer, double inner, int points);

// A value from 0 to 1 that depends on the three numbers alone: grain without a random generator.
double grain(unsigned x, unsigned y, unsigned seed);
