#include "tests/components/ImageListFixture.h"

using namespace imagelisttest;

namespace {
// Nobody has set "ScreenW" and "ScreenH".
class ImageListWithoutScreenSize : public WidgetTest {};
}  // namespace

TEST_F(ImageListWithoutScreenSize, SlidesBeginBehindTheScreenOfTheTerminal) {
  const struct {
    TImageList::TAnimationDirection direction;
    SDL_Point start;
  } rows[] = {{TImageList::LEFT, {1920, 20}}, {TImageList::UP, {10, 1080}}};
  for (const auto& row : rows) {
    TGuiComponent parent(nullptr, 0, 0, 400, 200, "parent");
    List list(10, 20, 100, 60);
    list.setParent(&parent);
    list.pushImage(solid(30, 20, red));
    list.SetAnimation(row.direction);
    list.DisplayImage(0, 500);
    list.draw();
    EXPECT_EQ(row.start, (SDL_Point{list.getX(), list.getY()}));
  }
}

TEST_F(ImageList, WithoutSlideModeTheTimeIsIgnored) {
  List* list = make(10, 10);
  list->DisplayImage(0, 500);
  EXPECT_EQ(nullptr, pApp->GetTimedTask(list));
  EXPECT_EQ((SDL_Point{10, 10}), shownAt(*list));
}

TEST_F(ImageList, SetAnimationKeepsThePlaceAndKnowsTheStart) {
  const struct {
    TImageList::TAnimationDirection direction;
    SDL_Point start;
  } rows[] = {{TImageList::LEFT, {400, 20}},
              {TImageList::RIGHT, {-100, 20}},
              {TImageList::UP, {10, 200}},
              {TImageList::DOWN, {10, -60}}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.direction);
    List* list = make(10, 20);
    list->SetAnimation(row.direction);
    EXPECT_EQ((SDL_Point{10, 20}), shownAt(*list));
    list->DisplayImage(0, 700);
    EXPECT_EQ(row.start, shownAt(*list));
    EXPECT_EQ(5, distance(row.start, step(*list)));
    slideThrough(*list);
    EXPECT_EQ((SDL_Point{10, 20}), shownAt(*list));
    parent.RemoveComponent(list, true);
  }
}

TEST_F(ImageList, TheSlideIsAnEndlessTaskOfTheDrawThread) {
  List* list = make(12, 31);
  list->SetAnimation(TImageList::LEFT);
  list->DisplayImage(0, 700);
  ASSERT_NE(nullptr, list->pAniTask);
  EXPECT_EQ("TImageList::AnimateTask, 30", list->pAniTask->GetName());
  EXPECT_EQ(30u, list->pAniTask->GetInterval());
  EXPECT_EQ(TTimedTaskHandler::ENDLESS, list->pAniTask->GetType());
  EXPECT_TRUE(pApp->IsTimedTaskValid(list->pAniTask, TASK_DRAW));
}

TEST_F(ImageList, TheTimedHideIsAOneShotOfTheMainThread) {
  List* list = make(12, 31);
  list->SetAnimation(TImageList::LEFT);
  list->DisplayImage(0, 700);
  slideThrough(*list);
  TTimedTaskHandler* hide = pApp->GetTimedTask(list);
  ASSERT_NE(nullptr, hide);
  EXPECT_EQ("TImageList::Hide, mTimeUntilHide", hide->GetName());
  EXPECT_TRUE(pApp->IsTimedTaskValid(hide, TASK_NORMAL));
  EXPECT_EQ(700u, hide->GetInterval());
  EXPECT_EQ(TTimedTaskHandler::EXECUTE_ONCE, hide->GetType());
}

