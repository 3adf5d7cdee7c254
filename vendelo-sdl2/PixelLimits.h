#pragma once

#include <algorithm>
#include <cstdint>

// How far what is counted in pixels may go, so that nothing overflows and nobody asks for memory that is not there.
namespace MyUtils {

// The longest side of a picture: SDL counts it in 16 bits where it scales by software, and reads outside its memory
// beyond that. Other renderers end sooner.
constexpr int kLongestSide = 32767;

// The pixels of a texture that is drawn into (a text, a layer): 256 MiB.
constexpr int64_t kMostLayerPixels = int64_t{1} << 26;

// Places and lengths that stand in a file of the skin: such ones can be added up and multiplied by two.
constexpr int kFarthestPixel = 1 << 24;

constexpr int withinReach(int pixels) { return std::clamp(pixels, -kFarthestPixel, kFarthestPixel); }

}  // namespace MyUtils
