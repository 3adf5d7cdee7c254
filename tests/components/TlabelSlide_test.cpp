#include "tests/components/LabelFixture.h"

#include <cstdlib>

using namespace labeltest;

const Tlabel::TAnimationDirection directions[] = {Tlabel::LEFT, Tlabel::RIGHT, Tlabel::UP, Tlabel::DOWN};

TEST_F(LabelTest, SetAnimationPutsTheLabelAtItsStart) {
  Label* plain = make("slide");
  drawn(*plain);
  const SDL_Rect rest = plain->getDestRect();
  const struct {
    Tlabel::TAnimationDirection direction;
    SDL_Point start;
  } rows[] = {{Tlabel::LEFT, {400, rest.y}},
              {Tlabel::RIGHT, {-rest.w, rest.y}},
              {Tlabel::UP, {rest.x, 200}},
              {Tlabel::DOWN, {rest.x, -rest.h}}};
  parent.RemoveComponent(plain, true);
  for (const auto& row : rows) {
    SCOPED_TRACE(row.direction);
    Label* label = make("slide");
    drawn(*label);
    label->SetAnimation(row.direction);
    EXPECT_TRUE(rebuilds(*label));
    EXPECT_EQ(row.start, shownAt(*label));
    EXPECT_FALSE(rebuilds(*label)) << "it would put it back at every frame";
    label->_setVisible(false);
    label->ShowFor(600);
    EXPECT_EQ(row.start, shownAt(*label)) << "the rebuild keeps the direction";
    slideThrough(*label);
    EXPECT_EQ((SDL_Point{rest.x, rest.y}), shownAt(*label));
    EXPECT_EQ(rest.w, label->getWidth());
    EXPECT_EQ(rest.h, label->getHeight());
    parent.RemoveComponent(label, true);
  }
}

TEST_F(LabelTest, TheSlideIsAnEndlessTaskOfTheMainThread) {
  Label* label = slider(Tlabel::LEFT);
  EXPECT_EQ(nullptr, label->pAniTask);
  label->ShowFor(600);
  ASSERT_NE(nullptr, label->pAniTask);
  EXPECT_EQ("Tlabel::AnimateTask, 30", label->pAniTask->GetName());
  EXPECT_EQ(30u, label->pAniTask->GetInterval());
  EXPECT_EQ(TTimedTaskHandler::ENDLESS, label->pAniTask->GetType());
  EXPECT_TRUE(pApp->IsTimedTaskValid(label->pAniTask, TASK_NORMAL));
}

TEST_F(LabelTest, EachStepMovesItByTwoPixelsAndADrawByNone) {
  for (const auto direction : directions) {
    SCOPED_TRACE(direction);
    Label* label = slider(direction);
    const SDL_Point start = shownAt(*label);
    label->ShowFor(600);
    EXPECT_TRUE(label->isVisible());
    clock.advance(31);
    pApp->ProcessTasks(TASK_NORMAL);
    for (int draws = 0; draws < 2; ++draws) EXPECT_EQ(2, distance(start, shownAt(*label)));
    parent.RemoveComponent(label, true);
  }
}

TEST_F(LabelTest, SlidesInToItsPlaceAndOutToItsStart) {
  for (const auto direction : directions) {
    SCOPED_TRACE(direction);
    const SDL_Point rest = restOf("slide");
    Label* label = slider(direction);
    const SDL_Point start = shownAt(*label);
    const int steps = (distance(start, rest) + 1) / 2;
    label->ShowFor(600);
    EXPECT_EQ(steps, slideThrough(*label));
    EXPECT_EQ(rest, shownAt(*label));
    clock.advance(601);
    pApp->ProcessTasks(TASK_NORMAL);
    EXPECT_TRUE(label->isVisible());
    EXPECT_EQ(steps, slideThrough(*label));
    EXPECT_EQ(start, shownAt(*label));
    EXPECT_FALSE(label->isVisible());
    parent.RemoveComponent(label, true);
  }
}

