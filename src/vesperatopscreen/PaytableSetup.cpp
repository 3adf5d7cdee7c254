#include "src/vesperatopscreen/PaytableSetup.h"

#include <cstring>
#include <stdexcept>

#include "vendelo-sdl2/MyUtils.h"

using xmlrpc_c::cstruct;
using xmlrpc_c::value;

namespace {

// The library's own texts do not say what it was that had the wrong type.
template <class Type>
auto as(const value& item, const std::string& what) {
  try {
    return Type(item).cvalue();
  } catch (const std::exception& error) {
    throw std::runtime_error(what + ": " + error.what());
  }
}

const value& at(const cstruct& record, const char* key) {
  const auto found = record.find(key);
  if (found == record.end()) throw std::runtime_error(std::string("there is no \"") + key + "\"");
  return found->second;
}

std::string quoted(const char* key) { return std::string("\"") + key + "\""; }

int intAt(const cstruct& record, const char* key) { return as<xmlrpc_c::value_int>(at(record, key), quoted(key)); }

std::string stringAt(const cstruct& record, const char* key) {
  return as<xmlrpc_c::value_string>(at(record, key), quoted(key));
}

xmlrpc_c::carray arrayAt(const cstruct& record, const char* key) {
  return as<xmlrpc_c::value_array>(at(record, key), quoted(key));
}

SDL_Color colorOf(int rgb) {
  return {static_cast<Uint8>(rgb >> 16), static_cast<Uint8>(rgb >> 8), static_cast<Uint8>(rgb), 255};
}

// Pure white gives way to the other colour, unless that has a channel at its full.
SDL_Color chooseColor(int color, int altColor) {
  const SDL_Color first = colorOf(color), other = colorOf(altColor);
  const bool white = first.r == 255 && first.g == 255 && first.b == 255;
  return white && other.r != 255 && other.g != 255 && other.b != 255 ? other : first;
}

// The threshold lies at a very dark colour, so that nearly every text gets a black shadow: as it is wanted.
SDL_Color shadowOf(const SDL_Color& color) {
  const double luminance = (0.3 * color.r + 0.59 * color.g + 0.11 * color.b) / 100;
  return luminance >= 0.5 ? SDL_Color{0, 0, 0, 255} : SDL_Color{128, 128, 128, 255};
}

TPaytableText textOf(const cstruct& record) {
  TPaytableText text{};
  text.symbol = stringAt(record, "symbol") + "_" + MyUtils::itos(intAt(record, "occurs"));
  text.prize = {stringAt(record, "mode"), intAt(record, "win")};
  text.font = stringAt(record, "font");
  text.fontSize = intAt(record, "fontSize");
  text.alignedLeft = intAt(record, "alignedLeft") == 1;
  const int altColor = record.count("altColor") ? intAt(record, "altColor") : 0xFFFFFF;
  text.sdlColor = chooseColor(intAt(record, "color"), altColor);
  text.shadowColor = shadowOf(text.sdlColor);
  text.pos = {intAt(record, "x"), intAt(record, "y")};
  text.w = intAt(record, "w");
  text.h = intAt(record, "h");
  return text;
}

// Each value begins with its type, and what has no fixed length with its length.
void append(std::string& content, const value& item) {
  content += static_cast<char>('a' + item.type());
  const auto text = [&content](const std::string& bytes) { content += std::to_string(bytes.size()) + ':' + bytes; };
  switch (item.type()) {
    case value::TYPE_INT:
      content += std::to_string(xmlrpc_c::value_int(item).cvalue()) + ';';
      break;
    case value::TYPE_I8:
      content += std::to_string(xmlrpc_c::value_i8(item).cvalue()) + ';';
      break;
    case value::TYPE_BOOLEAN:
      content += xmlrpc_c::value_boolean(item).cvalue() ? '1' : '0';
      break;
    case value::TYPE_DOUBLE: {
      const double number = xmlrpc_c::value_double(item).cvalue();
      char bytes[sizeof number];
      std::memcpy(bytes, &number, sizeof bytes);
      content.append(bytes, sizeof bytes);
      break;
    }
    case value::TYPE_STRING:
      text(xmlrpc_c::value_string(item).cvalue());
      break;
    case value::TYPE_ARRAY: {
      const xmlrpc_c::carray items = xmlrpc_c::value_array(item).cvalue();
      content += std::to_string(items.size()) + ':';
      for (const value& inner : items) append(content, inner);
      break;
    }
    case value::TYPE_STRUCT: {
      const cstruct members = xmlrpc_c::value_struct(item).cvalue();
      content += std::to_string(members.size()) + ':';
      for (const auto& [key, inner] : members) {
        text(key);
        append(content, inner);
      }
      break;
    }
    default:  // times, bytes and nil are wrong wherever a setup may have them
      break;
  }
}

}  // namespace

TPaytableSetup::TPaytableSetup(const cstruct& extra) : betCost(betCostOf(extra)) {
  if (!extra.count("paytableSetup")) return;
  for (const value& item : arrayAt(extra, "paytableSetup")) {
    isEmpty = false;
    const cstruct record = as<xmlrpc_c::value_struct>(item, "a page");
    TPage page{stringAt(record, "name"), {}};
    const xmlrpc_c::carray textsArray = arrayAt(record, "texts");
    if (page.name != "paytable" && page.name != "paytableBonus") continue;
    for (const value& text : textsArray) page.texts.push_back(textOf(as<xmlrpc_c::value_struct>(text, "a text")));
    pages.push_back(std::move(page));
  }
}

int TPaytableSetup::betCostOf(const cstruct& extra) {
  const int paylines = extra.count("paylines") ? intAt(extra, "paylines") : 1;
  return extra.count("betCost") ? intAt(extra, "betCost") : paylines;
}

std::string TPaytableSetup::contentOf(const cstruct& extra, const char* key) {
  std::string content;
  if (const auto found = extra.find(key); found != extra.end()) append(content, found->second);
  return content;
}
