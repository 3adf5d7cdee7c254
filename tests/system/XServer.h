#pragma once

#include <string>
#include <vector>

#include "tests/system/Picture.h"
#include "tests/system/Process.h"

struct _XDisplay;

namespace systest {

struct Size {
  int width, height;
};

// An X server on a free display, and a client's view of it. Used by one thread.
class XServer {
 public:
  XServer() = default;
  ~XServer();
  XServer(const XServer&) = delete;
  XServer& operator=(const XServer&) = delete;

  // Starts a server of one 1920 by 1080 screen and connects. The folder gets its output.
  bool start(const std::string& folder);

  // The same with two displays side by side, the first of 1920 by 1080, on Xorg's driver without hardware: Xvfb has
  // no second one.
  bool startWithTwoDisplays(const std::string& folder, Size second);

  // Kills the server, as a crash of it would. Only display() may be called afterwards.
  void crash();

  const std::string& display() const { return mDisplay; }
  Process& process() { return mProcess; }

  // The part of the screen inside the box, or all of it, with all displays.
  Picture picture(Box box);
  Picture picture();
  Colour pixel(int x, int y) { return picture({x, y, 1, 1}).at(0, 0); }

  // The window with this title, also inside a window manager's frame; 0 when there is none.
  unsigned long findWindow(const std::string& title);

  // Place and size of a window on the screen.
  Box boxOf(unsigned long window);

  // The window that the window manager has put around this one, or the window itself.
  unsigned long frameOf(unsigned long window);

  // Names of the atoms in a property of the window, or its numbers as text.
  std::vector<std::string> propertyOf(unsigned long window, const std::string& property);
  std::vector<std::string> propertyOfRoot(const std::string& property);

  // Maps a plain window of this colour there, as any other client does. It goes with this object.
  unsigned long openWindow(Box box, Colour colour);
  void closeWindow(unsigned long window);

  // Takes a window from the screen, and puts it there again.
  void hideWindow(unsigned long window);
  void showWindow(unsigned long window);

  // Presses and releases a key, or does one of both, by its X name, with the pointer and the focus as they are.
  bool typeKey(const std::string& name) { return sendKey("key", name); }
  bool pressKey(const std::string& name) { return sendKey("keydown", name); }
  bool releaseKey(const std::string& name) { return sendKey("keyup", name); }

  // Asks the window to close, as a window manager does.
  void requestClose(unsigned long window);

 private:
  bool sendKey(const std::string& how, const std::string& name);
  bool launch(const std::string& program, const std::vector<std::string>& arguments);

  Process mProcess;
  std::string mDisplay, mFolder;
  _XDisplay* mConnection = nullptr;
};

}  // namespace systest
