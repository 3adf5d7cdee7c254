// Signals: the polite ones become an orderly end, the others a backtrace in the log and the end of the process.
#include <SDL.h>
#include <execinfo.h>
#include <linux/reboot.h>
#include <unistd.h>
#include <atomic>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "common/Logger.h"
#include "vendelo-sdl2/MyUtils.h"
#include "vendelo-sdl2/SystemSeams.h"
#include "vendelo-sdl2/TAppGuiModule.h"
#include "vendelo-sdl2/TApplication.h"

namespace vendelo_sdl2 {

namespace {

// The polite signal that came in last and has not been served; 0 for none.
std::atomic<int> PendingSignal{0};
static_assert(std::atomic<int>::is_always_lock_free);

// Aligned for the linker mold 1.10: it begins the read-only segment here, and a begin at an odd byte that ends a
// page gives a program that cannot be loaded.
alignas(64) thread_local bool InCrashPath = false;

bool IsPolite(int SigValue) {
  return SigValue == SIGTERM || SigValue == SIGQUIT || SigValue == SIGINT || SigValue == SIGHUP;
}

// The crash signal whose limit runs, and whether the end of the limit reboots; 0 for none. They are set before the
// limit is armed and are all that its end reads.
std::atomic<int> LimitedCrash{0};
std::atomic<bool> LimitReboots{false};
static_assert(std::atomic<bool>::is_always_lock_free);

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
  OpenThreadTo(crash);  // the crashed thread is inside its handler, and there may be no other
  EndProcess(crash, LimitReboots);
}

// From here on the crash path has ten seconds, all crashes together. Safe inside a handler.
void LimitCrashPath(int SigValue, bool Reboot) {
  constexpr unsigned longestSeconds = 10;
  int none = 0;
  LimitReboots = LimitReboots || Reboot;
  if (!LimitedCrash.compare_exchange_strong(none, SigValue)) return;
  std::signal(SIGALRM, CrashLimitHandler);
  OpenThreadTo(SIGALRM);
  SystemSeams.Alarm(longestSeconds);
}

}  // namespace

// Keeps the other threads from destroying the application while the crashed one does, and the graphics from being
// destroyed under the draw thread. The crashed thread waits for nothing for long: a holder may never let go.
class TApplication::TCrashLocks {
 public:
  explicit TCrashLocks(TApplication& Application)
    : mApplication(Application), mGate(Application.mDestroyGate, std::try_to_lock) {
    constexpr int longestWaitMs = 200;
    for (int waited = 0; mGate && !mHasDrawMutex && waited < longestWaitMs; ++waited) {
      // Outside the draw mutex a frame still sleeps and presents.
      if (!mApplication.mDrawThreadDraws || mApplication.IsInDrawThread())
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
    return;
  }
  if (pApp) pApp->terminate(DEFAULT, false);
  if (IsPolite(SigValue)) return;
  std::signal(SigValue, SIG_DFL);  // returning would run into the same fault again
  SystemSeams.Kill(getpid(), SigValue);
}

bool TApplication::IsSignalPending() { return PendingSignal != 0; }

bool TApplication::IsInCrashPath() { return InCrashPath; }

void TApplication::ServePendingSignal() {
  const int signal = PendingSignal.exchange(0);
  if (signal != 0 && status() != APP_QUIT) SignalHandler(signal);
}

bool TApplication::SignalHandler(int SigValue) {
  if (IsPolite(SigValue)) return EndPolitely(SigValue);
  LimitCrashPath(SigValue, mRebootOnExit);
  WriteLog(0, 0, "Signal %d received. Exiting...\n", SigValue);
  std::array<void*, 20> frames{};
  const int count = backtrace(frames.data(), static_cast<int>(frames.size()));
  return EndByCrash(SigValue, frames.data(), count);
}

bool TApplication::EndPolitely(int SigValue) {
  if (!IsInMainThread() || mInPass) {  // locks are held, or the draw thread would wait for itself
    PendingSignal = SigValue;
    return true;
  }
  const unsigned int bit = 1u << SigValue;
  if (mServedSignals & bit) return true;  // as a second one would be blocked while a handler runs
  mServedSignals |= bit;
  WriteLog(0, 0, "Signal %d received. Exiting...\n", SigValue);
  terminate(DEFAULT, true);
  MainLoop();
  SystemSeams.Exit(SigValue);
  mServedSignals &= ~bit;
  return true;
}

bool TApplication::EndByCrash(int SigValue, void* const* Frames, int Count) {
  const bool nested = InCrashPath;
  InCrashPath = true;
  std::fprintf(stderr, "Error: signal %d:\n", SigValue);
  KLOG(LogApp, logs::Critical, "Signal %d encountered", SigValue);
  LogBacktrace(Frames, Count);
  terminate(DEFAULT, false);
  const TCrashLocks locks(*this);  // until the process has ended, so that no other thread goes on destroying
  if (locks.MayDestroy()) DestroyAfterCrash(locks.HasDrawMutex());
  EndProcess(SigValue, mRebootOnExit);
  InCrashPath = nested;
  return true;
}

// Without the draw mutex a load or a frame is under way: what it draws with is left alone and the rest is
// destroyed.
void TApplication::DestroyAfterCrash(bool WithGraphics) {
  if (mDestroyStarted.exchange(true)) return;
  try {
    if (WithGraphics) {
      Destroy();
    } else {
      if (TAppGuiModule* gui = TakeGUI()) DropModule(gui);
      TApplication::Destroy();
    }
  } catch (...) {  // the process ends in any case
  }
}

void TApplication::LogBacktrace(void* const* Frames, int Count) {
  const auto pollAndSync = [this] {
    logman::Poll();
    FlushFile();  // the process may end before the next one is due
    sync();
  };
  const std::unique_ptr<char*, decltype(&std::free)> symbols(backtrace_symbols(Frames, Count), &std::free);
  if (Count > 1) {
    WriteLog(0, 0, "================== BACKTRACE ==================");
    pollAndSync();
  }
  for (int frame = 1; symbols && frame < Count; ++frame) {
    const char* symbol = symbols.get()[frame];
    const int fileLength = static_cast<int>(std::strcspn(symbol, "( "));
    char command[512];
    std::snprintf(command, sizeof command, "addr2line %p -e %.*s", Frames[frame], fileLength, symbol);
    const std::string output = MyUtils::SystemCmdResult(command);
    WriteLog(0, 0, "(%d) %s", frame, output.c_str());
    pollAndSync();
  }
  if (Count > 1) WriteLog(0, 0, "================ BACKTRACE END ================");
  if (mRebootOnExit) WriteLog(0, 0, "================ WILL REBOOT ON EXIT!!!!! ================");
  pollAndSync();
}

}  // namespace vendelo_sdl2
