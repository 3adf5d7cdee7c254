#include "kslplatform/TPlatformLoader.h"

#include <SDL_ttf.h>
#include <cmath>

#include "components/Tlabel.h"
#include "vendelo-sdl2/Drawing.h"
#include "vendelo-sdl2/MyUtils.h"
#include "vendelo-sdl2/TLogManager.h"

using namespace vendelo_sdl2;

namespace {

const float periodSeconds = 1.5f;  // of one full breath of the radius
const float dotSpeedMin = 1.4f;    // slope of the steady part of the rotation
const int numDots = 7;
const int minRadius = 50;
const int maxRadius = 100;
const int fontSize = 34;
const double pi = 3.141592653589793;

}  // namespace

TPlatformLoader::TPlatformLoader(SDL_Renderer* pRenderer, int x, int y, int w, int h, std::string name)
  : TGuiComponent(pRenderer, x, y, w, h, std::move(name)),
    bUseShadow(false),
    bShowLogo(true),
    mAngle(0.0f),
    mRadius(50.0f),
    mDotTexture(nullptr),
    mDotShadowTexture(nullptr),
    mLogoTexture(nullptr),
    mStatusLabel(nullptr),
    mBehaviorMode(FIXED),
    dotSize(0),
    dotShadowSize(0) {
  mDotTexture = MyUtils::GetTexture(pRenderer, "dot.png");
  SDL_QueryTexture(mDotTexture, nullptr, nullptr, &dotSize, nullptr);
  mDotShadowTexture = MyUtils::GetTexture(pRenderer, "dot_shadow.png");
  if (mDotShadowTexture) SDL_QueryTexture(mDotShadowTexture, nullptr, nullptr, &dotShadowSize, nullptr);
  mLogoTexture = MyUtils::GetTexture(pRenderer, "splashLogo.png");

  const std::string fontFile = MyUtils::ImageDir() + "/AppFont.ttf";
  mFont = TTF_OpenFont(fontFile.c_str(), fontSize);
  if (!mFont) logman::WriteLog(4, 0, "Font %s is not usable: %s.", fontFile.c_str(), TTF_GetError());
  mStatusLabel =
    new Tlabel(pRenderer, 0, h / 2, w, h / 2, "", mFont, SDL_Color{255, 255, 255, 255}, "statusLabelKSLLoader");
  mStatusLabel->SetAlignment(CENTER_CENTER);
  AddComponent(mStatusLabel);
}

TPlatformLoader::~TPlatformLoader() {
  if (mFont && TTF_WasInit()) TTF_CloseFont(mFont);
}

void TPlatformLoader::drawLogic() {
  const float milliseconds = static_cast<float>(SDL_GetTicks());
  const float phase = static_cast<float>(static_cast<double>(milliseconds * 0.002f) * pi / periodSeconds);
  // The sine makes the dots speed up and slow down while the ring breathes.
  mAngle = (dotSpeedMin * phase - std::sin(phase)) / 11.2f;
  mRadius = minRadius + (maxRadius - minRadius) * (1.0f + std::cos(phase)) * 0.5f;
  if (mBehaviorMode == TAKE_LAST_LOG) mStatusLabel->SetText(logman::GetLastLog());
}

void TPlatformLoader::draw() {
  for (int i = 0; i < numDots; ++i) {
    const float turns = (mAngle + static_cast<float>(i) / 7.0f) * 2.0f;
    const float a = static_cast<float>(turns * pi);
    if (bUseShadow && mDotShadowTexture) drawAround(mDotShadowTexture, dotShadowSize, a);
    drawAround(mDotTexture, dotSize, a);
  }
  if (mLogoTexture && bShowLogo) {
    SDL_Rect logo{0, 0, 0, 0};
    SDL_QueryTexture(mLogoTexture, nullptr, nullptr, &logo.w, &logo.h);
    logo.x = (getWidth() - logo.w) / 2;
    logo.y = (getHeight() / 3 - logo.h) / 2;
    drawing::Copy(GetRenderer(), mLogoTexture, nullptr, &logo);
  }
  TGuiComponent::draw();
}

void TPlatformLoader::drawAround(SDL_Texture* texture, int size, float angle) {
  const SDL_Rect place{
    static_cast<int>(std::round(static_cast<float>(getWidth() - size) * 0.5f + mRadius * std::cos(angle))),
    static_cast<int>(std::round(static_cast<float>(getHeight() - size) * 0.5f + mRadius * std::sin(angle))), size,
    size};
  drawing::Copy(GetRenderer(), texture, nullptr, &place);
}

void TPlatformLoader::SetDisplayMessage(const std::string& message) { mStatusLabel->SetText(message); }

void TPlatformLoader::SetBehavior(ELoaderInfoLabelBehavior behavior) { mBehaviorMode = behavior; }
