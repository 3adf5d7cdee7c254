// The longest frame of the full jackpot scene while an atlas of 60 frames and ten paytable pages load, beside the
// longest frame without, in one run.
//
// usage: WORKING_DIR=<skin>/ bench_load [rounds]         see bench/run for both drivers
// Wall times swing with what else the machine does; the draw thread's own CPU time says what the program adds.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <vector>

#include "bench/BenchApp.h"
#include "common/ThreadSafeProperty.h"
#include "components/TSpriteAnimation.h"
#include "vesperatopscreen/TPaytablesPanel.h"

using namespace vendelo_sdl2;
namespace fs = std::filesystem;

namespace {

constexpr int kFramesBefore = 120;
constexpr int kAtlasFrames = 60;
constexpr double kGiveUpSeconds = 60;

const char* const pages[] = {"InfoPage_Paytable",   "InfoPage_Paytable_Bonus", "InfoPage_ExpandFeature",
                             "InfoPage_Features",   "InfoPages_BonusFeature",  "InfoPage_Features2",
                             "InfoPages_Features2", "InfoPages_BonusFeature2", "InfoPage_Rules"};

// An animation that tells how far its loading has come.
struct Atlas : TSpriteAnimation {
  using TSpriteAnimation::TSpriteAnimation;
  bool loading() const { return mLoadThread != nullptr; }
};

// The longest frames of one stretch in milliseconds, on the wall and of the draw thread's CPU time.
struct Longest {
  double wall = 0, cpu = 0;
  void draw(TopScreenScreen& screen) {
    const double cpuBefore = seconds(CLOCK_THREAD_CPUTIME_ID), wallBefore = seconds(CLOCK_MONOTONIC);
    screen.draw();
    wall = std::max(wall, (seconds(CLOCK_MONOTONIC) - wallBefore) * 1000);
    cpu = std::max(cpu, (seconds(CLOCK_THREAD_CPUTIME_ID) - cpuBefore) * 1000);
  }
};

void writePages(const std::string& icons) {
  fs::create_directories(icons + "paytable");
  writePicture(icons + "background.png", 1920, 1080);
  for (const char* page : pages) writePicture(icons + "paytable/" + page + ".png", 1920, 1080);
}

// The atlas is read, decoded and cut.
Longest loadAtlas(BenchApp& app, const std::string& file, Atlas*& atlas) {
  Longest frames;
  atlas = nullptr;
  app.DeferToDraw(
    [&] {
      atlas = new Atlas(app.screen().GetRenderer(), 460, 300, 1000, 380, file, TSpriteAnimation::NONE, "sixty");
      app.screen().AddComponent(atlas);
    },
    false);
  do frames.draw(app.screen());
  while (!atlas || atlas->loading());
  return frames;
}

// Its frames are shown for the first time, and so become textures.
Longest playAtlas(BenchApp& app, Atlas& atlas) {
  Longest frames;
  atlas.SetFrame(kAtlasFrames - 1, true);
  while (atlas.GetCurrentFrame() < kAtlasFrames - 1) frames.draw(app.screen());
  return frames;
}

// Ten pages are read and decoded, and handed to the panel.
Longest loadPages(BenchApp& app) {
  Longest frames;
  app.screen().ClearPaytablesPanel();
  app.screen().UpdatePaytablesPanel(false);
  auto* panel = static_cast<TPaytablesPanel*>(app.screen().FindComponentByName("pPaytablesPanel"));
  const double begin = seconds(CLOCK_MONOTONIC);
  do frames.draw(app.screen());
  while (panel->updatePaytable() != 0 && seconds(CLOCK_MONOTONIC) - begin < kGiveUpSeconds);
  if (seconds(CLOCK_MONOTONIC) - begin >= kGiveUpSeconds)
    std::fprintf(stderr, "bench_load: the pages did not come\n");
  return frames;
}

struct Series {
  std::vector<double> wall, cpu;
  void add(const Longest& frames) {
    wall.push_back(frames.wall);
    cpu.push_back(frames.cpu);
  }
};

void print(const char* what, const Series& with, const Series& without) {
  std::printf("%s: longest frame %.1f ms beside %.1f, ratio %.2f; of the draw thread's CPU %.1f beside %.1f\n",
              what, median(with.wall), median(without.wall), median(with.wall) / median(without.wall),
              median(with.cpu), median(without.cpu));
}

void measure(BenchApp& app, int rounds) {
  TopScreenScreen& screen = app.screen();
  const std::string folder = scratchFolder();
  const std::string file = writeAtlas(folder, "sixty", kAtlasFrames, 1000, 380);
  writePages(folder + "Games/Bench/Icons/");
  fs::current_path(folder);  // the games' folders are looked for from here
  {
    ScopedLock lock(app.getState());
    (&app.getState()).ActiveGame = GameRegistryEntry(7, "Bench", GAMETYPE_VESPERA_SLOTGAME);
  }
  for (int i = 0; i < 60; ++i) screen.draw();

  Series without, cutting, playing, paging;
  for (int round = 0; round < rounds; ++round) {
    Longest plain;
    for (int i = 0; i < kFramesBefore; ++i) plain.draw(screen);
    without.add(plain);
    Atlas* atlas = nullptr;
    cutting.add(loadAtlas(app, file, atlas));
    playing.add(playAtlas(app, *atlas));
    screen.RemoveComponent(atlas, true);
    paging.add(loadPages(app));
  }
  std::printf("driver %s, medians of %d rounds\n", app.driver().c_str(), rounds);
  print("60-frame atlas loads", cutting, without);
  print("60-frame atlas plays first", playing, without);
  print("ten pages load", paging, without);
}

}  // namespace

int main(int argc, char** argv) {
  const int rounds = argc > 1 ? std::max(1, std::atoi(argv[1])) : 5;
  return runBench([rounds](BenchApp& app) { measure(app, rounds); });
}
