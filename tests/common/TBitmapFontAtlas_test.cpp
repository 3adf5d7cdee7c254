// Which picture a bitmap font takes for its atlas, and how it is loaded.
#include <SDL_image.h>
#include <dlfcn.h>

#include "tests/common/BitmapFontFixture.h"
#include "vendelo-sdl2/TGuiComponent.h"

using namespace bitmapfonttest;

namespace {

// The draw colour of the renderer while a picture was loaded last, as 0xRRGGBBAA.
Uint32 colourOfTheLoad = 0;

Uint32 drawColour(SDL_Renderer* renderer) {
  Uint8 r = 0, g = 0, b = 0, a = 0;
  SDL_GetRenderDrawColor(renderer, &r, &g, &b, &a);
  return static_cast<Uint32>(r) << 24 | static_cast<Uint32>(g) << 16 | static_cast<Uint32>(b) << 8 | a;
}

}  // namespace

// In front of SDL_image.
extern "C" SDL_Surface* IMG_Load(const char* file) {
  static const auto next = reinterpret_cast<decltype(&IMG_Load)>(dlsym(RTLD_NEXT, "IMG_Load"));
  colourOfTheLoad = drawColour(vendelo_sdl2::TGuiComponent::GetRenderer());
  return next(file);
}

namespace {

class BitmapFontAtlas : public BitmapFont {
 protected:
  BitmapFontAtlas() {
    testfont::writePicture(folder + "one.png", 11, 9, {255, 0, 0, 255});
    testfont::writePicture(folder + "two.png", 22, 9, {0, 255, 0, 255});
  }
  int widthOf(SDL_Texture* texture) {
    int w = -1;
    SDL_QueryTexture(texture, nullptr, nullptr, &w, nullptr);
    return w;
  }
  // The width of the atlas of a font whose pages are these.
  int atlas(const std::string& name, const std::string& pages) {
    const std::string xml = "<font><info padding='0,0,0,0'/><common lineHeight='20' base='16'/><pages>" + pages +
                            "</pages><chars/></font>";
    return widthOf(make(name, xml)->GlyphTexture());
  }
};

TEST_F(BitmapFontAtlas, TheFileComesBeforeThePack) {
  EXPECT_EQ(11, atlas("both", "<page file='one.png' pack='two.png'/>"));
  EXPECT_EQ(11, atlas("turned", "<page pack='two.png' file='one.png'/>"));
  EXPECT_EQ(22, atlas("pack", "<page pack='two.png'/>"));
  testing::internal::CaptureStdout();
  EXPECT_EQ(-1, atlas("missing", "<page file='none.png' pack='two.png'/>")) << "nor is the pack a way out";
  testing::internal::GetCapturedStdout();
}

TEST_F(BitmapFontAtlas, OnlyTheFirstPageIsRead) {
  EXPECT_EQ(22, atlas("two", "<page id='0' file='two.png'/><page id='1' file='one.png'/>"));
}

TEST_F(BitmapFontAtlas, TheDrawColourIsTheBackgroundsWhileTheAtlasLoads) {
  description.image = "one.png";
  description.backgroundColor = "10,20,30,40";
  SDL_SetRenderDrawColor(harness.renderer(), 1, 2, 3, 4);
  make("coloured");
  EXPECT_EQ(0x0a141e28u, colourOfTheLoad);
  EXPECT_EQ(0x01020304u, drawColour(harness.renderer())) << "and the old one again afterwards";
  description.backgroundColor.clear();
  make("plain");
  EXPECT_EQ(0x000000ffu, colourOfTheLoad);
}

TEST_F(BitmapFontAtlas, TheBackgroundColourFillsFromTheFrontAndItsLastPlaceFromTheEnd) {
  const struct {
    const char* text;
    Uint32 rgba;
  } rows[] = {{"1,2,3,4", 0x01020304}, {"1,2,3,4,5", 0x01020305}, {"1,2,3", 0x01020003}, {"9", 0x00000009}};
  int n = 0;
  for (const auto& row : rows) {
    description.backgroundColor = row.text;
    const SDL_Color c = make("colour" + std::to_string(n++))->BackgroundColor();
    EXPECT_EQ(row.rgba,
              static_cast<Uint32>(c.r) << 24 | static_cast<Uint32>(c.g) << 16 | static_cast<Uint32>(c.b) << 8 | c.a)
      << row.text;
  }
}

TEST_F(BitmapFontAtlas, ABorrowerTakesEverySizeAndColour) {
  description.padding = "1,2,3,4";
  description.backgroundColor = "10,20,30,40";
  description.lineHeight = 31;
  description.base = 27;
  const TBitmapFont* first = make("first");
  colourOfTheLoad = 0;
  const TBitmapFont* second = new TBitmapFont(harness.renderer(), "second", folder + "first.fnt");
  EXPECT_EQ(0u, colourOfTheLoad) << "it loads no picture of its own";
  EXPECT_EQ(first->GlyphTexture(), second->GlyphTexture());
  EXPECT_EQ(1, second->PaddingTop());
  EXPECT_EQ(2, second->PaddingRight());
  EXPECT_EQ(3, second->PaddingBottom());
  EXPECT_EQ(4, second->PaddingLeft());
  EXPECT_EQ(31, second->LineHeight());
  EXPECT_EQ(27, second->Baseline());
  EXPECT_EQ(10, second->BackgroundColor().r);
  EXPECT_EQ(20, second->BackgroundColor().g);
  EXPECT_EQ(30, second->BackgroundColor().b);
  EXPECT_EQ(40, second->BackgroundColor().a);
}

}  // namespace
