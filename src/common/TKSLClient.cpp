#include "common/TKSLClient.h"

#include <xmlrpc-c/client_transport.hpp>

#include "common/GuardedTransport.h"
#include "common/KSLResponseParsers.h"
#include "vendelo-sdl2/TMutexGuard.h"

using vendelo_sdl2::TMutexGuard;

namespace {

struct BaseMethod {
  MethodType methodID;
  TKSLClient::MethodInfo row;
};

// The application completes the row of M_INIT.
const BaseMethod BaseMethods[] = {
  {M_PUSHEVENTS, {"game.pushEvents", parsePushEvents, destroyPushResponse}},
  {M_POPEVENTS, {"game.popEvents", parsePopEvents, destroyPopResponse}},
  {M_GETPARAM, {"game.getParam", parseGetParam, destroyGetParamResponse}},
  {M_SETPARAM, {"game.setParam", parseSetParam, destroySetParamResponse}},
  {M_GETCOUNTER, {"game.getCounter", parseGetCounter, destroyGetCounterResponse}},
  {M_SETCOUNTER, {"game.setCounter", parseSetCounter, destroySetCounterResponse}},
  {M_SHIFTCOUNTER, {"game.shiftCounter", parseShiftCounter, destroyShiftCounterResponse}},
  {M_INIT, {"", nullptr, nullptr}},
  {M_BYE, {"game.bye", parseBye, destroyByeResponse}},
  {M_PLATFORM_STATUS, {"platform.state", parsePlatformState, destroyPlatformState}},
  {M_VOLUME, {"system.volume", parseVolume, destroyVolumeResponse}},
  {M_DENOMINATION, {"system.denomination", parseDenomination, destroyDenominationResponse}},
};

const TKSLClient::MethodInfo NoMethod = {"", nullptr, nullptr};

constexpr Uint32 kDefaultPopInterval = 100;
constexpr int kRestartRetries = 3;

// Straight to the service: given an empty name, the library does not look for a proxy in the environment.
xmlrpc_c::clientXmlTransportPtr makeTransport() {
  const xmlrpc_c::clientXmlTransportPtr http(
    new xmlrpc_c::clientXmlTransport_curl(xmlrpc_c::clientXmlTransport_curl::constrOpt().proxy("")));
  return xmlrpc_c::clientXmlTransportPtr(new GuardedTransport(http));
}

}  // namespace

TKSLClient::TKSLClient(const std::string& Name, const std::string& address, unsigned int numExtraMethods)
  : TKSLClient(Name, address, numExtraMethods, makeTransport()) {}

TKSLClient::TKSLClient(const std::string& Name, const std::string& address, unsigned int numExtraMethods,
                       const xmlrpc_c::clientXmlTransportPtr& transport)
  : InitSemaphore(nullptr),
    NumRetries(0),
    Registered(false),
    RegisterRequired(true),
    ClientName(Name),
    mMethodCallUID(0),
    pClient(new xmlrpc_c::client_xml(transport)),
    mTransport(transport),
    mCallIsInTheAir(false),
    mCallBegan(0),
    mCallTimeout(0),
    mInterrupt(0),
    KSL_communication(nullptr),
    KSL_quit_sem(SDL_CreateSemaphore(0)),
    KSL_call_mutex(SDL_CreateMutex()),
    KSL_response_mutex(SDL_CreateMutex()),
    KSL_send_mutex(SDL_CreateMutex()),
    mRPCEnabled(false),
    mRegisteredID(-1),
    mKSL_address(address),
    mEventPackageNumber(0),
    mNumMethods(static_cast<int>(numExtraMethods) + M_NULL),
    syncMethodWaitFlag(false),
    mSyncSerial(0),
    mLockedTimeout(false),
    mPushCallback([this](void* data, bool isError) { return handlePushResponse(data, isError); }),
    mPopCallback([this](void* data, bool isError) { return handlePopResponse(data, isError); }),
    mPopEnabled(false),
    mPopTargetFrequency(kDefaultPopInterval),
    mLastPopResponse(0),
    mLastPopRequest(0),
    mLastGoodResponse(0),
    mListener(nullptr),
    mDelay(SDL_Delay),
    mLostRegistrations(0),
    mPauseIsDue(false) {
  const size_t numRows = static_cast<size_t>(mNumMethods);
  Methods.resize(numRows, MethodInfo{nullptr, nullptr, nullptr});
  mMethodCalls.resize(numRows, 0);
  mAverageMethodResponseTimes = std::vector<float>(numRows, 0.0F);
  for (const BaseMethod& method : BaseMethods) Methods[method.methodID] = method.row;
}

