// The ticker where its tick clock comes round, every 49.7 days: 2^32 ms after 0 it begins at 0 again.
#include <cstdint>

#include "tests/components/TickerFixture.h"

using namespace tickertest;

namespace {

constexpr uint64_t kRound = uint64_t{1} << 32;

class ScrollingClock : public Scrolling {
 protected:
  // As the text should stand so many ms after the tick at which the ticker was drawn first.
  static Xs expected(uint64_t elapsed) { return standing(elapsed, 2000, -1000); }
  // Draws at a tick counted on over the rounds of the clock.
  Xs seen(Child& child, uint64_t tick) {
    clock.set(static_cast<Uint32>(tick));
    child.places.clear();
    ticker.draw();
    return child.xs();
  }
};

}  // namespace

TEST_F(ScrollingClock, TheTextRunsOnOverTheEndOfTheClock) {
  Child* child = oneChild();
  const uint64_t first = kRound - 2500;
  for (uint64_t elapsed = 0; elapsed < 10000; elapsed += 10)
    ASSERT_EQ(expected(elapsed), seen(*child, first + elapsed)) << elapsed;
}

TEST_F(ScrollingClock, ATickerFirstDrawnAtTickZeroRunsOn) {
  Child* child = oneChild();
  EXPECT_EQ((Xs{0}), seen(*child, kRound));
  // The first draw counts as one of the tick before.
  for (uint64_t elapsed = 5; elapsed < 8000; elapsed += 10)
    ASSERT_EQ(expected(elapsed + 1), seen(*child, kRound + elapsed)) << elapsed;
}

TEST_F(ScrollingClock, TheTextDoesNotJump49DaysAfterItsFirstDraw) {
  Child* child = oneChild();
  const uint64_t first = 1000, day = 24ull * 60 * 60 * 1000;
  uint64_t elapsed = 0;
  for (; elapsed < kRound - 2 * day; elapsed += day + 1234567)
    ASSERT_EQ(expected(elapsed), seen(*child, first + elapsed)) << elapsed;
  for (const uint64_t last : {kRound - 5000, 2 * kRound - 5000, 3 * kRound - 5000}) {
    for (; elapsed < last; elapsed += day) seen(*child, first + elapsed);
    for (elapsed = last; elapsed < last + 10000; elapsed += 10)
      ASSERT_EQ(expected(elapsed), seen(*child, first + elapsed)) << elapsed;
  }
}

TEST_F(ScrollingClock, AClockThatIsSetBackCountsFromTheFirstDraw) {
  Child* child = oneChild();
  seen(*child, 1000);
  seen(*child, 900000);
  EXPECT_EQ(expected(2500), seen(*child, 3500));
}

TEST_F(ScrollingClock, AWaitChangeBehindTheEndOfTheClockWaitsForItsTick) {
  Child* child = oneChild();
  const uint64_t first = kRound - 1000;
  seen(*child, first);
  clock.set(static_cast<Uint32>(first + 10));
  ticker.SetWaitDuration(5.0f);  // at the end of 3000 ms, on tick 2000 of the next round
  for (const uint64_t elapsed : {20, 999, 1000, 2500, 2999})
    EXPECT_EQ(expected(elapsed), seen(*child, first + elapsed)) << elapsed;
  EXPECT_EQ((Xs{0}), seen(*child, first + 3000));
  EXPECT_EQ((Xs{0}), seen(*child, first + 3000 + 5000));
  EXPECT_EQ((Xs{-250, 250}), seen(*child, first + 3000 + 5625));
}

TEST_F(ScrollingClock, AWaitChangeDueBeforeTheEndOfTheClockIsTakenBehindIt) {
  Child* child = oneChild();
  const uint64_t first = kRound - 3010;
  seen(*child, first);
  clock.set(static_cast<Uint32>(first + 2000));
  ticker.SetWaitDuration(5.0f);
  EXPECT_EQ((Xs{-250, 250}), seen(*child, kRound - 10 + 5625)) << "the frames in between were not drawn";
}

TEST_F(ScrollingClock, AWaitChangeThatFallsOnTickZeroIsNotLost) {
  Child* child = oneChild();
  seen(*child, kRound - 3000);
  ticker.SetWaitDuration(5.0f);
  EXPECT_EQ((Xs{0}), seen(*child, kRound));
  EXPECT_EQ((Xs{0}), seen(*child, kRound + 4900));
  EXPECT_EQ((Xs{-250, 250}), seen(*child, kRound + 5625));
}

TEST_F(ScrollingClock, AWaitChangeAfterARoundOfTheClockStillFallsOnTheEndOfALoop) {
  Child* child = oneChild();
  const uint64_t first = 1000;
  seen(*child, first);
  seen(*child, first + kRound / 2);
  seen(*child, first + kRound - 1);
  const uint64_t now = first + kRound + 100;
  seen(*child, now);
  ticker.SetWaitDuration(5.0f);
  const uint64_t end = ((now - first) / 3000 + 1) * 3000;  // the loop counts without the spacing here
  EXPECT_EQ(expected(end - 1), seen(*child, first + end - 1));
  EXPECT_EQ((Xs{0}), seen(*child, first + end));
  EXPECT_EQ((Xs{-250, 250}), seen(*child, first + end + 5625));
}

TEST_F(ScrollingClock, AWaitChangeAtOnceOnTickZeroKeepsTheTickerRunning) {
  auto* child = new Child(0, 20, "nothing");
  ticker.AddContent(child, -1, TScrollingComponent::CENTER);
  ticker.SetScrollSpeedFixed(-400);
  seen(*child, 5000);
  clock.set(0);
  ticker.SetWaitDuration(5.0f);
  EXPECT_EQ((Xs{100, 200, 300}), seen(*child, 2000));
  EXPECT_EQ((Xs{50, 150, 250, 350}), seen(*child, 5125));
}
