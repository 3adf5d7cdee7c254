#include "vendelo-sdl2/TServiceNotice.h"

#include <gtest/gtest.h>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/FakeClock.h"
#include "tests/support/NotifySocket.h"
#include "tests/support/TestApplication.h"

using namespace vendelo_sdl2;

namespace {

using Messages = std::vector<std::string>;

class ServiceNotice : public testing::Test {
 protected:
  // A manager that waits so long for a sign; null: it does not watch.
  void listen(const char* watchdogMicroseconds) {
    set("NOTIFY_SOCKET", socket.path().c_str());
    set("WATCHDOG_USEC", watchdogMicroseconds);
    set("WATCHDOG_PID", nullptr);
    notice = std::make_unique<TServiceNotice>();
  }
  void set(const char* name, const char* value) {
    environment[name].reset();  // which puts back what was there before
    environment[name] = std::make_unique<ScopedEnvironment>(name, value);
  }
  // Passes of the main loop, a millisecond apart, up to this tick; with `drawing` a frame in every one.
  void passUntil(Uint32 tick, bool drawing) {
    while (clock.now() < tick) {
      clock.advance(1);
      if (drawing) ++frames;
      notice->passDone(frames, frames);
      collect();
    }
  }
  // What the manager has been told since the last call. It reads all the time: one that does not holds up who
  // tells.
  Messages take() {
    collect();
    return std::exchange(told, {});
  }

  void collect() {
    for (std::string& message : socket.take()) told.push_back(std::move(message));
  }

  NotifySocket socket;
  Messages told;
  FakeClock clock{1000};
  std::map<std::string, std::unique_ptr<ScopedEnvironment>> environment;
  std::unique_ptr<TServiceNotice> notice;
  unsigned long frames = 0;
};

TEST_F(ServiceNotice, IsReadyOnceWithTheFirstPresentedPicture) {
  listen(nullptr);
  notice->passDone(0, 0);
  notice->passDone(7, 0);  // frames that nobody has seen
  EXPECT_EQ(take(), Messages{});
  notice->passDone(8, 1);
  EXPECT_EQ(take(), Messages{"READY=1"});
  notice->passDone(9, 2);
  clock.advance(600000);
  notice->passDone(10, 3);
  EXPECT_EQ(take(), Messages{}) << "the manager does not watch";
}

TEST_F(ServiceNotice, WatchdogIsFedTwiceInItsTimeWhileBothThreadsGetOn) {
  listen("4000000");
  passUntil(1001, true);
  EXPECT_EQ(take(), Messages{"READY=1"});
  passUntil(3000, true);
  EXPECT_EQ(take(), Messages{});
  passUntil(3001, true);
  EXPECT_EQ(take(), Messages{"WATCHDOG=1"});
  passUntil(9001, true);
  EXPECT_EQ(take(), (Messages{"WATCHDOG=1", "WATCHDOG=1", "WATCHDOG=1"}));
}

TEST_F(ServiceNotice, WatchdogStarvesWhileNoFrameIsFinishedAndIsFedWithTheNextOne) {
  listen("4000000");
  passUntil(1001, true);
  take();
  passUntil(60000, false);
  EXPECT_EQ(take(), Messages{});
  passUntil(60001, true);
  EXPECT_EQ(take(), Messages{"WATCHDOG=1"});
  passUntil(62000, true);
  EXPECT_EQ(take(), Messages{}) << "the time counts from the last one";
  passUntil(62001, true);
  EXPECT_EQ(take(), Messages{"WATCHDOG=1"});
}

TEST_F(ServiceNotice, FramesOfLongAgoDoNotFeedTheWatchdogTwice) {
  listen("4000000");
  passUntil(1001, true);
  passUntil(1500, true);  // and then no more
  take();
  passUntil(60000, false);
  EXPECT_EQ(take(), Messages{"WATCHDOG=1"});
}

TEST_F(ServiceNotice, WatchdogIsNotFedBeforeThereIsAPicture) {
  listen("4000000");
  for (int pass = 0; pass < 100; ++pass) {
    clock.advance(1000);
    notice->passDone(++frames, 0);
    collect();
  }
  EXPECT_EQ(take(), Messages{});
}

TEST_F(ServiceNotice, TickClockMayWrap) {
  listen("4000000");
  clock.set(0xffffff00);
  notice->passDone(1, 1);
  take();
  for (const Uint32 later : {100, 1999}) {  // on either side
    clock.set(0xffffff00 + later);
    notice->passDone(2, 2);
    EXPECT_EQ(take(), Messages{}) << later;
  }
  clock.set(0xffffff00 + 2000);
  notice->passDone(3, 3);
  EXPECT_EQ(take(), Messages{"WATCHDOG=1"});
}

TEST_F(ServiceNotice, WatchdogOfAnotherProcessIsNotFed) {
  listen("4000000");
  set("WATCHDOG_PID", "1");
  notice = std::make_unique<TServiceNotice>();
  passUntil(60000, true);
  EXPECT_EQ(take(), Messages{"READY=1"});
}

TEST_F(ServiceNotice, StatusIsToldWhenItChangesAndElseEveryTenSeconds) {
  listen(nullptr);
  notice->status("loader", " a");
  notice->status("loader", " b");
  EXPECT_EQ(take(), Messages{"STATUS=loader a"});
  notice->status("jackpots", " b");
  EXPECT_EQ(take(), Messages{"STATUS=jackpots b"});
  clock.advance(9999);
  notice->status("jackpots", " c");
  EXPECT_EQ(take(), Messages{});
  clock.advance(1);
  notice->status("jackpots", " d");
  EXPECT_EQ(take(), Messages{"STATUS=jackpots d"});
}

TEST_F(ServiceNotice, StoppingIsToldOnceAndNothingAfterIt) {
  listen("4000000");
  notice->passDone(1, 1);
  take();
  notice->stopping();
  notice->stopping();
  clock.advance(60000);
  notice->passDone(2, 2);
  notice->status("jackpots", "");
  EXPECT_EQ(take(), Messages{"STOPPING=1"});
}

TEST_F(ServiceNotice, NobodyIsToldAnythingWithoutASocket) {
  for (const char* none : {static_cast<const char*>(nullptr), ""}) {
    listen("4000000");
    set("NOTIFY_SOCKET", none);
    notice = std::make_unique<TServiceNotice>();
    EXPECT_FALSE(notice->wanted());
    set("NOTIFY_SOCKET", socket.path().c_str());
    passUntil(clock.now() + 10000, true);
    notice->status("loader", "");
    notice->stopping();
    EXPECT_EQ(take(), Messages{});
  }
}

TEST_F(ServiceNotice, ManagerThatIsGoneStopsNothing) {
  listen("4000000");
  set("NOTIFY_SOCKET", "/nowhere/at/all");
  passUntil(60000, true);
  notice->stopping();
}

}  // namespace
