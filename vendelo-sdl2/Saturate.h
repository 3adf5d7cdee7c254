#pragma once

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <type_traits>

namespace MyUtils {

// The number without its fraction. What lies beyond an end of the integer's range becomes that end, and what is no
// number 0: the conversion itself is undefined for those.
template <class Integer>
Integer saturated(double value) {
  static_assert(std::is_integral_v<Integer>);
  using Limits = std::numeric_limits<Integer>;
  // The first power of two beyond the range: a double, which the largest value itself need not be.
  const double end = std::ldexp(1.0, Limits::digits);
  if (std::isnan(value)) return 0;
  if (value >= end) return Limits::max();
  return value <= static_cast<double>(Limits::min()) ? Limits::min() : static_cast<Integer>(value);
}

// The same for a place or a length in pixels, within what can be added up without overflow.
inline int toPixels(double value) {
  constexpr int farAway = 1 << 28;
  const int pixels = saturated<int>(value);
  return pixels < -farAway ? -farAway : pixels > farAway ? farAway : pixels;
}

// The number that a text begins with, 0 without one, the nearest that there is for one beyond the range.
inline int leadingNumber(const char* text) {
  constexpr long smallest = std::numeric_limits<int>::min(), largest = std::numeric_limits<int>::max();
  return static_cast<int>(std::clamp(std::strtol(text, nullptr, 10), smallest, largest));
}

}  // namespace MyUtils
