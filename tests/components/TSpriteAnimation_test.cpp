#include "components/TSpriteAnimation.h"

#include <cmath>
#include <limits>
#include <memory>

#include "tests/components/AllocationCount.h"
#include "tests/components/SpriteFixture.h"

using namespace vendelo_sdl2;

namespace {

struct Plain : TGuiComponent {
  Plain(int x, int y) : TGuiComponent(nullptr, x, y, 400, 200, "parent") {}
};

// What a new animation holds.
struct Inside : Sprites {
  using Sprites::mAnimationMode;
  using Sprites::mBackgroundColor;
  using Sprites::mBlendMode;
  using Sprites::mBuffer;
  using Sprites::mDestinationFrame;
  using Sprites::mDrawXOfset;
  using Sprites::mDrawYOfset;
  using Sprites::mFileName;
  using Sprites::mHideAfterEnd;
  using Sprites::mLastRefresh;
  using Sprites::mLoadFinished;
  using Sprites::mLoadThread;
  using Sprites::mLoopStartFrame;
  using Sprites::mLoopStopFrame;
  using Sprites::mPlayed;
  using Sprites::mRect;
  using Sprites::mRefreshRate;
  using Sprites::mResize;
  using Sprites::mResizeFactorX;
  using Sprites::mResizeFactorY;
  using Sprites::mRotPivot;
  using Sprites::Sprites;
};

}  // namespace

TEST_F(SpriteAnimation, StartsAsDocumented) {
  Inside sprites(10, 20, 30, 40, "", TSpriteAnimation::ONCE);
  EXPECT_EQ((SDL_Rect{10, 20, 30, 40}), sprites.mRect);
  EXPECT_EQ(TSpriteAnimation::ONCE, sprites.mAnimationMode);
  EXPECT_EQ("BLEND", sprites.mBlendMode);
  EXPECT_EQ(0, sprites.mDrawXOfset);
  EXPECT_EQ(0, sprites.mDrawYOfset);
  EXPECT_EQ(-1, sprites.mRotPivot.x);
  EXPECT_EQ(-1, sprites.mRotPivot.y);
  EXPECT_EQ(1.0, sprites.mResizeFactorX);
  EXPECT_EQ(1.0, sprites.mResizeFactorY);
  EXPECT_FALSE(sprites.mResize);
  EXPECT_FALSE(sprites.mPlayed);
  EXPECT_FALSE(sprites.mHideAfterEnd);
  EXPECT_EQ(0u, sprites.mLastRefresh);
  EXPECT_EQ(23.809525f, sprites.mRefreshRate);
  EXPECT_EQ(0.0f, sprites.mBuffer);
  EXPECT_EQ(0, sprites.GetCurrentFrame());
  EXPECT_EQ(0, sprites.mDestinationFrame);
  EXPECT_EQ(0, sprites.mLoopStartFrame);
  EXPECT_EQ(-1, sprites.mLoopStopFrame);
  EXPECT_EQ(0, sprites.GetOriginalWidth());
  EXPECT_EQ(0, sprites.GetOriginalHeight());
  EXPECT_EQ(255, sprites.mBackgroundColor.a);
  EXPECT_EQ("", sprites.mFileName);
  EXPECT_EQ(nullptr, sprites.mLoadThread);
  ASSERT_NE(nullptr, sprites.mLoadFinished);
  EXPECT_EQ(0u, SDL_SemValue(sprites.mLoadFinished));
  EXPECT_EQ(0, sprites.GetNumFrames());
  EXPECT_TRUE(sprites.IsVisible());
  EXPECT_EQ(0, TSpriteAnimation::NONE);
  EXPECT_EQ(1, TSpriteAnimation::LOOP);
  EXPECT_EQ(2, TSpriteAnimation::ONCE);
  sprites.draw();
  sprites.SetFrame(5, false);
  EXPECT_EQ(0, sprites.GetCurrentFrame());
}

TEST_F(SpriteAnimation, FramesAreSkippedNotQueued) {
  Sprites sprites(0, 0, 20, 20, atlas("long", 60, 20, 20), TSpriteAnimation::LOOP);
  sprites.loaded().SetRefreshRate(25.0f);
  EXPECT_EQ(0, drawn(sprites, 1000));
  EXPECT_EQ(0, drawn(sprites, 1039));
  EXPECT_EQ(1, drawn(sprites, 1041));
  drawn(sprites, 2041);
  EXPECT_EQ(26, sprites.GetCurrentFrame());
}

