#pragma once

namespace vendelo_sdl2 {

// The nine places of a text or picture inside a rectangle: horizontal part first, vertical part second.
enum TAlignment : int {
  LEFT_UP = 0,
  CENTER_UP = 1,
  RIGHT_UP = 2,
  LEFT_CENTER = 3,
  CENTER_CENTER = 4,
  RIGHT_CENTER = 5,
  LEFT_DOWN = 6,
  CENTER_DOWN = 7,
  RIGHT_DOWN = 8
};

// Where a text or picture stands in one of the two directions.
enum class TPart { FIRST, MIDDLE, LAST };

// A number that is none of the nine places counts as the first, LEFT_UP.
constexpr int placeOf(TAlignment alignment) {
  return alignment >= LEFT_UP && alignment <= RIGHT_DOWN ? alignment : LEFT_UP;
}
constexpr TPart horizontalPart(TAlignment alignment) { return static_cast<TPart>(placeOf(alignment) % 3); }
constexpr TPart verticalPart(TAlignment alignment) { return static_cast<TPart>(placeOf(alignment) / 3); }

}  // namespace vendelo_sdl2
