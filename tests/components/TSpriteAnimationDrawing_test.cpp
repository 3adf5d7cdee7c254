// Where and how the sprite animation draws its frames, and what its files make of them.
#include <dlfcn.h>
#include <cstring>
#include <memory>

#include "tests/components/SpriteFixture.h"

using namespace vendelo_sdl2;

namespace {

// The draw colour of the renderer while a picture was loaded last, as 0xRRGGBBAA.
Uint32 colourOfTheLoad = 0;

Uint32 drawColour(SDL_Renderer* renderer) {
  Uint8 r = 0, g = 0, b = 0, a = 0;
  SDL_GetRenderDrawColor(renderer, &r, &g, &b, &a);
  return static_cast<Uint32>(r) << 24 | static_cast<Uint32>(g) << 16 | static_cast<Uint32>(b) << 8 | a;
}

struct Plain : TGuiComponent {
  Plain(int x, int y) : TGuiComponent(nullptr, x, y, 400, 200, "parent") {}
};

class SpriteDrawing : public SpriteAnimation {
 protected:
  ~SpriteDrawing() override { TerminalFlavour = flavour; }
  // One frame of 40 by 20, trimmed out of 100 by 60.
  std::string trimmed() {
    writeCells("cells.png", 1, 40, 20);
    return write("trimmed", R"(<TextureAtlas imagePath="cells.png">
      <sprite n="a" x="0" y="0" w="40" h="20" oX="7" oY="9" oW="100" oH="60"/></TextureAtlas>)");
  }
  const TFlavour flavour = TerminalFlavour;
};

}  // namespace

// In front of SDL.
extern "C" SDL_Texture* SDL_CreateTextureFromSurface(SDL_Renderer* renderer, SDL_Surface* picture) {
  static const auto next =
    reinterpret_cast<decltype(&SDL_CreateTextureFromSurface)>(dlsym(RTLD_NEXT, "SDL_CreateTextureFromSurface"));
  colourOfTheLoad = drawColour(renderer);
  return next(renderer, picture);
}

TEST_F(SpriteDrawing, AFrameOnItsOwnIsPlacedLikeADrawnOne) {
  const struct {
    const char* name;
    bool child;
    int w, h;  // of the component
    double fx, fy;
    int ox, oy;
    SDL_Rect expected;  // of the frame at 120, 80
  } rows[] = {{"root", false, 100, 60, 1, 1, 0, 0, {127, 89, 40, 20}},
              {"root smaller than the frame", false, 60, 31, 1, 1, 0, 0, {107, 75, 40, 20}},
              {"root, resized and moved", false, 100, 60, 0.5, 2, 1, 1, {65, 179, 20, 21}},
              {"child", true, 100, 60, 1, 1, 0, 0, {127, 89, 40, 20}},
              {"child smaller", true, 61, 31, 1, 1, 0, 0, {108, 75, 40, 20}},
              {"child, resized and moved", true, 100, 60, 0.5, 1.5, 2, 3, {126, 97, 20, 30}}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    Plain parent(10, 10);
    auto* sprites = new Sprites(0, 0, row.w, row.h, trimmed(), TSpriteAnimation::NONE);
    std::unique_ptr<Sprites> root;
    if (row.child)
      parent.AddComponent(sprites);
    else
      root.reset(sprites);
    sprites->SetResizeFactor(row.fx, row.fy);
    sprites->SetOffset(row.ox, row.oy);
    clear(0, 0, 0);
    sprites->drawFrame(0, SDL_Rect{120, 80, 1, 1});
    EXPECT_EQ(row.expected, inked(0));
  }
}

TEST_F(SpriteDrawing, ThePivotIsTheMiddleOfTheLowerEdgeAsDrawn) {
  struct Turned : Sprites {
    using Sprites::mRotPivot;
    using Sprites::Sprites;
  };
  Turned sprites(150, 60, 80, 50, atlas("turn", 1, 80, 50), TSpriteAnimation::NONE);
  sprites.loaded().SetResizeFactor(0.5, 0.3);
  for (const double upright : {0.0, -40.0}) {
    sprites.setAngle(upright);
    sprites.draw();
    EXPECT_EQ((SDL_Point{-1, -1}), sprites.mRotPivot) << "an upright frame has none";
  }
  sprites.setAngle(0.5);
  sprites.draw();
  EXPECT_EQ((SDL_Point{20, 15}), sprites.mRotPivot);
}

