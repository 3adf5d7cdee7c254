#include <SDL.h>

#include <memory>
#include <utility>

#include "vendelo-sdl2/MyUtils.h"
#include "vendelo-sdl2/TAsyncJobs.h"
#include "vendelo-sdl2/TLogManager.h"
#include "vendelo-sdl2/TTaskMan.h"

namespace vendelo_sdl2 {

TTimedTaskHandler::TTimedTaskHandler(void* UserData, Uint32 Interval, TTaskType taskType, std::string TaskName)
  : mTaskName(std::move(TaskName)),
    LastExecuted(SDL_GetTicks()),
    Interval(Interval),
    TaskType(taskType),
    UserData(UserData) {}

TTimedTaskHandler::~TTimedTaskHandler() = default;

void* TTimedTaskHandler::GetRelatedObject() { return UserData; }

void TTimedTaskHandler::Enable() {
  LastExecuted = SDL_GetTicks();
  Enabled = 1;
}

void TTimedTaskHandler::EnableAndExecuteImmediate() {
  Enable();
  ExecuteGuarded();
}

Uint32 TTimedTaskHandler::GetTimeRemainigToExecute() const {
  const Uint32 last = LastExecuted;
  const Uint32 passed = SDL_GetTicks() - last;
  // The interval has to be exceeded, not just met.
  return last == 0 || passed > Interval ? 0 : Interval - passed + 1;
}

void TTimedTaskHandler::ExecuteGuarded() {
  try {
    execute(UserData);
  } catch (...) {
    logman::WriteLog(0, 0, "ExecuteConditional unhandled exception...%s", mTaskName.c_str());
  }
  ++ExecutionCounter;
}

bool TTimedTaskHandler::ExecuteConditional() {
  if (Enabled == 0) return false;
  if (TaskType == EXECUTE_COUNT_NO_FREE && ExecutionCounter >= ExecutionsLimit) return false;
  const bool realTime = RealTime;
  const Uint32 before = LastExecuted;
  Uint32 last = before;
  const bool due = MyUtils::IsTime(last, Interval, !realTime);
  if (due && realTime) last = last == 0 ? SDL_GetTicks() : last + Interval;
  if (last != before) {
    // Enable() on another thread has the last word about the period.
    Uint32 expected = before;
    LastExecuted.compare_exchange_strong(expected, last);
  }
  if (!due) return false;
  ExecuteGuarded();
  if (TaskType == EXECUTE_ONCE) return true;
  return TaskType == EXECUTE_COUNT && ExecutionCounter >= ExecutionsLimit;
}

TtthLambda::TtthLambda(std::function<void()> Lambda, Uint32 Interval, TTaskType taskType, std::string TaskName)
  : TTimedTaskHandler(nullptr, Interval, taskType, std::move(TaskName)), mLambda(std::move(Lambda)) {}

void TtthLambda::execute(void* /*UserData*/) {
  if (Enabled != 0) mLambda();
}

// Holds the worker back until start() is done with the object, which a self-freeing worker may delete at once.
struct TAsyncTimedTaskHandler::TStartGate {
  TAsyncTimedTaskHandler* const Handler;
  const bool AutoFree;
  SDL_semaphore* const Open = SDL_CreateSemaphore(0);
  std::unique_ptr<TAsyncJob> Job;

  TStartGate(TAsyncTimedTaskHandler* pHandler, bool AutoFree) : Handler(pHandler), AutoFree(AutoFree) {
    if (AutoFree) Job = std::make_unique<TAsyncJob>();
  }
  ~TStartGate() { SDL_DestroySemaphore(Open); }
};

TAsyncTimedTaskHandler::TAsyncTimedTaskHandler(const std::function<void()>& lambda, Uint32 Interval,
                                               TTaskType taskType, std::string TaskName, bool autoStart,
                                               bool autoFree)
  : TtthLambda(lambda, Interval, taskType, std::move(TaskName)),
    mDeleteSemaphore(autoFree ? nullptr : SDL_CreateSemaphore(0)),
    mCompletedSemaphore(SDL_CreateSemaphore(0)) {
  if (autoStart) start();
}

TAsyncTimedTaskHandler::~TAsyncTimedTaskHandler() {
  free();
  SDL_DestroySemaphore(mCompletedSemaphore);
  if (mDeleteSemaphore != nullptr) SDL_DestroySemaphore(mDeleteSemaphore);
}

void TAsyncTimedTaskHandler::execute(void* Data) {
  TtthLambda::execute(Data);
  SDL_SemPost(mCompletedSemaphore);
}

void TAsyncTimedTaskHandler::start() {
  if (pWorkerThread != nullptr) return;
  const bool autoFree = mDeleteSemaphore == nullptr;
  // A stop that its worker did not wait for any more is not meant for the next one.
  while (!autoFree && SDL_SemTryWait(mDeleteSemaphore) == 0) {
  }
  auto gate = std::make_shared<TStartGate>(this, autoFree);
  auto* forThread = new std::shared_ptr<TStartGate>(gate);
  SDL_Thread* thread = SDL_CreateThread(execThread, ("async_" + mTaskName).c_str(), forThread);
  if (thread == nullptr) {
    delete forThread;
    logman::WriteLog(4, 0, "No thread for task %s: %s", mTaskName.c_str(), SDL_GetError());
    return;
  }
  if (autoFree)
    SDL_DetachThread(thread);
  else
    pWorkerThread = thread;
  SDL_SemPost(gate->Open);
}

void TAsyncTimedTaskHandler::free() {
  if (mDeleteSemaphore == nullptr) return;
  SDL_SemPost(mDeleteSemaphore);
  SDL_Thread* thread = pWorkerThread;
  if (thread == nullptr || SDL_GetThreadID(thread) == SDL_ThreadID()) return;
  if (pWorkerThread.compare_exchange_strong(thread, nullptr)) SDL_WaitThread(thread, nullptr);
}

Uint32 TAsyncTimedTaskHandler::completedCount() const { return SDL_SemValue(mCompletedSemaphore); }

int TAsyncTimedTaskHandler::execThread(void* tth) {
  auto* forThread = static_cast<std::shared_ptr<TStartGate>*>(tth);
  const std::shared_ptr<TStartGate> gate = std::move(*forThread);
  delete forThread;
  SDL_SemWait(gate->Open);
  gate->Handler->WorkerLoop();
  if (gate->AutoFree) delete gate->Handler;
  return 0;
}

void TAsyncTimedTaskHandler::WorkerLoop() {
  const unsigned long count = 0;  // never increased, so a limit above 0 does not end the loop; only free() does
  while (true) {
    try {
      execute(nullptr);
    } catch (...) {
      logman::WriteLog(0, 0, "Async task unhandled exception...%s", mTaskName.c_str());
    }
    if (TaskType == EXECUTE_ONCE) return;
    if ((TaskType == EXECUTE_COUNT || TaskType == EXECUTE_COUNT_NO_FREE) && count >= GetExecutionLimit()) return;
    if (mDeleteSemaphore == nullptr)
      SDL_Delay(Interval);
    else if (SDL_SemWaitTimeout(mDeleteSemaphore, Interval) == 0)
      return;
  }
}

}  // namespace vendelo_sdl2
