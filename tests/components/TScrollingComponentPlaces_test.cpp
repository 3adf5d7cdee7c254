// The ticker's arithmetic: which numbers are cut, which are rounded, and which child is drawn at all.
#include <memory>
#include <string>

#include "tests/components/TickerFixture.h"

using namespace tickertest;

namespace {

class ScrollingPlaces : public Scrolling {
 protected:
  Child* add(int width) {
    auto* child = new Child(width, 20, ("child" + std::to_string(ticker.NumberOfChildren())).c_str());
    ticker.AddContent(child, -1, TScrollingComponent::TOP);
    return child;
  }
};

}  // namespace

TEST_F(ScrollingPlaces, ThePlaceBehindAChildIsCutToPixels) {
  Child* child = add(100);
  ticker.SetSpacingFixed(33.7f);
  ticker.SetWaitDuration(-1.0f);
  // 133.7, 133 + 133.7 = 266.7 and 266 + 133.7 = 399.7
  EXPECT_EQ((Xs{0, 133, 266, 399}), at(*child, 0));
  ticker.SetPadding(-250);
  EXPECT_EQ((Xs{17, 150, 283}), at(*child, 0)) << "-116.3 becomes -116: towards nothing";
}

TEST_F(ScrollingPlaces, AChildThatEndsAtTheLeftEdgeOrBeginsAtTheRightOneIsNotDrawn) {
  Child* child = oneChild();
  EXPECT_EQ((Xs{0}), at(*child, 0));
  EXPECT_EQ((Xs{-100}), at(*child, 2250)) << "the next one begins at 400";
  EXPECT_EQ((Xs{-101, 399}), at(*child, 2253));
  EXPECT_EQ((Xs{100}), at(*child, 3000)) << "the first one ends at 0";
  EXPECT_EQ((Xs{-399, 101}), at(*child, 2998));
}

TEST_F(ScrollingPlaces, TheStartOfEachChildIsCutToMilliseconds) {
  // 30 children of 100 pixels in a ticker of 300: 333 1/3 ms each, of which 333 count: child 20 begins at 6660 ms.
  Ticker narrow(0, 0, 300, 60);
  std::vector<Child*> children;
  for (int i = 0; i < 30; ++i) {
    children.push_back(new Child(100, 20, ("c" + std::to_string(i)).c_str()));
    narrow.AddContent(children.back(), -1, TScrollingComponent::TOP);
  }
  narrow.SetSpacingFixed(0);
  narrow.SetScrollSpeedFixed(-300);
  narrow.draw();
  clock.set(1000 + 6700);
  for (Child* child : children) child->places.clear();
  narrow.draw();
  EXPECT_EQ((Xs{-12}), children[20]->xs());  // 40 ms are 12 pixels; of 33 1/3 ms they would be 10
  EXPECT_EQ((Xs{88}), children[21]->xs());
}

TEST_F(ScrollingPlaces, TheOffsetIsRoundedOnceWithThePadding) {
  Child* child = oneChild();
  ticker.SetPadding(0);
  at(*child, 0);
  // 0.4 pixels a millisecond: 0.4, 0.8, 1.2, 1.6
  EXPECT_EQ((Xs{0}), at(*child, 2001));
  EXPECT_EQ((Xs{-1}), at(*child, 2002));
  EXPECT_EQ((Xs{-1}), at(*child, 2003));
  EXPECT_EQ((Xs{-2}), at(*child, 2004));
}

TEST_F(ScrollingPlaces, ToTheRightTheOffsetOfTheChildrenGoneBeforeIsAdded) {
  Child *a = add(100), *b = add(60);
  ticker.SetSpacingFixed(20);
  ticker.SetScrollSpeedFixed(400);
  ticker.SetWaitDuration(0.5f);
  at(*a, 0);
  // a: 500 + 120 * 1000 / 400 = 800 ms; b: 500 + 200 ms
  b->places.clear();
  EXPECT_EQ((Xs{120, 320}), at(*a, 900));
  EXPECT_EQ((Xs{240}), b->xs());
  EXPECT_EQ((Xs{160, 360}), at(*a, 1400)) << "half of b's slide";
}

TEST_F(ScrollingPlaces, AWaitOfNothingSlidesOnWithoutAHalt) {
  Child* child = add(400);
  ticker.SetScrollSpeedFixed(-400);
  EXPECT_EQ((Xs{0}), at(*child, 0));
  EXPECT_EQ((Xs{-4}), at(*child, 10));
  EXPECT_EQ((Xs{-250, 250}), at(*child, 625));
}

