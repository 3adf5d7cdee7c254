#include "vendelo-sdl2/PictureFormat.h"

#include <algorithm>
#include <cstring>

#include "vendelo-sdl2/Drawing.h"
#include "vendelo-sdl2/TTexturePixels.h"
#include "vendelo-sdl2/TextureContent.h"

namespace MyUtils {
namespace {

bool isSoftware(SDL_Renderer* renderer) {
  SDL_RendererInfo info{};
  return renderer && SDL_GetRendererInfo(renderer, &info) == 0 && std::strcmp(info.name, "software") == 0;
}

// The user data of a surface whose pixels have been looked at: the facts of TextureContent.h, below a mark.
constexpr uint64_t kLookedAt = uint64_t{0x70c7e} << 32;

void* known(uint64_t facts) { return reinterpret_cast<void*>(kLookedAt | facts); }

const Uint32* row(const SDL_Surface* picture, int y) {
  return reinterpret_cast<const Uint32*>(static_cast<const Uint8*>(picture->pixels) +
                                         static_cast<ptrdiff_t>(y) * picture->pitch);
}

bool looksOpaque(const SDL_Surface* picture) {
  if (SDL_HasColorKey(const_cast<SDL_Surface*>(picture))) return false;
  const SDL_PixelFormat& format = *picture->format;
  if (const SDL_Palette* palette = format.palette)
    return std::all_of(palette->colors, palette->colors + palette->ncolors,
                       [](const SDL_Color& colour) { return colour.a == 255; });
  if (!format.Amask) return true;
  if (format.BytesPerPixel != 4) return false;
  for (int y = 0; y < picture->h; ++y) {
    const Uint32* pixels = row(picture, y);
    const auto shines = [&format](Uint32 pixel) { return (pixel & format.Amask) != format.Amask; };
    if (std::any_of(pixels, pixels + picture->w, shines)) return false;
  }
  return true;
}

// Rows that have a pixel that is not wholly transparent.
vendelo_sdl2::TInk ink(const SDL_Surface* picture) {
  const SDL_PixelFormat& format = *picture->format;
  vendelo_sdl2::TInk found{0, picture->h};
  if (!format.Amask || format.BytesPerPixel != 4) return found;
  const auto isClear = [picture, &format](int y) {
    const Uint32* pixels = row(picture, y);
    return std::all_of(pixels, pixels + picture->w, [&format](Uint32 pixel) { return !(pixel & format.Amask); });
  };
  while (found.end > 0 && isClear(found.end - 1)) --found.end;
  while (found.top < found.end && isClear(found.top)) ++found.top;
  return found;
}

// As TextureContent.h has them.
uint64_t facts(const SDL_Surface* picture) {
  const auto told = reinterpret_cast<uint64_t>(picture->userdata);
  if ((told & ~vendelo_sdl2::kFactBits) == kLookedAt) return told & vendelo_sdl2::kFactBits;
  if (looksOpaque(picture)) return vendelo_sdl2::kOpaqueBit;
  return vendelo_sdl2::inkBits(ink(picture), picture->h);
}

// With the "software" driver. What SDL itself would make fast and equal pixels of stays as it is.
Uint32 fastFormat(const SDL_Surface* picture) {
  const Uint32 own = picture->format->format;
  const bool hasAlpha = picture->format->Amask || SDL_HasColorKey(const_cast<SDL_Surface*>(picture));
  if (IsOpaque(picture)) return hasAlpha ? Uint32{SDL_PIXELFORMAT_ARGB8888} : Uint32{SDL_PIXELFORMAT_RGB888};
  return own == SDL_PIXELFORMAT_ARGB8888 ? own : Uint32{SDL_PIXELFORMAT_ABGR8888};
}

// Frees the picture, unless there is no memory for another.
SDL_Surface* converted(SDL_Surface* picture, Uint32 format) {
  if (picture->format->format == format) return picture;
  SDL_Surface* other = SDL_ConvertSurfaceFormat(picture, format, 0);
  if (!other) return picture;
  SDL_BlendMode mode = SDL_BLENDMODE_NONE;
  SDL_GetSurfaceBlendMode(picture, &mode);
  SDL_SetSurfaceBlendMode(other, SDL_HasColorKey(picture) ? SDL_BLENDMODE_BLEND : mode);
  other->userdata = picture->userdata;
  SDL_FreeSurface(picture);
  return other;
}

// A texture whose pixels TTexturePixels has; null for a small picture and for one in another format than those of
// InFastFormat.
vendelo_sdl2::TTexturePtr withPixels(SDL_Renderer* renderer, SDL_Surface* picture) {
  const Uint32 format = picture->format->format;
  const bool isFast =
    format == SDL_PIXELFORMAT_ARGB8888 || format == SDL_PIXELFORMAT_ABGR8888 || format == SDL_PIXELFORMAT_RGB888;
  if (!isFast || SDL_HasColorKey(picture) || int64_t{picture->w} * picture->h < vendelo_sdl2::kManyPixels)
    return nullptr;
  vendelo_sdl2::TTexturePtr texture(
    vendelo_sdl2::drawing::Create(renderer, format, SDL_TEXTUREACCESS_STREAMING, picture->w, picture->h));
  if (!texture || SDL_UpdateTexture(texture.get(), nullptr, picture->pixels, picture->pitch) != 0) return nullptr;
  SDL_BlendMode blend = SDL_BLENDMODE_NONE;
  SDL_GetSurfaceBlendMode(picture, &blend);
  SDL_SetTextureBlendMode(texture.get(), blend);
  return texture;
}

// The same over an empty pixel: two channels at a time, t / 255 as (t + 1 + (t >> 8)) >> 8, which is exact below
// 65535.
Uint32 blendedOverNothing(Uint32 above, Uint32 alpha) {
  const Uint32 rb = (above & 0xff00ff) * alpha, g = (above >> 8 & 0xff) * alpha;
  return alpha << 24 | ((rb + 0x10001 + (rb >> 8 & 0xff00ff)) >> 8 & 0xff00ff) | ((g + 1 + (g >> 8)) & 0xff00);
}

// Truncated towards zero, as SDL's.
Uint32 blended(Uint32 below, Uint32 above, int alpha) {
  Uint32 result = 0;
  for (int shift = 0; shift < 24; shift += 8) {
    const int d = static_cast<int>(below >> shift & 255), s = static_cast<int>(above >> shift & 255);
    result |= static_cast<Uint32>((s - d) * alpha / 255 + d) << shift;
  }
  const int d = static_cast<int>(below >> 24);
  return result | static_cast<Uint32>(alpha + d - alpha * d / 255) << 24;
}

}  // namespace

Uint32 LayerFormat(SDL_Renderer* renderer) {
  return isSoftware(renderer) ? Uint32{SDL_PIXELFORMAT_ABGR8888} : Uint32{SDL_PIXELFORMAT_RGBA8888};
}

bool HasTextureMemory(SDL_Renderer* renderer) { return !isSoftware(renderer); }

bool IsOpaque(const SDL_Surface* picture) { return picture && vendelo_sdl2::isOpaque(facts(picture)); }

SDL_Surface* InFastFormat(SDL_Renderer* renderer, SDL_Surface* picture) {
  if (!picture) return nullptr;
  picture->userdata = known(facts(picture));
  return isSoftware(renderer) ? converted(picture, fastFormat(picture)) : picture;
}

vendelo_sdl2::TTexturePtr TextureOf(SDL_Renderer* renderer, SDL_Surface* picture) {
  vendelo_sdl2::TTexturePtr texture;
  if (picture && isSoftware(renderer)) texture = withPixels(renderer, picture);
  if (picture && !texture) texture.reset(vendelo_sdl2::drawing::CreateFromSurface(renderer, picture));
  if (texture) vendelo_sdl2::setContent(texture.get(), vendelo_sdl2::freshContent() | facts(picture));
  return texture;
}

vendelo_sdl2::TTexturePtr LayerOf(SDL_Renderer* renderer, const SDL_Surface* picture) {
  if (!picture) return nullptr;
  const Uint32 format = LayerFormat(renderer);
  TSurfacePtr other;
  if (format != picture->format->format) {
    other.reset(SDL_ConvertSurfaceFormat(const_cast<SDL_Surface*>(picture), format, 0));
    if (!other) return nullptr;
    picture = other.get();
  }
  vendelo_sdl2::TTexturePtr layer(
    vendelo_sdl2::drawing::Create(renderer, format, SDL_TEXTUREACCESS_TARGET, picture->w, picture->h));
  if (!layer || SDL_UpdateTexture(layer.get(), nullptr, picture->pixels, picture->pitch) != 0) return nullptr;
  SDL_SetTextureBlendMode(layer.get(), SDL_BLENDMODE_BLEND);
  vendelo_sdl2::setContent(layer.get(),
                           vendelo_sdl2::freshContent() | (facts(picture) & ~vendelo_sdl2::kOpaqueBit));
  return layer;
}

TSurfacePtr InDrawnFormat(TSurfacePtr picture) {
  if (picture) picture.reset(converted(picture.release(), kDrawnFormat));
  if (picture && picture->format->format != kDrawnFormat) return nullptr;
  return picture;
}

void BlendInto(SDL_Surface* to, int64_t x, int64_t y, const SDL_Surface* from, const SDL_Rect& part, Uint8 alpha) {
  if (!to || !from) return;
  // Columns and lines of the part that lie in both pictures.
  const int64_t left = std::max<int64_t>({0, -int64_t{part.x}, -x});
  const int64_t top = std::max<int64_t>({0, -int64_t{part.y}, -y});
  const int64_t right = std::min<int64_t>({part.w, int64_t{from->w} - part.x, int64_t{to->w} - x});
  const int64_t bottom = std::min<int64_t>({part.h, int64_t{from->h} - part.y, int64_t{to->h} - y});
  if (left >= right) return;
  for (int64_t line = top; line < bottom; ++line) {
    const Uint32* source = row(from, static_cast<int>(part.y + line)) + part.x + left;
    Uint32* target = const_cast<Uint32*>(row(to, static_cast<int>(y + line))) + x + left;
    for (const Uint32* const end = source + (right - left); source != end; ++source, ++target) {
      const Uint32 a = alpha == 255 ? *source >> 24 : (*source >> 24) * alpha / 255;
      if (a == 255)
        *target = *source;
      else if (a != 0)
        *target = *target == 0 ? blendedOverNothing(*source, a) : blended(*target, *source, static_cast<int>(a));
    }
  }
}

}  // namespace MyUtils
