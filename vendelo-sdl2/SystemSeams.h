#pragma once

#include <sys/types.h>
#include <ctime>

namespace vendelo_sdl2 {

// Everything by which the framework reaches the operating system and that a test must be able to replace:
// the calls that reboot, end or stop the process, and the sleeps. Each pointer starts at the real call.
// Any thread calls through them; they are changed only by tests, before any second thread exists.
struct TSystemSeams {
  int (*Reboot)(int Command);                              // reboot(2)
  int (*System)(const char* Command);                      // system(3)
  int (*Kill)(pid_t Pid, int Signal);                      // kill(2)
  void (*Exit)(int Code);                                  // exit(3); the real one does not return
  void (*Abort)();                                         // abort(3); the real one does not return
  int (*NanoSleep)(const timespec* Time, timespec* Left);  // nanosleep(2)
  int (*MicroSleep)(useconds_t Microseconds);              // usleep(3)
  unsigned (*Sleep)(unsigned Seconds);                     // sleep(3)
};

// The seams in force.
extern TSystemSeams SystemSeams;

}  // namespace vendelo_sdl2
