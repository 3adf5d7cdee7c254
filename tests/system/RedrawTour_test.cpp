// The demo's tour in the real program. Two programs never show the same moment of what moves. So the clock of the
// one that draws what changes is held at each station: what stands on the screen then has come about by changes,
// frame by frame, and must stay when the same frame is drawn anew as a whole. What does not move is also held
// against the program that draws everything.
#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>
#include <algorithm>
#include <filesystem>
#include <fstream>

#include "tests/system/HeldClock.h"
#include "tests/system/PanelHarness.h"

namespace systest {
namespace {

namespace fs = std::filesystem;

class RedrawTour : public PanelTest {
 protected:
  void SetUp() override {
    SystemTest::SetUp();
    if (HasFatalFailure()) return;
    std::ifstream file(SOURCE_DIR "/tools/tour/evening.json");
    mTour = Json::parse(file);
  }
  void TearDown() override {
    if (mpClock) munmap(mpClock, sizeof *mpClock);
    PanelTest::TearDown();
  }

  void startOnTheDemo(const std::string& redraw) {
    const std::string file = mFolder + "/clock";
    if (mpClock) munmap(mpClock, sizeof *mpClock);
    std::ofstream(file) << std::string(sizeof(HeldClock), '\0');
    const int descriptor = open(file.c_str(), O_RDWR | O_CLOEXEC);
    void* const memory = mmap(nullptr, sizeof *mpClock, PROT_READ | PROT_WRITE, MAP_SHARED, descriptor, 0);
    close(descriptor);
    ASSERT_NE(MAP_FAILED, memory);
    mpClock = static_cast<HeldClock*>(memory);
    startProgram(mSimulator.address(), Renderer::Software,
                 {{"WORKING_DIR", SKIN_ROOT "/"},
                  {"TOPSCREEN_REDRAW", redraw},
                  {"LD_PRELOAD", HELD_CLOCK},
                  {HeldClock::kVariable, file}});
  }

  // A frame that has begun after the call is on the screen.
  testing::AssertionResult drawsAnother() {
    const uint32_t before = mpClock->frames;
    if (within(20000, [&] { return mpClock->frames - before >= 3; })) return testing::AssertionSuccess();
    return testing::AssertionFailure() << "no frame";
  }

  // Threads that decode pictures, which come whenever they are ready.
  bool decodes() const {
    for (const auto& thread : fs::directory_iterator("/proc/" + std::to_string(mProgram.pid()) + "/task")) {
      const std::string name = contentOf(thread.path().string() + "/comm");
      if (name.starts_with("loadSpir") || name.starts_with("async")) return true;
    }
    return false;
  }

  // All that the simulator has said is on its way to the screen, and no picture is.
  void takeItIn() {
    ASSERT_TRUE(asksForEvents(2));
    ASSERT_TRUE(within(60000, [this] { return !decodes() && drawsAnother() && !decodes(); }));
  }

  // What the program draws at this moment, by itself and when it has to draw all of it. At every other station the
  // window was hidden in the meantime, at the others another one stood in front of it.
  void compareHere(const std::string& station) {
    mpClock->held = 1;
    ASSERT_TRUE(drawsAnother());
    const Picture due = mX.picture();
    if (mStations++ % 2 == 0) {
      const unsigned long other = mX.openWindow({0, 0, 1920, 1080}, {255, 0, 255});
      ASSERT_TRUE(within(20000, [&] { return alike(mX.pixel(700, 500), {255, 0, 255}); }));
      ASSERT_TRUE(drawsAnother());
      mX.closeWindow(other);
    } else {
      const unsigned long own = mX.findWindow("TopScreen");
      mX.hideWindow(own);
      ASSERT_TRUE(within(20000, [&] { return mX.picture() != due; }));
      ASSERT_TRUE(drawsAnother());
      mX.showWindow(own);
    }
    EXPECT_TRUE(within(20000, [&] { return mX.picture() == due; })) << "station " << station;
    mpClock->held = 0;
  }

  // The pictures of the tour's stations without levels, which do not move. With a list of those that are due it
  // waits for each of them.
  std::vector<Picture> stillStations(const std::string& redraw, const std::vector<Picture>* due) {
    std::vector<Picture> pictures;
    startSimulator();
    startOnTheDemo(redraw);
    for (Json step : mTour) {
      static const std::vector<std::string> moves{"add", "win", "pot", "grow", "stop", "down"};
      if (std::find(moves.begin(), moves.end(), step["do"]) != moves.end()) continue;
      const int64_t at = step["at"].get<int64_t>();
      if (at > 5000 && at < 38600 && step["do"] == "station") continue;  // nothing happens but to levels
      step.erase("at");
      mSimulator.apply(step);
      if (step["do"] != "station") continue;
      takeItIn();
      Picture seen;
      const auto stands = [&] {
        seen = mX.picture();
        if (due && seen != due->at(pictures.size())) return false;
        return asksForEvents(2) && mX.picture() == seen;
      };
      EXPECT_TRUE(within(20000, stands)) << "station " << step["name"];
      pictures.push_back(seen);
      if (HasFailure()) break;
    }
    mProgram.kill();
    mSimulator.process().kill();
    return pictures;
  }

  Json mTour;
  HeldClock* mpClock = nullptr;
  int mStations = 0;
};

TEST_F(RedrawTour, AtEachStationStandsWhatDrawingEverythingShows) {
  startSimulator();
  startOnTheDemo("-");
  ASSERT_TRUE(within(20000, [this] { return mProgram.running() && mX.findWindow("TopScreen") != 0; }));
  int64_t at = 0;
  for (Json step : mTour) {
    const int64_t next = step["at"].get<int64_t>();
    // Long enough for something to be on its way; what it has come to does not matter.
    std::this_thread::sleep_for(std::chrono::milliseconds((next - at) / 3));
    at = next;
    if (step["do"] == "station") {
      takeItIn();
      // Roulette has the screen for itself: nothing is drawn.
      if (step["name"] != "roulette") compareHere(step["name"]);
      if (HasFailure()) return;
    }
    // Nothing comes but what is said here.
    if (step["do"] == "grow")
      step = {{"do", "pot"}, {"id", step["id"]}, {"raise", step["max"].get<int64_t>() * 40}};
    step.erase("at");
    mSimulator.apply(step);
  }
  EXPECT_GT(mStations, 25);
}

TEST_F(RedrawTour, WhatStandsIsWhatTheProgramShowsThatDrawsEverything) {
  const std::vector<Picture> changes = stillStations("-", nullptr);
  if (HasFailure()) return;
  EXPECT_EQ(changes.size(), stillStations("all", &changes).size());
  size_t others = 0;
  for (size_t i = 1; i < changes.size(); ++i) others += changes[i] != changes[i - 1];
  EXPECT_GT(others, 8u) << "they are different pictures";
}

}  // namespace
}  // namespace systest
