#pragma once

#include <string>

#include "Canvas.h"

// The colour of "RRGGBB" or "RRGGBBAA" in hexadecimal digits, with or without a "#" in front.
// Anything else throws `std::runtime_error`.
Colour parseColour(const std::string& text);

// The run of colours of a list with commas, evenly spread from 0 to 1; one colour alone is the same everywhere.
Ramp parseRamp(const std::string& text);
