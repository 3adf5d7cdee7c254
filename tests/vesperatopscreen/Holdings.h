#pragma once

#include <SDL.h>
#include <dlfcn.h>
#include <malloc.h>
#include <atomic>
#include <filesystem>

#include <gtest/gtest.h>

#include "tests/support/TopScreenHarness.h"

// What the process holds. Textures are counted in front of SDL: include this in one file of a program only.
namespace holdings {

inline std::atomic<long> texturesAlive{0};

template <class F>
F next(const char* name) {
  return reinterpret_cast<F>(dlsym(RTLD_NEXT, name));
}

}  // namespace holdings

// In front of the library's own, which calls itself past these.
extern "C" SDL_Texture* SDL_CreateTexture(SDL_Renderer* renderer, Uint32 format, int access, int w, int h) {
  static const auto original =
    holdings::next<SDL_Texture* (*)(SDL_Renderer*, Uint32, int, int, int)>("SDL_CreateTexture");
  SDL_Texture* texture = original(renderer, format, access, w, h);
  holdings::texturesAlive += texture != nullptr;
  return texture;
}
extern "C" SDL_Texture* SDL_CreateTextureFromSurface(SDL_Renderer* renderer, SDL_Surface* surface) {
  static const auto original =
    holdings::next<SDL_Texture* (*)(SDL_Renderer*, SDL_Surface*)>("SDL_CreateTextureFromSurface");
  SDL_Texture* texture = original(renderer, surface);
  holdings::texturesAlive += texture != nullptr;
  return texture;
}
extern "C" void SDL_DestroyTexture(SDL_Texture* texture) {
  static const auto original = holdings::next<void (*)(SDL_Texture*)>("SDL_DestroyTexture");
  holdings::texturesAlive -= texture != nullptr;
  original(texture);
}

namespace holdings {

// This one and "EndLimit".
#ifdef __SANITIZE_THREAD__
constexpr long kThreadsAtRest = 3;  // its own is one of them
#else
constexpr long kThreadsAtRest = 2;
#endif

inline long entries(const char* folder) {
  return std::distance(std::filesystem::directory_iterator(folder), std::filesystem::directory_iterator{});
}

struct Holdings {
  long textures, heap, files, threads;
};

// Once no loader runs any more.
inline Holdings now(TopScreenHarness& screen) {
  screen.joinSprites();
  EXPECT_TRUE(screen.until([] { return entries("/proc/self/task") <= kThreadsAtRest; }));
  screen.app().forgetLines();
  const struct mallinfo2 heap = mallinfo2();
  return {texturesAlive, static_cast<long>(heap.uordblks + heap.hblkhd), entries("/proc/self/fd"),
          entries("/proc/self/task")};
}

}  // namespace holdings
