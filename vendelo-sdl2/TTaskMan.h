#pragma once

#include <SDL.h>

#include <array>
#include <atomic>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "common/ThreadSafeProperty.h"

namespace vendelo_sdl2 {

// The set that a task stands in, which fixes its thread for good.
enum TimedTaskType {
  TASK_NORMAL,       // main thread, with the draw mutex held; skipped in a pass that could not take it
  TASK_DRAW,         // draw thread, only while the application runs
  TASK_THREAD_SAFE,  // main thread, at the end of every pass
  TASK_ANY           // a filter, and the answer for a task in no set
};

// A callback that is due after, or every, so many milliseconds of SDL_GetTicks(). It is polled: no timer thread
// exists, and it runs in the first poll after its time. The settings may be changed from any thread.
class TTimedTaskHandler {
 public:
  // What happens after a run.
  enum TTaskType {
    EXECUTE_ONCE,          // the manager deletes the task after its first run
    EXECUTE_COUNT,         // the manager deletes it when the number of runs has reached the limit
    ENDLESS,               // it stays until it is removed
    EXECUTE_COUNT_NO_FREE  // it stops at the limit and stays in its set
  };

  // The first run comes one `Interval` after now.
  TTimedTaskHandler(void* UserData, Uint32 Interval, TTaskType taskType, std::string TaskName);
  TTimedTaskHandler(const TTimedTaskHandler&) = delete;
  TTimedTaskHandler& operator=(const TTimedTaskHandler&) = delete;

  virtual ~TTimedTaskHandler();
  virtual void execute(void* UserData) = 0;
  // The object that the task works for, by which it can be found.
  virtual void* GetRelatedObject();

  bool IsEnabled() const { return Enabled != 0; }
  void Disable() { Enabled = 0; }
  // The next run comes a full interval from now, however long the task was off.
  void Enable();
  // Enables the task and runs it on the calling thread; the run counts and restarts the interval.
  void EnableAndExecuteImmediate();
  // Milliseconds until the task is due, 0 when it is.
  Uint32 GetTimeRemainigToExecute() const;
  TTaskType GetType() const { return static_cast<TTaskType>(TaskType); }
  Uint32 GetInterval() const { return Interval; }
  void SetInterval(Uint32 NewInterval) { Interval = NewInterval; }
  unsigned long GetExecutionLimit() const { return ExecutionsLimit; }
  void SetExecutionsLimit(unsigned long Limit) { ExecutionsLimit = Limit; }
  void* GetUserData() const { return UserData; }
  void SetUserData(void* NewUserData) { UserData = NewUserData; }
  const std::string& GetName() const { return mTaskName; }
  // A real-time task keeps its grid: a late run does not move later ones, and it catches up one run per poll.
  void SetRealTime(bool NewRealTime) { RealTime = NewRealTime; }

  // Runs the task if it is due; true tells the manager to delete it. Exceptions of the task are logged.
  bool ExecuteConditional();

 protected:
  void ExecuteGuarded();

  std::atomic<unsigned long> ExecutionCounter{0};
  const std::string mTaskName;
  std::atomic<Uint32> LastExecuted;
  std::atomic<Uint32> Interval;
  std::atomic<unsigned long> ExecutionsLimit{0};
  const int TaskType;
  std::atomic<int> Enabled{1};
  std::atomic<void*> UserData;
  std::atomic<bool> RealTime{false};
};

// Calls a member function without arguments; its result is dropped. `pClass` must outlive the task; null does
// nothing.
template <class T, class R>
class TtthMember : public TTimedTaskHandler {
 public:
  using TpfMember = R (T::*)();
  TtthMember(T* pClass, TpfMember pfMember, Uint32 Interval, TTaskType taskType, std::string TaskName)
    : TTimedTaskHandler(nullptr, Interval, taskType, TaskName), pClass(pClass), pfMember(pfMember) {}

  void execute(void* /*UserData*/) override {
    if (pClass != nullptr && Enabled != 0) (pClass->*pfMember)();
  }
  void* GetRelatedObject() override { return pClass; }

