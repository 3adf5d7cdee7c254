// A text of 100 characters set from a bitmap font beside the same text from SDL2_ttf, each to a texture on the
// screen, in turns, in one run.
//
// usage: WORKING_DIR=<skin>/ bench_text [rounds]         see bench/run for both drivers
#include <SDL_ttf.h>
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "bench/BenchApp.h"
#include "common/TBitmapFont.h"
#include "vendelo-sdl2/MyUtils.h"

using namespace vendelo_sdl2;

namespace {

constexpr int kTextsPerRound = 100;
const char* const text =
  "The jackpot of 123.456,78 EUR was won today at 12:34 on terminal 17; the next one grows from 500 EUR";

// Milliseconds of one text, of the processor and on the wall.
struct Cost {
  std::vector<double> cpu, wall;
};

template <class Make>
void measure(BenchApp& app, Cost& cost, const Make& make) {
  SDL_Renderer* const renderer = app.screen().GetRenderer();
  const double cpu = app.cpu(), wall = seconds(CLOCK_MONOTONIC);
  for (int i = 0; i < kTextsPerRound; ++i) {
    SDL_Texture* const texture = make(renderer);
    SDL_Rect place{0, 0, 0, 0};
    SDL_QueryTexture(texture, nullptr, nullptr, &place.w, &place.h);
    SDL_RenderCopy(renderer, texture, nullptr, &place);
    SDL_RenderFlush(renderer);
    SDL_DestroyTexture(texture);
  }
  // A driver may put off its work until somebody asks for a pixel.
  Uint32 pixel = 0;
  const SDL_Rect corner{0, 0, 1, 1};
  SDL_RenderReadPixels(renderer, &corner, SDL_PIXELFORMAT_ARGB8888, &pixel, 4);
  cost.cpu.push_back((app.cpu() - cpu) / kTextsPerRound * 1000);
  cost.wall.push_back((seconds(CLOCK_MONOTONIC) - wall) / kTextsPerRound * 1000);
}

void measureAll(BenchApp& app, int rounds) {
  SDL_Renderer* const renderer = app.screen().GetRenderer();
  const TBitmapFont font(renderer, "bench", MyUtils::ImageDir() + "Fonts/info_bar_font.fnt");
  const std::string file = app.GetParam("WorkingDir", PARAM_MASK_ALL)->AsString() + "/AppFontBold.ttf";
  TTF_Font* const ttf = TTF_OpenFont(file.c_str(), font.LineHeight() * 3 / 4);
  if (!ttf || font.LineHeight() == 0) {
    std::fprintf(stderr, "bench_text: no font\n");
    return;
  }
  Cost ours, theirs;
  app.lockDrawMutex();
  for (int round = 0; round < rounds; ++round) {
    measure(app, ours, [&](SDL_Renderer* to) { return font.RenderText(to, text, nullptr, nullptr, LEFT_UP); });
    measure(app, theirs, [&](SDL_Renderer* to) {
      SDL_Surface* const surface = TTF_RenderUTF8_Blended(ttf, text, SDL_Color{255, 255, 255, 255});
      SDL_Texture* const texture = SDL_CreateTextureFromSurface(to, surface);
      SDL_FreeSurface(surface);
      return texture;
    });
  }
  app.unlockDrawMutex();
  std::printf("driver %s, a text of %zu characters\n", app.driver().c_str(), std::char_traits<char>::length(text));
  std::printf("CPU ms a text: bitmap font %.3f, SDL2_ttf %.3f, ratio %.2f\n", median(ours.cpu), median(theirs.cpu),
              median(ours.cpu) / median(theirs.cpu));
  std::printf("wall ms a text: bitmap font %.3f, SDL2_ttf %.3f, ratio %.2f\n", median(ours.wall),
              median(theirs.wall), median(ours.wall) / median(theirs.wall));
  TTF_CloseFont(ttf);
}

}  // namespace

int main(int argc, char** argv) {
  const int rounds = argc > 1 ? std::max(1, std::atoi(argv[1])) : 20;
  return runBench([rounds](BenchApp& app) { measureAll(app, rounds); });
}
