// The pages: their files, their decoding off the draw thread, their textures.
#include "vesperatopscreen/TPaytablesPanel.h"

#include <SDL_image.h>
#include <SDL_ttf.h>
#include <cstdio>
#include <set>
#include <thread>

#include "common/TKSLReturnStructures.h"
#include "common/ThreadSafeProperty.h"
#include "components/Tlabel.h"
#include "vendelo-sdl2/MyUtils.h"
#include "vendelo-sdl2/PictureFormat.h"
#include "vendelo-sdl2/PictureHeader.h"
#include "vendelo-sdl2/TApplication.h"
#include "vesperatopscreen/GamePath.h"
#include "vesperatopscreen/PanelDecision.h"
#include "vesperatopscreen/PlatformPicture.h"

using namespace vendelo_sdl2;
namespace fs = std::filesystem;

const char* const possibleScreensArray[10] = {"background",
                                              "InfoPage_Paytable",
                                              "InfoPage_Paytable_Bonus",
                                              "InfoPage_ExpandFeature",
                                              "InfoPage_Features",
                                              "InfoPages_BonusFeature",
                                              "InfoPage_Features2",
                                              "InfoPages_Features2",
                                              "InfoPages_BonusFeature2",
                                              "InfoPage_Rules"};

namespace {

// The picture of this name in the folder, ".png" before ".jpg"; empty when there is none.
fs::path findPicture(const fs::path& folder, const std::string& name) {
  for (const char* extension : {".png", ".jpg"}) {
    const fs::path file = folder / (name + extension);
    std::error_code error;
    if (fs::exists(file, error)) return file;
  }
  return {};
}

}  // namespace

TPaytablesPanel::TPaytablesPanel(SDL_Renderer* pRenderer, int x, int y, int width, int height,
                                 std::string ComponentName)
  : TGuiComponent(pRenderer, x, y, width, height, ComponentName),
    pBackground(nullptr),
    pHelpScreen(nullptr),
    mScreenW(width),
    mScreenH(height),
    mRetryCount(10),
    mRunningJobs(std::make_shared<std::atomic<int>>(0)),
    mBetCost(1) {
  pBackground = new TGuiComponent(pRenderer, 0, 0, mScreenW, mScreenH, "Background");
  AddComponent(pBackground);
  pHelpScreen = new TGuiComponent(pRenderer, 0, 0, mScreenW, mScreenH, "HelpScreen");
  AddComponent(pHelpScreen);
  pHelpScreen->setBlendMode(1);
}

TPaytablesPanel::~TPaytablesPanel() {
  while (const int running = mRunningJobs->load()) mRunningJobs->wait(running);
  clearPaytable();
}

std::string TPaytablesPanel::message(size_t index) const {
  return index < mLangMessages.size() ? mLangMessages[index] : std::string();
}

void TPaytablesPanel::UpdateLanguage(const std::vector<std::string>& messages) {
  mLangMessages = messages;
  mHelpScreenNames.clear();
}

int TPaytablesPanel::loadImagesOfGame(const std::string& game_name, bool fadeInAfterLoad) {
  if (game_name.empty()) return 0;
  const auto running = mRunningLoads.find(game_name);
  if (running != mRunningLoads.end()) {
    running->second = running->second || fadeInAfterLoad;
    return 0;
  }
  const auto gameIt = mHelpScreenNames.find(game_name);
  std::vector<ImageInfo> toLoad;
  if (gameIt == mHelpScreenNames.end()) {
    toLoad = findImages(game_name);
    mHelpScreenNames[game_name] = toLoad;
  } else {
    toLoad = gameIt->second;
  }
  mRunningLoads[game_name] = fadeInAfterLoad;
  startLoad(game_name, std::move(toLoad));
  return 0;
}

