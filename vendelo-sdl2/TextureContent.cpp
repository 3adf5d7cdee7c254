#include "vendelo-sdl2/TextureContent.h"

#include <algorithm>
#include <atomic>

#include "vendelo-sdl2/TDirtyRects.h"

namespace vendelo_sdl2 {

static_assert(sizeof(void*) >= sizeof(uint64_t), "the number stands in a pointer");

namespace {

constexpr int kSteps = 32;
constexpr uint64_t kField = 63;
constexpr int kTopAt = 1, kBelowAt = 7;

}  // namespace

uint64_t inkBits(const TInk& ink, int height) {
  if (ink.isNone() || height <= 0) return kNoInk;
  const auto steps = [height](int rows) {
    return static_cast<uint64_t>(int64_t{std::clamp(rows, 0, height)} * kSteps / height);
  };
  return steps(ink.top) << kTopAt | steps(height - ink.end) << kBelowAt;
}

TInk inkOf(uint64_t content, int height) {
  const auto rows = [content, height](int at) {
    return static_cast<int>(static_cast<int64_t>(content >> at & kField) * height / kSteps);
  };
  return {rows(kTopAt), height - rows(kBelowAt)};
}

SDL_Rect inkOfCopy(uint64_t content, int height, const SDL_Rect& source, const SDL_Rect& destination) {
  const TInk ink = inkOf(content, height);
  const int top = std::max(ink.top, source.y), end = std::min(ink.end, source.y + source.h);
  if (top >= end) return {destination.x, destination.y, 0, 0};
  if (source.h == destination.h) return {destination.x, destination.y + top - source.y, destination.w, end - top};
  // A row shines into its neighbours where drivers interpolate, and they round in their own ways.
  const int margin = destination.h / source.h + 2;
  const auto scaled = [&](int rows) { return static_cast<int>(int64_t{rows} * destination.h / source.h); };
  const int first = std::max(scaled(top - source.y) - margin, 0);
  const int last = std::min(scaled(end - source.y) + margin, destination.h);
  return {destination.x, destination.y + first, destination.w, last - first};
}

bool keepInk(SDL_Texture* texture, SDL_Rect& source, SDL_Rect& destination) {
  SDL_BlendMode blend = SDL_BLENDMODE_NONE;
  SDL_Rect whole{0, 0, 0, 0};
  SDL_GetTextureBlendMode(texture, &blend);
  SDL_QueryTexture(texture, nullptr, nullptr, &whole.w, &whole.h);
  if (blend != SDL_BLENDMODE_BLEND && blend != SDL_BLENDMODE_ADD) return true;
  if (source.w != destination.w || source.h != destination.h || !contains(whole, source)) return true;
  const SDL_Rect seen = inkOfCopy(contentOf(texture), whole.h, source, destination);
  source.y += seen.y - destination.y;
  source.h = destination.h = seen.h;
  destination.y = seen.y;
  return seen.h > 0;
}

uint64_t freshContent() {
  static std::atomic<uint64_t> last{0};
  return last += kFactBits + 1;
}

uint64_t contentOf(SDL_Texture* texture) {
  const auto content = reinterpret_cast<uint64_t>(SDL_GetTextureUserData(texture));
  if ((content & ~kFactBits) != 0) return content;
  const uint64_t fresh = freshContent() | content;
  setContent(texture, fresh);
  return fresh;
}

void setContent(SDL_Texture* texture, uint64_t content) {
  SDL_SetTextureUserData(texture, reinterpret_cast<void*>(content));
}

void markOpaque(SDL_Texture* texture) {
  if (texture) setContent(texture, contentOf(texture) | kOpaqueBit);
}

}  // namespace vendelo_sdl2
