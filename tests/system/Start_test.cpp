// From the start of the program to its first panel.
#include "tests/system/SystemHarness.h"

namespace systest {
namespace {

INSTANTIATE_TEST_SUITE_P(All, SystemRendererTest, testing::Values(Renderer::Software, Renderer::OpenGL),
                         rendererName);

TEST_P(SystemRendererTest, LoaderIsShownAsLongAsThereIsNoService) {
  startRefusing();
  if (HasFatalFailure()) return;
  startProgram(mSimulator.address(), GetParam(), {});
  ASSERT_TRUE(within(20000, [this] { return loaderShown(); }));
  // Seven dots of 40 by 40 circle the middle, and a line of text stands below them.
  const Box circle{960 - 130, 540 - 130, 260, 260};
  ASSERT_TRUE(within(5000, [&] {
    return mX.picture(circle).count({0, 0, 260, 260}, TestSkin::kDot) > 5 * 40 * 40;
  }));
  EXPECT_GT(mX.picture().count({0, 700, 1920, 220}, {255, 255, 255}), 200);
  EXPECT_TRUE(alike(mX.pixel(5, 1075), {0, 0, 0}));
  // It moves.
  const Picture before = mX.picture(circle);
  EXPECT_TRUE(within(5000, [&] { return mX.picture(circle) != before; }));
  ASSERT_TRUE(within(20000, [this] { return mSimulator.refusals().size() >= 2; }));
  EXPECT_TRUE(loaderShown());
  EXPECT_TRUE(mProgram.running());
}

TEST_P(SystemRendererTest, PotIsShownAndRollsToANewValue) {
  startWithPanel(GetParam(), 0);
  if (HasFatalFailure()) return;
  mSimulator.apply({{"do", "pot"}, {"id", 0}, {"value", 7654321}});
  EXPECT_TRUE(within(10000, [this] { return shownPot() == 7654321; })) << shownPot();
}

class Start : public SystemTest {};

TEST_F(Start, RegistersByItsNameAndAsksForStateAndEvents) {
  startUntilPanel(Renderer::Software, 5);
  if (HasFatalFailure()) return;
  Json init, pop, state;
  ASSERT_TRUE(within(10000, [&] { return mSimulator.calls("game.popEvents") >= 3; }));
  for (const Json& entry : mSimulator.log(0)) {
    const std::string method = entry.value("method", "");
    if (method == "topscreen.init") init = entry;
    if (method == "game.popEvents") pop = entry;
    if (method == "platform.state") state = entry;
  }
  EXPECT_EQ(init["params"], Json::parse(R"(["TopScreen", "1.5.0"])"));
  EXPECT_EQ(pop["params"], Json::array({init["answer"]["ID"]}));
  EXPECT_EQ(state["params"], Json::array());
  EXPECT_EQ(mSimulator.calls("topscreen.init"), 1);
  EXPECT_EQ(mSimulator.calls("platform.state"), 1);
  EXPECT_EQ(logged("KSL: Init response OK!"), 1);
  EXPECT_EQ(logged("Top screen started with KSL server requests on http://" + mSimulator.address() + "/KSL"), 1);
}

TEST_F(Start, RejectedRegistrationIsLoggedOnceAndTriedAgain) {
  startSimulator();
  mSimulator.apply({{"do", "bad"},
                    {"method", "topscreen.init"},
                    {"reply", "fault"},
                    {"code", -3},
                    {"text", "Not you."},
                    {"calls", 2}});
  startProgram(mSimulator.address(), Renderer::Software, {});
  ASSERT_TRUE(within(30000, [this] { return alike(mX.pixel(5, 1075), TestSkin::kBackground); }));
  EXPECT_EQ(logged("KSL: ERROR on init [Not you.]!!!"), 1);
  EXPECT_EQ(mSimulator.calls("topscreen.init"), 3);
}

TEST_F(Start, RouletteGameKeepsTheLoaderUntilItIsLeft) {
  startSimulator();
  mSimulator.apply({{"do", "game"}, {"event", "loaded"}, {"ID", 9}, {"Name", "R"}, {"Type", 3}});
  startProgram(mSimulator.address(), Renderer::Software, {});
  ASSERT_TRUE(within(20000, [this] { return mSimulator.calls("platform.state") >= 1; }));
  ASSERT_TRUE(asksForEvents(5));
  EXPECT_FALSE(alike(mX.pixel(5, 1075), TestSkin::kBackground));
  mSimulator.apply({{"do", "game"}, {"event", "exited"}});
  EXPECT_TRUE(within(10000, [this] { return alike(mX.pixel(5, 1075), TestSkin::kBackground); }));
}

TEST_F(Start, WindowFillsTheScreenWhenThereIsNoSecondOne) {
  startSimulator();
  startProgram(mSimulator.address(), Renderer::Software, {});
  ASSERT_TRUE(within(20000, [this] { return mX.findWindow("TopScreen") != 0; }));
  ASSERT_TRUE(within(20000, [this] { return loaderShown() || alike(mX.pixel(5, 1075), TestSkin::kBackground); }));
  const Box box = mX.boxOf(mX.findWindow("TopScreen"));
  EXPECT_EQ(box.x, 0);
  EXPECT_EQ(box.y, 0);
  EXPECT_EQ(box.width, 1920);
  EXPECT_EQ(box.height, 1080);
  EXPECT_TRUE(within(5000, [this] {
    return logged(": ERROR: ERROR: Cannot find the second screen..moving top screen to display 0!!!") == 1;
  }));
}

}  // namespace
}  // namespace systest
