#pragma once

#include <SDL.h>

#include <atomic>
#include <cstdarg>
#include <cstdint>
#include <deque>
#include <functional>
#include <mutex>
#include <optional>
#include <queue>
#include <string>
#include <vector>
#include <xmlrpc-c/client.hpp>

#include "common/KSLTypes.h"
#include "common/LinkFigures.h"
#include "common/ThreadSafeProperty.h"
#include "vendelo-sdl2/TMutexGuard.h"

// The program's one link to the platform service. The main thread queues calls and never waits for the network; a
// communication thread ("KSLClient:RPC") registers with the service, sends the calls one by one, the highest
// priority first, and queues the replies; everything that the application sees of the service arrives inside Poll.
//
// Threads: set-up and life cycle on the main thread, before Start; SendRequest, PushEvent and Poll on the main
// thread; SendRequestSyncRaw on any. Times are milliseconds of SDL_GetTicks, of which only unsigned differences are
// used (the tick clock starts anew when SDL is closed).
// Ownership: the client owns its thread, its queues and the records in them, not the listener, which must outlive
// the thread.
// Failures never end the thread or the process. Each one becomes a KSLError for the call's callback or the
// listener.
//
// Locks, the outer one first: KSL_send_mutex, then KSL_call_mutex or KSL_response_mutex; KSL_call_mutex, then that
// of the averages. A synchronous call must not be made between BeginEventStack and EndEventStack.
class TKSLClient {
 public:
  // One row of the method table. An extra row that nobody has filled has a null Address.
  struct MethodInfo {
    const char* Address;
    ::ResponseParser ResponseParser;
    DestroyDataObjectFunction DestroyData;
  };

  static constexpr int NUM_BASE_METHODS = 9;  // nothing reads it: the table's size comes from M_NULL
  static constexpr int TOP_PRIORITY = 100;

  // The address is the service's URL. Makes the HTTP transport, which serves all calls, has no time-out and uses no
  // proxy, whatever the environment names: on the main thread, before any other thread of the program uses HTTP.
  TKSLClient(const std::string& Name, const std::string& address, unsigned int numExtraMethods);

  // The same over a transport of the caller's.
  TKSLClient(const std::string& Name, const std::string& address, unsigned int numExtraMethods,
             const xmlrpc_c::clientXmlTransportPtr& transport);

  // Stops the thread first and drops what is left in the queues. Like Stop, it does not return while registration
  // is tried for ever against a dead service.
  ~TKSLClient();
  TKSLClient(const TKSLClient&) = delete;
  TKSLClient& operator=(const TKSLClient&) = delete;

  // The name and reply of the registration belong to the kind of client. Replaces the row.
  void SetInitMethod(const char* methodAddress, ::ResponseParser parser, DestroyDataObjectFunction destroyer);

  // Fills an extra row; false for the row 0, for a row out of the table and for one that is taken. The first extra
  // row has the number of M_NULL, which the queue takes for no call: it serves synchronous calls only.
  bool AddMethod(MethodType methodID, const char* methodAddress, ::ResponseParser parser,
                 DestroyDataObjectFunction destroyer);
  void SetListener(TKSLListener* listener);

  // Milliseconds between two requests for events.
  void SetPopRequestFrequency(unsigned int interval);
  void SetRegisterRequired(bool required);

  // A call that takes longer is interrupted by the next Poll: it counts as one that the transport has failed, and
  // the next one goes to a new connection. 0, as at the start: a call may take as long as it likes. Before Start,
  // with a transport that can be interrupted.
  void SetCallTimeout(unsigned int milliseconds);

  // Starts the thread. With numRetry n registration is tried n + 1 times, one second apart; -1: for ever. With
  // block it waits for the end of the registration and delivers its responses. 0: well; 1: runs already; -1: not
  // registered, thread stopped again.
  int Start(bool block, int numRetry);

  // Waits for the end of the thread; the thread's status, or -1 when none runs. Does not interrupt a registration.
  int Stop();
  int Restart();
  bool Running() const;

  // Stores the address and restarts.
  void SetAddress(const std::string& address);
  const std::string& Address() const;
  const std::string& Name() const;

  // The identifier that the service gave; -1 when not registered.
  int ID() const;
  void RegisterID(int ID);

