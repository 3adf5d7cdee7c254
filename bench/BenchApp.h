#pragma once

#include <pthread.h>
#include <functional>
#include <string>
#include <vector>

#include "vesperatopscreen/TopScreenApp.h"
#include "vesperatopscreen/TopScreenScreen.h"

// The program without its client, for the benchmarks: the data come from here, frames are drawn without pause. Its
// picture is the full jackpot scene: four levels with all digits rolling, four tickers, a full-screen animation on
// top. When it has stood for six seconds the measurement runs on the draw thread, once; then the program ends.
class BenchApp : public TopScreenApp {
 public:
  using Measurement = std::function<void(BenchApp&)>;
  // particles: with the full-screen animation.
  BenchApp(Measurement measurement, bool particles);

  int Init() override;
  int RunOnce() override;
  int DrawOnce() override;

  TopScreenScreen& screen() { return *screen_; }
  // Processor seconds of the draw thread and of the driver's threads.
  double cpu() const;
  // Processor seconds of the main loop alone.
  double mainLoop() const;
  std::string driver() const;

 private:
  const Measurement measurement_;
  const bool particles_;
  bool fed_;
  Uint32 runningSince_;  // draw thread
  Uint32 lastRaise_;
  PlatformState data_;
  TopScreenScreen* screen_;
  pthread_t mainThread_;
};

// Runs the measurement in a program of its own; the process's exit code.
int runBench(BenchApp::Measurement measurement, bool particles = true);
// The same with an application, and pauses between frames, of the caller's.
int runBench(BenchApp& app);

double seconds(clockid_t clock);
double median(std::vector<double> values);

// A folder for files that a benchmark makes, below HOME_DIR, with a slash at its end.
std::string scratchFolder();

// Writes an atlas of so many frames with sparks on transparent ground into the folder: "<name>.xml" and its
// picture. The result is what a sprite animation is given as its file.
std::string writeAtlas(const std::string& folder, const std::string& name, int frames, int width, int height);

// Writes a picture with sparks.
void writePicture(const std::string& file, int width, int height);
