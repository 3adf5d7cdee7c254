#pragma once

#include <SDL.h>

namespace vendelo_sdl2 {

// Of fewer pixels it is not worth while to do by ourselves what SDL's "software" driver is slow in.
constexpr int kManyPixels = 1 << 12;

// The pixels of a part of a texture of MyUtils::TextureOf, to be read, or of one that is made like it, to be
// written too. SDL promises only that what is written stays; its "software" driver hands out the pixels that it
// draws from. None of a texture that is drawn into, of a small one, and with other drivers. Draw thread; for a
// moment, without drawing from the texture.
class TTexturePixels {
 public:
  TTexturePixels(SDL_Texture* texture, const SDL_Rect& part);
  ~TTexturePixels();
  TTexturePixels(const TTexturePixels&) = delete;
  TTexturePixels& operator=(const TTexturePixels&) = delete;

  explicit operator bool() const { return mpTexture != nullptr; }
  Uint32 format() const { return mFormat; }
  void* pixels() const { return mpPixels; }
  int pitch() const { return mPitch; }  // in bytes
  Uint32* row(int y) const;

 private:
  SDL_Texture* mpTexture = nullptr;
  Uint32 mFormat = 0;
  void* mpPixels = nullptr;
  int mPitch = 0;
};

}  // namespace vendelo_sdl2
