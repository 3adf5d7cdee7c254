// Loaded in front of a program's libraries (LD_PRELOAD): the thread that draws sees SDL's ticks stand still for as
// long as the test says, so that it draws the same frame again and again.
#include "tests/system/HeldClock.h"

#include <SDL.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <pthread.h>
#include <sys/mman.h>
#include <unistd.h>
#include <cstdlib>
#include <cstring>

namespace {

systest::HeldClock* page() {
  static auto* const page = [] {
    const char* const file = std::getenv(systest::HeldClock::kVariable);
    const int descriptor = file ? open(file, O_RDWR | O_CLOEXEC) : -1;
    if (descriptor < 0) std::abort();
    void* const memory =
      mmap(nullptr, sizeof(systest::HeldClock), PROT_READ | PROT_WRITE, MAP_SHARED, descriptor, 0);
    if (memory == MAP_FAILED) std::abort();
    close(descriptor);
    return static_cast<systest::HeldClock*>(memory);
  }();
  return page;
}

bool draws() {
  static thread_local const bool draws = [] {
    char name[16] = "";
    pthread_getname_np(pthread_self(), name, sizeof name);
    return std::strcmp(name, "draw") == 0;
  }();
  return draws;
}

}  // namespace

extern "C" {

Uint64 SDL_GetTicks64(void) {
  static const auto sdl = reinterpret_cast<decltype(&SDL_GetTicks64)>(dlsym(RTLD_NEXT, "SDL_GetTicks64"));
  static thread_local Uint64 ticks = 0;
  if (!draws() || !page()->held) ticks = sdl();
  return ticks;
}

Uint32 SDL_GetTicks(void) { return static_cast<Uint32>(SDL_GetTicks64()); }

int usleep(useconds_t length) {
  static const auto libc = reinterpret_cast<decltype(&usleep)>(dlsym(RTLD_NEXT, "usleep"));
  if (draws()) ++page()->frames;
  return libc(length);
}

}  // extern "C"
