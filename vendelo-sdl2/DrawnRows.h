#pragma once

#include <SDL.h>

// Rows of a picture that is drawn over those of a window (XRGB8888, whose first byte means nothing): what SDL's
// "software" driver makes of each pixel, in a fraction of its time. Any thread.
namespace vendelo_sdl2 {

using TDrawnRow = void (*)(Uint32* to, const Uint32* from, int count, Uint8 alpha);

// Of XRGB8888 and ARGB8888, without blending; the alpha counts for nothing.
void copiedRow(Uint32* to, const Uint32* from, int count, Uint8 alpha);
// Of ABGR8888, at its full alpha: that must be 255.
void blendedSwappedRow(Uint32* to, const Uint32* from, int count, Uint8 alpha);
// With an alpha that all pixels have besides, below 255: of ARGB8888, ABGR8888 and XRGB8888.
void fadedRow(Uint32* to, const Uint32* from, int count, Uint8 alpha);
void fadedSwappedRow(Uint32* to, const Uint32* from, int count, Uint8 alpha);
void fadedOpaqueRow(Uint32* to, const Uint32* from, int count, Uint8 alpha);

}  // namespace vendelo_sdl2
