#include "components/TProgressBar.h"

#include <SDL_image.h>
#include <limits>

#include "tests/components/AllocationCount.h"
#include "tests/components/WidgetFixture.h"
#include "tests/support/TestFont.h"

using namespace vendelo_sdl2;

namespace {

struct Bar : TProgressBar {
  Bar(int x, int y) : TProgressBar(nullptr, x, y, 200, 20, "bar") {}
  using TProgressBar::_blinkParameter;
  using TProgressBar::AnimateFullUp;
  using TProgressBar::blikTimestamp;
  using TProgressBar::blinkTreshold;
  using TProgressBar::mCurrentPos;
  using TProgressBar::mpEmptyImage;
  using TProgressBar::mpFullImage;
  using TProgressBar::mPrevX;
  using TProgressBar::mPrevY;
  using TProgressBar::mStep;
  using TProgressBar::mTargetPos;
  using TProgressBar::mTextureBarH;
  using TProgressBar::mTextureBarW;
  using TProgressBar::Orientation;
  using TProgressBar::OutputRectEmpty;
  using TProgressBar::OutputRectFull;
  using TProgressBar::SourceRectEmpty;
  using TProgressBar::SourceRectFull;
  using TProgressBar::widthON;
};

struct Plain : TGuiComponent {
  Plain(int x, int y) : TGuiComponent(nullptr, x, y, 400, 200, "parent") {}
};

class ProgressBar : public WidgetTest {
 protected:
  ProgressBar() : folder(testfont::freshFolder("progressbar")) {
    testfont::writePicture(folder + "empty.png", 200, 20, SDL_Color{0, 0, 255, 255});
    testfont::writePicture(folder + "full.png", 200, 20, SDL_Color{255, 0, 0, 255});
  }
  void dress(Bar& bar) {
    bar.SetEmptyImage(folder + "empty.png");
    bar.SetFullImage(folder + "full.png");
  }
  // Shows a level without movement.
  void showAt(Bar& bar, double level) {
    bar.mCurrentPos = level;
    bar.mTargetPos = static_cast<int>(level);
    clear(0, 0, 0);
    bar.draw();
  }
  const std::string folder;
};

}  // namespace

TEST_F(ProgressBar, StartsAsDocumented) {
  Bar bar(30, 40);
  EXPECT_EQ(0, bar.blinkTreshold);
  EXPECT_TRUE(bar.AnimateFullUp);
  EXPECT_EQ(0, bar.widthON);
  EXPECT_EQ(0u, bar.blikTimestamp);
  EXPECT_TRUE(bar._blinkParameter);
  EXPECT_EQ(0.0, bar.mStep);
  EXPECT_EQ(0.0, bar.mCurrentPos);
  EXPECT_EQ(100, bar.mTargetPos);
  EXPECT_EQ(2, bar.Orientation);
  EXPECT_EQ(nullptr, bar.mpEmptyImage);
  EXPECT_EQ(nullptr, bar.mpFullImage);
  EXPECT_EQ(0, bar.mTextureBarW);
  EXPECT_EQ(0, bar.mTextureBarH);
  EXPECT_EQ((SDL_Rect{0, 0, 0, 0}), bar.SourceRectEmpty);
  EXPECT_EQ((SDL_Rect{30, 40, 200, 20}), bar.OutputRectEmpty);
  EXPECT_EQ((SDL_Rect{0, 0, 0, 0}), bar.SourceRectFull);
  EXPECT_EQ((SDL_Rect{30, 40, 200, 20}), bar.OutputRectFull);
  EXPECT_EQ(std::numeric_limits<int>::min(), bar.mPrevX);
  EXPECT_EQ(std::numeric_limits<int>::min(), bar.mPrevY);
}

TEST_F(ProgressBar, AnimatedLevelsAreLimited) {
  const struct { int asked, target; } rows[] = {{150, 100}, {-5, 0}, {0, 0}, {100, 100}, {37, 37}};
  Bar bar(0, 0);
  for (const auto& row : rows) {
    bar.SetPosition(row.asked, true);
    EXPECT_EQ(row.target, bar.mTargetPos);
    EXPECT_EQ(0.0, bar.mCurrentPos);
  }
}

