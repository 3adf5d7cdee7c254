// What new data, texts and games do to the jackpot panel.
#include "components/TControlCyphers3.h"
#include "components/TGlyphLabel.h"
#include "components/TImageList.h"
#include "components/TProgressBar.h"
#include "components/TScrollingComponent.h"
#include "components/TSpriteAnimation.h"
#include "vendelo-sdl2/MyUtils.h"
#include "vendelo-sdl2/TApplication.h"
#include "vesperatopscreen/GamePath.h"
#include "vesperatopscreen/TJackpotsPanel.h"

using namespace vendelo_sdl2;

int TJackpotsPanel::UpdateData(const std::vector<JackpotsData>& jackpotData, const std::string& jackpotError) {
  if (mIntegrityLabel->isVisible()) return 0;  // while it stands nothing is updated, not even the error text
  if (mJackpotError != jackpotError) SetJackpotErrorData(jackpotError);
  if (mJackpotErrorLabel->isVisible()) return 0;
  const int wanted = static_cast<int>(jackpotData.size());
  if (wanted != mNumJackpots) {
    pApp->DeferToDraw([this] { ClearJackpotPanel(); }, false);
    mNumJackpots = wanted;
    pApp->DeferToDraw([this, jackpotData] { CreateJackpotPanel(jackpotData); }, false);
    pApp->DeferToDraw([this, jackpotData, jackpotError] { UpdateData(jackpotData, jackpotError); }, false);
    return 1;
  }
  if (!mIsPanelCreated && mPanelCreationRetrys >= 0) {
    --mPanelCreationRetrys;
    return 0;
  }
  UpdateJackpotData(jackpotData);
  return 0;
}

void TJackpotsPanel::UpdateJackpotData(const std::vector<JackpotsData>& jackpotData) {
  if (mNumJackpots < 1) return;
  std::array<bool, kMaxLevels> seen{};
  int jackpotWinId = -1;
  for (const JackpotsData& level : jackpotData) {
    const int jId = level.id;
    // No tree, an id that has no place in it, or one that comes twice: the creation has logged it.
    if (jId < 0 || jId >= kMaxLevels || seen[jId] || !pJackpotCyphers[jId]) continue;
    seen[jId] = true;
    pJackpotCyphers[jId]->SetFinalValue(level.potValue);
    if (pJackpotInfo[jId])
      if (auto* info = pJackpotInfo[jId]->ContentAt<TGlyphLabel>(0)) info->SetText(level.LastWinData);
    if (level.status == "WIN") {
      // The levels behind the first winner wait, a second winner among them.
      pJackpotCyphers[jId]->ResetAnimation();
      jackpotWinId = jId;
      break;
    }
  }
  if (jackpotWinId < 0) {
    if (mWinningJackpot >= 0) StopWinAnimation();
  } else if (mWinningJackpot < 0) {
    mWinningJackpot = jackpotWinId;
    pApp->WriteLog(1, 0, "Jackpot LEVEL%d was won! Showing win animation!", mWinningJackpot + 1);
    pApp->AddTimedTask(new TtthMember<TJackpotsPanel, void>(this, &TJackpotsPanel::StartWinAnimation, 200,
                                                            TTimedTaskHandler::EXECUTE_ONCE,
                                                            "TJackpotsPanel::StartWinAnimation, 200"),
                       TASK_DRAW);
  }
}

void TJackpotsPanel::SetJackpotErrorData(const std::string& data) {
  mJackpotErrorLabel->SetText(data);
  if (data.empty()) {
    mLogo->_setVisible(mIntegrityLabel->isVisible());
    mJackpotErrorLabel->_setVisible(false);
  } else {
    mJackpotErrorLabel->_setVisible(true);
    deferClearUnderText();
    mLogo->_setVisible(true);
  }
  mJackpotError = data;
}

