#include "vendelo-sdl2/MyUtils.h"

namespace MyUtils {

int utf8_strlen(char chr) {
  const auto byte = static_cast<unsigned char>(chr);
  if (byte < 0x80) return 1;
  if ((byte & 0xe0) == 0xc0) return 2;
  if ((byte & 0xf0) == 0xe0) return 3;
  if ((byte & 0xf8) == 0xf0) return 4;
  if ((byte & 0xfc) == 0xf8) return 5;
  if ((byte & 0xfe) == 0xfc) return 6;
  return 0;
}

int GetUTF8CodePoint(const char* u, const char** end) {
  if (!u) {
    if (end) *end = nullptr;
    return -1;
  }
  const int length = utf8_strlen(*u);
  if (end) *end = u + length;
  if (length < 1) return -1;
  const auto byte = [u](int i) { return static_cast<int>(static_cast<unsigned char>(u[i])); };
  // The text can end in the middle of a sequence: nothing behind its zero is read.
  for (int i = 1; i < length; ++i)
    if (u[i] == '\0') return -1;
  const int first = byte(0);
  if (first < 128) return first;
  if (first < 224) return (first - 192) * 64 + (byte(1) - 128);
  if (first == 237 && (byte(1) & 0xa0) == 0xa0) return -1;  // surrogates
  if (first < 240) return (first - 224) * 4096 + (byte(1) - 128) * 64 + (byte(2) - 128);
  if (first < 248) return (first - 240) * 262144 + (byte(1) - 128) * 4096 + (byte(2) - 128) * 64 + (byte(3) - 128);
  return -1;
}

}  // namespace MyUtils
