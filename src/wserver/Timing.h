#pragma once

#include <cstdint>

// The clocks of the logger, and the conversion between its two time lines: Y, the milliseconds of the steady clock,
// and the milliseconds since the epoch of the system clock. Any thread.
namespace wtime {

uint64_t GetTimeUsec();        // microseconds of the steady clock
uint64_t GetTimeMsec();        // milliseconds of the steady clock
uint64_t GetSystemTimeMsec();  // milliseconds of the system clock since the epoch

// One moment on both lines, taken at program start.
extern const uint64_t OnStartY;
extern const uint64_t OnStartEpoch;

uint64_t EpochToY(uint64_t t);
uint64_t YToEpoch(uint64_t t);

}  // namespace wtime
