#include <algorithm>
#include <cstring>

#include "vendelo-sdl2/MyUtils.h"

namespace MyUtils {

namespace {

bool isControl(char c) {
  const auto byte = static_cast<unsigned char>(c);
  return byte < 32 || byte == 127;
}

// Whether the character may stand in an address outside quotes.
bool isAddressCharacter(char c) { return !isControl(c) && c != ' ' && !std::strchr("()<>@,;:\\\"[]", c); }

// Walks over the quoted segment that begins at c; returns its closing quote, or null when there is none. A blank
// behind a backslash may stand there as any blank may.
const char* skipQuoted(const char* c) {
  for (++c; *c; ++c) {
    if (*c == '"') return c;
    if (isControl(*c)) return nullptr;
  }
  return nullptr;
}

// The '@' behind a good local part, or null.
const char* skipLocalPart(const char* address) {
  const char* c = address;
  for (; *c && *c != '@'; ++c) {
    if (*c == '"' && (c == address || c[-1] == '.' || c[-1] == '"')) {
      c = skipQuoted(c);
      if (!c || (c[1] != '@' && c[1] != '.')) return nullptr;
    } else if (!isAddressCharacter(*c)) {
      return nullptr;
    }
  }
  return *c && c != address && c[-1] != '.' ? c : nullptr;
}

bool isDomain(const char* domain) {
  int dots = 0;
  bool emptyLabel = true;
  for (const char* c = domain; *c; ++c) {
    if (*c == '.') {
      if (emptyLabel) return false;
      ++dots;
      emptyLabel = true;
    } else if (isAddressCharacter(*c)) {
      emptyLabel = false;
    } else {
      return false;
    }
  }
  return dots >= 1 && !emptyLabel;
}

// Of small letters too: what they lie behind the capitals is a multiple of 16.
unsigned nibble(char c) { return static_cast<unsigned>(c > 64 ? c - 'A' + 10 : c - '0') & 0xf; }

}  // namespace

int IsEmailAddressValid(const char* address) {
  if (!address) return 0;
  const char* const at = skipLocalPart(address);
  return at && isDomain(at + 1) ? 1 : 0;
}

int ValidateNumber(char* number, char* only_number) {
  if (!only_number) return 0;
  constexpr int kMaxDigits = 99;
  int count = 0;
  while (number && count < kMaxDigits && number[count] >= '0' && number[count] <= '9') {
    only_number[count] = number[count];
    ++count;
  }
  only_number[count] = '\0';
  return count;
}

unsigned char* ASCIIHexToBinHex(const char* pString, unsigned char* pResult, unsigned int* HexLength) {
  if (!pString || !pResult || !HexLength) return nullptr;
  const size_t length = std::strlen(pString);
  const size_t count = std::min<size_t>((length + 1) / 2, *HexLength);
  for (size_t i = 0; i < count; ++i) {
    const size_t low = length - 1 - 2 * i;
    unsigned value = nibble(pString[low]);
    if (low > 0) value |= nibble(pString[low - 1]) << 4;
    pResult[count - 1 - i] = static_cast<unsigned char>(value);
  }
  *HexLength = static_cast<unsigned>(count);
  return pResult;
}

char* BinHexToASCIIHex(unsigned char* Data, char* pDestination, unsigned int* DataLength) {
  if (!Data || !pDestination || !DataLength) return nullptr;
  char* out = pDestination;
  for (unsigned i = 0; i < *DataLength; ++i) {
    *out++ = "0123456789ABCDEF"[Data[i] >> 4];
    *out++ = "0123456789ABCDEF"[Data[i] & 0xf];
  }
  *out = '\0';
  *DataLength *= 2;
  return pDestination;
}

}  // namespace MyUtils
