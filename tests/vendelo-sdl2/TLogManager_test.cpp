#include "vendelo-sdl2/TLogManager.h"

#include <gtest/gtest.h>

#include <locale>
#include <stdexcept>

#include "common/Logger.h"
#include "tests/vendelo-sdl2/TLogManagerFixture.h"

namespace {

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

TEST_F(TLogManagerTest, StampFollowsTheZoneOfTheMachine) {
  Recorder manager;
  init(manager);
  for (const char* zone : {"EARLY12", "LATE-14"}) {
    setenv("TZ", zone, 1);
    tzset();
    const time_t before = std::time(nullptr);
    manager.WriteLog("here");
    const time_t after = std::time(nullptr);
    manager.Poll();
    tm parsed{};
    ASSERT_NE(strptime(manager.entries.back().Message.c_str(), "%a %b %d %H:%M:%S %Y", &parsed), nullptr);
    const time_t written = mktime(&parsed);
    EXPECT_LE(before, written) << zone;
    EXPECT_LE(written, after) << zone;
  }
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

TEST_F(TLogManagerTest, EveryInitSwitchesTheConsoleOff) {
  TLogManager manager;
  manager.SetOutputToConsole(true);
  init(manager);
  console();
  manager.WriteLog("quiet");
  EXPECT_EQ(console(), "");
  manager.SetOutputToConsole(true);
  manager.WriteLog("loud");
  EXPECT_NE(console(), "");
  init(manager);
  console();
  manager.WriteLog("quiet again");
  EXPECT_EQ(console(), "");
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

TEST_F(TLogManagerTest, TheUsersLocaleGroupsNoDigitsInALine) {
  Recorder manager;
  init(manager);
  MyUtils::UpdateLocale("C");
  ASSERT_EQ(MyUtils::int2str(65540), "65.540");
  manager.WriteLog(0x10004, 0, "value %d", 1234567);
  manager.SetOutputToConsole(true);
  console();
  manager.WriteColoredLog(static_cast<char>(200), 0, 0, "bright");
  std::locale::global(std::locale::classic());
  EXPECT_EQ(console().substr(0, 11), "\x1b[38;5;200m");
  manager.Poll();
  EXPECT_EQ(manager.entries.at(0).Message.substr(24), ": LT_USER_65540: WARN: value 1234567");
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
  EXPECT_EQ(logman::GetLastLog(), "");

  Recorder third;
  third.Init(name("third.log"), nullptr, nullptr, false);
  EXPECT_EQ(logman::WriteLog("to the next one"), 0);
  EXPECT_EQ(third.GetLastLog(), "to the next one");
}

TEST_F(TLogManagerTest, AManagerThatDiesWithoutDestroyLeavesLogmanAlone) {
  {
    TLogManager manager;
    init(manager);
    EXPECT_EQ(logman::WriteLog("x"), 0);
  }
  EXPECT_EQ(logman::WriteLog("x"), -1);
}

}  // namespace
