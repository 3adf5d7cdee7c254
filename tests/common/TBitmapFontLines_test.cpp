// The lines of a text in a bitmap font: how many, how high, and where the pen stands on them.
#include "tests/common/BitmapFontFixture.h"

using namespace bitmapfonttest;

namespace {

class BitmapFontLines : public BitmapFont {
 protected:
  // The leftmost inked columns of each row of 20 pixels, -1 for an empty one.
  std::vector<int> lines(const TBitmapFont* font, const std::string& text, TAlignment align) {
    SDL_Texture* texture = font->RenderText(harness.renderer(), text, nullptr, nullptr, align);
    int h = 0;
    SDL_QueryTexture(texture, nullptr, nullptr, nullptr, &h);
    std::vector<int> all;
    for (int y = 0; y < h; y += 20) all.push_back(firstInked(texture, y));
    SDL_DestroyTexture(texture);
    return all;
  }
  // Every inked column of the first row.
  std::vector<int> columns(const TBitmapFont* font, const std::string& text) {
    int w = 0;
    SDL_Texture* texture = font->RenderText(harness.renderer(), text, &w, nullptr, LEFT_UP);
    SDL_SetRenderTarget(harness.renderer(), texture);
    std::vector<Uint32> pixels(static_cast<size_t>(w));
    const SDL_Rect line{0, 0, w, 1};
    SDL_RenderReadPixels(harness.renderer(), &line, SDL_PIXELFORMAT_RGBA8888, pixels.data(), w * 4);
    SDL_SetRenderTarget(harness.renderer(), nullptr);
    SDL_DestroyTexture(texture);
    std::vector<int> all;
    for (int x = 0; x < w; ++x)
      if (pixels[static_cast<size_t>(x)] & 0xff) all.push_back(x);
    return all;
  }
  using Lines = std::vector<int>;
};

// Lines are counted by the bytes "\n", also in text that is no UTF-8.
TEST_F(BitmapFontLines, AreCountedByTheirBytes) {
  const TBitmapFont* font = make("font");
  const struct {
    const char* name;
    std::string text;
    Size size;
    Lines drawn;
  } rows[] = {
    {"whole text", "A\nB", {13, 40}, {0, 0}},
    {"a break inside a sequence of three", "A\xe2\nBA", {8 + 8 + 5, 40}, {0, -1}},
    {"three breaks inside one of four", "A\xf0\n\n\n", {13, 80}, {0, -1, -1, -1}},
    {"a break in a sequence that the end cuts", "A\xe2\n", {13, 40}, {0, -1}},
    {"a sequence of two whose value is a break", "A\xc2\nB", {13, 40}, {0, 0}},
    {"a break without its byte",
     "A\xc0\x8a"
     "B",
     {13, 20},
     {0}},
    {"bytes that start nothing",
     "A\xff\n\x80"
     "B",
     {13, 40},
     {0, 0}},
    {"latin 1",
     "B\xe4\xf6\n\xfc"
     "A\n",
     {13, 60},
     {0, -1, -1}},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    const Size size = measured(font, row.text);
    EXPECT_EQ(row.size.w, size.w);
    EXPECT_EQ(row.size.h, size.h);
    EXPECT_EQ(row.drawn, lines(font, row.text, LEFT_UP));
  }
}

TEST_F(BitmapFontLines, EachIsCentredByItsOwnWidthAlsoAnEmptyOne) {
  const TBitmapFont* font = make("font");
  // Widths 28, 0, 8 and 0 in 33.
  EXPECT_EQ((Lines{3, -1, 13, -1}), lines(font, "ABA\n\nA\n", CENTER_CENTER));
  EXPECT_EQ((Lines{5, -1, 25, -1}), lines(font, "ABA\n\nA\n", RIGHT_CENTER));
  EXPECT_EQ((Lines{13, 3}), lines(font, "A\nABA", CENTER_UP));
}

TEST_F(BitmapFontLines, AnOffsetOfOneCountsBelowTheGlyph) {
  description.glyphs.push_back({'t', 0, 0, 8, 30, 0, 1, 10});
  description.glyphs.push_back({'u', 0, 0, 8, 30, 0, 0, 10});
  description.glyphs.push_back({'s', 0, 0, 8, 10, 0, 10, 10});
  const TBitmapFont* font = make("tall");
  EXPECT_EQ(31, measured(font, "t").h);
  EXPECT_EQ(30, measured(font, "u").h);
  EXPECT_EQ(20, measured(font, "s").h) << "as high as a line";
  EXPECT_EQ(51, measured(font, "t\nu").h) << "the highest of all lines";
  EXPECT_EQ(51, measured(font, "u\nt").h);
}

TEST_F(BitmapFontLines, ThePenGoesByAdvanceAndKerning) {
  // One column of ink each; A and V are kerned, and the pair's first entry counts.
  description.glyphs = {{'A', 0, 0, 1, 10, 0, 0, 10}, {'V', 0, 0, 1, 10, 0, 0, 7}, {'B', 0, 0, 1, 10, 3, 0, 9}};
  description.kernings = {{'A', 'V', -2}, {'A', 'V', -5}, {'V', 'V', 4}};
  const TBitmapFont* font = make("pen");
  EXPECT_EQ((Lines{0, 8, 15}), columns(font, "AVA"));
  EXPECT_EQ((Lines{0, 11}), columns(font, "VV"));
  EXPECT_EQ((Lines{3, 9}), columns(font, "BA")) << "an offset does not move the pen";
  EXPECT_EQ((Lines{0, 10}), columns(font, "A?V\nVVVVV"))
    << "a code point without a glyph takes no room and parts the pair";
  EXPECT_EQ(10 - 2 + 7 + 1 + 5, width(font, "AVA"));
}

TEST_F(BitmapFontLines, NothingIsKernedAgainstCodePointZero) {
  description.glyphs = {{'A', 0, 0, 1, 10, 0, 0, 10}, {0, 0, 0, 1, 10, 0, 0, 10}, {1, 0, 0, 1, 10, 0, 0, 10}};
  description.kernings = {{'A', 0, -4}, {'A', 1, -4}};
  const TBitmapFont* font = make("zero");
  EXPECT_EQ((Lines{0, 10}), columns(font, std::string("A\0", 2)));
  EXPECT_EQ(10 + 1 + 5, width(font, std::string("A\0", 2)));
  EXPECT_EQ((Lines{0, 6}), columns(font, "A\x01"));
  EXPECT_EQ(10 - 4 + 1 + 5, width(font, "A\x01"));
}

}  // namespace
