#pragma once

#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "common/TBitmapFont.h"
#include "tests/support/TestFont.h"
#include "tests/support/WidgetHarness.h"
#include "vendelo-sdl2/TApplication.h"

// What the tests of the bitmap font share.
namespace bitmapfonttest {

using namespace vendelo_sdl2;

class BitmapFont : public testing::Test {
 protected:
  BitmapFont() {
    // A and V and B: 8 wide, 10 tall, advance 10.
    for (int id : {'A', 'B', 'V'}) description.glyphs.push_back({id, 0, 0, 8, 10, 0, 0, 10});
    testfont::writePicture(folder + "atlas.png", 64, 64, {255, 255, 255, 255});
  }
  ~BitmapFont() override { TerminalFlavour = UNKNOWN_FLAVOUR; }

  // Writes the description and makes a font of it, which the registry or the list of borrowers owns.
  TBitmapFont* make(const std::string& name) { return make(name, testfont::toXml(description)); }
  TBitmapFont* make(const std::string& name, const std::string& xml) {
    testfont::writeText(folder + name + ".fnt", xml);
    return new TBitmapFont(harness.renderer(), name, folder + name + ".fnt");
  }
  struct Size {
    int w = -1, h = -1;
    bool operator==(const Size&) const = default;
  };
  Size measured(const TBitmapFont* font, const std::string& text) {
    Size size;
    SDL_Texture* texture = font->RenderText(harness.renderer(), text, &size.w, &size.h, LEFT_UP);
    Size real;
    if (texture) SDL_QueryTexture(texture, nullptr, nullptr, &real.w, &real.h);
    EXPECT_TRUE(!texture || real == size || size.h == 0);
    if (texture) SDL_DestroyTexture(texture);
    return size;
  }
  int width(const TBitmapFont* font, const std::string& text) { return measured(font, text).w; }
  // The leftmost column of a row in which something was drawn, or -1.
  int firstInked(SDL_Texture* texture, int row) {
    int w = 0, h = 0;
    SDL_QueryTexture(texture, nullptr, nullptr, &w, &h);
    SDL_SetRenderTarget(harness.renderer(), texture);
    std::vector<Uint32> pixels(static_cast<size_t>(w));
    const SDL_Rect line{0, row, w, 1};
    SDL_RenderReadPixels(harness.renderer(), &line, SDL_PIXELFORMAT_RGBA8888, pixels.data(), w * 4);
    SDL_SetRenderTarget(harness.renderer(), nullptr);
    for (int x = 0; x < w; ++x)
      if (pixels[static_cast<size_t>(x)] & 0xff) return x;
    return -1;
  }
  int inked(const TBitmapFont* font, const std::string& text, TAlignment align, int row) {
    SDL_Texture* texture = font->RenderText(harness.renderer(), text, nullptr, nullptr, align);
    const int x = firstInked(texture, row);
    SDL_DestroyTexture(texture);
    return x;
  }

  WidgetHarness harness{200, 100};
  const std::string folder =
    testfont::freshFolder(std::string("Font_") + testing::UnitTest::GetInstance()->current_test_info()->name());
  testfont::Description description;
};

}  // namespace bitmapfonttest
