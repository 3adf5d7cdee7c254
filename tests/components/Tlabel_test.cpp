#include "components/Tlabel.h"

#include <SDL_ttf.h>
#include <memory>

#include "tests/components/AllocationCount.h"
#include "tests/components/WidgetFixture.h"

using namespace vendelo_sdl2;

namespace {

const char* const fontFile = "/usr/share/fonts/truetype/dejavu/DejaVuSans-Bold.ttf";
const SDL_Color white{255, 255, 255, 255};

struct Label : Tlabel {
  Label(int x, int y, int w, int h, const char* text, TTF_Font* font, SDL_Color color)
    : Tlabel(nullptr, x, y, w, h, text, font, color, "label") {}
  void onShow() override { ++shown; }
  void onHide() override { ++hidden; }
  int shown = 0, hidden = 0;
  using Tlabel::mAlign;
  using Tlabel::mAnimationDestRect;
  using Tlabel::mAnimationEnabled;
  using Tlabel::mAnimationStartRect;
  using Tlabel::mColor;
  using Tlabel::mDestRect;
  using Tlabel::mDirection;
  using Tlabel::mDrawShadow;
  using Tlabel::mIsShowing;
  using Tlabel::mLabelRect;
  using Tlabel::mNewText;
  using Tlabel::mOrigPosX;
  using Tlabel::mOrigPosY;
  using Tlabel::mpFont;
  using Tlabel::mpLabelChangedListener;
  using Tlabel::mpShadowTexture;
  using Tlabel::mpSurface;
  using Tlabel::mpSurface2;
  using Tlabel::mpTargetTexture;
  using Tlabel::mShadowColor;
  using Tlabel::mShadowOffset;
  using Tlabel::mSomethingChanged;
  using Tlabel::mSplitText;
  using Tlabel::mSrcRect;
  using Tlabel::mText;
  using Tlabel::mTimeUntilHide;
  using Tlabel::pAniTask;
};

struct Plain : TGuiComponent {
  Plain(int x, int y) : TGuiComponent(nullptr, x, y, 400, 200, "parent") {}
};

struct Listener : LabelChangedListener {
  void LabelChanged(SDL_Texture* texture) override {
    ++calls;
    last = texture;
  }
  int calls = 0;
  SDL_Texture* last = reinterpret_cast<SDL_Texture*>(1);
};

class LabelTest : public WidgetTest {
 protected:
  LabelTest() {
    pApp->SetParam<int>("ScreenW", 400, PARAM_CACHE, "", "", false);
    pApp->SetParam<int>("ScreenH", 200, PARAM_CACHE, "", "", false);
  }
  ~LabelTest() override {
    TTF_CloseFont(font);
    TTF_Quit();
  }
  // A label of 200 by 60 at 50, 40 under a parent at the origin.
  Label* make(const char* text) {
    auto* label = new Label(50, 40, 200, 60, text, font, white);
    parent.AddComponent(label);
    return label;
  }
  SDL_Point sizeOf(const char* text) {
    SDL_Point size{0, 0};
    TTF_SizeUTF8(font, text, &size.x, &size.y);
    return size;
  }
  SDL_Rect drawn(Label& label) {
    clear(0, 0, 0);
    label.draw();
    return inked(0);
  }
  int slideThrough(Label& label) {
    int steps = 0;
    for (; label.pAniTask->IsEnabled() && steps < 2000; ++steps) {
      clock.advance(31);
      pApp->ProcessTasks(TASK_NORMAL);
    }
    return steps;
  }
  int initialised = TTF_Init();
  TTF_Font* const font = TTF_OpenFont(fontFile, 24);
  Plain parent{0, 0};
};

}  // namespace

