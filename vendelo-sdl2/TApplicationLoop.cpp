// The main thread's way through the program: Run and MainLoop.
#include <SDL.h>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <utility>

#include "vendelo-sdl2/SystemSeams.h"
#include "vendelo-sdl2/TAppGuiModule.h"
#include "vendelo-sdl2/TApplication.h"

namespace vendelo_sdl2 {

namespace {

int Elapsed(Uint32 since) { return static_cast<int>(SDL_GetTicks() - since); }

}  // namespace

// What MainLoop keeps from one pass to the next. Times are milliseconds, differences of ticks wrap by themselves.
struct TApplication::TLoopState {
  Uint32 loopDurationMs = 0;
  Uint32 lastProcessLoop = 0;
  Uint32 thisProcessLoop = 0;
  Uint32 lastPoll = SDL_GetTicks();
  Uint32 lastFpsUpdate = lastPoll;
  bool bShutDown = false;  // announced to the modules
  int statusMain = 0;
  int numLoops = 0;
  Sint64 sleepDiffBuffer = 0;  // by how much the loop is late so far
  double elapsedSecondsSinceFPS = 0.0;
};

int TApplication::Run() {
  advanceStatus();
  AppStartTicks = SDL_GetTicks();
  Startup();
  do {
    ServePendingSignal();
    TMainMutexGuard guard(*this);
    ProcessActions();
    ExecuteActions(ACTION_THREAD_SAFE);
    ExecuteActions(ACTION_ASYNC);
    ProcessTasks(TASK_THREAD_SAFE);
    TParamMan::Poll();
    TLogManager::Poll();
  } while (status() < APP_STARTUP);
  if (GUI())
    advanceStatus();
  else
    setStatus(APP_RUNNING);
  return MainLoop();
}

int TApplication::MainLoop() {
  TLoopState loop;
  const unsigned int frequency = TargetFrequency;
  if (frequency == 0)
    std::raise(SIGFPE);  // a frequency of 0 is a division fault and is reported as one
  else
    loop.loopDurationMs = 1000 / frequency;
  bool leave = false;
  while (!leave && loop.statusMain == 0) {
    ServePendingSignal();
    TMainMutexGuard guard(*this);
    leave = RunPass(loop);
    OnPassDone();
  }
  return EndLoop(loop.statusMain);
}

// One pass, under the main mutex; true when the loop has to be left.
bool TApplication::RunPass(TLoopState& Loop) {
  Loop.thisProcessLoop = SDL_GetTicks();
  if (status() == APP_RUNNING) HoldFrequency(Loop);
  Loop.lastProcessLoop = Loop.thisProcessLoop;
  if (status() >= APP_TERMINATE) return true;

  RunDurationMs = TaskDurationMs = ActionDurationMs = 0;
  ProcessActions();
  if (status() >= APP_TERMINATE) return true;

  if (tryLockDrawMutex()) {  // never waits for a frame: the logic is left out instead
    bool leave = false;
    try {
      leave = RunLogic(Loop);
    } catch (const std::exception& error) {
      std::printf("Std exception: %s\n", error.what());
    } catch (...) {
      std::printf("Unknown exception\n");
    }
    unlockDrawMutex();
    if (leave) return true;
  }

  ScopedLock statusLock(mAppStatus);
  if (status() >= APP_TERMINATE) return true;
  if (status() == APP_SHUTTING_DOWN) CloseModules(!std::exchange(Loop.bShutDown, true));
  ExecuteActionsAndTasks(true);
  ExecuteActions(ACTION_ASYNC);
  const Uint32 beforeParameters = SDL_GetTicks();
  TParamMan::Poll();
  const Uint32 beforeLog = SDL_GetTicks();
  ParamDurationMs = static_cast<int>(beforeLog - beforeParameters);
  TLogManager::Poll();
  LogDurationMs = Elapsed(beforeLog);
  statusLock.Release();
  ++Loop.numLoops;
  return false;
}

// Sleeps for what is left of the period. What the sleep overshoots shortens the next one, so that the frequency
// holds on average in spite of the coarse clock.
void TApplication::HoldFrequency(TLoopState& Loop) {
  Loop.elapsedSecondsSinceFPS = (Loop.thisProcessLoop - Loop.lastFpsUpdate) * 0.001;
  const Sint64 elapsedMs = Loop.thisProcessLoop - Loop.lastProcessLoop;
  if (elapsedMs + Loop.sleepDiffBuffer >= Loop.loopDurationMs) {
    Loop.sleepDiffBuffer = 0;
    return;
  }
  const Sint64 toSleepMs = Loop.loopDurationMs - elapsedMs - Loop.sleepDiffBuffer;
  const timespec time{static_cast<time_t>(toSleepMs / 1000), static_cast<long>(toSleepMs % 1000 * 1000000)};
  if (SystemSeams.NanoSleep(&time, nullptr) < 0 && !IsSignalPending())
    std::printf("Nano sleep system call failed!\n");
  Loop.lastProcessLoop = Loop.thisProcessLoop;
  Loop.thisProcessLoop = SDL_GetTicks();
  const Sint64 sleptMillis = Loop.thisProcessLoop - Loop.lastProcessLoop;
  Loop.sleepDiffBuffer += sleptMillis + elapsedMs - Loop.loopDurationMs;
}

// The part of a pass that excludes a frame; true when the loop has to be left.
bool TApplication::RunLogic(TLoopState& Loop) {
  DrawDurationMs = 0;
  ExecuteDeferredMethods();
  if (status() >= APP_TERMINATE) return true;

  if (TAppGuiModule* gui = GUI()) {
    if (!ComponentLogicCalled && mDrawStage != TDrawStage::LOADS) {
      gui->mainLogic();
      Loop.thisProcessLoop = SDL_GetTicks();
      LogicDurationMs = static_cast<int>(Loop.thisProcessLoop - Loop.lastProcessLoop);
      ComponentLogicCalled = true;
    } else {
      LogicDurationMs = 0;
    }
    if (Loop.elapsedSecondsSinceFPS >= 1.0) {
      Loop.lastFpsUpdate = Loop.thisProcessLoop;
      mCurrentFreq = static_cast<int>(std::floor(Loop.numLoops / Loop.elapsedSecondsSinceFPS));
      Loop.numLoops = 0;
    }
  }
  if (Loop.thisProcessLoop - Loop.lastPoll >= mLogicInterval) {
    Loop.statusMain = RunOnce();
    Loop.lastPoll = Loop.thisProcessLoop;
    RunDurationMs = Elapsed(Loop.thisProcessLoop);
  }
  if (status() >= APP_TERMINATE) return true;
  ExecuteActionsAndTasks(false);
  return false;
}

void TApplication::ExecuteActionsAndTasks(bool threadSafe) {
  const Uint32 beforeActions = SDL_GetTicks();
  ExecuteActions(threadSafe ? ACTION_THREAD_SAFE : ACTION_NORMAL);
  const Uint32 beforeTasks = SDL_GetTicks();
  ActionDurationMs += static_cast<int>(beforeTasks - beforeActions);
  ProcessTasks(threadSafe ? TASK_THREAD_SAFE : TASK_NORMAL);
  TaskDurationMs += Elapsed(beforeTasks);
}

}  // namespace vendelo_sdl2
