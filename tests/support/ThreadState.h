#pragma once

#include <unistd.h>

#include <fstream>
#include <string>
#include <thread>

// Whether a thread of this process, by its gettid(), sleeps: in a lock that another holds, for one. To be asked
// again and again, beside what says that the thread has gone on; false once it has ended.
inline bool isAsleep(pid_t thread) {
  std::ifstream file("/proc/self/task/" + std::to_string(thread) + "/stat");
  std::string line;
  std::getline(file, line);
  const size_t behindName = line.rfind(") ");
  return behindName != std::string::npos && line[behindName + 2] == 'S';
}

// Whether another thread could take the application's draw mutex now.
template <class TApp>
bool drawMutexIsFree(TApp& application) {
  bool free = false;
  std::thread([&] {
    free = application.tryLockDrawMutex();
    if (free) application.unlockDrawMutex();
  }).join();
  return free;
}