TEST_F(SpriteAnimation, TheRateDoesNotDependOnTheDisplay) {
  for (const Uint32 step : {5u, 7u, 16u, 33u}) {
    Sprites sprites(0, 0, 20, 20, "", TSpriteAnimation::LOOP);
    Sprites source(0, 0, 20, 20, atlas("rate", 60, 20, 20), TSpriteAnimation::LOOP);
    sprites.CopyData(&source.loaded());
    // 23.809525 frames a second: one each 42 ms, and on the edge either of the two.
    for (Uint32 elapsed = 0; elapsed < 2000; elapsed += step) {
      const int frame = drawn(sprites, 1000 + elapsed);
      ASSERT_GE(frame, std::floor((elapsed - 0.4) / 42.0)) << elapsed << " in steps of " << step;
      ASSERT_LE(frame, std::floor((elapsed + 0.4) / 42.0)) << elapsed << " in steps of " << step;
    }
  }
}

TEST_F(SpriteAnimation, LoopPlaysOnBetweenItsMarks) {
  Sprites sprites(0, 0, 20, 20, atlas("loop", 60, 20, 20), TSpriteAnimation::LOOP);
  sprites.loaded().SetRefreshRate(25.0f);
  sprites.SetLoopStartFrame(30);
  drawn(sprites, 1000);
  drawn(sprites, 1010 + 59 * 40);
  EXPECT_EQ(59, sprites.GetCurrentFrame());
  drawn(sprites, 1010 + 60 * 40);  // 60 - 60 + 59
  EXPECT_EQ(59, sprites.GetCurrentFrame());
  EXPECT_FALSE(sprites.FinishPlaying());
  for (int i = 1; i <= 65; ++i)
    EXPECT_EQ(30 + (i - 1) % 30, drawn(sprites, 1010 + (60 + static_cast<Uint32>(i)) * 40));
  sprites.ResetAnimation();
  sprites.SetLoopStopFrame(40);
  drawn(sprites, 9000);
  drawn(sprites, 9010 + 63 * 40);  // 63 - 60 + 40 = 43, and 30 + 13 % 11
  EXPECT_EQ(32, sprites.GetCurrentFrame());
}

TEST_F(SpriteAnimation, LoopMarksThatMakeNoSenseDoNoHarm) {
  const struct { int start, stop; } rows[] = {{40, 20}, {5, 4}, {70, 90}, {-5, 3}, {0, -30}};
  for (const auto& row : rows) {
    Sprites sprites(0, 0, 20, 20, atlas("marks", 10, 20, 20), TSpriteAnimation::LOOP);
    sprites.loaded().SetRefreshRate(25.0f);
    sprites.SetLoopStartFrame(row.start);
    sprites.SetLoopStopFrame(row.stop);
    for (Uint32 tick = 1000; tick < 4000; tick += 33) drawn(sprites, tick);
  }
}

TEST_F(SpriteAnimation, OnceDrawsTheLastFrameOnceAndThenNothing) {
  Sprites sprites(0, 0, 20, 20, atlas("once", 4, 20, 20), TSpriteAnimation::ONCE);
  sprites.loaded().SetRefreshRate(25.0f);
  EXPECT_EQ(0, drawn(sprites, 1000));
  EXPECT_EQ(1, drawn(sprites, 1040));
  EXPECT_EQ(2, drawn(sprites, 1080));
  EXPECT_FALSE(sprites.FinishPlaying());
  EXPECT_EQ(3, drawn(sprites, 1120));
  EXPECT_TRUE(sprites.FinishPlaying());
  EXPECT_TRUE(sprites.IsVisible());
  EXPECT_EQ(-1, drawn(sprites, 1121));
  EXPECT_EQ(-1, drawn(sprites, 5000));
}

TEST_F(SpriteAnimation, OnceJumpingPastTheEndDrawsNothing) {
  Sprites sprites(0, 0, 20, 20, atlas("past", 4, 20, 20), TSpriteAnimation::ONCE);
  sprites.loaded().SetRefreshRate(25.0f);
  sprites.HideAfterEnd();
  EXPECT_EQ(0, drawn(sprites, 1000));
  EXPECT_EQ(-1, drawn(sprites, 3000));
  EXPECT_TRUE(sprites.FinishPlaying());
  EXPECT_FALSE(sprites.IsVisible()) << "hidden after the end";
}

