#pragma once

#include <csignal>
#include <vector>

namespace fuzz {

// Crashes belong to whoever had them when this object was made, whatever the application makes of them: to
// libFuzzer, which keeps the input, or to the sanitizers.
class CrashSignals {
 public:
  CrashSignals() {
    for (const int number : kNumbers) sigaction(number, nullptr, &mActions.emplace_back());
  }
  ~CrashSignals() {
    for (size_t n = 0; n < mActions.size(); ++n) sigaction(kNumbers[n], &mActions[n], nullptr);
  }
  CrashSignals(const CrashSignals&) = delete;
  CrashSignals& operator=(const CrashSignals&) = delete;

 private:
  static constexpr int kNumbers[] = {SIGSEGV, SIGABRT, SIGFPE, SIGILL, SIGBUS, SIGINT, SIGTERM, SIGALRM};
  std::vector<struct sigaction> mActions;
};

}  // namespace fuzz
