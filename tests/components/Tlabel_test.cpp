#include "tests/components/LabelFixture.h"

#include <functional>
#include <memory>

#include "tests/components/AllocationCount.h"

using namespace labeltest;

namespace {

struct Listener : LabelChangedListener {
  void LabelChanged(SDL_Texture* texture) override {
    ++calls;
    last = texture;
  }
  int calls = 0;
  SDL_Texture* last = reinterpret_cast<SDL_Texture*>(1);
};

// What a new label holds.
struct Inside : Label {
  using Label::Label;
  using Tlabel::mAlign;
  using Tlabel::mAnimationDestRect;
  using Tlabel::mAnimationEnabled;
  using Tlabel::mAnimationStartRect;
  using Tlabel::mColor;
  using Tlabel::mDirection;
  using Tlabel::mDrawShadow;
  using Tlabel::mIsShowing;
  using Tlabel::mLabelRect;
  using Tlabel::mNewText;
  using Tlabel::mpLabelChangedListener;
  using Tlabel::mpShadowTexture;
  using Tlabel::mpSurface;
  using Tlabel::mpSurface2;
  using Tlabel::mShadowColor;
  using Tlabel::mShadowOffset;
  using Tlabel::mSomethingChanged;
  using Tlabel::mSplitText;
  using Tlabel::mText;
  using Tlabel::mTimeUntilHide;
};

// What a text is drawn on before it is a texture.
struct Surfaces : Label {
  using Label::Label;
  using Tlabel::mpSurface;
  using Tlabel::mpSurface2;
};

}  // namespace

TEST_F(LabelTest, StartsAsDocumented) {
  Inside label(1, 2, 30, 40, "Hello", font, SDL_Color{9, 8, 7, 6});
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

TEST_F(LabelTest, AnotherTextShowsAtTheNextDraw) {
  Label* label = make("one");
  drawn(*label);
  SDL_Texture* const first = label->GetTargetTexture();
  ASSERT_NE(nullptr, first);
  label->SetText("another");
  EXPECT_EQ("another", label->GetText());
  EXPECT_EQ(first, label->GetTargetTexture());
  EXPECT_EQ(sizeOf("one").x, label->getSrcRect().w);
  EXPECT_TRUE(rebuilds(*label));
  EXPECT_EQ(sizeOf("another").x, label->getSrcRect().w);
  EXPECT_EQ(sizeOf("another").y, label->getDestRect().h);
}

TEST_F(LabelTest, AnotherFontShowsAtTheNextDraw) {
  TTF_Font* large = TTF_OpenFont(fontFile, 40);
  Label* label = make("text");
  drawn(*label);
  label->SetFont(large);
  EXPECT_EQ(large, label->GetFont());
  EXPECT_EQ(sizeOf("text").y, label->getSrcRect().h);
  drawn(*label);
  EXPECT_EQ(TTF_FontHeight(large), label->getSrcRect().h);
  parent.RemoveComponent(label, true);
  TTF_CloseFont(large);
}

TEST_F(LabelTest, AnotherShadowShowsAtTheNextDraw) {
  Label* label = make("HHH");
  label->SetShadow(true, 2, SDL_Color{255, 0, 0, 255});
  const SDL_Rect near = drawn(*label);
  EXPECT_GT(pixelsOf(0xff0000), 0);
  label->SetShadow(true, 5, SDL_Color{0, 0, 255, 255});
  const SDL_Rect far = drawn(*label);
  EXPECT_GT(pixelsOf(0x0000ff), 0);
  EXPECT_EQ(0, pixelsOf(0xff0000));
  EXPECT_EQ((SDL_Rect{near.x, near.y, near.w + 3, near.h + 3}), far);
}

TEST_F(LabelTest, WhatChangesThePictureMakesItAnewOnce) {
  Label* label = make("two lines");
  drawn(*label);
  EXPECT_FALSE(rebuilds(*label));
  const struct {
    const char* name;
    std::function<void()> change;
    bool anew;
  } rows[] = {{"colour", [&] { label->SetColor(white); }, true},
              {"font", [&] { label->SetFont(font); }, true},
              {"shadow",
               [&] {
                 label->SetShadow(true, 5, SDL_Color{1, 2, 3, 4});
               },
               true},
              {"alignment", [&] { label->SetAlignment(RIGHT_UP); }, true},
              {"the alignment in force", [&] { label->SetAlignment(RIGHT_UP); }, false},
              {"text", [&] { label->SetText("two more"); }, true},
              {"the text that it has", [&] { label->SetText("two more"); }, false},
              {"split", [&] { label->SplitText(true); }, false}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    row.change();
    EXPECT_EQ(row.anew, rebuilds(*label));
    EXPECT_FALSE(rebuilds(*label));
  }
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
    EXPECT_EQ((SDL_Rect{xs[a % 3], ys[a / 3], s.x, s.y}), label->getDestRect());
    parent.RemoveComponent(label, true);
  }
}

