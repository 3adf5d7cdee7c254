#pragma once

#include <SDL.h>
#include <SDL_image.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>

// The demo skin as the build has drawn it, read as the program reads it.
namespace skinfiles {

inline const std::string kRoot = SKIN_ROOT "/";
inline const std::string kSkin = kRoot + "VESPERA/TOP_SKIN/";

inline std::string readFile(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

using Surface = std::unique_ptr<SDL_Surface, decltype(&SDL_FreeSurface)>;

// The picture with red, green, blue and alpha in this order; empty when it cannot be read.
inline Surface load(const std::string& path) {
  Surface read(IMG_Load(path.c_str()), SDL_FreeSurface);
  if (!read) return read;
  return {SDL_ConvertSurfaceFormat(read.get(), SDL_PIXELFORMAT_RGBA32, 0), SDL_FreeSurface};
}

inline SDL_Color pixel(const Surface& surface, int x, int y) {
  const Uint8* p = static_cast<const Uint8*>(surface->pixels) + y * surface->pitch + 4 * x;
  return {p[0], p[1], p[2], p[3]};
}

// Mean of the channels in a rectangle, what is clear counting as black.
inline double brightness(const Surface& surface, int x, int y, int w, int h) {
  double sum = 0;
  for (int py = y; py < y + h; ++py)
    for (int px = x; px < x + w; ++px) {
      const SDL_Color c = pixel(surface, px, py);
      sum += (c.r + c.g + c.b) / 3.0 * c.a / 255;
    }
  return sum / (w * h);
}

}  // namespace skinfiles
