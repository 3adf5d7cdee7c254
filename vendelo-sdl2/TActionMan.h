#pragma once

#include <SDL.h>

#include <array>
#include <atomic>
#include <functional>
#include <list>
#include <mutex>
#include <queue>
#include <set>
#include <string>
#include <vector>

#include "vendelo-sdl2/TKeepAlive.h"
#include "vendelo-sdl2/TMutexGuard.h"

namespace vendelo_sdl2 {

// Where a handler runs and, as a filter, which handlers are meant.
enum ActionHandleType {
  ACTION_NORMAL,       // main thread, with the draw mutex held; skipped in a pass that could not take it
  ACTION_DRAW,         // draw thread, only while the application runs
  ACTION_THREAD_SAFE,  // main thread, at the end of every pass, without the draw mutex
  ACTION_ASYNC,        // a thread of its own for each run of each handler
  ACTION_ANY           // a filter only
};

// What runs when an action of its name was generated.
//
// Runs on the thread of the type that it was registered for. Owned by its TAction from the registration on; a
// handler that is deleted while it runs is kept until the run has ended. It is expected to stand on one action.
class TActionHandler {
 public:
  enum TAHType { ahtExecuteOnce = 0, ahtExecuteEndless = 1 };

  TActionHandler(void* UserData, TAHType HType);
  TActionHandler(const TActionHandler&) = delete;
  TActionHandler& operator=(const TActionHandler&) = delete;

  virtual void execute(std::string ActionName, void* hActionData) = 0;
  // The object that the handler works for, by which it can be unregistered.
  virtual void* GetRelatedObject();
  virtual ~TActionHandler();

  bool IsEnabled() const { return Enabled; }
  void Disable() { Enabled = false; }
  void Enable() { Enabled = true; }
  TAHType GetType() const { return HType; }
  void SetType(TAHType NewType) { HType = NewType; }

 protected:
  void* UserData;
  std::atomic<bool> Enabled{true};
  std::atomic<TAHType> HType;

 private:
  friend class TAction;
  friend class TActionMan;
  // Deletes the handler now, or at the end of the last run that is under way.
  static void Discard(TActionHandler* pHandler);

  // The end of a run; deletes the handler when that was asked for meanwhile.
  void EndRun();

  TKeepAlive mRuns;
};

// Calls a member function without arguments; name and data are dropped, and its result too.
// `pClass` must outlive the handler; null does nothing.
template <class T, class R>
class TahMember : public TActionHandler {
 public:
  using TpfMember = R (T::*)();
  TahMember(T* pClass, TpfMember pfMember, TAHType HType)
    : TActionHandler(nullptr, HType), pClass(pClass), pfMember(pfMember) {}

  void execute(std::string /*ActionName*/, void* /*hActionData*/) override {
    if (pClass != nullptr && Enabled) (pClass->*pfMember)();
  }
  void* GetRelatedObject() override { return pClass; }

 protected:
  T* pClass;
  TpfMember pfMember;
};

// Calls a member function with the action's name, its data and the handler's own user data.
template <class T>
class TahMemberLarge : public TActionHandler {
 public:
  using TpfMember = void (T::*)(std::string ActionName, void* hActionData, void* hUserData);
  TahMemberLarge(T* pClass, TpfMember pfMember, void* UserData, TAHType HType)
    : TActionHandler(UserData, HType), pClass(pClass), pfMember(pfMember) {}

  void execute(std::string ActionName, void* hActionData) override {
    if (pClass != nullptr && Enabled) (pClass->*pfMember)(ActionName, hActionData, UserData);
  }
  void* GetRelatedObject() override { return pClass; }

 protected:
  T* pClass;
  TpfMember pfMember;
};

// Calls a function object. Disable() does not stop it: it never looks at that flag, and its callers rely on it.
class TahLambda : public TActionHandler {
 public:
  TahLambda(std::function<void(std::string, void*)> Lambda, TAHType HType);
  void execute(std::string ActionName, void* hActionData) override;

 protected:
  std::function<void(std::string, void*)> mLambda;
};

// A name with its handlers, one list for each type; owns them.
//
// Any thread may call everything. The lists are under a mutex that is never held while a handler runs, so a
// handler may register and unregister handlers, itself included. Deleting an action that runs is the manager's
// business (UnregisterAction), which lets the run end first.
class TAction {
 public:
  explicit TAction(std::string Name);
  // Deletes all handlers.
  ~TAction();
  TAction(const TAction&) = delete;
  TAction& operator=(const TAction&) = delete;

  const std::string& GetName() const { return Name; }
  bool IsEnabled() const { return Enabled != 0; }
  void Enable() { Enabled = 1; }
  // While disabled, runs are dropped, not kept; once-handlers stay.
  void Disable() { Enabled = 0; }

  // Takes the handler to the back of its type's list. Null does nothing. ACTION_ANY is logged and refused, and the
  // handler stays the caller's.
  void RegisterActionHandler(TActionHandler* pHandler, ActionHandleType HandleType);
  // Removes every occurrence of the pointer from the list of `Filter`, or from all. With `DeleteInstance` deletes
  // a non-null handler once, found or not. A handler of ACTION_ASYNC is not found by its own pointer. Returns 0.
  int UnregisterActionHandler(TActionHandler* pHandler, bool DeleteInstance, ActionHandleType Filter);
  // Removes every handler whose related object is the pointer; returns how many.
  int UnregisterActionHandlersByRelatedObject(void* pRelatedObject, bool DeleteInstance);
  // Runs the handlers of one type in order of registration on the calling thread; those of type ahtExecuteOnce
  // are deleted after their run. An exception of a handler leaves the walk; that handler stays.
  void Execute(void* hActionData, ActionHandleType ExecType);
  // For ACTION_ANY the sum of the four lists.
  int GetHandlersCount(ActionHandleType OfType) const;

