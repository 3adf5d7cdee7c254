#include "tests/common/BitmapFontFixture.h"

#include <filesystem>

#include "tests/support/Golden.h"

using namespace bitmapfonttest;

namespace {

TEST_F(BitmapFont, ReadsItsFile) {
  description.padding = "1,2,3,4";
  description.backgroundColor = "10,20,30,40";
  description.lineHeight = 22;
  description.base = 17;
  description.glyphs.push_back({'W', 5, 6, 30, 9, 2, 3, 31});
  description.glyphs.push_back({'W', 0, 0, 1, 40, 0, 0, 1});
  description.kernings = {{'W', 'A', -3}, {'W', 'B', 4}, {'?', 'A', 9}};
  TBitmapFont* font = make("full");
  EXPECT_EQ("full", font->Name());
  EXPECT_NE(nullptr, font->GlyphTexture());
  EXPECT_EQ(1, font->PaddingTop());
  EXPECT_EQ(2, font->PaddingRight());
  EXPECT_EQ(3, font->PaddingBottom());
  EXPECT_EQ(4, font->PaddingLeft());
  EXPECT_EQ(10, font->BackgroundColor().r);
  EXPECT_EQ(20, font->BackgroundColor().g);
  EXPECT_EQ(30, font->BackgroundColor().b);
  EXPECT_EQ(40, font->BackgroundColor().a);
  EXPECT_EQ(22, font->LineHeight());
  EXPECT_EQ(17, font->Baseline());
  EXPECT_EQ(30, font->MaxGlyphWidth());
  EXPECT_EQ(40, font->MaxGlyphHeight());
  const TBitmapFont::TGlyph* w = font->FindGlyph('W');  // the first of that id
  ASSERT_NE(nullptr, w);
  EXPECT_EQ(5, w->x);
  EXPECT_EQ(6, w->y);
  EXPECT_EQ(30, w->width);
  EXPECT_EQ(9, w->height);
  EXPECT_EQ(2, w->xoffset);
  EXPECT_EQ(3, w->yoffset);
  EXPECT_EQ(31, w->xadvance);
  ASSERT_EQ(2u, w->kernings.size());
  EXPECT_EQ('A', w->kernings[0].second_id);
  EXPECT_EQ(-3, w->kernings[0].amount);
  EXPECT_EQ(nullptr, font->FindGlyph('?'));
  EXPECT_EQ(font, TBitmapFont::FindBitmapFont("full"));
  EXPECT_EQ(nullptr, TBitmapFont::FindBitmapFont("ful"));
}

TEST_F(BitmapFont, BackgroundIsOpaqueBlackUnlessTold) {
  const TBitmapFont* font = make("plain");
  EXPECT_EQ(0, font->BackgroundColor().r);
  EXPECT_EQ(255, font->BackgroundColor().a);
}

TEST_F(BitmapFont, NumbersInListsAndMissingAttributesBecomeZero) {
  const struct {
    const char* padding;
    int top, right, bottom, left;
  } rows[] = {
    {"1,2,3,4", 1, 2, 3, 4}, {"1,2,3,4,5", 1, 2, 3, 5}, {"1,2", 1, 0, 0, 2},
    {"7", 0, 0, 0, 7},       {"", 0, 0, 0, 0},          {"1,x,3,", 1, 0, 3, 0},
  };
  int n = 0;
  for (const auto& row : rows) {
    SCOPED_TRACE(row.padding);
    description.padding = row.padding;
    const TBitmapFont* font = make("padding" + std::to_string(n++));
    EXPECT_EQ(row.top, font->PaddingTop());
    EXPECT_EQ(row.right, font->PaddingRight());
    EXPECT_EQ(row.bottom, font->PaddingBottom());
    EXPECT_EQ(row.left, font->PaddingLeft());
  }
  const TBitmapFont* bare = make("bare", "<font><chars><char id='65' width='8'/></chars></font>");
  ASSERT_NE(nullptr, TBitmapFont::FindBitmapFont("bare"));
  EXPECT_EQ(0, bare->LineHeight());
  EXPECT_EQ(nullptr, bare->GlyphTexture());
  ASSERT_NE(nullptr, bare->FindGlyph('A'));
  EXPECT_EQ(8, bare->FindGlyph('A')->width);
  EXPECT_EQ(0, bare->FindGlyph('A')->xadvance);
}

TEST_F(BitmapFont, ThePageMayNameItsPackAndFindsTheDescriptionsFolder) {
  description.pageAttribute = "pack";
  EXPECT_NE(nullptr, make("packed")->GlyphTexture());
  description.pageAttribute = "other";
  EXPECT_EQ(nullptr, make("pageless")->GlyphTexture());
  description.pageAttribute = "file";
  description.image = "atlas.jpg";  // the loader's other extensions hold here as well
  EXPECT_NE(nullptr, make("fallback")->GlyphTexture());
}

TEST_F(BitmapFont, APathWithoutAFolderMeansTheWorkingDirectory) {
  testfont::writeText(folder + "here.fnt", testfont::toXml(description));
  const std::filesystem::path before = std::filesystem::current_path();
  std::filesystem::current_path(folder);
  const auto* font = new TBitmapFont(harness.renderer(), "here", "here.fnt");
  std::filesystem::current_path(before);
  EXPECT_NE(nullptr, font->GlyphTexture());
}

TEST_F(BitmapFont, FilesThatAreNoFontsGiveEmptyUnregisteredOnes) {
  const struct {
    const char* name;
    const char* xml;
  } rows[] = {
    {"no_font", "<fnt><chars/></fnt>"},
    {"no_chars", "<font><info padding='1,2,3,4'/><common lineHeight='20' base='16'/></font>"},
    {"malformed", "<font><chars></font>"},
    {"empty", ""},
    {"no_xml", "just text"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    const TBitmapFont* font = make(row.name, row.xml);
    EXPECT_EQ(nullptr, TBitmapFont::FindBitmapFont(row.name));
    EXPECT_EQ(nullptr, font->FindGlyph('A'));
    EXPECT_EQ(5, width(font, "A"));
  }
  const auto* missing = new TBitmapFont(harness.renderer(), "missing", folder + "missing.fnt");
  EXPECT_EQ(nullptr, TBitmapFont::FindBitmapFont("missing"));
  EXPECT_EQ((Size{5, 0}), measured(missing, "A"));
}

TEST_F(BitmapFont, AnEmptyFontStillGivesATexture) {
  const auto* font = new TBitmapFont(harness.renderer(), "missing", folder + "missing.fnt");
  int w = -1, h = -1;
  SDL_Texture* texture = font->RenderText(harness.renderer(), "A", &w, &h, LEFT_UP);
  ASSERT_NE(nullptr, texture);
  EXPECT_EQ(5, w);
  EXPECT_EQ(-1, firstInked(texture, 0));
  SDL_DestroyTexture(texture);
}

TEST_F(BitmapFont, TheDrawColourIsPutBack) {
  description.backgroundColor = "10,20,30,40";
  SDL_SetRenderDrawColor(harness.renderer(), 1, 2, 3, 4);
  make("colour");
  Uint8 r, g, b, a;
  SDL_GetRenderDrawColor(harness.renderer(), &r, &g, &b, &a);
  EXPECT_EQ(0x01020304, r << 24 | g << 16 | b << 8 | a);
}

TEST_F(BitmapFont, ASecondFontOnOneFileBorrowsAndIsNotRegistered) {
  description.padding = "1,2,3,4";
  TBitmapFont* first = make("first");
  auto* second = new TBitmapFont(harness.renderer(), "second", folder + "first.fnt");
  EXPECT_EQ(nullptr, TBitmapFont::FindBitmapFont("second"));
  EXPECT_EQ("second", second->Name());
  EXPECT_EQ(first->GlyphTexture(), second->GlyphTexture());
  EXPECT_EQ(first->FindGlyph('A'), second->FindGlyph('A'));
  EXPECT_EQ(3, second->PaddingBottom());
  EXPECT_EQ(20, second->LineHeight());
  EXPECT_EQ(16, second->Baseline());
  EXPECT_EQ(8, second->MaxGlyphWidth());
  EXPECT_EQ(10, second->MaxGlyphHeight());
  delete second;
  EXPECT_EQ(23, width(first, "AB"));  // its atlas lives on
  auto* third = new TBitmapFont(harness.renderer(), "third", folder + "first.fnt");
  TBitmapFont::CleanupBitmapFonts();
  EXPECT_EQ(nullptr, TBitmapFont::FindBitmapFont("first"));
  EXPECT_EQ(nullptr, third->GlyphTexture());  // the atlas went with its owner
  EXPECT_EQ(23, width(third, "AB"));
  TBitmapFont::CleanupBitmapFonts();
}

TEST_F(BitmapFont, OneFileThatIsWrittenInTwoWaysIsReadOnceAndItsPictureToo) {
  TBitmapFont* const first = make("first");
  auto* const second = new TBitmapFont(harness.renderer(), "second", folder + "./first.fnt");
  EXPECT_EQ(second, TBitmapFont::FindBitmapFont("second"));
  EXPECT_EQ(first->GlyphPicture(), second->GlyphPicture());
  EXPECT_EQ(first->GlyphTexture(), second->GlyphTexture());
  EXPECT_EQ(23, width(second, "AB"));
  delete first;
  EXPECT_EQ(nullptr, second->GlyphPicture());  // the picture went with its owner
  EXPECT_EQ(nullptr, second->GlyphTexture());
  EXPECT_EQ(23, width(second, "AB"));
  auto* const third = new TBitmapFont(harness.renderer(), "third", folder + "././first.fnt");
  EXPECT_NE(nullptr, third->GlyphPicture());
}

TEST_F(BitmapFont, TheFirstOfANameIsFound) {
  TBitmapFont* one = make("one");
  testfont::writeText(folder + "two.fnt", testfont::toXml(description));
  new TBitmapFont(harness.renderer(), "one", folder + "two.fnt");
  EXPECT_EQ(one, TBitmapFont::FindBitmapFont("one"));
}

TEST_F(BitmapFont, MeasuresAdvancesAndTheLastWidthAndFiveSpare) {
  const TBitmapFont* font = make("font");
  EXPECT_EQ((Size{18 + 5, 20}), measured(font, "AB"));
  EXPECT_EQ((Size{8 + 5, 20}), measured(font, "A"));
  EXPECT_EQ((Size{28 + 5, 40}), measured(font, "A\nABA"));
  EXPECT_EQ((Size{28 + 5, 60}), measured(font, "ABA\n\nA"));
  EXPECT_EQ((Size{8 + 5, 40}), measured(font, "A\n"));
  EXPECT_EQ((Size{0, 0}), measured(font, ""));
  EXPECT_EQ((Size{5, 40}), measured(font, "\n"));
  EXPECT_EQ(nullptr, font->RenderText(harness.renderer(), "", nullptr, nullptr, LEFT_UP));
}

TEST_F(BitmapFont, TallGlyphsMakeTheLastLineHigher) {
  description.glyphs.push_back({'t', 0, 0, 8, 30, 0, 5, 10});
  description.glyphs.push_back({'u', 0, 0, 8, 30, 0, 0, 10});
  description.glyphs.push_back({'v', 0, 0, 8, 30, 0, -4, 10});
  const TBitmapFont* font = make("tall");
  EXPECT_EQ(35, measured(font, "t").h);
  EXPECT_EQ(55, measured(font, "t\nA").h);
  EXPECT_EQ(55, measured(font, "A\nt").h);
  EXPECT_EQ(30, measured(font, "u").h);
  EXPECT_EQ(30, measured(font, "v").h);  // an offset below 1 does not count
}

TEST_F(BitmapFont, WithoutAGlyphNothingIsDrawnAndNoRoomTaken) {
  const TBitmapFont* font = make("font");
  EXPECT_EQ(13, width(font, "A?"));
  EXPECT_EQ(5, width(font, "???"));
  // The measure counts the widths around the gap, the pen moves by the advance.
  EXPECT_EQ(8 + 8 + 5, width(font, "A?A"));
  EXPECT_EQ(0, inked(font, "A?", LEFT_UP, 0));
  EXPECT_EQ(-1, inked(font, "??", LEFT_UP, 0));
}

TEST_F(BitmapFont, KerningPullsPairsTogether) {
  description.kernings = {{'A', 'V', -2}, {'A', 'V', -7}, {'V', 'A', 3}};
  const TBitmapFont* font = make("kerned");
  EXPECT_EQ(18 - 2 + 5, width(font, "AV"));
  EXPECT_EQ(18 + 3 + 5, width(font, "VA"));
  EXPECT_EQ(18 + 5, width(font, "AB"));
  EXPECT_EQ(8 + 5, width(font, "A\nV"));  // not across a line break
  EXPECT_EQ(8 + 8 + 5, width(font, "A?V"));
  description.glyphs[0].width = 1;
  description.kernings = {{'A', 'V', -2}};
  EXPECT_EQ(0, inked(make("drawn"), "AV", LEFT_UP, 0));
}

TEST_F(BitmapFont, LinesAreAlignedInOneWidth) {
  const TBitmapFont* font = make("font");
  const struct {
    const char* name;
    TAlignment align;
    int line0, line1;
  } rows[] = {
    {"LEFT_UP", LEFT_UP, 0, 0},
    {"LEFT_CENTER", LEFT_CENTER, 0, 0},
    {"LEFT_DOWN", LEFT_DOWN, 0, 0},
    {"CENTER_UP", CENTER_UP, 3, 13},
    {"CENTER_CENTER", CENTER_CENTER, 3, 13},
    {"CENTER_DOWN", CENTER_DOWN, 3, 13},
    {"RIGHT_UP", RIGHT_UP, 5, 25},
    {"RIGHT_CENTER", RIGHT_CENTER, 5, 25},
    {"RIGHT_DOWN", RIGHT_DOWN, 5, 25},
    {"unknown", static_cast<TAlignment>(99), 0, 0},
  };
  for (const auto& row : rows) {  // 28 and 8 wide in 33: rests of 5 and 25, halves of 2.5 and 12.5
    SCOPED_TRACE(row.name);
    EXPECT_EQ(row.line0, inked(font, "ABA\nA", row.align, 0));
    EXPECT_EQ(row.line1, inked(font, "ABA\nA", row.align, 20));
  }
}

TEST_F(BitmapFont, OffsetsAndPaddingMoveTheGlyphs) {
  description.padding = "2,100,100,3";
  description.glyphs = {{'A', 0, 0, 8, 10, 1, 4, 10}};
  const TBitmapFont* font = make("moved");
  EXPECT_EQ(-1, inked(font, "A", LEFT_UP, 5));
  EXPECT_EQ(4, inked(font, "A", LEFT_UP, 6));
  EXPECT_EQ((Size{13, 20}), measured(font, "A"));  // padding is not measured
}

TEST_F(BitmapFont, BadSequencesCostAtLeastOneByteEach) {
  const TBitmapFont* font = make("font");
  EXPECT_EQ(13, width(font,
                      "\xff\x80"
                      "A"));
  EXPECT_EQ(13, width(font, "A\xe2\x82"));  // cut by the end
  EXPECT_EQ(13, width(font, "A\xf0"));
  EXPECT_EQ(5, width(font, "\x80\x80\x80"));
  EXPECT_EQ(13, width(font, std::string("A\0", 2)));
}

TEST_F(BitmapFont, CodePointsBeyondAscii) {
  description.glyphs.push_back({0x20AC, 0, 0, 20, 10, 0, 0, 21});
  description.kernings = {{0x20AC, 'A', -4}};
  const TBitmapFont* font = make("euro");
  EXPECT_EQ(25, width(font, "\xe2\x82\xac"));
  EXPECT_EQ(21 + 8 - 4 + 5, width(font,
                                  "\xe2\x82\xac"
                                  "A"));
}

TEST_F(BitmapFont, TheTargetIsPutBackAndTheLayerTakesTheBackgroundColour) {
  TerminalFlavour = VESPERA_FLAVOUR;
  description.backgroundColor = "10,20,30,40";
  const TBitmapFont* font = make("layer");
  SDL_Texture* target = TAppGuiModule::CreateLayer(nullptr, 4, 4, 0, 0, 0, 0, 16);
  SDL_SetRenderTarget(harness.renderer(), target);
  SDL_Texture* texture = font->RenderText(harness.renderer(), "?", nullptr, nullptr, LEFT_UP);
  EXPECT_EQ(target, SDL_GetRenderTarget(harness.renderer()));
  SDL_SetRenderTarget(harness.renderer(), texture);
  Uint32 pixel = 1;
  const SDL_Rect one{0, 0, 1, 1};
  SDL_RenderReadPixels(harness.renderer(), &one, SDL_PIXELFORMAT_RGBA8888, &pixel, 4);
  EXPECT_EQ(0x0a141e00u, pixel);
  SDL_SetRenderTarget(harness.renderer(), nullptr);
  SDL_DestroyTexture(texture);
  SDL_DestroyTexture(target);
}

TEST_F(BitmapFont, Picture) {
  const std::string path = testfont::write(folder, "dots", 1);
  const TBitmapFont font(harness.renderer(), "dots", path + ".fnt");
  harness.frame();
  const struct {
    const char* text;
    TAlignment align;
    int x, y;
  } rows[] = {
    {"GRAND 1.234,50 \xe2\x82\xac", LEFT_UP, 4, 4}, {"Two lines,\ncentred: AVAVA", CENTER_CENTER, 4, 20},
    {"and to\nthe right!", RIGHT_UP, 110, 20},      {"0123456789 (+-/=?%)", LEFT_UP, 4, 48},
    {"ABCDEFGHIJKLMNOPQRSTUVWXYZ", LEFT_UP, 4, 62}, {"missing [] glyphs", LEFT_UP, 4, 76},
  };
  for (const auto& row : rows) {
    SDL_Rect place{row.x, row.y, 0, 0};
    SDL_Texture* texture = font.RenderText(harness.renderer(), row.text, &place.w, &place.h, row.align);
    SDL_RenderCopy(harness.renderer(), texture, nullptr, &place);
    SDL_DestroyTexture(texture);
  }
  EXPECT_GOLDEN(harness.renderer(), "common/BitmapFont_Texts");
}

}  // namespace
