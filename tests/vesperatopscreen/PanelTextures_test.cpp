// What the panels load goes with what shows it, and not with the next picture or the end of the renderer.
#include <SDL_image.h>
#include <dlfcn.h>
#include <mutex>
#include <set>
#include <utility>
#include <vector>

#include "tests/vesperatopscreen/JackpotsFixture.h"
#include "tests/vesperatopscreen/PaytablesFixture.h"

using xmlrpc_c::value_string;

namespace {

std::set<SDL_Texture*> destroyed;
std::mutex mutex;
std::vector<std::pair<SDL_threadID, std::string>> readBy;  // under the mutex

}  // namespace

extern "C" void SDL_DestroyTexture(SDL_Texture* texture) {
  static const auto sdl = reinterpret_cast<decltype(&SDL_DestroyTexture)>(dlsym(RTLD_NEXT, "SDL_DestroyTexture"));
  destroyed.insert(texture);
  sdl(texture);
}

extern "C" SDL_Surface* IMG_Load(const char* file) {
  static const auto next = reinterpret_cast<decltype(&IMG_Load)>(dlsym(RTLD_NEXT, "IMG_Load"));
  {
    const std::lock_guard<std::mutex> lock(mutex);
    readBy.emplace_back(SDL_ThreadID(), file);
  }
  return next(file);
}

namespace {

class JackpotTextures : public jackpottest::Jackpots {
 protected:
  JackpotTextures() : Jackpots("paneltextures") {}

  SDL_Texture* pictureOf(const char* name) {
    const vendelo_sdl2::TGuiComponent* const component = screen.find(jackpottest::kPanel + name);
    return component ? component->GetTargetTexture() : nullptr;
  }
};

class PaytableTextures : public paytabletest::Paytables {
 protected:
  PaytableTextures() : Paytables("paneltextures") {}
};

}  // namespace

TEST_F(JackpotTextures, AStillOverlayTakesItsPictureAlong) {
  start(0);
  screen.send(T_GAME_LOADED, paneldata::gameValue("Reels", GAMETYPE_VESPERA_SLOTGAME));
  SDL_Texture* const picture = pictureOf("pImageOverlay[Reels]");
  ASSERT_NE(nullptr, picture);
  destroyed.clear();
  screen.send(T_GAME_EXITED);
  EXPECT_EQ(1u, destroyed.count(picture));
}

TEST_F(JackpotTextures, AClearOfTheLevelsLetsGoOfWhatIsNotTheImageCaches) {
  start(4);
  SDL_Texture* const dark = pictureOf("pDarkBackground");
  SDL_Texture* const captured = pictureOf("JackpotWinPanel");
  SDL_Texture* const title = pictureOf("pJackpotLabel");
  SDL_Texture* const logo = pictureOf("logo");
  for (SDL_Texture* picture : {dark, captured, title, logo}) ASSERT_NE(nullptr, picture);
  destroyed.clear();
  screen.send(T_INTEGRITY_DATA, value_string("CRC 1234"));
  EXPECT_EQ(0u, destroyed.count(dark)) << "as large as the screen, and needed again with the next levels";
  EXPECT_EQ(1u, destroyed.count(captured));
  EXPECT_EQ(0u, destroyed.count(title));
  EXPECT_EQ(0u, destroyed.count(logo)) << "it is shown now";
  EXPECT_EQ(nullptr, pictureOf("JackpotWinPanel"));
}

TEST_F(JackpotTextures, ThePictureUnderAWinStaysUntilThePanelGoes) {
  start(4);
  SDL_Texture* const dark = pictureOf("pDarkBackground");
  ASSERT_NE(nullptr, dark);
  screen.send(T_JACKPOT_DATA, paneldata::levelsValue(paneldata::levels(0)));
  screen.send(T_JACKPOT_DATA, paneldata::levelsValue(paneldata::levels(4)));
  EXPECT_EQ(dark, pictureOf("pDarkBackground"));
}

TEST_F(JackpotTextures, LevelsThatComeTakeNothingOutOfFilesInTheirFrames) {
  start(0);
  const SDL_threadID drawThread = SDL_ThreadID();
  readBy.clear();
  for (const int count : {1, 4}) {
    screen.send(T_JACKPOT_DATA, paneldata::levelsValue(paneldata::levels(count)));
    ASSERT_NE(nullptr, pictureOf("pDarkBackground"));
    screen.joinSprites();
  }
  std::set<std::string> files;
  for (const auto& [thread, file] : readBy)
    if (thread == drawThread) files.insert(file);
  EXPECT_EQ(std::set<std::string>{}, files);
}

TEST_F(PaytableTextures, APageThatIsLoadedAgainLetsGoOfTheOldOne) {
  open(paytabletest::setup({paytabletest::page("paytable", {paytabletest::Text{}})}, 20, -1));
  SDL_Texture* const page = texture();
  SDL_Texture* const background = screen.find(paytabletest::kPanel + "Background")->GetTargetTexture();
  ASSERT_NE(nullptr, page);
  ASSERT_NE(nullptr, background);
  destroyed.clear();
  panel()->loadImagesOfGame("Reels", false);
  ASSERT_TRUE(screen.until([&] { return destroyed.count(page) != 0; }));
  EXPECT_EQ(1u, destroyed.count(background));
  EXPECT_NE(nullptr, texture());
}

TEST_F(PaytableTextures, AClearLetsGoOfThePagesAndOfTheBetLabelsTexts) {
  open(paytabletest::setup({paytabletest::page("paytable", {paytabletest::Text{}})}, 20, -1));
  std::set<SDL_Texture*> shown{texture()};
  for (const char* label : {"minBetLabel", "maxBetLabel"})
    shown.insert(screen.find(paytabletest::kPanel + label)->GetTargetTexture());
  ASSERT_EQ(3u, shown.size());
  ASSERT_EQ(0u, shown.count(nullptr));
  destroyed.clear();
  panel()->clearPaytable();
  for (SDL_Texture* picture : shown) EXPECT_EQ(1u, destroyed.count(picture));
}
