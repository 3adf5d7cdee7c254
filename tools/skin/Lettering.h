#pragma once

#include <string>

#include "Canvas.h"
#include "Typeface.h"

// Draws a text in raised gold with a dark rim and a warm glow. `baseline` is the foot of its letters.
void goldText(const Canvas& canvas, const Typeface& face, const std::string& text, double x, double baseline,
              double spacing, double bevel, int glow);

// Draws an ornament line from (x0, y) to (x1, y) that is strong at x0 and fades out at x1.
void flourish(const Canvas& canvas, double x0, double x1, double y);
