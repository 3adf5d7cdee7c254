// The harness itself: what it says about a process or a picture has to be true.
#include <httplib.h>
#include <sys/wait.h>
#include <unistd.h>
#include <csignal>

#include "tests/system/SystemHarness.h"

namespace systest {
namespace {

class Harness : public SystemTest {
 protected:
  bool shell(Process& process, const std::string& script) {
    Process::Setup setup;
    setup.program = "sh";
    setup.arguments = {"-c", script};
    setup.environment = {{"PATH", variable("PATH")}, {"ONE", "1"}};
    setup.output = mFolder + "/shell.txt";
    return process.start(setup);
  }
};

TEST_F(Harness, TellsExitCodeOutputAndEnvironment) {
  Process process;
  ASSERT_TRUE(shell(process, "echo $ONE; echo two >&2; env | grep -c HOME=; exit 7"));
  const auto status = process.wait(10000);
  ASSERT_TRUE(status);
  EXPECT_TRUE(WIFEXITED(*status));
  EXPECT_EQ(WEXITSTATUS(*status), 7);
  EXPECT_EQ(contentOf(mFolder + "/shell.txt"), "1\ntwo\n0\n");
  EXPECT_FALSE(process.running());
}

TEST_F(Harness, ChildMeetsSignalsAtTheirDefaultsAlthoughTheRunnerIgnoresThem) {
  const auto before = signal(SIGINT, SIG_IGN);
  Process process;
  // No shell: it has a handler of its own, and a signal that meets it on its way into the command is lost.
  Process::Setup setup;
  setup.program = "sleep";
  setup.arguments = {"600"};
  setup.output = mFolder + "/sleep.txt";
  EXPECT_TRUE(process.start(setup));
  signal(SIGINT, before);
  process.signal(SIGINT);
  const auto status = process.wait(10000);
  ASSERT_TRUE(status);
  EXPECT_TRUE(WIFSIGNALED(*status));
}

TEST_F(Harness, KillsWhatTheChildHasStartedToo) {
  Process process;
  ASSERT_TRUE(shell(process, "sleep 600 & echo $!; wait"));
  pid_t grandchild = 0;
  ASSERT_TRUE(
    within(10000, [&] { return sscanf(contentOf(mFolder + "/shell.txt").c_str(), "%d\n", &grandchild) == 1; }));
  EXPECT_EQ(::kill(grandchild, 0), 0);
  process.kill();
  const auto gone = [&] {
    const std::string stat = contentOf("/proc/" + std::to_string(grandchild) + "/stat");
    return stat.empty() || stat.find(") Z ") != std::string::npos;
  };
  EXPECT_TRUE(within(5000, gone));
}

TEST_F(Harness, ScreenStartsBlackAndWithoutTheProgramsWindow) {
  EXPECT_EQ(mX.picture().count({0, 0, 1920, 1080}, {0, 0, 0}), 1920 * 1080);
  EXPECT_EQ(mX.findWindow("TopScreen"), 0u);
  EXPECT_FALSE(loaderShown());
  EXPECT_FALSE(panelShown());
  EXPECT_EQ(shownPot(), -1);
}

TEST_F(Harness, CountsRefusedCalls) {
  startRefusing();
  ASSERT_FALSE(HasFatalFailure());
  const auto call = [this] {
    return httplib::Client("127.0.0.1", mSimulator.port())
      .Post("/KSL", "<methodCall><methodName>topscreen.init</methodName><params/></methodCall>", "text/xml");
  };
  for (int i = 0; i < 3; ++i) EXPECT_FALSE(call());
  EXPECT_EQ(mSimulator.refusals().size(), 3u);
  EXPECT_EQ(mSimulator.calls("topscreen.init"), 3);
  mSimulator.apply({{"do", "good"}});
  EXPECT_TRUE(call());
  EXPECT_EQ(mSimulator.refusals().size(), 3u);
}

TEST_F(Harness, PortOfAnEndedSimulatorCanBeTakenAgain) {
  startSimulator();
  ASSERT_FALSE(HasFatalFailure());
  const int port = mSimulator.port();
  SimulatorProcess second;
  EXPECT_FALSE(second.start(mFolder, port));
  mSimulator.process().kill();
  ASSERT_TRUE(mSimulator.start(mFolder, port));
  EXPECT_EQ(mSimulator.port(), port);
}

TEST_F(Harness, DrivesTheSimulatorAndReadsItsLog) {
  startSimulator();
  mSimulator.apply({{"do", "add"}});
  EXPECT_EQ(mSimulator.state()["state"]["JackpotData"].size(), 1u);
  EXPECT_EQ(mSimulator.latest(), 1u);
  EXPECT_EQ(mSimulator.log(0)[0]["step"]["do"], "add");
  EXPECT_EQ(mSimulator.calls("topscreen.init"), 0);
}

TEST_F(Harness, DigitsOfTheSkinAreToldApart) {
  for (int one = 0; one < 10; ++one)
    for (int other = 0; other < one; ++other)
      EXPECT_FALSE(alike(TestSkin::digit(one), TestSkin::digit(other), 16)) << one << " " << other;
}

}  // namespace
}  // namespace systest
