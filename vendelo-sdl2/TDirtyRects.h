#pragma once

#include <SDL.h>
#include <vector>

namespace vendelo_sdl2 {

bool isEmpty(const SDL_Rect& rect);
SDL_Rect common(const SDL_Rect& a, const SDL_Rect& b);  // of size 0 where there is nothing
bool contains(const SDL_Rect& outer, const SDL_Rect& inner);
SDL_Rect around(const SDL_Rect& a, const SDL_Rect& b);

// The parts of a picture that are other than before, as few rectangles: what lies close together becomes one, and
// where most of the picture has changed it is the whole of it. Takes no memory once it has been made. One thread.
class TDirtyRects {
 public:
  TDirtyRects() { mRects.reserve(kMost + 1); }
  // Starts anew, for a picture of this size.
  void reset(const SDL_Rect& picture);
  // What lies outside of the picture does not count.
  void add(SDL_Rect rect);
  // All of it lies in one rectangle then, and in no other one.
  void addUncut(SDL_Rect rect);
  void addWhole();
  bool isWhole() const { return mRects.size() == 1 && contains(mRects.front(), mPicture); }
  const std::vector<SDL_Rect>& rects() const { return mRects; }

 private:
  static constexpr size_t kMost = 24;

  SDL_Rect mPicture{0, 0, 0, 0};
  std::vector<SDL_Rect> mRects;
};

}  // namespace vendelo_sdl2
