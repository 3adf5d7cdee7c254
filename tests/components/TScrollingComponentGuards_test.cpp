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

TEST_F(Scrolling, WithoutASpeedTheStripStandsWhateverTheWait) {
  Child* child = oneChild();
  ticker.SetScrollSpeedRelative(0.0f);
  ticker.SetWaitDuration(0.5f);
  ticker.AddContent(new Child(400, 20, "two"), -1, TScrollingComponent::CENTER);
  for (Uint32 elapsed : {0, 1, 499, 500, 501, 700, 1000, 1700}) EXPECT_EQ(Xs{0}, at(*child, elapsed)) << elapsed;
  ticker.SetScrollSpeedRelative(-100000.0f);
  EXPECT_EQ(Xs{}, at(*child, 700)) << "the second one's turn, as fast as can be";
}

TEST_F(Scrolling, AMovementWithoutAResultStandsAtThePadding) {
  Child* child = oneChild();
  ticker.SetPadding(7);
  ticker.SetMovementFunction([](float, float) { return std::numeric_limits<float>::quiet_NaN(); });
  EXPECT_EQ(Xs{7}, at(*child, 0));
  EXPECT_EQ(Xs{7}, at(*child, 2500));
}

// A child of no width is drawn where it stands behind the edge, once each 100 pixels.
TEST_F(Scrolling, AWaitThatIsSetWithoutALoopForgetsThePendingOneAndBeginsAnew) {
  Child* child = oneChild();
  ticker.SetWaitDuration(0);
  at(*child, 0);
  clock.set(1500);
  ticker.SetWaitDuration(9.0f);  // for tick 2000
  child->setWidth(0);            // a loop of nothing
  clock.set(1700);
  ticker.SetWaitDuration(3.0f);
  EXPECT_EQ((Xs{100, 200, 300}), at(*child, 1000));
  EXPECT_EQ((Xs{100, 200, 300}), at(*child, 700 + 3001));
  EXPECT_EQ((Xs{99, 199, 299, 399}), at(*child, 700 + 3002));
}

TEST_F(Scrolling, TheShortestLoopIsWaitedForToo) {
  Child* child = oneChild();
  ticker.SetWaitDuration(0.001f);
  child->setWidth(0);
  at(*child, 0);
  ticker.SetWaitDuration(3.0f);
  EXPECT_EQ((Xs{100, 200, 300}), at(*child, 1 + 3001));
  EXPECT_EQ((Xs{99, 199, 299, 399}), at(*child, 1 + 3002));
}

TEST_F(Scrolling, AWaitThatIsSetWithoutChildrenForgetsThePendingOne) {
  at(*oneChild(), 0);
  ticker.SetWaitDuration(9.0f);  // for tick 4000
  ticker.RemoveAllContents();
  ticker.SetWaitDuration(3.0f);
  auto* child = new Child(400, 20, "two");
  ticker.AddContent(child, -1, TScrollingComponent::CENTER);
  EXPECT_EQ((Xs{-250, 250}), at(*child, 3625)) << "in the loop that goes on from the first draw";
}
