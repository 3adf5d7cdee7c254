// Fonts that the tool has made, read by the program's own bitmap font.
#include "tools/skin/FontPack.h"

#include <gtest/gtest.h>

#include <fstream>

#include "SkinFiles.h"
#include "ToolRun.h"
#include "common/TBitmapFont.h"
#include "tests/support/WidgetHarness.h"
#include "tools/skin/Arguments.h"

namespace fs = std::filesystem;

namespace {

const std::string kFace = fontfile::kCondensedBold;

class FontPackTool : public testing::Test {
 protected:
  ToolRun pack(const std::string& options) { return runTool(FONTPACK " '" + kFace + "' " + options); }
  std::string out(const std::string& name) { return " -o '" + (folder + name) + "' "; }
  // Opened by the program; the registry owns it.
  TBitmapFont* open(const std::string& name) {
    return new TBitmapFont(harness.renderer(), name, folder + name + ".fnt");
  }
  int width(TBitmapFont* font, const std::string& text) {
    int w = 0, h = 0;
    SDL_Texture* texture = font->RenderText(harness.renderer(), text, &w, &h, vendelo_sdl2::LEFT_UP);
    if (texture) SDL_DestroyTexture(texture);
    return w;
  }

  const ScratchFolder folder{"fontpack"};
  WidgetHarness harness{200, 100};
};

}  // namespace

TEST_F(FontPackTool, TheProgramReadsWhatWasMade) {
  const ToolRun run = pack("--size 40 --chars 'AVBé€' --line 60 --base 46" + out("plain"));
  ASSERT_EQ(0, run.code) << run.text;
  TBitmapFont* font = open("plain");
  EXPECT_EQ(60, font->LineHeight());
  EXPECT_EQ(46, font->Baseline());
  for (const int code : {0x41, 0x56, 0x42, 0xe9, 0x20ac}) EXPECT_NE(nullptr, font->FindGlyph(code)) << code;
  EXPECT_EQ(nullptr, font->FindGlyph('C'));
  const Typeface face(kFace, 40);
  EXPECT_NEAR(face.advance('A'), font->FindGlyph('A')->xadvance, 0.51);
  EXPECT_EQ(fs::path(folder + "plain").filename().string(), font->Name());
}

TEST_F(FontPackTool, PairsAreKerned) {
  ASSERT_EQ(0, pack("--size 60 --chars 'AVH'" + out("kerned")).code);
  TBitmapFont* font = open("kerned");
  const int apart = font->FindGlyph('A')->xadvance + font->FindGlyph('V')->width + 5;
  EXPECT_LT(width(font, "AV"), apart);
  EXPECT_EQ(font->FindGlyph('H')->xadvance + font->FindGlyph('H')->width + 5, width(font, "HH"));
}

TEST_F(FontPackTool, AFontWithoutKerningIsReadAllTheSame) {
  const ToolRun run =
    runTool(FONTPACK " /usr/share/fonts/truetype/dejavu/DejaVuSansMono.ttf --size 60 --chars 'AV'" +
            out("a font \xc3\xa4"));
  ASSERT_EQ(0, run.code) << run.text;
  EXPECT_EQ(std::string::npos, skinfiles::readFile(folder + "a font \xc3\xa4.fnt").find("<kerning "));
  TBitmapFont* font = open("a font \xc3\xa4");
  ASSERT_NE(nullptr, font->FindGlyph('V'));
  EXPECT_EQ(font->FindGlyph('A')->xadvance + font->FindGlyph('V')->width + 5, width(font, "AV"));
}

TEST_F(FontPackTool, LettersHaveGradientOutlineAndShadow) {
  ASSERT_EQ(0, pack("--size 80 --chars I --gradient ff0000,0000ff --outline 4 --outline-colour 00ff00 --shadow 3" +
                    out("styled"))
                 .code);
  TBitmapFont* font = open("styled");
  const skinfiles::Surface atlas = skinfiles::load(folder + "styled.png");
  ASSERT_TRUE(atlas);
  const TBitmapFont::TGlyph* g = font->FindGlyph('I');
  const int middle = g->x + g->width / 2;
  const SDL_Color top = skinfiles::pixel(atlas, middle, g->y + 14);
  const SDL_Color foot = skinfiles::pixel(atlas, middle, g->y + g->height - 14);
  EXPECT_GT(top.r, 180);
  EXPECT_LT(top.b, 70);
  EXPECT_GT(foot.b, 180);
  EXPECT_LT(foot.r, 70);
  int rim = 0, shade = 0;
  for (int x = g->x; x < g->x + g->width; ++x) {
    const SDL_Color c = skinfiles::pixel(atlas, x, g->y + g->height / 2);
    rim += c.a == 255 && c.g > 200;
    shade += c.a > 0 && c.a < 200;
  }
  EXPECT_GE(rim, 6);
  EXPECT_GE(shade, 2);
  EXPECT_EQ(255, font->BackgroundColor().g) << "soft edges fade to the rim's colour";
}