TEST_F(SpriteDrawing, AHalfTurnGoesOverTheLowerEdge) {
  Sprites sprites(150, 60, 80, 50, atlas("turn", 1, 80, 50), TSpriteAnimation::NONE);
  clear(0, 0, 0);
  sprites.loaded().setAngle(180.0);
  sprites.draw();
  EXPECT_EQ((SDL_Rect{150, 110, 80, 50}), inked(0));
  clear(0, 0, 0);
  sprites.drawFrame(0, SDL_Rect{150, 60, 1, 1});
  EXPECT_EQ((SDL_Rect{150, 110, 80, 50}), inked(0));
}

TEST_F(SpriteDrawing, UnderAParentThePlaceTakesTheFactorsAndIsTruncated) {
  Plain parent(10, 10);
  auto* sprites = new Sprites(-15, 25, 40, 20, atlas("place", 1, 40, 20), TSpriteAnimation::NONE);
  parent.AddComponent(sprites);
  sprites->loaded().SetResizeFactor(1.3, 0.5);  // -9.5 and 22.5
  clear(0, 0, 0);
  sprites->draw();
  EXPECT_EQ((SDL_Rect{0, 22, 52 - 9, 10}), inked(0));
}

TEST_F(SpriteDrawing, GetFrameLeavesTheRenderTargetAndClearsToTheBackground) {
  writeCells("cells.png", 1, 40, 20);
  const std::string base = write("ground", R"(<TextureAtlas imagePath="cells.png" backgroundColor="1,2,3,255">
      <sprite n="a" x="0" y="0" w="40" h="20" oX="7" oY="9" oW="100" oH="60"/></TextureAtlas>)");
  SDL_Texture* target = SDL_CreateTexture(renderer, SDL_PIXELFORMAT_RGBA8888, SDL_TEXTUREACCESS_TARGET, 20, 20);
  textures.push_back(target);
  for (const TFlavour each : {VESPERA_FLAVOUR, UNKNOWN_FLAVOUR}) {
    TerminalFlavour = each;
    Sprites sprites(0, 0, 100, 60, base, TSpriteAnimation::NONE);
    SDL_SetRenderTarget(renderer, target);
    SDL_SetRenderDrawColor(renderer, 200, 100, 50, 255);
    SDL_Texture* frame = sprites.GetFrame(0);
    EXPECT_EQ(target, SDL_GetRenderTarget(renderer));
    EXPECT_EQ(0xc86432ffu, drawColour(renderer));
    SDL_SetRenderTarget(renderer, frame);
    Uint32 around = 0;
    const SDL_Rect corner{0, 0, 1, 1};
    SDL_RenderReadPixels(renderer, &corner, SDL_PIXELFORMAT_RGBA8888, &around, 4);
    EXPECT_EQ(0x01020300u, around);
    SDL_SetRenderTarget(renderer, nullptr);
    SDL_DestroyTexture(frame);
  }
}

TEST_F(SpriteDrawing, CopiesTakeWidthHeightAndMarksEachFromItsPlace) {
  Sprites source(0, 0, 30, 20, atlas("copied", 6, 30, 20), TSpriteAnimation::LOOP);
  source.loaded().SetLoopStartFrame(1);
  source.SetLoopStopFrame(4);
  source.SetFrame(3, false);
  source.SetRefreshRate(50.0f);
  struct Copy : Sprites {
    using Sprites::mLoopStartFrame;
    using Sprites::mLoopStopFrame;
    using Sprites::mRefreshRate;
    using Sprites::Sprites;
  };
  Copy copy(0, 0, 30, 20, "", TSpriteAnimation::NONE);
  copy.CopyData(&source);
  EXPECT_EQ(30, copy.GetOriginalWidth());
  EXPECT_EQ(20, copy.GetOriginalHeight());
  EXPECT_EQ(1, copy.mLoopStartFrame);
  EXPECT_EQ(4, copy.mLoopStopFrame);
  EXPECT_EQ(0, copy.GetCurrentFrame()) << "what it shows is its own";
  EXPECT_EQ(23.809525f, copy.mRefreshRate);
}

TEST_F(SpriteDrawing, TheOriginalSizeIsTheFirstThatIsNotNothing) {
  writeCells("cells.png", 3, 20, 20);
  Sprites sprites(0, 0, 20, 20, write("sizes", R"(<TextureAtlas imagePath="cells.png">
      <sprite n="a" x="0" y="0" w="0" h="20"/><sprite n="b" x="0" y="0" w="15" h="10"/>
      <sprite n="c" x="0" y="0" w="18" h="12"/></TextureAtlas>)"),
                  TSpriteAnimation::NONE);
  sprites.loaded();
  EXPECT_EQ(15, sprites.GetOriginalWidth());
  EXPECT_EQ(20, sprites.GetOriginalHeight());
}

