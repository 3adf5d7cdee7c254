#pragma once

#include <SDL.h>
#include <vector>

// Records the render calls of a program and issues them again. The recorder's functions are linked in front of
// SDL's, so that what the toolkit calls passes through here; off, it costs one test a call. One thread only.
// Textures that come and go within a frame are made again at the replay, from the same surfaces, which must live.
namespace recorder {

// From here to stop(), every call is noted; mark() ends a frame.
void start();
void mark();
void stop();
int frames();

// Issues the calls of one recorded frame, its presentation included, by nothing but SDL: the floor. Setters that
// changed nothing were not noted, so that the floor does no more than a program written for this one picture.
void replay(int frame);

// Copies in all recorded frames.
long copies();

// Textures that were made from surfaces since the start of the program, recording or not.
long texturesFromSurfaces();

}  // namespace recorder
