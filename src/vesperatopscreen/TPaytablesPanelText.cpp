// The prizes laid over the pages.
#include <SDL_ttf.h>
#include <algorithm>
#include <cstdio>
#include <optional>
#include <set>
#include <stdexcept>

#include "common/TBitmapFont.h"
#include "common/TKSLReturnStructures.h"
#include "common/ThreadSafeProperty.h"
#include "components/TGlyphLabel.h"
#include "components/Tlabel.h"
#include "vendelo-sdl2/MyUtils.h"
#include "vendelo-sdl2/TApplication.h"
#include "vesperatopscreen/GamePath.h"
#include "vesperatopscreen/TPaytablesPanel.h"
#include "vesperatopscreen/TopScreenApp.h"

using namespace vendelo_sdl2;

struct TextPos {
  int x, y;
};

// One text of the platform's setup.
struct TPaytablesPanel::TPageText {
  std::string symbol;  // with the number of symbols, the label's name
  PaytableText prize;
  std::string font;
  int fontSize;
  bool alignedLeft;
  SDL_Color sdlColor;
  SDL_Color shadowColor;
  TextPos pos;
  int w, h;
};

struct TPaytablesPanel::TSetup {
  std::optional<xmlrpc_c::carray> pages;
  int paylines = 1;
  int betCost = 1;

  explicit TSetup(const xmlrpc_c::cstruct& extra);
};

