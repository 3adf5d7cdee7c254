// The ends of the real program that come before its first good data, each in a process of its own: no window, no
// skin, no service.
#include <SDL_ttf.h>
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <unistd.h>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <optional>
#include <vector>

#include "tests/support/ChildProcess.h"
#include "vendelo-sdl2/SystemSeams.h"
#include "vesperatopscreen/AppMain.h"
#include "vesperatopscreen/TopScreenApp.h"

using namespace vendelo_sdl2;

namespace {

bool fontsFail = false;
std::optional<TApplication::ApplicationState> signalIn;  // where SIGTERM comes
bool drawsOnTheMainThread = false;

class ToldTopScreen : public TopScreenApp {
 public:
  ToldTopScreen() { SetLogicInterval(0); }  // the logic in every pass: also in those of the shutdown
  void OnAppStateChanged(ApplicationState newState) override {
    std::fprintf(stderr, "[state %d]", newState);
    if (newState == signalIn) kill(getpid(), SIGTERM);
  }
  void Startup() override {
    if (drawsOnTheMainThread) ThreadCheck(THREAD_DRAW);
  }
};

const char failure[] = "========== APP EXITED WITH FAILURE ==========\n";

class TopScreenExits : public testing::Test {
 protected:
  TopScreenExits() {
    folder = testing::TempDir() + "topscreenXXXXXX";
    EXPECT_TRUE(mkdtemp(folder.data()));
  }
  ~TopScreenExits() override {
    std::filesystem::remove_all(folder + ".homes");
    if (std::system(("rm -r '" + folder + "'").c_str()) != 0) ADD_FAILURE() << folder;
  }
  std::unique_ptr<ChildProcess> program(const std::function<void()>& prepare) {
    return std::make_unique<ChildProcess>([&] {
      setenv("SDL_VIDEODRIVER", "dummy", 1);
      const std::string home = folder + ".homes/" + std::to_string(getpid());  // each is a terminal of its own
      std::filesystem::create_directories(home);
      setenv("HOME_DIR", home.c_str(), 1);
      setenv("WORKING_DIR", (folder + "/").c_str(), 1);
      setenv("LOG_FILENAME", (folder + "/top.log").c_str(), 1);
      SystemSeams.Sleep = [](unsigned seconds) {
        std::fprintf(stderr, "[sleep %u]", seconds);
        return 0u;
      };
      prepare();
      char name[] = "topscreen", address[] = "127.0.0.1:1";
      char* arguments[] = {name, address, nullptr};
      const int result = AppMain(2, arguments, [](const std::string* server) {
        auto* app = new ToldTopScreen;
        app->setServerAddress(*server);
        return app;
      });
      std::fflush(nullptr);
      _exit(result);  // as the entry point does it after an exception, and here always
    });
  }
  std::string folder;
};

TEST_F(TopScreenExits, AFailingStepOfInitIsExit254) {
  const struct {
    const char* name;
    std::function<void()> prepare;
    std::vector<std::string> texts;
    bool waits;  // for a person to read the message
  } rows[] = {
    {"no video", [] { setenv("SDL_VIDEODRIVER", "none such", 1); }, {"Can not init SDL: ", "\nExiting...\n"}, true},
    {"no home directory", [] { unsetenv("HOME_DIR"); }, {"HOME_DIR"}, false},
    {"no fonts", [] { fontsFail = true; }, {"TTF_Init: no fonts\n"}, true},
  };
  const auto make = [this](const auto& row) { return program(row.prepare); };
  endAll(rows, make, [](const auto& row, ChildProcess& child) {
    EXPECT_EQ(child.end(), "exit 254");
    for (const auto& text : row.texts) EXPECT_EQ(occurrences(text, child.output()), 1) << child.output();
    EXPECT_EQ(occurrences("[sleep 10]", child.output()), row.waits ? 1 : 0);
    EXPECT_EQ(occurrences(failure, child.output()), 1);
    EXPECT_EQ(occurrences("[state 1]", child.output()), 0);
  });
}

TEST_F(TopScreenExits, ASignalWhileItWaitsAfterAFailedStartIsItsExitCode) {
  const auto child = program([] {
    setenv("SDL_VIDEODRIVER", "none such", 1);
    SystemSeams.Sleep = [](unsigned seconds) {
      kill(getpid(), SIGTERM);
      return seconds;
    };
  });
  EXPECT_EQ(child->end(), "exit 15");
  EXPECT_EQ(occurrences(failure, child->output()), 0);
}

TEST_F(TopScreenExits, OldLogsThatCannotBeReadAreAnExceptionOutOfInit) {
  const auto child = program([this] {
    std::ofstream(folder + "/file") << "no folder";
    setenv("LOG_FILENAME", (folder + "/file/top.log").c_str(), 1);
  });
  EXPECT_EQ(child->end(), "exit 252");
  EXPECT_EQ(occurrences("Unhadled exception occoured while loading application\n", child->output()), 1);
}

// The client is made last: until then the passes of the shutdown find none.
TEST_F(TopScreenExits, ASignalInAnyStateOfTheStartEndsItWithItsNumber) {
  std::vector<std::pair<int, std::unique_ptr<ChildProcess>>> children;
  for (int state = TApplication::APP_LOADING; state <= TApplication::APP_STARTUP_GRAPHICS; ++state)
    children.emplace_back(state, program([=] { signalIn = static_cast<TApplication::ApplicationState>(state); }));
  for (auto& [state, child] : children) {
    SCOPED_TRACE(state);
    EXPECT_EQ(child->end(), "exit 15") << child->output();
    EXPECT_EQ(occurrences("Signal 15 received. Exiting...", child->output()), 1);
    EXPECT_EQ(occurrences("[state 9]", child->output()), 1);
    EXPECT_EQ(occurrences("Std exception", child->output()), 0);
  }
}

TEST_F(TopScreenExits, AFailedThreadCheckLeavesItsBacktraceInTheLogFile) {
  const auto child = program([] { drawsOnTheMainThread = true; });
  EXPECT_EQ(child->end(), "signal 6");
  std::string log;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    std::ifstream file(entry.path());
    log.append(std::istreambuf_iterator<char>(file), {});
  }
  size_t at = 0;
  for (const char* line : {": Signal 6 received. Exiting...", ": ================== BACKTRACE ==================",
                           ": (1) ", ": (2) ", ": (3) ", ": ================ BACKTRACE END ================"}) {
    const size_t found = log.find(line, at);
    ASSERT_NE(found, std::string::npos) << line << " in:\n" << log;
    at = found;
  }
  EXPECT_EQ(occurrences("WILL REBOOT", log), 0);
}

}  // namespace

// In front of the library's own.
extern "C" int TTF_Init(void) {
  if (!fontsFail) return reinterpret_cast<int (*)()>(dlsym(RTLD_NEXT, "TTF_Init"))();
  SDL_SetError("no fonts");
  return -1;
}
