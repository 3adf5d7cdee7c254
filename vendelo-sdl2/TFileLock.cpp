#include "vendelo-sdl2/TFileLock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>
#include <cerrno>
#include <cstring>

namespace vendelo_sdl2 {

namespace {

// The number at the beginning of the file; "unknown" without one.
std::string ReadProcess(int file) {
  char text[16] = "";
  const ssize_t length = pread(file, text, sizeof text - 1, 0);
  const size_t digits = length > 0 ? std::strspn(text, "0123456789") : 0;
  return digits > 0 ? std::string(text, digits) : "unknown";
}

}  // namespace

TFileLock::TResult TFileLock::Take(const std::string& File) {
  Release();
  mFile = open(File.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644);
  if (mFile >= 0 && flock(mFile, LOCK_EX | LOCK_NB) == 0) {
    const std::string process = std::to_string(getpid()) + "\n";
    // Only for people to read: on a full disk the lock holds without it.
    if (ftruncate(mFile, 0) != 0 || pwrite(mFile, process.data(), process.size(), 0) < 0) mDetail = strerror(errno);
    return HELD;
  }
  const int error = errno;
  const bool isTaken = mFile >= 0 && error == EWOULDBLOCK;
  mDetail = isTaken ? ReadProcess(mFile) : std::strerror(error);
  Release();
  return isTaken ? HELD_BY_ANOTHER : IMPOSSIBLE;
}

void TFileLock::Release() {
  if (mFile >= 0) close(mFile);
  mFile = -1;
}

}  // namespace vendelo_sdl2
