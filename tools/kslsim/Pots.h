#pragma once

#include <map>
#include <random>

#include "tools/kslsim/Platform.h"

namespace kslsim {

// Pots that move by themselves. Each level has at most one movement; a new one replaces it. Times in milliseconds
// of the simulator's clock, amounts in the smallest unit. No lock of its own; the simulator's covers it.
class Pots {
 public:
  // To `to` in a straight line over `duration`, one change each `every`.
  void ramp(int level, int64_t from, int64_t to, int64_t now, int64_t duration, int64_t every);

  // Up by an amount of `least` to `most` each `every`, for ever, the same amounts for the same seed. A level whose
  // "MaxPot" is above 0 stops there.
  void grow(int level, int64_t now, int64_t every, int64_t least, int64_t most, uint64_t seed);

  void stop(int level) { mMovements.erase(level); }
  void stopAll() { mMovements.clear(); }
  bool moves(int level) const { return mMovements.count(level) != 0; }

  // Applies what is due at `now`. The movement of a level that has been removed ends.
  void advance(int64_t now, Platform& platform);

 private:
  struct Movement {
    bool grows;
    int64_t start, every, done;  // done: changes made so far
    int64_t from, to, duration;  // ramp
    int64_t least, most;         // growth
    std::mt19937_64 random;
  };
  // The pot after the changes due at `now`; sets `ended` with the last one.
  static int64_t next(Movement& movement, int64_t now, const Json& level, bool& ended);

  std::map<int, Movement> mMovements;
};

}  // namespace kslsim
