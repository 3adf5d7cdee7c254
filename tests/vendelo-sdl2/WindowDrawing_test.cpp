// Pictures drawn onto a window of SDL's dummy driver, beside the same calls to SDL; and which ones are left to
// it.
#include "vendelo-sdl2/WindowDrawing.h"

#include <SDL.h>
#include <gtest/gtest.h>
#include <cstdlib>
#include <functional>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "vendelo-sdl2/Drawing.h"
#include "vendelo-sdl2/PictureFormat.h"
#include "vendelo-sdl2/TTexturePtr.h"
#include "vendelo-sdl2/TextureContent.h"

using namespace vendelo_sdl2;
using MyUtils::TSurfacePtr;

namespace {

constexpr int kWidth = 400, kHeight = 300;
using TPixels = std::vector<Uint32>;

class WindowDrawing : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    setenv("SDL_VIDEODRIVER", "dummy", 1);
    ASSERT_EQ(0, SDL_InitSubSystem(SDL_INIT_VIDEO));
  }
  WindowDrawing() {
    mpWindow = SDL_CreateWindow("", 0, 0, kWidth, kHeight, SDL_WINDOW_HIDDEN);
    mpRenderer = SDL_CreateRenderer(mpWindow, -1, SDL_RENDERER_SOFTWARE);
    const TSurfacePtr below = picture(SDL_PIXELFORMAT_RGB888, kWidth, kHeight);
    mBelow = MyUtils::TextureOf(mpRenderer, below.get());
  }
  ~WindowDrawing() override {
    mBelow.reset();
    SDL_DestroyRenderer(mpRenderer);
    SDL_DestroyWindow(mpWindow);
  }

  int number(int least, int most) {
    return least + static_cast<int>(mRandom() % static_cast<unsigned>(most - least + 1));
  }

  // A third of its rows have no ink.
  TSurfacePtr picture(Uint32 format, int w, int h) {
    TSurfacePtr made(SDL_CreateRGBSurfaceWithFormat(0, w, h, 32, format));
    for (int y = 0; y < h; ++y)
      for (int x = 0; x < w; ++x) {
        auto* row = reinterpret_cast<Uint32*>(static_cast<Uint8*>(made->pixels) + y * made->pitch);
        row[x] = static_cast<Uint32>(mRandom()) & (y % 3 == 0 ? 0xffffffu : 0xffffffffu);
      }
    SDL_SetSurfaceBlendMode(made.get(), SDL_BLENDMODE_BLEND);
    return made;
  }

  TTexturePtr texture(Uint32 format, int w, int h) {
    const TSurfacePtr made = picture(format, w, h);
    return MyUtils::TextureOf(mpRenderer, made.get());
  }

  static TDrawCommand command(SDL_Texture* texture, int x, int y) {
    TDrawCommand c;
    c.texture = texture;
    c.content = contentOf(texture);
    SDL_QueryTexture(texture, nullptr, nullptr, &c.source.w, &c.source.h);
    c.destination = {x, y, c.source.w, c.source.h};
    c.colour = {255, 255, 255, 180};
    c.blend = SDL_BLENDMODE_BLEND;
    return c;
  }

  // What the window shows after it has been covered with a picture and this has been done.
  TPixels shown(const std::function<void()>& what) {
    SDL_RenderSetClipRect(mpRenderer, nullptr);
    SDL_SetTextureBlendMode(mBelow.get(), SDL_BLENDMODE_NONE);
    SDL_RenderCopy(mpRenderer, mBelow.get(), nullptr, nullptr);
    what();
    SDL_RenderSetClipRect(mpRenderer, nullptr);
    TPixels pixels(static_cast<size_t>(kWidth) * kHeight);
    EXPECT_EQ(0, SDL_RenderReadPixels(mpRenderer, nullptr, SDL_PIXELFORMAT_RGB888, pixels.data(), kWidth * 4));
    for (Uint32& pixel : pixels) pixel &= 0xffffff;
    return pixels;
  }

  std::mt19937 mRandom{11};
  SDL_Window* mpWindow = nullptr;
  SDL_Renderer* mpRenderer = nullptr;
  TTexturePtr mBelow;
};

