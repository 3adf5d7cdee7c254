// The curves in numbers.
#include <gtest/gtest.h>

#include "vendelo-sdl2/TAnimation.h"

using namespace vendelo_sdl2;

namespace {

TEST(AnimationCurves, Values) {
  constexpr float at[] = {0.0f, 0.1f, 0.25f, 0.4f, 0.5f, 0.75f, 0.9f, 1.0f};
  const struct {
    const char* name;
    EAnimationType type;
    float expected[8];
  } rows[] = {
    {"AT_LINEAR", AT_LINEAR, {0, 0.1f, 0.25f, 0.4f, 0.5f, 0.75f, 0.9f, 1}},
    {"AT_SINE", AT_SINE, {0.5f, 0.654508f, 0.853553f, 0.975528f, 1, 0.853553f, 0.654508f, 0.5f}},
    {"AT_COS", AT_COS, {1, 0.975528f, 0.853553f, 0.654508f, 0.5f, 0.146447f, 0.024472f, 0}},
    {"AT_SINE_2", AT_SINE_2, {0, 0.156434f, 0.382683f, 0.587785f, 0.707107f, 0.923880f, 0.987688f, 1}},
    {"AT_COS_2", AT_COS_2, {1, 0.987688f, 0.923880f, 0.809017f, 0.707107f, 0.382683f, 0.156434f, 0}},
    {"AT_COS_FULL", AT_COS_FULL, {1, 0.904508f, 0.5f, 0.095492f, 0, 0.5f, 0.904508f, 1}},
    {"AT_QUAD", AT_QUAD, {0, 0.01f, 0.0625f, 0.16f, 0.25f, 0.5625f, 0.81f, 1}},
    {"AT_SQRT", AT_SQRT, {0, 0.316228f, 0.5f, 0.632456f, 0.707107f, 0.866025f, 0.948683f, 1}},
    // Neither from 0 nor to 1.
    {"AT_EXP5",
     AT_EXP5,
     {-0.363591f, -0.359191f, -0.346698f, -0.320250f, -0.287733f, -0.081927f, 0.240270f, 0.636409f}},
    {"AT_EXP5_NEG", AT_EXP5_NEG, {1, 0.603861f, 0.281665f, 0.129470f, 0.075858f, 0.016894f, 0.004401f, 0}},
    {"AT_CUSTOM without a function", AT_CUSTOM, {0, 0.1f, 0.25f, 0.4f, 0.5f, 0.75f, 0.9f, 1}},
    {"unknown", static_cast<EAnimationType>(11), {0, 0.1f, 0.25f, 0.4f, 0.5f, 0.75f, 0.9f, 1}},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    const TAnimation unit(0, 1, 1000, row.type), scaled(-20, 180, 1000, row.type);
    for (int i = 0; i < 8; ++i) {
      SCOPED_TRACE(at[i]);
      EXPECT_NEAR(row.expected[i], unit.valueAt(at[i]), 2e-6f);
      EXPECT_NEAR(-20 + 200 * row.expected[i], scaled.valueAt(at[i]), 4e-4f);
      EXPECT_EQ(scaled.valueAt(at[i]), TAnimation::interpolate(row.type, -20, 180, at[i], LIMIT_NONE, LIMIT_NONE));
    }
  }
}

TEST(AnimationCurves, LimitsOnBothSides) {
  const struct {
    const char* name;
    ELimits below, above;
    float expected[7];  // of a linear run of 0 to 10, at the points below
  } rows[] = {
    {"clamp", LIMIT_CLAMP, LIMIT_CLAMP, {0, 0, 0, 5, 10, 10, 10}},
    {"none", LIMIT_NONE, LIMIT_NONE, {-12.5f, -10, -2.5f, 5, 10, 12.5f, 20}},
    {"loop", LIMIT_LOOP, LIMIT_LOOP, {-2.5f, 0, -2.5f, 5, 0, 2.5f, 0}},
    {"loop above", LIMIT_CLAMP, LIMIT_LOOP, {0, 0, 0, 5, 0, 2.5f, 0}},
    {"loop below", LIMIT_LOOP, LIMIT_CLAMP, {-2.5f, 0, -2.5f, 5, 10, 10, 10}},
  };
  constexpr float at[] = {-1.25f, -1.0f, -0.25f, 0.5f, 1.0f, 1.25f, 2.0f};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    for (int i = 0; i < 7; ++i) {
      SCOPED_TRACE(at[i]);
      EXPECT_NEAR(row.expected[i], TAnimation::interpolate(AT_LINEAR, 0, 10, at[i], row.below, row.above), 1e-5f);
    }
  }
}

TEST(AnimationCurves, RunsByTheTick) {
  const struct {
    const char* name;
    EAnimationType type;
    long delay;
    bool reverse;
    ELimits above;
    float expected[9];  // 100 to 200 in 400 ms, started at 1000
  } rows[] = {
    {"linear", AT_LINEAR, 0, false, LIMIT_CLAMP, {100, 112.5f, 125, 150, 175, 199.75f, 200, 200, 200}},
    {"reversed", AT_LINEAR, 0, true, LIMIT_CLAMP, {200, 187.5f, 175, 150, 125, 100.25f, 100, 100, 100}},
    {"delayed", AT_LINEAR, 100, false, LIMIT_CLAMP, {100, 100, 100, 125, 150, 174.75f, 175, 175.25f, 100}},
    {"delayed and reversed",
     AT_LINEAR,
     100,
     true,
     LIMIT_CLAMP,
     {200, 200, 200, 175, 150, 125.25f, 125, 124.75f, 200}},
    {"looped", AT_LINEAR, 0, false, LIMIT_LOOP, {100, 112.5f, 125, 150, 175, 199.75f, 100, 100.25f, 125}},
    {"looped with a delay",
     AT_LINEAR,
     100,
     false,
     LIMIT_LOOP,
     {100, 100, 100, 125, 150, 174.75f, 175, 175.25f, 100}},
    {"quadratic",
     AT_QUAD,
     0,
     false,
     LIMIT_CLAMP,
     {100, 101.5625f, 106.25f, 125, 156.25f, 199.50063f, 200, 200, 200}},
    {"falling",
     AT_COS,
     0,
     false,
     LIMIT_CLAMP,
     {200, 196.19398f, 185.35534f, 150, 114.64466f, 100.00154f, 100, 100, 100}},
  };
  // At the end of delay and run together the next interval begins, with its delay.
  constexpr long at[] = {1000, 1050, 1100, 1200, 1300, 1399, 1400, 1401, 1500};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    TAnimation a(100, 200, 400, row.type);
    a.setDelay(row.delay);
    a.setReverse(row.reverse);
    a.setLimits(LIMIT_CLAMP, row.above);
    a.start(1000);
    for (int i = 0; i < 9; ++i) {
      SCOPED_TRACE(at[i]);
      EXPECT_NEAR(row.expected[i], a.value(at[i]), 1e-3f);
    }
  }
}

}  // namespace
