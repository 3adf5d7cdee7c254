// The label in two lines, and what the form of one line leaves behind or does not.
#include <thread>

#include "tests/components/LabelFixture.h"

using namespace labeltest;

namespace {

const SDL_Color red{255, 0, 0, 255};

class LabelForms : public LabelTest {
 protected:
  Label* split(const char* text) {
    Label* label = make(text);
    label->SplitText(true);
    return label;
  }
  int alphaOf(SDL_Texture* texture) {
    Uint8 alpha = 0;
    EXPECT_EQ(0, SDL_GetTextureAlphaMod(texture, &alpha));
    return alpha;
  }
};

}  // namespace

TEST_F(LabelForms, TwoLinesKeepNoShadowOfTheFormerSingleLine) {
  Label* label = split("Minimum");
  label->SetShadow(true, 2, red);
  drawn(*label);
  ASSERT_GT(pixelsOf(0xff0000), 0);
  label->SetText("Minimum bet");
  const SDL_Rect both = drawn(*label);
  EXPECT_EQ(0, pixelsOf(0xff0000));
  label->SetShadow(false, 2, red);
  EXPECT_EQ(both, drawn(*label)) << "nor is one drawn";
  label->SetShadow(true, 2, red);
  label->SetText("Minimum");
  drawn(*label);
  EXPECT_GT(pixelsOf(0xff0000), 0) << "a single line has its own again";
}

TEST_F(LabelForms, TwoLinesLeaveTheSlideAlone) {
  Label* label = slider(Tlabel::LEFT);
  label->SplitText(true);
  label->ShowFor(600);
  for (int i = 0; i < 5; ++i) {
    clock.advance(31);
    pApp->ProcessTasks(TASK_NORMAL);
  }
  ASSERT_EQ(390, shownAt(*label).x);
  label->SetText("two lines");
  // Unlike a single line: it stands at its alignment's place, and neither end of the slide is taken anew.
  EXPECT_EQ((SDL_Point{50, 40 + 30 - sizeOf("two").y}), shownAt(*label));
  EXPECT_FALSE(rebuilds(*label));
  // There the way in ends with its next step, and the way out goes to the former start.
  EXPECT_EQ(1, slideThrough(*label));
  EXPECT_EQ(50, shownAt(*label).x);
  clock.advance(601);
  pApp->ProcessTasks(TASK_NORMAL);
  slideThrough(*label);
  EXPECT_EQ(400, shownAt(*label).x);
  EXPECT_FALSE(label->isVisible());
}

TEST_F(LabelForms, ANewSlideOfTwoLinesLastsUntilTheNextDraw) {
  Label* label = split("two lines");
  drawn(*label);
  label->SetAnimation(Tlabel::LEFT);
  EXPECT_EQ(50, shownAt(*label).x) << "the rebuild that a new slide asks for places by the alignment alone";
  label->_setVisible(false);
  label->ShowFor(600);
  EXPECT_EQ(400, shownAt(*label).x);
}

TEST_F(LabelForms, TwoLinesTakeTheAlphaOfTheLabel) {
  Label* label = split("two lines");
  label->setAlpha(77);
  label->updateCachedTextures();
  EXPECT_EQ(77, alphaOf(label->GetTargetTexture()));
  clear(0, 0, 0);
  label->setAlpha(255);
  label->draw();
  EXPECT_GT(77u, pixel(inked(0).x + 10, inked(0).y + 10)  // each line was copied with the alpha of the time
                   & 255u);
}

TEST_F(LabelForms, ASingleLineTakesTheAlphaOfTheLabel) {
  struct Shadowed : Label {
    using Label::Label;
    using Tlabel::mpShadowTexture;
  };
  auto* label = make<Shadowed>("line");
  label->setAlpha(77);
  label->updateCachedTextures();
  EXPECT_EQ(77, alphaOf(label->GetTargetTexture()));
  EXPECT_EQ(77, alphaOf(label->mpShadowTexture.get()));
}

TEST_F(LabelForms, TheShadowIsDrawnWithTheLowestByteOfTheAlpha) {
  Label* label = make("line");
  label->SetShadow(true, 2, red);
  label->setAlpha(256 + 99);
  drawn(*label);
  EXPECT_GT(pixelsOf(99 << 16), 0);
}

TEST_F(LabelForms, OnlyTheNextTextIsSplit) {
  Label* label = make("two lines");
  drawn(*label);
  const int h = label->getSrcRect().h;
  label->SplitText(true);
  drawn(*label);
  EXPECT_EQ(h, label->getSrcRect().h);
  label->SetText("two more");
  drawn(*label);
  EXPECT_EQ(2 * h, label->getSrcRect().h);
  label->SetText("three more lines");
  drawn(*label);
  EXPECT_EQ(sizeOf("more lines").x, label->getSrcRect().w) << "at the first space";
}

// ---- Fonts and texts that are missing

TEST_F(LabelForms, WithoutAFontTheFormerPictureStaysWhateverTheText) {
  struct Texts : Label {
    using Label::Label;
    using Tlabel::mSomethingChanged;
    using Tlabel::mText;
  };
  auto* label = make<Texts>("former");
  label->SetShadow(true, 2, red);
  const SDL_Rect former = drawn(*label);
  label->SetFont(nullptr);
  EXPECT_EQ(former, drawn(*label));
  for (const char* text : {"another, longer text", "", "former"}) {
    label->SetText(text);
    EXPECT_EQ(former, drawn(*label)) << text;
    EXPECT_EQ(text, label->mText);
    EXPECT_FALSE(label->mSomethingChanged);
  }
  label->SetText("new");
  drawn(*label);
  label->SetFont(font);
  drawn(*label);
  EXPECT_EQ(sizeOf("new").x, label->getSrcRect().w) << "with a font the text of now is made";
}

