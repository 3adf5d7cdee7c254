// A crash at any moment of a program that is busy on all its threads: inside the allocator, beside its locks, amid
// its log and its end. Each in a process of its own.
#include <gtest/gtest.h>
#include <sys/syscall.h>
#include <unistd.h>
#include <algorithm>
#include <atomic>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <random>
#include <thread>

#include "common/Logger.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/ScratchFolder.h"
#include "tests/support/TestApplication.h"
#include "vendelo-sdl2/MyUtils.h"

using namespace vendelo_sdl2;

// In front of the system's, which waits for what the whole machine writes.
extern "C" void sync() {}

// ThreadSanitizer gives a signal to a thread only where that is amid nothing, and never to one that waits for a
// lock: no such moment comes there.
#ifndef __SANITIZE_THREAD__

namespace {

constexpr int kAtATime = 8;
constexpr int kUsualCrashes = 60;
constexpr unsigned kLimit = 2;  // seconds, for the ten that are asked for

int crashes() {
  const char* wanted = std::getenv("CRASHES");
  return wanted ? std::atoi(wanted) : kUsualCrashes;
}

// Lines go to the file alone.
class BusyApplication : public TestApplication {
 public:
  int _WriteLog(char color, TLogType type, unsigned long gameId, const std::string& text) override {
    return TApplication::_WriteLog(color, type, gameId, text);
  }
};

// How far each kind of thread has come.
std::atomic<int> logicRounds{0}, frameRounds{0}, otherRounds{0};

// Blocks of sizes for which the allocator takes its locks.
void allocate(int round) {
  std::vector<std::string> blocks;
  for (int i = 0; i < 20; ++i) blocks.emplace_back(static_cast<size_t>(1100 + 97 * ((round + i) % 60)), 'x');
}

void work(TestApplication& app, int round) {
  allocate(round);
  app.WriteLog(round % 9, 0, "round %d", round);
  KLOG(LogApp, logs::Verbose, "round %d", round);
  app.SetParam("Round", std::to_string(round), PARAM_CACHE, "", "", true);
  app.GetParam("Round", PARAM_MASK_ALL)->AsString();
  app.GenerateAction("Nobody", nullptr, ACTION_ANY);
  MyUtils::currency2string(round, 2);
}

void makeBusy(TestApplication& app) {
  app.onSetupGraphics = [] { return true; };
  app.onRunOnce = [&app] {
    const int round = ++logicRounds;
    work(app, round);
    app.DeferToDraw([round] { allocate(round); }, false);
    return 0;
  };
  app.onDrawOnce = [&app] {
    app.lockDrawMutex();
    work(app, ++frameRounds);
    if (auto* gui = static_cast<StubGui*>(app.GUI())) gui->serveAndDraw(false, false);
    app.unlockDrawMutex();
    return 0;
  };
  app.onStartup = [&app] {
    for (int i = 0; i < 2; ++i)
      std::thread([&app] {
        for (;;) {
          const int round = ++otherRounds;
          work(app, round);
          app.DeferSync([round] { allocate(round); }, false);
        }
      }).detach();
  };
}

std::vector<pid_t> threadsButThisOne() {
  std::vector<pid_t> out;
  for (const auto& entry : std::filesystem::directory_iterator("/proc/self/task"))
    out.push_back(std::stoi(entry.path().filename().string()));
  std::erase(out, gettid());
  std::sort(out.begin(), out.end());
  return out;
}

// Once all are busy, and some milliseconds later: to one of the threads, or to the process as from outside.
void sendCrash(unsigned seed) {
  std::mt19937 random(seed);
  while (std::min({logicRounds.load(), frameRounds.load(), otherRounds.load()}) < 3) usleep(1000);
  const std::vector<pid_t> threads = threadsButThisOne();
  usleep(random() % 10000);
  const size_t target = random() % (threads.size() + 1);
  if (target == threads.size() || syscall(SYS_tgkill, getpid(), threads[target], SIGSEGV) != 0)
    kill(getpid(), SIGSEGV);
  for (;;) usleep(1000);
}

// Every other one may reboot.
bool mayReboot(int number) { return number % 2 == 1; }

std::unique_ptr<ChildProcess> crash(int number, const std::string& log) {
  return std::make_unique<ChildProcess>([number, log] {
    if (mayReboot(number)) unsetenv("DISABLE_REBOOT_ON_EXIT");
    setenv("PATH", "/nowhere", 1);  // the backtrace without the names, which take seconds
    setenv("SDL_VIDEODRIVER", "dummy", 1);
    SystemSeams.Alarm = [](unsigned) { return ::alarm(kLimit); };
    SystemSeams.System = [](const char*) { return 0; };
    SystemSeams.Reboot = [](int) {
      _exit(77);
      return 0;
    };
    SDL_Init(SDL_INIT_VIDEO);
    auto* app = new BusyApplication;  // never deleted: the process ends
    app->TLogManager::Init(log, nullptr, nullptr, false);
    app->SetGUI<StubGui>(nullptr);
    makeBusy(*app);
    app->onDestroy = [] { dprintf(STDERR_FILENO, "[destroy]"); };
    std::thread(sendCrash, static_cast<unsigned>(number)).detach();
    app->LoadGUI(nullptr);
    app->Run();
  });
}

TEST(BusyCrash, EndsAtEachMomentAsACrashDoes) {
  const ScratchFolder folder("busycrash");
  int destroyed = 0;
  for (int first = 0; first < crashes(); first += kAtATime) {
    std::vector<std::unique_ptr<ChildProcess>> children;
    for (int number = first; number < std::min(first + kAtATime, crashes()); ++number)
      children.push_back(crash(number, folder + "crash" + std::to_string(number) + ".log"));
    for (size_t i = 0; i < children.size(); ++i) {
      const int number = first + static_cast<int>(i);
      ASSERT_EQ(children[i]->end(), mayReboot(number) ? "exit 77" : "signal 11") << "crash " << number;
      destroyed += occurrences("[destroy]", children[i]->output());
    }
  }
  RecordProperty("Crashes", crashes());
  RecordProperty("CameToTheDestruction", destroyed);
}

}  // namespace

#endif
