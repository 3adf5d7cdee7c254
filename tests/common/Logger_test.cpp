#include "common/Logger.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <set>
#include <thread>

#include "wserver/Timing.h"

namespace {

using namespace logs;

// Each test begins with an empty history of 100 entries, the console as output and the filter of a fresh program.
class LoggerTest : public testing::Test {
 protected:
  void SetUp() override { reset(); }
  void TearDown() override { reset(); }

  static void reset() {
    ScopedLock lock(Logger::CachedHistory);
    Logger::CachedHistory->clear();
    Logger::MaxHistoryCacheSize = 100;
    Logger::Output = nullptr;
    LogApp.Output = nullptr;
    LogApp.DefaultFilter = LogVerbosityFilter::MoreSevere_Inclusive(Normal);
  }

  static std::vector<LogEntry> history() {
    std::vector<LogEntry> entries;
    const size_t count = Logger::GetHistory(entries);
    EXPECT_EQ(count, entries.size());
    return entries;
  }
};

class Component : public LoggingComponent {
 public:
  const LogCategory& GetLogCategory() const override { return LogApp; }
};

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
  Component component;
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
  Logger::SetVerbosity("aaa", Error);
  EXPECT_EQ(second.DefaultFilter.Filter, 3);
  EXPECT_EQ(duplicate.DefaultFilter.Filter, 1);
}

TEST_F(LoggerTest, AComponentLogsUnderItsNumberNameAndPrefix) {
  std::vector<LogEntry> seen;
  Logger::Output = [&](const LogEntry& entry) { seen.push_back(entry); };
  Component component;
  component.LogComponentName = "loader";
  component.Log(Warning, "%d of %d", 1, 2);
  component.LogPrefix = [] { return std::string("[x] "); };
  component.Log(Info, "%d", 3);
  component.Log(Info, "%s", "");  // the prefix alone is a message
  ASSERT_EQ(seen.size(), 3u);
  EXPECT_EQ(seen[0].Message, "1 of 2");
  EXPECT_EQ(seen[0].OwnerID, component.LoggingID());
  EXPECT_EQ(seen[0].ComponentName, "loader");
  EXPECT_EQ(seen[0].Verbosity, Warning);
  EXPECT_GT(seen[0].Time, 0u);
  EXPECT_EQ(seen[1].Message, "[x] 3");
  EXPECT_EQ(seen[2].Message, "[x] ");
}

TEST_F(LoggerTest, ComponentLogIgnoresNothingnessAndNobody) {
  Component component;
  Logger::ComponentLog(&component, Error, "");
  Logger::ComponentLog(nullptr, Error, "text");
  component.Log(Error, "%s", "");
  EXPECT_TRUE(history().empty());
}

TEST_F(LoggerTest, ComponentsAreNumberedFromOneByTheirCount) {
  Component first;
  EXPECT_EQ(first.LoggingID(), 1u);
  Component second;
  EXPECT_EQ(second.LoggingID(), 2u);
  ScopedLock lock(Logger::Components);
  EXPECT_EQ(Logger::Components->size(), 2u);
  EXPECT_EQ(Logger::Components->at(2), &second);
}

TEST_F(LoggerTest, ANumberStillInUseIsSharedAndStaysWithItsOwner) {
  auto first = std::make_unique<Component>();
  Component second;
  first.reset();
  {
    Component third;  // one component is left, so the count says 2 again
    EXPECT_EQ(third.LoggingID(), second.LoggingID());
  }
  ScopedLock lock(Logger::Components);
  ASSERT_EQ(Logger::Components->count(second.LoggingID()), 1u);
  EXPECT_EQ(Logger::Components->at(second.LoggingID()), &second);
}

TEST_F(LoggerTest, UnregisteringByNumberTakesTheComponentOut) {
  Component component;
  Logger::UnregisterComponent(component.LoggingID());
  Logger::UnregisterComponent(4711);
  ScopedLock lock(Logger::Components);
  EXPECT_TRUE(Logger::Components->empty());
}

TEST_F(LoggerTest, ManyThreadsLoseNoEntryAndMixNoText) {
  constexpr int NumThreads = 4, NumLines = 200;
  Logger::MaxHistoryCacheSize = NumThreads * NumLines;
  Logger::Output = [](const LogEntry&) {};
  std::vector<std::thread> threads;
  for (int t = 0; t < NumThreads; ++t)
    threads.emplace_back([t] {
      Component component;
      for (int i = 0; i < NumLines; ++i) {
        if (i % 2)
          KLOG(LogApp, Info, "thread %d line %d", t, i);
        else
          component.Log(Info, "thread %d line %d", t, i);
        Logger::SetVerbosity("app", i % 3 ? Normal : Debug);
        (void)LogApp.IsSupressed(Debug);
      }
    });
  for (auto& thread : threads) thread.join();
  std::set<std::string> texts;
  for (const auto& entry : history()) texts.insert(entry.Message);
  EXPECT_EQ(texts.size(), static_cast<size_t>(NumThreads * NumLines));
  EXPECT_EQ(texts.count("thread 3 line 199"), 1u);
}

}  // namespace
