#include "vendelo-sdl2/TLogManager.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <regex>
#include <sstream>
#include <thread>

#include "common/Logger.h"
#include "tests/support/FakeClock.h"
#include "vendelo-sdl2/MyUtils.h"

namespace fs = std::filesystem;
using vendelo_sdl2::TLogEntry;
using vendelo_sdl2::TLogManager;

namespace {

// A manager in a folder of its own, on a tick clock that stands at 1000, with the console captured.
class TLogManagerTest : public testing::Test {
 protected:
  void SetUp() override {
    setenv("TZ", "UTC0", 1);
    tzset();
    const testing::TestInfo* info = testing::UnitTest::GetInstance()->current_test_info();
    folder = fs::temp_directory_path() / ("tlogmanager." + std::to_string(getpid()) + "." + info->name());
    fs::remove_all(folder);
    fs::create_directories(folder);
    testing::internal::CaptureStdout();
  }
  void TearDown() override {
    const std::string out = testing::internal::GetCapturedStdout();
    if (HasFailure()) std::fputs((captured + out).c_str(), stderr);  // the failures were captured too
    fs::remove_all(folder);
  }

  // What was printed since the last call.
  std::string console() {
    std::string out = testing::internal::GetCapturedStdout();
    testing::internal::CaptureStdout();
    captured += out;
    return out;
  }
  static std::string read(const fs::path& path) {
    std::ifstream file(path);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
  }
  std::string name(const char* file) const { return (folder / file).string(); }
  fs::path dated(const char* stem) const {
    return folder / (std::string(stem) + "_" + MyUtils::GetCurrentDateString() + ".log");
  }
  int init(TLogManager& manager) { return manager.Init(name("app.log"), nullptr, nullptr, true); }

