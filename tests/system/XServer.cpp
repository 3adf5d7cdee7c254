#include "tests/system/XServer.h"

#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <poll.h>
#include <unistd.h>
#include <csignal>

namespace systest {
namespace {

constexpr int START_BOUND = 30000;  // milliseconds
constexpr int END_BOUND = 5000;

// The number that the server writes once it can be reached.
std::string readDisplayNumber(int descriptor) {
  std::string out;
  char letter = 0;
  pollfd waiting{descriptor, POLLIN, 0};
  while (poll(&waiting, 1, START_BOUND) == 1 && read(descriptor, &letter, 1) == 1 && letter != '\n') out += letter;
  return letter == '\n' ? out : "";
}

}  // namespace

XServer::~XServer() {
  if (mConnection) XCloseDisplay(mConnection);
  // Asked politely the server takes its socket and its lock with it.
  mProcess.signal(SIGTERM);
  mProcess.wait(END_BOUND);
}

bool XServer::start(const std::string& folder) {
  mFolder = folder;
  int ends[2];
  if (pipe(ends) != 0) return false;
  Process::Setup setup;
  setup.program = "Xvfb";
  setup.arguments = {"-displayfd", "3", "-screen", "0", "1920x1080x24", "-nolisten", "tcp", "-noreset"};
  setup.environment = {{"PATH", variable("PATH")}, {"HOME", folder}};
  setup.output = folder + "/xvfb.txt";
  setup.descriptor = ends[1];
  const bool started = mProcess.start(setup);
  close(ends[1]);
  const std::string number = started ? readDisplayNumber(ends[0]) : "";
  close(ends[0]);
  if (number.empty()) return false;
  mDisplay = ":" + number;
  mConnection = XOpenDisplay(mDisplay.c_str());
  return mConnection != nullptr;
}

Picture XServer::picture(Box box) {
  XImage* image =
    XGetImage(mConnection, DefaultRootWindow(mConnection), box.x, box.y, static_cast<unsigned>(box.width),
              static_cast<unsigned>(box.height), AllPlanes, ZPixmap);
  if (!image) return {};
  std::vector<uint32_t> pixels;
  pixels.reserve(static_cast<size_t>(box.width) * box.height);
  for (int y = 0; y < box.height; ++y) {
    const auto* row =
      reinterpret_cast<const uint32_t*>(image->data + static_cast<ptrdiff_t>(y) * image->bytes_per_line);
    for (int x = 0; x < box.width; ++x) pixels.push_back(row[x] & 0xffffff);
  }
  XDestroyImage(image);
  return {box.width, box.height, std::move(pixels)};
}

unsigned long XServer::findWindow(const std::string& title) {
  Window root = 0, parent = 0, found = 0;
  Window* children = nullptr;
  unsigned count = 0;
  if (!XQueryTree(mConnection, DefaultRootWindow(mConnection), &root, &parent, &children, &count)) return 0;
  for (unsigned i = 0; i < count; ++i) {
    char* name = nullptr;
    if (XFetchName(mConnection, children[i], &name) && name && title == name) found = children[i];
    if (name) XFree(name);
  }
  if (children) XFree(children);
  return found;
}

Box XServer::boxOf(unsigned long window) {
  XWindowAttributes attributes;
  if (!XGetWindowAttributes(mConnection, window, &attributes)) return {0, 0, 0, 0};
  return {attributes.x, attributes.y, attributes.width, attributes.height};
}

bool XServer::sendKey(const std::string& how, const std::string& name) {
  Process tool;
  Process::Setup setup;
  setup.program = "xdotool";
  setup.arguments = {how, name};
  setup.environment = {{"PATH", variable("PATH")}, {"DISPLAY", mDisplay}};
  setup.output = mFolder + "/xdotool.txt";
  return tool.start(setup) && tool.wait(START_BOUND) == 0;
}

void XServer::requestClose(unsigned long window) {
  XEvent event{};
  event.xclient.type = ClientMessage;
  event.xclient.window = window;
  event.xclient.message_type = XInternAtom(mConnection, "WM_PROTOCOLS", False);
  event.xclient.format = 32;
  event.xclient.data.l[0] = static_cast<long>(XInternAtom(mConnection, "WM_DELETE_WINDOW", False));
  event.xclient.data.l[1] = CurrentTime;
  XSendEvent(mConnection, window, False, NoEventMask, &event);
  XFlush(mConnection);
}

}  // namespace systest
