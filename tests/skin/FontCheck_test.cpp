// What the skin's check says about bitmap fonts: each finding with its place, and nothing about a good font.
#include "tools/skincheck/FontCheck.h"

#include <algorithm>
#include <set>

#include "CheckedFile.h"
#include "SkinFiles.h"
#include "tools/skincheck/TextFit.h"
#include "tools/skincheck/TextSamples.h"

namespace {

// Lines 10 to 19 are the digits, 48 to 57.
const std::string kPrizeFont = R"(<font>
  <info padding="0,0,0,4" backgroundColor="9,6,3,0"/>
  <common lineHeight="20" base="16"/>
  <pages><page id="0" file="atlas.png"/></pages>
  <chars>
    <char id="32" x="0" y="0" width="0" height="0" xoffset="0" yoffset="0" xadvance="6"/>
    <char id="39" x="0" y="0" width="8" height="12" xoffset="0" yoffset="4" xadvance="10"/>
    <char id="44" x="0" y="0" width="8" height="12" xoffset="0" yoffset="4" xadvance="10"/>
    <char id="46" x="0" y="0" width="8" height="12" xoffset="0" yoffset="4" xadvance="10"/>
    <char id="48" x="0" y="0" width="8" height="12" xoffset="0" yoffset="4" xadvance="10"/>
    <char id="49" x="0" y="0" width="8" height="12" xoffset="0" yoffset="4" xadvance="10"/>
    <char id="50" x="0" y="0" width="8" height="12" xoffset="0" yoffset="4" xadvance="10"/>
    <char id="51" x="0" y="0" width="8" height="12" xoffset="0" yoffset="4" xadvance="10"/>
    <char id="52" x="0" y="0" width="8" height="12" xoffset="0" yoffset="4" xadvance="10"/>
    <char id="53" x="0" y="0" width="8" height="12" xoffset="0" yoffset="4" xadvance="10"/>
    <char id="54" x="0" y="0" width="8" height="12" xoffset="0" yoffset="4" xadvance="10"/>
    <char id="55" x="0" y="0" width="8" height="12" xoffset="0" yoffset="4" xadvance="10"/>
    <char id="56" x="0" y="0" width="8" height="12" xoffset="0" yoffset="4" xadvance="10"/>
    <char id="57" x="0" y="0" width="8" height="12" xoffset="0" yoffset="4" xadvance="10"/>
  </chars>
  <kernings><kerning first="49" second="50" amount="-1"/></kernings>
</font>
)";

const std::string kZero = R"(id="48" x="0" y="0" width="8" height="12" xoffset="0" yoffset="4" xadvance="10")";

constexpr Severity kError = Severity::Error, kWarning = Severity::Warning;

