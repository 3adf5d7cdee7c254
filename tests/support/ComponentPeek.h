#pragma once

#include <cmath>
#include <string>
#include <vector>

#include "common/TBitmapFont.h"
#include "components/TControlCyphers3.h"
#include "components/TGlyphLabel.h"
#include "components/TImageList.h"
#include "components/TProgressBar.h"
#include "components/TScrollingComponent.h"
#include "components/TSpriteAnimation.h"

// What a panel has set on its components, without a way round over pixels. Draw thread.
namespace peek {

using vendelo_sdl2::TComponentList;
using vendelo_sdl2::TGuiComponent;

struct Component : TGuiComponent {
  // The place relative to the parent, whether it has been drawn or not, and the size.
  static SDL_Rect place(TGuiComponent& c) {
    const SDL_Rect rect = c.getDestRect();
    return {c.*(&Component::mOrigPosX), c.*(&Component::mOrigPosY), rect.w, rect.h};
  }
  // Names of the children, rear-most first.
  static std::vector<std::string> children(TGuiComponent& c) {
    std::vector<std::string> names;
    for (TComponentList::Walk walk(c.*(&Component::GuiComponentList)); TGuiComponent* child = walk.next();)
      names.push_back(child->getName());
    return names;
  }
};

struct Label : TGlyphLabel {
  // "<font> <alignment> <fit>", the font's path without the folder.
  static std::string look(const TGlyphLabel& l, const std::string& folder) {
    const TBitmapFont* font = l.Font();
    std::string text = font ? font->Name() : "no font";
    if (text.rfind(folder, 0) == 0) text.erase(0, folder.size());
    text += " " + std::to_string(l.*(&Label::mAlign));
    if (l.*(&Label::mResizeOnlyDown)) return text + " shrinks";
    if (l.*(&Label::mResize)) return text + " fits";
    if (l.*(&Label::mAutosizeX)) text += " wide as its text";
    if (l.*(&Label::mAutosizeY)) text += " high as its text";
    return text;
  }
};

struct Sprite : TSpriteAnimation {
  static float rate(const TSpriteAnimation& s) { return s.*(&Sprite::mRefreshRate); }
  static bool hidesAfterEnd(const TSpriteAnimation& s) { return s.*(&Sprite::mHideAfterEnd); }
  static TAnimationMode mode(const TSpriteAnimation& s) { return s.*(&Sprite::mAnimationMode); }
  static int loopStart(const TSpriteAnimation& s) { return s.*(&Sprite::mLoopStartFrame); }
  static Uint32 lastRefresh(const TSpriteAnimation& s) { return s.*(&Sprite::mLastRefresh); }
  static SDL_Point offset(const TSpriteAnimation& s) {
    return {s.*(&Sprite::mDrawXOfset), s.*(&Sprite::mDrawYOfset)};
  }
  static double factorX(const TSpriteAnimation& s) { return s.*(&Sprite::mResizeFactorX); }
  static double factorY(const TSpriteAnimation& s) { return s.*(&Sprite::mResizeFactorY); }
  // The atlas file of its own; empty for one that shares another's frames.
  static std::string file(const TSpriteAnimation& s) { return s.*(&Sprite::mFileName); }
};

struct Digits : TControlCyphers3 {
  static int gap(const TControlCyphers3& d) { return d.*(&Digits::mCypherGap); }
  static int width(const TControlCyphers3& d) { return d.*(&Digits::mCypherWidth); }
  static int decimals(const TControlCyphers3& d) { return d.*(&Digits::mDecimalPlaces); }
  static float decimalSize(const TControlCyphers3& d) { return d.*(&Digits::mDecimalNumberSize); }
  static float decimalOffset(const TControlCyphers3& d) { return d.*(&Digits::mDecimalNumberOffset); }
  static double spin(const TControlCyphers3& d, double t, double elapsed) {
    return (d.*(&Digits::mfSpinFunction))(t, elapsed);
  }
  static bool hasStrip(const TControlCyphers3& d) { return d.*(&Digits::mpCyphers) != nullptr; }
};

struct Ticker : TScrollingComponent {
  static float spacing(const TScrollingComponent& s) { return s.*(&Ticker::mSpacing); }
  static bool spacingIsRelative(const TScrollingComponent& s) { return s.*(&Ticker::mIsRelativeSpacing); }
  static int padding(const TScrollingComponent& s) { return s.*(&Ticker::mPadding); }
  static long scroll(const TScrollingComponent& s) { return s.*(&Ticker::mScrollDuration); }
  static long wait(const TScrollingComponent& s) { return s.*(&Ticker::mWaitDuration); }
  static auto movement(const TScrollingComponent& s) { return s.*(&Ticker::fMovementFunction); }
  static ContentAlign alignment(const TScrollingComponent& s) { return (s.*(&Ticker::mpContent)).at(0).alignment; }
};

struct Bar : TProgressBar {
  static int orientation(const TProgressBar& b) { return b.*(&Bar::Orientation); }
  static int target(const TProgressBar& b) { return b.*(&Bar::mTargetPos); }
  static bool hasFull(const TProgressBar& b) { return b.*(&Bar::mpFullImage) != nullptr; }
};

}  // namespace peek

// "x, y, width, height".
inline std::string placeText(const SDL_Rect& r) {
  return std::to_string(r.x) + ", " + std::to_string(r.y) + ", " + std::to_string(r.w) + ", " + std::to_string(r.h);
}
