#include "tools/kslsim/Simulator.h"

namespace kslsim {
Simulator::Simulator(std::function<int64_t()> clock)
  : mClock(std::move(clock)), mInit(startOf(initFields())), mService(startOf(serviceFields())) {}

void Simulator::apply(const Json& step) {
  {
    std::lock_guard lock(mMutex);
    run(step);
  }
  mLog.add(now(), {{"step", step}});
}

void Simulator::play(const Scenario& scenario) {
  std::lock_guard lock(mMutex);
  mSteps = scenario.steps();
  mNextStep = 0;
  mPlayedFrom = now();
}

void Simulator::advance() {
  std::vector<Json> entries;
  {
    std::lock_guard lock(mMutex);
    const int64_t time = now();
    for (; mNextStep < mSteps.size() && mSteps[mNextStep].at <= time - mPlayedFrom; ++mNextStep) {
      const Scenario::Step& step = mSteps[mNextStep];
      Json entry{{"step", step.step}, {"line", step.place.line}, {"column", step.place.column}};
      try {
        run(step.step);
      } catch (const InputError& error) {
        entry["error"] = error.what();
      }
      entries.push_back(std::move(entry));
    }
    mPots.advance(time, mPlatform);
    mHouse.advance(time, mPlatform);
    tellClients(false);
    if (mUpAt >= 0 && time >= mUpAt) {
      mUpAt = -1;
      mListening = true;
      entries.push_back({{"up", "by itself"}});
    }
  }
  for (Json& entry : entries) mLog.add(now(), std::move(entry));
}

void Simulator::tellClients(bool silently) {
  for (const PlatformEvent& event : mPlatform.takeEvents())
    if (!silently) mClients.pushToAll(event);
}

std::optional<BadReply> Simulator::takeBadReply(const std::string& method) {
  std::lock_guard lock(mMutex);
  return mBadReplies.take(method, now());
}

void Simulator::giveBackBadReply(const std::string& method, const BadReply& reply) {
  std::lock_guard lock(mMutex);
  mBadReplies.giveBack(method, reply);
}

Json Simulator::knownTo(int client) const {
  std::lock_guard lock(mMutex);
  return mClients.knownTo(client);
}

Json Simulator::report() const {
  std::lock_guard lock(mMutex);
  return {{"t", now()},
          {"listening", mListening.load()},
          {"state", mPlatform.state()},
          {"init", mInit},
          {"service", mService},
          {"params", mParams},
          {"counters", mCounters},
          {"clients", mClients.toJson()},
          {"moving", mHouse.tables()},
          {"bad", mBadReplies.toJson(now())},
          {"stepsLeft", mSteps.size() - mNextStep}};
}

}  // namespace kslsim
