// The longest frame that each event of an evening brings, beside the median frame that draws the whole picture with
// all digits rolling: what is held against it is the time under the draw mutex, without presentation.
//
// usage: WORKING_DIR=<skin>/ bench_hitch [rounds]        see bench/run for both drivers
// Processor time of the draw thread is what the program can answer for; wall times swing with what else the machine
// does. The first round meets everything for the first time; of the others the median is told. "above" counts the
// frames of the first round that took more than twice the whole frame: one is a hitch, many are a scene that costs
// as much as long as it lasts, as two panels that fade into each other do. "main" is what the main loop takes for
// the event, under the draw mutex too.
#include <SDL.h>
#include <unistd.h>
#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "bench/BenchApp.h"
#include "common/Event.h"
#include "common/ThreadSafeProperty.h"
#include "vendelo-sdl2/SystemSeams.h"

using namespace vendelo_sdl2;
namespace fs = std::filesystem;

namespace {

constexpr double kFrameSeconds = 1.0 / 60;
constexpr int kWholeFrames = 40;
constexpr double kGiveUpSeconds = 90;

using Events = std::vector<std::pair<int, xmlrpc_c::value>>;

// What a moment of the draw thread is measured by.
struct Moment {
  double wall = 0, cpu = 0;
  static Moment now() { return {seconds(CLOCK_MONOTONIC), seconds(CLOCK_THREAD_CPUTIME_ID)}; }
  Moment since(const Moment& before) const { return {(wall - before.wall) * 1000, (cpu - before.cpu) * 1000}; }
};

// The end of the last frame's work under the draw mutex: the pause before presentation follows at once. Draw
// thread.
Moment workDone;
std::atomic<SDL_threadID> drawThread{0};

// The program, fed with events in passes of its main loop. A frame ends with a pause that this program takes.
class HitchApp : public BenchApp {
 public:
  using BenchApp::BenchApp;

  int Init() override {
    const int result = BenchApp::Init();
    TopScreenApp::screen = &BenchApp::screen();
    return result;
  }

  int RunOnce() override {
    if (!fed_) {
      fed_ = true;
      PlatformState state;
      state.ActiveGame = GAME_MENU;
      state.IsLoading = false;
      state.LanguageMessages = {"en", "Minimum bet", "Maximum bet", "Select bet per line with BET+/-.", "Prizes."};
      StatusReceived(&state, false);
    }
    if (const Events* events = pending_.load()) {
      const double before = seconds(CLOCK_THREAD_CPUTIME_ID);
      updatedJp = updatedGame = false;
      for (const auto& [id, value] : *events) handlePlatformEvent(Event(id, value));
      if (updatedJp) updateJackpotPanel();
      if (updatedGame) Update();
      taken_ = (seconds(CLOCK_THREAD_CPUTIME_ID) - before) * 1000;
      pending_ = nullptr;
    }
    usleep(1000);
    return 0;
  }

  // Draw thread. The next pass of the main loop delivers them; they have to stay until then.
  void deliver(const Events& events) { pending_ = &events; }
  bool isDelivered() const { return !pending_; }
  // Milliseconds of the main loop's processor time.
  double deliveryTook() const { return taken_; }

