#pragma once

#include <SDL.h>

#include "common/LockAnnotations.h"

// SDL's mutexes are locks to the compiler as well. They are recursive; it does not count, and takes a second level
// in one function for a mistake.
struct IS_LOCK SDL_mutex;
extern "C" {
extern DECLSPEC int SDLCALL SDL_LockMutex(SDL_mutex* mutex) TAKES_LOCK(mutex);
extern DECLSPEC int SDLCALL SDL_TryLockMutex(SDL_mutex* mutex) TRIES_LOCK(0, mutex);
extern DECLSPEC int SDLCALL SDL_UnlockMutex(SDL_mutex* mutex) RELEASES_LOCK(mutex);
}

namespace vendelo_sdl2 {

// Holds one level of an SDL mutex (recursive) until it is released or the scope ends. The mutex must outlive the
// guard.
class IS_LOCK_GUARD TMutexGuard {
 public:
  explicit TMutexGuard(SDL_mutex* Mutex) TAKES_LOCK(Mutex) : pMutex(Mutex) { SDL_LockMutex(pMutex); }
  // Takes over a level that the caller has locked already.
  struct TAdopt {};
  TMutexGuard(SDL_mutex* Mutex, TAdopt) REQUIRES_LOCK(Mutex) : pMutex(Mutex) {}
  ~TMutexGuard() RELEASES_LOCK() { release(); }
  TMutexGuard(const TMutexGuard&) = delete;
  TMutexGuard& operator=(const TMutexGuard&) = delete;

  void release() RELEASES_LOCK() UNCHECKED_LOCKS {  // that it may be released already
    if (!mHeld) return;
    mHeld = false;
    SDL_UnlockMutex(pMutex);
  }
  void lock() TAKES_LOCK() UNCHECKED_LOCKS {  // that it may be held already
    if (mHeld) return;
    SDL_LockMutex(pMutex);
    mHeld = true;
  }

 private:
  SDL_mutex* const pMutex;
  bool mHeld = true;
};

}  // namespace vendelo_sdl2
