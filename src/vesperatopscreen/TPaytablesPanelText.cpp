// The prizes laid over the pages.
#include <SDL_ttf.h>
#include <algorithm>
#include <cstdio>
#include <set>

#include "common/TBitmapFont.h"
#include "common/TKSLReturnStructures.h"
#include "common/ThreadSafeProperty.h"
#include "components/TGlyphLabel.h"
#include "components/Tlabel.h"
#include "src/vesperatopscreen/PaytableSetup.h"
#include "vendelo-sdl2/MyUtils.h"
#include "vendelo-sdl2/TApplication.h"
#include "vesperatopscreen/GamePath.h"
#include "vesperatopscreen/PlatformPicture.h"
#include "vesperatopscreen/TPaytablesPanel.h"

using namespace vendelo_sdl2;

namespace {

constexpr const char* kPaytablePage = "paytable";

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

// A cost that cannot be read is refused with the rest of its setup: the texts that stand go on with theirs. A cost
// of 0 is the sender's mistake; a screen that nobody watches shows 0 rather than die of it.
int TPaytablesPanel::betCostOf(const PlatformState& state) {
  try {
    mBetCost = TPaytableSetup::betCostOf(state.ExtraData);
  } catch (const std::exception& error) {
    refuseSetup(state, error.what());
  }
  if (mBetCost == 0 && mBadBetCostGame != mLoadedForGame) {
    mBadBetCostGame = mLoadedForGame;
    pApp->WriteLog(4, 0, "The bet cost of game '%s' is 0: its line wins show 0.",
                   MyUtils::EscapeControls(mLoadedForGame).c_str());
  }
  return mBetCost;
}

void TPaytablesPanel::refuseSetup(const PlatformState& state, const std::string& cause) {
  std::string content;
  for (const char* key : {"paytableSetup", "paylines", "betCost"})
    content += TPaytableSetup::contentOf(state.ExtraData, key) + '\n';
  if (content == mRefusedContent) return;
  mRefusedContent = std::move(content);
  pApp->WriteLog(4, 0, "The paytable setup of game '%s' is refused, what stands stays: %s",
                 MyUtils::EscapeControls(state.ActiveGame.name).c_str(), MyUtils::EscapeControls(cause).c_str());
}

void TPaytablesPanel::createPaytable(const std::string& gameName) {
  pApp->ThreadCheck(THREAD_DRAW);
  auto& property = platformState();
  ScopedLock lock(property);
  const PlatformState& state = &property;
  std::string content = TPaytableSetup::contentOf(state.ExtraData);
  if (mCreatedForGame == gameName && (gameName.empty() || mCreatedFrom == content)) return;
  pBackground->SetTargetTexture(pageOf(possibleScreensArray[0]));

  const TPaytableSetup setup(state.ExtraData);
  mRefusedContent.clear();
  if (!mCreatedForGame.empty()) clearTexts();
  if (setup.isEmpty) {
    std::printf("WARNING: Could not create paytable because no paytable setup data was recieved!\n");
    return;
  }
  mCreatedForGame = gameName;
  mCreatedFrom = std::move(content);
  try {
    buildPages(setup, state.CurrentBet);
  } catch (...) {
    clearTexts();  // half a page would stand in the way of the next attempt
    throw;
  }
}

void TPaytablesPanel::buildPages(const TPaytableSetup& setup, int64_t currentBet) {
  auto* prizeLabel = new TGlyphLabel(GetRenderer(), 0, mScreenH - 25, mScreenW, 25, message(4),
                                     MyUtils::ImageDir() + "Fonts/uni_font", "prizeLabel");
  prizeLabel->_setVisible(false);
  prizeLabel->SetAlignment(CENTER_CENTER);
  prizeLabel->SetResizeOnlyDown(true);
  AddComponent(prizeLabel);

  const bool gameStays = !gamePath(mCreatedForGame).empty();  // else its name was told already
  std::set<std::string> refusedFonts;
  for (const TPaytableSetup::TPage& page : setup.pages) {
    const size_t index = page.name != kPaytablePage;
    for (const TPaytableText& text : page.texts) {
      if (gameStays && gamePath(mCreatedForGame, text.font).empty() && refusedFonts.insert(text.font).second)
        pApp->WriteLog(4, 0, "The font '%s' of game '%s' leads out of the game folders: it counts as missing.",
                       MyUtils::EscapeControls(text.font).c_str(),
                       MyUtils::EscapeControls(mCreatedForGame).c_str());
      buildText(text, index, paytableWin(text.prize, currentBet, setup.betCost));
    }
    if (page.name == kPaytablePage) buildBetLabels(page.texts.empty() ? TPaytableText{} : page.texts.back());
    mPaytableComponents[index].push_back(prizeLabel);
  }
}

void TPaytablesPanel::buildText(const TPaytableText& text, size_t page, int actualWin) {
  auto* thisLabel =
    new TGlyphLabel(GetRenderer(), nearBy(text.pos.x), nearBy(text.pos.y), nearBy(text.w), nearBy(text.h),
                    MyUtils::currency2string(actualWin, 0), gamePath(mCreatedForGame, text.font), text.symbol);
  if (!thisLabel->Font() || !thisLabel->Font()->FindGlyph('0'))
    std::printf("WARNING: Could not find font \"Games/%s/Icons/%s\"!\n",
                MyUtils::EscapeControls(mCreatedForGame).c_str(), MyUtils::EscapeControls(text.font).c_str());
  if (text.pos.x == 0 && text.pos.y == 0)
    std::printf("WARNING: Could not find position for symbol \"%s\"!\n",
                MyUtils::EscapeControls(text.symbol).c_str());
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
void TPaytablesPanel::buildBetLabels(const TPaytableText& last) {
  const int fontSize =
    std::clamp(last.fontSize, -mScreenH, mScreenH);  // a larger one takes memory, and shows nothing
  TTF_Font* pFont = nullptr;
  if (const std::string font = gamePath(mCreatedForGame, last.font); !font.empty())
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
  pApp->ThreadCheck(THREAD_DRAW);
  if (mLoadedForGame.empty()) return -2;
  auto& property = platformState();
  ScopedLock lock(property);
  const int betCost = betCostOf(&property);
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
  pApp->ThreadCheck(THREAD_DRAW);
  for (int i = 0; i < 2; ++i)
    for (TGuiComponent* component : mPaytableComponents[i]) component->_setVisible(i == index);
}
