#include "bench/BenchApp.h"

#include <SDL_image.h>
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <random>

#include "components/TSpriteAnimation.h"
#include "vendelo-sdl2/MyUtils.h"
#include "vendelo-sdl2/SystemSeams.h"

using namespace vendelo_sdl2;

namespace {

constexpr Uint32 kWarmUpMilliseconds = 6000;  // until the picture stands and every wheel has rolled

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
    level.LastWinData = "Last won 1.234,56 EUR on 7 May at 12:34, the highest so far 98.765,43 EUR";
    state.JackpotData.push_back(level);
  }
  return state;
}

void drawSparks(SDL_Surface* surface, const SDL_Rect& place, unsigned seed) {
  std::minstd_rand random(seed);
  for (int i = 0; i < 400; ++i) {
    const int size = 2 + static_cast<int>(random() % 9);
    const SDL_Rect spark{place.x + static_cast<int>(random() % static_cast<unsigned>(place.w - size)),
                         place.y + static_cast<int>(random() % static_cast<unsigned>(place.h - size)), size, size};
    SDL_FillRect(surface, &spark,
                 SDL_MapRGBA(surface->format, 255, static_cast<Uint8>(160 + random() % 90), 40,
                             static_cast<Uint8>(80 + random() % 170)));
  }
}

void save(SDL_Surface* surface, const std::string& file) {
  if (IMG_SavePNG(surface, file.c_str()) != 0) std::fprintf(stderr, "cannot write %s\n", file.c_str());
  SDL_FreeSurface(surface);
}

}  // namespace

double seconds(clockid_t clock) {
  timespec time{};
  clock_gettime(clock, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

double median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  return values[values.size() / 2];
}

std::string scratchFolder() {
  const char* home = std::getenv("HOME_DIR");
  const std::filesystem::path folder = std::filesystem::path(home ? home : ".") / "bench-data";
  std::filesystem::create_directories(folder);
  return folder.string() + "/";
}

std::string writeAtlas(const std::string& folder, const std::string& name, int frames, int width, int height) {
  const int columns = std::max(1, 4096 / width), rows = (frames + columns - 1) / columns;
  SDL_Surface* sheet =
    SDL_CreateRGBSurfaceWithFormat(0, columns * width, rows * height, 32, SDL_PIXELFORMAT_RGBA32);
  std::ofstream xml(folder + name + ".xml");
  xml << "<TextureAtlas imagePath=\"" << name << ".png\">";
  for (int i = 0; i < frames; ++i) {
    const SDL_Rect place{i % columns * width, i / columns * height, width, height};
    drawSparks(sheet, place, static_cast<unsigned>(i + 1));
    xml << "<sprite n=\"" << i << "\" x=\"" << place.x << "\" y=\"" << place.y << "\" w=\"" << width << "\" h=\""
        << height << "\"/>";
  }
  xml << "</TextureAtlas>";
  save(sheet, folder + name + ".png");
  return folder + name;
}

void writePicture(const std::string& file, int width, int height) {
  SDL_Surface* surface = SDL_CreateRGBSurfaceWithFormat(0, width, height, 32, SDL_PIXELFORMAT_RGBA32);
  drawSparks(surface, SDL_Rect{0, 0, width, height}, 1);
  save(surface, file);
}

BenchApp::BenchApp(Measurement measurement, bool particles)
  : measurement_(std::move(measurement)),
    particles_(particles),
    fed_(false),
    runningSince_(0),
    lastRaise_(0),
    data_(fourLevels()),
    screen_(nullptr),
    mainThread_(pthread_self()) {}

int BenchApp::Init() {
  if (SDL_Init(SDL_INIT_TIMER | SDL_INIT_VIDEO | SDL_INIT_EVENTS) < 0 || TTF_Init() < 0) return -1;
  LoadParamFromEnvironment("WORKING_DIR", "WorkingDir", false);
  MyUtils::SetImageDir(GetParam("WorkingDir", PARAM_MASK_ALL)->AsString() + "VESPERA/TOP_SKIN/");
  if (SetGUI<TopScreenScreen>(nullptr) != 0) return -1;
  screen_ = static_cast<TopScreenScreen*>(GUI());
  return LoadGUI(nullptr);
}

int BenchApp::RunOnce() {
  if (!fed_) {
    fed_ = true;
    StatusReceived(&data_, false);
  } else if (SDL_GetTicks() - lastRaise_ > 1500) {  // new values before the digits have come to rest
    lastRaise_ = SDL_GetTicks();
    for (JackpotsData& level : data_.JackpotData) level.potValue += 123457;
    screen_->UpdateJackpotPanel(data_.JackpotData, "");
  }
  return 0;
}

int BenchApp::DrawOnce() {
  if (status() == APP_RUNNING && runningSince_ == 0) {
    if (particles_) {
      auto* sprite = new TSpriteAnimation(screen_->GetRenderer(), 0, 0, 1920, 1080,
                                          writeAtlas(scratchFolder(), "particles", 6, 1920, 1080),
                                          TSpriteAnimation::LOOP, "benchParticles");
      sprite->SetRefreshRate(25.0f);
      screen_->AddComponent(sprite);
    }
    runningSince_ = SDL_GetTicks();
  }
  if (runningSince_ == 0 || SDL_GetTicks() - runningSince_ < kWarmUpMilliseconds)
    return screen_ ? screen_->draw() : 2;
  measurement_(*this);
  return 1;
}

double BenchApp::mainLoop() const {
  clockid_t clock;
  pthread_getcpuclockid(mainThread_, &clock);
  return seconds(clock);
}

double BenchApp::cpu() const { return seconds(CLOCK_PROCESS_CPUTIME_ID) - mainLoop(); }

std::string BenchApp::driver() const {
  SDL_RendererInfo info{};
  SDL_GetRendererInfo(screen_->GetRenderer(), &info);
  return info.name ? info.name : "unknown";
}

int runBench(BenchApp::Measurement measurement, bool particles) {
  setenv("FPS", "1000", 1);
  SystemSeams.MicroSleep = [](useconds_t) { return 0; };  // no pause between frames
  BenchApp app(std::move(measurement), particles);
  return runBench(app);
}

int runBench(BenchApp& app) {
  setenv("DISABLE_REBOOT_ON_EXIT", "1", 1);
  if (app.Init() != 0) {
    std::fprintf(stderr, "no window or no skin\n");
    app.Destroy();
    return 1;
  }
  app.Run();
  return 0;
}
