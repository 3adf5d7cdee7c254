// Worlds live through the same frames: one draws all of each, another what changes, a third one as it comes. Their
// pictures are the same, pixel for pixel, after each frame.
#include "vendelo-sdl2/TFramePicture.h"

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "vendelo-sdl2/Drawing.h"
#include "vendelo-sdl2/PictureFormat.h"
#include "vendelo-sdl2/TRenderGuard.h"
#include "vendelo-sdl2/TTexturePtr.h"
#include "vendelo-sdl2/TextureContent.h"

using namespace vendelo_sdl2;

static int stretched = 0;

// Linked in front of SDL's.
extern "C" int SDL_SoftStretchLinear(SDL_Surface* from, const SDL_Rect* part, SDL_Surface* to,
                                     const SDL_Rect* place) {
  static const auto sdl =
    reinterpret_cast<decltype(&SDL_SoftStretchLinear)>(dlsym(RTLD_NEXT, "SDL_SoftStretchLinear"));
  ++stretched;
  return sdl(from, part, to, place);
}

namespace {

constexpr int kWidth = 320, kHeight = 200;

enum class Way { PLAIN, CHANGES, AS_IT_COMES };

class World {
 public:
  // Every third one draws onto its window, the others into a back buffer.
  World(unsigned seed, Way way, Uint32 format) : mRandom(seed), mWay(way) {
    if (seed % 3 == 0) {
      mWindow = SDL_CreateWindow("", 0, 0, kWidth, kHeight, SDL_WINDOW_HIDDEN);
      mpRenderer = SDL_CreateRenderer(mWindow, -1, SDL_RENDERER_SOFTWARE);
    } else {
      mSurface = SDL_CreateRGBSurfaceWithFormat(0, kWidth, kHeight, 32, format);
      mpRenderer = SDL_CreateSoftwareRenderer(mSurface);
    }
    SDL_SetRenderDrawBlendMode(mpRenderer, SDL_BLENDMODE_BLEND);
    SDL_SetRenderDrawColor(mpRenderer, 0, 0, 0, 0);
    if (seed % 3 != 0)
      mBack.reset(SDL_CreateTexture(mpRenderer, format, SDL_TEXTUREACCESS_TARGET, kWidth, kHeight));
    SDL_SetRenderTarget(mpRenderer, mBack.get());
    for (int i = 0; i < 8; ++i) mPictures.push_back(picture(number(4, 120), number(4, 90), i < 3));
    mPictures.push_back(picture(kWidth, kHeight, true));
    for (TTexturePtr& layer : mLayers) {
      layer.reset(SDL_CreateTexture(mpRenderer, SDL_PIXELFORMAT_RGBA8888, SDL_TEXTUREACCESS_TARGET, 60, 40));
      SDL_SetTextureBlendMode(layer.get(), SDL_BLENDMODE_BLEND);
    }
    for (int i = 0; i < 14; ++i) mItems.push_back(item());
  }
  ~World() {
    mPicture.end();
    mPictures.clear();
    for (TTexturePtr& layer : mLayers) layer.reset();
    mBack.reset();
    SDL_DestroyRenderer(mpRenderer);
    SDL_FreeSurface(mSurface);
    if (mWindow) SDL_DestroyWindow(mWindow);
  }

  // Something happens, or nothing, and a frame is drawn. The result is its pixels.
  std::vector<Uint32> frame() {
    for (int i = number(0, 3); i > 0; --i) happen();
    const bool whole = number(0, 40) == 0;
    if (mWay == Way::PLAIN)
      SDL_RenderClear(mpRenderer);
    else
      mPicture.begin(mpRenderer, mBack.get(), mWay == Way::AS_IT_COMES);
    drawItems();
    if (mWay != Way::PLAIN) {
      const TDirtyRects& changed = mPicture.finish(whole);
      for (const SDL_Rect& rect : changed.rects()) mPixelsDrawn += rect.w * rect.h;
      mUntouched += changed.rects().empty();
    }
    EXPECT_EQ(mBack.get(), SDL_GetRenderTarget(mpRenderer));
    std::vector<Uint32> pixels(kWidth * kHeight);
    SDL_RenderReadPixels(mpRenderer, nullptr, SDL_PIXELFORMAT_RGB888, pixels.data(), kWidth * 4);
    for (Uint32& pixel : pixels) pixel &= 0xffffff;
    return pixels;
  }
  long pixelsDrawn() const { return mPixelsDrawn; }
  int framesWithoutAChange() const { return mUntouched; }

