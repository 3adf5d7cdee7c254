#pragma once

#include <map>
#include <random>

#include "tools/kslsim/Platform.h"

namespace kslsim {

// Levels that live as those of a house with guests: bets come at random, a share of each goes to the pot, and at a
// value between "MinPot" and "MaxPot" that nobody knows the level is won. The win stands for a while, then the pot
// starts again from "MinPot". A level without a "MaxPot" above its pot grows and is never won. The same seed gives
// the same bets and the same wins, however often advance() is called. Times in milliseconds of the simulator's
// clock, amounts in the smallest unit. No lock of its own; the simulator's covers it.
class House {
 public:
  struct Guests {
    int64_t every;  // between two looks at the level
    int64_t bets;   // a minute, on average
    int64_t bet;    // the smallest stake; others are a few times as high
    int64_t share;  // thousandths of a stake that go to the pot
    int64_t show;   // how long a win stands
    uint64_t seed;
  };

  // The level is played on from now on; a play that was there before ends.
  void open(int level, const Guests& guests, int64_t now);

  void close(int level) { mTables.erase(level); }
  void closeAll() { mTables.clear(); }

  // The levels that are played on.
  std::vector<int> tables() const;

  // Applies what is due at `now`. The play on a level that has been removed ends.
  void advance(int64_t now, Platform& platform);

 private:
  struct Table {
    Guests guests;
    int64_t start, done;  // done: looks so far
    int64_t thousandths;  // of the smallest unit, not yet in the pot
    int64_t hit;          // the value at which the level is won; -1: to be drawn, 0: never
    int64_t winLeft;      // looks until the win that stands is over; 0: none stands
    std::string statusBefore;
    std::mt19937_64 random;
  };
  static void look(Table& table, Json& level, Json& part);

  std::map<int, Table> mTables;
};

// "NumWins" after one win more; the largest number stays.
int oneMoreWin(const Json& level);

}  // namespace kslsim
