// What the jackpot panel is built of: places, texts, fonts, pictures and the settings of each part.
#include "tests/support/ComponentPeek.h"
#include "tests/vesperatopscreen/JackpotsPanelFixture.h"

using namespace jackpottest;
using paneldata::levels;
using Names = std::vector<std::string>;

namespace {

class Build : public JackpotsPanel {
 protected:
  using JackpotsPanel::JackpotsPanel;

  std::string placeOf(const std::string& name) { return placeText(peek::Component::place(*find(name))); }
  std::string placeOf(int id, const char* name) { return placeText(peek::Component::place(*part(id, name))); }
  std::string lookOf(const std::string& name) { return peek::Label::look(*find<TGlyphLabel>(name), skin()); }
  std::string lookOf(int id, const char* name) { return peek::Label::look(*part<TGlyphLabel>(id, name), skin()); }
  SDL_Texture* cached(const char* name) { return MyUtils::GetTexture(harness.renderer(), name); }
  // "rate mode hides", the same for all sprites of a level.
  static std::string settings(const TSpriteAnimation& sprite) {
    return std::to_string(peek::Sprite::rate(sprite)) + " " + std::to_string(peek::Sprite::mode(sprite)) +
           (peek::Sprite::hidesAfterEnd(sprite) ? " hides" : "") + (sprite.isVisible() ? " visible" : "");
  }
  static bool madeOf(const TSpriteAnimation& sprite, const std::string& file) {
    return peek::Sprite::file(sprite) == skin() + "Animation/" + file + "_atlas.png";
  }
};

class SmallBuild : public Build {
 protected:
  SmallBuild() : Build(1280, 720) {}
};

constexpr const char* kColours[] = {"Gold", "Silver", "Bronze", "Emerald"};
constexpr const char* kFramesRight[] = {"GOLD_RIGHT.png", "SILVER_RIGHT.png", "BRONZE_RIGHT.png",
                                        "EMERALD_RIGHT.png"};
constexpr const char* kFramesLeft[] = {"GOLD_LEFT.png", "SILVER_LEFT.png", "BRONZE_LEFT.png", "EMERALD_LEFT.png"};

}  // namespace

TEST_F(Build, WithoutLevelsThereIsTheLogoTwoTextsAndThePictureOfAWin) {
  EXPECT_EQ((Names{"logo", "integrityLabel", "jackpotErrorLabel", "JackpotWinPanel"}),
            peek::Component::children(*panel));
  EXPECT_EQ("662, 502, 596, 76", placeOf("logo"));
  EXPECT_EQ("0, 100, 1920, 150", placeOf("integrityLabel"));
  EXPECT_EQ("0, 830, 1920, 150", placeOf("jackpotErrorLabel"));
  EXPECT_EQ("0, 0, 1920, 1080", placeOf("JackpotWinPanel"));
  for (const char* name : {"logo", "integrityLabel", "jackpotErrorLabel", "JackpotWinPanel"})
    EXPECT_FALSE(visible(name)) << name;
  for (const char* name : {"integrityLabel", "jackpotErrorLabel"}) {
    EXPECT_EQ("Fonts/jackpot_win_label 4 shrinks", lookOf(name));
    EXPECT_EQ("", find<TGlyphLabel>(name)->GetText());
  }
  auto* logo = find<TImageList>("logo");
  ASSERT_EQ(1u, logo->getImages()->size());
  EXPECT_NE(nullptr, logo->getImages()->at(0));
  EXPECT_EQ(0, logo->getCurrentImageIndex());
  EXPECT_FALSE(panel->isOverlayVisible());
  SDL_Rect place;
  panel->calcFinalRect(1, place);
  EXPECT_EQ("0, 0, 1920, 1080", placeText(place));
}

