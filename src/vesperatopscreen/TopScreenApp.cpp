#include "vesperatopscreen/TopScreenApp.h"

#include <SDL_ttf.h>
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <limits>

#include "common/TBitmapFont.h"
#include "vendelo-sdl2/Drawing.h"
#include "vendelo-sdl2/FaultyFiles.h"
#include "vendelo-sdl2/MyUtils.h"
#include "vendelo-sdl2/PictureRequest.h"
#include "vendelo-sdl2/Saturate.h"
#include "vendelo-sdl2/SystemSeams.h"
#include "vendelo-sdl2/TConsole.h"
#include "vendelo-sdl2/XErrors.h"
#include "vesperatopscreen/InitData.h"
#include "vesperatopscreen/PanelDecision.h"
#include "vesperatopscreen/PlatformPicture.h"
#include "vesperatopscreen/TopScreenScreen.h"

using namespace vendelo_sdl2;

TopScreenApp::TopScreenApp()
  : serverUrl("http://127.0.0.1:9011/KSL"),
    screen(nullptr),
    hasNoData(true),
    statusIsAsked(false),
    updatedJp(false),
    updatedGame(false),
    gotFirstInit(false) {}

TopScreenApp::~TopScreenApp() = default;

void TopScreenApp::setServerAddress(std::string hostAndPort) { serverUrl = "http://" + hostAndPort + "/KSL"; }

int TopScreenApp::Init() {
  if (SDL_Init(SDL_INIT_TIMER | SDL_INIT_VIDEO | SDL_INIT_EVENTS) < 0) {
    std::printf("Can not init SDL: %s\nExiting...\n", SDL_GetError());
    std::fflush(stdout);  // to be read meanwhile
    SystemSeams.Sleep(10);
    return -1;
  }
  LogXErrors();
  LoadParamFromEnvironment("WORKING_DIR", "WorkingDir", false);
  if (LoadParamFromEnvironment("HOME_DIR", "HomeDir", false) != 0) return -1;
  const std::string homeDir = GetParam("HomeDir", PARAM_MASK_ALL)->AsString();
  const TFileLock::TResult home = mHomeLock.Take((std::filesystem::path(homeDir) / "topscreen.lock").string());
  if (home == TFileLock::HELD_BY_ANOTHER) {
    std::printf("Another top screen is running with HOME_DIR=%s (process %s), this start is refused.\n",
                homeDir.c_str(), mHomeLock.Detail().c_str());
    return kInitRefused;
  }
  if (!TTF_WasInit() && TTF_Init() == -1) {
    std::printf("TTF_Init: %s\n", SDL_GetError());
    std::fflush(stdout);
    SystemSeams.Sleep(10);
    return -1;
  }
  // No separator between the two: the working directory is expected to end in a slash.
  MyUtils::SetImageDir(GetParam("WorkingDir", PARAM_MASK_ALL)->AsString() + "VESPERA/TOP_SKIN/");

  const TEssentialLines essential;
  TLogManager::Init(LogFile(), nullptr, nullptr, true);
  SetOutputToConsole(true);
  std::printf("Logmanager ok\n");
  WriteLog(1, 0, "Top screen started with KSL server requests on %s", serverUrl.c_str());
  if (home == TFileLock::IMPOSSIBLE)
    WriteLog(4, 0, "No lock in HOME_DIR (%s): a second start would not be refused", mHomeLock.Detail().c_str());

  if (SetGUI<TopScreenScreen>(nullptr) != 0) return -1;
  screen = static_cast<TopScreenScreen*>(GUI());
  LoadGUI(nullptr);  // without a window the program goes on all the same

  pKSL = std::make_unique<TKSLClient>("TopScreen", serverUrl, 0);
  pKSL->SetPopRequestFrequency(300);
  constexpr int longestTimeout = std::numeric_limits<int>::max() / 1000;
  if (const char* seconds = std::getenv("KSL_CALL_TIMEOUT"))
    pKSL->SetCallTimeout(static_cast<unsigned>(std::clamp(MyUtils::leadingNumber(seconds), 0, longestTimeout)) *
                         1000);
  pKSL->SetListener(this);
  pKSL->SetInitMethod("topscreen.init", ParseInitResponse, DestroyInitObject);
  pKSL->Start(false, -1);
  return 0;
}

void TopScreenApp::Destroy() {
  if (TAppGuiModule* gui = TakeGUI()) gui->Destroy();
  TBitmapFont::CleanupBitmapFonts();
  TApplication::Destroy();
  mHomeLock.Release();  // what the restart command starts must not be refused
}