const SpoiltFile kSpoilt[] = {
  {"NotClosed", "</font>\n", "", {kError, "xml", 22, 1}},
  {"NotXml", "<font>", "font=\"x\"\n\n<font>", {kError, "xml", 1, 1}},
  {"BrokenTag", "<chars>", "<chars", {kError, "xml", 6, 5}},
  {"OtherRoot", "<font>", "<!-- a comment\n -->\n  <fonts/><nofont>", {kError, "font-element", 3, 3}},
  {"NoInfo", R"(<info padding="0,0,0,4" backgroundColor="9,6,3,0"/>)", "", {kError, "font-element", 1, 1}},
  {"NoCommon", R"(<common lineHeight="20" base="16"/>)", "", {kError, "font-element", 1, 1}},
  {"NoPages", R"(<pages><page id="0" file="atlas.png"/></pages>)", "", {kError, "font-element", 1, 1}},
  {"NoPage", R"(<page id="0" file="atlas.png"/>)", "", {kError, "font-element", 4, 3}},
  {"NoPicture", R"( file="atlas.png")", "", {kError, "font-attribute", 4, 10}},
  {"NoAdvance", kZero, replaced(kZero, " xadvance=\"10\"", ""), {kError, "font-attribute", 10, 5}},
  {"NoLineHeight", R"( lineHeight="20")", "", {kError, "font-attribute", 3, 3}},
  {"NoBase", R"( base="16")", "", {kError, "font-attribute", 3, 3}},
  {"LineHeightOfNothing", R"(lineHeight="20")", R"(lineHeight="0")", {kError, "font-attribute", 3, 11}},
  {"NoNumber", kZero, replaced(kZero, "x=\"0\"", "x=\"left\""), {kError, "font-attribute", 10, 19}},
  {"EmptyNumber", kZero, replaced(kZero, "y=\"0\"", "y=\"\""), {kError, "font-attribute", 10, 25}},
  {"Decimals", kZero, replaced(kZero, "y=\"0\"", "y=\"0.5\""), {kWarning, "font-attribute", 10, 25}},
  {"Unit", kZero, replaced(kZero, "\"10\"", "\"10px\""), {kError, "font-attribute", 10, 77}},
  {"HugeNumber", kZero, replaced(kZero, "\"10\"", "\"99999999999999999999\""), {kError, "font-attribute", 10, 77}},
  {"PaddingMissing", R"( padding="0,0,0,4")", "", {kError, "font-padding", 2, 3}},
  {"PaddingOfThree", R"("0,0,0,4")", R"("0,0,4")", {kError, "font-padding", 2, 9}},
  {"PaddingOfFive", R"("0,0,0,4")", R"("0,0,0,4,4")", {kError, "font-padding", 2, 9}},
  {"PaddingOfWords", R"("0,0,0,4")", R"("0,none,0,4")", {kError, "font-padding", 2, 9}},
  {"ColourOfThree", R"("9,6,3,0")", R"("9,6,3")", {kError, "font-background", 2, 27}},
  {"ColourAbove255", R"("9,6,3,0")", R"("9,6,300,0")", {kError, "font-background", 2, 27}},
  {"PictureMissing", "atlas.png", "none.png", {kError, "font-atlas", 4, 23}},
  {"PictureUnreadable", "atlas.png", "words.png", {kError, "font-atlas", 4, 23}},
  {"PictureByFallback", "atlas.png", "atlas.jpg", {kWarning, "fallback", 4, 23}},
  {"TwoPages", "</pages>", "<page file=\"two.png\"/></pages>", {kWarning, "font-page", 4, 41}},
  {"Twice",
   "    <char id=\"57\"",
   "    <char id=\"56\" x=\"1\" y=\"0\" width=\"8\" height=\"12\" xoffset=\"0\" "
   "yoffset=\"4\" xadvance=\"10\"/>\n    <char id=\"57\"",
   {kWarning, "font-id", 19, 5}},
  {"Outside", kZero, replaced(kZero, "x=\"0\"", "x=\"57\""), {kError, "font-glyph", 10, 5}},
  {"Above", kZero, replaced(kZero, "y=\"0\"", "y=\"-1\""), {kError, "font-glyph", 10, 5}},
  {"SizeBelowNothing", kZero, replaced(kZero, "\"8\"", "\"-8\""), {kError, "font-glyph", 10, 5}},
  {"SizeOfNothing", kZero, replaced(kZero, "\"8\"", "\"0\""), {kWarning, "font-glyph", 10, 5}},
  {"CutLeft", kZero, replaced(kZero, "xoffset=\"0\"", "xoffset=\"-5\""), {kWarning, "font-cut", 10, 5}},
  {"CutRight", kZero, replaced(kZero, "xoffset=\"0\"", "xoffset=\"2\""), {kWarning, "font-cut", 10, 5}},
  {"CutAbove", kZero, replaced(kZero, "yoffset=\"4\"", "yoffset=\"-1\""), {kWarning, "font-cut", 10, 5}},
  {"CutBelow", "\"0,0,0,4\"", "\"5,0,0,4\"", {kWarning, "font-cut", 7, 5}},
  {"NoDigit", "<char " + kZero + "/>", "", {kError, "font-character", 5, 3}},
  {"NoApostrophe", "id=\"39\"", "id=\"65\"", {kWarning, "font-character", 5, 3}},
  {"KerningOfNothing", "second=\"50\"", "second=\"65\"", {kWarning, "font-kerning", 21, 13}},
  {"KerningIncomplete", " amount=\"-1\"", "", {kError, "font-kerning", 21, 13}},
};

