#include "vesperatopscreen/TopScreenReport.h"

#include <SDL.h>
#include <ctime>

using vendelo_sdl2::TFrameWatch;

namespace {

constexpr Uint32 kFactsInterval = 200;
constexpr Uint32 kMetricsInterval = 10000;
constexpr Uint32 kSilence = 5000;  // without a good answer, while three are wanted every second

// The time of the day so many milliseconds ago.
std::string timeOfDay(Uint32 ago) {
  const time_t then = std::time(nullptr) - static_cast<time_t>(ago / 1000);
  tm local{};
  localtime_r(&then, &local);
  char text[16] = "";
  std::strftime(text, sizeof text, "%H:%M:%S", &local);
  return text;
}

}  // namespace

void TopScreenReport::passDone(TFrameWatch* frames) {
  ++mPasses;
  if (frames) mNotice.passDone(frames->frames(), frames->presented());
}

bool TopScreenReport::due() {
  const Uint32 now = SDL_GetTicks();
  const Uint32 passed = now - mLastFacts;
  if (passed < kFactsInterval) return false;
  mLastFacts = now;
  mUptimeMs += passed;
  return true;
}

void TopScreenReport::tell(TopScreenFacts facts, TFrameWatch* frames) {
  std::string link = facts.id > 0 ? "registered as " + std::to_string(facts.id) : "not registered";
  if (facts.sinceGoodAnswer && *facts.sinceGoodAnswer >= kSilence) link += ", service silent";
  if (frames) {
    facts.frames = frames->frames();
    facts.lateFrames = frames->late();
  }
  mNotice.status(
    std::string("Panel ") + facts.panel + ", " + link,
    facts.sinceGoodAnswer ? ", last good answer at " + timeOfDay(*facts.sinceGoodAnswer) : ", no answer yet");
  if (!mMetrics.wanted() || mUptimeMs < mNextWrite) return;
  mNextWrite = mUptimeMs + kMetricsInterval;
  mMetrics.write(metricsText(facts, mPasses, mUptimeMs, frames ? frames->takeLongestMs() : 0));
}
