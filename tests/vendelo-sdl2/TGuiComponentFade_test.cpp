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

// The clock's numbers go from 2^32 - 1 to 0 every 49.7 days.
TEST_F(GuiComponent, FadeGoesOnWhereTheClockComesRound) {
  for (const bool in : {true, false}) {
    FakeClock clock(0u - 200u);
    root._setVisible(!in);
    in ? root.fadeIn() : root.fadeOut();
    for (const Uint32 passed : {100u, 199u, 200u, 250u, 400u, 500u}) {
      clock.set(passed - 200u);
      root.drawLogic();
      EXPECT_NEAR(255.0 * (in ? passed : 500 - passed) / 500.0, root.alpha(), 1.0) << passed;
    }
    clock.set(301);
    root.drawLogic();
    EXPECT_EQ(in, root.isVisible());
    EXPECT_EQ(ASTATE_READY, root.fade().state());
  }
}

TEST_F(GuiComponent, FadeIsTurnedRoundWhereTheClockComesRound) {
  FakeClock clock(0u - 200u);
  root._setVisible(false);
  root.fadeIn();
  clock.set(100);  // no drawLogic since
  root.fadeOut();
  EXPECT_EQ(-100, root.fade().beginTimestampMs());
  root.drawLogic();
  EXPECT_EQ(153, root.alpha());
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

TEST_F(GuiComponent, AFadeThatIsOverButNotYetEndedIsNoFadeToTakeOverFrom) {
  FakeClock clock(1000);
  root.fadeOut();
  clock.set(1501);  // no drawLogic since
  root.fadeIn();
  EXPECT_EQ(1501, root.fade().beginTimestampMs());
  EXPECT_FALSE(root.fadingOut());
  clock.set(1601);
  root.drawLogic();
  EXPECT_EQ(51, root.alpha());
}

TEST_F(GuiComponent, AFadeAtItsVeryEndIsTakenOverAtTheFullLength) {
  FakeClock clock(1000);
  root.fadeIn();
  clock.set(1500);  // still running, and a whole interval has passed
  root.fadeOut();
  EXPECT_EQ(1500 - 500, root.fade().beginTimestampMs());
}

TEST_F(GuiComponent, APausedFadeIsStartedAnew) {
  FakeClock clock(1000);
  root.fadeIn();
  clock.set(1200);
  root.fade().pause();
  root.fadeOut();
  EXPECT_EQ(1200, root.fade().beginTimestampMs());
}

TEST_F(GuiComponent, TheChildrensLogicFollowsTheEndOfTheFade) {
  FakeClock clock(1000);
  Probe* a = child("a");
  EAnimationState seen = ASTATE_RUNNING;
  bool fading = true;
  a->mOnLogic = [&] {
    seen = root.fade().state();
    fading = root.fadingIn();
  };
  root.fadeIn();
  clock.set(2000);
  root.drawLogic();
  EXPECT_EQ(ASTATE_READY, seen);
  EXPECT_FALSE(fading);
}

// ---- What the hooks of a fade see, and in which order they act

// Writes down each step with what stands at that moment.
class Steps : public TGuiComponent {
 public:
  Steps() : TGuiComponent(nullptr, 0, 0, 10, 10, "steps") {}
  void setAlpha(int alpha) override {
    TGuiComponent::setAlpha(alpha);
    note("alpha " + std::to_string(alpha));
  }
  void onShow() override { note("show"); }
  void onHide() override { note("hide"); }
  void OnFadeInStart() override {
    hook("in start", [this] { TGuiComponent::OnFadeInStart(); });
  }
  void OnFadeInEnd() override {
    hook("in end", [this] { TGuiComponent::OnFadeInEnd(); });
  }
  void OnFadeOutStart() override {
    hook("out start", [this] { TGuiComponent::OnFadeOutStart(); });
  }
  void OnFadeOutEnd() override {
    hook("out end", [this] { TGuiComponent::OnFadeOutEnd(); });
  }
  Names take() {
    Names taken;
    taken.swap(mNotes);
    return taken;
  }

 private:
  template <class Base>
  void hook(const std::string& name, const Base& base) {
    note(name);
    base();
    note("done");
  }
  void note(const std::string& what) {
    mNotes.push_back(what + (mVisible ? " visible" : " hidden") + " mode " + std::to_string(getBlendMode()) +
                     (mFadingIn ? " in" : "") + (mFadingOut ? " out" : "") +
                     (mFadeAnimation.reverse() ? " reverse" : ""));
  }
  Names mNotes;
};

TEST(GuiComponentDrawing, TheHooksOfAFadeActInOrder) {
  WidgetHarness harness(10, 10);
  FakeClock clock(1000);
  auto* c = static_cast<Steps*>(harness.add(new Steps));
  c->SetTargetTexture(harness.makeTexture(10, 10, {255, 0, 0, 255}));
  c->setBlendMode(2);
  c->_setVisible(false);
  c->fadeIn();
  EXPECT_EQ(
    (Names{"in start hidden mode 2", "alpha 0 hidden mode 1", "show hidden mode 1", "done visible mode 1 in"}),
    c->take());
  clock.set(1501);
  c->drawLogic();
  EXPECT_EQ((Names{"in end visible mode 1 in", "alpha 255 visible mode 2 in", "done visible mode 2"}), c->take());
  c->setBlendMode(3);
  c->fadeOut();
  EXPECT_EQ((Names{"out start visible mode 3", "alpha 0 visible mode 1", "done visible mode 1 out"}), c->take());
  clock.set(1501 + 250);
  c->drawLogic();
  EXPECT_EQ((Names{"alpha 127 visible mode 1 out reverse"}), c->take());
  clock.set(1501 + 501);
  c->drawLogic();
  EXPECT_EQ((Names{"out end visible mode 1 out reverse", "hide visible mode 1 out reverse",
                   "alpha 0 hidden mode 3 out reverse", "done hidden mode 3 reverse"}),
            c->take());
  c->drawLogic();  // the animation is at rest
  EXPECT_TRUE(c->take().empty());
}

TEST(GuiComponentDrawing, AFadeOutDuringAFadeInSavesTheModeOfThatMoment) {
  WidgetHarness harness(10, 10);
  FakeClock clock(1000);
  auto* c = static_cast<Steps*>(harness.add(new Steps));
  c->SetTargetTexture(harness.makeTexture(10, 10, {255, 0, 0, 255}));
  c->setBlendMode(2);
  c->fadeIn();
  clock.set(1200);
  c->drawLogic();
  c->take();
  c->fadeOut();
  EXPECT_EQ((Names{"out start visible mode 1 in", "alpha 102 visible mode 1 in", "done visible mode 1 out"}),
            c->take());
  clock.set(1300);
  c->drawLogic();
  c->take();
  c->fadeIn();
  EXPECT_EQ((Names{"in start visible mode 1 out reverse", "alpha 0 visible mode 1 out reverse",
                   "done visible mode 1 in reverse"}),
            c->take());
}

TEST(GuiComponentDrawing, WithoutAStartTheEndOfAFadeLeavesItBlending) {
  WidgetHarness harness(10, 10);
  auto* c = harness.add(new TGuiComponent(nullptr, 0, 0, 10, 10, "c"));
  c->SetTargetTexture(harness.makeTexture(10, 10, {255, 0, 0, 255}));
  c->setBlendMode(2);
  c->setAlpha(3);
  c->OnFadeInEnd();
  EXPECT_EQ(1, c->getBlendMode());
  EXPECT_EQ(255, c->alpha());
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
