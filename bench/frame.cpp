// CPU time of a frame of the full jackpot scene beside the floor: the same render calls issued by nothing but SDL,
// on the same window, in turns, in one run. And the heap allocations of a frame.
//
// usage: WORKING_DIR=<skin>/ bench_frame [rounds]        see bench/run for both drivers
// CPU time is that of the draw thread and of the driver's threads; the main loop's share is printed by itself.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "bench/AllocationCount.h"
#include "bench/BenchApp.h"
#include "bench/RenderRecorder.h"

namespace {

constexpr int kFramesPerRound = 60;

void measure(BenchApp& app, int rounds) {
  TopScreenScreen& screen = app.screen();
  const double mainBefore = app.mainLoop(), wallBefore = seconds(CLOCK_MONOTONIC);
  std::vector<double> program, floor, ratios;
  long programAllocations = 0, floorAllocations = 0, programNews = 0, copies = 0;
  for (int round = 0; round < rounds; ++round) {
    double before = app.cpu();
    long allocated = allocationsOfThisThread();
    const long newed = newsOfThisThread();
    for (int i = 0; i < kFramesPerRound; ++i) screen.draw();
    programNews += newsOfThisThread() - newed;
    program.push_back((app.cpu() - before) / kFramesPerRound * 1000);
    programAllocations += allocationsOfThisThread() - allocated;

    recorder::start();
    for (int i = 0; i < kFramesPerRound; ++i) {
      screen.draw();
      recorder::mark();
    }
    recorder::stop();
    copies = recorder::copies();

    app.lockDrawMutex();
    before = app.cpu();
    allocated = allocationsOfThisThread();
    for (int i = 0; i < recorder::frames(); ++i) recorder::replay(i);
    floor.push_back((app.cpu() - before) / kFramesPerRound * 1000);
    floorAllocations += allocationsOfThisThread() - allocated;
    app.unlockDrawMutex();
    ratios.push_back(program.back() / floor.back());
  }
  const double frames = static_cast<double>(rounds) * kFramesPerRound;
  const double wall = seconds(CLOCK_MONOTONIC) - wallBefore;
  std::printf("driver %s, %d rounds of %d frames, %.1f copies a frame\n", app.driver().c_str(), rounds,
              kFramesPerRound, static_cast<double>(copies) / kFramesPerRound);
  std::printf("CPU ms a frame: program %.3f, floor %.3f, ratio %.3f (median of the rounds' ratios %.3f)\n",
              median(program), median(floor), median(program) / median(floor), median(ratios));
  std::printf("heap allocations a frame: program %.3f, floor %.3f; by our own code %.3f\n",
              programAllocations / frames, floorAllocations / frames, programNews / frames);
  std::printf("main loop: %.1f%% of a core\n", (app.mainLoop() - mainBefore) / wall * 100);
}

}  // namespace

int main(int argc, char** argv) {
  const int rounds = argc > 1 ? std::max(1, std::atoi(argv[1])) : 20;
  return runBench([rounds](BenchApp& app) { measure(app, rounds); });
}
