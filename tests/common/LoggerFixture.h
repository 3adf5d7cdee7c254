#pragma once

#include <gtest/gtest.h>

#include <vector>

#include "common/Logger.h"

// Each test begins with an empty history of 100 entries, the console as output and the filter of a fresh program.
class LoggerTest : public testing::Test {
 protected:
  void SetUp() override { reset(); }
  void TearDown() override { reset(); }

  static void reset() {
    ScopedLock lock(logs::Logger::CachedHistory);
    logs::Logger::CachedHistory->clear();
    logs::Logger::MaxHistoryCacheSize = 100;
    logs::Logger::Output = nullptr;
    LogApp.Output = nullptr;
    LogApp.DefaultFilter = logs::LogVerbosityFilter::MoreSevere_Inclusive(logs::Normal);
  }

  static std::vector<logs::LogEntry> history() {
    std::vector<logs::LogEntry> entries;
    const size_t count = logs::Logger::GetHistory(entries);
    EXPECT_EQ(count, entries.size());
    return entries;
  }
};

class LogTestComponent : public logs::LoggingComponent {
 public:
  const logs::LogCategory& GetLogCategory() const override { return LogApp; }
};
