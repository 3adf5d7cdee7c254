#pragma once

#include <SDL.h>
#include <vector>

// Records the render calls of a program and issues them again. The recorder's functions are linked in front of
// SDL's, so that what the toolkit calls passes through here; off, it costs one test a call. One thread only.
// Textures that come and go within a frame are made again at the replay, from the same surfaces, which live until
// the next start().
namespace recorder {

// From here to stop(), every call is noted; mark() ends a frame.
void start();
void mark();
void stop();
int frames();

// Issues the calls of one recorded frame, its presentation included, by nothing but SDL: the floor. Setters that
// changed nothing were not noted, so that the floor does no more than a program written for this one picture. With
// the "software" driver every texture is replaced by a copy in a format that the driver is fast in, whatever the
// program has: XRGB8888 without blending for what lets nothing shine through, else ABGR8888.
void replay(int frame);

// Copies in all recorded frames.
long copies();

}  // namespace recorder
