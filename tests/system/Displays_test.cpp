// Where the program's window stands: on two real displays, on one, and under a window manager.
#include <unistd.h>
#include <algorithm>

#include "tests/system/SystemHarness.h"

namespace systest {

void PrintTo(const Size& size, std::ostream* out) { *out << size.width << "x" << size.height; }

bool operator==(const Box& one, const Box& other) {
  return one.x == other.x && one.y == other.y && one.width == other.width && one.height == other.height;
}
void PrintTo(const Box& box, std::ostream* out) {
  *out << box.x << "," << box.y << " " << box.width << "x" << box.height;
}

namespace {

constexpr const char* kTitle = "TopScreen";
constexpr const char* kNoSecond = "ERROR: Cannot find the second screen..moving top screen to display 0!!!";

// A window manager of the usual kind, with its own idea of every window.
bool startWindowManager(Process& process, const std::string& folder, XServer& server) {
  Process::Setup setup;
  setup.program = "openbox";
  setup.arguments = {"--sm-disable"};
  setup.environment = {{"PATH", variable("PATH")}, {"DISPLAY", server.display()}, {"HOME", folder}};
  setup.output = folder + "/openbox.txt";
  return process.start(setup) &&
         within(20000, [&] { return !server.propertyOfRoot("_NET_SUPPORTING_WM_CHECK").empty(); });
}

bool has(const std::vector<std::string>& all, const std::string& one) {
  return std::find(all.begin(), all.end(), one) != all.end();
}

class Displays : public SystemTest {
 protected:
  bool startX() override { return mX.startWithTwoDisplays(mFolder, second()); }
  virtual Size second() const = 0;
  Box secondBox() const { return {1920, 0, second().width, second().height}; }

  // The panel fills the second display to its last pixel, and the first one shows nothing of it.
  void expectThePanelOnTheSecond() {
    const Box box = secondBox();
    const auto corner = [&](int x, int y) { return mX.pixel(box.x + x, box.y + y); };
    ASSERT_TRUE(
      within(20000, [&] { return alike(corner(5 * box.width / 1920, box.height - 3), TestSkin::kBackground); }));
    EXPECT_TRUE(
      within(5000, [&] { return alike(corner(box.width / 2, 100 * box.height / 1080), TestSkin::kTitle); }));
    EXPECT_TRUE(alike(corner(0, box.height - 1), TestSkin::kBackground));
    EXPECT_TRUE(alike(corner(box.width - 1, box.height - 1), TestSkin::kBackground));
    EXPECT_TRUE(alike(corner(box.width - 1, 0), TestSkin::kBackground));
    EXPECT_EQ(mX.picture({0, 0, 1920, 1080}).count({0, 0, 1920, 1080}, {0, 0, 0}), 1920 * 1080);
  }

  void startOnTheSecond(Renderer renderer, const std::map<std::string, std::string>& environment) {
    startSimulator();
    if (HasFatalFailure()) return;
    mSimulator.apply({{"do", "add"}});
    startProgram(mSimulator.address(), renderer, environment);
    if (HasFatalFailure()) return;
    // SDL makes the window anew when the renderer needs another kind.
    const auto isThere = [this] { return mX.boxOf(mWindow = mX.findWindow(kTitle)) == secondBox(); };
    ASSERT_TRUE(within(20000, isThere)) << testing::PrintToString(mX.boxOf(mWindow));
  }

  unsigned long mWindow = 0;
};

class Sizes : public Displays, public testing::WithParamInterface<Size> {
 protected:
  Size second() const override { return GetParam(); }
};

TEST_P(Sizes, WindowFillsTheSecondWhateverItsSize) {
  startOnTheSecond(Renderer::Software, {});
  if (HasFatalFailure()) return;
  expectThePanelOnTheSecond();
  EXPECT_EQ(logged(kNoSecond), 0);
}

INSTANTIATE_TEST_SUITE_P(Displays, Sizes,
                         testing::Values(Size{1920, 1080}, Size{1280, 1024}, Size{1024, 768}, Size{640, 480}),
                         [](const testing::TestParamInfo<Size>& info) {
                           return std::to_string(info.param.width) + "by" + std::to_string(info.param.height);
                         });

class ManagedDisplays : public Displays {
 protected:
  Size second() const override { return {1280, 1024}; }
  void SetUp() override {
    Displays::SetUp();
    if (HasFatalFailure()) return;
    ASSERT_TRUE(startWindowManager(mManager, mFolder, mX)) << contentOf(mFolder + "/openbox.txt");
  }
  void TearDown() override {
    mManager.kill();
    Displays::TearDown();
  }
  void expectBorderlessAndAbove(Renderer renderer);
  bool isAbove() { return has(mX.propertyOf(mX.findWindow(kTitle), "_NET_WM_STATE"), "_NET_WM_STATE_ABOVE"); }

  Process mManager;
};

void ManagedDisplays::expectBorderlessAndAbove(Renderer renderer) {
  startOnTheSecond(renderer, {});
  if (HasFatalFailure()) return;
  EXPECT_TRUE(within(20000, [this] { return isAbove(); }));
  expectThePanelOnTheSecond();
  mWindow = mX.findWindow(kTitle);
  EXPECT_EQ(mX.boxOf(mX.frameOf(mWindow)), secondBox());
  // Told the window manager to leave its borders away: flags 2, functions, decorations 0.
  const auto hints = mX.propertyOf(mWindow, "_MOTIF_WM_HINTS");
  ASSERT_GE(hints.size(), 3u);
  EXPECT_EQ(hints[0], "2");
  EXPECT_EQ(hints[2], "0");
  EXPECT_EQ(mX.propertyOf(mWindow, "_NET_FRAME_EXTENTS"), (std::vector<std::string>{"0", "0", "0", "0"}));

  const Box middle{1920 + 500, 400, 300, 200};
  const unsigned long other = mX.openWindow(middle, {255, 0, 255});
  ASSERT_TRUE(within(10000, [&] { return has(mX.propertyOfRoot("_NET_CLIENT_LIST"), std::to_string(other)); }));
  const auto stack = [this] { return mX.propertyOfRoot("_NET_CLIENT_LIST_STACKING"); };
  ASSERT_TRUE(within(10000, [&] { return stack().size() == 2; }));
  EXPECT_EQ(stack().back(), std::to_string(mWindow));
  EXPECT_EQ(mX.picture(secondBox()).count({0, 0, secondBox().width, secondBox().height}, {255, 0, 255}), 0);
}

TEST_F(ManagedDisplays, WindowIsBorderlessOnTheSecondAndAboveTheOthers) {
  expectBorderlessAndAbove(Renderer::Software);
}

TEST_F(ManagedDisplays, WithOpenGLToo) { expectBorderlessAndAbove(Renderer::OpenGL); }

// The shell line looks for the host's name, where the environment tells it, in front of the title.
TEST_F(ManagedDisplays, AboveIsAskedForWithTheHostsNameInTheEnvironment) {
  char name[256] = "";
  ASSERT_EQ(gethostname(name, sizeof(name) - 1), 0);
  startOnTheSecond(Renderer::Software, {{"HOSTNAME", name}});
  if (HasFatalFailure()) return;
  EXPECT_TRUE(within(20000, [this] { return isAbove(); }));
}

}  // namespace
}  // namespace systest
