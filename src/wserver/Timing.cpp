#include "wserver/Timing.h"

#include <chrono>

namespace wtime {

namespace {
using namespace std::chrono;
}  // namespace

uint64_t GetTimeUsec() {
  return static_cast<uint64_t>(duration_cast<microseconds>(steady_clock::now().time_since_epoch()).count());
}

uint64_t GetTimeMsec() { return GetTimeUsec() / 1000; }

uint64_t GetSystemTimeMsec() {
  return static_cast<uint64_t>(duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count());
}

const uint64_t OnStartY = GetTimeMsec();
const uint64_t OnStartEpoch = GetSystemTimeMsec();

uint64_t EpochToY(uint64_t t) { return OnStartY + (t - OnStartEpoch); }

uint64_t YToEpoch(uint64_t t) { return OnStartEpoch + (t - OnStartY); }

}  // namespace wtime
