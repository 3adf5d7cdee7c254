#pragma once

#include <cstdint>
#include <string>
#include <vector>
#include <xmlrpc-c/base.hpp>

#include "common/Event.h"
#include "common/Games.h"

// The records into which the service's replies are read. None has a lock: a record is filled on the communication
// thread and then handed over; shared copies live in a ThreadSafeProperty. Readers throw on a missing key or a
// wrong type (girerr::error) and convert nothing: an int where an i8 belongs is a wrong type.

// Reply of "game.pushEvents": the number of events taken.
struct PushResponseData {
  int numPushedEvents;
};

// A heap array of events in the service's order, which it owns.
struct PopResponseData {
  EventPtr* events;
  int numEvents;

  PopResponseData();
  ~PopResponseData();
  PopResponseData(const PopResponseData&) = delete;
  PopResponseData& operator=(const PopResponseData&) = delete;
};

struct GetParamResponseData {
  const xmlrpc_c::value parameterValue;

  explicit GetParamResponseData(const xmlrpc_c::value& value);
};

// Replies that may carry events one day; no parser fills these at present. The array is not owned.
struct SetParamResponseData {
  EventPtr* events;
  const int numEvents;
};
struct GetCounterResponseData {
  EventPtr* events;
  const int numEvents;
};
struct SetCounterResponseData {
  EventPtr* events;
  const int numEvents;
};
struct ShiftCounterResponseData {
  EventPtr* events;
  const int numEvents;
};
struct ByeResponseData {
  EventPtr* events;
  const int numEvents;
};

// One jackpot level. Amounts in the currency's smallest unit; decimalPlaces tells where the point goes when shown.
struct JackpotsData {
  std::string name;
  int id = 0;
  std::string status;
  int mode = 0;
  int64_t potValue = 0;
  int64_t minPot = 0;
  int64_t maxPot = 0;
  int64_t minBet = 0;
  int64_t maxBet = 0;
  int decimalPlaces = 0;
  bool showCurrencySign = false;
  std::string currency;
  int NumWins = 0;
  std::string LastWinData;
  std::string TimeFrom;
  std::string TimeTo;

  // Fields read before a fault change, the others stay.
  void fromXml(const xmlrpc_c::value& v);
  xmlrpc_c::value_struct toXml() const;
};

// The terminal as the platform service sees it: filled as a whole from the reply of "platform.state", then kept
// current field by field by events.
struct PlatformState {
  std::string IntegrityCheckData;
  GameRegistryEntry ActiveGame;
  bool IsLoading;  // true until the first reply: a silent platform counts as busy
  int ShowingPaytable;
  std::vector<std::string> LanguageMessages;
  bool DemoMode;
  std::vector<std::string> Instructions;
  long CurrentBet;
  long MinBet;
  long MaxBet;
  xmlrpc_c::cstruct ExtraData;  // read by the paytables alone
  std::vector<JackpotsData> JackpotData;
  std::string JackpotErrorString;

  PlatformState();

  // Throws "Result is not struct!" (a const char*) for anything else. "ExtraData" alone is optional.
  void parse(const xmlrpc_c::value& v);

  // Replaces the levels. When one fails, those before it stand and the old list is gone.
  void parseJackpotData(const xmlrpc_c::value& v);

  // Writes what parse reads; an empty ExtraData becomes nil.
  xmlrpc_c::value_struct toXml() const;

  // A dump on standard output, for debugging.
  void printMe() const;
};

// Reads a game struct; the registry of games is not asked.
GameRegistryEntry gameFromXml(const xmlrpc_c::value& xml);