TEST_F(Build, LevelsStandBehindTheTitleInTheirOrder) {
  auto data = levels(4);
  std::swap(data[0], data[2]);
  show(data);
  EXPECT_EQ(
    (Names{"logo", "integrityLabel", "jackpotErrorLabel", "JackpotWinPanel", "pJackpotLabel", "pDarkBackground",
           "pJackpotPanel[2]", "pParticleAnimation[2]", "pJackpotPanel[1]", "pParticleAnimation[1]",
           "pJackpotPanel[0]", "pParticleAnimation[0]", "pJackpotPanel[3]", "pParticleAnimation[3]"}),
    peek::Component::children(*panel));
  EXPECT_EQ("645, 20, 630, 156", placeOf("pJackpotLabel"));
  EXPECT_EQ(std::vector<SDL_Texture*>{cached("JACKPOT.png")}, *find<TImageList>("pJackpotLabel")->getImages());
  EXPECT_EQ(0, find<TImageList>("pJackpotLabel")->getCurrentImageIndex());
  EXPECT_EQ("0, 0, 1920, 1080", placeOf("pDarkBackground"));
  EXPECT_FALSE(visible("pDarkBackground"));
  EXPECT_EQ(0, find<TImageList>("pDarkBackground")->getCurrentImageIndex());
  ASSERT_EQ(1u, find<TImageList>("pDarkBackground")->getImages()->size());
  EXPECT_NE(nullptr, find<TImageList>("pDarkBackground")->getImages()->at(0));
  for (int id = 0; id < 4; ++id) {
    const std::string index = "[" + std::to_string(id) + "]";
    EXPECT_EQ(placeText(TJackpotLayout(4).levelRect(id)), placeOf("pJackpotPanel" + index));
    EXPECT_EQ((Names{"pJackpotInfoBackground" + index, "pJackpotInfo" + index, "pJackpotFrame" + index,
                     "pIdleAnimation" + index, "pJackpotCurrency" + index, "ControlCyphers" + index,
                     "pPanelAnimation" + index}),
              peek::Component::children(*find("pJackpotPanel" + index)));
  }
}

TEST_F(Build, EachLevelHasItsColourItsSideAndItsNumbers) {
  for (bool right : {true, false}) {
    SCOPED_TRACE(right ? "value at right" : "value at left");
    auto data = levels(4);
    const char* currencies[] = {"EUR", "RSD", "$", ""};
    for (int id = 0; id < 4; ++id) {
      data[static_cast<size_t>(id)].showCurrencySign = right;
      data[static_cast<size_t>(id)].currency = currencies[id];
      data[static_cast<size_t>(id)].decimalPlaces = 3 - id;
      data[static_cast<size_t>(id)].LastWinData = "LAST " + std::to_string(id);
    }
    update(data, "METER FAULT");
    harness.frame();
    show(data);
    for (int id = 0; id < 4; ++id) {
      SCOPED_TRACE(id);
      EXPECT_EQ("0, 0, 908, 208", placeOf(id, "pJackpotFrame"));
      EXPECT_EQ(std::vector<SDL_Texture*>{cached(right ? kFramesRight[id] : kFramesLeft[id])},
                *part<TImageList>(id, "pJackpotFrame")->getImages());
      EXPECT_EQ(0, part<TImageList>(id, "pJackpotFrame")->getCurrentImageIndex());
      EXPECT_EQ(right ? "709, 87, 130, 91" : "68, 87, 130, 91", placeOf(id, "pJackpotCurrency"));
      EXPECT_EQ(right ? "/Fonts/currency 0" : "/Fonts/currency 1", lookOf(id, "pJackpotCurrency"));
      EXPECT_EQ(currencies[id], part<TGlyphLabel>(id, "pJackpotCurrency")->GetText());
      auto& digits = *part<TControlCyphers3>(id, "ControlCyphers");
      EXPECT_EQ(right ? "90, 87, 594, 91" : "229, 87, 594, 91", placeOf(id, "ControlCyphers"));
      EXPECT_EQ(3 - id, peek::Digits::decimals(digits));
      EXPECT_EQ(2, peek::Digits::gap(digits));
      EXPECT_EQ(48, peek::Digits::width(digits));
      EXPECT_EQ(0.7f, peek::Digits::decimalSize(digits));
      EXPECT_EQ(1.67f, peek::Digits::decimalOffset(digits));
      EXPECT_EQ(jackpotSpinFunction(0.4, 700), peek::Digits::spin(digits, 0.4, 700));
      EXPECT_TRUE(peek::Digits::hasStrip(digits));
      EXPECT_EQ(1234567 + id, digits.FinalValue());
      auto& label = *part<TScrollingComponent>(id, "pJackpotInfo")->ContentAt<TGlyphLabel>(0);
      EXPECT_EQ("LAST " + std::to_string(id), label.GetText());
    }
  }
}

