#include "vendelo-sdl2/XErrors.h"

#include <X11/Xlib.h>

#include "vendelo-sdl2/TApplication.h"

namespace vendelo_sdl2 {
namespace {

constexpr TLogType kLogCritical = 7;

XErrorHandler NextError = nullptr;
XIOErrorHandler NextIoError = nullptr;

void saveLog() {
  if (!pApp) return;
  pApp->TLogManager::Poll();
  pApp->FlushFile();
}

int onError(Display* display, XErrorEvent* event) {
  char text[256] = "";
  XGetErrorText(display, event->error_code, text, sizeof text);
  logman::WriteLog(kLogCritical, 0, "The X server has refused a request: %s (request %d.%d)", text,
                   event->request_code, event->minor_code);
  saveLog();
  return NextError ? NextError(display, event) : 0;
}

int onIoError(Display* display) {
  logman::WriteLog(kLogCritical, 0, "The X server on display %s is gone", DisplayString(display));
  saveLog();
  return NextIoError ? NextIoError(display) : 0;
}

}  // namespace

void LogXErrors() {
  if (NextIoError) return;  // an application before this one has
  NextError = XSetErrorHandler(onError);
  NextIoError = XSetIOErrorHandler(onIoError);
}

}  // namespace vendelo_sdl2
