// The textures that widgets make and give back, counted in front of SDL.
#include <SDL_image.h>
#include <SDL_ttf.h>
#include <dlfcn.h>
#include <errno.h>
#include <malloc.h>
#include <memory>
#include <set>
#include <string>

#include "components/TControlCyphers3.h"
#include "components/TGlyphLabel.h"
#include "components/TImageList.h"
#include "components/TProgressBar.h"
#include "components/TScrollingComponent.h"
#include "components/TSpriteAnimation.h"
#include "components/Tlabel.h"
#include "tests/components/SegmentFont.h"
#include "tests/components/WidgetFixture.h"

using namespace vendelo_sdl2;

namespace {

std::set<SDL_Texture*> living;

template <class F>
F real(const char* name) {
  return reinterpret_cast<F>(dlsym(RTLD_NEXT, name));
}

SDL_Texture* counted(SDL_Texture* texture) {
  if (texture) living.insert(texture);
  return texture;
}

}  // namespace

extern "C" {

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
  living.erase(texture);
  sdl(texture);
}

}  // extern "C"

namespace {

class WidgetTextures : public WidgetTest {
 protected:
  WidgetTextures() : folder(testfont::freshFolder(program_invocation_short_name)) {
    TTF_Init();
    ttf = TTF_OpenFont("/usr/share/fonts/truetype/dejavu/DejaVuSans-Bold.ttf", 20);
  }
  ~WidgetTextures() override {
    TBitmapFont::CleanupBitmapFonts();
    TTF_CloseFont(ttf);
    TTF_Quit();
  }
  void begin() { living.clear(); }
  size_t count() const { return living.size(); }

  const std::string folder;
  TTF_Font* ttf = nullptr;
};

const SDL_Color white{255, 255, 255, 255};

}  // namespace

TEST_F(WidgetTextures, ALabelHasTwoAndLeavesThatOfItsText) {
  auto label = std::make_unique<Tlabel>(nullptr, 0, 0, 300, 60, "one", ttf, white, "label");
  begin();
  label->draw();
  EXPECT_EQ(2u, count()) << "text and shadow";
  for (const char* text : {"another", "one more"}) {
    label->SetText(text);
    label->draw();
    EXPECT_EQ(2u, count());
  }
  label->SplitText(true);
  label->SetText("two lines");
  label->draw();
  EXPECT_EQ(1u, count()) << "the layer alone";
  label->SetText("two others");
  label->draw();
  EXPECT_EQ(1u, count());
  label->SetText("");
  label->draw();
  EXPECT_EQ(0u, count());
  label->SetText("word ");  // its second line cannot be rendered
  label->draw();
  EXPECT_EQ(0u, count());
  label->SetText("last");
  label->draw();
  SDL_Texture* const text = label->GetTargetTexture();
  label.reset();
  EXPECT_EQ((std::set<SDL_Texture*>{text}), living);
}

TEST_F(WidgetTextures, ALabelGivesThatOfItsTextAway) {
  auto label = std::make_unique<Tlabel>(nullptr, 0, 0, 300, 60, "one", ttf, white, "label");
  begin();
  EXPECT_EQ(nullptr, label->TakeTexture());
  label->draw();
  SDL_Texture* const text = label->GetTargetTexture();
  TTexturePtr taken = label->TakeTexture();
  EXPECT_EQ(text, taken.get());
  EXPECT_EQ(nullptr, label->GetTargetTexture());
  label->SetText("another");
  label->draw();
  EXPECT_NE(nullptr, label->GetTargetTexture());
  EXPECT_EQ(3u, count()) << "the one given away, the new text and its shadow";
  taken = label->TakeTexture();
  EXPECT_EQ(2u, count());
  label.reset();
  taken.reset();
  EXPECT_EQ(0u, count()) << "a label that has given its text away leaves none";
}

