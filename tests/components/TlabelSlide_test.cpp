#include "tests/components/LabelFixture.h"

#include <cstdlib>

using namespace labeltest;

TEST_F(LabelTest, SetAnimationPutsTheLabelAtItsStart) {
  const struct {
    Tlabel::TAnimationDirection direction;
    int x, y;  // relative to the resting place; 1000 stands for "the same"
  } rows[] = {
    {Tlabel::LEFT, 400, 1000}, {Tlabel::RIGHT, -1, 1000}, {Tlabel::UP, 1000, 200}, {Tlabel::DOWN, 1000, -1}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.direction);
    Label* label = make("slide");
    drawn(*label);
    const SDL_Rect rest = label->mDestRect;
    label->SetAnimation(row.direction);
    EXPECT_TRUE(label->mAnimationEnabled);
    EXPECT_TRUE(label->mSomethingChanged);
    EXPECT_EQ(rest, label->mAnimationDestRect);
    const int x = row.x == 1000 ? rest.x : row.x == -1 ? -rest.w : row.x;
    const int y = row.y == 1000 ? rest.y : row.y == -1 ? -rest.h : row.y;
    EXPECT_EQ((SDL_Rect{x, y, rest.w, rest.h}), label->mAnimationStartRect);
    EXPECT_EQ(x, label->mOrigPosX);
    EXPECT_EQ(y, label->mOrigPosY);
    drawn(*label);
    EXPECT_FALSE(label->mSomethingChanged) << "the rebuild would put it back at every frame";
    EXPECT_EQ((SDL_Rect{x, y, rest.w, rest.h}), label->mAnimationStartRect) << "the rebuild keeps the direction";
    parent.RemoveComponent(label, true);
  }
}

TEST_F(LabelTest, SlidesInRestsSlidesOut) {
  for (const auto direction : {Tlabel::LEFT, Tlabel::RIGHT, Tlabel::UP, Tlabel::DOWN}) {
    SCOPED_TRACE(direction);
    Label* label = make("slide");
    label->SetAnimation(direction);
    drawn(*label);
    label->_setVisible(false);
    const SDL_Rect rest = label->mAnimationDestRect, start = label->mAnimationStartRect;
    label->ShowFor(600);
    EXPECT_TRUE(label->isVisible());
    EXPECT_TRUE(label->mIsShowing);
    EXPECT_EQ(600u, label->mTimeUntilHide);
    ASSERT_NE(nullptr, label->pAniTask);
    EXPECT_EQ("Tlabel::AnimateTask, 30", label->pAniTask->GetName());
    EXPECT_EQ(30u, label->pAniTask->GetInterval());
    EXPECT_EQ(TTimedTaskHandler::ENDLESS, label->pAniTask->GetType());
    EXPECT_TRUE(pApp->IsTimedTaskValid(label->pAniTask, TASK_NORMAL));

    clock.advance(31);
    pApp->ProcessTasks(TASK_NORMAL);
    const int moved = std::abs(label->mOrigPosX - start.x) + std::abs(label->mOrigPosY - start.y);
    EXPECT_EQ(2, moved);
    label->draw();
    EXPECT_EQ(2, std::abs(label->mOrigPosX - start.x) + std::abs(label->mOrigPosY - start.y)) << "a draw keeps it";

    const int way = std::abs(rest.x - start.x) + std::abs(rest.y - start.y);
    EXPECT_EQ((way + 1) / 2 - 1, slideThrough(*label));
    EXPECT_EQ(rest.x, label->mOrigPosX);
    EXPECT_EQ(rest.y, label->mOrigPosY);

    clock.advance(600);
    pApp->ProcessTasks(TASK_NORMAL);
    EXPECT_FALSE(label->pAniTask->IsEnabled()) << "hidden before its time";
    clock.advance(1);
    pApp->ProcessTasks(TASK_NORMAL);
    EXPECT_TRUE(label->pAniTask->IsEnabled());
    EXPECT_EQ(1, label->hidden);
    EXPECT_TRUE(label->isVisible());

    EXPECT_EQ((way + 1) / 2, slideThrough(*label));
    EXPECT_EQ(start.x, label->mOrigPosX);
    EXPECT_EQ(start.y, label->mOrigPosY);
    EXPECT_FALSE(label->isVisible());
    parent.RemoveComponent(label, true);
  }
}

TEST_F(LabelTest, ShowForBeginsAtTheStartAndHideAtTheRestingPlace) {
  for (const auto direction : {Tlabel::LEFT, Tlabel::UP}) {
    Label* label = make("slide");
    label->SetAnimation(direction);
    drawn(*label);
    const SDL_Rect rest = label->mAnimationDestRect, start = label->mAnimationStartRect;
    for (int i = 0; i < 2; ++i) {
      label->_setVisible(false);
      label->mOrigPosX = rest.x;
      label->mOrigPosY = rest.y;
      label->ShowFor(600);
      EXPECT_EQ(start.x, label->mOrigPosX);
      EXPECT_EQ(start.y, label->mOrigPosY);
      label->Hide();
      EXPECT_EQ(rest.x, label->mOrigPosX) << "and the way out at the resting place";
      EXPECT_EQ(rest.y, label->mOrigPosY);
    }
    parent.RemoveComponent(label, true);
  }
}

