#pragma once

#include <SDL.h>

// The tick clock of a test. It is linked in front of SDL_GetTicks: while an object of this class lives, the
// program's tick clock stands still at what the test says; without one it is the real clock. One at a time.
// Any thread may read the ticks; the test's own thread moves them.
class FakeClock {
 public:
  explicit FakeClock(Uint32 start);
  ~FakeClock();
  FakeClock(const FakeClock&) = delete;
  FakeClock& operator=(const FakeClock&) = delete;

  void set(Uint32 ticks);
  void advance(Uint32 milliseconds);
  Uint32 now() const;
};
