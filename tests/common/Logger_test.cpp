#include "common/Logger.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>

#include "tests/common/LoggerFixture.h"
#include "wserver/Timing.h"

namespace {

using namespace logs;

class StrippedCategory : public LogCategory {
 public:
  StrippedCategory() : LogCategory("stripped", VeryVerbose) {}
  EVerbosity CompileTimeVerbosity() const override { return Warning; }
};

TEST_F(LoggerTest, VerbositiesHaveTheirValuesAndNames) {
  const struct {
    EVerbosity verbosity;
    int value;
    const char* name;
  } rows[] = {{Critical, 0, "Critical"},   {Error, 1, "Error"},     {Warning, 2, "Warning"},
              {Important, 3, "Important"}, {Info, 4, "Info"},       {Normal, 5, "Normal"},
              {Debug, 6, "Debug"},         {Verbose, 7, "Verbose"}, {VeryVerbose, 8, "VeryVerbose"}};
  for (const auto& row : rows) {
    EXPECT_EQ(row.verbosity._to_integral(), row.value);
    EXPECT_STREQ(row.verbosity._to_string(), row.name);
  }
  EXPECT_STREQ(EVerbosity(9)._to_string(), "");
  EXPECT_STREQ(EVerbosity(-1)._to_string(), "");
  EXPECT_TRUE(Debug >= Normal);
  EXPECT_TRUE(Normal >= Normal);
  EXPECT_FALSE(Error >= Warning);
  EXPECT_TRUE(Error != Warning);
  EXPECT_FALSE(Error != EVerbosity::Error);
}

TEST_F(LoggerTest, FilterStartsEmptyAndTakesMasksAndSingleBits) {
  LogVerbosityFilter filter;
  EXPECT_EQ(filter.Filter, 0);
  EXPECT_FALSE(filter.bWhitelist);
  filter = 0x15;
  EXPECT_EQ(filter.Filter, 0x15);
  filter = Info;
  EXPECT_EQ(filter.Filter, 1 << 4);
  EXPECT_EQ(LogVerbosityFilter(6, true).Filter, 6);
  EXPECT_TRUE(LogVerbosityFilter(6, true).bWhitelist);
  EXPECT_EQ(LogVerbosityFilter(Debug, false).Filter, 1 << 6);
  const LogVerbosityFilter copy(LogVerbosityFilter(3, true));
  EXPECT_EQ(copy.Filter, 3);
  EXPECT_TRUE(copy.bWhitelist);
  filter = copy;
  EXPECT_EQ(filter.Filter, 3);
  EXPECT_TRUE(filter.bWhitelist);
  filter = Error;  // the flag stays
  EXPECT_EQ(filter.Filter, 2);
  EXPECT_TRUE(filter.bWhitelist);
}

TEST_F(LoggerTest, SetBitsPassUnlessTheWhitelistFlagTurnsThemRound) {
  const LogVerbosityFilter filter(Warning, false);
  EXPECT_FALSE(filter.IsSupressed(Warning));
  EXPECT_TRUE(filter.IsSupressed(Error));
  EXPECT_TRUE(filter.IsSupressed(Important));
  const LogVerbosityFilter reversed(Warning, true);
  EXPECT_TRUE(reversed.IsSupressed(Warning));
  EXPECT_FALSE(reversed.IsSupressed(Error));
}

TEST_F(LoggerTest, MasksFollowTheBitLayout) {
  EXPECT_EQ(LogVerbosityFilter::MoreSevere_Inclusive(Critical), 0x001);
  EXPECT_EQ(LogVerbosityFilter::MoreSevere_Inclusive(Normal), 0x03f);
  EXPECT_EQ(LogVerbosityFilter::MoreSevere_Inclusive(VeryVerbose), 0x1ff);
  EXPECT_EQ(LogVerbosityFilter::MoreSevere_Exclusive(Critical), 0);
  EXPECT_EQ(LogVerbosityFilter::MoreSevere_Exclusive(Normal), 0x01f);
  EXPECT_EQ(LogVerbosityFilter::LessSevere_Inclusive(Normal), 0x1e0);
  EXPECT_EQ(LogVerbosityFilter::LessSevere_Exclusive(Normal), 0x1c0);
  EXPECT_EQ(LogVerbosityFilter::LessSevere_Exclusive(VeryVerbose), 0);
  EXPECT_EQ(LogVerbosityFilter::All(), 0x1ff);
}

TEST_F(LoggerTest, ACategoryLetsItsVerbosityAndTheMoreSeverePass) {
  const LogCategory category("test", Warning);
  EXPECT_EQ(category.Name, "test");
  EXPECT_EQ(category.DefaultFilter.Filter, 7);
  EXPECT_FALSE(category.DefaultFilter.bWhitelist);
  EXPECT_FALSE(category.IsSupressed(Critical));
  EXPECT_FALSE(category.IsSupressed(Warning));
  EXPECT_TRUE(category.IsSupressed(Important));
}

TEST_F(LoggerTest, LogAppIsRegisteredAsApp) {
  EXPECT_EQ(LogApp.Name, "app");
  EXPECT_EQ(LogApp.CompileTimeVerbosity(), VeryVerbose);
  EXPECT_EQ(LogApp.DefaultFilter.Filter, 0x3f);
  EXPECT_TRUE(Logger::CategoryExists("app"));
  EXPECT_FALSE(Logger::CategoryExists("App"));
}

TEST_F(LoggerTest, AMessageBecomesAnEntryWithVerbosityAndTime) {
  std::vector<LogEntry> seen;
  Logger::Output = [&](const LogEntry& entry) { seen.push_back(entry); };
  const uint64_t before = wtime::GetSystemTimeMsec();
  Logger::Log(LogApp, Error, "%s %d", "value", 42);
  const uint64_t after = wtime::GetSystemTimeMsec();
  ASSERT_EQ(seen.size(), 1u);
  EXPECT_EQ(seen[0].Message, "value 42");
  EXPECT_EQ(seen[0].Verbosity, Error);
  EXPECT_EQ(&seen[0].Category, &LogApp);
  EXPECT_EQ(seen[0].OwnerID, 0u);
  EXPECT_EQ(seen[0].ComponentName, "");
  EXPECT_LE(before, seen[0].Time);
  EXPECT_LE(seen[0].Time, after);
}

TEST_F(LoggerTest, ANewEntryIsNormalAndWithoutTime) {
  const LogEntry entry(LogApp);
  EXPECT_EQ(entry.Verbosity, Normal);
  EXPECT_EQ(entry.Time, 0u);
  EXPECT_EQ(entry.OwnerID, 0u);
}

TEST_F(LoggerTest, AnEmptyTextIsNotLogged) {
  int calls = 0;
  Logger::Output = [&](const LogEntry&) { ++calls; };
  Logger::Log(LogApp, Error, "%s", "");
  EXPECT_TRUE(history().empty());
  EXPECT_EQ(calls, 0);
}

TEST_F(LoggerTest, TextsAreCutAt4095Bytes) {
  Logger::Output = [](const LogEntry&) {};
  const std::string fits(4095, 'a');
  const std::string tooLong = fits + "b";
  Logger::Log(LogApp, Info, "%s", fits.c_str());
  Logger::Log(LogApp, Info, "%s", tooLong.c_str());
  LogTestComponent component;
  component.Log(Info, "%s", tooLong.c_str());
  const auto entries = history();
  ASSERT_EQ(entries.size(), 3u);
  for (const auto& entry : entries) EXPECT_EQ(entry.Message, fits);
}

TEST_F(LoggerTest, OutputIsTheCategorysThenTheLoggersThenTheConsole) {
  std::string calls;
  LogApp.Output = [&](const LogEntry&) { calls += "category "; };
  Logger::Output = [&](const LogEntry&) { calls += "logger "; };
  testing::internal::CaptureStdout();
  Logger::Log(LogApp, Error, "one");
  LogApp.Output = nullptr;
  Logger::Log(LogApp, Error, "two");
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  EXPECT_EQ(calls, "category logger ");
  Logger::Output = nullptr;
  testing::internal::CaptureStdout();
  Logger::Log(LogApp, Error, "three");
  EXPECT_NE(testing::internal::GetCapturedStdout().find("three"), std::string::npos);
}

TEST_F(LoggerTest, AnOwnOutputSeesSuppressedEntriesToo) {
  int calls = 0;
  Logger::Output = [&](const LogEntry&) { ++calls; };
  Logger::Log(LogApp, VeryVerbose, "hidden on the console");
  EXPECT_EQ(calls, 1);
}

TEST_F(LoggerTest, ConsoleLinesHaveTheDoubledSeparator) {
  setenv("TZ", "UTC0", 1);
  tzset();
  LogEntry entry(LogApp);
  entry.Time = 1794622903999;  // the milliseconds are dropped
  entry.Message = "Something happened";
  entry.Verbosity = Warning;
  testing::internal::CaptureStdout();
  Logger::DefaultConsoleOutput(entry);
  entry.Verbosity = Normal;
  Logger::DefaultConsoleOutput(entry);
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "Sat Nov 14 02:21:43 2026: app | Warning: : Something happened\n"
            "Sat Nov 14 02:21:43 2026: app: : Something happened\n");
}

