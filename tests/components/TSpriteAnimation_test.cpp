#include "components/TSpriteAnimation.h"

#include <SDL_image.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <cmath>
#include <functional>
#include <memory>

#include "tests/components/AllocationCount.h"
#include "tests/components/WidgetFixture.h"
#include "tests/support/TestFont.h"

using namespace vendelo_sdl2;

namespace {

struct Sprites : TSpriteAnimation {
  Sprites(int x, int y, int w, int h, const std::string& file, TAnimationMode mode)
    : TSpriteAnimation(nullptr, x, y, w, h, file, mode, "sprites") {}
  using TSpriteAnimation::mAnimationMode;
  using TSpriteAnimation::mBackgroundColor;
  using TSpriteAnimation::mBlendMode;
  using TSpriteAnimation::mBuffer;
  using TSpriteAnimation::mCurrentFrame;
  using TSpriteAnimation::mDestinationFrame;
  using TSpriteAnimation::mDrawXOfset;
  using TSpriteAnimation::mDrawYOfset;
  using TSpriteAnimation::mFileName;
  using TSpriteAnimation::mHideAfterEnd;
  using TSpriteAnimation::mLastRefresh;
  using TSpriteAnimation::mLoadFinished;
  using TSpriteAnimation::mLoadThread;
  using TSpriteAnimation::mLoopStartFrame;
  using TSpriteAnimation::mLoopStopFrame;
  using TSpriteAnimation::mPlayed;
  using TSpriteAnimation::mRect;
  using TSpriteAnimation::mRefreshRate;
  using TSpriteAnimation::mResize;
  using TSpriteAnimation::mResizeFactorX;
  using TSpriteAnimation::mResizeFactorY;
  using TSpriteAnimation::mRotPivot;
  using TSpriteAnimation::mSprites;

  // Waits for the loader and leaves the counters alone.
  Sprites& loaded() {
    SetFrame(mDestinationFrame, true);
    return *this;
  }
};

struct Plain : TGuiComponent {
  Plain(int x, int y) : TGuiComponent(nullptr, x, y, 400, 200, "parent") {}
};

// Colour of frame i.
SDL_Color colourOf(int i) {
  return SDL_Color{static_cast<Uint8>(40 + 20 * (i % 10)), static_cast<Uint8>(250 - 20 * (i % 10)),
                   static_cast<Uint8>(i), 255};
}
Uint32 rgbOf(int i) {
  const SDL_Color c = colourOf(i);
  return static_cast<Uint32>(c.r) << 16 | static_cast<Uint32>(c.g) << 8 | c.b;
}

class SpriteAnimation : public WidgetTest {
 protected:
  SpriteAnimation() : folder(testfont::freshFolder("sprites")) {}

  // An image of `frames` cells side by side.
  void writeCells(const std::string& file, int frames, int w, int h) {
    SDL_Surface* surface = SDL_CreateRGBSurfaceWithFormat(0, frames * w, h, 32, SDL_PIXELFORMAT_RGBA32);
    for (int i = 0; i < frames; ++i) {
      const SDL_Color c = colourOf(i);
      const SDL_Rect cell{i * w, 0, w, h};
      SDL_FillRect(surface, &cell, SDL_MapRGBA(surface->format, c.r, c.g, c.b, c.a));
    }
    ASSERT_EQ(0, IMG_SavePNG(surface, (folder + file).c_str()));
    SDL_FreeSurface(surface);
  }
  // An atlas "<name>.xml" of untrimmed cells.
  std::string atlas(const std::string& name, int frames, int w, int h) {
    writeCells(name + "_atlas.png", frames, w, h);
    std::string xml = "<TextureAtlas imagePath=\"" + name + "_atlas.png\">";
    for (int i = 0; i < frames; ++i)
      xml += "<sprite n=\"f" + std::to_string(i) + ".png\" x=\"" + std::to_string(i * w) + "\" y=\"0\" w=\"" +
             std::to_string(w) + "\" h=\"" + std::to_string(h) + "\"/>";
    testfont::writeText(folder + name + ".xml", xml + "</TextureAtlas>");
    return folder + name;
  }
  std::string write(const std::string& name, const std::string& xml) {
    testfont::writeText(folder + name + ".xml", xml);
    return folder + name;
  }
  // Draws on black at a tick; the frame that stands at the animation's left upper corner, -1 for none.
  int drawn(Sprites& sprites, Uint32 tick) {
    clock.set(tick);
    clear(0, 0, 0);
    sprites.draw();
    const Uint32 seen = pixel(sprites.getX() + 1, sprites.getY() + 1);
    for (int i = 0; i < sprites.GetNumFrames(); ++i)
      if (seen == rgbOf(i)) return i;
    return -1;
  }
  const std::string folder;
};

}  // namespace