  // After Start(false, ...): whether the registration is over and succeeded. One that failed stops the thread.
  bool IsRegistered();

  // Events are asked for, and none of these requests has been answered well for 5000 ms.
  bool IsTimedOut() const;

  // Milliseconds since the last good answer of the service to any call; nothing before the first one. Any thread.
  std::optional<Uint32> SinceGoodAnswer() const;

  // Main thread.
  const LinkFigures& Figures() const { return mFigures; }

  // Queues a call; 0, also when a second request for events was dropped, -1 for a faulty format (nobody is told),
  // -2 when a package of events could not be merged. The format is one of the xmlrpc_build_value family and
  // describes an array of parameters; empty: none.
  int SendRequest(MethodType methodID, int priority, const KSLCallback& callback, const char* parameterFormat, ...);

  // Sends on the calling thread, past the queue, and waits; the result of the callback or listener, which runs
  // here. -1 without a record: also for a method whose parser makes none, although the call went well.
  int SendRequestSync(MethodType methodID, const KSLCallback& callback, const char* parameterFormat, ...);

  // The same for the bare record (a KSLError when errorCodeOut is nonzero), which the caller owns then. With a
  // faulty format, the empty one included, null, and errorCodeOut stays as it was.
  void* SendRequestSyncRaw(MethodType methodID, const KSLCallback& callback, uint64_t& uidOut, int& errorCodeOut,
                           const char* parameterFormat, ...);

  // Sends through the queue and polls until the answer has come: 0, or 1 after `timeout` passes of about a
  // millisecond each. Main thread only.
  int SendRequestSyncQueued(int timeout, MethodType methodID, int priority, const KSLCallback& callback,
                            const char* parameterFormat, ...);

  // Queues one event for the service, in a package with its neighbours in the queue (20 events at most). Null or
  // empty format: nil context. A faulty format loses the event; nobody is told.
  void PushEvent(KSLGameEvent eventID, const char* format, ...);

  // Around a series of PushEvent: the package cannot be taken away in between.
  void BeginEventStack() const TAKES_LOCK(KSL_call_mutex);
  void EndEventStack() const RELEASES_LOCK(KSL_call_mutex);

  // The main thread's pump: hands out queued responses (0: all) and asks for events when due. The number of
  // responses handled, -1 when a callback threw. Never waits for the network.
  int Poll(unsigned int handleMaxResponses);

  // Milliseconds until a call at this place in the queue would be sent, by the averages so far. Negative or beyond
  // the end: behind the whole queue.
  unsigned int calculateApproximateWaitTime(int position);

  void EnableCommunication();
  void DisableCommunication();
  bool CommunicationEnabled() const;

  // Switches the requests for events.
  void TogglePopRequests(bool enabled);

  // The row, or an empty one for an id out of the table.
  const MethodInfo& getMethodInfo(MethodType methodID) const;

 protected:
  // Puts the call into the queue or releases its parameters. Expects KSL_call_mutex to be held and releases it
  // once.
  int queueMethodCall(const MethodCall& methodCall) RELEASES_LOCK(KSL_call_mutex);
  long sendRequest_va(MethodType methodID, int priority, const KSLCallback& callback, const char* parameterFormat,
                      va_list& params);
  void* SendRequestSyncRaw_va(MethodType methodID, const KSLCallback& callback, uint64_t& uidOut, int& errorCodeOut,
                              const char* parameterFormat, va_list& params);

  // The one place that talks to the service. The parsed record, or a KSLError when errCodeOut is nonzero, or null
  // for a parser that makes none. Initialises and cleans env.
  void* sendInternal(xmlrpc_env* env, const char* serverUrl, const MethodCall& call, int& errCodeOut);

  // Main thread: hands one response to whom it concerns and frees its record, also when a callback throws.
  int handleResponse(const MethodResponse& response);

  // Communication thread: queues the response of one registration attempt; 0 when registered, 1 when the service
  // was not reached, -1 otherwise.
  int handleInitResponse(void* returnData, bool isError, uint64_t requestUID);
  int handlePushResponse(void* returnData, bool isError);
  int handlePopResponse(void* returnData, bool isError);
  static int KSL_communication_thread(void* data);