TEST_F(ScrollingPlaces, ShortWaitsAreWaits) {
  const struct {
    float seconds;
    Uint32 milliseconds;
  } rows[] = {{0.25f, 250}, {0.0006f, 1}, {0.0f, 0}};
  enum When { kWithoutChild, kBeforeTheFirstDraw, kAtTheEndOfALoop };
  for (const auto& row : rows)
    for (const When when : {kWithoutChild, kBeforeTheFirstDraw, kAtTheEndOfALoop}) {
      SCOPED_TRACE(std::to_string(row.seconds) + ", " + std::to_string(when));
      Ticker other(0, 50, 400, 60);
      auto* child = new Child(400, 20, "one");
      other.SetScrollSpeedFixed(-400);
      other.SetWaitDuration(2.0f);
      if (when == kWithoutChild) other.SetWaitDuration(row.seconds);
      other.AddContent(child, -1, TScrollingComponent::TOP);
      if (when == kBeforeTheFirstDraw) other.SetWaitDuration(row.seconds);
      at(other, *child, 0);
      if (when == kAtTheEndOfALoop) other.SetWaitDuration(row.seconds);
      const Uint32 begin = when == kAtTheEndOfALoop ? 3000 : 0;
      EXPECT_EQ((Xs{0}), at(other, *child, begin + row.milliseconds + 1));
      EXPECT_EQ((Xs{-1}), at(other, *child, begin + row.milliseconds + 2));
    }
}

TEST_F(ScrollingPlaces, AWaitChangeThatIsSetAgainIsTheLastOne) {
  Child* child = oneChild();
  at(*child, 0);
  ticker.SetWaitDuration(0.25f);
  ticker.SetWaitDuration(0.0f);
  EXPECT_EQ((Xs{0}), at(*child, 3000));
  EXPECT_EQ((Xs{-1}), at(*child, 3002));
}

// 500 + 250 and 500 + 150; with the spacing a loop of the strip takes 1900.
TEST_F(ScrollingPlaces, ALoopOfAWaitChangeTakesEveryChildAndTheSizeOfTheSpeed) {
  add(100);
  Child* child = add(60);
  ticker.SetScrollSpeedFixed(-400);
  ticker.SetWaitDuration(0.5f);
  at(*child, 0);
  EXPECT_EQ((Xs{0, 360}), at(*child, 1399));
  ticker.SetWaitDuration(0.75f);
  clock.set(1000 + 1400);
  ticker.SetWaitDuration(1.0f);
  EXPECT_EQ((Xs{0, 360}), at(*child, 1400)) << "on the end the next loop has begun";
  EXPECT_EQ((Xs{40}), at(*child, 2799));
  EXPECT_EQ((Xs{200}), at(*child, 2800));
  EXPECT_EQ((Xs{200}), at(*child, 2800 + 1001));
  EXPECT_EQ((Xs{199}), at(*child, 2800 + 1002));
  clock.set(1000 + 2800 + 2399);
  ticker.SetWaitDuration(0.5f);  // 1000 + 250 and 1000 + 150
  EXPECT_EQ((Xs{0, 360}), at(*child, 2800 + 2399));
  EXPECT_EQ((Xs{200}), at(*child, 2800 + 2400));
}

TEST_F(ScrollingPlaces, TheAlphaIsThatOfTheLowBits) {
  Child* child = add(400);
  child->SetTargetTexture(solid(400, 20, SDL_Color{255, 255, 255, 255}));
  ticker.setAlpha(256 + 100);
  clear(0, 0, 0);
  ticker.draw();
  EXPECT_EQ(0x646464u, pixel(10, 55));
}

TEST_F(ScrollingPlaces, OddRestsAboveACentredChildAreHalvedDown) {
  Ticker odd(0, 0, 400, 61);
  auto *middle = new Child(10, 20, "m"), *bottom = new Child(10, 20, "b"), *tall = new Child(10, 70, "t");
  odd.AddContent(middle, -1, TScrollingComponent::CENTER);
  odd.AddContent(bottom, -1, TScrollingComponent::BOTTOM);
  odd.AddContent(tall, -1, TScrollingComponent::CENTER);
  odd.draw();
  EXPECT_EQ(20, middle->places.at(0).y);
  EXPECT_EQ(41, bottom->places.at(0).y);
  EXPECT_EQ(-4, tall->places.at(0).y);
}
