#pragma once

#include <poll.h>
#include <sys/types.h>
#include <ctime>

namespace vendelo_sdl2 {

// Everything by which the framework reaches the operating system and that a test must be able to replace:
// the calls that reboot, end or stop the process, and the sleeps. Each pointer starts at the real call.
// Any thread calls through them; they are changed only by tests, before any second thread exists.
struct TSystemSeams {
  int (*Reboot)(int Command);  // reboot(2)
  // A command of /bin/sh, waited for: its status as waitpid(2) gives it, or -1 when there is no shell or no wait.
  // The process takes all its signals meanwhile; the command blocks none, whatever the calling thread blocks.
  int (*System)(const char* Command);
  int (*Kill)(pid_t Pid, int Signal);                      // kill(2)
  void (*Exit)(int Code);                                  // exit(3); the real one does not return
  void (*ExitNow)(int Code);                               // _exit(2), likewise
  void (*Abort)();                                         // abort(3); the real one does not return
  int (*NanoSleep)(const timespec* Time, timespec* Left);  // nanosleep(2)
  int (*MicroSleep)(useconds_t Microseconds);              // usleep(3)
  unsigned (*Sleep)(unsigned Seconds);                     // sleep(3)
  unsigned (*Alarm)(unsigned Seconds);                     // alarm(2); called inside a signal handler
  int (*Poll)(pollfd* Files, nfds_t Count, int Ms);        // poll(2)
};

// The seams in force.
extern TSystemSeams SystemSeams;

}  // namespace vendelo_sdl2
