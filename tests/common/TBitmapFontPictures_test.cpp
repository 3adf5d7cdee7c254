// What texts in bitmap fonts look like, case by case: one golden picture each, on a ground that shows where the
// texture of the text ends.
#include <gtest/gtest.h>
#include <string>

#include "common/TBitmapFont.h"
#include "tests/support/Golden.h"
#include "tests/support/TestFont.h"
#include "tests/support/TestPaths.h"
#include "tests/support/WidgetHarness.h"

using namespace vendelo_sdl2;

namespace {

void showText(WidgetHarness& harness, const TBitmapFont& font, const char* text, TAlignment align,
              SDL_Color colour) {
  harness.frame();
  SDL_Rect place{4, 4, 0, 0};
  SDL_Texture* texture = font.RenderText(harness.renderer(), text, &place.w, &place.h, align);
  ASSERT_NE(nullptr, texture);
  SDL_SetRenderDrawColor(harness.renderer(), 70, 80, 120, 255);
  SDL_RenderFillRect(harness.renderer(), &place);
  SDL_SetTextureColorMod(texture, colour.r, colour.g, colour.b);
  SDL_RenderCopy(harness.renderer(), texture, nullptr, &place);
  SDL_DestroyTexture(texture);
}

// A font of dots with something changed in its description.
struct Case {
  const char* name;
  const char* text;
  TAlignment align;
  const char* padding;
  int moveX, moveY;  // added to every glyph's offset
  int kern;          // between V and A
  int lineHeight;
};

void PrintTo(const Case& c, std::ostream* out) { *out << c.name; }

const Case kCases[] = {
  {"OneLine", "GRAND 50", LEFT_UP, "0,0,0,0", 0, 0, 0, 9},
  {"Lines_Left", "LEFT\nA", LEFT_UP, "0,0,0,0", 0, 0, 0, 9},
  {"Lines_Center", "CENTER\nA", CENTER_UP, "0,0,0,0", 0, 0, 0, 9},
  {"Lines_CenterOdd", "CENTER\nAB", CENTER_DOWN, "0,0,0,0", 0, 0, 0, 9},
  {"Lines_Right", "RIGHT\nA", RIGHT_DOWN, "0,0,0,0", 0, 0, 0, 9},
  {"Lines_UnknownAlignment", "LEFT\nA", static_cast<TAlignment>(12), "0,0,0,0", 0, 0, 0, 9},
  {"Lines_Empty", "A\n\nB", LEFT_UP, "0,0,0,0", 0, 0, 0, 9},
  {"Lines_Far", "FAR\nAWAY", LEFT_UP, "0,0,0,0", 0, 0, 0, 20},
  {"Lines_Overlapping", "NEAR\nNEAR", LEFT_UP, "0,0,0,0", 0, 0, 0, 4},
  {"Kerned", "VAVAVA", LEFT_UP, "0,0,0,0", 0, 0, -3, 9},
  {"KernedApart", "VAVAVA", LEFT_UP, "0,0,0,0", 0, 0, 3, 9},
  {"KernedNotOverABreak", "AV\nAV", LEFT_UP, "0,0,0,0", 0, 0, -3, 9},
  {"Padding", "PAD", LEFT_UP, "2,0,0,3", 0, 0, 0, 9},
  {"PaddingBeyondTheSpare", "PADDED", LEFT_UP, "0,0,0,9", 0, 0, 0, 9},
  {"Offset", "OFF", LEFT_UP, "0,0,0,0", 2, 3, 0, 9},
  {"OffsetUp", "OFF", LEFT_UP, "0,0,0,0", -2, -3, 0, 9},
  {"Missing", "A[]B", LEFT_UP, "0,0,0,0", 0, 0, 0, 9},
  {"MissingAtTheEnd", "AB]", LEFT_UP, "0,0,0,0", 0, 0, 0, 9},
  {"BadBytes",
   "A\xff\x80"
   "B",
   LEFT_UP, "0,0,0,0", 0, 0, 0, 9},
  {"Euro", "50 \xe2\x82\xac", LEFT_UP, "0,0,0,0", 0, 0, 0, 9},
};

class Texts : public testing::TestWithParam<Case> {};

TEST_P(Texts, AreTheGoldenOnes) {
  const Case& c = GetParam();
  WidgetHarness harness(72, 40);
  const std::string folder = testfont::freshFolder(std::string("FontPictures_") + c.name);
  testfont::write(folder, "atlas", 1);
  testfont::Description description;
  description.padding = c.padding;
  description.lineHeight = c.lineHeight;
  const TBitmapFont dots(harness.renderer(), "dots", folder + "atlas.fnt");
  for (int id = ' '; id <= 0x20AC; ++id)
    if (const TBitmapFont::TGlyph* g = dots.FindGlyph(id))
      description.glyphs.push_back(
        {g->id, g->x, g->y, g->width, g->height, g->xoffset + c.moveX, g->yoffset + c.moveY, g->xadvance});
  if (c.kern) description.kernings = {{'V', 'A', c.kern}, {'A', 'V', c.kern}};
  testfont::writeText(folder + "case.fnt", testfont::toXml(description));
  const TBitmapFont font(harness.renderer(), c.name, folder + "case.fnt");
  showText(harness, font, c.text, c.align, {255, 255, 255, 255});
  EXPECT_GOLDEN(harness.renderer(), std::string("common/font/") + c.name);
}

INSTANTIATE_TEST_SUITE_P(BitmapFont, Texts, testing::ValuesIn(kCases),
                         [](const testing::TestParamInfo<Case>& info) { return std::string(info.param.name); });

// ---- Fonts that other people's tools have packed, see tests/data/README.md

struct Packed {
  const char* name;
  int lineHeight, base, padding, maxWidth, maxHeight;
  TBitmapFont::TGlyph a;  // of "A"
  int kernings;           // of "V"
  int kernVA;
  int atlasW, atlasH;
};

void PrintTo(const Packed& p, std::ostream* out) { *out << p.name; }

const Packed kPacked[] = {
  {"sdf", 24, 16, 1, 20, 21, {'A', 0, 40, 18, 17, -1, 1, 16, {}}, 5, -2, 128, 128},
  {"msdf", 24, 15, 2, 23, 23, {'A', 25, 0, 19, 19, -2, -2, 15, {}}, 0, 0, 100, 86},
  // Numbers with decimals count with their whole part.
  {"pages", 24, 16, 1, 20, 21, {'A', 0, 40, 18, 17, -1, 1, 15, {}}, 5, -1, 64, 64},
};

class PackedFonts : public testing::TestWithParam<Packed> {
 protected:
  const std::string folder = std::string(testpaths::source) + "/tests/data/fonts/";
};

TEST_P(PackedFonts, AreReadInFull) {
  const Packed& p = GetParam();
  WidgetHarness harness(210, 64);
  auto* font = new TBitmapFont(harness.renderer(), p.name, folder + p.name + ".fnt");
  ASSERT_EQ(font, TBitmapFont::FindBitmapFont(p.name));
  EXPECT_EQ(p.lineHeight, font->LineHeight());
  EXPECT_EQ(p.base, font->Baseline());
  EXPECT_EQ(p.padding, font->PaddingTop());
  EXPECT_EQ(p.padding, font->PaddingRight());
  EXPECT_EQ(p.padding, font->PaddingBottom());
  EXPECT_EQ(p.padding, font->PaddingLeft());
  EXPECT_EQ(p.maxWidth, font->MaxGlyphWidth());
  EXPECT_EQ(p.maxHeight, font->MaxGlyphHeight());
  for (const char32_t id : std::u32string(U"AVTo 0123456789.,%\"&\u20AC\u00C4"))
    EXPECT_NE(nullptr, font->FindGlyph(static_cast<int>(id))) << static_cast<int>(id);
  const TBitmapFont::TGlyph* a = font->FindGlyph('A');
  ASSERT_NE(nullptr, a);
  EXPECT_EQ(p.a.x, a->x);
  EXPECT_EQ(p.a.y, a->y);
  EXPECT_EQ(p.a.width, a->width);
  EXPECT_EQ(p.a.height, a->height);
  EXPECT_EQ(p.a.xoffset, a->xoffset);
  EXPECT_EQ(p.a.yoffset, a->yoffset);
  EXPECT_EQ(p.a.xadvance, a->xadvance);
  const TBitmapFont::TGlyph* v = font->FindGlyph('V');
  ASSERT_NE(nullptr, v);
  EXPECT_EQ(static_cast<size_t>(p.kernings), v->kernings.size());
  int kern = 0;
  for (const auto& pair : v->kernings)
    if (pair.second_id == 'A') kern = pair.amount;
  EXPECT_EQ(p.kernVA, kern);
  int w = 0, h = 0;
  SDL_QueryTexture(font->GlyphTexture(), nullptr, nullptr, &w, &h);
  EXPECT_EQ(p.atlasW, w);
  EXPECT_EQ(p.atlasH, h);
}

TEST_P(PackedFonts, LookAsTheirToolMeantThem) {
  WidgetHarness harness(210, 64);
  const TBitmapFont font(harness.renderer(), GetParam().name, folder + GetParam().name + ".fnt");
  showText(harness, font, "VATo 1.234,0 \xe2\x82\xac\n\xc3\x84% \"&\"", CENTER_CENTER, {255, 255, 255, 255});
  EXPECT_GOLDEN(harness.renderer(), std::string("common/font/Packed_") + GetParam().name);
}

INSTANTIATE_TEST_SUITE_P(BitmapFont, PackedFonts, testing::ValuesIn(kPacked),
                         [](const testing::TestParamInfo<Packed>& info) { return std::string(info.param.name); });

}  // namespace
