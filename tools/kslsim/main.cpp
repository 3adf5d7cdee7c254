// kslsim: a platform service to run the top screen against. docs/SIMULATOR.md tells how to use it.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <csignal>
#include <cstdio>
#include <iostream>
#include <sstream>

#include "tools/kslsim/RecordServer.h"
#include "tools/kslsim/Service.h"
#include "tools/kslsim/UsualLevels.h"

namespace {

// What the command line adds to the scenario; done before it.
struct Wishes {
  std::vector<std::string> steps;   // JSON
  std::vector<std::string> fields;  // FIELD=VALUE of the state
  int levels = 0;
  int64_t seed = 1;
};

// The simulator, and what it has been told.
struct Told {
  kslsim::Simulator& simulator;
  std::vector<kslsim::Json> steps = {};

  // Throws InputError.
  void apply(const kslsim::Json& step) {
    simulator.apply(step);
    steps.push_back(step);
  }
};

// Throws ScenarioError.
void applyText(Told& told, const std::string& text) {
  const kslsim::PlacedJson json = kslsim::PlacedJson::parse(text);
  try {
    told.apply(json.value);
  } catch (const kslsim::InputError& error) {
    throw kslsim::ScenarioError(json.placeOf(error.path()), error.what());
  }
}

// As JSON where it can be read so, and else as a text.
kslsim::Json valueOf(const std::string& text) {
  try {
    return kslsim::PlacedJson::parse(text).value;
  } catch (const kslsim::ScenarioError&) {
    return text;
  }
}

// Throws InputError.
void applyField(Told& told, const std::string& wish) {
  const size_t equals = wish.find('=');
  if (equals == std::string::npos) throw kslsim::InputError("", "expected FIELD=VALUE");
  const std::string field = wish.substr(0, equals), text = wish.substr(equals + 1);
  const kslsim::Field* known = kslsim::findField(kslsim::stateFields(), field);
  const kslsim::Json value = known && known->kind == kslsim::Kind::String ? kslsim::Json(text) : valueOf(text);
  told.apply({{"do", "set"}, {"state", {{field, value}}}});
}

// False, with a line on the standard error, when a wish cannot be done.
bool applyWishes(Told& told, const Wishes& wishes) {
  std::string at;
  try {
    for (const kslsim::Json& step : kslsim::houseSteps(wishes.levels, static_cast<uint64_t>(wishes.seed)))
      told.apply(step);
    for (const std::string& field : wishes.fields) {
      at = "--set " + field + ": ";
      applyField(told, field);
    }
    for (const std::string& step : wishes.steps) {
      at = "--do: ";
      applyText(told, step);
    }
  } catch (const std::runtime_error& error) {
    std::cerr << at << error.what() << std::endl;
    return false;
  }
  return true;
}

sigset_t endingSignals() {
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, SIGTERM);
  sigaddset(&signals, SIGINT);
  return signals;
}

// Before any thread exists, so that all of them leave the signals to waitForSignal().
void blockSignals() {
  const sigset_t signals = endingSignals();
  pthread_sigmask(SIG_BLOCK, &signals, nullptr);
}

void waitForSignal() {
  const sigset_t signals = endingSignals();
  int signal = 0;
  sigwait(&signals, &signal);
}

// Whether a call can ask for it just so.
bool isPath(const std::string& path) {
  return path.starts_with('/') && std::all_of(path.begin(), path.end(), [](unsigned char c) {
           return c > ' ' && c < 0x7F && c != '?' && c != '#' && c != '%';
         });
}

std::string contentOf(const std::string& file) {
  std::ifstream in(file, std::ios::binary);
  std::stringstream text;
  text << in.rdbuf();
  return text.str();
}

// Records until a signal comes. The exit code.
int record(const kslsim::Service::Options& options, const std::string& upstream, const std::string& file,
           kslsim::RecordingWriter::Form form) {
  try {
    kslsim::RecordServer server(options.path, upstream);
    if (!server.start(options.port)) {
      std::cerr << "kslsim: port " << options.port << " is taken" << std::endl;
      return 1;
    }
    if (!server.open(file, form)) {
      std::cerr << "kslsim: cannot write " << file << std::endl;
      return 1;
    }
    std::cout << server.port() << std::endl;
    std::cout << "recording " << file << std::endl;
    waitForSignal();
    server.stop();
    return 0;
  } catch (const std::invalid_argument& error) {
    std::cerr << "--upstream: " << error.what() << std::endl;
    return 2;
  }
}

}  // namespace

