#pragma once

#include <SDL.h>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "vendelo-sdl2/PictureFormat.h"
#include "vendelo-sdl2/TAlignment.h"
#include "vendelo-sdl2/TTexturePtr.h"

class SkinXml;

// A font of one glyph atlas and an XML description file. It renders a text, with line breaks, alignment and
// kerning, into a new texture. Fonts stand in a process-wide registry under their names, so that labels share them.
// Thread: construction, destruction and RenderText need the renderer: draw thread. The registry has no lock.
// Units: pixels of the atlas.
// Memory: the atlas is a picture in memory, out of which texts are put together; a text is a texture.
// Ownership: a registered font is deleted by CleanupBitmapFonts and owns its atlas. A second font on the same file
// borrows the atlas and the glyphs of the first, and is not registered; one whose path to it is another in letters
// only borrows the atlas. Glyphs live as long as the process.
// Bad input: a missing or malformed file gives an empty font that is not registered; a missing number counts as 0.
// What is wrong with a file that is there makes one line in the log, and not the same line again.
class TBitmapFont {
 public:
  struct TGlyph {
    struct TKerning {
      int second_id;  // code point of the glyph that follows
      int amount;     // pixels added to the pen
    };
    int id;  // code point
    int x;
    int y;
    int width;
    int height;
    int xoffset;
    int yoffset;
    int xadvance;
    std::vector<TKerning> kernings;
  };

  TBitmapFont(SDL_Renderer* renderer, const std::string& name, const std::string& XMLfilename);
  ~TBitmapFont();
  TBitmapFont(const TBitmapFont&) = delete;
  TBitmapFont& operator=(const TBitmapFont&) = delete;

  // A new font of that name and file for somebody who does not own it. When the file is missing or broken this is
  // one font for all that ask for it, however often and for how many years they do: each asks the file again.
  static TBitmapFont* Open(SDL_Renderer* renderer, const std::string& name, const std::string& XMLfilename);
  // The first registered font of that name, or null.
  static TBitmapFont* FindBitmapFont(const std::string& name);
  // Deletes every registered font; to be called while the renderer lives.
  static void CleanupBitmapFonts();

  // The first glyph of that code point, or null.
  TGlyph* FindGlyph(int id) const;

  // A new texture, owned by the caller, 5 pixels wider than the widest line; the sizes go through the pointers if
  // given. Null (and sizes of 0) for an empty text and for one that broken numbers make larger than any texture.
  // Only "\n" breaks a line; the vertical part of the alignment has no effect. The height counts the bytes "\n",
  // also those inside a broken sequence of a text that is no UTF-8, which break nothing.
  SDL_Texture* RenderText(SDL_Renderer* renderer, const std::string& text, int* widthOut, int* heightOut,
                          vendelo_sdl2::TAlignment textAlignment) const;

  // The picture that holds the glyphs, in MyUtils::kDrawnFormat; null without one.
  const SDL_Surface* GlyphPicture() const { return mpAtlas ? mpAtlas->picture.get() : nullptr; }
  // A texture of it, made at the first request; the font's.
  SDL_Texture* GlyphTexture() const;
  SDL_Color BackgroundColor() const { return mBackgroundColor; }
  int PaddingTop() const { return mPaddingTop; }
  int PaddingLeft() const { return mPaddingLeft; }
  int PaddingBottom() const { return mPaddingBottom; }
  int PaddingRight() const { return mPaddingRight; }
  int LineHeight() const { return mLineHeight; }
  int Baseline() const { return mBase; }
  int MaxGlyphWidth() const { return mMaxWidth; }
  int MaxGlyphHeight() const { return mMaxHeight; }
  const std::string& Name() const { return mName; }

 private:
  struct Layout;
  struct Atlas {
    MyUtils::TSurfacePtr picture;
    SDL_Renderer* renderer;
    std::filesystem::path description;  // the font's file, in its shortest form
    vendelo_sdl2::TTexturePtr mpGlyphTexture;
  };
  void shareWith(const TBitmapFont& original);
  void copySizes(const TBitmapFont& original);  // and the background colour
  bool isRegistered() const;
  // Whether there was a font with glyphs in it; what is wrong goes to `problems`.
  bool parse(SDL_Renderer* renderer, const SkinXml& file, std::string& problems);
  void loadAtlas(SDL_Renderer* renderer, const std::string& image);
  int glyphsOutsideTheAtlas() const;
  Layout measure(const std::string& text) const;

  std::vector<TGlyph*> mGlyphChars;   // in file order
  std::unique_ptr<Atlas> mpOwnAtlas;  // null in a borrower
  Atlas* mpAtlas = nullptr;           // the own one, or the original's
  std::string mName;
  std::string mXML;
  int mMaxHeight = 0;
  int mMaxWidth = 0;
  int mBase = 0;
  int mLineHeight = 0;
  int mPaddingTop = 0;
  int mPaddingBottom = 0;
  int mPaddingLeft = 0;
  int mPaddingRight = 0;
  SDL_Color mBackgroundColor{0, 0, 0, 255};

  static std::vector<TBitmapFont*>& BitmapFonts;
  // Fonts that only their creators know, kept reachable.
  static std::vector<TBitmapFont*>& UnregisteredFonts;
};
