#pragma once

#include <SDL.h>
#include <memory>

namespace vendelo_sdl2 {

struct TTextureDeleter {
  void operator()(SDL_Texture* texture) const { SDL_DestroyTexture(texture); }
};

// A texture that is owned; a raw pointer to one is borrowed, but for what an image helper, a font or an animation
// has just made: that belongs to the caller, who puts it in here. Draw thread; it must go before its renderer does.
using TTexturePtr = std::unique_ptr<SDL_Texture, TTextureDeleter>;

}  // namespace vendelo_sdl2
