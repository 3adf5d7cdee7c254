// The application's construction, its states, its defaults and its event pump.
#include "vendelo-sdl2/TApplication.h"

#include <unistd.h>
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include "common/Logger.h"
#include "common/TBitmapFont.h"
#include "vendelo-sdl2/MyUtils.h"
#include "vendelo-sdl2/Saturate.h"
#include "vendelo-sdl2/TAppGuiModule.h"

namespace vendelo_sdl2 {

TApplication* pApp = nullptr;

namespace {

// Posts a semaphore that must never count above 1.
void PostOnce(SDL_semaphore* semaphore) {
  while (SDL_SemValue(semaphore) == 0) SDL_SemPost(semaphore);
}

unsigned int NumberFromEnvironment(const char* name, unsigned int otherwise) {
  const char* text = std::getenv(name);
  return text ? static_cast<unsigned int>(MyUtils::leadingNumber(text)) : otherwise;
}

}  // namespace

TApplication::TApplication() : mEndLimit([this](int code) { return EndAfterLimit(code); }) {
  ThreadID_MainThread = SDL_ThreadID();
  ReadLogFileName();
  TerminationType = DEFAULT;
  ReadRebootOnExit();
  pApp = this;
  InstallSignalHandler();
  mSwipeDist = -1;
  std::memset(&LastEvent, 0, sizeof LastEvent);
  EventListenerListIterator = EventListenerList.end();
  mpDrawMutex = SDL_CreateMutex();
  for (SDL_semaphore*& waiter : mStatusWaiter) waiter = SDL_CreateSemaphore(0);
  PostOnce(mStatusWaiter[APP_INITIALIZING]);
  mAppStatus = APP_INITIALIZING;
  mpMainMutex = SDL_CreateMutex();
  mpDeferQueueMutex = SDL_CreateMutex();
  mpDeferDrawQueueMutex = SDL_CreateMutex();
  TargetFPS = NumberFromEnvironment("FPS", 60);
  TargetFrequency = NumberFromEnvironment("CPU_FPS", 1000);
  const char* vsync = std::getenv("VSYNC");
  VSync = vsync && std::strcmp(vsync, "1") == 0;
  AppStartTicks = SDL_GetTicks();
  mpDrawThread = SDL_CreateThread(ApplicationDrawThread, "draw", this);
}

TApplication::~TApplication() {
  EndDrawThread();
  DropDeferred();
  for (SDL_semaphore* waiter : mStatusWaiter) SDL_DestroySemaphore(waiter);
  SDL_DestroyMutex(mpMainMutex);
  SDL_DestroyMutex(mpDrawMutex);
  SDL_DestroyMutex(mpDeferDrawQueueMutex);
  TBitmapFont::CleanupBitmapFonts();
  SDL_DestroyMutex(mpDeferQueueMutex);
  pApp = nullptr;
}

void TApplication::ReadLogFileName() {
  constexpr uintmax_t bytesOfMegabyte = 1024 * 1024;
  if (const char* limit = std::getenv("LOG_MAX_MB"))
    SetDailyLimit(static_cast<uintmax_t>(std::max(MyUtils::leadingNumber(limit), 0)) * bytesOfMegabyte);
  if (const char* file = std::getenv("LOG_FILENAME")) {
    mLogFile = file;
    MyUtils::trimString(mLogFile);
  }
  // Without a name in it every log of the folder would be an old one of ours, to be deleted.
  if (!std::filesystem::path(mLogFile).filename().empty()) return;
  mLogFile = "tmpLog.txt";
  KLOG(LogApp, logs::Warning, "No Log file set! Writing to %s", mLogFile.c_str());
}

// An empty text and "0" do not forbid the reboot, and unlike an unset variable they are worth a line.
void TApplication::ReadRebootOnExit() {
  const char* disabled = std::getenv("DISABLE_REBOOT_ON_EXIT");
  mRebootOnExit = !disabled || !*disabled || std::strcmp(disabled, "0") == 0;
  if (disabled && mRebootOnExit) KLOG(LogApp, logs::Important, "Will reboot system after close!");
}

void TApplication::Startup() {}

bool TApplication::SetupGraphics() { return false; }

std::string TApplication::Version() const { return ""; }

std::string TApplication::Copyright() const { return ""; }

void TApplication::PrintUsage() { std::printf("Application usage not defined. Contact vendor.\n"); }

void TApplication::OnAppStateChanged(ApplicationState /*newState*/) {}

bool TApplication::CanExit() const { return true; }

void TApplication::OnPassDone() {}

TApplication::ApplicationState TApplication::status() const { return mAppStatus.getCopy(); }

bool TApplication::shuttingDown() const { return status() >= APP_SHUTTING_DOWN; }

void TApplication::setStatus(ApplicationState state) {
  ScopedLock lock(mAppStatus);
  const ApplicationState current = *mAppStatus.operator->();
  if (current == APP_QUIT || state <= current) return;
  const int first = state == APP_QUIT ? APP_INITIALIZING : current + 1;
  for (int passed = first; passed <= state; ++passed) PostOnce(mStatusWaiter[passed]);
  mAppStatus = state;
  OnAppStateChanged(state);
}

void TApplication::advanceStatus() {
  ScopedLock lock(mAppStatus);
  const ApplicationState current = *mAppStatus.operator->();
  if (current != APP_TERMINATE) setStatus(static_cast<ApplicationState>(current + 1));
}

void TApplication::waitForStatus(ApplicationState state) {
  const ApplicationState current = status();
  if (current < state && current != APP_TERMINATE) SDL_SemWait(mStatusWaiter[state]);
}

void TApplication::terminate(ETerminateType type, bool bGracefully) {
  mEndLimit.Begin(0);
  TerminationType = type;
  setStatus(bGracefully ? APP_SHUTTING_DOWN : APP_TERMINATE);
}

int TApplication::Poll() { return TLogManager::Poll() | (TParamMan::Poll() << 8); }

void TApplication::lockMainMutex() {
  SDL_LockMutex(mpMainMutex);
  if (IsInMainThread()) ++mMainHolds;
}

void TApplication::unlockMainMutex() {
  if (IsInMainThread()) --mMainHolds;
  SDL_UnlockMutex(mpMainMutex);
}

void TApplication::lockDrawMutex() {
  SDL_LockMutex(mpDrawMutex);
  if (IsInDrawThread()) ++mDrawHolds;
}

void TApplication::unlockDrawMutex() {
  if (IsInDrawThread()) --mDrawHolds;
  SDL_UnlockMutex(mpDrawMutex);
}

bool TApplication::tryLockDrawMutex() {
  if (SDL_TryLockMutex(mpDrawMutex) != 0) return false;
  if (IsInDrawThread()) ++mDrawHolds;
  return true;
}

void TApplication::SetClientID(const std::string& ClientID) {
  TParamMan::UpdateClientID(ClientID, mClientID);
  mClientID = ClientID;
}

std::string TApplication::GetBinaryPath() const {
  std::array<char, 256> path{};
  if (readlink("/proc/self/exe", path.data(), path.size() - 1) < 0) return "";
  return path.data();
}

void TApplication::PostSDLUserEvent(int UserCode, void* pUserData1, void* pUserData2) {
  SDL_Event event{};
  event.type = SDL_USEREVENT;
  event.user.code = UserCode;
  event.user.data1 = pUserData1;
  event.user.data2 = pUserData2;
  SDL_PushEvent(&event);
}

void TApplication::PostSDLKeyboardEvent(bool isPressed, SDL_Keycode key, SDL_Keymod mod) {
  SDL_Event event{};
  event.type = isPressed ? SDL_KEYDOWN : SDL_KEYUP;
  event.key.state = isPressed ? SDL_PRESSED : SDL_RELEASED;
  event.key.keysym.sym = key;
  event.key.keysym.mod = mod;
  SDL_PushEvent(&event);
}

void TApplication::Quit() { PostSDLKeyboardEvent(true, SDLK_ESCAPE, KMOD_NONE); }

int TApplication::ProcessNextEvent() {
  constexpr Sint32 swipeMask = 0x1010000;
  if (status() == APP_TERMINATE) {  // wakes a loop that waits for events
    SDL_Event quit{};
    quit.type = SDL_QUIT;
    SDL_PushEvent(&quit);
    PostSDLKeyboardEvent(true, SDLK_ESCAPE, KMOD_NONE);
  }
  if (!SDL_PollEvent(&LastEvent)) return 0;
  if (LastEvent.type == SDL_WINDOWEVENT)
    if (TAppGuiModule* gui = GUI()) {
      gui->RedrawAll();
      if (LastEvent.window.event == SDL_WINDOWEVENT_SIZE_CHANGED) gui->RefreshSize();
    }
  if (LastEvent.type == SDL_RENDER_TARGETS_RESET || LastEvent.type == SDL_RENDER_DEVICE_RESET) {
    WriteLog(4, 0, "The graphics device has lost its %s, drawing texts and digits again.",
             LastEvent.type == SDL_RENDER_TARGETS_RESET ? "render targets" : "textures");
    if (TAppGuiModule* gui = GUI()) gui->TexturesLost();
  }

  EventListenerListIterator = EventListenerList.begin();
  while (EventListenerListIterator != EventListenerList.end()) {
    TAppModule* listener = *EventListenerListIterator++;
    if (listener->Ioctl(1, reinterpret_cast<unsigned long>(&LastEvent)) == 1) break;
  }
  EventListenerListIterator = EventListenerList.end();

  if (LastEvent.type == SDL_USEREVENT && (LastEvent.user.code & swipeMask) == swipeMask && LastEvent.user.data1)
    static_cast<TSwipeData*>(LastEvent.user.data1)->decRef();
  if (mDisableFunctionKeys && (LastEvent.type == SDL_KEYDOWN || LastEvent.type == SDL_KEYUP)) {
    const SDL_Keycode key = LastEvent.key.keysym.sym;
    if (key >= SDLK_F1 && key <= SDLK_F12) return 0;  // the caller stops for this pass, which is the flag's purpose
  }
  return 1;
}

}  // namespace vendelo_sdl2
