#pragma once

#include <set>

#include "tools/kslsim/Events.h"

namespace kslsim {

// An event on its way to a client. The context keeps its JSON form until it is sent, so that no value of the
// XML-RPC library is shared by two threads.
struct PlatformEvent {
  int id;
  Kind kind;
  Json context;
};

// The terminal as the service sees it: the record that "platform.state" returns, and the rule by which a change
// of a field becomes an event. No lock of its own; the simulator's covers it. Money in the smallest unit.
// Every operation throws InputError on bad input and has then changed nothing.
class Platform {
 public:
  // "Type" of the first kind of game that is one; below stand nothing, the menu and the top screen itself.
  static constexpr int kFirstGameType = 3;

  Platform();

  const Json& state() const { return mState; }
  xmlrpc_c::value toWire() const;

  // Overwrites the fields named in `part`. The events that tell of it are added to the pending ones.
  void set(const Json& part, const std::string& path);

  // Overwrites fields of the level with this "Id", which the step calls "id".
  void setLevel(int id, const Json& part, const std::string& path);

  // Adds a level at the index (-1: at the end). Fields not given get start values, "Id" the lowest free number.
  // An "Id" that is there already is refused: the panels know levels by it.
  void addLevel(const Json& part, int index, const std::string& path);
  void removeLevel(int id, const std::string& path);

  // The level with this "Id"; throws when there is none.
  const Json& level(int id, const std::string& path) const;

  // One of the events of a game: it is being loaded, has been loaded, or is left for the menu, with null for the
  // game.
  void game(const EventRow& what, const Json& game, const std::string& path);

  // What a peer knows that had this state and then gets the event. Events that no field shows leave it alone.
  static void applyTo(Json& state, const PlatformEvent& event);

  // The events that tell of all changes since the last call, one of each kind, in the order of the first change.
  std::vector<PlatformEvent> takeEvents();

 private:
  size_t indexOf(int id, const std::string& path) const;
  void changed(int event);
  PlatformEvent eventOf(int event) const;

  Json mState;
  std::vector<int> mPending;  // ids of events
};

}  // namespace kslsim