TEST_F(FontPackTool, WheelsHaveOneCellAndSeparatorsHang) {
  ASSERT_EQ(0, pack("--size 92 --wheels 0123456789 --wheel-width 58 --wheel-advance 49 --hanging ., --line 91 "
                    "--base 78 --outline 2" +
                    out("digits"))
                 .code);
  TBitmapFont* font = open("digits");
  for (int digit = '0'; digit <= '9'; ++digit) {
    const TBitmapFont::TGlyph* g = font->FindGlyph(digit);
    ASSERT_NE(nullptr, g);
    EXPECT_EQ(58, g->width);
    EXPECT_EQ(91, g->height);
    EXPECT_EQ(49, g->xadvance);
  }
  EXPECT_EQ(91, font->MaxGlyphHeight());
  for (const int mark : {0x2e, 0x2c}) EXPECT_EQ(91, font->FindGlyph(mark)->yoffset + font->FindGlyph(mark)->height);
}

TEST_F(FontPackTool, LettersMayBeSmallerThanTheWheels) {
  ASSERT_EQ(0,
            pack("--size 92 --chars-size 60 --wheels 0123456789 --chars 'EUR' --set western --line 91 --base 78" +
                 out("two"))
              .code);
  TBitmapFont* font = open("two");
  EXPECT_EQ(91, font->FindGlyph('7')->height);
  const Typeface letters(kFace, 60);
  for (const int code : {0x45, 0x5a, 0xe9})
    EXPECT_NEAR(letters.advance(static_cast<char32_t>(code)), font->FindGlyph(code)->xadvance, 0.51) << code;
}

TEST_F(FontPackTool, LineAndBaselineFollowFromTheFont) {
  ASSERT_EQ(0, pack("--size 50 --set western --outline 3" + out("own")).code);
  TBitmapFont* font = open("own");
  EXPECT_GT(font->LineHeight(), 50);
  for (const int c : {int{'A'}, int{'g'}, int{'j'}, 0xc5, int{'|'}}) {
    const TBitmapFont::TGlyph* g = font->FindGlyph(c);
    ASSERT_NE(nullptr, g) << c;
    EXPECT_GE(g->yoffset, 0) << c;
    EXPECT_LE(g->yoffset + g->height, font->LineHeight()) << c;
  }
}

TEST_F(FontPackTool, TwoRunsAreTheSame) {
  fs::create_directories(folder + "again");
  ASSERT_EQ(0, pack("--size 30 --set latin --shadow 2" + out("same")).code);
  ASSERT_EQ(0, pack("--size 30 --set latin --shadow 2" + out("again/same")).code);
  for (const char* file : {"same.png", "same.fnt"})
    EXPECT_EQ(skinfiles::readFile(folder + file), skinfiles::readFile(folder + "again/" + file)) << file;
}

TEST_F(FontPackTool, SaysWhatIsWrong) {
  struct Row {
    const char* options;
    int code;
    const char* text;
  };
  const Row rows[] = {
    {"--chars A -o /tmp/x", 2, "--size"},
    {"--size 40 --chars A", 2, "--output"},
    {"--size 4000 --chars A -o /tmp/x", 2, "4000"},
    {"--size 40 --set greek --chars A -o /tmp/x", 2, "greek"},
    {"--size 40 -o /tmp/x", 1, "at least one character"},
    {"--size 40 --chars A --gradient 12345 -o /tmp/x", 1, "\"12345\" is no colour"},
    {"--size 40 --chars A --outline-colour gold -o /tmp/x", 1, "\"gold\" is no colour"},
    {"--size 40 --chars A --line 20 --base 30 -o /tmp/x", 1, "below the line"},
    {"--size 200 --chars W --width 32 -o /tmp/x", 1, "does not fit into an atlas of 32"},
    {"--size 40 --chars \"$(printf '\\377')\" -o /tmp/x", 1, "no UTF-8"},
    {"--size nan --chars A -o /tmp/x", 2, "nan not in range 4 to 400"},
    {"--size 40 --outline nan --chars A -o /tmp/x", 2, "nan not in range 0 to 40"},
    {"--size x --chars A -o /tmp/x", 2, "--size"},
    {"--size 40 --chars A --wheel-width 30 -o /tmp/x", 2, "--wheel-width requires --wheels"},
    {"--size 40 --chars A --wheel-advance 30 -o /tmp/x", 2, "--wheel-advance requires --wheels"},
    {"--size 40 --chars-size 20 --wheels 0 -o /tmp/x", 2, "--chars-size requires --chars or --set"},
    {"--size 40 --chars A --gradient FF0000, -o /tmp/x", 1, "\"\" is no colour"},
    {"--size 40 --chars A -o /tmp/x.fnt", 1, "/tmp/x.fnt: give the name without the extension"},
    {"--size 40 --chars A -o /tmp/x.png", 1, "give the name without the extension"},
    {"--size 40 --chars A -o /tmp/", 1, "is no name for a font"},
    {"--size 40 --chars A -o /tmp/.x", 1, "is no name for a font"},
    {"--size 40 --chars A -o /no/such/folder/x", 1, "/no/such/folder/x"}};
  for (const Row& row : rows) {
    SCOPED_TRACE(row.options);
    const ToolRun run = pack(row.options);
    EXPECT_EQ(row.code, run.code) << run.text;
    EXPECT_NE(std::string::npos, run.text.find(row.text)) << run.text;
  }
  const ToolRun run = runTool(FONTPACK " /etc/passwd --size 40 --chars A -o /tmp/x");
  EXPECT_EQ(1, run.code);
  EXPECT_NE(std::string::npos, run.text.find("/etc/passwd: cannot be opened as a font")) << run.text;
}