TKSLClient::~TKSLClient() {
  Stop();
  while (!mCallQueue.empty()) {
    finishCall(mCallQueue.front());
    mCallQueue.pop_front();
  }
  while (!mResponseQueue.empty()) {
    freeResponseData(mResponseQueue.front());
    mResponseQueue.pop();
  }
  SDL_DestroyMutex(KSL_send_mutex);
  SDL_DestroyMutex(KSL_response_mutex);
  SDL_DestroyMutex(KSL_call_mutex);
  SDL_DestroySemaphore(KSL_quit_sem);
  if (InitSemaphore != nullptr) SDL_DestroySemaphore(InitSemaphore);
}

void TKSLClient::SetInitMethod(const char* methodAddress, ::ResponseParser parser,
                               DestroyDataObjectFunction destroyer) {
  Methods[M_INIT] = MethodInfo{methodAddress, parser, destroyer};
}

bool TKSLClient::AddMethod(MethodType methodID, const char* methodAddress, ::ResponseParser parser,
                           DestroyDataObjectFunction destroyer) {
  if (methodID < 1 || methodID >= mNumMethods || Methods[methodID].Address != nullptr) return false;
  Methods[methodID] = MethodInfo{methodAddress, parser, destroyer};
  return true;
}

void TKSLClient::SetListener(TKSLListener* listener) { mListener = listener; }

void TKSLClient::SetPopRequestFrequency(unsigned int interval) { mPopTargetFrequency = interval; }

void TKSLClient::SetCallTimeout(unsigned int milliseconds) {
  mCallTimeout = milliseconds;
  mTransport->setInterrupt(milliseconds != 0 ? &mInterrupt : nullptr);
}

void TKSLClient::SetRegisterRequired(bool required) { RegisterRequired = required; }

int TKSLClient::Start(bool block, int numRetry) {
  if (Running()) return 1;
  NumRetries = static_cast<unsigned int>(numRetry);
  mLostRegistrations = 0;
  mPauseIsDue = false;
  if (InitSemaphore != nullptr) SDL_DestroySemaphore(InitSemaphore);  // of an earlier start that nobody asked about
  InitSemaphore = SDL_CreateSemaphore(0);
  KSL_communication = SDL_CreateThread(KSL_communication_thread, "KSLClient:RPC", this);
  if (KSL_communication == nullptr) return -1;
  if (!block) return 0;
  SDL_SemWait(InitSemaphore);
  SDL_DestroySemaphore(InitSemaphore);
  InitSemaphore = nullptr;
  Poll(0);
  if (!RegisterRequired || ID() > 0) return 0;
  Stop();
  return -1;
}

int TKSLClient::Stop() {
  if (KSL_communication == nullptr) return -1;
  int status = 0;
  SDL_SemPost(KSL_quit_sem);
  SDL_WaitThread(KSL_communication, &status);
  KSL_communication = nullptr;
  Registered = false;
  return status;
}

int TKSLClient::Restart() {
  Stop();
  return Start(true, kRestartRetries);
}

bool TKSLClient::Running() const { return KSL_communication != nullptr; }

void TKSLClient::SetAddress(const std::string& address) {
  {
    const std::lock_guard<std::mutex> lock(mAddressMutex);
    mKSL_address = address;
  }
  Restart();
}

const std::string& TKSLClient::Address() const { return mKSL_address; }

std::string TKSLClient::copyAddress() const {
  const std::lock_guard<std::mutex> lock(mAddressMutex);
  return mKSL_address;
}

const std::string& TKSLClient::Name() const { return ClientName; }

int TKSLClient::ID() const { return mRegisteredID; }

void TKSLClient::RegisterID(int ID) { mRegisteredID = ID; }

bool TKSLClient::IsRegistered() {
  if (!Running()) return false;
  if (InitSemaphore == nullptr) return ID() > 0;
  if (SDL_SemTryWait(InitSemaphore) != 0) return false;
  SDL_DestroySemaphore(InitSemaphore);
  InitSemaphore = nullptr;
  if (ID() > 0) return true;
  Stop();
  return false;
}

void TKSLClient::EnableCommunication() {
  const TMutexGuard lock(KSL_call_mutex);
  mRPCEnabled = true;
}

void TKSLClient::DisableCommunication() {
  const TMutexGuard lock(KSL_call_mutex);
  mRPCEnabled = false;
}

bool TKSLClient::CommunicationEnabled() const {
  const TMutexGuard lock(KSL_call_mutex);
  return mRPCEnabled;
}

void TKSLClient::TogglePopRequests(bool enabled) {
  if (enabled && !mPopEnabled) mLastPopRequest = 0;
  mPopEnabled = enabled;
}

const TKSLClient::MethodInfo& TKSLClient::getMethodInfo(MethodType methodID) const {
  return validMethod(methodID) ? Methods[methodID] : NoMethod;
}

bool TKSLClient::validMethod(MethodType methodID) const { return methodID >= 0 && methodID < mNumMethods; }