int main(int argc, char** argv) {
  kslsim::Service::Options options;
  std::string scenarioFile, recordFile, upstream, replayFile;
  bool checkOnly = false, asOnTheWire = false;
  Wishes wishes;
  CLI::App app("Simulator of the platform service of a gaming terminal");
  app.add_option("--port", options.port, "Port of the service; 0 for any free one")
    ->check(CLI::Range(0, 65535))
    ->capture_default_str();
  auto* controlOption = app
                          .add_option("--control-port", options.controlPort,
                                      "Port by which the simulator is steered; 0 for any free one")
                          ->check(CLI::Range(0, 65535))
                          ->capture_default_str();
  app.add_option("--path", options.path, "Path of the service")
    ->check(
      [](const std::string& path) { return isPath(path) ? "" : "expected /, and what a URL can hold: " + path; })
    ->capture_default_str();
  auto* scenarioOption =
    app.add_option("--scenario", scenarioFile, "File with the steps to play")->check(CLI::ExistingFile);
  auto* levelsOption =
    app.add_option("--levels", wishes.levels, "Levels with guests, whose pots grow, are won and start again")
      ->check(CLI::Range(1, kslsim::kHouseLevels));
  app.add_option("--seed", wishes.seed, "Seed of --levels")
    ->needs(levelsOption)
    ->check(CLI::Range(int64_t{0}, INT64_MAX))
    ->capture_default_str();
  auto* setOption = app
                      .add_option("--set", wishes.fields,
                                  "FIELD=VALUE of the state, the value as JSON or text; any number of times")
                      ->allow_extra_args(false);
  auto* doOption = app.add_option("--do", wishes.steps, "A step as JSON, done at the start; any number of times")
                     ->allow_extra_args(false);
  auto* displayOption =
    app.add_option("--display", options.display, "X server of the top screen, for the console; else DISPLAY");
  auto* windowOption =
    app.add_option("--window", options.window, "Title of the top screen's window")->capture_default_str();
  auto* logOption = app.add_option("--log", options.logFile, "File that gets every request as a line of JSON");
  auto* checkOption =
    app.add_flag("--check", checkOnly, "Read the scenario or the recording, say what is wrong with it, and end");
  auto* replayOption =
    app.add_option("--replay", replayFile, "Recording that answers the calls")->check(CLI::ExistingFile);
  app.add_flag("--at-once", options.replayAtOnce, "With --replay: no answer takes the time that it took")
    ->needs(replayOption);
  auto* recordOption =
    app.add_option("--record", recordFile, "File to write down in what passes between a program and --upstream");
  auto* upstreamOption = app.add_option("--upstream", upstream, "The real service, http://HOST:PORT/PATH");
  recordOption->needs(upstreamOption);
  upstreamOption->needs(recordOption);
  app.add_flag("--wire", asOnTheWire, "With --record: calls and answers as they stand on the wire")
    ->needs(recordOption);
  // A recording has the state that it has.
  for (CLI::Option* option : {levelsOption, setOption}) replayOption->excludes(option);
  // Whoever stands in between has no state and no control port.
  for (CLI::Option* option : {controlOption, scenarioOption, levelsOption, setOption, doOption, logOption,
                              checkOption, replayOption, displayOption, windowOption})
    recordOption->excludes(option);
  CLI11_PARSE(app, argc, argv);

  blockSignals();

  using Form = kslsim::RecordingWriter::Form;
  if (recordOption->count() > 0)
    return record(options, upstream, recordFile, asOnTheWire ? Form::Wire : Form::Values);
  if (!replayFile.empty()) {
    options.replay = contentOf(replayFile);
    try {
      const kslsim::Replay trial(options.replay, kslsim::Replay::Pace::Recorded);
    } catch (const kslsim::ScenarioError& error) {
      std::cerr << replayFile << ":" << error.what() << std::endl;
      return 2;
    }
  }

  kslsim::Service service(options);
  Told told{service.simulator()};
  if (!applyWishes(told, wishes)) return 2;
  kslsim::Scenario scenario;
  if (!scenarioFile.empty()) {
    try {
      scenario = kslsim::Scenario::parse(contentOf(scenarioFile), told.steps);
    } catch (const kslsim::ScenarioError& error) {
      std::cerr << scenarioFile << ":" << error.what() << std::endl;
      return 2;
    }
  }
  if (checkOnly) return 0;

  service.simulator().play(scenario);
  std::string error;
  if (!service.start(error)) {
    std::cerr << "kslsim: " << error << std::endl;
    return 1;
  }
  std::cout << service.port() << std::endl;
  std::cout << "control " << service.controlPort() << std::endl;
  std::cout << "console http://127.0.0.1:" << service.controlPort() << "/" << std::endl;

  waitForSignal();
  service.stop();
  return 0;
}
