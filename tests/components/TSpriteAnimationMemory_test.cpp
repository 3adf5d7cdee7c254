// The texture memory that an animation of full-screen frames takes, counted in front of SDL.
#include <dlfcn.h>
#include <algorithm>
#include <map>
#include <memory>

#include "tests/components/SpriteFixture.h"

using namespace vendelo_sdl2;

namespace {

constexpr long kFullScreen = 1920L * 1080 * 4;

std::map<SDL_Texture*, long> living;
long bytes = 0, peak = 0, made = 0;
bool accelerated = false;  // what the renderer says of itself

template <class F>
F real(const char* name) {
  return reinterpret_cast<F>(dlsym(RTLD_NEXT, name));
}

SDL_Texture* counted(SDL_Texture* texture) {
  Uint32 format = 0;
  int w = 0, h = 0;
  if (!texture || SDL_QueryTexture(texture, &format, nullptr, &w, &h) != 0) return texture;
  bytes += living[texture] = static_cast<long>(w) * h * SDL_BYTESPERPIXEL(format);
  peak = std::max(peak, bytes);
  ++made;
  return texture;
}

// From here on textures count.
void begin() {
  living.clear();
  bytes = peak = made = 0;
}

}  // namespace

extern "C" {

int SDL_GetRendererInfo(SDL_Renderer* renderer, SDL_RendererInfo* info) {
  static const auto sdl = real<decltype(&SDL_GetRendererInfo)>("SDL_GetRendererInfo");
  const int result = sdl(renderer, info);
  if (accelerated) info->name = "opengl";
  return result;
}

SDL_Texture* SDL_CreateTexture(SDL_Renderer* renderer, Uint32 format, int access, int w, int h) {
  static const auto sdl = real<decltype(&SDL_CreateTexture)>("SDL_CreateTexture");
  return counted(sdl(renderer, format, access, w, h));
}

SDL_Texture* SDL_CreateTextureFromSurface(SDL_Renderer* renderer, SDL_Surface* surface) {
  static const auto sdl = real<decltype(&SDL_CreateTextureFromSurface)>("SDL_CreateTextureFromSurface");
  return counted(sdl(renderer, surface));
}

void SDL_DestroyTexture(SDL_Texture* texture) {
  static const auto sdl = real<decltype(&SDL_DestroyTexture)>("SDL_DestroyTexture");
  if (const auto found = living.find(texture); found != living.end()) {
    bytes -= found->second;
    living.erase(found);
  }
  sdl(texture);
}

}  // extern "C"

namespace {

struct Made : Sprites {
  using Sprites::mLoopStopFrame;
  using Sprites::mSprites;
  using Sprites::Sprites;
};

// An animation of so many full-screen frames that share the pixels of one surface, so that the test itself is
// small.
class FullScreenFrames : public SpriteAnimation {
 protected:
  ~FullScreenFrames() override {
    accelerated = false;
    SDL_FreeSurface(surface);
  }
  std::unique_ptr<Sprites> make(int frames) {
    auto sprites = std::make_unique<Made>(0, 0, 1920, 1080, "", TSpriteAnimation::LOOP);
    for (int i = 0; i < frames; ++i) {
      auto sprite = std::make_shared<TSprite>();
      sprite->id = i;
      sprite->width = sprite->original_width = 1920;
      sprite->height = sprite->original_height = 1080;
      ++surface->refcount;
      sprite->surface = surface;
      sprites->mSprites.push_back(std::move(sprite));
    }
    sprites->mLoopStopFrame = frames - 1;
    sprites->SetRefreshRate(25.0f);
    return sprites;
  }
  SDL_Surface* const surface = SDL_CreateRGBSurfaceWithFormat(0, 1920, 1080, 32, SDL_PIXELFORMAT_ARGB8888);
};

}  // namespace

TEST_F(FullScreenFrames, OfAHundredOneAtATimeLiesInTextureMemory) {
  accelerated = true;
  auto sprites = make(100);
  begin();
  for (int i = 0; i < 100; ++i) {
    for (int again = 0; again < 3; ++again) sprites->draw();
    ASSERT_EQ(i, sprites->GetCurrentFrame());
    ASSERT_EQ(kFullScreen, bytes) << "frame " << i;
    ASSERT_EQ(i + 1, made) << "a frame that stands is not made anew";
    clock.advance(40);
  }
  EXPECT_EQ(kFullScreen, peak);
  sprites.reset();
  EXPECT_EQ(0, bytes);
}

TEST_F(FullScreenFrames, NorDoFourAnimationsThatShareThemTakeMore) {
  accelerated = true;
  auto source = make(12);
  std::unique_ptr<Sprites> levels[4];
  for (auto& level : levels) {
    level = std::make_unique<Sprites>(0, 0, 1920, 1080, "", TSpriteAnimation::LOOP);
    level->CopyData(source.get());
    level->SetRefreshRate(25.0f);
  }
  begin();
  for (int i = 0; i < 12; ++i) {
    for (auto& level : levels) level->draw();
    clock.advance(40);
  }
  EXPECT_EQ(kFullScreen, peak);
  EXPECT_EQ(12, made);
  for (auto& level : levels) level.reset();
  EXPECT_EQ(0, bytes);
}

