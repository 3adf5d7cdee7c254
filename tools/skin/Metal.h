#pragma once

#include <functional>

#include "Canvas.h"

// One material of the skin: what a metal surface shows when it looks at the floor, the horizon and the sky, and
// the colour of the light that it throws on its surroundings.
struct Metal {
  const char* name;
  Ramp mirror;  // 0 looks down, 0.5 at the viewer, 1 up
  Ramp face;    // flat faces from their top (0) to their bottom (1)
  Colour lacquer;
  Colour glow;
};

const Metal& goldMetal();
const Metal& silverMetal();
const Metal& bronzeMetal();
const Metal& emeraldMetal();

// How a raised shape is cut.
struct Relief {
  double bevel;    // width of the sloping edge in pixels
  double brushed;  // strength of the horizontal brush marks on the flat face, 0 to 1
  double top;      // y where the face's ramp starts
  double bottom;   // y where it ends
};

// Draws a shape as solid metal with bevelled edges, lit from above left.
//
// `path` appends the shape to the given context in the target's coordinates. The work is done at three times the
// size and reduced, so that the edges are smooth. The target is painted over, nothing is cleared.
void drawRelief(const Canvas& target, const Metal& metal, const Relief& relief,
                const std::function<void(cairo_t*)>& path);

// Draws the blurred shape as light or shade around the metal: `spread` widens the shape before the blur.
void drawHalo(const Canvas& target, const Colour& colour, double spread, int radius,
              const std::function<void(cairo_t*)>& path);
