#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <regex>

#include "tests/support/FakeClock.h"
#include "vendelo-sdl2/MyUtils.h"
#include "vendelo-sdl2/TLogManager.h"

namespace {

using MyUtils::IsTime;

TEST(IsTime, ALastTimeOfZeroIsAlwaysDue) {
  FakeClock clock(5);
  Uint32 last = 0;
  EXPECT_TRUE(IsTime(last, 1000, true));
  EXPECT_EQ(last, 5u);
  last = 0;
  EXPECT_TRUE(IsTime(last, 1000, false));
  EXPECT_EQ(last, 0u);
}

TEST(IsTime, TheIntervalMustBeExceededNotJustMet) {
  FakeClock clock(1000);
  Uint32 last = 1000;
  EXPECT_FALSE(IsTime(last, 100, true));
  clock.set(1100);
  EXPECT_FALSE(IsTime(last, 100, true));
  EXPECT_EQ(last, 1000u);
  clock.set(1101);
  EXPECT_TRUE(IsTime(last, 100, false));
  EXPECT_EQ(last, 1000u);
  EXPECT_TRUE(IsTime(last, 100, true));
  EXPECT_EQ(last, 1101u);
}

TEST(IsTime, AnIntervalOfZeroIsDueOnTheNextTick) {
  FakeClock clock(50);
  Uint32 last = 50;
  EXPECT_FALSE(IsTime(last, 0, true));
  clock.advance(1);
  EXPECT_TRUE(IsTime(last, 0, true));
}

TEST(IsTime, AWrapOfTheCounterIsLoggedAndRestartsThePeriod) {
  FakeClock clock(100);
  vendelo_sdl2::TLogManager log;
  log.Init((std::filesystem::temp_directory_path() / "istime.log").string(), nullptr, nullptr, false);
  Uint32 last = 0xffffff00u;
  EXPECT_FALSE(IsTime(last, 1000, true));
  EXPECT_EQ(last, 100u);
  EXPECT_EQ(log.GetLastLog(),
            "SDLGetTicks overflow detected (LastTime=4294967040, GetTicks()=100, overflow_constant=2147483647)");
  clock.set(1101);
  EXPECT_TRUE(IsTime(last, 1000, true));
  log.Destroy();
  std::filesystem::remove(log.GetLogFileName());
}

TEST(IsTime, TheWrapTestBeginsBeyond0x7fffffff) {
  Uint32 last = 2;
  {
    FakeClock clock(2u + 0x7fffffffu);
    EXPECT_TRUE(IsTime(last, 10, false));  // far, but no wrap: simply due
    EXPECT_EQ(last, 2u);
  }
  FakeClock clock(3u + 0x7fffffffu);
  EXPECT_FALSE(IsTime(last, 10, false));
  EXPECT_EQ(last, 3u + 0x7fffffffu);
}

TEST(IsTime, ALastTimeOfOneSkipsTheWrapTest) {
  FakeClock clock(0xf0000000u);
  Uint32 last = 1;
  EXPECT_TRUE(IsTime(last, 10, false));
  EXPECT_EQ(last, 1u);
}

TEST(IsTime, AWrapOntoTickZeroIsDue) {
  FakeClock clock(0);
  Uint32 last = 0xffffffffu;
  EXPECT_TRUE(IsTime(last, 1000, true));
  EXPECT_EQ(last, 0u);
}

TEST(CompareTimes, Time1MustNotBeEarlierAndBeNearer) {
  const struct {
    Uint32 time1, time2, diff;
    bool expected;
  } rows[] = {{100, 100, 0, true},  {101, 100, 0, true},  {99, 100, 0, false},   {5000, 100, 0, true},
              {100, 100, 10, true}, {109, 100, 10, true}, {110, 100, 10, false}, {99, 100, 10, false}};
  for (const auto& row : rows)
    EXPECT_EQ(MyUtils::CompareTimes(row.time1, row.time2, row.diff), row.expected)
      << row.time1 << " " << row.time2 << " " << row.diff;
}

// The text lies between the same format of the moments before and after, seen as text in one second's resolution.
template <class Function>
void expectLocalTime(Function function, const char* format) {
  const auto now = [&] {
    const time_t t = std::time(nullptr);
    tm local{};
    localtime_r(&t, &local);
    char buffer[64];
    std::strftime(buffer, sizeof buffer, format, &local);
    return std::string(buffer);
  };
  const std::string before = now();
  const std::string text = function();
  const std::string after = now();
  EXPECT_TRUE(text == before || text == after) << before << " / " << text << " / " << after;
}

TEST(CurrentTime, TextsAreLocalAndPadded) {
  for (const char* zone : {"UTC0", "XYZ-9:30", "ABC11"}) {
    setenv("TZ", zone, 1);
    tzset();
    expectLocalTime(MyUtils::GetCurrentTimeString, "%H:%M:%S");
    expectLocalTime(MyUtils::GetCurrentTimeStampString, "%H:%M:%S %Y-%m-%d");
    expectLocalTime(MyUtils::GetCurrentDateString, "%Y-%m-%d");
  }
  EXPECT_TRUE(std::regex_match(MyUtils::GetCurrentDateString(), std::regex("\\d{4}-\\d\\d-\\d\\d")));
}

}  // namespace
