#pragma once

#include <SDL.h>
#include <string>

#include "vendelo-sdl2/TAlignment.h"
#include "vendelo-sdl2/TGuiComponent.h"
#include "vendelo-sdl2/TTexturePtr.h"

class TBitmapFont;

// One text in a bitmap font, kept as a texture that is rendered again only when the text or a setting has changed,
// and placed in the label's rectangle by an alignment, shrunk to fit if wanted.
// Threads: setters store only, for whoever holds the draw mutex; UpdateCachedTextures() and draw() on the draw
// thread. Ownership: the texture is the label's own; the font is not. Without a font or with an empty text nothing
// is drawn.
class TGlyphLabel : public vendelo_sdl2::TGuiComponent {
 public:
  // bitmapFontXML is the font's name and, when no font of that name is registered, its file without ".fnt".
  TGlyphLabel(SDL_Renderer* pRenderer, int x, int y, int width, int height, std::string defaultText,
              std::string bitmapFontXML, std::string ComponentName);
  // The same with an empty text.
  TGlyphLabel(SDL_Renderer* pRenderer, int x, int y, int width, int height, std::string bitmapFontXML,
              std::string ComponentName);
  ~TGlyphLabel() override;

  void SetText(std::string text);
  // The text wanted, which the next draw shows.
  std::string GetText() const { return mNewText; }
  // Marks a rebuild also when the alignment is the same.
  void SetAlignment(vendelo_sdl2::TAlignment align);
  // Null when no font of that name is registered. Marks no rebuild: the new font shows with the next text.
  void SetFont(const std::string& name);
  TBitmapFont* Font() const { return mFont; }
  void SetResize(bool resize);
  // Switches the shrinking fit on whatever the argument is.
  void SetResizeOnlyDown(bool resizeOnlyDown);
  void SetAutosize(bool x, bool y);
  void SetOffset(int x, int y);
  void SetRotation(double angle);
  // The sizes are scaled only when both factors differ from 1.0; under a parent the position always is.
  void SetResizeFactor(double x, double y);
  // The code point at the beginning of a UTF-8 text; 0 for an empty one.
  int GetCharCode(std::string text) const;

  virtual void UpdateCachedTextures();
  void draw() override;
  void OnTexturesLost() override;
  bool staysInside() const override;

  // Pixel access, little-endian for all sizes; getpixel gives 0 for a size other than 1 to 4 bytes.
  Uint32 getpixel(SDL_Surface* surface, int x, int y);
  void putpixel(SDL_Surface* surface, int x, int y, Uint32 pixel, bool skip_transparent);

 protected:
  std::string mText;     // what the texture shows
  std::string mNewText;  // what it shall show
  TBitmapFont* mFont = nullptr;
  vendelo_sdl2::TAlignment mAlign = vendelo_sdl2::CENTER_CENTER;
  int mDrawXOfset = 0;
  int mDrawYOfset = 0;
  bool mResize = false;
  bool mResizeOnlyDown = false;
  bool mSomethingChanged = true;
  float mResizeFactorX = 1.0f;
  float mResizeFactorY = 1.0f;
  bool mAutosizeX = false;
  bool mAutosizeY = false;
  int mTextureW = 0;
  int mTextureH = 0;

 private:
  vendelo_sdl2::TTexturePtr mpTextTexture;  // the target texture
};
