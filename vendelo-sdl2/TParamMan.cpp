#include "vendelo-sdl2/TParamMan.h"

#include <algorithm>
#include <atomic>
#include <bit>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <memory>
#include <utility>

#include "vendelo-sdl2/MyUtils.h"
#include "vendelo-sdl2/TActionMan.h"
#include "vendelo-sdl2/TLogManager.h"
#include "vendelo-sdl2/TMutexGuard.h"

namespace vendelo_sdl2 {

namespace {

constexpr int kDomainBits = 4;
constexpr int kReadMask = (1 << kDomainBits) - 1;

std::atomic<TParamMan*> pDefInst{nullptr};

// The one place that makes the const sentinel a result of the lookups; its writers do nothing.
TAppParam* VoidParam() { return const_cast<TAppParam*>(pVoidParam); }

// Sets a flag for a scope.
class TFlagScope {
 public:
  explicit TFlagScope(bool& Flag) : mFlag(Flag) { mFlag = true; }
  ~TFlagScope() { mFlag = false; }
  TFlagScope(const TFlagScope&) = delete;
  TFlagScope& operator=(const TFlagScope&) = delete;

 private:
  bool& mFlag;
};

std::string GroupPart(const std::string& ClientID) { return ClientID.substr(0, ClientID.find('_')); }

}  // namespace

thread_local bool TParamMan::isInGetOrSet = false;

int highestOrderBit(int mask) { return static_cast<int>(std::bit_floor(static_cast<unsigned>(mask))); }

int lowestOrderBit(int mask) {
  return static_cast<int>(static_cast<unsigned>(mask) & -static_cast<unsigned>(mask));
}

TParamMan::TParamMan() : pParamListMutex(SDL_CreateMutex()), pStoreListMutex(SDL_CreateMutex()) {
  TParamMan* none = nullptr;
  pDefInst.compare_exchange_strong(none, this);
}

TParamMan::~TParamMan() {
  TParamMan* self = this;
  pDefInst.compare_exchange_strong(self, nullptr);
  for (auto* param : ParamList) delete param;
  SDL_DestroyMutex(pParamListMutex);
  SDL_DestroyMutex(pStoreListMutex);
}

TParamMan* TParamMan::Instance() { return pDefInst; }

std::string TParamMan::LookUpClientID() const { return std::string(); }

Parameter TParamMan::OnRequestValue(const std::string& UserAddress, const std::string& ParamName) {
  std::printf("Requested value for parameter %s of %s\n", ParamName.c_str(), UserAddress.c_str());
  return Parameter();
}

void TParamMan::OnStoreValue(TAppParam* toStoreParam, int /*saveMode*/) {
  std::printf("Requested store for parameter\n%s = '%s' with\ncaption = '%s'\ndescription = '%s'\n",
              toStoreParam->Name().c_str(), toStoreParam->Value().c_str(), toStoreParam->Caption().c_str(),
              toStoreParam->Description().c_str());
}

void TParamMan::OnDeleteValue(const TAppParam* toDeleteParam) {
  std::printf("Requested delete for parameter %s\n", toDeleteParam->Name().c_str());
}

void TParamMan::OnStoreValues(const std::list<TAppParam*>& params) {
  std::printf("Requested store of param list (%lu). Will do nothing!\n", static_cast<unsigned long>(params.size()));
}

void TParamMan::OnRebootRequired() {}

const std::string& TParamMan::GetGlobalDomain() const { return Parameter::GlobalParameterDomain; }

std::string TParamMan::GetGroupDomain(const std::string& ClientIP) const {
  return GroupPart(ClientIP.find('_') != std::string::npos ? ClientIP : LookUpClientID());
}

std::string TParamMan::GroupOf(const std::string& ClientIP) {
  const TParamMan* const store = Instance();
  if (store != nullptr) return store->GetGroupDomain(ClientIP);
  return ClientIP.find('_') != std::string::npos ? GroupPart(ClientIP) : std::string();
}

TParamMan::TParamList::iterator TParamMan::FindExact(const std::string& ParamName, const std::string& RawDomain) {
  const auto behind = mIndex.upper_bound(TParamKey(ParamName, RawDomain));
  if (behind == mIndex.begin()) return ParamList.end();
  const auto place = *std::prev(behind);
  return (*place)->Name() == ParamName && (*place)->GetRawDomain() == RawDomain ? place : ParamList.end();
}

bool TParamMan::TOrder::operator()(TParamList::iterator Left, TParamList::iterator Right) const {
  return (*this)(TParamKey((*Left)->Name(), (*Left)->GetRawDomain()), Right);
}

bool TParamMan::TOrder::operator()(const TParamKey& Left, TParamList::iterator Right) const {
  const int byName = Left.first.compare((*Right)->Name());
  return byName != 0 ? byName < 0 : Left.second.compare((*Right)->GetRawDomain()) < 0;
}

TParamMan::TParamList::iterator TParamMan::InsertSorted(TAppParam* pParam) {
  const auto behind = mIndex.upper_bound(TParamKey(pParam->Name(), pParam->GetRawDomain()));
  const auto place = ParamList.insert(behind == mIndex.end() ? ParamList.end() : *behind, pParam);
  mIndex.insert(behind, place);
  return place;
}

TParamMan::TParamList::iterator TParamMan::Erase(TParamList::iterator Place) {
  const auto [first, last] = mIndex.equal_range(Place);
  mIndex.erase(std::find(first, last, Place));
  return ParamList.erase(Place);
}

TParamMan::TParamList::iterator TParamMan::AddParamToCache(TAppParam* pParam) {
  if (pParam == nullptr || pParam == pVoidParam) return ParamList.end();
  if (pParam->Domain(LookUpClientID()) == PARAM_CACHE) {
    std::printf("application::Parameter \"%s\" domain cannot be CACHE.\n", pParam->Name().c_str());
    return ParamList.end();
  }
  if (FindExact(pParam->Name(), pParam->GetRawDomain()) == ParamList.end()) return InsertSorted(pParam);
  std::printf("application::Parameter \"%s\" of ID %s already exists in this application.\n",
              pParam->Name().c_str(), pParam->GetRawDomain().c_str());
  return ParamList.end();
}

TAppParam* TParamMan::AddBound(TAppParam* pSource, const std::string& RawDomain, bool quietSave) {
  auto bound = std::make_unique<TAppParam>(pSource->Name(), RawDomain);
  bound->Bind(pSource);
  bound->QuietSave = quietSave;
  TMutexGuard lock(pParamListMutex);
  if (AddParamToCache(bound.get()) != ParamList.end()) return bound.release();
  TAppParam* const present = GetExactParamFromCache(RawDomain, pSource->Name(), PARAM_MINE, false);
  return present->pBoundTo == pSource ? present : pSource;
}

TParamMan::TParamList::iterator TParamMan::GetExactParamIteratorFromCache(const std::string& ClientIP,
                                                                          const std::string& ParamName,
                                                                          int readMode, bool createBoundParam) {
  if (readMode == PARAM_CACHE) readMode = PARAM_MINE;
  auto found = ParamList.end();
  if ((readMode & PARAM_MINE) != 0) found = FindExact(ParamName, ClientIP);
  if (found == ParamList.end() && (readMode & PARAM_GROUP) != 0)
    found = FindExact(ParamName, TAppParam::GetAddressOf(PARAM_GROUP, ClientIP));
  if (found == ParamList.end() && (readMode & PARAM_GLOBAL) != 0) found = FindExact(ParamName, GetGlobalDomain());
  if (found == ParamList.end() || !createBoundParam) return found;
  const std::string wanted =
    TAppParam::GetAddressOf(static_cast<ParameterDomain>(highestOrderBit(readMode)), ClientIP);
  if ((*found)->GetRawDomain() == wanted) return found;
  AddBound(*found, wanted, false);
  const auto bound = FindExact(ParamName, wanted);
  return bound != ParamList.end() ? bound : found;
}

TAppParam* TParamMan::GetExactParamFromCache(const std::string& ClientIP, const std::string& ParamName,
                                             int readMode, bool createBoundParam) {
  if (ParamName.empty()) return VoidParam();
  TMutexGuard lock(pParamListMutex);
  const auto found = GetExactParamIteratorFromCache(ClientIP, ParamName, readMode, createBoundParam);
  return found == ParamList.end() ? VoidParam() : *found;
}

TAppParam* TParamMan::GetParamFromCache(const std::string& ParamName, int ReadMode, bool createBoundParam) {
  return GetExactParamFromCache(LookUpClientID(), ParamName, ReadMode, createBoundParam);
}

TAppParam* TParamMan::GetParam(const std::string& ParamName, int ReadMode) {
  return GetExactParam(LookUpClientID(), ParamName, ReadMode);
}

TAppParam* TParamMan::GetExactParam(const std::string& ClientIP, const std::string& ParamName, int readMode) {
  readMode %= 1 << kDomainBits;
  const int cacheMode = readMode;
  if (ParamName.empty() || readMode <= 0) return VoidParam();
  if (readMode == PARAM_CACHE) return GetExactParamFromCache(ClientIP, ParamName, PARAM_MINE, true);
  TAppParam* const cachedParam = GetExactParamFromCache(ClientIP, ParamName, readMode, true);
  if ((readMode & PARAM_CACHE) != 0 && cachedParam != pVoidParam) return cachedParam;

  if (ClientIP.empty()) readMode &= ~(PARAM_GROUP | PARAM_MINE);
  const std::string requestAddress =
    TAppParam::GetAddressOf(static_cast<ParameterDomain>(highestOrderBit(readMode)), ClientIP);
  Parameter answer;
  try {
    answer = OnRequestValue(requestAddress, ParamName);
  } catch (...) {  // is no answer
  }
  if (!answer.IsNull() && (answer.Domain(ClientIP) & readMode) != 0)
    return LoadAnswer(ClientIP, ParamName, readMode, cacheMode, answer);
  if (!isInGetOrSet)
    std::printf("PARAM: No parameter named '%s' for ID '%s' exists!\n", ParamName.c_str(), requestAddress.c_str());
  return VoidParam();
}

TAppParam* TParamMan::LoadAnswer(const std::string& ClientIP, const std::string& ParamName, int readMode,
                                 int cacheMode, const Parameter& Answer) {
  const ParameterDomain domain = Answer.Domain(ClientIP);
  const int highest = highestOrderBit(readMode);
  TMutexGuard lock(pParamListMutex);
  // Looked up again: while the store was asked, another thread may have dropped what was there.
  TAppParam* const cachedParam = GetExactParamFromCache(ClientIP, ParamName, cacheMode, false);
  const bool cached = cachedParam != pVoidParam;
  if (cached && domain == highest &&
      cachedParam->GetRawDomain() == TAppParam::GetAddressOf(static_cast<ParameterDomain>(highest), ClientIP)) {
    cachedParam->Load(Answer);
    return cachedParam;
  }
  bool quiet = cached && cachedParam->QuietSave;
  TAppParam* present = GetExactParamFromCache(Answer.GetRawDomain(), ParamName, PARAM_MINE, false);
  if (present == pVoidParam) {
    auto made = std::make_unique<TAppParam>(ParamName, Answer.GetRawDomain());
    made->QuietSave = quiet;
    if (AddParamToCache(made.get()) == ParamList.end()) return VoidParam();
    present = made.release();
  } else {
    quiet = present->QuietSave;
  }
  present->Load(Answer);
  // What is left are the domains more specific than the answer's; each follows the one before.
  for (int left = readMode & ((1 << kDomainBits) - 2 * present->Domain(ClientIP)); left != 0;
       left &= ~lowestOrderBit(left)) {
    const std::string address =
      TAppParam::GetAddressOf(static_cast<ParameterDomain>(lowestOrderBit(left)), ClientIP);
    TAppParam* next = GetExactParamFromCache(address, ParamName, PARAM_MINE, false);
    if (next == pVoidParam)
      next = AddBound(present, address, quiet);
    else
      next->Bind(present);
    present = next;
  }
  return present;
}

TAppParam* TParamMan::SetParam(const std::string& ParamName, const std::string& ParamValue,
                               ParameterDomain StoreMode, const std::string& Caption,
                               const std::string& Description, bool quietSave) {
  const bool cacheOnly = StoreMode == PARAM_CACHE;
  return SetExactParam(TAppParam::GetAddressOf(cacheOnly ? PARAM_MINE : StoreMode, LookUpClientID()), ParamName,
                       ParamValue, cacheOnly, Caption, Description, quietSave);
}

TAppParam* TParamMan::SetExactParam(const std::string& ClientID, const std::string& ParamName,
                                    const std::string& ParamValue, bool cacheOnly, const std::string& Caption,
                                    const std::string& Description, bool quietSave) {
  const auto edit = [&](TAppParam* param) {
    param->InEdit([&] {
      param->SetValue(ParamValue);
      if (!Caption.empty()) param->SetCaption(Caption);
      if (!Description.empty()) param->SetDescription(Description);
    });
    param->QuietSave = quietSave;
  };
  if (ClientID.empty()) cacheOnly = true;
  // Held to the end, or of two threads that make the same parameter one would lose its value.
  TMutexGuard lock(pParamListMutex);
  TAppParam* const found = GetExactParamFromCache(ClientID, ParamName, PARAM_MINE, false);
  if (found != pVoidParam) {
    edit(found);
    if (!cacheOnly) AddToStoreQueue(found);
    return found;
  }
  auto made = std::make_unique<TAppParam>(ParamName, ClientID);
  if (!cacheOnly) made->SetPreferedSaveLocation(made->Domain(ClientID));
  edit(made.get());
  if (AddParamToCache(made.get()) == ParamList.end()) return VoidParam();
  TAppParam* const param = made.release();
  if (!cacheOnly) AddToStoreQueue(param);
  return param;
}

std::optional<std::string> TParamMan::CachedValue(const std::string& RawDomain, const std::string& ParamName) {
  TMutexGuard lock(pParamListMutex);
  const TAppParam* const param = GetExactParamFromCache(RawDomain, ParamName, PARAM_MINE, false);
  return param->IsNull() ? std::nullopt : std::optional(param->Value());
}

TAppParam* TParamMan::GetOrSetParam(const std::string& ParamName, const std::string& DefaultValue,
                                    const std::string& Caption, const std::string& Description,
                                    ParameterReadWriteMode mode, bool quietSave) {
  return GetOrSetExactParam(LookUpClientID(), ParamName, DefaultValue, Caption, Description, mode, quietSave);
}

TAppParam* TParamMan::GetOrSetExactParam(const std::string& ClientID, const std::string& ParamName,
                                         const std::string& DefaultValue, const std::string& Caption,
                                         const std::string& Description, ParameterReadWriteMode mode,
                                         bool quietSave) {
  const int readMask = mode & kReadMask;
  const auto writeDomain = static_cast<ParameterDomain>(mode >> kDomainBits);
  const std::string writeAddress = TAppParam::GetAddressOf(writeDomain, ClientID);
  const std::optional<std::string> before = CachedValue(writeAddress, ParamName);
  TAppParam* const found = [&] {
    // The store's answer may break the limits of a value in a way that throws.
    const TFlagScope quiet(isInGetOrSet);
    return GetExactParam(ClientID, ParamName, mode);
  }();
  const int highest = highestOrderBit(readMask);
  const auto asFound = [&](TAppParam* param) {
    param->QuietSave = quietSave;
    param->SetPreferedSaveLocation(param->Domain(ClientID));
    param->SetSaveForAllLocation(writeDomain);
    return param;
  };
  // Held to the end, so that what is made, and how it is saved, are one thread's.
  TMutexGuard lock(pParamListMutex);
  if (found != pVoidParam) return asFound(found);
  if (highest != PARAM_MINE && writeDomain == PARAM_MINE) {
    logman::WriteLog(0, 0, "PARAMS ERROR: Weird GetOrSet for param '%s'-> writing mine but reading something else",
                     ParamName.c_str());
    return VoidParam();
  }
  if ((readMask & ~PARAM_CACHE) == PARAM_MINE && writeDomain == PARAM_GLOBAL) {
    logman::WriteLog(0, 0, "PARAMS ERROR: Weird GetOrSet for param '%s'-> reading only mine but writing global",
                     ParamName.c_str());
    return VoidParam();
  }
  // The persistent store was asked without the lock: a value that came meanwhile is not the default's to overwrite.
  if (const auto now = CachedValue(writeAddress, ParamName); now && now != before) {
    TAppParam* const read = GetExactParamFromCache(ClientID, ParamName, readMask, true);
    return asFound(read != pVoidParam ? read : GetExactParamFromCache(writeAddress, ParamName, PARAM_MINE, false));
  }
  TAppParam* const made = SetExactParam(writeAddress, ParamName, DefaultValue, writeDomain == PARAM_CACHE, Caption,
                                        Description, quietSave);
  if (made == pVoidParam) return made;
  made->SetPreferedSaveLocation(writeDomain);
  made->SetSaveForAllLocation(writeDomain);
  if (highest <= made->Domain(ClientID)) return made;
  return AddBound(made, TAppParam::GetAddressOf(static_cast<ParameterDomain>(highest), ClientID), quietSave);
}

int TParamMan::LoadParamFromEnvironment(const std::string& EnvironmentName, const std::string& AsParamName,
                                        bool Optional) {
  const char* const variable = std::getenv(EnvironmentName.c_str());
  if (variable == nullptr) {
    if (Optional) return 0;
    std::printf("PARAMS ERROR: Please set '%s' environment variable\n", EnvironmentName.c_str());
    return -1;
  }
  std::string value = variable;
  MyUtils::trimString(value);
  if (value.empty())
    std::printf("PARAMS ERROR: Error reading environment variable '%s' \n", EnvironmentName.c_str());
  SetParam(AsParamName, value, PARAM_CACHE, "", "", false);
  return 0;
}

}  // namespace vendelo_sdl2
