#pragma once

#include <SDL.h>

namespace vendelo_sdl2 {

/// Holds an SDL mutex (recursive) for a scope. The mutex must outlive the guard.
class TMutexGuard {
 public:
  explicit TMutexGuard(SDL_mutex* Mutex) : pMutex(Mutex) { SDL_LockMutex(pMutex); }
  ~TMutexGuard() { SDL_UnlockMutex(pMutex); }
  TMutexGuard(const TMutexGuard&) = delete;
  TMutexGuard& operator=(const TMutexGuard&) = delete;

 private:
  SDL_mutex* const pMutex;
};

}  // namespace vendelo_sdl2
