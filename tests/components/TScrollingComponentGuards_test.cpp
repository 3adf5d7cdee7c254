// The ticker without a loop, without a speed and with a movement that makes no sense.
#include <limits>

#include "tests/components/TickerFixture.h"

using namespace tickertest;

namespace {

int gone = 0;

struct Counted : Child {
  using Child::Child;
  ~Counted() override { ++gone; }
};

}  // namespace

TEST_F(Scrolling, ContentsThatAreRemovedAreGone) {
  gone = 0;
  for (const char* name : {"one", "two"})
    ticker.AddContent(new Counted(10, 10, name), -1, TScrollingComponent::TOP);
  ticker.RemoveAllContents();
  EXPECT_EQ(2, gone);
  EXPECT_EQ(0, ticker.NumberOfChildren());
}

TEST_F(Scrolling, ARelativeSpeedIsAPercentageOfTheWidthASecond) {
  const struct {
    float speed;
    long duration;
  } rows[] = {{1.0f, 100000}, {2.0f, 50000}, {-20.0f, -5000}, {7.0f, 14286}, {100000.0f, 1}, {0.0f, 0}};
  for (const auto& row : rows) {
    ticker.SetScrollSpeedRelative(row.speed);
    EXPECT_EQ(row.duration, ticker.mScrollDuration) << row.speed;
  }
}

TEST_F(Scrolling, WithoutASpeedTheStripStandsWhateverTheWait) {
  Child* child = oneChild();
  ticker.SetScrollSpeedRelative(0.0f);
  ticker.mWaitDuration = 500;
  ticker.AddContent(new Child(400, 20, "two"), -1, TScrollingComponent::CENTER);
  for (Uint32 elapsed : {0, 1, 499, 500, 501, 700, 1000, 1700}) EXPECT_EQ(Xs{0}, at(*child, elapsed)) << elapsed;
  ticker.mScrollDuration = -1;
  EXPECT_EQ(Xs{}, at(*child, 700)) << "the second one's turn, as fast as can be";
}

TEST_F(Scrolling, AMovementWithoutAResultStandsAtThePadding) {
  Child* child = oneChild();
  ticker.SetPadding(7);
  ticker.SetMovementFunction([](float, float) { return std::numeric_limits<float>::quiet_NaN(); });
  EXPECT_EQ(Xs{7}, at(*child, 0));
  EXPECT_EQ(Xs{7}, at(*child, 2500));
}

TEST_F(Scrolling, AWaitThatIsSetWithoutALoopForgetsThePendingOneAndBeginsAnew) {
  Child* child = oneChild();
  at(*child, 0);
  clock.set(1500);
  ticker.SetWaitDuration(9.0f);
  ASSERT_NE(0u, ticker.mWaitChangeAt);
  ASSERT_EQ(9000, ticker.mWaitChange);
  ticker.mWaitDuration = 0;
  child->setWidth(0);  // a loop of nothing
  clock.set(1700);
  ticker.SetWaitDuration(3.0f);
  EXPECT_EQ(3000, ticker.mWaitDuration);
  EXPECT_EQ(0, ticker.mWaitChange);
  EXPECT_EQ(0u, ticker.mWaitChangeAt);
  EXPECT_EQ(1700u, ticker.mFirstDraw);
}

TEST_F(Scrolling, TheShortestLoopIsWaitedForToo) {
  Child* child = oneChild();
  ticker.mWaitDuration = 1;
  child->setWidth(0);
  at(*child, 0);
  ticker.SetWaitDuration(3.0f);
  EXPECT_EQ(1, ticker.mWaitDuration);
  EXPECT_EQ(3000, ticker.mWaitChange);
  EXPECT_EQ(1001u, ticker.mWaitChangeAt);
}

TEST_F(Scrolling, AWaitThatIsSetWithoutChildrenForgetsThePendingOne) {
  Child* child = oneChild();
  at(*child, 0);
  ticker.SetWaitDuration(9.0f);
  ASSERT_NE(0u, ticker.mWaitChangeAt);
  ticker.RemoveAllContents();
  ticker.SetWaitDuration(3.0f);
  EXPECT_EQ(3000, ticker.mWaitDuration);
  EXPECT_EQ(-1, ticker.mWaitChange);
  EXPECT_EQ(0u, ticker.mWaitChangeAt);
}