TEST_F(FontPackTool, NamesTheCharactersThatAreCut) {
  EXPECT_EQ(std::string::npos, pack("--size 40 --set latin --wheels 0123" + out("whole")).text.find("cut"));
  const ToolRun low = pack("--size 40 --chars Axg --line 30 --base 25" + out("low"));
  EXPECT_EQ(0, low.code) << "they may be meant so";
  EXPECT_NE(std::string::npos, low.text.find("too small for them: U+0041 U+0067\n")) << low.text;
  EXPECT_NE(std::string::npos,
            pack("--size 40 --wheels 81 --wheel-width 14" + out("narrow")).text.find(": U+0038\n"));
  EXPECT_NE(
    std::string::npos,
    pack("--size 40 --chars ABCDEFGHIJKLMN --line 20 --base 18" + out("flat")).text.find(" U+004C and 2 more\n"));
}

TEST_F(FontPackTool, RefusesAFontWithoutOutlines) {
  std::ofstream(folder + "dots.bdf") << "STARTFONT 2.1\nFONT dots\nSIZE 8 75 75\nFONTBOUNDINGBOX 8 8 0 0\nCHARS 1\n"
                                        "STARTCHAR A\nENCODING 65\nSWIDTH 500 0\nDWIDTH 8 0\nBBX 8 2 0 0\n"
                                        "BITMAP\nFF\nFF\nENDCHAR\nENDFONT\n";
  const ToolRun run = runTool(FONTPACK " '" + (folder + "dots.bdf") + "' --size 8 --chars A" + out("dots"));
  EXPECT_EQ(1, run.code);
  EXPECT_NE(std::string::npos, run.text.find("dots.bdf: has no outlines")) << run.text;
  EXPECT_FALSE(fs::exists(folder + "dots.fnt"));
}

TEST_F(FontPackTool, NamesTheCharactersThatTheFontLacks) {
  const ToolRun run = pack("--size 40 --chars 'A漢'" + out("lacking"));
  EXPECT_EQ(1, run.code);
  EXPECT_NE(std::string::npos, run.text.find("no U+6F22")) << run.text;
  EXPECT_NE(nullptr, open("lacking")->FindGlyph('A')) << "the others are packed all the same";
}

TEST(Arguments, ColoursAndRamps) {
  const Colour colour = parseColour("#ff8000");
  EXPECT_EQ(1, colour.r);
  EXPECT_NEAR(0.502, colour.g, 0.001);
  EXPECT_EQ(0, colour.b);
  EXPECT_EQ(1, colour.a);
  EXPECT_NEAR(0.2, parseColour("00000033").a, 1e-9);
  const Ramp ramp = parseRamp("000000,ffffff,000000");
  ASSERT_EQ(3U, ramp.size());
  EXPECT_EQ(0.5, ramp[1].at);
  EXPECT_NEAR(0.5, sample(ramp, 0.25).g, 1e-9);
  EXPECT_EQ(1, sample(parseRamp("ffffff"), 0.7).r);
  for (const char* bad : {"", "fff", "#12345g", "1234567", "ff0000,,ff0000"})
    EXPECT_THROW(parseRamp(bad), std::runtime_error) << bad;
}
