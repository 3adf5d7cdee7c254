// A log file that takes no more: the disk is full, or the medium is gone.
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <algorithm>
#include <csignal>

#include "tests/vendelo-sdl2/TLogManagerFixture.h"

namespace {

const char* const Lost = ".{24}: WARN: The log file could not be written, lines lost: ";

class LostLogTest : public TLogManagerTest {
 protected:
  // From now on the day's file is a disk without room, until repair().
  void fill() {
    fs::remove(dated("app"));
    fs::create_symlink("/dev/full", dated("app"));
  }
  void repair() { fs::remove(dated("app")); }

  void write(TLogManager& manager, int from, int to) {
    for (int i = from; i <= to; ++i) manager.WriteLog(0, 0, "line %d", i);
  }
  // What is written reaches the system, or is seen not to.
  void flush(TLogManager& manager) {
    clock.advance(101);
    manager.Poll();
  }
  static bool matches(const std::string& text, const std::string& pattern) {
    return std::regex_match(text, std::regex(pattern));
  }
  std::string unwritable() const { return "Can't write log file " + dated("app").string() + "\n"; }
};

TEST_F(LostLogTest, AFullDiskIsToldAndTheFileBeginsAnewWithTheNumberOfLostLines) {
  fill();
  TLogManager manager;
  init(manager);
  write(manager, 1, 3);
  console();
  flush(manager);
  EXPECT_TRUE(matches(console(), ".{24}: app \\| Error: : " + unwritable()));

  repair();
  write(manager, 4, 5);
  manager.Poll();
  EXPECT_TRUE(matches(console(),
                      "logman\\(logfile error\\): .{24}: line 4\n\nlogman\\(logfile error\\): .{24}: line "
                      "5\n\n"));
  flush(manager);
  EXPECT_FALSE(fs::exists(dated("app")));
  clock.advance(1000);
  manager.Poll();
  write(manager, 6, 6);
  flush(manager);
  manager.Destroy();
  EXPECT_TRUE(matches(read(dated("app")), std::string(Lost) + "5\n.{24}: line 6\n")) << read(dated("app"));
}

TEST_F(LostLogTest, ANewBeginningKnowsNothingOfWhatWasLostBefore) {
  fill();
  TLogManager manager;
  init(manager);
  write(manager, 1, 3);
  flush(manager);
  manager.Destroy();
  init(manager);  // still full
  write(manager, 4, 4);
  flush(manager);
  repair();
  clock.advance(1001);
  manager.Poll();
  EXPECT_TRUE(matches(read(dated("app")), std::string(Lost) + "1\n")) << read(dated("app"));

  manager.Destroy();
  repair();
  fill();
  init(manager);
  write(manager, 5, 5);
  flush(manager);
  manager.Destroy();
  repair();
  init(manager);
  EXPECT_EQ(read(dated("app")), "== APP CREATED THIS FILE ==\n");
  write(manager, 6, 6);
  flush(manager);
  EXPECT_TRUE(matches(read(dated("app")), "== APP CREATED THIS FILE ==\n\n\n.{24}: line 6\n"));
}

TEST_F(LostLogTest, AFailedFileIsTriedAgainOnceASecond) {
  fill();
  TLogManager manager;
  init(manager);
  write(manager, 1, 1);
  flush(manager);
  repair();
  clock.advance(1000);
  manager.Poll();
  EXPECT_FALSE(fs::exists(dated("app")));
  fill();
  clock.advance(1);
  manager.Poll();  // still full
  repair();
  clock.advance(1000);
  manager.Poll();
  EXPECT_FALSE(fs::exists(dated("app")));
  clock.advance(1);
  manager.Poll();
  EXPECT_TRUE(matches(read(dated("app")), std::string(Lost) + "1\n"));  // at once, without a flush
}

TEST_F(LostLogTest, LinesAreCountedThroughAllAttemptsAndTheFailureIsToldOnce) {
  fill();
  TLogManager manager;
  init(manager);
  console();
  for (int i = 1; i <= 5; ++i) {
    write(manager, i, i);
    clock.advance(1001);
    manager.Poll();
  }
  const std::string out = console();
  EXPECT_EQ(out.find(unwritable()), out.rfind(unwritable()));
  EXPECT_NE(out.find(unwritable()), std::string::npos);
  repair();
  clock.advance(1001);
  manager.Poll();
  EXPECT_TRUE(matches(read(dated("app")), std::string(Lost) + "5\n"));
}

TEST_F(LostLogTest, ASecondFailureIsToldAndCountedAnew) {
  fill();
  TLogManager manager;
  init(manager);
  write(manager, 1, 4);
  flush(manager);
  repair();
  clock.advance(1001);
  manager.Poll();
  manager.Close();
  fill();
  manager.Open();
  console();
  write(manager, 5, 6);
  flush(manager);
  EXPECT_NE(console().find(unwritable()), std::string::npos);
  repair();
  clock.advance(1001);
  manager.Poll();
  EXPECT_TRUE(matches(read(dated("app")), std::string(Lost) + "2\n"));
  EXPECT_EQ(manager.LostLines(), 6u) << "of the whole run";
}

TEST_F(LostLogTest, AFileThatCannotBeOpenedLosesEveryLine) {
  std::ofstream(folder / "file") << "no folder";
  TLogManager manager;
  manager.Init((folder / "file" / "app.log").string(), nullptr, nullptr, false);
  write(manager, 1, 3);
  EXPECT_EQ(manager.LostLines(), 0u) << "they are not tried yet";
  flush(manager);
  EXPECT_EQ(manager.LostLines(), 3u);
}

TEST_F(LostLogTest, AMediumThatComesBackLaterIsFoundAgain) {
  const fs::path medium = folder / "medium";
  fs::create_directory(medium);
  fs::create_symlink("/dev/full", medium / dated("app").filename());
  TLogManager manager;
  manager.Init((medium / "app.log").string(), nullptr, nullptr, false);
  write(manager, 1, 2);
  flush(manager);
  fs::remove_all(medium);
  for (int i = 3; i <= 5; ++i) {
    write(manager, i, i);
    clock.advance(1001);
    manager.Poll();
  }
  EXPECT_FALSE(fs::exists(medium));
  fs::create_directory(medium);
  clock.advance(1001);
  manager.Poll();
  EXPECT_TRUE(matches(read(medium / dated("app").filename()), std::string(Lost) + "5\n"));
}

TEST_F(LostLogTest, WhereNoLineIsLostNoneIsReported) {
  fill();
  TLogManager manager;
  init(manager);
  flush(manager);  // only the empty lines of the start
  repair();
  clock.advance(1001);
  manager.Poll();
  write(manager, 1, 1);
  flush(manager);
  EXPECT_TRUE(matches(read(dated("app")), "\n\n.{24}: line 1\n"));
}

TEST_F(LostLogTest, AFlushOutOfTurnNoticesItToo) {
  fill();
  TLogManager manager;
  init(manager);
  write(manager, 1, 2);
  manager.Poll();
  console();
  manager.FlushFile();
  EXPECT_NE(console().find(unwritable()), std::string::npos);
  manager.FlushFile();
  EXPECT_EQ(console(), "");
  manager.Close();
  EXPECT_EQ(console(), "");  // it is closed already
}

TEST_F(LostLogTest, TheNextDaysFileSaysWhatTheLastDaysHasLost) {
  setenv("TZ", "EARLY12", 1);  // 26 hours apart, so that the date differs at any time of the day
  tzset();
  fill();
  TLogManager manager;
  init(manager);
  write(manager, 1, 2);
  manager.Poll();
  setenv("TZ", "LATE-14", 1);
  tzset();
  write(manager, 3, 3);
  console();
  clock.advance(10001);
  manager.Poll();  // the lines of yesterday are seen to be lost as its file is closed
  EXPECT_EQ(console().find("closed."), std::string::npos);
  manager.Destroy();
  EXPECT_TRUE(
    matches(read(dated("app")), "== APP CREATED THIS FILE ==\n\n\n" + std::string(Lost) + "2\n.{24}: line 3\n"))
    << read(dated("app"));
}

TEST_F(LostLogTest, TheNoticeOfANewDateIsNoLine) {
  setenv("TZ", "EARLY12", 1);
  tzset();
  fill();
  TLogManager manager;
  init(manager);
  write(manager, 1, 2);
  flush(manager);
  setenv("TZ", "LATE-14", 1);
  tzset();
  write(manager, 3, 3);
  clock.advance(10001);
  manager.Poll();
  manager.Destroy();
  EXPECT_TRUE(
    matches(read(dated("app")), "== APP CREATED THIS FILE ==\n\n\n" + std::string(Lost) + "2\n.{24}: line 3\n"))
    << read(dated("app"));
}

TEST_F(LostLogTest, AnEndOnAFullDiskIsAnEnd) {
  fill();
  TLogManager manager;
  init(manager);
  write(manager, 1, 2);
  manager.Poll();
  console();
  manager.Destroy();
  const std::string out = console();
  EXPECT_NE(out.find(unwritable()), std::string::npos);
  EXPECT_EQ(out.find("closed."), std::string::npos);
}

TEST_F(LostLogTest, ANewInitStartsWithNothingLost) {
  fill();
  TLogManager manager;
  init(manager);
  write(manager, 1, 2);
  flush(manager);
  repair();
  manager.Destroy();
  init(manager);
  manager.Destroy();
  EXPECT_EQ(read(dated("app")), "== APP CREATED THIS FILE ==\n\n\n");
}

// A limit for the length of any file that this process writes, for as long as the object lives.
class FileLimit {
 public:
  explicit FileLimit(rlim_t bytes) : mOldHandler(std::signal(SIGXFSZ, SIG_IGN)) {
    getrlimit(RLIMIT_FSIZE, &mOld);
    rlimit limit = mOld;
    limit.rlim_cur = bytes;
    EXPECT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);
  }
  ~FileLimit() {
    EXPECT_EQ(setrlimit(RLIMIT_FSIZE, &mOld), 0);
    std::signal(SIGXFSZ, mOldHandler);
  }