TEST_F(WindowDrawing, IsWhatSdlDraws) {
  int ours = 0;
  for (int i = 0; i < 300; ++i) {
    constexpr Uint32 formats[] = {SDL_PIXELFORMAT_ABGR8888, SDL_PIXELFORMAT_ARGB8888, SDL_PIXELFORMAT_RGB888};
    const Uint32 format = formats[i % 3];
    const TTexturePtr drawn = texture(format, number(90, 160), number(70, 120));
    TDrawCommand c = command(drawn.get(), number(-60, kWidth - 20), number(-60, kHeight - 20));
    c.colour.a = static_cast<Uint8>(number(0, 3) ? number(0, 255) : 255);
    if (number(0, 1)) c.source = {number(0, 20), number(0, 10), c.source.w - 20, c.source.h - 10};
    c.destination.w = c.source.w;
    c.destination.h = c.source.h;
    if (number(0, 3) == 0) c.blend = SDL_BLENDMODE_NONE;
    const bool isCut = number(0, 1);
    const SDL_Rect clip{number(0, kWidth), number(0, kHeight), number(1, 200), number(1, 200)};
    const auto cut = [&] {
      if (isCut) SDL_RenderSetClipRect(mpRenderer, &clip);
    };
    const TPixels due = shown([&] {
      cut();
      issueCopy(mpRenderer, c);
    });
    bool isOurs = false;
    const TPixels is = shown([&] {
      cut();
      isOurs = drawOntoWindow(mpRenderer, c);
      if (!isOurs) issueCopy(mpRenderer, c);
    });
    ours += isOurs;
    const bool isWhole = c.colour.a == 255, isSwapped = format == SDL_PIXELFORMAT_ABGR8888,
               isOpaque = format == SDL_PIXELFORMAT_RGB888;
    EXPECT_EQ(isOurs, c.blend == SDL_BLENDMODE_NONE ? isWhole && !isSwapped : !isWhole || isSwapped || isOpaque)
      << i;
    ASSERT_TRUE(due == is) << i << ", " << SDL_GetPixelFormatName(format) << " at " << int{c.colour.a};
  }
  EXPECT_GT(ours, 150);
}

TEST_F(WindowDrawing, StandsBetweenWhatIsDrawnBeforeAndAfterIt) {
  const TTexturePtr one = texture(SDL_PIXELFORMAT_ABGR8888, 200, 150),
                    other = texture(SDL_PIXELFORMAT_RGB888, 90, 80);
  const TDrawCommand first = command(other.get(), 60, 60), second = command(one.get(), 50, 50),
                     third = command(other.get(), 100, 90);
  const auto drawn = [&](bool byUs) {
    return shown([&] {
      issueCopy(mpRenderer, first);
      if (byUs)
        EXPECT_TRUE(drawOntoWindow(mpRenderer, second));
      else
        issueCopy(mpRenderer, second);
      issueCopy(mpRenderer, third);
    });
  };
  EXPECT_TRUE(drawn(false) == drawn(true));
}

