// What a game says of its paytable in "ExtraData", from the event on to the labels on the page. The bytes choose
// keys, types and values; keys that are read come up most of the time, and so do values of the type that is due.
#include <exception>
#include <string>

#include "tests/fuzz/CrashSignals.h"
#include "tests/fuzz/Target.h"
#include "tests/support/TopScreenHarness.h"

namespace {

using fuzz::Bytes;
using xmlrpc_c::value;

constexpr const char* kNumbers[] = {"occurs", "win", "fontSize", "alignedLeft", "altColor",
                                    "color",  "x",   "y",        "w",           "h"};
constexpr const char* kTexts[] = {"symbol", "mode", "font"};

// The library lets no text through that is no UTF-8, in either direction.
value ownText(Bytes& bytes) {
  std::string text = bytes.text();
  try {
    return xmlrpc_c::value_string(text);
  } catch (const std::exception&) {
    for (char& c : text)
      if (static_cast<unsigned char>(c) >= 0x80) c = '?';
    return xmlrpc_c::value_string(text);
  }
}

value scalar(Bytes& bytes) {
  switch (bytes.below(6)) {
    case 0:
      return xmlrpc_c::value_int(static_cast<int>(bytes.number()));
    case 1:
      return xmlrpc_c::value_i8(bytes.number());
    case 2:
      return xmlrpc_c::value_boolean(bytes.below(2) == 1);
    case 3:
      return xmlrpc_c::value_double(static_cast<double>(bytes.number()) / 7);
    case 4:
      return xmlrpc_c::value_nil();
    default:
      return ownText(bytes);
  }
}

value someNumber(Bytes& bytes) {
  return bytes.below(16) == 0 ? scalar(bytes) : value(xmlrpc_c::value_int(static_cast<int>(bytes.number())));
}

value someText(Bytes& bytes, std::initializer_list<const char*> usual) {
  const size_t choice = bytes.below(16);
  if (choice == 0) return scalar(bytes);
  if (choice <= usual.size()) return xmlrpc_c::value_string(usual.begin()[choice - 1]);
  return ownText(bytes);
}

value text(Bytes& bytes) {
  xmlrpc_c::cstruct record;
  for (const char* key : kNumbers)
    if (bytes.below(32) != 0) record[key] = someNumber(bytes);
  for (const char* key : kTexts)
    if (bytes.below(32) != 0)
      record[key] = someText(bytes, {"digits", "scatter", "consecutive", "line", "A", ".."});
  return xmlrpc_c::value_struct(record);
}

value page(Bytes& bytes) {
  xmlrpc_c::cstruct record;
  if (bytes.below(32) != 0) record["name"] = someText(bytes, {"paytable", "paytableBonus", "other", "paytable"});
  xmlrpc_c::carray texts;
  for (size_t count = bytes.below(5); count > 0; --count)
    texts.push_back(bytes.below(32) == 0 ? scalar(bytes) : text(bytes));
  record["texts"] = bytes.below(32) == 0 ? scalar(bytes) : value(xmlrpc_c::value_array(texts));
  return xmlrpc_c::value_struct(record);
}

xmlrpc_c::cstruct extraData(Bytes& bytes) {
  xmlrpc_c::cstruct extra;
  if (bytes.below(4) != 0) extra["betCost"] = someNumber(bytes);
  if (bytes.below(4) == 0) extra["paylines"] = someNumber(bytes);
  xmlrpc_c::carray pages;
  for (size_t count = bytes.below(4); count > 0; --count)
    pages.push_back(bytes.below(32) == 0 ? scalar(bytes) : page(bytes));
  if (bytes.below(16) != 0)
    extra["paytableSetup"] = bytes.below(32) == 0 ? scalar(bytes) : value(xmlrpc_c::value_array(pages));
  return extra;
}

// The paytable of the game "Reels" is open on its first page.
TopScreenHarness& openScreen() {
  const fuzz::CrashSignals keep;
  auto& screen = *new TopScreenHarness("fuzz_paytable", 16);
  screen.status([](PlatformState& state) {
    state.ActiveGame = GAME_MENU;
    state.CurrentBet = 100;
  });
  screen.send(T_GAME_LOADED, paneldata::gameValue("Reels", GAMETYPE_VESPERA_SLOTGAME));
  screen.send(T_PAYTABLE_STATE, xmlrpc_c::value_int(1));
  screen.until([&screen] { return screen.visible("pPaytablesPanel"); });
  screen.skip(600);
  return screen;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static TopScreenHarness& screen = openScreen();
  Bytes bytes(data, size);
  const int64_t current = bytes.number(), least = bytes.number(), most = bytes.number();
  screen.app().deliver({{T_BET_LIMITS, paneldata::bets(current, least, most)},
                        {T_EXTRA_DATA, xmlrpc_c::value_struct(extraData(bytes))},
                        {T_PAYTABLE_STATE, xmlrpc_c::value_int(static_cast<int>(bytes.below(12)))}});
  screen.skip(300);
  screen.skip(300);
  screen.app().forgetLines();
  return 0;
}
