#pragma once

#include <SDL.h>
#include <gtest/gtest.h>
#include <unistd.h>
#include <cstdlib>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "tests/support/ChildProcess.h"
#include "tests/support/TestApplication.h"
#include "vesperatopscreen/AppMain.h"

// The whole program from its entry point to its exit code, in a process of its own, with an application without a
// window that tells on its output what happens to it. For one test file alone: everything is local to it.
namespace {

using namespace vendelo_sdl2;

// Tells what is going on, in one piece.
void say(const std::string& line) {
  if (write(STDERR_FILENO, (line + "\n").c_str(), line.size() + 1) < 0) std::abort();
}

void say(const std::string& line, int number) { say(line + " " + std::to_string(number)); }

// Tells how it is closed.
class ToldModule : public TAppModule {
 public:
  int Load(void*) override { return 0; }
  void RequestClose() override {
    say(pApp->IsInMainThread() ? "request on main" : "request elsewhere");
    if (onRequest()) onRequest()();
  }
  int Close() override { return say("close"), 0; }
  int Unload() override {
    return say(StubGui::trace().contains("deleted") ? "unload, gui deleted" : "unload, gui left alone"), 0;
  }
  static std::function<void()>& onRequest() {
    static auto& hook = *new std::function<void()>;
    return hook;
  }
};

// Tells every line of its log.
class ToldApplication : public TestApplication {
 public:
  int _WriteLog(char color, TLogType type, unsigned long gameId, const std::string& text) override {
    say(std::to_string(type) + "|" + text);
    return TestApplication::_WriteLog(color, type, gameId, text);
  }
};

using Preparation = std::function<void(TestApplication&)>;
const Preparation* preparation = nullptr;

// A program with a GUI module, its draw thread and a module that tells how it is closed. Left alone it runs for
// ever.
TApplication* makeApplication(const std::string*) {
  SystemSeams.Alarm = [](unsigned) { return 0u; };  // a busy machine may take its time over a backtrace
  auto* app = new ToldApplication;
  (new ToldModule)->Init(app, "told", nullptr, 5);
  app->onInit = [app] {
    app->SetGUI<StubGui>(nullptr);
    app->LoadGUI(nullptr);
    return 0;
  };
  app->onStartup = [] { say("[startup]"); };
  app->onSetupGraphics = [] { return true; };
  app->onState = [](TApplication::ApplicationState state) { say("state", state); };
  app->onDestroy = [app] { say(app->IsInDrawThread() ? "[destroy] on draw" : "[destroy] elsewhere"); };
  (*preparation)(*app);
  return app;
}

std::unique_ptr<ChildProcess> program(const Preparation& prepare) {
  return std::make_unique<ChildProcess>([&] {
    setenv("SDL_VIDEODRIVER", "dummy", 1);
    SDL_Init(SDL_INIT_VIDEO);
    preparation = &prepare;
    char name[] = "topscreen";
    char* arguments[] = {name, nullptr};
    ExitProgram(AppMain(1, arguments, makeApplication));
  });
}

// A moment of the program's life, on the thread that makes it, in the state that is told.
struct Moment {
  const char* name;
  TApplication::ApplicationState state;
  void (*arrange)(TestApplication&, const std::function<void()>& act);
};

const Moment moments[] = {
  {"Init before the GUI", TApplication::APP_INITIALIZING,
   [](TestApplication& app, const std::function<void()>& act) {
     app.onInit = [act, init = app.onInit] { return act(), init(); };
   }},
  {"Init before the load", TApplication::APP_LOADING,
   [](TestApplication& app, const std::function<void()>& act) {
     app.onInit = [act, &app] {
       app.SetGUI<StubGui>(nullptr);
       act();
       return app.LoadGUI(nullptr), 0;
     };
   }},
  {"the load", TApplication::APP_LOADING_GRAPHICS,
   [](TestApplication& app, const std::function<void()>& act) {
     StubGui::onLoad() = [act, &app](void*) {
       act();
       while (!app.shuttingDown()) SDL_Delay(1);
       return 0;
     };
   }},
  {"Init after the load", TApplication::APP_LOADING_2,
   [](TestApplication& app, const std::function<void()>& act) {
     app.onInit = [act, init = app.onInit] { return init(), act(), 0; };
   }},
  {"Startup", TApplication::APP_STARTUP,
   [](TestApplication& app, const std::function<void()>& act) { app.onStartup = act; }},
  {"SetupGraphics", TApplication::APP_STARTUP_GRAPHICS,
   [](TestApplication& app, const std::function<void()>& act) {
     app.onSetupGraphics = [act] { return act(), false; };
   }},
  {"the logic", TApplication::APP_RUNNING,
   [](TestApplication& app, const std::function<void()>& act) {
     app.onRunOnce = [act, &app, done = false]() mutable {
       if (app.status() == TApplication::APP_RUNNING && !std::exchange(done, true)) act();
       return 0;
     };
   }},
};

// The lines in this order, whatever stands between them.
testing::AssertionResult tells(const std::string& output, std::vector<std::string> lines) {
  for (auto& line : lines) line += "\n";
  return tellsInOrder(output, lines);
}

}  // namespace
