#pragma once

#include <cairo.h>

// The plate that carries one level: 908 by 208 pixels with everything that the program draws into it.
constexpr int kPlateWidth = 908;
constexpr int kPlateHeight = 208;

// Appends the plate's outer shape, `inset` pixels inside its edge: upper corners cut, lower ones round.
void plate(cairo_t* cr, double inset);
