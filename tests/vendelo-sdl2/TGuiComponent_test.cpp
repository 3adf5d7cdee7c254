#include "vendelo-sdl2/TGuiComponent.h"

#include <gtest/gtest.h>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include "tests/support/FakeClock.h"
#include "tests/support/Golden.h"
#include "tests/support/WidgetHarness.h"

using namespace vendelo_sdl2;

namespace {

// Writes down what happens to it.
class Probe : public TGuiComponent {
 public:
  Probe(const std::string& name, std::vector<std::string>& log)
    : TGuiComponent(nullptr, 1, 2, 30, 40, name), mLog(log) {}
  ~Probe() override { mLog.push_back("~" + mName); }

  int load() override {
    mLog.push_back("load " + mName);
    return mLoadResult;
  }
  void draw() override {
    mLog.push_back("draw " + mName + " " + std::to_string(mAlpha));
    if (mOnDraw) mOnDraw();
    TGuiComponent::draw();
  }
  void drawLogic() override {
    mLog.push_back("logic " + mName);
    if (mOnLogic) mOnLogic();
    TGuiComponent::drawLogic();
  }
  void mainLogic() override {
    mLog.push_back("main " + mName);
    TGuiComponent::mainLogic();
  }
  void onShow() override { mLog.push_back(std::string("onShow ") + (mVisible ? "visible" : "hidden")); }
  void onHide() override { mLog.push_back(std::string("onHide ") + (mVisible ? "visible" : "hidden")); }

  const TAnimation& fade() const { return mFadeAnimation; }
  TAnimation& fade() { return mFadeAnimation; }
  bool fadingIn() const { return mFadingIn; }
  bool fadingOut() const { return mFadingOut; }
  bool increaseX() const { return mIncreaseX; }
  bool increaseY() const { return mIncreaseY; }
  std::vector<std::string> children() const {
    std::vector<std::string> names;
    for (const TGuiComponent* child : GuiComponentList) names.push_back(child->getName());
    return names;
  }

  int mLoadResult = 0;
  std::function<void()> mOnDraw, mOnLogic;

 private:
  std::vector<std::string>& mLog;
};

using Names = std::vector<std::string>;

class GuiComponent : public testing::Test {
 protected:
  Probe* probe(const std::string& name) { return new Probe(name, log); }
  Probe* child(const std::string& name) {
    Probe* made = probe(name);
    root.AddComponent(made);
    return made;
  }
  // The log since the last call.
  Names take() {
    Names taken;
    taken.swap(log);
    return taken;
  }

