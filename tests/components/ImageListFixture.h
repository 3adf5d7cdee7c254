#pragma once

#include "components/TImageList.h"
#include "tests/components/SlideFixture.h"

// What the tests of the image list share.
namespace imagelisttest {

using namespace vendelo_sdl2;

const SDL_Color red{255, 0, 0, 255}, green{0, 255, 0, 255}, blue{0, 0, 255, 255};

struct List : TImageList {
  List(int x, int y, int w, int h) : TImageList(nullptr, x, y, w, h, "list") {}
  using TImageList::current_image_index;
  using TImageList::Images;
  using TImageList::mAlignment;
  using TImageList::mAnimationDestRect;
  using TImageList::mAnimationEnabled;
  using TImageList::mAnimationStartRect;
  using TImageList::mDataOffsetX;
  using TImageList::mDataOffsetY;
  using TImageList::mDestRect;
  using TImageList::mDirection;
  using TImageList::mFitProportionally;
  using TImageList::mIsShowing;
  using TImageList::mOrigPosX;
  using TImageList::mOrigPosY;
  using TImageList::mpDataTexture;
  using TImageList::mResizeFactorX;
  using TImageList::mResizeFactorY;
  using TImageList::mSrcRect;
  using TImageList::mTimeUntilHide;
  using TImageList::pAniTask;
  using TImageList::pImages;
};

class ImageList : public SlideTest {
 protected:
  // A list of two images, 30 by 20 and 50 by 40, under a parent at the origin.
  List* make(int x, int y) {
    auto* list = new List(x, y, 100, 60);
    parent.AddComponent(list);
    list->pushImage(solid(30, 20, red));
    list->pushImage(solid(50, 40, green));
    return list;
  }
  int slideThrough(List& list) { return SlideTest::slideThrough(list, TASK_DRAW); }
};

}  // namespace imagelisttest
