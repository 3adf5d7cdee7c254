#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "common/ThreadSafeProperty.h"

namespace vendelo_sdl2 {

// The kinds of owner of a value; bits, so that a mask stands for several.
enum ParameterDomain {
  PARAM_CACHE = 1,   // raw domain empty
  PARAM_GLOBAL = 2,  // "GLOBAL"
  PARAM_GROUP = 4,   // a name without an underscore
  PARAM_MINE = 8,    // this client's identifier
  PARAM_OTHER = 16   // a name with an underscore
};

// Flags of a value.
enum ParameterRestrictions {
  RESTRICTION_NONE = 0,
  RESTRICTION_UNEDITABLE = 1,
  RESTRICTION_RAM_CLEAR = 2,
  RESTRICTION_LOGIC_DOOR = 4,
  RESTRICTION_HIDDEN = 1024,
  RESTRICTION_ALL = 1031
};

// Is told of changes of a ParameterData on the thread that made them. Not owned by it and never deleted through
// this class.
class ParamChangeListener {
 public:
  // Change bits.
  enum ParameterProperty {
    NONE = 0,
    VALUE = 1,
    CAPTION = 2,
    DESCRIPTION = 4,
    RESTRICTION = 8,
    OLD_VALUE = 16,
    ALL = 31
  };

  virtual void OnValueChanged(int changes);

 protected:
  ~ParamChangeListener() = default;
};

// A parsed limit expression: blocks of a comparator (= <= < >= >) and an argument (an unsigned number or a text in
// double quotes), separated by '|'. Any thread on its own copy. A bad block is dropped with one line on standard
// output; the others count.
class ParameterLimits {
 public:
  struct Limit {
    enum LimitType { UNDEFINED, STRING, INTEGER, FLOAT };
    // Built from the bits EQUAL, MIN and MAX.
    enum Compare { EQUAL = 1, MIN = 2, MAX = 4, MIN_INCLUSIVE = 3, MAX_INCLUSIVE = 5 };

    LimitType Type;
    std::string Value;
    Compare CompareType;
  };

  ParameterLimits();
  ParameterLimits(const std::string& limits);

  bool HasAnyLimits() const { return !mLimits.empty(); }
  const std::string& OriginalString() const { return mOriginalString; }
  // The value itself when it satisfies the limits, otherwise the nearest value that does: the first equality, or
  // the bound that it breaks, as a text with six decimals. A strict bound alone never refuses. Throws what
  // std::stol and std::stod throw for a number out of range.
  std::string Check(const std::string& value) const;
  bool SatisfiesLimit(const std::string& value) const { return Check(value) == value; }

 private:
  void ParseBlock(const std::string& Block, size_t& Equalities);

  std::string mOriginalString;
  std::vector<Limit> mLimits;
  bool mOnlyEquals = false;
};

extern const ParameterLimits& NoLimit;
constexpr char LimitSeparator = '|';

// INTEGER for digits only; FLOAT for digits with one '.' or ',' that is not the first character; else UNDEFINED.
ParameterLimits::Limit::LimitType isIntOrDouble(const std::string& text);

// The value that parameters share. Lives as long as one Parameter holds it. The list of listeners has a lock, and
// so have the fields; no listener is called with the latter held.
class ParameterData {
 public:
  ParameterData();
  ParameterData(const ParameterData&) = delete;
  ParameterData& operator=(const ParameterData&) = delete;
  virtual ~ParameterData();

  void AddListener(ParamChangeListener* pListener);
  void RemoveListener(ParamChangeListener* pListener);
  // Tells every listener, or within an edit collects the bits. Listeners may come and go during it; one that has
  // gone is not called any more.
  void Changed(int changes);
  void BeginEdit();
  // Ends the edit, reports and returns what it collected. Without an edit (it was begun on other data, or has been
  // ended through another handle on this one) that is -1: nobody knows what changed, so everything may have.
  int EndEdit();
  // The bits of what differs in value, caption, description and restrictions.
  int Compare(const ParameterData& other) const;
  const ParameterLimits& Limits() const { return mLimits; }
  void SetLimits(const ParameterLimits& limits);
  void SetLimits(const std::string& limits);
  // Living instances.
  static int GetNumInstances() { return mNumInstances; }

 private:
  friend class Parameter;
  struct TReport;

