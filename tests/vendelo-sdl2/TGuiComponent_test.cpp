#include "vendelo-sdl2/TGuiComponent.h"

#include "tests/support/LogLines.h"
#include "tests/vendelo-sdl2/TGuiComponentFixture.h"
#include "vendelo-sdl2/TAlignment.h"

using namespace guitest;

namespace {

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

TEST_F(GuiComponent, AddingItselfIsRefusedWithALineInTheLog) {
  LogLines log_;
  TGuiComponent* added = &root;
  printed([&] { added = root.AddComponent(&root); });
  EXPECT_EQ(nullptr, added);
  EXPECT_EQ((Names{"4 Component \"root\" cannot be added to itself."}), log_.lines());
  EXPECT_TRUE(root.children().empty());
  EXPECT_EQ(nullptr, root.getParent());
  EXPECT_TRUE(take().empty());  // not loaded
  EXPECT_EQ(nullptr, root.AddComponent(nullptr));
  child("a");
  EXPECT_EQ(1u, log_.size());
}

TEST_F(GuiComponent, AddingAChildTwiceIsRefused) {
  TGuiComponent* added = &root;
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

TEST_F(GuiComponent, AChildIsPlacedByWhatItsParentsGettersSay) {
  struct Elsewhere : TGuiComponent {
    Elsewhere() : TGuiComponent(nullptr, 100, 200, 1, 1, "") {}
    short getX() override { return 1000; }
    short getY() override { return 2000; }
  } parent;
  auto* a = new TGuiComponent(nullptr, 7, 8, 1, 1, "a");
  parent.AddComponent(a);
  parent.draw();
  EXPECT_EQ(1007, a->getDestRect().x);
  EXPECT_EQ(2008, a->getDestRect().y);
  Probe* b = child("b");
  b->setX(0x7fff);
  root.setX(65536 + 5);  // 5 in 16 bits
  root.setY(-65536 - 6);
  root.draw();
  EXPECT_EQ(0x7fff + 5, b->getDestRect().x);
  EXPECT_EQ(2 - 6, b->getDestRect().y);
}

TEST_F(GuiComponent, ARootKeepsThePlaceRelativeToAParentThatItWasBuiltWith) {
  auto* a = new TGuiComponent(nullptr, 10, 20, 1, 1, "a");
  a->setX(99);
  a->setY(98);
  a->draw();
  EXPECT_EQ(99, a->getX());
  EXPECT_EQ(98, a->getY());
  root.AddComponent(a);
  root.draw();
  EXPECT_EQ(1 + 10, a->getX());
  EXPECT_EQ(2 + 20, a->getY());
}

TEST_F(GuiComponent, LoadFindsTheChildInItsPlace) {
  struct Loads : TGuiComponent {
    Loads() : TGuiComponent(nullptr, 0, 0, 1, 1, "loads") {}
    int load() override {
      parentKnows = mpParent && mpParent->FindComponentByName("loads") == this;
      return 0;
    }
    bool parentKnows = false;
  };
  auto* loads = new Loads;
  root.AddComponent(loads);
  EXPECT_TRUE(loads->parentKnows);
}

TEST_F(GuiComponent, RemovalTakesTheInstanceAndNoNamesake) {
  auto* first = new TGuiComponent(nullptr, 0, 0, 1, 1, "");
  auto* second = new TGuiComponent(nullptr, 0, 0, 1, 1, "");
  root.AddComponent(first);
  root.AddComponent(second);
  EXPECT_TRUE(root.RemoveComponent(second, false));
  EXPECT_TRUE(root.FindComponent(first));
  EXPECT_FALSE(root.FindComponent(second));
  delete second;
}

TEST_F(GuiComponent, WhatIsStoredIsReadBack) {
  root.setAngle(-12.5);
  EXPECT_EQ(-12.5, root.getAngle());
  root.setSrcRect({1, 2, 3, 4});
  const SDL_Rect source = root.getSrcRect(), expected{1, 2, 3, 4};
  EXPECT_TRUE(SDL_RectEquals(&expected, &source));
  TGuiComponent parent(nullptr, 0, 0, 1, 1, "");
  root.setParent(&parent);
  EXPECT_EQ(&parent, root.getParent());
  EXPECT_FALSE(parent.FindComponent(&root));  // only the pointer is stored
  root.setParent(nullptr);
  root.setWidth(5);
  root.setHeight(6);
  EXPECT_EQ(5, root.getDestRect().w);
  EXPECT_EQ(6, root.getDestRect().h);
  EXPECT_EQ(3, root.getSrcRect().w);
}

TEST_F(GuiComponent, WithoutADestinationNothingMoves) {
  root.moveToDestPos();
  EXPECT_EQ(1, root.getX());
  EXPECT_EQ(2, root.getY());
  EXPECT_FALSE(root.increaseX());
  EXPECT_FALSE(root.increaseY());
}

TEST(Alignment, NineByNumber) {
  const TAlignment all[] = {LEFT_UP,      CENTER_UP, RIGHT_UP,    LEFT_CENTER, CENTER_CENTER,
                            RIGHT_CENTER, LEFT_DOWN, CENTER_DOWN, RIGHT_DOWN};
  for (int i = 0; i < 9; ++i) EXPECT_EQ(i, all[i]);
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

}  // namespace
