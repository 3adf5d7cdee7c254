// The component tree of the levels.
#include "src/vesperatopscreen/TJackpotsPanelBuild.h"

#include <algorithm>
#include <cmath>

#include "common/TBitmapFont.h"
#include "components/TControlCyphers3.h"
#include "components/TGlyphLabel.h"
#include "components/TImageList.h"
#include "components/TProgressBar.h"
#include "components/TScrollingComponent.h"
#include "components/TSpriteAnimation.h"
#include "vendelo-sdl2/MyUtils.h"
#include "vendelo-sdl2/PictureFormat.h"
#include "vendelo-sdl2/TApplication.h"

using namespace vendelo_sdl2;

namespace {

struct TLevelColour {
  const char* winAnimation;
  const char* frameRight;
  const char* frameLeft;
  const char* hourFont;  // only Emerald shows its hours
};

// By id; Gold is id 0.
constexpr TLevelColour kLevelColours[TJackpotsPanel::kMaxLevels] = {
  {"Animation/GoldPnlWin", "GOLD_RIGHT.png", "GOLD_LEFT.png", nullptr},
  {"Animation/SilverPnlWin", "SILVER_RIGHT.png", "SILVER_LEFT.png", nullptr},
  {"Animation/BronzePnlWin", "BRONZE_RIGHT.png", "BRONZE_LEFT.png", nullptr},
  {"Animation/EmeraldPnlWin", "EMERALD_RIGHT.png", "EMERALD_LEFT.png", "Fonts/emerald_hours_font"}};

constexpr const char* kTitle = "JACKPOT.png";
constexpr const char* kDarkPicture = "Animation/Backround.png";
constexpr const char* kBarPicture = "/bar.png";
// The doubled separator makes a font name of its own, beside that of the digits.
constexpr const char* kCurrencyFont = "/Fonts/currency";
constexpr const char* kInfoFont = "Fonts/info_bar_font";

constexpr int kScheduledMode = 2;  // JackpotsData::mode of a level that is open at certain hours

std::string indexed(const char* name, int id) { return std::string(name) + "[" + MyUtils::itos(id) + "]"; }

void prepareSprite(TSpriteAnimation* sprite) {
  sprite->Hide();
  sprite->HideAfterEnd();
  sprite->SetRefreshRate(25);
}

}  // namespace

double jackpotSpinFunction(double t, double speed) {
  const double magnitude = std::log10(std::abs(speed));
  // One millisecond after a change the curve has no value; it passes through its limit, the straight line.
  if (magnitude == 0 || !std::isfinite(magnitude)) return t;
  const double a = 1 / magnitude;
  return a * std::log((std::exp(1 / a) - 1) * t + 1);
}

float jackpotTextMovement(float t, float) { return static_cast<float>(0.5 * (1 - std::cos(M_PI * t))); }

void TJackpotsPanel::loadAhead() {
  const std::string folder = MyUtils::ImageDir();
  const auto isThere = [](const std::string& file) { return MyUtils::FileExists(file, true, false); };
  const auto picture = [&](const char* name) {
    if (isThere(folder + name)) MyUtils::GetTexture(GetRenderer(), name);
  };
  const auto font = [&](const char* name) {
    const std::string path = folder + name;
    if (isThere(path + ".fnt") && !TBitmapFont::FindBitmapFont(path))
      TBitmapFont::Open(GetRenderer(), path, path + ".fnt");
  };
  if (isThere(folder + "Fonts/currency.fnt") && !TBitmapFont::FindBitmapFont("cypherFont")) createDigitFont();
  font(kCurrencyFont);
  font(kInfoFont);
  picture(kTitle);
  for (const TLevelColour& colour : kLevelColours) {
    picture(colour.frameRight);
    picture(colour.frameLeft);
    if (colour.hourFont) font(colour.hourFont);
  }
  if (isThere(folder + kDarkPicture)) loadDarkPicture();
  if (isThere(folder + kBarPicture))
    mpBarPicture.reset(MyUtils::InFastFormat(GetRenderer(), MyUtils::LoadSurface(folder + kBarPicture)));
}

void TJackpotsPanel::loadDarkPicture() {
  if (!mpDarkPicture) mpDarkPicture.reset(MyUtils::LoadTexture(GetRenderer(), MyUtils::ImageDir() + kDarkPicture));
}

