#pragma once

#include <deque>
#include <map>

#include "tools/kslsim/Errors.h"
#include "tools/kslsim/Platform.h"

namespace kslsim {

// What waits for one client, in the order in which it happened. A client that lets more than kLimit events wait has
// gone: full() tells it, and its owner forgets the client. One reply carries at most kReplyLimit events, so that it
// stays below the size at which a client refuses a reply; the rest waits for the next.
class EventQueue {
 public:
  static constexpr size_t kLimit = 2000;
  static constexpr size_t kReplyLimit = 50;

  void push(const PlatformEvent& event) { mEvents.push_back(event); }
  bool full() const { return mEvents.size() > kLimit; }
  size_t size() const { return mEvents.size(); }

  // Takes the oldest events out, at most kReplyLimit.
  std::vector<PlatformEvent> take();

 private:
  std::deque<PlatformEvent> mEvents;
};

// One registered client. Package numbers belong to a registration: the first one may be any, for a client keeps
// counting when it registers anew.
struct Client {
  std::string name;
  std::string version;
  EventQueue queue;
  int lastPackage = -1;  // number of the last package taken; -1 before the first
  int lastTaken = 0;     // events in it: the answer to its repeat
  int64_t lastCall = 0;  // when it last named its identifier
  Json known;            // the state as this client last got it; null until it asked for the whole
};

enum class Package { New, Repeat, Old, OutOfStep };

// The reply of "game.popEvents": nil when there are no events, else an array.
xmlrpc_c::value eventsToWire(const std::vector<PlatformEvent>& events);

// The registered clients. No lock of its own; the simulator's covers it. Identifiers start at 1 and are never
// given twice, so that a client that was forgotten can be told from one that came after it.
class Clients {
 public:
  // A client that has not called for so long may lose its place to a new one.
  static constexpr int64_t kIdleMilliseconds = 60000;

  // Registers a client with an empty queue and returns its identifier. When `limit` clients are registered, those
  // that have been idle for too long are forgotten; 0 when there is still no place.
  int add(const std::string& name, const std::string& version, int64_t now, size_t limit);

  // Null when the identifier is not registered. Notes that the client has called.
  Client* find(int id, int64_t now);

  bool hasName(const std::string& name) const;

  void forget(int id) { mClients.erase(id); }
  void forgetAll() { mClients.clear(); }

  // All registered clients have been given this state. The call for it names no client.
  void given(const Json& state);

  // The state as this client last got it; null when it has none.
  Json knownTo(int id) const;

  // Puts the event into every queue; a client whose queue is full is forgotten, and registers anew if it lives.
  void pushToAll(const PlatformEvent& event);

  // Where a package with this number stands; a new one becomes the last.
  static Package take(Client& client, int package, int events);

  Json toJson() const;

 private:
  int mLastId = 0;
  std::map<int, Client> mClients;
};

}  // namespace kslsim
