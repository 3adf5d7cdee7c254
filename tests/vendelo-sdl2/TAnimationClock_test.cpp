// Times of an animation: pauses, delays, starts in the future, followed clocks, moved end points.
#include <gtest/gtest.h>

#include "tests/support/FakeClock.h"
#include "vendelo-sdl2/TAnimation.h"

using namespace vendelo_sdl2;

namespace {

// 0 to 400 in 400 ms after a delay of 100, without limits, so that every millisecond shows.
TAnimation delayed() {
  TAnimation a(0, 400, 400, AT_LINEAR);
  a.setDelay(100);
  a.setLimits(LIMIT_NONE, LIMIT_NONE);
  return a;
}

TEST(AnimationClock, NumbersOfTheEnumerators) {
  const int types[] = {AT_LINEAR, AT_SINE, AT_COS,  AT_SINE_2,   AT_COS_2, AT_COS_FULL,
                       AT_QUAD,   AT_SQRT, AT_EXP5, AT_EXP5_NEG, AT_CUSTOM};
  for (int i = 0; i < 11; ++i) EXPECT_EQ(i, types[i]);
  const int limits[] = {LIMIT_NONE, LIMIT_CLAMP, LIMIT_LOOP};
  for (int i = 0; i < 3; ++i) EXPECT_EQ(i, limits[i]);
  const int states[] = {ASTATE_READY, ASTATE_RUNNING, ASTATE_PAUSED, ASTATE_COMPLETED};
  for (int i = 0; i < 4; ++i) EXPECT_EQ(i, states[i]);
}

TEST(AnimationClock, EveryIntervalTakesItsDelayOff) {
  TAnimation a = delayed();
  a.start(1000);
  const struct {
    long elapsed;
    float expected;
  } rows[] = {{1, 0},   {99, 0},    {100, 0},   {101, 1},   {300, 200}, {499, 399}, {500, 0},    {501, 0},
              {599, 0}, {600, 400}, {601, 401}, {999, 799}, {1000, 0},  {1099, 0},  {1100, 800}, {1300, 1000}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.elapsed);
    EXPECT_NEAR(row.expected, a.value(1000 + row.elapsed), 1e-3f);
  }
}

TEST(AnimationClock, BeforeItsStartTheDelayIsTakenOffByWholeIntervals) {
  TAnimation a = delayed();
  a.start(5000);
  const struct {
    long elapsed;
    float expected;  // elapsed - 100 * (elapsed / 500 + 1), cut towards 0
  } rows[] = {{0, -100},    {-1, -101},   {-50, -150},   {-499, -599},
              {-500, -500}, {-600, -600}, {-1000, -900}, {-1499, -1399}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.elapsed);
    EXPECT_NEAR(row.expected, a.value(5000 + row.elapsed), 1e-3f);
  }
  a.setLimits(LIMIT_CLAMP, LIMIT_CLAMP);
  EXPECT_EQ(0.0f, a.value(4000));
  EXPECT_EQ(ASTATE_RUNNING, a.state(4000));
}

// The time that has passed in the curve is that of the pause; whether it stands in a delay is asked of now.
TEST(AnimationClock, APausedRunStandsAtItsBeginningWhileNowLiesInADelay) {
  FakeClock clock(1000);
  TAnimation a = delayed();
  a.start(1000);
  clock.set(1200);
  a.pause();
  EXPECT_EQ(ASTATE_PAUSED, a.state());
  EXPECT_EQ(100.0f, a.value(1200));
  EXPECT_EQ(100.0f, a.value(1499));
  EXPECT_EQ(0.0f, a.value(1500));
  EXPECT_EQ(0.0f, a.value(1599));
  EXPECT_EQ(100.0f, a.value(1600));
}

TEST(AnimationClock, AStoppedRunStandsAtItsBeginningWhileNowLiesInADelay) {
  TAnimation a = delayed();
  a.start(1000);
  a.stop();
  EXPECT_EQ(0.0f, a.value(1050));
  EXPECT_EQ(300.0f, a.value(1100));  // 500 - 2 * 100
  EXPECT_EQ(300.0f, a.value(1499));
  EXPECT_EQ(0.0f, a.value(1520));
  EXPECT_EQ(300.0f, a.value(1700));
}

TEST(AnimationClock, PauseAsksWhetherItRunsNow) {
  FakeClock clock(1000);
  TAnimation a(0, 100, 500, AT_LINEAR);
  a.start(1000);
  clock.set(1501);
  a.pause(1200);  // over by now, although not at that time
  EXPECT_EQ(ASTATE_RUNNING, a.state(1200));
  EXPECT_EQ(ASTATE_COMPLETED, a.state());
  clock.set(1500);
  a.pause(1900);  // not yet over now
  EXPECT_EQ(ASTATE_PAUSED, a.state());
  EXPECT_EQ(ASTATE_PAUSED, a.state(99999));
  EXPECT_EQ(100.0f, a.value());
  a.resume(2000);
  EXPECT_EQ(1100, a.beginTimestampMs());
}

