#include "tools/kslsim/RequestLog.h"

#include <chrono>
#include <iostream>

namespace kslsim {

std::string wallClock() {
  const auto now = std::chrono::system_clock::now();
  const std::time_t seconds = std::chrono::system_clock::to_time_t(now);
  const auto millis = std::chrono::duration_cast<std::chrono::milliseconds>(now.time_since_epoch()).count() % 1000;
  std::tm local{};
  localtime_r(&seconds, &local);
  char text[40];
  const size_t length = std::strftime(text, sizeof(text), "%Y-%m-%dT%H:%M:%S", &local);
  std::snprintf(text + length, sizeof(text) - length, ".%03d", static_cast<int>(millis));
  return text;
}

bool RequestLog::open(const std::string& file) {
  std::lock_guard lock(mMutex);
  mFile.open(file, std::ios::app);
  return mFile.is_open();
}

void RequestLog::add(int64_t now, Json entry) {
  std::lock_guard lock(mMutex);
  entry["n"] = ++mLast;
  entry["t"] = now;
  entry["time"] = wallClock();
  if (mFile.is_open() && mFile.good()) {
    mFile << entry.dump(-1, ' ', false, Json::error_handler_t::replace) << std::endl;
    if (!mFile) std::cerr << "kslsim: the log cannot be written any more" << std::endl;
  }
  mEntries.push_back(std::move(entry));
  if (mEntries.size() > kLimit) mEntries.pop_front();
}

Json RequestLog::since(uint64_t n) const {
  std::lock_guard lock(mMutex);
  Json out = Json::array();
  const uint64_t first = mLast - mEntries.size() + 1;
  for (size_t i = n < first ? 0 : n - first + 1; i < mEntries.size(); ++i) out.push_back(mEntries[i]);
  return out;
}

}  // namespace kslsim
