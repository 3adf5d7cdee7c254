#pragma once

#include <SDL.h>
#include <cstdint>

namespace vendelo_sdl2 {

class TFramePicture;

// What components draw with: SDL's calls of these names and with these parameters. While a frame is being recorded
// (TFramePicture) they are kept instead of carried out, and what was drawn like this in the last frame already is
// not drawn again. So a component draws its whole picture in every frame, and never asks what has changed. SDL's
// own calls may change a texture's modulation and blend mode, and the draw colour; whatever draws, makes a texture
// or lets go of one goes this way. Draw thread; textures may also be destroyed by a thread that holds the draw
// mutex, or when no frame runs.
namespace drawing {

void Copy(SDL_Renderer* renderer, SDL_Texture* texture, const SDL_Rect* source, const SDL_Rect* destination);
void CopyEx(SDL_Renderer* renderer, SDL_Texture* texture, const SDL_Rect* source, const SDL_Rect* destination,
            double angle, const SDL_Point* centre, SDL_RendererFlip flip);
// Clears the target in the draw colour.
void Clear(SDL_Renderer* renderer);
void SetTarget(SDL_Renderer* renderer, SDL_Texture* texture);
SDL_Texture* Target(SDL_Renderer* renderer);
// Moves what is copied into the present target by so many pixels, until another origin is set for it. A null
// destination stays the whole target.
void SetOrigin(SDL_Renderer* renderer, const SDL_Point& by);
// Null where SDL makes none.
SDL_Texture* Create(SDL_Renderer* renderer, Uint32 format, int access, int width, int height);
SDL_Texture* CreateFromSurface(SDL_Renderer* renderer, SDL_Surface* surface);
// A texture that the frame still needs stays until its end. Null does nothing.
void Destroy(SDL_Texture* texture);

// The textures that are there, and their pixels' bytes. Any thread.
struct TTextures {
  long count = 0;
  int64_t bytes = 0;
};
TTextures Textures();

// For TFramePicture: who takes the calls from here on, null for SDL; and the end of a texture that it has kept.
void Record(TFramePicture* picture);
void DestroyNow(SDL_Texture* texture);

}  // namespace drawing
}  // namespace vendelo_sdl2
