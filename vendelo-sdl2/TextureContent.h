#pragma once

#include <SDL.h>
#include <cstdint>

// What a texture shows, as a number in its user data: two textures with the same number show the same, and where
// the number stays, so do the pixels. Its lowest bits are facts about the pixels: that no pixel is transparent, and
// which rows at the top and at the bottom are nothing but transparent ("clear of ink"), in steps of a 32nd of the
// height. No fact set is always true. Draw thread, or a thread that has the texture for itself.
namespace vendelo_sdl2 {

constexpr uint64_t kOpaqueBit = 1;
constexpr uint64_t kFactBits = (1 << 13) - 1;
// Of a texture of no ink at all.
constexpr uint64_t kNoInk = uint64_t{32} << 1 | uint64_t{32} << 7;

// The rows from `top` to before `end` have all the ink, of a texture so high.
struct TInk {
  int top, end;
  bool isNone() const { return top >= end; }
};
uint64_t inkBits(const TInk& ink, int height);
TInk inkOf(uint64_t content, int height);
// Where the pixels of a copy lie that are not transparent, at most: the destination, without rows that are clear of
// ink. Empty where there are none.
SDL_Rect inkOfCopy(uint64_t content, int height, const SDL_Rect& source, const SDL_Rect& destination);
// Leaves out rows that are clear of ink from a copy that does not turn the picture, where that changes no pixel: at
// its size, and with a blend mode that adds something to what is there. False when nothing is left of it.
bool keepInk(SDL_Texture* texture, SDL_Rect& source, SDL_Rect& destination);

// Never given before, and no fact about it.
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
