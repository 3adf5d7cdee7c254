#pragma once

#include <SDL.h>
#include <atomic>
#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "vendelo-sdl2/TGuiComponent.h"
#include "vendelo-sdl2/TTexturePtr.h"

struct PlatformState;
struct TPaytableSetup;
struct TPaytableText;

// Prize of one win, before the bet is known.
struct PaytableText {
  std::string Mode;  // "scatter" and "consecutive" are paid on the total bet, anything else is a line win
  int Win;           // multiplier
};

// What a win shows at a bet, in the smallest unit: the product, for a line win divided by the cost of one bet
// towards zero. A cost of 0 shows 0 for line wins. No number faults: what does not fit loses its upper digits.
int paytableWin(const PaytableText& text, int64_t currentBet, int betCost);

// The page names that a game may have, in the order that decides their numbers; 0 is the background.
extern const char* const possibleScreensArray[10];

// The paytable pages of the game in play, with its prizes at the present bet laid over them.
// Draw thread only (checked), but for the decoding of the files, which runs on a thread of its own and reaches the
// panel through the draw queue, and for UpdateLanguage (main thread under the draw mutex). State is read under its
// lock. The panel owns the pages' textures; the tree owns the labels. Missing files and fonts leave their place
// empty; nothing outside the game folders is ever read (gamePath). The texts belong to one content of the state's
// "paytableSetup": another one replaces them with the next update, a malformed one is logged once and changes
// nothing.
class TPaytablesPanel : public vendelo_sdl2::TGuiComponent {
 public:
  struct ImageInfo {
    std::string name;
    std::filesystem::path filepath;  // empty: not found
  };

  TPaytablesPanel(SDL_Renderer* pRenderer, int x, int y, int width, int height, std::string ComponentName);
  // Waits for running loads.
  ~TPaytablesPanel() override;

  // Starts decoding the game's pages; 0. While a load of the same game runs only its fade-in is taken over.
  int loadImagesOfGame(const std::string& game_name, bool fadeInAfterLoad);
  void clearPaytable();
  // The next update looks for the files again, in the folder of the new language.
  void UpdateLanguage(const std::vector<std::string>& messages);

  // Loads what is missing (-1), or shows the page that the state asks for with its prizes: the result of
  // updatePaytable.
  int UpdateData(bool fadeInAfterLoad);
  // Makes the texts of the present setup unless they stand. Throws for a malformed setup; what stands stays then.
  void createPaytable(const std::string& gameName);
  // Recalculates the prizes; 0, or -2 with nothing loaded.
  int updatePaytable();
  // Shows the texts of one page: 0 the paytable's, 1 the bonus page's.
  void paytableVisible(int index);
  // For the listener of "PaytableLoaded": whether this panel generated the action.
  bool isFadeInOnItsWay() const { return !mFadeInFor.empty(); }
  // False when this panel generated the action and the state has asked for something else since, or the pages are
  // being loaded anew. Takes the state.
  bool fadeInIsDue();

 private:
  std::vector<ImageInfo> findImages(const std::string& game_name);
  void startLoad(const std::string& game_name, std::vector<ImageInfo> toLoad);
  void takeImage(const std::string& game_name, const std::string& page, SDL_Surface* surface);
  void takeImages(const std::string& game_name);
  void setPage(const std::string& page, vendelo_sdl2::TTexturePtr texture);
  SDL_Texture* pageOf(const std::string& name) const;
  void showPage(SDL_Texture* texture);
  void clearTexts();
  void clearPages();
  bool isAskedFor(const std::string& game_name) const;
  bool leaveFadeInToRunningLoad(const std::string& game_name);
  void buildPages(const TPaytableSetup& setup, int64_t currentBet);
  void buildText(const TPaytableText& text, size_t page, int actualWin);
  void buildBetLabels(const TPaytableText& last);
  int betCostOf(const PlatformState& state);
  void refuseSetup(const PlatformState& state, const std::string& cause);
  std::string message(size_t index) const;

  std::string mLoadedForGame;
  std::string mCreatedForGame;
  std::map<std::string, vendelo_sdl2::TTexturePtr> mHelpScreens;
  std::map<std::string, std::vector<ImageInfo>> mHelpScreenNames;
  vendelo_sdl2::TGuiComponent* pBackground;
  vendelo_sdl2::TGuiComponent* pHelpScreen;
  std::map<std::string, PaytableText> mSymbolWin;
  std::vector<vendelo_sdl2::TGuiComponent*> mPaytableComponents[2];  // of "paytable", and of any other page
  int mScreenW;
  int mScreenH;
  std::vector<std::string> mLangMessages;
  int mRetryCount;
  std::map<std::string, bool> mRunningLoads;  // game to whether its end fades the panel in
  // Game to its pages that have been decoded while others have not; null for a broken one.
  std::map<std::string, std::map<std::string, vendelo_sdl2::TTexturePtr>> mArrivedPages;
  std::shared_ptr<std::atomic<int>> mRunningJobs;  // decoding threads that still use this panel
  std::string mFadeInFor;                          // game whose "PaytableLoaded" is on its way to its listener
  std::string mCreatedFrom;                        // content of the setup that the texts were made from
  int mBetCost;                                    // the last one that could be read
  std::string mBadBetCostGame;                     // for which the cost of 0 was logged
  std::string mRefusedContent;                     // of the malformed setup that was logged
};
