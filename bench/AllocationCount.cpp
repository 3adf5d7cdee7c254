#include "bench/AllocationCount.h"

#include <cstddef>
#include <cstdlib>
#include <new>

extern "C" {
void* __libc_malloc(size_t);
void* __libc_calloc(size_t, size_t);
void* __libc_realloc(void*, size_t);

static thread_local long allocations __attribute__((tls_model("initial-exec"))) = 0;

void* malloc(size_t size) {
  ++allocations;
  return __libc_malloc(size);
}
void* calloc(size_t count, size_t size) {
  ++allocations;
  return __libc_calloc(count, size);
}
void* realloc(void* block, size_t size) {
  ++allocations;
  return __libc_realloc(block, size);
}
}

static thread_local long news __attribute__((tls_model("initial-exec"))) = 0;

void* operator new(size_t size) {
  ++news;
  if (void* block = malloc(size)) return block;
  throw std::bad_alloc();
}
void* operator new[](size_t size) { return operator new(size); }
void operator delete(void* block) noexcept { std::free(block); }
void operator delete[](void* block) noexcept { std::free(block); }
void operator delete(void* block, size_t) noexcept { std::free(block); }
void operator delete[](void* block, size_t) noexcept { std::free(block); }

long allocationsOfThisThread() { return allocations; }
long newsOfThisThread() { return news; }
