// The demo skin as designers and the program meet it: files, sizes, fonts, and the same bytes on every run.
#include <SDL_ttf.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <map>
#include <rapidxml/rapidxml.hpp>
#include <set>
#include <sstream>

#include "SkinFiles.h"

namespace fs = std::filesystem;
using namespace skinfiles;

namespace {

struct Picture {
  const char* name;
  int width, height;
  bool opaque;  // no transparent pixel may be left
};

const Picture kPictures[] = {
  {"Background.png", 1920, 1080, true},
  {"ClientDemo.png", 1920, 1080, false},
  {"Animation/Backround.png", 960, 540, false},
  {"JACKPOT.png", 630, 156, false},
  {"logo.png", 596, 76, false},
  {"bar.png", 1220, 91, false},
  {"GOLD_RIGHT.png", 908, 208, false},
  {"GOLD_LEFT.png", 908, 208, false},
  {"SILVER_RIGHT.png", 908, 208, false},
  {"SILVER_LEFT.png", 908, 208, false},
  {"BRONZE_RIGHT.png", 908, 208, false},
  {"BRONZE_LEFT.png", 908, 208, false},
  {"EMERALD_RIGHT.png", 908, 208, false},
  {"EMERALD_LEFT.png", 908, 208, false},
  {"dot.png", 44, 44, false},
  {"dot_shadow.png", 44, 44, false},
  {"splashLogo.png", 900, 240, false},
  {"buttonE.png", 177, 179, false},
  {"buttonD.png", 177, 179, false},
};

const char* const kFonts[] = {"currency",
                              "uni_font",
                              "jackpot_win_label",
                              "info_bar_font",
                              "emerald_hours_font",
                              "HelveticaBold26px_Instructions",
                              "HelveticaBold20px_SmallLabel"};
// They name a currency and a time; all others show texts of any European language.
const std::set<std::string> kWithoutEastOfLatin1 = {"currency", "emerald_hours_font"};

// A description file as its reader takes it: every attribute must be there and a number.
struct Font {
  struct Glyph {
    int x, y, width, height, xoffset, yoffset, xadvance;
  };
  int lineHeight = 0, base = 0;
  std::vector<int> padding;
  std::string atlas;
  std::map<int, Glyph> glyphs;
  size_t chars = 0;
  std::map<std::pair<int, int>, int> kernings;
};

int number(const rapidxml::xml_node<>* node, const char* name) {
  const auto* attribute = node->first_attribute(name);
  EXPECT_NE(nullptr, attribute) << node->name() << " without " << name;
  return attribute == nullptr ? 0 : std::stoi(attribute->value());
}

Font readFont(const std::string& name) {
  std::string text = readFile(kSkin + "Fonts/" + name + ".fnt");
  text.push_back('\0');
  rapidxml::xml_document<> document;
  document.parse<0>(text.data());
  Font font;
  const auto* root = document.first_node("font");
  std::stringstream padding(root->first_node("info")->first_attribute("padding")->value());
  for (std::string part; std::getline(padding, part, ',');) font.padding.push_back(std::stoi(part));
  font.lineHeight = number(root->first_node("common"), "lineHeight");
  font.base = number(root->first_node("common"), "base");
  font.atlas = root->first_node("pages")->first_node("page")->first_attribute("file")->value();
  for (const auto* c = root->first_node("chars")->first_node("char"); c != nullptr; c = c->next_sibling("char")) {
    ++font.chars;
    font.glyphs[number(c, "id")] = {number(c, "x"),       number(c, "y"),       number(c, "width"),
                                    number(c, "height"),  number(c, "xoffset"), number(c, "yoffset"),
                                    number(c, "xadvance")};
  }
  if (const auto* kernings = root->first_node("kernings"))
    for (const auto* k = kernings->first_node("kerning"); k != nullptr; k = k->next_sibling("kerning"))
      font.kernings[{number(k, "first"), number(k, "second")}] = number(k, "amount");
  return font;
}

}  // namespace

