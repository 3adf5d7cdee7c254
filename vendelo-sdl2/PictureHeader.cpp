#include "vendelo-sdl2/PictureHeader.h"

#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>

namespace MyUtils {
namespace {

// 16384 by 16384, the largest texture of common renderers: 1 GiB.
constexpr uint64_t kMaxPixels = uint64_t{1} << 28;
// So much is at hand for whatever a header says: 64 MiB.
constexpr uint64_t kOrdinaryPixels = uint64_t{1} << 24;

// Deflate makes at most 1032 bytes of one.
constexpr uint64_t kDeflateRatio = 1032;
// A block of at least eight by eight pixels costs a bit or more; four times as much for odd samplings.
constexpr uint64_t kJpegPixelsPerByte = uint64_t{8} * 64 * 4;

uint32_t number(const unsigned char* bytes, int size) {
  uint32_t value = 0;
  for (int i = 0; i < size; ++i) value = value << 8 | bytes[i];
  return value;
}

bool tooMany(uint64_t pixels, uint64_t bytesNeeded, uint64_t bytesThere) {
  return pixels > kMaxPixels || (pixels > kOrdinaryPixels && bytesNeeded > bytesThere);
}

bool pngPromisesTooMany(std::ifstream& file, uint64_t length) {
  unsigned char head[26];  // signature, chunk head, width, height, depth, colour type
  if (!file.read(reinterpret_cast<char*>(head), sizeof head)) return false;
  const uint64_t pixels = uint64_t{number(head + 16, 4)} * number(head + 20, 4);
  const unsigned char type = head[25];
  const uint64_t channels = type == 2 ? 3 : type == 4 ? 2 : type == 6 ? 4 : 1;
  // Divided first: the product of hostile numbers does not fit.
  return tooMany(pixels, pixels / 8 / kDeflateRatio * channels * head[24], length);
}

bool jpegPromisesTooMany(std::ifstream& file, uint64_t length) {
  unsigned char head[9];  // marker, length, depth, height, width
  // Each step goes forwards, to the next marker; the first follows the two bytes of the beginning.
  for (uint64_t at = 2; at + sizeof head <= length; at += 2 + number(head + 2, 2)) {
    file.seekg(static_cast<std::streamoff>(at));
    if (!file.read(reinterpret_cast<char*>(head), sizeof head) || head[0] != 0xff) return false;
    const unsigned char marker = head[1];
    const bool frame = marker >= 0xc0 && marker <= 0xcf && marker != 0xc4 && marker != 0xc8 && marker != 0xcc;
    if (marker == 0xda) return false;
    if (!frame) continue;
    const uint64_t pixels = uint64_t{number(head + 5, 2)} * number(head + 7, 2);
    const bool arithmetic = marker > 0xc8;  // there a block may cost nearly nothing
    return tooMany(pixels, arithmetic ? 0 : pixels / kJpegPixelsPerByte, length);
  }
  return false;
}

}  // namespace

bool PromisesTooManyPixels(const std::string& path) {
  std::error_code ignored;
  // A pipe or a device is left to the decoder: what was read here would be missing there.
  if (!std::filesystem::is_regular_file(path, ignored)) return false;
  std::ifstream file(path, std::ios::binary | std::ios::ate);
  const std::streamoff length = file.tellg();
  char start[8];
  if (length < 0 || !file.seekg(0) || !file.read(start, sizeof start) || !file.seekg(0)) return false;
  if (!std::memcmp(start, "\x89PNG\r\n\x1a\n", 8)) return pngPromisesTooMany(file, static_cast<uint64_t>(length));
  if (!std::memcmp(start, "\xff\xd8", 2)) return jpegPromisesTooMany(file, static_cast<uint64_t>(length));
  return false;
}

}  // namespace MyUtils
