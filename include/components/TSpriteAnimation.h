#pragma once

#include <SDL.h>
#include <atomic>
#include <memory>
#include <string>
#include <vector>

#include "vendelo-sdl2/TGuiComponent.h"
#include "vendelo-sdl2/TTexturePtr.h"

// One frame of an animation. The loader thread hands the surface over by the atomic pointer, null until it is
// ready; everything else belongs to the draw thread, or is written before the loader starts. Owns texture and
// surface.
struct TSprite {
  int id = 0;
  int x = 0, y = 0;              // place in the atlas
  int width = 0, height = 0;     // size in the atlas
  int xoffset = 0, yoffset = 0;  // of the trimmed image in the frame
  double xpivot = 0, ypivot = 0;
  int original_width = 0, original_height = 0;  // before trimming
  bool rotate = false;                          // stored turned
  vendelo_sdl2::TTexturePtr texture;
  std::atomic<SDL_Surface*> surface{nullptr};
  // The earlier frame of the same place in the atlas: that one holds the texture and the surface of both.
  std::shared_ptr<TSprite> same;

  TSprite() = default;
  TSprite(const TSprite&) = delete;
  TSprite& operator=(const TSprite&) = delete;
  ~TSprite();
};

// Plays a sequence of frames cut from one image: a texture atlas described in XML, cut by a thread in the
// background, or a PNG strip, cut at once. Frames become textures when they are first shown. The rate is
// independent of the display's: frames are skipped, not queued. Draw thread; the counters also under the draw
// mutex. draw never waits for the loader; SetFrame, GetFrame, drawFrame, CopyData and the destructor do. Frames may
// be shared between animations. A missing or broken file gives an animation of no frames, an image that cannot be
// loaded gives frames that show nothing; both are reported.
class TSpriteAnimation : public vendelo_sdl2::TGuiComponent {
 public:
  // NONE follows the frame set with SetFrame.
  enum TAnimationMode { NONE = 0, LOOP = 1, ONCE = 2 };

  // spriteFilename: a PNG strip of frames of width by height when it contains ".png", otherwise the atlas
  // "<spriteFilename>.xml", or nothing when it is empty.
  TSpriteAnimation(SDL_Renderer* pRenderer, int x, int y, int width, int height, const std::string& spriteFilename,
                   TAnimationMode mode, std::string ComponentName);
  ~TSpriteAnimation() override;

  // Shares the frames of another animation, with its size, loop marks and blend mode. The other's loader may still
  // run: frames that are not cut yet show nothing.
  void CopyData(TSpriteAnimation* source);
  // A new texture (the caller's) with the frame at its original size; null for a bad index.
  SDL_Texture* GetFrame(int frame_id);
  // Draws one frame at a place, whatever the counters say; nothing when the component is invisible.
  void drawFrame(int frame_id, SDL_Rect destRect);

  // The frame to go to, or with animate false to be at; limited to the frames there are.
  void SetFrame(int frame, bool animate);
  // The same by the part of the animation, 0 to 1.
  void SetFrame(float percentOfAnimation, bool animate);
  // Back to the first frame and to the size as it is.
  void ResetAnimation();
  // The same, with the tick of the start.
  void ResetAnimation(Uint32 lastRefresh);
  bool FinishPlaying() const;

  void SetOffset(int x, int y);
  void SetResizeFactor(double x, double y);
  // Frames a second.
  void SetRefreshRate(float rate);
  void SetLoopStartFrame(int frame);
  void SetLoopStopFrame(int frame);
  void HideAfterEnd();
  bool IsVisible() const;
  int GetNumFrames() const;
  int GetCurrentFrame() const;
  int GetOriginalWidth() const;
  int GetOriginalHeight() const;
  void SetPos(int x, int y);
  void ReverseOrder();

  void draw() override;

 protected:
  SDL_Rect mRect;
  TAnimationMode mAnimationMode;
  std::string mBlendMode;
  int mDrawXOfset;
  int mDrawYOfset;
  SDL_Point mRotPivot;
  double mResizeFactorX;
  double mResizeFactorY;
  bool mResize;
  bool mPlayed;
  bool mHideAfterEnd;
  Uint32 mLastRefresh;
  float mRefreshRate;
  float mBuffer;
  int mCurrentFrame;
  int mDestinationFrame;
  int mLoopStartFrame;
  int mLoopStopFrame;
  int mOriginalWidth;
  int mOriginalHeight;
  SDL_Color mBackgroundColor;
  std::string mFileName;
  SDL_Thread* mLoadThread;
  SDL_semaphore* mLoadFinished;
  std::vector<std::shared_ptr<TSprite>> mSprites;  // not changed while the loader runs

 private:
  static int loadSpirtesThread(void* ptr);
  void parseXML(const std::string& spriteFilenameXML);
  void parsePNG(const std::string& spriteFilenamePNG);
  void joinLoader();
  bool validFrame(int frame) const;
  void stepFrames(Uint32 now);
  // In a texture memory of its own a sequence of full-screen frames would fill it: there the one that is shown is a
  // texture, the others are surfaces. Null: none is.
  void showFullScreen(const std::shared_ptr<TSprite>& sprite);
  // Makes the texture of a frame, or of the one that holds its picture, at its first use; null when there is
  // nothing to show. The surface goes, unless it is to be kept.
  SDL_Texture* textureOf(TSprite& sprite, bool keepsSurface) const;
  void drawSprite(const TSprite& sprite, SDL_Texture* texture, SDL_Rect destRect);

  std::shared_ptr<TSprite> mpFullScreen;
};
