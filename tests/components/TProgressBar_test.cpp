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
  // These have no setter, or show nowhere.
  using TProgressBar::_blinkParameter;
  using TProgressBar::AnimateFullUp;
  using TProgressBar::blinkTreshold;
  using TProgressBar::Orientation;
  using TProgressBar::widthON;
};

// What a new bar holds.
struct Inside : Bar {
  using Bar::Bar;
  using TProgressBar::blikTimestamp;
  using TProgressBar::mCurrentPos;
  using TProgressBar::mpEmptyImage;
  using TProgressBar::mpFullImage;
  using TProgressBar::mPrevX;
  using TProgressBar::mPrevY;
  using TProgressBar::mStep;
  using TProgressBar::mTargetPos;
  using TProgressBar::mTextureBarH;
  using TProgressBar::mTextureBarW;
  using TProgressBar::OutputRectEmpty;
  using TProgressBar::OutputRectFull;
  using TProgressBar::SourceRectEmpty;
  using TProgressBar::SourceRectFull;
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
  // Images whose columns tell their number in the green, the last one at a green of 199.
  void dressInColumns(Bar& bar) {
    for (const bool full : {false, true}) {
      SDL_Surface* surface = SDL_CreateRGBSurfaceWithFormat(0, 200, 20, 24, SDL_PIXELFORMAT_RGB24);
      for (int x = 0; x < 200; ++x) {
        const SDL_Rect column{x, 0, 1, 20};
        SDL_FillRect(surface, &column,
                     SDL_MapRGB(surface->format, full ? 255 : 0, static_cast<Uint8>(x), full ? 0 : 255));
      }
      const std::string file = folder + (full ? "fullcolumns.png" : "emptycolumns.png");
      EXPECT_EQ(0, IMG_SavePNG(surface, file.c_str()));
      SDL_FreeSurface(surface);
      full ? bar.SetFullImage(file) : bar.SetEmptyImage(file);
    }
  }
  void show(Bar& bar) {
    clear(0, 0, 0);
    bar.draw();
  }
  // Shows a level without movement.
  void showAt(Bar& bar, int level) {
    bar.SetPosition(level, true);
    bar.SetPosition(level, false);
    show(bar);
  }
  // Shows the level that is a twenty-fifth of the way.
  void showOnTheWay(Bar& bar, int from, int to) {
    bar.SetPosition(to, true);
    bar.SetPosition(from, false);
    show(bar);
  }
  // How many of the 200 columns are full after the next frame.
  int full(Bar& bar) {
    show(bar);
    return pixelsOf(0xff0000) / 20;
  }
  // The empty columns stand before the full ones, each in its place.
  void expectColumns(int x, int y, int empty) {
    for (int n = 0; n < 200; ++n)
      ASSERT_EQ((n < empty ? 0x0000ffu : 0xff0000u) | static_cast<Uint32>(n) << 8, pixel(x + n, y)) << n;
  }
  const std::string folder;
};

}  // namespace

TEST_F(ProgressBar, StartsAsDocumented) {
  Inside bar(30, 40);
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
  const struct {
    int asked, first, last;
  } rows[] = {{150, 8, 200}, {-5, 0, 0}, {0, 0, 0}, {100, 8, 200}, {37, 3, 74}};
  for (const auto& row : rows) {
    Bar bar(0, 0);
    dress(bar);
    bar.SetPosition(row.asked, true);
    EXPECT_EQ(row.first, full(bar)) << row.asked;
    for (int i = 0; i < 5000; ++i) bar.AnimateTask();
    EXPECT_EQ(row.last, full(bar)) << row.asked;
  }
}

