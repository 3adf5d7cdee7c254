#pragma once

#include <SDL.h>
#include <cstdint>

// What a texture shows, as a number in its user data: two textures with the same number show the same, and where
// the number stays, so do the pixels. Bit 0 says that no pixel of it is transparent; the other bits are the number.
// Draw thread, or a thread that has the texture for itself.
namespace vendelo_sdl2 {

constexpr uint64_t kOpaqueBit = 1;

// Never given before, and never opaque.
uint64_t freshContent();
// Gives the texture a number of its own where it has none yet.
uint64_t contentOf(SDL_Texture* texture);
void setContent(SDL_Texture* texture, uint64_t content);
// To be called where a texture is drawn into by other means than drawing:: or its pixels are replaced.
inline void contentChanged(SDL_Texture* texture) { setContent(texture, freshContent()); }
// Of a texture whose pixels stay; what is drawn into it afterwards takes it back. Null does nothing.
void markOpaque(SDL_Texture* texture);
inline bool isOpaque(uint64_t content) { return content & kOpaqueBit; }
// Null is not.
inline bool isOpaque(SDL_Texture* texture) {
  return isOpaque(reinterpret_cast<uint64_t>(SDL_GetTextureUserData(texture)));
}

}  // namespace vendelo_sdl2
