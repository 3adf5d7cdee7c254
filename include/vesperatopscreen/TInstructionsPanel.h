#pragma once

#include <SDL.h>
#include <string>

#include "vendelo-sdl2/TGuiComponent.h"
#include "vendelo-sdl2/TTexturePtr.h"

class TGlyphLabel;

// What the cabinet's eight buttons do: a row of button pictures with a text in each and a caption beneath, shown
// while no game runs. Draw thread; UpdateData reads the application's state under its lock. Places in pixels of the
// 1920 by 1080 panel. The tree owns the rows, which are found by name; the two button pictures are shared by all
// rows and owned here.
class TInstructionsPanel : public vendelo_sdl2::TGuiComponent {
 public:
  TInstructionsPanel(SDL_Renderer* pRenderer, int x, int y, int width, int height, std::string ComponentName);
  ~TInstructionsPanel() override;

  // Builds the rows; 0.
  int load() override;
  void draw() override;

  // Takes the texts of the platform's state; an empty text shows the disabled button, rows without a text stay. 0.
  int UpdateData();
  // The label is visible exactly when there is a text; the rows stay.
  void SetIntegrityCheckData(const std::string& data);

 private:
  TGlyphLabel* mIntegrityLabel;
  vendelo_sdl2::TTexturePtr mButtonEnabled;
  vendelo_sdl2::TTexturePtr mButtonDisabled;
};
