#pragma once

#include <SDL.h>

namespace vendelo_sdl2 {

// Counts the detached threads of the process that run the program's code ("asyncAction" threads and the workers
// of self-freeing asynchronous tasks), so that an object which they use can wait for them before it goes.
//
// An object of this class is one running job; it may end on another thread than it began on. Any thread may call
// everything here.
class TAsyncJob {
 public:
  TAsyncJob();
  ~TAsyncJob();
  TAsyncJob(const TAsyncJob&) = delete;
  TAsyncJob& operator=(const TAsyncJob&) = delete;

  // Jobs that have not ended yet.
  static int Running();
  // Waits at most `TimeoutMs` of real time until no job runs; true when none does. Must not be called from a job,
  // which would wait for itself, nor under a lock that a job takes.
  static bool WaitForNone(Uint32 TimeoutMs);
};

}  // namespace vendelo_sdl2
