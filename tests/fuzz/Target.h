#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

// One target is one file <Name>_fuzz.cpp with this function. It reads the bytes as the program reads what comes
// from outside, and harm is a crash or what a sanitizer reports. It is called again and again in one process, on
// one thread, and leaves nothing behind that changes what the next bytes do. script/fuzz links it with libFuzzer,
// the tests with Corpus_test.cpp.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace fuzz {

inline std::string textOf(const uint8_t* data, size_t size) {
  return size == 0 ? std::string() : std::string(reinterpret_cast<const char*>(data), size);
}

// Ends the process with the reason where a promise of a function was broken.
inline void require(bool kept, const char* promise) {
  if (kept) return;
  std::fprintf(stderr, "broken promise: %s\n", promise);
  std::abort();
}

// Deals out the bytes as numbers and texts; zeros and empty texts when there are no more.
class Bytes {
 public:
  Bytes(const uint8_t* data, size_t size) : mData(data), mLeft(size) {}

  bool empty() const { return mLeft == 0; }

  uint8_t byte() {
    if (mLeft == 0) return 0;
    --mLeft;
    return *mData++;
  }

  // From 0 to least - 1.
  size_t below(size_t least) { return byte() % least; }

  // A number of every size: small ones and those at the ends of the ranges as often as any other.
  int64_t number() {
    const size_t length = below(9);
    uint64_t bits = 0;
    for (size_t n = 0; n < length; ++n) bits = bits << 8 | byte();
    if (length == 0) return 0;
    const unsigned unused = 64 - 8 * static_cast<unsigned>(length);
    return static_cast<int64_t>(bits << unused) >> unused;
  }

  // Up to the next byte 0xFF, which stands in no UTF-8.
  std::string text() {
    std::string all;
    while (mLeft > 0) {
      const uint8_t next = byte();
      if (next == 0xFF) break;
      all += static_cast<char>(next);
    }
    return all;
  }

 private:
  const uint8_t* mData;
  size_t mLeft;
};

}  // namespace fuzz
