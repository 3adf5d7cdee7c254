#pragma once

#include <SDL.h>
#include <functional>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "vendelo-sdl2/SystemSeams.h"
#include "vendelo-sdl2/TAppGuiModule.h"
#include "vendelo-sdl2/TApplication.h"

// Text lines in the order in which any thread wrote them.
class Trace {
 public:
  void add(const std::string& line);
  std::vector<std::string> lines() const;
  int count(const std::string& line) const;
  // Place of the first such line; -1 without one.
  int indexOf(const std::string& line) const;
  bool contains(const std::string& line) const { return indexOf(line) >= 0; }

 private:
  mutable std::mutex mMutex;
  std::vector<std::string> mLines;  // mMutex
};

// Takes the framework's notices, as "Verbosity|text", for as long as it lives. Made before the application whose
// notices it takes, gone after it.
class NoticeCapture {
 public:
  NoticeCapture();
  ~NoticeCapture();
  NoticeCapture(const NoticeCapture&) = delete;
  NoticeCapture& operator=(const NoticeCapture&) = delete;

  Trace trace;
};

// Puts the system calls back at its end. Changes are made before the application starts its thread.
class SeamsGuard {
 public:
  SeamsGuard() : mSaved(vendelo_sdl2::SystemSeams) {}
  ~SeamsGuard() { vendelo_sdl2::SystemSeams = mSaved; }
  SeamsGuard(const SeamsGuard&) = delete;
  SeamsGuard& operator=(const SeamsGuard&) = delete;

 private:
  vendelo_sdl2::TSystemSeams mSaved;
};

// Sets or, with null, unsets an environment variable for a scope.
class ScopedEnvironment {
 public:
  ScopedEnvironment(const char* name, const char* value);
  ~ScopedEnvironment();
  ScopedEnvironment(const ScopedEnvironment&) = delete;
  ScopedEnvironment& operator=(const ScopedEnvironment&) = delete;

 private:
  std::string mName, mOld;
  bool mWasSet;
};

// A concrete application without a window, whose steps are hooks; a hook that is not set does what its operation
// does by default. Hooks are set before the thread that calls them is let go. Everything that is written to the log
// is kept as "type|text".
class TestApplication : public vendelo_sdl2::TApplication {
 public:
  ~TestApplication() override;

  std::function<int()> onInit, onRunOnce, onDrawOnce;
  std::function<void()> onStartup, onDestroy;
  std::function<bool()> onSetupGraphics, onCanExit;
  std::function<void(ApplicationState)> onState;
  std::function<void()> onStoreParameters;
  Trace log;

  int Init() override { return onInit ? onInit() : 0; }
  int RunOnce() override { return onRunOnce ? onRunOnce() : 0; }
  // Without a hook: the GUI module's frame apart from drawing, at some 1000 frames a second.
  int DrawOnce() override;
  void Startup() override;
  bool SetupGraphics() override { return onSetupGraphics && !mHooksEnd && onSetupGraphics(); }
  bool CanExit() const override { return !onCanExit || onCanExit(); }
  void Destroy() override;
  void OnAppStateChanged(ApplicationState newState) override;
  void OnStoreValues(const std::list<vendelo_sdl2::TAppParam*>& params) override;
  int _WriteLog(char color, vendelo_sdl2::TLogType type, unsigned long gameId, const std::string& text) override;

  // The names of the modules, highest priority first.
  std::vector<std::string> moduleNames() const;
  int destroyCalls() const { return mDestroyCalls; }
  int frames() const { return mFrames; }  // begun so far

  using TApplication::LogBacktrace;
  using TApplication::mAppStatus;
  using TApplication::mDisableFunctionKeys;
  using TApplication::mpDrawThread;
  using TApplication::mpMainMutex;
  using TApplication::mRebootOnExit;
  using TApplication::mStatusWaiter;
  using TApplication::mSwipeDist;

 private:
  std::atomic<int> mDestroyCalls{0}, mFrames{0};
  std::atomic<bool> mHooksEnd{false};
};

// A GUI module without a window; the only one that a TestApplication is given.
class StubGui : public vendelo_sdl2::TAppGuiModule {
 public:
  static std::function<int(void*)>& onLoad();
  static std::function<void()>& onMainLogic();
  static Trace& trace();

  ~StubGui() override { trace().add("deleted"); }
  int Load(void* data) override;
  void mainLogic() override;
  void RefreshSize() override { trace().add("refresh size"); }
  int Unload() override;
  bool ReadyToExit() const override { return true; }
  int Close() override;
  void RequestClose() override { trace().add("request close"); }

  using TAppGuiModule::serveAndDraw;
};
