#include "vendelo-sdl2/TKeepAlive.h"

#include <mutex>

namespace vendelo_sdl2 {

namespace {

// Immortal, as handlers may run while the process ends.
std::mutex& KeepAliveMutex() {
  static std::mutex& mutex = *new std::mutex;
  return mutex;
}

}  // namespace

void TKeepAlive::Begin() {
  std::lock_guard lock(KeepAliveMutex());
  ++mUses;
}

bool TKeepAlive::End() {
  std::lock_guard lock(KeepAliveMutex());
  return --mUses == 0 && mDeleteAsked;
}

bool TKeepAlive::AskDelete() {
  std::lock_guard lock(KeepAliveMutex());
  mDeleteAsked = mUses > 0;
  return !mDeleteAsked;
}

bool TKeepAlive::IsDeleteAsked() const {
  std::lock_guard lock(KeepAliveMutex());
  return mDeleteAsked;
}

}  // namespace vendelo_sdl2