TEST_F(LoggerTest, ConsoleLinesAreStampedWithTheLocalTime) {
  setenv("TZ", "EAST-9:30", 1);
  tzset();
  LogEntry entry(LogApp);
  entry.Time = 1794622903000;
  entry.Message = "here";
  testing::internal::CaptureStdout();
  Logger::DefaultConsoleOutput(entry);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "Sat Nov 14 11:51:43 2026: app: : here\n");
  setenv("TZ", "UTC0", 1);
  tzset();
}

TEST_F(LoggerTest, PrefixNamesEveryVerbosityButNormal) {
  EXPECT_EQ(Logger::GeneratePrefix(LogApp, Normal), "app: ");
  EXPECT_EQ(Logger::GeneratePrefix(LogApp, Critical), "app | Critical: ");
  EXPECT_EQ(Logger::GeneratePrefix(LogApp, VeryVerbose), "app | VeryVerbose: ");
}

TEST_F(LoggerTest, ForeignPercentSignsStayText) {
  LogEntry entry(LogApp);
  entry.Message = "100%s %n";
  testing::internal::CaptureStdout();
  Logger::DefaultConsoleOutput(entry);
  EXPECT_NE(testing::internal::GetCapturedStdout().find("100%s %n\n"), std::string::npos);
}

TEST_F(LoggerTest, DebugEntersTheHistoryAndPrintsNothing) {
  testing::internal::CaptureStdout();
  KLOG(LogApp, Debug, "quiet");
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  ASSERT_EQ(history().size(), 1u);
  EXPECT_EQ(history()[0].Message, "quiet");
}