void TopScreenApp::Startup() { GenerateAction("PowerUP", nullptr, ACTION_ANY); }

bool TopScreenApp::SetupGraphics() {
  if (screen && screen->getWindow())
    MyUtils::SetWindowsProperties(SDL_GetWindowTitle(screen->getWindow()), {"add,above"}, "");
  return false;
}

int TopScreenApp::DrawOnce() { return screen ? screen->draw() : 2; }

int TopScreenApp::RunOnce() {
  while (ProcessNextEvent() > 0) {
    const bool escapeReleased = LastEvent.type == SDL_KEYUP && LastEvent.key.keysym.sym == SDLK_ESCAPE;
    if (LastEvent.type == SDL_QUIT || escapeReleased) {
      terminate(DEFAULT, false);
      return 1;
    }
    if (LastEvent.type == SDL_KEYDOWN && LastEvent.key.keysym.sym == SDLK_F10)
      GenerateAction("ShowFPS", nullptr, ACTION_ANY);
  }
  if (!pKSL) return 0;  // a signal during the load runs the shutdown's passes before there is a client
  // One request at a time: those for events go before it, and while they fail slowly, each asking for a status,
  // requests for it would pile up behind them.
  if (hasNoData && !statusIsAsked) requestStatus();
  updatedJp = false;
  updatedGame = false;
  pKSL->Poll(0);
  if (updatedJp) updateJackpotPanel();
  if (updatedGame) Update();
  return 0;
}

void TopScreenApp::requestStatus() {
  hasNoData = false;  // whether or not the request can be queued: only a callback asks again
  const auto answered = [this](void* data, bool isError) {
    statusIsAsked = false;
    return StatusReceived(data, isError);
  };
  statusIsAsked = pKSL->SendRequest(M_PLATFORM_STATUS, 0, answered, "") == 0;
}

void TopScreenApp::updateJackpotPanel() {
  ScopedLock lock(state);
  if (screen) screen->UpdateJackpotPanel(state->JackpotData, state->JackpotErrorString);
}

int TopScreenApp::StatusReceived(void* data, bool isError) {
  ScopedLock lock(state);
  if (isError) {
    const auto* error = static_cast<KSLError*>(data);
    const std::string description = error && error->errorDescription ? *error->errorDescription : "";
    if (!hasNoData && description != lastUpdateError) {
      WriteLog(0, 0, "WARNING: Update of top screen data returned error - %s",
               MyUtils::EscapeControls(description).c_str());
      lastUpdateError = description;
    }
    hasNoData = true;
    state->ActiveGame = GAME_NULL;
    return 0;
  }
  const bool textStood = !state->IntegrityCheckData.empty();
  &state = *static_cast<PlatformState*>(data);
  if (screen) screen->UpdateInstructionsPanel();
  updateJackpotPanel();
  if (screen) {
    screen->SetDemoMode(state->DemoMode);
    screen->SetIntegrityCheckData(state->IntegrityCheckData);
  }
  // Under the text nothing was updated: the levels come back with its end and not with the next pot.
  if (textStood && state->IntegrityCheckData.empty()) updatedJp = true;
  lastUpdateError.clear();
  return Update();
}

int TopScreenApp::Update() {
  ScopedLock lock(state);
  const TPanelDecision due = decidePanel(&state);
  if (screen && due.rendering && !screen->IsRendering()) screen->StartRendering();
  switch (due.panel) {
    case TPanelDecision::STOP_RENDERING:
      if (screen && screen->IsRendering()) screen->StopRendering();
      break;
    case TPanelDecision::INSTRUCTIONS:
      if (!screen) break;
      screen->UpdateInstructionsPanel();
      DeferToDraw([this] { screen->ShowInstructionsPanel(); }, false);
      break;
    case TPanelDecision::JACKPOTS_NO_GAME:
      if (!screen) break;
      DeferToDraw([this] { screen->ClearJackpotOverlay(); }, false);
      DeferToDraw([this] { screen->ShowJackpotsPanel(); }, false);
      break;
    case TPanelDecision::JACKPOTS:
      if (screen) DeferToDraw([this] { screen->ShowJackpotsPanel(); }, false);
      break;
    case TPanelDecision::PAYTABLES:
      if (screen) screen->UpdatePaytablesPanel(true);
      break;
    case TPanelDecision::KEEP:
      break;
  }
  if (due.endsLoader && !gotFirstInit) {
    if (screen) screen->UpdateLanguage(state->LanguageMessages);
    advanceStatus();
    gotFirstInit = true;
  }
  return 0;
}

int TopScreenApp::getIDFromInitData(void* data) { return data ? static_cast<InitData*>(data)->ID : 0; }