TEST(DemoSkin, EveryPictureIsThereInItsSize) {
  for (const Picture& picture : kPictures) {
    SCOPED_TRACE(picture.name);
    const Surface surface = load(kSkin + picture.name);
    ASSERT_TRUE(surface) << SDL_GetError();
    EXPECT_EQ(picture.width, surface->w);
    EXPECT_EQ(picture.height, surface->h);
    int clear = 0, solid = 0;
    for (int y = 0; y < surface->h; ++y)
      for (int x = 0; x < surface->w; ++x) {
        const SDL_Color c = pixel(surface, x, y);
        clear += c.a < 255;
        solid += c.a > 0 && c.r + c.g + c.b > 0;
      }
    EXPECT_EQ(picture.opaque, clear == 0);
    const bool shade = std::string(picture.name) == "dot_shadow.png";  // black throughout
    EXPECT_GT(solid, shade ? -1 : surface->w * surface->h / 40) << "nothing is drawn";
  }
}

TEST(DemoSkin, FontsOfTheProgramOpen) {
  ASSERT_EQ(0, TTF_Init());
  for (const std::string& name : {kRoot + "AppFontBold.ttf", kSkin + "AppFont.ttf"}) {
    TTF_Font* font = TTF_OpenFont(name.c_str(), 34);
    ASSERT_NE(nullptr, font) << name << ": " << TTF_GetError();
    for (const Uint32 code : {0x41U, 0x10dU, 0xdfU, 0x20acU, 0x416U})
      EXPECT_TRUE(TTF_GlyphIsProvided32(font, code)) << name << " lacks " << code;
    TTF_CloseFont(font);
  }
  TTF_Quit();
}

TEST(DemoSkin, FontsHaveEveryGlyphOfTheirTexts) {
  for (const std::string name : kFonts) {
    const int last = kWithoutEastOfLatin1.count(name) ? 0xff : 0x17f;
    std::set<int> wanted = {0x2013, 0x2014, 0x2018, 0x2019, 0x201e, 0x2026, 0x20ac};
    for (int code = 0x20; code <= 0x7e; ++code) wanted.insert(code);
    for (int code = 0xa0; code <= last; ++code)
      if (code != 0xad && code != 0x149) wanted.insert(code);  // soft hyphen and a deprecated letter: not needed
    if (last > 0xff) wanted.insert({0x218, 0x219, 0x21a, 0x21b});
    if (name.find("Helvetica") == std::string::npos) wanted.insert(0x202f);  // between thousands
    if (name == "currency") wanted.insert({0x20b9, 0x20ba, 0x20bd});
    const Font font = readFont(name);
    EXPECT_EQ(font.chars, font.glyphs.size()) << name << ": a character stands twice";
    for (const int code : wanted) EXPECT_EQ(1U, font.glyphs.count(code)) << name << " lacks " << code;
  }
}

TEST(DemoSkin, FontsOfTheLabelsHaveGreekAndCyrillic) {
  for (const char* name : {"uni_font", "jackpot_win_label", "info_bar_font", "currency",
                           "HelveticaBold26px_Instructions", "HelveticaBold20px_SmallLabel"}) {
    const Font font = readFont(name);
    for (int code = 0x3b1; code <= 0x3c9; ++code) EXPECT_EQ(1U, font.glyphs.count(code)) << name << ' ' << code;
    for (int code = 0x410; code <= 0x44f; ++code) EXPECT_EQ(1U, font.glyphs.count(code)) << name << ' ' << code;
  }
}

