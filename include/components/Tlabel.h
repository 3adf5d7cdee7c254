#pragma once

#include <SDL.h>
#include <SDL_ttf.h>
#include <memory>
#include <string>

#include "vendelo-sdl2/TAlignment.h"
#include "vendelo-sdl2/TGuiComponent.h"
#include "vendelo-sdl2/TTexturePtr.h"

namespace vendelo_sdl2 {
class TTimedTaskHandler;
}

// Hears that a label has become empty.
class LabelChangedListener {
 public:
  virtual ~LabelChangedListener() = default;
  // Draw thread. The texture is the label's new one, which is null.
  virtual void LabelChanged(SDL_Texture* texture) = 0;
};

// A line of text in a TrueType font, with a drop shadow, nine-point alignment in its rectangle, an optional break
// at the first space into two lines and an optional slide in and out from an edge of the screen. The setters only
// store, under the draw mutex; textures are built in draw, on the draw thread; the slide runs among the normal
// tasks of the main thread. Times in milliseconds, places in pixels relative to the parent. Owns its textures; the
// text's own goes only with the renderer once the label is deleted. Font and listener are the caller's and must
// outlive the label. Without a font the former picture stays, whatever the text, also an empty one, until there is
// a font again and something changes; a text that cannot be rendered leaves an empty label. Nothing is reported.
// Two lines have no shadow, and they do not know the slide: a new text of one line goes back to the slide's start,
// one of two lines stands at its place by the alignment at once, and the slide goes on from there between the ends
// that it had. So SetAnimation on a label of two lines lasts only until its next draw.
class Tlabel : public vendelo_sdl2::TGuiComponent {
 public:
  // The direction of the slide in: LEFT comes in from the right edge moving left.
  enum TAnimationDirection { LEFT = 0, RIGHT = 1, UP = 2, DOWN = 3 };

  Tlabel(SDL_Renderer* pRenderer, int x, int y, int width, int height, std::string defaultText, TTF_Font* pFont,
         SDL_Color fontColor, std::string ComponentName);
  // Takes this label's tasks out of the application.
  ~Tlabel() override;

  void SetText(const std::string& text);
  // The text wanted, also before the draw that shows it.
  const std::string& GetText() const;
  void SetColor(SDL_Color color);
  void SetFont(TTF_Font* font);
  TTF_Font* GetFont() const;
  // A negative offset puts the shadow to the left, and still below.
  void SetShadow(bool shadow, int offset, SDL_Color color);
  // Holds from the next change on: the present picture stays.
  void SplitText(bool split);
  // Places the present picture in the label's rectangle, also when the alignment is the one in force.
  void SetAlignment(vendelo_sdl2::TAlignment alignment);

  // Turns the slide mode on and puts the label at its start place off the screen. Only a label with a parent moves.
  void SetAnimation(TAnimationDirection direction);
  // Shows a hidden label; in slide mode and with a time of 1 or more it slides in, rests for that time, slides out.
  void ShowFor(int time);
  // Hides at once, or in slide mode jumps to the resting place and slides out. Stands over the base's Hide, which
  // is not virtual.
  void Hide();
  // One step of the slide; the body of the timed task.
  void AnimateTask();

  void SetLabelChangedListener(LabelChangedListener* listener);
  // Builds the textures anew when text, font, colour or shadow have changed. Draw thread.
  void updateCachedTextures();
  // Gives the text's texture away: null, and nothing is drawn, until the next build. Draw thread.
  vendelo_sdl2::TTexturePtr TakeTexture();

  void draw() override;
  void OnTexturesLost() override;

 protected:
  std::string mText;
  std::string mNewText;
  SDL_Rect mLabelRect;
  TTF_Font* mpFont;
  SDL_Color mColor;
  SDL_Surface* mpSurface;   // of one line, only while a texture of it is made
  SDL_Surface* mpSurface2;  // null: what two lines are made of lives in buildTwoLines alone
  LabelChangedListener* mpLabelChangedListener;
  bool mDrawShadow;
  int mShadowOffset;
  SDL_Color mShadowColor;
  bool mSplitText;
  bool mSomethingChanged;
  bool mAnimationEnabled;
  bool mIsShowing;
  SDL_Rect mAnimationDestRect;
  SDL_Rect mAnimationStartRect;
  vendelo_sdl2::TAlignment mAlign;
  Uint32 mTimeUntilHide;
  TAnimationDirection mDirection;
  vendelo_sdl2::TTimedTaskHandler* pAniTask;  // owned by the task manager
  vendelo_sdl2::TTexturePtr mpShadowTexture;

 private:
  void buildOneLine();
  void buildTwoLines();
  // A texture of the text with the label's alpha, null when it cannot be made; the size goes to the rectangle.
  vendelo_sdl2::TTexturePtr renderLine(const std::string& line, SDL_Color color, SDL_Surface*& surface,
                                       SDL_Rect& size);
  void clearTextures();
  void showText(vendelo_sdl2::TTexturePtr texture);
  void startAniTask();
  void drawShadow();

  vendelo_sdl2::TTexturePtr mpTextTexture;  // the target texture
  // Outlived by a deferred onShow, which asks it whether the label still exists.
  std::shared_ptr<bool> mAlive;
};
