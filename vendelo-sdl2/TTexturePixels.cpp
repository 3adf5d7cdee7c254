#include "vendelo-sdl2/TTexturePixels.h"

#include <cstddef>

namespace vendelo_sdl2 {

TTexturePixels::TTexturePixels(SDL_Texture* texture, const SDL_Rect& part) {
  int access = 0;
  if (SDL_QueryTexture(texture, &mFormat, &access, nullptr, nullptr) != 0) return;
  if (access != SDL_TEXTUREACCESS_STREAMING || SDL_BYTESPERPIXEL(mFormat) != sizeof(Uint32)) return;
  if (SDL_LockTexture(texture, &part, &mpPixels, &mPitch) == 0) mpTexture = texture;
}

TTexturePixels::~TTexturePixels() {
  if (mpTexture) SDL_UnlockTexture(mpTexture);
}

Uint32* TTexturePixels::row(int y) const {
  return reinterpret_cast<Uint32*>(static_cast<Uint8*>(mpPixels) + static_cast<ptrdiff_t>(y) * mPitch);
}

}  // namespace vendelo_sdl2
