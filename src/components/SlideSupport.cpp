#include "components/SlideSupport.h"

#include "vendelo-sdl2/TApplication.h"

using namespace vendelo_sdl2;

namespace slide {

SDL_Point screenSize() {
  SDL_Point size{1920, 1080};
  if (!pApp) return size;
  size.x = static_cast<int>(pApp->GetParam("ScreenW", PARAM_CACHE)->AsInteger(size.x));
  size.y = static_cast<int>(pApp->GetParam("ScreenH", PARAM_CACHE)->AsInteger(size.y));
  return size;
}

void removeTasksOf(void* component) {
  if (!pApp) return;
  while (TTimedTaskHandler* task = pApp->GetTimedTask(component)) pApp->RemoveTimedTask(task, true);
}

bool stepDown(int& value, int goal, int step) {
  if (value > goal) value -= step;
  if (value > goal) return false;
  value = goal;
  return true;
}

bool stepUp(int& value, int goal, int step) {
  if (value < goal) value += step;
  if (value < goal) return false;
  value = goal;
  return true;
}

}  // namespace slide
