#include <SDL.h>

#include <memory>
#include <set>
#include <utility>

#include "vendelo-sdl2/TActionMan.h"
#include "vendelo-sdl2/TAsyncJobs.h"
#include "vendelo-sdl2/TLogManager.h"

namespace vendelo_sdl2 {

namespace {

// What an "asyncAction" thread needs. It shares the handler, so that deleting the wrapper, which a once-handler
// does right after the start of the thread, leaves the run alone.
struct AsyncAHData {
  TAsyncJob Job;  // first, so that it ends after the handler
  std::shared_ptr<TActionHandler> Handler;
  void* const hActionData;
  const std::string Name;
};

int execAH(void* data) {
  if (data == nullptr) return 0;
  auto* async = static_cast<AsyncAHData*>(data);
  // No guard here: an exception of an asynchronous handler ends the process, as for any thread's function.
  async->Handler->execute(async->Name, async->hActionData);
  delete async;
  return 0;
}

// Runs the wrapped handler on a detached thread of its own each time.
class TAsyncActionHandler : public TActionHandler {
 public:
  TAsyncActionHandler(TActionHandler* pHandler, void* UserData)
    : TActionHandler(UserData, pHandler->GetType()), pHandler(pHandler) {
    Enabled = pHandler->IsEnabled();
  }

  void execute(std::string ActionName, void* hActionData) override {
    auto* data = new AsyncAHData{{}, pHandler, hActionData, ActionName};
    SDL_Thread* thread = SDL_CreateThread(execAH, "asyncAction", data);
    if (thread == nullptr) {
      delete data;
      logman::WriteLog(4, 0, "ActionMan: no thread for action %s: %s", ActionName.c_str(), SDL_GetError());
      return;
    }
    SDL_DetachThread(thread);
  }

 private:
  std::shared_ptr<TActionHandler> pHandler;
};

bool IsHandlerType(ActionHandleType Type) { return Type >= ACTION_NORMAL && Type <= ACTION_ASYNC; }

}  // namespace

TActionHandler::TActionHandler(void* UserData, TAHType HType) : UserData(UserData), HType(HType) {}

TActionHandler::~TActionHandler() = default;

void* TActionHandler::GetRelatedObject() { return UserData; }

void TActionHandler::EndRun() {
  if (mRuns.End()) delete this;
}

void TActionHandler::Discard(TActionHandler* pHandler) {
  if (pHandler != nullptr && pHandler->mRuns.AskDelete()) delete pHandler;
}

TahLambda::TahLambda(std::function<void(std::string, void*)> Lambda, TAHType HType)
  : TActionHandler(nullptr, HType), mLambda(std::move(Lambda)) {}

void TahLambda::execute(std::string ActionName, void* hActionData) {
  // Enabled is not asked on purpose; see the class.
  if (mLambda) mLambda(std::move(ActionName), hActionData);
}

TAction::TPin::TPin(TAction& Pinned) : Action(Pinned) { Action.mPins.Begin(); }

TAction::TPin::~TPin() {
  if (Action.mPins.End()) delete &Action;
}

// One Execute() under way: the node that it stands on, which Erase moves on when that node goes.
struct TAction::TWalk {
  const TPin Pin;  // first, so that it is let go last
  TAction& Action;
  const ActionHandleType Type;
  THandlerList::iterator Current;
  bool CurrentGone = false;
  TActionHandler* Running = nullptr;

  TWalk(TAction& Walked, ActionHandleType ExecType)
    : Pin(Walked), Action(Walked), Type(ExecType), Current(Walked.Handlers[ExecType].begin()) {
    Action.mWalks.push_back(this);
  }

