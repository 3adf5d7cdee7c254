#pragma once

#include <SDL.h>
#include <string>

#include "vendelo-sdl2/TGuiComponent.h"
#include "vendelo-sdl2/TTexturePtr.h"

// Shows a level from 0 to 100 as two images side by side, with a smooth approach to its target that goes by frames,
// not by the clock. Loading and drawing on the draw thread; the setters of the level under the draw mutex. Pixels
// of the screen. Owns both images; one that cannot be loaded leaves its part undrawn.
class TProgressBar : public vendelo_sdl2::TGuiComponent {
 public:
  TProgressBar(SDL_Renderer* Render, int x, int y, int width, int height, std::string ComponentName);
  ~TProgressBar() override;

  void SetEmptyImage(std::string file);
  // The full image gives the bar its size.
  void SetFullImage(std::string file);
  // Takes the texture over.
  void SetFullImage(SDL_Texture* texture);

  // With Animate the bar runs to the level, limited to 0 to 100. Without, the level is shown as it is, and the next
  // frames run back to the old target.
  void SetPosition(int iPosition, bool Animate);
  // No effect.
  void SetMax(int max);
  void SetRunToLeft();
  void SetRunToRight();
  // The step of one frame.
  void AnimateTask();

  void draw() override;

 protected:
  int blinkTreshold;
  bool AnimateFullUp;
  int widthON;
  Uint32 blikTimestamp;
  bool _blinkParameter;
  double mStep;
  double mCurrentPos;
  int mTargetPos;
  int Orientation;
  vendelo_sdl2::TTexturePtr mpEmptyImage;
  vendelo_sdl2::TTexturePtr mpFullImage;
  int mTextureBarW;
  int mTextureBarH;
  SDL_Rect SourceRectEmpty;
  SDL_Rect OutputRectEmpty;
  SDL_Rect SourceRectFull;
  SDL_Rect OutputRectFull;
  int mPrevX;
  int mPrevY;

 private:
  struct Part;
  void drawParts(const Part& leading, const Part& following, int shiftX, int shiftY);
};
