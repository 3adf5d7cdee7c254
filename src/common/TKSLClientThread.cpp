// The communication thread: registration, and the one place that talks to the service.
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <utility>
#include <xmlrpc-c/girerr.hpp>

#include "common/TKSLClient.h"
#include "common/XmlRpcSupport.h"
#include "vendelo-sdl2/TMutexGuard.h"

using vendelo_sdl2::TMutexGuard;

namespace {

constexpr const char* kProtocolVersion = "1.5.0";
constexpr Uint32 kRegistrationPause = 1000;
constexpr Uint32 kPassPause = 1;
constexpr int kMaxPushAttempts = 2;  // so many failures are followed by another try

// What the HTTP transport itself reports as broken.
constexpr int kNetworkFault = -504;
constexpr int kTimeoutFault = -505;
constexpr int kFailedTransport = 1;  // no ErrorTypes enumerator, and no reason to drop the registration

// The methods that carry no client identifier.
bool isAnonymous(MethodType methodID) {
  return methodID == M_INIT || methodID == M_PLATFORM_STATUS || methodID == M_VOLUME || methodID == M_DENOMINATION;
}

// The service reports its own errors in a struct that returns like any result. Without both keys, or with a
// code of 0, the struct is an ordinary result.
void readFaultStruct(const xmlrpc_c::value& result, int& errorCode, std::string& description) {
  XmlRpcEnv env;
  xmlrpc_int32 faultCode = 0;
  char* faultString = nullptr;
  const XmlRpcReference value(result.cValue());
  xmlrpc_decompose_value(env.get(), value.get(), "{s:i,s:s,*}", "faultCode", &faultCode, "faultString",
                         &faultString);
  if (env.failed()) {
    errorCode = 0;
    return;
  }
  errorCode = faultCode;
  description = faultString;
  std::free(faultString);
}

}  // namespace

struct TKSLClient::ThreadState {
  bool started = false;
  MethodCall thisCall = NULL_CALL;
  std::string serveraddress;  // of the start: a change takes effect through a restart
};

int TKSLClient::KSL_communication_thread(void* data) {
  auto* client = static_cast<TKSLClient*>(data);
  ThreadState state;
  state.serveraddress = client->copyAddress();
  while (SDL_SemWaitTimeout(client->KSL_quit_sem, kPassPause) != 0) client->communicationPass(state);
  finishCall(state.thisCall);
  return 0;
}

void TKSLClient::communicationPass(ThreadState& state) {
  const bool noCall = state.thisCall.methodID == M_NULL;
  if ((!RegisterRequired || Registered) && noCall && !takeCall(state.thisCall)) return;
  TMutexGuard sendLock(KSL_send_mutex);
  const Registration registration = registerWithService();
  bool stopped = registration != Registration::REGISTERED;
  if (!stopped && state.started && state.thisCall.methodID != M_NULL)
    stopped = !sendCall(state.thisCall, state.serveraddress, sendLock);
  sendLock.release();
  if (stopped) queueStopped();
  if (registration != Registration::FAILED)
    postStarted(state);  // behind the response, which a blocking Start then delivers
}

bool TKSLClient::takeCall(MethodCall& thisCall) {
  const TMutexGuard lock(KSL_call_mutex);
  if (mCallQueue.empty()) return false;
  thisCall = mCallQueue.front();
  mCallQueue.pop_front();
  // A call that communication is closed to loses this pass only: the next one finds it in hand and sends it.
  return mRPCEnabled || thisCall.priority >= TOP_PRIORITY;
}

bool TKSLClient::sendCall(MethodCall& thisCall, const std::string& serveraddress, TMutexGuard& sendLock) {
  struct TFinishAtEnd {
    MethodCall call;
    ~TFinishAtEnd() { finishCall(call); }
  };
  try {
    TFinishAtEnd sent{std::exchange(thisCall, NULL_CALL)};
    MethodCall& call = sent.call;
    const MethodType methodID = call.methodID;
    // Of a package in hand also across registrations: it must not hold up the rest for ever.
    ++call.sendingAttempts;
    int errorCode = 0;
    xmlrpc_env env;
    void* responseData = sendInternal(&env, serveraddress.c_str(), call, errorCode);
    sendLock.release();
    queueResponse(MethodResponse{call.methodID, call.callback, responseData, errorCode != 0, call.requestUID});
    if (errorCode != 0 && call.methodID == M_PUSHEVENTS && call.sendingAttempts <= kMaxPushAttempts)
      std::swap(thisCall, call);
    if (errorCode == E_COMMUNICATION_ERROR) {
      TogglePopRequests(false);
      RegisterID(-1);
      loseRegistration();
    }
    if (errorCode == 0 && methodID == M_POPEVENTS) mLostRegistrations = 0;
    return true;
  } catch (...) {
    return false;
  }
}

