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
  using Tlabel::pAniTask;
};

class LabelTest : public SlideTest {
 protected:
  ~LabelTest() override {
    TTF_CloseFont(font);
    TTF_Quit();
  }
  // A label of 200 by 60 at 50, 40 under a parent at the origin.
  template <typename AnyLabel = Label>
  AnyLabel* make(const char* text) {
    auto* label = new AnyLabel(50, 40, 200, 60, text, font, white);
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
  // Draws; whether the picture of the text has been made anew for it.
  bool rebuilds(Label& label) {
    SDL_SetTextureUserData(label.GetTargetTexture(), &label);
    label.draw();
    return SDL_GetTextureUserData(label.GetTargetTexture()) != &label;
  }
  // A label of one line that is about to slide in; drawn once, hidden.
  Label* slider(Tlabel::TAnimationDirection direction) {
    Label* label = make("slide");
    label->SetAnimation(direction);
    drawn(*label);
    label->_setVisible(false);
    return label;
  }
  // Where a label of one line stands by its alignment.
  SDL_Point restOf(const char* text) {
    Label* label = make(text);
    const SDL_Point rest = shownAt(*label);
    parent.RemoveComponent(label, true);
    return rest;
  }
  int slideThrough(Label& label) { return SlideTest::slideThrough(label, TASK_NORMAL); }
  int initialised = TTF_Init();
  TTF_Font* const font = TTF_OpenFont(fontFile, 24);
};

}  // namespace labeltest