TEST_F(SpriteDrawing, CutFramesKeepTheirTransparency) {
  SDL_Surface* image = SDL_CreateRGBSurfaceWithFormat(0, 20, 10, 32, SDL_PIXELFORMAT_RGBA32);
  SDL_FillRect(image, nullptr, SDL_MapRGBA(image->format, 200, 100, 50, 128));
  IMG_SavePNG(image, (folder + "half.png").c_str());
  SDL_FreeSurface(image);
  Sprites sprites(0, 0, 20, 10, write("half", R"(<TextureAtlas imagePath="half.png">
      <sprite n="a" x="0" y="0" w="20" h="10"/></TextureAtlas>)"),
                  TSpriteAnimation::NONE);
  sprites.loaded();
  SDL_Surface* cut = sprites.frame(0).surface;
  ASSERT_NE(nullptr, cut);
  Uint8 r = 0, g = 0, b = 0, a = 0;
  Uint32 value = 0;
  std::memcpy(&value, cut->pixels, 4);
  SDL_GetRGBA(value, cut->format, &r, &g, &b, &a);
  EXPECT_EQ(200, r);
  EXPECT_EQ(100, g);
  EXPECT_EQ(50, b);
  EXPECT_EQ(128, a);
  clear(0, 0, 200);
  sprites.draw();
  EXPECT_NEAR(100, static_cast<int>(pixel(5, 5) >> 16), 2);
  EXPECT_NEAR(125, static_cast<int>(pixel(5, 5) & 255), 2);
}

TEST_F(SpriteDrawing, AnyNameWithDotPngInItIsAStrip) {
  writeCells("strip.png", 3, 20, 20);
  testing::internal::CaptureStdout();
  Sprites sprites(0, 0, 20, 20, folder + "strip.png_", TSpriteAnimation::LOOP);  // the loader's other endings hold
  testing::internal::GetCapturedStdout();
  EXPECT_EQ(3, sprites.GetNumFrames());
  EXPECT_EQ(0, drawn(sprites, 1000)) << "cut at once";
  SDL_BlendMode mode = SDL_BLENDMODE_INVALID;
  SDL_GetTextureBlendMode(sprites.frame(0).texture.get(), &mode);
  EXPECT_EQ(SDL_BLENDMODE_BLEND, mode);
}

TEST_F(SpriteDrawing, TheDrawColourIsTheBackgroundsWhileAStripLoads) {
  writeCells("strip.png", 3, 20, 20);
  const struct {
    TFlavour flavour;
    Uint32 colour;
  } rows[] = {{RONDELL_FLAVOUR, 0xffffffff}, {TAVE2_FLAVOUR, 0xffffffff}, {VESPERA_FLAVOUR, 0x000000ff}};
  for (const auto& row : rows) {
    TerminalFlavour = row.flavour;
    SDL_SetRenderDrawColor(renderer, 1, 2, 3, 4);
    Sprites sprites(0, 0, 20, 20, folder + "strip.png", TSpriteAnimation::LOOP);
    EXPECT_EQ(row.colour, colourOfTheLoad);
    EXPECT_EQ(0x01020304u, drawColour(renderer)) << "and the old one again afterwards";
  }
}

TEST_F(SpriteDrawing, CopiesShareTheFrames) {
  auto source = std::make_unique<Sprites>(0, 0, 20, 20, atlas("shared", 6, 20, 20), TSpriteAnimation::LOOP);
  Sprites copy(0, 0, 20, 20, "", TSpriteAnimation::ONCE);
  copy.CopyData(nullptr);
  copy.CopyData(&source->loaded());
  ASSERT_EQ(6, copy.GetNumFrames());
  for (size_t i = 0; i < 6; ++i) EXPECT_EQ(&source->frame(i), &copy.frame(i));
  source.reset();
  EXPECT_EQ(0, drawn(copy, 1000)) << "the frames live as long as one of them";
}

TEST_F(SpriteDrawing, CopiesTakeTheBlendModeAndKeepTheirOwnMode) {
  writeCells("cells.png", 1, 20, 20);
  Sprites source(0, 0, 20, 20, write("added", R"(<TextureAtlas imagePath="cells.png" blendMode="ADD">
    <sprite n="a" x="0" y="0" w="20" h="20"/></TextureAtlas>)"),
                 TSpriteAnimation::LOOP);
  Sprites copy(0, 0, 20, 20, "", TSpriteAnimation::ONCE);
  copy.CopyData(&source.loaded());
  copy.draw();
  SDL_BlendMode mode = SDL_BLENDMODE_INVALID;
  SDL_GetTextureBlendMode(copy.frame(0).texture.get(), &mode);
  EXPECT_EQ(SDL_BLENDMODE_ADD, mode);
  EXPECT_TRUE(copy.FinishPlaying()) << "its single frame has been shown once";
}
