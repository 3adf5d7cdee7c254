#include "tests/components/ImageListFixture.h"

#include <SDL_image.h>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "tests/components/AllocationCount.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/TestPaths.h"

using namespace imagelisttest;

TEST(ImageListNames, HaveTheirValues) {
  EXPECT_EQ(0, TImageList::LEFT);
  EXPECT_EQ(1, TImageList::RIGHT);
  EXPECT_EQ(2, TImageList::UP);
  EXPECT_EQ(3, TImageList::DOWN);
  EXPECT_EQ(0, TImageList::ALEFT);
  EXPECT_EQ(1, TImageList::ARIGHT);
  EXPECT_EQ(2, TImageList::AUP);
  EXPECT_EQ(3, TImageList::ADOWN);
}

TEST(ImageListWithoutRenderer, LoadImageSaysSoAndAppendsNothing) {
  TImageList list(nullptr, 0, 0, 10, 10, "frame[2]");
  testing::internal::CaptureStdout();
  list.LoadImage("whatever.png");
  EXPECT_EQ("Component frame[2]: The renderer was not yes set!!!\n", testing::internal::GetCapturedStdout());
  EXPECT_TRUE(list.getImages()->empty());
}

namespace {
// What a new list holds.
struct Inside : List {
  using List::List;
  using TImageList::Images;
  using TImageList::mAlignment;
  using TImageList::mAnimationDestRect;
  using TImageList::mAnimationEnabled;
  using TImageList::mAnimationStartRect;
  using TImageList::mDataOffsetX;
  using TImageList::mDataOffsetY;
  using TImageList::mDirection;
  using TImageList::mFitProportionally;
  using TImageList::mIsShowing;
  using TImageList::mpDataTexture;
  using TImageList::mResizeFactorX;
  using TImageList::mResizeFactorY;
  using TImageList::mTimeUntilHide;
};
}  // namespace

TEST_F(ImageList, StartsWithNothingShown) {
  Inside list(1, 2, 3, 4);
  EXPECT_EQ(-1, list.getCurrentImageIndex());
  EXPECT_EQ(0u, list.mTimeUntilHide);
  EXPECT_EQ(TImageList::LEFT, list.mDirection);
  EXPECT_EQ(nullptr, list.pAniTask);
  EXPECT_FALSE(list.mAnimationEnabled);
  EXPECT_FALSE(list.mIsShowing);
  EXPECT_EQ((SDL_Rect{0, 0, 0, 0}), list.mAnimationDestRect);
  EXPECT_EQ((SDL_Rect{0, 0, 0, 0}), list.mAnimationStartRect);
  EXPECT_EQ(nullptr, list.mpDataTexture);
  EXPECT_EQ(0, list.mDataOffsetX);
  EXPECT_EQ(0, list.mDataOffsetY);
  EXPECT_EQ(1.0f, list.mResizeFactorX);
  EXPECT_EQ(1.0f, list.mResizeFactorY);
  EXPECT_EQ(&list.Images, list.getImages());
  EXPECT_EQ(TImageList::ALEFT, list.mAlignment);
  EXPECT_FALSE(list.mFitProportionally);
}

TEST_F(ImageList, LoadImageRefusesAnEmptyNameAndKeepsANullForAMissingFile) {
  List list(0, 0, 10, 10);
  testing::internal::CaptureStdout();
  list.LoadImage("");
  EXPECT_EQ("The image name is empy\n", testing::internal::GetCapturedStdout());
  EXPECT_TRUE(list.getImages()->empty());

  testing::internal::CaptureStdout();
  list.LoadImage("/nowhere/nothing.png");
  testing::internal::GetCapturedStdout();
  ASSERT_EQ(1u, list.getImages()->size());
  EXPECT_EQ(nullptr, list.getImages()->at(0));
  list.DisplayImage(0, 0);
  EXPECT_EQ(0, list.getCurrentImageIndex());
  EXPECT_EQ(nullptr, list.GetTargetTexture());
  clear(0, 0, 0);
  list.draw();
  EXPECT_EQ(0, inked(0).w);
}

TEST_F(ImageList, LoadImageAppendsTheFile) {
  const std::string file = std::string(testpaths::binary) + "/imagelist.png";
  SDL_Surface* surface = SDL_CreateRGBSurfaceWithFormat(0, 7, 9, 24, SDL_PIXELFORMAT_RGB24);
  ASSERT_EQ(0, IMG_SavePNG(surface, file.c_str()));
  SDL_FreeSurface(surface);
  List list(0, 0, 10, 10);
  list.LoadImage(file);
  ASSERT_EQ(1u, list.getImages()->size());
  textures.push_back(list.getImages()->at(0));
  list.DisplayImage(0, 0);
  EXPECT_EQ((SDL_Rect{0, 0, 7, 9}), list.getSrcRect());
  std::filesystem::remove(file);
}

