#include "vendelo-sdl2/TextureContent.h"

#include <atomic>

namespace vendelo_sdl2 {

static_assert(sizeof(void*) >= sizeof(uint64_t), "the number stands in a pointer");

uint64_t freshContent() {
  static std::atomic<uint64_t> last{0};
  return last += 2 * kOpaqueBit;
}

uint64_t contentOf(SDL_Texture* texture) {
  const auto content = reinterpret_cast<uint64_t>(SDL_GetTextureUserData(texture));
  if ((content & ~kOpaqueBit) != 0) return content;
  const uint64_t fresh = freshContent() | content;
  setContent(texture, fresh);
  return fresh;
}

void setContent(SDL_Texture* texture, uint64_t content) {
  SDL_SetTextureUserData(texture, reinterpret_cast<void*>(content));
}

void markOpaque(SDL_Texture* texture) {
  if (texture) setContent(texture, contentOf(texture) | kOpaqueBit);
}

}  // namespace vendelo_sdl2
