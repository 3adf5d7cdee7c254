#include "tests/system/XServer.h"

#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <poll.h>
#include <unistd.h>
#include <csignal>
#include <fstream>

namespace systest {
namespace {

constexpr int kStartBound = 30000;  // milliseconds
constexpr int kEndBound = 5000;

// Displays of up to 1920 by 1080; their sizes beyond the first one's are the server's own.
constexpr const char* kXorgConfiguration = R"(
Section "ServerFlags"
  Option "AutoAddDevices" "false"
  Option "AutoEnableDevices" "false"
  Option "AutoAddGPU" "false"
  Option "DontVTSwitch" "true"
  Option "AllowMouseOpenFail" "true"
EndSection
Section "Device"
  Identifier "dummy"
  Driver "dummy"
  VideoRam 256000
EndSection
Section "Monitor"
  Identifier "monitor"
  HorizSync 5.0 - 1000.0
  VertRefresh 5.0 - 200.0
  Modeline "1920x1080" 148.50 1920 2008 2052 2200 1080 1084 1089 1125 +hsync +vsync
EndSection
Section "Screen"
  Identifier "screen"
  Device "dummy"
  Monitor "monitor"
  DefaultDepth 24
  SubSection "Display"
    Depth 24
    Modes "1920x1080"
    Virtual 3840 1080
  EndSubSection
EndSection
)";

std::string sizeText(Size size) { return std::to_string(size.width) + "x" + std::to_string(size.height); }

// The number that the server writes once it can be reached.
std::string readDisplayNumber(int descriptor) {
  std::string out;
  char letter = 0;
  pollfd waiting{descriptor, POLLIN, 0};
  while (poll(&waiting, 1, kStartBound) == 1 && read(descriptor, &letter, 1) == 1 && letter != '\n') out += letter;
  return letter == '\n' ? out : "";
}

Window findBelow(Display* connection, Window top, const std::string& title) {
  Window root = 0, parent = 0, found = 0;
  Window* children = nullptr;
  unsigned count = 0;
  if (!XQueryTree(connection, top, &root, &parent, &children, &count)) return 0;
  for (unsigned i = 0; i < count && !found; ++i) {
    char* name = nullptr;
    if (XFetchName(connection, children[i], &name) && name && title == name) found = children[i];
    if (name) XFree(name);
    if (!found) found = findBelow(connection, children[i], title);
  }
  if (children) XFree(children);
  return found;
}

}  // namespace

XServer::~XServer() {
  if (mConnection) XCloseDisplay(mConnection);
  // Asked politely the server takes its socket and its lock with it.
  mProcess.signal(SIGTERM);
  mProcess.wait(kEndBound);
}

void XServer::crash() {
  XCloseDisplay(mConnection);
  mConnection = nullptr;
  mProcess.kill();
  const std::string number = mDisplay.substr(1);
  unlink(("/tmp/.X" + number + "-lock").c_str());
  unlink(("/tmp/.X11-unix/X" + number).c_str());
}

bool XServer::start(const std::string& folder) {
  mFolder = folder;
  return launch("Xvfb", {"-screen", "0", "1920x1080x24"});
}

bool XServer::startWithTwoDisplays(const std::string& folder, Size second) {
  mFolder = folder;
  const std::string configuration = folder + "/xorg.conf", size = sizeText(second);
  std::ofstream(configuration) << kXorgConfiguration;
  // The program itself: the script of the same name refuses who sits at no console.
  if (!launch("/usr/lib/xorg/Xorg", {"-config", configuration, "-logfile", folder + "/xorg.log", "-novtswitch",
                                     "+extension", "GLX", "+extension", "RANDR"}))
    return false;
  // The last query is what makes the server tell its clients of the second display.
  Process tool;
  Process::Setup setup;
  setup.program = "sh";
  setup.arguments = {"-ec", "xrandr --addmode DUMMY1 " + size +
                              "; xrandr --output DUMMY0 --mode 1920x1080 --pos 0x0"
                              " --output DUMMY1 --mode " +
                              size + " --pos 1920x0; xrandr"};
  setup.environment = {{"PATH", variable("PATH")}, {"DISPLAY", mDisplay}};
  setup.output = folder + "/xrandr.txt";
  return tool.start(setup) && tool.wait(kStartBound) == 0 &&
         contentOf(setup.output).find("DUMMY1 connected " + size + "+1920+0") != std::string::npos;
}

