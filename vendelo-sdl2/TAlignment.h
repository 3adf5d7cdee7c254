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

}  // namespace vendelo_sdl2
