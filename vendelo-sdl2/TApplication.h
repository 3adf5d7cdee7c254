#pragma once

#include <SDL.h>
#include <array>
#include <atomic>
#include <functional>
#include <list>
#include <mutex>
#include <queue>
#include <string>
#include <utility>

#include "common/ThreadSafeProperty.h"
#include "vendelo-sdl2/TActionMan.h"
#include "vendelo-sdl2/TEndLimit.h"
#include "vendelo-sdl2/TLogManager.h"
#include "vendelo-sdl2/TMutexGuard.h"
#include "vendelo-sdl2/TParamMan.h"
#include "vendelo-sdl2/TSoundMachine.h"
#include "vendelo-sdl2/TTaskMan.h"

namespace vendelo_sdl2 {

class TAppModule;
class TAppGuiModule;

enum Threads { THREAD_MAIN = 0, THREAD_DRAW = 1 };

// What the program's end does: DEFAULT becomes RESTART where the terminal reboots on exit.
enum ETerminateType { DEFAULT = 0, SHUTDOWN = 1, RESTART = 2 };

enum TFlavour {
  UNKNOWN_FLAVOUR = 0,
  RONDELL_FLAVOUR = 1,
  TAVE_FLAVOUR = 2,
  TAVE2_FLAVOUR = 3,
  PELIX_FLAVOUR = 4,
  UDO_FLAVOUR = 5,
  LOMA_FLAVOUR = 6,
  QUIRA_FLAVOUR = 7,
  ZOD_FLAVOUR = 8,
  VESPERA_FLAVOUR = 9
};

// What data1 of a swipe's user event points at; ProcessNextEvent gives up its reference once all have seen it.
struct TSwipeData {
  virtual void decRef() = 0;

