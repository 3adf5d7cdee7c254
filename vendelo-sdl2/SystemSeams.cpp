#include "vendelo-sdl2/SystemSeams.h"

#include <spawn.h>
#include <sys/reboot.h>
#include <sys/wait.h>
#include <unistd.h>
#include <cerrno>
#include <csignal>
#include <cstdlib>

namespace vendelo_sdl2 {

namespace {

// As system(3), which ignores SIGINT and SIGQUIT in the whole process until the command has ended: one that came
// meanwhile would be lost.
int RunByShell(const char* Command) {
  const char* const arguments[] = {"sh", "-c", Command, nullptr};
  posix_spawnattr_t attributes;
  posix_spawnattr_init(&attributes);
  sigset_t none;
  sigemptyset(&none);
  posix_spawnattr_setsigmask(&attributes, &none);  // the window library's threads block the polite signals
  posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK);
  pid_t shell = -1;
  const int error =
    posix_spawn(&shell, "/bin/sh", nullptr, &attributes, const_cast<char* const*>(arguments), environ);
  posix_spawnattr_destroy(&attributes);
  if (error != 0) {
    errno = error;
    return -1;
  }
  int status = -1;
  while (waitpid(shell, &status, 0) < 0)
    if (errno != EINTR) return -1;
  return status;
}

}  // namespace

TSystemSeams SystemSeams = {
  [](int Command) { return ::reboot(Command); },
  RunByShell,
  [](pid_t Pid, int Signal) { return ::kill(Pid, Signal); },
  [](int Code) { ::exit(Code); },
  [](int Code) { ::_exit(Code); },
  []() { ::abort(); },
  [](const timespec* Time, timespec* Left) { return ::nanosleep(Time, Left); },
  [](useconds_t Microseconds) { return ::usleep(Microseconds); },
  [](unsigned Seconds) { return ::sleep(Seconds); },
  [](unsigned Seconds) { return ::alarm(Seconds); },
  [](pollfd* Files, nfds_t Count, int Ms) { return ::poll(Files, Count, Ms); },
};

}  // namespace vendelo_sdl2
