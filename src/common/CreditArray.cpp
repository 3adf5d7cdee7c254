#include "common/CreditArray.h"

#include <algorithm>
#include <limits>

namespace credit {

namespace {

using Wide = __int128;

constexpr int64_t kSmallest = std::numeric_limits<int64_t>::min();
constexpr int64_t kLargest = std::numeric_limits<int64_t>::max();

int64_t intoRange(Wide value) { return static_cast<int64_t>(std::clamp<Wide>(value, kSmallest, kLargest)); }

// The index of one kind; refuses what is none.
size_t indexOfKind(int type) {
  if (type < CREDIT_NON_RESTRICTED || type >= CREDIT_ALL) throw CreditError("No such credit type");
  return static_cast<size_t>(type);
}

}  // namespace

const CreditArray CreditArray::ZeroCredits;

CreditArray::CreditArray() { Clear(); }

CreditArray::CreditArray(const std::array<long, 6>& amounts) : std::array<long, 6>(amounts) {}

CreditArray::CreditArray(CreditType type, int64_t amount) {
  if (type == CREDIT_ALL) {
    fill(amount);
    return;
  }
  Clear();
  at(indexOfKind(type)) = amount;
}

long CreditArray::operator[](int type) const { return type == CREDIT_ALL ? Total() : at(indexOfKind(type)); }

long CreditArray::operator[](CreditType type) const { return (*this)[static_cast<int>(type)]; }

long& CreditArray::operator[](int type) {
  if (type == CREDIT_ALL) throw CreditError("Cannot alter the sum of all credits!");
  return at(indexOfKind(type));
}

long& CreditArray::operator[](CreditType type) { return (*this)[static_cast<int>(type)]; }

int64_t CreditArray::Total() const {
  Wide sum = 0;
  for (const long amount : *this) sum += amount;
  return intoRange(sum);
}

void CreditArray::Clear() { fill(0); }

void CreditArray::ClearMin() { fill(-1); }

void CreditArray::ClearMax() { fill(kLargest); }

CreditArray& CreditArray::operator+=(const CreditArray& other) {
  for (size_t kind = 0; kind < size(); ++kind) at(kind) = intoRange(Wide{at(kind)} + other.at(kind));
  return *this;
}

CreditArray& CreditArray::operator-=(const CreditArray& other) {
  for (size_t kind = 0; kind < size(); ++kind) at(kind) = intoRange(Wide{at(kind)} - other.at(kind));
  return *this;
}

CreditArray CreditArray::operator-() const { return ZeroCredits - *this; }

bool CreditArray::operator==(const CreditArray& other) const { return std::equal(begin(), end(), other.begin()); }

bool CreditArray::operator!=(const CreditArray& other) const { return !(*this == other); }

bool CreditArray::Covers(const CreditArray& other) const {
  return std::equal(begin(), end(), other.begin(), [](long mine, long theirs) { return mine >= theirs; });
}

bool CreditArray::operator>=(const CreditArray& other) const { return Covers(other); }

bool CreditArray::operator<=(const CreditArray& other) const { return other.Covers(*this); }

bool CreditArray::operator<(const CreditArray& other) const { return *this <= other && Total() < other.Total(); }

bool CreditArray::operator>(const CreditArray& other) const { return *this >= other && Total() > other.Total(); }

bool CreditArray::IsStrictlyPositive(bool orZero) const {
  return std::none_of(begin(), end(), [](long amount) { return amount < 0; }) && (orZero || Total() >= 1);
}

bool CreditArray::IsStrictlyNegative(bool orZero) const {
  return std::none_of(begin(), end(), [](long amount) { return amount > 0; }) && (orZero || Total() < 0);
}

void CreditArray::ZeroOutNegative() {
  for (long& amount : *this) amount = std::max(amount, 0L);
}

bool CreditArray::IsEmpty() const { return *this == ZeroCredits; }

bool CreditArray::IsZero() const { return Total() == 0; }

CreditArray CreditArray::MakeBet(uint64_t bet) const {
  CreditArray taken;
  uint64_t paid = 0;
  for (const CreditType kind : {CREDIT_RESTRICTED, CREDIT_NON_RESTRICTED, CREDIT_CASHABLE}) {
    if (paid >= bet) break;
    // A kind in the red pays nothing.
    const long held = std::max((*this)[kind], 0L);
    const uint64_t amount = std::min(bet - paid, static_cast<uint64_t>(held));
    taken[kind] = static_cast<long>(amount);
    paid += amount;
  }
  return taken;
}

CreditArray operator+(const CreditArray& a, const CreditArray& b) { return CreditArray(a) += b; }

CreditArray operator-(const CreditArray& a, const CreditArray& b) { return CreditArray(a) -= b; }

}  // namespace credit
