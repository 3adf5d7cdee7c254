#include "tools/kslsim/Clients.h"

#include <algorithm>

namespace kslsim {

std::vector<PlatformEvent> EventQueue::take() {
  std::vector<PlatformEvent> out;
  for (; !mEvents.empty() && out.size() < kReplyLimit; mEvents.pop_front())
    out.push_back(std::move(mEvents.front()));
  return out;
}

xmlrpc_c::value eventsToWire(const std::vector<PlatformEvent>& events) {
  if (events.empty()) return xmlrpc_c::value_nil();
  xmlrpc_c::carray out;
  for (const PlatformEvent& event : events) {
    out.push_back(xmlrpc_c::value_struct(xmlrpc_c::cstruct{{"eventID", xmlrpc_c::value_int(event.id)},
                                                           {"context", toWire(event.context, event.kind)}}));
  }
  return xmlrpc_c::value_array(out);
}

int Clients::add(const std::string& name, const std::string& version, int64_t now, size_t limit) {
  if (mClients.size() >= limit)
    std::erase_if(mClients, [now](const auto& entry) { return now - entry.second.lastCall >= kIdleMilliseconds; });
  if (mClients.size() >= limit) return 0;
  Client& client = mClients[++mLastId];
  client.lastCall = now;
  client.name = name;
  client.version = version;
  return mLastId;
}

Client* Clients::find(int id, int64_t now) {
  const auto found = mClients.find(id);
  if (found == mClients.end()) return nullptr;
  found->second.lastCall = now;
  return &found->second;
}

bool Clients::hasName(const std::string& name) const {
  return std::any_of(mClients.begin(), mClients.end(),
                     [&](const auto& entry) { return entry.second.name == name; });
}

void Clients::given(const Json& state) {
  for (auto& [id, client] : mClients) client.known = state;
}

void Clients::pushToAll(const PlatformEvent& event) {
  for (auto it = mClients.begin(); it != mClients.end();) {
    it->second.queue.push(event);
    it = it->second.queue.full() ? mClients.erase(it) : std::next(it);
  }
}

Package Clients::take(Client& client, int package, int events) {
  if (client.lastPackage >= 0 && package == client.lastPackage) return Package::Repeat;
  if (client.lastPackage >= 0 && package < client.lastPackage) return Package::Old;
  if (client.lastPackage >= 0 && package != client.lastPackage + 1) return Package::OutOfStep;
  client.lastPackage = package;
  client.lastTaken = events;
  return Package::New;
}

Json Clients::knownTo(int id) const {
  const auto found = mClients.find(id);
  return found == mClients.end() ? Json() : found->second.known;
}

Json Clients::toJson() const {
  Json out = Json::array();
  for (const auto& [id, client] : mClients)
    out.push_back({{"id", id},
                   {"name", client.name},
                   {"version", client.version},
                   {"waiting", client.queue.size()},
                   {"lastCall", client.lastCall},
                   {"package", client.lastPackage}});
  return out;
}

}  // namespace kslsim
