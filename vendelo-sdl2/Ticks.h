#pragma once

#include <SDL_stdinc.h>

namespace MyUtils {

// A tick to count from where 0 stands for none: the clock comes round to 0 every 49.7 days, and what begins there
// begins a millisecond early.
inline Uint32 startTick(Uint32 tick) { return tick != 0 ? tick : tick - 1; }

}  // namespace MyUtils
