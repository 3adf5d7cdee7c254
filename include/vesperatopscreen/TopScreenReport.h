#pragma once

#include <SDL.h>
#include <cstdint>

#include "vendelo-sdl2/TFrameWatch.h"
#include "vendelo-sdl2/TServiceNotice.h"
#include "vesperatopscreen/TopScreenFacts.h"
#include "vesperatopscreen/TopScreenMetrics.h"

// Tells the service manager and, every ten seconds, a collector of figures how the top screen is. Main thread,
// after each pass of the main loop.
class TopScreenReport {
 public:
  // `frames` is null without a window.
  void passDone(vendelo_sdl2::TFrameWatch* frames);
  // True some five times a second.
  bool due();
  // Whether anybody is told: to gather facts takes locks.
  bool wanted() const { return mNotice.wanted() || mMetrics.wanted(); }
  void tell(TopScreenFacts facts, vendelo_sdl2::TFrameWatch* frames);
  // The end has begun.
  void stopping() { mNotice.stopping(); }

 private:
  vendelo_sdl2::TServiceNotice mNotice;
  TMetricsFile mMetrics;
  unsigned long mPasses = 0;
  Uint32 mLastFacts = SDL_GetTicks();
  uint64_t mUptimeMs = 0;   // longer than the tick clock counts
  uint64_t mNextWrite = 0;  // of the uptime
};
