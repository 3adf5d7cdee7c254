#include "vendelo-sdl2/TDirtyRects.h"

#include <algorithm>
#include <cstdint>
#include <limits>

namespace vendelo_sdl2 {
namespace {

// Pixels that may be drawn in vain for one rectangle less.
constexpr int64_t kWorthARectangle = 6000;

int64_t area(const SDL_Rect& rect) { return int64_t{rect.w} * rect.h; }

int64_t waste(const SDL_Rect& a, const SDL_Rect& b) { return area(around(a, b)) - area(a) - area(b); }

}  // namespace

bool isEmpty(const SDL_Rect& rect) { return rect.w <= 0 || rect.h <= 0; }

SDL_Rect common(const SDL_Rect& a, const SDL_Rect& b) {
  const int64_t x = std::max(a.x, b.x), y = std::max(a.y, b.y);
  const int64_t w = std::min(int64_t{a.x} + a.w, int64_t{b.x} + b.w) - x;
  const int64_t h = std::min(int64_t{a.y} + a.h, int64_t{b.y} + b.h) - y;
  if (w <= 0 || h <= 0) return {0, 0, 0, 0};
  return {static_cast<int>(x), static_cast<int>(y), static_cast<int>(w), static_cast<int>(h)};
}

bool contains(const SDL_Rect& outer, const SDL_Rect& inner) {
  return outer.x <= inner.x && outer.y <= inner.y && int64_t{outer.x} + outer.w >= int64_t{inner.x} + inner.w &&
         int64_t{outer.y} + outer.h >= int64_t{inner.y} + inner.h;
}

SDL_Rect around(const SDL_Rect& a, const SDL_Rect& b) {
  const int x = std::min(a.x, b.x), y = std::min(a.y, b.y);
  return {x, y, std::max(a.x + a.w, b.x + b.w) - x, std::max(a.y + a.h, b.y + b.h) - y};
}

void TDirtyRects::reset(const SDL_Rect& picture) {
  mPicture = picture;
  mRects.clear();
}

void TDirtyRects::addUncut(SDL_Rect rect) {
  for (size_t i = 0; i < mRects.size();) {
    if (isEmpty(common(mRects[i], rect))) {
      ++i;
      continue;
    }
    rect = around(mRects[i], rect);
    mRects[i] = mRects.back();
    mRects.pop_back();
    i = 0;
  }
  add(rect);
}

void TDirtyRects::addWhole() { mRects.assign(1, mPicture); }

void TDirtyRects::add(SDL_Rect rect) {
  rect = common(rect, mPicture);
  if (isEmpty(rect)) return;
  for (size_t i = 0; i < mRects.size();) {
    if (waste(mRects[i], rect) > kWorthARectangle) {
      ++i;
      continue;
    }
    rect = around(mRects[i], rect);
    mRects[i] = mRects.back();
    mRects.pop_back();
    i = 0;  // what was too far away may now be near
  }
  mRects.push_back(rect);
  if (mRects.size() > kMost) {
    mRects.pop_back();
    const auto nearest = std::min_element(mRects.begin(), mRects.end(), [&rect](const auto& a, const auto& b) {
      return waste(a, rect) < waste(b, rect);
    });
    rect = around(*nearest, rect);
    *nearest = mRects.back();
    mRects.pop_back();
    return add(rect);
  }
  int64_t sum = 0;
  for (const SDL_Rect& each : mRects) sum += area(each);
  if (sum >= area(mPicture) * 3 / 4) addWhole();
}

}  // namespace vendelo_sdl2