TEST_F(ImageList, ListsMayShareTheCallersVector) {
  std::vector<SDL_Texture*> shared;
  List one(0, 0, 10, 10), two(0, 0, 10, 10);
  const std::vector<SDL_Texture*>*const ownOfOne = one.getImages(), *const ownOfTwo = two.getImages();
  one.setImages(&shared);
  two.setImages(&shared);
  one.pushImage(solid(4, 5, red));
  EXPECT_TRUE(ownOfOne->empty());
  two.DisplayImage(0, 0);
  EXPECT_EQ(shared[0], two.GetTargetTexture());
  EXPECT_EQ(&shared, two.getImages());
  two.setImages(nullptr);
  EXPECT_EQ(ownOfTwo, two.getImages());
}

TEST_F(ImageList, MinusOneDoesNothingAtFirstAndClearsAfterAnImage) {
  List* list = make(0, 0);
  list->SetTargetTexture(list->getImages()->at(1));
  list->DisplayImage(-1, 0);  // the index is -1 already
  EXPECT_EQ(list->getImages()->at(1), list->GetTargetTexture());
  list->DisplayImage(0, 0);
  EXPECT_EQ(list->getImages()->at(0), list->GetTargetTexture());
  EXPECT_EQ((SDL_Rect{0, 0, 30, 20}), list->getSrcRect());
  list->DisplayImage(-1, 0);
  EXPECT_EQ(-1, list->getCurrentImageIndex());
  EXPECT_EQ(nullptr, list->GetTargetTexture());
}

TEST_F(ImageList, AnImageThatIsNoneHasNoSize) {
  List* list = make(0, 0);
  list->pushImage(nullptr);
  list->DisplayImage(0, 0);
  list->DisplayImage(2, 0);
  EXPECT_EQ(nullptr, list->GetTargetTexture());
  EXPECT_EQ((SDL_Rect{0, 0, 0, 0}), list->getSrcRect());
}

TEST_F(ImageList, AnIndexOfTheSizeIsStoredAndClearsTheImage) {
  List* list = make(0, 0);
  list->DisplayImage(1, 0);
  list->DisplayImage(3, 0);  // above the size: nothing
  EXPECT_EQ(1, list->getCurrentImageIndex());
  EXPECT_EQ(list->getImages()->at(1), list->GetTargetTexture());
  list->DisplayImage(2, 0);
  EXPECT_EQ(2, list->getCurrentImageIndex());
  EXPECT_EQ(nullptr, list->GetTargetTexture());
}

// An image of 100 by 60 at 40, 50, and data of 10 by 10.
class ImageListData : public ImageList {
 protected:
  SDL_Rect shown() {
    clear(0, 0, 0);
    list->draw();
    return inked(0);
  }
  List* list = make(40, 50);
  SDL_Texture* data = solid(10, 10, blue);
};

TEST_F(ImageListData, IsShownWithItsImage) {
  list->DisplayImage(0, 0, data, 100, -3);
  EXPECT_EQ((SDL_Rect{40, 47, 110, 63}), shown());
}

TEST_F(ImageListData, StaysWhenTheIndexIsTheOneShown) {
  list->DisplayImage(0, 0, data, 100, -3);
  list->DisplayImage(0, 0, nullptr, 1, 1);
  EXPECT_EQ((SDL_Rect{40, 47, 110, 63}), shown());
}

TEST_F(ImageListData, IsLeftAloneByTheShortForm) {
  list->DisplayImage(0, 0, data, 100, -3);
  list->DisplayImage(1, 0);
  EXPECT_EQ((SDL_Rect{40, 47, 110, 63}), shown());
  list->DisplayImage(-1, 0);
  EXPECT_EQ((SDL_Rect{140, 47, 10, 10}), shown()) << "also by one that clears the image";
}

TEST_F(ImageListData, GoesWithItsImage) {
  list->DisplayImage(0, 0, data, 100, -3);
  list->DisplayImage(2, 0, data, 5, 5);
  EXPECT_EQ(0, shown().w);
}

// A slide out goes as much further as the data hangs out.
TEST_F(ImageListData, TakesItsOffsetAlong) {
  list->SetAnimation(TImageList::LEFT);
  list->DisplayImage(0, 0, data, 100, -3);
  list->DisplayImage(2, 0, data, 5, 5);
  list->DisplayImage(1, 700);
  slideThrough(*list);
  list->Hide();
  slideThrough(*list);
  EXPECT_EQ(400, shownAt(*list).x);
}

