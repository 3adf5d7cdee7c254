#include "vesperatopscreen/TopScreenScreen.h"

#include <cstdio>

#include "common/ThreadSafeProperty.h"
#include "components/TGlyphLabel.h"
#include "components/Tlabel.h"
#include "kslplatform/TPlatformLoader.h"
#include "vendelo-sdl2/MyUtils.h"
#include "vendelo-sdl2/TApplication.h"
#include "vesperatopscreen/PlatformPicture.h"
#include "vesperatopscreen/TInstructionsPanel.h"
#include "vesperatopscreen/TJackpotsPanel.h"
#include "vesperatopscreen/TPaytablesPanel.h"

using namespace vendelo_sdl2;

TopScreenScreen::TopScreenScreen()
  : pJackpotsPanel(nullptr),
    pPaytablesPanel(nullptr),
    pInstructionsPanel(nullptr),
    pBackground(nullptr),
    pDemoBackground(nullptr),
    DefaultBackground(nullptr),
    DemoBackground(nullptr),
    plFPS(nullptr),
    plRealFPS(nullptr),
    pFont(nullptr),
    mpInfo(nullptr) {}

TopScreenScreen::~TopScreenScreen() {
  if (!pApp) return;
  pApp->UnregisterAllActionHandlersByRelatedObject(this, true);
  pApp->RemoveTimedTasksOf(this);
}

int TopScreenScreen::Load(void*) {
  pApp->SetParam<int>("ScreenW", 1920, PARAM_CACHE, "", "", false);
  pApp->SetParam<int>("ScreenH", 1080, PARAM_CACHE, "", "", false);
  const int w = static_cast<int>(pApp->GetParam("ScreenW", PARAM_MASK_ALL)->AsInteger(0));
  const int h = static_cast<int>(pApp->GetParam("ScreenH", PARAM_MASK_ALL)->AsInteger(0));

  selected_screen = 2;
  int index = -1;
  const SDL_Rect bounds = GetScreenBounds(&index);
  if (selected_screen - 1 != index)
    pApp->WriteLog(5, 0, "ERROR: Cannot find the second screen..moving top screen to display %d!!!", index);
  if (CreateWindow("TopScreen", 0, 0, w, h, SDL_WINDOW_OPENGL | SDL_WINDOW_BORDERLESS, -1,
                   SDL_RENDERER_ACCELERATED | SDL_RENDERER_TARGETTEXTURE, 0) != 0) {
    std::printf("Unable to set %dx%d video: %s\n", w, h, SDL_GetError());
    return -1;
  }
  if (bounds.w != 0 && bounds.h != 0) {
    SDL_SetWindowPosition(getWindow(), bounds.x, bounds.y);
    SDL_SetWindowSize(getWindow(), bounds.w, bounds.h);
    RefreshSize();
  }
  loadContents(w, h);
  return 0;
}

void TopScreenScreen::loadContents(int w, int h) {
  const std::string fontFile = pApp->GetParam("WorkingDir", PARAM_MASK_ALL)->AsString() + "/AppFontBold.ttf";
  pFont = TTF_OpenFont(fontFile.c_str(), 34);
  if (!pFont) pApp->WriteLog(4, 0, "Font %s is not usable: %s.", fontFile.c_str(), TTF_GetError());
  DefaultBackground = MyUtils::GetTexture(GetRenderer(), "Background.png");
  DemoBackground = MyUtils::GetTexture(GetRenderer(), "ClientDemo.png");
  SDL_SetTextureBlendMode(DefaultBackground, SDL_BLENDMODE_NONE);
  SDL_SetTextureBlendMode(DemoBackground, SDL_BLENDMODE_BLEND);

  buildComponents(GetRenderer(), w, h);
  pJackpotsPanel->loadAhead();

  SetLoader(new TPlatformLoader(GetRenderer(), 0, 0, w, h, "KSL loader"));
  static_cast<TPlatformLoader*>(Loader())->SetDisplayMessage("Waiting for KSL connection...");

  const auto listen = [this](const char* action, void (TopScreenScreen::*operation)()) {
    pApp->AddActionListener(
      action, new TahMember<TopScreenScreen, void>(this, operation, TActionHandler::ahtExecuteEndless),
      ACTION_DRAW);
  };
  listen("ShowFPS", &TopScreenScreen::ShowFPS);
  listen("PaytableLoaded", &TopScreenScreen::onPaytableLoaded);
  pApp->AddTimedTask(
    new TtthMember<TopScreenScreen, int>(this, &TopScreenScreen::UpdateGraphics, 1000, TTimedTaskHandler::ENDLESS,
                                         "TopScreenScreen::UpdateGraphics, 1000"),
    TASK_DRAW);
}

