// What the program has to do within a time. These cases have the machine to themselves.
#include "tests/system/SystemHarness.h"

namespace systest {
namespace {

using std::chrono::duration_cast;
using std::chrono::milliseconds;
using std::chrono::steady_clock;

INSTANTIATE_TEST_SUITE_P(All, SystemRendererTest, testing::Values(Renderer::Software, Renderer::OpenGL),
                         rendererName);

TEST_P(SystemRendererTest, PanelIsShownWithinTwoSecondsOfTheServicesStart) {
  startRefusing();
  if (HasFatalFailure()) return;
  startProgram(mSimulator.address(), GetParam(), {});
  ASSERT_TRUE(within(20000, [this] { return loaderShown(); }));
  ASSERT_TRUE(within(20000, [this] { return mSimulator.refusals().size() >= 2; }));
  const int port = mSimulator.port();
  mSimulator.process().kill();
  ASSERT_TRUE(mSimulator.start(mFolder, port));
  const auto begin = steady_clock::now();
  ASSERT_TRUE(within(2000, [this] { return alike(mX.pixel(5, 1075), TestSkin::kBackground); }))
    << duration_cast<milliseconds>(steady_clock::now() - begin).count() << " ms";
  EXPECT_FALSE(loaderShown());
}

class Timing : public SystemTest {};

TEST_F(Timing, RegistersOnceASecondWithoutEnd) {
  startRefusing();
  if (HasFatalFailure()) return;
  startProgram(mSimulator.address(), Renderer::Software, {});
  ASSERT_TRUE(within(30000, [this] { return mSimulator.refusals().size() >= 4; }));
  const std::vector<int64_t> times = mSimulator.refusals();
  for (size_t i = 1; i < 4; ++i) {
    const int64_t gap = times[i] - times[i - 1];
    EXPECT_GE(gap, 950) << "attempt " << i;
    EXPECT_LE(gap, bound(1500)) << "attempt " << i;
  }
}

TEST_F(Timing, AsksForEventsEvery300Milliseconds) {
  startUntilPanel(Renderer::Software, 5);
  if (HasFatalFailure()) return;
  const int before = mSimulator.calls("game.popEvents");
  ASSERT_TRUE(within(20000, [&] { return mSimulator.calls("game.popEvents") >= before + 12; }));
  std::vector<int64_t> times;
  for (const Json& entry : mSimulator.log(0))
    if (entry.value("method", "") == "game.popEvents") times.push_back(entry["t"].get<int64_t>());
  const int64_t span = times[before + 11] - times[before + 1];
  EXPECT_GE(span, 10 * 300);
  EXPECT_LE(span, bound(10 * 400));
}

}  // namespace
}  // namespace systest