TEST_F(WidgetTextures, ALabelMakesItsOwnAgainWhenTheyAreLost) {
  Tlabel label(nullptr, 0, 0, 300, 60, "one", ttf, white, "label");
  auto* child = new Tlabel(nullptr, 0, 0, 300, 60, "two", ttf, white, "child");
  label.AddComponent(child);
  label.draw();  // the child too
  for (Tlabel* one : {&label, child}) SDL_SetTextureUserData(one->GetTargetTexture(), this);
  label.OnTexturesLost();
  label.draw();
  for (Tlabel* one : {&label, child}) {
    EXPECT_NE(nullptr, one->GetTargetTexture());
    EXPECT_NE(this, SDL_GetTextureUserData(one->GetTargetTexture()));
  }
}

TEST_F(WidgetTextures, TheSurfacesOfTextsAreGone) {
  const auto held = [] {
    const struct mallinfo2 heap = mallinfo2();
    return static_cast<long>(heap.uordblks + heap.hblkhd);
  };
  const std::string wide(80, 'W');
  Tlabel label(nullptr, 0, 0, 300, 60, "", ttf, white, "label");
  TControlCyphers3 digits(nullptr, 0, 0, 390, 50, 10, "digits");
  TTF_Font* const large = TTF_OpenFont("/usr/share/fonts/truetype/dejavu/DejaVuSans-Bold.ttf", 120);
  const auto round = [&](int number) {
    label.SplitText(number % 2 == 0);
    label.SetText(wide + " " + std::to_string(number));
    label.draw();
    digits.SetFont(large, white);
  };
  for (int i = 0; i < 4; ++i) round(i);
  const long before = held();
  for (int i = 4; i < 24; ++i) round(i);
  EXPECT_LT(held() - before, 500000) << "those of a round have some 400000 bytes";
  TTF_CloseFont(large);
}

TEST_F(WidgetTextures, AGlyphLabelHasOne) {
  const std::string font = testfont::write(folder, "dots", 2);
  auto label = std::make_unique<TGlyphLabel>(nullptr, 0, 0, 300, 60, "ONE", font, "label");
  begin();
  label->draw();
  EXPECT_EQ(1u, count());
  label->SetText("TWO");
  label->draw();
  EXPECT_EQ(1u, count());
  label->SetText("");
  label->draw();
  EXPECT_EQ(0u, count());
  label->SetText("THREE");
  label->draw();
  label.reset();
  EXPECT_EQ(0u, count());
}

TEST_F(WidgetTextures, AGlyphLabelMakesItsOwnAgainWhenItIsLostAndSoDoItsChildren) {
  const std::string font = testfont::write(folder, "dots", 2);
  TGlyphLabel label(nullptr, 0, 0, 300, 60, "ONE", font, "label");
  auto* child = new TGlyphLabel(nullptr, 0, 0, 300, 60, "TWO", font, "child");
  label.AddComponent(child);
  for (TGlyphLabel* one : {&label, child}) {
    one->draw();
    SDL_SetTextureUserData(one->GetTargetTexture(), this);
  }
  label.OnTexturesLost();
  for (TGlyphLabel* one : {&label, child}) {
    one->draw();
    EXPECT_NE(nullptr, one->GetTargetTexture());
    EXPECT_NE(this, SDL_GetTextureUserData(one->GetTargetTexture()));
  }
}

TEST_F(WidgetTextures, AFontsAtlasIsATextureWhenAskedForAndABorrowersIsTheSame) {
  const std::string path = testfont::write(folder, "dots", 2);
  begin();
  auto* font = new TBitmapFont(renderer, "font", path + ".fnt");
  auto* borrower = new TBitmapFont(renderer, "borrower", path + ".fnt");
  SDL_DestroyTexture(font->RenderText(renderer, "A TEXT", nullptr, nullptr, CENTER_CENTER));
  EXPECT_EQ(0u, count()) << "texts are put together in memory";
  EXPECT_NE(nullptr, borrower->GlyphTexture());
  EXPECT_EQ(borrower->GlyphTexture(), font->GlyphTexture());
  EXPECT_EQ(1u, count());
  delete borrower;
  EXPECT_EQ(1u, count());
  TBitmapFont::CleanupBitmapFonts();
  EXPECT_EQ(0u, count());
}

