#include "vesperatopscreen/TJackpotsPanel.h"

#include <algorithm>

#include "common/TBitmapFont.h"
#include "components/TGlyphLabel.h"
#include "components/TImageList.h"
#include "components/TSpriteAnimation.h"
#include "src/vesperatopscreen/TJackpotsPanelBuild.h"
#include "vendelo-sdl2/MyUtils.h"
#include "vendelo-sdl2/TAppGuiModule.h"
#include "vendelo-sdl2/TApplication.h"

using namespace vendelo_sdl2;

TJackpotLayout::TJackpotLayout(int numJackpots) {
  // Four have a place. The platform may send any number, which must not leave the range of the places.
  const int n = std::min(numJackpots, 1000);
  levelGap = (4 - n) * 100 + 10;
  odmikNivoja = levelFrameHeight + levelGap;
  zacetniOdmikY = (sumSize - (n * levelFrameHeight + (n - 1) * levelGap)) / 2;
}

SDL_Rect TJackpotLayout::levelRect(int id) const {
  return {51 + id * 48, 160 + id * odmikNivoja + zacetniOdmikY, kLevelFrameWidth, levelFrameHeight};
}

TJackpotsPanel::TJackpotsPanel(SDL_Renderer* pRenderer, int x, int y, int width, int height,
                               std::string ComponentName)
  : TGuiComponent(pRenderer, x, y, width, height, ComponentName),
    mPanelCreationRetrys(10),
    mIsPanelCreated(false),
    mNumJackpots(0),
    mWinningJackpot(-1),
    mCapturedJackpot(-1),
    mScreenW(width),
    mScreenH(height),
    mHistoryShown(true),
    pJackpotLabel(nullptr),
    pBackgroundAnimation(nullptr),
    pJackpotPanel{},
    pJackpotFrame{},
    pJackpotCyphers{},
    pJackpotCurrency{},
    pJackpotHours{},
    pJackpotInfoBackground{},
    pJackpotInfo{},
    pIdleAnimation{},
    pPanelAnimation{},
    pParticleAnimation{},
    pWinPanel(nullptr),
    mLogo(nullptr),
    mIntegrityLabel(nullptr),
    mJackpotErrorLabel(nullptr),
    mIdleAnimation(-1),
    mAnimationPhase(0),
    mPanelRect{},
    pAnimationOverlay(nullptr),
    pImageOverlay(nullptr),
    pDarkBackground(nullptr),
    pIdleTask(nullptr) {
  mLogo = new TImageList(pRenderer, mScreenW / 2 - 298, mScreenH / 2 - 38, 596, 76, "logo");
  AddComponent(mLogo);
  mpLogoPicture = lendPicture(mLogo, MyUtils::ImageDir() + "logo.png");
  mLogo->_setVisible(false);
  mIntegrityLabel = createTextLabel("integrityLabel", 100);
  mJackpotErrorLabel = createTextLabel("jackpotErrorLabel", mScreenH - 250);
  pWinPanel = new TGuiComponent(pRenderer, 0, 0, mScreenW, mScreenH, "JackpotWinPanel");
  AddComponent(pWinPanel);
  createWinLayer();
  pWinPanel->_setVisible(false);
}

TJackpotsPanel::~TJackpotsPanel() {
  ClearJackpotPanel();
  ClearOverlay();
  if (!pApp) return;
  pApp->UnregisterAllActionHandlersByRelatedObject(this, true);
  pApp->RemoveTimedTasksOf(this);
}

TGlyphLabel* TJackpotsPanel::createTextLabel(const char* name, int y) {
  auto* label =
    new TGlyphLabel(GetRenderer(), 0, y, mScreenW, 150, "", MyUtils::ImageDir() + "Fonts/jackpot_win_label", name);
  label->SetAlignment(CENTER_CENTER);
  label->_setVisible(false);
  label->SetResizeOnlyDown(true);
  AddComponent(label);
  return label;
}

// A clear destroys the layer, so each creation makes it again.
void TJackpotsPanel::createWinLayer() {
  if (!pWinJackpotTexture)
    pWinJackpotTexture.reset(TAppGuiModule::CreateLayer(nullptr, mScreenW, mScreenH, 0, 0, 0, 0, 16));
  pWinPanel->SetTargetTexture(pWinJackpotTexture.get());
}