TEST_F(SpriteAnimation, NoneFollowsItsDestinationFromEitherSide) {
  Sprites sprites(0, 0, 20, 20, atlas("none", 10, 20, 20), TSpriteAnimation::NONE);
  sprites.loaded().SetRefreshRate(25.0f);
  EXPECT_EQ(0, drawn(sprites, 1000));
  EXPECT_EQ(0, drawn(sprites, 2000));
  sprites.SetFrame(7, true);
  EXPECT_EQ(0, sprites.GetCurrentFrame());
  EXPECT_EQ(2, drawn(sprites, 2080));
  EXPECT_EQ(7, drawn(sprites, 4000));
  sprites.SetFrame(4, true);
  EXPECT_EQ(6, drawn(sprites, 4040));
  EXPECT_EQ(5, drawn(sprites, 4080));
  EXPECT_EQ(4, drawn(sprites, 4120));
  EXPECT_EQ(4, drawn(sprites, 9000));
  EXPECT_FALSE(sprites.FinishPlaying());
}

TEST_F(SpriteAnimation, SetFrameIsLimited) {
  const struct { int asked, frame; } rows[] = {{100, 9}, {9, 9}, {-4, 0}, {3, 3}};
  Uint32 tick = 1000;
  Sprites sprites(0, 0, 20, 20, atlas("limits", 10, 20, 20), TSpriteAnimation::NONE);
  for (const auto& row : rows) {
    sprites.SetFrame(row.asked, false);
    EXPECT_EQ(row.frame, sprites.GetCurrentFrame()) << "the first one waits for the loader";
    drawn(sprites, tick += 1000);
    EXPECT_EQ(row.frame, drawn(sprites, tick += 1000)) << "and it stays there";
  }
  const struct {
    float part;
    int frame;
  } parts[] = {{0.5f, 5}, {0.0f, 0}, {1.0f, 10}, {0.44f, 4}, {0.46f, 5}, {7.0f, 10}};
  Sprites eleven(0, 0, 20, 20, atlas("eleven", 11, 20, 20), TSpriteAnimation::NONE);
  for (const auto& row : parts) {
    eleven.SetFrame(row.part, false);
    EXPECT_EQ(row.frame, eleven.GetCurrentFrame()) << row.part;
  }
}

TEST_F(SpriteAnimation, PlacesOfATrimmedFrame) {
  writeCells("cells.png", 1, 40, 20);
  const std::string base = write("trimmed", R"(<TextureAtlas imagePath="cells.png">
    <sprite n="a" x="0" y="0" w="40" h="20" oX="7" oY="9" oW="100" oH="60"/></TextureAtlas>)");
  const struct {
    const char* name;
    bool child;
    int w, h;  // of the component
    double fx, fy;
    int ox, oy;
    SDL_Rect expected;
  } rows[] = {{"root", false, 100, 60, 1, 1, 0, 0, {127, 89, 40, 20}},
              {"root smaller than the frame", false, 60, 31, 1, 1, 0, 0, {107, 75, 40, 20}},
              {"root, offset", false, 100, 60, 1, 1, 3, -4, {130, 85, 40, 20}},
              {"root, resized", false, 100, 60, 0.5, 2, 1, 1, {65, 179, 20, 21}},
              {"child", true, 100, 60, 1, 1, 0, 0, {137, 99, 40, 20}},
              {"child smaller", true, 60, 31, 1, 1, 0, 0, {117, 85, 40, 20}},
              {"child, resized", true, 100, 60, 0.5, 1.5, 2, 3, {76, 147, 20, 30}}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    Plain parent(10, 10);
    auto* sprites = new Sprites(120, 80, row.w, row.h, base, TSpriteAnimation::NONE);
    sprites->loaded();
    std::unique_ptr<Sprites> root;
    if (row.child)
      parent.AddComponent(sprites);
    else
      root.reset(sprites);
    sprites->SetResizeFactor(row.fx, row.fy);
    sprites->SetOffset(row.ox, row.oy);
    clear(0, 0, 0);
    sprites->draw();
    EXPECT_EQ(row.expected, inked(0));
  }
}

