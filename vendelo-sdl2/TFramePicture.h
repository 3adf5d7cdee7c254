#pragma once

#include <SDL.h>
#include <cstdint>
#include <vector>

#include "vendelo-sdl2/TDirtyRects.h"
#include "vendelo-sdl2/TDrawCommand.h"
#include "vendelo-sdl2/TTexturePtr.h"

namespace vendelo_sdl2 {

// Brings a picture up to date by drawing only what has changed: it keeps what a frame draws, compares it with what
// the last frame drew, and carries out only what touches the difference. The picture is then, pixel for pixel, what
// drawing everything would have made of it.
// What is drawn into other textures in the meantime (texts, lines that scroll) is compared likewise, each by
// itself: a texture that would become what it is already is left alone, and keeps its content's number. Where a
// texture that this frame has drawn from is drawn into afterwards, the frame is carried out as it stands and is
// drawn whole. Takes no memory from the heap but for more commands than ever before. Draw thread.
class TFramePicture {
 public:
  TFramePicture();
  ~TFramePicture();
  TFramePicture(const TFramePicture&) = delete;
  TFramePicture& operator=(const TFramePicture&) = delete;

  // From now until finish() the calls of drawing:: for this renderer come here; the picture (null is the window,
  // which must keep what is drawn into it) is their target at first, cleared in the draw colour. A frame that was
  // begun and never finished is forgotten. The picture of one that is drawn as it comes is drawn whole, call by
  // call, and only what is drawn into other textures is compared.
  void begin(SDL_Renderer* renderer, SDL_Texture* picture, bool asItComes = false);
  // Draws what has changed, or all of it. The result is the parts of the picture that may be other than before, in
  // its pixels; the whole of it where that has been drawn anew. The picture is the target again. It holds until the
  // next begin().
  const TDirtyRects& finish(bool whole);
  // As finish() has told it.
  const TDirtyRects& changed() const { return mChanged; }
  // The picture has been drawn into by others, or is another one, or what is drawn into textures is lost. Not
  // within a frame.
  void forget();
  // Before the renderer goes.
  void end();

  SDL_Renderer* renderer() const { return mpRenderer; }
  SDL_Texture* target() const { return mpTarget; }
  void setTarget(SDL_Texture* texture);
  void clear();
  void copy(SDL_Texture* texture, const SDL_Rect* source, const SDL_Rect* destination, double angle,
            const SDL_Point* centre, SDL_RendererFlip flip);
  // True when this frame has to draw from the texture yet: it is destroyed at the frame's end then.
  bool keeps(SDL_Texture* texture);

 private:
  using TCommands = std::vector<TDrawCommand>;

  SDL_Renderer* mpRenderer = nullptr;
  SDL_Texture* mpPicture = nullptr;
  SDL_Rect mSize{0, 0, 0, 0};  // of the picture, from 0, 0
  bool mScalesByParts = true;  // whether a part of a scaled copy looks as in the whole
  SDL_Texture* mpTarget = nullptr;
  SDL_Rect mTargetSize{0, 0, 0, 0};
  TCommands mFrame, mLastFrame;  // what is drawn into the picture
  TCommands mLayer;              // what is drawn into mpTarget, where that is not the picture
  std::vector<SDL_Texture*> mDying;
  bool mKnown = false;       // the picture is what mLastFrame draws
  bool mCarriedOut = false;  // this frame is drawn as it comes
  // A large picture that is scaled is scaled into one of these first (without and with alpha), as SDL's software
  // driver does by itself with one that it takes from the system and gives back each time.
  struct TScaled {
    TTexturePtr texture;
    bool isUsed = false;  // in this frame
    int framesUnused = 0;
  };
  TScaled mScaled[2];
  // What would be drawn if its alpha were not 0, in this frame and in the last one.
  std::vector<uint64_t> mUnseen, mLastUnseen;
  TDrawCommand mClear;  // of the picture, put off until it is known that it can be seen
  bool mClearDue = false;
  TDirtyRects mChanged;

  void record(const TDrawCommand& command);
  void finishLayer();
  uint64_t layersInk() const;
  void carryOut();
  void findChanges();
  void keepScaledWhole();
  void draw(const SDL_Rect& rect);
  void issue(const TDrawCommand& command) const;
  void issueAll(const TCommands& commands, SDL_Texture* target) const;
  // Notes it, too.
  bool isNewlyUnseen(const TDrawCommand& command);
  TScaled* scaleBefore(TDrawCommand& command);
  void clearIfSeen(const TDrawCommand* next);
  void destroyDying();
};

}  // namespace vendelo_sdl2
