#pragma once

#include <SDL.h>
#include <optional>

#include "vendelo-sdl2/Drawing.h"

namespace vendelo_sdl2 {

// Changes the state in which one draws, and puts back at the end of the scope what it has changed, and nothing
// else: what is drawn in the middle of a frame must not be seen in the rest of it. Draw thread; the renderer and
// the textures must outlive the scope.
class TRenderGuard {
 public:
  explicit TRenderGuard(SDL_Renderer* renderer) : mpRenderer(renderer) {}
  ~TRenderGuard() {
    if (mHasOrigin) drawing::SetOrigin(mpRenderer, {0, 0});
    if (mHasTarget) drawing::SetTarget(mpRenderer, mpTarget);
    if (mColour) SDL_SetRenderDrawColor(mpRenderer, mColour->r, mColour->g, mColour->b, mColour->a);
    if (mpBlended) SDL_SetTextureBlendMode(mpBlended, mBlendMode);
  }
  TRenderGuard(const TRenderGuard&) = delete;
  TRenderGuard& operator=(const TRenderGuard&) = delete;

  // Null is the window.
  void target(SDL_Texture* texture) {
    if (!mHasTarget) mpTarget = drawing::Target(mpRenderer);
    mHasTarget = true;
    drawing::SetTarget(mpRenderer, texture);
  }
  void colour(Uint8 r, Uint8 g, Uint8 b, Uint8 a) {
    if (!mColour) {
      mColour = SDL_Color{0, 0, 0, 0};
      SDL_GetRenderDrawColor(mpRenderer, &mColour->r, &mColour->g, &mColour->b, &mColour->a);
    }
    SDL_SetRenderDrawColor(mpRenderer, r, g, b, a);
  }
  // Of the target that is set; there is none while this one holds.
  void origin(int x, int y) {
    mHasOrigin = true;
    drawing::SetOrigin(mpRenderer, {x, y});
  }
  // Once for each guard; null does nothing.
  void blendMode(SDL_Texture* texture, SDL_BlendMode mode) {
    mpBlended = texture;
    SDL_GetTextureBlendMode(texture, &mBlendMode);
    SDL_SetTextureBlendMode(texture, mode);
  }
  // Clears the target in this colour and leaves the draw colour as it is.
  void clear(Uint8 r, Uint8 g, Uint8 b, Uint8 a) const {
    TRenderGuard own(mpRenderer);
    own.colour(r, g, b, a);
    drawing::Clear(mpRenderer);
  }

 private:
  SDL_Renderer* mpRenderer;
  bool mHasTarget = false;
  bool mHasOrigin = false;
  SDL_Texture* mpTarget = nullptr;  // may be the window
  std::optional<SDL_Color> mColour;
  SDL_Texture* mpBlended = nullptr;
  SDL_BlendMode mBlendMode = SDL_BLENDMODE_NONE;
};

}  // namespace vendelo_sdl2
