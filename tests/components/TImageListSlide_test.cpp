#include "tests/components/ImageListFixture.h"

using namespace imagelisttest;

namespace {
// Nobody has set "ScreenW" and "ScreenH".
class ImageListWithoutScreenSize : public WidgetTest {};
}  // namespace

TEST_F(ImageListWithoutScreenSize, SlidesBeginBehindTheScreenOfTheTerminal) {
  List list(10, 20, 100, 60);
  list.SetAnimation(TImageList::LEFT);
  EXPECT_EQ((SDL_Rect{1920, 20, 100, 60}), list.mAnimationStartRect);
  list.SetAnimation(TImageList::UP);
  EXPECT_EQ((SDL_Rect{10, 1080, 100, 60}), list.mAnimationStartRect);
}

TEST_F(ImageList, WithoutSlideModeTheTimeIsIgnored) {
  List* list = make(10, 10);
  list->DisplayImage(0, 500);
  EXPECT_EQ(nullptr, list->pAniTask);
  EXPECT_EQ(0u, list->mTimeUntilHide);
  EXPECT_EQ(10, list->mOrigPosX);
}

TEST_F(ImageList, SetAnimationKeepsThePlaceAndKnowsTheStart) {
  const struct {
    TImageList::TAnimationDirection direction;
    SDL_Rect start;
  } rows[] = {{TImageList::LEFT, {400, 20, 100, 60}},
              {TImageList::RIGHT, {-100, 20, 100, 60}},
              {TImageList::UP, {10, 200, 100, 60}},
              {TImageList::DOWN, {10, -60, 100, 60}}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.direction);
    List list(10, 20, 100, 60);
    list.SetAnimation(row.direction);
    EXPECT_TRUE(list.mAnimationEnabled);
    EXPECT_EQ(row.direction, list.mDirection);
    EXPECT_EQ((SDL_Rect{10, 20, 100, 60}), list.mAnimationDestRect);
    EXPECT_EQ(row.start, list.mAnimationStartRect);
    EXPECT_EQ(10, list.mOrigPosX);
    EXPECT_EQ(20, list.mOrigPosY);
  }
}

TEST_F(ImageList, SlidesInRestsSlidesOutAndClears) {
  const struct {
    TImageList::TAnimationDirection direction;
    int startX, startY;
    int stepsIn, stepsOut;
    int lastX, lastY;  // where the slide out ends
  } rows[] = {         // from 400 to 12 by 5; out to 400 - 4
              {TImageList::LEFT, 400, 31, 78, 77, 396, 31},
              // from -100 to 12; out to -100 - 4 - 10
              {TImageList::RIGHT, -100, 31, 23, 26, -114, 31},
              // from 200 to 31; back to 200
              {TImageList::UP, 12, 200, 34, 34, 12, 200},
              // from -60 to 31; back to -60
              {TImageList::DOWN, 12, -60, 19, 19, 12, -60}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.direction);
    List* list = make(12, 31);
    list->SetAnimation(row.direction);
    list->DisplayImage(0, 700, solid(10, 10, blue), 4, 0);
    EXPECT_EQ(row.startX, list->mOrigPosX);
    EXPECT_EQ(row.startY, list->mOrigPosY);
    EXPECT_TRUE(list->mIsShowing);
    EXPECT_EQ(700u, list->mTimeUntilHide);
    ASSERT_NE(nullptr, list->pAniTask);
    EXPECT_EQ("TImageList::AnimateTask, 30", list->pAniTask->GetName());
    EXPECT_EQ(30u, list->pAniTask->GetInterval());
    EXPECT_EQ(TTimedTaskHandler::ENDLESS, list->pAniTask->GetType());
    EXPECT_TRUE(pApp->IsTimedTaskValid(list->pAniTask, TASK_DRAW));

    EXPECT_EQ(row.stepsIn, slideThrough(*list));
    EXPECT_EQ(12, list->mOrigPosX);
    EXPECT_EQ(31, list->mOrigPosY);
    TTimedTaskHandler* hide = pApp->GetTimedTask(list);
    ASSERT_NE(nullptr, hide);
    EXPECT_EQ("TImageList::Hide, mTimeUntilHide", hide->GetName());
    EXPECT_TRUE(pApp->IsTimedTaskValid(hide, TASK_NORMAL));
    EXPECT_EQ(700u, hide->GetInterval());
    EXPECT_EQ(TTimedTaskHandler::EXECUTE_ONCE, hide->GetType());

    clock.advance(700);
    pApp->ProcessTasks(TASK_NORMAL);
    EXPECT_FALSE(list->pAniTask->IsEnabled()) << "hidden before its time";
    clock.advance(1);
    pApp->ProcessTasks(TASK_NORMAL);
    EXPECT_TRUE(list->pAniTask->IsEnabled());
    EXPECT_FALSE(list->mIsShowing);

    EXPECT_EQ(row.stepsOut, slideThrough(*list));
    EXPECT_EQ(row.lastX, list->mOrigPosX);
    EXPECT_EQ(row.lastY, list->mOrigPosY);
    EXPECT_EQ(-1, list->getCurrentImageIndex());
    EXPECT_EQ(nullptr, list->GetTargetTexture());
    EXPECT_EQ(nullptr, list->mpDataTexture);
    EXPECT_TRUE(list->isVisible());
    parent.RemoveComponent(list, true);
  }
}

