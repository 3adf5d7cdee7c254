#pragma once

#include "tools/kslsim/Wire.h"

namespace kslsim {

// Steps that make so many levels, 1 to 4, with pots of a usual size, and guests at all of them.
std::vector<Json> houseSteps(int levels, uint64_t seed);
constexpr int kHouseLevels = 4;

}  // namespace kslsim