TEST_F(ImageList, HidesWhenItHasRestedForItsTime) {
  List* list = make(12, 31);
  list->SetAnimation(TImageList::DOWN);
  list->DisplayImage(0, 700);
  slideThrough(*list);
  clock.advance(700);
  pApp->ProcessTasks(TASK_NORMAL);
  EXPECT_FALSE(list->pAniTask->IsEnabled()) << "hidden before its time";
  clock.advance(1);
  pApp->ProcessTasks(TASK_NORMAL);
  EXPECT_TRUE(list->pAniTask->IsEnabled());
  EXPECT_EQ((SDL_Point{12, 26}), step(*list)) << "on the way out";
}

TEST_F(ImageList, SlidesInToItsPlaceAndOutWithItsData) {
  const struct {
    TImageList::TAnimationDirection direction;
    SDL_Point start;
    int stepsIn, stepsOut;
    SDL_Point last;  // where the slide out ends
  } rows[] = {       // from 400 to 12 by 5; out to 400 - 4
              {TImageList::LEFT, {400, 31}, 78, 77, {396, 31}},
              // from -100 to 12; out to -100 - 4 - 10
              {TImageList::RIGHT, {-100, 31}, 23, 26, {-114, 31}},
              // from 200 to 31; back to 200
              {TImageList::UP, {12, 200}, 34, 34, {12, 200}},
              // from -60 to 31; back to -60
              {TImageList::DOWN, {12, -60}, 19, 19, {12, -60}}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.direction);
    List* list = make(12, 31);
    list->SetAnimation(row.direction);
    list->DisplayImage(0, 700, solid(10, 10, blue), 4, 0);
    EXPECT_EQ(row.start, shownAt(*list));
    EXPECT_EQ(row.stepsIn, slideThrough(*list));
    EXPECT_EQ((SDL_Point{12, 31}), shownAt(*list));
    list->Hide();
    EXPECT_EQ(row.stepsOut, slideThrough(*list));
    EXPECT_EQ(row.last, shownAt(*list));
    parent.RemoveComponent(list, true);
  }
}

TEST_F(ImageList, TheEndOfTheSlideOutClearsImageAndData) {
  List* list = make(12, 31);
  list->SetAnimation(TImageList::UP);
  list->DisplayImage(0, 700, solid(10, 10, blue), 4, 0);
  list->Hide();
  slideThrough(*list);
  EXPECT_EQ(-1, list->getCurrentImageIndex());
  EXPECT_EQ(nullptr, list->GetTargetTexture());
  EXPECT_TRUE(list->isVisible());
  list->setY(0);
  clear(0, 0, 0);
  list->draw();
  EXPECT_EQ(0, inked(0).w);
}

TEST_F(ImageList, ANewImageDuringASlideDoesNotRestartIt) {
  List* list = make(12, 31);
  list->SetAnimation(TImageList::RIGHT);
  list->DisplayImage(0, 700);
  EXPECT_EQ(-95, step(*list).x);
  list->DisplayImage(1, 900);
  EXPECT_EQ(list->getImages()->at(1), list->GetTargetTexture());
  EXPECT_EQ(-95, shownAt(*list).x);
  list->DisplayImage(1, 900);  // and the same index again does nothing at all
  EXPECT_EQ(-95, shownAt(*list).x);
  slideThrough(*list);
  EXPECT_EQ(700u, pApp->GetTimedTask(list)->GetInterval()) << "the time of the image that began it";
}

TEST_F(ImageList, TheDataCountOnlyAlongTheSlide) {
  for (const auto direction : {TImageList::UP, TImageList::DOWN}) {
    List* list = make(12, 31);
    list->SetAnimation(direction);
    list->DisplayImage(0, 700, solid(10, 10, blue), 4, 50);
    slideThrough(*list);
    list->Hide();
    slideThrough(*list);
    EXPECT_EQ((SDL_Point{12, direction == TImageList::UP ? 200 : -60}), shownAt(*list))
      << "the start, whatever the data's offset";
    EXPECT_EQ(-1, list->getCurrentImageIndex());
    parent.RemoveComponent(list, true);
  }
}