 protected:
  ~TSwipeData() = default;
};

// The application: it walks the process through ten states, runs the logic on the main thread and the picture on a
// draw thread that its constructor starts, and is the log, the action bus, the parameter store, the task scheduler
// and the mixer of everybody who reaches it through pApp.
//
// Threads: made and destroyed on the main thread; an operation that is not for any thread says whose it is. The
// main mutex covers a whole pass of the main loop, the draw mutex a frame; where both are held the draw mutex
// comes first, and the main loop only tries it. Units: milliseconds of the tick clock. Ownership: it owns its
// modules, the GUI module among them; listeners are not owned. Its end restarts or reboots the machine unless
// DISABLE_REBOOT_ON_EXIT forbids that.
class TApplication : public TLogManager,
                     public TActionMan,
                     public TParamMan,
                     public TTaskMan,
                     public TSoundMachine {
 public:
  // In the order in which they pass; a state is never left for an earlier one.
  enum ApplicationState {
    APP_INITIALIZING = 0,
    APP_LOADING = 1,
    APP_LOADING_GRAPHICS = 2,
    APP_LOADING_2 = 3,
    APP_STARTUP = 4,
    APP_STARTUP_GRAPHICS = 5,
    APP_RUNNING = 6,
    APP_SHUTTING_DOWN = 7,
    APP_TERMINATE = 8,
    APP_QUIT = 9
  };

  using DeferredType = std::function<void()>;
  using DeferredDrawType = std::function<void(SDL_Renderer*)>;

  // Reads the environment, takes the signals, sets pApp and starts the draw thread.
  TApplication();
  TApplication(const TApplication&) = delete;
  TApplication& operator=(const TApplication&) = delete;
  // Ends the draw thread first, if MainLoop has not, and clears pApp.
  ~TApplication() override;

  // The first stage, on the main thread; 0 is success.
  virtual int Init() = 0;
  // Gives up modules, audio, images and log. On the draw thread with a GUI module, else on the main thread.
  virtual void Destroy();
  virtual void Startup();
  // On the draw thread; true lets the draw thread go on to APP_RUNNING by itself.
  virtual bool SetupGraphics();
  virtual std::string Version() const;
  virtual std::string Copyright() const;
  // One step of the logic, on the main thread under both mutexes; another result than 0 ends the main loop.
  virtual int RunOnce() = 0;
  // One frame, on the draw thread; another result than 0 ends the draw loop and with it the program.
  virtual int DrawOnce() = 0;
  virtual void PrintUsage();
  // Polls one event into LastEvent and shows it to the listeners, on the main thread. 0 when the caller's pump has
  // to stop for this pass: no event is left, or the event was a function key and those are disabled.
  virtual int ProcessNextEvent();
  virtual void PostSDLUserEvent(int UserCode, void* pUserData1, void* pUserData2);
  virtual void PostSDLKeyboardEvent(bool isPressed, SDL_Keycode key, SDL_Keymod mod);
  // Posts the press of Escape, and not its release.
  virtual void Quit();
  // Called with the lock of the state held, by whoever changed it.
  virtual void OnAppStateChanged(ApplicationState newState);
  // Asked on every pass of the shutdown once all modules are ready.
  virtual bool CanExit() const;
  // Called on the main thread after every pass of the main loop, the last one included, with the main mutex held
  // and no other: no frame waits for it, and the GUI module is not destroyed under it.
  virtual void OnPassDone();

  // From the end of Init to the end of the program, on the main thread: what MainLoop returns.
  int Run();
  // Passes until the state is APP_TERMINATE or RunOnce says so; then waits for the draw thread.
  // RunOnce's last result, or-ed with the negated result of the draw thread.
  int MainLoop();

  ApplicationState status() const;
  bool shuttingDown() const;
  // Only ever upwards, and never out of APP_QUIT; anything else changes nothing. Any thread.
  void setStatus(ApplicationState state);
  // The next state; nothing in APP_TERMINATE, so APP_QUIT takes a setStatus.
  void advanceStatus();
  // Returns once the state has been reached or passed. One waiting thread for each state.
  void waitForStatus(ApplicationState state);
  // Any thread. The type is stored whether or not the state changes. From here on the end has ten seconds.
  void terminate(ETerminateType type, bool bGracefully);

  // The least time between two calls of RunOnce; 10 at the start.
  void SetLogicInterval(unsigned int interval) { mLogicInterval = interval; }
  unsigned int LogicInterval() const { return mLogicInterval; }
  // Passes of the main loop in the last second; 0 before APP_RUNNING.
  int CurrentFrequency() const { return mCurrentFreq; }
  // The log's result in the low byte, the parameters' above it.
  int Poll();

  // Null before SetGUI and after the teardown began.
  TAppGuiModule* GUI() const { return pAppGUI; }
  // Gives the GUI module to the caller that will destroy it; later callers get null.
  TAppGuiModule* TakeGUI() { return pAppGUI.exchange(nullptr); }

  void lockMainMutex() TAKES_LOCK(mpMainMutex);
  void unlockMainMutex() RELEASES_LOCK(mpMainMutex);
  void lockDrawMutex() TAKES_LOCK(mpDrawMutex);
  void unlockDrawMutex() RELEASES_LOCK(mpDrawMutex);
  // Whether it was taken.
  bool tryLockDrawMutex() TRIES_LOCK(true, mpDrawMutex);

  void ExecuteActionsAndTasks(bool threadSafe);

  // Set on the main thread before anybody else reads it.
  const std::string& ClientID() const { return mClientID; }
  void SetClientID(const std::string& ClientID);
  std::string LogFile() const { return mLogFile; }
  void SetLogFile(const std::string& file) { mLogFile = file; }
  // Cut at 255 bytes; empty on failure.
  std::string GetBinaryPath() const;

  // Makes the GUI module and moves on to APP_LOADING, on the main thread inside Init. The caller includes the
  // module's header. Another result than 0 has ended the application.
  template <class TGui>
  int SetGUI(void* InitData) {
    return SetGUIImpl([]() -> TAppGuiModule* { return new TGui; }, InitData);
  }
  // Lets the draw thread load the GUI module and serves parameters and log meanwhile, on the main thread.
  // Deferred methods are not served meanwhile. What the module's Load returned.
  int LoadGUI(void* data);

  // Runs `method` on the main thread: at once when called there outside a deferred method and not
  // evenIfAlreadyInMain, else in a later pass. With waitForExecution the call returns when the method has run;
  // from inside a deferred method, or queued on the main thread, that is never. Inside a frame and inside the GUI's
  // Load on the draw thread the queue is not served: a call from there is refused its wait, which the log tells,
  // and the method runs later. What a method throws goes to the log.
  void Defer(const DeferredType& method, bool evenIfAlreadyInMain, bool waitForExecution);
  // Defer with waitForExecution.
  void DeferSync(const DeferredType& method, bool evenIfAlreadyInMain);
  // Runs `method` on the draw thread: at once when called there outside a deferred method and not
  // evenIfAlreadyInDraw, else at the start of a frame in APP_RUNNING. After that state it is dropped.
  void DeferToDraw(const DeferredType& method, bool evenIfAlreadyInDraw);
  void DeferToDrawRender(const DeferredDrawType& method, bool evenIfAlreadyInDraw);
  // Main thread.
  void ExecuteDeferredMethods() REQUIRES_LOCK(mpDrawMutex);
  // Draw thread, at the start of a frame.
  void ExecuteDeferredDrawMethods(SDL_Renderer* renderer);

  bool IsInMainThread() const;
  bool IsInDrawThread() const;
  // Asserts the calling thread; the wrong one, or an unknown value, takes the crash path of SIGABRT.
  void ThreadCheck(Threads thread);

  // -1 null, -2 the name is taken (also by a module whose name begins with it). Higher priorities stand in front.
  int AddModule(TAppModule* pModule, int priority);
  // An exact match first, then one that begins with the text; null for an empty text.
  TAppModule* GetModuleByName(const std::string& ModuleName) const;
  // Takes the module out without deleting it. -1 null or empty, -2 not in the list.
  int DropModule(TAppModule* pModule);
  int DropModule(const std::string& ModuleName);
  // Unloads and deletes from the lowest priority up. A module that throws stays undeleted; their number.
  int DestroyModules();

  void AddEventListener(TAppModule* pModule, bool InsertFirst);
  void RemoveEventListener(TAppModule* pModule);
  void ClearAllEventListeners();

  // Ends the process: by the shutdown states and exit(SigValue) for the polite signals, which is done on the main
  // thread with no lock held; by the crash path on the calling thread for all others, which takes ten seconds at
  // most: what hangs by then is left, and the process ends as it would have. True when it has returned.
  bool SignalHandler(int SigValue);
  // Serves the polite signal that has come in since the last call, if any. Main thread, no lock held.
  void ServePendingSignal();
  // An end begins that is to give this exit code. It has ten seconds, together with one that has begun before; what
  // hangs by then is left: the restart command is run if it has not been, the log gets a line, and the process ends
  // with that code. The command itself may take as long as it likes. Any thread.
  void LimitEnd(int Code) { mEndLimit.BeginWith(Code); }
  // Ends the draw thread without a teardown by putting the state to APP_QUIT: for an Init that has failed, before
  // what it has built is destroyed. Main thread; nothing when the thread has ended already.
  void EndDrawThread();

  // Case-sensitive; what TerminalFlavour has become.
  int SetTerminalFlavour(std::string terminal_flavour);

 protected:
  std::string LookUpClientID() const override { return mClientID; }

  std::atomic<unsigned int> mLogicInterval{10};
  bool mIsExecutingMainDeferredMethods = false;  // main thread only
  std::queue<std::pair<DeferredType, SDL_semaphore*>> mDeferredQueue GUARDED_BY(mpDeferQueueMutex);
  std::atomic<int> mCurrentFreq{0};
  SDL_threadID ThreadID_MainThread;
  bool mIsExecutingDeferredMethods = false;  // draw thread only
  std::queue<DeferredDrawType> mDeferToDrawQueue GUARDED_BY(mpDeferDrawQueueMutex);
  std::atomic<SDL_threadID> ThreadID_DrawThread{0};  // 0 until the thread runs

 public:
  // Under the draw mutex: set by the main loop after the components' logic, cleared by each frame.
  bool ComponentLogicCalled = false;
  // Under the draw mutex, like the next ones but for the frame's own time only of the main thread: the
  // milliseconds of each stage of the latest pass, for inspection.
  int DrawDurationMs = 0;
  int LogDurationMs = 0;
  int ParamDurationMs = 0;
  int TaskDurationMs = 0;
  int ActionDurationMs = 0;
  int RunDurationMs = 0;
  int LogicDurationMs = 0;
  Uint32 AppStartTicks = 0;
  std::atomic<ETerminateType> TerminationType{DEFAULT};
  ThreadSafeProperty<bool> VSync;
  ThreadSafeProperty<unsigned int> TargetFPS;
  ThreadSafeProperty<unsigned int> TargetFrequency;

 protected:
  bool mRebootOnExit = true;

 public:
  SDL_Event LastEvent;  // main thread only

 protected:
  bool mDisableFunctionKeys = false;
  std::atomic<TAppGuiModule*> pAppGUI{nullptr};
  std::string mLogFile;
  std::list<std::pair<TAppModule*, int>> ModuleList;  // main thread; the teardown holds both mutexes
  std::string mClientID;
  std::list<TAppModule*> EventListenerList;  // main thread only, as is its iterator
  std::list<TAppModule*>::iterator EventListenerListIterator;
  SDL_mutex* mpMainMutex = nullptr;
  SDL_mutex* mpDeferQueueMutex = nullptr;
  std::atomic<SDL_Thread*> mpDrawThread{nullptr};  // taken by whoever waits for it
  SDL_mutex* mpDrawMutex = nullptr;
  SDL_mutex* mpDeferDrawQueueMutex = nullptr;
  int mSwipeDist = -1;
  ThreadSafeProperty<ApplicationState> mAppStatus;
  std::array<SDL_semaphore*, 10> mStatusWaiter{};

  // Writes the frames from the second on to the log, each by the tool that names its source line, and each on the
  // disk before the next one.
  void LogBacktrace(void* const* Frames, int Count);

 private:
  friend class TMainMutexGuard;
  friend void QuitSignalHandler(int SigValue);
  friend class TDrawMutexGuard;
  struct TLoopState;
  class TCrashLocks;
  // What the draw thread does with the GUI module; DRAWS also between two frames and in their sleep.
  enum class TDrawStage { NONE, LOADS, DRAWS };
  // How far the exit command has come; it may be begun by the end of the limit, too.
  enum class TCommandStage { NONE, DELAYED, RUNS, DONE };

  int SetGUIImpl(TAppGuiModule* (*Create)(), void* InitData);
  static int ApplicationDrawThread(void* data);
  int RunDrawThread();
  void ReadLogFileName();
  void ReadRebootOnExit();

  bool RunPass(TLoopState& Loop) REQUIRES_LOCK(mpMainMutex);
  void HoldFrequency(TLoopState& Loop);
  bool RunLogic(TLoopState& Loop) REQUIRES_LOCK(mpDrawMutex);

  // The end. What it keeps stands in a table above it.
  void InstallSignalHandler();
  static bool IsSignalPending();
  static bool IsInCrashPath();
  void EndPolitely(int SigValue);
  void EndByCrash(int SigValue, void* const* Frames, int Count);
  void CloseModules(bool FirstTime);
  int EndLoop(int statusMain);
  void CloseDeferred();
  void DropDeferred();
  void TearDown();
  std::string ExitCommand();
  void RunDelayed(const std::string& Command);
  void RunDirectly(const std::string& Command);
  bool EndAfterLimit(int Code);
  int JoinDrawThread();
  void DestroyOnce(bool WithGraphics);

  int mMainHolds = 0;                                       // main thread only; its own holds of the main mutex
  int mDrawHolds = 0;                                       // draw thread only; its own holds of the draw mutex
  std::atomic<TDrawStage> mDrawStage{TDrawStage::NONE};     // set by the draw thread; LOADS under the draw mutex
  unsigned int mServedSignals = 0;                          // main thread only; a bit for each signal being served
  bool mDeferClosed GUARDED_BY(mpDeferQueueMutex) = false;  // the main loop has ended
  std::recursive_mutex mDestroyGate;                        // held over Destroy by whoever destroys
  bool mDestroyStarted = false;                             // mDestroyGate
  std::atomic<TCommandStage> mCommandStage{TCommandStage::NONE};
  TEndLimit mEndLimit;
};

// Hold one of the application's two big mutexes for a scope. The application must outlive them.
class IS_LOCK_GUARD TMainMutexGuard {
 public:
  explicit TMainMutexGuard(TApplication& Application) TAKES_LOCK(Application.mpMainMutex)
    : mApplication(Application) {
    mApplication.lockMainMutex();
  }
  ~TMainMutexGuard() RELEASES_LOCK() { mApplication.unlockMainMutex(); }
  TMainMutexGuard(const TMainMutexGuard&) = delete;
  TMainMutexGuard& operator=(const TMainMutexGuard&) = delete;

 private:
  TApplication& mApplication;
};

class IS_LOCK_GUARD TDrawMutexGuard {
 public:
  explicit TDrawMutexGuard(TApplication& Application) TAKES_LOCK(Application.mpDrawMutex)
    : mApplication(Application) {
    mApplication.lockDrawMutex();
  }
  ~TDrawMutexGuard() RELEASES_LOCK() { mApplication.unlockDrawMutex(); }
  TDrawMutexGuard(const TDrawMutexGuard&) = delete;
  TDrawMutexGuard& operator=(const TDrawMutexGuard&) = delete;

 private:
  TApplication& mApplication;
};

extern TApplication* pApp;
// Asserts that the draw thread calls; nothing without an application.
void checkDrawThread();
extern TFlavour TerminalFlavour;
// What LoadGUI was given and what the GUI module's Load returned, handed over by the change of state.
extern void* GUI_LoadData;
extern int GUI_LoadResult;

// Handler of the process's signals. The polite ones are only noted here, and their end's time begins;
// ServePendingSignal acts on them.
void QuitSignalHandler(int SigValue);

}  // namespace vendelo_sdl2
