// The description file of a bitmap font.
#include <algorithm>
#include <cstdlib>
#include <deque>
#include <filesystem>
#include <locale>
#include <rapidxml/rapidxml.hpp>
#include <sstream>
#include <unordered_map>

#include "common/SkinXml.h"
#include "common/TBitmapFont.h"
#include "vendelo-sdl2/MyUtils.h"
#include "vendelo-sdl2/PixelLimits.h"
#include "vendelo-sdl2/Saturate.h"
#include "vendelo-sdl2/TLogManager.h"
#include "vendelo-sdl2/TRenderGuard.h"

namespace {

using Node = rapidxml::xml_node<char>;

// Glyphs are shared by fonts that end at different times, so they live as long as the process.
TBitmapFont::TGlyph* newGlyph() {
  static auto& arena = *new std::deque<TBitmapFont::TGlyph>;
  return &arena.emplace_back();
}

// Whether this is not what was said of the file last: labels open a broken one again and again.
bool isNews(const std::string& file, const std::string& problems) {
  static auto& told = *new std::unordered_map<std::string, std::string>;
  if (problems.empty()) return told.erase(file), false;
  std::string& last = told[file];
  if (last == problems) return false;
  last = problems;
  return true;
}

// Reads numbers out of attributes and remembers what was not there.
class Reader {
 public:
  int number(const Node* node, const char* name) {
    const char* value = text(node, name);
    return value ? MyUtils::leadingNumber(value) : 0;
  }

  int pixels(const Node* node, const char* name) { return MyUtils::withinReach(number(node, name)); }

  const char* text(const Node* node, const char* name) {
    const auto* attribute = node ? node->first_attribute(name) : nullptr;
    if (!attribute) missing(name);
    return attribute ? attribute->value() : nullptr;
  }

  // Comma-separated: the first numbers in their order, and what follows the last comma into the last place,
  // however many there are.
  template <typename Number, size_t N>
  void numbers(const char* text, const char* name, Number (&out)[N]) {
    const std::string all = text;
    size_t begin = 0, count = 1;
    for (size_t comma; (comma = all.find(',', begin)) != std::string::npos; begin = comma + 1, ++count)
      if (count < N) out[count - 1] = static_cast<Number>(MyUtils::leadingNumber(all.c_str() + begin));
    out[N - 1] = static_cast<Number>(MyUtils::leadingNumber(all.c_str() + begin));
    if (count < N) missing(name);
  }

  const std::string& firstMissing() const { return mFirstMissing; }

 private:
  void missing(const char* name) {
    if (mFirstMissing.empty()) mFirstMissing = name;
  }
  std::string mFirstMissing;
};

}  // namespace

TBitmapFont::TBitmapFont(SDL_Renderer* renderer, const std::string& name, const std::string& XMLfilename)
  : mName(name), mXML(XMLfilename) {
  UnregisteredFonts.push_back(this);
  if (!MyUtils::FileExists(XMLfilename, true, false)) return;
  for (const TBitmapFont* font : BitmapFonts) {
    if (font->mXML == mXML) {
      shareWith(*font);
      return;
    }
  }
  const SkinXml file(XMLfilename);
  std::string problems;
  bool usable = false;
  if (file.fault() == SkinXml::Fault::NO_XML)
    problems = "it is no XML, " + file.problem();
  else if (file.fault() == SkinXml::Fault::NESTED_TOO_DEEP)
    problems = file.problem();
  else
    usable = parse(renderer, file, problems);
  if (isNews(mXML, problems))
    logman::WriteLog(4, 0, "Font %s%s: %s.", MyUtils::EscapeControls(mXML).c_str(), usable ? "" : " is not usable",
                     MyUtils::EscapeControls(problems).c_str());
  if (!usable) return;
  UnregisteredFonts.pop_back();
  BitmapFonts.push_back(this);
}

