// The animations and the games of the demo skin, read as the program reads them, and the tour that shows them.
#include <SDL_ttf.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <map>
#include <nlohmann/json.hpp>
#include <rapidxml/rapidxml.hpp>
#include <set>

#include "SkinFiles.h"

namespace fs = std::filesystem;
using namespace skinfiles;
using Json = nlohmann::json;

namespace {

struct Frame {
  int x, y, w, h, oX, oY, oW, oH;
};

struct Atlas {
  Surface image{nullptr, SDL_FreeSurface};
  std::string blendMode;
  std::vector<Frame> frames;
};

Atlas readAtlas(const std::string& path) {
  std::string text = readFile(path + ".xml");
  text.push_back('\0');
  rapidxml::xml_document<> document;
  document.parse<0>(text.data());
  const auto* root = document.first_node("TextureAtlas");
  Atlas atlas;
  atlas.image = load(path.substr(0, path.rfind('/') + 1) + root->first_attribute("imagePath")->value());
  atlas.blendMode = root->first_attribute("blendMode")->value();
  for (const auto* node = root->first_node("sprite"); node; node = node->next_sibling("sprite")) {
    const auto at = [node](const char* name) { return std::atoi(node->first_attribute(name)->value()); };
    EXPECT_EQ(nullptr, node->first_attribute("r")) << "the program draws frames as they lie";
    atlas.frames.push_back({at("x"), at("y"), at("w"), at("h"), at("oX"), at("oY"), at("oW"), at("oH")});
  }
  return atlas;
}

// Every frame has its part of the image, and lies inside the component that shows it.
void checkAtlas(const std::string& path, int width, int height) {
  SCOPED_TRACE(path);
  const Atlas atlas = readAtlas(path);
  ASSERT_TRUE(atlas.image) << SDL_GetError();
  ASSERT_FALSE(atlas.frames.empty());
  for (const Frame& f : atlas.frames) {
    ASSERT_TRUE(f.x >= 0 && f.y >= 0 && f.w > 0 && f.h > 0 && f.x + f.w <= atlas.image->w &&
                f.y + f.h <= atlas.image->h);
    EXPECT_EQ(width, f.oW);
    EXPECT_EQ(height, f.oH);
    EXPECT_TRUE(f.oX >= 0 && f.oY >= 0 && f.oX + f.w <= width && f.oY + f.h <= height);
    EXPECT_GT(brightness(atlas.image, f.x, f.y, f.w, f.h), 0.5) << "a frame shows nothing";
  }
}

const char* const kGames[] = {"VesperCrown", "SevenOrchards"};
const std::string kTour = SOURCE_DIR "/tools/tour/evening.json";

std::string icons(const std::string& game) { return kRoot + "Games/" + game + "/Icons/"; }

Json tour() { return Json::parse(readFile(kTour)); }

}  // namespace

TEST(DemoAnimations, FramesLieInTheirAtlasAndInTheirPlace) {
  const std::string folder = kSkin + "Animation/";
  for (const char* name : {"GoldPnlWin", "SilverPnlWin", "BronzePnlWin", "EmeraldPnlWin"})
    checkAtlas(folder + name, 1600, 600);
  checkAtlas(folder + "GoldPrtclWin", 1920, 1080);
  for (const char* name : {"IdleRight", "IdleLeft"}) checkAtlas(folder + name, 1000, 380);
  for (const std::string game : kGames) checkAtlas(icons(game) + "overlay", 810, 900);
}

// The ring of lights surrounds the level: nothing of it may lie over the digits and the currency.
TEST(DemoAnimations, WinFramesLeaveTheDigitsFree) {
  for (const std::string level : {"Gold", "Silver", "Bronze", "Emerald"}) {
    SCOPED_TRACE(level);
    const Atlas atlas = readAtlas(kSkin + "Animation/" + level + "PnlWin");
    EXPECT_EQ("ADD", atlas.blendMode);
    for (const Frame& f : atlas.frames) {
      const int x = 346 + 68 - f.oX + f.x, y = 176 + 87 - f.oY + f.y;
      EXPECT_LT(brightness(atlas.image, x, y, 771, 91), 12);
    }
  }
}

// The program repeats the overlay from frame 30 on, and needs something to repeat.
TEST(DemoAnimations, OverlaysLoopWithoutAJump) {
  for (const std::string game : kGames) {
    const Atlas atlas = readAtlas(icons(game) + "overlay");
    ASSERT_GT(atlas.frames.size(), 45U);
    const Frame &first = atlas.frames[30], &last = atlas.frames.back();
    EXPECT_NEAR(first.oX, last.oX, 1);
    EXPECT_NEAR(first.oY, last.oY, 1);
    EXPECT_NEAR(first.w, last.w, 1);
  }
}