TEST_F(LoggerTest, SetVerbosityMovesTheConsolesThreshold) {
  Logger::SetVerbosity("app", Warning);
  Logger::SetVerbosity("no such category", Critical);
  EXPECT_TRUE(LogApp.IsSupressed(Important));
  testing::internal::CaptureStdout();
  Logger::Log(LogApp, Important, "suppressed");
  Logger::Log(LogApp, Warning, "printed");
  const std::string out = testing::internal::GetCapturedStdout();
  EXPECT_EQ(out.find("suppressed"), std::string::npos);
  EXPECT_NE(out.find("printed"), std::string::npos);
}

TEST_F(LoggerTest, TheMacroAsksTheCategoryBeforeItFormats) {
  StrippedCategory category;
  int evaluated = 0;
  category.Output = [](const LogEntry&) {};
  KLOG(category, Important, "%d", ++evaluated);
  EXPECT_EQ(evaluated, 0);
  KLOG(category, Warning, "%d", ++evaluated);
  EXPECT_EQ(evaluated, 1);
  EXPECT_EQ(history().size(), 1u);
  reset();  // the entries refer to the category
}

TEST_F(LoggerTest, HistoryKeepsTheLastHundred) {
  Logger::Output = [](const LogEntry&) {};
  for (int i = 0; i < 103; ++i) Logger::Log(LogApp, Info, "%d", i);
  const auto entries = history();
  ASSERT_EQ(entries.size(), 100u);
  EXPECT_EQ(entries.front().Message, "3");
  EXPECT_EQ(entries.back().Message, "102");
}

