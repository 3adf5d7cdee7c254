#include "FontCheck.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <string_view>

#include "FontFile.h"
#include "PictureFile.h"
#include "TextSamples.h"

namespace {

// Larger textures are not to be had on every machine.
constexpr int kLargestTexture = 8192;
// A text's texture is so much wider than the text.
constexpr int kSpareWidth = 5;
// The box of the digits, and the part of it that one wheel has with the gap beside it.
constexpr int kWheelsHeight = 91, kWheelWidth = 48 + 2;
// A separator lies over the middle between two wheels; a wider one covers the digits' inner halves.
constexpr int kSeparatorWidth = kWheelWidth / 2;
// Digits are centred by their rectangles; ink this far off the middle is seen.
constexpr int kOffCentre = 4;
// Digits drawn larger than this are blurred.
constexpr double kBlownUp = 1.25;
// Named of the characters that are missing.
constexpr size_t kNamed = 12;

bool showsNothing(const FontGlyph& glyph) { return glyph.width == 0 || glyph.height == 0; }

bool isBlank(int codePoint) {
  return codePoint <= 32 || codePoint == 0xa0 || codePoint == 0xad ||
         (codePoint >= 0x2000 && codePoint <= 0x200f) || (codePoint >= 0x2028 && codePoint <= 0x202f) ||
         codePoint == 0x3000 || codePoint == 0xfeff;
}

std::string percent(double part) { return std::to_string(std::lround(part * 100)) + " %"; }

std::string oneLine(std::string text) {
  std::replace(text.begin(), text.end(), '\n', '|');
  return "\"" + text + "\"";
}

PictureFile readAtlas(XmlFile& file, const FontData& font, bool pixels, Findings& findings) {
  PictureFile picture;
  if (font.page.empty()) return picture;
  picture = readPicture(font.page, pixels, findings);
  if (picture.width == 0) {
    file.error("font-atlas", "the picture " + font.page + whyNot(picture) + ": the font shows nothing",
               font.pagePlace);
    return picture;
  }
  if (picture.byFallback)
    file.warn("fallback", "the picture " + font.page + " cannot be read, the program takes " + picture.file,
              font.pagePlace);
  if (std::max(picture.width, picture.height) > kLargestTexture)
    file.warn("font-atlas",
              "the picture is " + std::to_string(picture.width) + " x " + std::to_string(picture.height) +
                ": not every machine has textures above " + std::to_string(kLargestTexture),
              font.pagePlace);
  return picture;
}

void checkGlyphs(XmlFile& file, const FontData& font, const PictureFile& picture) {
  for (const FontGlyph& glyph : font.glyphs) {
    const std::string name = "the character " + characterName(glyph.id);
    if (glyph.width < 0 || glyph.height < 0) {
      file.error("font-glyph", name + " has a size below 0", glyph.place);
    } else if (showsNothing(glyph)) {
      if (!isBlank(glyph.id)) file.warn("font-glyph", name + " has no size and shows nothing", glyph.place);
    } else if (picture.width > 0 && (glyph.x < 0 || glyph.y < 0 || glyph.x + glyph.width > picture.width ||
                                     glyph.y + glyph.height > picture.height)) {
      file.error("font-glyph",
                 name + " lies outside the picture of " + std::to_string(picture.width) + " x " +
                   std::to_string(picture.height),
                 glyph.place);
    }
  }
}

// A text's texture begins at the pen and ends 5 pixels behind the last glyph's width; the padding moves the glyphs
// in it without making it larger.
void checkCuts(XmlFile& file, const FontData& font) {
  const auto tell = [&](const char* what, auto isCut) {
    const auto cut = [&isCut](const FontGlyph& glyph) { return !showsNothing(glyph) && isCut(glyph); };
    const auto worst = std::find_if(font.glyphs.begin(), font.glyphs.end(), cut);
    if (worst == font.glyphs.end()) return;
    const auto count = std::count_if(font.glyphs.begin(), font.glyphs.end(), cut);
    file.warn("font-cut",
              (count == 1 ? "1 character is" : std::to_string(count) + " characters are") + std::string(" cut ") +
                what + ", " + characterName(worst->id) + " first",
              worst->place);
  };
  tell("at the left where a text begins with it, since it reaches left of the pen (the left padding moves it)",
       [&](const FontGlyph& g) { return g.xoffset + font.paddingLeft < 0; });
  tell("at the right where a text ends with it, since it is moved by more than the 5 pixels left there",
       [&](const FontGlyph& g) { return g.xoffset + font.paddingLeft > kSpareWidth; });
  tell("at the top of its line", [&](const FontGlyph& g) { return g.yoffset + font.paddingTop < 0; });
  tell("at the bottom, since the top padding moves it out of the line", [&](const FontGlyph& g) {
    return font.paddingTop > 0 &&
           g.yoffset + font.paddingTop + g.height > std::max(font.lineHeight, g.height + std::max(g.yoffset, 0));
  });
}

void checkCharacters(XmlFile& file, const FontData& font, const std::string& name) {
  std::vector<int> missing[2];
  const char* shownWithout[2] = {nullptr, nullptr};
  const auto look = [&](const TextSample& sample) {
    if (name != sample.font) return;
    for (const int code : codePoints(sample.text)) {
      if (code == '\n' || font.find(code)) continue;
      // What every text needs is not told once more for some countries.
      const auto known = [code](const std::vector<int>& list) {
        return std::find(list.begin(), list.end(), code) != list.end();
      };
      if (known(missing[1]) || known(missing[sample.always])) continue;
      missing[sample.always].push_back(code);
      if (!shownWithout[sample.always]) shownWithout[sample.always] = sample.text;
    }
  };
  for (const bool always : {true, false})
    for (const std::vector<TextSample>* table : {&neededCharacters(), &textSamples()})
      for (const TextSample& sample : *table)
        if (sample.always == always) look(sample);
  for (const bool always : {true, false}) {
    const std::vector<int>& list = missing[always];
    if (list.empty()) continue;
    std::string text = list.size() == 1 ? "a character is missing, " : "characters are missing, ";
    for (size_t i = 0; i < list.size() && i < kNamed; ++i) text += (i == 0 ? "" : ", ") + characterName(list[i]);
    if (list.size() > kNamed) text += " and " + std::to_string(list.size() - kNamed) + " more";
    text += std::string(": the program leaves ") + (list.size() == 1 ? "it" : "them") + " out of texts such as " +
            oneLine(shownWithout[always]);
    if (always)
      file.error("font-character", text, font.charsPlace);
    else
      file.warn("font-character", text, font.charsPlace);
  }
}

// How far down from the top of the texture a text's glyphs reach.
int64_t lowestPixel(const FontData& font, const std::string& text) {
  int64_t lowest = 0, line = 0;
  for (const int code : codePoints(text)) {
    if (code == '\n') line += font.lineHeight;
    const FontGlyph* glyph = code == '\n' ? nullptr : font.find(code);
    if (glyph && !showsNothing(*glyph))
      lowest = std::max(lowest, line + font.paddingTop + glyph->yoffset + glyph->height);
  }
  return lowest;
}

void checkFits(XmlFile& file, const FontData& font, const std::string& name) {
  const TextRoom* room = roomOf(name);
  if (!room || font.lineHeight < 1) return;
  const std::string place = std::string(" (") + room->place + ", " +
                            (room->width ? std::to_string(room->width) + " x " : std::string()) +
                            std::to_string(room->height) + (room->width ? ")" : " high)");
  for (const TextSample& sample : textSamples()) {
    if (name != sample.font) continue;
    const TextSize size = measureText(font, sample.text);
    const std::string text = "the text " + oneLine(sample.text);
    const std::string measures = " measures " + std::to_string(size.line) + " x " + std::to_string(size.height);
    if (room->shrunk) {
      const double scale = shrunkScale(size, room->width, room->height);
      if (scale < kLegibleScale)
        file.warn(
          "text-fit",
          text + measures + " and is drawn at " + percent(scale) + " of its size, which is hard to read" + place,
          font.linePlace);
      continue;
    }
    if (room->width > 0 && size.line > room->width)
      file.error("text-fit", text + measures + " and stands out of its place" + place, font.linePlace);
    else if (size.height > room->height && lowestPixel(font, sample.text) > room->height + room->below)
      file.error("text-fit",
                 text + " reaches down to pixel " + std::to_string(lowestPixel(font, sample.text)) +
                   " and lies over what stands below" + place,
                 font.linePlace);
  }
}

// Columns of a glyph's rectangle in which something shows, relative to the rectangle; `right` is below `left` when
// there are none.
struct Ink {
  int left = 0, right = -1;
};

Ink inkOf(const SDL_Surface* rgba, const FontGlyph& glyph) {
  if (!rgba) return {0, glyph.width - 1};
  Ink ink{glyph.width, -1};
  const int beginX = std::clamp(glyph.x, 0, rgba->w), endX = std::clamp(glyph.x + glyph.width, 0, rgba->w);
  const int beginY = std::clamp(glyph.y, 0, rgba->h), endY = std::clamp(glyph.y + glyph.height, 0, rgba->h);
  for (int y = beginY; y < endY; ++y) {
    const Uint8* row = static_cast<const Uint8*>(rgba->pixels) + static_cast<ptrdiff_t>(y) * rgba->pitch;
    for (int x = beginX; x < endX; ++x)
      if (row[4 * x + 3] >= 128) {
        ink.left = std::min(ink.left, x - glyph.x);
        ink.right = std::max(ink.right, x - glyph.x);
      }
  }
  return ink;
}

// The wheels scale all their glyphs so that the highest one of the whole font fills their box.
void checkDigits(XmlFile& file, const FontData& font, const PictureFile& picture) {
  const auto lower = [](const FontGlyph& a, const FontGlyph& b) { return a.height < b.height; };
  const auto highest = std::max_element(font.glyphs.begin(), font.glyphs.end(), lower);
  if (highest == font.glyphs.end() || highest->height < 1) return;
  const double scale = static_cast<double>(kWheelsHeight) / highest->height;
  int digitHeight = 0;
  for (int digit = '0'; digit <= '9'; ++digit)
    if (const FontGlyph* glyph = font.find(digit)) digitHeight = std::max(digitHeight, glyph->height);
  if (digitHeight > 0 && highest->height > digitHeight)
    file.warn("digit-scale",
              "the character " + characterName(highest->id) + " is " + std::to_string(highest->height) +
                " pixels high and makes the digits smaller, which fill " +
                percent(digitHeight * scale / kWheelsHeight) + " of their box",
              highest->place);
  if (scale > kBlownUp)
    file.warn("digit-scale",
              "the highest glyph has " + std::to_string(highest->height) + " pixels in the place of " +
                std::to_string(kWheelsHeight) + ": the digits are blown up to " + percent(scale),
              highest->place);

  const std::shared_ptr<SDL_Surface> rgba(
    picture.surface ? SDL_ConvertSurfaceFormat(picture.surface.get(), SDL_PIXELFORMAT_RGBA32, 0) : nullptr,
    SDL_FreeSurface);
  for (const char digit : std::string("0123456789.,")) {
    const int code = static_cast<unsigned char>(digit);
    const FontGlyph* glyph = font.find(code);
    if (!glyph || showsNothing(*glyph)) continue;
    const Ink ink = inkOf(rgba.get(), *glyph);
    if (ink.right < ink.left) {
      file.error("digit-fit", "the character " + characterName(code) + " is clear: nothing shows on the wheels",
                 glyph->place);
      continue;
    }
    const double width = (ink.right - ink.left + 1) * scale;
    const bool isDigit = code >= '0' && code <= '9';
    const int room = isDigit ? kWheelWidth : kSeparatorWidth;
    const std::string measures = "the character " + characterName(code) + " is " +
                                 std::to_string(std::lround(width)) + " pixels wide on the wheels";
    if (width > room + 0.5)
      file.error(
        "digit-fit",
        measures + (isDigit ? " and has 48 with a gap of 2: it runs into its neighbours"
                            : ": a separator above " + std::to_string(room) + " covers the digits beside it"),
        glyph->place);
    else if (isDigit && std::abs(ink.left + ink.right - (glyph->width - 1)) * scale / 2 > kOffCentre)
      file.warn("digit-fit", measures + " and stands off the middle of its rectangle, which the program centres",
                glyph->place);
  }
}

}  // namespace

void checkFont(const std::string& path, const std::string& name, Findings& findings) {
  XmlFile file(path, findings);
  FontData font;
  if (!readFont(file, font)) return;
  const bool wheels = name == "Fonts/currency";
  const PictureFile picture = readAtlas(file, font, wheels, findings);
  checkGlyphs(file, font, picture);
  checkCuts(file, font);
  checkCharacters(file, font, name);
  checkFits(file, font, name);
  if (wheels) checkDigits(file, font, picture);
}