// A font of cells of one size, each drawn as a block in the middle of its cell.
struct Cells {
  int width = 8, height = 12, advance = 10, lineHeight = 20, yoffset = 4;
  std::string without;  // characters left out
  std::string extra;    // more of <char>
};

class FontCheck : public testing::Test {
 protected:
  FontCheck() {
    writePicture(folder + "atlas.png", 64, 64, paintAll);
    writeText(folder + "words.png", "no picture");
  }

  Findings check(const std::string& text, const std::string& name = "") {
    Findings findings;
    writeText(path, text);
    checkFont(path, name, findings);
    return findings;
  }

  // All characters of the samples.
  std::string cells(const Cells& form, const std::string& picture = "atlas.png") {
    std::set<int> codes;
    for (const auto* table : {&textSamples(), &neededCharacters()})
      for (const TextSample& sample : *table)
        for (const int code : codePoints(sample.text)) codes.insert(code);
    for (const int code : codePoints(form.without)) codes.erase(code);
    codes.erase('\n');
    const auto number = [](const char* key, int value) {
      return std::string(" ") + key + "=\"" + std::to_string(value) + "\"";
    };
    std::string out = "<font>\n  <info padding=\"0,0,0,0\"/>\n  <common" + number("lineHeight", form.lineHeight) +
                      " base=\"16\"/>\n  <pages><page file=\"" + picture + "\"/></pages>\n  <chars>\n";
    for (const int code : codes)
      out += "    <char" + number("id", code) + " x=\"0\" y=\"0\"" + number("width", form.width) +
             number("height", form.height) + " xoffset=\"0\"" + number("yoffset", form.yoffset) +
             number("xadvance", form.advance) + "/>\n";
    return out + form.extra + "  </chars>\n</font>\n";
  }

  const ScratchFolder folder{"font-check"};
  const std::string path = folder + "a.fnt";
};

TEST_F(FontCheck, SaysNothingOfAGoodFont) {
  const Findings findings = check(kPrizeFont);
  EXPECT_EQ("", describe(findings));
  EXPECT_EQ((std::vector<std::string>{path, folder + "atlas.png"}), findings.used);
  ASSERT_EQ(1U, findings.decoded.size());
  EXPECT_EQ(folder + "atlas.png", findings.decoded[0].file);
  EXPECT_EQ(64, findings.decoded[0].width);
  EXPECT_EQ(64 * 64 * 4, findings.decoded[0].bytes);
}

TEST_F(FontCheck, NamesWhatIsWrongAndWhere) {
  for (const SpoiltFile& file : kSpoilt) {
    SCOPED_TRACE(file.name);
    expectOne(check(replaced(kPrizeFont, file.from, file.to)), path, file.expected);
  }
}

TEST_F(FontCheck, ColumnsCountCharacters) {
  const std::string line = R"(<pages><page id="0" file="atlas.png"/></pages>)";
  const Findings findings = check(replaced(kPrizeFont, line, "<!-- äöü€ -->" + replaced(line, "atlas", "none")));
  expectOne(findings, path, {kError, "font-atlas", 4, 23 + 13});
}

TEST_F(FontCheck, TellsWhichCharactersAreMissing) {
  const Findings findings = check(replaced(kPrizeFont, "<char " + kZero + "/>", ""));
  ASSERT_EQ(1U, findings.list.size());
  EXPECT_NE(std::string::npos, findings.list[0].text.find("0 (U+0030)")) << findings.list[0].text;
}

TEST_F(FontCheck, AMissingFileIsOneFinding) {
  Findings findings;
  checkFont(folder + "none.fnt", "", findings);
  expectOne(findings, folder + "none.fnt", {kError, "missing", 0, 0});
  EXPECT_TRUE(findings.used.empty());
  Findings directory;
  checkFont(folder + "", "", directory);
  expectOne(directory, folder + "", {kError, "missing", 0, 0});
}

TEST_F(FontCheck, NoCharsAndNoFontAreNotUsable) {
  expectOne(check("<fonts>\n</fonts>"), path, {kError, "font-element", 1, 1});
  expectOne(check("<?xml version=\"1.0\"?>\n <!-- x --> <a/>"), path, {kError, "font-element", 2, 13});
  expectOne(check(""), path, {kError, "font-element", 0, 0});
  std::string text = kPrizeFont;
  const size_t begin = text.find("  <chars>"), end = text.find("  <kernings>");
  expectOne(check(text.erase(begin, end - begin)), path, {kError, "font-element", 1, 1});
}