TEST_F(ImageList, DrawsTheImageIntoItsRectangle) {
  List* list = make(40, 50);
  list->DisplayImage(0, 0);
  clear(0, 0, 0);
  list->draw();
  EXPECT_EQ((SDL_Rect{40, 50, 100, 60}), inked(0));
}

TEST_F(ImageList, ProportionalFit) {
  const struct {
    const char* name;
    int image;  // 0 is 30 by 20, 1 is 250 by 60, 2 is 50 by 150
    TImageList::TAlignment alignment;
    SDL_Rect expected;
  } rows[] = {{"a box larger than the image leaves its size", 0, TImageList::ALEFT, {40, 50, 30, 20}},
              {"right", 0, TImageList::ARIGHT, {110, 50, 30, 20}},
              {"up", 0, TImageList::AUP, {40, 50, 30, 20}},
              {"down", 0, TImageList::ADOWN, {40, 90, 30, 20}},
              {"wide", 1, TImageList::ALEFT, {40, 50, 100, 24}},
              {"wide, right", 1, TImageList::ARIGHT, {40, 50, 100, 24}},
              {"wide, down", 1, TImageList::ADOWN, {40, 86, 100, 24}},
              {"tall", 2, TImageList::AUP, {40, 50, 20, 60}},
              {"tall, right", 2, TImageList::ARIGHT, {120, 50, 20, 60}}};
  List list(40, 50, 100, 60);
  list.pushImage(solid(30, 20, red));
  list.pushImage(solid(250, 60, green));
  list.pushImage(solid(50, 150, blue));
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    list.SetFitProportionally(true, row.alignment);
    list.DisplayImage(row.image, 0);
    clear(0, 0, 0);
    list.draw();
    EXPECT_EQ(row.expected, inked(0));
  }
}

TEST_F(ImageList, AFittedSizeIsRounded) {
  const struct {
    int w, h;  // of the image, in a box of 100 by 60
    SDL_Rect expected;
  } rows[] = {{150, 70, {40, 50, 100, 47}},  // 46.67
              {150, 71, {40, 50, 100, 47}},  // 47.33
              {110, 90, {67, 50, 73, 60}},   // 73.33, at the right
              {112, 90, {65, 50, 75, 60}}};  // 74.67
  List list(40, 50, 100, 60);
  for (const auto& row : rows) list.pushImage(solid(row.w, row.h, red));
  for (int i = 0; i < 4; ++i) {
    list.SetFitProportionally(true, TImageList::ARIGHT);
    list.DisplayImage(i, 0);
    clear(0, 0, 0);
    list.draw();
    EXPECT_EQ(rows[i].expected, inked(0)) << i;
  }
  list.SetFitProportionally(true, TImageList::ADOWN);
  list.DisplayImage(0, 0);
  clear(0, 0, 0);
  list.draw();
  EXPECT_EQ((SDL_Rect{40, 63, 100, 47}), inked(0)) << "placed by the rounded size";
}

TEST_F(ImageList, AResizedSizeIsRoundedAfterTheFit) {
  List* list = make(40, 50);
  list->SetFitProportionally(true, TImageList::ALEFT);
  list->DisplayImage(0, 0);           // 30 by 20
  list->SetResizeFactor(0.92, 1.13);  // 27.6 by 22.6, at 36.8 and 46
  clear(0, 0, 0);
  list->draw();
  EXPECT_EQ((SDL_Rect{36, 46, 28, 23}), inked(0));
}

TEST_F(ImageList, ANegativePlaceIsCutTowardsNothing) {
  List* list = make(-15, -5);
  list->DisplayImage(0, 0);
  list->SetResizeFactor(0.5, 1.0);  // -7.5 and -2.5
  clear(0, 0, 0);
  list->draw();
  EXPECT_EQ((SDL_Rect{0, 0, 50 - 7, 60 - 2}), inked(0));
}

TEST_F(ImageList, AnExceptionEndsTheDrawInSilence) {
  struct Thrower : TGuiComponent {
    Thrower() : TGuiComponent(nullptr, 0, 0, 400, 200, "thrower") {}
    short getX() override { throw 7; }
  } thrower;
  auto* list = new List(10, 10, 100, 60);
  thrower.AddComponent(list);
  list->pushImage(solid(30, 20, red));
  list->DisplayImage(0, 0);
  clear(0, 0, 0);
  testing::internal::CaptureStdout();
  EXPECT_NO_THROW(list->draw());
  EXPECT_EQ("", testing::internal::GetCapturedStdout());
  EXPECT_EQ(0, inked(0).w);
}