 private:
  friend class TActionMan;
  struct TPin;
  struct TWalk;
  using THandlerList = std::list<TActionHandler*>;

  // Deletes the action now, or at the end of the last use that is under way.
  static void Discard(TAction* pAction);
  // Takes every handler of this related object out of the lists and puts it into `Gone`; returns how many nodes.
  int TakeByRelatedObject(const void* pRelatedObject, std::set<TActionHandler*>& Gone);
  // Takes a node out, moving the walks that stand on it to the next one. Under mMutex.
  THandlerList::iterator Erase(ActionHandleType Type, THandlerList::iterator Node);

  const std::string Name;
  std::atomic<int> Enabled{1};
  std::array<THandlerList, 4> Handlers;  // under mMutex
  mutable std::recursive_mutex mMutex;
  std::vector<TWalk*> mWalks;  // Execute() calls under way; under mMutex
  TKeepAlive mPins;
};

// Keeps an action alive for a scope: a delete that comes meanwhile is done at the end of the last one.
struct TAction::TPin {
  explicit TPin(TAction& Pinned);
  ~TPin();
  TPin(const TPin&) = delete;
  TPin& operator=(const TPin&) = delete;

  TAction& Action;
};

// The bus of named signals: any thread generates an action by name, and the handlers registered under a prefix of
// that name run later, each on the thread of its type.
//
// GenerateAction is for any thread except inside a signal handler. Registered names of three characters or fewer
// never match. The data pointer is passed on untouched; its owner and lifetime are the generator's business.
// Order of the locks: ActionListMutex, then ToRunMutex. ExecuteActions holds ToRunMutex of its type while the
// handlers run, so a handler that registers or unregisters actions of a busy bus takes them the other way round:
// handlers defer such work instead.
class TActionMan {
 public:
  TActionMan();
  // Deletes all actions; what is still queued is dropped.
  ~TActionMan();
  TActionMan(const TActionMan&) = delete;
  TActionMan& operator=(const TActionMan&) = delete;

  // Queues the action for the next ProcessActions. A handler runs when `Filter` is its type or ACTION_ANY.
  void GenerateAction(std::string ActionName, void* hActionData, ActionHandleType Filter);
  // Matches and runs the handlers at once on the calling thread, with the list mutex held.
  void GenerateAction_immediate(std::string ActionName, void* hActionData, ActionHandleType Filter);
  // Registers the handler, making the action when there is none; the manager owns the handler from here on. When
  // another thread deletes the action meanwhile, the handler goes with it and the result is not to be used.
  TAction* AddActionListener(std::string ActionName, TActionHandler* pActionHandler, ActionHandleType type);
  // The action of exactly this name, or null. Null for an empty name.
  TAction* GetAction(std::string ActionName);

  // Matches what was generated until the queue runs empty. Main thread.
  void ProcessActions();
  // Runs what waits for one type. Called on that type's thread; a nested call for the same type is logged and
  // does nothing.
  void ExecuteActions(ActionHandleType ExecType);

  // Takes the action from the list, drops its waiting runs and, with `DeleteInstance`, deletes it, found or not;
  // the delete of one that runs waits for the end of the run. Null does nothing, and one that only bears the name
  // of a registered action leaves that one alone.
  void UnregisterAction(TAction* pAction, bool DeleteInstance);
  // -1 for an empty or unknown name, otherwise 0.
  int UnregisterAction(std::string ActionName, bool DeleteInstance);
  // Takes the handler from every action and, with `DeleteInstance`, deletes it once. Returns 0.
  int UnregisterAllActionHandlers(TActionHandler* pHandler, bool DeleteInstance);
  // Takes the handlers of this related object from every action and, with `DeleteInstance`, deletes each of them
  // once. Returns 0.
  int UnregisterAllActionHandlersByRelatedObject(void* pRelatedObject, bool DeleteInstance);

  // The sample of a handler that forwards an action: generates "OnActionHandlerExecute" with the same data.
  void DemoAction1(std::string ActionName, void* hActionData, void* hUserData);

 protected:
  struct TGeneratedAction {
    std::string ActionName;
    void* hActionData;
    ActionHandleType Restriction;
  };
  struct TGeneratedSkippedAction {
    TAction* Action;  // null when the action was deleted while the entry waited
    void* hActionData;
  };

  // Queues (or with `executeImmediately` runs) every action whose name is a prefix of `ActionName`, in ascending
  // order; returns how many pairs of action and type had handlers.
  int ActionGenerated(const std::string& ActionName, void* hActionData, ActionHandleType Filter,
                      bool executeImmediately);

  std::list<TAction*> ActionList GUARDED_BY(ActionListMutex);
  SDL_mutex* ActionListMutex;
  std::queue<TGeneratedAction*> GeneratedActionQueue GUARDED_BY(ActionQueueMutex);
  SDL_mutex* ActionQueueMutex;
  std::array<std::queue<TGeneratedSkippedAction>, 4> ToRunActionQueue;  // each under its ToRunMutex
  std::array<SDL_mutex*, 4> ToRunMutex;

 private:
  std::list<TAction*>::iterator FindAction(const std::string& ActionName) REQUIRES_LOCK(ActionListMutex);
  void ForgetQueuedRuns(const TAction* pAction);

  std::array<bool, 4> Executing{};  // each under its ToRunMutex
};

}  // namespace vendelo_sdl2