TEST_F(LabelTest, TheAlignmentInForcePlacesAgain) {
  Label* label = make("text");
  const SDL_Point place = shownAt(*label);
  label->setX(300);
  label->setY(100);
  EXPECT_EQ((SDL_Point{300, 100}), shownAt(*label));
  label->SetAlignment(LEFT_CENTER);
  EXPECT_EQ(place, shownAt(*label));
}

TEST_F(LabelTest, EmptyTextTakesBothTexturesAndTellsTheListener) {
  Label* label = make("text");
  Listener listener;
  label->SetLabelChangedListener(&listener);
  label->SetShadow(true, 2, SDL_Color{255, 0, 0, 255});
  drawn(*label);
  EXPECT_NE(nullptr, label->GetTargetTexture());
  EXPECT_GT(pixelsOf(0xff0000), 0);
  EXPECT_EQ(0, listener.calls) << "only an empty text is told";
  label->SetText("");
  EXPECT_EQ(0, drawn(*label).w);
  EXPECT_EQ(nullptr, label->GetTargetTexture());
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
  EXPECT_EQ(nullptr, label.GetTargetTexture());
  label.SetFont(font);
  EXPECT_NE(0, drawn(label).w);
  label.SetFont(nullptr);
  drawn(label);
  EXPECT_NE(nullptr, label.GetTargetTexture()) << "the old picture stays";
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
  EXPECT_EQ(nullptr, label->GetTargetTexture());
  label->SplitText(true);
  label->SetText("word ");  // the second line is empty
  EXPECT_EQ(0, drawn(*label).w);
  EXPECT_EQ(nullptr, label->GetTargetTexture());
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
  EXPECT_EQ((SDL_Rect{0, 0, mw, one.y + two.y}), label->getSrcRect());
  EXPECT_EQ(mw, label->getDestRect().w);
  EXPECT_EQ(one.y + two.y, label->getDestRect().h);
  EXPECT_EQ(40 + 30 - (one.y + two.y) / 2, label->getDestRect().y);
  EXPECT_EQ(0, pixelsOf(0xff0000)) << "two lines have no shadow";
  EXPECT_EQ(nullptr, SDL_GetRenderTarget(renderer));
}

TEST_F(LabelTest, SplitWithoutASpaceIsOneLine) {
  Label* label = make("Minimum");
  label->SplitText(true);
  label->SetShadow(true, 2, SDL_Color{255, 0, 0, 255});
  drawn(*label);
  EXPECT_EQ(sizeOf("Minimum").x, label->getSrcRect().w);
  EXPECT_EQ(sizeOf("Minimum").y, label->getSrcRect().h);
  EXPECT_GT(pixelsOf(0xff0000), 0);
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

TEST_F(LabelTest, TheTextTextureOutlivesTheLabel) {
  Label* label = make("text");
  drawn(*label);
  SDL_Texture* texture = label->GetTargetTexture();
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

TEST_F(LabelTest, ASurfaceThatItStillHoldsIsFreed) {
  SDL_Surface* surface = SDL_CreateRGBSurfaceWithFormat(0, 2, 2, 32, SDL_PIXELFORMAT_RGBA32);
  surface->refcount = 3;
  Surfaces* label = make<Surfaces>("one");
  label->mpSurface = surface;
  label->draw();
  EXPECT_EQ(2, surface->refcount) << "by a rebuild";
  EXPECT_EQ(nullptr, label->mpSurface);
  label->mpSurface = surface;
  label->SetText("");
  label->draw();
  EXPECT_EQ(nullptr, label->mpSurface);
  EXPECT_EQ(1, surface->refcount);
  surface->refcount = 2;
  label->mpSurface = surface;
  parent.RemoveComponent(label, true);
  EXPECT_EQ(1, surface->refcount) << "with the label";
  SDL_FreeSurface(surface);
}

TEST_F(LabelTest, NoSurfaceIsLeftOfABuild) {
  for (const bool split : {false, true}) {
    Surfaces* label = make<Surfaces>("two lines");
    label->SplitText(split);
    drawn(*label);
    EXPECT_EQ(nullptr, label->mpSurface);
    EXPECT_EQ(nullptr, label->mpSurface2);
    parent.RemoveComponent(label, true);
  }
}

TEST_F(LabelTest, AnotherColourIsThatOfTheTextAtTheNextDraw) {
  Label* label = make("HHH");
  label->SetAlignment(LEFT_UP);
  const SDL_Rect ink = drawn(*label);
  int green = 0, white = 0;
  label->SetColor(SDL_Color{0, 255, 0, 255});
  drawn(*label);
  for (int x = ink.x; x < ink.x + ink.w; ++x) {
    green += pixel(x, ink.y + ink.h / 2) == 0x00ff00u;
    white += pixel(x, ink.y + ink.h / 2) == 0xffffffu;
  }
  EXPECT_GT(green, 0);
  EXPECT_EQ(0, white);
}
