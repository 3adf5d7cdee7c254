#include "vendelo-sdl2/Drawing.h"

#include <atomic>

#include "vendelo-sdl2/TFramePicture.h"
#include "vendelo-sdl2/TextureContent.h"

namespace vendelo_sdl2::drawing {
namespace {

std::atomic<TFramePicture*> recording{nullptr};

// No lock, as textures come and go in frames. The figures of a moment need not be of the same one.
std::atomic<long> textures{0};
std::atomic<int64_t> textureBytes{0};

int64_t bytesOf(SDL_Texture* texture) {
  Uint32 format = 0;
  int width = 0, height = 0;
  if (SDL_QueryTexture(texture, &format, nullptr, &width, &height) != 0) return 0;
  return int64_t{SDL_BYTESPERPIXEL(format)} * width * height;
}

SDL_Texture* counted(SDL_Texture* texture) {
  if (texture) {
    textures.fetch_add(1, std::memory_order_relaxed);
    textureBytes.fetch_add(bytesOf(texture), std::memory_order_relaxed);
  }
  return texture;
}

TFramePicture* recorder(SDL_Renderer* renderer) {
  TFramePicture* const picture = recording;
  return picture && picture->renderer() == renderer ? picture : nullptr;
}

struct {
  SDL_Renderer* renderer = nullptr;
  SDL_Texture* target = nullptr;
  SDL_Point by{0, 0};
} origin;

// Where a copy comes to lie; `place` is room for it.
const SDL_Rect* moved(SDL_Renderer* renderer, const SDL_Rect* destination, SDL_Rect& place) {
  if (!destination || origin.renderer != renderer || Target(renderer) != origin.target) return destination;
  place = {destination->x + origin.by.x, destination->y + origin.by.y, destination->w, destination->h};
  return &place;
}

// After a call that SDL has carried out.
void targetChanged(SDL_Renderer* renderer) {
  if (SDL_Texture* const target = SDL_GetRenderTarget(renderer)) contentChanged(target);
}

}  // namespace

void Record(TFramePicture* picture) { recording = picture; }

void Copy(SDL_Renderer* renderer, SDL_Texture* texture, const SDL_Rect* source, const SDL_Rect* destination) {
  SDL_Rect place;
  destination = moved(renderer, destination, place);
  if (TFramePicture* const picture = recorder(renderer))
    return picture->copy(texture, source, destination, 0.0, nullptr, SDL_FLIP_NONE);
  SDL_RenderCopy(renderer, texture, source, destination);
  targetChanged(renderer);
}

void CopyEx(SDL_Renderer* renderer, SDL_Texture* texture, const SDL_Rect* source, const SDL_Rect* destination,
            double angle, const SDL_Point* centre, SDL_RendererFlip flip) {
  SDL_Rect place;
  destination = moved(renderer, destination, place);
  if (TFramePicture* const picture = recorder(renderer))
    return picture->copy(texture, source, destination, angle, centre, flip);
  SDL_RenderCopyEx(renderer, texture, source, destination, angle, centre, flip);
  targetChanged(renderer);
}

void Clear(SDL_Renderer* renderer) {
  if (TFramePicture* const picture = recorder(renderer)) return picture->clear();
  SDL_RenderClear(renderer);
  targetChanged(renderer);
}

void SetTarget(SDL_Renderer* renderer, SDL_Texture* texture) {
  if (TFramePicture* const picture = recorder(renderer)) return picture->setTarget(texture);
  SDL_SetRenderTarget(renderer, texture);
}

SDL_Texture* Target(SDL_Renderer* renderer) {
  if (const TFramePicture* const picture = recorder(renderer)) return picture->target();
  return SDL_GetRenderTarget(renderer);
}

void SetOrigin(SDL_Renderer* renderer, const SDL_Point& by) {
  origin = by.x == 0 && by.y == 0 ? decltype(origin){} : decltype(origin){renderer, Target(renderer), by};
}

SDL_Texture* Create(SDL_Renderer* renderer, Uint32 format, int access, int width, int height) {
  return counted(SDL_CreateTexture(renderer, format, access, width, height));
}

SDL_Texture* CreateFromSurface(SDL_Renderer* renderer, SDL_Surface* surface) {
  return counted(SDL_CreateTextureFromSurface(renderer, surface));
}

void Destroy(SDL_Texture* texture) {
  TFramePicture* const picture = recording;
  if (picture && texture && picture->keeps(texture)) return;
  DestroyNow(texture);
}

void DestroyNow(SDL_Texture* texture) {
  if (!texture) return;
  textures.fetch_sub(1, std::memory_order_relaxed);
  textureBytes.fetch_sub(bytesOf(texture), std::memory_order_relaxed);
  SDL_DestroyTexture(texture);
}

TTextures Textures() { return {textures, textureBytes}; }

}  // namespace vendelo_sdl2::drawing