TEST_F(LoggerTest, AHistorySizeOfZeroLeavesTheHistoryAndStillReachesTheOutput) {
  int calls = 0;
  Logger::Output = [&](const LogEntry&) { ++calls; };
  Logger::Log(LogApp, Info, "kept");
  Logger::MaxHistoryCacheSize = 0;
  Logger::Log(LogApp, Info, "not kept");
  ASSERT_EQ(history().size(), 1u);
  EXPECT_EQ(history()[0].Message, "kept");
  EXPECT_EQ(calls, 2);
}

TEST_F(LoggerTest, ASmallerHistoryTakesEffectAtTheNextEntry) {
  Logger::Output = [](const LogEntry&) {};
  for (int i = 0; i < 100; ++i) Logger::Log(LogApp, Info, "%d", i);
  Logger::SetCachedHistorySize(5);
  EXPECT_EQ(history().size(), 100u);
  Logger::Log(LogApp, Info, "last");
  const auto entries = history();
  ASSERT_EQ(entries.size(), 5u);
  EXPECT_EQ(entries.front().Message, "96");
  EXPECT_EQ(entries.back().Message, "last");
}

TEST_F(LoggerTest, SetCachedHistorySizeTrimsToTheSizeValidSoFar) {
  Logger::Output = [](const LogEntry&) {};
  for (int i = 0; i < 10; ++i) Logger::Log(LogApp, Info, "%d", i);
  Logger::MaxHistoryCacheSize = 4;
  Logger::SetCachedHistorySize(8);
  EXPECT_EQ(history().size(), 4u);
  EXPECT_EQ(Logger::MaxHistoryCacheSize, 8u);
}

TEST_F(LoggerTest, GetHistoryAppendsToWhatIsThere) {
  Logger::Output = [](const LogEntry&) {};
  Logger::Log(LogApp, Info, "entry");
  std::vector<LogEntry> entries;
  EXPECT_EQ(Logger::GetHistory(entries), 1u);
  EXPECT_EQ(Logger::GetHistory(entries), 1u);
  EXPECT_EQ(entries.size(), 2u);
}

TEST_F(LoggerTest, CategoriesAreListedByNameAndASecondOfOneNameIsNotEntered) {
  static LogCategory second("aaa", Normal), duplicate("aaa", Critical), last("zzz", Normal);
  Logger::RegisterCategory(last);
  Logger::RegisterCategory(second);
  Logger::RegisterCategory(duplicate);
  std::vector<LogCategory*> categories;
  Logger::ListCategories(categories);
  EXPECT_EQ(categories, (std::vector<LogCategory*>{&second, &LogApp, &last}));
  Logger::ListCategories(categories);  // appends
  EXPECT_EQ(categories, (std::vector<LogCategory*>{&second, &LogApp, &last, &second, &LogApp, &last}));
  Logger::SetVerbosity("aaa", Error);
  EXPECT_EQ(second.DefaultFilter.Filter, 3);
  EXPECT_EQ(duplicate.DefaultFilter.Filter, 1);
}

}  // namespace
