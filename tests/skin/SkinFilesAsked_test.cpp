// The list of a skin's files against the program itself: what its panels try to open.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <mutex>
#include <set>

#include "tests/support/TopScreenHarness.h"
#include "tools/skincheck/GameCheck.h"
#include "tools/skincheck/Inventory.h"
#include "vendelo-sdl2/MyUtils.h"
#include "vesperatopscreen/TJackpotsPanel.h"
#include "vesperatopscreen/TPaytablesPanel.h"

namespace fs = std::filesystem;

namespace {

// Every path that anything in this process has tried to open, in order.
struct Opened {
  std::mutex mutex;
  std::vector<std::string> paths;
};

Opened& opened() {
  static Opened& all = *new Opened;
  return all;
}

FILE* note(const char* symbol, const char* path, const char* mode) {
  {
    const std::lock_guard lock(opened().mutex);
    opened().paths.emplace_back(path);
  }
  using Open = FILE* (*)(const char*, const char*);
  static const auto open = reinterpret_cast<Open>(dlsym(RTLD_NEXT, symbol));
  return open(path, mode);
}

std::string stemOf(const std::string& path) { return path.substr(0, path.rfind('.')); }

// Of a description, which names it; the skin of this test calls it so.
bool isAtlas(const fs::path& name) {
  const bool picture = name.extension() == ".png";
  return picture && (name.parent_path().filename() == "Fonts" || name.stem().string().ends_with("_atlas"));
}

// Paths below `folder` that were asked for, without those that only the list of extensions makes of one: they
// follow on it, with the same stem.
std::set<std::string> askedBelow(const std::string& folder) {
  const std::lock_guard lock(opened().mutex);
  std::set<std::string> names;
  std::string last;
  for (const std::string& path : opened().paths) {
    const std::string name = fs::absolute(path).lexically_normal().string();
    if (name.rfind(folder, 0) != 0) continue;
    if (stemOf(name) != stemOf(last) && !isAtlas(name)) names.insert(name.substr(folder.size()));
    last = name;
  }
  return names;
}

std::set<std::string> listed(const std::vector<SkinFile>& files, const std::string& folder) {
  std::set<std::string> names;
  for (const SkinFile& file : files) {
    const char* extension = file.kind == SkinFileKind::BitmapFont  ? ".fnt"
                            : file.kind == SkinFileKind::Animation ? ".xml"
                                                                   : "";
    names.insert(fs::path(folder + file.name + extension).lexically_normal().string());
  }
  return names;
}

std::vector<JackpotsData> levelsWith(bool currencyAtTheRight) {
  std::vector<JackpotsData> levels = paneldata::levels(TJackpotsPanel::kMaxLevels);
  for (JackpotsData& level : levels) {
    level.showCurrencySign = currencyAtTheRight;
    level.mode = 2;  // with opening hours
  }
  return levels;
}

constexpr const char* kFolder = "skin-files-asked";

// Everything that can be shown of the skin and of a game, once; the folder of both.
std::string showEverything() {
  TopScreenHarness screen(kFolder, 8);
  screen.status([](PlatformState& state) { state.ActiveGame = GAME_MENU; });
  TJackpotsPanel* panel = screen.screen().pJackpotsPanel;
  for (const bool right : {true, false}) {
    panel->CreateJackpotPanel(levelsWith(right));
    EXPECT_NE(nullptr, screen.find("pJackpotsPanel/pJackpotPanel[3]"));
    panel->OnShowOverlays("Reels");
    screen.joinSprites();
    panel->ClearJackpotPanel();
  }
  panel->OnShowOverlays("Wheels");
  panel->ClearOverlay();
  return screen.folder();
}

}  // namespace

extern "C" FILE* fopen(const char* path, const char* mode) { return note("fopen", path, mode); }
extern "C" FILE* fopen64(const char* path, const char* mode) { return note("fopen64", path, mode); }

TEST(SkinFilesAsked, AreThoseOfTheList) {
  // The first one writes the skin, and opens its files for that.
  delete new TopScreenHarness(kFolder, 8);
  {
    const std::lock_guard lock(opened().mutex);
    opened().paths.clear();
  }
  const std::string folder = showEverything();
  const std::string skin = "VESPERA/TOP_SKIN/";
  std::set<std::string> asked = askedBelow(folder), ofGames;
  for (auto name = asked.begin(); name != asked.end();)
    if (name->rfind("Games/", 0) == 0)
      ofGames.insert(asked.extract(name++).value());
    else
      ++name;
  EXPECT_EQ(listed(skinFiles(), skin), asked);

  // With levels the overlay, without any the whole picture.
  EXPECT_EQ((std::set<std::string>{"Games/Reels/Icons/overlay.xml", "Games/Wheels/Icons/topscreen.jpg"}), ofGames);
  EXPECT_EQ((std::set<std::string>{"overlay.xml", "topscreen.jpg", "background.png"}), listed(gameFiles(), ""));
}

TEST(SkinFilesAsked, PagesAreThoseOfThePanel) {
  EXPECT_STREQ("background", possibleScreensArray[0]);
  EXPECT_EQ(std::vector<std::string>(std::begin(possibleScreensArray) + 1, std::end(possibleScreensArray)),
            pageNames());
}