int TJackpotsPanel::load() {
  pJackpotLabel = nullptr;
  pJackpotPanel.fill(nullptr);
  pJackpotFrame.fill(nullptr);
  pJackpotCyphers.fill(nullptr);
  pJackpotCurrency.fill(nullptr);
  pJackpotHours.fill(nullptr);
  pJackpotInfoBackground.fill(nullptr);
  pJackpotInfo.fill(nullptr);
  pIdleAnimation.fill(nullptr);
  pPanelAnimation.fill(nullptr);
  pParticleAnimation.fill(nullptr);
  pAnimationOverlay = nullptr;
  pImageOverlay = nullptr;
  pDarkBackground = nullptr;
  pApp->AddActionListener("ToggleWinAnimation",
                          new TahMemberLarge<TJackpotsPanel>(this, &TJackpotsPanel::OnToggleWinAnimation, nullptr,
                                                             TActionHandler::ahtExecuteEndless),
                          ACTION_DRAW);
  return 0;
}

void TJackpotsPanel::CreateJackpotPanel(const std::vector<JackpotsData>& jackpotData) {
  pApp->ThreadCheck(THREAD_DRAW);
  if (mIsPanelCreated) return;
  if (mPanelCreationRetrys == 0) {
    // Refused, as the last of the retries. The update that waits behind this call finds another number of levels
    // and so builds them in the next frame.
    mPanelCreationRetrys = -1;
    mNumJackpots = 0;
    return;
  }
  mNumJackpots = static_cast<int>(jackpotData.size());
  if (mNumJackpots > 0) {
    createWinLayer();
    pApp->WriteLog(1, 0, "Creating jackpot panel with %d levels.", mNumJackpots);
    createTitle();
    TBuild build(mNumJackpots);
    build.font = TBitmapFont::FindBitmapFont("cypherFont");
    if (!build.font) build.font = createDigitFont();
    for (const JackpotsData& level : jackpotData) createLevel(level, build);
    mWinAnimation = TAnimation(0.0f, 1.0f, 1000, AT_CUSTOM);
    mAnimationPhase = 0;
    mIdleAnimation = -1;
    StartIdleAnimation();
    mIsPanelCreated = true;
    mLogo->_setVisible(false);
  }
  // Also on the way of success: a panel built after its retries ran out keeps the logo over it.
  if (mPanelCreationRetrys <= 0) mLogo->_setVisible(true);
}

TBitmapFont* TJackpotsPanel::createDigitFont() {
  auto font =
    std::make_unique<TBitmapFont>(GetRenderer(), "cypherFont", MyUtils::ImageDir() + "Fonts/currency.fnt");
  if (TBitmapFont::FindBitmapFont("cypherFont") == font.get()) return font.release();  // the registry's
  mUnregisteredFont = std::move(font);
  return mUnregisteredFont.get();
}

void TJackpotsPanel::removeChild(TGuiComponent* component) { RemoveComponent(component, true); }

TTexturePtr TJackpotsPanel::lendPicture(TImageList* list, const std::string& file) {
  TTexturePtr picture(MyUtils::LoadTexture(GetRenderer(), file));
  list->pushImage(picture.get());
  list->DisplayImage(0, 0);
  return picture;
}

void TJackpotsPanel::ClearJackpotPanel() {
  checkDrawThread();
  if (!mIsPanelCreated) return;
  StopIdleAnimation();
  ClearOverlay();
  mLogo->_setVisible(true);
  removeChild(pJackpotLabel);
  pJackpotLabel = nullptr;
  removeChild(pBackgroundAnimation);
  pBackgroundAnimation = nullptr;
  for (int jId = kMaxLevels - 1; jId >= 0; --jId) {
    if (!pJackpotPanel[jId]) continue;
    pJackpotFrame[jId] = nullptr;
    pJackpotCyphers[jId] = nullptr;
    pJackpotCurrency[jId] = nullptr;
    pJackpotHours[jId] = nullptr;
    pJackpotInfoBackground[jId] = nullptr;
    pJackpotInfo[jId] = nullptr;
    pIdleAnimation[jId] = nullptr;
    pPanelAnimation[jId] = nullptr;
    removeChild(pParticleAnimation[jId]);
    removeChild(pJackpotPanel[jId]);
    pParticleAnimation[jId] = nullptr;
    pJackpotPanel[jId] = nullptr;
  }
  pWinPanel->SetTargetTexture(nullptr);  // it may be on the screen
  pWinJackpotTexture.reset();
  removeChild(pDarkBackground);
  pDarkBackground = nullptr;
  mIsPanelCreated = false;
  mPanelCreationRetrys = 10;
  mCapturedJackpot = -1;
  // The next data differ from this in number and so build the levels anew, after an error text too.
  mNumJackpots = 0;
}
