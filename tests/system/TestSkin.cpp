#include "tests/system/TestSkin.h"

#include <SDL_image.h>
#include <filesystem>
#include <fstream>

namespace systest {
namespace {

namespace fs = std::filesystem;

struct PictureFile {
  const char* name;
  int width, height;
  Colour colour;
  int alpha;
};

constexpr int kLetterWidth = 20;
constexpr int kFirstLetter = 32, kLastLetter = 126;

// Each glyph is a block; the letters are white and as high as the digits.
bool writeFont(const std::string& base) {
  constexpr int count = kLastLetter - kFirstLetter + 1;
  const int cell = TestSkin::kDigitWidth + 2, height = TestSkin::kDigitHeight;
  SDL_Surface* atlas = SDL_CreateRGBSurfaceWithFormat(0, cell * count, height, 32, SDL_PIXELFORMAT_ARGB8888);
  if (!atlas) return false;
  std::ofstream description(base + ".fnt");
  description << "<?xml version=\"1.0\"?>\n<font>\n<info padding=\"0,0,0,0\"/>\n<common lineHeight=\"" << height
              << "\" base=\"" << height << "\"/>\n<pages><page id=\"0\" file=\""
              << fs::path(base).filename().string() << ".png\"/></pages>\n<chars count=\"" << count << "\">\n";
  for (int letter = kFirstLetter; letter <= kLastLetter; ++letter) {
    const bool isDigit = letter >= '0' && letter <= '9';
    const Colour colour = isDigit ? TestSkin::digit(letter - '0') : Colour{255, 255, 255};
    SDL_Rect place{(letter - kFirstLetter) * cell, 0, isDigit ? TestSkin::kDigitWidth : kLetterWidth, height};
    if (letter == ',' || letter == '.') place.w = 4;
    if (letter != ' ')
      SDL_FillRect(atlas, &place,
                   SDL_MapRGBA(atlas->format, static_cast<Uint8>(colour.red), static_cast<Uint8>(colour.green),
                               static_cast<Uint8>(colour.blue), 255));
    description << "<char id=\"" << letter << "\" x=\"" << place.x << "\" y=\"0\" width=\"" << place.w
                << "\" height=\"" << height << "\" xoffset=\"0\" yoffset=\"0\" xadvance=\"" << place.w + 2
                << "\"/>\n";
  }
  description << "</chars>\n</font>\n";
  const bool good = IMG_SavePNG(atlas, (base + ".png").c_str()) == 0;
  SDL_FreeSurface(atlas);
  return good && description.flush().good();
}

bool writePages(const std::string& icons, const std::string& language, const Colour (&colours)[2]) {
  const std::string folder = icons + "paytable" + language + "/";
  return writePicture(folder + "InfoPage_Paytable.png", 800, 600, colours[0], 255) &&
         writePicture(folder + "InfoPage_Paytable_Bonus.png", 800, 600, colours[1], 255);
}

}  // namespace

bool TestSkin::write(const std::string& workingDir) {
  const std::string skin = workingDir + "/VESPERA/TOP_SKIN/";
  std::error_code error;
  fs::create_directories(skin + "Fonts", error);
  fs::create_directories(skin + "Animation", error);
  const PictureFile files[] = {
    {"Background.png", 1920, 1080, kBackground, 255},
    {"ClientDemo.png", 1920, 1080, kDemo, 255},
    {"dot.png", 40, 40, kDot, 255},
    {"dot_shadow.png", 40, 40, {0, 0, 0}, 128},
    {"splashLogo.png", 200, 50, kSplash, 255},
    {"logo.png", 596, 76, kLogo, 255},
    {"JACKPOT.png", 630, 156, kTitle, 255},
    {"bar.png", 1220, 91, {60, 60, 60}, 255},
    {"Animation/Backround.png", 1920, 1080, {0, 0, 0}, 128},
    {"GOLD_RIGHT.png", 908, 208, kFrames[0], 255},
    {"GOLD_LEFT.png", 908, 208, kFrames[0], 255},
    {"SILVER_RIGHT.png", 908, 208, kFrames[1], 255},
    {"SILVER_LEFT.png", 908, 208, kFrames[1], 255},
    {"BRONZE_RIGHT.png", 908, 208, kFrames[2], 255},
    {"BRONZE_LEFT.png", 908, 208, kFrames[2], 255},
    {"EMERALD_RIGHT.png", 908, 208, kFrames[3], 255},
    {"EMERALD_LEFT.png", 908, 208, kFrames[3], 255},
  };
  for (const PictureFile& file : files)
    if (!writePicture(skin + file.name, file.width, file.height, file.colour, file.alpha)) return false;
  for (const char* font : {"currency", "uni_font", "info_bar_font", "jackpot_win_label", "emerald_hours_font"})
    if (!writeFont(skin + "Fonts/" + font)) return false;
  fs::copy_file(TEST_FONT, skin + "AppFont.ttf", error);
  if (!error) fs::copy_file(TEST_FONT, workingDir + "/AppFontBold.ttf", error);
  return !error;
}

bool TestSkin::writeGames(const std::string& workingDir) {
  const std::string skin = workingDir + "/VESPERA/TOP_SKIN/";
  std::error_code error;
  bool good = writePicture(skin + "buttonE.png", 177, 179, kButton, 255) &&
              writePicture(skin + "buttonD.png", 177, 179, kButtonOff, 255) &&
              writeFont(skin + "Fonts/HelveticaBold26px_Instructions") &&
              writeFont(skin + "Fonts/HelveticaBold20px_SmallLabel");
  for (int game = 0; game < 2; ++game) {
    const std::string icons = workingDir + "/Games/" + (game ? "B" : "A") + "/Icons/";
    fs::create_directories(icons + "paytable", error);
    good = good && writePicture(icons + "overlay.png", 300, 300, kOverlays[game], 255) &&
           writePicture(icons + "background.png", 32, 18, kPapers[game], 255) &&
           writePages(icons, "", kPages[game]) && writeFont(icons + "prize");
    // The program repeats an overlay from its frame 30 on.
    std::ofstream atlas(icons + "overlay.xml");
    atlas << "<TextureAtlas imagePath=\"overlay.png\">";
    for (int frame = 0; frame < 40; ++frame) atlas << R"(<sprite n="one.png" x="0" y="0" w="300" h="300"/>)";
    atlas << "</TextureAtlas>";
    fs::copy_file(TEST_FONT, icons + "prize.ttf", error);
  }
  const std::string icons = workingDir + "/Games/B/Icons/";
  fs::create_directories(icons + "paytable_SI", error);
  return good && writePages(icons, "_SI", kPagesSi);
}

}  // namespace systest
