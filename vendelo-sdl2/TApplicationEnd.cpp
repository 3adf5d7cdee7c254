// The end of the program, all of it: signals, the last states, the teardown and the end after a crash.
//
// An orderly end closes the modules where it is a graceful one, leaves the main loop in APP_TERMINATE, closes the
// deferred work and waits for the draw thread, which destroys everything; without a GUI the main thread does. A
// polite signal comes to the same end in a main loop that is run for it, on the main thread with no lock held. A
// thread that crashes says where it was, destroys what it safely can and ends the process. Both have ten seconds:
// the orderly end by a thread that waits beside it, since a call of the window system or of the network may never
// return, the crash by an alarm, since a crash may leave no thread that gets on.
//
// What is kept for that, and what would happen without it:
//
// | Flag            | Set by          | Read by                | Under               | Prevents                   |
// |-----------------|-----------------|------------------------|---------------------|----------------------------|
// | PendingSignal   | signal handlers | ServePendingSignal,    | lock-free atomic    | an end under the locks of  |
// |                 |                 | a pass's sleep         |                     | what a signal interrupts   |
// | mServedSignals  | EndPolitely     | EndPolitely            | main thread only    | an end inside the end for  |
// |                 |                 |                        |                     | the same signal            |
// | mMainHolds      | the main mutex  | EndPolitely            | main thread only    | an end inside a pass, which|
// |                 |                 |                        |                     | the teardown would wait for|
// | bShutDown       | RunPass         | RunPass                | main thread only    | a second announcement      |
// | pAppGUI         | SetGUI, TakeGUI | EndLoop, TakeGUI       | atomic              | a GUI destroyed twice      |
// | mpDrawThread    | whoever joins   | whoever joins          | atomic              | a second join              |
// | mDeferClosed    | CloseDeferred   | Defer                  | mpDeferQueueMutex   | a wait for a loop that has |
// |                 |                 |                        |                     | ended                      |
// | mDrawHolds      | the draw mutex  | Defer                  | draw thread only    | a wait inside a frame,     |
// |                 |                 |                        |                     | which keeps passes out     |
// | mDrawStage      | RunDrawThread   | RunLogic, Defer,       | atomic; LOADS also  | logic, waits and end amid  |
// |                 |                 | TCrashLocks            | the draw mutex      | a load; the end of a frame |
// |                 |                 |                        |                     | that sleeps                |
// | mDestroyStarted | DestroyOnce     | DestroyOnce            | mDestroyGate        | a second destruction       |
// | InCrashPath     | EndByCrash      | ThreadCheck, Destroy   | each thread its own | a crash inside the crash   |
// |                 |                 |                        |                     | path, waits for jobs in it |
// | LimitedCrash    | LimitCrashPath  | the end of the limit   | lock-free atomic    | a second limit             |
// | mEndLimit       | terminate, ...  | its thread             | lock-free atomic    | an end that has no end     |
// | mCommandStage   | TearDown,       | the same               | atomic              | an exit command that runs  |
// |                 | EndAfterLimit   |                        |                     | not, or three times        |
// | DueCode         | EndAfterLimit   | LastStepsHandler       | lock-free atomic    | last steps that hang       |
#include <SDL.h>
#include <SDL_image.h>
#include <execinfo.h>
#include <linux/reboot.h>
#include <unistd.h>
#include <algorithm>
#include <atomic>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <utility>
#include <vector>

#include "common/Logger.h"
#include "vendelo-sdl2/SystemSeams.h"
#include "vendelo-sdl2/TAppGuiModule.h"
#include "vendelo-sdl2/TApplication.h"
#include "vendelo-sdl2/TAsyncJobs.h"
#include "vendelo-sdl2/TMutexGuard.h"

