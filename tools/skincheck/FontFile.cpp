#include "FontFile.h"

#include <algorithm>
#include <array>

namespace {

using Node = XmlFile::Node;
using Attribute = XmlFile::Attribute;

// The first element of that name, or null and an error where it had to be.
const Node* element(XmlFile& file, const Node& parent, const char* name, const char* effect) {
  const Node* found = parent.first_node(name);
  if (!found)
    file.error(
      "font-element",
      "the element \"" + std::string(parent.name(), parent.name_size()) + "\" has no \"" + name + "\": " + effect,
      file.placeOf(parent));
  return found;
}

// Comma-separated numbers, of which the program takes the first ones and the last.
std::array<int, 4> fourNumbers(XmlFile& file, const Attribute& attribute, const char* code, const char* order) {
  std::array<int, 4> out{0, 0, 0, 0};
  const std::string all = attribute.value(), name = attribute.name();
  const TextPlace place = file.placeOf(attribute);
  std::vector<std::string> parts(1);
  for (const char c : all)
    if (c == ',')
      parts.emplace_back();
    else
      parts.back() += c;
  if (parts.size() != out.size()) {
    file.error(code,
               "\"" + name + "\" has " + std::to_string(parts.size()) + " numbers in the place of four: " + order,
               place);
    return out;
  }
  for (size_t i = 0; i < out.size(); ++i) out[i] = file.number(parts[i], name, code, place);
  return out;
}

void readInfo(XmlFile& file, const Node& root, FontData& font) {
  const Node* info = element(file, root, "info", "the padding is missing");
  if (!info) return;
  if (const Attribute* padding = file.attribute(*info, "padding", "font-padding")) {
    const std::array<int, 4> sides = fourNumbers(file, *padding, "font-padding", "top, right, bottom, left");
    font.paddingTop = sides[0];
    font.paddingRight = sides[1];
    font.paddingBottom = sides[2];
    font.paddingLeft = sides[3];
  }
  const Attribute* colour = info->first_attribute("backgroundColor");
  if (!colour) return;
  for (const int channel : fourNumbers(file, *colour, "font-background", "red, green, blue, alpha"))
    if (channel < 0 || channel > 255) {
      file.error("font-background", "\"backgroundColor\" has a number outside 0 to 255", file.placeOf(*colour));
      break;
    }
}

void readPage(XmlFile& file, const Node& root, FontData& font) {
  const Node* pages = element(file, root, "pages", "the font has no picture");
  const Node* page = pages ? element(file, *pages, "page", "the font has no picture") : nullptr;
  if (!page) return;
  const Attribute* name = page->first_attribute("file");
  if (!name) name = page->first_attribute("pack");
  if (!name) name = file.attribute(*page, "file", "font-attribute");
  if (name) {
    font.page = file.path().substr(0, file.path().rfind('/') + 1) + name->value();
    font.pagePlace = file.placeOf(*name);
  }
  if (const Node* second = page->next_sibling("page"))
    file.warn("font-page", "the program reads the first page only: glyphs of this one show what lies there instead",
              file.placeOf(*second));
}

void readGlyphs(XmlFile& file, const Node& chars, FontData& font) {
  for (const Node* c = chars.first_node("char"); c; c = c->next_sibling("char")) {
    FontGlyph glyph;
    glyph.place = file.placeOf(*c);
    const auto read = [&](const char* name) { return file.number(*c, name, "font-attribute", std::nullopt); };
    glyph.id = read("id");
    glyph.x = read("x");
    glyph.y = read("y");
    glyph.width = read("width");
    glyph.height = read("height");
    glyph.xoffset = read("xoffset");
    glyph.yoffset = read("yoffset");
    glyph.xadvance = read("xadvance");
    const auto [same, isNew] = font.first.emplace(glyph.id, font.glyphs.size());
    if (!isNew && c->first_attribute("id"))
      file.warn("font-id",
                "the character " + characterName(glyph.id) +
                  " stands here again: the program takes the one of line " +
                  std::to_string(font.glyphs[same->second].place.line),
                glyph.place);
    font.glyphs.push_back(std::move(glyph));
  }
}

void readKernings(XmlFile& file, const Node& kernings, FontData& font) {
  for (const Node* k = kernings.first_node("kerning"); k; k = k->next_sibling("kerning")) {
    const auto read = [&](const char* name) { return file.number(*k, name, "font-kerning", std::nullopt); };
    const int first = read("first"), second = read("second"), amount = read("amount");
    for (const int id : {first, second})
      if (!font.find(id)) {
        file.warn("font-kerning", "the font has no character " + characterName(id) + " to kern", file.placeOf(*k));
        break;
      }
    const auto found = font.first.find(first);
    if (found != font.first.end()) font.glyphs[found->second].kernings.push_back({second, amount});
  }
}

}  // namespace

bool readFont(XmlFile& file, FontData& font) {
  if (!file.parsed()) return false;
  const Node* root = file.root("font");
  if (!root) {
    const Node* other = file.anyRoot();
    file.error("font-element", "there is no element \"font\": the program cannot use the file",
               other ? file.placeOf(*other) : TextPlace{});
    return false;
  }
  readInfo(file, *root, font);
  if (const Node* common = element(file, *root, "common", "the lines have no height")) {
    const Attribute* height = common->first_attribute("lineHeight");
    font.linePlace = height ? file.placeOf(*height) : file.placeOf(*common);
    font.lineHeight = file.number(*common, "lineHeight", "font-attribute", std::nullopt);
    font.base = file.number(*common, "base", "font-attribute", std::nullopt);
    if (height && font.lineHeight < 1)
      file.error("font-attribute", "\"lineHeight\" is not above 0: lines lie on each other", font.linePlace);
  }
  readPage(file, *root, font);
  const Node* chars = element(file, *root, "chars", "the program cannot use the file");
  if (!chars) return false;
  font.charsPlace = file.placeOf(*chars);
  readGlyphs(file, *chars, font);
  if (font.glyphs.empty())
    file.error("font-element", "the element \"chars\" has no \"char\": the font shows nothing",
               file.placeOf(*chars));
  if (const Node* kernings = root->first_node("kernings")) readKernings(file, *kernings, font);
  return true;
}