  SDL_semaphore* InitSemaphore;  // posted once by each thread; made and consumed by the main thread
  unsigned int NumRetries;       // written before the thread starts
  std::atomic<bool> Registered;
  std::atomic<bool> RegisterRequired;
  const std::string ClientName;
  std::vector<MethodInfo> Methods;  // indexed by MethodType; complete before Start
  ThreadSafeProperty<std::vector<float>> mAverageMethodResponseTimes;  // milliseconds, indexed by MethodType
  std::vector<unsigned long> mMethodCalls GUARDED_BY(KSL_send_mutex);
  std::atomic<uint64_t> mMethodCallUID;  // last one given out
  xmlrpc_c::clientPtr pClient;
  xmlrpc_c::clientXmlTransportPtr mTransport;  // the client's
  std::mutex mCallWatchMutex;
  bool mCallIsInTheAir;  // mCallWatchMutex
  Uint32 mCallBegan;     // mCallWatchMutex
  Uint32 mCallTimeout;   // 0: none
  int mInterrupt;        // the transport looks at it; written under mCallWatchMutex
  std::deque<MethodCall> mCallQueue GUARDED_BY(KSL_call_mutex);  // the front is sent next
  std::queue<MethodResponse> mResponseQueue GUARDED_BY(KSL_response_mutex);
  SDL_Thread* KSL_communication;  // main thread
  SDL_semaphore* KSL_quit_sem;
  SDL_mutex* KSL_call_mutex;
  SDL_mutex* KSL_response_mutex;
  SDL_mutex* KSL_send_mutex;  // the network; entered twice by the thread
  bool mRPCEnabled GUARDED_BY(KSL_call_mutex);
  std::atomic<int> mRegisteredID;
  std::string mKSL_address;  // written by the main thread under mAddressMutex
  mutable std::mutex mAddressMutex;
  std::atomic<int> mEventPackageNumber;  // packages that the service has acknowledged
  const int mNumMethods;
  std::atomic<bool> syncMethodWaitFlag;
  uint64_t mSyncSerial;  // which queued synchronous call the flag belongs to; main thread
  bool mLockedTimeout;   // main thread: the listener was told of a time-out
  LinkFigures mFigures;  // main thread
  KSLCallback mPushCallback;
  KSLCallback mPopCallback;
  std::atomic<bool> mPopEnabled;
  std::atomic<Uint32> mPopTargetFrequency;  // an interval in milliseconds, whatever its name says
  std::atomic<Uint32> mLastPopResponse;
  std::atomic<Uint32> mLastPopRequest;
  ThreadSafeProperty<unsigned int> mLastGoodResponse;
  std::atomic<TKSLListener*> mListener;
  std::function<void(Uint32)> mDelay;  // SDL_Delay; the pause between two registration attempts, for tests
  // Since the last good answer to a request for events: from the second on the service gets a pause.
  std::atomic<unsigned int> mLostRegistrations;
  std::atomic<bool> mPauseIsDue;  // before the next attempt

 private:
  std::string copyAddress() const;
  bool validMethod(MethodType methodID) const;
  void interruptLongCall();
  void loseRegistration();
  void freeResponseData(const MethodResponse& response);
  void handleTimeoutEdge();

  // Communication thread.
  struct ThreadState;
  void communicationPass(ThreadState& state);
  bool takeCall(MethodCall& thisCall);
  // How a series of attempts to register ended; FAILED by an exception. REGISTERED also when there was no need.
  enum class Registration { REGISTERED, GIVEN_UP, FAILED };
  Registration registerWithService();
  // Releases the lock once the service has answered. Leaves a call in hand that is to be sent again. False when an
  // exception has cost the call.
  bool sendCall(MethodCall& thisCall, const std::string& serveraddress,
                vendelo_sdl2::TMutexGuard& sendLock) UNCHECKED_LOCKS;
  void queueStopped();
  void postStarted(ThreadState& state);
  void queueResponse(const MethodResponse& response);
  static void finishCall(MethodCall& call);

  xmlrpc_c::paramList buildParameters(const MethodCall& call) const;
  void callService(xmlrpc_env* env, const char* serverUrl, const char* address,
                   const xmlrpc_c::paramList& parameters, xmlrpc_c::value& result);
  void* parseReply(const MethodCall& call, const xmlrpc_c::value& result, int& errCodeOut);
};
