#pragma once

#include "components/TImageList.h"
#include "tests/components/SlideFixture.h"

// What the tests of the image list share.
namespace imagelisttest {

using namespace vendelo_sdl2;

const SDL_Color red{255, 0, 0, 255}, green{0, 255, 0, 255}, blue{0, 0, 255, 255};

struct List : TImageList {
  List(int x, int y, int w, int h) : TImageList(nullptr, x, y, w, h, "list") {}
  using TImageList::pAniTask;
};

class ImageList : public SlideTest {
 protected:
  // A list of two images, 30 by 20 and 50 by 40, under a parent at the origin.
  template <typename AnyList = List>
  AnyList* make(int x, int y) {
    auto* list = new AnyList(x, y, 100, 60);
    parent.AddComponent(list);
    list->pushImage(solid(30, 20, red));
    list->pushImage(solid(50, 40, green));
    return list;
  }
  // One step of the slide; where the list is shown then.
  SDL_Point step(List& list) {
    clock.advance(31);
    vendelo_sdl2::pApp->ProcessTasks(TASK_DRAW);
    return shownAt(list);
  }
  int slideThrough(List& list) { return SlideTest::slideThrough(list, TASK_DRAW); }
};

}  // namespace imagelisttest
