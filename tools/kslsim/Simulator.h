#pragma once

#include <atomic>
#include <functional>
#include <mutex>

#include "tools/kslsim/BadReplies.h"
#include "tools/kslsim/Clients.h"
#include "tools/kslsim/House.h"
#include "tools/kslsim/Pots.h"
#include "tools/kslsim/RequestLog.h"
#include "tools/kslsim/Scenario.h"

namespace kslsim {

// The platform service itself, without a network: the terminal's state, the registered clients, what is to go
// wrong, and what is to happen when. Any thread, locked inside; no operation waits for anything but the lock. Times
// are milliseconds of the clock that is handed over, which starts at 0 with the service.
class Simulator {
 public:
  explicit Simulator(std::function<int64_t()> clock);

  // Does one step now. Throws InputError, and has then changed nothing, when there is no such step or it does not
  // fit the state. docs/SIMULATOR.md lists the steps.
  void apply(const Json& step);

  // The steps that advance() does when their time has come, counted from now. Replaces an earlier scenario.
  void play(const Scenario& scenario);

  // Does what is due: steps of the scenario, moving pots, the return of the service. To be called often. A step
  // that has become impossible since the scenario was read is logged with its place and left out.
  void advance();

  // The methods. `client` is the identifier that came with the call.
  xmlrpc_c::value init(const std::string& name, const std::string& version);
  xmlrpc_c::value popEvents(int client);
  xmlrpc_c::value pushEvents(int client, int package, const std::vector<xmlrpc_c::value>& events);
  xmlrpc_c::value platformState();
  xmlrpc_c::value getParam(int client, const std::string& name);
  xmlrpc_c::value setParam(int client, const std::string& name, const xmlrpc_c::value& value);
  xmlrpc_c::value getCounter(int client, const std::string& name);
  xmlrpc_c::value setCounter(int client, const std::string& name, int64_t value);
  xmlrpc_c::value shiftCounter(int client, const std::string& name, int64_t by);
  xmlrpc_c::value bye(int client);
  xmlrpc_c::value volume(std::optional<int64_t> wanted);
  xmlrpc_c::value denomination(std::optional<int64_t> wanted);

  // Whether the service has this method at all; "service" steps can take methods away.
  bool supports(const std::string& method) const;

  // How the call that has just come in for this method is to be answered badly; nothing for well.
  std::optional<BadReply> takeBadReply(const std::string& method);

  // The reply that was taken did not fit the answer, which went out well.
  void giveBackBadReply(const std::string& method, const BadReply& reply);

  // Counts the orders to answer well again: calls that are being answered badly for long look at it.
  uint64_t goodOrders() const { return mGoodOrders; }

  // Whether the service is to be reached. False between "down" and "up".
  bool wantsToListen() const { return mListening; }

  // State, clients, plans and time, for people and tests.
  Json report() const;

  // The state as this client last got it: by "platform.state" and the events that it has fetched since. Null for a
  // client that is not registered, or has not asked for the state yet. The call for the state names no client, so
  // it counts for all that are registered.
  Json knownTo(int client) const;

  int64_t now() const { return mClock(); }
  RequestLog& log() { return mLog; }

 private:
  using Handler = void (Simulator::*)(const Json& step);
  struct StepKind;
  static const std::vector<StepKind>& stepKinds();

  void run(const Json& step);  // under the lock
  void tellClients(bool silently);
  xmlrpc_c::value onCounter(int client, const std::function<xmlrpc_c::value()>& work);

  void doSet(const Json& step);
  void doLevel(const Json& step);
  void doAdd(const Json& step);
  void doRemove(const Json& step);
  void doPot(const Json& step);
  void doRamp(const Json& step);
  void doGrow(const Json& step);
  void doPlay(const Json& step);
  void doStop(const Json& step);
  void doWin(const Json& step);
  void doGame(const Json& step);
  void doEvent(const Json& step);
  void doInit(const Json& step);
  void doService(const Json& step);
  void doParams(const Json& step);
  void doCounters(const Json& step);
  void doDown(const Json& step);
  void doUp(const Json& step);
  void doForget(const Json& step);
  void doBad(const Json& step);
  void doGood(const Json& step);
  void doStation(const Json& step);

  const std::function<int64_t()> mClock;
  RequestLog mLog;  // has its own lock
  std::atomic<bool> mListening{true};
  std::atomic<uint64_t> mGoodOrders{0};

  mutable std::mutex mMutex;  // guards all of the below
  Platform mPlatform;
  Clients mClients;
  Pots mPots;
  House mHouse;  // a level moves by one of the two at most
  BadReplies mBadReplies;
  Json mInit, mService;
  Json mParams = Json::object();
  std::map<std::string, int64_t> mCounters;
  std::map<int, std::string> mStatusBeforeWin;  // by level
  int64_t mUpAt = -1;                           // when a "down" ends by itself; -1: not
  std::vector<Scenario::Step> mSteps;
  size_t mNextStep = 0;
  int64_t mPlayedFrom = 0;
};

}  // namespace kslsim