TEST_F(FontCheck, DeepNestingIsRefused) {
  std::string text = "<font>\n";
  for (int i = 0; i < 200000; ++i) text += "<a>";
  expectOne(check(text), path, {kError, "xml", 2, 1 + 3 * 63});
}

TEST_F(FontCheck, OfManyEqualFindingsTenAreTold) {
  std::string text = kPrizeFont;
  for (int i = 0; i < 200; ++i)
    text = replaced(text, "<kernings>", "<kernings><kerning first=\"49\" second=\"1\" amount=\"1\"/>");
  const Findings findings = check(text);
  ASSERT_EQ(11U, findings.list.size());
  EXPECT_EQ("font-kerning", findings.list[10].code);
  EXPECT_EQ(Severity::Warning, findings.list[10].severity);
  EXPECT_EQ(findings.list[9].line, findings.list[10].line) << "all stand in one line of the file";
  EXPECT_GT(findings.list[10].column, findings.list[9].column) << "the place of the first that is not told";
  EXPECT_NE(std::string::npos, findings.list[10].text.find("190 more")) << findings.list[10].text;
}

TEST_F(FontCheck, WhatIsSaidIsCorrectUtf8) {
  const Findings findings = check(replaced(kPrizeFont, kZero, replaced(kZero, "\"10\"", "\"\xff\xc3\n\xe2\x82\"")));
  ASSERT_EQ(1U, findings.list.size());
  EXPECT_NE(std::string::npos, findings.list[0].text.find("\"?? ??\"")) << findings.list[0].text;
}

TEST_F(FontCheck, SaysWhenOnlyCapitalsDiffer) {
  const Findings findings = check(replaced(kPrizeFont, "atlas.png", "Atlas.PNG"));
  expectOne(findings, path, {kError, "font-atlas", 4, 23});
  EXPECT_NE(std::string::npos, findings.list[0].text.find("\"atlas.png\" has other capitals"))
    << findings.list[0].text;
}

TEST_F(FontCheck, OnePictureIsDecodedOnce) {
  Findings findings;
  writeText(path, kPrizeFont);
  checkFont(path, "", findings);
  writeText(folder + "atlas.png", "no longer a picture");
  checkFont(path, "", findings);
  EXPECT_EQ("", describe(findings));
  EXPECT_EQ(1U, findings.decoded.size());
}

// The texts of each place.

TEST_F(FontCheck, EveryFontOfTheSkinCanBeSmallAndGood) {
  for (const char* name :
       {"Fonts/uni_font", "Fonts/jackpot_win_label", "Fonts/info_bar_font", "Fonts/emerald_hours_font",
        "Fonts/HelveticaBold26px_Instructions", "Fonts/HelveticaBold20px_SmallLabel"}) {
    Cells form;
    if (std::string(name).find("Helvetica") != std::string::npos) form.advance = 8;
    EXPECT_EQ("", describe(check(cells(form), name))) << name;
  }
}

TEST_F(FontCheck, TheTextsOfAnotherLanguageAreAWarning) {
  Cells form;
  form.without = "ä";
  expectOne(check(cells(form), "Fonts/uni_font"), path, {kWarning, "font-character", 5, 3});
  form.without = "/";
  expectOne(check(cells(form), "Fonts/uni_font"), path, {kError, "font-character", 5, 3});
  form.without = "ä/";
  EXPECT_EQ(2U, check(cells(form), "Fonts/uni_font").list.size());
}

TEST_F(FontCheck, AHintMadeMuchSmallerIsAWarning) {
  Cells form;
  form.lineHeight = 41;
  EXPECT_EQ("", describe(check(cells(form), "Fonts/uni_font"))) << "61 %";
  form.lineHeight = 60;
  const Findings findings = check(cells(form), "Fonts/uni_font");
  ASSERT_FALSE(findings.list.empty());
  EXPECT_EQ("text-fit", findings.list[0].code);
  EXPECT_EQ(kWarning, findings.list[0].severity);
  EXPECT_EQ(3, findings.list[0].line);
  EXPECT_EQ(11, findings.list[0].column);
  EXPECT_NE(std::string::npos, findings.list[0].text.find("42 %")) << findings.list[0].text;
}

