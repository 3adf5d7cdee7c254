#include "tools/kslsim/Service.h"

namespace kslsim {
namespace {

constexpr auto kPace = std::chrono::milliseconds(5);

}  // namespace

Service::Service(const Options& options)
  : mOptions(options),
    mStart(std::chrono::steady_clock::now()),
    mSimulator([start = mStart] {
      return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - start)
        .count();
    }),
    mScreen(options.display, options.window),
    mReplay(options.replay.empty()
              ? nullptr
              : std::make_unique<Replay>(options.replay,
                                         options.replayAtOnce ? Replay::Pace::AtOnce : Replay::Pace::Recorded)),
    mRpc(mSimulator, options.path, mReplay.get()),
    mControl(mSimulator, mScreen) {}

Service::~Service() { stop(); }

bool Service::start(std::string& error) {
  if (!mOptions.logFile.empty() && !mSimulator.log().open(mOptions.logFile)) {
    error = "cannot write " + mOptions.logFile;
    return false;
  }
  if (!mRpc.start(mOptions.port)) {
    error = "port " + std::to_string(mOptions.port) + " is taken";
    return false;
  }
  if (!mControl.start(mOptions.controlPort)) {
    mRpc.stop();
    error = "control port " + std::to_string(mOptions.controlPort) + " is taken";
    return false;
  }
  mOpen = true;
  mEnd = false;
  mThread = std::thread([this] { letTimePass(); });
  return true;
}

void Service::stop() {
  if (!mThread.joinable()) return;
  mEnd = true;
  mThread.join();
  mControl.stop();
  mRpc.stop();
  mOpen = false;
}

void Service::letTimePass() {
  while (!mEnd) {
    mSimulator.advance();
    // A port that is taken meanwhile is tried again with the next pass.
    if (mSimulator.wantsToListen() && !mOpen) {
      mOpen = mRpc.start(mRpc.port());
    } else if (!mSimulator.wantsToListen() && mOpen) {
      mRpc.stop();
      mOpen = false;
    }
    std::this_thread::sleep_for(kPace);
  }
}

}  // namespace kslsim
