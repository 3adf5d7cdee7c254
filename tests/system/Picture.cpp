#include "tests/system/Picture.h"

#include <SDL_image.h>
#include <cstdlib>

namespace systest {

bool alike(Colour one, Colour other, int tolerance) {
  return std::abs(one.red - other.red) <= tolerance && std::abs(one.green - other.green) <= tolerance &&
         std::abs(one.blue - other.blue) <= tolerance;
}

Colour Picture::at(int x, int y) const {
  if (x < 0 || y < 0 || x >= mWidth || y >= mHeight) return {0, 0, 0};
  const uint32_t pixel = mPixels[static_cast<size_t>(y) * mWidth + x];
  return {static_cast<int>(pixel >> 16 & 255), static_cast<int>(pixel >> 8 & 255), static_cast<int>(pixel & 255)};
}

int Picture::count(Box box, Colour colour) const {
  int out = 0;
  for (int y = box.y; y < box.y + box.height; ++y)
    for (int x = box.x; x < box.x + box.width; ++x) out += alike(at(x, y), colour);
  return out;
}

bool Picture::save(const std::string& file) const {
  std::vector<uint32_t> copy = mPixels;
  SDL_Surface* surface =
    SDL_CreateRGBSurfaceWithFormatFrom(copy.data(), mWidth, mHeight, 32, mWidth * 4, SDL_PIXELFORMAT_RGB888);
  const bool good = surface && IMG_SavePNG(surface, file.c_str()) == 0;
  SDL_FreeSurface(surface);
  return good;
}

bool writePicture(const std::string& file, int width, int height, Colour colour, int alpha) {
  SDL_Surface* surface = SDL_CreateRGBSurfaceWithFormat(0, width, height, 32, SDL_PIXELFORMAT_ARGB8888);
  if (!surface) return false;
  const auto byte = [](int value) { return static_cast<Uint8>(value); };
  SDL_FillRect(surface, nullptr,
               SDL_MapRGBA(surface->format, byte(colour.red), byte(colour.green), byte(colour.blue), byte(alpha)));
  const bool good = IMG_SavePNG(surface, file.c_str()) == 0;
  SDL_FreeSurface(surface);
  return good;
}

}  // namespace systest