  FakeClock clock{1000};
  fs::path folder;
  std::string captured;
};

// Keeps the lines that Poll delivers.
class Recorder : public TLogManager {
 public:
  void OnWriteLog(const TLogEntry& entry, int linesToGo) override {
    entries.push_back(entry);
    toGo.push_back(linesToGo);
    if (throws) throw 1;
  }
  std::vector<TLogEntry> entries;
  std::vector<int> toGo;
  bool throws = false;
};

TEST_F(TLogManagerTest, BeforeInitLinesAreRefused) {
  TLogManager manager;
  EXPECT_EQ(manager._WriteLog(0, 4, 0, "lost"), -1);
  EXPECT_EQ(manager.WriteLog("lost"), -1);
  EXPECT_EQ(manager.WriteLog(4, std::string("lost")), -1);
  EXPECT_EQ(manager.WriteLog(4, 0, std::string("lost")), -1);
  EXPECT_EQ(manager.WriteLog(4, 0, "%s", "lost"), 0);  // only a null format is a failure of this form
  EXPECT_EQ(manager.WriteLog(4, 0, static_cast<const char*>(nullptr)), -1);
  EXPECT_EQ(manager.WriteColoredLog(1, 4, 0, static_cast<const char*>(nullptr)), -1);
  EXPECT_EQ(manager.Poll(), -1);
  EXPECT_EQ(manager.PopLogHistory(), "");
  EXPECT_EQ(manager.GetLastLog(), "");
  manager.Destroy();
  EXPECT_EQ(console(), "");
}

TEST_F(TLogManagerTest, PrefixFollowsTheLowByteOfTheType) {
  const struct {
    unsigned type;
    const char* rest;  // of the line, behind the stamp
  } rows[] = {{0, ": text"},
              {1, ": text"},
              {2, ": debINFO: text"},
              {3, ": INFO: text"},
              {4, ": WARN: text"},
              {5, ": ERROR: text"},
              {6, ": debERROR: text"},
              {7, ": CRITICAL: text"},
              {8, ": text"},
              {9, "text"},
              {255, "text"},
              {0x104, ": WARN: text"},
              {0x10000, ": text"},
              {0x10001, ": LT_USER_65537: text"},
              {0x10004, ": LT_USER_65540: WARN: text"},
              {0x10009, ": LT_USER_65545text"},
              {0xffffff05, ": LT_USER_4294967045: ERROR: text"}};
  Recorder manager;
  init(manager);
  for (const auto& row : rows) manager.WriteLog(row.type, 7, std::string("text"));
  manager.Poll();
  ASSERT_EQ(manager.entries.size(), std::size(rows));
  const std::regex stamp("(Sun|Mon|Tue|Wed|Thu|Fri|Sat) [A-Z][a-z]{2} [ 1-3][0-9] \\d\\d:\\d\\d:\\d\\d \\d{4}");
  for (size_t i = 0; i < std::size(rows); ++i) {
    const TLogEntry& entry = manager.entries[i];
    EXPECT_TRUE(std::regex_match(entry.Message.substr(0, 24), stamp)) << entry.Message;
    EXPECT_EQ(entry.Message.substr(24), rows[i].rest);
    EXPECT_EQ(entry.LogType, rows[i].type);
    EXPECT_EQ(entry.GameId, 7u);
    EXPECT_EQ(entry.Color, 0);
  }
}

TEST_F(TLogManagerTest, WithoutPrefixesEveryLineIsPlain) {
  Recorder manager;
  EXPECT_TRUE(manager.bAppendPrefix);
  init(manager);
  manager.bAppendPrefix = false;
  manager.WriteLog(4, std::string("warning"));
  manager.WriteLog(9, std::string("nine"));
  manager.Poll();
  EXPECT_EQ(manager.entries.at(0).Message.substr(24), ": warning");
  EXPECT_EQ(manager.entries.at(1).Message.substr(24), ": nine");
}

TEST_F(TLogManagerTest, StampIsTheLocalTimeOfWriting) {
  Recorder manager;
  init(manager);
  const time_t before = std::time(nullptr);
  manager.WriteLog("now");
  const time_t after = std::time(nullptr);
  manager.Poll();
  tm parsed{};
  ASSERT_NE(strptime(manager.entries.at(0).Message.c_str(), "%a %b %d %H:%M:%S %Y", &parsed), nullptr);
  const time_t written = timegm(&parsed);
  EXPECT_LE(before, written);
  EXPECT_LE(written, after);
}

TEST_F(TLogManagerTest, FormsFillInTypeAndGame) {
  Recorder manager;
  init(manager);
  EXPECT_EQ(manager.WriteLog("one"), 0);
  EXPECT_EQ(manager.WriteLog(3, std::string("two")), 0);
  EXPECT_EQ(manager.WriteLog(4, 99, std::string("%s stays")), 0);
  EXPECT_EQ(manager.WriteLog(5, 98, "%s-%d", "four", 4), 0);
  EXPECT_EQ(manager.WriteColoredLog(9, 2, 97, "%c", 'x'), 0);
  manager.Poll();
  const struct {
    unsigned type;
    unsigned long game;
    int color;
    const char* rest;
  } rows[] = {{0, 0, 0, ": one"},
              {3, 0, 0, ": INFO: two"},
              {4, 99, 0, ": WARN: %s stays"},
              {5, 98, 0, ": ERROR: four-4"},
              {2, 97, 9, ": debINFO: x"}};
  ASSERT_EQ(manager.entries.size(), std::size(rows));
  for (size_t i = 0; i < std::size(rows); ++i) {
    EXPECT_EQ(manager.entries[i].LogType, rows[i].type);
    EXPECT_EQ(manager.entries[i].GameId, rows[i].game);
    EXPECT_EQ(manager.entries[i].Color, rows[i].color);
    EXPECT_EQ(manager.entries[i].Message.substr(24), rows[i].rest);
  }
  EXPECT_EQ(manager.toGo, (std::vector<int>{4, 3, 2, 1, 0}));
}

TEST_F(TLogManagerTest, FormattedLinesAreCutAt2047BytesAndStringsAreNot) {
  Recorder manager;
  init(manager);
  const std::string longText(3000, 'x');
  manager.WriteLog(0, 0, "%s", longText.c_str());
  manager.WriteLog(longText);
  manager.Poll();
  EXPECT_EQ(manager.entries.at(0).Message.size(), 24 + 2 + 2047u);
  EXPECT_EQ(manager.entries.at(1).Message.size(), 24 + 2 + 3000u);
}

TEST_F(TLogManagerTest, ConsoleShowsLinesAtOnceAndColoured) {
  TLogManager manager;
  init(manager);
  manager.WriteLog("quiet");
  EXPECT_EQ(console().find("quiet"), std::string::npos);  // Init switches the console off
  manager.SetOutputToConsole(true);
  manager.WriteLog(4, std::string("loud 100%"));
  manager.WriteColoredLog(static_cast<char>(200), 3, 0, "bright");
  const std::string out = console();
  EXPECT_TRUE(
    std::regex_match(out, std::regex(".{24}: WARN: loud 100%\n\x1b\\[38;5;200m.{24}: INFO: bright\x1b\\[0m\n")))
    << out;
  manager.Poll();
  manager.Destroy();
  EXPECT_EQ(read(dated("app")).find('\x1b'), std::string::npos);  // no colours in the file
}

TEST_F(TLogManagerTest, FileIsNamedByTheDateAndMarkedWhenCreated) {
  const struct {
    const char* given;
    const char* stem;
  } rows[] = {
    {"app.log", "app"}, {"text.txt", "text"}, {"plain", "plain"}, {"a.log.b.txt", "a.b"}, {"x.lo.logg", "x.log"}};
  for (const auto& row : rows) {
    TLogManager manager;
    EXPECT_EQ(manager.Init(name(row.given), nullptr, nullptr, true), 0);
    EXPECT_EQ(manager.GetLogFileName(), dated(row.stem).string());
    EXPECT_NE(console().find("app | Important: : Logging to file " + name(row.given) + "\n"), std::string::npos);
    manager.Destroy();
    EXPECT_EQ(read(dated(row.stem)), "== APP CREATED THIS FILE ==\n\n\n");
  }
}

TEST_F(TLogManagerTest, ARestartOnTheSameDayAppends) {
  for (const char* text : {"first run", "second run"}) {
    TLogManager manager;
    init(manager);
    manager.WriteLog(4, std::string(text));
    manager.Poll();
    manager.Destroy();
  }
  EXPECT_TRUE(
    std::regex_match(read(dated("app")), std::regex("== APP CREATED THIS FILE ==\n\n\n.{24}: WARN: first run\n"
                                                    "\n\n.{24}: WARN: second run\n")))
    << read(dated("app"));
}

TEST_F(TLogManagerTest, MissingFoldersAreMade) {
  TLogManager manager;
  EXPECT_EQ(manager.Init((folder / "a" / "b" / "app.log").string(), nullptr, nullptr, true), 0);
  manager.Destroy();
  EXPECT_TRUE(fs::exists(folder / "a" / "b" / dated("app").filename()));
}

TEST_F(TLogManagerTest, ANameWithoutFolderGoesToTheCurrentOne) {
  const fs::path previous = fs::current_path();
  fs::current_path(folder);
  {
    TLogManager manager;
    manager.Init("here.log", nullptr, nullptr, true);
    manager.Destroy();
  }
  fs::current_path(previous);
  EXPECT_TRUE(fs::exists(dated("here")));
}

class OldLogsTest : public TLogManagerTest {
 protected:
  // Makes a file that was last written `age` hours ago.
  void makeOld(const std::string& file, int age) {
    std::ofstream(folder / file) << file;
    fs::last_write_time(folder / file, fs::file_time_type::clock::now() - std::chrono::hours(age));
  }
  std::string old(int i) const { return "app_old" + std::to_string(i) + ".log"; }
};

TEST_F(OldLogsTest, ThirtyNineOfTheOldFilesRemain) {
  for (int i = 0; i < 41; ++i) makeOld(old(i), 24 + (i * 7) % 41);  // the order of age is not that of the names
  TLogManager manager;
  init(manager);
  int remaining = 0;
  for (int i = 0; i < 41; ++i) {
    const bool kept = fs::exists(folder / old(i));
    EXPECT_EQ(kept, (i * 7) % 41 < 39) << i;
    remaining += kept;
  }
  EXPECT_EQ(remaining, 39);
  EXPECT_TRUE(fs::exists(dated("app")));  // the new file did not count
}

TEST_F(OldLogsTest, TodaysFileCountsWhenItExists) {
  for (int i = 0; i < 39; ++i) makeOld(old(i), 24 + i);
  std::ofstream(dated("app")) << "today\n";
  TLogManager manager;
  init(manager);
  EXPECT_FALSE(fs::exists(folder / old(38)));
  EXPECT_TRUE(fs::exists(folder / old(37)));
  EXPECT_EQ(read(dated("app")).substr(0, 6), "today\n");
}

TEST_F(OldLogsTest, OnlyLogFilesOfThisNameAreTouched) {
  for (int i = 0; i < 45; ++i) {
    makeOld("other" + std::to_string(i) + ".log", 24 + i);
    makeOld("app" + std::to_string(i) + ".txt", 24 + i);
    fs::create_directories(folder / ("app" + std::to_string(i) + ".dir.log"));
  }
  TLogManager manager;
  init(manager);
  size_t count = 0;
  for ([[maybe_unused]] const auto& entry : fs::directory_iterator(folder)) ++count;
  EXPECT_EQ(count, 3 * 45 + 1u);
}

TEST_F(OldLogsTest, NothingIsDeletedUnlessAsked) {
  for (int i = 0; i < 45; ++i) makeOld(old(i), 24 + i);
  TLogManager manager;
  manager.Init(name("app.log"), nullptr, nullptr, false);
  for (int i = 0; i < 45; ++i) EXPECT_TRUE(fs::exists(folder / old(i)));
}

TEST_F(OldLogsTest, AFolderThatCannotBeListedThrows) {
  std::ofstream(folder / "file") << "no folder";
  TLogManager manager;
  EXPECT_THROW(manager.Init((folder / "file" / "app.log").string(), nullptr, nullptr, true), fs::filesystem_error);
}

TEST_F(TLogManagerTest, WithoutFileAndCallbackTheConsoleTakesOver) {
  std::ofstream(folder / "file") << "no folder";
  TLogManager manager;
  const std::string path = (folder / "file" / "app.log").string();
  EXPECT_EQ(manager.Init(path, nullptr, nullptr, false), 0);
  const std::string expected = (folder / "file" / dated("app").filename()).string();
  const std::string out = console();
  EXPECT_NE(out.find("app | Error: : Can't open log file " + expected + "\n"), std::string::npos) << out;
  EXPECT_NE(out.find("app | Warning: : No channels to output. Will output to console.\n"), std::string::npos);
  EXPECT_EQ(out.find("Logging to file"), std::string::npos);
  manager.WriteLog("seen");
  EXPECT_TRUE(std::regex_match(console(), std::regex(".{24}: seen\n")));
  EXPECT_EQ(manager.Poll(), 0);
  EXPECT_TRUE(std::regex_match(console(), std::regex("logman\\(logfile error\\): .{24}: seen\n\n")));
  EXPECT_EQ(manager.Open(), -1);
}

TEST_F(TLogManagerTest, ACallbackIsAChannelToo) {
  std::ofstream(folder / "file") << "no folder";
  TLogManager manager;
  manager.Init((folder / "file" / "app.log").string(), [](void*, const TLogEntry&, int) {}, nullptr, false);
  EXPECT_EQ(console().find("No channels"), std::string::npos);
  manager.WriteLog("unseen");
  EXPECT_EQ(console(), "");
  EXPECT_EQ(manager.Open(), 0);
}

TEST_F(TLogManagerTest, ALostFileIsTriedAgainAfterMoreThan37840Milliseconds) {
  fs::create_directories(folder / "sub");
  std::ofstream(folder / "sub" / "blocked") << "no folder";
  TLogManager manager;
  manager.Init((folder / "sub" / "blocked" / "app.log").string(), nullptr, nullptr, false);
  const fs::path expected = folder / "sub" / "blocked" / dated("app").filename();
  fs::remove(folder / "sub" / "blocked");
  fs::create_directories(folder / "sub" / "blocked");
  clock.advance(37840);
  manager.Poll();
  EXPECT_FALSE(fs::exists(expected));
  clock.advance(1);
  manager.Poll();
  EXPECT_TRUE(fs::exists(expected));
  manager.WriteLog("back again");
  manager.Poll();
  manager.Destroy();
  EXPECT_TRUE(std::regex_match(read(expected), std::regex(".{24}: back again\n")));
}

TEST_F(TLogManagerTest, FileIsFlushedAfterMoreThan100Milliseconds) {
  TLogManager manager;
  init(manager);
  manager.WriteLog("delayed");
  clock.advance(100);
  manager.Poll();
  EXPECT_EQ(read(dated("app")), "== APP CREATED THIS FILE ==\n");
  clock.advance(1);
  manager.Poll();
  EXPECT_TRUE(
    std::regex_match(read(dated("app")), std::regex("== APP CREATED THIS FILE ==\n\n\n.{24}: delayed\n")));
}

TEST_F(TLogManagerTest, DateIsLookedAtAfterMoreThan10SecondsAndOnlyWithALine) {
  setenv("TZ", "EARLY12", 1);  // 26 hours apart, so that the date differs at any time of the day
  tzset();
  const fs::path first = dated("app");
  TLogManager manager;
  init(manager);
  setenv("TZ", "LATE-14", 1);
  tzset();
  const fs::path second = dated("app");
  ASSERT_NE(first, second);

  manager.WriteLog("too early");
  clock.advance(10000);
  manager.Poll();
  clock.advance(1);
  manager.Poll();  // no line
  EXPECT_FALSE(fs::exists(second));
  manager.WriteLog("switches");
  manager.WriteLog("stays");
  console();
  manager.Poll();
  EXPECT_EQ(console(), name("app") + " closed.\n");
  EXPECT_EQ(manager.GetLogFileName(), second.string());
  manager.Destroy();
  const std::string secondDate = second.stem().string().substr(4);
  EXPECT_TRUE(std::regex_match(read(first), std::regex("== APP CREATED THIS FILE ==\n\n\n.{24}: too early\n"
                                                       "Switching to log with date " +
                                                       secondDate)))
    << read(first);
  EXPECT_TRUE(
    std::regex_match(read(second), std::regex("== APP CREATED THIS FILE ==\n\n\n.{24}: switches\n.{24}: stays\n")))
    << read(second);
}

TEST_F(TLogManagerTest, HistoryKeepsTheLastFiftyLines) {
  TLogManager manager;
  init(manager);
  for (int i = 1; i <= 60; ++i) manager.WriteLog(0, 0, "line %d", i);
  EXPECT_EQ(manager.PopLogHistory(), "");  // not before Poll
  manager.Poll();
  EXPECT_EQ(manager.PopLogHistory().substr(24), ": line 11");
  EXPECT_EQ(manager.PopLogHistory().substr(24), ": line 12");
  for (int i = 13; i <= 60; ++i) manager.PopLogHistory();
  EXPECT_EQ(manager.PopLogHistory(), "");
  manager.WriteLog("one more");
  manager.Poll();
  manager.Destroy();
  EXPECT_EQ(manager.PopLogHistory(), "");
}

TEST_F(TLogManagerTest, LastLogIsTheBareText) {
  TLogManager manager;
  init(manager);
  manager.WriteLog(5, std::string("bare"));
  EXPECT_EQ(manager.GetLastLog(), "bare");
}

struct Calls {
  std::vector<std::string> texts;
  std::vector<int> toGo;
  bool throws = false;
};

void record(void* userData, const TLogEntry& entry, int linesToGo) {
  auto& calls = *static_cast<Calls*>(userData);
  calls.texts.push_back(entry.Message.substr(24));
  calls.toGo.push_back(linesToGo);
  if (calls.throws) throw std::runtime_error("callback");
}

TEST_F(TLogManagerTest, CallbackGetsUserDataEntryAndRemainingLines) {
  Calls calls;
  TLogManager manager;
  manager.Init(name("app.log"), record, &calls, false);
  for (const char* text : {"a", "b", "c"}) manager.WriteLog(text);
  manager.Poll();
  EXPECT_EQ(calls.texts, (std::vector<std::string>{": a", ": b", ": c"}));
  EXPECT_EQ(calls.toGo, (std::vector<int>{2, 1, 0}));
}

TEST_F(TLogManagerTest, ThrowingListenersLoseNeitherLinesNorEachOther) {
  Calls calls;
  calls.throws = true;
  Recorder manager;
  manager.throws = true;
  manager.Init(name("app.log"), record, &calls, false);
  console();
  manager.WriteLog("a");
  manager.WriteLog("b");
  EXPECT_EQ(manager.Poll(), 0);
  EXPECT_EQ(calls.texts.size(), 2u);
  EXPECT_EQ(manager.entries.size(), 2u);
  const std::string once =
    "LogManager:Poll:pfOnWriteLog unhandled exception\nLogManager:Poll:OnWriteLog unhandled exception\n";
  EXPECT_EQ(console(), once + once);
}

TEST_F(TLogManagerTest, DestroyLosesWhatIsQueuedAndClosesTheFile) {
  TLogManager manager;
  init(manager);
  logs::Logger::SetCachedHistorySize(100);
  manager.WriteLog("queued");
  console();
  manager.Destroy();
  EXPECT_TRUE(std::regex_match(
    console(), std::regex(".{24}: app \\| Info: : logman: calling Poll\\(\\) for the last time\\.\n" + name("app") +
                          " closed\\.\n")));
  EXPECT_EQ(read(dated("app")).find("queued"), std::string::npos);
  EXPECT_EQ(manager.WriteLog("after"), -1);
  EXPECT_EQ(manager.Poll(), -1);
  manager.Destroy();
  EXPECT_EQ(console(), "");
}

TEST_F(TLogManagerTest, CloseOfAClosedFileSaysNothing) {
  TLogManager manager;
  init(manager);
  console();
  manager.Close();
  EXPECT_EQ(console(), name("app") + " closed.\n");
  manager.Close();
  EXPECT_EQ(console(), "");
}

TEST_F(TLogManagerTest, ASecondInitWritesToTheNewFile) {
  TLogManager manager;
  manager.Init(name("one.log"), nullptr, nullptr, false);
  manager.Init(name("two.log"), nullptr, nullptr, false);
  manager.WriteLog("where");
  manager.Poll();
  manager.Destroy();
  EXPECT_EQ(read(dated("one")).find("where"), std::string::npos);
  EXPECT_NE(read(dated("two")).find("where"), std::string::npos);
}

TEST_F(TLogManagerTest, LogmanHasNobodyBeforeInit) {
  EXPECT_EQ(logman::WriteLog("x"), -1);
  EXPECT_EQ(logman::WriteLog(1, std::string("x")), -1);
  EXPECT_EQ(logman::WriteLog(1, 0, std::string("x")), -1);
  EXPECT_EQ(logman::WriteLog(1, 0, "%d", 1), -1);
  EXPECT_EQ(logman::WriteColoredLog(1, 1, 0, "%d", 1), -1);
  EXPECT_EQ(logman::Poll(), -1);
  EXPECT_EQ(logman::GetLastLog(), "");
}

TEST_F(TLogManagerTest, LogmanGoesToTheFirstManagerThatRanInit) {
  Recorder first, second;
  first.Init(name("first.log"), nullptr, nullptr, false);
  second.Init(name("second.log"), nullptr, nullptr, false);
  EXPECT_EQ(logman::WriteLog("one"), 0);
  EXPECT_EQ(logman::WriteLog(3, std::string("two")), 0);
  EXPECT_EQ(logman::WriteLog(4, 5, std::string("three")), 0);
  EXPECT_EQ(logman::WriteLog(5, 6, "%d", 4), 0);
  EXPECT_EQ(logman::WriteColoredLog(9, 7, 8, "%d", 5), 0);
  EXPECT_EQ(logman::GetLastLog(), "5");
  EXPECT_EQ(logman::Poll(), 0);
  ASSERT_EQ(first.entries.size(), 5u);
  EXPECT_EQ(first.entries[2].GameId, 5u);
  EXPECT_EQ(first.entries[4].Color, 9);
  EXPECT_EQ(first.entries[4].Message.substr(24), ": CRITICAL: 5");
  EXPECT_TRUE(second.entries.empty());
  EXPECT_EQ(logman::WriteLog(0, 0, static_cast<const char*>(nullptr)), -1);

  second.Destroy();  // not the default one
  EXPECT_EQ(logman::WriteLog("still"), 0);
  first.Destroy();
  EXPECT_EQ(logman::WriteLog("x"), -1);
}

TEST_F(TLogManagerTest, AManagerThatDiesWithoutDestroyLeavesLogmanAlone) {
  {
    TLogManager manager;
    init(manager);
    EXPECT_EQ(logman::WriteLog("x"), 0);
  }
  EXPECT_EQ(logman::WriteLog("x"), -1);
}

TEST_F(TLogManagerTest, ThreadsWriteWhileTheMainLoopPolls) {
  constexpr int NumThreads = 4, NumLines = 250;
  Recorder manager;
  init(manager);
  std::vector<std::thread> threads;
  for (int t = 0; t < NumThreads; ++t)
    threads.emplace_back([&, t] {
      for (int i = 0; i < NumLines; ++i) {
        if (i % 2)
          manager.WriteLog(3, 0, "thread %d line %d", t, i);
        else
          logman::WriteLog(3, 0, "thread %d line %d", t, i);
        manager.GetLastLog();
        manager.SetOutputToConsole(false);
      }
    });
  while (manager.entries.size() < NumThreads * NumLines) manager.Poll();
  for (auto& thread : threads) thread.join();
  std::vector<int> next(NumThreads, 0);
  for (const auto& entry : manager.entries) {
    int t = -1, i = -1;
    ASSERT_EQ(std::sscanf(entry.Message.c_str() + 24, ": INFO: thread %d line %d", &t, &i), 2) << entry.Message;
    EXPECT_EQ(i, next.at(t)++);  // each thread's lines in its own order
  }
  manager.Destroy();
  const std::string text = read(dated("app"));
  EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 3 + NumThreads * NumLines);
}

}  // namespace
