// The passes over the tree: drawing, logic, and what may happen to the tree meanwhile.
#include <stdexcept>

#include "tests/vendelo-sdl2/TGuiComponentFixture.h"

using namespace guitest;

namespace {

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

// ---- A child that leaves its parent in its draw

TEST_F(GuiComponent, AChildThatLeavesItsParentInItsDrawKeepsItsOwnAlpha) {
  Probe* a = child("a");
  a->setAlpha(200);
  a->mOnDraw = [&] { root.RemoveComponent(a, false); };
  root.setAlpha(128);
  take();
  printed([&] { root.draw(); });
  EXPECT_EQ((Names{"draw root 128", "draw a 100"}), take());
  EXPECT_EQ(200, a->alpha());
  EXPECT_TRUE(root.children().empty());
  delete a;
}

TEST_F(GuiComponent, AChildThatMovesToAnotherParentInItsDrawKeepsItsOwnAlpha) {
  Probe* left = child("left");
  Probe* right = child("right");
  Probe* a = probe("a");
  left->AddComponent(a);
  a->setAlpha(200);
  right->setAlpha(51);
  a->mOnDraw = [&] {
    if (a->getParent() != left) return;
    left->RemoveComponent(a, false);
    right->AddComponent(a);
  };
  take();
  printed([&] { root.draw(); });
  EXPECT_EQ((Names{"draw root 255", "draw left 255", "draw a 200", "load a", "draw right 51", "draw a 40"}),
            take());
  EXPECT_EQ(200, a->alpha());
}

TEST_F(GuiComponent, AChildThatLeavesAndThrowsKeepsItsOwnAlpha) {
  Probe* a = child("a");
  a->setAlpha(200);
  a->mOnDraw = [&] {
    root.RemoveComponent(a, false);
    throw 42;
  };
  root.setAlpha(128);
  printed([&] { EXPECT_NO_THROW(root.draw()); });
  EXPECT_EQ(200, a->alpha());
  delete a;
}

TEST_F(GuiComponent, AChildThatIsDrawnWithinItsOwnDrawKeepsItsOwnAlpha) {
  Probe* a = child("a");
  a->setAlpha(200);
  root.setAlpha(128);
  bool inside = false;
  a->mOnDraw = [&] {
    if (inside) return;
    inside = true;
    root.draw();
  };
  take();
  root.draw();
  EXPECT_EQ((Names{"draw root 128", "draw a 100", "draw root 128", "draw a 50"}), take());
  EXPECT_EQ(200, a->alpha());
}

TEST_F(GuiComponent, AChildThatDiesInADrawWithinItsOwnIsNotTouchedAgain) {
  struct Draws : TGuiComponent {
    Draws(bool diesInside, int& calls)
      : TGuiComponent(nullptr, 0, 0, 1, 1, ""), mDiesInside(diesInside), mCalls(calls) {}
    void setAlpha(int) override { ++mCalls; }
    void draw() override {
      const bool inside = ++mDepth > 1, dies = inside == mDiesInside;
      if (!inside) mpParent->draw();
      if (dies) mpParent->RemoveComponent(this, true);
    }
    bool mDiesInside;
    int& mCalls;
    int mDepth = 0;
  };
  for (const bool diesInside : {false, true}) {
    SCOPED_TRACE(diesInside);
    Probe parent("parent", log);
    int calls = 0;
    parent.AddComponent(new Draws(diesInside, calls));
    parent.AddComponent(probe("b"));
    printed([&] { parent.draw(); });
    // One for each draw, and one when the inner one puts back.
    EXPECT_EQ(diesInside ? 2 : 3, calls);
  }
}

TEST_F(GuiComponent, AChildThatLeavesAndDiesInItsDrawIsNotTouchedAgain) {
  struct Leaves : TGuiComponent {
    explicit Leaves(int& calls) : TGuiComponent(nullptr, 0, 0, 1, 1, ""), mCalls(calls) {}
    void setAlpha(int) override { ++mCalls; }
    void draw() override {
      mpParent->RemoveComponent(this, false);
      delete this;
    }
    int& mCalls;
  };
  int calls = 0;
  root.AddComponent(new Leaves(calls));
  child("b");
  take();
  printed([&] { root.draw(); });
  EXPECT_EQ((Names{"draw root 255", "draw b 255"}), take());
  EXPECT_EQ(1, calls);
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

}  // namespace