TEST_F(LabelTest, StartsAsDocumented) {
  Label label(1, 2, 30, 40, "Hello", font, SDL_Color{9, 8, 7, 6});
  EXPECT_EQ("Hello", label.mText);
  EXPECT_EQ("Hello", label.mNewText);
  EXPECT_EQ("Hello", label.GetText());
  EXPECT_EQ((SDL_Rect{1, 2, 30, 40}), label.mLabelRect);
  EXPECT_EQ(font, label.GetFont());
  EXPECT_EQ(9, label.mColor.r);
  EXPECT_EQ(nullptr, label.mpSurface);
  EXPECT_EQ(nullptr, label.mpSurface2);
  EXPECT_EQ(nullptr, label.mpLabelChangedListener);
  EXPECT_FALSE(label.mDrawShadow);
  EXPECT_EQ(2, label.mShadowOffset);
  EXPECT_EQ(64, label.mShadowColor.r);
  EXPECT_EQ(64, label.mShadowColor.g);
  EXPECT_EQ(64, label.mShadowColor.b);
  EXPECT_EQ(255, label.mShadowColor.a);
  EXPECT_FALSE(label.mSplitText);
  EXPECT_TRUE(label.mSomethingChanged);
  EXPECT_FALSE(label.mAnimationEnabled);
  EXPECT_FALSE(label.mIsShowing);
  EXPECT_EQ((SDL_Rect{0, 0, 0, 0}), label.mAnimationDestRect);
  EXPECT_EQ((SDL_Rect{0, 0, 0, 0}), label.mAnimationStartRect);
  EXPECT_EQ(LEFT_CENTER, label.mAlign);
  EXPECT_EQ(0u, label.mTimeUntilHide);
  EXPECT_EQ(Tlabel::LEFT, label.mDirection);
  EXPECT_EQ(nullptr, label.pAniTask);
  EXPECT_EQ(nullptr, label.mpShadowTexture);
  EXPECT_EQ(0, Tlabel::LEFT);
  EXPECT_EQ(1, Tlabel::RIGHT);
  EXPECT_EQ(2, Tlabel::UP);
  EXPECT_EQ(3, Tlabel::DOWN);
}

TEST_F(LabelTest, SettersStoreAndTheDrawBuilds) {
  Label* label = make("one");
  drawn(*label);
  SDL_Texture* const first = label->mpTargetTexture;
  ASSERT_NE(nullptr, first);
  EXPECT_FALSE(label->mSomethingChanged);
  label->SetText("another");
  EXPECT_EQ("another", label->GetText());
  EXPECT_EQ("one", label->mText);
  EXPECT_EQ(first, label->mpTargetTexture);
  drawn(*label);
  EXPECT_EQ("another", label->mText);
  EXPECT_EQ(sizeOf("another").x, label->mSrcRect.w);
  EXPECT_EQ(sizeOf("another").y, label->mDestRect.h);

  label->SetColor(SDL_Color{255, 0, 0, 255});
  EXPECT_TRUE(label->mSomethingChanged);
  drawn(*label);
  label->SetFont(font);
  EXPECT_TRUE(label->mSomethingChanged);
  drawn(*label);
  label->SetShadow(true, 5, SDL_Color{1, 2, 3, 4});
  EXPECT_TRUE(label->mSomethingChanged);
  EXPECT_TRUE(label->mDrawShadow);
  EXPECT_EQ(5, label->mShadowOffset);
  EXPECT_EQ(2, label->mShadowColor.g);
  drawn(*label);
  label->SplitText(true);
  EXPECT_TRUE(label->mSplitText);
  EXPECT_FALSE(label->mSomethingChanged);
}

TEST_F(LabelTest, NinePlaces) {
  const SDL_Point s = sizeOf("Agq");
  const int left = 50, top = 40, w = 200, h = 60;
  const int xs[3] = {left, left + w / 2 - s.x / 2, left + w - s.x};
  const int ys[3] = {top, top + h / 2 - s.y / 2, top + h - s.y};
  for (int a = LEFT_UP; a <= RIGHT_DOWN; ++a) {
    SCOPED_TRACE(a);
    Label* label = make("Agq");
    label->SetAlignment(static_cast<TAlignment>(a));
    drawn(*label);
    EXPECT_EQ((SDL_Rect{xs[a % 3], ys[a / 3], s.x, s.y}), label->mDestRect);
    EXPECT_EQ(xs[a % 3], label->mOrigPosX);
    EXPECT_EQ(ys[a / 3], label->mOrigPosY);
    parent.RemoveComponent(label, true);
  }
}

