// What stands when the program has been brought up, in a process of its own: no window, no skin, no service.
#include <SDL_ttf.h>
#include <gtest/gtest.h>
#include <unistd.h>
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "tests/support/ChildProcess.h"
#include "vendelo-sdl2/MyUtils.h"
#include "vesperatopscreen/InitData.h"
#include "vesperatopscreen/TopScreenApp.h"
#include "vesperatopscreen/TopScreenScreen.h"

using namespace vendelo_sdl2;

namespace {

struct Client : TKSLClient {
  static Uint32 popInterval(const TKSLClient& client) { return client.*(&Client::mPopTargetFrequency); }
  static unsigned int retries(const TKSLClient& client) { return client.*(&Client::NumRetries); }
  static const TKSLListener* listener(const TKSLClient& client) { return client.*(&Client::mListener); }
};

// Tells on the error output what Init has made.
struct Told : TopScreenApp {
  int _WriteLog(char color, TLogType type, unsigned long gameId, const std::string& text) override {
    std::fprintf(stderr, "[log %u %s]", static_cast<unsigned>(type), text.c_str());
    return TopScreenApp::_WriteLog(color, type, gameId, text);
  }
  [[noreturn]] void tell() {
    setServerAddress("127.0.0.1:1");
    SetParam<int>("ScreenW", 800, PARAM_CACHE, "", "", false);
    SetParam<int>("ScreenH", 600, PARAM_CACHE, "", "", false);
    std::fprintf(stderr, "[Init %d]", Init());
    std::fprintf(stderr, "[size %ld %ld]", static_cast<long>(GetParam("ScreenW", PARAM_CACHE)->AsInteger(0)),
                 static_cast<long>(GetParam("ScreenH", PARAM_CACHE)->AsInteger(0)));
    std::fprintf(stderr, "[SDL %d %d]",
                 SDL_WasInit(SDL_INIT_TIMER | SDL_INIT_VIDEO | SDL_INIT_EVENTS) ==
                   (SDL_INIT_TIMER | SDL_INIT_VIDEO | SDL_INIT_EVENTS),
                 TTF_WasInit());
    std::fprintf(stderr, "[pictures %s]", MyUtils::ImageDir().c_str());
    std::fprintf(stderr, "[screen %d %s]", screen && screen == GUI(),
                 screen ? screen->GetModuleName().c_str() : "");
    std::fprintf(stderr, "[home %s]", GetParam("HomeDir", PARAM_MASK_ALL)->AsString().c_str());
    if (!pKSL) _exit(1);
    std::fprintf(stderr, "[client %s %s %u %d %d %d]", pKSL->Name().c_str(), pKSL->Address().c_str(),
                 Client::popInterval(*pKSL), static_cast<int>(Client::retries(*pKSL)), pKSL->Running(),
                 Client::listener(*pKSL) == this);
    const TKSLClient::MethodInfo& init = pKSL->getMethodInfo(M_INIT);
    std::fprintf(stderr, "[method %s %d %d]", init.Address, init.ResponseParser == ParseInitResponse,
                 init.DestroyData == DestroyInitObject);
    std::fflush(nullptr);
    _exit(0);
  }
};

class Init : public testing::Test {
 protected:
  Init() {
    folder = testing::TempDir() + "topscreeninitXXXXXX";
    EXPECT_TRUE(mkdtemp(folder.data()));
  }
  ~Init() override {
    if (std::system(("rm -r '" + folder + "'").c_str()) != 0) ADD_FAILURE() << folder;
  }
  std::string told(const char* workingDir) {
    ChildProcess child([&] {
      setenv("SDL_VIDEODRIVER", "dummy", 1);
      setenv("HOME_DIR", folder.c_str(), 1);
      unsetenv("WORKING_DIR");
      if (workingDir) setenv("WORKING_DIR", workingDir, 1);
      setenv("LOG_FILENAME", (folder + "/top.log").c_str(), 1);
      (new Told)->tell();
    });
    EXPECT_EQ("exit 0", child.end()) << child.output();
    return child.output();
  }
  std::string folder;
};

}  // namespace

TEST_F(Init, BringsTheClientUpAlsoWithoutAWindow) {
  const std::string output = told("/nowhere/");
  for (const char* text :
       {"[Init 0]", "[SDL 1 1]", "[pictures /nowhere/VESPERA/TOP_SKIN/]", "[screen 1 GUI1]", "[size 1920 1080]",
        "[client TopScreen http://127.0.0.1:1/KSL 300 -1 1 1]", "[method topscreen.init 1 1]", "Logmanager ok\n",
        "[log 1 Top screen started with KSL server requests on http://127.0.0.1:1/KSL]",
        "Unable to set 1920x1080 video: "})
    EXPECT_EQ(1, occurrences(text, output)) << text << " in:\n" << output;
  EXPECT_EQ(1, occurrences("[home " + folder + "]", output));
  EXPECT_EQ(2, occurrences("Top screen started", output)) << "and once by the log itself, on the console";
}

TEST_F(Init, NeedsNoWorkingDirectoryAndPutsNothingBetweenItAndTheSkin) {
  EXPECT_EQ(1, occurrences("[pictures VESPERA/TOP_SKIN/]", told(nullptr)));
  EXPECT_EQ(1, occurrences("[pictures hereVESPERA/TOP_SKIN/]", told("here")));
}

TEST_F(Init, KeepsNoMoreThanTheNewestOldLogs) {
  for (int day = 1; day <= 50; ++day)
    std::ofstream(folder + "/top_2001-" + (day < 26 ? "01-" : "02-") + std::to_string(100 + day).substr(1) + ".log")
      << day;
  told(nullptr);
  const std::filesystem::directory_iterator logs(folder);
  EXPECT_GE(40, std::count_if(begin(logs), end(logs), [](const auto& entry) {
              return entry.path().filename().string().rfind("top_", 0) == 0;
            }));
}
