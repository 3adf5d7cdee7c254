#pragma once

#include <SDL.h>

#include <cstdint>
#include <functional>
#include <list>
#include <locale>
#include <optional>
#include <set>
#include <sstream>
#include <string>
#include <utility>

#include "vendelo-sdl2/Parameters.h"
#include "vendelo-sdl2/TAppParam.h"
#include "vendelo-sdl2/TMutexGuard.h"

namespace vendelo_sdl2 {

// Read modes: masks of ParameterDomain.
constexpr int PARAM_MASK_ALL = PARAM_CACHE | PARAM_GLOBAL | PARAM_GROUP | PARAM_MINE;
constexpr int PARAM_MASK_NO_CACHE = PARAM_GLOBAL | PARAM_GROUP | PARAM_MINE;

// A read mask in the low four bits and the domain to write in the bits above.
enum ParameterReadWriteMode {
  PARAM_READ_CACHE_WRITE_CACHE = 17,
  PARAM_READ_NOCACHE_MINE_OR_GROUP_OR_GLOBAL_WRITE_GLOBAL = 46,
  PARAM_READ_NOCACHE_MINE_OR_GROUP_OR_GLOBAL_WRITE_GROUP = 78,
  PARAM_READ_NOCACHE_MINE_OR_GROUP_OR_GLOBAL_WRITE_MINE = 142,
  PARAM_READ_NOCACHE_GROUP_OR_GLOBAL_WRITE_GLOBAL = 38,
  PARAM_READ_NOCACHE_GROUP_OR_GLOBAL_WRITE_GROUP = 70,
  PARAM_READ_NOCACHE_MINE_OR_GROUP_WRITE_GROUP = 76,
  PARAM_READ_NOCACHE_MINE_OR_GROUP_WRITE_MINE = 140,
  PARAM_READ_NOCACHE_GLOBAL_WRITE_GLOBAL = 34,
  PARAM_READ_NOCACHE_GROUP_WRITE_GROUP = 68,
  PARAM_READ_NOCACHE_MINE_WRITE_MINE = 136,
  PARAM_READ_MINE_OR_GROUP_OR_GLOBAL_WRITE_GLOBAL = 47,
  PARAM_READ_MINE_OR_GROUP_OR_GLOBAL_WRITE_GROUP = 79,
  PARAM_READ_MINE_OR_GROUP_OR_GLOBAL_WRITE_MINE = 143,
  PARAM_READ_MINE_OR_GROUP_OR_GLOBAL_WRITE_CACHE = 31,
  PARAM_READ_GROUP_OR_GLOBAL_WRITE_GLOBAL = 39,
  PARAM_READ_GROUP_OR_GLOBAL_WRITE_GROUP = 71,
  PARAM_READ_MINE_OR_GROUP_WRITE_GROUP = 77,
  PARAM_READ_MINE_OR_GROUP_WRITE_MINE = 141,
  PARAM_READ_GLOBAL_WRITE_GLOBAL = 35,
  PARAM_READ_GROUP_WRITE_GROUP = 69,
  PARAM_READ_MINE_WRITE_MINE = 137
};

// The mask's highest, respectively lowest set bit as a value; 0 for 0.
int highestOrderBit(int mask);
int lowestOrderBit(int mask);

// The in-memory store of parameters by name and domain, and the gate to a persistent store behind it that a
// subclass supplies through the virtual operations.
//
// Reads walk the domains from the client's own over its group's to the global one. Any thread may read and write;
// ParamList and ToStore have their locks (order: pParamListMutex, a parameter's lock, pStoreListMutex).
// Restrictions, reboot parameters, Poll, PrintParamList and what ends the life of a parameter (DeleteParam,
// DropParamFromCache of one that another thread uses, UpdateClientID) belong to the main thread. Lookups answer
// with pVoidParam, never null.
class TParamMan {
 public:
  TParamMan();
  TParamMan(const TParamMan&) = delete;
  TParamMan& operator=(const TParamMan&) = delete;

