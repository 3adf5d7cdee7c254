#include "tools/kslsim/Simulator.h"

namespace kslsim {
namespace {

// The protocol that this service speaks; a client of another version is turned away.
const std::string VERSION = "1.5.0";

}  // namespace

Simulator::Simulator(std::function<int64_t()> clock) : mClock(std::move(clock)), mInit(startOf(initFields())) {}

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

xmlrpc_c::value Simulator::init(const std::string& name, const std::string& version) {
  std::lock_guard lock(mMutex);
  if (version != VERSION)
    return faultStruct(PROTOCOL_ERROR,
                       "Protocol version " + version + " is not supported, this is " + VERSION + ".");
  xmlrpc_c::cstruct out{{"ID", xmlrpc_c::value_int(mClients.add(name, version))}};
  for (const Field& field : initFields()) out[field.name] = toWire(mInit.at(field.name), field.kind);
  return xmlrpc_c::value_struct(out);
}

xmlrpc_c::value Simulator::popEvents(int client) {
  std::lock_guard lock(mMutex);
  Client* found = mClients.find(client);
  if (!found) return faultStruct(NOT_REGISTERED, "Client " + std::to_string(client) + " is not registered.");
  return found->queue.take();
}

xmlrpc_c::value Simulator::pushEvents(int client, int package, const std::vector<xmlrpc_c::value>& events) {
  std::lock_guard lock(mMutex);
  Client* found = mClients.find(client);
  if (!found) return faultStruct(NOT_REGISTERED, "Client " + std::to_string(client) + " is not registered.");
  switch (Clients::take(*found, package, static_cast<int>(events.size()))) {
    case Package::New:
    case Package::Repeat:
      return xmlrpc_c::value_int(found->lastTaken);
    case Package::OutOfStep:
      break;
  }
  return faultStruct(UNSYNC, "Package " + std::to_string(package) + " does not follow package " +
                               std::to_string(found->lastPackage) + ".");
}

xmlrpc_c::value Simulator::platformState() const {
  std::lock_guard lock(mMutex);
  return mPlatform.toWire();
}

std::optional<BadReply> Simulator::takeBadReply(const std::string& method) {
  std::lock_guard lock(mMutex);
  return mBadReplies.take(method);
}

Json Simulator::report() const {
  std::lock_guard lock(mMutex);
  return {{"t", now()},
          {"listening", mListening.load()},
          {"state", mPlatform.state()},
          {"init", mInit},
          {"clients", mClients.toJson()},
          {"bad", mBadReplies.toJson()},
          {"stepsLeft", mSteps.size() - mNextStep}};
}

}  // namespace kslsim
