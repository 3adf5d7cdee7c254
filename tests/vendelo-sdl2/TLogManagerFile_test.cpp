#include <gtest/gtest.h>

#include <cstring>
#include <iterator>

#include "tests/vendelo-sdl2/TLogManagerFixture.h"

namespace {

TEST_F(TLogManagerTest, FileIsNamedByTheDateAndMarkedWhenCreated) {
  const struct {
    const char* given;
    const char* stem;
  } rows[] = {{"app.log", "app"},     {"text.txt", "text"},   {"plain", "plain"},     {"a.log.b.txt", "a.b"},
              {"x.lo.logg", "x.log"}, {"app.out", "app.out"}, {"app.LOG", "app.LOG"}, {"tail.txt.log", "tail"}};
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

TEST_F(TLogManagerTest, EachAttemptToOpenStartsTheWaitAnew) {
  const fs::path blocked = folder / "blocked", expected = blocked / dated("app").filename();
  std::ofstream(blocked) << "no folder";
  TLogManager manager;
  manager.Init((blocked / "app.log").string(), nullptr, nullptr, false);
  clock.advance(37841);
  manager.Poll();  // in vain
  fs::remove(blocked);
  fs::create_directories(blocked);
  clock.advance(37840);
  manager.Poll();
  EXPECT_FALSE(fs::exists(expected));
  clock.advance(1);
  manager.Poll();
  EXPECT_TRUE(fs::exists(expected));
  EXPECT_EQ(read(expected), "");  // nothing was lost of which the file would have to tell
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

TEST_F(TLogManagerTest, EachFlushStartsTheHundredMillisecondsAnew) {
  TLogManager manager;
  init(manager);
  clock.advance(101);
  manager.Poll();
  manager.WriteLog("delayed");
  manager.Poll();
  clock.advance(100);
  manager.Poll();
  EXPECT_EQ(read(dated("app")), "== APP CREATED THIS FILE ==\n\n\n");
  clock.advance(1);
  manager.Poll();
  EXPECT_TRUE(read(dated("app")).ends_with(": delayed\n"));
}

TEST_F(TLogManagerTest, ManyLinesReachTheFileBeforeItIsFlushed) {
  TLogManager manager;
  init(manager);
  for (int i = 0; i < 100; ++i) manager.WriteLog(0, 0, "%01000d", i);
  manager.Poll();
  EXPECT_GT(fs::file_size(dated("app")), 50000u);
}

TEST_F(TLogManagerTest, EightKilobytesAreNotKeptBack) {
  TLogManager manager;
  init(manager);
  manager.FlushFile();
  const auto sizeAfter = [&](size_t length) {  // of a line that is so long in the file
    manager.WriteLog(std::string(length - 24 - std::strlen(": \n"), 'x'));
    manager.Poll();
    return fs::file_size(dated("app"));
  };
  const auto before = fs::file_size(dated("app"));
  EXPECT_EQ(sizeAfter(8191), before);
  manager.FlushFile();
  EXPECT_EQ(fs::file_size(dated("app")), before + 8191);
  EXPECT_EQ(sizeAfter(8192), before + 8191 + 8192);
  EXPECT_EQ(sizeAfter(100), before + 8191 + 8192);
  EXPECT_EQ(sizeAfter(8092), before + 8191 + 2 * 8192) << "of several lines";
}

TEST_F(TLogManagerTest, AManagerThatDiesWithoutDestroyLeavesNoLineBehind) {
  {
    TLogManager manager;
    init(manager);
    manager.WriteLog("the last");
    manager.Poll();
  }
  EXPECT_TRUE(read(dated("app")).ends_with(": the last\n"));
}

TEST_F(TLogManagerTest, FlushFileWritesAtOnceAndNothingWithoutAFile) {
  TLogManager manager;
  manager.FlushFile();
  init(manager);
  manager.WriteLog("urgent");
  manager.Poll();
  EXPECT_EQ(read(dated("app")), "== APP CREATED THIS FILE ==\n");
  manager.FlushFile();
  EXPECT_TRUE(std::regex_match(read(dated("app")), std::regex("== APP CREATED THIS FILE ==\n\n\n.{24}: urgent\n")));
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

TEST_F(TLogManagerTest, EachLookAtTheDateStartsTheTenSecondsAnew) {
  setenv("TZ", "EARLY12", 1);
  tzset();
  TLogManager manager;
  init(manager);
  const auto first = manager.GetLogFileName();
  const auto lineAfter = [&](Uint32 milliseconds) {
    clock.advance(milliseconds);
    manager.WriteLog("line");
    manager.Poll();
    return manager.GetLogFileName();
  };
  EXPECT_EQ(lineAfter(10001), first);  // looked, and found the same day
  setenv("TZ", "LATE-14", 1);
  tzset();
  EXPECT_EQ(lineAfter(10000), first);
  EXPECT_NE(lineAfter(1), first);
}

TEST_F(TLogManagerTest, AFolderThatCannotBeListedAtADateChangeThrowsOutOfPoll) {
  const fs::path sub = folder / "sub";
  setenv("TZ", "EARLY12", 1);
  tzset();
  TLogManager manager;
  manager.Init((sub / "app.log").string(), nullptr, nullptr, true);
  setenv("TZ", "LATE-14", 1);
  tzset();
  fs::remove_all(sub);
  std::ofstream(sub) << "no folder";
  manager.WriteLog("lost with the poll");
  clock.advance(10001);
  EXPECT_THROW(manager.Poll(), fs::filesystem_error);
  fs::remove(sub);
  manager.WriteLog("too early for the date");
  console();
  manager.Poll();
  EXPECT_NE(console().find("logman(logfile error): "), std::string::npos);
  manager.WriteLog("comes through");
  clock.advance(10001);
  manager.Poll();
  manager.Destroy();
  EXPECT_TRUE(std::regex_match(read(sub / dated("app").filename()),
                               std::regex("== APP CREATED THIS FILE ==\n\n\n.{24}: comes through\n")));
}

// The extension is taken out wherever it stands, and the folder is made under its full name.
TEST_F(TLogManagerTest, AFolderNamedLikeALogIsNotWhereTheFileGoes) {
  TLogManager manager;
  manager.Init((folder / "x.logs" / "app.log").string(), nullptr, nullptr, false);
  EXPECT_EQ(manager.GetLogFileName(), (folder / "xs" / dated("app").filename()).string());
  EXPECT_TRUE(fs::is_directory(folder / "x.logs"));
  EXPECT_FALSE(fs::exists(folder / "xs"));
  EXPECT_NE(console().find("Can't open log file "), std::string::npos);
  fs::create_directory(folder / "xs");
  EXPECT_EQ(manager.Open(), 0);
  EXPECT_TRUE(fs::exists(manager.GetLogFileName()));
  EXPECT_TRUE(fs::is_empty(folder / "x.logs"));
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

}  // namespace