std::vector<TPaytablesPanel::ImageInfo> TPaytablesPanel::findImages(const std::string& game_name) {
  std::vector<ImageInfo> images;
  const std::string icons = gamePath(game_name);
  if (icons.empty()) {
    pApp->WriteLog(4, 0, "The game name '%s' leads out of the game folders: no paytable.",
                   MyUtils::EscapeControls(game_name).c_str());
    images.push_back({possibleScreensArray[0], {}});
    return images;
  }
  std::string path = "paytable";
  if (!message(0).empty()) path += "_" + message(0);
  std::string IMAGE_DIR = gamePath(game_name, path);
  std::error_code error;
  if (IMAGE_DIR.empty() || !fs::is_directory(IMAGE_DIR, error)) IMAGE_DIR = gamePath(game_name, "paytable");
  pApp->WriteLog(1, 0, "Loading paytable images for game %s in folder %s.",
                 MyUtils::EscapeControls(game_name).c_str(), MyUtils::EscapeControls(IMAGE_DIR).c_str());
  for (const char* name : possibleScreensArray) {
    // The background stands above the folders of the languages.
    const bool background = name == possibleScreensArray[0];
    const fs::path file = findPicture(background ? fs::path(icons) : fs::path(IMAGE_DIR), name);
    if (background || !file.empty()) images.push_back({name, file});
  }
  return images;
}

void TPaytablesPanel::startLoad(const std::string& game_name, std::vector<ImageInfo> toLoad) {
  auto jobs = mRunningJobs;
  ++*jobs;
  auto work = [this, jobs, game_name, renderer = GetRenderer(), toLoad = std::move(toLoad)] {
    const std::shared_ptr<void> end(nullptr, [&jobs](void*) {
      --*jobs;
      jobs->notify_all();
    });
    // Each on its own: it becomes a texture while the next one is decoded, and not all of them in one frame.
    for (const ImageInfo& info : toLoad)
      if (!info.filepath.empty() && !MyUtils::PromisesTooManyPixels(info.filepath)) {
        const std::shared_ptr<SDL_Surface> surface(MyUtils::InFastFormat(renderer, IMG_Load(info.filepath.c_str())),
                                                   SDL_FreeSurface);
        pApp->DeferToDraw(
          [this, game_name, page = info.name, surface] { takeImage(game_name, page, surface.get()); }, false);
      }
    pApp->DeferToDraw([this, game_name] { takeImages(game_name); }, false);
  };
  // Frees itself after its one run; the task manager never hears of it.
  new TAsyncTimedTaskHandler(work, 0, TTimedTaskHandler::EXECUTE_ONCE, "LoadImages " + game_name, true, true);
}

// The page waits for the others of its load; nobody sees it before.
void TPaytablesPanel::takeImage(const std::string& game_name, const std::string& page, SDL_Surface* surface) {
  TTexturePtr texture;
  if (!MyUtils::IsTooLong(surface)) texture = MyUtils::TextureOf(GetRenderer(), surface);
  SDL_SetTextureBlendMode(texture.get(), SDL_BLENDMODE_BLEND);
  mArrivedPages[game_name][page] = std::move(texture);
}

void TPaytablesPanel::takeImages(const std::string& game_name) {
  for (auto& [page, texture] : mArrivedPages[game_name]) setPage(page, std::move(texture));
  mArrivedPages.erase(game_name);
  mLoadedForGame = game_name;
  const bool fadeInAfterLoad = mRunningLoads[game_name];
  mRunningLoads.erase(game_name);

  auto& property = platformState();
  ScopedLock lock(property);
  const GameRegistryEntry& active = property->ActiveGame;
  // Without a game in play, because it was left or the service failed, the pages wait for it to come back.
  if (active.name == game_name || active.type == GAMETYPE_VESPERA_SLOTGAME) UpdateData(false);
  if (!fadeInAfterLoad || leaveFadeInToRunningLoad(game_name) || !isAskedFor(game_name)) return;
  mFadeInFor = game_name;
  pApp->GenerateAction("PaytableLoaded", nullptr, ACTION_ANY);
}

// In another language, or because a stale load of another game has taken the place of these pages.
bool TPaytablesPanel::leaveFadeInToRunningLoad(const std::string& game_name) {
  const auto running = mRunningLoads.find(game_name);
  if (running == mRunningLoads.end()) return false;
  running->second = true;
  return true;
}

bool TPaytablesPanel::isAskedFor(const std::string& game_name) const {
  auto& property = platformState();
  ScopedLock lock(property);
  return property->ActiveGame.name == game_name && decidePanel(&property).panel == TPanelDecision::PAYTABLES;
}

bool TPaytablesPanel::fadeInIsDue() {
  const std::string game_name = std::move(mFadeInFor);
  mFadeInFor.clear();
  return game_name.empty() || (isAskedFor(game_name) && !leaveFadeInToRunningLoad(game_name));
}

