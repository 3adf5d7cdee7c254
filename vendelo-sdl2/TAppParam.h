#pragma once

#include <sys/types.h>

#include <atomic>
#include <functional>
#include <list>
#include <mutex>
#include <string>

#include "common/ThreadSafeProperty.h"
#include "vendelo-sdl2/Parameters.h"

namespace vendelo_sdl2 {

// A named parameter of the store, with listeners, a lock and possibly a binding: a bound parameter shares the data
// of another one, whose value it follows.
//
// Owned by TParamMan; a pointer is valid until the parameter is dropped or deleted, or its client id is replaced.
// The lock is taken around value changes; a listener runs under it, on the thread that made the change, and must
// not delete its parameter. Nor may it look up or set parameters by name: that takes the lock of the list, which a
// TParamMan::SetParam of another thread holds while it waits for this one's, and both would wait for ever. A
// listener defers such work; the parameter that it is given, and pointers taken before, it may read and write.
// All writers are without effect (one log line) on the sentinel pVoidParam.
class TAppParam : public Parameter, public Lockable<std::recursive_mutex> {
 public:
  using ParamChangeListener = std::function<void(TAppParam*, int changeFlag)>;
  // True means that the change is consumed and no listener of lower priority is called.
  using ParamChangeConsumer = std::function<bool(TAppParam*, int changeFlag)>;

  struct ListenerStruct {
    ParamChangeConsumer Listener;
    uint ID;
    int Priority;
  };

  TAppParam(const std::string& Name, const Parameter& Data);
  // A null parameter of this raw domain.
  TAppParam(const std::string& Name, const std::string& ClientID);
  TAppParam(const std::string& Name, ParameterDomain Domain);
  // The one for pVoidParam.
  static const TAppParam* MakeSentinel();
  TAppParam(const TAppParam&) = delete;
  TAppParam& operator=(const TAppParam&) = delete;

  void OnValueChanged(int changeFlag) override;
  ~TAppParam() override;
  bool IsNull() const override;
  using Parameter::SetValue;
  void SetValue(const std::string& value) override;
  void SetValue(long value);
  void SetValue(double value);

  // The raw domain of a kind of owner for this client; empty for a mask that is no single kind.
  static std::string GetAddressOf(ParameterDomain domain, const std::string& ClientID);

  const std::string& Name() const { return mName; }
  void SetReadOnly(bool ReadOnly);
  bool ReadOnly() const { return bReadOnly; }
  void SetPreferedSaveLocation(ParameterDomain Domain);
  ParameterDomain GetPreferedSaveLocation() const { return mPreferedSaveLocation; }
  void SetSaveForAllLocation(ParameterDomain Domain);
  ParameterDomain GetSaveForAllLocation() const { return mSaveForAllLocation; }

  // Shares the data of `param` when its raw domain is not the source's, otherwise copies the content.
  int Load(const Parameter& param);
  // Gives the value to the persistent store. Throws a const char* when read-only or null.
  void Save(int saveMode);
  // Reads the value from the persistent store again; listeners are told even if nothing changed.
  void Update();
  // Deletes the value in the persistent store; the parameter is null afterwards.
  void Delete();

  // Follows the value of `otherParam`; nothing for a null or null-valued one.
  void Bind(const TAppParam* otherParam);
  bool IsBound() const { return pBoundTo != nullptr; }
  void Unbind();
  // The owner at the end of the chain of bindings.
  ParameterDomain GetSourceDomain(const std::string& ClientID) const;
  const std::string& GetSourceRawDomain() const;

  // Listeners are called by falling priority, first come first served among equals. Returns the id.
  uint AddListener(ParamChangeListener listener, int priority);
  uint AddConsumingListener(ParamChangeConsumer listener, int priority);
  void AddListenersOf(const TAppParam* param);
  void RemoveListener(uint ID);
  // With an ID of 0 calls the listeners until one consumes the change, otherwise that one alone.
  void TriggerListener(uint ID, int changeFlag);

 private:
  friend class TParamMan;
  struct TSentinel {};

  explicit TAppParam(TSentinel);
  bool IsSentinel(const char* Operation) const;

  const std::string mName;
  // How it is saved: read by any thread; TParamMan sets all three at once, under the lock of its list.
  std::atomic<ParameterDomain> mPreferedSaveLocation{PARAM_CACHE};
  std::atomic<ParameterDomain> mSaveForAllLocation{PARAM_GROUP};
  // Of its own: listeners are told with the lock of the data held, and the parameter's lock is taken before that
  // one.
  mutable std::mutex mListenersMutex;
  std::list<ListenerStruct> mListeners;  // under mListenersMutex, as is mLastListenerID
  std::atomic<bool> bReadOnly{false};
  const bool bParamChangedAction;
  std::atomic<const TAppParam*> pBoundTo{nullptr};
  uint mLastListenerID = 0;

 public:
  // The application wants no message about the saving of this parameter.
  std::atomic<bool> QuietSave{false};
};

// What every lookup returns instead of null: a parameter "NULL" with an empty domain that never has a value.
extern const TAppParam* const pVoidParam;

}  // namespace vendelo_sdl2