namespace {

constexpr const char* paytablePage = "paytable";
constexpr const char* bonusPage = "paytableBonus";

const xmlrpc_c::value& at(const xmlrpc_c::cstruct& record, const char* key) {
  const auto found = record.find(key);
  if (found == record.end()) throw std::runtime_error(std::string("paytable setup: no \"") + key + "\"");
  return found->second;
}

int intAt(const xmlrpc_c::cstruct& record, const char* key) {
  return xmlrpc_c::value_int(at(record, key)).cvalue();
}

std::string stringAt(const xmlrpc_c::cstruct& record, const char* key) {
  return xmlrpc_c::value_string(at(record, key)).cvalue();
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

// Numbers beyond this, in pixels, say nothing that a screen shows and do not survive the toolkit's arithmetic.
constexpr int kFarAway = 1 << 20;

int nearBy(int pixels) { return std::clamp(pixels, -kFarAway, kFarAway); }

}  // namespace

// Modulo 2^64, and the quotient of that modulo 2^32: no numbers of the sender may fault.
int paytableWin(const PaytableText& text, int64_t currentBet, int betCost) {
  const uint64_t product = static_cast<uint64_t>(text.Win) * static_cast<uint64_t>(currentBet);
  if (text.Mode == "scatter" || text.Mode == "consecutive") return static_cast<int>(product);
  if (betCost == 0) return 0;
  if (betCost == -1) return static_cast<int>(0 - product);  // the least number has no opposite
  return static_cast<int>(static_cast<int64_t>(product) / betCost);
}

TPaytablesPanel::TSetup::TSetup(const xmlrpc_c::cstruct& extra) {
  if (const auto found = extra.find("paytableSetup"); found != extra.end())
    pages = xmlrpc_c::value_array(found->second).cvalue();
  if (extra.count("paylines")) paylines = intAt(extra, "paylines");
  betCost = extra.count("betCost") ? intAt(extra, "betCost") : paylines;
}

// A cost of 0 is the sender's mistake; a screen that nobody watches shows 0 rather than die of it.
int TPaytablesPanel::betCostOf(const TSetup& setup, const std::string& gameName) {
  if (setup.betCost == 0 && mBadBetCostGame != gameName) {
    mBadBetCostGame = gameName;
    pApp->WriteLog(4, 0, "The bet cost of game '%s' is 0: its line wins show 0.", gameName.c_str());
  }
  return setup.betCost;
}

void TPaytablesPanel::createPaytable(const std::string& gameName) {
  checkDrawThread();
  if (mCreatedForGame == gameName) return;
  const auto background = mHelpScreens.find(possibleScreensArray[0]);
  pBackground->SetTargetTexture(background == mHelpScreens.end() ? nullptr : background->second);

  auto& property = static_cast<TopScreenApp*>(pApp)->getState();
  ScopedLock lock(property);
  const TSetup setup(property->ExtraData);
  if (!setup.pages || setup.pages->empty()) {
    std::printf("WARNING: Could not create paytable because no paytable setup data was recieved!\n");
    return;
  }
  try {
    buildPages(gameName, setup, &property);
  } catch (...) {
    clearTexts();  // half a page would stand in the way of the next attempt
    throw;
  }
  mCreatedForGame = gameName;
}

void TPaytablesPanel::buildPages(const std::string& gameName, const TSetup& setup, const PlatformState& state) {
  const int betCost = betCostOf(setup, gameName);
  auto* prizeLabel = new TGlyphLabel(GetRenderer(), 0, mScreenH - 25, mScreenW, 25, message(4),
                                     MyUtils::ImageDir() + "Fonts/uni_font", "prizeLabel");
  prizeLabel->_setVisible(false);
  prizeLabel->SetAlignment(CENTER_CENTER);
  prizeLabel->SetResizeOnlyDown(true);
  AddComponent(prizeLabel);

  const bool gameStays = !gamePath(gameName).empty();  // else its name was told already
  std::set<std::string> refusedFonts;
  for (const xmlrpc_c::value& item : *setup.pages) {
    const xmlrpc_c::cstruct page = xmlrpc_c::value_struct(item).cvalue();
    const std::string pageName = stringAt(page, "name");
    const xmlrpc_c::carray textsArray = xmlrpc_c::value_array(at(page, "texts")).cvalue();
    if (pageName != paytablePage && pageName != bonusPage) continue;
    const size_t index = pageName != paytablePage;
    TPageText last{};
    for (const xmlrpc_c::value& text : textsArray) {
      const xmlrpc_c::cstruct record = xmlrpc_c::value_struct(text).cvalue();
      last.symbol = stringAt(record, "symbol") + "_" + MyUtils::itos(intAt(record, "occurs"));
      last.prize = {stringAt(record, "mode"), intAt(record, "win")};
      last.font = stringAt(record, "font");
      last.fontSize = intAt(record, "fontSize");
      last.alignedLeft = intAt(record, "alignedLeft") == 1;
      const int altColor = record.count("altColor") ? intAt(record, "altColor") : 0xFFFFFF;
      last.sdlColor = chooseColor(intAt(record, "color"), altColor);
      last.shadowColor = shadowOf(last.sdlColor);
      last.pos = {intAt(record, "x"), intAt(record, "y")};
      last.w = intAt(record, "w");
      last.h = intAt(record, "h");
      if (gameStays && gamePath(gameName, last.font).empty() && refusedFonts.insert(last.font).second)
        pApp->WriteLog(4, 0, "The font '%s' of game '%s' leads out of the game folders: it counts as missing.",
                       last.font.c_str(), gameName.c_str());
      buildText(last, gameName, index, state, betCost);
    }
    if (pageName == paytablePage) buildBetLabels(last, gameName);
    mPaytableComponents[index].push_back(prizeLabel);
  }
}

void TPaytablesPanel::buildText(const TPageText& text, const std::string& gameName, size_t page,
                                const PlatformState& state, int betCost) {
  const int actualWin = paytableWin(text.prize, state.CurrentBet, betCost);
  auto* thisLabel =
    new TGlyphLabel(GetRenderer(), nearBy(text.pos.x), nearBy(text.pos.y), nearBy(text.w), nearBy(text.h),
                    MyUtils::currency2string(actualWin, 0), gamePath(gameName, text.font), text.symbol);
  if (!thisLabel->Font() || !thisLabel->Font()->FindGlyph('0'))
    std::printf("WARNING: Could not find font \"Games/%s/Icons/%s\"!\n", gameName.c_str(), text.font.c_str());
  if (text.pos.x == 0 && text.pos.y == 0)
    std::printf("WARNING: Could not find position for symbol \"%s\"!\n", text.symbol.c_str());
  thisLabel->_setVisible(false);
  thisLabel->SetAlignment(text.alignedLeft ? LEFT_UP : CENTER_UP);
  if (pHelpScreen->AddComponent(thisLabel)) {
    mPaytableComponents[page].push_back(thisLabel);
    mSymbolWin[text.symbol] = text.prize;
  } else {
    delete thisLabel;  // the name is taken: the first text of that name stays, with its prize
  }
}

// Drawn in the style of the page's last text.
void TPaytablesPanel::buildBetLabels(const TPageText& last, const std::string& gameName) {
  const int fontSize =
    std::clamp(last.fontSize, -mScreenH, mScreenH);  // a larger one takes memory, and shows nothing
  TTF_Font* pFont = nullptr;
  if (const std::string font = gamePath(gameName, last.font); !font.empty())
    for (const char* ending : {".ttf", ".otf"})
      if (!pFont) pFont = TTF_OpenFont((font + ending).c_str(), fontSize);
  const int y = mScreenH - fontSize - 10;
  auto* minBetLabel =
    new Tlabel(GetRenderer(), 10, y, 300, fontSize, message(1), pFont, last.sdlColor, "minBetLabel");
  minBetLabel->SetAlignment(LEFT_CENTER);
  auto* maxBetLabel =
    new Tlabel(GetRenderer(), mScreenW - 310, y, 300, fontSize, message(2), pFont, last.sdlColor, "maxBetLabel");
  maxBetLabel->SetAlignment(RIGHT_CENTER);
  bool fontIsUsed = false;
  for (Tlabel* label : {minBetLabel, maxBetLabel}) {
    label->_setVisible(false);
    label->SetShadow(true, 2, last.shadowColor);
    if (AddComponent(label)) {
      mPaytableComponents[0].push_back(label);
      fontIsUsed = true;
    } else {
      delete label;  // a second page of this name
    }
  }
  if (!fontIsUsed && pFont) TTF_CloseFont(pFont);
}

int TPaytablesPanel::updatePaytable() {
  checkDrawThread();
  if (mLoadedForGame.empty()) return -2;
  auto& property = static_cast<TopScreenApp*>(pApp)->getState();
  ScopedLock lock(property);
  const int betCost = betCostOf(TSetup(property->ExtraData), mLoadedForGame);
  for (const auto& [symbol, prize] : mSymbolWin)
    if (auto* thisLabel = static_cast<TGlyphLabel*>(pHelpScreen->FindComponentByName(symbol)))
      thisLabel->SetText(MyUtils::currency2string(paytableWin(prize, property->CurrentBet, betCost), 0));
  if (auto* label = static_cast<Tlabel*>(FindComponentByName("minBetLabel")))
    label->SetText(message(1) + ": " + MyUtils::currency2string(static_cast<double>(property->MinBet), 0));
  // The trailing blank belongs to the text.
  if (auto* label = static_cast<Tlabel*>(FindComponentByName("maxBetLabel")))
    label->SetText(message(2) + ": " + MyUtils::currency2string(static_cast<double>(property->MaxBet), 0) + " ");
  if (auto* label = static_cast<TGlyphLabel*>(FindComponentByName("prizeLabel"))) label->SetText(message(4));
  return 0;
}

void TPaytablesPanel::paytableVisible(int index) {
  checkDrawThread();
  for (int i = 0; i < 2; ++i)
    for (TGuiComponent* component : mPaytableComponents[i]) component->_setVisible(i == index);
}
