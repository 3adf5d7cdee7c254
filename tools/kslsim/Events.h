#pragma once

#include <optional>

#include "tools/kslsim/Wire.h"

namespace kslsim {

// A field of the state that an event tells of. Its new value is the whole context, or what the context has at
// `key`, or, whatever the context is, the same one always.
struct ToldField {
  const char* field;
  const char* key = nullptr;
  const char* caption = nullptr;  // of the key in the console
  std::optional<Json> always = {};
};

// An event that the service sends to a top screen. The steps, the state and the console's forms go by these rows
// alone, so that one more event is one more row.
struct EventRow {
  int id;
  const char* name;  // as the protocol writes it
  Kind context;
  std::vector<ToldField> fields = {};
  const char* game = nullptr;  // what the step "game" calls it; null for those that are not of a game
  Json sample = nullptr;       // a context of which something is to be seen with the demo skin
  const char* tells;           // what comes of it, for people
};

// In the order of their ids.
const std::vector<EventRow>& eventRows();

// The event with this id; null when the protocol has none.
const EventRow* findEvent(int id);

// The event that tells of this field. Null for the game and its loading flag: which event tells of them depends on
// both.
const EventRow* eventOfField(const std::string& field);

// The form of the context of an event; Any for ids that the protocol does not name.
Kind contextKind(int id);

// Those that the service has rules of its own for.
constexpr int kGameLoading = 100;
constexpr int kGameLoaded = 101;
constexpr int kJackpotRefresh = 109;
constexpr int kJackpotData = 110;

}  // namespace kslsim