 private:
  struct Item {
    enum Kind { PICTURE, TURNED, LAYER, STALE_LAYER, NESTED_LAYER, TWICE, PASSING } kind;
    size_t which;
    SDL_Rect source, destination;
    bool hasSource;
    double angle;
    SDL_RendererFlip flip;
    Uint8 alpha, red;
    SDL_BlendMode blend;
    int phase;
  };

  int number(int least, int most) {
    return least + static_cast<int>(mRandom() % static_cast<unsigned>(most - least + 1));
  }

  TTexturePtr picture(int w, int h, bool opaque) {
    // Of those that are opaque some have no alpha at all.
    const Uint32 withAlpha = number(0, 1) ? SDL_PIXELFORMAT_ARGB8888 : SDL_PIXELFORMAT_ABGR8888;
    const Uint32 format = opaque && number(0, 1) ? Uint32{SDL_PIXELFORMAT_RGB888} : withAlpha;
    SDL_Surface* surface = SDL_CreateRGBSurfaceWithFormat(0, w, h, 32, format);
    const Uint32 base = mRandom();
    // Often without ink in its first and last rows.
    TInk ink{0, h};
    if (!opaque && number(0, 1)) ink = {number(0, h), number(0, h)};
    for (int y = 0; y < h; ++y)
      for (int x = 0; x < w; ++x) {
        const Uint32 mix = base * static_cast<Uint32>(x * 7 + y * 13 + 5);
        auto* row = reinterpret_cast<Uint32*>(static_cast<Uint8*>(surface->pixels) + y * surface->pitch);
        row[x] = opaque ? mix | 0xff000000u : y >= ink.top && y < ink.end ? mix : mix & 0xffffffu;
      }
    TTexturePtr texture = MyUtils::TextureOf(mpRenderer, surface);
    SDL_FreeSurface(surface);
    SDL_SetTextureBlendMode(texture.get(), SDL_BLENDMODE_BLEND);
    if (number(0, 1)) SDL_SetTextureScaleMode(texture.get(), SDL_ScaleModeLinear);
    setContent(texture.get(), freshContent() | (opaque ? kOpaqueBit : inkBits(ink, h)));
    return texture;
  }

  Item item() {
    constexpr SDL_BlendMode modes[] = {SDL_BLENDMODE_BLEND, SDL_BLENDMODE_BLEND, SDL_BLENDMODE_BLEND,
                                       SDL_BLENDMODE_ADD,   SDL_BLENDMODE_MOD,   SDL_BLENDMODE_NONE};
    Item made{};
    made.kind = static_cast<Item::Kind>(std::max(0, number(-5, 6)));
    made.which = static_cast<size_t>(number(0, 8));
    made.source = {number(-15, 20), number(-15, 20), number(1, 60), number(1, 40)};  // also beyond the picture
    made.hasSource = number(0, 2) == 0;
    made.destination = {number(-40, kWidth), number(-40, kHeight), number(1, 120), number(1, 80)};
    if (number(0, 1)) {  // unscaled
      const SDL_Rect size = sizeOf(mPictures[made.which].get());
      made.destination.w = made.hasSource ? made.source.w : size.w;
      made.destination.h = made.hasSource ? made.source.h : size.h;
    }
    if (number(0, 9) == 0) made.destination = {0, 0, kWidth, kHeight};
    if (number(0, 9) == 0) made.destination = {number(0, 80), number(0, 50), 240, 150};
    made.angle = number(0, 3) * 30.0 + (number(0, 3) == 0 ? 360.0 : 0.0);
    made.flip = static_cast<SDL_RendererFlip>(number(0, 3));
    made.alpha = number(0, 2) ? 255 : static_cast<Uint8>(number(0, 2) ? number(0, 255) : 0);
    made.red = number(0, 3) ? 255 : static_cast<Uint8>(number(0, 255));
    made.blend = modes[number(0, 5)];
    made.phase = number(0, 11);
    return made;
  }