TEST_F(SpriteAnimation, StartsAsDocumented) {
  Sprites sprites(10, 20, 30, 40, "", TSpriteAnimation::ONCE);
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

TEST_F(SpriteAnimation, ReadsTheAtlas) {
  writeCells("cells.png", 4, 20, 20);
  const std::string base = write("a.b", R"(<TextureAtlas imagePath="cells.png" blendMode="ADD"
    backgroundColor="1,2,3,4">
    <sprite n="one.png" x="20" y="3" w="10" h="12" r="y" oX="5" oY="6" pX="0.25" pY="0.75" oW="40" oH="44"/>
    <sprite n="two.png" x="0" y="0" w="20" h="20"/></TextureAtlas>)");
  Sprites sprites(0, 0, 40, 44, base, TSpriteAnimation::LOOP);
  EXPECT_EQ(folder + "cells.png", sprites.mFileName);
  EXPECT_EQ("ADD", sprites.mBlendMode);
  EXPECT_EQ(1, sprites.mBackgroundColor.r);
  EXPECT_EQ(2, sprites.mBackgroundColor.g);
  EXPECT_EQ(3, sprites.mBackgroundColor.b);
  EXPECT_EQ(4, sprites.mBackgroundColor.a);
  ASSERT_EQ(2, sprites.GetNumFrames());
  const TSprite& one = *sprites.mSprites[0];
  EXPECT_EQ(0, one.id);
  EXPECT_EQ(20, one.x);
  EXPECT_EQ(3, one.y);
  EXPECT_EQ(10, one.width);
  EXPECT_EQ(12, one.height);
  EXPECT_EQ(5, one.xoffset);
  EXPECT_EQ(6, one.yoffset);
  EXPECT_EQ(0.25, one.xpivot);
  EXPECT_EQ(0.75, one.ypivot);
  EXPECT_EQ(40, one.original_width);
  EXPECT_EQ(44, one.original_height);
  EXPECT_TRUE(one.rotate);
  const TSprite& two = *sprites.mSprites[1];
  EXPECT_EQ(1, two.id);
  EXPECT_EQ(0, two.xoffset);
  EXPECT_EQ(0, two.yoffset);
  EXPECT_EQ(0.5, two.xpivot);
  EXPECT_EQ(0.5, two.ypivot);
  EXPECT_EQ(20, two.original_width);
  EXPECT_EQ(20, two.original_height);
  EXPECT_FALSE(two.rotate);
  EXPECT_EQ(40, sprites.GetOriginalWidth());
  EXPECT_EQ(44, sprites.GetOriginalHeight());
  EXPECT_EQ(1, sprites.mLoopStopFrame);
  sprites.loaded();
  for (const auto& sprite : sprites.mSprites) {
    SDL_Surface* surface = sprite->surface;
    ASSERT_NE(nullptr, surface);
    EXPECT_EQ(nullptr, sprite->texture) << "a texture comes with the first draw";
    EXPECT_EQ(sprite->width, surface->w);
    EXPECT_EQ(sprite->height, surface->h);
    SDL_BlendMode mode = SDL_BLENDMODE_BLEND;
    SDL_GetSurfaceBlendMode(surface, &mode);
    EXPECT_EQ(SDL_BLENDMODE_NONE, mode);
  }
}

TEST_F(SpriteAnimation, BrokenFilesGiveNoFramesAndSaySo) {
  const struct {
    const char* name;
    const char* xml;  // null: no file at all
    bool told;
  } rows[] = {{"nofile", nullptr, true},
              {"malformed", "<TextureAtlas imagePath=\"a.png\"><sprite", true},
              {"empty", "", false},
              {"noroot", "<Other imagePath=\"a.png\"><sprite n=\"a\"/></Other>", false}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    if (row.xml) write(row.name, row.xml);
    testing::internal::CaptureStdout();
    Sprites sprites(0, 0, 10, 10, folder + row.name, TSpriteAnimation::LOOP);
    EXPECT_EQ(row.told, !testing::internal::GetCapturedStdout().empty());
    EXPECT_EQ(0, sprites.GetNumFrames());
    EXPECT_EQ(-1, sprites.mLoopStopFrame);
    EXPECT_EQ(nullptr, sprites.mLoadThread);
    sprites.draw();
    EXPECT_EQ(nullptr, sprites.GetFrame(0));
    sprites.drawFrame(0, SDL_Rect{0, 0, 1, 1});
  }
}

TEST_F(SpriteAnimation, MissingAttributesFallBackAndAreTold) {
  writeCells("cells.png", 2, 20, 20);
  const std::string base = write("gaps", R"(<TextureAtlas imagePath="cells.png" backgroundColor="9,8,7">
    <sprite n="a" x="0" y="0" w="20"/><sprite x="20" y="0" w="20" h="20"/></TextureAtlas>)");
  testing::internal::CaptureStdout();
  Sprites sprites(0, 0, 20, 20, base, TSpriteAnimation::NONE);
  sprites.loaded();
  const std::string told = testing::internal::GetCapturedStdout();
  EXPECT_NE(std::string::npos, told.find("the element sprite has no attribute h"));
  EXPECT_NE(std::string::npos, told.find("the element sprite has no attribute n"));
  EXPECT_NE(std::string::npos, told.find("the background colour needs r, g, b and a"));
  EXPECT_EQ(0, sprites.mBackgroundColor.r);
  EXPECT_EQ(255, sprites.mBackgroundColor.a);
  EXPECT_EQ(nullptr, sprites.mSprites[0]->surface);
  EXPECT_EQ(-1, drawn(sprites, 1000));
  sprites.SetFrame(1, false);
  EXPECT_EQ(1, drawn(sprites, 1001));
}

TEST_F(SpriteAnimation, AnImageThatCannotBeLoadedGivesFramesThatShowNothing) {
  const std::string base = write("noimage", R"(<TextureAtlas imagePath="nothing.png">
    <sprite n="a" x="0" y="0" w="20" h="20"/></TextureAtlas>)");
  testing::internal::CaptureStdout();
  Sprites sprites(0, 0, 20, 20, base, TSpriteAnimation::LOOP);
  sprites.loaded();
  testing::internal::GetCapturedStdout();
  EXPECT_EQ(1, sprites.GetNumFrames());
  EXPECT_EQ(-1, drawn(sprites, 1000));
  SDL_Texture* frame = sprites.GetFrame(0);
  EXPECT_NE(nullptr, frame);
  SDL_DestroyTexture(frame);
}

TEST_F(SpriteAnimation, DrawNeverWaitsForTheLoader) {
  // The image is a pipe, on which the loader hangs until it is opened from here; then it finds the PNG beside it.
  writeCells("slow.png", 3, 20, 20);
  ASSERT_EQ(0, mkfifo((folder + "slow.pipe").c_str(), 0600));
  const std::string base = write("slow", R"(<TextureAtlas imagePath="slow.pipe">
    <sprite n="a" x="0" y="0" w="20" h="20"/><sprite n="b" x="20" y="0" w="20" h="20"/></TextureAtlas>)");
  testing::internal::CaptureStdout();
  Sprites sprites(0, 0, 20, 20, base, TSpriteAnimation::LOOP);
  EXPECT_EQ(-1, drawn(sprites, 1000));
  EXPECT_EQ(-1, drawn(sprites, 2000));
  EXPECT_EQ(0u, sprites.mLastRefresh);
  EXPECT_NE(nullptr, sprites.mLoadThread);

  // A copy made now shares frames that are still to come.
  Sprites copy(0, 0, 20, 20, "", TSpriteAnimation::LOOP);
  copy.CopyData(&sprites);
  EXPECT_EQ(-1, drawn(copy, 2000));

  close(open((folder + "slow.pipe").c_str(), O_WRONLY));
  while (sprites.mLoadThread) {
    copy.draw();  // beside the loader
    sprites.draw();
  }
  testing::internal::GetCapturedStdout();
  EXPECT_EQ(2000u, sprites.mLastRefresh);
  EXPECT_EQ(0, drawn(sprites, 2000));
  EXPECT_EQ(0, drawn(copy, 2000));
}

TEST_F(SpriteAnimation, FramesAreSkippedNotQueued) {
  Sprites sprites(0, 0, 20, 20, atlas("long", 60, 20, 20), TSpriteAnimation::LOOP);
  sprites.loaded().SetRefreshRate(25.0f);
  EXPECT_EQ(0, drawn(sprites, 1000));
  EXPECT_EQ(0, drawn(sprites, 1039));
  EXPECT_NEAR(0.975f, sprites.mBuffer, 1e-4);
  EXPECT_EQ(1, drawn(sprites, 1041));
  EXPECT_NEAR(0.025f, sprites.mBuffer, 1e-4) << "the fraction is carried over";
  drawn(sprites, 2041);
  EXPECT_EQ(26, sprites.GetCurrentFrame());
}

TEST_F(SpriteAnimation, TheRateDoesNotDependOnTheDisplay) {
  for (const Uint32 step : {5u, 7u, 16u, 33u}) {
    Sprites sprites(0, 0, 20, 20, "", TSpriteAnimation::LOOP);
    Sprites source(0, 0, 20, 20, atlas("rate", 60, 20, 20), TSpriteAnimation::LOOP);
    sprites.CopyData(&source.loaded());
    Uint32 tick = 1000;
    for (; tick < 3000; tick += step) drawn(sprites, tick);
    // 23.809525 frames a second: one each 42 ms.
    EXPECT_NEAR((tick - step - 1000) / 42.0, sprites.GetCurrentFrame() + sprites.mBuffer, 0.01) << step;
  }
}

TEST_F(SpriteAnimation, LoopPlaysOnBetweenItsMarks) {
  Sprites sprites(0, 0, 20, 20, atlas("loop", 60, 20, 20), TSpriteAnimation::LOOP);
  sprites.loaded().SetRefreshRate(25.0f);
  sprites.SetLoopStartFrame(30);
  drawn(sprites, 1000);
  drawn(sprites, 1010 + 59 * 40);
  EXPECT_EQ(59, sprites.GetCurrentFrame());
  EXPECT_FALSE(sprites.mPlayed);
  drawn(sprites, 1010 + 60 * 40);  // 60 - 60 + 59
  EXPECT_EQ(59, sprites.GetCurrentFrame());
  EXPECT_TRUE(sprites.mPlayed);
  EXPECT_FALSE(sprites.FinishPlaying());
  for (int i = 1; i <= 65; ++i) {
    EXPECT_EQ(30 + (i - 1) % 30, drawn(sprites, 1010 + (60 + static_cast<Uint32>(i)) * 40));
  }
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
  sprites.SetResizeFactor(2, 2);
  sprites.ResetAnimation();
  EXPECT_FALSE(sprites.FinishPlaying());
  EXPECT_EQ(0u, sprites.mLastRefresh);
  EXPECT_EQ(1.0, sprites.mResizeFactorX);
  EXPECT_EQ(1.0, sprites.mResizeFactorY);
  EXPECT_EQ(0.0f, sprites.mBuffer);
  EXPECT_EQ(0, drawn(sprites, 6000));
  sprites.ResetAnimation(6000);
  EXPECT_EQ(6000u, sprites.mLastRefresh);
  EXPECT_EQ(2, drawn(sprites, 6080));
}

TEST_F(SpriteAnimation, OnceJumpingPastTheEndDrawsNothing) {
  Sprites sprites(0, 0, 20, 20, atlas("past", 4, 20, 20), TSpriteAnimation::ONCE);
  sprites.loaded().SetRefreshRate(25.0f);
  sprites.HideAfterEnd();
  EXPECT_EQ(0, drawn(sprites, 1000));
  EXPECT_EQ(-1, drawn(sprites, 3000));
  EXPECT_TRUE(sprites.mPlayed);
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
  Sprites sprites(0, 0, 20, 20, atlas("limits", 10, 20, 20), TSpriteAnimation::NONE);
  for (const auto& row : rows) {
    sprites.SetFrame(row.asked, false);
    EXPECT_EQ(row.frame, sprites.GetCurrentFrame());
    EXPECT_EQ(row.frame, sprites.mDestinationFrame);
  }
  EXPECT_EQ(nullptr, sprites.mLoadThread) << "it waits for the loader";
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
    ASSERT_NE(nullptr, sprites.mSprites[0]->texture);
    EXPECT_EQ(nullptr, sprites.mSprites[0]->surface) << "freed once the texture exists";
    SDL_BlendMode mode = SDL_BLENDMODE_INVALID;
    SDL_GetTextureBlendMode(sprites.mSprites[0]->texture, &mode);
    EXPECT_EQ(row.mode, mode);
    Uint8 alpha = 0;
    SDL_GetTextureAlphaMod(sprites.mSprites[0]->texture, &alpha);
    EXPECT_EQ(row.alpha ? 99 : 255, alpha);
  }
}

