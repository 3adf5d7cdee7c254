#pragma once

#include <SDL_stdinc.h>
#include <optional>
#include <string>

#include "vendelo-sdl2/TServiceNotice.h"

// How the top screen is, as those want to know who are far away.
struct TopScreenFacts {
  const char* panel = "loader";           // what is on the screen; "stopped" where the last picture stays
  int id = -1;                            // by which the service knows the program; -1 without a registration
  std::optional<Uint32> sinceGoodAnswer;  // milliseconds
};

// Tells the service manager of the program. Main thread, after each pass of the main loop.
class TopScreenReport {
 public:
  // Whether facts are wanted in this pass, as they are some five times a second: to gather them takes locks.
  bool due();
  void passDone(unsigned long frames, unsigned long presented) { mNotice.passDone(frames, presented); }
  void tell(const TopScreenFacts& facts);
  // The end has begun.
  void stopping() { mNotice.stopping(); }

 private:
  vendelo_sdl2::TServiceNotice mNotice;
  Uint32 mLastFacts = 0;
};
