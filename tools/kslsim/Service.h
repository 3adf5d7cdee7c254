#pragma once

#include "tools/kslsim/ControlServer.h"
#include "tools/kslsim/RpcServer.h"

namespace kslsim {

// The running simulator: the service, its two ports and the thread that lets time pass. This is what a program that
// wants a platform inside its own process makes; kslsim itself is no more than this with a command line.
// start() and stop() on one thread; simulator() may be used by any.
class Service {
 public:
  struct Options {
    int port = 9011;         // 0: any free one
    int controlPort = 9012;  // 0: any free one
    std::string path = "/KSL";
    std::string logFile = {};          // none when empty
    std::string replay = {};           // text of a recording that answers instead of the methods; none when empty
    std::string display = {};          // X server of the top screen; that of the environment when empty
    std::string window = "TopScreen";  // title of its window
    bool replayAtOnce = false;         // answers of the recording do not take the time that they took
  };

  // Throws ScenarioError when the recording has a mistake.
  explicit Service(const Options& options);
  ~Service();
  Service(const Service&) = delete;
  Service& operator=(const Service&) = delete;

  // Opens the log and both ports. On failure nothing runs and `error` says why.
  bool start(std::string& error);
  void stop();

  Simulator& simulator() { return mSimulator; }
  int port() const { return mRpc.port(); }
  int controlPort() const { return mControl.port(); }

  // Whether the service's port is open at this moment; "down" and "up" reach it a few milliseconds later.
  bool listening() const { return mOpen; }

 private:
  void letTimePass();

  const Options mOptions;
  const std::chrono::steady_clock::time_point mStart;
  Simulator mSimulator;
  Screen mScreen;
  std::unique_ptr<Replay> mReplay;
  RpcServer mRpc;
  ControlServer mControl;
  std::atomic<bool> mOpen{false};
  std::atomic<bool> mEnd{false};
  std::thread mThread;
};

}  // namespace kslsim