TEST_F(SpriteAnimation, TurnsAroundTheMiddleOfItsLowerEdge) {
  Sprites sprites(150, 60, 80, 50, atlas("turn", 2, 80, 50), TSpriteAnimation::NONE);
  sprites.loaded().setAngle(40.0);
  clear(0, 0, 0);
  sprites.draw();
  EXPECT_EQ(40, sprites.mRotPivot.x);
  EXPECT_EQ(50, sprites.mRotPivot.y);
  EXPECT_GOLDEN(renderer, "components/sprites_turned");
  sprites.setAngle(-40.0);
  clear(0, 0, 0);
  sprites.draw();
  EXPECT_EQ((SDL_Rect{150, 60, 80, 50}), inked(0)) << "a negative angle does not turn";
}

TEST_F(SpriteAnimation, FullScreenFramesAreTexturesOnlyDuringADraw) {
  writeCells("full.png", 1, 1920, 1080);
  const std::string base = write("full", R"(<TextureAtlas imagePath="full.png">
    <sprite n="a" x="0" y="0" w="1920" h="1080"/><sprite n="b" x="0" y="0" w="1919" h="1080"/></TextureAtlas>)");
  Sprites sprites(0, 0, 1920, 1080, base, TSpriteAnimation::NONE);
  sprites.loaded();
  EXPECT_EQ(0, drawn(sprites, 1000));
  EXPECT_EQ(nullptr, sprites.mSprites[0]->texture);
  EXPECT_NE(nullptr, sprites.mSprites[0]->surface);
  EXPECT_EQ(0, drawn(sprites, 1001)) << "drawn again from its surface";
  sprites.SetFrame(1, false);
  drawn(sprites, 1002);
  EXPECT_NE(nullptr, sprites.mSprites[1]->texture);
  EXPECT_EQ(nullptr, sprites.mSprites[1]->surface);
  sprites.drawFrame(0, SDL_Rect{0, 0, 1920, 1080});
  EXPECT_EQ(nullptr, sprites.mSprites[0]->surface) << "drawFrame always frees it";
  EXPECT_NE(nullptr, sprites.mSprites[0]->texture);
  EXPECT_EQ(0, drawn(sprites, 1003) * 0) << "and the texture then stays";
  sprites.SetFrame(0, false);
  EXPECT_EQ(0, drawn(sprites, 1004));
  EXPECT_EQ(0, drawn(sprites, 1005));
}

