// The check measures texts without a renderer: as the program's own fonts do.
#include "tools/skincheck/TextFit.h"

#include <gtest/gtest.h>

#include <random>

#include "SkinFiles.h"
#include "common/TBitmapFont.h"
#include "components/TGlyphLabel.h"
#include "tests/support/TestFont.h"
#include "tests/support/WidgetHarness.h"
#include "tools/skincheck/FontFile.h"
#include "tools/skincheck/TextSamples.h"

using namespace vendelo_sdl2;

namespace {

class TextFit : public testing::Test {
 protected:
  // Both readers' view of one font.
  void open(const std::string& path) {
    XmlFile file(path, findings);
    data = {};
    ASSERT_TRUE(readFont(file, data));
    font = new TBitmapFont(harness.renderer(), path, path);
    ASSERT_EQ(font, TBitmapFont::FindBitmapFont(path));
  }
  // The sizes that the program gives out and those of the texture that it makes.
  void expectSame(const std::string& text) {
    int w = -1, h = -1;
    SDL_Texture* texture = font->RenderText(harness.renderer(), text, &w, &h, LEFT_UP);
    const TextSize size = measureText(data, text);
    EXPECT_EQ(w, size.width) << text;
    EXPECT_EQ(h, size.height) << text;
    ASSERT_NE(nullptr, texture) << text;
    int textureW = 0, textureH = 0;
    SDL_QueryTexture(texture, nullptr, nullptr, &textureW, &textureH);
    EXPECT_EQ(textureW, size.width) << text;
    EXPECT_EQ(textureH, size.height) << text;
    SDL_DestroyTexture(texture);
  }

  WidgetHarness harness{400, 200};
  Findings findings;
  FontData data;
  TBitmapFont* font = nullptr;
};

TEST_F(TextFit, MeasuresTheSamplesAsTheProgramDoes) {
  int texts = 0;
  for (const char* name : {"currency", "uni_font", "jackpot_win_label", "info_bar_font", "emerald_hours_font",
                           "HelveticaBold26px_Instructions", "HelveticaBold20px_SmallLabel"}) {
    SCOPED_TRACE(name);
    open(skinfiles::kSkin + "Fonts/" + name + ".fnt");
    for (const TextSample& sample : textSamples()) {
      expectSame(sample.text);
      ++texts;
    }
    expectSame("AV\nTo\n\nWA\n");
  }
  EXPECT_GT(texts, 200);
}

TEST_F(TextFit, MeasuresAnyTextInAnyFontAsTheProgramDoes) {
  const std::string folder = testfont::freshFolder("TextFit");
  testfont::writePicture(folder + "atlas.png", 64, 64, {255, 255, 255, 255});
  const std::string letters[] = {"A", "V", "ä", "€", "x", "\n", " ", "𝄞"};
  const int ids[] = {'A', 'V', 0xe4, 0x20ac, ' ', 0x1d11e};  // no x
  std::mt19937 random(7);
  const auto between = [&random](int low, int high) {
    return low + static_cast<int>(random() % static_cast<unsigned>(high - low + 1));
  };
  for (int i = 0; i < 20; ++i) {
    SCOPED_TRACE(i);
    testfont::Description description;
    description.lineHeight = between(5, 30);
    for (const int id : ids)
      description.glyphs.push_back(
        {id, 0, 0, between(0, 30), between(0, 30), between(-5, 5), between(-5, 10), between(-3, 35)});
    description.glyphs.push_back({'A', 0, 0, 60, 60, 0, 0, 60});
    for (int k = 0; k < 12; ++k)
      description.kernings.push_back({ids[between(0, 5)], ids[between(0, 5)], between(-6, 6)});
    const std::string path = folder + std::to_string(i) + ".fnt";
    testfont::writeText(path, testfont::toXml(description));
    open(path);
    for (int t = 0; t < 20; ++t) {
      std::string text;
      for (int n = between(1, 12); n > 0; --n) text += letters[between(0, 7)];
      expectSame(text);
    }
  }
}

// As large as the program's label draws a text that it shrinks.
TEST_F(TextFit, ScalesAsTheProgramDoes) {
  const std::string path = testfont::write(testfont::freshFolder("TextFitScale"), "dots", 4);
  open(path + ".fnt");
  for (const std::string text : {"A", "AVAVAVAVAVAV", "A\nB\nC\nD", "AVAVAVAV\nA\nA\nA"}) {
    const TextSize size = measureText(data, text);
    const double scale = shrunkScale(size, 100, 50);
    auto* label =
      harness.add(new TGlyphLabel(harness.renderer(), 0, 0, 100, 50, text, path + ".fnt", "of " + text));
    label->SetResizeOnlyDown(true);
    label->SetAlignment(LEFT_UP);
    harness.setBackdrop({0, 0, 0, 255});
    harness.frame();
    int right = -1, bottom = -1;
    for (int y = 0; y < 200; ++y)
      for (int x = 0; x < 400; ++x)
        if (harness.pixel(x, y) != 0) {
          right = std::max(right, x);
          bottom = std::max(bottom, y);
        }
    // The texture has 5 clear pixels at the right, and clear rows below the letters.
    EXPECT_NEAR(static_cast<double>(size.line) * scale, right + 1, 4 * scale + 1.5) << text;
    EXPECT_LE(bottom, static_cast<double>(size.height) * scale) << text;
    label->_setVisible(false);
  }
  EXPECT_EQ(1.0, shrunkScale({}, 100, 50));
  EXPECT_EQ(1.0, shrunkScale({50, 20, 45}, 100, 50));
  EXPECT_EQ(0.5, shrunkScale({200, 40, 195}, 100, 50));
  EXPECT_EQ(0.25, shrunkScale({200, 200, 195}, 100, 50));
}

TEST(CharacterName, IsForPeople) {
  EXPECT_EQ("A (U+0041)", characterName('A'));
  EXPECT_EQ("€ (U+20AC)", characterName(0x20ac));
  EXPECT_EQ("ä (U+00E4)", characterName(0xe4));
  EXPECT_EQ("U+0020", characterName(' '));
  EXPECT_EQ("U+1D11E", characterName(0x1d11e));
  EXPECT_EQ("U+D800", characterName(0xd800));
}

TEST(TextSamples, HaveARoomOrBelongToPrizes) {
  for (const TextSample& sample : textSamples()) EXPECT_NE(nullptr, roomOf(sample.font)) << sample.text;
  EXPECT_EQ(nullptr, roomOf(""));
  EXPECT_EQ((std::vector<int>{'a', 0xe4, 0x20ac, 0x1d11e, '\n'}), codePoints("aä€𝄞\n"));
}

}  // namespace