bool XServer::launch(const std::string& program, const std::vector<std::string>& arguments) {
  int ends[2];
  if (pipe(ends) != 0) return false;
  Process::Setup setup;
  setup.program = program;
  setup.arguments = {"-displayfd", "3", "-nolisten", "tcp", "-noreset"};
  setup.arguments.insert(setup.arguments.end(), arguments.begin(), arguments.end());
  setup.environment = {{"PATH", variable("PATH")}, {"HOME", mFolder}};
  setup.output = mFolder + "/xserver.txt";
  setup.descriptor = ends[1];
  const bool started = mProcess.start(setup);
  close(ends[1]);
  const std::string number = started ? readDisplayNumber(ends[0]) : "";
  close(ends[0]);
  if (number.empty()) return false;
  mDisplay = ":" + number;
  // A window may go between two questions about it: each answers with nothing then.
  XSetErrorHandler([](Display*, XErrorEvent*) { return 0; });
  mConnection = XOpenDisplay(mDisplay.c_str());
  return mConnection != nullptr;
}

Picture XServer::picture() {
  if (!mConnection) return {};
  const Box all = boxOf(DefaultRootWindow(mConnection));
  return picture({0, 0, all.width, all.height});
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
  return findBelow(mConnection, DefaultRootWindow(mConnection), title);
}

Box XServer::boxOf(unsigned long window) {
  XWindowAttributes attributes;
  if (!XGetWindowAttributes(mConnection, window, &attributes)) return {0, 0, 0, 0};
  int x = 0, y = 0;
  Window child = 0;
  XTranslateCoordinates(mConnection, window, DefaultRootWindow(mConnection), 0, 0, &x, &y, &child);
  return {x, y, attributes.width, attributes.height};
}

unsigned long XServer::frameOf(unsigned long window) {
  for (;;) {
    Window root = 0, parent = 0;
    Window* children = nullptr;
    unsigned count = 0;
    if (!XQueryTree(mConnection, window, &root, &parent, &children, &count)) return window;
    if (children) XFree(children);
    if (parent == root || parent == 0) return window;
    window = parent;
  }
}

std::vector<std::string> XServer::propertyOf(unsigned long window, const std::string& property) {
  std::vector<std::string> out;
  Atom type = 0;
  int format = 0;
  unsigned long count = 0, left = 0;
  unsigned char* data = nullptr;
  XGetWindowProperty(mConnection, window, XInternAtom(mConnection, property.c_str(), False), 0, 1024, False,
                     AnyPropertyType, &type, &format, &count, &left, &data);
  for (unsigned long i = 0; format == 32 && i < count; ++i) {
    const unsigned long value = reinterpret_cast<unsigned long*>(data)[i];
    char* name = type == XA_ATOM ? XGetAtomName(mConnection, value) : nullptr;
    out.push_back(name ? name : std::to_string(value));
    if (name) XFree(name);
  }
  if (data) XFree(data);
  return out;
}

std::vector<std::string> XServer::propertyOfRoot(const std::string& property) {
  return propertyOf(DefaultRootWindow(mConnection), property);
}

unsigned long XServer::openWindow(Box box, Colour colour) {
  const auto pixel = static_cast<unsigned long>(colour.red << 16 | colour.green << 8 | colour.blue);
  const Window window =
    XCreateSimpleWindow(mConnection, DefaultRootWindow(mConnection), box.x, box.y, static_cast<unsigned>(box.width),
                        static_cast<unsigned>(box.height), 0, 0, pixel);
  XSizeHints hints{};
  hints.flags = USPosition | USSize;
  hints.x = box.x;
  hints.y = box.y;
  hints.width = box.width;
  hints.height = box.height;
  XSetWMNormalHints(mConnection, window, &hints);
  XStoreName(mConnection, window, "another window");
  XMapRaised(mConnection, window);
  XSync(mConnection, False);
  return window;
}

void XServer::closeWindow(unsigned long window) {
  XDestroyWindow(mConnection, window);
  XSync(mConnection, False);
}

void XServer::hideWindow(unsigned long window) {
  XUnmapWindow(mConnection, window);
  XSync(mConnection, False);
}

void XServer::showWindow(unsigned long window) {
  XMapWindow(mConnection, window);
  XSync(mConnection, False);
}

bool XServer::sendKey(const std::string& how, const std::string& name) {
  Process tool;
  Process::Setup setup;
  setup.program = "xdotool";
  setup.arguments = {how, name};
  setup.environment = {{"PATH", variable("PATH")}, {"DISPLAY", mDisplay}};
  setup.output = mFolder + "/xdotool.txt";
  return tool.start(setup) && tool.wait(kStartBound) == 0;
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