void TJackpotsPanel::createTitle() {
  pJackpotLabel = new TImageList(GetRenderer(), 645, 20, 630, 156, "pJackpotLabel");
  AddComponent(pJackpotLabel);
  pJackpotLabel->pushImage(MyUtils::GetTexture(GetRenderer(), kTitle));
  pJackpotLabel->DisplayImage(0, 0);

  pDarkBackground = new TImageList(GetRenderer(), 0, 0, mScreenW, mScreenH, "pDarkBackground");
  AddComponent(pDarkBackground);
  pDarkBackground->_setVisible(false);
  loadDarkPicture();
  pDarkBackground->pushImage(mpDarkPicture.get());
  pDarkBackground->DisplayImage(0, 0);
}

void TJackpotsPanel::createLevel(const JackpotsData& level, TBuild& build) {
  const int jId = level.id;
  if (jId < 0 || jId >= kMaxLevels || pJackpotPanel[jId]) {
    pApp->WriteLog(4, 0, "Jackpot level with id %d cannot be shown: ids are 0 to 3, each once.", jId);
    return;
  }
  const TLevelColour& colour = kLevelColours[jId];
  const SDL_Rect place = build.layout.levelRect(jId);
  TGuiComponent* container =
    new TGuiComponent(GetRenderer(), place.x, place.y, place.w, place.h, indexed("pJackpotPanel", jId));
  pJackpotPanel[jId] = container;
  AddComponent(container);

  pJackpotFrame[jId] = new TImageList(GetRenderer(), 0, 0, place.w, place.h, indexed("pJackpotFrame", jId));
  container->AddComponent(pJackpotFrame[jId]);
  pJackpotFrame[jId]->pushImage(
    MyUtils::GetTexture(GetRenderer(), level.showCurrencySign ? colour.frameRight : colour.frameLeft));
  pJackpotFrame[jId]->DisplayImage(0, 0);

  createCurrency(level);
  createDigits(level, build.font);
  createAnimations(level, build);
  if (level.mode == kScheduledMode && colour.hourFont) createHours(level);
  createInfoBar(level, place);

  // The info bar and its text stay below.
  for (TGuiComponent* component :
       std::initializer_list<TGuiComponent*>{pJackpotFrame[jId], pIdleAnimation[jId], pJackpotCurrency[jId],
                                             pJackpotCyphers[jId], pJackpotHours[jId], pPanelAnimation[jId]})
    container->BringComponentToFront(component);
}

void TJackpotsPanel::createCurrency(const JackpotsData& level) {
  const int jId = level.id;
  const int cx = level.showCurrencySign ? 709 : 68;
  auto* currency = new TGlyphLabel(GetRenderer(), cx, 87, 130, 91, level.currency,
                                   MyUtils::ImageDir() + kCurrencyFont, indexed("pJackpotCurrency", jId));
  pJackpotCurrency[jId] = currency;
  pJackpotPanel[jId]->AddComponent(currency);
  currency->SetAlignment(level.showCurrencySign ? LEFT_UP : CENTER_UP);
  currency->SetResize(false);
}

void TJackpotsPanel::createDigits(const JackpotsData& level, TBitmapFont* font) {
  const int jId = level.id;
  const int cx = level.showCurrencySign ? 90 : 229;
  auto* cyphers = new TControlCyphers3(GetRenderer(), cx, 87, 594, 91, 10, indexed("ControlCyphers", jId));
  pJackpotCyphers[jId] = cyphers;
  pJackpotPanel[jId]->AddComponent(cyphers);
  cyphers->SetFont(font);
  cyphers->SetLocale(MyUtils::decimal_separator == ',' ? TControlCyphers3::COMMA_DECIMAL_DOT_THOUSANDS
                                                       : TControlCyphers3::COMMA_THOUSANDS_DOT_DECIMAL);
  cyphers->SetCypherGap(2);
  cyphers->SetCypherWidth(48);
  // There are 18 wheels: farther away the point is off the screen, and no sum of places leaves its range.
  cyphers->SetDecimalPlaces(std::clamp(level.decimalPlaces, -100, 100));
  cyphers->SetDecimalScale(0.7f, 1.67f);
  cyphers->SetSpinFunction(jackpotSpinFunction);
  cyphers->SetFinalValue(level.potValue);
}

