#pragma once

#include <SDL.h>
#include <cstdlib>

#include "tests/components/WidgetFixture.h"
#include "vendelo-sdl2/TGuiComponent.h"

// A screen of 400 by 200 pixels for widgets that slide in and out of it, and a parent of its size at the origin.
class SlideTest : public WidgetTest {
 protected:
  SlideTest() {
    vendelo_sdl2::pApp->SetParam<int>("ScreenW", 400, vendelo_sdl2::PARAM_CACHE, "", "", false);
    vendelo_sdl2::pApp->SetParam<int>("ScreenH", 200, vendelo_sdl2::PARAM_CACHE, "", "", false);
  }

  struct Plain : vendelo_sdl2::TGuiComponent {
    Plain(int x, int y) : TGuiComponent(nullptr, x, y, 400, 200, "parent") {}
  };

  // Lets the slide's task run until it disables itself; the number of its steps.
  template <typename Widget>
  int slideThrough(Widget& widget, vendelo_sdl2::TimedTaskType set) {
    int steps = 0;
    for (; widget.pAniTask && widget.pAniTask->IsEnabled() && steps < 2000; ++steps) {
      clock.advance(31);
      vendelo_sdl2::pApp->ProcessTasks(set);
    }
    return steps;
  }

  // Where the widget stands on the screen in a draw of now.
  template <typename Widget>
  SDL_Point shownAt(Widget& widget) {
    widget.draw();
    return {widget.getX(), widget.getY()};
  }

  // The pixels between two places, along both axes.
  static int distance(SDL_Point a, SDL_Point b) { return std::abs(a.x - b.x) + std::abs(a.y - b.y); }

  Plain parent{0, 0};
};
