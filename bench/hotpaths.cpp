// What the main loop and its neighbours call most: actions, timed tasks, parameters, the log, money as text.
//
// usage: bench_hotpaths [options of Google Benchmark]        see bench/run for the call
// Times of one run on a shared machine say little; the figures to keep are ratios within a run: 10 against 10,000
// parameters, 10 against 1,000 actions, money against the C library's number, writers with and without a disk.
#include <SDL.h>
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "vendelo-sdl2/MyUtils.h"
#include "vendelo-sdl2/TActionMan.h"
#include "vendelo-sdl2/TLogManager.h"
#include "vendelo-sdl2/TParamMan.h"
#include "vendelo-sdl2/TTaskMan.h"

using namespace vendelo_sdl2;

namespace {

using Clock = std::chrono::steady_clock;

// Names that differ late, as those of a family of parameters do, and come in no order.
std::vector<std::string> shuffledNames(size_t count) {
  std::vector<std::string> names;
  for (size_t i = 0; i < count; ++i) names.push_back("Terminal.Setting." + std::to_string(i * 7919 % 100003));
  return names;
}

// One action from GenerateAction to the run of its handler, among as many registered ones as the argument says.
void generateActionToRun(benchmark::State& state) {
  TActionMan bus;
  long runs = 0;
  const auto names = shuffledNames(static_cast<size_t>(state.range(0)));
  for (const auto& name : names)
    bus.AddActionListener(name,
                          new TahLambda([&runs](std::string, void*) { ++runs; }, TActionHandler::ahtExecuteEndless),
                          ACTION_NORMAL);
  const std::string& asked = names[names.size() / 2];
  for (auto _ : state) {
    bus.GenerateAction(asked, nullptr, ACTION_ANY);
    bus.ProcessActions();
    bus.ExecuteActions(ACTION_NORMAL);
  }
  if (runs < static_cast<long>(state.iterations())) state.SkipWithError("the handler did not run");
}
BENCHMARK(generateActionToRun)->Arg(10)->Arg(1000);

// A poll of a set in which nothing is due.
void processIdleTasks(benchmark::State& state) {
  TTaskMan tasks;
  long runs = 0;
  while (SDL_GetTicks() < 2) SDL_Delay(1);  // a task that was made at tick 0 would be due at once
  for (long i = 0; i < state.range(0); ++i)
    tasks.AddTimedTask(new TtthLambda([&runs] { ++runs; }, 3600000, TTimedTaskHandler::ENDLESS, "idle"),
                       TASK_NORMAL);
  for (auto _ : state) tasks.ProcessTasks(TASK_NORMAL);
  if (runs != 0) state.SkipWithError("a task was due");
  state.counters["per_task"] =
    benchmark::Counter(static_cast<double>(state.range(0)),
                       benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}
BENCHMARK(processIdleTasks)->Arg(10)->Arg(1000);

// A read of a parameter that the cache holds, another one each time.
void getParam(benchmark::State& state) {
  TParamMan store;
  const auto names = shuffledNames(static_cast<size_t>(state.range(0)));
  for (const auto& name : names) store.SetParam(name, "value", PARAM_GLOBAL, "", "", false);
  size_t next = 0;
  for (auto _ : state) {
    if (store.GetParam(names[next], PARAM_CACHE | PARAM_GLOBAL) == pVoidParam) state.SkipWithError("not found");
    next = (next + 1) % names.size();
  }
}
BENCHMARK(getParam)->Arg(10)->Arg(10000);

// The first write of so many parameters.
void setNewParams(benchmark::State& state) {
  const auto names = shuffledNames(static_cast<size_t>(state.range(0)));
  for (auto _ : state) {
    TParamMan store;
    for (const auto& name : names) store.SetParam(name, "value", PARAM_GLOBAL, "", "", false);
  }
  state.counters["per_param"] =
    benchmark::Counter(static_cast<double>(state.range(0)),
                       benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}
BENCHMARK(setNewParams)->Arg(10)->Arg(10000);

// The log with its polling thread. The file is a pipe whose far end either reads on or, with the disk held up, does
// not read until the benchmark is over: then Poll stands in its write, as on a disk that does not answer.
class LogBench {
 public:
  explicit LogBench(bool held) : mHeld(held) {
    mFolder = std::filesystem::temp_directory_path() / ("bench_hotpaths." + std::to_string(getpid()));
    std::filesystem::create_directories(mFolder);
    const auto pipe = mFolder / ("log_" + MyUtils::GetCurrentDateString() + ".log");
    if (mkfifo(pipe.c_str(), 0600) != 0) std::abort();
    mReader = std::thread([this, pipe] { read(pipe); });
    log.Init((mFolder / "log.log").string(), nullptr, nullptr, false);
    log.SetOutputToConsole(false);
    mPoller = std::thread([this] {
      while (!mStop) {
        mPollSince = Clock::now().time_since_epoch().count();
        log.Poll();
        ++polls;
        mLongestPoll = std::max(mLongestPoll.load(), Clock::now().time_since_epoch().count() - mPollSince.load());
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
      }
    });
    while (mHeld && !standsStill()) log.WriteLog(0, 0, "a line that fills the pipe until nothing more goes in");
    polls = 0;
  }
  ~LogBench() {
    mHeld = false;
    mStop = true;
    mPoller.join();
    log.Poll();
    log.Destroy();
    mReader.join();
    std::filesystem::remove_all(mFolder);
  }

  // Nanoseconds of the longest Poll so far, one under way included.
  int64_t longestPoll() const {
    return std::max(mLongestPoll.load(), Clock::now().time_since_epoch().count() - mPollSince.load());
  }

  TLogManager log;
  std::atomic<int64_t> longestWrite{0};  // nanoseconds
  std::atomic<int64_t> lines{0};
  std::atomic<int> polls{0};  // that have ended

 private:
  bool standsStill() const { return Clock::now().time_since_epoch().count() - mPollSince.load() > 100'000'000; }
  void read(const std::filesystem::path& pipe) {
    const int file = open(pipe.c_str(), O_RDONLY);
    char buffer[65536];
    while (mHeld) std::this_thread::sleep_for(std::chrono::milliseconds(1));
    while (::read(file, buffer, sizeof buffer) > 0) {
    }
    close(file);
  }

  std::filesystem::path mFolder;
  std::atomic<bool> mHeld;
  std::atomic<bool> mStop{false};
  std::atomic<int64_t> mPollSince{Clock::now().time_since_epoch().count()};
  std::atomic<int64_t> mLongestPoll{0};
  std::thread mReader;
  std::thread mPoller;
};

std::unique_ptr<LogBench> logBench;

// Lines a second from all writers together, the longest single write, and the longest Poll beside it.
void writeLog(benchmark::State& state) {
  int64_t longest = 0;
  for (auto _ : state) {
    const auto before = Clock::now();
    logBench->log.WriteLog(3, 0, "Jackpot level %d is at %ld now, %s", 2, 1234567L, "and a text");
    longest = std::max<int64_t>(longest, (Clock::now() - before).count());
  }
  for (int64_t known = logBench->longestWrite; known < longest;)
    if (logBench->longestWrite.compare_exchange_weak(known, longest)) break;
  logBench->lines += static_cast<int64_t>(state.iterations());
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations()));
}
// A writer that waited for the disk would never come to its end while that is held up: no Poll ends in that time.
void reportLongest(const char* disk) {
  std::printf("%s: %ld lines taken while %d polls ended; longest WriteLog %.3f ms, longest Poll %.1f ms\n", disk,
              static_cast<long>(logBench->lines), logBench->polls.load(),
              static_cast<double>(logBench->longestWrite) / 1e6,
              static_cast<double>(logBench->longestPoll()) / 1e6);
  logBench.reset();
}
constexpr int kWriterLines = 100000;
BENCHMARK(writeLog)
  ->Name("writeLog/disk_free")
  ->Setup([](const benchmark::State&) { logBench = std::make_unique<LogBench>(false); })
  ->Teardown([](const benchmark::State&) { reportLongest("disk free"); })
  ->Iterations(kWriterLines)
  ->Threads(1)
  ->Threads(4)
  ->UseRealTime();
BENCHMARK(writeLog)
  ->Name("writeLog/disk_held_up")
  ->Setup([](const benchmark::State&) { logBench = std::make_unique<LogBench>(true); })
  ->Teardown([](const benchmark::State&) { reportLongest("disk held up"); })
  ->Iterations(kWriterLines)
  ->Threads(4)
  ->UseRealTime();

void currency2string(benchmark::State& state) {
  double value = 1234567.89;
  for (auto _ : state) {
    benchmark::DoNotOptimize(MyUtils::currency2string(value, 2));
    value += 0.01;
  }
}
BENCHMARK(currency2string);

// The floor of the above: a number without separators.
void snprintfNumber(benchmark::State& state) {
  double value = 1234567.89;
  for (auto _ : state) {
    char text[64];
    std::snprintf(text, sizeof text, "%.2f", value);
    benchmark::DoNotOptimize(std::string(text));
    value += 0.01;
  }
}
BENCHMARK(snprintfNumber);

}  // namespace

BENCHMARK_MAIN();
