// Animations whose frames stand side by side in one picture.
#include "tests/components/SpriteFixture.h"

using namespace vendelo_sdl2;

TEST_F(SpriteAnimation, StripsAreCutAtOnce) {
  writeCells("strip.png", 5, 40, 30);
  SDL_SetRenderDrawColor(renderer, 1, 2, 3, 4);
  const Sprites sprites(100, 50, 40, 30, folder + "strip.png", TSpriteAnimation::LOOP);
  Uint8 r = 0, g = 0, b = 0, a = 0;
  SDL_GetRenderDrawColor(renderer, &r, &g, &b, &a);
  EXPECT_EQ(1, r);
  EXPECT_EQ(4, a);
  EXPECT_EQ(40, sprites.GetOriginalWidth());
  EXPECT_EQ(30, sprites.GetOriginalHeight());
  ASSERT_EQ(5, sprites.GetNumFrames());
  for (int i = 0; i < 5; ++i) {
    const TSprite& sprite = sprites.frame(static_cast<size_t>(i));
    EXPECT_EQ(i + 1, sprite.id) << "counted from 1 here";
    EXPECT_EQ(40 * i, sprite.x);
    EXPECT_EQ(0, sprite.y);
    EXPECT_EQ(40, sprite.width);
    EXPECT_EQ(30, sprite.original_height);
    EXPECT_NE(nullptr, sprite.texture);
  }
}

TEST_F(SpriteAnimation, StripsLoopOverAllTheirFrames) {
  writeCells("strip.png", 5, 40, 30);
  Sprites sprites(100, 50, 40, 30, folder + "strip.png", TSpriteAnimation::LOOP);
  sprites.SetRefreshRate(25.0f);
  const int expected[] = {0, 1, 2, 3, 4, 4, 0, 1};  // the end of the first pass is held for one frame more
  for (Uint32 i = 0; i < 8; ++i) EXPECT_EQ(expected[i], drawn(sprites, 1010 + 40 * i + (i > 0 ? 1 : 0))) << i;
}

TEST_F(SpriteAnimation, AStripThatIsMissingHasNoFrames) {
  testing::internal::CaptureStdout();
  const Sprites missing(0, 0, 40, 30, folder + "nothing.png", TSpriteAnimation::LOOP);
  testing::internal::GetCapturedStdout();
  EXPECT_EQ(0, missing.GetNumFrames());
}

TEST_F(SpriteAnimation, AStripForABoxWithoutASizeHasNoFrames) {
  writeCells("strip.png", 5, 40, 30);
  writeCells("cell.png", 1, 40, 30);
  for (const SDL_Rect& box : {SDL_Rect{0, 0, 0, 0}, SDL_Rect{0, 0, 0, 30}, SDL_Rect{0, 0, 40, 0},
                              SDL_Rect{0, 0, -40, 30}, SDL_Rect{0, 0, 40, -30}})
    for (const char* file : {"strip.png", "cell.png"}) {
      Sprites sprites(0, 0, box.w, box.h, folder + file, TSpriteAnimation::LOOP);
      EXPECT_EQ(0, sprites.GetNumFrames()) << file;
    }
  writeCells("thin.png", 3, 1, 30);
  EXPECT_EQ(3, Sprites(0, 0, 1, 30, folder + "thin.png", TSpriteAnimation::LOOP).GetNumFrames());
  writeCells("line.png", 3, 40, 1);
  EXPECT_EQ(3, Sprites(0, 0, 40, 1, folder + "line.png", TSpriteAnimation::LOOP).GetNumFrames());
}

TEST_F(SpriteAnimation, TheBackgroundOfAStripGoesByTheFlavour) {
  struct Read : Sprites {
    using Sprites::mBackgroundColor;
    using Sprites::Sprites;
  };
  writeCells("strip.png", 1, 40, 30);
  const TFlavour before = TerminalFlavour;
  const struct {
    TFlavour flavour;
    int level;
  } rows[] = {
    {UNKNOWN_FLAVOUR, 0}, {RONDELL_FLAVOUR, 255}, {TAVE_FLAVOUR, 0}, {TAVE2_FLAVOUR, 255}, {VESPERA_FLAVOUR, 0}};
  for (const auto& row : rows) {
    TerminalFlavour = row.flavour;
    Read sprites(0, 0, 40, 30, folder + "strip.png", TSpriteAnimation::LOOP);
    EXPECT_EQ(row.level, sprites.mBackgroundColor.r);
    EXPECT_EQ(row.level, sprites.mBackgroundColor.g);
    EXPECT_EQ(row.level, sprites.mBackgroundColor.b);
    EXPECT_EQ(255, sprites.mBackgroundColor.a);
  }
  TerminalFlavour = before;
}
