#pragma once

#include "Canvas.h"

// Adds a round glow that is strongest in its middle.
void addGlow(const Canvas& canvas, double x, double y, double radius, const Colour& colour);

// Adds a glint of four spikes, turned by `angle`, with a white core and a glow in `colour`.
void addGlint(const Canvas& canvas, double x, double y, double size, double angle, const Colour& colour);

// Adds a streak from (x0, y0), where it has died away, to (x1, y1), where it is `width` wide and brightest.
void addStreak(const Canvas& canvas, double x0, double y0, double x1, double y1, double width,
               const Colour& colour);
