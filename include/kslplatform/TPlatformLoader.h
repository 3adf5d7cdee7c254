#pragma once

#include <SDL.h>
#include <SDL_ttf.h>
#include <string>

#include "vendelo-sdl2/TGuiComponent.h"

class Tlabel;

// The splash panel that stands on the screen until the application runs: seven dots circling around the middle, a
// logo above them and one status line. Draw thread; SetDisplayMessage and SetBehavior only store, for the main
// thread under the draw mutex. The motion comes from the tick clock alone. Radii in pixels, angles in turns.
// Its images belong to the image cache, the status line is a child; the font stays open. A missing image is simply
// not drawn.
class TPlatformLoader : public vendelo_sdl2::TGuiComponent {
 public:
  // FIXED: the status line shows the text that was set. TAKE_LAST_LOG: it follows the log.
  enum ELoaderInfoLabelBehavior { FIXED = 0, TAKE_LAST_LOG = 1 };

  // Loads its images and the font from the image directory.
  TPlatformLoader(SDL_Renderer* pRenderer, int x, int y, int w, int h, std::string name);
  ~TPlatformLoader() override;

  // Moves the dots. The base's logic is not run: no fade reaches this panel.
  void drawLogic() override;
  void draw() override;

  void SetDisplayMessage(const std::string& message);
  void SetBehavior(ELoaderInfoLabelBehavior behavior);

 protected:
  bool bUseShadow;
  bool bShowLogo;
  float mAngle;  // phase of the first dot; hides the rotation of the base, which stays 0
  float mRadius;
  SDL_Texture* mDotTexture;
  SDL_Texture* mDotShadowTexture;
  SDL_Texture* mLogoTexture;
  Tlabel* mStatusLabel;
  TTF_Font* mFont = nullptr;  // of the status label; owned here
  ELoaderInfoLabelBehavior mBehaviorMode;
  int dotSize;
  int dotShadowSize;

 private:
  void drawAround(SDL_Texture* texture, int size, float angle);
};
