#pragma once

#include <httplib.h>
#include <condition_variable>
#include <functional>
#include <list>
#include <mutex>
#include <thread>
#include <vector>

namespace kslsim {

// Threads for an HTTP server, made when a connection finds none free: a kept connection holds its thread, and a
// server of few clients shall not begin with hundreds. Connections beyond the largest number wait for a free
// thread. enqueue and shutdown: the thread of the server.
class GrowingPool : public httplib::TaskQueue {
 public:
  explicit GrowingPool(size_t largest) : mLargest(largest) {}

  void enqueue(std::function<void()> work) override;
  // Ends when all work that was taken is done; nothing may be enqueued afterwards.
  void shutdown() override;

 private:
  void run();

  const size_t mLargest;
  std::vector<std::thread> mThreads;  // of the server's thread alone
  std::mutex mMutex;                  // guards what follows
  std::condition_variable mCondition;
  std::list<std::function<void()>> mWork;
  size_t mFree = 0;
  bool mEnding = false;
};

}  // namespace kslsim
