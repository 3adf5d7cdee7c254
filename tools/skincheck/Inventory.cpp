#include "Inventory.h"

namespace {

constexpr Area kScreen{0, 0, 1920, 1080};

// Four levels, as they stand: each one's frame, and what is drawn inside or beside it.
std::vector<Area> inLevels(int x, int y, int w, int h) {
  std::vector<Area> areas;
  for (int id = 0; id < 4; ++id) areas.push_back({51 + 48 * id + x, 151 + 218 * id + y, w, h});
  return areas;
}

std::vector<Area> inLevel(int id, int x, int y, int w, int h) {
  return {inLevels(x, y, w, h)[static_cast<size_t>(id)]};
}

// The eight buttons of the instructions, and what is drawn inside them.
std::vector<Area> inButtons(int x, int y, int w, int h) {
  std::vector<Area> areas;
  for (const Area& button :
       {Area{88, 856, 0, 0}, Area{300, 737, 0, 0}, Area{512, 856, 0, 0}, Area{730, 856, 0, 0}, Area{952, 856, 0, 0},
        Area{1172, 856, 0, 0}, Area{1388, 856, 0, 0}, Area{1670, 856, 0, 0}})
    areas.push_back({button.x + x, button.y + y, w, h});
  return areas;
}

std::vector<Area> both(std::vector<Area> first, const std::vector<Area>& second) {
  first.insert(first.end(), second.begin(), second.end());
  return first;
}

SkinFile picture(std::string name, Fit fit, int w, int h, Scene scene, std::vector<Area> places,
                 std::string shows) {
  return {SkinFileKind::Picture, std::move(name), fit, w, h, scene, std::move(places), std::move(shows)};
}

SkinFile animation(std::string name, int w, int h, Scene scene, std::vector<Area> places, std::string shows) {
  return {SkinFileKind::Animation, std::move(name), Fit::Exact, w, h, scene, std::move(places), std::move(shows)};
}

SkinFile font(std::string name, int w, int h, Scene scene, std::vector<Area> places, std::string shows) {
  return {SkinFileKind::BitmapFont, std::move(name), Fit::OwnSize, w, h, scene,
          std::move(places),        std::move(shows)};
}

SkinFile outlines(std::string name, Scene scene, std::vector<Area> places, std::string shows) {
  return {SkinFileKind::TrueTypeFont, std::move(name), Fit::OwnSize, 0, 0, scene,
          std::move(places),          std::move(shows)};
}

void addLevels(std::vector<SkinFile>& files) {
  const struct {
    const char* colour;
    const char* name;
  } levels[] = {{"GOLD", "first"}, {"SILVER", "second"}, {"BRONZE", "third"}, {"EMERALD", "fourth"}};
  int id = 0;
  for (const auto& level : levels) {
    const std::string of = std::string("frame of the ") + level.name + " level";
    const std::vector<Area> place = inLevel(id++, 0, 0, 908, 208);
    files.push_back(picture(std::string(level.colour) + "_RIGHT.png", Fit::Exact, 908, 208, Scene::Jackpots, place,
                            of + ", with the currency at the right of the digits"));
    files.push_back(picture(std::string(level.colour) + "_LEFT.png", Fit::Exact, 908, 208, Scene::Jackpots, place,
                            of + ", with the currency at the left of the digits"));
  }
}

void addAnimations(std::vector<SkinFile>& files) {
  const struct {
    const char* name;
    const char* level;
  } wins[] = {{"Gold", "first"}, {"Silver", "second"}, {"Bronze", "third"}, {"Emerald", "fourth"}};
  // A level that has won flies to the middle, to (506, 436), and takes its animation along.
  for (const auto& win : wins)
    files.push_back(animation(
      std::string("Animation/") + win.name + "PnlWin", 1600, 600, Scene::Win, {{160, 260, 1600, 600}},
      std::string("around the ") + win.level +
        " level while it has won; the level's frame lies at (346, 176) in it, flies with it to the middle and "
        "pulses"));
  files.push_back(animation("Animation/GoldPrtclWin", 1920, 1080, Scene::Win, {kScreen},
                            "all over the screen, behind the level that has won, whichever it is"));
  for (const char* side : {"Right", "Left"})
    files.push_back(
      animation(std::string("Animation/Idle") + side, 1000, 380, Scene::Jackpots, inLevels(-46, -86, 1000, 380),
                std::string("sparkle on one level after the other when the first one has its currency at the ") +
                  (*side == 'R' ? "right" : "left") + "; the level's frame lies at (46, 86) in it"));
}

void addFonts(std::vector<SkinFile>& files) {
  files.push_back(
    font("Fonts/currency", 594, 91, Scene::Jackpots, both(inLevels(90, 87, 594, 91), inLevels(709, 87, 130, 91)),
         "digits of the pots on ten wheels, and the currency beside them; in a frame with the currency "
         "at the left the digits stand at (229, 87), the currency at (68, 87)"));
  files.push_back(
    font("Fonts/uni_font", 1920, 25, Scene::Paytable, {{0, 1030, 1920, 25}, {0, 1055, 1920, 25}},
         "the hint at the foot of the screen while a game runs, and the line on the prizes below it"));
  files.push_back(font("Fonts/jackpot_win_label", 1920, 150, Scene::Jackpots,
                       {{0, 100, 1920, 150}, {0, 830, 1920, 150}},
                       "the text of the integrity check, also over the instructions, and that of a jackpot error"));
  files.push_back(font("Fonts/info_bar_font", 0, 91, Scene::Jackpots, inLevels(882, 90, 1038, 91),
                       "the text that runs beside each level"));
  files.push_back(font("Fonts/emerald_hours_font", 430, 62, Scene::Jackpots, inLevel(3, 282, 0, 430, 62),
                       "opening hours of the fourth level, when it has any"));
  files.push_back(font("Fonts/HelveticaBold26px_Instructions", 101, 80, Scene::Instructions,
                       inButtons(32, 31, 101, 80), "function of each button"));
  files.push_back(font("Fonts/HelveticaBold20px_SmallLabel", 101, 20, Scene::Instructions,
                       inButtons(32, 117, 101, 20), "name of each button"));
}

std::vector<SkinFile> makeSkinFiles() {
  std::vector<SkinFile> files;
  files.push_back(outlines("../../AppFontBold.ttf", Scene::Every, {{10, 10, 200, 16}, {10, 50, 300, 16}},
                           "the two labels of the frame rate, which are hidden until they are asked for; at 34 "
                           "points; it stands in the folder that WORKING_DIR names"));
  files.push_back(
    picture("Background.png", Fit::Exact, 1920, 1080, Scene::Every, {kScreen}, "the ground under every panel"));
  files.push_back(picture("ClientDemo.png", Fit::Exact, 1920, 1080, Scene::Every, {kScreen},
                          "laid over the ground, under the panels, while the terminal is in demo mode"));
  files.push_back(picture("JACKPOT.png", Fit::Exact, 630, 156, Scene::Jackpots, {{645, 20, 630, 156}},
                          "title above the levels; with four levels the first frame begins at y 151"));
  addLevels(files);
  files.push_back(picture("bar.png", Fit::OwnSize, 1220, 91, Scene::Jackpots, inLevels(882, 90, 1220, 91),
                          "ground of the running text; its first 26 pixels lie under the level's frame, its right "
                          "end beyond the screen"));
  files.push_back(picture("logo.png", Fit::Exact, 596, 76, Scene::Jackpots, {{662, 502, 596, 76}},
                          "in the middle of the screen while there are no levels"));
  files.push_back(picture("Animation/Backround.png", Fit::Stretched, 1920, 1080, Scene::Win, {kScreen},
                          "veil over everything but the level that has won"));
  // Farther from the middle than 180 pixels a dot would reach the logo's third of the screen.
  files.push_back(picture("dot.png", Fit::OwnSize, 160, 160, Scene::Loader, {},
                          "one of the seven dots that circle in the middle while the service is awaited, 50 to 100 "
                          "pixels from it; a square"));
  files.push_back(picture("dot_shadow.png", Fit::OwnSize, 160, 160, Scene::Loader, {},
                          "shadow of a dot, read at the start and not shown at present; a square"));
  files.push_back(picture("splashLogo.png", Fit::OwnSize, 1920, 360, Scene::Loader, {{0, 0, 1920, 360}},
                          "centred in the top third of the waiting screen"));
  files.push_back(outlines("AppFont.ttf", Scene::Loader, {{0, 540, 1920, 540}},
                           "the status line of the waiting screen, centred, at 34 points"));
  files.push_back(picture("buttonE.png", Fit::Exact, 177, 179, Scene::Instructions, inButtons(0, 0, 177, 179),
                          "a cabinet button with a function"));
  files.push_back(picture("buttonD.png", Fit::Exact, 177, 179, Scene::Instructions, inButtons(0, 0, 177, 179),
                          "a cabinet button without one"));
  addAnimations(files);
  addFonts(files);
  return files;
}

std::vector<SkinFile> makeGameFiles() {
  return {
    animation("overlay", 810, 900, Scene::Jackpots, {{1110, 90, 810, 900}},
              "beside the levels while the game runs, once from its first frame and then again and again from "
              "frame 30; the running texts make room"),
    picture("topscreen.jpg", Fit::Stretched, 1920, 1080, Scene::Jackpots, {kScreen},
            "the whole screen while the game runs and there are no levels"),
    picture("background.png", Fit::Stretched, 1920, 1080, Scene::Paytable, {kScreen},
            "under every page; background.jpg when there is no .png")};
}

}  // namespace

const std::vector<SkinFile>& skinFiles() {
  static const auto& files = *new std::vector<SkinFile>(makeSkinFiles());
  return files;
}

const std::vector<SkinFile>& gameFiles() {
  static const auto& files = *new std::vector<SkinFile>(makeGameFiles());
  return files;
}
