// Visibility and fades.
#include "tests/support/FakeClock.h"
#include "tests/support/WidgetHarness.h"
#include "tests/vendelo-sdl2/TGuiComponentFixture.h"

using namespace guitest;

namespace {

TEST_F(GuiComponent, ShowAndHideCallTheirHookBeforeTheFlagTurns) {
  root.Show();
  EXPECT_TRUE(take().empty());
  root.Hide();
  EXPECT_EQ((Names{"onHide visible"}), take());
  EXPECT_FALSE(root.isVisible());
  root.Hide();
  EXPECT_TRUE(take().empty());
  root.Show();
  EXPECT_EQ((Names{"onShow hidden"}), take());
  root._setVisible(false);
  EXPECT_TRUE(take().empty());
  EXPECT_FALSE(root.isVisible());
}

TEST_F(GuiComponent, FadeInRunsFromNothingToFull) {
  FakeClock clock(1000);
  root._setVisible(false);
  root.setAlpha(255);
  root.fadeIn();
  EXPECT_TRUE(root.isVisible());
  EXPECT_EQ(0, root.alpha());
  EXPECT_TRUE(root.fadingIn());
  clock.set(1250);
  root.drawLogic();
  EXPECT_EQ(127, root.alpha());  // truncated
  clock.set(1500);
  root.drawLogic();
  EXPECT_EQ(255, root.alpha());
  EXPECT_TRUE(root.fadingIn());  // strictly after its end
  clock.set(1501);
  root.drawLogic();
  EXPECT_FALSE(root.fadingIn());
  EXPECT_EQ(255, root.alpha());
  EXPECT_EQ(ASTATE_READY, root.fade().state());
}

TEST_F(GuiComponent, FadeOutEndsHiddenWithAlphaZero) {
  FakeClock clock(1000);
  root.fadeOut();
  EXPECT_TRUE(root.fadingOut());
  EXPECT_EQ(0, root.alpha());  // the value of the animation that has not turned yet
  root.drawLogic();
  EXPECT_EQ(255, root.alpha());
  clock.set(1250);
  root.drawLogic();
  EXPECT_EQ(127, root.alpha());
  EXPECT_TRUE(root.isVisible());
  clock.set(1501);
  root.drawLogic();
  EXPECT_FALSE(root.isVisible());
  EXPECT_FALSE(root.fadingOut());
  EXPECT_EQ(0, root.alpha());
  root.Show();
  EXPECT_TRUE(root.isVisible());
  EXPECT_EQ(0, root.alpha());  // stays so until somebody says otherwise
  root.fadeIn();
  clock.set(3000);
  root.drawLogic();
  EXPECT_EQ(255, root.alpha());
}

TEST_F(GuiComponent, FadeOutTakesOverFromAFadeInAtTheComplementaryPoint) {
  FakeClock clock(10000);
  root.fadeIn();
  clock.advance(200);
  root.drawLogic();
  EXPECT_EQ(102, root.alpha());
  root.fadeOut();
  EXPECT_EQ(10200 - 300, root.fade().beginTimestampMs());
  EXPECT_EQ(102, root.alpha());
  EXPECT_FALSE(root.fadingIn());
  EXPECT_TRUE(root.fadingOut());
  root.drawLogic();
  EXPECT_NEAR(102, root.alpha(), 1);  // 101.99999 is cut
  clock.advance(100);
  root.drawLogic();
  EXPECT_NEAR(51, root.alpha(), 1);
  root.fadeIn();  // and back
  EXPECT_EQ(10300 - 100, root.fade().beginTimestampMs());
  EXPECT_TRUE(root.fadingIn());
  EXPECT_FALSE(root.fadingOut());
}

TEST_F(GuiComponent, RepeatedFadesDoNotRestart) {
  FakeClock clock(1000);
  root.fadeIn();
  clock.set(1200);
  root.drawLogic();
  root.fadeIn();
  EXPECT_EQ(1000, root.fade().beginTimestampMs());
  EXPECT_EQ(102, root.alpha());
  clock.set(2000);
  root.drawLogic();
  root.fadeOut();
  clock.set(2100);
  root.drawLogic();
  root.fadeOut();
  EXPECT_EQ(2000, root.fade().beginTimestampMs());
}

TEST_F(GuiComponent, AHiddenFadeEndsOnlyWhenItIsShownAgain) {
  FakeClock clock(1000);
  Probe* a = child("a");
  a->fadeOut();
  clock.set(1100);
  root.drawLogic();
  a->Hide();
  clock.set(3000);
  root.drawLogic();
  EXPECT_TRUE(a->fadingOut());
  a->Show();
  root.drawLogic();
  EXPECT_FALSE(a->fadingOut());
  EXPECT_FALSE(a->isVisible());
}

TEST(GuiComponentDrawing, AFadeBlendsAndPutsTheModeBack) {
  WidgetHarness harness(10, 10);
  FakeClock clock(1000);
  auto* c = harness.add(new TGuiComponent(nullptr, 0, 0, 10, 10, "c"));
  c->SetTargetTexture(harness.makeTexture(10, 10, {255, 0, 0, 255}));
  c->setBlendMode(2);
  c->fadeIn();
  EXPECT_EQ(1, c->getBlendMode());
  clock.set(1501);
  harness.frame();
  EXPECT_EQ(2, c->getBlendMode());
  c->fadeOut();
  EXPECT_EQ(1, c->getBlendMode());
  clock.set(2100);
  harness.frame();
  EXPECT_EQ(2, c->getBlendMode());
  EXPECT_FALSE(c->isVisible());
}

}  // namespace
