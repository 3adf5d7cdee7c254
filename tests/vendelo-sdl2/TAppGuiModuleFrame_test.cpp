// A frame of a picture that stands takes no memory from the heap.
#include <gtest/gtest.h>
#include <atomic>
#include <cstdlib>
#include <new>
#include <vector>

#include "components/TGlyphLabel.h"
#include "tests/support/FakeClock.h"
#include "tests/support/TestFont.h"
#include "tests/support/WidgetHarness.h"
#include "vendelo-sdl2/TGuiComponent.h"

using namespace vendelo_sdl2;

namespace {
std::atomic<long> allocations{0};
}

// Not inlined: the compiler would pair the malloc inside with a delete outside.
[[gnu::noinline]] void* operator new(size_t size) {
  ++allocations;
  if (void* memory = std::malloc(size ? size : 1)) return memory;
  throw std::bad_alloc();
}
[[gnu::noinline]] void operator delete(void* memory) noexcept { std::free(memory); }
[[gnu::noinline]] void operator delete(void* memory, size_t) noexcept { std::free(memory); }

namespace {

TEST(Frame, AllocatesNothingOnceThePictureStands) {
  WidgetHarness harness(200, 100);
  FakeClock clock(1000);
  const std::string font = testfont::write(testfont::freshFolder("Frame"), "dots", 1);
  for (int i = 0; i < 5; ++i) {
    auto* panel = new TGuiComponent(nullptr, i * 20, 0, 40, 40, "a panel with a long name " + std::to_string(i));
    panel->SetTargetTexture(harness.makeTexture(40, 40, {static_cast<Uint8>(i * 50), 90, 60, 255}));
    harness.add(panel);
    for (int j = 0; j < 5; ++j) {
      auto* child = new TGuiComponent(nullptr, j, j, 10, 10, "");
      child->SetTargetTexture(harness.makeTexture(10, 10, {200, 90, 60, 255}));
      child->setAngle(j == 4 ? 30.0 : 0.0);
      panel->AddComponent(child);
      child->AddComponent(new TGlyphLabel(nullptr, 0, 0, 60, 12, "TEXT TEXT TEXT TEXT TEXT", font, ""));
    }
    panel->AddComponent(new TGlyphLabel(nullptr, 0, 20, 60, 12, "", font, ""));
  }
  harness.application().setStatus(TApplication::APP_RUNNING);
  harness.module().FindComponentByName("a panel with a long name 1")->fadeIn();
  harness.module().FindComponentByName("a panel with a long name 2")->fadeOut();
  for (int i = 0; i < 3; ++i) {
    clock.advance(16);
    harness.module().draw();
  }
  const long before = allocations;
  for (int i = 0; i < 40; ++i) {
    clock.advance(16);
    EXPECT_EQ(0, harness.module().draw());
    harness.module().mainLogic();
  }
  EXPECT_EQ(before, allocations);
  EXPECT_FALSE(harness.module().FindComponentByName("a panel with a long name 2")->isVisible());
}

// One that puts itself in front of its neighbours in every frame, as a picture that flies over them does.
class Climber : public TGuiComponent {
 public:
  explicit Climber(TAppGuiModule* roots) : TGuiComponent(nullptr, 0, 0, 4, 4, ""), mpRoots(roots) {}
  void drawLogic() override {
    ++turns;
    mpRoots ? mpRoots->BringComponentToFront(this) : mpParent->BringComponentToFront(this);
    mpRoots ? mpRoots->SendComponentToBack(this) : mpParent->SendComponentToBack(this);
    mpRoots ? mpRoots->BringComponentToFront(this) : mpParent->BringComponentToFront(this);
    TGuiComponent::drawLogic();
  }
  int turns = 0;

 private:
  TAppGuiModule* mpRoots;
};

TEST(Frame, AllocatesNothingWhileComponentsChangeTheirOrder) {
  WidgetHarness harness(20, 20);
  FakeClock clock(1000);
  auto* panel = harness.add(new TGuiComponent(nullptr, 0, 0, 20, 20, "panel"));
  std::vector<Climber*> climbers;
  for (int i = 0; i < 4; ++i) {
    climbers.push_back(harness.add(new Climber(&harness.module())));
    climbers.push_back(static_cast<Climber*>(panel->AddComponent(new Climber(nullptr))));
  }
  harness.application().setStatus(TApplication::APP_RUNNING);
  harness.module().draw();
  const long before = allocations;
  for (int i = 0; i < 40; ++i) {
    clock.advance(16);
    EXPECT_EQ(0, harness.module().draw());
    harness.module().mainLogic();
  }
  EXPECT_EQ(before, allocations);
  for (const Climber* climber : climbers) EXPECT_EQ(41, climber->turns);
}

}  // namespace