TEST_F(FontCheck, HoursThatAreTooWideAreAnError) {
  Cells form;
  form.advance = 22;  // 21 characters: 20 advances and the last cell
  form.without = "Uhr";
  EXPECT_EQ("", describe(check(cells(form), "Fonts/none")));
  form.without = "";
  const Findings findings = check(cells(form), "Fonts/emerald_hours_font");
  expectOne(findings, path, {kError, "text-fit", 3, 11});
  EXPECT_NE(std::string::npos, findings.list[0].text.find("448 x")) << findings.list[0].text;
}

TEST_F(FontCheck, HoursMayHangOutOfTheirFieldAsFarAsTheDigits) {
  Cells form;
  form.lineHeight = 90;
  form.yoffset = 87 - 12;
  EXPECT_EQ("", describe(check(cells(form), "Fonts/emerald_hours_font")));
  form.yoffset = 88 - 12;
  const Findings findings = check(cells(form), "Fonts/emerald_hours_font");
  ASSERT_EQ(2U, findings.list.size());
  EXPECT_EQ("text-fit", findings.list[0].code);
  EXPECT_EQ(kError, findings.list[0].severity);
}

TEST_F(FontCheck, ARunningTextHigherThanItsBarIsAnError) {
  Cells form;
  form.lineHeight = 92;
  form.yoffset = 80;
  const Findings findings = check(cells(form), "Fonts/info_bar_font");
  ASSERT_EQ(3U, findings.list.size()) << describe(findings);
  EXPECT_EQ("text-fit", findings.list[0].code);
}

// The wheels.

class Wheels : public FontCheck {
 protected:
  Wheels() {
    form = {40, 91, 40, 91, 0, "", ""};
    writePicture(folder + "atlas.png", 200, 100, [](SDL_Surface* picture) {
      const SDL_Rect block{10, 0, 20, 91};
      SDL_FillRect(picture, &block, 0xffffffff);
    });
  }
  std::string glyph(int id, const std::string& rest) {
    return "<char id=\"" + std::to_string(id) + "\" " + rest + "/>";
  }
  // The text with another glyph in the place of that of `id`.
  std::string with(std::string text, int id, const std::string& rest) {
    const size_t begin = text.find("<char id=\"" + std::to_string(id) + "\"");
    return text.replace(begin, text.find("/>", begin) + 2 - begin, glyph(id, rest));
  }
  Cells form;
};

TEST_F(Wheels, DigitsThatFitAreGood) { EXPECT_EQ("", describe(check(cells(form), "Fonts/currency"))); }

TEST_F(Wheels, ADigitOffTheMiddleOfItsCellIsAWarning) {
  const std::string cell = R"(x="0" y="0" width="60" height="91" xoffset="0" yoffset="0" xadvance="40")";
  const Findings findings = check(with(cells(form), 49, cell), "Fonts/currency");
  ASSERT_EQ(1U, findings.list.size()) << describe(findings);
  EXPECT_EQ("digit-fit", findings.list[0].code);
  EXPECT_EQ(kWarning, findings.list[0].severity) << "the block stands at 10 to 29 of 60";
  EXPECT_GT(findings.list[0].line, 5);
  EXPECT_EQ(5, findings.list[0].column);
}

