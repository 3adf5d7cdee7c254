// The demo's tour on the demo's skin, once drawn by hand and once by the module that draws what changes. What the
// screen shows is the same after each frame, pixel for pixel.
#include <gtest/gtest.h>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "common/KSLResponseParsers.h"
#include "tests/support/Glass.h"
#include "tests/support/TopScreenHarness.h"
#include "tools/kslsim/Simulator.h"
#include "vendelo-sdl2/TAsyncJobs.h"

using namespace vendelo_sdl2;

namespace {

// Between two frames; a few come close together after each step of the tour.
constexpr int kFar = 320, kNear = 20, kNearFrames = 3;

std::vector<kslsim::Json> stepsOfTour() {
  std::ifstream file(SOURCE_DIR "/tools/tour/evening.json");
  return kslsim::Json::parse(file).get<std::vector<kslsim::Json>>();
}

class Tour {
 public:
  explicit Tour(DrawnBy drawnBy) : mScreen(SKIN_ROOT "/", drawnBy), mService([this] { return mNow; }) {}

  std::vector<glass::Seen> play() {
    for (const kslsim::Json& step : stepsOfTour()) {
      goOnTo(step["at"].get<int64_t>());
      mAfter = step.value("name", step["do"].get<std::string>()) + " at " + std::to_string(mNow);
      kslsim::Json now = step;
      now.erase("at");
      mService.apply(now);
      settle();
      mNear = kNearFrames;
    }
    goOnTo(mNow + 1000);
    return std::move(mSeen);
  }

 private:
  void goOnTo(int64_t moment) {
    while (mNow < moment) {
      const int64_t next = std::min(moment, mNow + (mNear-- > 0 ? kNear : kFar));
      const auto passed = static_cast<Uint32>(next - mNow);
      mNow = next;
      mService.advance();
      ask();
      std::srand(static_cast<unsigned>(mNow));  // which the panel takes its chances from
      mScreen.skip(passed);
      mSeen.push_back({glass::sums(), mAfter});
    }
  }

  // What the client does: it registers and takes the whole state, and then the events.
  void ask() {
    if (!mService.wantsToListen()) return;
    if (mClient == 0) {
      const xmlrpc_c::value_struct answer(mService.init("TopScreen", "1.5.0"));
      mClient = xmlrpc_c::value_int(answer.cvalue().at("ID")).cvalue();
      int status = 0;
      const std::unique_ptr<void, void (*)(void*)> state(parsePlatformState(mService.platformState(), status),
                                                         destroyPlatformState);
      ASSERT_EQ(0, status);
      return mScreen.status([&](PlatformState& told) { told = *static_cast<PlatformState*>(state.get()); });
    }
    const xmlrpc_c::value answer = mService.popEvents(mClient);
    if (answer.type() != xmlrpc_c::value::TYPE_ARRAY) {
      mClient = 0;
      return;
    }
    std::vector<std::pair<int, xmlrpc_c::value>> events;
    for (const xmlrpc_c::value& event : xmlrpc_c::value_array(answer).vectorValueValue()) {
      const xmlrpc_c::cstruct fields = xmlrpc_c::value_struct(event).cvalue();
      events.emplace_back(xmlrpc_c::value_int(fields.at("eventID")).cvalue(), fields.at("context"));
    }
    if (!events.empty()) mScreen.app().deliver(events);
  }

  // Pictures that are being decoded come at a moment that the machine chooses: the tour waits for them.
  void settle() {
    ask();
    for (int i = 0; i < 3; ++i) {
      mScreen.frame();
      mScreen.joinSprites();
      ASSERT_TRUE(TAsyncJob::WaitForNone(60000));
    }
  }

  TopScreenHarness mScreen;
  int64_t mNow = 0;
  kslsim::Simulator mService;
  int mClient = 0, mNear = 0;
  std::string mAfter = "the start";
  std::vector<glass::Seen> mSeen;
};

}  // namespace

TEST(RedrawOfTour, ShowsWhatDrawingEverythingShows) {
  const std::vector<glass::Seen> due = Tour(DrawnBy::HAND).play(), is = Tour(DrawnBy::CHANGES).play();
  EXPECT_EQ("", glass::difference(due, is));
  EXPECT_GT(due.size(), stepsOfTour().size() * 3);
  EXPECT_GT(glass::pictures(due), due.size() / 2) << "the tour is lively";
}
