#pragma once

#include <SDL.h>

namespace vendelo_sdl2 {

class TFramePicture;

// What components draw with: SDL's calls of these names and with these parameters. While a frame is being recorded
// (TFramePicture) they are kept instead of carried out, and what was drawn like this in the last frame already is
// not drawn again. So a component draws its whole picture in every frame, and never asks what has changed. SDL's
// own calls may change a texture's modulation and blend mode, the draw colour, and make textures; whatever draws,
// or lets go of a texture, goes this way. Draw thread; textures may also be destroyed by a thread that holds the
// draw mutex, or when no frame runs.
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
// A texture that the frame still needs stays until its end.
void Destroy(SDL_Texture* texture);

// Who takes the calls from here on; null for SDL. For TFramePicture.
void Record(TFramePicture* picture);

}  // namespace drawing
}  // namespace vendelo_sdl2
