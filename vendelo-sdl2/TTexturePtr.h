#pragma once

#include <SDL.h>
#include <memory>

#include "vendelo-sdl2/Drawing.h"

namespace vendelo_sdl2 {

struct TTextureDeleter {
  void operator()(SDL_Texture* texture) const { drawing::Destroy(texture); }
};

// A texture that is owned; a raw pointer to one is borrowed, but for what an image helper, a font or an animation
// has just made: that belongs to the caller, who puts it in here. Draw thread; it must go before its renderer does.
using TTexturePtr = std::unique_ptr<SDL_Texture, TTextureDeleter>;

}  // namespace vendelo_sdl2
