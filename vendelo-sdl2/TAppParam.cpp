#include "vendelo-sdl2/TAppParam.h"

#include <algorithm>
#include <locale>
#include <sstream>
#include <utility>

#include "vendelo-sdl2/TLogManager.h"
#include "vendelo-sdl2/TParamMan.h"

namespace vendelo_sdl2 {

// Immortal, and in this order: the constructor of the sentinel asks the set.
std::set<std::string>& TParamMan::ParametersThatTriggerAction = *new std::set<std::string>;
const TAppParam* const pVoidParam = TAppParam::MakeSentinel();

namespace {

// Writes a number as every parameter has it, whatever the language of the screen.
template <class T>
std::string NumberText(T Value, bool& Good) {
  std::ostringstream text;
  text.imbue(std::locale::classic());
  text << Value;
  Good = text.good();
  return text.str();
}

}  // namespace

TAppParam::TAppParam(TSentinel)
  : Parameter(std::string()),
    mName("NULL"),
    bParamChangedAction(TParamMan::ParametersThatTriggerAction.contains(mName)) {
  Freeze();
}

const TAppParam* TAppParam::MakeSentinel() { return new TAppParam(TSentinel()); }

TAppParam::TAppParam(const std::string& Name, const Parameter& Data)
  : Parameter(Data), mName(Name), bParamChangedAction(TParamMan::ParametersThatTriggerAction.contains(Name)) {}

TAppParam::TAppParam(const std::string& Name, const std::string& ClientID)
  : Parameter(ClientID), mName(Name), bParamChangedAction(TParamMan::ParametersThatTriggerAction.contains(Name)) {}

TAppParam::TAppParam(const std::string& Name, ParameterDomain Domain)
  : TAppParam(
      Name, GetAddressOf(Domain, TParamMan::Instance() ? TParamMan::Instance()->LookUpClientID() : std::string())) {
}

TAppParam::~TAppParam() {
  // Before the listener part of this object is gone.
  if (pData) pData->RemoveListener(this);
}

bool TAppParam::IsSentinel(const char* Operation) const {
  if (this != pVoidParam) return false;
  logman::WriteLog(4, 0, "PARAMS ERROR: %s on the missing parameter is ignored", Operation);
  return true;
}

std::string TAppParam::GetAddressOf(ParameterDomain domain, const std::string& ClientID) {
  switch (domain) {
    case PARAM_CACHE:
    case PARAM_MINE:
    case PARAM_OTHER:
      return ClientID;
    case PARAM_GLOBAL:
      return GlobalParameterDomain;
    case PARAM_GROUP:
      return TParamMan::GroupOf(ClientID);
    default:
      return std::string();
  }
}

bool TAppParam::IsNull() const { return this == pVoidParam || Parameter::IsNull(); }

void TAppParam::SetValue(const std::string& value) {
  if (IsSentinel("SetValue")) return;
  ScopedLock lock(*this);
  if (Data() && Value() == value) return;
  Parameter::SetValue(value);
}

void TAppParam::SetValue(long value) {
  bool good = false;
  const std::string text = NumberText(value, good);
  if (good) SetValue(text);
}

void TAppParam::SetValue(double value) {
  bool good = false;
  const std::string text = NumberText(value, good);
  if (good) SetValue(text);
}

void TAppParam::OnValueChanged(int changeFlag) {
  if (TParamMan* const store = TParamMan::Instance()) {
    // Everything at once means a value that appeared, not one that was saved.
    if (bParamChangedAction && (changeFlag & OLD_VALUE) != 0 && changeFlag != ALL && !IsBound())
      store->RaiseAction("DBParameterChanged", this);
    if ((changeFlag & OLD_VALUE) != 0 && store->RebootParams.contains(mName)) store->OnRebootRequired();
  }
  TriggerListener(0, changeFlag);
}

void TAppParam::SetReadOnly(bool ReadOnly) {
  if (!IsSentinel("SetReadOnly")) bReadOnly = ReadOnly;
}

void TAppParam::SetPreferedSaveLocation(ParameterDomain Domain) {
  if (!IsSentinel("SetPreferedSaveLocation")) mPreferedSaveLocation = Domain;
}

void TAppParam::SetSaveForAllLocation(ParameterDomain Domain) {
  if (!IsSentinel("SetSaveForAllLocation")) mSaveForAllLocation = Domain;
}

int TAppParam::Load(const Parameter& param) {
  if (IsSentinel("Load")) return 0;
  ScopedLock lock(*this);
  return param.GetRawDomain() != GetSourceRawDomain() ? StealFrom(param) : CopyFrom(param);
}

void TAppParam::Save(int saveMode) {
  if (bReadOnly) throw "Parameter is read only!";
  if (IsNull()) throw "Cannot save null parameter!";
  if (TParamMan* const store = TParamMan::Instance()) store->OnStoreValue(this, saveMode);
  UpdateOldValue();
}

void TAppParam::Update() {
  TParamMan* const store = TParamMan::Instance();
  if (IsSentinel("Update") || store == nullptr) return;
  const Parameter answer = store->OnRequestValue(GetRawDomain(), Name());
  const int changes = InEdit([&] {
    Load(answer);
    UpdateOldValue();
  });
  if (changes == NONE) TriggerListener(0, NONE);
}

void TAppParam::Delete() {
  if (IsSentinel("Delete")) return;
  if (TParamMan* const store = TParamMan::Instance()) store->OnDeleteValue(this);
  ScopedLock lock(*this);
  Clear();
}

void TAppParam::Bind(const TAppParam* otherParam) {
  if (IsSentinel("Bind") || otherParam == nullptr || otherParam->IsNull()) return;
  for (const TAppParam* source = otherParam; source != nullptr; source = source->pBoundTo)
    if (source == this) return;  // it would follow itself
  ScopedLock lock(*this);
  Unbind();
  SetData(otherParam->Data());
  pBoundTo = otherParam;
}

void TAppParam::Unbind() {
  if (!IsBound()) return;
  Clear();
  pBoundTo = nullptr;
}

ParameterDomain TAppParam::GetSourceDomain(const std::string& ClientID) const {
  const TAppParam* source = this;
  while (source->pBoundTo != nullptr) source = source->pBoundTo;
  return source->Domain(ClientID);
}

const std::string& TAppParam::GetSourceRawDomain() const {
  const TAppParam* source = this;
  while (source->pBoundTo != nullptr) source = source->pBoundTo;
  return source->GetRawDomain();
}

uint TAppParam::AddListener(ParamChangeListener listener, int priority) {
  return AddConsumingListener(
    [listener = std::move(listener)](TAppParam* param, int changeFlag) {
      listener(param, changeFlag);
      return false;
    },
    priority);
}

uint TAppParam::AddConsumingListener(ParamChangeConsumer listener, int priority) {
  if (IsSentinel("AddListener")) return 0;
  const std::lock_guard lock(mListenersMutex);
  const auto place = std::find_if(mListeners.begin(), mListeners.end(),
                                  [priority](const ListenerStruct& entry) { return entry.Priority < priority; });
  mListeners.insert(place, {std::move(listener), ++mLastListenerID, priority});
  return mLastListenerID;
}

void TAppParam::AddListenersOf(const TAppParam* param) {
  if (param == nullptr || IsSentinel("AddListenersOf")) return;
  std::list<ListenerStruct> others;
  {
    const std::lock_guard lock(param->mListenersMutex);
    others = param->mListeners;
  }
  for (const auto& entry : others) AddConsumingListener(entry.Listener, entry.Priority);
}

void TAppParam::RemoveListener(uint ID) {
  const std::lock_guard lock(mListenersMutex);
  mListeners.remove_if([ID](const ListenerStruct& entry) { return entry.ID == ID; });
}

void TAppParam::TriggerListener(uint ID, int changeFlag) {
  std::list<ListenerStruct> entries;
  {
    const std::lock_guard lock(mListenersMutex);
    entries = mListeners;
  }
  for (const auto& entry : entries) {
    if (ID != 0 && entry.ID != ID) continue;
    {
      // A listener may have removed this one.
      const std::lock_guard lock(mListenersMutex);
      if (std::none_of(mListeners.begin(), mListeners.end(),
                       [&entry](const ListenerStruct& left) { return left.ID == entry.ID; }))
        continue;
    }
    if (entry.Listener(this, changeFlag) || ID != 0) return;
  }
}

}  // namespace vendelo_sdl2