  // Called without the action's mutex, also for an exception; the action may be gone afterwards.
  ~TWalk() {
    if (Running != nullptr) Running->EndRun();
    std::lock_guard<std::recursive_mutex> lock(Action.mMutex);
    std::erase(Action.mWalks, this);
  }
};

TAction::TAction(std::string Name) : Name(std::move(Name)) {}

TAction::~TAction() {
  std::set<TActionHandler*> all;
  for (auto& list : Handlers) all.insert(list.begin(), list.end());
  for (auto* handler : all) TActionHandler::Discard(handler);
}

void TAction::Discard(TAction* pAction) {
  if (pAction == nullptr) return;
  // Before the question: afterwards the end of the last use may have deleted it.
  pAction->Enabled = 0;
  if (pAction->mPins.AskDelete()) delete pAction;
}

TAction::THandlerList::iterator TAction::Erase(ActionHandleType Type, THandlerList::iterator Node) {
  const auto next = std::next(Node);
  for (auto* walk : mWalks) {
    if (walk->Type == Type && walk->Current == Node) {
      walk->Current = next;
      walk->CurrentGone = true;
    }
  }
  return Handlers[Type].erase(Node);
}

void TAction::RegisterActionHandler(TActionHandler* pHandler, ActionHandleType HandleType) {
  if (pHandler == nullptr) return;
  if (!IsHandlerType(HandleType)) {
    logman::WriteLog(
      4, 0, "Tried to use handle type ANY for action %s will effectively trigger it 3 times and is not allowed!",
      Name.c_str());
    return;
  }
  if (HandleType == ACTION_ASYNC) pHandler = new TAsyncActionHandler(pHandler, pHandler->UserData);
  std::lock_guard<std::recursive_mutex> lock(mMutex);
  Handlers[HandleType].push_back(pHandler);
}

int TAction::UnregisterActionHandler(TActionHandler* pHandler, bool DeleteInstance, ActionHandleType Filter) {
  {
    std::lock_guard<std::recursive_mutex> lock(mMutex);
    for (int type = ACTION_NORMAL; type <= ACTION_ASYNC; ++type) {
      if (Filter != ACTION_ANY && Filter != type) continue;
      const auto handleType = static_cast<ActionHandleType>(type);
      for (auto it = Handlers[type].begin(); it != Handlers[type].end();)
        it = *it == pHandler ? Erase(handleType, it) : std::next(it);
    }
  }
  if (DeleteInstance) TActionHandler::Discard(pHandler);
  return 0;
}

int TAction::TakeByRelatedObject(const void* pRelatedObject, std::set<TActionHandler*>& Gone) {
  int removed = 0;
  std::lock_guard<std::recursive_mutex> lock(mMutex);
  for (int type = ACTION_NORMAL; type <= ACTION_ASYNC; ++type) {
    for (auto it = Handlers[type].begin(); it != Handlers[type].end();) {
      if ((*it)->GetRelatedObject() != pRelatedObject) {
        ++it;
        continue;
      }
      Gone.insert(*it);
      ++removed;
      it = Erase(static_cast<ActionHandleType>(type), it);
    }
  }
  return removed;
}

int TAction::UnregisterActionHandlersByRelatedObject(void* pRelatedObject, bool DeleteInstance) {
  std::set<TActionHandler*> gone;
  const int removed = TakeByRelatedObject(pRelatedObject, gone);
  if (DeleteInstance)
    for (auto* handler : gone) TActionHandler::Discard(handler);
  return removed;
}

void TAction::Execute(void* hActionData, ActionHandleType ExecType) {
  if (!IsHandlerType(ExecType)) {
    logman::WriteLog(4, 0,
                     "Tried to execute action %s as ANY, which is not allowed! Execution type must be specified.",
                     Name.c_str());
    return;
  }
  std::unique_lock<std::recursive_mutex> lock(mMutex);
  if (Handlers[ExecType].empty() || Enabled == 0) return;
  TWalk walk(*this, ExecType);
  while (!mPins.IsDeleteAsked() && walk.Current != Handlers[ExecType].end()) {
    walk.CurrentGone = false;
    walk.Running = *walk.Current;
    walk.Running->mRuns.Begin();
    lock.unlock();
    walk.Running->execute(Name, hActionData);
    lock.lock();
    TActionHandler* const handler = std::exchange(walk.Running, nullptr);
    const bool once = !walk.CurrentGone && handler->GetType() == TActionHandler::ahtExecuteOnce;
    if (!walk.CurrentGone && !once) ++walk.Current;
    lock.unlock();
    if (once) UnregisterActionHandler(handler, true, ACTION_ANY);
    handler->EndRun();
    lock.lock();
  }
  lock.unlock();
}

int TAction::GetHandlersCount(ActionHandleType OfType) const {
  std::lock_guard<std::recursive_mutex> lock(mMutex);
  size_t count = 0;
  for (int type = ACTION_NORMAL; type <= ACTION_ASYNC; ++type)
    if (OfType == ACTION_ANY || OfType == type) count += Handlers[type].size();
  return static_cast<int>(count);
}

}  // namespace vendelo_sdl2
