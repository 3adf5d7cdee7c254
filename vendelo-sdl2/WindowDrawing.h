#pragma once

#include <SDL.h>

#include "vendelo-sdl2/TDrawCommand.h"

namespace vendelo_sdl2 {

// SDL's "software" driver takes three to five times as long as a processor needs to blend a picture onto a window,
// the longest for one that fades; and what it copies it sends past the processor's cache, where what is blended
// over it then waits for it. A large picture is drawn here instead, from the texture's pixels to the window's, with
// the same result in every pixel: at once, after all that the renderer has been told before, within its clip.
// False: it is left to SDL, which is right for whatever is drawn. Draw thread.
bool drawOntoWindow(SDL_Renderer* renderer, const TDrawCommand& copy);

}  // namespace vendelo_sdl2
