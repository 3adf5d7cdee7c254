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

bool Picture::load(const std::string& file) {
  SDL_Surface* read = IMG_Load(file.c_str());
  SDL_Surface* surface = read ? SDL_ConvertSurfaceFormat(read, SDL_PIXELFORMAT_RGB888, 0) : nullptr;
  SDL_FreeSurface(read);
  if (!surface) return false;
  mWidth = surface->w;
  mHeight = surface->h;
  mPixels.clear();
  for (int y = 0; y < mHeight; ++y) {
    const auto* row = reinterpret_cast<const uint32_t*>(static_cast<const Uint8*>(surface->pixels) +
                                                        static_cast<ptrdiff_t>(y) * surface->pitch);
    for (int x = 0; x < mWidth; ++x) mPixels.push_back(row[x] & 0xffffff);
  }
  SDL_FreeSurface(surface);
  return true;
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
