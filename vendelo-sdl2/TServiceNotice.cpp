#include "vendelo-sdl2/TServiceNotice.h"

#include <SDL.h>
#include <systemd/sd-daemon.h>
#include <algorithm>
#include <cstdint>
#include <cstdlib>

namespace vendelo_sdl2 {
namespace {

constexpr Uint32 kStatusInterval = 10000;

}  // namespace

TServiceNotice::TServiceNotice() {
  const char* socket = std::getenv("NOTIFY_SOCKET");
  mWanted = socket && *socket;
  uint64_t microseconds = 0;
  if (mWanted && sd_watchdog_enabled(0, &microseconds) > 0)
    mWatchdogMs = static_cast<Uint32>(std::clamp<uint64_t>(microseconds / 2000, 1, INT32_MAX));
}

void TServiceNotice::passDone(unsigned long frames, unsigned long presented) {
  if (!mWanted || mStopping) return;
  const Uint32 now = SDL_GetTicks();
  if (!mReady) {
    if (presented == 0) return;
    mReady = true;
    mLastWatchdog = now;
    mFramesThen = frames;
    tell("READY=1");
    return;
  }
  if (mWatchdogMs == 0 || now - mLastWatchdog < mWatchdogMs || frames == mFramesThen) return;
  mLastWatchdog = now;
  mFramesThen = frames;
  tell("WATCHDOG=1");
}

void TServiceNotice::status(const std::string& state, const std::string& detail) {
  if (!mWanted || mStopping) return;
  const Uint32 now = SDL_GetTicks();
  if (state == mState && now - mLastStatus < kStatusInterval) return;
  mState = state;
  mLastStatus = now;
  tell("STATUS=" + state + detail);
}

void TServiceNotice::stopping() {
  if (!mWanted || mStopping) return;
  mStopping = true;
  tell("STOPPING=1");
}

void TServiceNotice::tell(const std::string& message) { sd_notify(0, message.c_str()); }

}  // namespace vendelo_sdl2
