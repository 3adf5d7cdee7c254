// Components, outputs and threads of the categorised logger.
#include <gtest/gtest.h>

#include <cstdio>
#include <memory>
#include <set>
#include <sstream>
#include <string>
#include <thread>

#include "tests/common/LoggerFixture.h"
#include "wserver/Timing.h"

namespace {

using namespace logs;

TEST_F(LoggerTest, OutputsAreCalledWithoutALock) {
  size_t seen = 0;
  Logger::Output = [&](const LogEntry&) {
    std::thread([&] {
      seen = history().size();
      Logger::SetVerbosity("app", Normal);
      LogTestComponent component;
    }).join();
  };
  Logger::Log(LogApp, Error, "already in the history");
  EXPECT_EQ(seen, 1u);
}

TEST_F(LoggerTest, AComponentsCategoryHasItsOwnOutput) {
  static LogCategory category("of components", Error);
  std::string seen;
  category.Output = [&](const LogEntry& entry) { seen = entry.Category.Name + ": " + entry.Message; };
  struct Own : LoggingComponent {
    const LogCategory& GetLogCategory() const override { return category; }
  } component;
  component.Log(Verbose, "text");
  category.Output = nullptr;
  EXPECT_EQ(seen, "of components: text");
}

TEST_F(LoggerTest, AComponentLogsUnderItsNumberNameAndPrefix) {
  std::vector<LogEntry> seen;
  Logger::Output = [&](const LogEntry& entry) { seen.push_back(entry); };
  LogTestComponent component;
  component.LogComponentName = "loader";
  const uint64_t before = wtime::GetSystemTimeMsec();
  component.Log(Warning, "%d of %d", 1, 2);
  const uint64_t after = wtime::GetSystemTimeMsec();
  component.LogPrefix = [] { return std::string("[x] "); };
  component.Log(Info, "%d", 3);
  component.Log(Info, "%s", "");  // the prefix alone is a message
  ASSERT_EQ(seen.size(), 3u);
  EXPECT_EQ(seen[0].Message, "1 of 2");
  EXPECT_EQ(seen[0].OwnerID, component.LoggingID());
  EXPECT_EQ(seen[0].ComponentName, "loader");
  EXPECT_EQ(seen[0].Verbosity, Warning);
  EXPECT_LE(before, seen[0].Time);
  EXPECT_LE(seen[0].Time, after);
  EXPECT_EQ(seen[1].Message, "[x] 3");
  EXPECT_EQ(seen[2].Message, "[x] ");
}

TEST_F(LoggerTest, ComponentLogIgnoresNothingnessAndNobody) {
  LogTestComponent component;
  Logger::ComponentLog(&component, Error, "");
  Logger::ComponentLog(nullptr, Error, "text");
  component.Log(Error, "%s", "");
  EXPECT_TRUE(history().empty());
}

TEST_F(LoggerTest, ComponentsAreNumberedFromOneByTheirCount) {
  LogTestComponent first;
  EXPECT_EQ(first.LoggingID(), 1u);
  LogTestComponent second;
  EXPECT_EQ(second.LoggingID(), 2u);
  ScopedLock lock(Logger::Components);
  EXPECT_EQ(Logger::Components->size(), 2u);
  EXPECT_EQ(Logger::Components->at(2), &second);
}

TEST_F(LoggerTest, ANumberStillInUseIsSharedAndStaysWithItsOwner) {
  auto first = std::make_unique<LogTestComponent>();
  LogTestComponent second;
  first.reset();
  {
    LogTestComponent third;  // one component is left, so the count says 2 again
    EXPECT_EQ(third.LoggingID(), second.LoggingID());
  }
  ScopedLock lock(Logger::Components);
  ASSERT_EQ(Logger::Components->count(second.LoggingID()), 1u);
  EXPECT_EQ(Logger::Components->at(second.LoggingID()), &second);
}

TEST_F(LoggerTest, UnregisteringByNumberTakesTheComponentOut) {
  LogTestComponent component;
  Logger::UnregisterComponent(component.LoggingID());
  Logger::UnregisterComponent(4711);
  ScopedLock lock(Logger::Components);
  EXPECT_TRUE(Logger::Components->empty());
}

TEST_F(LoggerTest, ManyThreadsLoseNoEntryAndMixNoText) {
  constexpr int kNumThreads = 4, kNumLines = 200;
  Logger::MaxHistoryCacheSize = kNumThreads * kNumLines;
  Logger::Output = [](const LogEntry&) {};
  std::vector<std::thread> threads;
  for (int t = 0; t < kNumThreads; ++t)
    threads.emplace_back([t] {
      LogTestComponent component;
      for (int i = 0; i < kNumLines; ++i) {
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
  EXPECT_EQ(texts.size(), static_cast<size_t>(kNumThreads * kNumLines));
  EXPECT_EQ(texts.count("thread 3 line 199"), 1u);
}

TEST_F(LoggerTest, ConsoleLinesOfManyThreadsStayWhole) {
  constexpr int kNumThreads = 4, kNumLines = 150;
  testing::internal::CaptureStdout();
  std::vector<std::thread> threads;
  for (int t = 0; t < kNumThreads; ++t)
    threads.emplace_back([t] {
      for (int i = 0; i < kNumLines; ++i) {
        Logger::Log(LogApp, Warning, "thread %d line %d end", t, i);
        Logger::SetVerbosity("app", i % 2 ? Warning : VeryVerbose);
      }
    });
  for (auto& thread : threads) thread.join();
  std::istringstream out(testing::internal::GetCapturedStdout());
  std::vector<int> next(kNumThreads, 0);
  for (std::string line; std::getline(out, line);) {
    int t = -1, i = -1, length = 0;
    ASSERT_EQ(std::sscanf(line.c_str() + 24, ": app | Warning: : thread %d line %d end%n", &t, &i, &length), 2)
      << line;
    EXPECT_EQ(line.size(), 24u + static_cast<size_t>(length)) << line;
    EXPECT_EQ(i, next.at(static_cast<size_t>(t))++);
  }
  EXPECT_EQ(next, std::vector<int>(kNumThreads, kNumLines));
}

}  // namespace
