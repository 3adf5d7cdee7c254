#pragma once

#include <SDL.h>
#include <SDL_ttf.h>
#include <functional>
#include <string>

#include "vendelo-sdl2/TGuiComponent.h"
#include "vendelo-sdl2/TTexturePtr.h"

class TBitmapFont;

// Progress of a run from the fraction of its time: the square root, so that the run starts fast and ends slowly.
double linearSpinFunction(double t, double elapsed);
float linearFunction(float t);
// Ease from 0 to 1 along half a cosine.
float cosFunction(float t);

// Shows a whole number as a row of counter wheels, 18 at most, with group and decimal separators. A new final value
// is approached along a spin function, and each wheel turns by a cosine ease towards the digit that the running
// value has at that moment. What a draw has once seen over stays over, also when the tick clock comes round to the
// same numbers after 49.7 days. Values in the smallest unit of money, times in milliseconds of the tick clock; the
// height of the rectangle sets the scale of the digits, and the digits are set from its right edge.
// draw and SetFont belong to the draw thread; the other setters only store, under the draw mutex. Owns the digit
// strip and the separators, not the font, which may go after SetFont. A font without some digit or separator leaves
// that cell empty and says so once; a negative value shows the digits of its absolute value, and a value of more
// than 18 digits loses the top ones.
class TControlCyphers3 : public vendelo_sdl2::TGuiComponent {
 public:
  enum DenominationLocale { COMMA_THOUSANDS_DOT_DECIMAL = 0, COMMA_DECIMAL_DOT_THOUSANDS = 1 };

  // The state of one wheel.
  struct Cypher {
    float digit;           // position when the current turn began, 0 to 10
    float lastTransition;  // phase, 0 to 0.5, at which the current turn starts
    Uint32 lastChange;     // tick of the turn's start; 0 means at rest, never moved
    int targetDigit;       // digit that the wheel turns to
    Uint32 over = 0;       // the lastChange of a turn that a draw has seen over; 0 for a turn under way
  };

  // cyphersCount is not used: all 18 wheels exist.
  TControlCyphers3(SDL_Renderer* pRenderer, int x, int y, int w, int h, int cyphersCount,
                   std::string ComponentName);
  ~TControlCyphers3() override;

  // Builds the digit strip and the separators; the spin direction must be set before. A null font does nothing.
  void SetFont(TBitmapFont* font);
  void SetFont(TTF_Font* font, SDL_Color color);

  // Starts a run from the value shown at this moment; the final value in force already changes nothing.
  void SetFinalValue(long value);
  long FinalValue() const;
  // Sets the value from which the present run started.
  void SetCurrentValue(long value);
  // The running value at a tick, the final one from the draw on that has seen the run over.
  double CurrentValue(Uint32 time) const;
  // Ends the run: the next draw shows the final value, the wheels without a turn.
  void ResetAnimation();

  void SetDecimalPlaces(int places);
  // Size of the digits behind the decimal point against the others, and the factor of their vertical place.
  void SetDecimalScale(float size, float offset);
  // Swaps the two separators when the locale differs from the one of the construction. The locale is not stored,
  // so a second call swaps them back: call it once, after SetFont.
  void SetLocale(DenominationLocale locale);
  void SetCypherGap(int gap);
  void SetCypherWidth(int width);
  void SetShowLeadingZeros(bool show);
  // True turns the strip upside down; takes effect with the next SetFont.
  void SetSpinDirection(bool direction);
  // function(t, elapsed): t from 0 to 1, elapsed the milliseconds of the run; the result is the part of the way
  // done.
  void SetSpinFunction(std::function<double(double, double)> function);
  void SetDigitChangeDuration(float duration);
  // Stored only: the rectangle's height sets the scale.
  void SetResizeFactor(double x, double y);

  // The decimal separator, the group separator and a part of the strip at a place of the render target.
  void drawDotAt(int x, int y, float scale);
  void drawCommaAt(int x, int y, float scale);
  void drawCenteredGlyphAt(int centerx, int y, const SDL_Rect& srcRect, float scale);

  // Position of a wheel on the strip at a tick, 0 to 10. Wheels turn in the direction in which the value moves.
  float cypherPos(const Cypher& cypher, const Uint32& now) const;
  // A new texture with one glyph (the caller's) and its size; null, with a zero size, when it cannot be made.
  SDL_Texture* GlyphOfFont(TTF_Font* font, SDL_Color color, char charCode, SDL_Rect* boundsOut) const;

  void draw() override;
  // Makes the strip anew from the bitmap font, if one of its name is still registered.
  void OnTexturesLost() override;

 protected:
  static constexpr int kCypherCount = 18;

  long mFinalValue;
  double mLastValue;
  long mCurrentValue;
  Uint32 mLastChangeTime;
  float mChangeDuration;
  float mDigitChangeDuration;
  bool mSpinDirection;
  bool mShowLeadingZeros;
  float mDecimalNumberSize;
  float mDecimalNumberOffset;
  DenominationLocale mLocale;
  std::function<double(double, double)> mfSpinFunction;
  bool mUseKernings;
  int mCypherGap;
  int mCypherWidth;
  int mDecimalPlaces;
  double mResizeFactorX;
  double mResizeFactorY;
  vendelo_sdl2::TTexturePtr mpCyphers;
  SDL_Rect mDotRect;
  vendelo_sdl2::TTexturePtr mpDot;  // always the decimal separator
  SDL_Rect mCommaRect;
  vendelo_sdl2::TTexturePtr mpComma;  // always the group separator
  int mGlyphHeight;
  int mGlyphWidth;
  bool mIsMovingUp;
  Cypher mCypherPositions[kCypherCount];  // index 0 is the right-most digit

 private:
  // What one frame has worked out before its first digit.
  struct Frame;
  bool runIsOver() const { return mRunOver != 0 && mRunOver == mLastChangeTime; }
  // Notes what is over by now.
  void noteRest(Uint32 now);
  void updateWheels(long value, Uint32 now);
  void drawWheel(int n, float position, const Frame& frame);
  void drawSeparator(SDL_Texture* texture, const SDL_Rect& source, int n, const Frame& frame);
  void swapSeparators();
  void releaseTextures();

  Uint32 mRunOver = 0;              // the mLastChangeTime of a run that a draw has seen over; 0 for one under way
  std::string mFontName;            // of the bitmap font behind the strip; empty for another one
  bool mSeparatorsSwapped = false;  // against what the font calls them
};