TEST_F(SpriteAnimation, BlendModes) {
  writeCells("cells.png", 1, 40, 20);
  const struct {
    const char* attribute;
    SDL_BlendMode mode;
    bool alpha;
  } rows[] = {{"", SDL_BLENDMODE_BLEND, true},
              {"blendMode=\"ADD\"", SDL_BLENDMODE_ADD, true},
              {"blendMode=\"MOD\"", SDL_BLENDMODE_MOD, true},
              {"blendMode=\"NONE\"", SDL_BLENDMODE_NONE, false},
              {"blendMode=\"other\"", SDL_BLENDMODE_NONE, true}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.attribute);
    const std::string base =
      write("blend", std::string("<TextureAtlas imagePath=\"cells.png\" ") + row.attribute +
                       "><sprite n=\"a\" x=\"0\" y=\"0\" w=\"40\" h=\"20\"/></TextureAtlas>");
    Sprites sprites(0, 0, 40, 20, base, TSpriteAnimation::NONE);
    sprites.loaded().setAlpha(99);
    sprites.draw();
    ASSERT_NE(nullptr, sprites.frame(0).texture);
    EXPECT_EQ(nullptr, sprites.frame(0).surface) << "freed once the texture exists";
    SDL_BlendMode mode = SDL_BLENDMODE_INVALID;
    SDL_GetTextureBlendMode(sprites.frame(0).texture.get(), &mode);
    EXPECT_EQ(row.mode, mode);
    Uint8 alpha = 0;
    SDL_GetTextureAlphaMod(sprites.frame(0).texture.get(), &alpha);
    EXPECT_EQ(row.alpha ? 99 : 255, alpha);
  }
}

TEST_F(SpriteAnimation, TurnsAroundTheMiddleOfItsLowerEdge) {
  Sprites sprites(150, 60, 80, 50, atlas("turn", 2, 80, 50), TSpriteAnimation::NONE);
  sprites.loaded().setAngle(40.0);
  clear(0, 0, 0);
  sprites.draw();
  EXPECT_GOLDEN(renderer, "components/sprites_turned");
  sprites.setAngle(1.0);
  clear(0, 0, 0);
  sprites.draw();
  EXPECT_FALSE((SDL_Rect{150, 60, 80, 50}) == inked(0)) << "one degree is a turn";
  for (const double angle : {0.0, -40.0}) {
    sprites.setAngle(angle);
    clear(0, 0, 0);
    sprites.draw();
    EXPECT_EQ((SDL_Rect{150, 60, 80, 50}), inked(0)) << "no angle and a negative one do not turn";
  }
}

TEST_F(SpriteAnimation, FullScreenFramesAreHeldOnceAsAllOthers) {
  writeCells("full.png", 1, 1920, 1080);
  const std::string base = write("full", R"(<TextureAtlas imagePath="full.png">
    <sprite n="a" x="0" y="0" w="1920" h="1080"/><sprite n="b" x="0" y="0" w="1919" h="1080"/></TextureAtlas>)");
  Sprites sprites(0, 0, 1920, 1080, base, TSpriteAnimation::NONE);
  sprites.loaded();
  for (const int i : {0, 1}) {
    const TSprite& frame = sprites.frame(static_cast<size_t>(i));
    EXPECT_EQ(nullptr, frame.texture);
    EXPECT_NE(nullptr, frame.surface);
    sprites.SetFrame(i, false);
    EXPECT_EQ(0, drawn(sprites, 1000)) << i;
    EXPECT_NE(nullptr, frame.texture);
    EXPECT_EQ(nullptr, frame.surface);
    EXPECT_EQ(0, drawn(sprites, 1001)) << i;
  }
}

TEST_F(SpriteAnimation, DrawFrameDrawsAnyFrameAnywhere) {
  Sprites sprites(0, 0, 20, 20, atlas("any", 5, 20, 20), TSpriteAnimation::LOOP);
  clear(0, 0, 0);
  sprites.drawFrame(3, SDL_Rect{100, 50, 1, 1});
  EXPECT_EQ((SDL_Rect{100, 50, 20, 20}), inked(0));
  EXPECT_EQ(rgbOf(3), pixel(105, 55));
  EXPECT_EQ(0, sprites.GetCurrentFrame());
  EXPECT_EQ(0, drawn(sprites, 5000)) << "nor is it begun";
  clear(0, 0, 0);
  sprites.drawFrame(5, SDL_Rect{100, 50, 1, 1});
  sprites.drawFrame(-1, SDL_Rect{100, 50, 1, 1});
  sprites._setVisible(false);
  sprites.drawFrame(3, SDL_Rect{100, 50, 1, 1});
  EXPECT_EQ(0, inked(0).w);
}

