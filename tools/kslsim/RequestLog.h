#pragma once

#include <deque>
#include <fstream>
#include <mutex>

#include "tools/kslsim/Wire.h"

namespace kslsim {

// The time of day, to the millisecond.
std::string wallClock();

// Everything that happened, one JSON object each: the calls with what was asked and answered, and the steps that
// the service was told. Each entry has "n", which counts from 1 without gaps, and "t", milliseconds since the
// start. Any thread, locked inside. The newest kLimit entries are kept for since(); the file, where there is one,
// gets all of them, one a line, each written through at once so that a reader sees whole lines. When it cannot be
// written any more, that is said once on the standard error.
class RequestLog {
 public:
  static constexpr size_t kLimit = 5000;

  // Appends to the file as well. False when it cannot be opened.
  bool open(const std::string& file);

  void add(int64_t now, Json entry);

  // The entries with an "n" above the given one, oldest first.
  Json since(uint64_t n) const;

 private:
  mutable std::mutex mMutex;  // guards all of the below
  uint64_t mLast = 0;
  std::deque<Json> mEntries;
  std::ofstream mFile;
};

}  // namespace kslsim