// A text that has gone again before the frame has nothing to clear: nobody would bring the levels back.
void TJackpotsPanel::deferClearUnderText() {
  pApp->DeferToDraw(
    [this] {
      if (mIntegrityLabel->isVisible() || mJackpotErrorLabel->isVisible()) ClearJackpotPanel();
    },
    false);
}

void TJackpotsPanel::SetIntegrityCheckData(const std::string& data) {
  mIntegrityLabel->SetText(data);
  if (data.empty()) {
    mLogo->_setVisible(mJackpotErrorLabel->isVisible());
    mIntegrityLabel->_setVisible(false);
  } else {
    mIntegrityLabel->_setVisible(true);
    deferClearUnderText();
    mLogo->_setVisible(true);
  }
}

void TJackpotsPanel::OnShowHistory() {
  for (TProgressBar* bar : pJackpotInfoBackground)
    if (bar) bar->_setVisible(true);
  OnShowInfoLabels();
  mHistoryShown = true;
}

void TJackpotsPanel::OnShowInfoLabels() {
  for (TScrollingComponent* info : pJackpotInfo)
    if (info) info->SetVisible(true);
}

void TJackpotsPanel::OnHideHistory() {
  if (mNumJackpots > 0) {
    for (TScrollingComponent* info : pJackpotInfo)
      if (info) info->SetVisible(false);
    for (TProgressBar* bar : pJackpotInfoBackground)
      if (bar) bar->_setVisible(false);
  }
  mHistoryShown = false;
}

void TJackpotsPanel::OnShowOverlays(const std::string& name) {
  if (mIntegrityLabel->isVisible() || mJackpotErrorLabel->isVisible()) return;
  if (mActiveGameName != name) {
    ClearOverlay();
    if (!name.empty()) loadImagesOfGame(name);
  }
  if (mNumJackpots > 0 && pAnimationOverlay && !isOverlayVisible()) {
    OnHideHistory();
    pAnimationOverlay->Show();
    return;
  }
  mLogo->_setVisible(mNumJackpots == 0);
}

bool TJackpotsPanel::isOverlayVisible() {
  return mNumJackpots != 0 && pAnimationOverlay && pAnimationOverlay->isVisible();
}

void TJackpotsPanel::ClearOverlay() {
  mActiveGameName.clear();
  removeChild(pAnimationOverlay);
  pAnimationOverlay = nullptr;
  removeChild(pImageOverlay);
  pImageOverlay = nullptr;
  mpOverlayPicture.reset();
  if (mNumJackpots > 0) OnShowHistory();
}

int TJackpotsPanel::loadImagesOfGame(const std::string& name) {
  mActiveGameName = name;
  const std::string IMAGE_DIR = gamePath(name);
  if (IMAGE_DIR.empty()) {
    pApp->WriteLog(4, 0, "The game name '%s' leads out of the game folders: no overlay.",
                   MyUtils::EscapeControls(name).c_str());
    return 0;
  }
  pApp->WriteLog(1, 0, "Loading overlay for game '%s' inside %s", MyUtils::EscapeControls(name).c_str(),
                 MyUtils::EscapeControls(IMAGE_DIR).c_str());
  if (mNumJackpots != 0 && !pAnimationOverlay) {
    pAnimationOverlay = new TSpriteAnimation(GetRenderer(), 1110, 90, 810, 900, IMAGE_DIR + "overlay",
                                             TSpriteAnimation::LOOP, "pAnimationOverlay[" + name + "]");
    AddComponent(pAnimationOverlay);
    pAnimationOverlay->Hide();
    pAnimationOverlay->SetRefreshRate(25);
    pAnimationOverlay->SetLoopStartFrame(30);
  } else if (mNumJackpots == 0 && !pImageOverlay) {
    pImageOverlay = new TImageList(GetRenderer(), 0, 0, mScreenW, mScreenH, "pImageOverlay[" + name + "]");
    AddComponent(pImageOverlay);
    mpOverlayPicture = lendPicture(pImageOverlay, IMAGE_DIR + "/topscreen.jpg");
    pImageOverlay->Show();
  }
  return 0;
}