TEST_F(LabelTest, TheAlignmentInForcePlacesAgainAndMarksNoRebuild) {
  Label* label = make("text");
  drawn(*label);
  const int y = label->mOrigPosY;
  label->setX(300);
  label->setY(100);
  label->SetAlignment(LEFT_CENTER);
  EXPECT_EQ(50, label->mOrigPosX);
  EXPECT_EQ(y, label->mOrigPosY);
  EXPECT_FALSE(label->mSomethingChanged);
  label->SetAlignment(RIGHT_CENTER);
  EXPECT_TRUE(label->mSomethingChanged);
  EXPECT_EQ(RIGHT_CENTER, label->mAlign);
}

TEST_F(LabelTest, EmptyTextTakesBothTexturesAndTellsTheListener) {
  Label* label = make("text");
  Listener listener;
  label->SetLabelChangedListener(&listener);
  label->SetShadow(true, 2, SDL_Color{255, 0, 0, 255});
  drawn(*label);
  EXPECT_NE(nullptr, label->mpTargetTexture);
  EXPECT_NE(nullptr, label->mpShadowTexture);
  EXPECT_EQ(0, listener.calls) << "only an empty text is told";
  label->SetText("");
  EXPECT_EQ(0, drawn(*label).w);
  EXPECT_EQ(nullptr, label->mpTargetTexture);
  EXPECT_EQ(nullptr, label->mpShadowTexture);
  EXPECT_EQ(1, listener.calls);
  EXPECT_EQ(nullptr, listener.last);
  drawn(*label);
  EXPECT_EQ(1, listener.calls);
}

TEST_F(LabelTest, WithoutAFontNothingIsBuilt) {
  Label label(0, 0, 100, 50, "two words", nullptr, white);
  EXPECT_EQ(0, drawn(label).w);
  label.SplitText(true);
  label.SetText("two more");
  EXPECT_EQ(0, drawn(label).w);
  EXPECT_EQ(nullptr, label.mpTargetTexture);
  label.SetFont(font);
  EXPECT_NE(0, drawn(label).w);
  label.SetFont(nullptr);
  drawn(label);
  EXPECT_NE(nullptr, label.mpTargetTexture) << "the old picture stays";
}

TEST_F(LabelTest, ATextThatCannotBeRenderedLeavesAnEmptyLabel) {
  // A zero-width space alone has no width, which the font library refuses.
  Label* label = make("text");
  label->SetShadow(true, 2, SDL_Color{255, 0, 0, 255});
  drawn(*label);
  const char* const nothing = "\xE2\x80\x8B";
  ASSERT_EQ(0, sizeOf(nothing).x);
  label->SetText(nothing);
  EXPECT_EQ(0, drawn(*label).w);
  EXPECT_EQ(nullptr, label->mpTargetTexture);
  label->SplitText(true);
  label->SetText("word ");  // the second line is empty
  EXPECT_EQ(0, drawn(*label).w);
  EXPECT_EQ(nullptr, label->mpTargetTexture);
  label->SetText("text");
  EXPECT_NE(0, drawn(*label).w);
}

TEST_F(LabelTest, ShadowFallsDownwardsInEitherCase) {
  for (const int offset : {3, -3}) {
    Label* label = make("H");
    SDL_Rect plain = drawn(*label);
    label->SetShadow(true, offset, SDL_Color{0, 0, 255, 255});
    const SDL_Rect both = drawn(*label);
    SDL_Rect shadow{plain.x + offset, plain.y + 3, plain.w, plain.h}, expected;
    SDL_UnionRect(&plain, &shadow, &expected);
    EXPECT_EQ(expected, both) << offset;
    parent.RemoveComponent(label, true);
  }
}

