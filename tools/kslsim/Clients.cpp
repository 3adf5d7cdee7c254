#include "tools/kslsim/Clients.h"

namespace kslsim {

xmlrpc_c::value EventQueue::take() {
  if (mEvents.empty()) return xmlrpc_c::value_nil();
  xmlrpc_c::carray out;
  for (; !mEvents.empty() && out.size() < REPLY_LIMIT; mEvents.pop_front()) {
    const PlatformEvent& event = mEvents.front();
    out.push_back(xmlrpc_c::value_struct(xmlrpc_c::cstruct{{"eventID", xmlrpc_c::value_int(event.id)},
                                                           {"context", toWire(event.context, event.kind)}}));
  }
  return xmlrpc_c::value_array(out);
}

int Clients::add(const std::string& name, const std::string& version) {
  if (mClients.size() >= LIMIT) mClients.erase(mClients.begin());
  Client& client = mClients[++mLastId];
  client.name = name;
  client.version = version;
  return mLastId;
}

Client* Clients::find(int id) {
  const auto found = mClients.find(id);
  return found == mClients.end() ? nullptr : &found->second;
}

void Clients::pushToAll(const PlatformEvent& event) {
  for (auto it = mClients.begin(); it != mClients.end();) {
    it->second.queue.push(event);
    it = it->second.queue.full() ? mClients.erase(it) : std::next(it);
  }
}

Package Clients::take(Client& client, int package, int events) {
  if (client.lastPackage >= 0 && package == client.lastPackage) return Package::Repeat;
  if (client.lastPackage >= 0 && package != client.lastPackage + 1) return Package::OutOfStep;
  client.lastPackage = package;
  client.lastTaken = events;
  return Package::New;
}

Json Clients::toJson() const {
  Json out = Json::array();
  for (const auto& [id, client] : mClients)
    out.push_back({{"id", id},
                   {"name", client.name},
                   {"version", client.version},
                   {"waiting", client.queue.size()},
                   {"package", client.lastPackage}});
  return out;
}

}  // namespace kslsim