TEST_F(ProgressBar, ARiseFromNothingMayJump) {
  Bar bar(0, 0);
  dress(bar);
  bar.AnimateFullUp = false;
  bar.SetPosition(0, true);
  EXPECT_EQ(0, full(bar));
  bar.SetPosition(1, true);
  EXPECT_EQ(2, full(bar)) << "the lowest level too";
  bar.SetPosition(0, false);
  bar.SetPosition(60, true);
  EXPECT_EQ(120, full(bar));
  bar.SetPosition(80, true);
  EXPECT_EQ(122, full(bar)) << "only from exactly 0";
  for (const int almost : {1, -1}) {
    bar.SetPosition(almost, false);
    bar.SetPosition(50, true);
    EXPECT_GT(7, full(bar));
    bar.SetPosition(almost, false);
    bar.SetPosition(0, true);
    for (int i = 0; i < 500; ++i) bar.AnimateTask();
    bar.SetPosition(50, true);
    EXPECT_GT(7, full(bar)) << "from about " << almost << "e-9";
  }
}

TEST_F(ProgressBar, EveryFrameClosesATwentyFifth) {
  Bar bar(0, 0);
  dress(bar);
  double expected = 0.0;
  for (int frame = 1; frame <= 113; ++frame) {
    expected += (100.0 - expected) / 25.0;
    ASSERT_EQ(200 - static_cast<int>(200 * (100.0 - expected) / 100.0), full(bar)) << frame;
  }
  for (int i = 0; i < 5000; ++i) bar.AnimateTask();
  EXPECT_EQ(200, full(bar));
  bar.SetPosition(20, true);
  bar.AnimateTask();          // 96.8
  EXPECT_EQ(188, full(bar));  // 93.728
  for (int i = 0; i < 5000; ++i) bar.AnimateTask();
  EXPECT_NEAR(40, full(bar), 1);
}

TEST_F(ProgressBar, WithoutAnimationTheTargetStays) {
  Bar bar(0, 0);
  dress(bar);
  bar.SetPosition(50, false);
  EXPECT_EQ(104, full(bar)) << "on the way to 100";
  bar.SetPosition(0, true);
  bar.SetPosition(150, false);
  for (int i = 0; i < 10; ++i) bar.AnimateTask();
  EXPECT_EQ(192, full(bar)) << "not limited: 95.7 after eleven frames";
}

TEST_F(ProgressBar, SetMaxHasNoEffect) {
  Bar bar(0, 0);
  dress(bar);
  bar.SetMax(7);
  bar.SetPosition(100, true);
  EXPECT_EQ(8, full(bar));
  bar.SetPosition(100, false);
  EXPECT_EQ(200, full(bar));
}

TEST_F(ProgressBar, TheBlinkParameterTogglesAtALowLevel) {
  Bar bar(0, 0);
  bar.SetPosition(0, true);
  bar.AnimateTask();
  EXPECT_TRUE(bar._blinkParameter) << "off without a level";
  bar.blinkTreshold = 1;
  bar.AnimateTask();
  EXPECT_FALSE(bar._blinkParameter);
  clock.advance(10);
  bar.blinkTreshold = 10;
  bar.SetPosition(11, true);
  bar.AnimateTask();
  EXPECT_TRUE(bar._blinkParameter);
  bar.SetPosition(10, true);
  bar.AnimateTask();
  EXPECT_FALSE(bar._blinkParameter) << "the time runs from the last change alone";
  clock.advance(9);
  for (int i = 0; i < 2; ++i) {
    bar.AnimateTask();
    EXPECT_TRUE(bar._blinkParameter) << "in every other case true";
  }
  clock.advance(1);
  bar.AnimateTask();
  EXPECT_FALSE(bar._blinkParameter);
}

// Of the full image; a level above 99 counts as all of it.
TEST_F(ProgressBar, FilledWidth) {
  const struct {
    int from, to;
    int width;
  } rows[] = {{-3, 0, 0},    {0, 0, 0},      {0, 10, 0},     {0, 15, 1},      {50, 50, 100},  {99, 97, 197},
              {99, 99, 198}, {99, 100, 200}, {100, 88, 200}, {100, 100, 200}, {150, 100, 200}};
  Bar bar(0, 0);
  dress(bar);
  for (const auto& row : rows) {
    showOnTheWay(bar, row.from, row.to);
    EXPECT_EQ(row.width, bar.widthON) << row.from << " to " << row.to;
  }
  bar.SetFullImage(app.makeTexture(2000, 20, SDL_Color{0, 255, 0, 255}));
  showOnTheWay(bar, 0, 6);  // 0.24
  EXPECT_EQ(4, bar.widthON);
}

