#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace systest {

struct Colour {
  int red, green, blue;
};

struct Box {
  int x, y, width, height;
};

// Within so much on each channel; the two renderers differ by up to 5.
bool alike(Colour one, Colour other, int tolerance = 8);

// What the screen showed at one moment. Pixels outside are black.
class Picture {
 public:
  Picture() = default;
  Picture(int width, int height, std::vector<uint32_t> pixels)
    : mWidth(width), mHeight(height), mPixels(std::move(pixels)) {}

  int width() const { return mWidth; }
  int height() const { return mHeight; }
  Colour at(int x, int y) const;

  // Pixels of about this colour inside the box.
  int count(Box box, Colour colour) const;

  bool operator==(const Picture&) const = default;

  // Writes a PNG file, for a person who looks into a failure.
  bool save(const std::string& file) const;

  // Reads one. False where there is none; the picture is as it was then.
  bool load(const std::string& file);

 private:
  int mWidth = 0, mHeight = 0;
  std::vector<uint32_t> mPixels;  // 0x00RRGGBB, row by row
};

// Writes a PNG of one colour with this alpha.
bool writePicture(const std::string& file, int width, int height, Colour colour, int alpha);

}  // namespace systest
