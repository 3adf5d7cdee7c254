#include "bench/AllocationCount.h"

#include <cstddef>

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

long allocationsOfThisThread() { return allocations; }