TEST_F(SpriteAnimation, GetFramePutsAFrameTogetherAtItsOriginalSize) {
  writeCells("cells.png", 2, 40, 20);
  const std::string base = write("parts", R"(<TextureAtlas imagePath="cells.png">
    <sprite n="a" x="0" y="0" w="40" h="20" oX="7" oY="9" oW="100" oH="60"/>
    <sprite n="b" x="40" y="0" w="40" h="20" oX="20" oY="20" oW="100" oH="60" r="y"/></TextureAtlas>)");
  Sprites sprites(0, 0, 100, 60, base, TSpriteAnimation::NONE);
  SDL_SetRenderDrawColor(renderer, 255, 0, 0, 255);
  const SDL_Rect expected[] = {{7, 9, 40, 20}, {30, 10, 20, 40}};
  for (int i = 0; i < 2; ++i) {
    SDL_Texture* frame = sprites.GetFrame(i);
    ASSERT_NE(nullptr, frame);
    EXPECT_EQ(nullptr, SDL_GetRenderTarget(renderer));
    int w = 0, h = 0;
    SDL_QueryTexture(frame, nullptr, nullptr, &w, &h);
    EXPECT_EQ(100, w);
    EXPECT_EQ(60, h);
    clear(0, 0, 0);
    const SDL_Rect place{0, 0, 100, 60};
    SDL_RenderCopy(renderer, frame, nullptr, &place);
    EXPECT_EQ(expected[i], inked(0)) << "transparent around the frame, whatever colour was set";
    SDL_DestroyTexture(frame);
    EXPECT_EQ(nullptr, sprites.frame(static_cast<size_t>(i)).surface);
  }
  EXPECT_EQ(nullptr, sprites.GetFrame(2));
  EXPECT_EQ(nullptr, sprites.GetFrame(-1));
}

TEST_F(SpriteAnimation, SmallOperations) {
  Sprites sprites(0, 0, 20, 20, atlas("small", 3, 20, 20), TSpriteAnimation::NONE);
  sprites.SetPos(60, 70);
  EXPECT_EQ(60, sprites.getX());
  EXPECT_EQ(70, sprites.getY());
  sprites.ReverseOrder();
  EXPECT_EQ(2, drawn(sprites, 1000));
  auto* child = new Plain(0, 100);
  child->SetTargetTexture(solid(400, 50, SDL_Color{255, 255, 255, 255}));
  sprites.AddComponent(child);
  clear(0, 0, 0);
  sprites.draw();
  EXPECT_EQ((SDL_Rect{60, 70, 20, 20}), inked(0)) << "no children";
}

TEST_F(SpriteAnimation, NumbersFromTheEndsOfTheirRangesAreDrawnAndLeaveAgain) {
  const std::string file = atlas("ends", 3, 20, 20);
  const float infinity = std::numeric_limits<float>::infinity();
  for (const float number : {-infinity, -1e30f, -1e10f, 0.0f, 1e10f, 1e30f, infinity, std::nanf("")}) {
    Sprites sprites(60, 70, 20, 20, file, TSpriteAnimation::LOOP);
    Plain parent(0, 0);
    sprites.loaded();
    sprites.setParent(&parent);
    for (int what = 0; what < 3; ++what) {
      if (what == 0) sprites.SetResizeFactor(number, number);
      if (what == 1) sprites.SetRefreshRate(number);
      if (what == 2) sprites.SetFrame(number, false);
      for (const Uint32 time : {0u, 1u, 0x7fffffffu, 0xffffff00u}) {
        clock.advance(time);
        sprites.draw();
      }
      sprites.SetResizeFactor(1, 1);
    }
    sprites.setParent(nullptr);
  }
  Sprites sprites(60, 70, 20, 20, file, TSpriteAnimation::NONE);
  sprites.loaded().SetFrame(infinity, false);
  EXPECT_EQ(2, sprites.GetCurrentFrame());
  sprites.SetFrame(-infinity, false);
  EXPECT_EQ(0, sprites.GetCurrentFrame());
}

// Marks beyond the last frame leave the loop none: it shows nothing, and counts on for as long as the display runs.
TEST_F(SpriteAnimation, ALoopWithoutFramesCountsOnWithoutEnd) {
  Sprites sprites(0, 0, 20, 20, atlas("endless", 3, 20, 20), TSpriteAnimation::LOOP);
  sprites.loaded().SetLoopStartFrame(30);
  sprites.SetRefreshRate(1e6f);
  for (int i = 0; i < 40; ++i) {
    clock.advance(1000000);
    sprites.draw();
    EXPECT_GE(sprites.GetCurrentFrame(), 0);
  }
}

TEST_F(SpriteAnimation, AFrameTakesNothingFromTheHeap) {
  Sprites sprites(0, 0, 20, 20, atlas("heap", 30, 20, 20), TSpriteAnimation::LOOP);
  sprites.loaded();
  sprites.draw();
  const long before = allocations::count;
  for (int i = 0; i < 200; ++i) {
    clock.advance(16);
    sprites.draw();
  }
  EXPECT_EQ(before, allocations::count);
}
