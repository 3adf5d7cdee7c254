#include "components/SlideSupport.h"

#include "vendelo-sdl2/TApplication.h"

using namespace vendelo_sdl2;

namespace slide {
namespace {

// Width and height of the logical screen, from the parameters "ScreenW" and "ScreenH"; 1920 by 1080 without them.
SDL_Point screenSize() {
  SDL_Point size{1920, 1080};
  if (!pApp) return size;
  size.x = static_cast<int>(pApp->GetParam("ScreenW", PARAM_CACHE)->AsInteger(size.x));
  size.y = static_cast<int>(pApp->GetParam("ScreenH", PARAM_CACHE)->AsInteger(size.y));
  return size;
}

}  // namespace

SDL_Rect startOf(Direction direction, const SDL_Rect& rest) {
  const SDL_Point screen = screenSize();
  SDL_Rect start = rest;
  switch (direction) {
    case LEFT:
      start.x = screen.x;
      break;
    case RIGHT:
      start.x = -rest.w;
      break;
    case UP:
      start.y = screen.y;
      break;
    case DOWN:
      start.y = -rest.h;
      break;
  }
  return start;
}

bool step(Direction direction, bool in, int pixels, const SDL_Point& goal, int& x, int& y) {
  const bool across = direction == LEFT || direction == RIGHT;
  int& value = across ? x : y;
  const int end = across ? goal.x : goal.y;
  const bool rises = (direction == RIGHT || direction == DOWN) == in;
  if (rises ? value < end : value > end) value += rises ? pixels : -pixels;
  if (rises ? value < end : value > end) return false;
  value = end;
  return true;
}

}  // namespace slide
