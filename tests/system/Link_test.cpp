// What the screen does when the service fails.
#include "tests/system/SystemHarness.h"

namespace systest {
namespace {

class Link : public SystemTest {};

TEST_F(Link, LastPictureStaysWhileTheServiceIsGoneAndValuesRollOnAfterwards) {
  startWithPanel(Renderer::Software, 111111);
  if (HasFatalFailure()) return;
  mSimulator.apply({{"do", "down"}});
  mSimulator.apply({{"do", "pot"}, {"id", 0}, {"value", 222222}, {"silent", true}});
  ASSERT_TRUE(within(20000, [this] { return logged("KSL CLIENT: Received error from game.popEvents") >= 5; }));
  EXPECT_EQ(shownPot(), 111111);
  EXPECT_TRUE(panelShown());

  mSimulator.apply({{"do", "up"}});
  EXPECT_TRUE(within(20000, [this] { return shownPot() == 222222; })) << shownPot();
  EXPECT_EQ(mSimulator.calls("topscreen.init"), 2);
}

TEST_F(Link, AServiceThatWasKilledAndStartedAnewIsFoundAgain) {
  startWithPanel(Renderer::Software, 0);
  if (HasFatalFailure()) return;
  const int port = mSimulator.port();
  mSimulator.process().kill();
  ASSERT_TRUE(within(20000, [this] { return logged("KSL CLIENT: Received error from game.popEvents") >= 2; }));
  EXPECT_EQ(shownPot(), 0);
  ASSERT_TRUE(mSimulator.start(mFolder, port));
  mSimulator.apply({{"do", "add"}, {"level", {{"CurrentPot", 444444}, {"DecimalPlaces", 0}}}});
  EXPECT_TRUE(within(20000, [this] { return shownPot() == 444444; })) << shownPot();
}

TEST_F(Link, ForgottenClientRegistersAgain) {
  startWithPanel(Renderer::Software, 0);
  if (HasFatalFailure()) return;
  mSimulator.apply({{"do", "forget"}});
  ASSERT_TRUE(within(10000, [this] { return mSimulator.calls("topscreen.init") == 2; }));
  mSimulator.apply({{"do", "pot"}, {"id", 0}, {"value", 222222}});
  EXPECT_TRUE(within(10000, [this] { return shownPot() == 222222; })) << shownPot();
  EXPECT_EQ(logged("KSL CLIENT: Received error from game.popEvents -> -1 - "), 1);
}

TEST_F(Link, BadStateIsLoggedOnceHoweverOftenItComes) {
  startWithPanel(Renderer::Software, 0);
  if (HasFatalFailure()) return;
  mSimulator.apply({{"do", "bad"}, {"method", "platform.state"}, {"reply", "type"}, {"calls", -1}});
  mSimulator.apply({{"do", "forget"}});
  ASSERT_TRUE(within(20000, [this] { return mSimulator.calls("platform.state") >= 4; }));
  const char* line =
    "WARNING: Update of top screen data returned error - Parsing of platform.state response failed.";
  EXPECT_TRUE(within(5000, [&] { return logged(line) >= 1; }));
  EXPECT_EQ(shownPot(), 0);
  mSimulator.apply({{"do", "pot"}, {"id", 0}, {"value", 222222}, {"silent", true}});
  mSimulator.apply({{"do", "good"}});
  EXPECT_TRUE(within(10000, [this] { return shownPot() == 222222; })) << shownPot();
  EXPECT_EQ(logged(line), 1);
}

TEST_F(Link, EventOfAWrongTypeCostsOnlyItself) {
  startWithPanel(Renderer::Software, 0);
  if (HasFatalFailure()) return;
  mSimulator.apply({{"do", "event"}, {"id", 107}, {"raw", "no number"}});
  mSimulator.apply({{"do", "event"}, {"id", 112}, {"raw", 5}});
  mSimulator.apply({{"do", "event"}, {"id", 99}, {"raw", nullptr}});
  mSimulator.apply({{"do", "event"}, {"id", 113}, {"raw", nullptr}});
  mSimulator.apply({{"do", "pot"}, {"id", 0}, {"value", 222222}});
  EXPECT_TRUE(within(10000, [this] { return shownPot() == 222222; })) << shownPot();
  EXPECT_TRUE(within(5000, [this] { return logged("KSL: Exception thrown handling platform event (112)") == 1; }));
}

TEST_F(Link, SilentServiceHoldsUpNeitherTheMainThreadNorTheFrames) {
  startUntilPanel(Renderer::Software, 1000000);
  if (HasFatalFailure()) return;
  mSimulator.apply({{"do", "pot"}, {"id", 0}, {"value", 8765432}});
  mSimulator.apply(
    {{"do", "bad"}, {"method", "game.popEvents"}, {"reply", "slow"}, {"ms", 600000}, {"calls", 100}});
  const uint64_t n = mSimulator.latest();
  const auto silent = [&] {
    for (const Json& entry : mSimulator.log(n))
      if (entry.value("bad", "") == "slow") return true;
    return false;
  };
  // Whether the new pot still came through or not, from here on no call is answered.
  ASSERT_TRUE(within(10000, silent));
  const uint64_t stopped = mSimulator.latest();

  // F10 is taken by the main thread, and the label that it brings is drawn by the frames.
  const Box label{10, 10, 300, 100};
  const Colour red{240, 15, 15};
  ASSERT_EQ(mX.picture().count(label, red), 0);
  ASSERT_TRUE(mX.typeKey("F10"));
  EXPECT_TRUE(within(3000, [&] { return mX.picture().count(label, red) > 50; }));
  // The label tells the main loop's passes a second anew each second: it goes on changing while nobody answers.
  const Picture before = mX.picture(label);
  EXPECT_TRUE(within(10000, [&] { return mX.picture(label) != before; }));
  EXPECT_EQ(mSimulator.latest(), stopped) << "the service was asked meanwhile";
  EXPECT_TRUE(panelShown());
}

}  // namespace
}  // namespace systest
