#include <algorithm>
#include <cmath>
#include <cstring>
#include <sstream>

#include "vendelo-sdl2/MyUtils.h"

namespace MyUtils {

char decimal_separator = ',';
char thousand_separator = '.';
char thousand_grouping[4] = {3, 0, 0, 0};
std::string& baseLocaleName = *new std::string;

// One reference is kept by us, so that no locale deletes the facet.
myseparators& separators = *new myseparators(1);
std::locale& user_locale = *new std::locale(std::locale::classic(), &separators);

myseparators::myseparators(size_t references) : std::numpunct<char>(references) {}

char myseparators::do_decimal_point() const { return decimal_separator; }

char myseparators::do_thousands_sep() const { return thousand_separator; }

std::string myseparators::do_grouping() const {
  return std::string(thousand_grouping, strnlen(thousand_grouping, sizeof thousand_grouping));
}

void UpdateLocale(const std::string& baseLocale) {
  baseLocaleName = baseLocale;
  user_locale = std::locale(std::locale(baseLocale), &separators);
  std::locale::global(user_locale);
}

std::string int2str(int64_t val) {
  std::ostringstream stream;
  stream << val;
  return stream.str();
}

std::string double2string(double value) {
  std::ostringstream stream;
  stream.precision(12);
  stream << value;
  return stream.str();
}

static std::string fixedIn(const std::locale& locale, double value, int precision) {
  std::ostringstream stream;
  stream.imbue(locale);
  stream.setf(std::ios::fixed, std::ios::floatfield);
  // No double has more decimals than that. The library takes room for all that are asked for, on the stack.
  stream.precision(std::min(precision, 1074));
  stream << value;
  return stream.str();
}

std::string currency2string(double value, int precision) {
  // A locale remembers the separators that it saw first; a fresh one asks the facet anew.
  return fixedIn(std::locale(user_locale, &separators), value, precision);
}

std::string itos(long val) {
  std::ostringstream stream;
  stream.imbue(std::locale::classic());
  stream << val;
  return stream.str();
}

std::string dtos(double value, int precision) { return fixedIn(std::locale::classic(), value, precision); }

void itoa(long val, char* Result, int base) {
  if (!Result) return;
  *Result = '\0';
  if (base < 2) return;
  constexpr int kMaxDigits = 30;
  char buffer[kMaxDigits + 2] = "";
  int at = kMaxDigits + 1;
  auto rest = static_cast<unsigned long>(val);
  if (val < 0) rest = 0 - rest;
  do {
    buffer[--at] = "0123456789abcdef"[std::min(rest % static_cast<unsigned long>(base), 15ul)];
    rest /= static_cast<unsigned long>(base);
  } while (rest && at > 1);
  if (val < 0) buffer[--at] = '-';
  std::strcpy(Result, buffer + at);
}

char* itoa(long val, int base) {
  static char buffer[32];
  itoa(val, buffer, base);
  return buffer;
}

char* itoa4(int64_t value, char* result, int base) {
  if (!result) return nullptr;
  char* end = result;
  if (base >= 2 && base <= 36) {
    // The digits of negative remainders stand left of the 0.
    static constexpr char kDigits[] = "zyxwvutsrqponmlkjihgfedcba9876543210123456789abcdefghijklmnopqrstuvwxyz";
    int64_t rest = value;
    do {
      *end++ = kDigits[35 + rest % base];
      rest /= base;
    } while (rest);
    if (value < 0) *end++ = '-';
    std::reverse(result, end);
  }
  *end = '\0';
  return result;
}

float lerp(float start, float end, float amnt) { return start + (end - start) * amnt; }

double round(double n, unsigned int d) {
  const double factor = std::pow(10.0, d);
  return std::floor(n * factor + 0.5) / factor;
}

}  // namespace MyUtils
