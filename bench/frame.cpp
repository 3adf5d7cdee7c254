// CPU time of a frame of the jackpot scene (four levels, all digits rolling) beside the floor: the same render
// calls issued by nothing but SDL, on the same window, in turns, in one run. And the heap allocations of a frame.
//
// usage: WORKING_DIR=<skin>/ bench_frame [rounds]        see bench/run for both drivers
// CPU time is that of the draw thread and of the driver's threads; the main loop's share is printed by itself.
#include <pthread.h>
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <vector>

#include "bench/AllocationCount.h"
#include "bench/RenderRecorder.h"
#include "vendelo-sdl2/MyUtils.h"
#include "vendelo-sdl2/SystemSeams.h"
#include "vesperatopscreen/TopScreenApp.h"
#include "vesperatopscreen/TopScreenScreen.h"

using namespace vendelo_sdl2;

namespace {

constexpr int framesPerRound = 60;
constexpr Uint32 warmUpMilliseconds = 6000;  // until the picture stands and every wheel has rolled

double seconds(clockid_t clock) {
  timespec time{};
  clock_gettime(clock, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

double median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  return values[values.size() / 2];
}

PlatformState fourLevels() {
  PlatformState state;
  state.ActiveGame = GAME_MENU;
  state.IsLoading = false;
  state.LanguageMessages = {"", "", "", ""};
  for (int id = 0; id < 4; ++id) {
    JackpotsData level{};
    level.id = id;
    level.potValue = 12345678 / (id + 1);
    level.decimalPlaces = 2;
    level.showCurrencySign = true;
    level.currency = "EUR";
    state.JackpotData.push_back(level);
  }
  return state;
}

// The program without its client: data come from here, and frames are drawn without pause.
class BenchApp : public TopScreenApp {
 public:
  explicit BenchApp(int rounds)
    : rounds_(rounds), fed_(false), runningSince_(0), lastRaise_(0), data_(fourLevels()) {}

  int Init() override {
    if (SDL_Init(SDL_INIT_TIMER | SDL_INIT_VIDEO | SDL_INIT_EVENTS) < 0 || TTF_Init() < 0) return -1;
    LoadParamFromEnvironment("WORKING_DIR", "WorkingDir", false);
    MyUtils::SetImageDir(GetParam("WorkingDir", PARAM_MASK_ALL)->AsString() + "VESPERA/TOP_SKIN/");
    if (SetGUI<TopScreenScreen>(nullptr) != 0) return -1;
    screen_ = static_cast<TopScreenScreen*>(GUI());
    return LoadGUI(nullptr);
  }

  int RunOnce() override {
    if (!fed_) {
      fed_ = true;
      mainThread_ = pthread_self();
      StatusReceived(&data_, false);
    } else if (SDL_GetTicks() - lastRaise_ > 1500) {  // new values before the digits have come to rest
      lastRaise_ = SDL_GetTicks();
      for (JackpotsData& level : data_.JackpotData) level.potValue += 123457;
      screen_->UpdateJackpotPanel(data_.JackpotData, "");
    }
    return 0;
  }

  int DrawOnce() override {
    if (status() == APP_RUNNING && runningSince_ == 0) runningSince_ = SDL_GetTicks();
    if (runningSince_ == 0 || SDL_GetTicks() - runningSince_ < warmUpMilliseconds)
      return screen_ ? screen_->draw() : 2;
    measure();
    return 1;
  }

 private:
  double cpu() const {
    clockid_t mainClock;
    pthread_getcpuclockid(mainThread_, &mainClock);
    return seconds(CLOCK_PROCESS_CPUTIME_ID) - seconds(mainClock);
  }

  void measure() {
    clockid_t mainClock;
    pthread_getcpuclockid(mainThread_, &mainClock);
    const double mainBefore = seconds(mainClock), wallBefore = seconds(CLOCK_MONOTONIC);
    std::vector<double> program, floor, ratios;
    long programAllocations = 0, floorAllocations = 0, programNews = 0, copies = 0;
    for (int round = 0; round < rounds_; ++round) {
      double before = cpu();
      long allocated = allocationsOfThisThread();
      const long newed = newsOfThisThread();
      for (int i = 0; i < framesPerRound; ++i) screen_->draw();
      programNews += newsOfThisThread() - newed;
      program.push_back((cpu() - before) / framesPerRound * 1000);
      programAllocations += allocationsOfThisThread() - allocated;

      recorder::start();
      for (int i = 0; i < framesPerRound; ++i) {
        screen_->draw();
        recorder::mark();
      }
      recorder::stop();
      copies = recorder::copies();

      lockDrawMutex();
      before = cpu();
      allocated = allocationsOfThisThread();
      for (int i = 0; i < recorder::frames(); ++i) recorder::replay(i);
      floor.push_back((cpu() - before) / framesPerRound * 1000);
      floorAllocations += allocationsOfThisThread() - allocated;
      unlockDrawMutex();
      ratios.push_back(program.back() / floor.back());
    }
    SDL_RendererInfo info{};
    SDL_GetRendererInfo(screen_->GetRenderer(), &info);
    const double frames = static_cast<double>(rounds_) * framesPerRound;
    const double wall = seconds(CLOCK_MONOTONIC) - wallBefore;
    std::printf("driver %s, %d rounds of %d frames, %.1f copies a frame\n", info.name, rounds_, framesPerRound,
                static_cast<double>(copies) / framesPerRound);
    std::printf("CPU ms a frame: program %.3f, floor %.3f, ratio %.3f (median of the rounds' ratios %.3f)\n",
                median(program), median(floor), median(program) / median(floor), median(ratios));
    std::printf("heap allocations a frame: program %.3f, floor %.3f; by our own code %.3f\n",
                programAllocations / frames, floorAllocations / frames, programNews / frames);
    std::printf("main loop: %.1f%% of a core\n", (seconds(mainClock) - mainBefore) / wall * 100);
  }

  const int rounds_;
  bool fed_;
  Uint32 runningSince_;  // draw thread
  Uint32 lastRaise_;
  PlatformState data_;
  TopScreenScreen* screen_ = nullptr;
  pthread_t mainThread_{};
};

}  // namespace

int main(int argc, char** argv) {
  setenv("DISABLE_REBOOT_ON_EXIT", "1", 1);
  setenv("FPS", "1000", 1);
  SystemSeams.MicroSleep = [](useconds_t) { return 0; };  // no pause between frames
  BenchApp app(argc > 1 ? std::max(1, std::atoi(argv[1])) : 20);
  if (app.Init() != 0) {
    std::fprintf(stderr, "bench_frame: no window or no skin\n");
    app.Destroy();
    return 1;
  }
  app.Run();
  return 0;
}
