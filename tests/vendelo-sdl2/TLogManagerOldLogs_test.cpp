// The old files of the log: which of them go, and what becomes of a start and of a midnight when they do not.
#include <gtest/gtest.h>

#include <chrono>

#include "tests/support/WithoutRight.h"
#include "tests/vendelo-sdl2/TLogManagerFixture.h"

namespace {

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

TEST_F(OldLogsTest, TheNameMustStandAtTheBeginning) {
  for (int i = 0; i < 45; ++i) {
    makeOld("my" + old(i), 24 + i);
    makeOld(old(i).substr(1), 24 + i);
    makeOld("App" + std::to_string(i) + ".log", 24 + i);
  }
  TLogManager manager;
  init(manager);
  for (int i = 0; i < 45; ++i) {
    EXPECT_TRUE(fs::exists(folder / ("my" + old(i)))) << i;
    EXPECT_TRUE(fs::exists(folder / old(i).substr(1))) << i;
    EXPECT_TRUE(fs::exists(folder / ("App" + std::to_string(i) + ".log"))) << i;
  }
}

TEST_F(OldLogsTest, AnyNameThatBeginsLikeTheLogsCounts) {
  for (int i = 0; i < 30; ++i) {
    makeOld("app" + std::to_string(i) + ".log", 24 + 2 * i);  // of some program "app1", say
    makeOld("apple." + std::to_string(i) + ".log", 25 + 2 * i);
  }
  TLogManager manager;
  init(manager);
  for (int i = 0; i < 30; ++i) {
    EXPECT_EQ(fs::exists(folder / ("app" + std::to_string(i) + ".log")), 2 * i < 39) << i;
    EXPECT_EQ(fs::exists(folder / ("apple." + std::to_string(i) + ".log")), 2 * i + 1 < 39) << i;
  }
}

// Of a name with an ending of its own, its stem counts: more files than it makes itself.
TEST_F(OldLogsTest, AnotherEndingIsNoPartOfTheName) {
  for (int i = 0; i < 45; ++i) makeOld("app_of_another" + std::to_string(i) + ".log", 24 + i);
  TLogManager manager;
  manager.Init(name("app.out"), nullptr, nullptr, true);
  for (int i = 0; i < 45; ++i)
    EXPECT_EQ(fs::exists(folder / ("app_of_another" + std::to_string(i) + ".log")), i < 39) << i;
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

// Its old files are looked for where its name says, and so never found.
TEST_F(OldLogsTest, AFolderNamedLikeALogKeepsItsFiles) {
  fs::create_directory(folder / "x.log");
  fs::create_directory(folder / "x");
  for (int i = 0; i < 41; ++i) {
    makeOld("x.log/" + old(i), 24 + i);
    makeOld("x/" + old(i), 24 + i);
  }
  TLogManager manager;
  manager.Init((folder / "x.log" / "app.log").string(), nullptr, nullptr, true);
  EXPECT_EQ(manager.GetLogFileName(), (folder / "x" / dated("app").filename()).string());
  for (int i = 0; i < 41; ++i) {
    EXPECT_TRUE(fs::exists(folder / "x" / old(i))) << i;
    EXPECT_EQ(fs::exists(folder / "x.log" / old(i)), i < 39) << i;
  }
}

// ---- old files that cannot be deleted

class LockedLogsTest : public OldLogsTest {
 protected:
  void SetUp() override {
    OldLogsTest::SetUp();
    fs::create_directory(folder / "logs");
  }
  void TearDown() override {
    fs::permissions(folder / "logs", fs::perms::owner_all);
    OldLogsTest::TearDown();
  }
  void makeOldOnes(int count) {
    for (int i = 0; i < count; ++i) makeOld("logs/" + old(i), 24 + i);
  }
  // Nothing in the folder can be made or deleted, and everything looked at.
  void lockFolder() { fs::permissions(folder / "logs", fs::perms::owner_read | fs::perms::owner_exec); }
  int files() const {
    return static_cast<int>(std::distance(fs::directory_iterator(folder / "logs"), fs::directory_iterator()));
  }
  void initThere(TLogManager& manager) { manager.Init(name("logs/app.log"), nullptr, nullptr, true); }

  const WithoutRight rights{CAP_DAC_OVERRIDE};
};

TEST_F(LockedLogsTest, ThrowOutOfTheStartBeforeTodaysFileIsMade) {
  makeOldOnes(40);
  lockFolder();
  TLogManager manager;
  try {
    initThere(manager);
    ADD_FAILURE() << "nothing was thrown";
  } catch (const fs::filesystem_error& error) {
    EXPECT_EQ(error.code(), std::errc::permission_denied);
    EXPECT_EQ(error.path1(), folder / "logs" / old(39)) << "the oldest";
  }
  EXPECT_EQ(files(), 40);
  EXPECT_EQ(manager.WriteLog("nobody has started"), -1);
}

TEST_F(LockedLogsTest, AreNoneWhileNoneIsToBeDeleted) {
  makeOldOnes(39);
  lockFolder();
  TLogManager manager;
  EXPECT_NO_THROW(initThere(manager));
  EXPECT_NE(console().find("Can't open log file "), std::string::npos);
}

// The log of tomorrow is the fortieth.
TEST_F(LockedLogsTest, ThrowOutOfThePollAtADateChange) {
  setenv("TZ", "EARLY12", 1);
  tzset();
  makeOldOnes(39);
  TLogManager manager;
  initThere(manager);
  EXPECT_EQ(files(), 40) << "today's was none yet when they were counted";
  const fs::path today = manager.GetLogFileName();
  setenv("TZ", "LATE-14", 1);
  tzset();
  lockFolder();
  manager.WriteLog("lost with the poll");
  clock.advance(10001);
  EXPECT_THROW(manager.Poll(), fs::filesystem_error);
  EXPECT_EQ(files(), 40);
  EXPECT_TRUE(std::regex_match(
    read(today), std::regex("== APP CREATED THIS FILE ==\n\n\nSwitching to log with date [-0-9]{10}")))
    << read(today);
}

}  // namespace