void TJackpotsPanel::createAnimations(const JackpotsData& level, TBuild& build) {
  const int jId = level.id;
  const std::string directory = MyUtils::ImageDir();
  const std::string idle =
    build.idleCopy ? "" : directory + (level.showCurrencySign ? "Animation/IdleRight" : "Animation/IdleLeft");
  pIdleAnimation[jId] = new TSpriteAnimation(GetRenderer(), -46, -86, 1000, 380, idle, TSpriteAnimation::ONCE,
                                             indexed("pIdleAnimation", jId));
  if (build.idleCopy)
    pIdleAnimation[jId]->CopyData(build.idleCopy);
  else
    build.idleCopy = pIdleAnimation[jId];
  pJackpotPanel[jId]->AddComponent(pIdleAnimation[jId]);
  prepareSprite(pIdleAnimation[jId]);

  pPanelAnimation[jId] =
    new TSpriteAnimation(GetRenderer(), -346, -176, 1600, 600, directory + kLevelColours[jId].winAnimation,
                         TSpriteAnimation::LOOP, indexed("pPanelAnimation", jId));
  pJackpotPanel[jId]->AddComponent(pPanelAnimation[jId]);
  prepareSprite(pPanelAnimation[jId]);

  // Full-screen, and so a child of the whole panel; the same gold particles for every level.
  const std::string particles = build.particleCopy ? "" : directory + "Animation/GoldPrtclWin";
  pParticleAnimation[jId] = new TSpriteAnimation(GetRenderer(), 0, 0, mScreenW, mScreenH, particles,
                                                 TSpriteAnimation::LOOP, indexed("pParticleAnimation", jId));
  if (build.particleCopy)
    pParticleAnimation[jId]->CopyData(build.particleCopy);
  else
    build.particleCopy = pParticleAnimation[jId];
  AddComponent(pParticleAnimation[jId]);
  prepareSprite(pParticleAnimation[jId]);
}

void TJackpotsPanel::createHours(const JackpotsData& level) {
  const int jId = level.id;
  auto* hours = new TGlyphLabel(GetRenderer(), 282, 0, 430, 62, level.TimeFrom + " - " + level.TimeTo,
                                MyUtils::ImageDir() + kLevelColours[jId].hourFont, indexed("pJackpotHours", jId));
  pJackpotHours[jId] = hours;
  pJackpotPanel[jId]->AddComponent(hours);
  hours->SetAlignment(CENTER_CENTER);
  hours->SetResize(false);
}

void TJackpotsPanel::createInfoBar(const JackpotsData& level, const SDL_Rect& place) {
  constexpr int nx = 882, ny = 90, height = 91;
  const int jId = level.id;
  // The bar draws at absolute places and only follows later moves of its parent.
  auto* bar = new TProgressBar(GetRenderer(), nx + place.x, ny + place.y, 1220, height,
                               indexed("pJackpotInfoBackground", jId));
  pJackpotInfoBackground[jId] = bar;
  pJackpotPanel[jId]->AddComponent(bar);
  if (mpBarPicture)
    bar->SetFullImage(MyUtils::TextureOf(GetRenderer(), mpBarPicture.get()).release());
  else
    bar->SetFullImage(MyUtils::ImageDir() + kBarPicture);
  bar->SetRunToLeft();
  bar->SetPosition(0, true);

  auto* info = new TScrollingComponent(GetRenderer(), nx, ny, mScreenW - nx, height, indexed("pJackpotInfo", jId));
  pJackpotInfo[jId] = info;
  pJackpotPanel[jId]->AddComponent(info);
  auto* pInfo = new TGlyphLabel(GetRenderer(), 0, 0, 0, height, level.LastWinData, MyUtils::ImageDir() + kInfoFont,
                                indexed("pJackpotInfo", jId) + "-label");
  pInfo->SetAlignment(LEFT_CENTER);
  pInfo->SetAutosize(true, false);
  info->AddContent(pInfo, -1, TScrollingComponent::CENTER);
  info->SetPadding(30);
  info->SetScrollSpeedRelative(-20);
  info->SetSpacingFixed(500);
  info->SetWaitDuration(1);
  info->SetMovementFunction(jackpotTextMovement);
}