  static SDL_Rect sizeOf(SDL_Texture* texture) {
    SDL_Rect size{0, 0, 0, 0};
    SDL_QueryTexture(texture, nullptr, nullptr, &size.w, &size.h);
    return size;
  }

  void happen() {
    Item& one = mItems[static_cast<size_t>(number(0, static_cast<int>(mItems.size()) - 1))];
    switch (number(0, 9)) {
      case 0:
        one = item();
        break;
      case 1:
        one.destination.x += number(-5, 5);
        break;
      case 2:
        one.alpha = static_cast<Uint8>(number(0, 255));
        break;
      case 3:
        ++one.phase;
        break;
      case 4:
        mItems.push_back(item());
        break;
      case 5:
        if (mItems.size() > 6) mItems.erase(mItems.begin() + number(0, 5));
        break;
      case 6:
        std::swap(one, mItems.front());
        break;
      case 7:
        one.source.x += number(0, 3);
        break;
      case 8:
        mPictures[one.which] = picture(number(4, 120), number(4, 90), number(0, 1));
        break;
      default:
        ++mPhase;
        break;
    }
  }

  void put(SDL_Texture* texture, const Item& item) const {
    SDL_SetTextureAlphaMod(texture, item.alpha);
    SDL_SetTextureColorMod(texture, item.red, 255, 255);
    SDL_SetTextureBlendMode(texture, item.blend);
    drawing::Copy(mpRenderer, texture, item.hasSource ? &item.source : nullptr, &item.destination);
  }

  void drawInto(SDL_Texture* layer, const Item& item, bool cleared, bool nested) {
    TRenderGuard guard(mpRenderer);
    guard.target(layer);
    if (cleared) guard.clear(0, 0, 0, static_cast<Uint8>(item.phase % 4 == 3 ? 90 : 0));
    if (item.phase % 3 == 1) guard.origin(item.phase % 7, -item.phase % 5);
    const SDL_Rect place{item.phase % 50, 3, 20, 20};
    drawing::Copy(mpRenderer, mPictures[item.which].get(), nullptr, &place);
    if (!nested) return;
    drawInto(mLayers[3].get(), item, true, false);
    const SDL_Rect second{5, 10, 30, 20};
    drawing::Copy(mpRenderer, mLayers[3].get(), nullptr, &second);
  }

  void drawItems() {
    size_t used = 0;
    for (const Item& item : mItems) {
      SDL_Texture* const layer = mLayers[used % 3].get();
      switch (item.kind) {
        case Item::PICTURE:
          put(mPictures[item.which].get(), item);
          break;
        case Item::TURNED:
          SDL_SetTextureAlphaMod(mPictures[item.which].get(), item.alpha);
          drawing::CopyEx(mpRenderer, mPictures[item.which].get(), nullptr, &item.destination, item.angle, nullptr,
                          item.flip);
          break;
        case Item::LAYER:
        case Item::STALE_LAYER:
        case Item::NESTED_LAYER:
          ++used;
          drawInto(layer, item, item.kind != Item::STALE_LAYER, item.kind == Item::NESTED_LAYER);
          put(layer, item);
          break;
        case Item::TWICE:
          ++used;
          put(layer, item);
          drawInto(layer, item, true, false);
          put(layer, item);
          break;
        case Item::PASSING: {
          const TTexturePtr passing = picture(30, 20, false);
          put(passing.get(), item);
          break;
        }
      }
    }
  }