TEST_F(LabelTest, ShadowFollowsParentAlphaAndAngle) {
  Plain moved(30, 20);
  auto* label = new Label(50, 40, 200, 60, "Shadow", font, SDL_Color{255, 220, 0, 255});
  moved.AddComponent(label);
  label->SetAlignment(CENTER_CENTER);
  label->SetShadow(true, 4, SDL_Color{200, 0, 0, 255});
  drawn(*label);
  EXPECT_GOLDEN(renderer, "components/label_shadow");
  label->setAlpha(120);
  label->setAngle(20.0);
  drawn(*label);
  EXPECT_GOLDEN(renderer, "components/label_shadow_turned");
  label->setAngle(-20.0);  // neither turns
  label->setAlpha(255);
  drawn(*label);
  EXPECT_GOLDEN(renderer, "components/label_shadow");
}

TEST_F(LabelTest, SplitsAtTheFirstSpaceOnly) {
  const SDL_Point one = sizeOf("Minimum"), two = sizeOf("bet 12");
  Label* label = make("Minimum bet 12");
  label->SplitText(true);
  label->SetShadow(true, 2, SDL_Color{255, 0, 0, 255});
  drawn(*label);
  const int mw = std::max(one.x, two.x);
  EXPECT_EQ((SDL_Rect{0, 0, mw, one.y + two.y}), label->mSrcRect);
  EXPECT_EQ(mw, label->mDestRect.w);
  EXPECT_EQ(one.y + two.y, label->mDestRect.h);
  EXPECT_EQ(40 + 30 - (one.y + two.y) / 2, label->mDestRect.y);
  EXPECT_EQ(nullptr, label->mpShadowTexture) << "two lines have no shadow";
  EXPECT_EQ(nullptr, label->mpSurface);
  EXPECT_EQ(nullptr, label->mpSurface2);
  EXPECT_EQ(nullptr, SDL_GetRenderTarget(renderer));
}

TEST_F(LabelTest, SplitWithoutASpaceIsOneLine) {
  Label* label = make("Minimum");
  label->SplitText(true);
  drawn(*label);
  EXPECT_EQ(sizeOf("Minimum").x, label->mSrcRect.w);
  EXPECT_EQ(sizeOf("Minimum").y, label->mSrcRect.h);
  EXPECT_NE(nullptr, label->mpShadowTexture);
}

TEST_F(LabelTest, TwoLinesAreSetByTheAlignment) {
  const struct {
    const char* text;
    TAlignment alignment;
    const char* golden;
  } rows[] = {{"Wide first", LEFT_UP, "components/label_split_left"},
              {"Widest i", CENTER_UP, "components/label_split_center"},
              {"Widest i", RIGHT_UP, "components/label_split_right"},
              // The wider second line keeps the first one's x and is cut at the edge.
              {"i second", CENTER_UP, "components/label_split_center_wide_second"},
              {"i second", RIGHT_DOWN, "components/label_split_right_wide_second"}};
  for (const auto& row : rows) {
    Label* label = make(row.text);
    label->SplitText(true);
    label->SetAlignment(row.alignment);
    drawn(*label);
    EXPECT_GOLDEN(renderer, row.golden);
    parent.RemoveComponent(label, true);
  }
}

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

TEST_F(LabelTest, TheTextTextureOutlivesTheLabel) {
  Label* label = make("text");
  drawn(*label);
  SDL_Texture* texture = label->mpTargetTexture;
  parent.RemoveComponent(label, true);
  EXPECT_EQ(0, SDL_QueryTexture(texture, nullptr, nullptr, nullptr, nullptr));
  SDL_DestroyTexture(texture);
}

TEST_F(LabelTest, AFrameTakesNothingFromTheHeap) {
  Label* label = make("A text that is longer than any small buffer of a string");
  label->SetShadow(true, 2, SDL_Color{255, 0, 0, 255});
  label->draw();
  const long before = allocations::count;
  for (int i = 0; i < 10; ++i) label->draw();
  EXPECT_EQ(before, allocations::count);
}