bool TBitmapFont::parse(SDL_Renderer* renderer, const SkinXml& file, std::string& problems) {
  const Node* font = file.document().first_node("font");
  if (!font) {
    problems = "there is no \"font\" in it";
    return false;
  }

  Reader reader;
  const Node* info = font->first_node("info");
  if (const char* padding = reader.text(info, "padding")) {
    int sides[4] = {0, 0, 0, 0};
    reader.numbers(padding, "padding", sides);
    for (int& side : sides) side = MyUtils::withinReach(side);
    mPaddingTop = sides[0];
    mPaddingRight = sides[1];
    mPaddingBottom = sides[2];
    mPaddingLeft = sides[3];
  }
  if (const auto* colour = info ? info->first_attribute("backgroundColor") : nullptr) {
    Uint8 rgba[4] = {0, 0, 0, 0};
    reader.numbers(colour->value(), "backgroundColor", rgba);
    mBackgroundColor = {rgba[0], rgba[1], rgba[2], rgba[3]};
  }
  const Node* common = font->first_node("common");
  mLineHeight = reader.pixels(common, "lineHeight");
  mBase = reader.pixels(common, "base");

  const Node* pages = font->first_node("pages");
  const Node* page = pages ? pages->first_node("page") : nullptr;
  const auto* pack = page && !page->first_attribute("file") ? page->first_attribute("pack") : nullptr;
  const char* image = pack ? pack->value() : reader.text(page, "file");
  if (image) loadAtlas(renderer, image);

  const Node* chars = font->first_node("chars");
  if (chars) {
    for (const Node* c = chars->first_node("char"); c; c = c->next_sibling("char")) {
      TGlyph* glyph = newGlyph();
      glyph->id = reader.number(c, "id");
      glyph->x = reader.pixels(c, "x");
      glyph->y = reader.pixels(c, "y");
      glyph->width = reader.pixels(c, "width");
      glyph->height = reader.pixels(c, "height");
      glyph->xoffset = reader.pixels(c, "xoffset");
      glyph->yoffset = reader.pixels(c, "yoffset");
      glyph->xadvance = reader.pixels(c, "xadvance");
      mMaxHeight = std::max(mMaxHeight, glyph->height);
      mMaxWidth = std::max(mMaxWidth, glyph->width);
      mGlyphChars.push_back(glyph);
    }
    // FindGlyph's answers, without its walk: a large file has as many pairs as glyphs.
    std::unordered_map<int, TGlyph*> byId;
    for (TGlyph* glyph : mGlyphChars) byId.emplace(glyph->id, glyph);
    const Node* kernings = font->first_node("kernings");
    for (const Node* k = kernings ? kernings->first_node("kerning") : nullptr; k; k = k->next_sibling("kerning")) {
      const auto first = byId.find(reader.number(k, "first"));
      if (first != byId.end())
        first->second->kernings.push_back({reader.number(k, "second"), reader.pixels(k, "amount")});
    }
  }
  const auto complain = [&problems](const std::string& problem) {
    problems += (problems.empty() ? "" : "; ") + problem;
  };
  if (!chars) complain("there is no \"chars\" in it");
  if (!reader.firstMissing().empty())
    complain("\"" + reader.firstMissing() +
             "\" is missing or too short, taking 0 for it and what else is not there");
  if (const int outside = glyphsOutsideTheAtlas()) {
    std::ostringstream text;
    text.imbue(std::locale::classic());
    text << outside << " of its glyphs lie outside the picture";
    complain(text.str());
  }
  return chars != nullptr;
}

int TBitmapFont::glyphsOutsideTheAtlas() const {
  const SDL_Surface* atlas = GlyphPicture();
  if (!atlas) return 0;
  return static_cast<int>(std::count_if(mGlyphChars.begin(), mGlyphChars.end(), [atlas](const TGlyph* g) {
    const bool empty = g->width == 0 || g->height == 0;
    return !empty && (g->x < 0 || g->y < 0 || g->width < 0 || g->height < 0 || g->width > atlas->w - g->x ||
                      g->height > atlas->h - g->y);
  }));
}

void TBitmapFont::loadAtlas(SDL_Renderer* renderer, const std::string& image) {
  // The same description by another name, as with a doubled separator.
  const std::filesystem::path file = std::filesystem::path(mXML).lexically_normal();
  for (const TBitmapFont* font : BitmapFonts)
    if (font->mpOwnAtlas && font->mpOwnAtlas->renderer == renderer && font->mpOwnAtlas->description == file) {
      mpAtlas = font->mpAtlas;
      return;
    }
  vendelo_sdl2::TRenderGuard guard(renderer);
  guard.colour(mBackgroundColor.r, mBackgroundColor.g, mBackgroundColor.b, mBackgroundColor.a);
  MyUtils::TSurfacePtr picture =
    MyUtils::InDrawnFormat(MyUtils::TSurfacePtr(MyUtils::LoadSurface(mXML.substr(0, mXML.rfind('/') + 1) + image)));
  if (!picture) return;
  mpOwnAtlas = std::make_unique<Atlas>(Atlas{std::move(picture), renderer, file, nullptr});
  mpAtlas = mpOwnAtlas.get();
}
