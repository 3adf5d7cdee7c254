#pragma once

#include <SDL_stdinc.h>
#include <string>

namespace vendelo_sdl2 {

// What the service manager that has started the program is told, over the socket that it names in NOTIFY_SOCKET:
// READY=1 once a picture has been presented, then WATCHDOG=1 for as long as both threads get on, STATUS= and
// STOPPING=1. Without that variable nothing is told.
// Main thread, after a pass of the main loop: that it is called is the proof that the passes go on. Times are
// milliseconds of the tick clock. A manager that is gone is told nothing, and that stops nothing; one that is there
// and reads nothing holds the main loop up as soon as its queue is full.
class TServiceNotice {
 public:
  // Reads the environment.
  TServiceNotice();

  // Whether anybody listens.
  bool wanted() const { return mWanted; }

  // After a pass: so many frames have been finished, and so many pictures presented, since the start.
  void passDone(unsigned long frames, unsigned long presented);
  // One line for a person. Told at once when its first part has changed, and else every ten seconds, so that the
  // second part may say a time.
  void status(const std::string& state, const std::string& detail);
  // The end has begun; nothing but the first call is told, and nothing after it.
  void stopping();

 private:
  void tell(const std::string& message);

  bool mWanted;
  Uint32 mWatchdogMs = 0;  // half of what the manager waits at most; 0 where it does not watch
  bool mReady = false;
  bool mStopping = false;
  Uint32 mLastWatchdog = 0;
  unsigned long mFramesThen = 0;  // at the last WATCHDOG=1
  std::string mState;
  Uint32 mLastStatus = 0;
};

}  // namespace vendelo_sdl2
