#pragma once

#include <SDL.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <new>

#include "tests/support/Mutator.h"

extern "C" void __sanitizer_set_report_fd(void*) __attribute__((weak));

// What the readers of broken files may cost: every request for memory by SDL and by the C++ side is counted, and
// one that no file of a skin justifies is refused and remembered. Include it in one file of a program only.
namespace memory {

constexpr size_t kTooMuch = size_t{300} << 20;

inline std::atomic<size_t> largest{0}, taken{0}, requests{0};

inline bool allowed(size_t size) {
  ++requests;
  taken += size;
  for (size_t old = largest; old < size && !largest.compare_exchange_weak(old, size);) {
  }
  return size <= kTooMuch;
}

inline void forget() { largest = taken = requests = 0; }

inline void* SDLCALL sdlMalloc(size_t size) { return allowed(size) ? std::malloc(size) : nullptr; }
inline void* SDLCALL sdlCalloc(size_t count, size_t size) {
  return allowed(count * size) ? std::calloc(count, size) : nullptr;
}
inline void* SDLCALL sdlRealloc(void* old, size_t size) {
  return allowed(size) ? std::realloc(old, size) : nullptr;
}

}  // namespace memory

[[gnu::noinline]] void* operator new(std::size_t size) {
  void* got = memory::allowed(size) ? std::malloc(size ? size : 1) : nullptr;
  if (!got) throw std::bad_alloc();
  return got;
}
[[gnu::noinline]] void* operator new[](std::size_t size) { return operator new(size); }
[[gnu::noinline]] void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return memory::allowed(size) ? std::malloc(size ? size : 1) : nullptr;
}
[[gnu::noinline]] void operator delete(void* got) noexcept { std::free(got); }
[[gnu::noinline]] void operator delete[](void* got) noexcept { std::free(got); }
[[gnu::noinline]] void operator delete(void* got, std::size_t) noexcept { std::free(got); }
[[gnu::noinline]] void operator delete[](void* got, std::size_t) noexcept { std::free(got); }

// Everything that one broken file costs while an object of this class lives: lines on both outputs, and memory.
// Its end fails the test when that is more than a broken file may cost.
class BrokenFileWatch {
 public:
  explicit BrokenFileWatch(int lines) : mLines(lines) {
    static const bool once = [] {
      // A sanitizer's report must not end in what is captured.
      if (__sanitizer_set_report_fd) __sanitizer_set_report_fd(reinterpret_cast<void*>(long{dup(2)}));
      return SDL_SetMemoryFunctions(memory::sdlMalloc, memory::sdlCalloc, memory::sdlRealloc, std::free) == 0;
    }();
    EXPECT_TRUE(once);
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    memory::forget();
  }
  ~BrokenFileWatch() {
    const size_t largest = memory::largest, taken = memory::taken, requests = memory::requests;
    const std::string told = testing::internal::GetCapturedStdout() + testing::internal::GetCapturedStderr();
    EXPECT_LE(largest, memory::kTooMuch);
    EXPECT_LE(taken, 4 * memory::kTooMuch);
    EXPECT_LE(requests, size_t{500000});
    EXPECT_LE(std::count(told.begin(), told.end(), '\n'), mLines) << told.substr(0, 2000);
  }
  BrokenFileWatch(const BrokenFileWatch&) = delete;
  BrokenFileWatch& operator=(const BrokenFileWatch&) = delete;

 private:
  const int mLines;
};

// How many broken files a test makes; the variable BROKEN_FILES asks for another number.
inline int brokenFiles(int usual) {
  const char* wanted = std::getenv("BROKEN_FILES");
  return wanted ? std::atoi(wanted) : usual;
}
