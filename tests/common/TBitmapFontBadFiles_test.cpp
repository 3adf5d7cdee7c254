// Font files that are broken in any way: one line in the log, nothing drawn that cannot be, and no crash.
#include <gtest/gtest.h>
#include <climits>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "common/TBitmapFont.h"
#include "components/TGlyphLabel.h"
#include "tests/support/LogLines.h"
#include "tests/support/TestFont.h"
#include "tests/support/TestPaths.h"
#include "tests/support/WidgetHarness.h"

using namespace vendelo_sdl2;

namespace {

constexpr Uint32 kGround = 0x182038;

class BadFonts : public testing::Test {
 protected:
  BadFonts() {
    for (int id : {'A', 'B'}) good.glyphs.push_back({id, 0, 0, 8, 10, 0, 0, 10});
    testfont::writePicture(folder + "atlas.png", 64, 64, {255, 255, 255, 255});
  }

  TBitmapFont* make(const std::string& name, const std::string& content) {
    testfont::writeText(folder + name + ".fnt", content);
    return load(name);
  }
  TBitmapFont* load(const std::string& name) {
    linesBefore = log.lines().size();
    return new TBitmapFont(harness.renderer(), name, folder + name + ".fnt");
  }
  // What the font has written, one line after the other.
  std::string written() const {
    std::string out;
    const auto lines = log.lines();
    for (size_t i = linesBefore; i < lines.size(); ++i) out += (out.empty() ? "" : "\n") + lines[i];
    return out;
  }
  bool draws(TBitmapFont* font, const std::string& text) {
    harness.frame();
    SDL_Rect place{0, 0, 0, 0};
    SDL_Texture* texture = font->RenderText(harness.renderer(), text, &place.w, &place.h, CENTER_CENTER);
    SDL_RenderCopy(harness.renderer(), texture, nullptr, &place);
    if (texture) SDL_DestroyTexture(texture);
    for (int y = 0; y < 100; ++y)
      for (int x = 0; x < 200; ++x)
        if (harness.pixel(x, y) != kGround) return true;
    return false;
  }

