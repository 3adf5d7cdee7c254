#pragma once

#include "tests/system/Picture.h"
#include "tests/system/Process.h"

struct _XDisplay;

namespace systest {

// An X server of one 1920 by 1080 screen on a free display, and a client's view of it. Used by one thread.
class XServer {
 public:
  XServer() = default;
  ~XServer();
  XServer(const XServer&) = delete;
  XServer& operator=(const XServer&) = delete;

  // Starts the server and connects. The folder gets its output.
  bool start(const std::string& folder);

  const std::string& display() const { return mDisplay; }

  // The part of the screen inside the box, or all of it.
  Picture picture(Box box);
  Picture picture() { return picture({0, 0, 1920, 1080}); }
  Colour pixel(int x, int y) { return picture({x, y, 1, 1}).at(0, 0); }

  // The top-level window with this title; 0 when there is none.
  unsigned long findWindow(const std::string& title);

  // Place and size of a window on the screen.
  Box boxOf(unsigned long window);

  // Presses and releases a key, or does one of both, by its X name, with the pointer and the focus as they are.
  bool typeKey(const std::string& name) { return sendKey("key", name); }
  bool pressKey(const std::string& name) { return sendKey("keydown", name); }
  bool releaseKey(const std::string& name) { return sendKey("keyup", name); }

  // Asks the window to close, as a window manager does.
  void requestClose(unsigned long window);

 private:
  bool sendKey(const std::string& how, const std::string& name);

  Process mProcess;
  std::string mDisplay, mFolder;
  _XDisplay* mConnection = nullptr;
};

}  // namespace systest