TEST_F(Wheels, TheInkDecidesNotTheRectangle) {
  // A block of some width in the cell at 100, between columns of a soft edge.
  const auto paint = [this](int width, Uint8 edge) {
    writePicture(folder + "atlas.png", 200, 100, [&](SDL_Surface* picture) {
      const SDL_Rect block{10, 0, 20, 91}, soft{104, 0, width + 2, 91}, digit{105, 0, width, 91};
      SDL_FillRect(picture, &block, 0xffffffff);
      SDL_FillRect(picture, &soft, SDL_MapRGBA(picture->format, 255, 255, 255, edge));
      SDL_FillRect(picture, &digit, 0xffffffff);
    });
  };
  const std::string cell = R"(x="100" y="0" width="60" height="91" xoffset="0" yoffset="0" xadvance="40")";
  const std::string text = with(cells(form), 49, cell);
  paint(50, 127);
  EXPECT_EQ("", describe(check(text, "Fonts/currency"))) << "50 wide";
  for (const auto& [width, edge] : {std::pair<int, Uint8>{51, 0}, {49, 128}}) {
    paint(width, edge);
    const Findings findings = check(text, "Fonts/currency");
    ASSERT_EQ(1U, findings.list.size()) << describe(findings);
    EXPECT_EQ("digit-fit", findings.list[0].code);
    EXPECT_EQ(kError, findings.list[0].severity);
    EXPECT_NE(std::string::npos, findings.list[0].text.find("1 (U+0031) is 51")) << findings.list[0].text;
  }
}

TEST_F(Wheels, AClearDigitIsAnError) {
  const std::string cell = R"(x="150" y="0" width="40" height="91" xoffset="0" yoffset="0" xadvance="40")";
  const Findings findings = check(with(cells(form), 57, cell), "Fonts/currency");
  ASSERT_EQ(1U, findings.list.size()) << describe(findings);
  EXPECT_EQ("digit-fit", findings.list[0].code);
}

TEST_F(Wheels, AWideSeparatorIsAnError) {
  writePicture(folder + "atlas.png", 200, 100, [](SDL_Surface* picture) {
    const SDL_Rect block{10, 0, 20, 91}, mark{100, 0, 26, 91};
    SDL_FillRect(picture, &block, 0xffffffff);
    SDL_FillRect(picture, &mark, 0xffffffff);
  });
  const std::string cell = R"(x="100" y="0" width="30" height="91" xoffset="0" yoffset="0" xadvance="40")";
  const Findings findings = check(with(cells(form), '.', cell), "Fonts/currency");
  ASSERT_EQ(1U, findings.list.size()) << describe(findings);
  EXPECT_EQ("digit-fit", findings.list[0].code);
  EXPECT_EQ(kError, findings.list[0].severity);
}

TEST_F(Wheels, AHigherGlyphMakesTheDigitsSmaller) {
  const std::string high = R"(x="0" y="0" width="40" height="100" xoffset="0" yoffset="0" xadvance="40")";
  const Findings findings = check(with(cells(form), 'E', high), "Fonts/currency");
  const auto scale = std::find_if(findings.list.begin(), findings.list.end(),
                                  [](const Finding& f) { return f.code == "digit-scale"; });
  ASSERT_NE(findings.list.end(), scale) << describe(findings);
  EXPECT_EQ(kWarning, scale->severity);
  EXPECT_NE(std::string::npos, scale->text.find("91 %")) << scale->text;
  EXPECT_NE(std::string::npos, scale->text.find("E (U+0045)")) << scale->text;
}

TEST_F(Wheels, SmallDigitsAreBlownUp) {
  form.height = 45;
  form.width = 20;
  form.advance = 25;
  writePicture(folder + "atlas.png", 64, 64, paintAll);
  const Findings findings = check(cells(form), "Fonts/currency");
  const auto scale = std::find_if(findings.list.begin(), findings.list.end(),
                                  [](const Finding& f) { return f.code == "digit-scale"; });
  ASSERT_NE(findings.list.end(), scale) << describe(findings);
  EXPECT_NE(std::string::npos, scale->text.find("202 %")) << scale->text;
}

TEST(DemoFonts, AreWithoutAFinding) {
  Findings findings;
  for (const char* name : {"currency", "uni_font", "jackpot_win_label", "info_bar_font", "emerald_hours_font",
                           "HelveticaBold26px_Instructions", "HelveticaBold20px_SmallLabel"})
    checkFont(skinfiles::kSkin + "Fonts/" + name + ".fnt", std::string("Fonts/") + name, findings);
  for (const char* game : {"VesperCrown", "SevenOrchards"})
    checkFont(skinfiles::kRoot + "Games/" + game + "/Icons/prize.fnt", "", findings);
  EXPECT_EQ("", describe(findings));
  EXPECT_EQ(9U, findings.decoded.size());
  EXPECT_EQ(18U, findings.used.size());
}

}  // namespace
