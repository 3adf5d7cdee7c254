#pragma once

#include <SDL.h>
#include <string>
#include <vector>

#include "vendelo-sdl2/TGuiComponent.h"

namespace vendelo_sdl2 {
class TTimedTaskHandler;
}

// Shows one image out of a list of textures, chosen by index, with an optional second "data" texture under it, an
// optional proportional fit into its rectangle and an optional slide in from a screen edge with a timed slide out.
// Draw thread only, unless an operation says otherwise. Times in milliseconds of the tick clock, places in pixels
// relative to the parent. The textures are not owned, nor is a vector given with setImages; both must outlive
// their use here. A null texture shows nothing, and so does an index outside the vector.
class TImageList : public vendelo_sdl2::TGuiComponent {
 public:
  // The direction in which the image moves when it slides in: LEFT comes from the right edge of the screen.
  enum TAnimationDirection { LEFT = 0, RIGHT = 1, UP = 2, DOWN = 3 };
  // The side on which a fitted image stands; hides the nine-point alignment of the toolkit.
  enum TAlignment { ALEFT = 0, ARIGHT = 1, AUP = 2, ADOWN = 3 };

  TImageList(SDL_Renderer* pRenderer, int x, int y, int w, int h, std::string ComponentName);
  // Takes this component's tasks out of the application; leaves the textures alone.
  ~TImageList() override;

  // Appends the file as a texture, a null one when it cannot be loaded. An empty name or a missing renderer prints
  // a line and appends nothing. The texture is the caller's: getImages tells it.
  void LoadImage(std::string imageName);
  void pushImage(SDL_Texture* image);
  // Uses the caller's vector from now on, also for pushImage and LoadImage; null goes back to the own one.
  void setImages(std::vector<SDL_Texture*>* images);
  std::vector<SDL_Texture*>* getImages() const;
  int getCurrentImageIndex() const;

  // Selects an image; the index shown already, and one above the vector's size, change nothing. An index without
  // an entry (-1 first of all) clears the image. In slide mode with a time above 0 the slide in begins, and the
  // image rests for that time. Ends the process when it is not called on the draw thread.
  void DisplayImage(int imageNumber, Uint32 time);
  // The same with a second texture (not owned) under the image, at an offset from it; no thread check.
  void DisplayImage(int imageNumber, Uint32 time, SDL_Texture* data, int offset_x, int offset_y);

  // Scales the image down, never up, so that it fits the rectangle with its proportions.
  void SetFitProportionally(bool fit, TImageList::TAlignment alignment);
  // Turns the slide mode on; the present place becomes the resting place. Moves nothing by itself.
  void SetAnimation(TAnimationDirection direction);
  // Out of slide mode the base's Hide. In slide mode jumps to the resting place and slides out; the end of the
  // slide clears the image, and the component stays visible.
  void Hide();
  // Milliseconds at rest before the slide out, from the next rest on.
  void SetAnimationInterval(int interval);
  void SetResizeFactor(double x, double y);
  // One step of the slide; the body of the timed task.
  void AnimateTask();

  void draw() override;

 protected:
  int current_image_index;
  Uint32 mTimeUntilHide;
  TAnimationDirection mDirection;
  vendelo_sdl2::TTimedTaskHandler* pAniTask;  // owned by the task manager
  bool mAnimationEnabled;
  bool mIsShowing;
  SDL_Rect mAnimationDestRect;
  SDL_Rect mAnimationStartRect;
  SDL_Texture* mpDataTexture;
  int mDataOffsetX;
  int mDataOffsetY;
  float mResizeFactorX;
  float mResizeFactorY;
  std::vector<SDL_Texture*> Images;
  std::vector<SDL_Texture*>* pImages;
  TImageList::TAlignment mAlignment;
  bool mFitProportionally;

 private:
  // Both forms of DisplayImage; withData tells whether the data texture is stored and cleared too.
  void select(int imageNumber, Uint32 time, bool withData, SDL_Texture* data, int offset_x, int offset_y);
  void startAniTask();
  void drawImage();
};
