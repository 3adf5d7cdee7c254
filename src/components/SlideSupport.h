#pragma once

#include <SDL.h>

// What the components with a slide share. Any thread that may touch the component.
namespace slide {

// Width and height of the logical screen, from the parameters "ScreenW" and "ScreenH"; 1920 by 1080 without them.
SDL_Point screenSize();

// Takes every timed task on the component out of the application and deletes it, so that none outlives it.
void removeTasksOf(void* component);

// Moves value by step towards goal, from above or from below, and sets an overshoot back to it. True at the goal.
bool stepDown(int& value, int goal, int step);
bool stepUp(int& value, int goal, int step);

}  // namespace slide