void TopScreenScreen::buildComponents(SDL_Renderer* renderer, int w, int h) {
  pBackground = AddComponent(new TGuiComponent(renderer, 0, 0, w, h, "pBackground"));
  pBackground->SetTargetTexture(DefaultBackground);
  // Visible until the platform has spoken of the demo mode for the first time.
  pDemoBackground = AddComponent(new TGuiComponent(renderer, 0, 0, w, h, "pDemoBackground"));
  pDemoBackground->SetTargetTexture(DemoBackground);

  pJackpotsPanel = new TJackpotsPanel(renderer, 0, 0, w, h, "pJackpotsPanel");
  AddComponent(pJackpotsPanel);
  pJackpotsPanel->Show();
  pInstructionsPanel = new TInstructionsPanel(renderer, 0, 0, w, h, "pInstructionsPanel");
  AddComponent(pInstructionsPanel);
  pInstructionsPanel->Hide();
  pPaytablesPanel = new TPaytablesPanel(renderer, 0, 0, w, h, "pPaytablesPanel");
  AddComponent(pPaytablesPanel);
  pPaytablesPanel->Hide();

  const SDL_Color red = {240, 15, 15, 255};
  plFPS = new Tlabel(renderer, 10, 10, 200, 16, "", pFont, red, "plFPS");
  AddComponent(plFPS);
  plFPS->Hide();
  plRealFPS = new Tlabel(renderer, 10, 50, 300, 16, "", pFont, red, "plRealFPS");
  AddComponent(plRealFPS);
  plRealFPS->Hide();

  mpInfo = new TGlyphLabel(renderer, 0, h - 50, w, 25,
                           "Select bet per line with BET+/- and press SPIN button to start new game.",
                           MyUtils::ImageDir() + "Fonts/uni_font", "infoLabel");
  mpInfo->SetAlignment(CENTER_CENTER);
  mpInfo->_setVisible(false);
  mpInfo->SetResizeOnlyDown(true);
  AddComponent(mpInfo);
}

int TopScreenScreen::Unload() {
  if (pFont) TTF_CloseFont(pFont);
  pFont = nullptr;
  DestroyWindow();
  return 0;
}

void TopScreenScreen::crossFade(TGuiComponent* shown, std::initializer_list<TGuiComponent*> hidden) {
  if (shown && (!shown->isVisible() || shown->isFadingOut())) shown->fadeIn();
  for (TGuiComponent* panel : hidden)
    if (panel && panel->isVisible()) panel->fadeOut();
}

void TopScreenScreen::ShowJackpotsPanel() {
  auto& state = platformState();
  ScopedLock lock(state);
  crossFade(pJackpotsPanel, {pPaytablesPanel, pInstructionsPanel});
  mShownPanel = "jackpots";
  const GameTypes type = state->ActiveGame.type;
  const bool inGame = type != GAMETYPE_MENU && type != GAMETYPE_NULL_TYPE;
  if (pJackpotsPanel) pJackpotsPanel->OnShowOverlays(inGame ? state->ActiveGame.name : std::string());
  if (mpInfo) mpInfo->_setVisible(inGame && !state->JackpotData.empty());
}

