#pragma once

#include <SDL.h>

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
    for (; widget.pAniTask->IsEnabled() && steps < 2000; ++steps) {
      clock.advance(31);
      vendelo_sdl2::pApp->ProcessTasks(set);
    }
    return steps;
  }

  Plain parent{0, 0};
};
