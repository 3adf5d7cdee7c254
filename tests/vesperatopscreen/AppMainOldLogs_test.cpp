// Old files of the log that cannot be deleted end the program: at its start, and at midnight.
#include <gtest/gtest.h>
#include <filesystem>
#include <fstream>

#include "tests/support/FakeClock.h"
#include "tests/support/ScratchFolder.h"
#include "tests/support/WithoutRight.h"
#include "tests/vesperatopscreen/ToldProgram.h"

namespace {

namespace fs = std::filesystem;

// A folder with as many old files as stay, in which nothing can be made or deleted once it is locked.
class OldLogs : public testing::Test {
 protected:
  OldLogs() { makeOld(39); }
  ~OldLogs() override { fs::permissions(mFolder.path(), fs::perms::owner_all); }
  void makeOld(int count) {
    for (int i = 0; i < count; ++i) std::ofstream(mFolder + "top_old" + std::to_string(i) + ".log") << "old\n";
  }
  void lock() { fs::permissions(mFolder.path(), fs::perms::owner_read | fs::perms::owner_exec); }
  std::string name() const { return mFolder + "top.log"; }
  int files() const {
    return static_cast<int>(std::distance(fs::directory_iterator(mFolder.path()), fs::directory_iterator()));
  }

  const ScratchFolder mFolder{"oldlogs"};
  const WithoutRight mRights{CAP_DAC_OVERRIDE};
};

TEST_F(OldLogs, ThatCannotBeDeletedEndTheStartWith252) {
  makeOld(40);
  lock();
  const auto child = program([this](TestApplication& app) {
    app.onInit = [&app, this, init = app.onInit] {
      app.TLogManager::Init(name(), nullptr, nullptr, true);
      return init();
    };
    app.onRunOnce = [] { return 1; };
  });
  EXPECT_EQ(child->end(), "exit 252");
  EXPECT_TRUE(tells(child->output(), {"Unhadled exception occoured while loading application"}));
  EXPECT_EQ(occurrences("[startup]", child->output()), 0);
  EXPECT_EQ(files(), 40);
}

// One of the forty has to go for the file of the new day. A frame takes twelve seconds, and with the fifth pass the
// day changes.
TEST_F(OldLogs, ThatCannotBeDeletedEndAMidnightWith250) {
  const auto child = program([this](TestApplication& app) {
    static FakeClock clock(1000);
    const auto setZone = [](const char* zone) {
      setenv("TZ", zone, 1);
      tzset();
    };
    app.onInit = [&app, this, setZone, init = app.onInit] {
      setZone("EARLY12");
      app.TLogManager::Init(name(), nullptr, nullptr, true);
      return init();
    };
    app.onRunOnce = [&app, this, setZone, passes = 0]() mutable {
      if (app.status() != TApplication::APP_RUNNING) return 0;
      app.WriteLog(1, 0, "pass %d", ++passes);
      if (passes == 5) {
        lock();
        setZone("LATE-14");
        say("midnight with files", files());
      }
      return passes == 20 ? 1 : 0;
    };
    app.onDrawOnce = [&app] {
      clock.advance(app.status() == TApplication::APP_RUNNING ? 12000 : 20);
      SDL_Delay(1);
      return 0;
    };
  });
  EXPECT_EQ(child->end(), "exit 250");
  EXPECT_TRUE(tells(child->output(), {"1|pass 5", "midnight with files 40", "Unhadled exception occoured"}));
  EXPECT_EQ(occurrences("1|pass 7\n", child->output()), 0);
  EXPECT_EQ(occurrences("APP EXITED", child->output()), 0);
  EXPECT_EQ(files(), 40);
}

}  // namespace
