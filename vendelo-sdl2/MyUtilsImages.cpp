#include "vendelo-sdl2/MyUtilsImages.h"

#include <SDL_image.h>
#include <cmath>
#include <cstdio>
#include <cstring>

#include "vendelo-sdl2/Drawing.h"
#include "vendelo-sdl2/FaultyFiles.h"
#include "vendelo-sdl2/MyUtils.h"
#include "vendelo-sdl2/PictureFormat.h"
#include "vendelo-sdl2/PictureHeader.h"

namespace MyUtils {
namespace {

// Tried in this order when the path as given does not load.
constexpr const char* kExtensions[] = {".png", ".jpg", ".jpeg", ".webp", ".tiff", ".gif", ".exif", ".bmp"};

// `decode` is not asked for a file that would cost the memory of a picture it cannot hold.
template <typename Decode>
auto loadWithFallback(const std::string& path, const Decode& decode) {
  const auto load = [&decode](const char* file) { return PromisesTooManyPixels(file) ? nullptr : decode(file); };
  // The last dot of the whole path: without an extension it may be one in a directory's name.
  const std::string filename = path.substr(0, path.rfind('.'));
  auto image = load(path.c_str());
  std::string tried = path;
  for (const char* extension : kExtensions) {
    if (image) break;
    tried = filename + extension;
    image = load(tried.c_str());
    if (!image) continue;
    std::printf("\n******************* Tried to load image file %s, but loaded %s!!!\n\n", path.c_str(),
                tried.c_str());
    TellFaultyFile("Tried to load image file " + EscapeControls(path) + ", but loaded " + EscapeControls(tried));
  }
  if (!image) {
    TellFaultyFile("Unable to load image file " + EscapeControls(filename));
    std::printf("\n******************* Unable to load image file %s!!!\n\n", EscapeControls(filename).c_str());
  }
  return image;
}

// Relative luminance of a linear colour, with the curve of sRGB put on afterwards.
Uint8 luminance(double r, double g, double b) {
  const double Clinear = 0.2126 * r + 0.7152 * g + 0.0722 * b;
  const double Csrgb =
    Clinear > 0.0031308 ? 1.055 * std::pow(Clinear, 0.4166666666666667) - 0.055 : 12.92 * Clinear;
  return static_cast<Uint8>(std::round(Csrgb * 255));
}

}  // namespace

std::string& mImageDir = *new std::string;
SDLTextures& loaderTexture = *new SDLTextures;
SDLSurfaces& loaderSurface = *new SDLSurfaces;

SDL_Texture* SDLTextures::Get(SDL_Renderer* renderer, const std::string& name) {
  pRenderer = renderer;
  return GetData(name);
}

void SDLTextures::Destroy() {
  for (const Element& element : mMappedData) vendelo_sdl2::drawing::Destroy(element.Data);
  mMappedData.clear();
}

SDL_Texture* SDLTextures::CreateNew(const std::string& name) { return LoadTexture(pRenderer, mImageDir + name); }

SDL_Surface* SDLSurfaces::Get(const std::string& name) { return GetData(name); }

void SDLSurfaces::Destroy() {
  for (const Element& element : mMappedData) SDL_FreeSurface(element.Data);
  mMappedData.clear();
}

SDL_Surface* SDLSurfaces::CreateNew(const std::string& name) { return LoadSurface(mImageDir + name); }

SDL_Texture* LoadTexture(SDL_Renderer* renderer, const std::string& path) {
  return loadWithFallback(path, [renderer](const char* file) -> SDL_Texture* {
    const TSurfacePtr picture(InFastFormat(renderer, IMG_Load(file)));
    return IsTooLong(picture.get()) ? nullptr : TextureOf(renderer, picture.get()).release();
  });
}

SDL_Surface* LoadSurface(const std::string& path) {
  return loadWithFallback(path, [](const char* file) { return IMG_Load(file); });
}

SDL_Texture* GetTexture(SDL_Renderer* renderer, const std::string& name) {
  return loaderTexture.Get(renderer, name);
}
SDL_Surface* GetSurface(const std::string& name) { return loaderSurface.Get(name); }

const std::string& ImageDir() { return mImageDir; }
void SetImageDir(const std::string& Dir) { mImageDir = Dir; }

void DestroyImages() {
  loaderSurface.Destroy();
  loaderTexture.Destroy();
}

Uint32 GetPixel(Uint8* pixelStart, const Uint8 bytesPerPixel) {
  if (bytesPerPixel < 1 || bytesPerPixel > 4) return 0;
  Uint32 value = 0;
  for (int i = 0; i < bytesPerPixel; ++i) value |= static_cast<Uint32>(pixelStart[i]) << (8 * i);
  return value;
}

void SetPixel(Uint8* pixelStart, const Uint8 bytesPerPixel, Uint8* pixelData) {
  if (bytesPerPixel == 1 || bytesPerPixel == 2 || bytesPerPixel == 4) {
    std::memcpy(pixelStart, pixelData, bytesPerPixel);
  } else if (bytesPerPixel == 3) {
    // Reversed, unlike what GetPixel reads: that is the contract.
    for (int i = 0; i < 3; ++i) pixelStart[i] = pixelData[2 - i];
  }
}

void SDL_ConvertToGrayscale(SDL_Surface* surf) {
  if (!surf) return;
  const bool locked = (surf->flags & SDL_RLEACCEL) != 0;
  if (locked) SDL_LockSurface(surf);
  const Uint8 size = surf->format->BytesPerPixel;
  for (int y = 0; y < surf->h; ++y) {
    Uint8* pixel = static_cast<Uint8*>(surf->pixels) + static_cast<ptrdiff_t>(y) * surf->pitch;
    for (int x = 0; x < surf->w; ++x, pixel += size) {
      Uint8 r = 0, g = 0, b = 0, a = 0;
      SDL_GetRGBA(GetPixel(pixel, size), surf->format, &r, &g, &b, &a);
      const Uint8 newColorValue = luminance(r / 255.0, g / 255.0, b / 255.0);
      Uint32 mapped = SDL_MapRGBA(surf->format, newColorValue, newColorValue, newColorValue, a);
      SetPixel(pixel, size, reinterpret_cast<Uint8*>(&mapped));
    }
  }
  if (locked) SDL_UnlockSurface(surf);
}

void SetWindowsProperties(const std::string& windowName, const std::vector<std::string>& actions,
                          const std::string& extraCommandsInLine) {
  std::string line = "WINID=`wmctrl -l | grep \"$HOSTNAME " + windowName + "\\b\" | cut -d \" \" -f1`;";
  for (const std::string& action : actions) line += "wmctrl -i -r $WINID -b " + action + ";";
  line += extraCommandsInLine;
  SystemAsync(line);
}

}  // namespace MyUtils
