// The process's anonymous memory while the full jackpot scene stands, without the benchmarks' own animation: what
// it goes to, and how much it is above the skin's pictures held once.
//
// usage: WORKING_DIR=<skin>/ bench_memory          see bench/run for both drivers
#include <malloc.h>
#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>

#include "bench/BenchApp.h"
#include "bench/Holdings.h"

namespace {

// In bytes, of /proc/self/status.
size_t ofProcess(const std::string& name) {
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);)
    if (line.rfind(name + ":", 0) == 0) return std::stoul(line.substr(name.size() + 1)) * 1024;
  return 0;
}

double mb(size_t bytes) { return static_cast<double>(bytes) / 1e6; }

void measure(BenchApp& app) {
  const size_t anonymous = ofProcess("RssAnon");
  const auto textures = holdings::textures(), surfaces = holdings::surfaces();
  const size_t fonts = holdings::fonts(), skin = holdings::decodedOnce();
  int w = 0, h = 0;
  SDL_GetRendererOutputSize(app.screen().GetRenderer(), &w, &h);
  const size_t backBuffer = static_cast<size_t>(w) * static_cast<size_t>(h) * 4;
  const auto heap = mallinfo2();
  // Below nothing where a graphics card holds the textures.
  const double rest = mb(anonymous) - mb(textures.bytes) - mb(surfaces.bytes) - mb(fonts);
  std::printf("driver %s, anonymous memory %.1f MB, at most resident so far %.1f MB\n", app.driver().c_str(),
              mb(anonymous), mb(ofProcess("VmHWM")));
  std::printf("memory MB: %zu textures %.1f, back buffer %.1f, %zu surfaces %.1f, TrueType fonts %.1f, rest %.1f\n",
              textures.count, mb(textures.bytes - backBuffer), mb(backBuffer), surfaces.count, mb(surfaces.bytes),
              mb(fonts), rest);
  std::printf(
    "memory MB: heap in use %.1f, free %.1f (resident or not); pictures decoded once %.1f, anonymous above %.1f\n",
    mb(heap.uordblks + heap.hblkhd), mb(heap.fordblks), mb(skin), mb(anonymous) - mb(skin));
}

}  // namespace

int main() { return runBench(measure, false); }