TEST(DemoSkin, GlyphsLieApartInTheirAtlas) {
  for (const char* name : kFonts) {
    SCOPED_TRACE(name);
    const Font font = readFont(name);
    const Surface atlas = load(kSkin + "Fonts/" + font.atlas);
    ASSERT_TRUE(atlas) << SDL_GetError();
    std::vector<int> owner(static_cast<size_t>(atlas->w) * static_cast<size_t>(atlas->h), 0);
    for (const auto& [code, g] : font.glyphs) {
      if (g.width == 0) continue;
      ASSERT_TRUE(g.x >= 0 && g.y >= 0 && g.x + g.width <= atlas->w && g.y + g.height <= atlas->h) << code;
      int ink = 0;
      for (int y = g.y; y < g.y + g.height; ++y)
        for (int x = g.x; x < g.x + g.width; ++x) {
          int& cell = owner[static_cast<size_t>(y) * static_cast<size_t>(atlas->w) + static_cast<size_t>(x)];
          ASSERT_EQ(0, cell) << "the cells of " << cell << " and " << code << " overlap";
          cell = code;
          ink += pixel(atlas, x, y).a > 200;
        }
      EXPECT_GT(ink, 2) << code << " is empty";
    }
  }
}

// A text is as wide as its advances, its last cell and 5 spare pixels, and as high as its lines: a cell that begins
// left of the pen by more than the padding, or that leaves the line, would be cut.
TEST(DemoSkin, NoCellIsCutByTheTextAroundIt) {
  for (const char* name : kFonts) {
    SCOPED_TRACE(name);
    const Font font = readFont(name);
    ASSERT_EQ(4U, font.padding.size());
    EXPECT_EQ(0, font.padding[0]);
    EXPECT_LE(font.padding[3], 5);
    EXPECT_GT(font.base, font.lineHeight / 2);
    for (const auto& [code, g] : font.glyphs) {
      if (g.width == 0) continue;
      EXPECT_LE(g.xoffset, 0) << code;
      EXPECT_GE(g.xoffset + font.padding[3], 0) << code;
      EXPECT_GE(g.yoffset, 0) << code;
      EXPECT_LE(g.yoffset + g.height, font.lineHeight) << code;
    }
  }
}

TEST(DemoSkin, LettersAreKerned) {
  for (const char* name : {"jackpot_win_label", "info_bar_font"}) {
    const Font font = readFont(name);
    const auto pair = font.kernings.find({'A', 'V'});
    ASSERT_NE(font.kernings.end(), pair) << name;
    EXPECT_LT(pair->second, 0) << name;
    EXPECT_EQ(font.kernings.end(), font.kernings.find({'H', 'H'})) << name;
  }
}

// The wheels scale by the highest glyph: at 91 they are drawn at their own size in a box 91 pixels high.
TEST(DemoSkin, DigitsFitTheWheels) {
  const Font font = readFont("currency");
  int highest = 0;
  for (const auto& entry : font.glyphs) highest = std::max(highest, entry.second.height);
  EXPECT_EQ(91, highest);
  EXPECT_EQ(91, font.lineHeight);
  const Surface atlas = load(kSkin + "Fonts/currency.png");
  ASSERT_TRUE(atlas);
  for (int digit = '0'; digit <= '9'; ++digit) {
    SCOPED_TRACE(static_cast<char>(digit));
    const Font::Glyph& g = font.glyphs.at(digit);
    EXPECT_EQ(91, g.height);
    int left = g.width, right = -1;
    for (int y = 0; y < g.height; ++y)
      for (int x = 0; x < g.width; ++x)
        if (pixel(atlas, g.x + x, g.y + y).a > 250) {
          left = std::min(left, x);
          right = std::max(right, x);
        }
    EXPECT_LE(right - left + 1, 50) << "wider than a wheel with its gap";
    EXPECT_NEAR(g.width - 1, left + right, 3) << "off the wheel's middle";
  }
  // The separators hang from the box's lower edge, so their cells end on the line's end.
  for (const char mark : {'.', ','}) {
    const Font::Glyph& g = font.glyphs.at(mark);
    EXPECT_EQ(91, g.yoffset + g.height) << mark;
    EXPECT_LT(g.width, 30) << mark;
  }
}