  ThreadSafeProperty<std::vector<ParamChangeListener*>> mListeners;
  std::vector<TReport*> mReports;            // under the lock of mListeners
  std::atomic<int> mAccumulatedChanges{-1};  // -1 outside an edit
  static std::atomic<int> mNumInstances;
  mutable std::mutex mFieldsMutex;  // guards what follows
  ParameterLimits mLimits;
  std::string oldValue;
  std::string value;
  std::string caption;
  std::string description;
  int64_t restrictions = RESTRICTION_NONE;
};

// A handle on a shared value, kept as text, with the raw domain that owns it. Null until it gets data; all readers
// are safe on a null parameter. A copy shares the data.
//
// Once it has data, any thread may write it and read its value, numbers and restrictions, also through several
// handles at once, also while the handle takes other data. To give it other data, and the references that Caption,
// Description, OldValue and Limits return, belong to one thread: the owner of the parameter store, or whoever
// holds a TAppParam's lock.
class Parameter : public ParamChangeListener {
 public:
  Parameter();
  explicit Parameter(const std::string& Domain);
  Parameter(const Parameter& other);
  Parameter& operator=(const Parameter& other);

  void OnValueChanged(int changes) override;
  virtual ~Parameter();
  virtual bool IsNull() const;
  // Stores the text unless it equals the present one or breaks the limits, which is refused without a trace.
  virtual void SetValue(const std::string& value);

  // Takes other data (null leaves the parameter null); returns the bits of what changed.
  int SetData(const std::shared_ptr<ParameterData>& newData);
  // Shares the other's data.
  int StealFrom(const Parameter& other);
  // Copies the other's content into its own data, in one edit.
  int CopyFrom(const Parameter& other);
  // Gives a null parameter empty data, without a report.
  void Instantiate();
  // Lets go of the data.
  void Clear();

  std::string Value() const;
  std::string AsString() const { return Value(); }
  const std::string& Caption() const;
  const std::string& Description() const;
  const std::string& OldValue() const;
  int64_t Restrictions() const;
  const ParameterLimits& Limits() const;
  int64_t IsRestricted(int64_t mask) const { return Restrictions() & mask; }
  // Whether the value differs from the one that was last taken over as saved.
  bool Modified() const;

  // The default for an empty value; 0 for a text that is no number; trailing text is ignored.
  long AsInteger(long defaultValue) const;
  // The default for an empty value and for a text that is no number. Passes through single precision.
  double AsFloat(double defaultValue) const;
  // An empty value is both.
  bool IsInteger() const;
  bool IsDouble() const;

  ParameterDomain Domain(const std::string& myClientID) const;
  const std::string& GetRawDomain() const { return mDomain; }

  // These do nothing on a null parameter.
  void SetCaption(const std::string& caption);
  void SetDescription(const std::string& description);
  void SetRestrictions(int64_t restrictions);
  void SetLimits(const std::string& limits);

  bool IsValueOK(const std::string& value) const;
  // From the outermost BeginEdit to its EndEdit the changes are collected and reported once. EndEdit returns them;
  // 0 for an inner one and for one too many. Where other data came in between, it returns and reports -1.
  void BeginEdit();
  int EndEdit();
  // Calls the function within an edit, which ends also when it throws; returns what EndEdit does.
  int InEdit(const std::function<void()>& changes);
  // Change bits since the last save.
  int Changes() const { return mChangesRelativeToDB; }
  // Takes the value over as saved.
  void UpdateOldValue();
  // Goes back to the saved value.
  void Reset();

 protected:
  // Makes all writers do nothing from here on.
  void Freeze() { mFrozen = true; }

  std::string mDomain;
  std::atomic<int> mIsInEdit{0};
  std::atomic<int> mChangesRelativeToDB{0};
  static const std::string& EmptyStr;
  // The data of now, to be kept for as long as it is used; null on a null parameter.
  std::shared_ptr<ParameterData> Data() const;

  std::shared_ptr<ParameterData> pData;  // under mDataMutex, but for the constructors and destructors

 public:
  static const std::string& GlobalParameterDomain;

 private:
  // Returns what it had.
  std::shared_ptr<ParameterData> Exchange(std::shared_ptr<ParameterData> newData);
  void Report(int changes);
  // Stores a field of the data; reports the bit if that changed it.
  template <class T>
  void SetField(T ParameterData::*Field, const T& NewValue, ParameterProperty Bit);

  bool mFrozen = false;
  mutable std::mutex mDataMutex;
};

}  // namespace vendelo_sdl2