TEST_F(ProgressBar, ARiseFromNothingMayJump) {
  Bar bar(0, 0);
  bar.AnimateFullUp = false;
  bar.SetPosition(0, true);
  EXPECT_EQ(0.0, bar.mCurrentPos);
  bar.SetPosition(1, true);
  EXPECT_EQ(1.0, bar.mCurrentPos) << "the lowest level too";
  bar.mCurrentPos = 0.0;
  bar.SetPosition(60, true);
  EXPECT_EQ(60.0, bar.mCurrentPos);
  bar.SetPosition(80, true);
  EXPECT_EQ(60.0, bar.mCurrentPos) << "only from exactly 0";
  for (const double level : {1e-9, 0.4, -1e-9, -1.0}) {
    bar.mCurrentPos = level;
    bar.SetPosition(50, true);
    EXPECT_EQ(level, bar.mCurrentPos);
  }
  bar.mCurrentPos = -0.0;
  bar.SetPosition(50, true);
  EXPECT_EQ(50.0, bar.mCurrentPos);
}

TEST_F(ProgressBar, EveryFrameClosesATwentyFifth) {
  Bar bar(0, 0);
  double expected = 0.0;
  int frames = 0;
  while (bar.mCurrentPos < 99.0) {
    bar.draw();
    expected += (100.0 - expected) / 25.0;
    ASSERT_DOUBLE_EQ(expected, bar.mCurrentPos);
    ++frames;
  }
  EXPECT_EQ(113, frames);
  bar.AnimateTask();
  EXPECT_NEAR((100.0 - expected) / 25.0, bar.mStep, 1e-12);
  for (int i = 0; i < 5000; ++i) bar.AnimateTask();
  EXPECT_LE(bar.mCurrentPos, 100.0);
  EXPECT_NEAR(100.0, bar.mCurrentPos, 1e-9);
  bar.SetPosition(20, true);
  bar.AnimateTask();
  EXPECT_NEAR(100.0 - 80.0 / 25.0, bar.mCurrentPos, 1e-9);
  for (int i = 0; i < 5000; ++i) bar.AnimateTask();
  EXPECT_GE(bar.mCurrentPos, 20.0);
}

TEST_F(ProgressBar, WithoutAnimationTheTargetStays) {
  Bar bar(0, 0);
  bar.SetPosition(50, false);
  EXPECT_EQ(50.0, bar.mCurrentPos);
  EXPECT_EQ(100, bar.mTargetPos);
  bar.draw();
  EXPECT_EQ(52.0, bar.mCurrentPos);
  bar.SetPosition(150, false);
  EXPECT_EQ(150.0, bar.mCurrentPos) << "not limited";
  bar.draw();
  EXPECT_EQ(148.0, bar.mCurrentPos);
}

TEST_F(ProgressBar, SetMaxHasNoEffect) {
  Bar bar(0, 0);
  bar.SetMax(7);
  bar.SetPosition(100, true);
  EXPECT_EQ(100, bar.mTargetPos);
}

TEST_F(ProgressBar, TheBlinkParameterTogglesAtALowLevel) {
  Bar bar(0, 0);
  bar.SetPosition(0, true);
  bar.AnimateTask();
  EXPECT_TRUE(bar._blinkParameter) << "off without a level";
  bar.blinkTreshold = 1;
  bar.AnimateTask();
  EXPECT_FALSE(bar._blinkParameter);
  bar.blikTimestamp = 0;
  bar.blinkTreshold = 10;
  bar.SetPosition(11, true);
  bar.AnimateTask();
  EXPECT_TRUE(bar._blinkParameter);
  EXPECT_EQ(0u, bar.blikTimestamp);
  bar.SetPosition(10, true);
  bar.AnimateTask();
  EXPECT_FALSE(bar._blinkParameter);
  EXPECT_EQ(1000u, bar.blikTimestamp);
  clock.advance(9);
  bar.AnimateTask();
  EXPECT_TRUE(bar._blinkParameter) << "in every other case true";
  clock.advance(1);
  bar.AnimateTask();
  EXPECT_FALSE(bar._blinkParameter);
  EXPECT_EQ(1010u, bar.blikTimestamp);
}