int TopScreenApp::handleInitResponse(ErrorTypes error, void* data) {
  const auto* init = error == E_NO_ERROR ? static_cast<InitData*>(data) : nullptr;
  if (!init || !init->Locale || !init->DecimalSeparator || !init->ThousandSeparator) {
    const auto* failure = error != E_NO_ERROR ? static_cast<KSLError*>(data) : nullptr;
    const std::string description =
      failure && failure->errorDescription ? *failure->errorDescription : "the registration reply is incomplete";
    if (description != lastInitError) {
      WriteLog(5, 0, "KSL: ERROR on init [%s]!!!", MyUtils::EscapeControls(description).c_str());
      lastInitError = description;
    }
    return 1;
  }
  {
    const TEssentialLines essential;
    WriteLog(1, 0, "KSL: Init response OK!");
  }
  lastInitError.clear();
  MyUtils::decimal_separator = init->DecimalSeparator[0];  // an empty text gives a NUL
  MyUtils::thousand_separator = init->ThousandSeparator[0];
  MyUtils::thousand_grouping[0] = static_cast<char>(init->ThousandGrouping);
  MyUtils::thousand_grouping[1] = 0;
  useLocale(init->Locale);
  return 0;
}

// One that is not installed here leaves the numbers as they were; the exception is for whoever delivers the
// response.
void TopScreenApp::useLocale(const std::string& locale) {
  try {
    MyUtils::UpdateLocale(locale);
  } catch (const std::exception&) {
    if (locale != lastUnknownLocale)
      WriteLog(4, 0, "KSL: The locale \"%s\" of the service is not installed here.", locale.c_str());
    lastUnknownLocale = locale;
    throw;
  }
}

int TopScreenApp::handleError(MethodType method, ErrorTypes error, const std::string& text) {
  const char* address = pKSL ? pKSL->getMethodInfo(method).Address : nullptr;
  WriteLog(5, 0, "KSL CLIENT: Received error from %s -> %d - %s", address ? address : "", static_cast<int>(error),
           MyUtils::EscapeControls(text).c_str());
  ScopedLock lock(state);
  state->ActiveGame = GAME_NULL;
  hasNoData = true;
  return 0;
}

void TopScreenApp::handleClientDied() {
  AddTimedTask(
    new TtthLambda([this] { pKSL->Start(false, 3); }, 5000, TTimedTaskHandler::EXECUTE_ONCE, "Retry connection"),
    TASK_NORMAL);
}

// A silent service shows no sign on the screen: the display keeps its last state.
void TopScreenApp::handleTimeout(bool) {}

// The program's parameters live in memory only.
void TopScreenApp::OnStoreValues(const std::list<TAppParam*>&) {}

void TopScreenApp::OnPassDone() {
  TAppGuiModule* const gui = GUI();
  TFrameWatch* const frames = gui ? &gui->FrameWatch() : nullptr;
  mReport.passDone(frames);
  if (shuttingDown())
    mReport.stopping();
  else if (mReport.due())
    tellOthers(frames);
}

void TopScreenApp::tellOthers(TFrameWatch* frames) {
  if (mReport.wanted()) mReport.tell(facts(), frames);
  if (!frames || !TPictureRequest::taken()) return;
  std::string folder = GetParam("HomeDir", PARAM_MASK_ALL)->AsString();
  if (!folder.empty() && folder.back() != '/') folder += '/';
  TPictureRequest::write(*frames, folder + "screenshot.png");
}

int TopScreenApp::_WriteLog(char color, TLogType type, unsigned long gameId, const std::string& text) {
  ++mLogLines;
  return TApplication::_WriteLog(color, type, gameId, text);
}

TopScreenFacts TopScreenApp::facts() const {
  TopScreenFacts facts;
  if (GUI() && status() == APP_RUNNING) facts.panel = screen->IsRendering() ? screen->shownPanel() : "stopped";
  facts.logLines = mLogLines;
  facts.linesLostByConsole = TConsole::Dropped();
  facts.linesLostByFile = LostLines();
  facts.linesBeyondLimit = LinesBeyondLimit();
  const drawing::TTextures textures = drawing::Textures();
  facts.textures = textures.count;
  facts.textureBytes = textures.bytes;
  facts.missingFiles = MyUtils::FaultyFiles();
  if (!pKSL) return facts;
  facts.id = pKSL->ID();
  facts.sinceGoodAnswer = pKSL->SinceGoodAnswer();
  facts.link = pKSL->Figures();
  return facts;
}

ThreadSafeProperty<PlatformState>& platformState() { return static_cast<TopScreenApp*>(pApp)->getState(); }
