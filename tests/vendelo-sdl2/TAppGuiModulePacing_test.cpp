// The pace of the frames and the count of them.
#include "tests/vendelo-sdl2/TAppGuiModuleFixture.h"

using namespace guitest;

namespace {
int presentations = 0;
Uint32 presentMs = 0;  // how long the next presentations take
}  // namespace

// Linked in front of SDL's: a presentation that takes as long as the test says.
extern "C" void SDL_RenderPresent(SDL_Renderer*) {
  ++presentations;
  testClock->advance(presentMs);
}

namespace {

class Pacing : public AppGuiModule {
 protected:
  void SetUp() override {
    module->SetTargetFPS(50);  // 20 ms
    module->updateLastDrawTime();
    presentations = 0;
    presentMs = 0;
  }
};

TEST_F(Pacing, SleepsTheRestOfTheFrame) {
  clock.advance(5);
  module->draw();
  EXPECT_EQ((std::vector<long>{15000}), sleeps);
  EXPECT_EQ(0, module->mSleepDiff);
  EXPECT_EQ(1020u, clock.now());
}

TEST_F(Pacing, AnOvershootShortensTheNextSleep) {
  clock.advance(10);
  overshoot = 2;
  module->draw();
  EXPECT_EQ((std::vector<long>{10000}), sleeps);
  EXPECT_EQ(2, module->mSleepDiff);
  overshoot = 0;
  clock.advance(10);
  module->draw();
  EXPECT_EQ((std::vector<long>{10000, 8000}), sleeps);
  EXPECT_EQ(0, module->mSleepDiff);
}

TEST_F(Pacing, ALongFrameDoesNotSleep) {
  clock.advance(10);
  overshoot = 3;
  module->draw();
  EXPECT_EQ(3, module->mSleepDiff);
  clock.advance(20);
  module->draw();
  EXPECT_EQ(1u, sleeps.size());
  EXPECT_EQ(0, module->mSleepDiff);
}

TEST_F(Pacing, ElapsedAndOvershootTogetherDecide) {
  overshoot = 5;
  clock.advance(10);
  module->draw();
  clock.advance(15);  // 15 + 5 is the whole frame
  module->draw();
  EXPECT_EQ(1u, sleeps.size());
  EXPECT_EQ(0, module->mSleepDiff);
}

TEST_F(Pacing, VerticalSyncHoldsTheRateFrom60On) {
  const struct {
    const char* name;
    bool vsync;
    int fps;
    bool sleeps;
  } rows[] = {
    {"vsync at 60", true, 60, false}, {"vsync at 100", true, 100, false},  {"vsync at 59", true, 59, true},
    {"vsync at 30", true, 30, true},  {"no vsync at 60", false, 60, true},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    module->mVsync = row.vsync;
    module->SetTargetFPS(row.fps);
    module->updateLastDrawTime();
    sleeps.clear();
    module->draw();
    EXPECT_EQ(row.sleeps ? std::vector<long>{1000 / row.fps * 1000} : std::vector<long>{}, sleeps);
  }
}

// A frame that changes nothing is not presented, so no vertical sync holds it.
TEST_F(Pacing, AFrameThatIsNotPresentedSleepsInSpiteOfVerticalSync) {
  app.setStatus(TApplication::APP_RUNNING);
  module->makeBackBuffer(32, 16);
  module->mVsync = true;
  module->SetTargetFPS(60);
  module->draw();
  EXPECT_EQ(1, presentations);
  EXPECT_TRUE(sleeps.empty());
  for (int i = 1; i <= 10; ++i) {
    module->draw();
    EXPECT_EQ(1, presentations);
    EXPECT_EQ(1000u + 16 * static_cast<Uint32>(i), clock.now());
  }
  module->RedrawAll();
  module->draw();
  EXPECT_EQ(2, presentations);
  EXPECT_EQ(10u, sleeps.size());
}

TEST_F(Pacing, FrameRateIsARunningAverage) {
  float noVsync = 0;
  clock.advance(20);
  module->draw();
  EXPECT_FLOAT_EQ(50.0f, module->getFPS(&noVsync));
  EXPECT_FLOAT_EQ(50.0f, noVsync);
  clock.advance(40);
  module->draw();
  EXPECT_FLOAT_EQ((50.0f + 25.0f) / 2, module->getFPS(nullptr));
  EXPECT_EQ(2u, module->mNumFrames);
  clock.advance(40);
  module->draw();
  EXPECT_FLOAT_EQ((2 * 37.5f + 25.0f) / 3, module->getFPS(nullptr));
}

TEST_F(Pacing, TwoFramesInOneMillisecondCountAsOneASecond) {
  module->mVsync = true;
  module->SetTargetFPS(60);
  clock.advance(20);
  module->draw();
  module->draw();
  float noVsync = 0;
  EXPECT_FLOAT_EQ((50.0f + 1.0f) / 2, module->getFPS(&noVsync));
  EXPECT_FLOAT_EQ((50.0f + 1.0f) / 2, noVsync);
}

TEST_F(Pacing, TheAverageForgetsBeyondTheTargetRate) {
  module->SetTargetFPS(2);
  for (int i = 0; i < 5; ++i) {
    clock.advance(1000);
    module->draw();
  }
  EXPECT_EQ(2u, module->mNumFrames);
  clock.advance(2000);
  module->draw();
  EXPECT_FLOAT_EQ((1.0f + 0.5f) / 2, module->getFPS(nullptr));
}

TEST_F(Pacing, EveryBranch) {
  const struct {
    const char* name;
    bool rendering, vsync;
    int fps;
    Uint32 elapsed;
    int64_t before;  // mSleepDiff
    int asked;       // milliseconds; -1 for no sleep
  } rows[] = {
    {"rest of the frame", true, false, 50, 5, 0, 15},
    {"nothing elapsed", true, false, 50, 0, 0, 20},
    {"one millisecond left", true, false, 50, 19, 0, 1},
    {"exactly over", true, false, 50, 20, 0, -1},
    {"late", true, false, 50, 25, 0, -1},
    {"late with an overshoot", true, false, 50, 25, 3, -1},
    {"overshoot fills the rest", true, false, 50, 15, 5, -1},
    {"overshoot leaves one", true, false, 50, 15, 4, 1},
    {"overshoot beyond the frame", true, false, 50, 0, 30, -1},
    {"short sleep before", true, false, 50, 5, -3, 18},
    {"short sleep before a late frame", true, false, 50, 21, -3, 2},
    {"short sleep before a later frame", true, false, 50, 23, -3, -1},
    {"vsync at 59", true, true, 59, 6, 0, 10},
    {"vsync at 60", true, true, 60, 6, 0, -1},
    {"vsync at 60 forgets the overshoot", true, true, 60, 6, 4, -1},
    {"vsync at 61", true, true, 61, 6, 0, -1},
    {"vsync at 60 without rendering", false, true, 60, 6, 0, 10},
    {"without rendering, late", false, true, 60, 16, 0, -1},
    {"without rendering and vsync", false, false, 60, 6, 2, 8},
    {"one frame a second", true, true, 1, 1, 0, 999},
    {"a frame of one millisecond", true, false, 1000, 0, 0, 1},
    {"a frame of no millisecond", true, false, 1001, 0, 0, -1},
    {"no whole milliseconds", true, false, 30, 0, 0, 33},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    row.rendering ? module->StartRendering() : module->StopRendering();
    module->mVsync = row.vsync;
    module->SetTargetFPS(row.fps);
    module->updateLastDrawTime();
    module->mSleepDiff = row.before;
    clock.advance(row.elapsed);
    sleeps.clear();
    presentations = 0;
    EXPECT_EQ(0, module->draw());
    EXPECT_EQ(row.asked < 0 ? std::vector<long>{} : std::vector<long>{row.asked * 1000L}, sleeps);
    EXPECT_EQ(0, module->mSleepDiff);
    EXPECT_EQ(row.rendering ? 1 : 0, presentations);
    EXPECT_EQ(clock.now(), module->mLastDrawTime);
  }
}

TEST_F(Pacing, ASleepThatEndsEarlyLengthensTheNextOne) {
  SystemSeams.MicroSleep = [](useconds_t microseconds) {
    sleeps.push_back(static_cast<long>(microseconds));
    testClock->advance(microseconds / 1000 - 2);
    return -1;
  };
  module->draw();
  EXPECT_EQ(-2, module->mSleepDiff);
  module->draw();
  EXPECT_EQ((std::vector<long>{20000, 22000}), sleeps);
}

TEST_F(Pacing, TheTickCounterMayStartAgain) {
  clock.set(0xfffffff8u);
  module->updateLastDrawTime();
  clock.set(4);  // 12 later
  module->draw();
  EXPECT_EQ((std::vector<long>{8000}), sleeps);
  EXPECT_FLOAT_EQ(50.0f, module->getFPS(nullptr));
}

TEST_F(Pacing, PresentationCountsInOneRateOnly) {
  clock.advance(10);
  module->mVsync = true;
  module->SetTargetFPS(60);
  presentMs = 10;
  module->draw();
  float noVsync = 0;
  EXPECT_FLOAT_EQ(50.0f, module->getFPS(&noVsync));
  EXPECT_FLOAT_EQ(100.0f, noVsync);
  EXPECT_EQ(1020u, module->mLastDrawTime);
  module->draw();  // the frame itself takes no time
  EXPECT_FLOAT_EQ((50.0f + 100.0f) / 2, module->getFPS(&noVsync));
  EXPECT_FLOAT_EQ((100.0f + 1.0f) / 2, noVsync);
}

TEST_F(Pacing, WhatPresentationTookIsNotSleptAgain) {
  presentMs = 7;
  clock.advance(5);
  module->draw();
  EXPECT_EQ((std::vector<long>{15000}), sleeps);
  clock.advance(5);  // since the end of the presentation
  module->draw();
  EXPECT_EQ((std::vector<long>{15000, 15000}), sleeps);
}

TEST_F(Pacing, ALowerTargetRateShortensTheMemoryAtOnce) {
  module->SetTargetFPS(10);
  for (int i = 0; i < 10; ++i) module->draw();
  EXPECT_EQ(10u, module->mNumFrames);
  EXPECT_FLOAT_EQ(10.0f, module->getFPS(nullptr));
  module->SetTargetFPS(1);
  module->draw();
  EXPECT_EQ(1u, module->mNumFrames);
  EXPECT_FLOAT_EQ(1.0f, module->getFPS(nullptr));  // this frame alone
}

TEST_F(Pacing, WithoutRenderingTheRateIsCountedAllTheSame) {
  module->StopRendering();
  clock.advance(5);
  module->draw();
  float noVsync = 0;
  EXPECT_FLOAT_EQ(50.0f, module->getFPS(&noVsync));
  EXPECT_FLOAT_EQ(50.0f, noVsync);
}

}  // namespace
