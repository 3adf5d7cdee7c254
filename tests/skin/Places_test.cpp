// The places of the list of a skin's files against the program's own components: where each file's one stands.
#include <algorithm>
#include <map>

#include "tests/support/ComponentPeek.h"
#include "tests/vesperatopscreen/PaytablesFixture.h"
#include "tools/skincheck/Inventory.h"
#include "vesperatopscreen/TJackpotsPanel.h"

using namespace paytabletest;

namespace {

using Places = std::vector<std::string>;

std::string placed(int x, int y, int w, int h) {
  return std::to_string(x) + "," + std::to_string(y) + " " + std::to_string(w) + "x" + std::to_string(h);
}

class SkinPlaces : public Paytables {
 protected:
  SkinPlaces() : Paytables("skin-places", 8) {}

  // On the screen, whether it has been drawn or not. Width 0 where a text makes its component as wide as itself.
  std::string placeOf(TGuiComponent* component, bool absolute = false) {
    SDL_Rect place = peek::Component::place(*component);
    for (auto* over = component->getParent(); over && !absolute; over = over->getParent()) {
      const SDL_Rect outer = peek::Component::place(*over);
      place.x += outer.x;
      place.y += outer.y;
    }
    return placed(place.x, place.y, place.w, place.h);
  }
  void at(const std::string& file, const std::string& path, bool absolute = false) {
    TGuiComponent* component = screen.find(path);
    ASSERT_TRUE(component) << path;
    const std::string place = placeOf(component, absolute);
    Places& all = standing[file];
    if (std::find(all.begin(), all.end(), place) == all.end()) all.push_back(place);
  }
  void showLevels(bool currencyAtTheRight) {
    std::vector<JackpotsData> data = paneldata::levels(TJackpotsPanel::kMaxLevels);
    for (JackpotsData& level : data) {
      level.showCurrencySign = currencyAtTheRight;
      level.mode = 2;  // with opening hours
    }
    TJackpotsPanel* panel = screen.screen().pJackpotsPanel;
    panel->ClearJackpotPanel();
    panel->CreateJackpotPanel(data);
    const std::string side = currencyAtTheRight ? "RIGHT" : "LEFT";
    const char* const colours[] = {"GOLD_", "SILVER_", "BRONZE_", "EMERALD_"};
    const std::string of = "pJackpotsPanel/";
    for (int id = 0; id < 4; ++id) {
      const std::string number = "[" + std::to_string(id) + "]";
      const std::string level = of + "pJackpotPanel" + number + "/";
      at(colours[id] + side + ".png", level + "pJackpotFrame" + number);
      at("bar.png", level + "pJackpotInfoBackground" + number, true);
      at(currencyAtTheRight ? "Animation/IdleRight" : "Animation/IdleLeft", level + "pIdleAnimation" + number);
      at("Fonts/info_bar_font", level + "pJackpotInfo" + number);
      at("Animation/GoldPrtclWin", of + "pParticleAnimation" + number);
    }
    if (!currencyAtTheRight) return;
    const char* const wins[] = {"Gold", "Silver", "Bronze", "Emerald"};
    for (int id = 0; id < 4; ++id) {
      const std::string number = "[" + std::to_string(id) + "]";
      TGuiComponent* win = screen.find(of + "pJackpotPanel" + number + "/pPanelAnimation" + number);
      ASSERT_TRUE(win);
      const SDL_Rect inLevel = peek::Component::place(*win);
      // A level that has won lies at (506, 436).
      standing[std::string("Animation/") + wins[id] + "PnlWin"] = {
        placed(506 + inLevel.x, 436 + inLevel.y, inLevel.w, inLevel.h)};
    }
    for (const char* name : {"ControlCyphers", "pJackpotCurrency"})
      for (int id = 0; id < 4; ++id) {
        const std::string number = "[" + std::to_string(id) + "]";
        at("Fonts/currency", of + "pJackpotPanel" + number + "/" + name + number);
      }
    at("Fonts/emerald_hours_font", of + "pJackpotPanel[3]/pJackpotHours[3]");
    at("JACKPOT.png", of + "pJackpotLabel");
    at("Animation/Backround.png", of + "pDarkBackground");
  }

  void compare(const std::vector<SkinFile>& files);

  std::map<std::string, Places> standing;
};

// What no component of the panels stands for.
const std::map<std::string, const char*> kElsewhere = {
  {"dot.png", "wanders"},
  {"dot_shadow.png", "wanders"},
  {"splashLogo.png", "drawn by the loader itself, in its own size"},
  {"AppFont.ttf", "its label is as large as its text"},
  {"../../AppFontBold.ttf", "its labels are as large as their texts"},
};

void SkinPlaces::compare(const std::vector<SkinFile>& files) {
  for (const SkinFile& file : files) {
    if (kElsewhere.count(file.name)) {
      EXPECT_FALSE(standing.count(file.name)) << file.name;
      continue;
    }
    Places listed;
    for (const Area& place : file.places) listed.push_back(placed(place.x, place.y, place.w, place.h));
    EXPECT_EQ(listed, standing[file.name]) << file.name;
    standing.erase(file.name);
  }
  for (const auto& [name, places] : standing) ADD_FAILURE() << "not in the list: " << name;
}

TEST_F(SkinPlaces, AreThoseOfTheComponents) {
  at("Background.png", "pBackground");
  at("ClientDemo.png", "pDemoBackground");
  at("logo.png", "pJackpotsPanel/logo");
  at("Fonts/jackpot_win_label", "pJackpotsPanel/integrityLabel");
  at("Fonts/jackpot_win_label", "pInstructionsPanel/integrityLabel");
  at("Fonts/jackpot_win_label", "pJackpotsPanel/jackpotErrorLabel");
  at("Fonts/uni_font", "infoLabel");
  for (int n = 1; n <= 8; ++n) {
    const std::string number = std::to_string(n), of = "pInstructionsPanel/";
    at("buttonE.png", of + "InstructionImage" + number);
    at("buttonD.png", of + "InstructionImage" + number);
    at("Fonts/HelveticaBold26px_Instructions", of + "InstructionButton" + number);
    at("Fonts/HelveticaBold20px_SmallLabel", of + "InstructionSmallLabel" + number);
  }
  showLevels(true);
  showLevels(false);
  open(setup({page("paytable", {text("A", "line", 5, 3)})}, 10, 10));
  at("Fonts/uni_font", "pPaytablesPanel/prizeLabel");

  compare(skinFiles());
}

TEST_F(SkinPlaces, OfAGameAreThoseOfTheComponents) {
  showLevels(true);
  standing.clear();
  screen.screen().pJackpotsPanel->OnShowOverlays("Reels");
  at("overlay", "pJackpotsPanel/pAnimationOverlay[Reels]");
  screen.screen().pJackpotsPanel->ClearJackpotPanel();
  screen.screen().pJackpotsPanel->OnShowOverlays("Wheels");
  at("topscreen.jpg", "pJackpotsPanel/pImageOverlay[Wheels]");
  at("background.png", "pPaytablesPanel/Background");
  screen.joinSprites();
  compare(gameFiles());
}

}  // namespace