TEST_F(SpriteAnimation, DrawFrameDrawsAnyFrameAnywhere) {
  Sprites sprites(0, 0, 20, 20, atlas("any", 5, 20, 20), TSpriteAnimation::LOOP);
  clear(0, 0, 0);
  sprites.drawFrame(3, SDL_Rect{100, 50, 1, 1});
  EXPECT_EQ((SDL_Rect{100, 50, 20, 20}), inked(0));
  EXPECT_EQ(rgbOf(3), pixel(105, 55));
  EXPECT_EQ(0, sprites.GetCurrentFrame());
  EXPECT_EQ(0u, sprites.mLastRefresh);
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
    EXPECT_EQ(nullptr, sprites.mSprites[static_cast<size_t>(i)]->surface);
  }
  EXPECT_EQ(nullptr, sprites.GetFrame(2));
  EXPECT_EQ(nullptr, sprites.GetFrame(-1));
}

TEST_F(SpriteAnimation, StripsAreCutAtOnce) {
  writeCells("strip.png", 5, 40, 30);
  SDL_SetRenderDrawColor(renderer, 1, 2, 3, 4);
  Sprites sprites(100, 50, 40, 30, folder + "strip.png", TSpriteAnimation::LOOP);
  EXPECT_EQ(nullptr, sprites.mLoadThread);
  ASSERT_EQ(5, sprites.GetNumFrames());
  for (int i = 0; i < 5; ++i) {
    const TSprite& sprite = *sprites.mSprites[static_cast<size_t>(i)];
    EXPECT_EQ(i + 1, sprite.id) << "counted from 1 here";
    EXPECT_EQ(40 * i, sprite.x);
    EXPECT_EQ(0, sprite.y);
    EXPECT_EQ(40, sprite.width);
    EXPECT_EQ(30, sprite.original_height);
    EXPECT_NE(nullptr, sprite.texture);
  }
  EXPECT_EQ(40, sprites.GetOriginalWidth());
  EXPECT_EQ(30, sprites.GetOriginalHeight());
  EXPECT_EQ(4, sprites.mLoopStopFrame);
  Uint8 r = 0, g = 0, b = 0, a = 0;
  SDL_GetRenderDrawColor(renderer, &r, &g, &b, &a);
  EXPECT_EQ(1, r);
  EXPECT_EQ(4, a);
  sprites.SetRefreshRate(25.0f);
  EXPECT_EQ(0, drawn(sprites, 1000));
  EXPECT_EQ(3, drawn(sprites, 1120));

  testing::internal::CaptureStdout();
  Sprites missing(0, 0, 40, 30, folder + "nothing.png", TSpriteAnimation::LOOP);
  testing::internal::GetCapturedStdout();
  EXPECT_EQ(0, missing.GetNumFrames());
  Sprites flat(0, 0, 0, 0, folder + "strip.png", TSpriteAnimation::LOOP);
  EXPECT_EQ(0, flat.GetNumFrames());
}

