// The program as a service: what the manager that has started it is told, and when no more.
#include <sys/ptrace.h>
#include <sys/wait.h>
#include <csignal>
#include <filesystem>

#include "tests/support/NotifySocket.h"
#include "tests/system/SystemHarness.h"

namespace systest {
namespace {

constexpr const char* kWatchdog = "1000000";  // microseconds; it is fed every half second

class Service : public SystemTest {
 protected:
  void startWatched() {
    startProgram(mSimulator.address(), Renderer::Software,
                 {{"NOTIFY_SOCKET", mManager.path()}, {"WATCHDOG_USEC", kWatchdog}});
  }
  // Everything that has come so far.
  const std::vector<std::string>& messages() {
    for (const std::string& message : mManager.take()) mMessages.push_back(message);
    return mMessages;
  }
  long count(const std::string& message) { return std::count(messages().begin(), messages().end(), message); }
  bool told(const std::string& beginning) {
    const auto begins = [&](const std::string& message) { return message.starts_with(beginning); };
    return std::any_of(messages().begin(), messages().end(), begins);
  }
  bool fed(long times) {
    const long before = count("WATCHDOG=1");
    return within(30000, [&] { return count("WATCHDOG=1") >= before + times; });
  }
  // The thread of the program with this name; 0 without one.
  pid_t thread(const std::string& name) const {
    std::error_code error;
    for (const auto& task :
         std::filesystem::directory_iterator("/proc/" + std::to_string(mProgram.pid()) + "/task", error))
      if (contentOf(task.path().string() + "/comm") == name + "\n")
        return std::stoi(task.path().filename().string());
    return 0;
  }
  // One thread stands still while the others go on, until it is let go.
  static bool stop(pid_t thread) {
    if (ptrace(PTRACE_ATTACH, thread, nullptr, nullptr) != 0) return false;
    return waitpid(thread, nullptr, __WALL) == thread;
  }
  static void letGo(pid_t thread) { ptrace(PTRACE_DETACH, thread, nullptr, nullptr); }

  void starvesWhileStopped(pid_t thread) {
    ASSERT_TRUE(fed(2));
    ASSERT_TRUE(stop(thread));
    // What was on its way when the thread stopped: one sign at the most.
    std::this_thread::sleep_for(std::chrono::milliseconds(bound(1500)));
    const long then = count("WATCHDOG=1");
    std::this_thread::sleep_for(std::chrono::milliseconds(bound(4000)));
    EXPECT_EQ(count("WATCHDOG=1"), then);
    letGo(thread);
    EXPECT_TRUE(fed(2));
  }

 private:
  NotifySocket mManager;
  std::vector<std::string> mMessages;
};

TEST_F(Service, IsReadyWithThePictureThenFedThenStopping) {
  startSimulator();
  startWatched();
  ASSERT_TRUE(within(20000, [this] { return told("READY=1"); }));
  EXPECT_TRUE(loaderShown() || panelShown()) << "nothing has been presented";
  ASSERT_TRUE(
    within(20000, [this] { return told("STATUS=Panel jackpots, registered as 1, last good answer at "); }));
  ASSERT_TRUE(fed(3));
  mProgram.signal(SIGTERM);
  EXPECT_TRUE(exitsWith(10000, SIGTERM));
  EXPECT_EQ(messages().back(), "STOPPING=1");
  EXPECT_EQ(count("STOPPING=1"), 1);
  EXPECT_EQ(count("READY=1"), 1);
  const auto ready = std::find(messages().begin(), messages().end(), "READY=1");
  EXPECT_EQ(std::count(messages().begin(), ready, "WATCHDOG=1"), 0) << "fed before it was ready";
}

TEST_F(Service, EscapeIsAnEndThatIsTold) {
  startUntilPanel(Renderer::Software, 5);
  if (HasFatalFailure()) return;
  mProgram.kill();
  startWatched();
  ASSERT_TRUE(within(20000, [this] { return told("STATUS=Panel jackpots"); }));
  ASSERT_TRUE(mX.typeKey("Escape"));
  EXPECT_TRUE(exitsWith(10000, 0));
  EXPECT_EQ(messages().back(), "STOPPING=1");
}

TEST_F(Service, StoppedDrawThreadIsFedNoMore) {
  startSimulator();
  startWatched();
  ASSERT_TRUE(within(20000, [this] { return told("STATUS=Panel jackpots"); }));
  ASSERT_NE(thread("draw"), 0);
  starvesWhileStopped(thread("draw"));
}

TEST_F(Service, StoppedMainThreadIsFedNoMore) {
  startSimulator();
  startWatched();
  ASSERT_TRUE(within(20000, [this] { return told("STATUS=Panel jackpots"); }));
  starvesWhileStopped(mProgram.pid());
}

TEST_F(Service, DeadPlatformIsNoReasonForARestart) {
  startRefusing();
  if (HasFatalFailure()) return;
  startWatched();
  ASSERT_TRUE(within(20000, [this] { return told("STATUS=Panel loader, not registered, no answer yet"); }));
  EXPECT_TRUE(fed(10));
  EXPECT_TRUE(mProgram.running());
}

TEST_F(Service, PlatformThatGoesLeavesTheProgramFed) {
  startSimulator();
  startWatched();
  ASSERT_TRUE(within(20000, [this] { return told("STATUS=Panel jackpots, registered as 1"); }));
  mSimulator.process().kill();
  ASSERT_TRUE(within(30000, [this] {
    return told("STATUS=Panel jackpots, registered as 1, service silent, last good answer at ");
  }));
  EXPECT_TRUE(fed(10));
  EXPECT_TRUE(mProgram.running());
}

TEST_F(Service, StoppedRenderingIsNoReasonForARestart) {
  startSimulator();
  startWatched();
  ASSERT_TRUE(within(20000, [this] { return told("STATUS=Panel jackpots"); }));
  mSimulator.apply({{"do", "game"}, {"event", "loaded"}, {"ID", 9}, {"Name", "R"}, {"Type", 3}});
  ASSERT_TRUE(within(20000, [this] { return told("STATUS=Panel stopped, registered as 1"); }));
  EXPECT_TRUE(fed(4));
}

}  // namespace
}  // namespace systest