// Where the digits and the currency will stand the frame is dark and quiet; around them it is metal.
TEST(DemoSkin, FramesLeaveTheirFieldsFree) {
  struct Side {
    const char* suffix;
    int digits, currency;
  };
  for (const Side& side : {Side{"_RIGHT.png", 90, 709}, Side{"_LEFT.png", 229, 68}})
    for (const std::string level : {"GOLD", "SILVER", "BRONZE", "EMERALD"}) {
      SCOPED_TRACE(level + side.suffix);
      const Surface frame = load(kSkin + level + side.suffix);
      ASSERT_TRUE(frame);
      EXPECT_LT(brightness(frame, side.digits, 87, 594, 90), 60);
      EXPECT_LT(brightness(frame, side.currency, 87, 130, 90), 60);
      EXPECT_GT(brightness(frame, 100, 11, 700, 4), 75) << "no bezel at the top";
    }
}

TEST(DemoSkin, ButtonsLeaveTheirTextsFree) {
  for (const char* name : {"buttonE.png", "buttonD.png"}) {
    const Surface button = load(kSkin + name);
    ASSERT_TRUE(button);
    EXPECT_LT(brightness(button, 32, 31, 101, 80), 70) << name;
    EXPECT_LT(brightness(button, 32, 117, 101, 20), 40) << name;
  }
  const Surface lit = load(kSkin + "buttonE.png"), dark = load(kSkin + "buttonD.png");
  EXPECT_GT(brightness(lit, 0, 0, 177, 179), 2 * brightness(dark, 0, 0, 177, 179)) << "too alike to tell apart";
}

TEST(DemoSkin, TwoRunsAreTheSame) {
  const std::string second = (fs::temp_directory_path() / ("demo-skin-" + std::to_string(getpid()))).string() + "/";
  fs::remove_all(second);
  ASSERT_EQ(0, std::system(("'" SKINMAKER "' '" + second + "'").c_str()));
  std::set<std::string> first, again;
  for (const auto& entry : fs::recursive_directory_iterator(kRoot))
    if (entry.is_regular_file()) first.insert(fs::relative(entry.path(), kRoot).string());
  for (const auto& entry : fs::recursive_directory_iterator(second))
    if (entry.is_regular_file()) again.insert(fs::relative(entry.path(), second).string());
  EXPECT_EQ(first, again);
  EXPECT_GT(first.size(), std::size(kPictures) + 2 * std::size(kFonts));
  for (const std::string& file : first)
    EXPECT_TRUE(readFile(kRoot + file) == readFile(second + file)) << file << " differs";
  fs::remove_all(second);
}

TEST(DemoSkin, StaysUnder60MegabytesDecoded) {
  uintmax_t bytes = 0;
  for (const auto& entry : fs::recursive_directory_iterator(kSkin))
    if (entry.path().extension() == ".png") {
      const Surface surface = load(entry.path());
      ASSERT_TRUE(surface) << entry.path();
      bytes += static_cast<uintmax_t>(surface->w) * static_cast<uintmax_t>(surface->h) * 4;
    }
  EXPECT_GT(bytes, 20U * 1000 * 1000);
  EXPECT_LT(bytes, 60U * 1000 * 1000);
}

TEST(DemoSkin, IsSmallOnDisk) {
  uintmax_t bytes = 0;
  for (const auto& entry : fs::recursive_directory_iterator(kRoot))
    if (entry.is_regular_file()) bytes += entry.file_size();
  EXPECT_LT(bytes, 30U * 1000 * 1000);
}

TEST(DemoSkin, AnUnwritableRootIsAnError) {
  EXPECT_NE(0, std::system("'" SKINMAKER "' /proc/skin/ 2>/dev/null"));
  EXPECT_NE(0, std::system("'" SKINMAKER "' 2>/dev/null"));
  EXPECT_NE(0, std::system(("'" SKINMAKER "' '" + kRoot + "' nothing 2>/dev/null").c_str()));
}
