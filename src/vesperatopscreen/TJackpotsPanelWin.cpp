// The win, from its first notice to the idle sparkle's return, and the sparkle itself.
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <utility>

#include "components/TControlCyphers3.h"
#include "components/TGlyphLabel.h"
#include "components/TImageList.h"
#include "components/TProgressBar.h"
#include "components/TScrollingComponent.h"
#include "components/TSpriteAnimation.h"
#include "vendelo-sdl2/MyUtils.h"
#include "vendelo-sdl2/TApplication.h"
#include "vendelo-sdl2/TRenderGuard.h"
#include "vesperatopscreen/TJackpotsPanel.h"

using namespace vendelo_sdl2;

namespace {

constexpr int winAnimationPhaseDuration[] = {1000, 1000};  // milliseconds of the flight and of one pulse
constexpr float sizeAmplitude = 0.3f;

int interpolated(int from, int to, float t) {
  return static_cast<int>(roundf(MyUtils::lerp(static_cast<float>(from), static_cast<float>(to), t)));
}

}  // namespace

float move_to_center(const TAnimation&, float t) {
  const double E = std::exp(-5.0);
  return static_cast<float>(1 - (std::exp(static_cast<float>(-5 * (1 + t))) - E * E) / (E * (1 - E)));
}

float panel_grow_function(const TAnimation&, float t) {
  const double wave = std::sin(M_PI * t);
  return static_cast<float>(wave * wave);
}

bool TJackpotsPanel::levelStands(int id) const {
  return id >= 0 && id < kMaxLevels && pJackpotPanel[id] && pPanelAnimation[id] && pDarkBackground;
}

void TJackpotsPanel::StartIdleAnimation() {
  TTimedTaskHandler* const fired = std::exchange(pIdleTask, nullptr);  // it has done its one run
  if (mNumJackpots < 1) return;
  int r = std::rand() % mNumJackpots;
  if (mIdleAnimation >= 0 && pIdleAnimation[mIdleAnimation]) pIdleAnimation[mIdleAnimation]->Hide();
  if (mNumJackpots > 1)
    while (r == mIdleAnimation) r = std::rand() % mNumJackpots;
  if (r >= kMaxLevels) r = kMaxLevels - 1;
  mIdleAnimation = r;
  const Uint32 now = SDL_GetTicks();
  if (!pIdleAnimation[r]) return;  // an id that is not there ends the rotation
  pIdleAnimation[r]->ResetAnimation(now);
  pIdleAnimation[r]->Show();
  // The name says 2000, the interval is 2200: both are as they are wanted.
  if (fired) {
    // Once more, out of its own run: this goes on every two seconds for weeks, and takes nothing from the heap.
    pApp->RemoveTimedTask(fired, false);
    fired->Enable();
    pIdleTask = fired;
  } else {
    pIdleTask = new TtthMember<TJackpotsPanel, void>(this, &TJackpotsPanel::StartIdleAnimation, 2200,
                                                     TTimedTaskHandler::EXECUTE_ONCE,
                                                     "TJackpotsPanel::StartIdleAnimation, 2000");
  }
  pApp->AddTimedTask(pIdleTask, TASK_DRAW);
}

void TJackpotsPanel::StopIdleAnimation() {
  for (TSpriteAnimation* sparkle : pIdleAnimation)
    if (sparkle) sparkle->Hide();
  mIdleAnimation = -1;
  if (pIdleTask) {
    pIdleTask->Disable();
    pApp->RemoveTimedTask(pIdleTask, true);
    pIdleTask = nullptr;
  }
}

