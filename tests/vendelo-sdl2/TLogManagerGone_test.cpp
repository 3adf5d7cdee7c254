// A log file that somebody removes or moves away while it is written; and the last line of a process whose other
// threads hang.
#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "tests/vendelo-sdl2/TLogManagerFixture.h"

namespace {

const std::string Stamp = ".{24}: ";
const std::string Created = "== APP CREATED THIS FILE ==\n\n\n";
const std::string Replaces = Stamp + "WARN: The log file was removed or moved away, this one takes its place\n";

class GoneLogTest : public TLogManagerTest {
 protected:
  void flush(TLogManager& manager) {
    clock.advance(101);
    manager.Poll();
  }
  void logs(const std::string& pattern) {
    const std::string text = read(dated("app"));
    EXPECT_TRUE(std::regex_match(text, std::regex(pattern))) << text;
  }
};

TEST_F(GoneLogTest, AFileThatWasRemovedIsMadeAnewBeforeTheNextLines) {
  TLogManager manager;
  init(manager);
  manager.WriteLog("one");
  flush(manager);
  fs::remove(dated("app"));
  manager.WriteLog("two");
  manager.WriteLog("three");
  flush(manager);
  logs(Created + Replaces + Stamp + "two\n" + Stamp + "three\n");
  manager.WriteLog("four");
  flush(manager);
  logs(Created + Replaces + Stamp + "two\n" + Stamp + "three\n" + Stamp + "four\n");
}

TEST_F(GoneLogTest, AFileThatWasMovedKeepsWhatItHasAndGetsNoMore) {
  TLogManager manager;
  init(manager);
  manager.WriteLog("one");
  flush(manager);
  fs::rename(dated("app"), folder / "old");
  manager.WriteLog("two");
  flush(manager);
  logs(Created + Replaces + Stamp + "two\n");
  EXPECT_TRUE(std::regex_match(read(folder / "old"), std::regex(Created + Stamp + "one\n")))
    << read(folder / "old");
}

TEST_F(GoneLogTest, AnotherFileInItsPlaceIsGoneOnWith) {
  TLogManager manager;
  init(manager);
  flush(manager);
  fs::rename(dated("app"), folder / "old");
  std::ofstream(dated("app")) << "made by a rotation\n";
  manager.WriteLog("one");
  flush(manager);
  logs("made by a rotation\n\n\n" + Replaces + Stamp + "one\n");
}

TEST_F(GoneLogTest, ItsFolderIsMadeAnewAsWell) {
  const std::string file = name("deep/er/app.log");
  TLogManager manager;
  manager.Init(file, nullptr, nullptr, true);
  fs::remove_all(folder / "deep");
  manager.WriteLog("one");
  flush(manager);
  EXPECT_NE(read(dated("deep/er/app")).find(": one\n"), std::string::npos);
}

TEST_F(GoneLogTest, ItIsMissedWithinASecondAlsoWhenNothingIsWritten) {
  TLogManager manager;
  init(manager);
  flush(manager);
  fs::remove(dated("app"));
  clock.advance(800);
  manager.Poll();
  EXPECT_FALSE(fs::exists(dated("app")));
  clock.advance(200);
  manager.Poll();
  flush(manager);
  logs(Created + Replaces);
}

TEST_F(GoneLogTest, WhereItCannotBeMadeAnewTheLinesAreCountedAndTheFileComesAsSoonAsItCan) {
  TLogManager manager;
  init(manager);
  flush(manager);
  fs::remove(dated("app"));
  fs::create_directory(dated("app"));  // in its way
  manager.WriteLog("one");
  manager.WriteLog("two");
  console();
  flush(manager);
  EXPECT_NE(console().find("Can't open log file " + dated("app").string() + "\n"), std::string::npos);
  manager.WriteLog("three");
  manager.Poll();
  fs::remove(dated("app"));
  clock.advance(1001);
  manager.Poll();
  flush(manager);
  const std::string text = read(dated("app"));
  EXPECT_NE(text.find("WARN: The log file could not be written, lines lost: 3\n"), std::string::npos) << text;
  EXPECT_EQ(text.find(": one"), std::string::npos);
}

TEST_F(GoneLogTest, AtTheEndWhatIsBufferedReachesANewFile) {
  TLogManager manager;
  init(manager);
  flush(manager);
  fs::remove(dated("app"));
  manager.WriteLog("last");
  manager.Poll();
  manager.Destroy();
  EXPECT_NE(read(dated("app")).find(": last\n"), std::string::npos);
}

TEST_F(GoneLogTest, AFileThatStaysIsNotTouched) {
  TLogManager manager;
  init(manager);
  for (int i = 0; i < 30; ++i) {
    manager.WriteLog("line");
    flush(manager);
  }
  EXPECT_EQ(read(dated("app")).find("takes its place"), std::string::npos);
}

// ---- the last line

TEST_F(GoneLogTest, TheLastLineComesBehindWhatIsQueued) {
  TLogManager manager;
  init(manager);
  manager.WriteLog("one");
  manager.Poll();
  manager.WriteLog("two");
  manager.WriteLastLine(5, "the end");
  logs(Created + Stamp + "one\n" + Stamp + "two\n" + Stamp + "ERROR: the end\n");
}

TEST_F(GoneLogTest, TheLastLineIsOnTheConsoleWhereTheOthersAre) {
  TLogManager manager;
  init(manager);
  console();
  manager.WriteLastLine(5, "silent");
  EXPECT_EQ(console(), "");
  manager.SetOutputToConsole(true);
  manager.WriteLastLine(5, "the end");
  EXPECT_TRUE(std::regex_match(console(), std::regex(Stamp + "ERROR: the end\n")));
}

TEST_F(GoneLogTest, TheLastLineStandsAlsoBehindTheEndOfTheLog) {
  TLogManager manager;
  init(manager);
  manager.WriteLog("one");
  manager.Poll();
  manager.Destroy();
  manager.WriteLastLine(4, "the end");
  logs(Created + Stamp + "one\n" + Stamp + "WARN: the end\n");
}

TEST_F(GoneLogTest, WithoutAFileTheLastLineIsNone) {
  TLogManager manager;
  manager.WriteLastLine(5, "the end");
  EXPECT_TRUE(fs::is_empty(folder));
}

TEST_F(GoneLogTest, TheLastLineDoesNotWaitForWhoHoldsTheLog) {
  struct THolding : TLogManager {
    void OnWriteLog(const TLogEntry&, int) override {
      held = true;
      while (held) usleep(1000);
    }
    std::atomic<bool> held{false};
  } manager;
  init(manager);
  manager.WriteLog("one");
  std::thread holder([&] { manager.Poll(); });
  while (!manager.held) usleep(1000);
  manager.WriteLog("queued");
  manager.WriteLastLine(5, "the end");
  const std::string text = read(dated("app"));
  EXPECT_TRUE(std::regex_match(text, std::regex("== APP CREATED THIS FILE ==\n" + Stamp + "ERROR: the end\n")))
    << text;
  manager.held = false;
  holder.join();
}

}  // namespace
