#include "vendelo-sdl2/Parameters.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <locale>
#include <sstream>
#include <utility>

namespace vendelo_sdl2 {

// Immortal, as parameters may be read while the process ends.
const std::string& Parameter::EmptyStr = *new std::string;
const std::string& Parameter::GlobalParameterDomain = *new std::string("GLOBAL");
std::atomic<int> ParameterData::mNumInstances{0};

namespace {

bool Satisfies(const ParameterLimits& Limits, const std::string& Value) {
  return !Limits.HasAnyLimits() || Limits.SatisfiesLimit(Value);
}

}  // namespace

void ParamChangeListener::OnValueChanged(int /*changes*/) {}

/// One Changed() under way, over the listeners that there were at its start.
struct ParameterData::TReport {
  ParameterData& Data;
  std::vector<ParamChangeListener*> Listeners;

  TReport(ParameterData& Changing, const std::vector<ParamChangeListener*>& All) : Data(Changing), Listeners(All) {
    Data.mReports.push_back(this);
  }
  ~TReport() { std::erase(Data.mReports, this); }
};

ParameterData::ParameterData() { ++mNumInstances; }

ParameterData::~ParameterData() { --mNumInstances; }

void ParameterData::AddListener(ParamChangeListener* pListener) {
  ScopedLock lock(mListeners);
  mListeners->push_back(pListener);
}

void ParameterData::RemoveListener(ParamChangeListener* pListener) {
  ScopedLock lock(mListeners);
  std::erase(&mListeners, pListener);
  for (auto* report : mReports)
    std::replace(report->Listeners.begin(), report->Listeners.end(), pListener,
                 static_cast<ParamChangeListener*>(nullptr));
}

void ParameterData::Changed(int changes) {
  if (changes == 0) return;
  int accumulated = mAccumulatedChanges;
  while (accumulated >= 0)
    if (mAccumulatedChanges.compare_exchange_weak(accumulated, accumulated | changes)) return;
  ScopedLock lock(mListeners);
  TReport report(*this, &mListeners);
  // By index, and asked anew each time: RemoveListener blanks whoever has gone.
  for (size_t i = 0; i < report.Listeners.size(); ++i)
    if (report.Listeners[i] != nullptr) report.Listeners[i]->OnValueChanged(changes);
}

void ParameterData::BeginEdit() { mAccumulatedChanges = 0; }

int ParameterData::EndEdit() {
  // Below 0: the edit was begun on other data, or ended through another handle on this one.
  const int changes = std::max(mAccumulatedChanges.exchange(-1), 0);
  Changed(changes);
  return changes;
}

int ParameterData::Compare(const ParameterData& other) const {
  int changes = ParamChangeListener::NONE;
  if (&other == this) return changes;
  const std::scoped_lock lock(mFieldsMutex, other.mFieldsMutex);
  if (value != other.value) changes |= ParamChangeListener::VALUE;
  if (caption != other.caption) changes |= ParamChangeListener::CAPTION;
  if (description != other.description) changes |= ParamChangeListener::DESCRIPTION;
  if (restrictions != other.restrictions) changes |= ParamChangeListener::RESTRICTION;
  return changes;
}

void ParameterData::SetLimits(const ParameterLimits& limits) {
  ParameterLimits copy(limits);  // made first, as they may be this data's own
  const std::lock_guard lock(mFieldsMutex);
  mLimits = std::move(copy);
}

void ParameterData::SetLimits(const std::string& limits) {
  try {
    SetLimits(ParameterLimits(limits));
  } catch (const std::exception& error) {
    std::printf("Error creating limits from string <%s>: %s\n", limits.c_str(), error.what());
  }
}

Parameter::Parameter() = default;

Parameter::Parameter(const std::string& Domain) : mDomain(Domain) {}

Parameter::Parameter(const Parameter& other)
  : ParamChangeListener(), mDomain(other.mDomain), mIsInEdit(other.mIsInEdit.load()), pData(other.pData) {
  if (pData) pData->AddListener(this);
}

Parameter& Parameter::operator=(const Parameter& other) {
  if (this == &other || mFrozen) return *this;
  SetData(other.pData);
  mDomain = other.mDomain;
  mIsInEdit = other.mIsInEdit.load();
  return *this;
}

Parameter::~Parameter() {
  if (pData) pData->RemoveListener(this);
}

void Parameter::OnValueChanged(int /*changes*/) {}

bool Parameter::IsNull() const { return pData == nullptr; }

void Parameter::Report(int changes) {
  // A listener may make this parameter take other data.
  const std::shared_ptr<ParameterData> data = pData;
  if (data) data->Changed(changes);
  mChangesRelativeToDB |= changes;
}

void Parameter::SetValue(const std::string& value) {
  if (mFrozen) return;
  int changes = NONE;
  const bool first = !pData;
  if (first) Instantiate();
  {
    const std::lock_guard lock(pData->mFieldsMutex);
    if (first) {
      pData->value = value;
      pData->oldValue = value;
      changes = ALL;
    } else if (pData->value != value && Satisfies(pData->mLimits, value)) {
      pData->value = value;
      changes = VALUE;
    }
  }
  Report(changes);
}

int Parameter::SetData(const std::shared_ptr<ParameterData>& newData) {
  if (mFrozen || newData == pData) return 0;
  const std::shared_ptr<ParameterData> data = newData;
  if (mIsInEdit > 0) {
    if (pData) {
      const std::shared_ptr<ParameterData> oldData = pData;
      oldData->EndEdit();
    } else {
      data->BeginEdit();
    }
  }
  const int changes = pData && data ? pData->Compare(*data) : static_cast<int>(ALL);
  if (pData) pData->RemoveListener(this);
  pData = data;
  if (pData) pData->AddListener(this);
  Report(changes);
  return changes;
}

int Parameter::StealFrom(const Parameter& other) { return SetData(other.pData); }

int Parameter::CopyFrom(const Parameter& other) {
  if (mFrozen) return 0;
  // Held, as the copy may share its data with the other one and a listener may let that go.
  const std::shared_ptr<ParameterData> source = other.pData;
  return InEdit([&] {
    SetValue(other.Value());
    SetDescription(other.Description());
    SetCaption(other.Caption());
    SetRestrictions(other.Restrictions());
    if (pData) pData->SetLimits(other.Limits());
  });
}

void Parameter::Instantiate() {
  if (pData || mFrozen) return;
  pData = std::make_shared<ParameterData>();
  if (mIsInEdit > 0) pData->BeginEdit();
  pData->AddListener(this);
}

void Parameter::Clear() { SetData(nullptr); }

std::string Parameter::Value() const {
  if (!pData) return EmptyStr;
  const std::lock_guard lock(pData->mFieldsMutex);
  return pData->value;
}

const std::string& Parameter::Caption() const { return pData ? pData->caption : EmptyStr; }

const std::string& Parameter::Description() const { return pData ? pData->description : EmptyStr; }

const std::string& Parameter::OldValue() const { return pData ? pData->oldValue : EmptyStr; }

int64_t Parameter::Restrictions() const {
  if (!pData) return RESTRICTION_NONE;
  const std::lock_guard lock(pData->mFieldsMutex);
  return pData->restrictions;
}

const ParameterLimits& Parameter::Limits() const { return pData ? pData->Limits() : NoLimit; }

bool Parameter::Modified() const {
  if (!pData) return false;
  const std::lock_guard lock(pData->mFieldsMutex);
  return pData->value != pData->oldValue;
}

long Parameter::AsInteger(long defaultValue) const {
  const std::string text = Value();
  if (text.empty()) return defaultValue;
  std::istringstream stream(text);
  stream.imbue(std::locale::classic());
  long number = 0;
  return stream >> number ? number : 0;
}

double Parameter::AsFloat(double defaultValue) const {
  const std::string text = Value();
  if (text.empty()) return defaultValue;
  try {
    // Single precision, and it stays so: callers have seen these very digits.
    return std::stof(text);
  } catch (...) {
    return defaultValue;
  }
}

bool Parameter::IsInteger() const {
  const std::string text = Value();
  char* end = nullptr;
  (void)std::strtol(text.c_str(), &end, 10);
  return end == text.c_str() + text.length();
}

bool Parameter::IsDouble() const {
  const std::string text = Value();
  char* end = nullptr;
  (void)std::strtod(text.c_str(), &end);
  return end == text.c_str() + text.length();
}

ParameterDomain Parameter::Domain(const std::string& myClientID) const {
  if (mDomain == GlobalParameterDomain) return PARAM_GLOBAL;
  if (mDomain == myClientID) return PARAM_MINE;
  if (mDomain.empty()) return PARAM_CACHE;
  return mDomain.find('_') != std::string::npos ? PARAM_OTHER : PARAM_GROUP;
}

template <class T>
void Parameter::SetField(T ParameterData::*Field, const T& NewValue, ParameterProperty Bit) {
  if (!pData) return;
  {
    const std::lock_guard lock(pData->mFieldsMutex);
    T& field = (*pData).*Field;
    if (field == NewValue) return;
    field = NewValue;
  }
  Report(Bit);
}

void Parameter::SetCaption(const std::string& caption) { SetField(&ParameterData::caption, caption, CAPTION); }

void Parameter::SetDescription(const std::string& description) {
  SetField(&ParameterData::description, description, DESCRIPTION);
}

void Parameter::SetRestrictions(int64_t restrictions) {
  SetField(&ParameterData::restrictions, restrictions, RESTRICTION);
}

void Parameter::SetLimits(const std::string& limits) {
  if (pData) pData->SetLimits(limits);
}

bool Parameter::IsValueOK(const std::string& value) const {
  if (!pData) return true;
  const std::lock_guard lock(pData->mFieldsMutex);
  return Satisfies(pData->mLimits, value);
}

void Parameter::BeginEdit() {
  if (mFrozen) return;
  if (mIsInEdit++ == 0 && pData) pData->BeginEdit();
}

int Parameter::EndEdit() {
  if (mFrozen) return 0;
  const int left = --mIsInEdit;
  if (left < 0) {
    mIsInEdit = 0;
  } else if (left == 0 && pData) {
    const std::shared_ptr<ParameterData> data = pData;
    const int changes = data->EndEdit();
    mChangesRelativeToDB |= changes;
    return changes;
  }
  return 0;
}

int Parameter::InEdit(const std::function<void()>& changes) {
  BeginEdit();
  try {
    changes();
  } catch (...) {
    EndEdit();
    throw;
  }
  return EndEdit();
}

void Parameter::UpdateOldValue() {
  if (pData) SetField(&ParameterData::oldValue, Value(), OLD_VALUE);
  mChangesRelativeToDB = NONE;
}

void Parameter::Reset() {
  if (pData) SetValue(std::string(pData->oldValue));
  mChangesRelativeToDB = NONE;
}

}  // namespace vendelo_sdl2