// A horizontal slide out of another image goes no further than that one needs.
TEST_F(ImageList, TheOffsetOfTheDataGoesWithThem) {
  List* list = make(12, 31);
  list->SetAnimation(TImageList::LEFT);
  list->DisplayImage(0, 700, solid(10, 10, blue), 40, 0);
  slideThrough(*list);
  list->Hide();
  slideThrough(*list);
  ASSERT_EQ(360, shownAt(*list).x);
  list->DisplayImage(1, 700);
  slideThrough(*list);
  list->Hide();
  slideThrough(*list);
  EXPECT_EQ(400, shownAt(*list).x);
}

TEST_F(ImageList, OnlyATimeStartsASlide) {
  List* list = make(12, 31);
  list->SetAnimation(TImageList::LEFT);
  list->DisplayImage(0, 0);
  EXPECT_EQ(nullptr, pApp->GetTimedTask(list));
  EXPECT_EQ(12, shownAt(*list).x);
  list->DisplayImage(1, 1);
  EXPECT_EQ(400, shownAt(*list).x);
  slideThrough(*list);
  EXPECT_EQ(1u, pApp->GetTimedTask(list)->GetInterval());
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
  EXPECT_EQ(-60, shownAt(*list).y);
}

TEST_F(ImageList, HideInSlideModeGoesOutFromTheRestingPlaceAlongTheSlide) {
  const struct {
    TImageList::TAnimationDirection direction;
    SDL_Point from, next;
  } rows[] = {{TImageList::RIGHT, {12, 77}, {7, 77}}, {TImageList::DOWN, {300, 31}, {300, 26}}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.direction);
    List* list = make(12, 31);
    list->SetAnimation(row.direction);
    list->setX(300);
    list->setY(77);
    list->Hide();
    EXPECT_TRUE(list->isVisible());
    EXPECT_EQ(row.from, shownAt(*list));
    EXPECT_EQ(row.next, step(*list));
    parent.RemoveComponent(list, true);
  }
}

TEST_F(ImageList, HideOutOfSlideModeHides) {
  List* list = make(0, 0);
  list->Hide();
  EXPECT_FALSE(list->isVisible());
  EXPECT_EQ(nullptr, list->pAniTask);
}

TEST_F(ImageList, SetAnimationIntervalSetsTheRest) {
  List* list = make(12, 31);
  list->SetAnimation(TImageList::RIGHT);
  list->DisplayImage(0, 700);
  list->SetAnimationInterval(321);
  slideThrough(*list);
  EXPECT_EQ(321u, pApp->GetTimedTask(list)->GetInterval());
}

TEST_F(ImageList, ItsTasksGoWithIt) {
  List* list = make(12, 31);
  list->SetAnimation(TImageList::RIGHT);
  list->DisplayImage(0, 700);
  slideThrough(*list);  // leaves the slide's task and the one that hides
  SDL_Texture* image = list->getImages()->at(0);
  parent.RemoveComponent(list, true);
  EXPECT_EQ(nullptr, pApp->GetTimedTask(list));
  Uint32 format = 0;
  EXPECT_EQ(0, SDL_QueryTexture(image, &format, nullptr, nullptr, nullptr)) << "the textures are not the list's";
}

TEST_F(ImageList, WithoutAnApplicationNobodyMovesIt) {
  TApplication* const application = std::exchange(pApp, nullptr);
  {
    List list(10, 20, 100, 60);
    list.setParent(&parent);
    list.pushImage(solid(30, 20, red));
    list.SetAnimation(TImageList::UP);
    list.DisplayImage(0, 500, nullptr, 0, 0);
    EXPECT_EQ(1080, shownAt(list).y) << "the screen of the terminal";
    EXPECT_EQ(nullptr, list.pAniTask);
    for (int i = 0; i < 300; ++i) list.AnimateTask();
    EXPECT_EQ(20, shownAt(list).y) << "it rests, and nothing hides it";
    list.Hide();
    EXPECT_EQ(nullptr, list.pAniTask);
    list.AnimateTask();
    EXPECT_EQ(25, shownAt(list).y) << "on the way out";
  }
  pApp = application;
}
