#include "bench/Holdings.h"

#include <SDL.h>
#include <SDL_image.h>
#include <SDL_ttf.h>
#include <dlfcn.h>
#include <malloc.h>
#include <map>
#include <mutex>
#include <string>

namespace {

// Never destroyed: the libraries free pictures at the end.
std::mutex& lock = *new std::mutex;
auto& liveTextures = *new std::map<SDL_Texture*, size_t>;
auto& liveSurfaces = *new std::map<SDL_Surface*, size_t>;
auto& files = *new std::map<std::string, size_t>;
size_t fontBytes = 0;

template <class F>
F real(const char* name) {
  return reinterpret_cast<F>(dlsym(RTLD_NEXT, name));
}

#define REAL(name) static const auto sdl = real<decltype(&name)>(#name)

SDL_Texture* held(SDL_Texture* texture) {
  Uint32 format = 0;
  int w = 0, h = 0;
  if (!texture || SDL_QueryTexture(texture, &format, nullptr, &w, &h) != 0) return texture;
  const std::lock_guard guard(lock);
  liveTextures[texture] = static_cast<size_t>(w) * static_cast<size_t>(h) * SDL_BYTESPERPIXEL(format);
  return texture;
}

SDL_Surface* held(SDL_Surface* surface) {
  if (!surface) return surface;
  const std::lock_guard guard(lock);
  liveSurfaces[surface] = static_cast<size_t>(surface->h) * static_cast<size_t>(surface->pitch);
  return surface;
}

template <class Key>
holdings::Holding sum(const std::map<Key, size_t>& living) {
  const std::lock_guard guard(lock);
  holdings::Holding all{0, living.size()};
  for (const auto& [key, bytes] : living) all.bytes += bytes;
  return all;
}

size_t heapInUse() {
  const auto info = mallinfo2();
  return info.uordblks + info.hblkhd;
}

}  // namespace

namespace holdings {

Holding textures() { return sum(liveTextures); }
Holding surfaces() { return sum(liveSurfaces); }
size_t fonts() {
  const std::lock_guard guard(lock);
  return fontBytes;
}
size_t decodedOnce() { return sum(files).bytes; }

}  // namespace holdings

extern "C" {

SDL_Texture* SDL_CreateTexture(SDL_Renderer* renderer, Uint32 format, int access, int w, int h) {
  REAL(SDL_CreateTexture);
  return held(sdl(renderer, format, access, w, h));
}

SDL_Texture* SDL_CreateTextureFromSurface(SDL_Renderer* renderer, SDL_Surface* surface) {
  REAL(SDL_CreateTextureFromSurface);
  return held(sdl(renderer, surface));
}

void SDL_DestroyTexture(SDL_Texture* texture) {
  REAL(SDL_DestroyTexture);
  {
    const std::lock_guard guard(lock);
    liveTextures.erase(texture);
  }
  sdl(texture);
}

SDL_Surface* SDL_CreateRGBSurface(Uint32 flags, int width, int height, int depth, Uint32 Rmask, Uint32 Gmask,
                                  Uint32 Bmask, Uint32 Amask) {
  REAL(SDL_CreateRGBSurface);
  return held(sdl(flags, width, height, depth, Rmask, Gmask, Bmask, Amask));
}

SDL_Surface* SDL_CreateRGBSurfaceWithFormat(Uint32 flags, int width, int height, int depth, Uint32 format) {
  REAL(SDL_CreateRGBSurfaceWithFormat);
  return held(sdl(flags, width, height, depth, format));
}

SDL_Surface* SDL_ConvertSurfaceFormat(SDL_Surface* surface, Uint32 format, Uint32 flags) {
  REAL(SDL_ConvertSurfaceFormat);
  return held(sdl(surface, format, flags));
}

SDL_Surface* IMG_Load(const char* file) {
  REAL(IMG_Load);
  SDL_Surface* const surface = held(sdl(file));
  const std::lock_guard guard(lock);
  if (surface) files[file] = static_cast<size_t>(surface->w) * static_cast<size_t>(surface->h) * 4;
  return surface;
}

void SDL_FreeSurface(SDL_Surface* surface) {
  REAL(SDL_FreeSurface);
  if (surface && surface->refcount == 1) {
    const std::lock_guard guard(lock);
    liveSurfaces.erase(surface);
  }
  sdl(surface);
}

TTF_Font* TTF_OpenFont(const char* file, int ptsize) {
  REAL(TTF_OpenFont);
  const size_t before = heapInUse();
  TTF_Font* const font = sdl(file, ptsize);
  const size_t after = heapInUse();
  const std::lock_guard guard(lock);
  if (after > before) fontBytes += after - before;
  return font;
}

}  // extern "C"