  std::vector<std::string> log;
  Probe root{"root", log};
};

std::string printed(const std::function<void()>& action) {
  testing::internal::CaptureStdout();
  action();
  return testing::internal::GetCapturedStdout();
}

TEST_F(GuiComponent, StandsAsBuilt) {
  TGuiComponent c(nullptr, 10, -20, 300, 400, "name");
  EXPECT_EQ(10, c.getX());
  EXPECT_EQ(-20, c.getY());
  EXPECT_EQ(300, c.getWidth());
  EXPECT_EQ(400, c.getHeight());
  EXPECT_EQ(0.0, c.getAngle());
  EXPECT_EQ(255, c.alpha());
  EXPECT_TRUE(c.isVisible());
  EXPECT_EQ("name", c.getName());
  EXPECT_EQ(nullptr, c.getParent());
  EXPECT_EQ(nullptr, c.GetTargetTexture());
  EXPECT_EQ(0, c.getSrcRect().x);
  EXPECT_EQ(0, c.getSrcRect().y);
  EXPECT_EQ(300, c.getSrcRect().w);
  EXPECT_EQ(400, c.getSrcRect().h);
  EXPECT_EQ(0, c.load());
  EXPECT_EQ(0.0f, root.fade().from());
  EXPECT_EQ(255.0f, root.fade().to());
  EXPECT_EQ(500, root.fade().duration());
}

TEST_F(GuiComponent, WithoutAnApplicationThereIsNoRenderer) {
  EXPECT_EQ(nullptr, TGuiComponent::GetRenderer());
  TGuiComponent c(nullptr, 0, 0, 1, 1, "");
  c.SetTargetTexture(reinterpret_cast<SDL_Texture*>(&c));  // SDL refuses it
  c.draw();
  c.SetTargetTexture(nullptr);
}

TEST_F(GuiComponent, AddingSetsTheParentAppendsAndLoads) {
  Probe* a = probe("a");
  EXPECT_EQ(a, root.AddComponent(a));
  EXPECT_EQ(&root, a->getParent());
  child("b");
  EXPECT_EQ((Names{"load a", "load b"}), take());
  EXPECT_EQ((Names{"a", "b"}), root.children());
  EXPECT_EQ(nullptr, root.AddComponent(nullptr));
}

TEST_F(GuiComponent, ASecondChildOfTheSameNameIsRefused) {
  Probe* first = child("twin");
  Probe second("twin", log);
  take();
  TGuiComponent* added = first;
  EXPECT_EQ("application::Component \"twin\" already exists in module \"root\".",
            printed([&] { added = root.AddComponent(&second); }));
  EXPECT_EQ(nullptr, added);
  EXPECT_EQ((Names{"twin"}), root.children());
  EXPECT_EQ(nullptr, second.getParent());
  EXPECT_TRUE(take().empty());  // neither loaded nor destroyed
}

TEST_F(GuiComponent, NamelessChildrenNeverClash) {
  EXPECT_NE(nullptr, root.AddComponent(probe("")));
  EXPECT_NE(nullptr, root.AddComponent(probe("")));
  EXPECT_EQ(2u, root.children().size());
  EXPECT_EQ(nullptr, root.FindComponentByName(""));
}

TEST_F(GuiComponent, AddingItselfOrAChildTwiceIsRefused) {
  TGuiComponent* added = &root;
  EXPECT_NE("", printed([&] { added = root.AddComponent(&root); }));
  EXPECT_EQ(nullptr, added);
  Probe* nameless = child("");
  EXPECT_NE("", printed([&] { added = root.AddComponent(nameless); }));
  EXPECT_EQ(nullptr, added);
  EXPECT_EQ(1u, root.children().size());
}

TEST_F(GuiComponent, AFailingLoadIsPrintedAndTheChildStays) {
  Probe* bad = probe("bad");
  bad->mLoadResult = -3;
  TGuiComponent* added = nullptr;
  EXPECT_EQ("application::load() error for bad while adding on \"root\".",
            printed([&] { added = root.AddComponent(bad); }));
  EXPECT_EQ(bad, added);
  EXPECT_TRUE(root.FindComponent(bad));
}

TEST_F(GuiComponent, FindingLooksAtDirectChildrenOnly) {
  Probe* a = child("a");
  Probe* deep = probe("deep");
  a->AddComponent(deep);
  EXPECT_EQ(a, root.FindComponentByName("a"));
  EXPECT_EQ(nullptr, root.FindComponentByName("deep"));
  EXPECT_EQ(deep, a->FindComponentByName("deep"));
  EXPECT_FALSE(root.FindComponent(deep));
  EXPECT_FALSE(root.FindComponent(nullptr));
  EXPECT_FALSE(root.FindComponent(&root));
}

TEST_F(GuiComponent, RemovingPrintsErasesAndDeletesOnRequest) {
  Probe* a = child("a");
  child("b");
  take();
  bool removed = false;
  EXPECT_EQ("application::Dropping component a from root",
            printed([&] { removed = root.RemoveComponent(a, false); }));
  EXPECT_TRUE(removed);
  EXPECT_TRUE(take().empty());
  EXPECT_EQ(&root, a->getParent());  // is not cleared
  delete a;
  take();
  EXPECT_EQ("application::Dropping component b from root",
            printed([&] { removed = root.RemoveComponent(std::string("b"), true); }));
  EXPECT_TRUE(removed);
  EXPECT_EQ((Names{"~b"}), take());
  EXPECT_EQ("", printed([&] { removed = root.RemoveComponent(std::string("b"), true); }));
  EXPECT_FALSE(removed);
  EXPECT_FALSE(root.RemoveComponent(nullptr, true));
  EXPECT_FALSE(root.RemoveComponent(&root, true));
  EXPECT_FALSE(root.RemoveComponent(std::string(), true));
}

TEST_F(GuiComponent, DestructionDeletesTheChildrenInListOrder) {
  {
    Probe parent("parent", log);
    parent.AddComponent(probe("1"));
    parent.AddComponent(probe("2"));
    parent.AddComponent(probe("3"));
    parent.SendComponentToBack(parent.FindComponentByName("3"));
    take();
  }
  EXPECT_EQ((Names{"~parent", "~3", "~1", "~2"}), take());
}

TEST_F(GuiComponent, FrontAndBackAnswerDifferentlyWhenThereAlready) {
  EXPECT_FALSE(root.SendComponentToBack(&root));  // an empty list
  Probe* a = child("a");
  child("b");
  Probe* c = child("c");
  EXPECT_TRUE(root.BringComponentToFront(a));
  EXPECT_EQ((Names{"b", "c", "a"}), root.children());
  EXPECT_TRUE(root.BringComponentToFront(a));
  EXPECT_TRUE(root.SendComponentToBack(c));
  EXPECT_EQ((Names{"c", "b", "a"}), root.children());
  EXPECT_FALSE(root.SendComponentToBack(c));
  EXPECT_EQ((Names{"c", "b", "a"}), root.children());
  Probe stranger("stranger", log);
  EXPECT_FALSE(root.BringComponentToFront(&stranger));
  EXPECT_FALSE(root.SendComponentToBack(&stranger));
  EXPECT_FALSE(root.BringComponentToFront(nullptr));
  EXPECT_FALSE(root.SendComponentToBack(nullptr));
  EXPECT_EQ((Names{"c", "b", "a"}), root.children());
}

TEST_F(GuiComponent, AChildFollowsItsParentAtTheNextDraw) {
  Probe* a = child("a");
  root.setX(100);
  root.setY(50);
  a->setX(7);
  a->setY(8);
  EXPECT_EQ(7, a->getX());  // relative until it is drawn
  EXPECT_EQ(8, a->getY());
  root.draw();
  EXPECT_EQ(107, a->getX());
  EXPECT_EQ(58, a->getY());
  root.setX(200);
  root.draw();
  EXPECT_EQ(207, a->getX());
  EXPECT_EQ(200, root.getX());  // a root's position is absolute
  EXPECT_EQ(30, a->getWidth());
  a->setDestRect({1, 2, 3, 4});
  root.draw();
  EXPECT_EQ(201, a->getDestRect().x);
  EXPECT_EQ(52, a->getDestRect().y);
  EXPECT_EQ(3, a->getDestRect().w);
  EXPECT_EQ(4, a->getDestRect().h);
}

TEST_F(GuiComponent, SetDestRectGoesThroughTheVirtualSetters) {
  struct Counting : TGuiComponent {
    Counting() : TGuiComponent(nullptr, 0, 0, 0, 0, "") {}
    void setX(int v) override { calls += "x" + std::to_string(v); }
    void setY(int v) override { calls += "y" + std::to_string(v); }
    void setWidth(int v) override { calls += "w" + std::to_string(v); }
    void setHeight(int v) override { calls += "h" + std::to_string(v); }
    std::string calls;
  } c;
  c.setDestRect({1, 2, 3, 4});
  EXPECT_EQ("x1y2w3h4", c.calls);
}

TEST_F(GuiComponent, GettersAreCutTo16Bits) {
  TGuiComponent c(nullptr, 32768, -32769, 65536 + 5, 70000, "");
  EXPECT_EQ(-32768, c.getX());
  EXPECT_EQ(32767, c.getY());
  EXPECT_EQ(5, c.getWidth());
  EXPECT_EQ(70000 - 65536, c.getHeight());
  EXPECT_EQ(32768, c.getDestRect().x);
}

TEST_F(GuiComponent, AlphaIsMultipliedDownTheTreeAndRestored) {
  Probe* a = child("a");
  Probe* b = probe("b");
  a->AddComponent(b);
  root.setAlpha(128);
  a->setAlpha(128);
  b->setAlpha(200);
  take();
  root.draw();
  EXPECT_EQ((Names{"draw root 128", "draw a 64", "draw b 50"}), take());
  EXPECT_EQ(128, a->alpha());
  EXPECT_EQ(200, b->alpha());
}

TEST_F(GuiComponent, AlphaIsNotClamped) {
  root.setAlpha(300);
  EXPECT_EQ(300, root.alpha());
  root.setAlpha(-1);
  EXPECT_EQ(-1, root.alpha());
}

TEST_F(GuiComponent, HiddenChildrenHaveMainLogicOnly) {
  child("a");
  child("b")->_setVisible(false);
  child("c");
  take();
  root.draw();
  EXPECT_EQ((Names{"draw root 255", "draw a 255", "draw c 255"}), take());
  root.drawLogic();
  EXPECT_EQ((Names{"logic root", "logic a", "logic c"}), take());
  root.mainLogic();
  EXPECT_EQ((Names{"main root", "main a", "main b", "main c"}), take());
}

TEST_F(GuiComponent, VisibilityIsAskedWhenTheTurnComes) {
  Probe* a = child("a");
  Probe* b = child("b");
  a->mOnLogic = [b] { b->_setVisible(false); };
  take();
  root.drawLogic();
  EXPECT_EQ((Names{"logic root", "logic a"}), take());
}

TEST_F(GuiComponent, AnExceptionEndsTheDrawOfItsParentInSilence) {
  // A component whose own draw throws past the base's guard.
  Probe* a = child("a");
  Probe* thrower = child("thrower");
  child("unreached");
  Probe* top = probe("top");
  top->AddComponent(probe("under"));
  thrower->setAlpha(100);
  thrower->mOnDraw = [] { throw std::runtime_error("broken"); };
  root.setAlpha(51);
  take();
  EXPECT_EQ("", printed([&] { EXPECT_NO_THROW(root.draw()); }));
  EXPECT_EQ((Names{"draw root 51", "draw a 51", "draw thrower 20"}), take());
  EXPECT_EQ(100, thrower->alpha());  // put back all the same
  EXPECT_EQ(255, a->alpha());
  delete top;
}

TEST_F(GuiComponent, AWalkSurvivesTheRemovalOfWhatItVisits) {
  Probe* a = child("a");
  Probe* b = child("b");
  Probe* c = child("c");
  child("d");
  b->mOnLogic = [&] { root.RemoveComponent(c, true); };
  take();
  printed([&] { root.drawLogic(); });
  EXPECT_EQ((Names{"logic root", "logic a", "logic b", "~c", "logic d"}), take());
  b->mOnLogic = nullptr;
  a->mOnDraw = [&] { root.RemoveComponent(b, true); };
  printed([&] { root.draw(); });
  EXPECT_EQ((Names{"draw root 255", "draw a 255", "~b", "draw d 255"}), take());
}

TEST_F(GuiComponent, AChildMayTakeItselfOutOfTheWalk) {
  Probe* a = child("a");
  child("b");
  a->mOnLogic = [&] { root.RemoveComponent(a, false); };
  take();
  printed([&] { root.drawLogic(); });
  EXPECT_EQ((Names{"logic root", "logic a", "logic b"}), take());
  a->mOnLogic = nullptr;
  a->mOnDraw = nullptr;
  EXPECT_EQ((Names{"b"}), root.children());
  delete a;
}

TEST_F(GuiComponent, AChildThatDeletesItselfInItsDrawIsNotTouchedAgain) {
  struct Suicide : TGuiComponent {
    Suicide() : TGuiComponent(nullptr, 0, 0, 1, 1, "suicide") {}
    void draw() override { mpParent->RemoveComponent(this, true); }
  };
  root.AddComponent(new Suicide);
  child("b");
  take();
  printed([&] { root.draw(); });
  EXPECT_EQ((Names{"draw root 255", "draw b 255"}), take());
}

TEST_F(GuiComponent, ReorderingDuringAWalkSkipsNobodyElse) {
  Probe* a = child("a");
  Probe* b = child("b");
  child("c");
  a->mOnLogic = [&] { root.BringComponentToFront(b); };
  take();
  root.drawLogic();
  EXPECT_EQ((Names{"logic root", "logic a", "logic c", "logic b"}), take());
  EXPECT_EQ((Names{"a", "c", "b"}), root.children());
}

TEST_F(GuiComponent, AnAddedChildIsVisitedInTheSameWalk) {
  Probe* a = child("a");
  child("b");
  a->mOnLogic = [&] {
    if (!root.FindComponentByName("new")) child("new");
  };
  take();
  root.drawLogic();
  EXPECT_EQ((Names{"logic root", "logic a", "load new", "logic b", "logic new"}), take());
}

TEST_F(GuiComponent, AParentMayDieInsideItsChildsLogic) {
  struct Patricide : TGuiComponent {
    explicit Patricide(TGuiComponent& top) : TGuiComponent(nullptr, 0, 0, 1, 1, ""), mTop(top) {}
    void drawLogic() override { mTop.RemoveComponent(mpParent, true); }
    void draw() override { mTop.RemoveComponent(mpParent, true); }
    TGuiComponent& mTop;
  };
  for (const bool drawing : {false, true}) {
    Probe* parent = child("parent");
    parent->AddComponent(new Patricide(root));
    parent->AddComponent(probe("sibling"));
    if (!drawing) child("next");
    root.BringComponentToFront(root.FindComponentByName("next"));
    take();
    printed([&] { drawing ? root.draw() : root.drawLogic(); });
    EXPECT_EQ((drawing ? Names{"draw root 255", "draw parent 255", "~parent", "~sibling", "draw next 255"}
                       : Names{"logic root", "logic parent", "~parent", "~sibling", "logic next"}),
              take());
  }
}

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

TEST_F(GuiComponent, DestinationComparesWith16BitPositions) {
  root.setDestPos(5, 0);
  EXPECT_TRUE(root.increaseX());
  EXPECT_FALSE(root.increaseY());
  root.setDestPos(1, 2);  // equal is not above
  EXPECT_FALSE(root.increaseX());
  EXPECT_FALSE(root.increaseY());
  root.setX(65536);  // reads as 0
  root.setDestPos(1, 3);
  EXPECT_TRUE(root.increaseX());
  EXPECT_TRUE(root.increaseY());
}

TEST_F(GuiComponent, StepsTowardsAndAwayFromTheDestination) {
  root.setDestPos(3, 1);
  root.moveToDestPos();
  EXPECT_EQ(2, root.getX());
  EXPECT_EQ(1, root.getY());
  root.moveToDestPos();
  root.moveToDestPos();
  EXPECT_EQ(3, root.getX());
  EXPECT_EQ(1, root.getY());
  root.moveFromDestPos();
  EXPECT_EQ(2, root.getX());
  EXPECT_EQ(2, root.getY());
}

TEST(GuiComponentDrawing, BlendModesByNumber) {
  WidgetHarness harness(10, 10);
  auto* c = harness.add(new TGuiComponent(nullptr, 0, 0, 10, 10, "c"));
  EXPECT_EQ(harness.renderer(), TGuiComponent::GetRenderer());
  EXPECT_EQ(0, c->getBlendMode());  // no texture
  c->setBlendMode(2);
  SDL_Texture* texture = harness.makeTexture(10, 10, {255, 0, 0, 255});
  c->SetTargetTexture(texture);
  const SDL_BlendMode modes[] = {SDL_BLENDMODE_NONE, SDL_BLENDMODE_BLEND, SDL_BLENDMODE_ADD, SDL_BLENDMODE_MOD};
  for (int i = 0; i < 4; ++i) {
    c->setBlendMode(i);
    SDL_BlendMode mode = SDL_BLENDMODE_INVALID;
    SDL_GetTextureBlendMode(texture, &mode);
    EXPECT_EQ(modes[i], mode);
    EXPECT_EQ(i, c->getBlendMode());
  }
  c->setBlendMode(4);
  c->setBlendMode(-1);
  EXPECT_EQ(3, c->getBlendMode());
  SDL_SetTextureBlendMode(texture, SDL_BLENDMODE_MUL);
  EXPECT_EQ(-1, c->getBlendMode());
  SDL_DestroyTexture(texture);
  c->SetTargetTexture(nullptr);
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

TEST(GuiComponentDrawing, AlphaOfAChildInAFadedParent) {
  WidgetHarness harness(10, 10);
  harness.setBackdrop({0, 0, 0, 255});
  auto* parent = harness.add(new TGuiComponent(nullptr, 0, 0, 10, 10, "parent"));
  auto* c = new TGuiComponent(nullptr, 0, 0, 10, 10, "child");
  parent->AddComponent(c);
  c->SetTargetTexture(harness.makeTexture(10, 10, {255, 255, 255, 255}));
  c->setBlendMode(1);
  parent->setAlpha(128);
  c->setAlpha(128);
  harness.frame();
  EXPECT_EQ(0x404040u, harness.pixel(5, 5));  // 64
}

TEST(GuiComponentDrawing, Picture) {
  WidgetHarness harness(160, 120);
  auto textured = [&](TGuiComponent* parent, const char* name, SDL_Rect place, SDL_Color colour) {
    auto* c = new TGuiComponent(nullptr, place.x, place.y, place.w, place.h, name);
    c->SetTargetTexture(harness.makeTexture(place.w, place.h, colour));
    c->setBlendMode(1);
    if (parent)
      parent->AddComponent(c);
    else
      harness.add(c);
    return c;
  };
  TGuiComponent* panel = textured(nullptr, "panel", {10, 10, 100, 80}, {60, 90, 60, 255});
  textured(panel, "rear", {10, 10, 40, 30}, {220, 40, 40, 255});
  textured(panel, "front", {30, 20, 40, 30}, {40, 40, 220, 255})->setAlpha(128);
  textured(panel, "turned", {70, 40, 30, 30}, {230, 200, 40, 255})->setAngle(45.0);
  textured(panel, "upright", {10, 60, 60, 10}, {200, 200, 200, 255})->setAngle(-30.0);
  textured(panel, "hidden", {0, 0, 100, 80}, {255, 255, 255, 255})->Hide();
  TGuiComponent* faded = textured(nullptr, "faded", {100, 50, 50, 60}, {250, 250, 250, 255});
  faded->setAlpha(64);
  textured(faded, "in_faded", {10, 10, 30, 40}, {250, 120, 0, 255});
  harness.frame();
  EXPECT_GOLDEN(harness.renderer(), "vendelo-sdl2/GuiComponent_Tree");
}

TEST(GuiComponentDrawing, ANegativeAngleDrawsUpright) {
  WidgetHarness harness(20, 20);
  auto* c = harness.add(new TGuiComponent(nullptr, 5, 8, 10, 4, "c"));
  c->SetTargetTexture(harness.makeTexture(10, 4, {255, 255, 255, 255}));
  c->setAngle(90.0);
  harness.frame();
  EXPECT_EQ(0xffffffu, harness.pixel(10, 6));
  c->setAngle(-90.0);
  harness.frame();
  EXPECT_NE(0xffffffu, harness.pixel(10, 6));
  EXPECT_EQ(0xffffffu, harness.pixel(5, 8));
}

}  // namespace
