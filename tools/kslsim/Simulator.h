#pragma once

#include <atomic>
#include <functional>
#include <mutex>

#include "tools/kslsim/BadReplies.h"
#include "tools/kslsim/Clients.h"
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
  xmlrpc_c::value platformState() const;

  // How the call that has just come in for this method is to be answered badly; nothing for well.
  std::optional<BadReply> takeBadReply(const std::string& method);

  // Whether the service is to be reached. False between "down" and "up".
  bool wantsToListen() const { return mListening; }

  // State, clients, plans and time, for people and tests.
  Json report() const;

  int64_t now() const { return mClock(); }
  RequestLog& log() { return mLog; }

 private:
  using Handler = void (Simulator::*)(const Json& step);
  struct StepKind;
  static const std::vector<StepKind>& stepKinds();

  void run(const Json& step);  // under the lock
  void tellClients(bool silently);

  void doSet(const Json& step);
  void doLevel(const Json& step);
  void doAdd(const Json& step);
  void doRemove(const Json& step);
  void doPot(const Json& step);
  void doRamp(const Json& step);
  void doGrow(const Json& step);
  void doStop(const Json& step);
  void doWin(const Json& step);
  void doGame(const Json& step);
  void doEvent(const Json& step);
  void doInit(const Json& step);
  void doDown(const Json& step);
  void doUp(const Json& step);
  void doForget(const Json& step);
  void doBad(const Json& step);
  void doGood(const Json& step);

  const std::function<int64_t()> mClock;
  RequestLog mLog;  // has its own lock
  std::atomic<bool> mListening{true};

  mutable std::mutex mMutex;  // guards all of the below
  Platform mPlatform;
  Clients mClients;
  Pots mPots;
  BadReplies mBadReplies;
  Json mInit;
  std::map<int, std::string> mStatusBeforeWin;  // by level
  int64_t mUpAt = -1;                           // when a "down" ends by itself; -1: not
  std::vector<Scenario::Step> mSteps;
  size_t mNextStep = 0;
  int64_t mPlayedFrom = 0;
};

}  // namespace kslsim
