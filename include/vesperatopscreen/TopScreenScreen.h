#pragma once

#include <SDL.h>
#include <SDL_ttf.h>
#include <atomic>
#include <initializer_list>
#include <string>
#include <vector>

#include "common/TKSLReturnStructures.h"
#include "vendelo-sdl2/TAppGuiModule.h"

class TGlyphLabel;
class TInstructionsPanel;
class TJackpotsPanel;
class TPaytablesPanel;
class Tlabel;

// The program's one GUI module: the window on the second display, the backgrounds, the component tree in its fixed
// order from back to front, and the few operations with which the application changes what is shown.
// Load, the Show... operations, UpdateGraphics and ShowFPS run on the draw thread; the others on the main thread in
// the logic part of a pass, which excludes a frame. All places are pixels of the 1920 by 1080 screen.
// Owns its textures through the image cache and its components through the tree. When the window could not be made
// no component exists, and every operation does nothing.
class TopScreenScreen : public vendelo_sdl2::TAppGuiModule {
 public:
  TopScreenScreen();
  ~TopScreenScreen() override;

  // 0, or -1 when the window could not be made.
  int Load(void* data) override;
  int Unload() override;

  // Each fades its panel in unless that is shown, and the visible others out. A panel that is just fading out comes
  // back from the alpha that it has. The jackpot panel also gets the overlay of the game in play.
  void ShowJackpotsPanel();
  void ShowPaytablesPanel();
  void ShowInstructionsPanel();
  // Queues the update for the draw thread; the panel is shown when its page stands.
  void UpdatePaytablesPanel(bool fadeInAfterLoad);
  // Queues the update for the draw thread; 0, or -1 without a panel.
  int UpdateInstructionsPanel();
  bool isJackpotPanelVisible() const;
  // "jackpots", "paytable" or "instructions": the panel that was asked for last. Any thread.
  const char* shownPanel() const { return mShownPanel; }
  // Draw thread. Lets go of the paytable's pages and texts.
  void ClearPaytablesPanel();
  // -1 without a panel, else what the panel's update returned.
  int UpdateJackpotPanel(const std::vector<JackpotsData>& jackpotData, const std::string& jackpotError);
  void ClearJackpotOverlay();
  // Takes the hint line's text, the fourth of the list. With a shorter list
  // the line stays, which is logged. The paytables get the list in any case.
  void UpdateLanguage(const std::vector<std::string>& messages);
  // Shows or hides the demo background at once, without a fade.
  void SetDemoMode(int demoMode);
  void SetIntegrityCheckData(const std::string& data);
  // Refreshes the texts of the frequency labels; 0.
  virtual int UpdateGraphics();
  // Toggles the frequency labels.
  void ShowFPS();

 protected:
  // Everything but the window: font, backgrounds, components, loader, action and task. Draw thread, once, with a
  // renderer.
  void loadContents(int w, int h);
  void buildComponents(SDL_Renderer* renderer, int w, int h);
  void onPaytableLoaded();
  void crossFade(vendelo_sdl2::TGuiComponent* shown, std::initializer_list<vendelo_sdl2::TGuiComponent*> hidden);

  TJackpotsPanel* pJackpotsPanel;
  TPaytablesPanel* pPaytablesPanel;
  TInstructionsPanel* pInstructionsPanel;
  vendelo_sdl2::TGuiComponent* pBackground;
  vendelo_sdl2::TGuiComponent* pDemoBackground;
  SDL_Texture* DefaultBackground;
  SDL_Texture* DemoBackground;
  Tlabel* plFPS;
  Tlabel* plRealFPS;
  TTF_Font* pFont;
  TGlyphLabel* mpInfo;   // the hint to the player, near the bottom edge
  std::string mFpsText;  // keeps its memory from second to second
  std::atomic<const char*> mShownPanel{"jackpots"};
};