 protected:
  T* pClass;
  TpfMember pfMember;
};

// Calls a function object. An empty one throws, which a run logs like any exception.
class TtthLambda : public TTimedTaskHandler {
 public:
  TtthLambda(std::function<void()> Lambda, Uint32 Interval, TTaskType taskType, std::string TaskName);
  void execute(void* UserData) override;

 protected:
  const std::function<void()> mLambda;
};

// A task that runs on a worker thread of its own, at once and then every `Interval` milliseconds; it is never
// given to a TTaskMan.
//
// With `autoFree` it belongs to its worker, which deletes it at the end: nobody may touch it after the start.
// Without, the owner calls free() and deletes it; the destructor calls free() as well.
class TAsyncTimedTaskHandler : public TtthLambda {
 public:
  TAsyncTimedTaskHandler(const std::function<void()>& lambda, Uint32 Interval, TTaskType taskType,
                         std::string TaskName, bool autoStart, bool autoFree);
  ~TAsyncTimedTaskHandler() override;

  void execute(void* UserData) override;
  // Makes the worker thread; nothing from a start to the next free(). The last act that touches the object.
  void start();
  // Stops the worker and waits for it, unless called on the worker itself. Nothing with `autoFree`.
  void free();
  // Finished runs.
  Uint32 completedCount() const;

 private:
  struct TStartGate;
  static int execThread(void* tth);
  void WorkerLoop();

  SDL_semaphore* mDeleteSemaphore;  // null with autoFree
  SDL_semaphore* mCompletedSemaphore;
  std::atomic<SDL_Thread*> pWorkerThread{nullptr};
};

// The scheduler: three sets of tasks, each polled on its own thread. Owns the tasks in its sets.
//
// Everything but ProcessTasks may be called from any thread, also from inside a task, which may remove itself or
// others and add to any set. A set's lock is held while its tasks run; no thread ever holds the locks of two sets:
// inside a task, work on another set lets go of the walked one meanwhile. Within a set the order of the runs is
// that of the addresses.
class TTaskMan {
 public:
  TTaskMan();
  // Deletes every task.
  ~TTaskMan();
  TTaskMan(const TTaskMan&) = delete;
  TTaskMan& operator=(const TTaskMan&) = delete;

  // Returns the task; null for a null task or TASK_ANY, and then the task stays the caller's.
  TTimedTaskHandler* AddTimedTask(TTimedTaskHandler* pTimedTask, TimedTaskType type);
  // Takes the task from the set that holds it and, with `DeleteInstance`, deletes it; the delete of a task that is
  // running waits for the end of its run. A task in no set is left alone.
  void RemoveTimedTask(TTimedTaskHandler* pTimedTask, bool DeleteInstance);
  // The first task, in the order of the types, with this related object; null when there is none.
  TTimedTaskHandler* GetTimedTask(void* RelatedObject);
  // Takes every task with this related object out and deletes it, as an object does at its end.
  void RemoveTimedTasksOf(void* RelatedObject);
  // Whether the set of `type` (any set for TASK_ANY) holds the task. The pointer is only compared.
  bool IsTimedTaskValid(TTimedTaskHandler* pTimedTask, TimedTaskType type) const;
  // The type whose set holds the task, TASK_ANY when none of those asked for does.
  TimedTaskType _IsTimedTaskValid(TTimedTaskHandler* pTimedTask, TimedTaskType type) const;
  // Runs the tasks of one set that are due, or of all three in order. Called on that set's thread.
  void ProcessTasks(TimedTaskType type);

 private:
  class TSetAccess;
  struct TWalk;
  using TTaskSet = std::set<TTimedTaskHandler*>;

  bool RemoveFrom(size_t Index, TTimedTaskHandler* pTimedTask, bool DeleteInstance);
  void FinishRun(size_t Index, TWalk& Walk, bool Finished);

  std::array<ThreadSafeProperty<TTaskSet>, 3> TaskList;
  std::array<std::vector<TWalk*>, 3> mWalks;  // each under the lock of its set
  // The node that left each set last, under its lock: a task that comes and goes at each frame takes no memory.
  std::array<TTaskSet::node_type, 3> mSpareNodes;
};

}  // namespace vendelo_sdl2