TEST_F(FullScreenFrames, TheLastOneGoesWithTheEndOfTheRun) {
  accelerated = true;
  for (const bool hides : {false, true}) {
    auto source = make(2);
    Sprites sprites(0, 0, 1920, 1080, "", TSpriteAnimation::ONCE);
    sprites.CopyData(source.get());
    if (hides) sprites.HideAfterEnd();
    begin();
    sprites.draw();
    EXPECT_EQ(kFullScreen, bytes);
    for (int i = 0; i < 5 && sprites.IsVisible(); ++i) {
      clock.advance(40);
      sprites.draw();
    }
    EXPECT_EQ(!hides, sprites.IsVisible());
    EXPECT_TRUE(sprites.FinishPlaying());
    EXPECT_EQ(0, bytes);
  }
}

TEST_F(FullScreenFrames, OneThatIsDrawnByItselfIsHeldAsATexture) {
  accelerated = true;
  auto sprites = make(2);
  begin();
  sprites->drawFrame(1, SDL_Rect{0, 0, 1920, 1080});
  EXPECT_EQ(nullptr, sprites->frame(1).surface.load());
  sprites->draw();
  EXPECT_NE(nullptr, sprites->frame(0).surface.load());
  while (sprites->GetCurrentFrame() != 1) {
    clock.advance(40);
    sprites->draw();
  }
  EXPECT_EQ(nullptr, sprites->frame(0).texture);
  while (sprites->GetCurrentFrame() != 0) {
    clock.advance(40);
    sprites->draw();
  }
  EXPECT_NE(nullptr, sprites->frame(1).texture) << "there is nothing to make it from again";
}

TEST_F(FullScreenFrames, AnotherAnimationsFramesTakeTheirPlace) {
  accelerated = true;
  auto sprites = make(2), source = make(2);
  begin();
  sprites->draw();
  sprites->CopyData(source.get());
  EXPECT_EQ(0, bytes);
}

TEST_F(FullScreenFrames, WithoutATextureMemoryEachIsHeldOnceAsATexture) {
  auto sprites = make(3);
  begin();
  for (int i = 0; i < 9; ++i) {
    sprites->draw();
    EXPECT_EQ(nullptr, sprites->frame(static_cast<size_t>(i % 3)).surface.load());
    clock.advance(40);
  }
  EXPECT_EQ(3, made);
  EXPECT_EQ(3 * kFullScreen, bytes);
  EXPECT_EQ(bytes, peak);
}

TEST_F(SpriteAnimation, SmallerFramesKeepTheirTextures) {
  Sprites sprites(0, 0, 20, 20, atlas("small", 10, 20, 20), TSpriteAnimation::LOOP);
  sprites.loaded().SetRefreshRate(25.0f);
  begin();
  for (int round = 0; round < 3; ++round)
    for (int i = 0; i < 10; ++i) {
      sprites.draw();
      clock.advance(40);
    }
  EXPECT_EQ(10 * 20 * 20 * 4, bytes) << "made once each";
  EXPECT_EQ(bytes, peak);
}

TEST_F(SpriteAnimation, APlaceThatIsToldAgainIsHeldOnce) {
  writeCells("cells.png", 3, 20, 20);
  const std::string base = write("to_and_fro", R"(<TextureAtlas imagePath="cells.png">
    <sprite n="a" x="0" y="0" w="20" h="20"/><sprite n="b" x="20" y="0" w="20" h="20"/>
    <sprite n="c" x="40" y="0" w="20" h="20"/><sprite n="b" x="20" y="0" w="20" h="20" oX="5" oW="30"/>
    <sprite n="a" x="0" y="0" w="20" h="20"/><sprite n="d" x="0" y="0" w="19" h="20"/></TextureAtlas>)");
  Sprites sprites(0, 0, 20, 20, base, TSpriteAnimation::LOOP);
  sprites.loaded().SetRefreshRate(25.0f);
  const int shown[] = {0, 1, 2, 1, 0, 0};
  begin();
  for (int round = 0; round < 2; ++round)
    for (int i = 0; i < 6; ++i) {
      sprites.SetFrame(i, false);
      EXPECT_EQ(shown[i], drawn(sprites, 1000)) << "frame " << i;
      if (i == 3) {
        EXPECT_EQ((SDL_Rect{0, 0, 20, 20}), inked(0)) << "at its own place";
      }
    }
  EXPECT_EQ(4, made);
  EXPECT_EQ((3 * 20 + 19) * 20 * 4, bytes);
  for (size_t i = 0; i < 6; ++i) EXPECT_EQ(nullptr, sprites.frame(i).surface.load());
}
