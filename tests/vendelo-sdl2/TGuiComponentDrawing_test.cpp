// What components look like.
#include "tests/support/Golden.h"
#include "tests/support/WidgetHarness.h"
#include "tests/vendelo-sdl2/TGuiComponentFixture.h"

using namespace guitest;

namespace {

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
