// Crashes whose way to the end hangs: the limit ends them all the same. Each in a process of its own, with a second
// for the ten that are asked for.
#include <gtest/gtest.h>
#include <pthread.h>
#include <unistd.h>
#include <atomic>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <new>
#include <thread>

#include "tests/support/ChildProcess.h"
#include "tests/support/LogLines.h"
#include "tests/support/TestApplication.h"

using namespace vendelo_sdl2;

namespace {
// Held by nobody who would give it back, when it is.
std::atomic<bool> allocatorIsLocked{false};
}  // namespace

// In front of the library's: the allocator of a process that has crashed inside it.
[[gnu::noinline]] void* operator new(size_t size) {
  while (allocatorIsLocked) usleep(1000);
  if (void* memory = std::malloc(size ? size : 1)) return memory;
  throw std::bad_alloc();
}
// Not inline: the compiler would see a pointer of new's given to free.
[[gnu::noinline]] void operator delete(void* memory) noexcept { std::free(memory); }
[[gnu::noinline]] void operator delete(void* memory, size_t) noexcept { std::free(memory); }

namespace {

void say(const char* text, unsigned number) { dprintf(STDERR_FILENO, "[%s %x]", text, number); }

// What a child's crash meets, before any second thread exists.
void prepare() {
  SystemSeams.Alarm = [](unsigned seconds) {
    say("limit", seconds);
    return ::alarm(1);
  };
  SystemSeams.Reboot = [](int command) {
    say("reboot", static_cast<unsigned>(command));
    _exit(77);
    return 0;
  };
  SystemSeams.System = [](const char*) { return 0; };
  setenv("SDL_VIDEODRIVER", "dummy", 1);
  SDL_Init(SDL_INIT_VIDEO);
}

TestApplication* makeApplication() {
  auto* app = new TestApplication;  // never deleted: the process ends
  app->onDestroy = [] { say("destroy", 0); };
  app->onSetupGraphics = [] { return true; };
  app->SetGUI<StubGui>(nullptr);
  return app;
}

void lockAllocator() { allocatorIsLocked = true; }

TEST(CrashLimit, IsTenSecondsAndEndsACrashInsideTheAllocatorByItsSignal) {
  const struct {
    const char* name;
    int signal;
  } rows[] = {{"memory", SIGSEGV}, {"abort", SIGABRT}, {"division", SIGFPE}, {"instruction", SIGILL}};
  endAll(
    rows,
    [](const auto& row) {
      return std::make_unique<ChildProcess>([row] {
        prepare();
        makeApplication();
        lockAllocator();
        std::raise(row.signal);
      });
    },
    [](const auto& row, ChildProcess& child) {
      EXPECT_EQ(child.end(), "signal " + std::to_string(row.signal));
      EXPECT_EQ(occurrences("[limit a]", child.output()), 1) << child.output();
      EXPECT_EQ(occurrences("[destroy", child.output()), 0);
      EXPECT_EQ(occurrences("[reboot", child.output()), 0);
    });
}

TEST(CrashLimit, EndsACrashBesideALockThatNobodyGivesBack) {
  ChildProcess child([] {
    prepare();
    TestApplication* app = makeApplication();
    std::atomic<bool> held{false};
    std::thread holder([&] {
      app->mAppStatus.Lock();
      held = true;
      for (;;) usleep(1000);
    });
    while (!held) usleep(1000);
    // Not on this thread, which then takes the alarm: the thread sanitizer keeps a signal from one that waits for a
    // lock.
    const std::thread crashing([] { std::raise(SIGSEGV); });
    for (;;) usleep(1000);
  });
  EXPECT_EQ(child.end(), "signal 11");
  EXPECT_EQ(occurrences("[limit a]", child.output()), 1);
  EXPECT_EQ(occurrences("[destroy", child.output()), 0);
}

TEST(CrashLimit, EndsADestructionThatHangs) {
  ChildProcess child([] {
    prepare();
    makeApplication()->onDestroy = [] {
      for (;;) usleep(1000);
    };
    std::raise(SIGFPE);
  });
  EXPECT_EQ(child.end(), "signal 8");
}

TEST(CrashLimit, EndsAFailedThreadCheckThatHangs) {
  ChildProcess child([] {
    prepare();
    TestApplication* app = makeApplication();
    lockAllocator();
    app->ThreadCheck(THREAD_DRAW);
  });
  EXPECT_EQ(child.end(), "signal 6");
  EXPECT_EQ(occurrences("[limit a]", child.output()), 1);
}

TEST(CrashLimit, RebootsWhereACrashDoes) {
  const struct {
    const char* name;
    const char* disable;
    bool refused;
    const char* end;
  } rows[] = {{"allowed", nullptr, false, "exit 77"}, {"refused", "0", true, "signal 11"}};
  endAll(
    rows,
    [](const auto& row) {
      return std::make_unique<ChildProcess>([row] {
        const ScopedEnvironment reboots("DISABLE_REBOOT_ON_EXIT", row.disable);
        prepare();
        if (row.refused)
          SystemSeams.Reboot = [](int command) {
            say("reboot", static_cast<unsigned>(command));
            return -1;
          };
        makeApplication();
        lockAllocator();
        std::raise(SIGSEGV);
      });
    },
    [](const auto& row, ChildProcess& child) {
      EXPECT_EQ(child.end(), row.end);
      EXPECT_EQ(occurrences("[reboot 1234567]", child.output()), 1);
    });
}

// The draw thread keeps the clock's signal out, as all threads of the window library do; here everybody else keeps
// out every signal that he can.
TEST(CrashLimit, EndsACrashOnTheDrawThreadThatIsAloneWithIt) {
  ChildProcess child([] {
    prepare();
    TestApplication* app = makeApplication();
    app->onStartup = [] {
      sigset_t all;
      sigfillset(&all);
      pthread_sigmask(SIG_SETMASK, &all, nullptr);
    };
    app->onDrawOnce = [app] {
      if (app->status() != TApplication::APP_RUNNING) return 0;
      lockAllocator();
      return std::raise(SIGSEGV);
    };
    app->LoadGUI(nullptr);
    app->Run();
  });
  EXPECT_EQ(child.end(), "signal 11");
  EXPECT_EQ(occurrences("[limit a]", child.output()), 1);
}

TEST(CrashLimit, IsNotBegunAgainByACrashInsideTheFirst) {
  ChildProcess child([] {
    prepare();
    makeApplication()->onDestroy = [] {
      std::thread([] { std::raise(SIGABRT); }).join();
      for (;;) usleep(1000);
    };
    std::raise(SIGSEGV);
  });
  EXPECT_EQ(occurrences("[limit a]", (child.end(), child.output())), 1);
}

TEST(CrashLimit, HoldsWhenTheApplicationIsGoneAndNotForPoliteSignals) {
  const struct {
    const char* name;
    int signal;
    const char* end;
    int limits;
  } rows[] = {{"crash", SIGSEGV, "signal 11", 1}, {"polite", SIGINT, "exit 5", 0}};
  endAll(
    rows,
    [](const auto& row) {
      return std::make_unique<ChildProcess>([row] {
        prepare();
        delete new TestApplication;
        const LogLines log;
        if (row.limits) lockAllocator();
        std::raise(row.signal);
        _exit(5);
      });
    },
    [](const auto& row, ChildProcess& child) {
      EXPECT_EQ(child.end(), row.end);
      EXPECT_EQ(occurrences("[limit", child.output()), row.limits);
    });
}

}  // namespace