TEST_F(LabelTest, HidesWhenItHasRestedForItsTime) {
  Label* label = slider(Tlabel::LEFT);
  label->ShowFor(600);
  slideThrough(*label);
  clock.advance(600);
  pApp->ProcessTasks(TASK_NORMAL);
  EXPECT_FALSE(label->pAniTask->IsEnabled()) << "hidden before its time";
  EXPECT_EQ(0, label->hidden);
  clock.advance(1);
  pApp->ProcessTasks(TASK_NORMAL);
  EXPECT_TRUE(label->pAniTask->IsEnabled());
  EXPECT_EQ(1, label->hidden);
  EXPECT_TRUE(label->isVisible());
}

TEST_F(LabelTest, ShowForBeginsAtTheStartAndHideAtTheRestingPlace) {
  const SDL_Point rest = restOf("slide");
  for (const auto direction : {Tlabel::LEFT, Tlabel::UP}) {
    Label* label = slider(direction);
    const SDL_Point start = shownAt(*label);
    for (int i = 0; i < 2; ++i) {
      label->_setVisible(false);
      label->setX(rest.x);
      label->setY(rest.y);
      label->ShowFor(600);
      EXPECT_EQ(start, shownAt(*label));
      label->Hide();
      EXPECT_EQ(rest, shownAt(*label)) << "and the way out at the resting place";
    }
    parent.RemoveComponent(label, true);
  }
}

TEST_F(LabelTest, TheTimedHideIsAOneShotOfTheMainThread) {
  Label* label = slider(Tlabel::DOWN);
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
  Label* label = slider(Tlabel::RIGHT);
  label->setX(77);
  label->ShowFor(0);
  EXPECT_TRUE(label->isVisible());
  EXPECT_EQ(77, shownAt(*label).x);
  EXPECT_EQ(nullptr, pApp->GetTimedTask(label));
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
  Label* label = slider(Tlabel::LEFT);
  label->ShowFor(600);
  for (int i = 0; i < 5; ++i) {
    clock.advance(31);
    pApp->ProcessTasks(TASK_NORMAL);
  }
  EXPECT_EQ(390, shownAt(*label).x);
  label->SetText("something longer");
  EXPECT_EQ(400, shownAt(*label).x);
  clock.advance(31);
  pApp->ProcessTasks(TASK_NORMAL);
  EXPECT_EQ(398, shownAt(*label).x);
}

TEST_F(LabelTest, HideDuringASlideInGoesOutFromTheRestingPlace) {
  Label* label = slider(Tlabel::LEFT);
  label->ShowFor(600);
  clock.advance(31);
  pApp->ProcessTasks(TASK_NORMAL);
  EXPECT_EQ(398, shownAt(*label).x);
  label->Hide();
  EXPECT_EQ(50, shownAt(*label).x);
  EXPECT_TRUE(label->isVisible());
  clock.advance(31);
  pApp->ProcessTasks(TASK_NORMAL);
  EXPECT_EQ(52, shownAt(*label).x);
}

TEST_F(LabelTest, TasksAndDeferredHookDoNotOutliveTheLabel) {
  Label* label = slider(Tlabel::DOWN);
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
    label.setParent(&parent);
    const SDL_Point rest = shownAt(label);
    label.SetAnimation(Tlabel::LEFT);
    EXPECT_EQ(1920, shownAt(label).x) << "the screen of the terminal";
    label._setVisible(false);
    label.ShowFor(600);
    EXPECT_TRUE(label.isVisible());
    EXPECT_EQ(nullptr, label.pAniTask);
    EXPECT_EQ(0, label.shown) << "the hook is for the draw thread, and there is none";
    for (int i = 0; i < 1000; ++i) label.AnimateTask();
    EXPECT_EQ(rest, shownAt(label)) << "it rests, and nothing hides it";
    label.Hide();
    EXPECT_EQ(nullptr, label.pAniTask);
  }
  pApp = application;
}
