#include "vendelo-sdl2/FaultyFiles.h"

#include <mutex>
#include <set>

#include "vendelo-sdl2/TLogManager.h"

namespace MyUtils {
namespace {

constexpr size_t kMost = 1000;
constexpr vendelo_sdl2::TLogType kLogWarning = 4;

// Never destroyed: a thread that loads may outlive the program's own end.
struct Told {
  std::mutex mutex;
  std::set<std::string> texts;  // mutex
};
Told& told() {
  static Told& only = *new Told;
  return only;
}

}  // namespace

void TellFaultyFile(const std::string& text) {
  {
    const std::lock_guard<std::mutex> lock(told().mutex);
    if (told().texts.size() >= kMost || !told().texts.insert(text).second) return;
  }
  logman::WriteLog(kLogWarning, 0, text);
}

int FaultyFiles() {
  const std::lock_guard<std::mutex> lock(told().mutex);
  return static_cast<int>(told().texts.size());
}

}  // namespace MyUtils
