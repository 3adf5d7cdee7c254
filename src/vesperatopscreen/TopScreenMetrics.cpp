#include "vesperatopscreen/TopScreenMetrics.h"

#include <atomic>
#include <cstdlib>
#include <exception>
#include <iomanip>
#include <locale>
#include <memory>
#include <sstream>
#include <thread>
#include <utility>

#include "vendelo-sdl2/TAsyncJobs.h"
#include "vendelo-sdl2/TLogManager.h"
#include "vendelo-sdl2/WholeFile.h"
#include "vesperatopscreen/CommandLine.h"

using vendelo_sdl2::TAsyncJob;

namespace {

constexpr mode_t kReadByAll = 0644;
constexpr vendelo_sdl2::TLogType kLogError = 5;
constexpr const char* kPanels[] = {"loader", "jackpots", "paytable", "instructions", "stopped"};

// Of the one file that the process writes; outlives every thread.
struct State {
  std::atomic<bool> isBusy{false};
  std::atomic<bool> hasFailed{false};
};
State& state() {
  static State& only = *new State;
  return only;
}

class Text {
 public:
  Text() {
    mOut.imbue(std::locale::classic());
    mOut << std::setprecision(15);
  }
  void begin(const char* name, const char* type, const char* help) {
    mName = name;
    mOut << "# HELP topscreen_" << name << " " << help << "\n# TYPE topscreen_" << name << " " << type << "\n";
  }
  template <typename Number>
  void sample(const std::string& labels, Number value) {
    mOut << "topscreen_" << mName << labels << " " << value << "\n";
  }
  template <typename Number>
  void one(const char* name, const char* type, const char* help, Number value) {
    begin(name, type, help);
    sample("", value);
  }
  std::string text() const { return mOut.str(); }

 private:
  std::ostringstream mOut;
  const char* mName = "";
};

// What the program asks for by itself, again and again.
const char* pollOf(MethodType method) {
  switch (method) {
    case M_INIT:
      return "init";
    case M_POPEVENTS:
      return "events";
    case M_PLATFORM_STATUS:
      return "state";
    default:
      return nullptr;
  }
}

void addLink(Text& out, const TopScreenFacts& facts) {
  out.one("registered", "gauge", "1 while the service knows the program.", facts.id > 0 ? 1 : 0);
  out.begin("polls_total", "counter", "Answered requests by kind.");
  for (const MethodType method : {M_INIT, M_POPEVENTS, M_PLATFORM_STATUS}) {
    unsigned long polls = 0;
    for (const auto& [key, count] : facts.link.answers)
      if (key.first == method) polls += count;
    out.sample(std::string("{kind=\"") + pollOf(method) + "\"}", polls);
  }
  out.begin("failed_polls_total", "counter", "Requests that failed, by kind and error.");
  for (const auto& [key, count] : facts.link.answers)
    if (pollOf(key.first) && key.second != E_NO_ERROR)
      out.sample(std::string("{kind=\"") + pollOf(key.first) + "\",error=\"" + nameOf(key.second) + "\"}", count);
  if (facts.sinceGoodAnswer)
    out.one("last_good_answer_age_seconds", "gauge", "Time since the last good answer; missing before the first.",
            *facts.sinceGoodAnswer / 1000.0);
  out.begin("events_total", "counter", "Events of the service by what became of them.");
  out.sample("{result=\"handled\"}", facts.link.eventsHandled);
  out.sample("{result=\"refused\"}", facts.link.eventsRefused);
}

}  // namespace

std::string metricsText(const TopScreenFacts& facts, unsigned long passes, uint64_t uptimeMs,
                        Uint32 longestFrameMs) {
  Text out;
  out.begin("build_info", "gauge", "The version of the program.");
  out.sample(std::string("{version=\"") + TopScreenVersion() + "\"}", 1);
  out.one("uptime_seconds", "gauge", "Time since the start.", static_cast<double>(uptimeMs) / 1000);
  out.one("frames_total", "counter", "Frames that were finished.", facts.frames);
  out.one("late_frames_total", "counter", "Frames that ended when the next one was due as well.", facts.lateFrames);
  out.one("longest_frame_seconds", "gauge", "Longest time between two frames since the last writing.",
          longestFrameMs / 1000.0);
  out.one("main_passes_total", "counter", "Passes of the main loop.", passes);
  out.begin("panel", "gauge", "1 for what is shown.");
  for (const char* panel : kPanels)
    out.sample(std::string("{panel=\"") + panel + "\"}", std::string(facts.panel) == panel ? 1 : 0);
  addLink(out, facts);
  out.one("textures", "gauge", "Textures that are there.", facts.textures);
  out.one("texture_bytes", "gauge", "Bytes of their pixels.", facts.textureBytes);
  out.one("missing_files", "gauge", "Files of the skin that were asked for and not found or not usable.",
          facts.missingFiles);
  out.one("log_lines_total", "counter", "Lines written to the log, those that are lost among them.",
          facts.logLines);
  out.begin(
    "log_lines_lost_total", "counter",
    "Lines that the console dropped, that the file could not take, or that came after the limit of the day.");
  out.sample("{reason=\"console\"}", facts.linesLostByConsole);
  out.sample("{reason=\"file\"}", facts.linesLostByFile);
  out.sample("{reason=\"limit\"}", facts.linesBeyondLimit);
  return out.text();
}

TMetricsFile::TMetricsFile() {
  if (const char* path = std::getenv("METRICS_FILE")) mPath = path;
}

void TMetricsFile::write(std::string text) {
  if (!wanted() || state().isBusy.exchange(true)) return;
  auto job = std::make_shared<TAsyncJob>();
  try {
    std::thread([job, path = mPath, text = std::move(text)] {
      const std::string error = vendelo_sdl2::WriteWholeFile(path, text, kReadByAll);
      if (!state().hasFailed.exchange(!error.empty()) && !error.empty())
        logman::WriteLog(kLogError, 0, "METRICS_FILE could not be written: %s", error.c_str());
      state().isBusy = false;
    }).detach();
  } catch (const std::exception&) {  // no thread now: the next text comes in ten seconds
    state().isBusy = false;
  }
}