TEST_F(ImageList, AnAngleOfNothingDoesNotTurn) {
  List* list = make(100, 70);
  list->DisplayImage(0, 0);
  list->setAngle(0.0);
  clear(0, 0, 0);
  list->draw();
  EXPECT_EQ((SDL_Rect{100, 70, 100, 60}), inked(0));
  list->setAngle(90.0);
  clear(0, 0, 0);
  list->draw();
  EXPECT_EQ((SDL_Rect{120, 50, 60, 100}), inked(0)) << "about its centre";
  list->setAngle(1.0);
  clear(0, 0, 0);
  list->draw();
  EXPECT_GT(inked(0).h, 60) << "one degree is a turn";
}

TEST_F(ImageList, TheResizeFactorOfXPlacesBothAxes) {
  const struct {
    double x, y;
    SDL_Rect expected;
  } rows[] = {{1.0, 0.5, {40, 50, 100, 30}}, {0.5, 1.0, {20, 25, 50, 60}}, {0.25, 0.75, {10, 12, 25, 45}}};
  List* list = make(40, 50);
  list->DisplayImage(0, 0);
  for (const auto& row : rows) {
    list->SetResizeFactor(row.x, row.y);
    clear(0, 0, 0);
    list->draw();
    EXPECT_EQ(row.expected, inked(0));
  }
}

TEST_F(ImageList, ARootStaysAtItsOwnPlace) {
  List list(40, 50, 100, 60);
  list.pushImage(solid(30, 20, red));
  list.DisplayImage(0, 0);
  list.SetResizeFactor(0.5, 0.5);
  clear(0, 0, 0);
  list.draw();
  EXPECT_EQ((SDL_Rect{40, 50, 50, 30}), inked(0));
}

TEST_F(ImageList, TheDataLiesUnderTheImageAtItsOwnSize) {
  List* list = make(40, 50);
  list->DisplayImage(0, 0, solid(60, 30, blue), -20, 45);
  clear(0, 0, 0);
  list->draw();
  EXPECT_EQ(0x0000ffu, pixel(21, 96));
  EXPECT_EQ(0xff0000u, pixel(41, 96));
  EXPECT_EQ(0x0000ffu, pixel(41, 112));
  EXPECT_EQ((SDL_Rect{20, 50, 120, 75}), inked(0));
  EXPECT_GOLDEN(renderer, "components/imagelist_data");
}

TEST_F(ImageList, AlphaAndRotation) {
  List* list = make(100, 70);
  list->DisplayImage(0, 0, solid(40, 20, blue), 100, 0);
  list->setAlpha(128);
  list->setAngle(-30.0);  // a negative angle does not turn
  clear(0, 0, 0);
  list->draw();
  EXPECT_EQ((SDL_Rect{100, 70, 140, 60}), inked(0));
  EXPECT_NEAR(128, static_cast<int>(pixel(110, 80) >> 16), 2);
  EXPECT_NEAR(128, static_cast<int>(pixel(210, 80) & 255), 2);
  list->setAngle(30.0);
  clear(0, 0, 0);
  list->draw();
  EXPECT_GOLDEN(renderer, "components/imagelist_rotated");
}

TEST_F(ImageList, ChildrenAreNotDrawn) {
  List* list = make(40, 50);
  auto* child = new Plain(0, 0);
  child->SetTargetTexture(solid(400, 200, blue));
  list->AddComponent(child);
  clear(0, 0, 0);
  list->draw();
  EXPECT_EQ(0, inked(0).w);
}

TEST_F(ImageList, TheShortFormAndTheSlideBelongToTheDrawThread) {
  List* list = make(0, 0);
  auto elsewhere = [](auto call) { std::thread(call).join(); };
  ChildProcess shortForm([&] { app.application().asMainThread([&] { list->DisplayImage(0, 0); }); });
  ChildProcess slide([&] { app.application().asMainThread([&] { list->AnimateTask(); }); });
  EXPECT_EQ(shortForm.end(), "signal 6");
  EXPECT_EQ(slide.end(), "signal 6");
  elsewhere([&] { list->DisplayImage(1, 0, nullptr, 0, 0); });  // the long form may come from anywhere
  EXPECT_EQ(1, list->getCurrentImageIndex());
}

TEST_F(ImageList, AFrameTakesNothingFromTheHeap) {
  List* list = make(40, 50);
  list->SetFitProportionally(true, TImageList::ARIGHT);
  list->DisplayImage(0, 0, solid(60, 30, blue), 1, 1);
  list->draw();
  const long before = allocations::count;
  list->draw();
  EXPECT_EQ(before, allocations::count);
}
