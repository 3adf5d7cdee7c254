#include "Typeface.h"

#include <ft2build.h>
#include FT_FREETYPE_H
#include FT_OUTLINE_H
#include <hb-ft.h>

#include <stdexcept>

namespace fontfile {
const char* const kCondensedBold = "/usr/share/fonts/truetype/roboto/unhinted/RobotoCondensed-Bold.ttf";
const char* const kBold = "/usr/share/fonts/truetype/roboto/unhinted/RobotoTTF/Roboto-Bold.ttf";
const char* const kRegular = "/usr/share/fonts/truetype/roboto/unhinted/RobotoTTF/Roboto-Medium.ttf";
const char* const kSerifBold = "/usr/share/fonts/opentype/urw-base35/C059-Bold.otf";
const char* const kSansBold = "/usr/share/fonts/opentype/urw-base35/NimbusSans-Bold.otf";
}  // namespace fontfile

namespace {
constexpr FT_Int32 kLoadFlags = FT_LOAD_NO_HINTING | FT_LOAD_NO_BITMAP;

FT_Library library() {
  static const FT_Library handle = [] {
    FT_Library made = nullptr;
    if (FT_Init_FreeType(&made) != 0) throw std::runtime_error("FreeType cannot be started");
    return made;
  }();
  return handle;
}

// Receives one outline and appends it to a cairo path.
struct PathSink {
  cairo_t* cr;
  double x, baseline;
  double lastX = 0, lastY = 0;
  bool open = false;

  double px(const FT_Vector* v) const { return x + static_cast<double>(v->x) / 64; }
  double py(const FT_Vector* v) const { return baseline - static_cast<double>(v->y) / 64; }
};

int sinkMove(const FT_Vector* to, void* data) {
  auto* sink = static_cast<PathSink*>(data);
  if (sink->open) cairo_close_path(sink->cr);
  sink->open = true;
  cairo_move_to(sink->cr, sink->lastX = sink->px(to), sink->lastY = sink->py(to));
  return 0;
}

int sinkLine(const FT_Vector* to, void* data) {
  auto* sink = static_cast<PathSink*>(data);
  cairo_line_to(sink->cr, sink->lastX = sink->px(to), sink->lastY = sink->py(to));
  return 0;
}

int sinkConic(const FT_Vector* control, const FT_Vector* to, void* data) {
  auto* sink = static_cast<PathSink*>(data);
  const double cx = sink->px(control), cy = sink->py(control), ex = sink->px(to), ey = sink->py(to);
  cairo_curve_to(sink->cr, (sink->lastX + 2 * cx) / 3, (sink->lastY + 2 * cy) / 3, (ex + 2 * cx) / 3,
                 (ey + 2 * cy) / 3, ex, ey);
  sink->lastX = ex;
  sink->lastY = ey;
  return 0;
}

int sinkCubic(const FT_Vector* c1, const FT_Vector* c2, const FT_Vector* to, void* data) {
  auto* sink = static_cast<PathSink*>(data);
  cairo_curve_to(sink->cr, sink->px(c1), sink->py(c1), sink->px(c2), sink->py(c2), sink->lastX = sink->px(to),
                 sink->lastY = sink->py(to));
  return 0;
}
}  // namespace

Typeface::Typeface(const std::string& path, double size) : mSize(size) {
  if (FT_New_Face(library(), path.c_str(), 0, &mFace) != 0)
    throw std::runtime_error(path + ": cannot be opened as a font");
  if (!FT_IS_SCALABLE(mFace)) {
    FT_Done_Face(mFace);
    throw std::runtime_error(path + ": has no outlines, only pictures of letters");
  }
  FT_Set_Char_Size(mFace, 0, static_cast<FT_F26Dot6>(size * 64), 72, 72);
  mShaper = hb_ft_font_create_referenced(mFace);
  hb_ft_font_set_load_flags(mShaper, kLoadFlags);
}

Typeface::~Typeface() {
  hb_font_destroy(mShaper);
  FT_Done_Face(mFace);
}

bool Typeface::has(char32_t code) const { return FT_Get_Char_Index(mFace, code) != 0; }

