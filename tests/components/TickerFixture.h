#pragma once

#include <vector>

#include "components/TScrollingComponent.h"
#include "tests/components/WidgetFixture.h"

// What the tests of the ticker share.
namespace tickertest {

using namespace vendelo_sdl2;

struct Ticker : TScrollingComponent {
  Ticker(int x, int y, int w, int h) : TScrollingComponent(nullptr, x, y, w, h, "ticker") {}
  void onShow() override { ++hooks; }
  void onHide() override { ++hooks; }
  int hooks = 0;
  using TScrollingComponent::fMovementFunction;
  using TScrollingComponent::mFirstDraw;
  using TScrollingComponent::mIsRelativeSpacing;
  using TScrollingComponent::mPadding;
  using TScrollingComponent::mpContent;
  using TScrollingComponent::mpTargetTexture;
  using TScrollingComponent::mScrollDuration;
  using TScrollingComponent::mSpacing;
  using TScrollingComponent::mWaitChange;
  using TScrollingComponent::mWaitChangeAt;
  using TScrollingComponent::mWaitDuration;
};

// A child that notes where it was drawn.
struct Child : TGuiComponent {
  Child(int w, int h, const char* name) : TGuiComponent(nullptr, 0, 0, w, h, name) {}
  void draw() override {
    places.push_back(SDL_Point{getX(), getY()});
    TGuiComponent::draw();
  }
  std::vector<int> xs() const {
    std::vector<int> all;
    for (const SDL_Point& p : places) all.push_back(p.x);
    return all;
  }
  std::vector<SDL_Point> places;
};

class Scrolling : public WidgetTest {
 protected:
  using Xs = std::vector<int>;
  // One child of 400 pixels in a ticker of 400: a loop of 2000 + 500 * 1000 / 400 = 3250 ms.
  Child* oneChild() {
    auto* child = new Child(400, 20, "one");
    ticker.AddContent(child, -1, TScrollingComponent::CENTER);
    ticker.mScrollDuration = -1000;
    ticker.mWaitDuration = 2000;
    return child;
  }
  // The places at which the child is drawn at so many ms after the first draw.
  Xs at(Child& child, Uint32 elapsed) {
    clock.set(1000 + elapsed);
    child.places.clear();
    ticker.draw();
    return child.xs();
  }
  Ticker ticker{0, 50, 400, 60};
};

}  // namespace tickertest
