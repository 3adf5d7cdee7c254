#pragma once

#include <cstddef>

// What the process holds in pictures and fonts, counted in functions that are linked in front of SDL's. Any thread.
// Only what is asked for through SDL's interface counts; what SDL or a driver takes for itself does not.
namespace holdings {

struct Holding {
  size_t bytes, count;
};

Holding textures();
Holding surfaces();
// The heap that grew while TrueType fonts were opened.
size_t fonts();
// Every picture file that was loaded, once, with four bytes a pixel.
size_t decodedOnce();

}  // namespace holdings