void TJackpotsPanel::StartWinAnimation() {
  const int w = mWinningJackpot;
  if (w < 0) return;  // the win has gone since its notice, and the sparkle wanders again
  StopIdleAnimation();
  if (!levelStands(w)) return;
  mPanelRect = pJackpotPanel[w]->getDestRect();
  mCapturedJackpot = w;
  pDarkBackground->Show();
  const Uint32 now = SDL_GetTicks();
  pPanelAnimation[w]->ResetAnimation(now);
  pPanelAnimation[w]->Show();
  mAnimationPhase = 0;
  mWinAnimation.setDuration(winAnimationPhaseDuration[0]);
  mWinAnimation.setCustomFunction(move_to_center);
  mWinAnimation.setLimits(LIMIT_CLAMP, LIMIT_CLAMP);
  mWinAnimation.setDelay(0);
  mWinAnimation.start(now);

  captureLevel(w);
  pWinPanel->setDestRect(pJackpotFrame[w]->getDestRect());
  pWinPanel->setSrcRect(mPanelRect);  // the layer is as large as the screen, the level stands at its place in it
  pWinPanel->_setVisible(true);
  setLevelVisible(w, false);
  pJackpotInfoBackground[w]->_setVisible(false);
  pJackpotInfo[w]->_setVisible(false);
  BringComponentToFront(pDarkBackground);
  BringComponentToFront(pParticleAnimation[w]);
  BringComponentToFront(pWinPanel);
  BringComponentToFront(pJackpotPanel[w]);
}

void TJackpotsPanel::setLevelVisible(int id, bool visible) {
  pJackpotFrame[id]->_setVisible(visible);
  if (pJackpotHours[id]) pJackpotHours[id]->_setVisible(visible);
  pJackpotCyphers[id]->_setVisible(visible);
  pJackpotCurrency[id]->_setVisible(visible);
}

// A still picture of the level, with its digits at their final value.
void TJackpotsPanel::captureLevel(int id) {
  TRenderGuard guard(GetRenderer());
  guard.target(pWinJackpotTexture.get());
  guard.clear(0, 0, 0, 0);  // an earlier win may have left its level
  // The frame is copied as it is: blended here and again with the whole picture its soft edges would turn dark.
  guard.blendMode(pJackpotFrame[id]->GetTargetTexture(), SDL_BLENDMODE_NONE);
  pJackpotFrame[id]->draw();
  pJackpotCyphers[id]->ResetAnimation();
  pJackpotCyphers[id]->draw();
  pJackpotCurrency[id]->draw();
  if (pJackpotHours[id]) pJackpotHours[id]->draw();
}

void TJackpotsPanel::OnTexturesLost() {
  TGuiComponent::OnTexturesLost();
  if (!pWinJackpotTexture) return;
  if (levelStands(mCapturedJackpot)) return captureLevel(mCapturedJackpot);
  // Its panel may still be shown, where levels have been built anew during a win.
  TRenderGuard guard(GetRenderer());
  guard.target(pWinJackpotTexture.get());
  guard.clear(0, 0, 0, 0);
}

void TJackpotsPanel::calcFinalRect(int phase, SDL_Rect& result) const {
  if (phase == -1)
    result = mPanelRect;
  else if (phase == 0)
    result = {(mScreenW - mPanelRect.w) / 2, (mScreenH - mPanelRect.h) / 2, mPanelRect.w, mPanelRect.h};
  else
    result = {0, 0, mScreenW, mScreenH};
}

void TJackpotsPanel::drawLogic() {
  TGuiComponent::drawLogic();
  const int w = mWinningJackpot;
  const Uint32 now = SDL_GetTicks();
  if (!levelStands(w) || mCapturedJackpot != w || mWinAnimation.state() == ASTATE_READY) return;
  mWinAnimation.goOnAfterWrap(now);
  if (mWinAnimation.endTimestampMs() <= static_cast<long>(now)) {
    if (mAnimationPhase == 0) {
      if (pParticleAnimation[w] && !pParticleAnimation[w]->isVisible()) {
        pParticleAnimation[w]->ResetAnimation(now - 100);
        pParticleAnimation[w]->Show();
      }
      mWinAnimation.stop();
      mAnimationPhase += 1;
    }
    mWinAnimation.setCustomFunction(panel_grow_function);
    mWinAnimation.setLimits(LIMIT_CLAMP, LIMIT_LOOP);
    mWinAnimation.setDelay(200);
    mWinAnimation.start(mWinAnimation.endTimestampMs());
    mWinAnimation.setDuration(winAnimationPhaseDuration[mAnimationPhase]);
  }
  double sizeFactor = 1.0;
  const SDL_Rect destRect = winRect(now, sizeFactor);
  pWinPanel->setDestRect(destRect);
  if (pPanelAnimation[w]->isVisible()) {
    pPanelAnimation[w]->SetResizeFactor(sizeFactor, sizeFactor);
    pPanelAnimation[w]->SetOffset(destRect.x - mPanelRect.x, destRect.y - mPanelRect.y);
    pPanelAnimation[w]->draw();
  }
}