TEST_F(LabelTest, TheTimedHideIsAOneShotOfTheMainThread) {
  Label* label = make("slide");
  label->SetAnimation(Tlabel::DOWN);
  drawn(*label);
  label->_setVisible(false);
  label->ShowFor(600);
  slideThrough(*label);
  bool found = false;
  for (TTimedTaskHandler* task; (task = pApp->GetTimedTask(label)); pApp->RemoveTimedTask(task, true)) {
    if (task == label->pAniTask) continue;
    found = true;
    EXPECT_EQ("Tlabel::Hide, mTimeUntilHide", task->GetName());
    EXPECT_EQ(600u, task->GetInterval());
    EXPECT_EQ(TTimedTaskHandler::EXECUTE_ONCE, task->GetType());
    EXPECT_TRUE(pApp->IsTimedTaskValid(task, TASK_NORMAL));
  }
  EXPECT_TRUE(found);
}

TEST_F(LabelTest, ShowForZeroOnlyMakesVisible) {
  Label* label = make("slide");
  label->SetAnimation(Tlabel::RIGHT);
  drawn(*label);
  label->_setVisible(false);
  label->setX(77);
  label->ShowFor(0);
  EXPECT_TRUE(label->isVisible());
  EXPECT_EQ(77, label->mOrigPosX);
  EXPECT_EQ(nullptr, label->pAniTask);
  EXPECT_EQ(0u, label->mTimeUntilHide);
  EXPECT_FALSE(label->mIsShowing);
}

TEST_F(LabelTest, ShowForRunsTheHookOnceAndOnlyOnAHiddenLabel) {
  Label* label = make("slide");
  label->ShowFor(100);  // visible: nothing
  pApp->ExecuteDeferredDrawMethods(renderer);
  EXPECT_EQ(0, label->shown);
  label->Hide();
  EXPECT_EQ(1, label->hidden);
  EXPECT_FALSE(label->isVisible());
  EXPECT_EQ(nullptr, label->pAniTask) << "out of slide mode it hides at once";
  label->Hide();
  EXPECT_EQ(1, label->hidden);
  label->ShowFor(100);
  pApp->ExecuteDeferredDrawMethods(renderer);
  EXPECT_EQ(1, label->shown);
  EXPECT_EQ(nullptr, label->pAniTask);
}

TEST_F(LabelTest, ATextChangeInSlideModeGoesBackToTheStartAndRunsOn) {
  Label* label = make("slide");
  label->SetAnimation(Tlabel::LEFT);
  drawn(*label);
  label->_setVisible(false);
  label->ShowFor(600);
  for (int i = 0; i < 5; ++i) {
    clock.advance(31);
    pApp->ProcessTasks(TASK_NORMAL);
  }
  EXPECT_EQ(390, label->mOrigPosX);
  label->SetText("something longer");
  drawn(*label);
  EXPECT_EQ(400, label->mOrigPosX);
  EXPECT_TRUE(label->mIsShowing);
  EXPECT_TRUE(label->pAniTask->IsEnabled());
  clock.advance(31);
  pApp->ProcessTasks(TASK_NORMAL);
  EXPECT_EQ(398, label->mOrigPosX);
}

TEST_F(LabelTest, HideDuringASlideInGoesOutFromTheRestingPlace) {
  Label* label = make("slide");
  label->SetAnimation(Tlabel::LEFT);
  drawn(*label);
  label->_setVisible(false);
  label->ShowFor(600);
  clock.advance(31);
  pApp->ProcessTasks(TASK_NORMAL);
  EXPECT_EQ(398, label->mOrigPosX);
  label->Hide();
  EXPECT_EQ(50, label->mOrigPosX);
  EXPECT_FALSE(label->mIsShowing);
  EXPECT_TRUE(label->isVisible());
  clock.advance(31);
  pApp->ProcessTasks(TASK_NORMAL);
  EXPECT_EQ(52, label->mOrigPosX);
}

TEST_F(LabelTest, TasksAndDeferredHookDoNotOutliveTheLabel) {
  Label* label = make("slide");
  label->SetAnimation(Tlabel::DOWN);
  drawn(*label);
  label->_setVisible(false);
  label->ShowFor(600);
  slideThrough(*label);
  parent.RemoveComponent(label, true);
  EXPECT_EQ(nullptr, pApp->GetTimedTask(label));
  clock.advance(5000);
  pApp->ProcessTasks(TASK_NORMAL);
  pApp->ExecuteDeferredDrawMethods(renderer);
}

TEST_F(LabelTest, WithoutAnApplicationNobodyMovesIt) {
  TApplication* const application = std::exchange(pApp, nullptr);
  {
    Label label(50, 40, 200, 60, "slide", font, white);
    drawn(label);
    const SDL_Rect rest = label.mDestRect;
    label.SetAnimation(Tlabel::LEFT);
    EXPECT_EQ(1920, label.mOrigPosX) << "the screen of the terminal";
    label._setVisible(false);
    label.ShowFor(600);
    EXPECT_TRUE(label.isVisible());
    EXPECT_TRUE(label.mIsShowing);
    EXPECT_EQ(nullptr, label.pAniTask);
    EXPECT_EQ(0, label.shown) << "the hook is for the draw thread, and there is none";
    for (int i = 0; i < 1000; ++i) label.AnimateTask();
    EXPECT_EQ(rest.x, label.mOrigPosX) << "it rests, and nothing hides it";
    label.Hide();
    EXPECT_EQ(nullptr, label.pAniTask);
  }
  pApp = application;
}
