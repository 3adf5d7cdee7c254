#pragma once

#include <string>

namespace vendelo_sdl2 {

class TFrameWatch;

// A picture on request: SIGUSR1 asks for the next frame, which is written to a PNG file, whole or not at all. The
// frame is read on the draw thread; it is packed and written on a thread of its own. Several requests at once are
// one.
class TPictureRequest {
 public:
  // Holds SIGUSR1 back from here on, in this thread and all that it starts, so that it interrupts nobody: before
  // the process has other threads. What comes before that ends the process.
  static void hold();

  // Whether the signal has come since the last call. Main thread.
  static bool taken();

  // Has the next frame written to this file; the log tells the name, or why it could not be written. Any thread.
  static void write(TFrameWatch& frames, const std::string& path);
};

}  // namespace vendelo_sdl2
