#include "tests/system/SystemHarness.h"

#include <httplib.h>
#include <sys/wait.h>
#include <filesystem>
#include <random>
#include <regex>

namespace systest {
namespace {

namespace fs = std::filesystem;

// How much longer everything takes.
int slowness() {
  const std::string sanitizer = TOPSCREEN_SANITIZER;
  return sanitizer == "thread" ? 6 : sanitizer == "address" ? 4 : 1;
}

std::string lastLines(const std::string& text, size_t characters) {
  return text.size() <= characters ? text : "..." + text.substr(text.size() - characters);
}

// Where the digit at this place from the right stands on the screen, for one level without decimal places. The
// level's frame is at 51, 478, the digits begin 90 to the right and 87 below, are 594 wide and have cells of 48 and
// gaps of 2.
constexpr int kDigitY = 478 + 87 + 45;
int digitX(int place) { return 51 + 90 + 594 - (place + 1) * 50 + 2 + 24; }

}  // namespace

int bound(int milliseconds) { return milliseconds * slowness(); }

bool within(int milliseconds, const std::function<bool()>& condition) {
  const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(bound(milliseconds));
  while (!condition()) {
    if (std::chrono::steady_clock::now() > end) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  return true;
}

bool SimulatorProcess::start(const std::string& folder, int port) {
  Process::Setup setup;
  setup.program = KSLSIM_PROGRAM;
  setup.arguments = {"--port", std::to_string(port), "--control-port", "0", "--log", folder + "/requests.jsonl"};
  setup.environment = {{"PATH", variable("PATH")},
                       {"TSAN_OPTIONS", variable("TSAN_OPTIONS")},
                       {"UBSAN_OPTIONS", variable("UBSAN_OPTIONS")}};
  setup.output = folder + "/kslsim.txt";
  fs::remove(setup.output);
  if (!mProcess.start(setup)) return false;
  return within(10000,
                [&] {
                  return std::sscanf(contentOf(setup.output).c_str(), "%d\ncontrol %d\n", &mPort, &mControlPort) ==
                           2 ||
                         !mProcess.running();
                }) &&
         mProcess.running();
}

bool SimulatorProcess::startAnywhere(const std::string& folder) {
  // Below the range from which the kernel serves those who ask for any port: there another test could take it
  // between the end of one simulator and the start of the next.
  std::uniform_int_distribution<int> ports(20000, 31999);
  std::random_device chance;
  for (int tries = 0; tries < 20; ++tries)
    if (start(folder, ports(chance))) return true;
  return false;
}

void SimulatorProcess::apply(const Json& step) {
  httplib::Client client("127.0.0.1", mControlPort);
  const auto answer = client.Post("/api/do", step.dump(), "application/json");
  ASSERT_TRUE(answer) << "the simulator does not answer";
  ASSERT_EQ(answer->status, 200) << step << " " << answer->body;
}

Json SimulatorProcess::get(const std::string& path) {
  httplib::Client client("127.0.0.1", mControlPort);
  const auto answer = client.Get(path);
  EXPECT_TRUE(answer) << "the simulator does not answer";
  return answer ? Json::parse(answer->body) : Json();
}

Json SimulatorProcess::state() { return get("/api/state"); }

Json SimulatorProcess::log(uint64_t n) { return get("/api/log?since=" + std::to_string(n)); }

int SimulatorProcess::calls(const std::string& method) {
  int out = 0;
  for (const Json& entry : log(0)) out += entry.value("method", "") == method;
  return out;
}

std::vector<int64_t> SimulatorProcess::refusals() {
  std::vector<int64_t> out;
  for (const Json& entry : log(0))
    if (entry.value("bad", "") == "refuse") out.push_back(entry["t"].get<int64_t>());
  return out;
}

uint64_t SimulatorProcess::latest() {
  const Json entries = log(0);
  return entries.empty() ? 0 : entries.back()["n"].get<uint64_t>();
}

void SystemTest::SetUp() {
  std::string folder = (fs::temp_directory_path() / "topscreen-system-XXXXXX").string();
  ASSERT_TRUE(mkdtemp(folder.data()));
  mFolder = folder;
  ASSERT_TRUE(TestSkin::write(mFolder + "/terminal"));
  ASSERT_TRUE(startX()) << contentOf(mFolder + "/xserver.txt") << contentOf(mFolder + "/xrandr.txt");
}

void SystemTest::TearDown() {
  if (HasFailure()) {
    const auto* info = testing::UnitTest::GetInstance()->current_test_info();
    std::string name = std::string(info->test_suite_name()) + "." + info->name();
    for (char& letter : name)
      if (letter == '/') letter = '_';
    fs::create_directories(TEST_PICTURES);
    mX.picture().save(std::string(TEST_PICTURES) + "/" + name + ".png");
    std::cout << "screen: " << TEST_PICTURES << "/" << name << ".png\nprinted:\n"
              << lastLines(printed(), 6000) << "\nlog:\n"
              << lastLines(log(), 6000) << std::endl;
  }
  mProgram.kill();
  mSimulator.process().kill();
  std::error_code error;
  fs::remove_all(mFolder, error);
}

void SystemTest::startSimulator() {
  ASSERT_TRUE(mSimulator.startAnywhere(mFolder)) << contentOf(mFolder + "/kslsim.txt");
}

void SystemTest::startRefusing() {
  startSimulator();
  if (HasFatalFailure()) return;
  mSimulator.apply({{"do", "bad"}, {"method", "*"}, {"reply", "refuse"}, {"calls", -1}});
}

void SystemTest::startProgram(const std::string& address, Renderer renderer,
                              const std::map<std::string, std::string>& environment) {
  startProgram(mProgram, mFolder + "/program.txt", address, renderer, environment);
}

void SystemTest::startProgram(Process& process, const std::string& output, const std::string& address,
                              Renderer renderer, const std::map<std::string, std::string>& environment) {
  Process::Setup setup;
  setup.program = mProgramFile.empty() ? programFile() : mProgramFile;
  if (!address.empty()) setup.arguments = {address};
  setup.environment = {{"PATH", variable("PATH")},
                       {"HOME", mFolder},
                       {"DISPLAY", mX.display()},
                       {"DISABLE_REBOOT_ON_EXIT", "1"},
                       {"no_proxy", "127.0.0.1"},
                       {"SDL_AUDIODRIVER", "dummy"},
                       {"WORKING_DIR", mFolder + "/terminal/"},
                       {"HOME_DIR", mFolder + "/terminal/"},
                       {"LOG_FILENAME", mFolder + "/top.log"},
                       {"FPS", "30"},
                       {"TSAN_OPTIONS", variable("TSAN_OPTIONS")},
                       {"UBSAN_OPTIONS", variable("UBSAN_OPTIONS")}};
  if (renderer == Renderer::Software) {
    setup.environment["SDL_RENDER_DRIVER"] = "software";
    setup.environment["SDL_FRAMEBUFFER_ACCELERATION"] = "0";
  }
  for (const auto& [name, value] : environment) setup.environment[name] = value;
  std::erase_if(setup.environment, [](const auto& entry) { return entry.second == "-"; });
  ASSERT_EQ(setup.environment["DISABLE_REBOOT_ON_EXIT"], "1") << "no test reboots";
  setup.folder = mFolder + "/terminal";
  setup.output = output;
  ASSERT_TRUE(process.start(setup));
}

void SystemTest::startUntilPanel(Renderer renderer, int64_t pot) {
  startSimulator();
  if (HasFatalFailure()) return;
  mSimulator.apply({{"do", "add"}, {"level", {{"CurrentPot", pot}, {"DecimalPlaces", 0}}}});
  startProgram(mSimulator.address(), renderer, {});
  if (HasFatalFailure()) return;
  ASSERT_TRUE(within(20000, [this] { return panelShown(); })) << "no panel";
}

void SystemTest::startWithPanel(Renderer renderer, int64_t pot) {
  startUntilPanel(renderer, pot);
  if (HasFatalFailure()) return;
  ASSERT_TRUE(within(10000, [&] { return shownPot() == pot; })) << "shows " << shownPot();
}

std::string SystemTest::programFile() { return TOPSCREEN_PROGRAM; }

std::string SystemTest::log() const {
  for (const auto& entry : fs::directory_iterator(mFolder)) {
    const std::string name = entry.path().filename().string();
    if (!entry.is_regular_file()) continue;  // a device that stands in its place has no end
    if (name.starts_with("top_") && name.ends_with(".log")) return contentOf(entry.path().string());
  }
  return "";
}

int SystemTest::logged(const std::string& text) const {
  std::istringstream lines(log());
  std::string line;
  int out = 0;
  while (std::getline(lines, line)) out += line.find(text) != std::string::npos;
  return out;
}

int SystemTest::framesNamed() const {
  const std::regex ours(R"(\(\d+\) .*/(vendelo-sdl2|src|include)/(?:[^ ]*/)?(\w+)\.(cpp|h):\d+)");
  std::istringstream lines(log());
  std::string line;
  std::smatch match;
  int out = 0;
  while (std::getline(lines, line)) out += std::regex_search(line, match, ours) && match[2] != "TApplicationEnd";
  return out;
}

testing::AssertionResult SystemTest::exitsWith(int milliseconds, int code) {
  const std::optional<int> status = mProgram.wait(bound(milliseconds));
  if (!status) return testing::AssertionFailure() << "still running";
  if (!WIFEXITED(*status)) return testing::AssertionFailure() << "ended by signal " << WTERMSIG(*status);
  if (WEXITSTATUS(*status) != code) return testing::AssertionFailure() << "exit code " << WEXITSTATUS(*status);
  return testing::AssertionSuccess();
}

bool SystemTest::asksForEvents(int times) {
  const int before = mSimulator.calls("game.popEvents");
  return within(10000, [&] { return mSimulator.calls("game.popEvents") >= before + times; });
}

bool SystemTest::handles(int signal) const {
  const std::string process = "/proc/" + std::to_string(mProgram.pid());
  const std::string status = contentOf(process + "/status");
  const size_t caught = status.find("SigCgt:");
  if (caught == std::string::npos) return false;
  if (!(std::strtoull(status.c_str() + caught + 7, nullptr, 16) >> (signal - 1) & 1)) return false;
  std::error_code error;
  for (const auto& thread : fs::directory_iterator(process + "/task", error))
    if (!contentOf(thread.path().string() + "/children").empty()) return false;
  return true;
}

bool SystemTest::loaderShown() { return alike(mX.pixel(960, 180), TestSkin::kSplash); }

bool SystemTest::panelShown() {
  return alike(mX.pixel(5, 1075), TestSkin::kBackground) && alike(mX.pixel(960, 100), TestSkin::kTitle);
}

int64_t SystemTest::shownPot() {
  const Picture row = mX.picture({0, kDigitY - 40, 1000, 80});
  int64_t value = 0;
  bool leading = true;
  for (int place = 11; place >= 0; --place) {
    const auto digitAt = [&](int y) {
      for (int digit = 0; digit < 10; ++digit)
        if (alike(row.at(digitX(place), y), TestSkin::digit(digit))) return digit;
      return -1;
    };
    // A wheel that turns shows one digit above and another below.
    const int digit = digitAt(40);
    if (digit != digitAt(2) || digit != digitAt(78)) return -1;
    if (digit < 0 && !leading) return -1;
    if (digit < 0) continue;
    leading = false;
    value = value * 10 + digit;
  }
  return leading ? -1 : value;
}

std::string rendererName(const testing::TestParamInfo<Renderer>& info) {
  return info.param == Renderer::Software ? "Software" : "OpenGL";
}

}  // namespace systest
