#pragma once

#include <gtest/gtest.h>
#include <algorithm>
#include <string>

#include "common/TBitmapFont.h"
#include "components/TGlyphLabel.h"
#include "tests/support/TestFont.h"
#include "tests/support/WidgetHarness.h"

// What the tests of the glyph label share.
namespace glyphlabeltest {

using namespace vendelo_sdl2;

class Label : public TGlyphLabel {
 public:
  using TGlyphLabel::TGlyphLabel;
  bool resize() const { return mResize; }
  bool onlyDown() const { return mResizeOnlyDown; }
  bool autosize() const { return mAutosizeX || mAutosizeY; }
};

// The font has one glyph "A" of 195 by 40 full pixels, so that "A" makes a texture of 200 by 40, and "B" of 15 by
// 20, which makes 20 by 40.
class GlyphLabel : public testing::Test {
 protected:
  GlyphLabel() {
    testfont::writePicture(folder + "atlas.png", 256, 64, {255, 255, 255, 255});
    testfont::Description description;
    description.lineHeight = 40;
    description.glyphs = {{'A', 0, 0, 195, 40, 0, 0, 195}, {'B', 0, 0, 15, 20, 0, 0, 15}};
    testfont::writeText(fontName + ".fnt", testfont::toXml(description));
    harness.setBackdrop({0, 0, 0, 255});
  }

  Label* make(SDL_Rect place, const std::string& text) {
    return harness.add(new Label(nullptr, place.x, place.y, place.w, place.h, text, fontName, ""));
  }
  // The rectangle of what was drawn.
  SDL_Rect drawn() {
    harness.frame();
    int left = harness.picture()->w, top = harness.picture()->h, right = -1, bottom = -1;
    for (int y = 0; y < harness.picture()->h; ++y)
      for (int x = 0; x < harness.picture()->w; ++x)
        if (harness.pixel(x, y)) {
          left = std::min(left, x);
          top = std::min(top, y);
          right = std::max(right, x);
          bottom = std::max(bottom, y);
        }
    if (right < 0) return {0, 0, 0, 0};
    return {left, top, right - left + 1, bottom - top + 1};
  }
  void expectDrawn(SDL_Rect expected) {
    const SDL_Rect r = drawn();
    EXPECT_EQ(expected.x, r.x);
    EXPECT_EQ(expected.y, r.y);
    EXPECT_EQ(expected.w, r.w);
    EXPECT_EQ(expected.h, r.h);
  }

  WidgetHarness harness{300, 200};
  const std::string folder = testfont::freshFolder(std::string("GlyphLabel_") +
                                                   testing::UnitTest::GetInstance()->current_test_info()->name());
  const std::string fontName = folder + "block";
};

}  // namespace glyphlabeltest
