#include "vendelo-sdl2/TDrawCommand.h"

#include <algorithm>
#include <cmath>

#include "vendelo-sdl2/TDirtyRects.h"
#include "vendelo-sdl2/TextureContent.h"

namespace vendelo_sdl2 {
namespace {

bool same(const SDL_Rect& a, const SDL_Rect& b) { return a.x == b.x && a.y == b.y && a.w == b.w && a.h == b.h; }

bool same(const SDL_Color& a, const SDL_Color& b) { return a.r == b.r && a.g == b.g && a.b == b.b && a.a == b.a; }

// The box around the rectangle turned about the centre, with a margin for how drivers round.
SDL_Rect turned(const SDL_Rect& rect, double angle, const SDL_FPoint& centre) {
  static constexpr double kMargin = 2.0, kFar = 1e8;
  const double radians = angle * M_PI / 180.0, c = std::cos(radians), s = std::sin(radians);
  double left = kFar, top = kFar, right = -kFar, bottom = -kFar;
  for (const double x : {0.0, static_cast<double>(rect.w)})
    for (const double y : {0.0, static_cast<double>(rect.h)}) {
      const double px = rect.x + centre.x + (x - centre.x) * c - (y - centre.y) * s;
      const double py = rect.y + centre.y + (x - centre.x) * s + (y - centre.y) * c;
      left = std::min(left, px);
      right = std::max(right, px);
      top = std::min(top, py);
      bottom = std::max(bottom, py);
    }
  const auto limited = [](double value) { return static_cast<int>(std::clamp(value, -kFar, kFar)); };
  const int x = limited(std::floor(left - kMargin)), y = limited(std::floor(top - kMargin));
  return {x, y, limited(std::ceil(right + kMargin)) - x, limited(std::ceil(bottom + kMargin)) - y};
}

}  // namespace

bool TDrawCommand::same(const TDrawCommand& other) const {
  return content == other.content && vendelo_sdl2::same(destination, other.destination) &&
         vendelo_sdl2::same(source, other.source) && vendelo_sdl2::same(colour, other.colour) &&
         angle == other.angle && flip == other.flip && blend == other.blend && centre.x == other.centre.x &&
         centre.y == other.centre.y && hasCentre == other.hasCentre && isClear() == other.isClear();
}

bool TDrawCommand::changesNothing() const {
  return !isClear() && colour.a == 0 && (blend == SDL_BLENDMODE_BLEND || blend == SDL_BLENDMODE_ADD);
}

SDL_Rect TDrawCommand::bounds() const {
  if (!isTurned()) return destination;
  const SDL_FPoint middle{static_cast<float>(destination.w) / 2, static_cast<float>(destination.h) / 2};
  const SDL_FPoint told{static_cast<float>(centre.x), static_cast<float>(centre.y)};
  return turned(destination, angle, hasCentre ? told : middle);
}

// Of an opaque picture that is scaled or turned SDL makes one that is not quite.
bool TDrawCommand::showsNothingBehind() const {
  return isOpaque(content) && colour.a == 255 && !isScaled() && !isTurned();
}

bool TDrawCommand::hides(const SDL_Rect& rect) const {
  if (!contains(destination, rect)) return false;
  if (isClear()) return true;
  if (isTurned()) return false;
  return blend == SDL_BLENDMODE_NONE || (blend == SDL_BLENDMODE_BLEND && showsNothingBehind());
}

void issueCopy(SDL_Renderer* renderer, const TDrawCommand& c) {
  SDL_Color colour{};
  SDL_BlendMode blend = SDL_BLENDMODE_NONE;
  SDL_GetTextureColorMod(c.texture, &colour.r, &colour.g, &colour.b);
  SDL_GetTextureAlphaMod(c.texture, &colour.a);
  SDL_GetTextureBlendMode(c.texture, &blend);
  const auto put = [&c](const SDL_Color& mod, SDL_BlendMode mode) {
    SDL_SetTextureColorMod(c.texture, mod.r, mod.g, mod.b);
    SDL_SetTextureAlphaMod(c.texture, mod.a);
    SDL_SetTextureBlendMode(c.texture, mode);
  };
  // Blending an opaque picture copies it, in some times the time.
  const bool copies = c.blend == SDL_BLENDMODE_BLEND && c.showsNothingBehind();
  const SDL_BlendMode mode = copies ? SDL_BLENDMODE_NONE : c.blend;
  const bool other = !same(colour, c.colour) || blend != mode;
  if (other) put(c.colour, mode);
  if (c.isTurned())
    SDL_RenderCopyEx(renderer, c.texture, &c.source, &c.destination, c.angle, c.hasCentre ? &c.centre : nullptr,
                     c.flip);
  else
    SDL_RenderCopy(renderer, c.texture, &c.source, &c.destination);
  if (other) put(colour, blend);
}

}  // namespace vendelo_sdl2
