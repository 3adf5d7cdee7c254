// Every way in which the program ends.
#include <sys/wait.h>
#include <csignal>

#include "tests/system/ConnectionCounter.h"
#include "tests/system/SystemHarness.h"

namespace systest {
namespace {

constexpr int EXIT_BOUND = 10000;

class Exit : public SystemTest {};

INSTANTIATE_TEST_SUITE_P(All, SystemRendererTest, testing::Values(Renderer::Software, Renderer::OpenGL),
                         rendererName);

TEST_P(SystemRendererTest, ReleaseOfEscapeEndsTheProgramWith0) {
  startWithPanel(GetParam(), 5);
  if (HasFatalFailure()) return;
  ASSERT_TRUE(mX.typeKey("Escape"));
  EXPECT_TRUE(exitsWith(EXIT_BOUND, 0));
  EXPECT_NE(printed().find("========== APP EXITED SUCCESSFULLY =========="), std::string::npos);
  EXPECT_EQ(mX.findWindow("TopScreen"), 0u);
}

TEST_P(SystemRendererTest, SigtermEndsTheProgramWithItsNumber) {
  startWithPanel(GetParam(), 5);
  if (HasFatalFailure()) return;
  mProgram.signal(SIGTERM);
  EXPECT_TRUE(exitsWith(EXIT_BOUND, SIGTERM));
  EXPECT_EQ(logged("Signal 15 received. Exiting..."), 1);
}

TEST_F(Exit, ClosedWindowEndsTheProgramWith0) {
  startWithPanel(Renderer::Software, 5);
  if (HasFatalFailure()) return;
  mX.requestClose(mX.findWindow("TopScreen"));
  EXPECT_TRUE(exitsWith(EXIT_BOUND, 0));
}

class PoliteSignal : public SystemTest, public testing::WithParamInterface<int> {};

TEST_P(PoliteSignal, EndsTheRunningProgramWithItsNumber) {
  startWithPanel(Renderer::Software, 5);
  if (HasFatalFailure()) return;
  // A shell command of the program's makes it deaf for two of the four as long as it runs.
  ASSERT_TRUE(within(20000, [this] { return handles(GetParam()); }));
  mProgram.signal(GetParam());
  EXPECT_TRUE(exitsWith(EXIT_BOUND, GetParam()));
  EXPECT_EQ(logged("Signal " + std::to_string(GetParam()) + " received. Exiting..."), 1);
}

INSTANTIATE_TEST_SUITE_P(All, PoliteSignal, testing::Values(SIGHUP, SIGINT, SIGQUIT, SIGTERM),
                         [](const auto& info) { return std::string(sigabbrev_np(info.param)); });

class SignalAtAnyTime : public SystemTest, public testing::WithParamInterface<int> {};

TEST_P(SignalAtAnyTime, EndsTheLoaderWithItsNumberThoughNobodyAnswers) {
  ConnectionCounter nobody;
  startProgram("127.0.0.1:" + std::to_string(nobody.port()), Renderer::Software, {});
  ASSERT_TRUE(within(20000, [this] { return loaderShown(); }));
  ASSERT_TRUE(within(20000, [&] { return !nobody.times().empty(); }));
  mProgram.signal(GetParam());
  EXPECT_TRUE(exitsWith(EXIT_BOUND, GetParam()));
}

INSTANTIATE_TEST_SUITE_P(All, SignalAtAnyTime, testing::Values(SIGHUP, SIGTERM),
                         [](const auto& info) { return std::string(sigabbrev_np(info.param)); });

class CrashSignal : public SystemTest, public testing::WithParamInterface<int> {};

TEST_P(CrashSignal, IsRaisedAgainAfterTheBacktraceAndNothingReboots) {
  startWithPanel(Renderer::Software, 5);
  if (HasFatalFailure()) return;
  mProgram.signal(GetParam());
  const std::optional<int> status = mProgram.wait(bound(60000));
  ASSERT_TRUE(status);
  EXPECT_TRUE(WIFSIGNALED(*status));
  EXPECT_EQ(WTERMSIG(*status), GetParam());
  EXPECT_EQ(logged("================== BACKTRACE =================="), 1);
  EXPECT_EQ(logged("================ BACKTRACE END ================"), 1);
  EXPECT_EQ(logged("WILL REBOOT"), 0);
}

INSTANTIATE_TEST_SUITE_P(All, CrashSignal, testing::Values(SIGILL, SIGABRT, SIGFPE, SIGSEGV),
                         [](const auto& info) { return std::string(sigabbrev_np(info.param)); });

TEST_F(Exit, PressOfEscapeAloneDoesNotEndTheProgram) {
  startWithPanel(Renderer::Software, 5);
  if (HasFatalFailure()) return;
  Process tool;
  Process::Setup setup;
  setup.program = "xdotool";
  setup.arguments = {"keydown", "Escape"};
  setup.environment = {{"PATH", variable("PATH")}, {"DISPLAY", mX.display()}};
  setup.output = mFolder + "/xdotool.txt";
  ASSERT_TRUE(tool.start(setup));
  ASSERT_EQ(tool.wait(bound(10000)), 0);
  const int pops = mSimulator.calls("game.popEvents");
  ASSERT_TRUE(within(10000, [&] { return mSimulator.calls("game.popEvents") >= pops + 3; }));
  EXPECT_TRUE(mProgram.running());
}

TEST_F(Exit, MissingHomeDirIsAFailedStart) {
  startProgram("", Renderer::Software, {{"HOME_DIR", "-"}});
  EXPECT_TRUE(exitsWith(EXIT_BOUND, 254));
  EXPECT_NE(printed().find("========== APP EXITED WITH FAILURE =========="), std::string::npos);
}

TEST_F(Exit, MissingWorkingDirIsNone) {
  startSimulator();
  startProgram(mSimulator.address(), Renderer::Software, {{"WORKING_DIR", "-"}});
  ASSERT_TRUE(within(20000, [this] { return mSimulator.calls("game.popEvents") >= 3; }));
  EXPECT_TRUE(mProgram.running());
}

TEST_F(Exit, MissingDisplayIsAFailedStart) {
  startProgram("", Renderer::Software, {{"DISPLAY", ":54321"}, {"SDL_VIDEODRIVER", "x11"}});
  // The program waits ten seconds before it gives up, for a person to read why.
  EXPECT_TRUE(exitsWith(20000, 254));
  EXPECT_NE(printed().find("Can not init SDL: "), std::string::npos);
}

}  // namespace
}  // namespace systest