TEST_F(ImageList, ANewImageDuringASlideDoesNotRestartIt) {
  List* list = make(12, 31);
  list->SetAnimation(TImageList::RIGHT);
  list->DisplayImage(0, 700);
  clock.advance(31);
  pApp->ProcessTasks(TASK_DRAW);
  EXPECT_EQ(-95, list->mOrigPosX);
  list->DisplayImage(1, 900);
  EXPECT_EQ(list->Images[1], list->GetTargetTexture());
  EXPECT_EQ(-95, list->mOrigPosX);
  EXPECT_EQ(700u, list->mTimeUntilHide);
  list->DisplayImage(1, 900);  // and the same index again does nothing at all
  EXPECT_EQ(-95, list->mOrigPosX);
}

TEST_F(ImageList, TheDataCountOnlyAlongTheSlide) {
  for (const auto direction : {TImageList::UP, TImageList::DOWN}) {
    List* list = make(12, 31);
    list->SetAnimation(direction);
    list->DisplayImage(0, 700, solid(10, 10, blue), 4, 50);
    slideThrough(*list);
    list->Hide();
    slideThrough(*list);
    EXPECT_EQ(12, list->mOrigPosX);
    EXPECT_EQ(direction == TImageList::UP ? 200 : -60, list->mOrigPosY) << "the start, whatever the data's offset";
    EXPECT_EQ(-1, list->getCurrentImageIndex());
    EXPECT_EQ(0, list->mDataOffsetX);
    EXPECT_EQ(0, list->mDataOffsetY);
    parent.RemoveComponent(list, true);
  }
}

TEST_F(ImageList, OnlyATimeStartsASlide) {
  List* list = make(12, 31);
  list->SetAnimation(TImageList::LEFT);
  list->DisplayImage(0, 0);
  EXPECT_EQ(nullptr, list->pAniTask);
  EXPECT_EQ(12, list->mOrigPosX);
  EXPECT_FALSE(list->mIsShowing);
  list->DisplayImage(1, 1);
  ASSERT_NE(nullptr, list->pAniTask);
  EXPECT_EQ(1u, list->mTimeUntilHide);
  EXPECT_EQ(400, list->mOrigPosX);
}

TEST_F(ImageList, TheSlidesTaskIsMadeOnce) {
  List* list = make(12, 31);
  list->SetAnimation(TImageList::DOWN);
  list->DisplayImage(0, 700);
  TTimedTaskHandler* const task = list->pAniTask;
  slideThrough(*list);
  list->Hide();
  EXPECT_EQ(task, list->pAniTask);
  EXPECT_TRUE(task->IsEnabled());
  slideThrough(*list);
  list->DisplayImage(0, 700);
  EXPECT_EQ(task, list->pAniTask);
  EXPECT_TRUE(task->IsEnabled());
  EXPECT_EQ(-60, list->mOrigPosY);
}

TEST_F(ImageList, HideInSlideModeGoesOutFromTheRestingPlace) {
  List* list = make(12, 31);
  list->SetAnimation(TImageList::RIGHT);
  list->mOrigPosX = 300;
  list->mOrigPosY = 77;
  list->Hide();
  EXPECT_TRUE(list->isVisible());
  EXPECT_EQ(12, list->mOrigPosX);
  EXPECT_EQ(77, list->mOrigPosY);  // only along the slide
  EXPECT_FALSE(list->mIsShowing);
  ASSERT_NE(nullptr, list->pAniTask);
  EXPECT_TRUE(list->pAniTask->IsEnabled());

  List* upright = new List(12, 31, 100, 60);
  upright->SetAnimation(TImageList::DOWN);
  upright->mOrigPosX = 300;
  upright->mOrigPosY = 77;
  upright->Hide();
  EXPECT_EQ(300, upright->mOrigPosX);
  EXPECT_EQ(31, upright->mOrigPosY);
  delete upright;
}

TEST_F(ImageList, HideOutOfSlideModeHides) {
  List* list = make(0, 0);
  list->Hide();
  EXPECT_FALSE(list->isVisible());
  EXPECT_EQ(nullptr, list->pAniTask);
}

TEST_F(ImageList, SetAnimationIntervalSetsTheRest) {
  List list(0, 0, 10, 10);
  list.SetAnimationInterval(321);
  EXPECT_EQ(321u, list.mTimeUntilHide);
}

TEST_F(ImageList, ItsTasksGoWithIt) {
  List* list = make(12, 31);
  list->SetAnimation(TImageList::RIGHT);
  list->DisplayImage(0, 700);
  slideThrough(*list);  // leaves the slide's task and the one that hides
  SDL_Texture* image = list->Images[0];
  parent.RemoveComponent(list, true);
  EXPECT_EQ(nullptr, pApp->GetTimedTask(list));
  Uint32 format = 0;
  EXPECT_EQ(0, SDL_QueryTexture(image, &format, nullptr, nullptr, nullptr)) << "the textures are not the list's";
}

TEST_F(ImageList, WithoutAnApplicationNobodyMovesIt) {
  TApplication* const application = std::exchange(pApp, nullptr);
  {
    List list(10, 20, 100, 60);
    list.pushImage(solid(30, 20, red));
    list.SetAnimation(TImageList::UP);
    EXPECT_EQ(1080, list.mAnimationStartRect.y) << "the screen of the terminal";
    list.DisplayImage(0, 500, nullptr, 0, 0);
    EXPECT_TRUE(list.mIsShowing);
    EXPECT_EQ(1080, list.mOrigPosY);
    EXPECT_EQ(nullptr, list.pAniTask);
    for (int i = 0; i < 300; ++i) list.AnimateTask();
    EXPECT_EQ(20, list.mOrigPosY) << "it rests, and nothing hides it";
    list.Hide();
    EXPECT_EQ(nullptr, list.pAniTask);
    EXPECT_FALSE(list.mIsShowing);
  }
  pApp = application;
}
