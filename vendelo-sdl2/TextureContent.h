#pragma once

#include <SDL.h>
#include <cstdint>

// What is known of a texture's pixels, in its user data. Draw thread; null does nothing and is not opaque.
namespace vendelo_sdl2 {

constexpr std::uintptr_t kOpaqueBit = 1;

// No pixel lets anything shine through: nobody draws into it afterwards but with such pixels.
inline void markOpaque(SDL_Texture* texture) {
  const auto content = reinterpret_cast<std::uintptr_t>(SDL_GetTextureUserData(texture));
  SDL_SetTextureUserData(texture, reinterpret_cast<void*>(content | kOpaqueBit));
}

inline bool isOpaque(SDL_Texture* texture) {
  return (reinterpret_cast<std::uintptr_t>(SDL_GetTextureUserData(texture)) & kOpaqueBit) != 0;
}

}  // namespace vendelo_sdl2
