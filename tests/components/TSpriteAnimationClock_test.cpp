// The frame step of the sprite animation: where the tick clock comes round, at the end, and what it leaves alone.
#include <cstdint>

#include "tests/components/SpriteFixture.h"

using namespace vendelo_sdl2;

namespace {

constexpr uint64_t kRound = uint64_t{1} << 32;

struct Hooked : Sprites {
  using Sprites::Sprites;
  void onHide() override { ++hidden; }
  int hidden = 0;
};

class SpriteClock : public SpriteAnimation {
 protected:
  // The frame at a tick counted on over the rounds of the clock.
  int seen(Sprites& sprites, uint64_t tick) { return drawn(sprites, static_cast<Uint32>(tick)); }
};

}  // namespace

TEST_F(SpriteClock, TheFramesRunOnOverTheEndOfTheClock) {
  for (const uint64_t first : {uint64_t{1000}, kRound - 777, kRound - 1}) {
    Sprites sprites(0, 0, 20, 20, atlas("over", 10, 20, 20), TSpriteAnimation::LOOP);
    sprites.loaded().SetRefreshRate(25.0f);
    for (uint64_t elapsed = 0; elapsed < 390; elapsed += 13)
      ASSERT_EQ(static_cast<int>(elapsed / 40), seen(sprites, first + elapsed)) << first << " + " << elapsed;
  }
}

TEST_F(SpriteClock, AnAnimationBegunOnTickZeroRuns) {
  Sprites sprites(0, 0, 20, 20, atlas("zero", 10, 20, 20), TSpriteAnimation::LOOP);
  sprites.loaded().SetRefreshRate(25.0f);
  EXPECT_EQ(0, seen(sprites, kRound));
  EXPECT_EQ(0, seen(sprites, kRound + 38));  // counted from the millisecond before: 0 stands for not begun
  EXPECT_EQ(1, seen(sprites, kRound + 39));
  EXPECT_EQ(2, seen(sprites, kRound + 79));
}

TEST_F(SpriteClock, AFrameDrawnOnTickZeroKeepsTheRate) {
  Sprites sprites(0, 0, 20, 20, atlas("zero", 10, 20, 20), TSpriteAnimation::LOOP);
  sprites.loaded().SetRefreshRate(25.0f);
  EXPECT_EQ(0, seen(sprites, kRound - 30));
  EXPECT_EQ(0, seen(sprites, kRound));
  EXPECT_EQ(1, seen(sprites, kRound + 20)) << "50 ms and one more";
}

TEST_F(SpriteClock, WhatIsOverStaysOverWhenTheClockHasComeRound) {
  Sprites once(0, 0, 20, 20, atlas("rest", 4, 20, 20), TSpriteAnimation::ONCE);
  once.loaded().SetRefreshRate(25.0f);
  for (Uint32 tick = 1000; tick < 1300; tick += 20) seen(once, tick);
  ASSERT_TRUE(once.FinishPlaying());
  Sprites none(0, 0, 20, 20, atlas("rest", 4, 20, 20), TSpriteAnimation::NONE);
  none.SetFrame(3, true);
  for (Uint32 tick = 1000; tick < 1300; tick += 20) seen(none, tick);
  for (uint64_t tick = kRound + 900; tick < kRound + 1400; tick += 20) {
    EXPECT_EQ(-1, seen(once, tick));
    EXPECT_EQ(3, seen(none, tick));
  }
}

TEST_F(SpriteClock, TheEndHidesWithoutTheHooks) {
  Hooked sprites(0, 0, 20, 20, atlas("hide", 3, 20, 20), TSpriteAnimation::ONCE);
  sprites.loaded().SetRefreshRate(25.0f);
  sprites.HideAfterEnd();
  EXPECT_EQ(0, seen(sprites, 1000));
  EXPECT_EQ(1, seen(sprites, 1040));
  EXPECT_TRUE(sprites.IsVisible());
  EXPECT_EQ(2, seen(sprites, 1080)) << "the last frame is still drawn";
  EXPECT_FALSE(sprites.IsVisible());
  EXPECT_EQ(0, sprites.hidden);
}

