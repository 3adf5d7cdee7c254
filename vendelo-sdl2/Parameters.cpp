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

// One Changed() under way, over the listeners that there were at its start.
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
  const int changes = mAccumulatedChanges.exchange(-1);
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
  : ParamChangeListener(), mDomain(other.mDomain), mIsInEdit(other.mIsInEdit.load()), pData(other.Data()) {
  if (pData) pData->AddListener(this);
}

Parameter& Parameter::operator=(const Parameter& other) {
  if (this == &other || mFrozen) return *this;
  SetData(other.Data());
  mDomain = other.mDomain;
  mIsInEdit = other.mIsInEdit.load();
  return *this;
}

Parameter::~Parameter() {
  if (pData) pData->RemoveListener(this);
}

void Parameter::OnValueChanged(int /*changes*/) {}

bool Parameter::IsNull() const { return Data() == nullptr; }

std::shared_ptr<ParameterData> Parameter::Data() const {
  const std::lock_guard lock(mDataMutex);
  return pData;
}

std::shared_ptr<ParameterData> Parameter::Exchange(std::shared_ptr<ParameterData> newData) {
  const std::lock_guard lock(mDataMutex);
  return std::exchange(pData, std::move(newData));
}

void Parameter::Report(int changes) {
  // A listener may make this parameter take other data.
  if (const auto data = Data()) data->Changed(changes);
  mChangesRelativeToDB |= changes;
}

void Parameter::SetValue(const std::string& value) {
  if (mFrozen) return;
  int changes = NONE;
  const bool first = !Data();
  if (first) Instantiate();
  if (const auto data = Data()) {
    const std::lock_guard lock(data->mFieldsMutex);
    if (first) {
      data->value = value;
      data->oldValue = value;
      changes = ALL;
    } else if (data->value != value && Satisfies(data->mLimits, value)) {
      data->value = value;
      changes = VALUE;
    }
  }
  Report(changes);
}

int Parameter::SetData(const std::shared_ptr<ParameterData>& newData) {
  if (mFrozen || newData == Data()) return 0;
  const std::shared_ptr<ParameterData> data = newData;
  if (mIsInEdit > 0) {
    if (const auto oldData = Data())
      oldData->EndEdit();
    else
      data->BeginEdit();
  }
  const auto oldData = Exchange(data);
  const int changes = oldData && data ? oldData->Compare(*data) : static_cast<int>(ALL);
  if (oldData) oldData->RemoveListener(this);
  if (data) data->AddListener(this);
  Report(changes);
  return changes;
}

int Parameter::StealFrom(const Parameter& other) { return SetData(other.Data()); }

int Parameter::CopyFrom(const Parameter& other) {
  if (mFrozen) return 0;
  // Held, as the copy may share its data with the other one and a listener may let that go.
  const std::shared_ptr<ParameterData> source = other.Data();
  return InEdit([&] {
    SetValue(other.Value());
    SetDescription(other.Description());
    SetCaption(other.Caption());
    SetRestrictions(other.Restrictions());
    if (const auto data = Data()) data->SetLimits(other.Limits());
  });
}

void Parameter::Instantiate() {
  if (Data() || mFrozen) return;
  const auto data = std::make_shared<ParameterData>();
  if (mIsInEdit > 0) data->BeginEdit();
  Exchange(data);
  data->AddListener(this);
}

void Parameter::Clear() { SetData(nullptr); }

std::string Parameter::Value() const {
  const auto data = Data();
  if (!data) return EmptyStr;
  const std::lock_guard lock(data->mFieldsMutex);
  return data->value;
}

const std::string& Parameter::Caption() const {
  const auto data = Data();
  return data ? data->caption : EmptyStr;
}

const std::string& Parameter::Description() const {
  const auto data = Data();
  return data ? data->description : EmptyStr;
}

const std::string& Parameter::OldValue() const {
  const auto data = Data();
  return data ? data->oldValue : EmptyStr;
}

int64_t Parameter::Restrictions() const {
  const auto data = Data();
  if (!data) return RESTRICTION_NONE;
  const std::lock_guard lock(data->mFieldsMutex);
  return data->restrictions;
}

const ParameterLimits& Parameter::Limits() const {
  const auto data = Data();
  return data ? data->Limits() : NoLimit;
}

bool Parameter::Modified() const {
  const auto data = Data();
  if (!data) return false;
  const std::lock_guard lock(data->mFieldsMutex);
  return data->value != data->oldValue;
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
  const auto data = Data();
  if (!data) return;
  {
    const std::lock_guard lock(data->mFieldsMutex);
    T& field = (*data).*Field;
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
  if (const auto data = Data()) data->SetLimits(limits);
}

bool Parameter::IsValueOK(const std::string& value) const {
  const auto data = Data();
  if (!data) return true;
  const std::lock_guard lock(data->mFieldsMutex);
  return Satisfies(data->mLimits, value);
}

void Parameter::BeginEdit() {
  if (mFrozen) return;
  if (mIsInEdit++ > 0) return;
  if (const auto data = Data()) data->BeginEdit();
}

int Parameter::EndEdit() {
  if (mFrozen) return 0;
  const int left = --mIsInEdit;
  if (left < 0) {
    mIsInEdit = 0;
  } else if (const auto data = Data(); left == 0 && data) {
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
  if (Data()) SetField(&ParameterData::oldValue, Value(), OLD_VALUE);
  mChangesRelativeToDB = NONE;
}

void Parameter::Reset() {
  if (const auto data = Data()) {
    std::string saved;
    {
      const std::lock_guard lock(data->mFieldsMutex);
      saved = data->oldValue;
    }
    SetValue(saved);
  }
  mChangesRelativeToDB = NONE;
}

}  // namespace vendelo_sdl2
