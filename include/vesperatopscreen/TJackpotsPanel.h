#pragma once

#include <SDL.h>
#include <array>
#include <memory>
#include <string>
#include <vector>

#include "common/TKSLReturnStructures.h"
#include "vendelo-sdl2/PictureFormat.h"
#include "vendelo-sdl2/TAnimation.h"
#include "vendelo-sdl2/TGuiComponent.h"
#include "vendelo-sdl2/TTexturePtr.h"

class TBitmapFont;
class TControlCyphers3;
class TGlyphLabel;
class TImageList;
class TProgressBar;
class TScrollingComponent;
class TSpriteAnimation;

namespace vendelo_sdl2 {
class TTimedTaskHandler;
}

// Where the levels of a jackpot panel stand: a staircase whose steps depend on the level's id, not on its rank.
// Pixels of the 1920 by 1080 panel.
struct TJackpotLayout {
  static constexpr int sumSize = 844;
  static constexpr int levelFrameHeight = 208;
  static constexpr int kLevelFrameWidth = 908;
  int levelGap;
  int odmikNivoja;    // vertical step from one id to the next
  int zacetniOdmikY;  // offset of the first level

  explicit TJackpotLayout(int numJackpots);
  SDL_Rect levelRect(int id) const;
};

// Spin curve of the digits: t and result from 0 to 1, eased by the milliseconds that have passed since the change.
double jackpotSpinFunction(double t, double speed);

// Movement of the scrolling info texts, from 0 to 1; the second argument is not read.
float jackpotTextMovement(float t, float unused);

// Flight of the captured level to the middle: fast at first, settling; 0 at 0 and 1 at 1.
float move_to_center(const vendelo_sdl2::TAnimation& animation, float t);

// Pulse of the captured level, 0 at both ends of each loop.
float panel_grow_function(const vendelo_sdl2::TAnimation& animation, float t);

// The panel of up to four jackpot levels: rolling values, scrolling info bars, the idle sparkle that wanders, the
// win with its flight and pulse, the overlay of the game in play, and the error and integrity texts that take the
// levels' place.
// Create..., Clear..., the win and the idle animation run on the draw thread only (the first two check it);
// everything else on the main thread under the draw mutex or on the draw thread. Amounts are in the smallest unit,
// places in pixels of a 1920 by 1080 panel, times in milliseconds of the tick clock.
// The tree owns the components, the fields only point; the captured picture's layer and the pictures that are not
// the image cache's are owned here and lent. Levels whose id is not 0 to 3, or which come twice, are logged and
// skipped; missing images leave their place empty.
class TJackpotsPanel : public vendelo_sdl2::TGuiComponent {
 public:
  static constexpr int kMaxLevels = 4;

  TJackpotsPanel(SDL_Renderer* pRenderer, int x, int y, int width, int height, std::string ComponentName);
  ~TJackpotsPanel() override;

  int load() override;
  // Takes the fonts and pictures of levels out of their files, as far as these are there, so that no frame has to.
  // Draw thread, before the first frame.
  void loadAhead();
  // Moves the captured level while a win is shown.
  void drawLogic() override;
  // The picture of a level that wins is taken anew; without a win there is nothing in its layer.
  void OnTexturesLost() override;

  // Applies new data, or queues a rebuild when the number of levels has changed. 1 when a rebuild was queued,
  // else 0. What is shown first: integrity text, then error text, then levels.
  int UpdateData(const std::vector<JackpotsData>& jackpotData, const std::string& jackpotError);
  // Gives each level its value, to which the digits roll by themselves, up to the first winner in the data's order.
  // The win's start and end follow from the status "WIN".
  void UpdateJackpotData(const std::vector<JackpotsData>& jackpotData);
  // A text clears the levels and shows itself under the logo; an empty one goes. The levels come back with the
  // next data.
  void SetJackpotErrorData(const std::string& data);
  void SetIntegrityCheckData(const std::string& data);

  // One step of the idle sparkle, which wanders from level to level.
  void StartIdleAnimation();
  void StopIdleAnimation();
  // Shows the win of mWinningJackpot, or ends it. Either does nothing to levels that do not stand.
  void StartWinAnimation();
  void StopWinAnimation();
  // Handler of "ToggleWinAnimation"; the data is the level's number from 1.
  void OnToggleWinAnimation(std::string ActionName, void* hActionData, void* hUserData);

