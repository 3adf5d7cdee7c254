#include "vendelo-sdl2/WholeFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <cerrno>
#include <cstdio>
#include <cstring>

namespace vendelo_sdl2 {
namespace {

bool writeAll(int file, std::string_view content) {
  while (!content.empty()) {
    const ssize_t written = write(file, content.data(), content.size());
    if (written < 0 && errno != EINTR) return false;
    if (written > 0) content.remove_prefix(static_cast<size_t>(written));
  }
  return true;
}

}  // namespace

std::string WriteWholeFile(const std::string& path, std::string_view content, mode_t mode) {
  const std::string part = path + ".part";
  const int file = open(part.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOFOLLOW, 0600);
  if (file < 0) return part + ": " + std::strerror(errno);
  bool good = writeAll(file, content) && fchmod(file, mode) == 0 && fsync(file) == 0;
  int error = errno;
  if (close(file) != 0 && good) {
    good = false;
    error = errno;
  }
  if (good && std::rename(part.c_str(), path.c_str()) != 0) {
    good = false;
    error = errno;
  }
  if (good) return "";
  unlink(part.c_str());
  return path + ": " + std::strerror(error);
}

}  // namespace vendelo_sdl2
