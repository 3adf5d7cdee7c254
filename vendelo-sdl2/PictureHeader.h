#pragma once

#include <SDL.h>
#include <string>

#include "vendelo-sdl2/PixelLimits.h"

namespace MyUtils {

// Whether a side is longer than kLongestSide; false for null.
inline bool IsTooLong(const SDL_Surface* picture) {
  return picture && (picture->w > kLongestSide || picture->h > kLongestSide);
}

// Whether the header of a PNG or JPEG file promises a picture that must not be given to a decoder, because the
// decoder takes the memory for all of it before it looks at the pixels: more than any renderer draws, or far more
// than a file of that length can hold, as a damaged header does. False for everything else, also for a file that
// cannot be read or is none of the two. Any thread.
bool PromisesTooManyPixels(const std::string& path);

}  // namespace MyUtils
