// The methods of the service.
#include <algorithm>

#include "tools/kslsim/Simulator.h"

namespace kslsim {
namespace {

// The protocol that this service speaks; a client of another version is turned away.
const std::string VERSION = "1.5.0";

constexpr int kLoudest = 100;

xmlrpc_c::value notRegistered(int client) {
  return faultStruct(kNotRegistered, "Client " + std::to_string(client) + " is not registered.");
}

bool has(const Json& list, const std::string& text) {
  return std::find(list.begin(), list.end(), text) != list.end();
}

bool isEvent(const xmlrpc_c::value& value) {
  if (value.type() != xmlrpc_c::value::TYPE_STRUCT) return false;
  const xmlrpc_c::cstruct event = static_cast<xmlrpc_c::cstruct>(xmlrpc_c::value_struct(value));
  const auto id = event.find("eventID");
  return id != event.end() && id->second.type() == xmlrpc_c::value::TYPE_INT && event.count("context") == 1;
}

}  // namespace

xmlrpc_c::value Simulator::init(const std::string& name, const std::string& version) {
  std::lock_guard lock(mMutex);
  if (version != VERSION)
    return faultStruct(kProtocolError,
                       "Protocol version " + version + " is not supported, this is " + VERSION + ".");
  if (!mService["Admit"].get<bool>()) return faultStruct(kInitRejected, "No client is admitted.");
  if (!mService["Names"].empty() && !has(mService["Names"], name))
    return faultStruct(kUnknownGame, "A client of the name " + name + " is not known.");
  if (mService["UniqueNames"].get<bool>() && mClients.hasName(name))
    return faultStruct(kAlreadyRegistered, "A client of the name " + name + " is registered.");
  const int id = mClients.add(name, version, now(), mService["MaxClients"].get<size_t>());
  if (id == 0) return faultStruct(kServerFull, "There is no place for another client.");
  xmlrpc_c::cstruct out{{"ID", xmlrpc_c::value_int(id)}};
  for (const Field& field : initFields()) out[field.name] = toWire(mInit.at(field.name), field.kind);
  return xmlrpc_c::value_struct(out);
}

xmlrpc_c::value Simulator::popEvents(int client) {
  std::lock_guard lock(mMutex);
  Client* found = mClients.find(client, now());
  if (!found) return notRegistered(client);
  const std::vector<PlatformEvent> events = found->queue.take();
  for (const PlatformEvent& event : events) Platform::applyTo(found->known, event);
  return eventsToWire(events);
}

xmlrpc_c::value Simulator::pushEvents(int client, int package, const std::vector<xmlrpc_c::value>& events) {
  std::lock_guard lock(mMutex);
  Client* found = mClients.find(client, now());
  if (!found) return notRegistered(client);
  if (!std::all_of(events.begin(), events.end(), isEvent))
    return faultStruct(kProtocolError, "An event is a struct of \"eventID\" and \"context\".");
  switch (Clients::take(*found, package, static_cast<int>(events.size()))) {
    case Package::New:
    case Package::Repeat:
      return xmlrpc_c::value_int(found->lastTaken);
    case Package::Old:
      return faultStruct(kDuplicate, "Package " + std::to_string(package) + " was taken before package " +
                                       std::to_string(found->lastPackage) + ".");
    case Package::OutOfStep:
      break;
  }
  return faultStruct(kUnsync, "Package " + std::to_string(package) + " does not follow package " +
                                std::to_string(found->lastPackage) + ".");
}

xmlrpc_c::value Simulator::platformState() {
  std::lock_guard lock(mMutex);
  mClients.given(mPlatform.state());
  return mPlatform.toWire();
}

xmlrpc_c::value Simulator::getParam(int client, const std::string& name) {
  std::lock_guard lock(mMutex);
  if (!mClients.find(client, now())) return notRegistered(client);
  if (!mParams.contains(name)) return faultStruct(kUnknownParameter, "There is no parameter " + name + ".");
  return toWire(mParams[name], Kind::Any);
}

xmlrpc_c::value Simulator::setParam(int client, const std::string& name, const xmlrpc_c::value& value) {
  std::lock_guard lock(mMutex);
  if (!mClients.find(client, now())) return notRegistered(client);
  mParams[name] = fromWire(value);
  return toWire(mParams[name], Kind::Any);
}

xmlrpc_c::value Simulator::onCounter(int client, const std::function<xmlrpc_c::value()>& work) {
  std::lock_guard lock(mMutex);
  if (!mClients.find(client, now())) return notRegistered(client);
  // Types below that of a roulette are no games, the menu among them.
  if (mPlatform.state()["ActiveGame"]["Type"].get<int>() < Platform::kFirstGameType)
    return faultStruct(kNoActiveGame, "Counters belong to the active game, and there is none.");
  return work();
}

xmlrpc_c::value Simulator::getCounter(int client, const std::string& name) {
  return onCounter(client, [&]() -> xmlrpc_c::value {
    const auto found = mCounters.find(name);
    if (found == mCounters.end()) return faultStruct(kUnknownParameter, "There is no counter " + name + ".");
    return xmlrpc_c::value_i8(found->second);
  });
}

xmlrpc_c::value Simulator::setCounter(int client, const std::string& name, int64_t value) {
  return onCounter(client, [&]() -> xmlrpc_c::value { return xmlrpc_c::value_i8(mCounters[name] = value); });
}

xmlrpc_c::value Simulator::shiftCounter(int client, const std::string& name, int64_t by) {
  return onCounter(client, [&]() -> xmlrpc_c::value {
    const auto found = mCounters.find(name);
    if (found == mCounters.end()) return faultStruct(kUnknownParameter, "There is no counter " + name + ".");
    int64_t shifted = 0;
    if (__builtin_add_overflow(found->second, by, &shifted))
      return faultStruct(kInternalError, "The counter " + name + " would not fit 64 bits.");
    return xmlrpc_c::value_i8(found->second = shifted);
  });
}

xmlrpc_c::value Simulator::bye(int client) {
  std::lock_guard lock(mMutex);
  if (!mClients.find(client, now())) return notRegistered(client);
  mClients.forget(client);
  return xmlrpc_c::value_boolean(true);
}

xmlrpc_c::value Simulator::volume(std::optional<int64_t> wanted) {
  std::lock_guard lock(mMutex);
  if (wanted && (*wanted < 0 || *wanted > kLoudest))
    return faultStruct(kProtocolError, "A volume lies between 0 and " + std::to_string(kLoudest) + ".");
  if (wanted) mService["Volume"] = *wanted;
  return toWire(mService["Volume"], Kind::Int);
}

xmlrpc_c::value Simulator::denomination(std::optional<int64_t> wanted) {
  std::lock_guard lock(mMutex);
  if (wanted && *wanted < 1) return faultStruct(kProtocolError, "A denomination is 1 or more.");
  if (wanted) mService["Denomination"] = *wanted;
  return toWire(mService["Denomination"], Kind::I8);
}

bool Simulator::supports(const std::string& method) const {
  std::lock_guard lock(mMutex);
  return !has(mService["Unsupported"], method);
}

}  // namespace kslsim
