#include "vendelo-sdl2/WindowEventGate.h"

#include <SDL.h>
#include <mutex>
#include <vector>

#include "vendelo-sdl2/TApplication.h"

namespace vendelo_sdl2 {
namespace {

// More only come when no frame is drawn any more; then the oldest go.
constexpr size_t kMaxHeld = 64;

struct Held {
  std::mutex mutex;
  std::vector<SDL_Event> events;  // mutex
};

Held& held() {
  static Held& instance = *new Held;
  return instance;
}

int holdBack(void*, SDL_Event* event) {
  if (event->type != SDL_WINDOWEVENT || !pApp || pApp->IsInDrawThread()) return 1;
  const std::lock_guard lock(held().mutex);
  if (held().events.size() >= kMaxHeld) held().events.erase(held().events.begin());
  held().events.push_back(*event);
  return 0;
}

}  // namespace

void WindowEventGate::install() {
  SDL_EventFilter present = nullptr;
  if (SDL_GetEventFilter(&present, nullptr) && present == holdBack) return;
  SDL_SetEventFilter(holdBack, nullptr);
}

void WindowEventGate::release() {
  std::vector<SDL_Event> events;
  {
    const std::lock_guard lock(held().mutex);
    events.swap(held().events);
  }
  for (SDL_Event& event : events) SDL_PushEvent(&event);
}

}  // namespace vendelo_sdl2