// The thread goes on all the same; whatever the text says, only Stop ends it.
void TKSLClient::queueStopped() {
  queueResponse(MethodResponse{M_INIT, KSLCallback(),
                               new KSLError(E_COMMUNICATION_ERROR, "Client timed out and stopped!"), true,
                               mMethodCallUID});
  std::printf("!!!! KSLCLIENT:: ERROR in communication thread!\n");
}

void TKSLClient::postStarted(ThreadState& state) {
  if (!state.started) {
    state.started = true;
    SDL_SemPost(InitSemaphore);
  }
}

void TKSLClient::queueResponse(const MethodResponse& response) {
  const TMutexGuard lock(KSL_response_mutex);
  mResponseQueue.push(response);
}

void TKSLClient::loseRegistration() {
  if (Registered.exchange(false) && ++mLostRegistrations > 1) mPauseIsDue = true;
}

TKSLClient::Registration TKSLClient::registerWithService() {
  try {
    // A service that registers us and then knows nothing of it would be asked again as fast as it can refuse.
    if (mPauseIsDue.exchange(false)) mDelay(kRegistrationPause);
    for (unsigned int initTries = 0; RegisterRequired && !Registered; ++initTries) {
      if (initTries > NumRetries) return Registration::GIVEN_UP;
      uint64_t uid = 0;
      int errorCode = 0;
      void* responseData =
        SendRequestSyncRaw(M_INIT, KSLCallback(), uid, errorCode, "(ss)", Name().c_str(), kProtocolVersion);
      if (handleInitResponse(responseData, errorCode != 0, uid) == 0)
        Registered = true;
      else
        mDelay(kRegistrationPause);
    }
    return Registration::REGISTERED;
  } catch (...) {
    return Registration::FAILED;
  }
}

int TKSLClient::handleInitResponse(void* returnData, bool isError, uint64_t requestUID) {
  TKSLListener* listener = mListener;
  const int errCode = isError && returnData != nullptr ? static_cast<KSLError*>(returnData)->errorCode : 0;
  const bool goodRecord = !isError && returnData != nullptr && listener != nullptr;
  int id = -1;
  if (goodRecord) {
    // Before the record is queued, for the main thread may free it at once.
    try {
      id = listener->getIDFromInitData(returnData);
    } catch (...) {
      id = -1;
    }
  }
  queueResponse(MethodResponse{M_INIT, KSLCallback(), returnData, errCode != 0, requestUID});
  if (errCode == E_COMMUNICATION_ERROR) return 1;
  if (goodRecord) {
    if (id > 0) {
      RegisterID(id);
      EnableCommunication();
      TogglePopRequests(true);
      return 0;
    }
    RegisterID(-1);
  }
  return -1;
}

xmlrpc_c::paramList TKSLClient::buildParameters(const MethodCall& call) const {
  xmlrpc_c::paramList parameters;
  if (!isAnonymous(call.methodID)) parameters.add(xmlrpc_c::value_int(mRegisteredID));
  xmlrpc_c::carray items;
  if (call.parameters != nullptr) {
    const xmlrpc_c::value value(call.parameters);
    if (value.type() == xmlrpc_c::value::TYPE_ARRAY)
      items = xmlrpc_c::value_array(value).vectorValueValue();
    else
      items.push_back(value);
  }
  if (call.methodID == M_PUSHEVENTS) {
    parameters.add(xmlrpc_c::value_int(mEventPackageNumber));
    parameters.add(xmlrpc_c::value_array(items));
  } else {
    for (const xmlrpc_c::value& item : items) parameters.add(item);
  }
  return parameters;
}