TEST_F(ProgressBar, FilledWidth) {
  const struct {
    double level;
    int width;
  } rows[] = {{-3, 0},   {0, 0},       {0.4, 0},    {0.6, 1},   {50, 100}, {98.9, 197},
              {99, 198}, {99.01, 200}, {99.5, 200}, {100, 200}, {150, 200}};
  Bar bar(0, 0);
  dress(bar);
  EXPECT_EQ(200, bar.mTextureBarW);
  EXPECT_EQ(20, bar.mTextureBarH);
  for (const auto& row : rows) {
    showAt(bar, row.level);
    EXPECT_EQ(row.width, bar.widthON) << row.level;
  }
  bar.mTextureBarW = 2000;
  showAt(bar, 0.25);  // 0.24 after the frame's step
  EXPECT_EQ(4, bar.widthON);
}

TEST_F(ProgressBar, RunsToTheRight) {
  Bar bar(30, 40);
  dress(bar);
  showAt(bar, 25);
  EXPECT_EQ((SDL_Rect{0, 0, 150, 20}), bar.SourceRectEmpty);
  EXPECT_EQ((SDL_Rect{30, 40, 150, 20}), bar.OutputRectEmpty);
  EXPECT_EQ((SDL_Rect{150, 0, 50, 20}), bar.SourceRectFull);
  EXPECT_EQ((SDL_Rect{180, 40, 50, 20}), bar.OutputRectFull);
  EXPECT_EQ(0x0000ffu, pixel(179, 45));
  EXPECT_EQ(0xff0000u, pixel(180, 45));
  EXPECT_EQ((SDL_Rect{30, 40, 200, 20}), inked(0));
  EXPECT_GOLDEN(renderer, "components/bar_right");
}

TEST_F(ProgressBar, TheLeadingPartIsCutToPixels) {
  Bar bar(30, 40);
  dress(bar);
  const struct {
    double level;
    int lead;
  } rows[] = {{0, 200}, {0.3, 199}, {25.2, 149}, {99.7, 0}, {100, 0}};
  for (const auto& row : rows) {
    showAt(bar, row.level);
    EXPECT_EQ((SDL_Rect{0, 0, row.lead, 20}), bar.SourceRectEmpty) << row.level;
    EXPECT_EQ((SDL_Rect{row.lead, 0, 200 - row.lead, 20}), bar.SourceRectFull) << row.level;
    EXPECT_EQ(30 + row.lead, bar.OutputRectFull.x) << row.level;
  }
}

TEST_F(ProgressBar, ATargetIsNotOvershotFromEitherSide) {
  Bar bar(0, 0);
  for (const double level : {40.0, 60.0}) {
    bar.mCurrentPos = level;
    bar.SetPosition(50, true);
    double before = level;
    for (int i = 0; i < 2000; ++i) {
      bar.AnimateTask();
      EXPECT_TRUE(level < 50 ? bar.mCurrentPos >= before && bar.mCurrentPos <= 50.0
                             : bar.mCurrentPos <= before && bar.mCurrentPos >= 50.0)
        << bar.mCurrentPos;
      before = bar.mCurrentPos;
    }
  }
}

TEST_F(ProgressBar, TheBlinkParameterTogglesOverTheEndOfTheClock) {
  Bar bar(0, 0);
  bar.blinkTreshold = 10;
  bar.SetPosition(5, true);
  clock.set(0xfffffffcu);
  bar.AnimateTask();
  EXPECT_FALSE(bar._blinkParameter);
  clock.set(0xffffffffu);
  bar.AnimateTask();
  EXPECT_TRUE(bar._blinkParameter);
  clock.set(5);  // 9 ms
  bar.AnimateTask();
  EXPECT_TRUE(bar._blinkParameter);
  clock.set(6);
  bar.AnimateTask();
  EXPECT_FALSE(bar._blinkParameter);
  EXPECT_EQ(6u, bar.blikTimestamp);
}