TEST_F(Build, TheSpritesOfALevelLieAroundItsFrame) {
  show(levels(4));
  for (int id = 0; id < 4; ++id) {
    SCOPED_TRACE(id);
    auto& idle = *part<TSpriteAnimation>(id, "pIdleAnimation");
    EXPECT_EQ("-46, -86, 1000, 380", placeOf(id, "pIdleAnimation"));
    EXPECT_EQ("25.000000 2 hides", settings(idle).substr(0, 17));
    EXPECT_EQ(id == 0, madeOf(idle, "IdleRight"));
    EXPECT_EQ(30, idle.GetNumFrames());
    auto& win = *part<TSpriteAnimation>(id, "pPanelAnimation");
    EXPECT_EQ("-346, -176, 1600, 600", placeOf(id, "pPanelAnimation"));
    EXPECT_EQ("25.000000 1 hides", settings(win));
    EXPECT_TRUE(madeOf(win, std::string(kColours[id]) + "PnlWin"));
    const std::string particlesName = "pParticleAnimation[" + std::to_string(id) + "]";
    auto& particles = *find<TSpriteAnimation>(particlesName);
    EXPECT_EQ("0, 0, 1920, 1080", placeOf(particlesName));
    EXPECT_EQ("25.000000 1 hides", settings(particles));
    EXPECT_EQ(id == 0, madeOf(particles, "GoldPrtclWin"));
    EXPECT_EQ(20, particles.GetNumFrames());
  }
}

TEST_F(Build, TheFirstLevelsSideDecidesTheSparkleOfAll) {
  auto data = levels(2);
  data[0].showCurrencySign = false;
  show(data);
  EXPECT_TRUE(madeOf(*part<TSpriteAnimation>(0, "pIdleAnimation"), "IdleLeft"));
  EXPECT_EQ("", peek::Sprite::file(*part<TSpriteAnimation>(1, "pIdleAnimation")));
}

TEST_F(Build, OnlyAScheduledEmeraldLevelTellsItsHours) {
  for (int mode : {-2, 0, 1, 2, 3}) {
    SCOPED_TRACE(mode);
    auto data = levels(4);
    for (JackpotsData& level : data) level.mode = mode;
    update(data, "METER FAULT");
    harness.frame();
    show(data);
    for (int id = 0; id < 3; ++id) EXPECT_EQ(nullptr, part(id, "pJackpotHours"));
    ASSERT_EQ(mode == 2, part(3, "pJackpotHours") != nullptr);
    if (mode != 2) continue;
    EXPECT_EQ("282, 0, 430, 62", placeOf(3, "pJackpotHours"));
    EXPECT_EQ("Fonts/emerald_hours_font 4", lookOf(3, "pJackpotHours"));
    EXPECT_EQ("18:00 - 22:00", part<TGlyphLabel>(3, "pJackpotHours")->GetText());
    EXPECT_EQ((Names{"pJackpotInfoBackground[3]", "pJackpotInfo[3]", "pJackpotFrame[3]", "pIdleAnimation[3]",
                     "pJackpotCurrency[3]", "ControlCyphers[3]", "pJackpotHours[3]", "pPanelAnimation[3]"}),
              peek::Component::children(*find("pJackpotPanel[3]")));
  }
}

TEST_F(Build, TheInfoBarRunsToTheScreensEdge) {
  panel->CreateJackpotPanel(levels(3));  // not drawn yet: the bar's place carries that of its level
  for (int id = 0; id < 3; ++id) {
    SCOPED_TRACE(id);
    const SDL_Rect level = TJackpotLayout(3).levelRect(id);
    auto& bar = *part<TProgressBar>(id, "pJackpotInfoBackground");
    EXPECT_EQ(placeText({882 + level.x, 90 + level.y, 1220, 91}), placeText(bar.getDestRect()));
    EXPECT_TRUE(peek::Bar::hasFull(bar));
    TProgressBar other(harness.renderer(), 0, 0, 1, 1, "other");
    other.SetRunToLeft();
    EXPECT_EQ(peek::Bar::orientation(other), peek::Bar::orientation(bar));
    EXPECT_EQ(0, peek::Bar::target(bar));
    auto& info = *part<TScrollingComponent>(id, "pJackpotInfo");
    EXPECT_EQ("882, 90, 1038, 91", placeOf(id, "pJackpotInfo"));
    EXPECT_EQ(30, peek::Ticker::padding(info));
    EXPECT_EQ(-5000, peek::Ticker::scroll(info)) << "a fifth of the width a second, to the left";
    EXPECT_EQ(500.0f, peek::Ticker::spacing(info));
    EXPECT_FALSE(peek::Ticker::spacingIsRelative(info));
    EXPECT_EQ(1000, peek::Ticker::wait(info));
    EXPECT_EQ(&jackpotTextMovement, peek::Ticker::movement(info));
    EXPECT_EQ(TScrollingComponent::CENTER, peek::Ticker::alignment(info));
    ASSERT_EQ(1, info.NumberOfChildren());
    auto& label = *info.ContentAt<TGlyphLabel>(0);
    EXPECT_EQ("pJackpotInfo[" + std::to_string(id) + "]-label", label.getName());
    EXPECT_EQ("0, 0, 0, 91", placeText(label.getDestRect()));
    EXPECT_EQ("Fonts/info_bar_font 3 wide as its text", peek::Label::look(label, skin()));
  }
}

