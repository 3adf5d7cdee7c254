#pragma once

#include <array>
#include <cstdint>
#include <stdexcept>

namespace credit {

enum CreditType : int {
  CREDIT_NON_RESTRICTED = 0,
  CREDIT_RESTRICTED = 1,
  CREDIT_CASHABLE = 2,
  CREDIT_FICHAS = 3,
  CREDIT_RESERVA = 4,
  CREDIT_BANCO = 5,
  CREDIT_ALL = 6
};

// Thrown for a kind of credit that does not exist or that cannot be written.
class CreditError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// An amount of money split by kind of credit, in the smallest unit; a plain value without a lock. Sums that leave
// the range of 64 bits stay at its end.
class CreditArray : public std::array<long, 6> {
 public:
  static const CreditArray ZeroCredits;

  CreditArray();
  CreditArray(const std::array<long, 6>& amounts);

  // Sets one kind, or with CREDIT_ALL every kind, to the amount. Another type throws CreditError.
  CreditArray(CreditType type, int64_t amount);

  // Reading CREDIT_ALL gives Total(); it cannot be written. A number outside 0 to 6 throws CreditError.
  long operator[](int type) const;
  long operator[](CreditType type) const;
  long& operator[](int type);
  long& operator[](CreditType type);

  int64_t Total() const;
  void Clear();
  void ClearMin();
  void ClearMax();

  CreditArray& operator+=(const CreditArray& other);
  CreditArray& operator-=(const CreditArray& other);
  CreditArray operator-() const;

  bool operator==(const CreditArray& other) const;
  bool operator!=(const CreditArray& other) const;

  // Every kind at least as large as in the other: a partial order, on which the comparisons below stand.
  bool Covers(const CreditArray& other) const;
  bool operator>=(const CreditArray& other) const;
  bool operator<=(const CreditArray& other) const;
  bool operator<(const CreditArray& other) const;
  bool operator>(const CreditArray& other) const;

  // No kind negative (positive), and unless orZero a sum of at least 1 (below 0).
  bool IsStrictlyPositive(bool orZero) const;
  bool IsStrictlyNegative(bool orZero) const;

  void ZeroOutNegative();

  // All kinds are 0; a sum of 0 is another thing, see IsZero.
  bool IsEmpty() const;
  bool IsZero() const;

  // From which kinds a bet is paid: restricted, then non-restricted, then cashable. The result can fall short of
  // the bet.
  CreditArray MakeBet(uint64_t bet) const;
};

CreditArray operator+(const CreditArray& a, const CreditArray& b);
CreditArray operator-(const CreditArray& a, const CreditArray& b);

}  // namespace credit
