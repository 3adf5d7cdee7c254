#pragma once

#include <cairo.h>
#include <hb.h>

#include <string>

struct FT_FaceRec_;

// One font file at one size: outlines, advances and kerning, without hinting, so that every machine with the same
// font package draws the same pixels.
//
// One thread. Sizes are pixels of the em square. Owns the FreeType face and the HarfBuzz font; a file that cannot
// be opened or has no outlines throws `std::runtime_error` with its path.
class Typeface {
 public:
  Typeface(const std::string& path, double size);
  ~Typeface();
  Typeface(const Typeface&) = delete;
  Typeface& operator=(const Typeface&) = delete;

  double size() const { return mSize; }
  bool has(char32_t code) const;
  double advance(char32_t code) const;
  // Pixels by which the pair stands closer (negative) or wider than its advances say.
  double kerning(char32_t first, char32_t second) const;
  // Height of the capital letters above the baseline.
  double capHeight() const;
  // What the font's designer allows above and below the baseline.
  double ascender() const;
  double descender() const;

  // Appends the outline of one character with its pen at (x, baseline).
  void appendGlyph(cairo_t* cr, char32_t code, double x, double baseline) const;
  // Appends a line of UTF-8 text, kerned, with `spacing` pixels more between letters.
  void appendText(cairo_t* cr, const std::string& text, double x, double baseline, double spacing) const;
  double textWidth(const std::string& text, double spacing) const;

 private:
  double mSize;
  FT_FaceRec_* mFace = nullptr;
  hb_font_t* mShaper = nullptr;
};

// The characters of a UTF-8 text; what is no UTF-8 throws `std::runtime_error`.
std::u32string decode(const std::string& text);

// Paths of the fonts that the skin is drawn with (Debian packages fonts-roboto-unhinted and fonts-urw-base35).
namespace fontfile {
extern const char* const kCondensedBold;
extern const char* const kBold;
extern const char* const kRegular;
extern const char* const kSerifBold;
extern const char* const kSansBold;
}  // namespace fontfile