  void OnShowHistory();
  void OnHideHistory();
  void OnShowInfoLabels();

  // Shows the overlay of the game of this name, or none for an empty name; nothing while a text stands.
  void OnShowOverlays(const std::string& name);
  bool isOverlayVisible();
  void ClearOverlay();
  // 0. A name that leads out of the game folders is logged and loads nothing.
  int loadImagesOfGame(const std::string& name);

  // Where the captured level stands at the end of a phase; -1 is its own place.
  void calcFinalRect(int phase, SDL_Rect& result) const;

  void CreateJackpotPanel(const std::vector<JackpotsData>& jackpotData);
  void ClearJackpotPanel();

 private:
  struct TBuild;  // what the levels of one creation share

  TGlyphLabel* createTextLabel(const char* name, int y);
  void createWinLayer();
  void createTitle();
  void loadDarkPicture();  // once; it stays when the levels go
  void createLevel(const JackpotsData& level, TBuild& build);
  void createCurrency(const JackpotsData& level);
  void createDigits(const JackpotsData& level, TBitmapFont* font);
  void createAnimations(const JackpotsData& level, TBuild& build);
  void createHours(const JackpotsData& level);
  void createInfoBar(const JackpotsData& level, const SDL_Rect& place);
  // The registry's, or with a missing file an empty one of this panel's own.
  TBitmapFont* createDigitFont();
  void removeChild(vendelo_sdl2::TGuiComponent* component);
  // Loads the picture and shows it in the list, which borrows it.
  static vendelo_sdl2::TTexturePtr lendPicture(TImageList* list, const std::string& file);
  void deferClearUnderText();
  void setLevelVisible(int id, bool visible);
  void captureLevel(int id);
  SDL_Rect winRect(Uint32 now, double& sizeFactor) const;
  bool levelStands(int id) const;

  int mPanelCreationRetrys;
  bool mIsPanelCreated;
  int mNumJackpots;      // levels wanted, the size of the last data
  int mWinningJackpot;   // id of the level whose win is shown, -1 when none
  int mCapturedJackpot;  // id for which mPanelRect was taken, -1 when none
  int mScreenW;
  int mScreenH;
  bool mHistoryShown;
  TImageList* pJackpotLabel;
  TSpriteAnimation* pBackgroundAnimation;  // reserved: nothing makes it
  std::array<vendelo_sdl2::TGuiComponent*, kMaxLevels> pJackpotPanel;
  std::array<TImageList*, kMaxLevels> pJackpotFrame;
  std::array<TControlCyphers3*, kMaxLevels> pJackpotCyphers;
  std::array<TGlyphLabel*, kMaxLevels> pJackpotCurrency;
  std::array<TGlyphLabel*, kMaxLevels> pJackpotHours;
  std::array<TProgressBar*, kMaxLevels> pJackpotInfoBackground;
  std::array<TScrollingComponent*, kMaxLevels> pJackpotInfo;
  std::array<TSpriteAnimation*, kMaxLevels> pIdleAnimation;
  std::array<TSpriteAnimation*, kMaxLevels> pPanelAnimation;
  std::array<TSpriteAnimation*, kMaxLevels> pParticleAnimation;
  vendelo_sdl2::TGuiComponent* pWinPanel;  // shows the captured level
  vendelo_sdl2::TTexturePtr pWinJackpotTexture;
  vendelo_sdl2::TTexturePtr mpLogoPicture;
  TImageList* mLogo;
  TGlyphLabel* mIntegrityLabel;
  TGlyphLabel* mJackpotErrorLabel;
  std::string mJackpotError;
  std::string mActiveGameName;
  int mIdleAnimation;  // id of the level that sparkles, -1 when none
  int mAnimationPhase;
  vendelo_sdl2::TAnimation mWinAnimation;
  SDL_Rect mPanelRect;  // place of the winning level before its win
  TSpriteAnimation* pAnimationOverlay;
  vendelo_sdl2::TTexturePtr mpOverlayPicture;
  TImageList* pImageOverlay;
  vendelo_sdl2::TTexturePtr mpDarkPicture;
  MyUtils::TSurfacePtr mpBarPicture;  // each level has a texture of it
  TImageList* pDarkBackground;
  vendelo_sdl2::TTimedTaskHandler* pIdleTask;  // owned by the task manager
  std::unique_ptr<TBitmapFont> mUnregisteredFont;
};
