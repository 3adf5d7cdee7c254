#include <SDL.h>

#include <cstdio>
#include <cstdlib>
#include <ctime>

#include "vendelo-sdl2/MyUtils.h"
#include "vendelo-sdl2/TLogManager.h"

namespace MyUtils {

namespace {

// A distance on the tick clock that only a wrap of its 32 bits explains.
constexpr Uint32 kOverflowConstant = 0x7fffffff;

tm localNow() {
  const time_t now = std::time(nullptr);
  tm local{};
  localtime_r(&now, &local);
  return local;
}

}  // namespace

std::string GetCurrentTimeString() {
  const tm local = localNow();
  char buffer[64] = "";
  std::snprintf(buffer, sizeof buffer, "%02d:%02d:%02d", local.tm_hour, local.tm_min, local.tm_sec);
  return buffer;
}

std::string GetCurrentTimeStampString() {
  const tm local = localNow();
  char buffer[79] = "";
  std::snprintf(buffer, sizeof buffer, "%02d:%02d:%02d %04d-%02d-%02d", local.tm_hour, local.tm_min, local.tm_sec,
                local.tm_year + 1900, local.tm_mon + 1, local.tm_mday);
  return buffer;
}

std::string GetCurrentDateString() {
  const tm local = localNow();
  char buffer[79] = "";
  std::strftime(buffer, sizeof buffer, "%F", &local);
  return buffer;
}

bool IsTime(Uint32& LastTime, Uint32 Interval, bool UpdateLastTime) {
  const Uint32 ticks = SDL_GetTicks();
  const int64_t distance = std::llabs(static_cast<int64_t>(ticks) - static_cast<int64_t>(LastTime));
  if (LastTime > 1 && distance > kOverflowConstant) {
    logman::WriteLog(0, 0, "SDLGetTicks overflow detected (LastTime=%u, GetTicks()=%u, overflow_constant=%u)",
                     LastTime, ticks, kOverflowConstant);
    LastTime = ticks;
  }
  if (LastTime != 0 && ticks - LastTime <= Interval) return false;
  if (UpdateLastTime) LastTime = ticks;
  return true;
}

bool CompareTimes(Uint32 Time1, Uint32 Time2, Uint32 Diff) {
  return Time1 >= Time2 && (Diff == 0 || Time1 - Time2 < Diff);
}

}  // namespace MyUtils
