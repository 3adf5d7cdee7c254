#include "vendelo-sdl2/TConsole.h"

#include <fcntl.h>
#include <limits.h>
#include <sys/stat.h>
#include <unistd.h>
#include <algorithm>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <string>
#include <string_view>

namespace TConsole {

namespace {

constexpr size_t kLongestNumber = 64;

// All of it lives as long as the process: `stdout` is flushed after static objects are gone. One thread at a time
// is in here, under the lock of `stdout`, but for a signal's handler that comes to it in the middle of a write.
std::atomic<unsigned long> dropped{0};
std::atomic<unsigned long> untold{0};  // of these, those that the console has not been told of
std::atomic<bool> endsInLine{false};   // the console has got the beginning of a line and not its end

// How much of the text the console has taken.
size_t Write(std::string_view text) {
  size_t written = 0;
  while (written < text.size()) {
    const ssize_t count = write(STDOUT_FILENO, text.data() + written, text.size() - written);
    if (count > 0)
      written += static_cast<size_t>(count);
    else if (count == 0 || errno != EINTR)
      break;
  }
  if (written > 0) endsInLine = text[written - 1] != '\n';
  return written;
}

// What follows on lines that were dropped begins with their number.
size_t Announce(char* line, size_t size) {
  const unsigned long missing = untold;
  if (missing == 0) return 0;
  return static_cast<size_t>(
    std::snprintf(line, size, "%s(%lu lines are missing here)\n", endsInLine ? "\n" : "", missing));
}

// A pipe takes PIPE_BUF bytes as a whole or not at all: so many together with the number before them, and up to the
// end of a line where there is one.
std::string_view NextPiece(std::string_view text) {
  const std::string_view piece = text.substr(0, PIPE_BUF - kLongestNumber);
  const size_t end = piece.rfind('\n');
  return end == std::string_view::npos ? piece : piece.substr(0, end + 1);
}

ssize_t WriteOrDrop(void* /*cookie*/, const char* data, size_t size) {
  char joined[PIPE_BUF];
  const int error = errno;
  for (std::string_view text(data, size); !text.empty();) {
    const std::string_view piece = NextPiece(text);
    const size_t before = Announce(joined, kLongestNumber);
    std::copy(piece.begin(), piece.end(), joined + before);
    const size_t taken = Write({joined, before + piece.size()});
    if (before > 0 && taken >= before) untold = 0;
    const std::string_view rest = piece.substr(taken > before ? taken - before : 0);
    const auto lines = static_cast<unsigned long>(std::count(rest.begin(), rest.end(), '\n'));
    untold += lines;
    dropped += lines;
    text.remove_prefix(piece.size());
  }
  errno = error;
  return static_cast<ssize_t>(size);
}

// A description of the file of its own: whoever else has this one, a shell or another program, waits as before.
void WriteWithoutWaiting(int descriptor) {
  struct stat status {};
  if (fstat(descriptor, &status) != 0) return;
  if (!S_ISFIFO(status.st_mode) && !S_ISSOCK(status.st_mode) && !isatty(descriptor)) return;
  const std::string path = "/proc/self/fd/" + std::to_string(descriptor);
  const int own = S_ISSOCK(status.st_mode) ? -1 : open(path.c_str(), O_WRONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
  if (own >= 0) {
    dup2(own, descriptor);
    close(own);
  } else if (!isatty(descriptor)) {  // a shell that got its terminal back like this would not work
    fcntl(descriptor, F_SETFL, fcntl(descriptor, F_GETFL) | O_NONBLOCK);
  }
}

}  // namespace

void Guard() {
  // Not SIG_IGN, which the commands that are run would inherit.
  struct sigaction taken {};
  taken.sa_handler = [](int) {};
  taken.sa_flags = SA_RESTART;
  sigaction(SIGPIPE, &taken, nullptr);
  // Else the next file, the connection to the X server even, would become standard output.
  for (int descriptor = STDIN_FILENO; descriptor <= STDERR_FILENO; ++descriptor)
    if (fcntl(descriptor, F_GETFD) < 0 && open("/dev/null", O_RDWR) != descriptor) return;
  WriteWithoutWaiting(STDOUT_FILENO);
  WriteWithoutWaiting(STDERR_FILENO);
  cookie_io_functions_t functions{};
  functions.write = WriteOrDrop;
  FILE* console = fopencookie(nullptr, "w", functions);
  if (!console) return;
  setvbuf(console, nullptr, _IOLBF, BUFSIZ);
  std::fflush(stdout);
  stdout = console;
}

unsigned long Dropped() { return dropped; }

}  // namespace TConsole