  // The persistent store. It answers with the value and the raw domain that holds it; null when it has none.
  virtual Parameter OnRequestValue(const std::string& UserAddress, const std::string& ParamName);
  virtual void OnStoreValue(TAppParam* toStoreParam, int saveMode);
  virtual void OnDeleteValue(const TAppParam* toDeleteParam);
  virtual void OnStoreValues(const std::list<TAppParam*>& params);
  // A saved value named by RebootOnParam changed.
  virtual void OnRebootRequired();
  // Deletes all parameters.
  virtual ~TParamMan();

  TAppParam* GetParam(const std::string& ParamName, int ReadMode);
  TAppParam* GetExactParam(const std::string& ClientIP, const std::string& ParamName, int readMode);
  // Lookups that never ask the persistent store. With `createBoundParam` a value found in a more general domain
  // gets a bound parameter in the most specific domain of the mode, which is returned.
  TAppParam* GetParamFromCache(const std::string& ParamName, int ReadMode, bool createBoundParam);
  TAppParam* GetExactParamFromCache(const std::string& ClientIP, const std::string& ParamName, int readMode,
                                    bool createBoundParam);

  // PARAM_CACHE writes to the client's own domain and leaves the persistent store out.
  TAppParam* SetParam(const std::string& ParamName, const std::string& ParamValue, ParameterDomain StoreMode,
                      const std::string& Caption, const std::string& Description, bool quietSave);
  template <class T>
  TAppParam* SetParam(const std::string& ParamName, const T& ParamValue, ParameterDomain StoreMode,
                      const std::string& Caption, const std::string& Description, bool quietSave) {
    return SetParam(ParamName, ToText(ParamValue), StoreMode, Caption, Description, quietSave);
  }
  TAppParam* SetExactParam(const std::string& ClientID, const std::string& ParamName, const std::string& ParamValue,
                           bool cacheOnly, const std::string& Caption, const std::string& Description,
                           bool quietSave);

  // Reads by the low four bits of `mode`; a parameter that does not exist is made in the domain above them. A
  // value that another thread gives it meanwhile stands: the default is not written over it.
  TAppParam* GetOrSetParam(const std::string& ParamName, const std::string& DefaultValue,
                           const std::string& Caption, const std::string& Description, ParameterReadWriteMode mode,
                           bool quietSave);
  template <class T>
  TAppParam* GetOrSetParam(const std::string& ParamName, const T& DefaultValue, const std::string& Caption,
                           const std::string& Description, ParameterReadWriteMode mode, bool quietSave) {
    return GetOrSetParam(ParamName, ToText(DefaultValue), Caption, Description, mode, quietSave);
  }
  TAppParam* GetOrSetExactParam(const std::string& ClientID, const std::string& ParamName,
                                const std::string& DefaultValue, const std::string& Caption,
                                const std::string& Description, ParameterReadWriteMode mode, bool quietSave);

  // 0, also for an optional variable that is not set; -1 for a missing one.
  int LoadParamFromEnvironment(const std::string& EnvironmentName, const std::string& AsParamName, bool Optional);

  // Gives every parameter of the old identifier to the new one, with values, listeners and pending writes.
  void UpdateClientID(const std::string& NewClientID, const std::string& OldClientID);
  void DeleteParam(TAppParam* param);
  void DeleteParam(const std::string& ParamName, int ReadMode);
  // Deletes the parameter; those bound to it keep the value. 0, or -1 for null and pVoidParam, -2 for a pointer
  // that is not in the store.
  int DropParamFromCache(TAppParam* pParam);
  int DropParamFromCache(const std::string& ParamName, int Filter);

  // Hands the queued writes to OnStoreValues. Returns 0.
  int Poll();
  // Prints the store as a table on standard output, without a lock.
  void PrintParamList() const UNCHECKED_LOCKS;
  void RebootOnParam(const std::string& param_name);
  void AddToStoreQueue(TAppParam* pParam);

