#pragma once

#include <SDL.h>

// What the components with a slide share. Any thread that may touch the component.
namespace slide {

// The directions of both classes in their order: the word names the way in.
enum Direction { LEFT = 0, RIGHT = 1, UP = 2, DOWN = 3 };

// Where a slide begins: the resting place moved out of the screen, over the edge that the direction comes from.
// The screen is that of the parameters "ScreenW" and "ScreenH", 1920 by 1080 without them.
SDL_Rect startOf(Direction direction, const SDL_Rect& rest);

// Moves the place by step pixels towards the goal: in the direction on the way in, against it on the way out. It
// never comes back for a goal that it has passed, and an overshoot is set back. True at the goal.
bool step(Direction direction, bool in, int pixels, const SDL_Point& goal, int& x, int& y);

}  // namespace slide