TEST_F(LabelForms, AnEmptyTextMovesNothing) {
  Label* label = make("text");
  label->SetAlignment(RIGHT_DOWN);
  drawn(*label);
  const SDL_Rect place = label->getDestRect();
  label->SetText("");
  drawn(*label);
  EXPECT_EQ(place.w, label->getSrcRect().w);
  EXPECT_EQ(place, label->getDestRect());
}

// ---- Places

TEST_F(LabelForms, CentredPlacesHalveBoxAndTextEachOnItsOwn) {
  // Odd and even boxes with odd and even texts: 61 / 2 - 29 / 2 is 16, (61 - 28) / 2 is 16 and (60 - 29) / 2 is 15.
  bool oddHeight = false, oddWidth = false;
  for (int size = 20; size < 28; ++size) {
    TTF_Font* other = TTF_OpenFont(fontFile, size);
    for (const int more : {0, 1}) {
      Label label(51, 41, 200 + more, 60 + more, "Agq", other, white);
      label.SetAlignment(CENTER_CENTER);
      label.updateCachedTextures();
      const SDL_Rect s = label.getSrcRect();
      EXPECT_EQ(51 + 100 - s.w / 2, label.getDestRect().x) << size << ", " << more;
      EXPECT_EQ(41 + 30 - s.h / 2, label.getDestRect().y) << size << ", " << more;
      oddHeight = oddHeight || s.h % 2 != 0;
      oddWidth = oddWidth || s.w % 2 != 0;
    }
    TTF_CloseFont(other);
  }
  EXPECT_TRUE(oddHeight && oddWidth) << "or this test tells nothing";
}

TEST_F(LabelForms, ARootIsPlacedInItsRectangleOnly) {
  Label label(50, 40, 200, 60, "text", font, white);
  label.SetAlignment(RIGHT_DOWN);
  label.updateCachedTextures();
  EXPECT_EQ(250 - label.getSrcRect().w, label.getDestRect().x);
  EXPECT_EQ(100 - label.getSrcRect().h, label.getDestRect().y);
  label.setParent(&parent);
  EXPECT_EQ((SDL_Point{50, 40}), shownAt(label)) << "the place relative to a parent is for labels that have one";
}

TEST_F(LabelForms, ThePlaceGoesThroughTheVirtualSetters) {
  struct Moved : Label {
    using Label::Label;
    void setX(int x) override { Label::setX(x + 1000); }
    void setY(int y) override { Label::setY(y + 2000); }
  };
  Moved label(50, 40, 200, 60, "text", font, white);
  label.SetAlignment(LEFT_UP);
  EXPECT_EQ(1050, label.getDestRect().x);
  EXPECT_EQ(2040, label.getDestRect().y);
}

// ---- Showing

TEST_F(LabelForms, OnShowWaitsForTheDrawThread) {
  Label* label = make("text");
  label->Hide();
  std::thread([&] { label->ShowFor(0); }).join();
  EXPECT_TRUE(label->isVisible());
  EXPECT_EQ(0, label->shown) << "not before the deferred methods of the draw thread";
  pApp->ExecuteDeferredMethods();
  EXPECT_EQ(0, label->shown) << "nor among those of the main thread";
  pApp->ExecuteDeferredDrawMethods(renderer);
  EXPECT_EQ(1, label->shown);
  label->Hide();
  label->ShowFor(0);
  EXPECT_EQ(2, label->shown) << "and on the draw thread at once";
}

TEST_F(LabelForms, OneMillisecondIsTheShortestSlide) {
  Label* label = slider(Tlabel::DOWN);
  const SDL_Point start = shownAt(*label);
  label->setY(7);
  label->ShowFor(1);
  EXPECT_EQ(start, shownAt(*label));
  slideThrough(*label);
  clock.advance(2);
  pApp->ProcessTasks(TASK_NORMAL);
  EXPECT_EQ(1, label->hidden);
}

TEST_F(LabelForms, AShorterTimeIsNoSlide) {
  for (const int time : {0, -1}) {
    Label* label = slider(Tlabel::DOWN);
    label->setY(7);
    label->ShowFor(time);
    EXPECT_TRUE(label->isVisible()) << time;
    EXPECT_EQ(7, shownAt(*label).y) << time;
    EXPECT_EQ(nullptr, pApp->GetTimedTask(label)) << time;
    parent.RemoveComponent(label, true);
  }
}

TEST_F(LabelForms, TheTaskIsMadeOnceAndSwitched) {
  Label* label = make("slide");
  label->SetAnimation(Tlabel::RIGHT);
  drawn(*label);
  label->Hide();
  TTimedTaskHandler* const task = label->pAniTask;
  ASSERT_NE(nullptr, task);
  slideThrough(*label);
  EXPECT_FALSE(task->IsEnabled());
  EXPECT_FALSE(label->isVisible());
  label->ShowFor(100);
  EXPECT_EQ(task, label->pAniTask);
  EXPECT_TRUE(task->IsEnabled());
}
