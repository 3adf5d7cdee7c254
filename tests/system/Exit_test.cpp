// Every way in which the program ends.
#include <sys/wait.h>
#include <csignal>
#include <fstream>

#include "tests/system/SystemHarness.h"

namespace systest {
namespace {

constexpr int kExitBound = 10000;

class Exit : public SystemTest {};

std::string signalName(int signal) { return sigabbrev_np(signal); }

INSTANTIATE_TEST_SUITE_P(All, SystemRendererTest, testing::Values(Renderer::Software, Renderer::OpenGL),
                         rendererName);

TEST_P(SystemRendererTest, EscapeEndsTheProgramWith0WhenItIsReleased) {
  startUntilPanel(GetParam(), 5);
  if (HasFatalFailure()) return;
  ASSERT_TRUE(mX.pressKey("Escape"));
  EXPECT_TRUE(asksForEvents(3));
  ASSERT_TRUE(mProgram.running());
  ASSERT_TRUE(mX.releaseKey("Escape"));
  EXPECT_TRUE(exitsWith(kExitBound, 0));
  EXPECT_NE(printed().find("========== APP EXITED SUCCESSFULLY =========="), std::string::npos);
  EXPECT_EQ(mX.findWindow("TopScreen"), 0u);
}

TEST_F(Exit, ClosedWindowEndsTheProgramWith0) {
  startUntilPanel(Renderer::Software, 5);
  if (HasFatalFailure()) return;
  mX.requestClose(mX.findWindow("TopScreen"));
  EXPECT_TRUE(exitsWith(kExitBound, 0));
}

TEST_F(Exit, SignalEndsTheProgramOnOpenGLToo) {
  startUntilPanel(Renderer::OpenGL, 5);
  if (HasFatalFailure()) return;
  mProgram.signal(SIGTERM);
  EXPECT_TRUE(exitsWith(kExitBound, SIGTERM));
  EXPECT_EQ(mX.findWindow("TopScreen"), 0u);
}

// Without a window no frame can be drawn. Nobody minds until the first data have come.
TEST_F(Exit, FrameThatCannotBeDrawnEndsTheProgramWith0) {
  startSimulator();
  startProgram(mSimulator.address(), Renderer::Software, {{"SDL_VIDEODRIVER", "dummy"}});
  EXPECT_TRUE(exitsWith(kExitBound, 0));
  EXPECT_NE(printed().find("Unable to set 1920x1080 video: "), std::string::npos);
  EXPECT_EQ(mSimulator.calls("platform.state"), 1);
}

class PoliteSignal : public SystemTest, public testing::WithParamInterface<int> {};

TEST_P(PoliteSignal, TwiceInARowEndsTheRunningProgramOnceWithItsNumber) {
  startUntilPanel(Renderer::Software, 5);
  if (HasFatalFailure()) return;
  mProgram.signal(GetParam());
  mProgram.signal(GetParam());
  EXPECT_TRUE(exitsWith(kExitBound, GetParam()));
  EXPECT_EQ(logged("Signal " + std::to_string(GetParam()) + " received. Exiting..."), 1);
}

INSTANTIATE_TEST_SUITE_P(All, PoliteSignal, testing::Values(SIGHUP, SIGINT, SIGQUIT, SIGTERM),
                         [](const auto& info) { return signalName(info.param); });

// While nobody answers.
class DuringTheStart : public SystemTest {
 protected:
  void SetUp() override {
    SystemTest::SetUp();
    if (HasFatalFailure()) return;
    startRefusing();
    if (HasFatalFailure()) return;
    startProgram(mSimulator.address(), Renderer::Software, {});
  }
};

class SignalDuringTheStart : public DuringTheStart, public testing::WithParamInterface<int> {};

TEST_P(SignalDuringTheStart, EndsItAsSoonAsTheHandlerStands) {
  ASSERT_TRUE(within(20000, [this] { return handles(GetParam()); }));
  mProgram.signal(GetParam());
  EXPECT_TRUE(exitsWith(kExitBound, GetParam()));
}

TEST_P(SignalDuringTheStart, EndsTheLoad) {
  ASSERT_TRUE(within(20000, [this] { return !log().empty(); }));
  mProgram.signal(GetParam());
  EXPECT_TRUE(exitsWith(kExitBound, GetParam()));
}

TEST_P(SignalDuringTheStart, EndsTheLoader) {
  ASSERT_TRUE(within(20000, [this] { return loaderShown(); }));
  ASSERT_TRUE(within(20000, [this] { return !mSimulator.refusals().empty(); }));
  mProgram.signal(GetParam());
  EXPECT_TRUE(exitsWith(kExitBound, GetParam()));
}

INSTANTIATE_TEST_SUITE_P(All, SignalDuringTheStart, testing::Values(SIGHUP, SIGTERM),
                         [](const auto& info) { return signalName(info.param); });

class CrashSignal : public SystemTest, public testing::WithParamInterface<int> {};

TEST_P(CrashSignal, IsRaisedAgainAfterTheBacktraceAndNothingReboots) {
  startUntilPanel(Renderer::Software, 5);
  if (HasFatalFailure()) return;
  mProgram.signal(GetParam());
  const std::optional<int> status = mProgram.wait(bound(60000));
  ASSERT_TRUE(status);
  EXPECT_TRUE(WIFSIGNALED(*status));
  EXPECT_EQ(WTERMSIG(*status), GetParam());
  EXPECT_NE(printed().find("Error: signal " + std::to_string(GetParam()) + ":"), std::string::npos);
  EXPECT_EQ(logged("================== BACKTRACE =================="), 1);
  EXPECT_GE(framesNamed(), 1);
  EXPECT_EQ(logged("================ BACKTRACE END ================"), 1);
  EXPECT_EQ(logged("WILL REBOOT"), 0);
}

INSTANTIATE_TEST_SUITE_P(All, CrashSignal, testing::Values(SIGABRT, SIGSEGV),
                         [](const auto& info) { return signalName(info.param); });

TEST_F(Exit, FrequencyOf0IsADivisionFault) {
  startProgram("", Renderer::Software, {{"CPU_FPS", "0"}});
  const std::optional<int> status = mProgram.wait(bound(60000));
  ASSERT_TRUE(status);
  EXPECT_TRUE(WIFSIGNALED(*status));
  EXPECT_EQ(WTERMSIG(*status), SIGFPE);
  EXPECT_EQ(logged("Signal 8 received. Exiting..."), 1);
  EXPECT_GE(framesNamed(), 1);
}

// The client registers without end and cannot be stopped meanwhile: the end waits for the service, but not for
// ever.
class EscapeDuringTheStart : public DuringTheStart {
 protected:
  void SetUp() override {
    DuringTheStart::SetUp();
    if (HasFatalFailure()) return;
    ASSERT_TRUE(within(20000, [this] { return loaderShown(); }));
    ASSERT_TRUE(mX.typeKey("Escape"));
    ASSERT_TRUE(within(kExitBound, [this] { return mX.findWindow("TopScreen") == 0; }));
  }
};

TEST_F(EscapeDuringTheStart, TearsDownAndEndsWith0InTenSeconds) {
  const size_t attempts = mSimulator.refusals().size();
  ASSERT_TRUE(within(kExitBound, [&] { return mSimulator.refusals().size() >= attempts + 2; }));
  EXPECT_TRUE(exitsWith(40000, 0));
  EXPECT_EQ(logged("The end has taken ten seconds, what is left of it is left out"), 1);
}

TEST_F(EscapeDuringTheStart, EndsWith0AsSoonAsSomebodyAnswers) {
  mSimulator.apply({{"do", "good"}});
  EXPECT_TRUE(exitsWith(kExitBound, 0));
  EXPECT_EQ(mSimulator.calls("game.popEvents"), 0);
}

TEST_F(Exit, MissingHomeDirIsAFailedStart) {
  startProgram("", Renderer::Software, {{"HOME_DIR", "-"}});
  EXPECT_TRUE(exitsWith(kExitBound, 254));
  EXPECT_NE(printed().find("========== APP EXITED WITH FAILURE =========="), std::string::npos);
}

TEST_F(Exit, MissingWorkingDirIsNone) {
  startSimulator();
  startProgram(mSimulator.address(), Renderer::Software, {{"WORKING_DIR", "-"}});
  EXPECT_TRUE(asksForEvents(3));
  EXPECT_TRUE(mProgram.running());
}

// The program waits ten seconds before it gives up, for a person to read why.
TEST_F(Exit, MissingDisplayIsAFailedStartThatASignalNeedNotWaitFor) {
  startProgram("", Renderer::Software, {{"DISPLAY", ":54321"}, {"SDL_VIDEODRIVER", "x11"}});
  ASSERT_TRUE(within(20000, [this] { return printed().find("Can not init SDL: ") != std::string::npos; }));
  mProgram.signal(SIGTERM);
  EXPECT_TRUE(exitsWith(kExitBound, SIGTERM));
}

TEST_F(Exit, LogFolderThatIsNoneIsAnExceptionOutOfTheStart) {
  std::ofstream(mFolder + "/file") << "no folder";
  startProgram("", Renderer::Software, {{"LOG_FILENAME", mFolder + "/file/top.log"}});
  EXPECT_TRUE(exitsWith(kExitBound, 252));
  EXPECT_NE(printed().find("Unhadled exception occoured while loading application"), std::string::npos);
}

}  // namespace
}  // namespace systest
