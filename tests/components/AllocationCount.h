#pragma once

#include <atomic>
#include <cstdlib>
#include <new>

// Counts what the C++ side of a test program takes from the heap. Include it in one file of the program only. The
// operators are kept out of line: inlined, the compiler takes their malloc and free for a mismatch with new.
namespace allocations {
inline std::atomic<long> count{0};
}

[[gnu::noinline]] void* operator new(std::size_t size) {
  ++allocations::count;
  if (void* memory = std::malloc(size ? size : 1)) return memory;
  throw std::bad_alloc();
}
[[gnu::noinline]] void* operator new[](std::size_t size) { return operator new(size); }
[[gnu::noinline]] void operator delete(void* memory) noexcept { std::free(memory); }
[[gnu::noinline]] void operator delete[](void* memory) noexcept { std::free(memory); }
[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
[[gnu::noinline]] void operator delete[](void* memory, std::size_t) noexcept { std::free(memory); }
