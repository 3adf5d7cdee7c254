// What the log tells of troubles that the program does not make itself.
#include <cstdlib>
#include <filesystem>

#include "tests/system/SystemHarness.h"

namespace systest {
namespace {

class Reasons : public SystemTest {};

TEST_F(Reasons, XServerThatIsGoneIsToldInTheLog) {
  startUntilPanel(Renderer::Software, 5);
  if (HasFatalFailure()) return;
  // As good as gone: the server ends the connection of the window's owner.
  const std::string kill =
    "DISPLAY=" + mX.display() + " xdotool windowkill " + std::to_string(mX.findWindow("TopScreen")) + " >/dev/null";
  ASSERT_EQ(std::system(kill.c_str()), 0);
  EXPECT_TRUE(exitsWith(10000, 1));
  EXPECT_EQ(logged(": CRITICAL: The X server on display " + mX.display() + " is gone"), 1);
}

TEST_F(Reasons, UnknownLocaleIsToldOnceForEachName) {
  startSimulator();
  const std::string line = ": WARN: KSL: The locale \"xx_NONE\" of the service is not installed here.";
  mSimulator.apply({{"do", "init"}, {"set", {{"Locale", "xx_NONE"}}}});
  startProgram(mSimulator.address(), Renderer::Software, {});
  ASSERT_TRUE(within(20000, [&] { return logged(line) == 1; }));
  EXPECT_TRUE(asksForEvents(3));
  EXPECT_EQ(logged(line), 1);
}

TEST_F(Reasons, MissingPictureIsToldOnce) {
  startSimulator();
  ASSERT_TRUE(std::filesystem::remove(mFolder + "/terminal/VESPERA/TOP_SKIN/Background.png"));
  startProgram(mSimulator.address(), Renderer::Software, {});
  ASSERT_TRUE(asksForEvents(3));
  EXPECT_EQ(logged(": WARN: Unable to load image file " + mFolder + "/terminal/VESPERA/TOP_SKIN/Background"), 1);
}

}  // namespace
}  // namespace systest
