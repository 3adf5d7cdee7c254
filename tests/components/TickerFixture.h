#pragma once

#include <cmath>
#include <cstdint>
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
    ticker.SetScrollSpeedFixed(-400);
    ticker.SetWaitDuration(2.0f);
    return child;
  }
  // The places at which the child is drawn at so many ms after the first draw, where that is at 1000.
  Xs at(Child& child, Uint32 elapsed) { return at(ticker, child, elapsed); }
  Xs at(Ticker& which, Child& child, Uint32 elapsed) {
    clock.set(1000 + elapsed);
    child.places.clear();
    which.draw();
    return child.xs();
  }
  // Where the one child should stand then: it waits, and slides 500 pixels, of which 400 take so many ms; to the
  // left where they are negative.
  static Xs standing(uint64_t elapsed, long wait, long duration) {
    const double slide = 1.25 * static_cast<double>(std::abs(duration));
    const double sliding = std::fmod(static_cast<double>(elapsed), static_cast<double>(wait) + slide) - wait;
    const double gone = sliding > 0 ? sliding / slide * 500 : 0;
    Xs places;
    for (int x = static_cast<int>(std::round(duration < 0 ? -gone : gone)); x < 400; x += 500)
      if (x + 400 > 0) places.push_back(x);
    return places;
  }
  Ticker ticker{0, 50, 400, 60};
};

}  // namespace tickertest
