#include "tests/support/PanelSkin.h"

#include <SDL_image.h>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "tests/support/TestFont.h"

namespace fs = std::filesystem;

namespace panelskin {
namespace {

constexpr int kSoftEdge = 8, kMark = 24;
constexpr const char* kFont = "/usr/share/fonts/truetype/dejavu/DejaVuSans-Bold.ttf";

SDL_Surface* makePicture(int width, int height) {
  return SDL_CreateRGBSurfaceWithFormat(0, width, height, 32, SDL_PIXELFORMAT_RGBA32);
}

void fill(SDL_Surface* picture, SDL_Rect place, SDL_Color colour) {
  SDL_FillRect(picture, &place, SDL_MapRGBA(picture->format, colour.r, colour.g, colour.b, colour.a));
}

void writeJpg(const std::string& path, int width, int height, SDL_Color colour) {
  SDL_Surface* picture = makePicture(width, height);
  fill(picture, {0, 0, width, height}, colour);
  IMG_SaveJPG(picture, path.c_str(), 95);
  SDL_FreeSurface(picture);
}

// A font of half the width: digits that fit their wheels.
void writeNarrowFont(const std::string& folder, const std::string& name, int scale) {
  const std::string base = testfont::write(folder, name, scale);
  SDL_Surface* wide = IMG_Load((base + ".png").c_str());
  SDL_SetSurfaceBlendMode(wide, SDL_BLENDMODE_NONE);
  SDL_Surface* narrow = makePicture(wide->w / 2, wide->h);
  SDL_BlitScaled(wide, nullptr, narrow, nullptr);
  IMG_SavePNG(narrow, (base + ".png").c_str());
  SDL_FreeSurface(wide);
  SDL_FreeSurface(narrow);

  std::ifstream file(base + ".fnt");
  std::string xml((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
  for (const char* attribute : {" x=\"", " width=\"", " xadvance=\"", " amount=\""})
    for (size_t at = 0; (at = xml.find(attribute, at)) != std::string::npos;) {
      at += std::string(attribute).size();
      const size_t end = xml.find('"', at);
      xml.replace(at, end - at, std::to_string(std::stoi(xml.substr(at, end - at)) / 2));
    }
  testfont::writeText(base + ".fnt", xml);
}

void writeSkin(const std::string& skin) {
  fs::create_directories(skin + "Fonts");
  fs::create_directories(skin + "Animation");
  const struct {
    const char* name;
    int width, height;
    SDL_Color colour;
  } cards[] = {
    {"Background.png", 96, 54, {16, 24, 40, 255}},      {"ClientDemo.png", 96, 54, {90, 0, 90, 200}},
    {"dot.png", 24, 24, {250, 220, 40, 255}},           {"dot_shadow.png", 24, 24, {0, 0, 0, 128}},
    {"splashLogo.png", 300, 90, {40, 160, 200, 255}},   {"logo.png", 596, 76, {90, 20, 160, 255}},
    {"JACKPOT.png", 630, 156, {200, 30, 30, 255}},      {"GOLD_RIGHT.png", 908, 208, {120, 90, 10, 255}},
    {"GOLD_LEFT.png", 908, 208, {90, 60, 10, 255}},     {"SILVER_RIGHT.png", 908, 208, {110, 110, 120, 255}},
    {"SILVER_LEFT.png", 908, 208, {80, 80, 90, 255}},   {"BRONZE_RIGHT.png", 908, 208, {110, 60, 30, 255}},
    {"BRONZE_LEFT.png", 908, 208, {80, 40, 20, 255}},   {"EMERALD_RIGHT.png", 908, 208, {10, 110, 60, 255}},
    {"EMERALD_LEFT.png", 908, 208, {10, 80, 40, 255}},  {"bar.png", 1220, 91, {30, 60, 130, 255}},
    {"buttonE.png", 177, 179, {40, 120, 60, 255}},      {"buttonD.png", 177, 179, {70, 70, 70, 255}},
    {"Animation/Backround.png", 96, 54, {0, 0, 0, 160}}};
  for (const auto& card : cards)
    if (card.width < 100)
      testfont::writePicture(skin + card.name, card.width, card.height, card.colour);
    else
      writeCard(skin + card.name, card.width, card.height, card.colour);
  const struct {
    const char* name;
    int scale;
  } fonts[] = {{"jackpot_win_label", 6},
               {"info_bar_font", 5},
               {"emerald_hours_font", 4},
               {"uni_font", 3},
               {"HelveticaBold26px_Instructions", 3},
               {"HelveticaBold20px_SmallLabel", 2}};
  for (const auto& font : fonts) testfont::write(skin + "Fonts/", font.name, font.scale);
  writeNarrowFont(skin + "Fonts/", "currency", 12);
  fs::copy_file(kFont, skin + "AppFont.ttf");

  const std::string animation = skin + "Animation/";
  writeBlocks(animation + "IdleRight", {30, 40, 120, 1000, 380, 30, 2, {255, 255, 200, 160}});
  writeBlocks(animation + "IdleLeft", {30, 40, 120, 1000, 380, 10, 8, {200, 255, 255, 160}});
  writeBlocks(animation + "GoldPnlWin", {8, 200, 80, 1600, 600, 200, 70, {255, 210, 60, 200}});
  writeBlocks(animation + "SilverPnlWin", {8, 200, 80, 1600, 600, 200, 70, {220, 220, 230, 200}});
  writeBlocks(animation + "BronzePnlWin", {8, 200, 80, 1600, 600, 200, 70, {220, 130, 70, 200}});
  writeBlocks(animation + "EmeraldPnlWin", {8, 200, 80, 1600, 600, 200, 70, {60, 240, 140, 200}});
  writeBlocks(animation + "GoldPrtclWin", {20, 160, 90, 1920, 1080, 90, 50, {255, 240, 120, 220}});
}

void writeGame(const std::string& icons, SDL_Color overlay) {
  fs::create_directories(icons);
  writeBlocks(icons + "overlay", {40, 120, 120, 810, 900, 15, 20, overlay});
  writeJpg(icons + "topscreen.jpg", 96, 54, {20, 90, 120, 255});
  testfont::writePicture(icons + "background.png", 96, 54, kBackground);
  testfont::write(icons, "digits", 4);
  fs::copy_file(kFont, icons + "digits.ttf");
}

}  // namespace

void writeCard(const std::string& path, int width, int height, SDL_Color colour) {
  SDL_Surface* picture = makePicture(width, height);
  SDL_Color soft = colour;
  soft.a = 128;
  fill(picture, {0, 0, width, height}, soft);
  fill(picture, {kSoftEdge, kSoftEdge, width - 2 * kSoftEdge, height - 2 * kSoftEdge}, colour);
  fill(picture, {kSoftEdge, kSoftEdge, kMark, kMark}, {255, 255, 255, 255});
  IMG_SavePNG(picture, path.c_str());
  SDL_FreeSurface(picture);
}

void writeBlocks(const std::string& base, const Blocks& blocks) {
  const std::string image = fs::path(base).filename().string() + "_atlas.png";
  testfont::writePicture(fs::path(base).parent_path().string() + "/" + image, blocks.width * 2, blocks.height,
                         blocks.colour);
  std::string xml = "<TextureAtlas imagePath=\"" + image + "\">";
  for (int i = 0; i < blocks.frames; ++i) {
    const auto attribute = [&xml](const char* name, int value) {
      xml += std::string(" ") + name + "=\"" + std::to_string(value) + "\"";
    };
    xml += "<sprite n=\"" + std::to_string(i) + "\"";
    attribute("x", i % 2 * blocks.width);
    attribute("y", 0);
    attribute("w", blocks.width);
    attribute("h", blocks.height);
    attribute("oX", i * blocks.stepX);
    attribute("oY", i * blocks.stepY);
    attribute("oW", blocks.fullWidth);
    attribute("oH", blocks.fullHeight);
    xml += "/>";
  }
  testfont::writeText(base + ".xml", xml + "</TextureAtlas>");
}

std::string write(const std::string& name) {
  const std::string root = testfont::freshFolder(name);
  writeSkin(root + "VESPERA/TOP_SKIN/");
  fs::copy_file(kFont, root + "AppFontBold.ttf");

  const std::string reels = root + "Games/Reels/Icons/";
  writeGame(reels, {240, 80, 80, 220});
  for (const char* folder : {"paytable", "paytable_sl"}) fs::create_directories(reels + folder);
  writeCard(reels + "paytable/InfoPage_Paytable.png", 700, 400, kPage);
  writeCard(reels + "paytable/InfoPage_Paytable_Bonus.png", 600, 360, kBonus);
  writeJpg(reels + "paytable/InfoPage_Rules.jpg", 320, 200, kRules);
  writeCard(reels + "paytable_sl/InfoPage_Paytable.png", 700, 400, kPageSl);
  writeJpg(reels + "paytable_sl/InfoPage_Paytable.jpg", 320, 200, kRules);

  const std::string wheels = root + "Games/Wheels/Icons/";
  writeGame(wheels, {80, 80, 240, 220});
  fs::create_directories(wheels + "paytable");
  writeCard(wheels + "paytable/InfoPage_Paytable.png", 640, 480, panelskin::kWheels);
  return root;
}

}  // namespace panelskin
