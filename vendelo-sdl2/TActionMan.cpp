#include "vendelo-sdl2/TActionMan.h"

#include <algorithm>
#include <memory>
#include <optional>

#include "common/Algorithms.h"
#include "vendelo-sdl2/TLogManager.h"
#include "vendelo-sdl2/TMutexGuard.h"

namespace vendelo_sdl2 {

namespace {

// So many characters of a generated name choose where the walk over the sorted names starts: behind every name
// that is not longer, so names of this length or less never match, and stay so.
constexpr size_t kCutDownLength = 3;

bool NameOrdersBefore(const std::string& Name, const TAction* pAction) {
  return Name.compare(pAction->GetName()) < 0;
}

}  // namespace

TActionMan::TActionMan() {
  for (auto& mutex : ToRunMutex) mutex = SDL_CreateMutex();
  ActionQueueMutex = SDL_CreateMutex();
  ActionListMutex = SDL_CreateMutex();
  AddActionListener(
    "SACalculateWinsCreate",
    new TahMemberLarge<TActionMan>(this, &TActionMan::DemoAction1, nullptr, TActionHandler::ahtExecuteEndless),
    ACTION_NORMAL);
}

TActionMan::~TActionMan() {
  {
    TMutexGuard lock(ActionListMutex);
    for (auto* action : ActionList) delete action;
    ActionList.clear();
  }
  for (; !GeneratedActionQueue.empty(); GeneratedActionQueue.pop()) delete GeneratedActionQueue.front();
  SDL_DestroyMutex(ActionQueueMutex);
  SDL_DestroyMutex(ActionListMutex);
  for (auto* mutex : ToRunMutex) SDL_DestroyMutex(mutex);
}

void TActionMan::DemoAction1(std::string /*ActionName*/, void* hActionData, void* /*hUserData*/) {
  GenerateAction("OnActionHandlerExecute", hActionData, ACTION_ANY);
}

void TActionMan::GenerateAction(std::string ActionName, void* hActionData, ActionHandleType Filter) {
  auto action = std::make_unique<TGeneratedAction>(TGeneratedAction{std::move(ActionName), hActionData, Filter});
  TMutexGuard lock(ActionQueueMutex);
  GeneratedActionQueue.push(action.get());
  static_cast<void>(action.release());
}

void TActionMan::GenerateAction_immediate(std::string ActionName, void* hActionData, ActionHandleType Filter) {
  ActionGenerated(ActionName, hActionData, Filter, true);
}

std::list<TAction*>::iterator TActionMan::FindAction(const std::string& ActionName) {
  return ::binary_search(ActionList, ActionName, [](const std::string& name, TAction* const& action) {
    return action->GetName().compare(name);
  });
}

TAction* TActionMan::GetAction(std::string ActionName) {
  if (ActionName.empty()) return nullptr;
  TMutexGuard lock(ActionListMutex);
  const auto found = FindAction(ActionName);
  return found == ActionList.end() ? nullptr : *found;
}

TAction* TActionMan::AddActionListener(std::string ActionName, TActionHandler* pActionHandler,
                                       ActionHandleType type) {
  TAction* action = nullptr;
  std::optional<TAction::TPin> pin;
  {
    TMutexGuard lock(ActionListMutex);
    action = GetAction(ActionName);
    if (action == nullptr) {
      action = new TAction(ActionName);
      ::insert_sorted(ActionList, action, [](TAction* const& left, TAction* const& right) {
        return left->GetName().compare(right->GetName()) < 0;
      });
    }
    pin.emplace(*action);
  }
  action->RegisterActionHandler(pActionHandler, type);
  return action;
}

void TActionMan::ProcessActions() {
  bool empty;
  {
    TMutexGuard lock(ActionQueueMutex);
    empty = GeneratedActionQueue.empty();
  }
  while (!empty) {
    std::unique_ptr<TGeneratedAction> generated;
    {
      TMutexGuard lock(ActionQueueMutex);
      generated.reset(GeneratedActionQueue.front());
      GeneratedActionQueue.pop();
      empty = GeneratedActionQueue.empty();
    }
    ActionGenerated(generated->ActionName, generated->hActionData, generated->Restriction, false);
  }
}

int TActionMan::ActionGenerated(const std::string& ActionName, void* hActionData, ActionHandleType Filter,
                                bool executeImmediately) {
  TMutexGuard lock(ActionListMutex);
  int numMatched = 0;
  const std::string cutDownActionName = ActionName.substr(0, kCutDownLength);
  size_t minimumMatch = kCutDownLength;
  bool matched = false;
  auto it = std::upper_bound(ActionList.begin(), ActionList.end(), cutDownActionName, NameOrdersBefore);
  while (it != ActionList.end()) {
    TAction* const action = *it;
    const size_t nameLen = action->GetName().length();
    if (ActionName.compare(0, nameLen, action->GetName()) != 0) {
      if (ActionName.compare(0, minimumMatch, action->GetName(), 0, minimumMatch) != 0) break;
      ++it;
      continue;
    }
    const std::string name = action->GetName();  // a handler that runs at once may delete the action
    if (!matched) minimumMatch = nameLen;
    matched = true;
    for (int type = ACTION_NORMAL; type <= ACTION_ASYNC; ++type) {
      const auto handleType = static_cast<ActionHandleType>(type);
      if (executeImmediately && GetAction(name) != action) break;
      if ((Filter != handleType && Filter != ACTION_ANY) || action->GetHandlersCount(handleType) == 0) continue;
      ++numMatched;
      if (executeImmediately) {
        try {
          action->Execute(hActionData, handleType);
        } catch (...) {
          logman::WriteLog(4, 0, "ActionMan: handler %s->Execute() threw exception [triggered by action %s]",
                           ActionName.c_str(), ActionName.c_str());
        }
      } else {
        TMutexGuard runLock(ToRunMutex[type]);
        ToRunActionQueue[type].push({action, hActionData});
      }
    }
    // Handlers that ran at once may have changed the list, so the walk goes on by name.
    it = !executeImmediately ? std::next(it)
                             : std::upper_bound(ActionList.begin(), ActionList.end(), name, NameOrdersBefore);
  }
  return numMatched;
}

void TActionMan::ExecuteActions(ActionHandleType ExecType) {
  if (ExecType < ACTION_NORMAL || ExecType > ACTION_ASYNC) {
    logman::WriteLog(4, 0,
                     "Tried to execute actions as ANY, which is not allowed! Execution type must be specified.");
    return;
  }
  TMutexGuard lock(ToRunMutex[ExecType]);
  if (Executing[ExecType]) {
    // Within a handler of this type: the entry at the front is the running one, it must not run again.
    logman::WriteLog(4, 0, "ActionMan: nested execution of type %d is ignored", static_cast<int>(ExecType));
    return;
  }
  Executing[ExecType] = true;
  auto& queue = ToRunActionQueue[ExecType];
  while (!queue.empty()) {
    const TGeneratedSkippedAction entry = queue.front();
    if (entry.Action != nullptr) {
      const std::string name = entry.Action->GetName();
      try {
        entry.Action->Execute(entry.hActionData, ExecType);
      } catch (...) {
        logman::WriteLog(4, 0, "ActionMan: handler Execute() threw exception [triggered by action %s and type %d]",
                         name.c_str(), static_cast<int>(ExecType));
      }
    }
    queue.pop();
  }
  Executing[ExecType] = false;
}

void TActionMan::ForgetQueuedRuns(const TAction* pAction) {
  for (int type = ACTION_NORMAL; type <= ACTION_ASYNC; ++type) {
    TMutexGuard lock(ToRunMutex[type]);
    auto& queue = ToRunActionQueue[type];
    // Entries keep their places, since the one at the front may be running.
    for (size_t left = queue.size(); left > 0; --left) {
      TGeneratedSkippedAction entry = queue.front();
      queue.pop();
      if (entry.Action == pAction) entry.Action = nullptr;
      queue.push(entry);
    }
  }
}

void TActionMan::UnregisterAction(TAction* pAction, bool DeleteInstance) {
  if (pAction == nullptr) return;
  {
    // By the pointer: another action of this name stays, and one without a name is not found by it.
    TMutexGuard lock(ActionListMutex);
    ActionList.remove(pAction);
  }
  ForgetQueuedRuns(pAction);
  if (DeleteInstance) TAction::Discard(pAction);
}

int TActionMan::UnregisterAction(std::string ActionName, bool DeleteInstance) {
  if (ActionName.empty()) return -1;
  TAction* action = nullptr;
  {
    TMutexGuard lock(ActionListMutex);
    const auto found = FindAction(ActionName);
    if (found == ActionList.end()) return -1;
    action = *found;
    ActionList.erase(found);
  }
  ForgetQueuedRuns(action);
  if (DeleteInstance) TAction::Discard(action);
  return 0;
}

int TActionMan::UnregisterAllActionHandlers(TActionHandler* pHandler, bool DeleteInstance) {
  {
    TMutexGuard lock(ActionListMutex);
    for (auto* action : ActionList) action->UnregisterActionHandler(pHandler, false, ACTION_ANY);
  }
  if (DeleteInstance) TActionHandler::Discard(pHandler);
  return 0;
}

int TActionMan::UnregisterAllActionHandlersByRelatedObject(void* pRelatedObject, bool DeleteInstance) {
  std::set<TActionHandler*> gone;
  {
    TMutexGuard lock(ActionListMutex);
    for (auto* action : ActionList) action->TakeByRelatedObject(pRelatedObject, gone);
  }
  // Only now: one that stands on several actions was asked for its object on each of them.
  if (DeleteInstance)
    for (auto* handler : gone) TActionHandler::Discard(handler);
  return 0;
}

}  // namespace vendelo_sdl2
