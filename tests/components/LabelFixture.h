#pragma once

#include <SDL_ttf.h>

#include "components/Tlabel.h"
#include "tests/components/SlideFixture.h"

// What the tests of the text label share.
namespace labeltest {

using namespace vendelo_sdl2;

inline const char* const fontFile = "/usr/share/fonts/truetype/dejavu/DejaVuSans-Bold.ttf";
const SDL_Color white{255, 255, 255, 255};

struct Label : Tlabel {
  Label(int x, int y, int w, int h, const char* text, TTF_Font* font, SDL_Color color)
    : Tlabel(nullptr, x, y, w, h, text, font, color, "label") {}
  void onShow() override { ++shown; }
  void onHide() override { ++hidden; }
  int shown = 0, hidden = 0;
  using Tlabel::mAlign;
  using Tlabel::mAnimationDestRect;
  using Tlabel::mAnimationEnabled;
  using Tlabel::mAnimationStartRect;
  using Tlabel::mColor;
  using Tlabel::mDestRect;
  using Tlabel::mDirection;
  using Tlabel::mDrawShadow;
  using Tlabel::mIsShowing;
  using Tlabel::mLabelRect;
  using Tlabel::mNewText;
  using Tlabel::mOrigPosX;
  using Tlabel::mOrigPosY;
  using Tlabel::mpFont;
  using Tlabel::mpLabelChangedListener;
  using Tlabel::mpShadowTexture;
  using Tlabel::mpSurface;
  using Tlabel::mpSurface2;
  using Tlabel::mpTargetTexture;
  using Tlabel::mShadowColor;
  using Tlabel::mShadowOffset;
  using Tlabel::mSomethingChanged;
  using Tlabel::mSplitText;
  using Tlabel::mSrcRect;
  using Tlabel::mText;
  using Tlabel::mTimeUntilHide;
  using Tlabel::pAniTask;
};

class LabelTest : public SlideTest {
 protected:
  ~LabelTest() override {
    TTF_CloseFont(font);
    TTF_Quit();
  }
  // A label of 200 by 60 at 50, 40 under a parent at the origin.
  Label* make(const char* text) {
    auto* label = new Label(50, 40, 200, 60, text, font, white);
    parent.AddComponent(label);
    return label;
  }
  SDL_Point sizeOf(const char* text) {
    SDL_Point size{0, 0};
    TTF_SizeUTF8(font, text, &size.x, &size.y);
    return size;
  }
  SDL_Rect drawn(Label& label) {
    clear(0, 0, 0);
    label.draw();
    return inked(0);
  }
  int slideThrough(Label& label) { return SlideTest::slideThrough(label, TASK_NORMAL); }
  int initialised = TTF_Init();
  TTF_Font* const font = TTF_OpenFont(fontFile, 24);
};

}  // namespace labeltest
