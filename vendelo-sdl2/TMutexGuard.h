#pragma once

#include <SDL.h>

namespace vendelo_sdl2 {

/// Holds one level of an SDL mutex (recursive) until it is released or the scope ends. The mutex must outlive the
/// guard.
class TMutexGuard {
 public:
  explicit TMutexGuard(SDL_mutex* Mutex) : pMutex(Mutex) { SDL_LockMutex(pMutex); }
  ~TMutexGuard() { release(); }
  TMutexGuard(const TMutexGuard&) = delete;
  TMutexGuard& operator=(const TMutexGuard&) = delete;

  /// Takes over a level that the caller has locked already.
  static TMutexGuard adopt(SDL_mutex* Mutex) { return TMutexGuard(Mutex, true); }

  void release() {
    if (!mHeld) return;
    mHeld = false;
    SDL_UnlockMutex(pMutex);
  }
  void lock() {
    if (mHeld) return;
    SDL_LockMutex(pMutex);
    mHeld = true;
  }

 private:
  TMutexGuard(SDL_mutex* Mutex, bool Held) : pMutex(Mutex), mHeld(Held) {}

  SDL_mutex* const pMutex;
  bool mHeld = true;
};

}  // namespace vendelo_sdl2
