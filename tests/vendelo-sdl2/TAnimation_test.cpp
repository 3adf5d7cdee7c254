#include "vendelo-sdl2/TAnimation.h"

#include <gtest/gtest.h>
#include <cmath>
#include <limits>
#include <string>

#include "tests/support/FakeClock.h"

using namespace vendelo_sdl2;

namespace {

constexpr float kTolerance = 1e-4f;

float curve(EAnimationType type, float t) {
  return TAnimation::interpolate(type, 0.0f, 1.0f, t, LIMIT_NONE, LIMIT_NONE);
}

TEST(Animation, DefaultsAreAClampedLinearRunOfASecond) {
  FakeClock clock(5000);
  const TAnimation a;
  EXPECT_EQ(0.0f, a.from());
  EXPECT_EQ(1.0f, a.to());
  EXPECT_EQ(1000, a.duration());
  EXPECT_EQ(0, a.delay());
  EXPECT_FALSE(a.reverse());
  EXPECT_EQ(ASTATE_READY, a.state());
  EXPECT_EQ(0, a.elapsedMs());
  EXPECT_EQ(0.0f, a.value());
  EXPECT_EQ(0.0f, a.valueAt(-3.0f));
  EXPECT_EQ(1.0f, a.valueAt(3.0f));
}

TEST(Animation, RunsLinearlyAndCompletesStrictlyAfterItsEnd) {
  TAnimation a(0, 255, 500, AT_LINEAR);
  a.start(1000);
  EXPECT_EQ(0.0f, a.value(1000));
  EXPECT_EQ(127.5f, a.value(1250));
  EXPECT_EQ(ASTATE_RUNNING, a.state(1500));
  EXPECT_EQ(ASTATE_COMPLETED, a.state(1501));
  EXPECT_EQ(255.0f, a.value(1501));
  EXPECT_EQ(255.0f, a.value(99999));
  EXPECT_EQ(0.0f, a.value(900));
}

TEST(Animation, CompletionIsOnlyAReading) {
  TAnimation a(0, 10, 100, AT_LINEAR);
  a.start(0);
  EXPECT_EQ(ASTATE_COMPLETED, a.state(101));
  EXPECT_EQ(ASTATE_RUNNING, a.state(50));
  EXPECT_EQ(5.0f, a.value(50));
}

TEST(Animation, ReversedRunsFromTheEndToTheStart) {
  TAnimation a(0, 255, 500, AT_LINEAR);
  a.setReverse(true);
  EXPECT_TRUE(a.reverse());
  EXPECT_EQ(255.0f, a.value(0));  // ready: t = 1
  a.start(1000);
  EXPECT_EQ(127.5f, a.value(1250));
  EXPECT_EQ(0.0f, a.value(1501));
}

TEST(Animation, DelayHoldsTheStartAndDoesNotCount) {
  TAnimation a(0, 1, 400, AT_LINEAR);
  a.setDelay(100);
  a.start(0);
  EXPECT_EQ(500, a.fullDuration());
  EXPECT_EQ(0.0f, a.value(50));
  EXPECT_EQ(0.0f, a.value(100));
  EXPECT_EQ(0.5f, a.value(300));
  EXPECT_EQ(ASTATE_RUNNING, a.state(500));
  EXPECT_EQ(ASTATE_COMPLETED, a.state(501));
}

TEST(Animation, LoopWithDelayPausesBeforeEveryRun) {
  TAnimation a(0, 1, 400, AT_LINEAR);
  a.setDelay(100);
  a.setLimits(LIMIT_CLAMP, LIMIT_LOOP);
  a.start(0);
  EXPECT_NEAR(0.25f, a.value(200), kTolerance);
  EXPECT_EQ(0.0f, a.value(550));  // inside the second delay
  EXPECT_NEAR(0.25f, a.value(700), kTolerance);
  EXPECT_NEAR(0.75f, a.value(2400), kTolerance);
}

TEST(Animation, LoopNeverCompletesAndWraps) {
  TAnimation a(0, 10, 100, AT_LINEAR);
  a.setLimits(LIMIT_CLAMP, LIMIT_LOOP);
  a.start(0);
  EXPECT_EQ(ASTATE_RUNNING, a.state(100000));
  EXPECT_NEAR(3.0f, a.value(130), kTolerance);
  EXPECT_EQ(0.0f, a.valueAt(1.0f));  // the loop turns 1 into 0
  EXPECT_NEAR(2.5f, a.valueAt(7.25f), kTolerance);
}

TEST(Animation, LimitsBelowZero) {
  TAnimation a(0, 10, 100, AT_LINEAR);
  a.setLimits(LIMIT_LOOP, LIMIT_CLAMP);
  EXPECT_NEAR(-2.5f, a.valueAt(-1.25f), kTolerance);  // the remainder keeps its sign
  a.setLimits(LIMIT_NONE, LIMIT_NONE);
  EXPECT_NEAR(-12.5f, a.valueAt(-1.25f), kTolerance);
  EXPECT_NEAR(25.0f, a.valueAt(2.5f), kTolerance);
  a.start(0);
  EXPECT_EQ(ASTATE_RUNNING, a.state(100000));  // without the clamp nothing completes
}

TEST(Animation, EndsOfTheCurves) {
  const struct {
    const char* name;
    EAnimationType type;
    float at0, at1, atQuarter;
  } rows[] = {
    {"AT_LINEAR", AT_LINEAR, 0.0f, 1.0f, 0.25f},
    {"AT_SINE", AT_SINE, 0.5f, 0.5f, 0.853553f},
    {"AT_COS", AT_COS, 1.0f, 0.0f, 0.853553f},
    {"AT_SINE_2", AT_SINE_2, 0.0f, 1.0f, 0.382683f},
    {"AT_COS_2", AT_COS_2, 1.0f, 0.0f, 0.923880f},
    {"AT_COS_FULL", AT_COS_FULL, 1.0f, 1.0f, 0.5f},
    {"AT_QUAD", AT_QUAD, 0.0f, 1.0f, 0.0625f},
    {"AT_SQRT", AT_SQRT, 0.0f, 1.0f, 0.5f},
    {"AT_EXP5", AT_EXP5, -0.363608f, 0.636409f, -0.346679f},
    {"AT_EXP5_NEG", AT_EXP5_NEG, 1.0f, 0.0f, 0.281681f},
    {"unknown", static_cast<EAnimationType>(42), 0.0f, 1.0f, 0.25f},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    EXPECT_NEAR(row.at0, curve(row.type, 0.0f), kTolerance);
    EXPECT_NEAR(row.at1, curve(row.type, 1.0f), kTolerance);
    EXPECT_NEAR(row.atQuarter, curve(row.type, 0.25f), kTolerance);
  }
}

TEST(Animation, InterpolateUsesItsLimits) {
  EXPECT_EQ(2.5f, TAnimation::interpolate(AT_QUAD, 0, 10, 0.5f, LIMIT_CLAMP, LIMIT_CLAMP));
  EXPECT_EQ(10.0f, TAnimation::interpolate(AT_QUAD, 0, 10, 2.0f, LIMIT_CLAMP, LIMIT_CLAMP));
  EXPECT_EQ(40.0f, TAnimation::interpolate(AT_QUAD, 0, 10, 2.0f, LIMIT_CLAMP, LIMIT_NONE));
}

TEST(Animation, CustomCurveSeesItsAnimation) {
  TAnimation a(10, 20, 100, AT_CUSTOM);
  EXPECT_EQ(15.0f, a.valueAt(0.5f));  // linear until a function is set
  a.setCustomFunction([](const TAnimation& self, float t) { return t * self.from(); });
  EXPECT_EQ(60.0f, a.valueAt(0.5f));
  a.setAnimationType(AT_LINEAR);
  EXPECT_EQ(15.0f, a.valueAt(0.5f));
}

TEST(Animation, Inversolate) {
  const float v = 0.3f;
  const double pi = 3.141592653589793, e = std::exp(-5.0);
  const struct {
    const char* name;
    EAnimationType type;
    double expected;
  } rows[] = {
    {"AT_LINEAR", AT_LINEAR, 0.3},
    {"AT_SINE", AT_SINE, std::asin(-0.4) / pi},
    {"AT_COS", AT_COS, std::acos(-0.4) / pi},
    {"AT_SINE_2", AT_SINE_2, std::asin(0.3) * 2 / pi},
    {"AT_COS_2", AT_COS_2, std::acos(0.3) * 2 / pi},
    {"AT_COS_FULL", AT_COS_FULL, std::acos(-0.4) * 0.5 / pi},
    {"AT_QUAD", AT_QUAD, std::sqrt(0.3)},
    {"AT_SQRT", AT_SQRT, 0.09},
    {"AT_EXP5", AT_EXP5, std::log(0.3 * (std::exp(4.0) - 1) + 1) / 4},
    {"AT_EXP5_NEG", AT_EXP5_NEG, -(std::log(0.3 * e * (1 - e) + e * e) / 5 + 1)},
    {"AT_CUSTOM", AT_CUSTOM, 0.3},
    {"unknown", static_cast<EAnimationType>(42), 0.3},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    EXPECT_NEAR(row.expected, inversolate(row.type, 0, 1, v), kTolerance);
    EXPECT_NEAR(row.expected, inversolate(row.type, 100, 200, 130), kTolerance);
  }
}

TEST(Animation, InversolateUndoesTheCurveExceptForExp5) {
  for (EAnimationType type : {AT_LINEAR, AT_COS, AT_SINE_2, AT_COS_2, AT_QUAD, AT_SQRT, AT_EXP5_NEG})
    EXPECT_NEAR(0.4f, inversolate(type, 0, 1, curve(type, 0.4f)), 1e-3f) << type;
  EXPECT_GT(std::fabs(inversolate(AT_EXP5, 0, 1, curve(AT_EXP5, 0.9f)) - 0.9f), 0.05f);
}

TEST(Animation, InversolateBetweenEqualEndsIsNoNumber) {
  EXPECT_TRUE(std::isnan(inversolate(AT_LINEAR, 5, 5, 5)));
  EXPECT_TRUE(std::isinf(inversolate(AT_LINEAR, 5, 5, 6)));
  EXPECT_TRUE(std::isnan(inversolate(AT_COS, 0, 1, 2)));
}

TEST(Animation, ZeroDurationIsThrownByTheValueConstructorsOnly) {
  TAnimation other(0, 1, 10, AT_LINEAR);
  const auto text = [](auto&& make) -> std::string {
    try {
      make();
    } catch (const char* message) {
      return message;
    }
    return "";
  };
  const std::string expected = "TAnimation ERROR: Duration cannot be zero!";
  EXPECT_EQ(expected, text([] { TAnimation(0, 1, 0, AT_LINEAR); }));
  EXPECT_EQ(expected, text([&] { TAnimation(other, 1.0f, 0, AT_LINEAR); }));
  EXPECT_EQ(expected, text([&] { TAnimation(1.0f, other, 0, AT_LINEAR); }));
  EXPECT_EQ(expected, text([&] { TAnimation(other, other, 0, AT_LINEAR); }));
  other.setDuration(0);
  EXPECT_EQ(0, other.duration());
  other.start(100);
  EXPECT_EQ(1.0f, other.value(100));  // no time at all: at the end
  other.setDelay(50);
  EXPECT_EQ(1.0f, other.value(120));
  other.setReverse(true);
  EXPECT_EQ(0.0f, other.value(120));
}

TEST(Animation, EndPointsFromOtherAnimations) {
  FakeClock clock(1000);
  TAnimation low(0, 10, 100, AT_LINEAR), high(100, 200, 100, AT_LINEAR);
  low.start();
  high.start();
  clock.advance(50);
  const TAnimation a(low, 7.0f, 10, AT_LINEAR), b(7.0f, high, 10, AT_LINEAR), c(low, high, 10, AT_QUAD);
  EXPECT_EQ(5.0f, a.from());
  EXPECT_EQ(7.0f, a.to());
  EXPECT_EQ(7.0f, b.from());
  EXPECT_EQ(150.0f, b.to());
  EXPECT_EQ(5.0f, c.from());
  EXPECT_EQ(150.0f, c.to());
}

TEST(Animation, PauseAndResumeShiftTheEnd) {
  FakeClock clock(1000);
  TAnimation a(0, 100, 500, AT_LINEAR);
  a.pause();
  EXPECT_EQ(ASTATE_READY, a.state());  // not running: nothing to pause
  a.start();
  clock.set(1200);
  a.pause();
  EXPECT_EQ(ASTATE_PAUSED, a.state());
  clock.set(1500);
  EXPECT_EQ(40.0f, a.value());
  a.start(a.beginTimestampMs());
  a.resume();
  EXPECT_EQ(1500, a.endTimestampMs());  // not paused: nothing to resume
  clock.set(1200);
  a.pause();
  clock.set(1500);
  a.resume();
  EXPECT_EQ(ASTATE_RUNNING, a.state());
  EXPECT_EQ(1800, a.endTimestampMs());
  EXPECT_EQ(40.0f, a.value());
  clock.set(1800);
  EXPECT_EQ(ASTATE_RUNNING, a.state());
  clock.set(1801);
  EXPECT_EQ(ASTATE_COMPLETED, a.state());
}

TEST(Animation, StopAndReset) {
  FakeClock clock(10);
  TAnimation a(0, 8, 100, AT_LINEAR);
  a.start();
  a.stop();
  EXPECT_EQ(ASTATE_COMPLETED, a.state());
  EXPECT_EQ(8.0f, a.value());
  a.reset();
  EXPECT_EQ(ASTATE_READY, a.state());
  EXPECT_EQ(0.0f, a.value());
}

TEST(Animation, IntValueRounds) {
  FakeClock clock(1000);
  TAnimation a(0, 255, 500, AT_LINEAR);
  a.start();
  clock.set(1250);
  EXPECT_EQ(128, a.intValue());
  EXPECT_EQ(127, a.intValue(1249));
  TAnimation down(0, -255, 500, AT_LINEAR);
  down.start(1000);
  EXPECT_EQ(-128, down.intValue());
}

TEST(Animation, Timestamps) {
  FakeClock clock(1350);
  TAnimation a(0, 1, 200, AT_LINEAR);
  a.setDelay(100);
  a.start(1000);
  EXPECT_EQ(1000, a.beginTimestampMs());
  EXPECT_EQ(1300, a.endTimestampMs());
  EXPECT_EQ(1100, a.delayTimestampMs());
  EXPECT_EQ(350, a.elapsedMs());
  EXPECT_EQ(50, a.intervalElapsedMs());
  EXPECT_EQ(1300, a.intervalBeginTimestampMs(1350));
  EXPECT_EQ(1600, a.intervalEndTimestampMs(1350));
  EXPECT_EQ(1400, a.intervalDelayTimestampMs(1350));
  a.setDelay(0);
  a.setDuration(0);
  EXPECT_EQ(350, a.intervalElapsedMs());
}

TEST(Animation, TrackingFollowsTheOthersClock) {
  FakeClock clock(5000);
  TAnimation leader(0, 1, 100, AT_LINEAR), follower(0, 50, 200, AT_LINEAR);
  follower.start(77);
  follower.trackOtherAnimationTime(&leader);
  follower.reset();
  EXPECT_EQ(0.0f, follower.value());
  leader.start(4900);
  follower.start();
  EXPECT_EQ(ASTATE_RUNNING, follower.state());
  EXPECT_EQ(4900, follower.beginTimestampMs());
  EXPECT_EQ(100, follower.elapsedMs());
  EXPECT_EQ(25.0f, follower.value());
  EXPECT_EQ(5100, follower.endTimestampMs());
  follower.start(30);  // an offset from the leader's clock
  EXPECT_EQ(70, follower.elapsedMs());
  leader.reset();
  EXPECT_EQ(0, follower.elapsedMs());
  follower.trackOtherAnimationTime(nullptr);
  EXPECT_EQ(0, follower.beginTimestampMs());
}

TEST(Animation, UpdateTakesTheStartFromOneMinusTheRequiredPoint) {
  TAnimation a(0, 100, 1000, AT_LINEAR);
  a.start(1000);
  // At 1200 the value is 20, which is a tenth of 0 to 200: the start lies 0.9 of the new duration back.
  a.updateAnimationPoints(0, 200, 500, 1200);
  EXPECT_EQ(1200 - 450, a.beginTimestampMs());
  EXPECT_EQ(200.0f, a.to());
  EXPECT_EQ(500, a.duration());
  EXPECT_EQ(ASTATE_RUNNING, a.state(1200));
}

TEST(Animation, UpdateWithZeroDurationKeepsTheOldOneButShiftsByZero) {
  TAnimation a(0, 100, 1000, AT_LINEAR);
  a.start(1000);
  a.updateAnimationPoints(0, 200, 0, 1200);
  EXPECT_EQ(1000, a.duration());
  EXPECT_EQ(1200, a.beginTimestampMs());
}

TEST(Animation, UpdateWithoutATimeResets) {
  FakeClock clock(1000);
  TAnimation a(0, 100, 1000, AT_LINEAR);
  a.start();
  a.updateAnimationPoints(5, 6, 7, 0);
  EXPECT_EQ(ASTATE_READY, a.state());
  EXPECT_EQ(5.0f, a.value());
  EXPECT_EQ(7, a.duration());
}

TEST(Animation, UpdateOutsideTheCurveKeepsTheTimeGiven) {
  TAnimation a(0, 100, 1000, AT_COS);
  a.start(1000);
  a.updateAnimationPoints(500, 600, 500, 1200);  // acos of something below -1
  EXPECT_EQ(1200, a.beginTimestampMs());
  TAnimation equal(0, 100, 1000, AT_LINEAR);
  equal.start(1000);
  equal.updateAnimationPoints(50, 50, 500, 1200);
  EXPECT_EQ(1200, equal.beginTimestampMs());
}

TEST(Animation, UpdateWhileTrackingStoresAnOffset) {
  TAnimation leader(0, 1, 100, AT_LINEAR), follower(0, 100, 1000, AT_LINEAR);
  leader.start(900);
  follower.trackOtherAnimationTime(&leader);
  follower.start();
  // At 1000 the follower stands at 10, a tenth of 0 to 100: begin 1000 - 900 = 100, stored as 900 - 100.
  follower.updateAnimationPoints(0, 100, 1000, 1000);
  EXPECT_EQ(2000 - 800 - 900, follower.elapsedMs(2000));
}

TEST(Animation, ZeroLengthRunStandsAtItsEndWhateverTheState) {
  TAnimation a;
  a.setDuration(0);
  EXPECT_EQ(1.0f, a.value(0));
  a.start(0);
  EXPECT_EQ(ASTATE_RUNNING, a.state(0));
  EXPECT_EQ(ASTATE_COMPLETED, a.state(1));
}

}  // namespace
