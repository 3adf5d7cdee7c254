#pragma once

#include <atomic>
#include <chrono>
#include <mutex>
#include <thread>
#include <vector>

namespace systest {

// A port that takes connections, counts them and shuts each at once: a service that is there and says nothing.
class ConnectionCounter {
 public:
  ConnectionCounter();
  ~ConnectionCounter();
  ConnectionCounter(const ConnectionCounter&) = delete;
  ConnectionCounter& operator=(const ConnectionCounter&) = delete;

  int port() const { return mPort; }

  // When each connection came, in the order of time.
  std::vector<std::chrono::steady_clock::time_point> times() const;

 private:
  int mSocket, mPort = 0;
  mutable std::mutex mMutex;  // guards mTimes
  std::vector<std::chrono::steady_clock::time_point> mTimes;
  std::thread mThread;
};

// A port that nobody listens on.
int freePort();

}  // namespace systest