TEST_F(ProgressBar, RunsToTheRight) {
  Bar bar(30, 40);
  dress(bar);
  showAt(bar, 25);
  EXPECT_EQ((SDL_Rect{30, 40, 200, 20}), inked(0));
  EXPECT_GOLDEN(renderer, "components/bar_right");
  dressInColumns(bar);
  showAt(bar, 25);
  EXPECT_EQ((SDL_Rect{30, 40, 200, 20}), inked(0));
  expectColumns(30, 40, 150);
  expectColumns(30, 59, 150);
}

TEST_F(ProgressBar, TheLeadingPartIsCutToPixels) {
  Bar bar(30, 40);
  dressInColumns(bar);
  const struct {
    int from, to;
    int lead;
  } rows[] = {{0, 0, 200}, {0, 8, 199}, {25, 30, 149}, {25, 20, 150}, {103, 20, 0}, {100, 100, 0}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.lead);
    showOnTheWay(bar, row.from, row.to);
    expectColumns(30, 45, row.lead);
  }
}

TEST_F(ProgressBar, ATargetIsNotOvershotFromEitherSide) {
  Bar bar(0, 0);
  dress(bar);
  for (const int level : {40, 60}) {
    bar.SetPosition(level, false);
    bar.SetPosition(50, true);
    int before = 2 * level;
    for (int i = 0; i < 200; ++i) {
      const int now = full(bar);
      EXPECT_TRUE(level < 50 ? now >= before && now <= 100 : now <= before && now >= 100) << now;
      before = now;
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
}

TEST_F(ProgressBar, RunsToTheLeft) {
  Bar bar(30, 40);
  dressInColumns(bar);
  bar.SetRunToLeft();
  showAt(bar, 25);
  EXPECT_EQ((SDL_Rect{30, 40, 200, 20}), inked(0));
  for (int n = 0; n < 200; ++n)
    ASSERT_EQ((n < 150 ? 0xff0000u : 0x0000ffu) | static_cast<Uint32>(n) << 8, pixel(30 + n, 45)) << n;
  Bar back(30, 40);
  dressInColumns(back);
  back.SetRunToLeft();
  back.SetRunToRight();
  showAt(back, 25);
  expectColumns(30, 45, 150);
}

TEST_F(ProgressBar, AnotherDirectionDrawsNothing) {
  Bar bar(30, 40);
  dress(bar);
  bar.Orientation = 3;
  showAt(bar, 25);
  EXPECT_EQ(0, inked(0).w);
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
  parent.setX(9);
  parent.setY(2);
  bar->draw();
  dress(*bar);
  showAt(*bar, 50);
  EXPECT_EQ((SDL_Rect{30, 40, 200, 20}), inked(0)) << "what the parent went before does not count";
  parent.setX(19);
  showAt(*bar, 50);
  EXPECT_EQ((SDL_Rect{40, 40, 200, 20}), inked(0));
}

TEST_F(ProgressBar, AMissingImageLeavesItsPartUndrawn) {
  testing::internal::CaptureStdout();
  Bar bar(30, 40);
  dress(bar);
  bar.SetEmptyImage("/nowhere/empty.png");
  testing::internal::GetCapturedStdout();
  showAt(bar, 50);
  EXPECT_EQ((SDL_Rect{130, 40, 100, 20}), inked(0));
}

TEST_F(ProgressBar, TakesATextureOverWithItsSize) {
  Bar bar(30, 40);
  dress(bar);
  SDL_Texture* own = app.makeTexture(120, 12, SDL_Color{0, 255, 0, 255});
  bar.SetFullImage(own);
  bar.SetFullImage(own);  // the same once more
  showAt(bar, 75);
  EXPECT_EQ((SDL_Rect{30, 40, 120, 12}), inked(0));
  EXPECT_EQ(90 * 12, pixelsOf(0x00ff00));
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