TEST_F(SpriteAnimation, TheBackgroundOfAStripGoesByTheFlavour) {
  writeCells("strip.png", 1, 40, 30);
  const TFlavour before = TerminalFlavour;
  const struct {
    TFlavour flavour;
    int level;
  } rows[] = {
    {UNKNOWN_FLAVOUR, 0}, {RONDELL_FLAVOUR, 255}, {TAVE_FLAVOUR, 0}, {TAVE2_FLAVOUR, 255}, {VESPERA_FLAVOUR, 0}};
  for (const auto& row : rows) {
    TerminalFlavour = row.flavour;
    Sprites sprites(0, 0, 40, 30, folder + "strip.png", TSpriteAnimation::LOOP);
    EXPECT_EQ(row.level, sprites.mBackgroundColor.r);
    EXPECT_EQ(row.level, sprites.mBackgroundColor.g);
    EXPECT_EQ(row.level, sprites.mBackgroundColor.b);
    EXPECT_EQ(255, sprites.mBackgroundColor.a);
  }
  TerminalFlavour = before;
}

TEST_F(SpriteAnimation, CopiesShareTheFrames) {
  auto source = std::make_unique<Sprites>(0, 0, 20, 20, atlas("shared", 6, 20, 20), TSpriteAnimation::LOOP);
  source->loaded().SetLoopStartFrame(2);
  source->mBlendMode = "ADD";
  Sprites copy(0, 0, 20, 20, "", TSpriteAnimation::ONCE);
  copy.CopyData(nullptr);
  copy.CopyData(source.get());
  EXPECT_EQ(source->mSprites, copy.mSprites);
  EXPECT_EQ(20, copy.GetOriginalWidth());
  EXPECT_EQ(20, copy.GetOriginalHeight());
  EXPECT_EQ(2, copy.mLoopStartFrame);
  EXPECT_EQ(5, copy.mLoopStopFrame);
  EXPECT_EQ("ADD", copy.mBlendMode);
  EXPECT_EQ(TSpriteAnimation::ONCE, copy.mAnimationMode);
  source.reset();
  EXPECT_EQ(0, drawn(copy, 1000)) << "the frames live as long as one of them";
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
