// kslsim: a platform service to run the top screen against. docs/SIMULATOR.md tells how to use it.
#include <CLI/CLI.hpp>
#include <csignal>
#include <cstdio>
#include <iostream>
#include <sstream>

#include "tools/kslsim/Service.h"

int main(int argc, char** argv) {
  kslsim::Service::Options options;
  std::string scenarioFile;
  bool checkOnly = false;
  CLI::App app("Simulator of the platform service of a gaming terminal");
  app.add_option("--port", options.port, "Port of the service; 0 for any free one")
    ->check(CLI::Range(0, 65535))
    ->capture_default_str();
  app
    .add_option("--control-port", options.controlPort, "Port by which the simulator is steered; 0 for any free one")
    ->check(CLI::Range(0, 65535))
    ->capture_default_str();
  app.add_option("--path", options.path, "Path of the service")->capture_default_str();
  app.add_option("--scenario", scenarioFile, "File with the steps to play")->check(CLI::ExistingFile);
  app.add_option("--log", options.logFile, "File that gets every request as a line of JSON");
  app.add_flag("--check", checkOnly, "Read the scenario, say what is wrong with it, and end");
  CLI11_PARSE(app, argc, argv);

  // Before any thread exists, so that all of them leave the signals to the wait below.
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, SIGTERM);
  sigaddset(&signals, SIGINT);
  pthread_sigmask(SIG_BLOCK, &signals, nullptr);

  kslsim::Scenario scenario;
  if (!scenarioFile.empty()) {
    std::ifstream file(scenarioFile, std::ios::binary);
    std::stringstream text;
    text << file.rdbuf();
    try {
      scenario = kslsim::Scenario::parse(text.str());
    } catch (const kslsim::ScenarioError& error) {
      std::cerr << scenarioFile << ":" << error.what() << std::endl;
      return 2;
    }
  }
  if (checkOnly) return 0;

  kslsim::Service service(options);
  service.simulator().play(scenario);
  std::string error;
  if (!service.start(error)) {
    std::cerr << "kslsim: " << error << std::endl;
    return 1;
  }
  std::cout << service.port() << std::endl;
  std::cout << "control " << service.controlPort() << std::endl;

  int signal = 0;
  sigwait(&signals, &signal);
  service.stop();
  return 0;
}
