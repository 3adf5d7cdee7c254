#pragma once

#include <atomic>
#include <functional>
#include <limits>
#include <thread>

namespace vendelo_sdl2 {

// Sees to it that an end which has begun comes to an end: a thread of its own that sleeps until an end begins,
// waits for as long as one may take, and then calls `Expired` with the exit code that is due. That call is made on
// this thread, while all others may hang; it answers whether that was all, and false has the whole time waited for
// again. Made and destroyed on the main thread; the destructor, which is reached when the end has gone well, calls
// it off. Without the thread (the system has none left) ends are not limited.
class TEndLimit {
 public:
  using TExpired = std::function<bool(int Code)>;

  // The signals of the process, but for those of a crash, stay with the other threads.
  explicit TEndLimit(TExpired Expired);
  ~TEndLimit();
  TEndLimit(const TEndLimit&) = delete;
  TEndLimit& operator=(const TEndLimit&) = delete;

  // An end begins that is to give this exit code; nothing when one has begun. Any thread, and signal handlers.
  void Begin(int Code);
  // The same, and it is this code that is due now, also when an end has begun.
  void BeginWith(int Code);

 private:
  void Run();

  TExpired mExpired;
  int mWake;  // an eventfd, written when an end begins and by the destructor
  std::atomic<bool> mCalledOff{false};
  std::atomic<int> mCode{kNoEnd};
  std::thread mThread;

  static constexpr int kNoEnd = std::numeric_limits<int>::min();
};

}  // namespace vendelo_sdl2