  LogLines log;
  WidgetHarness harness{200, 100};
  const std::string folder =
    testfont::freshFolder(std::string("BadFonts_") + testing::UnitTest::GetInstance()->current_test_info()->name());
  testfont::Description good;
  size_t linesBefore = 0;
};

TEST_F(BadFonts, TheGoodOneSaysNothing) {
  TBitmapFont* font = make("good", testfont::toXml(good));
  EXPECT_EQ("", written());
  EXPECT_TRUE(draws(font, "AB"));
}

TEST_F(BadFonts, NumbersBeyondTheirRangeAreItsEndsAndNobodyElses) {
  good.glyphs[0].id = 1234567890;
  std::string xml = testfont::toXml(good);
  const auto put = [&xml](const std::string& number) {
    std::string text = xml;
    return text.replace(text.find("1234567890"), 10, number);
  };
  // 65 in the lowest 32 bits, as for the letter A.
  for (const char* number : {"4294967361", "-4294967231", "18446744073709551681", "99999999999999999999"}) {
    TBitmapFont* font = make(std::string("id") + number, put(number));
    EXPECT_EQ(nullptr, font->FindGlyph('A')) << number;
    EXPECT_NE(nullptr, font->FindGlyph(number[0] == '-' ? INT_MIN : INT_MAX)) << number;
    EXPECT_TRUE(draws(font, "B")) << number;
  }
}

TEST_F(BadFonts, UnreadableFilesAreEmptyFonts) {
  const std::string xml = testfont::toXml(good);
  std::string deep;
  for (int i = 0; i < 200000; ++i) deep += "<a>";
  const struct {
    const char* name;
    std::string content;
    const char* problem;
  } rows[] = {
    {"empty", "", "there is no \"font\" in it"},
    {"blank", "  \n\t\n", "there is no \"font\" in it"},
    {"zeros", std::string(1000, '\0'), "there is no \"font\" in it"},
    {"other_root", "<atlas><font/></atlas>", "there is no \"font\" in it"},
    {"text", "info face=\"x\" size=20\n", "it is no XML, expected <"},
    {"picture", "\x89PNG\r\n\x1a\n", "it is no XML, expected <"},
    {"utf16", std::string("<\0f\0o\0n\0t\0", 10), "it is no XML, expected element name"},
    {"cut_in_the_head", xml.substr(0, 12), nullptr},
    {"cut_in_a_name", xml.substr(0, xml.find("info") + 2), nullptr},
    {"cut_in_a_value", xml.substr(0, xml.find("padding=") + 11), nullptr},
    {"cut_in_a_glyph", xml.substr(0, xml.rfind("xadvance")), nullptr},
    {"cut_before_the_end", xml.substr(0, xml.rfind("</font>")), nullptr},
    {"no_chars",
     "<font><info padding=\"1,2,3,4\"/><common lineHeight=\"20\" base=\"16\"/>"
     "<pages><page file=\"atlas.png\"/></pages></font>",
     "there is no \"chars\" in it"},
    {"nothing_at_all", "<font/>",
     "there is no \"chars\" in it; \"padding\" is missing or too short, taking 0 for it and what else is not "
     "there"},
    {"deep", deep, "its elements are nested too deep"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    TBitmapFont* font = make(row.name, row.content);
    const std::string start = "4 Font " + folder + row.name + ".fnt is not usable: ";
    if (row.problem)
      EXPECT_EQ(start + row.problem + ".", written());
    else
      EXPECT_EQ(start + "it is no XML, ", written().substr(0, start.size() + 14));
    EXPECT_EQ(std::string::npos, written().find('\n'));
    EXPECT_EQ(nullptr, TBitmapFont::FindBitmapFont(row.name));
    EXPECT_FALSE(draws(font, "AB"));
  }
}

TEST_F(BadFonts, CutAnywhereItIsOneLineOrNone) {
  const std::string xml = testfont::toXml(good);
  for (size_t length = 0; length < xml.size(); ++length) {
    SCOPED_TRACE(length);
    TBitmapFont* font = make("cut" + std::to_string(length), xml.substr(0, length));
    // White space behind the last element is all that may be missing.
    const bool complete = length >= xml.rfind('>') + 1;
    EXPECT_EQ(complete, written().empty());
    EXPECT_EQ(std::string::npos, written().find('\n'));
    EXPECT_EQ(complete, TBitmapFont::FindBitmapFont(font->Name()) == font);
  }
}

TEST_F(BadFonts, APackersTextFormatIsNotRead) {
  std::filesystem::copy_file(std::string(testpaths::source) + "/tests/data/fonts/text.fnt", folder + "text.fnt");
  TBitmapFont* font = load("text");
  EXPECT_EQ("4 Font " + folder + "text.fnt is not usable: it is no XML, expected <.", written());
  EXPECT_FALSE(draws(font, "A"));
}

TEST_F(BadFonts, EachMissingAttributeIsOneLineAndZero) {
  const std::string xml = testfont::toXml(good);
  for (const char* name : {"padding", "lineHeight", "base", "file", "id", "x", "y", "width", "height", "xoffset",
                           "yoffset", "xadvance"}) {
    SCOPED_TRACE(name);
    std::string without = xml;
    const std::string found = std::string(" ") + name + "=\"";
    for (size_t at; (at = without.find(found)) != std::string::npos;)
      without.erase(at, without.find('"', at + found.size()) + 1 - at);
    make(std::string("no_") + name, without);
    EXPECT_EQ("4 Font " + folder + "no_" + name + ".fnt: \"" + name +
                "\" is missing or too short, taking 0 for it and what else is not there.",
              written());
  }
}

TEST_F(BadFonts, AListThatIsTooShortIsOneLine) {
  const std::string colour = " backgroundColor=\"";
  const struct {
    const char* name;
    const char* padding;
    const char* colour;
    const char* told;
  } rows[] = {
    {"short_padding", "1,2,3", "1,2,3,4", "padding"},
    {"one_padding", "7", "1,2,3,4", "padding"},
    {"short_colour", "1,2,3,4", "1,2,3", "backgroundColor"},
    {"both", "1", "1", "padding"},
    {"whole", "1,2,3,4", "1,2,3,4", nullptr},
    {"long", "1,2,3,4,5", "1,2,3,4,5", nullptr},
  };
  for (const auto& row : rows) {
    good.padding = row.padding;
    std::string xml = testfont::toXml(good);
    xml.insert(xml.find(" padding=\""), colour + row.colour + "\"");
    make(row.name, xml);
    const std::string told = row.told ? "4 Font " + folder + row.name + ".fnt: \"" + row.told +
                                          "\" is missing or too short, taking 0 for it and what else is not there."
                                      : "";
    EXPECT_EQ(told, written()) << row.name;
  }
}

TEST_F(BadFonts, AMissingOrBrokenPictureDrawsNothing) {
  testfont::writeText(folder + "empty.png", "");
  testfont::writeText(folder + "words.png", "no picture");
  for (const char* image : {"nowhere.png", "empty.png", "words.png", "", "/", "../"}) {
    SCOPED_TRACE(image);
    good.image = image;
    testing::internal::CaptureStdout();
    TBitmapFont* font = make("pictureless", testfont::toXml(good));
    const std::string printed = testing::internal::GetCapturedStdout();
    EXPECT_NE(std::string::npos, printed.find("Unable to load image file"));
    EXPECT_EQ(printed.find("Unable"), printed.rfind("Unable"));
    const std::string told = written();
    EXPECT_EQ(0u, told.find("4 Unable to load image file " + folder)) << told;
    EXPECT_EQ(told.find("Unable"), told.rfind("Unable"));
    EXPECT_FALSE(draws(font, "AB"));
    TBitmapFont::CleanupBitmapFonts();
  }
}

TEST_F(BadFonts, RectanglesOutsideThePictureAreOneLineAndDrawNothing) {
  good.glyphs = {
    {'a', 64, 0, 8, 10, 0, 0, 10},
    {'b', 0, 64, 8, 10, 0, 0, 10},
    {'c', -20, 0, 8, 10, 0, 0, 10},
    {'d', 0, -20, 8, 10, 0, 0, 10},
    {'e', 0, 0, -8, 10, 0, 0, 10},
    {'f', 0, 0, 8, -10, 0, 0, 10},
    {'g', 2000000000, 2000000000, 8, 10, 0, 0, 10},
    {'h', 2147483647, 0, 2147483647, 10, 0, 0, 10},
    {'i', 0, 0, 0, 0, 0, 0, 10},
    {'j', 900, 900, 0, 0, 0, 0, 10},
    {'k', 2147483647, 0, 8, 10, 0, 0, 10},
    {'l', 0, 2147483640, 8, 10, 0, 0, 10},
  };
  TBitmapFont* font = make("outside", testfont::toXml(good));
  EXPECT_EQ("4 Font " + folder + "outside.fnt: 10 of its glyphs lie outside the picture.", written());
  for (const char* text :
       {"a", "b", "c", "d", "e", "f", "g", "h", "i", "j", "k", "l", "abcdefghijkl", "aaaa\nbbbb"}) {
    SCOPED_TRACE(text);
    EXPECT_FALSE(draws(font, text));
  }
  EXPECT_EQ(10, font->FindGlyph('a')->height);
}

TEST_F(BadFonts, ARectangleOverTheEdgeIsReportedAndDrawnFromWhatIsThere) {
  good.glyphs = {{'A', 60, 60, 8, 8, 0, 0, 10}};
  TBitmapFont* font = make("edge", testfont::toXml(good));
  EXPECT_EQ("4 Font " + folder + "edge.fnt: 1 of its glyphs lie outside the picture.", written());
  EXPECT_TRUE(draws(font, "A"));
}

TEST_F(BadFonts, NumbersBeyondAllBoundsDoNoHarm) {
  const struct {
    const char* name;
    testfont::Glyph a, b;
    int lineHeight;
    const char* padding;
    bool texture;
  } rows[] = {
    {"wide", {'A', 0, 0, 2147483647, 10, 0, 0, 10}, {'B', 0, 0, 2147483647, 10, 0, 0, 10}, 20, "0,0,0,0", false},
    {"tall", {'A', 0, 0, 8, 2147483647, 0, 2147483647, 10}, {'B', 0, 0, 8, 10, 0, 0, 10}, 20, "0,0,0,0", false},
    {"far", {'A', 0, 0, 8, 10, 0, 0, 2147483647}, {'B', 0, 0, 8, 10, 0, 0, 2147483647}, 20, "0,0,0,0", false},
    {"line", {'A', 0, 0, 8, 10, 0, 0, 10}, {'B', 0, 0, 8, 10, 0, 0, 10}, 2147483647, "0,0,0,0", false},
    {"low line", {'A', 70, 70, 8, 10, 0, 0, 10}, {'B', 70, 70, 8, 10, 0, 0, 10}, -2147483647, "0,0,0,0", true},
    {"back",
     {'A', 0, 0, 8, 10, -2147483647, 0, -1000},
     {'B', 0, 0, 8, 10, -2147483647, 0, -1000},
     20,
     "0,0,0,0",
     true},
    {"off", {'A', 0, 0, 8, 10, 2147483647, 0, 10}, {'B', 0, 0, 8, 10, 0, -2147483647, 10}, 20, "0,0,0,0", true},
    {"padded", {'A', 0, 0, 8, 10, 0, 0, 10}, {'B', 0, 0, 8, 10, 0, 0, 10}, 20, "2147483647,0,0,2147483647", true},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    good.glyphs = {row.a, row.b};
    good.lineHeight = row.lineHeight;
    good.padding = row.padding;
    TBitmapFont* font = make(row.name, testfont::toXml(good));
    EXPECT_FALSE(draws(font, "ABAB\nBA"));
    SDL_Texture* texture = font->RenderText(harness.renderer(), "ABAB\nBA", nullptr, nullptr, RIGHT_UP);
    EXPECT_EQ(row.texture, texture != nullptr);
    if (texture) SDL_DestroyTexture(texture);
    EXPECT_LE(std::abs(font->LineHeight()), 1 << 24);
    EXPECT_LE(font->MaxGlyphHeight(), 1 << 24) << "to be multiplied by the rows of a digit strip";
    auto* label = harness.add(new TGlyphLabel(nullptr, 0, 0, 50, 20, "ABAB\nBA", row.name, ""));
    label->SetResize(true);
    harness.frame();
    harness.module().RemoveComponent(label, true);
  }
}

TEST_F(BadFonts, AHundredThousandGlyphs) {
  constexpr int count = 100000;
  std::ostringstream xml;
  xml.imbue(std::locale::classic());
  xml << "<font><info padding=\"0,0,0,0\"/><common lineHeight=\"20\" base=\"16\"/><pages><page file=\"atlas.png\"/>"
         "</pages><chars>";
  for (int id = 1; id <= count; ++id)
    xml << "<char id=\"" << id
        << "\" x=\"0\" y=\"0\" width=\"8\" height=\"10\" xoffset=\"0\" yoffset=\"0\" xadvance=\"" << 10 << "\"/>";
  xml << "</chars><kernings>";
  for (int id = 1; id <= count; ++id) xml << "<kerning first=\"" << id << "\" second=\"65\" amount=\"-1\"/>";
  xml << "</kernings></font>";
  TBitmapFont* font = make("many", xml.str());
  EXPECT_EQ("", written());
  ASSERT_NE(nullptr, font->FindGlyph(count));
  ASSERT_EQ(1u, font->FindGlyph(count)->kernings.size());
  EXPECT_EQ(65, font->FindGlyph(count)->kernings[0].second_id);
  EXPECT_EQ(nullptr, font->FindGlyph(count + 1));
  EXPECT_TRUE(draws(font, "AB"));
  // The last one of them, by its bytes.
  EXPECT_TRUE(draws(font, "\xf0\x98\x9a\xa0"));
}

}  // namespace
