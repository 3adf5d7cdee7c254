#include <algorithm>
#include <cstdio>
#include <memory>
#include <string>

#include "vendelo-sdl2/TActionMan.h"
#include "vendelo-sdl2/TMutexGuard.h"
#include "vendelo-sdl2/TParamMan.h"

namespace vendelo_sdl2 {

namespace {

constexpr size_t kShownValue = 40;
constexpr size_t kCutValue = 37;
constexpr size_t kTableWidth = 149;

}  // namespace

void TParamMan::RaiseAction(const char* ActionName, void* hActionData) {
  if (auto* const bus = dynamic_cast<TActionMan*>(this)) bus->GenerateAction(ActionName, hActionData, ACTION_ANY);
}

void TParamMan::RepointBindings(const TAppParam* pOld, const TAppParam* pNew) {
  for (auto* param : ParamList)
    if (param->pBoundTo == pOld) param->pBoundTo = pNew == param ? nullptr : pNew;
}

void TParamMan::UpdateClientID(const std::string& NewClientID, const std::string& OldClientID) {
  if (NewClientID == OldClientID) return;
  TMutexGuard lock(pParamListMutex);
  TParamList renamed;
  for (auto it = ParamList.begin(); it != ParamList.end();) {
    TAppParam* const old = *it;
    if (old->GetRawDomain() != OldClientID) {
      ++it;
      continue;
    }
    auto made = std::make_unique<TAppParam>(old->Name(), NewClientID);
    {
      ScopedLock paramLock(*old);
      made->Load(*old);
      made->AddListenersOf(old);
      made->pBoundTo = old->pBoundTo.load();
      made->mPreferedSaveLocation = old->mPreferedSaveLocation.load();
      made->mSaveForAllLocation = old->mSaveForAllLocation.load();
      made->bReadOnly = old->bReadOnly.load();
      made->QuietSave = old->QuietSave.load();
      TMutexGuard storeLock(pStoreListMutex);
      std::replace(ToStore.begin(), ToStore.end(), old, made.get());
    }
    RepointBindings(old, made.get());
    for (auto* param : renamed)
      if (param->pBoundTo == old) param->pBoundTo = made.get();
    renamed.push_back(made.release());
    it = Erase(it);
    delete old;
  }
  for (auto* param : renamed) InsertSorted(param);
}

void TParamMan::DeleteParam(TAppParam* param) {
  if (param == nullptr || param == pVoidParam) return;
  param->Delete();
  DropParamFromCache(param);
}

void TParamMan::DeleteParam(const std::string& ParamName, int ReadMode) {
  DeleteParam(GetParam(ParamName, ReadMode));
}

int TParamMan::DropParamFromCache(TAppParam* pParam) {
  if (pParam == nullptr || pParam == pVoidParam) return -1;
  TMutexGuard lock(pParamListMutex);
  const auto found = std::find(ParamList.begin(), ParamList.end(), pParam);
  if (found == ParamList.end()) return -2;
  {
    // Free again before the delete, or the mutex would be destroyed while held.
    ScopedLock paramLock(*pParam);
    TMutexGuard storeLock(pStoreListMutex);
    ToStore.remove(pParam);
    Erase(found);
  }
  RepointBindings(pParam, pParam->pBoundTo);
  delete pParam;
  return 0;
}

int TParamMan::DropParamFromCache(const std::string& ParamName, int Filter) {
  return DropParamFromCache(GetParamFromCache(ParamName, Filter, false));
}

void TParamMan::AddToStoreQueue(TAppParam* pParam) {
  if (pParam == nullptr || pParam == pVoidParam) return;
  TMutexGuard lock(pStoreListMutex);
  ToStore.push_back(pParam);
}

int TParamMan::Poll() {
  TParamList copy;
  {
    TMutexGuard lock(pStoreListMutex);
    copy.swap(ToStore);
  }
  if (!copy.empty()) OnStoreValues(copy);
  return 0;
}

void TParamMan::RebootOnParam(const std::string& param_name) { RebootParams.insert(param_name); }

void TParamMan::SetRestriction(ParameterRestrictions restriction, bool state) {
  const int64_t before = mRestrictions;
  if (state) {
    mRestrictions |= restriction;
  } else if ((mRestrictions & restriction) != 0) {
    // Subtracted, not cleared: of several bits all are expected to be set.
    mRestrictions -= restriction;
  }
  if (mRestrictions == before) return;
  const auto listeners = mRestrictionListeners;
  for (const auto& listener : listeners) listener(static_cast<long>(mRestrictions));
  RaiseAction("OnRestrictionsChange", nullptr);
}

void TParamMan::AddRestrictionListener(const std::function<void(long)>& listener, bool triggerImmediately) {
  mRestrictionListeners.push_back(listener);
  if (triggerImmediately) listener(static_cast<long>(mRestrictions));
}

void TParamMan::PrintParamList() const {
  const std::string line(kTableWidth, '=');
  std::printf(" #  : %-40s | %-15s | %-6s | %-42s | %-40s | %s\n", "Name", "Domain", "Restr.", "Value", "Caption",
              "Description");
  std::printf("%s\n", line.c_str());
  int number = 0;
  for (const auto* param : ParamList) {
    std::string value = param->Value();
    if (value.length() > kShownValue) value = value.substr(0, kCutValue) + "...";
    std::printf("%-4d: %-40s | %-15s | %-6ld | %-42s | %-40s | %s\n", number++, param->Name().c_str(),
                param->GetRawDomain().c_str(), static_cast<long>(param->Restrictions()),
                ("\"" + value + "\"").c_str(), param->Caption().c_str(), param->Description().c_str());
  }
  std::printf("%s\n# od data instances: %d\n%s\n", line.c_str(), ParameterData::GetNumInstances(), line.c_str());
}

}  // namespace vendelo_sdl2
