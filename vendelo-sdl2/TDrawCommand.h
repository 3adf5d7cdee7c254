#pragma once

#include <SDL.h>
#include <cstdint>

namespace vendelo_sdl2 {

// One call of drawing::, with everything that its pixels depend on.
struct TDrawCommand {
  SDL_Texture* texture = nullptr;  // null: the target is cleared. Not compared: its content is
  uint64_t content = 0;
  SDL_Rect source{0, 0, 0, 0}, destination{0, 0, 0, 0};
  double angle = 0.0;
  bool hasCentre = false;  // else it turns about its middle, which may lie between two pixels
  SDL_Point centre{0, 0};
  SDL_RendererFlip flip = SDL_FLIP_NONE;
  SDL_Color colour{255, 255, 255, 255};  // modulation; of a clear its colour
  SDL_BlendMode blend = SDL_BLENDMODE_NONE;

  bool same(const TDrawCommand& other) const;
  bool isClear() const { return !texture; }
  bool isTurned() const { return angle != 0.0 || flip != SDL_FLIP_NONE; }
  bool isScaled() const { return source.w != destination.w || source.h != destination.h; }
  bool changesNothing() const;
  // Of a copy that blends.
  bool showsNothingBehind() const;
  // Where it may change pixels.
  SDL_Rect bounds() const;
  // Whether nothing of what was there before can be seen within the rectangle.
  bool hides(const SDL_Rect& rect) const;
};

// Carries out a copy. The texture's modulation and blend mode stay as they were.
void issueCopy(SDL_Renderer* renderer, const TDrawCommand& copy);

}  // namespace vendelo_sdl2
