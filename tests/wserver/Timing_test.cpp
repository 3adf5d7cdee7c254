#include "wserver/Timing.h"

#include <gtest/gtest.h>
#include <chrono>

namespace {

uint64_t steadyUsec() {
  return static_cast<uint64_t>(
    std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now().time_since_epoch())
      .count());
}

uint64_t systemMsec() {
  return static_cast<uint64_t>(
    std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::system_clock::now().time_since_epoch())
      .count());
}

TEST(Timing, MicrosecondsAreThoseOfTheSteadyClock) {
  const uint64_t before = steadyUsec();
  const uint64_t t = wtime::GetTimeUsec();
  const uint64_t after = steadyUsec();
  EXPECT_LE(before, t);
  EXPECT_LE(t, after);
}

TEST(Timing, MillisecondsAreAThousandthOfThem) {
  const uint64_t before = wtime::GetTimeUsec() / 1000;
  const uint64_t t = wtime::GetTimeMsec();
  const uint64_t after = wtime::GetTimeUsec() / 1000;
  EXPECT_LE(before, t);
  EXPECT_LE(t, after);
}

TEST(Timing, SystemTimeIsMillisecondsSinceTheEpoch) {
  const uint64_t before = systemMsec();
  const uint64_t t = wtime::GetSystemTimeMsec();
  const uint64_t after = systemMsec();
  EXPECT_LE(before, t);
  EXPECT_LE(t, after);
}

TEST(Timing, StartMomentsLieBeforeNowOnBothLines) {
  EXPECT_GT(wtime::OnStartY, 0u);
  EXPECT_LE(wtime::OnStartY, wtime::GetTimeMsec());
  EXPECT_GT(wtime::OnStartEpoch, 1500000000000u);
  EXPECT_LE(wtime::OnStartEpoch, wtime::GetSystemTimeMsec());
}

TEST(Timing, ConversionsMoveBetweenTheLinesInBothDirections) {
  EXPECT_EQ(wtime::EpochToY(wtime::OnStartEpoch), wtime::OnStartY);
  EXPECT_EQ(wtime::YToEpoch(wtime::OnStartY), wtime::OnStartEpoch);
  EXPECT_EQ(wtime::EpochToY(wtime::OnStartEpoch + 1234), wtime::OnStartY + 1234);
  EXPECT_EQ(wtime::YToEpoch(wtime::OnStartY + 1234), wtime::OnStartEpoch + 1234);
  EXPECT_EQ(wtime::YToEpoch(wtime::OnStartY - 10), wtime::OnStartEpoch - 10);  // moments before the start as well
  EXPECT_EQ(wtime::EpochToY(wtime::YToEpoch(77)), 77u);
}

}  // namespace
