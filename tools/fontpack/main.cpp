// fontpack FONT --size N -o NAME: a TrueType or OpenType font becomes a bitmap font of the skin.
#include <CLI/CLI.hpp>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <locale>
#include <sstream>
#include <stdexcept>

#include "Arguments.h"
#include "FontPack.h"

namespace {
// Of the characters that are cut.
constexpr size_t kNamed = 12;

struct Options {
  std::string font, name;
  double size = 0, charsSize = 0;
  std::string chars;
  std::vector<std::string> sets;
  std::string gradient = "FFFFFF", outlineColour = "000000";
  double outline = 0, spacing = 0;
  int shadow = 0, line = 0, base = 0, width = 1024;
  std::string wheels, hanging;
  int wheelWidth = 0, wheelAdvance = 0;
};

// As CLI::Range, which lets "nan" into every range.
CLI::Validator between(double low, double high) {
  std::ostringstream range;
  range.imbue(std::locale::classic());
  range << low << " to " << high;
  const auto check = [low, high, text = range.str()](const std::string& value) {
    const double number = std::strtod(value.c_str(), nullptr);
    return number >= low && number <= high ? std::string() : "Value " + value + " not in range " + text;
  };
  return {check, range.str(), ""};
}

void describe(CLI::App& app, Options& o) {
  app.add_option("FONT", o.font, "font file")->required();
  app.add_option("-o,--output", o.name, "path without extension; NAME.fnt and NAME.png are written")->required();
  app.add_option("--size", o.size, "pixels of the em square")->required()->check(between(4, 400));
  app.add_option("--chars-size", o.charsSize, "the same for --chars and --set, where they differ from the digits")
    ->check(between(4, 400));
  app.add_option("--chars", o.chars, "characters to take, in UTF-8");
  app.add_option("--set", o.sets, "western, latin or eastern: a set of characters to take")
    ->check(CLI::IsMember({"western", "latin", "eastern"}));
  app.add_option("--gradient", o.gradient, "colours from the capitals' height down to the baseline, with commas");
  app.add_option("--outline", o.outline, "width of the rim in pixels")->check(between(0, 40));
  app.add_option("--outline-colour", o.outlineColour, "colour of the rim and of the shadow");
  app.add_option("--shadow", o.shadow, "radius of a soft shade around the letters")->check(CLI::Range(0, 40));
  app.add_option("--spacing", o.spacing, "pixels more between letters")->check(between(-40, 80));
  app.add_option("--line", o.line, "height of a line; what the font and the rim need when not given")
    ->check(CLI::Range(1, 1000));
  app.add_option("--base", o.base, "baseline below the top of the line")->check(CLI::Range(1, 1000));
  CLI::Option* wheels =
    app.add_option("--wheels", o.wheels, "characters in cells of one width and the line's height: rolling digits");
  app.add_option("--wheel-width", o.wheelWidth, "width of such a cell")->check(CLI::Range(1, 1000))->needs(wheels);
  app.add_option("--wheel-advance", o.wheelAdvance, "advance of such a cell")
    ->check(CLI::Range(1, 1000))
    ->needs(wheels);
  app.add_option("--hanging", o.hanging, "separators whose cells end at the line's end");
  app.add_option("--width", o.width, "width of the atlas")->capture_default_str()->check(CLI::Range(16, 8192));
}

int countMissing(const Typeface& face, const std::u32string& codes) {
  int missing = 0;
  for (const char32_t code : codes) {
    if (face.has(code)) continue;
    std::fprintf(stderr, "fontpack: the font has no U+%04X\n", static_cast<unsigned>(code));
    ++missing;
  }
  return missing;
}

void tellCut(const std::u32string& codes) {
  if (codes.empty()) return;
  std::fprintf(stderr, "fontpack: cut, as the line or the cell is too small for them:");
  for (size_t i = 0; i < codes.size() && i < kNamed; ++i)
    std::fprintf(stderr, " U+%04X", static_cast<unsigned>(codes[i]));
  if (codes.size() > kNamed) std::fprintf(stderr, " and %zu more", codes.size() - kNamed);
  std::fputc('\n', stderr);
}

int pack(const Options& o) {
  const Typeface face(o.font, o.size);
  const double margin = o.outline + o.shadow + 1;
  const int base = o.base ? o.base : static_cast<int>(std::ceil(face.ascender() + margin));
  const int line = o.line ? o.line : base + static_cast<int>(std::ceil(face.descender() + margin));
  if (base > line) throw std::runtime_error("the baseline lies below the line");
  FontPack font({parseRamp(o.gradient), parseColour(o.outlineColour), o.outline, o.shadow, o.spacing}, line, base);
  const std::u32string wheels = decode(o.wheels), hanging = decode(o.hanging), chars = decode(o.chars);
  if (!wheels.empty()) {
    const int width =
      o.wheelWidth ? o.wheelWidth : static_cast<int>(std::ceil(face.advance(wheels[0]) + 2 * margin));
    font.addFixed(face, wheels, width, o.wheelAdvance ? o.wheelAdvance : width);
  }
  for (const char32_t code : hanging) font.addHanging(face, code);
  const Typeface letters(o.font, o.charsSize > 0 ? o.charsSize : o.size);
  font.add(letters, chars);
  int missing = countMissing(face, wheels) + countMissing(face, hanging) + countMissing(face, chars);
  for (const std::string& set : o.sets)
    font.add(letters, set == "western" ? westernCharacters()
                      : set == "latin" ? latinCharacters()
                                       : easternCharacters());
  const size_t slash = o.name.rfind('/');
  font.save(o.name, o.name.substr(slash == std::string::npos ? 0 : slash + 1), o.width);
  tellCut(font.cut());
  std::printf("%zu characters, line %d, baseline %d\n", font.count(), line, base);
  return missing == 0 ? 0 : 1;
}
}  // namespace

int main(int argc, char** argv) {
  CLI::App app{"Makes a bitmap font of the skin, a .fnt description with its atlas, from a font file."};
  Options options;
  describe(app, options);
  try {
    app.parse(argc, argv);
    if (options.charsSize > 0 && options.chars.empty() && options.sets.empty())
      throw CLI::RequiresError("--chars-size", "--chars or --set");
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? 0 : 2;
  }
  try {
    return pack(options);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "fontpack: %s\n", error.what());
    return 1;
  }
}