void TKSLClient::callService(xmlrpc_env* env, const char* serverUrl, const char* address,
                             const xmlrpc_c::paramList& parameters, xmlrpc_c::value& result) {
  const auto watch = [this](bool isInTheAir) {
    const std::lock_guard<std::mutex> lock(mCallWatchMutex);
    mCallIsInTheAir = isInTheAir;
    mCallBegan = SDL_GetTicks();
    std::atomic_ref<int>{mInterrupt}.store(0);
  };
  struct TNoMoreAtEnd {
    const decltype(watch)& Watch;
    ~TNoMoreAtEnd() { Watch(false); }
  };
  watch(true);
  const TNoMoreAtEnd noMoreAtEnd{watch};
  try {
    xmlrpc_c::carriageParm_http0 carriageParm(serverUrl);
    xmlrpc_c::rpcPtr rpc(address, parameters);
    rpc->call(pClient.get(), &carriageParm);
    if (rpc->isSuccessful()) {
      result = rpc->getResult();
      return;
    }
    const xmlrpc_c::fault fault = rpc->getFault();
    const bool network = fault.getCode() == kNetworkFault || fault.getCode() == kTimeoutFault;
    xmlrpc_env_set_fault(env, network ? E_COMMUNICATION_ERROR : E_INTERNAL_ERROR, fault.getDescription().c_str());
  } catch (girerr::error* error) {
    xmlrpc_env_set_fault(env, kFailedTransport, error->what());
  } catch (...) {
    xmlrpc_env_set_fault(env, kFailedTransport, "sendInternal(): Connection failed");
  }
}

void* TKSLClient::sendInternal(xmlrpc_env* env, const char* serverUrl, const MethodCall& call, int& errCodeOut) {
  errCodeOut = 0;
  xmlrpc_env_init(env);
  struct TCleanAtEnd {
    xmlrpc_env* env;
    ~TCleanAtEnd() { xmlrpc_env_clean(env); }
  };
  const TCleanAtEnd cleanAtEnd{env};

  std::string description;
  const MethodInfo& method = getMethodInfo(call.methodID);
  if (method.ResponseParser == nullptr || method.Address == nullptr) {
    // A reply to this call could not be read, so it is not made.
    errCodeOut = E_INTERNAL_ERROR;
    const std::string address = method.Address != nullptr ? method.Address : "";
    return new KSLError(E_INTERNAL_ERROR, "Parsing of " + address + " response failed.");
  }

  const xmlrpc_c::paramList parameters = buildParameters(call);
  xmlrpc_c::value result;
  TMutexGuard sendLock(KSL_send_mutex);
  const unsigned long numCalls = ++mMethodCalls[call.methodID];
  const Uint32 sentCall = SDL_GetTicks();
  callService(env, serverUrl, method.Address, parameters, result);
  const Uint32 elapsedMillis = SDL_GetTicks() - sentCall;
  sendLock.release();
  {
    const ScopedLock averagesLock(mAverageMethodResponseTimes);
    float& average = (*mAverageMethodResponseTimes.operator->())[call.methodID];
    average = (average * static_cast<float>(numCalls - 1) + static_cast<float>(elapsedMillis)) /
              static_cast<float>(numCalls);
  }

  if (env->fault_occurred) {
    errCodeOut = env->fault_code;
    description = env->fault_string;
  } else if (result.type() == xmlrpc_c::value::TYPE_STRUCT) {
    readFaultStruct(result, errCodeOut, description);
  }
  if (errCodeOut == 0) return parseReply(call, result, errCodeOut);
  if (errCodeOut == E_NOT_REGISTERED) {
    DisableCommunication();
    TogglePopRequests(false);
    RegisterID(-1);
    loseRegistration();
  }
  return new KSLError(static_cast<ErrorTypes>(errCodeOut), description);
}

void* TKSLClient::parseReply(const MethodCall& call, const xmlrpc_c::value& result, int& errCodeOut) {
  mLastGoodResponse = SDL_GetTicks();
  const MethodInfo& method = Methods[call.methodID];
  int parseStatus = 0;  // seven parsers do not write it
  void* record = method.ResponseParser(result, parseStatus);
  if (parseStatus != 0) {
    if (record != nullptr && method.DestroyData != nullptr) method.DestroyData(record);
    errCodeOut = E_INTERNAL_ERROR;
    return new KSLError(E_INTERNAL_ERROR, std::string("Parsing of ") + method.Address + " response failed.");
  }
  if (call.methodID == M_PUSHEVENTS) ++mEventPackageNumber;
  return record;
}