TEST_F(WidgetTextures, DigitsHaveTheirStripAndTwoSeparators) {
  TBitmapFont* const segments = segmentFont(renderer, "");
  begin();
  auto digits = std::make_unique<TControlCyphers3>(nullptr, 0, 0, 390, 50, 10, "digits");
  for (int i = 0; i < 2; ++i) {
    digits->SetFont(segments);
    EXPECT_EQ(3u, count());
    digits->SetFont(ttf, white);
    EXPECT_EQ(3u, count()) << "those of the single glyphs are gone";
  }
  digits->SetFinalValue(123456789);
  for (int i = 0; i < 20; ++i) {
    clock.advance(16);
    digits->draw();
  }
  EXPECT_EQ(3u, count());
  digits.reset();
  EXPECT_EQ(0u, count());
}

TEST_F(WidgetTextures, ATickerHasOne) {
  begin();
  auto ticker = std::make_unique<TScrollingComponent>(nullptr, 0, 0, 300, 40, "ticker");
  EXPECT_EQ(1u, count());
  ticker->AddContent(new TGuiComponent(nullptr, 0, 0, 10, 10, "child"), -1, TScrollingComponent::CENTER);
  ticker->draw();
  EXPECT_EQ(1u, count());
  ticker.reset();
  EXPECT_EQ(0u, count());
}

TEST_F(WidgetTextures, ABarHasItsTwoImages) {
  testfont::writePicture(folder + "empty.png", 20, 20, white);
  testfont::writePicture(folder + "full.png", 20, 20, white);
  begin();
  auto bar = std::make_unique<TProgressBar>(nullptr, 0, 0, 20, 20, "bar");
  for (int i = 0; i < 2; ++i) {
    bar->SetEmptyImage(folder + "empty.png");
    bar->SetFullImage(folder + "full.png");
    EXPECT_EQ(2u, count());
  }
  bar->SetFullImage(app.makeTexture(10, 10, white));
  EXPECT_EQ(2u, count());
  bar.reset();
  EXPECT_EQ(0u, count());
}

TEST_F(WidgetTextures, AnAnimationMakesThemAtFirstUse) {
  testfont::writePicture(folder + "cells.png", 60, 20, white);
  std::string xml = "<TextureAtlas imagePath=\"cells.png\">";
  for (const char* x : {"0", "20", "40"})
    xml += std::string("<sprite n=\"f\" x=\"") + x + "\" y=\"0\" w=\"20\" h=\"20\"/>";
  testfont::writeText(folder + "cells.xml", xml + "</TextureAtlas>");
  begin();
  auto sprites =
    std::make_unique<TSpriteAnimation>(nullptr, 0, 0, 20, 20, folder + "cells", TSpriteAnimation::NONE, "sprites");
  sprites->SetFrame(0, false);
  EXPECT_EQ(0u, count());
  for (int i = 0; i < 3; ++i) sprites->draw();
  EXPECT_EQ(1u, count());
  sprites->drawFrame(1, SDL_Rect{0, 0, 1, 1});
  sprites->drawFrame(1, SDL_Rect{0, 0, 1, 1});
  EXPECT_EQ(2u, count());
  SDL_DestroyTexture(sprites->GetFrame(2));
  EXPECT_EQ(3u, count());
  auto copy = std::make_unique<TSpriteAnimation>(nullptr, 0, 0, 20, 20, "", TSpriteAnimation::NONE, "copy");
  copy->CopyData(sprites.get());
  sprites.reset();
  EXPECT_EQ(3u, count()) << "shared frames live on";
  copy.reset();
  EXPECT_EQ(0u, count());
}

TEST_F(WidgetTextures, AnImageListGivesNoneBack) {
  auto list = std::make_unique<TImageList>(nullptr, 0, 0, 20, 20, "list");
  begin();
  list->pushImage(app.makeTexture(10, 10, white));
  list->DisplayImage(0, 0, app.makeTexture(5, 5, white), 1, 1);
  list->draw();
  list->DisplayImage(-1, 0, nullptr, 0, 0);
  list.reset();
  EXPECT_EQ(2u, count());
  while (!living.empty()) SDL_DestroyTexture(*living.begin());
}
