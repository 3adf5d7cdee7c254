#include "tests/support/FakeClock.h"

#include <atomic>
#include <chrono>

namespace {
std::atomic<bool> faked{false};
std::atomic<Uint32> ticks{0};
const auto processStart = std::chrono::steady_clock::now();
}  // namespace

extern "C" Uint32 SDL_GetTicks(void) {
  if (faked) return ticks;
  return static_cast<Uint32>(
    std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - processStart).count());
}

FakeClock::FakeClock(Uint32 start) {
  ticks = start;
  faked = true;
}
FakeClock::~FakeClock() { faked = false; }
void FakeClock::set(Uint32 value) { ticks = value; }
void FakeClock::advance(Uint32 milliseconds) { ticks += milliseconds; }
Uint32 FakeClock::now() const { return ticks; }