TEST_F(Build, TheDigitsShareOneFontOfTheRegistry) {
  EXPECT_EQ(nullptr, TBitmapFont::FindBitmapFont("cypherFont"));
  show(levels(2));
  TBitmapFont* font = TBitmapFont::FindBitmapFont("cypherFont");
  ASSERT_NE(nullptr, font);
  show(levels(3));
  EXPECT_EQ(font, TBitmapFont::FindBitmapFont("cypherFont")) << "found again";
  EXPECT_TRUE(peek::Digits::hasStrip(*part<TControlCyphers3>(2, "ControlCyphers")));
}

TEST_F(Build, AClearTakesTheLevelsAndLeavesTheRest) {
  const Names before = peek::Component::children(*panel);
  show(levels(4));
  harness.application().setStatus(TApplication::APP_RUNNING);
  panel->OnShowOverlays("Reels");
  EXPECT_NE(nullptr, find("pAnimationOverlay[Reels]"));
  panel->ClearJackpotPanel();
  EXPECT_EQ(before, peek::Component::children(*panel));
  EXPECT_TRUE(visible("logo"));
  EXPECT_EQ(nullptr, find("JackpotWinPanel")->GetTargetTexture());
  panel->CreateJackpotPanel(levels(1));
  EXPECT_NE(nullptr, find("JackpotWinPanel")->GetTargetTexture());
  EXPECT_FALSE(visible("logo"));
  panel->CreateJackpotPanel(levels(4));
  EXPECT_EQ(nullptr, find("pJackpotPanel[1]")) << "what stands is not built again";
}

TEST_F(SmallBuild, WhatFillsThePanelHasThePanelsSize) {
  EXPECT_EQ("342, 322, 596, 76", placeOf("logo"));
  EXPECT_EQ("0, 100, 1280, 150", placeOf("integrityLabel"));
  EXPECT_EQ("0, 470, 1280, 150", placeOf("jackpotErrorLabel"));
  EXPECT_EQ("0, 0, 1280, 720", placeOf("JackpotWinPanel"));
  int w = 0, h = 0;
  SDL_QueryTexture(find("JackpotWinPanel")->GetTargetTexture(), nullptr, nullptr, &w, &h);
  EXPECT_EQ(1280, w);
  EXPECT_EQ(720, h);
  panel->OnShowOverlays("Reels");
  EXPECT_EQ("0, 0, 1280, 720", placeOf("pImageOverlay[Reels]"));

  auto data = levels(2);
  show(data);
  EXPECT_EQ("645, 20, 630, 156", placeOf("pJackpotLabel")) << "the places of the levels do not scale";
  EXPECT_EQ("0, 0, 1280, 720", placeOf("pDarkBackground"));
  EXPECT_EQ("0, 0, 1280, 720", placeOf("pParticleAnimation[1]"));
  EXPECT_EQ("882, 90, 398, 91", placeOf(0, "pJackpotInfo"));
  data[0].status = "WIN";
  show(data);
  framesFor(220);
  SDL_Rect place;
  panel->calcFinalRect(-1, place);
  EXPECT_EQ("51, 269, 908, 208", placeText(place));
  panel->calcFinalRect(0, place);
  EXPECT_EQ("186, 256, 908, 208", placeText(place));
  for (int phase : {1, 2, -2}) {
    panel->calcFinalRect(phase, place);
    EXPECT_EQ("0, 0, 1280, 720", placeText(place)) << phase;
  }
  framesFor(1100);
  EXPECT_EQ("186, 256, 908, 208", placeText(find("JackpotWinPanel")->getDestRect()));
}
