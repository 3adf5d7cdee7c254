#pragma once

#include <SDL.h>
#include <string>

#include "vendelo-sdl2/TMappedData.h"

// The two image caches behind GetTexture and GetSurface of MyUtils.h.
namespace MyUtils {

// Textures by name. Draw thread. The renderer of the latest Get is the one that makes new textures; what the cache
// holds is not checked against it. A name that cannot be loaded is tried again at each request.
class SDLTextures : public vendelo_sdl2::TMappedData<SDL_Texture*> {
 public:
  SDL_Texture* Get(SDL_Renderer* renderer, const std::string& name);
  // Destroys every texture; before the renderer goes.
  void Destroy();
  SDL_Texture* CreateNew(const std::string& name) override;

 private:
  SDL_Renderer* pRenderer = nullptr;
};

// Surfaces by name. One thread at a time.
class SDLSurfaces : public vendelo_sdl2::TMappedData<SDL_Surface*> {
 public:
  SDL_Surface* Get(const std::string& name);
  void Destroy();
  SDL_Surface* CreateNew(const std::string& name) override;
};

extern std::string& mImageDir;
extern SDLTextures& loaderTexture;
extern SDLSurfaces& loaderSurface;

}  // namespace MyUtils
