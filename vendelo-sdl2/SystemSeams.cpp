#include "vendelo-sdl2/SystemSeams.h"

#include <sys/reboot.h>
#include <unistd.h>
#include <csignal>
#include <cstdlib>

namespace vendelo_sdl2 {

TSystemSeams SystemSeams = {
  [](int Command) { return ::reboot(Command); },
  [](const char* Command) { return ::system(Command); },
  [](pid_t Pid, int Signal) { return ::kill(Pid, Signal); },
  [](int Code) { ::exit(Code); },
  []() { ::abort(); },
  [](const timespec* Time, timespec* Left) { return ::nanosleep(Time, Left); },
  [](useconds_t Microseconds) { return ::usleep(Microseconds); },
  [](unsigned Seconds) { return ::sleep(Seconds); },
};

}  // namespace vendelo_sdl2
