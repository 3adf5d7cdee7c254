// A machine that has no thread left: SDL_CreateThread is linked in front of SDL's own and fails when told to.
#include <dlfcn.h>

#include <atomic>
#include <memory>

#include "tests/support/LogLines.h"
#include "tests/vendelo-sdl2/TActionManFixture.h"
#include "vendelo-sdl2/TAsyncJobs.h"
#include "vendelo-sdl2/TTaskMan.h"

namespace {
bool refused = false;
}

extern "C" SDL_Thread* SDL_CreateThread(SDL_ThreadFunction function, const char* name, void* data) {
  if (refused) {
    SDL_SetError("no more");
    return nullptr;
  }
  using Create = SDL_Thread* (*)(SDL_ThreadFunction, const char*, void*);
  return reinterpret_cast<Create>(dlsym(RTLD_NEXT, "SDL_CreateThread"))(function, name, data);
}

using namespace bustest;

namespace {

TEST(ThreadRefusal, AnAsynchronousHandlerIsLeftOutWithALogLineAndRunsTheNextTime) {
  LogLines log;
  Bus bus;
  std::atomic<int> runs{0};
  bus.AddActionListener(
    "abcd", new TahLambda([&](std::string, void*) { ++runs; }, TActionHandler::ahtExecuteEndless), ACTION_ASYNC);
  refused = true;
  bus.fire("abcd", ACTION_ANY, ACTION_ASYNC);
  EXPECT_EQ(log.lines(), std::vector<std::string>{"4 ActionMan: no thread for action abcd: no more"});
  EXPECT_EQ(TAsyncJob::Running(), 0) << "nobody is waited for";
  EXPECT_EQ(runs, 0);
  refused = false;
  bus.fire("abcd", ACTION_ANY, ACTION_ASYNC);
  ASSERT_TRUE(TAsyncJob::WaitForNone(30000));
  EXPECT_EQ(runs, 1);
}

TEST(ThreadRefusal, AnAsynchronousTaskStaysWithItsMakerAndMayStartAgain) {
  LogLines log;
  std::atomic<int> runs{0};
  refused = true;
  for (const bool autoFree : {true, false}) {
    auto task = std::make_unique<TAsyncTimedTaskHandler>([&] { ++runs; }, 0, TTimedTaskHandler::EXECUTE_ONCE,
                                                         "loader", true, autoFree);
    EXPECT_EQ(TAsyncJob::Running(), 0);
    task->free();
  }
  EXPECT_EQ(log.lines(), std::vector<std::string>(2, "4 No thread for task loader: no more"));
  TAsyncTimedTaskHandler task([&] { ++runs; }, 0, TTimedTaskHandler::EXECUTE_ONCE, "loader", true, false);
  refused = false;
  EXPECT_EQ(runs, 0);
  task.start();
  while (task.completedCount() == 0) SDL_Delay(1);
  task.free();
  EXPECT_EQ(runs, 1);
}

}  // namespace
