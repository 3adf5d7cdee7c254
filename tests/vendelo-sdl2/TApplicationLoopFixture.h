#pragma once

#include <gtest/gtest.h>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <thread>
#include <utility>

#include "tests/support/FakeClock.h"
#include "tests/support/TestApplication.h"

// What the tests of the main loop share.
namespace looptest {

using namespace vendelo_sdl2;

// What the replaced nanosleep does: records the request and moves the clock by it and by what the test adds.
struct FakeSleep {
  FakeClock* clock = nullptr;
  std::vector<timespec> requests;
  std::vector<int> overshoot;  // milliseconds; the last one stays
  int result = 0;

  std::vector<long> milliseconds() const {
    std::vector<long> values;
    for (const timespec& request : requests)
      values.push_back(static_cast<long>(request.tv_sec) * 1000 + request.tv_nsec / 1000000);
    return values;
  }
};
inline FakeSleep fakeSleep;

inline int sleepFake(const timespec* time, timespec*) {
  const size_t index = fakeSleep.requests.size();
  fakeSleep.requests.push_back(*time);
  int over = 0;
  if (!fakeSleep.overshoot.empty()) over = fakeSleep.overshoot[std::min(index, fakeSleep.overshoot.size() - 1)];
  fakeSleep.clock->advance(static_cast<Uint32>(time->tv_sec * 1000 + time->tv_nsec / 1000000 + over));
  return fakeSleep.result;
}

// A main loop without GUI and window on a clock that only sleeping and the test's hooks move.
class Loop : public testing::Test {
 protected:
  Loop() {
    fakeSleep = FakeSleep();
    fakeSleep.clock = &clock;
    SystemSeams.NanoSleep = sleepFake;
    app = std::make_unique<TestApplication>();
    app->SetLogicInterval(0);  // the logic in every pass
    char name[] = "/tmp/loopXXXXXX";
    logFolder = mkdtemp(name);
  }
  ~Loop() override {
    app.reset();
    std::filesystem::remove_all(logFolder);
  }
  // MainLoop from `state` on; every pass does `work` in its logic, the last one terminates.
  int runPasses(TApplication::ApplicationState state, int passes, const std::function<void(int)>& work) {
    int pass = 0;
    app->onRunOnce = [&, passes] {
      if (work) work(pass);
      if (++pass == passes) app->terminate(DEFAULT, false);
      return 0;
    };
    return loopFrom(state);
  }
  // MainLoop from `state` on. The draw thread of a GUI has done its load before: that keeps the logic waiting.
  int loopFrom(TApplication::ApplicationState state) {
    app->setStatus(state);
    while (app->GUI() && app->frames() == 0) SDL_Delay(1);
    return app->MainLoop();
  }
  // A GUI module whose frames do nothing: they clear nothing and take no lock, and their thread changes no state.
  void giveItAGui() {
    setenv("SDL_VIDEODRIVER", "dummy", 1);
    SDL_Init(SDL_INIT_VIDEO);
    StubGui::onLoad() = nullptr;
    StubGui::onMainLogic() = nullptr;
    app->onDrawOnce = [] { return SDL_Delay(1), 0; };
    ASSERT_EQ(app->SetGUI<StubGui>(nullptr), 0);
  }
  // Moves the clock by a millisecond at the end of every pass.
  void everyPassTakesAMillisecond() {
    app->AddTimedTask(new TtthLambda([this] { clock.advance(1); }, 0, TTimedTaskHandler::ENDLESS, "tick"),
                      TASK_THREAD_SAFE);
    clock.advance(1);
  }
  void task(TimedTaskType type, const std::string& line) {
    app->AddTimedTask(new TtthLambda([this, line] { order.add(line); }, 0, TTimedTaskHandler::EXECUTE_ONCE, line),
                      type);
  }
  void handler(ActionHandleType type, const std::string& line) {
    app->AddActionListener(
      "TestAction",
      new TahLambda([this, line](std::string, void*) { order.add(line); }, TActionHandler::ahtExecuteEndless),
      type);
  }

  // The locks that another thread finds taken: "main", "draw" and "state", each with a blank behind it.
  std::string heldElsewhere() {
    std::string held;
    std::thread([&] {
      if (SDL_TryLockMutex(app->mpMainMutex) == 0)
        SDL_UnlockMutex(app->mpMainMutex);
      else
        held += "main ";
      if (app->tryLockDrawMutex())
        app->unlockDrawMutex();
      else
        held += "draw ";
      if (app->mAppStatus.native().try_lock())
        app->mAppStatus.native().unlock();
      else
        held += "state ";
    }).join();
    return held;
  }
  // A log with one line in its queue, and what happens when a Poll comes upon that.
  void openLog(const std::function<void()>& onLine) {
    onLogLine = onLine;
    app->TLogManager::Init(logFolder + "/loop.log", tellLogLine, this, false);
    app->TLogManager::Poll();
    logIsOpen = true;
    app->WriteLog(0, 0, "a line");
  }
  static void tellLogLine(void* self, const TLogEntry&, int) {
    auto* loop = static_cast<Loop*>(self);
    if (std::exchange(loop->logIsOpen, false)) loop->onLogLine();
  }

  SeamsGuard seams;
  FakeClock clock{1000};
  NoticeCapture notices;
  Trace order;
  std::unique_ptr<TestApplication> app;
  std::string logFolder;
  std::function<void()> onLogLine;
  bool logIsOpen = false;  // and its line has not come yet
};

}  // namespace looptest