// An idle sparkle ends before the next level's begins, 2200 ms later, at 25 frames a second.
TEST(DemoAnimations, SparklesEndBeforeTheNextOne) {
  for (const char* name : {"IdleRight", "IdleLeft"})
    EXPECT_LT(readAtlas(kSkin + "Animation/" + name).frames.size(), 55U) << name;
}

TEST(DemoGames, HaveTheirPicturesAndFonts) {
  ASSERT_EQ(0, TTF_Init());
  for (const std::string game : kGames) {
    SCOPED_TRACE(game);
    const std::string head = readFile(icons(game) + "topscreen.jpg").substr(0, 2);
    EXPECT_EQ("\xff\xd8", head) << "the name says JPEG";
    const Surface still = load(icons(game) + "topscreen.jpg");
    ASSERT_TRUE(still);
    EXPECT_EQ(1920, still->w);
    EXPECT_EQ(1080, still->h);
    EXPECT_TRUE(load(icons(game) + "background.png"));
    for (const std::string folder : {"paytable/", "paytable_de/"})
      for (const char* page : {"InfoPage_Paytable.png", "InfoPage_Paytable_Bonus.png", "InfoPage_Rules.png"}) {
        const Surface surface = load(icons(game) + folder + page);
        ASSERT_TRUE(surface) << folder << page;
        EXPECT_LE(surface->w, 1920);
        EXPECT_LE(surface->h, 940) << "the hint and the bets need the screen's foot";
      }
    TTF_Font* font = TTF_OpenFont((icons(game) + "prize.ttf").c_str(), 34);
    EXPECT_NE(nullptr, font) << "the font of the bet labels";
    if (font) TTF_CloseFont(font);
    EXPECT_NE(std::string::npos, readFile(icons(game) + "prize.fnt").find("id=\"48\""));
  }
  TTF_Quit();
}

// What the program has decoded while a game is open: its overlay, its ground and the pages of one language.
TEST(DemoGames, StayUnder40MegabytesDecodedEach) {
  for (const std::string game : kGames) {
    uintmax_t bytes = 0;
    for (const auto& entry : fs::recursive_directory_iterator(icons(game))) {
      if (entry.path().extension() != ".png" || entry.path().parent_path().filename() == "paytable_de") continue;
      const Surface surface = load(entry.path());
      ASSERT_TRUE(surface) << entry.path();
      bytes += static_cast<uintmax_t>(surface->w) * static_cast<uintmax_t>(surface->h) * 4;
    }
    EXPECT_LT(bytes, 40U * 1000 * 1000) << game;
  }
}

TEST(Tour, NamesOnlyGamesThatHaveFolders) {
  std::set<std::string> seen;
  for (const Json& step : tour())
    if (step["do"] == "game" && step.value("Type", 0) == 4) {
      seen.insert(step["Name"]);
      EXPECT_TRUE(fs::is_directory(icons(step["Name"]))) << step;
    }
  EXPECT_EQ(std::size(kGames), seen.size());
}

// Each amount that the tour lays over a page falls into a dark field, and the field is as large as the text's
// place.
TEST(Tour, AmountsFallIntoTheFieldsOfThePages) {
  std::string game;
  int checked = 0;
  for (const Json& step : tour()) {
    if (step["do"] == "game" && step.contains("Name")) game = step["Name"];
    if (step["do"] != "set" || !step["state"].contains("ExtraData")) continue;
    for (const Json& page : step["state"]["ExtraData"]["paytableSetup"]) {
      const std::string file = page["name"] == "paytable" ? "InfoPage_Paytable.png" : "InfoPage_Paytable_Bonus.png";
      for (const char* folder : {"paytable/", "paytable_de/"}) {
        const Surface surface = load(icons(game) + folder + file);
        ASSERT_TRUE(surface) << game << file;
        for (const Json& text : page["texts"]) {
          SCOPED_TRACE(file + text["symbol"].get<std::string>());
          const int x = text["x"], y = text["y"], w = text["w"], h = text["h"];
          ASSERT_TRUE(x > 0 && y > 0 && x + w < surface->w && y + h < surface->h);
          EXPECT_LT(brightness(surface, x + 4, y + 4, w - 8, h - 8), 12) << "something is drawn under the amount";
          EXPECT_GT(brightness(surface, x + 12, y - 1, w - 24, 2), 25) << "no rim above";
          EXPECT_GT(brightness(surface, x + 12, y + h - 1, w - 24, 2), 25) << "no rim below";
          EXPECT_TRUE(fs::exists(icons(game) + text["font"].get<std::string>() + ".fnt"));
          ++checked;
        }
      }
    }
  }
  EXPECT_EQ(2 * 2 * 21, checked) << "two games in two languages, six symbols and the scatter three times each";
}

TEST(Tour, EndsInUnderTwoMinutes) {
  int last = 0;
  for (const Json& step : tour()) {
    EXPECT_GE(step["at"].get<int>(), last) << step;
    last = step["at"];
  }
  EXPECT_LT(last, 110000);
}