TEST(AnimationClock, WhilePausedTheElapsedTimeGoesOn) {
  FakeClock clock(1100);
  TAnimation a(0, 100, 500, AT_LINEAR);
  a.start(1000);
  a.pause(1050);
  clock.set(1300);
  EXPECT_EQ(10.0f, a.value());
  EXPECT_EQ(300, a.elapsedMs());
  EXPECT_EQ(300, a.intervalElapsedMs());
  clock.set(1800);
  EXPECT_EQ(300, a.intervalElapsedMs());
  a.pause(1700);  // paused already
  EXPECT_EQ(10.0f, a.value());
  a.stop();
  EXPECT_EQ(800, a.elapsedMs());
  a.resume(1800);  // no longer paused
  EXPECT_EQ(ASTATE_COMPLETED, a.state());
  EXPECT_EQ(1000, a.beginTimestampMs());
  a.reset();
  EXPECT_EQ(0, a.elapsedMs());
  a.start(1700);
  EXPECT_EQ(20.0f, a.value());
}

TEST(AnimationClock, WithoutATimeTheTickClockIsRead) {
  FakeClock clock(2000);
  TAnimation a(0, 100, 1000, AT_LINEAR);
  a.setDelay(500);
  a.start();
  EXPECT_EQ(2000, a.beginTimestampMs());
  clock.set(2600);
  EXPECT_EQ(10.0f, a.value());
  EXPECT_EQ(10, a.intValue());
  EXPECT_EQ(600, a.elapsedMs());
  a.pause();
  clock.set(2700);
  a.resume();
  EXPECT_EQ(2100, a.beginTimestampMs());
  clock.set(4000);
  EXPECT_EQ(ASTATE_COMPLETED, a.state());
  EXPECT_EQ(400, a.intervalElapsedMs());
}

TEST(AnimationClock, WithoutAnIntervalTheCurveStandsAtItsEnd) {
  TAnimation a(0, 100, 400, AT_LINEAR);
  a.setDuration(-50);  // with the delay no time at all
  a.setDelay(50);
  EXPECT_EQ(0, a.fullDuration());
  a.start(1000);
  EXPECT_EQ(100.0f, a.value(1000));
  EXPECT_EQ(100.0f, a.value(1700));
  EXPECT_EQ(700, a.intervalElapsedMs(1700));
}

TEST(AnimationClock, LimitsAreIndependent) {
  const struct {
    ELimits below, above;
    float at_minus1_25, at0, at1, at1_25;
  } rows[] = {{LIMIT_NONE, LIMIT_CLAMP, -12.5f, 0, 10, 10},
              {LIMIT_CLAMP, LIMIT_NONE, 0, 0, 10, 12.5f},
              {LIMIT_NONE, LIMIT_LOOP, -12.5f, 0, 0, 2.5f},
              {LIMIT_LOOP, LIMIT_NONE, -2.5f, 0, 10, 12.5f}};
  for (const auto& row : rows) {
    SCOPED_TRACE(testing::Message() << row.below << " " << row.above);
    TAnimation a(0, 10, 100, AT_LINEAR);
    a.setLimits(row.below, row.above);
    EXPECT_NEAR(row.at_minus1_25, a.valueAt(-1.25f), 1e-5f);
    EXPECT_NEAR(row.at0, a.valueAt(0), 1e-5f);
    EXPECT_NEAR(row.at1, a.valueAt(1), 1e-5f);
    EXPECT_NEAR(row.at1_25, a.valueAt(1.25f), 1e-5f);
    a.start(0);
    EXPECT_EQ(row.above == LIMIT_CLAMP ? ASTATE_COMPLETED : ASTATE_RUNNING, a.state(101));
  }
}

TEST(AnimationClock, ATypeBelowTheFirstIsLinear) {
  EXPECT_EQ(2.5f, TAnimation::interpolate(static_cast<EAnimationType>(-1), 0, 10, 0.25f, LIMIT_NONE, LIMIT_NONE));
}

// ---- Another animation's clock

TEST(AnimationClock, StartKeepsTheOffsetFromTheClockThatIsFollowed) {
  FakeClock clock(5000);
  TAnimation leader(0, 1, 1000, AT_LINEAR), follower(0, 100, 1000, AT_LINEAR);
  leader.start(4900);
  follower.trackOtherAnimationTime(&leader);
  follower.start(30);
  follower.reset();
  follower.start();
  EXPECT_EQ(ASTATE_RUNNING, follower.state());
  EXPECT_EQ(70, follower.elapsedMs());
  EXPECT_EQ(4900, follower.beginTimestampMs());
  follower.trackOtherAnimationTime(&leader);  // anew: without an offset
  EXPECT_EQ(100, follower.elapsedMs());
}