// A page that is loaded again takes the place of the old one wherever that is shown.
void TPaytablesPanel::setPage(const std::string& page, TTexturePtr texture) {
  TTexturePtr& slot = mHelpScreens[page];
  if (slot)
    for (TGuiComponent* shown : {pBackground, pHelpScreen})
      if (shown->GetTargetTexture() == slot.get()) shown->SetTargetTexture(texture.get());
  slot = std::move(texture);
}

SDL_Texture* TPaytablesPanel::pageOf(const std::string& name) const {
  const auto found = mHelpScreens.find(name);
  return found == mHelpScreens.end() ? nullptr : found->second.get();
}

void TPaytablesPanel::clearPaytable() {
  if (pApp) pApp->ThreadCheck(THREAD_DRAW);
  if (!mCreatedForGame.empty()) clearTexts();
  if (!mLoadedForGame.empty()) clearPages();
}

void TPaytablesPanel::clearTexts() {
  // A label may stand in both lists; it goes once.
  std::set<TGuiComponent*> labels;
  for (auto& components : mPaytableComponents) {
    labels.insert(components.begin(), components.end());
    components.clear();
  }
  for (TGuiComponent* label : labels) {
    const std::string name = label->getName();
    // A label that goes would leave its text to the renderer; of these two nobody shows it any more.
    if (name == "minBetLabel" || name == "maxBetLabel") static_cast<Tlabel*>(label)->TakeTexture();
    // The two bet labels share one font.
    if (name == "minBetLabel")
      if (TTF_Font* font = static_cast<Tlabel*>(label)->GetFont()) TTF_CloseFont(font);
    (pHelpScreen->FindComponent(label) ? pHelpScreen : this)->RemoveComponent(label, true);
  }
  // Without a page of texts it stands in no list.
  if (FindComponentByName("prizeLabel")) RemoveComponent("prizeLabel", true);
  mSymbolWin.clear();
  mCreatedForGame.clear();
  mCreatedFrom.clear();
}

void TPaytablesPanel::clearPages() {
  pBackground->SetTargetTexture(nullptr);
  pHelpScreen->SetTargetTexture(nullptr);
  mHelpScreens.clear();
  mLoadedForGame.clear();
}

int TPaytablesPanel::UpdateData(bool fadeInAfterLoad) {
  pApp->ThreadCheck(THREAD_DRAW);
  auto& property = platformState();
  ScopedLock lock(property);
  const PlatformState& state = &property;
  const std::string& name = state.ActiveGame.name;
  const auto gameIt = mHelpScreenNames.find(name);
  if (gameIt == mHelpScreenNames.end() || gameIt->second.empty()) {
    if (mRetryCount >= 0) {
      --mRetryCount;
      if (!mLoadedForGame.empty()) clearPaytable();
      loadImagesOfGame(name, fadeInAfterLoad);
    }
    return -1;
  }
  if (name != mLoadedForGame) {
    clearPaytable();
    loadImagesOfGame(name, fadeInAfterLoad);
    return -1;
  }
  mRetryCount = 10;
  try {
    createPaytable(name);
  } catch (const std::exception& error) {
    refuseSetup(state, error.what());
  }
  const int result = updatePaytable();

  const std::vector<ImageInfo>& pages = gameIt->second;
  const int wanted = state.ShowingPaytable;
  SDL_Texture* texture = wanted >= 0 && wanted < static_cast<int>(pages.size())
                           ? pageOf(pages[static_cast<size_t>(wanted)].name)
                           : nullptr;
  if (texture) {
    showPage(texture);
    paytableVisible(wanted - 1);
  } else {
    std::printf("Can not show paytayble '%s' - was expecting it to be loaded -> going to first page\n",
                MyUtils::EscapeControls(name).c_str());
    showPage(pageOf(pages.front().name));
    paytableVisible(0);
  }
  return result;
}

void TPaytablesPanel::showPage(SDL_Texture* texture) {
  int w = 0, h = 0;
  if (texture && SDL_QueryTexture(texture, nullptr, nullptr, &w, &h) == 0) {
    pHelpScreen->setX(static_cast<int>((mScreenW - w) / 2.0));
    pHelpScreen->setY(static_cast<int>((mScreenH - h) / 2.0));
    pHelpScreen->setWidth(w);
    pHelpScreen->setHeight(h);
  }
  pHelpScreen->SetTargetTexture(texture);
}