double Typeface::advance(char32_t code) const {
  if (FT_Load_Char(mFace, code, kLoadFlags) != 0) return 0;
  return static_cast<double>(mFace->glyph->linearHoriAdvance) / 65536;
}

double Typeface::kerning(char32_t first, char32_t second) const {
  const uint32_t pair[2] = {first, second};
  hb_buffer_t* buffer = hb_buffer_create();
  hb_buffer_add_utf32(buffer, pair, 2, 0, 2);
  hb_buffer_guess_segment_properties(buffer);
  // Ligatures would turn the pair into one glyph, and the reader draws letter by letter.
  const hb_feature_t features[] = {{HB_TAG('l', 'i', 'g', 'a'), 0, 0, ~0U},
                                   {HB_TAG('c', 'l', 'i', 'g'), 0, 0, ~0U}};
  hb_shape(mShaper, buffer, features, 2);
  unsigned count = 0;
  const hb_glyph_position_t* positions = hb_buffer_get_glyph_positions(buffer, &count);
  const hb_position_t plain =
    count == 2 ? hb_font_get_glyph_h_advance(mShaper, hb_buffer_get_glyph_infos(buffer, nullptr)[0].codepoint) : 0;
  const double result = count == 2 ? (positions[0].x_advance - plain) / 64.0 : 0;
  hb_buffer_destroy(buffer);
  return result;
}

double Typeface::capHeight() const {
  FT_Load_Char(mFace, 'H', kLoadFlags);
  return static_cast<double>(mFace->glyph->metrics.horiBearingY) / 64;
}

double Typeface::ascender() const { return static_cast<double>(mFace->size->metrics.ascender) / 64; }

double Typeface::descender() const { return -static_cast<double>(mFace->size->metrics.descender) / 64; }

void Typeface::appendGlyph(cairo_t* cr, char32_t code, double x, double baseline) const {
  if (FT_Load_Char(mFace, code, kLoadFlags) != 0) return;
  const FT_Outline_Funcs functions = {sinkMove, sinkLine, sinkConic, sinkCubic, 0, 0};
  PathSink sink{cr, x, baseline};
  FT_Outline_Decompose(&mFace->glyph->outline, &functions, &sink);
  if (sink.open) cairo_close_path(cr);
}

void Typeface::appendText(cairo_t* cr, const std::string& text, double x, double baseline, double spacing) const {
  const std::u32string codes = decode(text);
  for (size_t i = 0; i < codes.size(); ++i) {
    appendGlyph(cr, codes[i], x, baseline);
    x += advance(codes[i]) + spacing + (i + 1 < codes.size() ? kerning(codes[i], codes[i + 1]) : 0);
  }
}

double Typeface::textWidth(const std::string& text, double spacing) const {
  const std::u32string codes = decode(text);
  double width = 0;
  for (size_t i = 0; i < codes.size(); ++i)
    width += advance(codes[i]) + (i + 1 < codes.size() ? spacing + kerning(codes[i], codes[i + 1]) : 0);
  return width;
}

std::u32string decode(const std::string& text) {
  std::u32string codes;
  for (size_t i = 0; i < text.size();) {
    const auto lead = static_cast<unsigned char>(text[i]);
    const size_t more = lead >= 0xf0 ? 3 : lead >= 0xe0 ? 2 : lead >= 0xc0 ? 1 : 0;
    char32_t code = more == 3 ? lead & 0x07U : more == 2 ? lead & 0x0fU : more == 1 ? lead & 0x1fU : lead;
    bool good = (lead < 0x80 || lead >= 0xc2) && lead < 0xf5 && i + more < text.size();
    for (size_t n = 1; good && n <= more; ++n) {
      const auto next = static_cast<unsigned char>(text[i + n]);
      good = (next & 0xc0U) == 0x80;
      code = code << 6U | (next & 0x3fU);
    }
    if (!good) throw std::runtime_error("byte " + std::to_string(i + 1) + " of the text is no UTF-8");
    codes.push_back(code);
    i += more + 1;
  }
  return codes;
}