  std::mt19937 mRandom;
  const Way mWay;
  SDL_Surface* mSurface = nullptr;
  SDL_Window* mWindow = nullptr;
  SDL_Renderer* mpRenderer = nullptr;
  TTexturePtr mBack;
  std::vector<TTexturePtr> mPictures;
  std::array<TTexturePtr, 4> mLayers;
  std::vector<Item> mItems;
  TFramePicture mPicture;
  int mPhase = 0;
  long mPixelsDrawn = 0;
  int mUntouched = 0;
};

int framesOf(const char* variable, int otherwise) {
  const char* const text = std::getenv(variable);
  return text ? std::atoi(text) : otherwise;
}

TEST(FramePicture, IsTheSameAsIfAllOfItHadBeenDrawn) {
  setenv("SDL_VIDEODRIVER", "dummy", 1);
  ASSERT_EQ(0, SDL_InitSubSystem(SDL_INIT_VIDEO));
  const int worlds = framesOf("FRAME_PICTURE_WORLDS", 24);
  int untouched = 0;
  long drawn = 0;
  for (int seed = 1; seed <= worlds; ++seed) {
    const Uint32 format = seed % 2 ? SDL_PIXELFORMAT_RGB888 : SDL_PIXELFORMAT_ARGB8888;
    const auto number = static_cast<unsigned>(seed);
    World all(number, Way::PLAIN, format), changes(number, Way::CHANGES, format),
      stream(number, Way::AS_IT_COMES, format);
    for (int i = 0; i < 60; ++i) {
      const auto wanted = all.frame();
      for (World* other : {&changes, &stream}) {
        const auto shown = other->frame();
        if (wanted == shown) continue;
        const auto at = std::mismatch(wanted.begin(), wanted.end(), shown.begin()).first - wanted.begin();
        FAIL() << "world " << seed << ", frame " << i << (other == &stream ? " as it comes" : "") << ", from pixel "
               << at % kWidth << "," << at / kWidth;
      }
    }
    untouched += changes.framesWithoutAChange();
    drawn += changes.pixelsDrawn();
  }
  EXPECT_GT(untouched, 0);
  EXPECT_LT(drawn, 60L * worlds * kWidth * kHeight * 99 / 100);
}

// A picture that is scaled to the whole size, at one alpha after the other.
class Faded : public testing::Test {
 protected:
  Faded() : mPaper(SDL_CreateRGBSurfaceWithFormat(0, kWidth, kHeight, 32, SDL_PIXELFORMAT_RGB888)) {
    mpRenderer = SDL_CreateSoftwareRenderer(mPaper.get());
    const MyUtils::TSurfacePtr small(SDL_CreateRGBSurfaceWithFormat(0, 160, 100, 32, SDL_PIXELFORMAT_ABGR8888));
    SDL_FillRect(small.get(), nullptr, 0x80402010);
    mPicture = MyUtils::TextureOf(mpRenderer, small.get());
    SDL_SetTextureBlendMode(mPicture.get(), SDL_BLENDMODE_BLEND);
    SDL_SetTextureScaleMode(mPicture.get(), SDL_ScaleModeLinear);
    stretched = 0;
  }
  ~Faded() override {
    mFrame.end();
    mPicture.reset();
    SDL_DestroyRenderer(mpRenderer);
  }

  // Not drawn at all below 0. The result is how often something has been scaled for it.
  int frame(int alpha) {
    const int before = stretched;
    mFrame.begin(mpRenderer, nullptr);
    SDL_SetTextureAlphaMod(mPicture.get(), static_cast<Uint8>(std::max(alpha, 0)));
    const SDL_Rect all{0, 0, kWidth, kHeight};
    if (alpha >= 0) drawing::Copy(mpRenderer, mPicture.get(), nullptr, &all);
    mFrame.finish(false);
    return stretched - before;
  }