TEST_F(WindowDrawing, LeavesToSdlWhatItIsNotFor) {
  const TTexturePtr large = texture(SDL_PIXELFORMAT_ABGR8888, 100, 100),
                    small = texture(SDL_PIXELFORMAT_ABGR8888, 63, 64),
                    whole = texture(SDL_PIXELFORMAT_ARGB8888, 100, 100);
  const TTexturePtr layer(
    drawing::Create(mpRenderer, SDL_PIXELFORMAT_ABGR8888, SDL_TEXTUREACCESS_TARGET, 100, 100));
  const TSurfacePtr odd = picture(SDL_PIXELFORMAT_RGBA8888, 100, 100);
  const TTexturePtr other = MyUtils::TextureOf(mpRenderer, odd.get());
  const TDrawCommand usual = command(large.get(), 10, 10);
  using TChange = std::function<void(TDrawCommand&)>;
  const std::vector<std::pair<std::string, TChange>> cases = {
    {"turned", [](TDrawCommand& c) { c.angle = 90.0; }},
    {"turned over", [](TDrawCommand& c) { c.flip = SDL_FLIP_VERTICAL; }},
    {"scaled", [](TDrawCommand& c) { c.destination.w += 1; }},
    {"coloured", [](TDrawCommand& c) { c.colour.g = 254; }},
    {"added", [](TDrawCommand& c) { c.blend = SDL_BLENDMODE_ADD; }},
    {"copied with an alpha", [](TDrawCommand& c) { c.blend = SDL_BLENDMODE_NONE; }},
    {"copied from another order",
     [](TDrawCommand& c) {
       c.blend = SDL_BLENDMODE_NONE;
       c.colour.a = 255;
     }},
    {"small", [&](TDrawCommand& c) { c = command(small.get(), 0, 0); }},
    {"a part that is small", [](TDrawCommand& c) { c.source.w = c.destination.w = 40; }},
    {"a layer", [&](TDrawCommand& c) { c = command(layer.get(), 0, 0); }},
    {"another format", [&](TDrawCommand& c) { c = command(other.get(), 0, 0); }},
    {"ARGB8888 that does not fade",
     [&](TDrawCommand& c) {
       c = command(whole.get(), 0, 0);
       c.colour.a = 255;
     }},
    {"opaque, from another order",
     [](TDrawCommand& c) {
       c.content |= kOpaqueBit;
       c.colour.a = 255;
     }},
    {"a clear", [](TDrawCommand& c) { c.texture = nullptr; }},
  };
  const TPixels untouched = shown([] {});
  for (const auto& [name, change] : cases) {
    TDrawCommand c = usual;
    change(c);
    EXPECT_TRUE(untouched == shown([&, &c = c] { EXPECT_FALSE(drawOntoWindow(mpRenderer, c)); })) << name;
  }
  EXPECT_TRUE(untouched == shown([&] {
                SDL_SetRenderTarget(mpRenderer, layer.get());
                EXPECT_FALSE(drawOntoWindow(mpRenderer, usual)) << "into a layer";
                SDL_SetRenderTarget(mpRenderer, nullptr);
              }));
  EXPECT_FALSE(untouched == shown([&] { EXPECT_TRUE(drawOntoWindow(mpRenderer, usual)); }));
}

TEST_F(WindowDrawing, CopiesWhatLetsNothingThrough) {
  const TTexturePtr opaque = texture(SDL_PIXELFORMAT_RGB888, 200, 150);
  TDrawCommand c = command(opaque.get(), 30, 40);
  c.colour.a = 255;
  const TPixels due = shown([&] { issueCopy(mpRenderer, c); });
  ASSERT_TRUE(c.showsNothingBehind());
  EXPECT_TRUE(due == shown([&] { EXPECT_TRUE(drawOntoWindow(mpRenderer, c)); }));
}

// A renderer without a window draws as SDL does.
TEST_F(WindowDrawing, LeavesToSdlWhatHasNoWindow) {
  const TSurfacePtr paper(SDL_CreateRGBSurfaceWithFormat(0, kWidth, kHeight, 32, SDL_PIXELFORMAT_RGB888));
  SDL_Renderer* const renderer = SDL_CreateSoftwareRenderer(paper.get());
  {
    const TSurfacePtr made = picture(SDL_PIXELFORMAT_ABGR8888, 100, 100);
    const TTexturePtr drawn = MyUtils::TextureOf(renderer, made.get());
    EXPECT_FALSE(drawOntoWindow(renderer, command(drawn.get(), 0, 0)));
  }
  SDL_DestroyRenderer(renderer);
}

}  // namespace
