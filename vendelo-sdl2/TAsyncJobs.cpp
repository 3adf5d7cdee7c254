#include "vendelo-sdl2/TAsyncJobs.h"

#include <chrono>
#include <condition_variable>
#include <mutex>

namespace vendelo_sdl2 {

namespace {

// Immortal: a detached thread may end while static objects are destroyed.
struct TJobCount {
  std::mutex Mutex;
  std::condition_variable Changed;
  int Running = 0;  // under Mutex
};

TJobCount& Jobs() {
  static TJobCount& count = *new TJobCount;
  return count;
}

}  // namespace

TAsyncJob::TAsyncJob() {
  std::lock_guard<std::mutex> lock(Jobs().Mutex);
  ++Jobs().Running;
}

TAsyncJob::~TAsyncJob() {
  std::lock_guard<std::mutex> lock(Jobs().Mutex);
  if (--Jobs().Running == 0) Jobs().Changed.notify_all();
}

int TAsyncJob::Running() {
  std::lock_guard<std::mutex> lock(Jobs().Mutex);
  return Jobs().Running;
}

bool TAsyncJob::WaitForNone(Uint32 TimeoutMs) {
  std::unique_lock<std::mutex> lock(Jobs().Mutex);
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(TimeoutMs);
  return Jobs().Changed.wait_until(lock, deadline, [] { return Jobs().Running == 0; });
}

}  // namespace vendelo_sdl2
