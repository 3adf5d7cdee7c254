// A picture of the screen for somebody who is not there.
#include <sys/stat.h>
#include <csignal>
#include <filesystem>
#include <fstream>

#include "tests/system/SystemHarness.h"

namespace systest {
namespace {

INSTANTIATE_TEST_SUITE_P(All, SystemRendererTest, testing::Values(Renderer::Software, Renderer::OpenGL),
                         rendererName);

TEST_P(SystemRendererTest, PictureOnRequestIsWhatTheScreenShows) {
  startWithPanel(GetParam(), 7654321);
  if (HasFatalFailure()) return;
  const std::string file = mFolder + "/terminal/screenshot.png";
  mProgram.signal(SIGUSR1);
  ASSERT_TRUE(within(10000, [&] { return logged("Picture of the screen written to " + file) == 1; }));
  Picture taken;
  ASSERT_TRUE(taken.load(file));
  EXPECT_TRUE(taken == mX.picture());
  EXPECT_FALSE(std::filesystem::exists(file + ".part"));
  EXPECT_TRUE(mProgram.running());
  EXPECT_EQ(printed().find("Nano sleep"), std::string::npos) << "the signal has interrupted a thread";
}

class PictureOnRequest : public SystemTest {};

TEST_F(PictureOnRequest, IsServedWhileTheLoaderStands) {
  startRefusing();
  startProgram(mSimulator.address(), Renderer::Software, {});
  ASSERT_TRUE(within(20000, [this] { return loaderShown(); }));
  mProgram.signal(SIGUSR1);
  Picture taken;
  ASSERT_TRUE(within(10000, [&] { return taken.load(mFolder + "/terminal/screenshot.png"); }));
  EXPECT_TRUE(alike(taken.at(960, 180), TestSkin::kSplash));
}

TEST_F(PictureOnRequest, AtTheVeryStartEndsNothing) {
  startSimulator();
  startProgram(mSimulator.address(), Renderer::Software, {});
  ASSERT_TRUE(within(20000, [this] { return handles(SIGTERM); }));
  mProgram.signal(SIGUSR1);
  EXPECT_TRUE(within(20000, [&] { return std::filesystem::exists(mFolder + "/terminal/screenshot.png"); }));
}

TEST_F(PictureOnRequest, FolderThatIsNotThereCostsALineEachTime) {
  startSimulator();
  startProgram(mSimulator.address(), Renderer::Software, {{"HOME_DIR", mFolder + "/nowhere"}});
  ASSERT_TRUE(within(20000, [this] { return alike(mX.pixel(5, 1075), TestSkin::kBackground); }));
  const std::string line = "ERROR: Picture of the screen could not be written: " + mFolder +
                           "/nowhere/screenshot.png.part: No such file or directory";
  for (int times = 1; times <= 2; ++times) {
    mProgram.signal(SIGUSR1);
    ASSERT_TRUE(within(10000, [&] { return logged(line) == times; }));
  }
  EXPECT_TRUE(asksForEvents(3));
}

}  // namespace
}  // namespace systest
