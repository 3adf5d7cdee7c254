#include "vendelo-sdl2/TRenderGuard.h"

#include <gtest/gtest.h>

#include "tests/support/WidgetHarness.h"
#include "vendelo-sdl2/TTexturePtr.h"

using namespace vendelo_sdl2;

namespace {

class RenderGuard : public testing::Test {
 protected:
  TTexturePtr layer() {
    return TTexturePtr(SDL_CreateTexture(renderer, SDL_PIXELFORMAT_ARGB8888, SDL_TEXTUREACCESS_TARGET, 4, 4));
  }
  // 0xRRGGBBAA
  Uint32 colour() const {
    Uint8 r = 0, g = 0, b = 0, a = 0;
    SDL_GetRenderDrawColor(renderer, &r, &g, &b, &a);
    return Uint32{r} << 24 | Uint32{g} << 16 | Uint32{b} << 8 | a;
  }
  static SDL_BlendMode blendMode(const TTexturePtr& texture) {
    SDL_BlendMode mode = SDL_BLENDMODE_INVALID;
    SDL_GetTextureBlendMode(texture.get(), &mode);
    return mode;
  }

  WidgetHarness harness{8, 8};
  SDL_Renderer* renderer = harness.renderer();
};

}  // namespace

TEST_F(RenderGuard, PutsBackTargetColourAndBlendMode) {
  const TTexturePtr outer = layer(), inner = layer();
  SDL_SetRenderTarget(renderer, outer.get());
  SDL_SetRenderDrawColor(renderer, 1, 2, 3, 4);
  SDL_SetTextureBlendMode(inner.get(), SDL_BLENDMODE_ADD);
  {
    TRenderGuard guard(renderer);
    for (int i = 0; i < 2; ++i) {
      guard.target(inner.get());
      guard.colour(9, 9, 9, 9);
    }
    guard.blendMode(inner.get(), SDL_BLENDMODE_NONE);
    EXPECT_EQ(inner.get(), SDL_GetRenderTarget(renderer));
    EXPECT_EQ(0x09090909u, colour());
    EXPECT_EQ(SDL_BLENDMODE_NONE, blendMode(inner));
  }
  EXPECT_EQ(outer.get(), SDL_GetRenderTarget(renderer));
  EXPECT_EQ(0x01020304u, colour());
  EXPECT_EQ(SDL_BLENDMODE_ADD, blendMode(inner));
}

TEST_F(RenderGuard, GoesBackToTheWindow) {
  const TTexturePtr inner = layer();
  {
    TRenderGuard guard(renderer);
    guard.target(inner.get());
  }
  EXPECT_EQ(nullptr, SDL_GetRenderTarget(renderer));
}

TEST_F(RenderGuard, LeavesAloneWhatItWasNotAskedToChange) {
  const TTexturePtr inner = layer(), shown = layer();
  {
    TRenderGuard guard(renderer);
    guard.target(inner.get());
    SDL_SetRenderDrawColor(renderer, 255, 0, 0, 255);  // as the digits leave it
  }
  EXPECT_EQ(0xff0000ffu, colour());
  {
    TRenderGuard guard(renderer);
    guard.colour(9, 9, 9, 9);
    SDL_SetRenderTarget(renderer, shown.get());
  }
  EXPECT_EQ(shown.get(), SDL_GetRenderTarget(renderer));
}

TEST_F(RenderGuard, ClearsInAColourThatItDoesNotLeaveBehind) {
  const TTexturePtr inner = layer();
  SDL_SetRenderDrawColor(renderer, 1, 2, 3, 4);
  TRenderGuard guard(renderer);
  guard.target(inner.get());
  guard.clear(10, 20, 30, 40);
  EXPECT_EQ(0x01020304u, colour());
  Uint32 pixel = 0;
  const SDL_Rect corner{3, 3, 1, 1};
  SDL_RenderReadPixels(renderer, &corner, SDL_PIXELFORMAT_RGBA8888, &pixel, 4);
  EXPECT_EQ(0x0a141e28u, pixel);
}