 private:
  bool fed_ = false;
  std::atomic<const Events*> pending_{nullptr};
  std::atomic<double> taken_{0};
};

xmlrpc_c::value texts(const std::vector<std::string>& list) {
  xmlrpc_c::carray items;
  for (const std::string& text : list) items.push_back(xmlrpc_c::value_string(text));
  return xmlrpc_c::value_array(items);
}

xmlrpc_c::value levels(int count, int64_t more = 0, int winner = -1) {
  const char* const names[] = {"GOLD", "SILVER", "BRONZE", "EMERALD"};
  xmlrpc_c::carray items;
  for (int id = 0; id < count; ++id) {
    JackpotsData level;
    level.id = id;
    level.name = names[id];
    level.status = id == winner ? "WIN" : "";
    level.mode = 1;
    level.potValue = 12345678 / (id + 1) + more;
    level.decimalPlaces = 2;
    level.showCurrencySign = true;
    level.currency = "EUR";
    level.LastWinData = "Last won 1.234,56 EUR on 7 May at 12:34, the highest so far 98.765,43 EUR";
    items.push_back(level.toXml());
  }
  return xmlrpc_c::value_array(items);
}

xmlrpc_c::value game(const std::string& name, GameTypes type) {
  return xmlrpc_c::value_struct(
    {{"ID", xmlrpc_c::value_int(11)}, {"Name", xmlrpc_c::value_string(name)}, {"Type", xmlrpc_c::value_int(type)}});
}

xmlrpc_c::value bets(int64_t current) {
  return xmlrpc_c::value_struct(
    {{"current", xmlrpc_c::value_i8(current)}, {"min", xmlrpc_c::value_i8(20)}, {"max", xmlrpc_c::value_i8(500)}});
}

// A page with so many prizes, three in a column.
xmlrpc_c::value page(const std::string& name, int prizes) {
  xmlrpc_c::carray items;
  for (int i = 0; i < prizes; ++i)
    items.push_back(xmlrpc_c::value_struct({{"symbol", xmlrpc_c::value_string(name + std::to_string(i / 3))},
                                            {"mode", xmlrpc_c::value_string("line")},
                                            {"win", xmlrpc_c::value_int(40 * (i + 1))},
                                            {"font", xmlrpc_c::value_string("prize")},
                                            {"fontSize", xmlrpc_c::value_int(34)},
                                            {"occurs", xmlrpc_c::value_int(5 - i % 3)},
                                            {"alignedLeft", xmlrpc_c::value_int(0)},
                                            {"color", xmlrpc_c::value_int(16767354)},
                                            {"x", xmlrpc_c::value_int(280 + i / 3 % 3 * 475)},
                                            {"y", xmlrpc_c::value_int(202 + i % 3 * 86 + i / 9 * 345)},
                                            {"w", xmlrpc_c::value_int(190)},
                                            {"h", xmlrpc_c::value_int(56)}}));
  return xmlrpc_c::value_struct({{"name", xmlrpc_c::value_string(name)}, {"texts", xmlrpc_c::value_array(items)}});
}

xmlrpc_c::value setup() {
  return xmlrpc_c::value_struct(
    {{"paylines", xmlrpc_c::value_int(10)},
     {"betCost", xmlrpc_c::value_int(10)},
     {"paytableSetup", xmlrpc_c::value_array(xmlrpc_c::carray{page("paytable", 18), page("paytableBonus", 3)})}});
}

// The games' folders of the skin, and a game that has each page that is looked for, in a folder of our own.
void writeGames(const std::string& skin, const std::string& folder) {
  fs::create_directories(folder + "Games");
  fs::copy(skin + "Games", folder + "Games", fs::copy_options::recursive | fs::copy_options::skip_existing);
  const std::string crown = folder + "Games/VesperCrown/Icons/", ten = folder + "Games/TenPages/Icons/";
  fs::create_directories(ten + "paytable");
  for (const char* file : {"background.png", "prize.fnt", "prize.png", "prize.ttf"})
    fs::copy_file(crown + file, ten + file, fs::copy_options::skip_existing);
  for (const char* page : {"InfoPage_Paytable", "InfoPage_Paytable_Bonus", "InfoPage_ExpandFeature",
                           "InfoPage_Features", "InfoPages_BonusFeature", "InfoPage_Features2",
                           "InfoPages_Features2", "InfoPages_BonusFeature2", "InfoPage_Rules"})
    fs::copy_file(crown + "paytable/InfoPage_Paytable.png", ten + "paytable/" + page + ".png",
                  fs::copy_options::skip_existing);
}

// One step of the evening. It is over when so many seconds have passed and the panel that it leads to is shown.
struct Step {
  std::string name;
  Events events;
  double seconds;
  std::string panel;  // empty: whichever
};

std::vector<Step> evening() {
  const auto slot = GAMETYPE_VESPERA_SLOTGAME;
  const auto none = xmlrpc_c::value_nil();
  const auto number = [](int value) { return xmlrpc_c::value_int(value); };
  const auto text = [](const char* value) { return xmlrpc_c::value_string(value); };
  return {
    {"a level appears", {{T_JACKPOT_DATA, levels(1)}}, 2, ""},
    {"four levels", {{T_JACKPOT_DATA, levels(4)}}, 3, ""},
    {"pots grow", {{T_JACKPOT_DATA, levels(4, 123457)}}, 2, ""},
    {"win", {{T_JACKPOT_DATA, levels(4, 123457, 0)}}, 5, ""},
    {"win ends", {{T_JACKPOT_DATA, levels(4, 123457)}}, 2, ""},
    {"bet limits", {{T_BET_LIMITS, bets(100)}}, 0.5, ""},
    {"game loaded",
     {{T_GAME_LOADING, game("VesperCrown", slot)}, {T_GAME_LOADED, game("VesperCrown", slot)}},
     5,
     ""},
    {"paytable", {{T_EXTRA_DATA, setup()}, {T_PAYTABLE_STATE, number(1)}}, 2, "paytable"},
    {"bet changed", {{T_BET_LIMITS, bets(300)}}, 1, "paytable"},
    {"page turned", {{T_PAYTABLE_STATE, number(2)}}, 1, "paytable"},
    {"language",
     {{T_LANGUAGE, texts({"de", "Mindesteinsatz", "Einsatz", "Einsatz mit BET+/- waehlen.", "Preise."})},
      {T_PAYTABLE_STATE, number(1)}},
     3,
     "paytable"},
    {"paytable closed", {{T_PAYTABLE_STATE, number(0)}}, 2, "jackpots"},
    {"game exited", {{T_GAME_EXITED, none}}, 2, "jackpots"},
    {"instructions",
     {{T_INSTRUCTIONS,
       texts({"AUTO\nSTART", "", "OTHER\nGAMES", "CALL\nSTAFF", "BET\nDOWN", "PAY\nTABLE", "BET\nUP", "START"})}},
     2,
     "instructions"},
    {"levels again", {{T_INSTRUCTIONS, texts({})}}, 2, "jackpots"},
    {"ten pages",
     {{T_GAME_LOADED, game("TenPages", slot)}, {T_EXTRA_DATA, setup()}, {T_PAYTABLE_STATE, number(1)}},
     3,
     "paytable"},
    {"ten pages, bet", {{T_BET_LIMITS, bets(100)}}, 1, "paytable"},
    {"ten pages, exit", {{T_PAYTABLE_STATE, number(0)}, {T_GAME_EXITED, none}}, 2, "jackpots"},
    {"demo mode", {{T_DEMO_MODE, xmlrpc_c::value_boolean(true)}}, 0.5, ""},
    {"demo mode ends", {{T_DEMO_MODE, xmlrpc_c::value_boolean(false)}}, 0.5, ""},
    {"integrity text", {{T_INTEGRITY_DATA, text("INTEGRITY CHECK IN PROGRESS  -  PLEASE WAIT")}}, 2, ""},
    {"it ends", {{T_INTEGRITY_DATA, text("")}}, 3, ""},
    {"error", {{T_JACKPOT_ERROR, text("JACKPOT IS OUT OF SERVICE")}}, 2, ""},
    {"error ends", {{T_JACKPOT_ERROR, text("")}}, 3, ""},
    {"roulette", {{T_GAME_LOADED, game("Roulette", GAMETYPE_ROULETTE)}}, 0.5, ""},
    {"roulette ends",
     {{T_GAME_EXITED, none}, {T_LANGUAGE, texts({"en", "Minimum bet", "Maximum bet", "Hint.", "Prizes."})}},
     1,
     "jackpots"},
    {"levels go", {{T_JACKPOT_DATA, levels(0)}}, 2, ""},
  };
}

// A frame as the program draws it, at its pace. The mutex is ours already: no waiting for the main loop counts.
Moment frame(HitchApp& app) {
  app.lockDrawMutex();
  const Moment before = Moment::now();
  workDone = before;
  app.screen().draw();
  app.unlockDrawMutex();
  const double left = kFrameSeconds - (seconds(CLOCK_MONOTONIC) - before.wall);
  if (left > 0) usleep(static_cast<useconds_t>(left * 1e6));
  return workDone.since(before);
}

void deliver(HitchApp& app, const Events& events) {
  app.deliver(events);
  while (!app.isDelivered()) usleep(200);
}

struct Series {
  std::vector<double> wall, cpu, main;
  std::vector<double> frames;  // processor time of each frame of the first round
};

void play(HitchApp& app, const Step& step, Series& series) {
  deliver(app, step.events);
  const double begin = seconds(CLOCK_MONOTONIC);
  Moment longest;
  for (double passed = 0, shownAt = -1; shownAt < 0 || passed < shownAt + step.seconds;) {
    const Moment took = frame(app);
    if (series.cpu.empty()) series.frames.push_back(took.cpu);
    longest = {std::max(longest.wall, took.wall), std::max(longest.cpu, took.cpu)};
    passed = seconds(CLOCK_MONOTONIC) - begin;
    if (shownAt < 0 && (step.panel.empty() || step.panel == app.screen().shownPanel())) shownAt = passed;
    if (passed > kGiveUpSeconds) {
      std::fprintf(stderr, "bench_hitch: after \"%s\" the panel %s did not come\n", step.name.c_str(),
                   step.panel.c_str());
      break;
    }
  }
  series.wall.push_back(longest.wall);
  series.cpu.push_back(longest.cpu);
  series.main.push_back(app.deliveryTook());
}

// The whole picture, drawn anew, while every digit rolls.
void wholeFrames(HitchApp& app, Series& series) {
  const Events four{{T_JACKPOT_DATA, levels(4)}}, more{{T_JACKPOT_DATA, levels(4, 7654321)}};
  deliver(app, four);
  const double begin = seconds(CLOCK_MONOTONIC);
  while (seconds(CLOCK_MONOTONIC) - begin < 4) frame(app);
  deliver(app, more);
  for (int i = 0; i < 10; ++i) frame(app);
  for (int i = 0; i < kWholeFrames; ++i) {
    app.screen().RedrawAll();
    const Moment took = frame(app);
    series.wall.push_back(took.wall);
    series.cpu.push_back(took.cpu);
  }
  const Events gone{{T_JACKPOT_DATA, levels(0)}};
  deliver(app, gone);
  while (seconds(CLOCK_MONOTONIC) - begin < 7) frame(app);
}

void measure(HitchApp& app, int rounds) {
  drawThread = SDL_ThreadID();
  const std::vector<Step> steps = evening();
  std::vector<Series> taken(steps.size());
  Series whole;
  for (int round = 0; round < rounds; ++round) {
    for (size_t i = 0; i < steps.size(); ++i) play(app, steps[i], taken[i]);
    wholeFrames(app, whole);
  }
  const double wholeCpu = median(whole.cpu), wholeWall = median(whole.wall);
  std::printf("driver %s, %d rounds; median whole frame: CPU %.1f ms, wall %.1f ms\n", app.driver().c_str(), rounds,
              wholeCpu, wholeWall);
  std::printf("CPU ms of the longest frame %10s %7s %7s %7s   %8s %7s   %6s\n", "first", "later", "ratio", "above",
              "wall", "ratio", "main");
  double worst = 0;
  for (size_t i = 0; i < steps.size(); ++i) {
    const Series& series = taken[i];
    const std::vector<double> later(series.cpu.begin() + (rounds > 1), series.cpu.end());
    const double ratio = std::max(series.cpu.front(), median(later)) / wholeCpu;
    const auto above = std::count_if(series.frames.begin(), series.frames.end(),
                                     [wholeCpu](double took) { return took > 2 * wholeCpu; });
    worst = std::max(worst, ratio);
    std::printf("CPU ms %-20s %10.1f %7.1f %7.2f %7ld   %8.1f %7.2f   %6.1f\n", steps[i].name.c_str(),
                series.cpu.front(), median(later), ratio, static_cast<long>(above), median(series.wall),
                median(series.wall) / wholeWall, median(series.main));
  }
  std::printf("CPU worst ratio %.2f, at most 2 is wanted\n", worst);
}

}  // namespace

int main(int argc, char** argv) {
  const int rounds = argc > 1 ? std::max(1, std::atoi(argv[1])) : 2;
  const char* skin = std::getenv("WORKING_DIR");
  writeGames(skin ? skin : "", scratchFolder());
  fs::current_path(scratchFolder());  // the games' folders are looked for from here
  // So slow a pace that the pause before presentation is taken in every frame.
  setenv("FPS", "1", 1);
  HitchApp app([rounds](BenchApp& bench) { measure(static_cast<HitchApp&>(bench), rounds); }, false);
  SystemSeams.MicroSleep = [](useconds_t) {
    if (SDL_ThreadID() == drawThread) workDone = Moment::now();
    return 0;
  };
  return runBench(app);
}