 private:
  rlimit mOld{};
  void (*mOldHandler)(int);
};

TEST_F(LostLogTest, OneByteOfALineIsEndedToo) {
  TLogManager manager;
  init(manager);
  flush(manager);
  {
    const FileLimit full(31);  // 30 are there
    write(manager, 1, 1);
    flush(manager);
  }
  clock.advance(1001);
  manager.Poll();
  EXPECT_TRUE(matches(read(dated("app")), "== APP CREATED THIS FILE ==\n\n\n.\n" + std::string(Lost) + "1\n"))
    << read(dated("app"));
}

// A line has 36 bytes here, and 30 stand before the first. Whatever the length at which the disk is full, each line
// is either in the file, whole and once, or counted.
TEST_F(LostLogTest, EveryLineIsInTheFileOrCounted) {
  for (const rlim_t limit : {30, 31, 60, 137, 138, 139, 1000, 8191, 8192, 8193, 9999, 20000}) {
    fs::remove(dated("app"));
    Recorder manager;
    init(manager);
    {
      const FileLimit full(limit);
      for (int i = 0; i < 1000; ++i) manager.WriteLog(0, 0, "line %04d", i);
      flush(manager);
      manager.Poll();
    }
    clock.advance(1001);
    manager.Poll();
    manager.WriteLog("the end");
    manager.Poll();
    manager.Destroy();
    EXPECT_EQ(manager.entries.size(), 1001u);
    const std::string text = read(dated("app"));
    EXPECT_LE(text.find("could not be written"), limit + 60);
    std::istringstream file(text);
    int whole = 0, lost = -1, cut = 0;
    for (std::string line; std::getline(file, line);) {
      if (line.size() > 26 && line.find(": line ") == 24 && line.size() == 24 + 11) {
        EXPECT_EQ(line.substr(24, 11),
                  ": line " + std::string(4 - std::to_string(whole).size(), '0') + std::to_string(whole));
        ++whole;
      } else if (line.find("could not be written, lines lost: ") != std::string::npos) {
        ASSERT_EQ(
          std::sscanf(line.c_str() + 24, ": WARN: The log file could not be written, lines lost: %d", &lost), 1)
          << line;
      } else if (!line.empty() && line != "== APP CREATED THIS FILE ==" && line.find(": the end") != 24) {
        ++cut;
      }
    }
    EXPECT_EQ(whole + lost, 1000) << limit;
    EXPECT_EQ(manager.LostLines(), static_cast<unsigned long>(lost)) << limit;
    EXPECT_GT(lost, 0) << limit;
    EXPECT_LE(cut, 1) << limit;
    EXPECT_TRUE(text.ends_with(": the end\n")) << limit;
  }
}

}  // namespace