void TopScreenScreen::ShowPaytablesPanel() {
  crossFade(pPaytablesPanel, {pInstructionsPanel, pJackpotsPanel});
  mShownPanel = "paytable";
  if (mpInfo) mpInfo->_setVisible(true);
}

// The action takes a pass of the main loop, in which the paytable may have been closed.
void TopScreenScreen::onPaytableLoaded() {
  if (!pPaytablesPanel || !pPaytablesPanel->isFadeInOnItsWay()) return ShowPaytablesPanel();
  // A draw action does not take the state: the next frame's deferred work asks it.
  pApp->DeferToDraw(
    [this] {
      if (pPaytablesPanel && pPaytablesPanel->fadeInIsDue()) ShowPaytablesPanel();
    },
    true);
}

void TopScreenScreen::ShowInstructionsPanel() {
  crossFade(pInstructionsPanel, {pPaytablesPanel, pJackpotsPanel});
  mShownPanel = "instructions";
}

void TopScreenScreen::UpdatePaytablesPanel(bool fadeInAfterLoad) {
  pApp->DeferToDraw(
    [this, fadeInAfterLoad] {
      if (pPaytablesPanel && pPaytablesPanel->UpdateData(fadeInAfterLoad) == 0) ShowPaytablesPanel();
    },
    false);
}

int TopScreenScreen::UpdateInstructionsPanel() {
  if (!pInstructionsPanel) return -1;
  pApp->DeferToDraw([this] { pInstructionsPanel->UpdateData(); }, false);
  return 0;
}

bool TopScreenScreen::isJackpotPanelVisible() const { return pJackpotsPanel && pJackpotsPanel->isVisible(); }

void TopScreenScreen::ClearPaytablesPanel() {
  if (pPaytablesPanel) pPaytablesPanel->clearPaytable();
}

void TopScreenScreen::ClearJackpotOverlay() {
  if (pJackpotsPanel) pJackpotsPanel->ClearOverlay();
}

int TopScreenScreen::UpdateJackpotPanel(const std::vector<JackpotsData>& jackpotData,
                                        const std::string& jackpotError) {
  return pJackpotsPanel ? pJackpotsPanel->UpdateData(jackpotData, jackpotError) : -1;
}

void TopScreenScreen::UpdateLanguage(const std::vector<std::string>& messages) {
  if (messages.size() < 4)
    pApp->WriteLog(4, 0, "The platform sent %d language messages, 4 are needed: the hint line stays.",
                   static_cast<int>(messages.size()));
  else if (mpInfo)
    mpInfo->SetText(messages[3]);
  if (pPaytablesPanel) pPaytablesPanel->UpdateLanguage(messages);
}

void TopScreenScreen::SetDemoMode(int demoMode) {
  if (pDemoBackground) pDemoBackground->_setVisible(demoMode != 0);
}

void TopScreenScreen::SetIntegrityCheckData(const std::string& data) {
  if (pJackpotsPanel) pJackpotsPanel->SetIntegrityCheckData(data);
  if (pInstructionsPanel) pInstructionsPanel->SetIntegrityCheckData(data);
}

int TopScreenScreen::UpdateGraphics() {
  // Into a string that keeps its memory: this runs on the draw thread, every second, shown or not.
  char text[32];
  auto show = [&](Tlabel* label) {
    mFpsText.assign(text);
    label->SetText(mFpsText);
  };
  if (plFPS) {
    std::snprintf(text, sizeof text, "Loop freq.: %d", pApp->CurrentFrequency());
    show(plFPS);
  }
  if (plRealFPS) {
    float noVsync = 0;
    const float fps = getFPS(&noVsync);
    std::snprintf(text, sizeof text, "FPS: %03.1f (%03.1f)", fps, noVsync);
    show(plRealFPS);
  }
  return 0;
}

void TopScreenScreen::ShowFPS() {
  for (Tlabel* label : {plFPS, plRealFPS}) {
    if (!label) continue;
    if (label->isVisible())
      label->Hide();
    else
      label->Show();
  }
}