  int64_t GetRestrictionState() const { return mRestrictions; }
  void SetRestriction(ParameterRestrictions restriction, bool state);
  void AddRestrictionListener(const std::function<void(long)>& listener, bool triggerImmediately);

  const std::string& GetGlobalDomain() const;
  // The part before the underscore of `ClientIP`, or else of the application's own identifier.
  std::string GetGroupDomain(const std::string& ClientIP) const;

 protected:
  // Names whose saved changes raise the action "DBParameterChanged"; to be filled before the parameters are made.
  static std::set<std::string>& ParametersThatTriggerAction;

  using TParamList = std::list<TAppParam*>;

  // The identifier of the application whose store this is; empty for a store without one.
  virtual std::string LookUpClientID() const;

  // Takes the parameter over, or refuses it (printing why) and returns the list's end.
  TParamList::iterator AddParamToCache(TAppParam* pParam) REQUIRES_LOCK(pParamListMutex);
  TParamList ParamList GUARDED_BY(pParamListMutex);  // sorted by name, then raw domain

 private:
  friend class TAppParam;

  // The manager that the parameters talk to: the first one alive. Null without one.
  static TParamMan* Instance();
  static std::string GroupOf(const std::string& ClientIP);

  // Name and raw domain.
  using TParamKey = std::pair<const std::string&, const std::string&>;
  struct TOrder {
    using is_transparent = void;
    bool operator()(TParamList::iterator Left, TParamList::iterator Right) const;
    bool operator()(const TParamKey& Left, TParamList::iterator Right) const;
  };

  template <class T>
  static std::string ToText(const T& Value) {
    std::ostringstream text;
    text.imbue(std::locale::classic());
    text << Value;
    return text.str();
  }

  TParamList::iterator GetExactParamIteratorFromCache(const std::string& ClientIP, const std::string& ParamName,
                                                      int readMode, bool createBoundParam)
    REQUIRES_LOCK(pParamListMutex);
  TParamList::iterator FindExact(const std::string& ParamName, const std::string& RawDomain)
    REQUIRES_LOCK(pParamListMutex);
  // These two keep ParamList and mIndex alike; an equal one goes behind the others.
  TParamList::iterator InsertSorted(TAppParam* pParam) REQUIRES_LOCK(pParamListMutex);
  TParamList::iterator Erase(TParamList::iterator Place) REQUIRES_LOCK(pParamListMutex);
  // `cacheMode` is the mode as it was asked for, `readMode` what is left of it for this client.
  TAppParam* LoadAnswer(const std::string& ClientIP, const std::string& ParamName, int readMode, int cacheMode,
                        const Parameter& Answer);
  // The value that the cache has at exactly this address; null for none.
  std::optional<std::string> CachedValue(const std::string& RawDomain, const std::string& ParamName);
  // A parameter of this raw domain that is bound to the source, a new one or the one that was there; the source
  // when the cache refuses it.
  TAppParam* AddBound(TAppParam* pSource, const std::string& RawDomain, bool quietSave);
  // Parameters bound to the old one follow the new one; they keep the value in any case.
  void RepointBindings(const TAppParam* pOld, const TAppParam* pNew) REQUIRES_LOCK(pParamListMutex);
  // Generates the action on the application's bus, if this store is part of an application.
  void RaiseAction(const char* ActionName, void* hActionData);

  std::list<std::function<void(long)>> mRestrictionListeners;
  static thread_local bool isInGetOrSet;  // the calling thread is, so its misses are not printed
  int64_t mRestrictions = RESTRICTION_UNEDITABLE | RESTRICTION_HIDDEN;
  // The places in ParamList by its own order, so that a search has not to walk the list.
  std::multiset<TParamList::iterator, TOrder> mIndex GUARDED_BY(pParamListMutex);
  TParamList ToStore GUARDED_BY(pStoreListMutex);
  SDL_mutex* pParamListMutex;
  SDL_mutex* pStoreListMutex;
  std::set<std::string> RebootParams;
};

}  // namespace vendelo_sdl2