  MyUtils::TSurfacePtr mPaper;
  SDL_Renderer* mpRenderer = nullptr;
  TTexturePtr mPicture;
  TFramePicture mFrame;
};

TEST_F(Faded, IsScaledOnceAndBeforeItIsSeen) {
  for (int i = 0; i < 400; ++i) EXPECT_EQ(0, frame(-1));
  EXPECT_EQ(1, frame(0));
  for (int alpha = 1; alpha < 256; ++alpha) ASSERT_EQ(0, frame(alpha)) << alpha;
  for (int alpha = 254; alpha >= 0; --alpha) ASSERT_EQ(0, frame(alpha)) << alpha;
}

TEST_F(Faded, IsScaledWhenItIsSeenAtOnce) {
  EXPECT_EQ(1, frame(200));
  EXPECT_EQ(0, frame(201));
}

TEST_F(Faded, StaysScaledForAWhile) {
  EXPECT_EQ(1, frame(255));
  for (int i = 0; i < 200; ++i) EXPECT_EQ(0, frame(-1));
  EXPECT_EQ(0, frame(255));
  for (int i = 0; i < 400; ++i) EXPECT_EQ(0, frame(-1));
  EXPECT_EQ(1, frame(255));
}

TEST_F(Faded, ThatIsNeverSeenIsScaledNoMoreThanOnce) {
  EXPECT_EQ(1, frame(0));
  for (int i = 0; i < 1000; ++i) ASSERT_EQ(0, frame(0)) << i;
  EXPECT_EQ(1, frame(1));
}

TEST_F(Faded, IsScaledAnewAfterEverythingWasForgotten) {
  EXPECT_EQ(1, frame(100));
  mFrame.forget();
  EXPECT_EQ(1, frame(101));
}

// There is room for one of them to be kept; the other one is scaled by SDL.
TEST_F(Faded, BesideAnotherOneOfItsKind) {
  const MyUtils::TSurfacePtr small(SDL_CreateRGBSurfaceWithFormat(0, 100, 100, 32, SDL_PIXELFORMAT_ABGR8888));
  SDL_FillRect(small.get(), nullptr, 0xc00080ff);
  const SDL_Rect half{0, 0, 50, 100};
  SDL_FillRect(small.get(), &half, 0x30ff8000);
  const TTexturePtr other = MyUtils::TextureOf(mpRenderer, small.get());
  SDL_SetTextureBlendMode(other.get(), SDL_BLENDMODE_BLEND);
  SDL_SetTextureScaleMode(other.get(), SDL_ScaleModeLinear);
  SDL_SetTextureAlphaMod(mPicture.get(), 255);
  const SDL_Rect all{0, 0, kWidth, kHeight};
  const auto pixels = [&] {
    SDL_RenderFlush(mpRenderer);
    const auto* first = static_cast<const Uint32*>(mPaper->pixels);
    std::vector<Uint32> seen(first, first + kWidth * kHeight);
    for (Uint32& pixel : seen) pixel &= 0xffffff;
    return seen;
  };
  SDL_RenderClear(mpRenderer);
  SDL_RenderCopy(mpRenderer, mPicture.get(), nullptr, &all);
  SDL_RenderCopy(mpRenderer, other.get(), nullptr, &all);
  const auto due = pixels();
  for (int i = 0; i < 2; ++i) {
    mFrame.begin(mpRenderer, nullptr);
    drawing::Copy(mpRenderer, mPicture.get(), nullptr, &all);
    drawing::Copy(mpRenderer, other.get(), nullptr, &all);
    mFrame.finish(i == 0);
    EXPECT_TRUE(due == pixels()) << i;
  }
}

// A ground of a few pixels: what changes on it is all that is drawn.
TEST_F(Faded, OnASmallGroundOnlyTheChangeIsDrawn) {
  const MyUtils::TSurfacePtr few(SDL_CreateRGBSurfaceWithFormat(0, 16, 16, 32, SDL_PIXELFORMAT_RGB888));
  const TTexturePtr ground = MyUtils::TextureOf(mpRenderer, few.get());
  SDL_SetTextureBlendMode(ground.get(), SDL_BLENDMODE_BLEND);
  SDL_SetTextureScaleMode(ground.get(), SDL_ScaleModeLinear);
  const SDL_Rect all{0, 0, kWidth, kHeight};
  for (int x = 0; x < 3; ++x) {
    mFrame.begin(mpRenderer, nullptr);
    drawing::Copy(mpRenderer, ground.get(), nullptr, &all);
    const SDL_Rect part{0, 0, 10, 10}, place{100 + x, 20, 10, 10};
    SDL_SetTextureAlphaMod(mPicture.get(), 255);
    drawing::Copy(mpRenderer, mPicture.get(), &part, &place);
    const TDirtyRects& changed = mFrame.finish(false);
    if (x == 0) continue;
    EXPECT_FALSE(changed.isWhole()) << x;
    EXPECT_EQ(1u, changed.rects().size()) << x;
  }
}

}  // namespace