TEST(AnimationClock, AClockIsFollowedThroughAnother) {
  TAnimation first(0, 1, 100, AT_LINEAR), second(0, 1, 200, AT_LINEAR), third(0, 300, 300, AT_LINEAR);
  second.trackOtherAnimationTime(&first);
  third.trackOtherAnimationTime(&second);
  third.setDelay(50);
  third.setLimits(LIMIT_NONE, LIMIT_CLAMP);
  first.start(1000);
  second.start(20);
  third.start(3);
  EXPECT_EQ(1000, third.beginTimestampMs());
  EXPECT_EQ(1350, third.endTimestampMs());
  EXPECT_EQ(1050, third.delayTimestampMs());
  EXPECT_EQ(100 - 20 - 3, third.elapsedMs(1100));
  EXPECT_EQ(1100 - 77, third.intervalBeginTimestampMs(1100));
  EXPECT_EQ(1100 - 77 + 350, third.intervalEndTimestampMs(1100));
  EXPECT_EQ(1100 - 77 + 50, third.intervalDelayTimestampMs(1100));
  EXPECT_NEAR(27.0f, third.value(1100), 1e-3f);
  EXPECT_EQ(ASTATE_RUNNING, third.state(1373));
  EXPECT_EQ(ASTATE_COMPLETED, third.state(1374));
  second.reset();  // nothing passes in between
  EXPECT_EQ(0, third.elapsedMs(1100));
}

TEST(AnimationClock, AFollowerIsPausedByItsLeadersClock) {
  FakeClock clock(1100);
  TAnimation leader(0, 1, 1000, AT_LINEAR), follower(0, 1000, 1000, AT_LINEAR);
  leader.start(1000);
  follower.trackOtherAnimationTime(&leader);
  follower.start(10);
  follower.pause(1200);
  EXPECT_NEAR(190.0f, follower.value(1500), 1e-3f);
  follower.resume(1300);  // the offset grows by the pause
  EXPECT_EQ(1500 - 1000 - 110, follower.elapsedMs(1500));
}

// ---- New end points

TEST(AnimationClock, From1MillisecondOnTheStartMoves) {
  const struct {
    long at;
    EAnimationState state;
    long begin;
  } rows[] = {
    {-1, ASTATE_READY, 0}, {0, ASTATE_READY, 0}, {1, ASTATE_RUNNING, 1 - 500}, {2, ASTATE_RUNNING, 2 - 499}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.at);
    FakeClock clock(0);
    TAnimation a(0, 100, 1000, AT_LINEAR);
    a.start(0);
    a.updateAnimationPoints(0, 100, 500, row.at);
    EXPECT_EQ(row.state, a.state());
    EXPECT_EQ(row.begin, a.beginTimestampMs());
    EXPECT_EQ(500, a.duration());
  }
}

TEST(AnimationClock, TheNewStartIsFoundOnTheAnimationsOwnCurve) {
  TAnimation a(0, 100, 1000, AT_QUAD);
  a.start(1000);
  // At 1500 the value is 25: a quarter of 0 to 100, which the curve reaches at a half.
  a.updateAnimationPoints(0, 100, 301, 1500);
  EXPECT_EQ(1500 - 151, a.beginTimestampMs());  // 150.5, away from 0
  EXPECT_EQ(301, a.duration());
}

TEST(AnimationClock, TheNewPointsAreTakenAfterTheValueOfTheOldOnes) {
  TAnimation a(50, 150, 1000, AT_LINEAR);
  a.start(1000);
  // At 1250 the value is 75, which is three quarters of 0 to 100.
  a.updateAnimationPoints(0, 100, 400, 1250);
  EXPECT_EQ(1250 - 100, a.beginTimestampMs());
  EXPECT_EQ(0.0f, a.from());
  EXPECT_EQ(100.0f, a.to());
}

TEST(AnimationClock, NewPointsLeaveTheStateAlone) {
  FakeClock clock(1100);
  TAnimation a(0, 100, 1000, AT_LINEAR);
  a.updateAnimationPoints(0, 50, 1000, 1100);
  EXPECT_EQ(ASTATE_READY, a.state());
  a.start(1000);
  a.pause();
  a.setReverse(true);
  a.updateAnimationPoints(0, 200, 1000, 1200);
  EXPECT_EQ(ASTATE_PAUSED, a.state());
  EXPECT_TRUE(a.reverse());
  a.stop();
  a.updateAnimationPoints(0, 200, 1000, 1200);
  EXPECT_EQ(ASTATE_COMPLETED, a.state());
}

}  // namespace