SDL_Rect TJackpotsPanel::winRect(Uint32 now, double& sizeFactor) const {
  const float animationProgress = mWinAnimation.value(now);
  SDL_Rect rectFrom, rectTo, destRect;
  calcFinalRect(mAnimationPhase - 1, rectFrom);
  if (mAnimationPhase == 0) {
    calcFinalRect(0, rectTo);
    destRect.x = interpolated(rectFrom.x, rectTo.x, animationProgress);
    destRect.y = interpolated(rectFrom.y, rectTo.y, animationProgress);
    destRect.w = interpolated(rectFrom.w, rectTo.w, animationProgress);
    destRect.h = interpolated(rectFrom.h, rectTo.h, animationProgress);
    return destRect;
  }
  sizeFactor = 1.0 + MyUtils::lerp(0, sizeAmplitude, animationProgress);
  destRect.w = static_cast<int>(roundf(static_cast<float>(rectFrom.w * sizeFactor)));
  destRect.h = static_cast<int>(roundf(static_cast<float>(rectFrom.h * sizeFactor)));
  destRect.x = rectFrom.x + static_cast<int>(roundf(static_cast<float>(rectFrom.w * (1 - sizeFactor) * 0.5)));
  destRect.y = rectFrom.y + static_cast<int>(roundf(static_cast<float>(rectFrom.h * (1 - sizeFactor) * 0.5)));
  return destRect;
}

void TJackpotsPanel::StopWinAnimation() {
  pApp->WriteLog(1, 0, "Hiding jackpot win animation.");
  const int w = mWinningJackpot;
  if (levelStands(w)) {
    pDarkBackground->Hide();
    if (pParticleAnimation[w]) pParticleAnimation[w]->Hide();
    pPanelAnimation[w]->Hide();
    pPanelAnimation[w]->SetOffset(0, 0);
    mWinAnimation.stop();
    // A win that ends before its picture was taken has moved nothing.
    if (mCapturedJackpot == w) pJackpotPanel[w]->setDestRect(mPanelRect);
    pWinPanel->_setVisible(false);
    setLevelVisible(w, true);
    pJackpotInfoBackground[w]->_setVisible(mHistoryShown);
    pJackpotInfo[w]->_setVisible(mHistoryShown);
  }
  mWinningJackpot = -1;
  mCapturedJackpot = -1;
  StopIdleAnimation();  // a rotation that still runs would go on beside the new one
  StartIdleAnimation();
}

void TJackpotsPanel::OnToggleWinAnimation(std::string, void* hActionData, void*) {
  const auto number = reinterpret_cast<intptr_t>(hActionData);
  const bool known = number >= 1 && number <= kMaxLevels;
  const bool starts = known && pDarkBackground && !pDarkBackground->isVisible();
  if (!known || !pDarkBackground || (starts && !levelStands(static_cast<int>(number) - 1))) {
    pApp->WriteLog(4, 0, "No win to toggle on jackpot level %ld.", static_cast<long>(number));
    return;
  }
  if (starts) {
    mWinningJackpot = static_cast<int>(number) - 1;
    StartWinAnimation();
  } else {
    StopWinAnimation();
  }
}
