#include "tests/support/Golden.h"
#include "tests/support/TestPaths.h"

#include <SDL_image.h>
#include <cstdlib>
#include <filesystem>
#include <memory>

namespace fs = std::filesystem;

namespace golden {
namespace {

struct FreeSurface {
  void operator()(SDL_Surface* s) const { SDL_FreeSurface(s); }
};
using Surface = std::unique_ptr<SDL_Surface, FreeSurface>;

bool updating = false;

Surface toRgb(SDL_Surface* s) { return Surface(SDL_ConvertSurfaceFormat(s, SDL_PIXELFORMAT_RGB24, 0)); }

const Uint8* pixel(const Surface& s, int x, int y) {
  return static_cast<const Uint8*>(s->pixels) + y * s->pitch + x * 3;
}

}  // namespace

void setUpdate(bool update) { updating = update; }

std::string compare(SDL_Renderer* renderer, const std::string& name) {
  int w = 0, h = 0;
  if (SDL_Texture* target = SDL_GetRenderTarget(renderer))
    SDL_QueryTexture(target, nullptr, nullptr, &w, &h);
  else
    SDL_GetRendererOutputSize(renderer, &w, &h);
  Surface read(SDL_CreateRGBSurfaceWithFormat(0, w, h, 24, SDL_PIXELFORMAT_RGB24));
  if (SDL_RenderReadPixels(renderer, nullptr, SDL_PIXELFORMAT_RGB24, read->pixels, read->pitch))
    return std::string("the picture cannot be read: ") + SDL_GetError();
  return compare(read.get(), name);
}

std::string compare(SDL_Surface* picture, const std::string& name) {
  const fs::path reference = fs::path(testpaths::source) / "tests/golden" / (name + ".png");
  Surface actual = toRgb(picture);
  const char* environment = std::getenv("UPDATE_GOLDEN");
  if (updating || (environment && std::string(environment) == "1")) {
    fs::create_directories(reference.parent_path());
    return IMG_SavePNG(actual.get(), reference.c_str()) ? std::string("cannot write ") + reference.string() : "";
  }
  const fs::path left = fs::path(testpaths::binary) / "golden" / name;
  auto leave = [&](SDL_Surface* s, const char* suffix) {
    fs::create_directories(left.parent_path());
    IMG_SavePNG(s, (left.string() + suffix).c_str());
  };
  Surface loaded(IMG_Load(reference.c_str()));
  if (!loaded) {
    leave(actual.get(), ".actual.png");
    return "no golden picture " + reference.string();
  }
  Surface expected = toRgb(loaded.get());
  if (expected->w != actual->w || expected->h != actual->h) {
    leave(actual.get(), ".actual.png");
    return name + ": the size differs";
  }
  Surface difference(SDL_CreateRGBSurfaceWithFormat(0, actual->w, actual->h, 24, SDL_PIXELFORMAT_RGB24));
  long differing = 0;
  for (int y = 0; y < actual->h; ++y)
    for (int x = 0; x < actual->w; ++x) {
      const Uint8 *a = pixel(actual, x, y), *e = pixel(expected, x, y);
      auto* d = const_cast<Uint8*>(pixel(difference, x, y));
      const bool same = a[0] == e[0] && a[1] == e[1] && a[2] == e[2];
      differing += !same;
      d[0] = same ? e[0] / 4 : 255;
      d[1] = same ? e[1] / 4 : 0;
      d[2] = same ? e[2] / 4 : 0;
    }
  if (!differing) return "";
  leave(actual.get(), ".actual.png");
  leave(difference.get(), ".diff.png");
  return name + ": " + std::to_string(differing) + " pixels differ, see " + left.string() + ".*.png";
}

}  // namespace golden
