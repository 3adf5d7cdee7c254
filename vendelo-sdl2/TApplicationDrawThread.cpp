// The draw thread, the hand-over of the GUI module to it, and the work that threads defer to each other.
#include <SDL.h>
#include <csignal>
#include <exception>
#include <string>

#include "common/Logger.h"
#include "vendelo-sdl2/TAppGuiModule.h"
#include "vendelo-sdl2/TApplication.h"
#include "vendelo-sdl2/TMutexGuard.h"

namespace vendelo_sdl2 {

void* GUI_LoadData = nullptr;
int GUI_LoadResult = 0;

namespace {

// What the exception under way says of itself.
std::string CauseOfException() {
  try {
    throw;
  } catch (const std::exception& error) {
    return error.what();
  } catch (const std::string& text) {
    return text;
  } catch (const char* text) {
    if (text) return text;
  } catch (...) {  // has no text
  }
  return "unknown";
}

}  // namespace

int TApplication::SetGUIImpl(TAppGuiModule* (*Create)(), void* InitData) {
  const TDrawMutexGuard guard(*this);
  TAppGuiModule* gui = Create();
  pAppGUI = gui;
  const int res = gui->TAppModule::Init(this, "GUI1", InitData, -1);
  if (res != 0) terminate(DEFAULT, false);
  advanceStatus();
  return res;
}

int TApplication::LoadGUI(void* data) {
  KLOG(LogApp, logs::Important, "========== MAIN THREAD: LoadGUI started ==========");
  GUI_LoadData = data;
  GUI_LoadResult = -1;
  advanceStatus();
  while (status() < APP_LOADING_2) {
    ServePendingSignal();
    TParamMan::Poll();
    TLogManager::Poll();
  }
  GUI_LoadData = nullptr;
  KLOG(LogApp, logs::Important, "========== MAIN THREAD: LoadGUI completed ==========");
  return GUI_LoadResult;
}

int TApplication::ApplicationDrawThread(void* data) { return static_cast<TApplication*>(data)->RunDrawThread(); }

// APP_QUIT before the end of the draw loop means that Init has failed and the main thread is destroying everything:
// the thread then only leaves. Otherwise it walks through its stages even when the program is terminating.
int TApplication::RunDrawThread() {
  struct TNoneAtEnd {
    std::atomic<TDrawStage>& Stage;
    ~TNoneAtEnd() { Stage = TDrawStage::NONE; }
  };
  // Taken here: SDL may not know it yet when SDL_CreateThread returns in the constructor.
  ThreadID_DrawThread = SDL_ThreadID();
  int status = 0;
  KLOG(LogApp, logs::Info, "DRAW: Thread started, waiting for start of init...");
  waitForStatus(APP_LOADING);
  TAppGuiModule* gui = GUI();
  if (!gui) {
    KLOG(LogApp, logs::Critical, "DRAW: No GUI module found, exiting!");
    return status;
  }
  KLOG(LogApp, logs::Info, "DRAW: waiting for end of main init (APP_LOADING)...");
  waitForStatus(APP_LOADING_GRAPHICS);
  if (this->status() == APP_QUIT) return status;

  const TNoneAtEnd noneAtEnd{mDrawStage};
  // A signal during the load runs passes of the main loop, whose logic leaves half-built components alone.
  const auto enter = [this](TDrawStage stage) {
    const TDrawMutexGuard guard(*this);
    mDrawStage = stage;
  };
  KLOG(LogApp, logs::Info, "DRAW: Loading GUI (APP_LOADING_GRAPHICS)...");
  enter(TDrawStage::LOADS);
  GUI_LoadResult = gui->Load(GUI_LoadData);
  enter(TDrawStage::DRAWS);
  setStatus(APP_LOADING_2);  // and not one state further, when a shutdown has begun meanwhile
  KLOG(LogApp, logs::Info, "DRAW: Waiting for end of startup procedures (APP_STARTUP)...");
  do {
    if (this->status() == APP_QUIT) return status;
    DrawOnce();
  } while (this->status() < APP_STARTUP_GRAPHICS);

  KLOG(LogApp, logs::Info, "DRAW: Setting up graphics (APP_STARTUP_GRAPHICS)...");
  if (SetupGraphics())
    setStatus(APP_RUNNING);
  else
    KLOG(LogApp, logs::Info, "DRAW: Done! Waiting for application to advance status (APP_RUNNING)...");
  do {
    if (this->status() == APP_QUIT) return status;
    DrawOnce();
  } while (this->status() < APP_RUNNING);

  KLOG(LogApp, logs::Info, "DRAW: Starting draw!");
  while (this->status() == APP_RUNNING && status == 0) {
    status = DrawOnce();
    if (status != 0 && !shuttingDown()) terminate(DEFAULT, false);
  }
  if (this->status() == APP_QUIT) return status;
  mDrawStage = TDrawStage::NONE;
  TearDown();
  return status;
}

void TApplication::Defer(const DeferredType& method, bool evenIfAlreadyInMain, bool waitForExecution) {
  if (!evenIfAlreadyInMain && IsInMainThread() && !mIsExecutingMainDeferredMethods) {
    method();
    return;
  }
  const bool loadsGui = mDrawStage == TDrawStage::LOADS;
  if (waitForExecution && IsInDrawThread() && (loadsGui || mDrawHolds > 0)) {
    WriteLog(5, 0, "TApplication: Defer inside %s can not wait for the main thread",
             loadsGui ? "the load of the GUI" : "a frame");
    waitForExecution = false;
  }
  SDL_semaphore* executed = nullptr;
  {
    TMutexGuard guard(mpDeferQueueMutex);
    if (waitForExecution && !mDeferClosed) executed = SDL_CreateSemaphore(0);
    mDeferredQueue.push({method, executed});
  }
  if (!executed) return;
  SDL_SemWait(executed);
  SDL_DestroySemaphore(executed);
}

void TApplication::DeferSync(const DeferredType& method, bool evenIfAlreadyInMain) {
  Defer(method, evenIfAlreadyInMain, true);
}

// Whether the queue is empty is noted before each call: a method that is deferred by the last one in the queue
// waits for the next pass, so that a method which defers itself again cannot hold the loop.
void TApplication::ExecuteDeferredMethods() {
  mIsExecutingMainDeferredMethods = true;
  TMutexGuard guard(mpDeferQueueMutex);
  bool empty = mDeferredQueue.empty();
  while (!empty) {
    auto [method, executed] = mDeferredQueue.front();
    mDeferredQueue.pop();
    empty = mDeferredQueue.empty();
    guard.release();
    try {
      if (method) method();
    } catch (...) {
      WriteLog(0, 0, "TApplication: ExecuteDefreredMethods unhandled exception");
      WriteLog(0, 0, "TApplication: its cause: %s", CauseOfException().c_str());
    }
    method = nullptr;  // what it refers to may go as soon as the waiting caller does
    guard.lock();
    if (executed) SDL_SemPost(executed);
  }
  guard.release();
  mIsExecutingMainDeferredMethods = false;
}

void TApplication::DeferToDraw(const DeferredType& method, bool evenIfAlreadyInDraw) {
  DeferToDrawRender([method](SDL_Renderer*) { method(); }, evenIfAlreadyInDraw);
}

void TApplication::DeferToDrawRender(const DeferredDrawType& method, bool evenIfAlreadyInDraw) {
  if (!evenIfAlreadyInDraw && IsInDrawThread() && !mIsExecutingDeferredMethods) {
    TAppGuiModule* gui = GUI();
    method(gui ? gui->GetRenderer() : nullptr);
    return;
  }
  TMutexGuard guard(mpDeferDrawQueueMutex);
  mDeferToDrawQueue.push(method);
}

void TApplication::ExecuteDeferredDrawMethods(SDL_Renderer* renderer) {
  mIsExecutingDeferredMethods = true;
  TMutexGuard guard(mpDeferDrawQueueMutex);
  bool empty = mDeferToDrawQueue.empty();
  while (!empty) {
    DeferredDrawType method = mDeferToDrawQueue.front();
    mDeferToDrawQueue.pop();
    empty = mDeferToDrawQueue.empty();
    guard.release();
    try {
      if (method) method(renderer);
    } catch (...) {
      WriteLog(0, 0, "TApplication: ExecuteDeferredDrawMethods unhandled exception");
      WriteLog(0, 0, "TApplication: its cause: %s", CauseOfException().c_str());
    }
    method = nullptr;
    guard.lock();
  }
  guard.release();
  mIsExecutingDeferredMethods = false;
}

bool TApplication::IsInMainThread() const { return SDL_ThreadID() == ThreadID_MainThread; }

bool TApplication::IsInDrawThread() const { return SDL_ThreadID() == ThreadID_DrawThread; }

void TApplication::ThreadCheck(Threads thread) {
  if (IsInCrashPath()) return;  // what is destroyed after a crash asks on whatever thread that is
  const bool right = (thread == THREAD_MAIN && IsInMainThread()) || (thread == THREAD_DRAW && IsInDrawThread());
  if (!right) SignalHandler(SIGABRT);
}

void checkDrawThread() {
  if (pApp) pApp->ThreadCheck(THREAD_DRAW);
}

}  // namespace vendelo_sdl2
