// A ticker whose children stay inside of their rectangles draws each of them once and moves it then. The picture is
// that of the whole strip drawn anew in each frame.
#include <dlfcn.h>
#include <string>
#include <vector>

#include "tests/components/TickerFixture.h"
#include "vendelo-sdl2/Drawing.h"
#include "vendelo-sdl2/TFramePicture.h"

using namespace tickertest;

namespace {

SDL_Texture* pictureNow = nullptr;
int intoPicture = 0, intoOthers = 0;

}  // namespace

// In front of SDL's: copies are counted by where they go.
extern "C" int SDL_RenderCopy(SDL_Renderer* renderer, SDL_Texture* texture, const SDL_Rect* source,
                              const SDL_Rect* destination) {
  static const auto next = reinterpret_cast<decltype(&SDL_RenderCopy)>(dlsym(RTLD_NEXT, "SDL_RenderCopy"));
  ++(SDL_GetRenderTarget(renderer) == pictureNow ? intoPicture : intoOthers);
  return next(renderer, texture, source, destination);
}

namespace {

struct Inner : Child {
  using Child::Child;
  void draw() override {
    Child::draw();
    if (!reachesOut) return;
    const SDL_Rect beside{getX() - 12, getY() + 5, getWidth(), getHeight()};
    drawing::Copy(GetRenderer(), GetTargetTexture(), nullptr, &beside);
  }
  bool staysInside() const override { return inside; }
  bool inside = true;
  bool reachesOut = false;
};

class Slides : public Scrolling {
 protected:
  // No two pixels are alike.
  SDL_Texture* shaded(int w, int h) {
    std::vector<Uint32> pixels;
    for (int y = 0; y < h; ++y)
      for (int x = 0; x < w; ++x)
        pixels.push_back(0xff000000u | static_cast<Uint32>(x) << 8 | static_cast<Uint32>(y * 3));
    SDL_Texture* texture = solid(w, h, {0, 0, 0, 255});
    SDL_UpdateTexture(texture, nullptr, pixels.data(), w * 4);
    return texture;
  }

  // Some of them translucent.
  std::vector<Inner*> fill(Ticker& to) {
    std::vector<Inner*> all;
    for (int i = 0; i < 3; ++i) {
      auto* child = new Inner(90 + 70 * i, 20 + 30 * i, std::to_string(i).c_str());
      SDL_Texture* colours = shaded(90 + 70 * i, 20 + 30 * i);
      SDL_SetTextureBlendMode(colours, SDL_BLENDMODE_BLEND);
      child->SetTargetTexture(colours);
      child->setAlpha(255 - 60 * i);
      to.AddContent(child, -1, static_cast<TScrollingComponent::ContentAlign>(i));
      all.push_back(child);
    }
    to.SetScrollSpeedFixed(-130);
    to.SetSpacingFixed(45);
    to.SetPadding(-20);
    return all;
  }

  std::vector<Uint32> drawn(Ticker& which) {
    clear(30, 60, 90);
    which.draw();
    std::vector<Uint32> pixels(kScreenW * kScreenH);
    SDL_RenderReadPixels(renderer, nullptr, SDL_PIXELFORMAT_RGB888, pixels.data(), kScreenW * 4);
    return pixels;
  }

  // Never has slides, whatever its children say: the texture is not its own.
  Slides() {
    SDL_Texture* other = SDL_CreateTexture(renderer, SDL_PIXELFORMAT_ABGR8888, SDL_TEXTUREACCESS_TARGET, 400, 60);
    SDL_SetTextureBlendMode(other, SDL_BLENDMODE_BLEND);
    textures.push_back(other);
    strip.SetTargetTexture(other);
  }

  Ticker strip{0, 50, 400, 60};
};

}  // namespace

TEST_F(Slides, ShowWhatTheStripShows) {
  fill(ticker);
  fill(strip);
  for (const int alpha : {255, 130}) {
    ticker.setAlpha(alpha);
    strip.setAlpha(alpha);
    for (int i = 0; i < 60; ++i) {
      clock.advance(57);
      ASSERT_EQ(drawn(strip), drawn(ticker)) << i << ", alpha " << alpha;
    }
  }
}

TEST_F(Slides, TellEachChildItsPlaceInTheStrip) {
  const auto children = fill(ticker), others = fill(strip);
  for (int i = 0; i < 40; ++i) {
    clock.advance(91);
    ticker.draw();
    strip.draw();
  }
  for (size_t i = 0; i < children.size(); ++i) EXPECT_EQ(others[i]->xs(), children[i]->xs()) << i;
}

// The strip's way is the one for whatever lies over something else or reaches out of its rectangle.
TEST_F(Slides, AreForChildrenThatLieApartOnly) {
  const auto children = fill(ticker), others = fill(strip);
  const auto same = [&](const char* what) {
    clock.advance(400);
    EXPECT_EQ(drawn(strip), drawn(ticker)) << what;
  };
  for (Ticker* each : {&ticker, &strip}) each->SetSpacingFixed(-35);
  same("one over the other");
  for (Ticker* each : {&ticker, &strip}) each->SetSpacingFixed(45);
  children[1]->inside = false;
  children[1]->reachesOut = others[1]->reachesOut = true;
  same("one that reaches out");
  children[1]->inside = true;
  children[1]->reachesOut = others[1]->reachesOut = false;
  for (Ticker* each : {&ticker, &strip}) each->setBlendMode(0);
  same("a strip that hides what is behind it");
  for (Ticker* each : {&ticker, &strip}) each->setBlendMode(1);
  for (Ticker* each : {&ticker, &strip}) each->setWidth(300);
  same("a strip that is scaled");
}

// In a frame of a line that moves only the copies onto the screen are made.
TEST_F(Slides, AreDrawnOnce) {
  const auto children = fill(ticker);
  TTexturePtr picture(SDL_CreateTexture(renderer, SDL_PIXELFORMAT_RGB888, SDL_TEXTUREACCESS_TARGET, 400, 200));
  TFramePicture frame;
  const auto copiesInto = [&] {
    clock.advance(100);
    intoPicture = intoOthers = 0;
    pictureNow = picture.get();
    frame.begin(renderer, picture.get());
    ticker.draw();
    frame.finish(false);
    return intoOthers;
  };
  EXPECT_EQ(3, copiesInto()) << "all of them stand in the strip";
  int moved = 0, again = 0;
  for (int i = 0; i < 40; ++i) {
    again += copiesInto();
    moved += intoPicture;
  }
  EXPECT_EQ(0, again);
  EXPECT_GT(moved, 40);
  for (Inner* child : children) child->setAlpha(77);
  EXPECT_GT(copiesInto(), 0) << "they look otherwise now";
  frame.end();
  SDL_SetRenderTarget(renderer, nullptr);
}