namespace vendelo_sdl2 {

namespace {

// The polite signal that came in last and has not been served; 0 for none.
std::atomic<int> PendingSignal{0};
// The crash signal whose limit runs, negative where its end reboots; 0 for none. All that the end of the limit
// reads.
std::atomic<int> LimitedCrash{0};
// The exit code of an end whose time is over.
std::atomic<int> DueCode{0};
static_assert(std::atomic<int>::is_always_lock_free);

// Aligned for the linker mold 1.10: it begins the read-only segment here, and a begin at an odd byte that ends a
// page gives a program that cannot be loaded.
alignas(64) thread_local bool InCrashPath = false;

bool IsPolite(int SigValue) {
  return SigValue == SIGTERM || SigValue == SIGQUIT || SigValue == SIGINT || SigValue == SIGHUP;
}

// The end of the process itself, by what is safe inside a handler: a crash inside the allocator, or beside a lock
// that nobody gives back, leaves nothing else.
void EndProcess(int SigValue, bool Reboot) {
  if (Reboot) SystemSeams.Reboot(static_cast<int>(LINUX_REBOOT_CMD_RESTART));
  // Also after a reboot that was refused: going back would run into the same fault for ever.
  std::signal(SigValue, SIG_DFL);
  SystemSeams.Kill(getpid(), SigValue);
}

void OpenThreadTo(int SigValue) {
  sigset_t set;
  sigemptyset(&set);
  sigaddset(&set, SigValue);
  pthread_sigmask(SIG_UNBLOCK, &set, nullptr);
}

void CrashLimitHandler(int /*SigValue*/) {
  const int crash = LimitedCrash;
  const int signal = std::abs(crash);
  OpenThreadTo(signal);  // the crashed thread is inside its handler, and there may be no other
  EndProcess(signal, crash < 0);
}

// From here on the crash path has ten seconds, all crashes together. Safe inside a handler.
void LimitCrashPath(int SigValue, bool Reboot) {
  constexpr unsigned longestSeconds = 10;
  int none = 0;
  if (!LimitedCrash.compare_exchange_strong(none, Reboot ? -SigValue : SigValue)) return;
  std::signal(SIGALRM, CrashLimitHandler);
  OpenThreadTo(SIGALRM);
  SystemSeams.Alarm(longestSeconds);
}

void LastStepsHandler(int /*SigValue*/) { SystemSeams.ExitNow(DueCode); }

}  // namespace

// ---- signals

void TApplication::InstallSignalHandler() {
  void* frame = nullptr;
  backtrace(&frame, 1);  // loads what it needs now, and not inside a handler
  for (const int signal : {SIGHUP, SIGINT, SIGQUIT, SIGILL, SIGABRT, SIGFPE, SIGSEGV, SIGTERM})
    std::signal(signal, QuitSignalHandler);
}

// A polite signal is only noted: it can arrive with any lock held, and ending the program takes nearly all of them.
void QuitSignalHandler(int SigValue) {
  if (pApp) {
    if (IsPolite(SigValue)) {
      PendingSignal = SigValue;
      pApp->mEndLimit.Begin(SigValue);  // who serves it may hang
      return;
    }
    if (pApp->SignalHandler(SigValue)) return;
  }
  if (!IsPolite(SigValue)) LimitCrashPath(SigValue, false);
  logman::WriteLog(7, 0, "Signal %d received. Exiting...\n", SigValue);
  logman::Poll();
  sync();
  if (SigValue == SIGTERM || SigValue == SIGABRT) {
    std::signal(SIGABRT, SIG_DFL);  // else abort would come back here
    SystemSeams.Abort();
  } else if (!IsPolite(SigValue)) {
    EndProcess(SigValue, false);  // returning would run into the same fault again
  }
}

bool TApplication::IsSignalPending() { return PendingSignal != 0; }

bool TApplication::IsInCrashPath() { return InCrashPath; }

void TApplication::ServePendingSignal() {
  const int signal = PendingSignal.exchange(0);
  if (signal != 0 && status() != APP_QUIT) SignalHandler(signal);
}

bool TApplication::SignalHandler(int SigValue) {
  if (IsPolite(SigValue)) {
    EndPolitely(SigValue);
    return true;
  }
  LimitCrashPath(SigValue, mRebootOnExit);
  const TEssentialLines essential;
  WriteLog(0, 0, "Signal %d received. Exiting...\n", SigValue);
  std::array<void*, 20> frames{};
  const int count = backtrace(frames.data(), static_cast<int>(frames.size()));
  EndByCrash(SigValue, frames.data(), count);
  return true;
}

// ---- the orderly end

void TApplication::EndPolitely(int SigValue) {
  if (!IsInMainThread() || mMainHolds > 0) {  // a pass holds locks, and the draw thread would wait for itself
    PendingSignal = SigValue;
    return;
  }
  const unsigned int bit = 1u << SigValue;
  if (mServedSignals & bit) return;  // as a second one would be blocked while a handler runs
  mServedSignals |= bit;
  LimitEnd(SigValue);
  const TEssentialLines essential;
  WriteLog(0, 0, "Signal %d received. Exiting...\n", SigValue);
  terminate(DEFAULT, true);
  MainLoop();
  SystemSeams.Exit(SigValue);
  mServedSignals &= ~bit;
}

// One pass of the shutdown: announce it once, then ask and close from the lowest priority up until all are ready.
void TApplication::CloseModules(bool FirstTime) {
  std::vector<TAppModule*> modules;  // a copy: a module may take itself out of the list
  for (auto entry = ModuleList.rbegin(); entry != ModuleList.rend(); ++entry) modules.push_back(entry->first);
  const auto isGone = [this](const TAppModule* module) {
    return std::none_of(ModuleList.begin(), ModuleList.end(),
                        [module](const auto& entry) { return entry.first == module; });
  };
  for (TAppModule* module : modules) {
    if (isGone(module)) continue;
    if (FirstTime) {
      module->RequestClose();
    } else {
      if (!module->ReadyToExit()) return;
      module->Close();
    }
  }
  if (!FirstTime && CanExit()) advanceStatus();
}

int TApplication::EndLoop(int statusMain) {
  if (status() == APP_QUIT) return statusMain;  // a loop inside this one has been here
  mEndLimit.Begin(0);
  // RunOnce may have ended the loop without telling the draw thread, which gives up the GUI in APP_TERMINATE only.
  if (GUI() || status() < APP_LOADING) setStatus(APP_TERMINATE);
  CloseDeferred();
  const int statusDraw = JoinDrawThread();
  DestroyOnce(true);  // with a GUI the draw thread has
  setStatus(APP_QUIT);
  return statusMain | -statusDraw;
}

// The main loop serves its queue no more: whoever waits for a call is let go, and later callers do not wait.
void TApplication::CloseDeferred() {
  decltype(mDeferredQueue) dropped;
  {
    TMutexGuard guard(mpDeferQueueMutex);
    mDeferClosed = true;
    dropped.swap(mDeferredQueue);
  }
  for (; !dropped.empty(); dropped.pop()) {
    dropped.front().first = nullptr;
    if (dropped.front().second) SDL_SemPost(dropped.front().second);
  }
}

// Drops what neither queue will run any more, while what it holds can still be destroyed.
void TApplication::DropDeferred() {
  CloseDeferred();
  decltype(mDeferToDrawQueue) dropped;
  TMutexGuard guard(mpDeferDrawQueueMutex);
  dropped.swap(mDeferToDrawQueue);
}

// The end of the draw thread. A restart command runs twice: the delayed copy fires even if the rest hangs or dies,
// the direct one comes when all is down.
void TApplication::TearDown() {
  const TEssentialLines essential;
  const std::string cmd = ExitCommand();
  RunDelayed(cmd);
  waitForStatus(APP_TERMINATE);  // the main loop may still be closing modules
  {
    std::lock_guard gate(mDestroyGate);  // for good, when a crash elsewhere is ending the process
    const TDrawMutexGuard drawGuard(*this);
    const TMainMutexGuard mainGuard(*this);
    try {
      DropDeferred();
      DestroyOnce(true);
    } catch (...) {  // nothing is left to be done about it, and the command must still run
    }
  }
  SDL_Quit();
  RunDirectly(cmd);
}

std::string TApplication::ExitCommand() {
  if (mRebootOnExit && TerminationType == DEFAULT) TerminationType = RESTART;
  if (TerminationType == RESTART) return GetParam("SHELL_CMD_RESTART", PARAM_MASK_ALL)->AsString();
  if (TerminationType == SHUTDOWN) return GetParam("SHELL_CMD_SHUTDOWN", PARAM_MASK_ALL)->AsString();
  return "";
}

// Each of the two once, by the teardown or by the end of the limit.
void TApplication::RunDelayed(const std::string& Command) {
  TCommandStage stage = TCommandStage::NONE;
  if (!mCommandStage.compare_exchange_strong(stage, TCommandStage::DELAYED) || Command.empty()) return;
  SystemSeams.System(("bash -c 'sleep 2; " + Command + "' &").c_str());
}

void TApplication::RunDirectly(const std::string& Command) {
  TCommandStage stage = TCommandStage::DELAYED;
  if (!mCommandStage.compare_exchange_strong(stage, TCommandStage::RUNS)) return;
  if (!Command.empty()) SystemSeams.System(Command.c_str());
  mCommandStage = TCommandStage::DONE;
}

// The time of an orderly end is over: on the limit's thread, while nobody else may get on. A second is left for
// this, an alarm sees to that: what has been started by then goes on without this process.
bool TApplication::EndAfterLimit(int Code) {
  constexpr unsigned lastSeconds = 1;
  if (LimitedCrash != 0) return true;                      // has a limit of its own
  if (mCommandStage == TCommandStage::RUNS) return false;  // is waited for, however long it takes
  DueCode = Code;
  std::signal(SIGALRM, LastStepsHandler);
  OpenThreadTo(SIGALRM);
  SystemSeams.Alarm(lastSeconds);
  const std::string cmd = ExitCommand();
  RunDelayed(cmd);
  WriteLastLine(5, "The end has taken ten seconds, what is left of it is left out");
  RunDirectly(cmd);
  SystemSeams.ExitNow(Code);
  return true;
}

// Waits for the draw thread, once, and never on that thread itself; what it returned.
int TApplication::JoinDrawThread() {
  int status = 0;
  if (IsInDrawThread()) return status;
  if (SDL_Thread* thread = mpDrawThread.exchange(nullptr)) SDL_WaitThread(thread, &status);
  return status;
}

void TApplication::EndDrawThread() {
  if (!mpDrawThread) return;
  setStatus(APP_QUIT);
  JoinDrawThread();
}

// ---- what is destroyed

// Nothing when an end before this one, or the one that this one crashed out of, has begun. Without the graphics
// what a load or a frame under way draws with is left alone.
void TApplication::DestroyOnce(bool WithGraphics) {
  std::lock_guard gate(mDestroyGate);
  if (std::exchange(mDestroyStarted, true)) return;
  if (WithGraphics) {
    Destroy();
    return;
  }
  if (TAppGuiModule* gui = TakeGUI()) DropModule(gui);
  TApplication::Destroy();
}

void TApplication::Destroy() {
  constexpr Uint32 longestWaitMs = 5000;  // half of what the end has
  if (!IsInCrashPath() && !TAsyncJob::WaitForNone(longestWaitMs))
    KLOG(LogApp, logs::Error, "Destroying the application under %d running jobs", TAsyncJob::Running());
  if (const int failed = DestroyModules())
    KLOG(LogApp, logs::Error, "Could not destroy %d modules!", failed);
  else
    KLOG(LogApp, logs::Info, "Successfully destroyed all modules.");
  TSoundMachine::CloseAudio();
  IMG_Quit();
  TLogManager::Destroy();
  sync();
}

// ---- the end after a crash

// Keeps the other threads from destroying the application while the crashed one does, and the graphics from being
// destroyed under the draw thread. The crashed thread waits for nothing for long: a holder may never let go.
class TApplication::TCrashLocks {
 public:
  explicit TCrashLocks(TApplication& Application)
    : mApplication(Application), mGate(Application.mDestroyGate, std::try_to_lock) {
    constexpr int longestWaitMs = 200;
    for (int waited = 0; mGate && !mHasDrawMutex && waited < longestWaitMs; ++waited) {
      // Outside the draw mutex a frame still sleeps and presents.
      if (mApplication.mDrawStage == TDrawStage::NONE || mApplication.IsInDrawThread())
        mHasDrawMutex = mApplication.tryLockDrawMutex();
      if (!mHasDrawMutex) SystemSeams.MicroSleep(1000);
    }
  }
  ~TCrashLocks() {
    if (mHasDrawMutex) mApplication.unlockDrawMutex();
  }
  TCrashLocks(const TCrashLocks&) = delete;
  TCrashLocks& operator=(const TCrashLocks&) = delete;

  bool MayDestroy() const { return mGate.owns_lock(); }
  bool HasDrawMutex() const { return mHasDrawMutex; }

 private:
  TApplication& mApplication;
  std::unique_lock<std::recursive_mutex> mGate;
  bool mHasDrawMutex = false;
};

void TApplication::EndByCrash(int SigValue, void* const* Frames, int Count) {
  const bool nested = std::exchange(InCrashPath, true);
  std::fprintf(stderr, "Error: signal %d:\n", SigValue);
  KLOG(LogApp, logs::Critical, "Signal %d encountered", SigValue);
  LogBacktrace(Frames, Count);
  terminate(DEFAULT, false);
  const TCrashLocks locks(*this);  // until the process has ended, so that no other thread goes on destroying
  try {
    if (locks.MayDestroy()) DestroyOnce(locks.HasDrawMutex());
  } catch (...) {  // the process ends in any case
  }
  EndProcess(SigValue, mRebootOnExit);
  InCrashPath = nested;
}

}  // namespace vendelo_sdl2
