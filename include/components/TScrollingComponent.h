#pragma once

#include <SDL.h>
#include <cstdint>
#include <string>
#include <vector>

#include "vendelo-sdl2/TGuiComponent.h"
#include "vendelo-sdl2/TTexturePtr.h"

// A ticker: a horizontal strip of children that waits on each child and slides on to the next, endlessly. The strip
// goes through a texture of its own, which clips it to the rectangle; children that stay inside of their own
// rectangles have a texture each instead, which is drawn once and then only moves. Either way it is the same
// picture. Its place is computed anew from the clock at each frame, so a ticker that was hidden goes on where the
// clock says, also after the clock has come round (every 49.7 days; of the rounds of a ticker that is hidden all
// the while nothing is known). Drawing on the draw thread; contents and setters for the owner under the draw mutex.
// Times in milliseconds of the tick clock. Owns its children, and its texture. A width, speed or total of zero
// means no slide.
class TScrollingComponent : public vendelo_sdl2::TGuiComponent {
 public:
  enum ContentAlign { CENTER = 0, TOP = 1, BOTTOM = 2 };
  struct Content {
    vendelo_sdl2::TGuiComponent* component;
    ContentAlign alignment;
  };

  TScrollingComponent(SDL_Renderer* pRenderer, int x, int y, int width, int height, std::string ComponentName);
  ~TScrollingComponent() override;

  // Takes the child over and puts it before the one at the index, or at the end for an index outside. The child's
  // parent becomes null: its coordinates are those of the ticker's texture. A child that the base refuses (null, or
  // a name that is there already) stays the caller's and is not added.
  void AddContent(vendelo_sdl2::TGuiComponent* content, int index, ContentAlign alignment);
  // Deletes all children.
  void RemoveAllContents();
  // The child at a place of the strip, null outside.
  vendelo_sdl2::TGuiComponent* ContentAt(int index) const;
  // The same as a given type, null when it is of another.
  template <class T>
  T* ContentAt(int index) const {
    return dynamic_cast<T*>(ContentAt(index));
  }
  int NumberOfChildren() const;

  // Percent of the own width a second; the sign gives the direction, negative to the left.
  void SetScrollSpeedRelative(float speed);
  // Pixels a second.
  void SetScrollSpeedFixed(float speed);
  void SetSpacingFixed(float spacing);
  // Percent of the own width.
  void SetSpacingRelative(float spacing);
  void SetPadding(int padding);
  // Easing of the slide, from the part of the slide done and the slide's duration in seconds.
  void SetMovementFunction(float (*function)(float, float));
  // Shows or hides the ticker and all its children, without the hooks.
  void SetVisible(bool visible);
  // Seconds of wait on each child, negative for no scrolling. While the ticker runs, the change waits for the end
  // of the present loop, so that the strip does not jump.
  void SetWaitDuration(float seconds);

  void draw() override;
  void OnTexturesLost() override;

 protected:
  float mSpacing;
  bool mIsRelativeSpacing;
  int mPadding;
  long mScrollDuration;
  long mWaitDuration;
  long mWaitChange;
  Uint32 mWaitChangeAt;
  Uint32 mFirstDraw;
  std::vector<Content> mpContent;
  float (*fMovementFunction)(float, float);

 private:
  double currentSpacing() const;
  // Milliseconds since mFirstDraw, the rounds of the clock included.
  uint64_t elapsedAt(Uint32 now) const;
  // Pixels by which the strip stands away from its start at a tick; 0 for a ticker that does not scroll.
  double slideOffset(Uint32 now) const;
  // Calls `visit` for each child that stands in the strip at this offset, after it has got its place.
  template <class Visit>
  void walkStrip(double offset, Visit visit);
  void drawStrip(double offset, const SDL_Rect& destRect);
  void drawSlides(double offset, const SDL_Rect& destRect);
  // Whether each child can be drawn by itself, and none lies over another one.
  bool hasSlides();
  // Null when there is no memory for it.
  SDL_Texture* slideOf(vendelo_sdl2::TGuiComponent* child);

  // A child's own picture.
  struct Slide {
    const vendelo_sdl2::TGuiComponent* child;
    SDL_Point size;
    vendelo_sdl2::TTexturePtr layer;
  };

  vendelo_sdl2::TTexturePtr mpStrip;  // the target texture
  std::vector<Slide> mSlides;
  // What the last draw saw: its tick, the mFirstDraw of that time, and how long ago that was.
  Uint32 mSeenAt = 0;
  Uint32 mSeenFirstDraw = 0;
  uint64_t mSeenElapsed = 0;
};
