#include "vendelo-sdl2/TTaskMan.h"

#include <algorithm>

namespace vendelo_sdl2 {

namespace {

constexpr size_t kSets = TASK_ANY;

bool IsSet(TimedTaskType Type) { return Type >= TASK_NORMAL && Type < TASK_ANY; }

}  // namespace

// Holds the lock of one set for a scope. The thread may be inside a task of that set (nothing is locked again,
// since the owner record is not a count) or of another one (whose lock is let go of meanwhile).
class TTaskMan::TSetAccess {
 public:
  TSetAccess(const TTaskMan& Manager, size_t Index) : Set(Manager.TaskList[Index]) {
    for (size_t other = 0; other < kSets; ++other)
      if (other != Index && Manager.TaskList[other].IsLocked()) mLetGo.emplace(Manager.TaskList[other]);
    mLocked = Set.LockChecked();
  }
  ~TSetAccess() {
    if (mLocked) Set.Unlock();
  }
  TSetAccess(const TSetAccess&) = delete;
  TSetAccess& operator=(const TSetAccess&) = delete;

 private:
  std::optional<InverseScopedLock> mLetGo;  // taken back after the own lock is free
  const ILockable& Set;
  bool mLocked = false;
};

// One ProcessTasks() of a set under way.
struct TTaskMan::TWalk {
  TTimedTaskHandler* Running = nullptr;
  bool Removed = false;  // the running task left the set during its run
  bool Doomed = false;   // and is to be deleted after it
};

TTaskMan::TTaskMan() = default;

TTaskMan::~TTaskMan() {
  for (size_t index = 0; index < kSets; ++index) {
    ScopedLock lock(TaskList[index]);
    TTaskSet tasks;
    tasks.swap(&TaskList[index]);
    for (auto* task : tasks) delete task;
  }
}

TTimedTaskHandler* TTaskMan::AddTimedTask(TTimedTaskHandler* pTimedTask, TimedTaskType type) {
  if (pTimedTask == nullptr || !IsSet(type)) return nullptr;
  TSetAccess access(*this, type);
  // A task that comes back during the run in which it was removed lives on.
  for (auto* walk : mWalks[type])
    if (walk->Running == pTimedTask) walk->Doomed = false;
  if (TTaskSet::node_type& spare = mSpareNodes[type]; spare.empty()) {
    TaskList[type]->insert(pTimedTask);
  } else {
    spare.value() = pTimedTask;
    spare = TaskList[type]->insert(std::move(spare)).node;
  }
  return pTimedTask;
}

bool TTaskMan::RemoveFrom(size_t Index, TTimedTaskHandler* pTimedTask, bool DeleteInstance) {
  TTaskSet::node_type node = TaskList[Index]->extract(pTimedTask);
  if (node.empty()) return false;
  mSpareNodes[Index] = std::move(node);
  bool running = false;
  for (auto* walk : mWalks[Index]) {
    if (walk->Running != pTimedTask) continue;
    walk->Removed = true;
    // The first walk is the outermost one: its run of the task ends last.
    if (!running) walk->Doomed = DeleteInstance;
    running = true;
  }
  if (DeleteInstance && !running) delete pTimedTask;
  return true;
}

void TTaskMan::RemoveTimedTask(TTimedTaskHandler* pTimedTask, bool DeleteInstance) {
  if (pTimedTask == nullptr) return;
  for (size_t index = 0; index < kSets; ++index) {
    TSetAccess access(*this, index);
    if (RemoveFrom(index, pTimedTask, DeleteInstance)) return;
  }
}

TTimedTaskHandler* TTaskMan::GetTimedTask(void* RelatedObject) {
  for (size_t index = 0; index < kSets; ++index) {
    TSetAccess access(*this, index);
    for (auto* task : &TaskList[index])
      if (task->GetRelatedObject() == RelatedObject) return task;
  }
  return nullptr;
}

void TTaskMan::RemoveTimedTasksOf(void* RelatedObject) {
  while (TTimedTaskHandler* task = GetTimedTask(RelatedObject)) RemoveTimedTask(task, true);
}

bool TTaskMan::IsTimedTaskValid(TTimedTaskHandler* pTimedTask, TimedTaskType type) const {
  return _IsTimedTaskValid(pTimedTask, type) != TASK_ANY;
}

TimedTaskType TTaskMan::_IsTimedTaskValid(TTimedTaskHandler* pTimedTask, TimedTaskType type) const {
  if (pTimedTask == nullptr) return TASK_ANY;
  if (IsSet(type)) {
    TSetAccess access(*this, type);
    return TaskList[type]->contains(pTimedTask) ? type : TASK_ANY;
  }
  for (size_t index = 0; index < kSets; ++index) {
    const auto found = _IsTimedTaskValid(pTimedTask, static_cast<TimedTaskType>(index));
    if (found != TASK_ANY) return found;
  }
  return TASK_ANY;
}

void TTaskMan::ProcessTasks(TimedTaskType type) {
  if (!IsSet(type)) {
    for (size_t index = 0; index < kSets; ++index) ProcessTasks(static_cast<TimedTaskType>(index));
    return;
  }
  TSetAccess access(*this, type);
  TWalk walk;
  auto& walks = mWalks[type];
  walks.push_back(&walk);
  // A run may change the set, so no iterator is kept over it: the walk goes on behind the address of the task.
  auto& set = &TaskList[type];
  for (auto it = set.begin(); it != set.end(); it = set.upper_bound(walk.Running)) {
    walk = TWalk{*it, false, false};
    bool finished = false;
    try {
      finished = walk.Running->ExecuteConditional();
    } catch (...) {
      finished = false;
    }
    FinishRun(type, walk, finished);
  }
  std::erase(walks, &walk);
}

void TTaskMan::FinishRun(size_t Index, TWalk& Walk, bool Finished) {
  TTimedTaskHandler* const task = Walk.Running;
  // Its own verdict counts only for the registration that ran, not for one made during the run.
  const bool release = Walk.Removed ? Walk.Doomed : Finished;
  if (!release) return;
  if (Walk.Removed) {
    delete task;
    return;
  }
  Walk.Running = nullptr;
  RemoveFrom(Index, task, true);
  Walk.Running = task;
}

}  // namespace vendelo_sdl2