TEST_F(ProgressBar, RunsToTheLeft) {
  Bar bar(30, 40);
  dress(bar);
  bar.SetRunToLeft();
  EXPECT_EQ(1, bar.Orientation);
  showAt(bar, 25);
  EXPECT_EQ((SDL_Rect{0, 0, 150, 20}), bar.SourceRectFull);
  EXPECT_EQ((SDL_Rect{180, 40, 50, 20}), bar.OutputRectEmpty);
  EXPECT_EQ(0xff0000u, pixel(179, 45));
  EXPECT_EQ(0x0000ffu, pixel(180, 45));
  bar.SetRunToRight();
  EXPECT_EQ(2, bar.Orientation);
  bar.Orientation = 3;
  showAt(bar, 25);
  EXPECT_EQ(0, inked(0).w) << "another orientation draws nothing";
}

TEST_F(ProgressBar, FollowsItsParentByDifferences) {
  Plain parent(5, 5);
  auto* bar = new Bar(30, 40);  // absolute, whatever the parent's place
  parent.AddComponent(bar);
  dress(*bar);
  showAt(*bar, 50);
  EXPECT_EQ((SDL_Rect{30, 40, 200, 20}), inked(0));
  parent.setX(25);
  parent.setY(-5);
  showAt(*bar, 50);
  EXPECT_EQ((SDL_Rect{50, 30, 200, 20}), inked(0));
  bar->setX(300);  // the bar's own place has no effect any more
  showAt(*bar, 50);
  EXPECT_EQ((SDL_Rect{50, 30, 200, 20}), inked(0));
}

TEST_F(ProgressBar, WithoutImagesOnlyTheParentIsFollowed) {
  Plain parent(5, 5);
  auto* bar = new Bar(30, 40);
  parent.AddComponent(bar);
  bar->draw();
  EXPECT_EQ(5, bar->mPrevX);
  parent.setX(9);
  bar->draw();
  EXPECT_EQ(9, bar->mPrevX);
  EXPECT_EQ(30, bar->OutputRectEmpty.x);
}

TEST_F(ProgressBar, AMissingImageLeavesItsPartUndrawn) {
  testing::internal::CaptureStdout();
  Bar bar(30, 40);
  dress(bar);
  bar.SetEmptyImage("/nowhere/empty.png");
  testing::internal::GetCapturedStdout();
  EXPECT_EQ(nullptr, bar.mpEmptyImage);
  showAt(bar, 50);
  EXPECT_EQ((SDL_Rect{130, 40, 100, 20}), inked(0));
}

TEST_F(ProgressBar, TakesATextureOverAndFreesTheOldOne) {
  Bar bar(30, 40);
  dress(bar);
  SDL_Texture* own = app.makeTexture(120, 12, SDL_Color{0, 255, 0, 255});
  bar.SetFullImage(own);
  EXPECT_EQ(own, bar.mpFullImage.get());
  EXPECT_EQ(120, bar.mTextureBarW);
  EXPECT_EQ(12, bar.mTextureBarH);
  bar.SetFullImage(own);  // the same once more
  EXPECT_EQ(0, SDL_QueryTexture(own, nullptr, nullptr, nullptr, nullptr));
}

TEST_F(ProgressBar, AlphaReachesBothImagesAndNoChildIsDrawn) {
  Bar bar(30, 40);
  dress(bar);
  auto* child = new Plain(0, 100);
  child->SetTargetTexture(solid(400, 50, SDL_Color{255, 255, 255, 255}));
  bar.AddComponent(child);
  bar.setAlpha(100);
  showAt(bar, 50);
  EXPECT_NEAR(100, static_cast<int>(pixel(40, 50) & 255), 2);
  EXPECT_NEAR(100, static_cast<int>(pixel(220, 50) >> 16), 2);
  EXPECT_EQ((SDL_Rect{30, 40, 200, 20}), inked(0));
}

TEST_F(ProgressBar, AFrameTakesNothingFromTheHeap) {
  Bar bar(30, 40);
  dress(bar);
  bar.draw();
  const long before = allocations::count;
  for (int i = 0; i < 50; ++i) bar.draw();
  EXPECT_EQ(before, allocations::count);
}