TEST_F(SpriteClock, OnlyAFinishedAnimationHides) {
  for (const auto mode : {TSpriteAnimation::LOOP, TSpriteAnimation::NONE}) {
    Sprites sprites(0, 0, 20, 20, atlas("stay", 3, 20, 20), mode);
    sprites.loaded().SetRefreshRate(25.0f);
    sprites.HideAfterEnd();
    sprites.SetFrame(2, true);
    for (Uint32 tick = 1000; tick < 1500; tick += 20) seen(sprites, tick);
    EXPECT_TRUE(sprites.IsVisible());
    EXPECT_FALSE(sprites.FinishPlaying());
  }
  Sprites once(0, 0, 20, 20, atlas("stay", 3, 20, 20), TSpriteAnimation::ONCE);
  once.loaded();
  for (Uint32 tick = 1000; tick < 1500; tick += 20) seen(once, tick);
  EXPECT_TRUE(once.FinishPlaying());
  EXPECT_TRUE(once.IsVisible()) << "nobody asked for it";
}

TEST_F(SpriteClock, TheFirstDrawNotesItsTickAlsoWithoutFrames) {
  Sprites source(0, 0, 20, 20, atlas("later", 60, 20, 20), TSpriteAnimation::LOOP);
  Sprites sprites(0, 0, 20, 20, "", TSpriteAnimation::LOOP);
  sprites.SetRefreshRate(25.0f);
  seen(sprites, 1234);
  seen(sprites, 2000);  // no step is made
  sprites.CopyData(&source.loaded());
  EXPECT_EQ(20, seen(sprites, 1244 + 20 * 40));
}

TEST_F(SpriteClock, AFinishedAnimationMakesNoStep) {
  Sprites once(0, 0, 20, 20, atlas("still", 2, 20, 20), TSpriteAnimation::ONCE);
  once.loaded().SetRefreshRate(25.0f);
  seen(once, 1000);
  seen(once, 1050);
  ASSERT_TRUE(once.FinishPlaying());
  seen(once, 3000);
  EXPECT_EQ(1, once.GetCurrentFrame());
}

TEST_F(SpriteClock, ALoopWhoseMarksAreTheWholeGoesRound) {
  Sprites sprites(0, 0, 20, 20, atlas("whole", 4, 20, 20), TSpriteAnimation::LOOP);
  sprites.loaded().SetRefreshRate(25.0f);
  const int expected[] = {0, 1, 2, 3, 3, 0, 1, 2, 3, 0};  // the end of the first pass is held for one frame more
  for (Uint32 i = 0; i < 10; ++i) EXPECT_EQ(expected[i], seen(sprites, 1010 + 40 * i + (i > 0 ? 1 : 0))) << i;
}

TEST_F(SpriteClock, ASingleFrameOfOnceIsDrawnOnce) {
  Sprites sprites(0, 0, 20, 20, atlas("single", 1, 20, 20), TSpriteAnimation::ONCE);
  sprites.loaded();
  EXPECT_EQ(0, seen(sprites, 1000));
  EXPECT_TRUE(sprites.FinishPlaying());
  EXPECT_EQ(-1, seen(sprites, 1001));
}

TEST_F(SpriteClock, AResetBeginsAnewAtItsSize) {
  Sprites sprites(0, 0, 20, 20, atlas("anew", 4, 20, 20), TSpriteAnimation::ONCE);
  sprites.loaded().SetRefreshRate(25.0f);
  drawn(sprites, 1000);
  drawn(sprites, 1070);  // and three quarters of the next
  sprites.SetResizeFactor(2, 2);
  sprites.ResetAnimation();
  EXPECT_EQ(0, sprites.GetCurrentFrame());
  EXPECT_EQ(0, drawn(sprites, 6000));
  EXPECT_EQ((SDL_Rect{0, 0, 20, 20}), inked(0));
  EXPECT_EQ(0, drawn(sprites, 6039));
  EXPECT_EQ(1, drawn(sprites, 6040));
}

TEST_F(SpriteClock, AResetPlaysAgainWhatIsOver) {
  Sprites sprites(0, 0, 20, 20, atlas("again", 4, 20, 20), TSpriteAnimation::ONCE);
  sprites.loaded().SetRefreshRate(25.0f);
  drawn(sprites, 1000);
  drawn(sprites, 1120);
  ASSERT_TRUE(sprites.FinishPlaying());
  sprites.ResetAnimation(6000);
  EXPECT_FALSE(sprites.FinishPlaying());
  EXPECT_EQ(2, drawn(sprites, 6080)) << "counted from the tick that is given";
}

TEST_F(SpriteClock, ThePartOfAFrameIsCarriedOver) {
  Sprites sprites(0, 0, 20, 20, atlas("long", 60, 20, 20), TSpriteAnimation::LOOP);
  sprites.loaded().SetRefreshRate(25.0f);
  for (Uint32 i = 0; i < 38; ++i) EXPECT_EQ(static_cast<int>(39 * i / 40), drawn(sprites, 1000 + 39 * i));
}
