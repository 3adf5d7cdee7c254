// How much a day's file takes.
#include <gtest/gtest.h>

#include "tests/support/ChildProcess.h"
#include "tests/support/TestApplication.h"
#include "tests/vendelo-sdl2/TLogManagerFixture.h"

using vendelo_sdl2::TEssentialLines;

namespace {

const char Full[] =
  ": WARN: The log has as many lines as a day may have, until midnight only starts, ends, crashes and "
  "registrations "
  "follow\n";
const size_t LineLength = 24 + 2 + 73 + 1;  // of a line of 73 characters

// Not by "+" on a new string, in which g++ 12 sees a copy out of bounds.
std::string xs(size_t count, const char* end) {
  std::string text(count, 'x');
  text += end;
  return text;
}

class LimitedLogTest : public TLogManagerTest {
 protected:
  void flush(TLogManager& manager) {
    clock.advance(101);
    manager.Poll();
  }
  static void write(TLogManager& manager, int count) {
    for (int i = 0; i < count; ++i) manager.WriteLog(xs(73, ""));
  }
  int lines() const { return occurrences(xs(73, "\n"), read(dated("app"))); }
  int full() const { return occurrences(Full, read(dated("app"))); }
  static void makeUpTo(const fs::path& file, size_t size) { std::ofstream(file) << std::string(size, '\n'); }
};

TEST_F(LimitedLogTest, IsTakenToTheLastLineThatHasRoomAndThenSaidOnce) {
  const size_t head = std::string("== APP CREATED THIS FILE ==\n\n\n").size();
  for (const int more : {0, -1}) {
    TLogManager manager;
    manager.SetDailyLimit(head + 5 * LineLength + static_cast<size_t>(more));
    init(manager);
    write(manager, 10);
    flush(manager);
    write(manager, 10);
    flush(manager);
    EXPECT_EQ(lines(), more == 0 ? 5 : 4);
    EXPECT_EQ(full(), 1);
    EXPECT_EQ(manager.LinesBeyondLimit(), more == 0 ? 15u : 16u);
    EXPECT_EQ(manager.LostLines(), 0u);
    manager.Destroy();
    fs::remove(dated("app"));
  }
}

TEST_F(LimitedLogTest, EssentialLinesFollowAndOthersDoNotEvenWhereTheyHadRoom) {
  TLogManager manager;
  manager.SetDailyLimit(400);
  init(manager);
  write(manager, 10);
  {
    const TEssentialLines essential;
    manager.WriteLog("a start");
    const TEssentialLines inner;
  }
  manager.WriteLog("s");
  {
    const TEssentialLines essential;
    { const TEssentialLines inner; }
    manager.WriteLog("an end");
  }
  flush(manager);
  EXPECT_EQ(lines(), 3);
  const std::string text = read(dated("app"));
  EXPECT_TRUE(tellsInOrder(text, {Full, ": a start\n", ": an end\n"}));
  EXPECT_EQ(occurrences(": s\n", text), 0);
  EXPECT_EQ(manager.LinesBeyondLimit(), 8u) << "seven of ten, and the short one";
}

TEST_F(LimitedLogTest, WhatIsNotInTheFileIsOnTheConsoleAndForTheListenersAllTheSame) {
  Recorder manager;
  manager.SetDailyLimit(10);
  init(manager);
  manager.SetOutputToConsole(true);
  console();
  write(manager, 3);
  manager.Poll();
  EXPECT_EQ(manager.entries.size(), 3u);
  EXPECT_EQ(occurrences(xs(73, "\n"), console()), 3);
  EXPECT_EQ(manager.PopLogHistory().substr(26), xs(73, ""));
}

TEST_F(LimitedLogTest, CountsWhatAnEarlierStartOfTheDayHasWritten) {
  makeUpTo(dated("app"), 1000);
  TLogManager manager;
  manager.SetDailyLimit(1000 + 2 + 2 * LineLength);
  init(manager);
  write(manager, 5);
  flush(manager);
  EXPECT_EQ(lines(), 2);
  EXPECT_EQ(full(), 1);
}

TEST_F(LimitedLogTest, CountsWhatIsWrittenByTheByteAcrossFlushes) {
  TLogManager manager;
  manager.SetDailyLimit(30 + 20 * LineLength);
  init(manager);
  for (int i = 0; i < 30; ++i) {
    write(manager, 1);
    flush(manager);
  }
  EXPECT_EQ(lines(), 20);
}

// The folder's date is that of the time zone: here a day later on the other side of the world.
TEST_F(LimitedLogTest, TheNextDateBeginsAnew) {
  TLogManager manager;
  manager.SetDailyLimit(300);
  init(manager);
  write(manager, 10);
  flush(manager);
  EXPECT_EQ(lines(), 2);
  setenv("TZ", "X-24", 1);
  tzset();
  clock.advance(10001);
  write(manager, 10);
  flush(manager);
  EXPECT_EQ(lines(), 2) << "of the new day";
  EXPECT_EQ(full(), 1);
  setenv("TZ", "UTC0", 1);
  tzset();
}

TEST_F(LimitedLogTest, WithoutALimitThereIsNone) {
  TLogManager manager;
  init(manager);
  write(manager, 2000);
  flush(manager);
  EXPECT_EQ(lines(), 2000);
  EXPECT_EQ(full(), 0);
}

TEST(LogMaxMb, IsTheNumberOfTheEnvironmentInMegabytesAndNoneWithout) {
  const struct {
    const char* name;
    const char* value;
    int lines;
  } rows[] = {{"unset", nullptr, 3}, {"one", "1", 1},       {"two", "2 MB", 3},
              {"zero", "0", 3},      {"negative", "-1", 3}, {"no number", "much", 3}};
  endAll(
    rows,
    [](const auto& row) {
      return std::make_unique<ChildProcess>([&] {
        const ScopedEnvironment limit("LOG_MAX_MB", row.value);
        char name[] = "/tmp/logmaxXXXXXX";
        const fs::path folder = mkdtemp(name);
        auto* app = new TestApplication;
        const fs::path file = folder / ("top_" + MyUtils::GetCurrentDateString() + ".log");
        std::ofstream(file) << std::string(1024 * 1024 - 100, '\n');
        app->TLogManager::Init((folder / "top.log").string(), nullptr, nullptr, false);
        for (const char* text : {"first", "second", "third"}) app->WriteLog(text + xs(40, ""));
        app->TLogManager::Poll();
        app->FlushFile();
        std::ifstream stream(file);
        std::ostringstream text;
        text << stream.rdbuf();
        std::fprintf(stderr, "[%d]", occurrences(xs(40, "\n"), text.str()));
        fs::remove_all(folder);
      });
    },
    [](const auto& row, ChildProcess& child) {
      child.end();
      EXPECT_NE(child.output().find("[" + std::to_string(row.lines) + "]"), std::string::npos) << child.output();
    });
}

}  // namespace
