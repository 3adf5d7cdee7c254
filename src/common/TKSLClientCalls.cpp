// The ways to make a call: through the queue, around it, and events in packages.
#include <cmath>
#include <limits>

#include "common/TKSLClient.h"
#include "common/XmlRpcSupport.h"
#include "vendelo-sdl2/TMutexGuard.h"

using vendelo_sdl2::TMutexGuard;

namespace {

constexpr int kMaxPackageSizeSum = 21;  // a package stays below
constexpr int kPushPriority = 1;

int arraySize(xmlrpc_env* env, xmlrpc_value* array) { return array == nullptr ? 0 : xmlrpc_array_size(env, array); }

bool isPop(const MethodCall& call) { return call.methodID == M_POPEVENTS; }

// Moves the items of the new call's array behind those of the waiting one. False on a fault.
bool mergePackages(xmlrpc_env* env, MethodCall& waiting, const MethodCall& added, int count) {
  if (waiting.parameters == nullptr) waiting.parameters = xmlrpc_array_new(env);
  for (int n = 0; n < count && !env->fault_occurred; ++n) {
    xmlrpc_value* item = nullptr;
    xmlrpc_array_read_item(env, added.parameters, static_cast<unsigned int>(n), &item);
    if (!env->fault_occurred) {
      xmlrpc_array_append_item(env, waiting.parameters, item);
      xmlrpc_DECREF(item);
    }
  }
  return !env->fault_occurred;
}

}  // namespace

void TKSLClient::finishCall(MethodCall& call) {
  if (call.parameters != nullptr) xmlrpc_DECREF(call.parameters);
  call = NULL_CALL;
}

int TKSLClient::queueMethodCall(const MethodCall& methodCall) {
  const TMutexGuard lock(KSL_call_mutex, TMutexGuard::TAdopt());
  MethodCall newCall = methodCall;
  const auto drop = [&newCall](int result) {
    finishCall(newCall);
    return result;
  };

  const size_t queueSize = mCallQueue.size();
  size_t n = 0;
  while (n < queueSize && mCallQueue[queueSize - n - 1].priority < newCall.priority) ++n;
  if (n == queueSize) {
    if (queueSize != 0 && isPop(newCall) && isPop(mCallQueue.front())) return drop(0);
    mCallQueue.push_front(newCall);
    return 0;
  }

  MethodCall& inFrontCall = mCallQueue[queueSize - n - 1];
  if (inFrontCall.priority == newCall.priority && inFrontCall.methodID == newCall.methodID &&
      newCall.methodID == M_PUSHEVENTS && inFrontCall.sendingAttempts == 0) {
    XmlRpcEnv env;
    const int waiting = arraySize(env.get(), inFrontCall.parameters);
    const int added = env.failed() ? 0 : arraySize(env.get(), newCall.parameters);
    if (env.failed()) return drop(-2);
    if (waiting + added < kMaxPackageSizeSum)
      return drop(mergePackages(env.get(), inFrontCall, newCall, added) ? 0 : -2);
  }

  if (isPop(newCall) && (isPop(inFrontCall) || (n > 0 && isPop(mCallQueue[queueSize - n])))) return drop(0);
  mCallQueue.insert(mCallQueue.end() - static_cast<std::ptrdiff_t>(n), newCall);
  return 0;
}

long TKSLClient::sendRequest_va(MethodType methodID, int priority, const KSLCallback& callback,
                                const char* parameterFormat, va_list& params) {
  XmlRpcEnv env;
  xmlrpc_value* parameters = nullptr;
  if (parameterFormat != nullptr && *parameterFormat != '\0')
    parameters = buildXmlRpcValue(env.get(), parameterFormat, params);
  else
    parameters = xmlrpc_array_new(env.get());
  if (env.failed()) return -1;
  SDL_LockMutex(KSL_call_mutex);
  return queueMethodCall(MethodCall{methodID, priority, parameters, 0, callback, ++mMethodCallUID});
}

int TKSLClient::SendRequest(MethodType methodID, int priority, const KSLCallback& callback,
                            const char* parameterFormat, ...) {
  va_list params;
  va_start(params, parameterFormat);
  const long result = sendRequest_va(methodID, priority, callback, parameterFormat, params);
  va_end(params);
  return static_cast<int>(result);
}

void* TKSLClient::SendRequestSyncRaw_va(MethodType methodID, const KSLCallback& callback, uint64_t& uidOut,
                                        int& errorCodeOut, const char* parameterFormat, va_list& params) {
  XmlRpcEnv buildEnv;
  const XmlRpcReference parameters(buildXmlRpcValue(buildEnv.get(), parameterFormat, params));
  if (buildEnv.failed()) return nullptr;
  const TMutexGuard lock(KSL_send_mutex);
  uidOut = ++mMethodCallUID;
  const MethodCall call{methodID, TOP_PRIORITY, parameters.get(), 0, callback, uidOut};
  xmlrpc_env env;
  return sendInternal(&env, copyAddress().c_str(), call, errorCodeOut);
}

void* TKSLClient::SendRequestSyncRaw(MethodType methodID, const KSLCallback& callback, uint64_t& uidOut,
                                     int& errorCodeOut, const char* parameterFormat, ...) {
  va_list params;
  va_start(params, parameterFormat);
  void* result = SendRequestSyncRaw_va(methodID, callback, uidOut, errorCodeOut, parameterFormat, params);
  va_end(params);
  return result;
}

int TKSLClient::SendRequestSync(MethodType methodID, const KSLCallback& callback, const char* parameterFormat,
                                ...) {
  uint64_t uid = 0;
  int errorCode = 0;
  va_list params;
  va_start(params, parameterFormat);
  void* responseData = SendRequestSyncRaw_va(methodID, callback, uid, errorCode, parameterFormat, params);
  va_end(params);
  if (responseData == nullptr) {
    // So also a good reply whose parser makes no record, which nobody hears of.
    return -1;
  }
  return handleResponse(MethodResponse{methodID, callback, responseData, errorCode != 0, uid});
}

int TKSLClient::SendRequestSyncQueued(int timeout, MethodType methodID, int priority, const KSLCallback& callback,
                                      const char* parameterFormat, ...) {
  syncMethodWaitFlag = true;
  const uint64_t serial = ++mSyncSerial;
  // Outlives this function when the answer comes too late; it must not end a later call's wait then.
  const KSLCallback wrapper = [this, serial, callback](void* responseData, bool isError) {
    if (serial == mSyncSerial) syncMethodWaitFlag = false;
    return callback ? callback(responseData, isError) : 0;
  };
  va_list params;
  va_start(params, parameterFormat);
  const int queued = static_cast<int>(sendRequest_va(methodID, priority, wrapper, parameterFormat, params));
  va_end(params);
  if (queued != 0) return queued;
  int elapsed = 0;
  do {
    SDL_Delay(1);
    ++elapsed;
    Poll(1);
  } while (syncMethodWaitFlag && elapsed < timeout);
  return elapsed < timeout ? 0 : 1;
}

void TKSLClient::PushEvent(KSLGameEvent eventID, const char* format, ...) {
  XmlRpcEnv env;
  xmlrpc_value* content = nullptr;
  if (format == nullptr || *format == '\0') {
    content = xmlrpc_nil_new(env.get());
  } else {
    va_list params;
    va_start(params, format);
    content = buildXmlRpcValue(env.get(), format, params);
    va_end(params);
  }
  const XmlRpcReference context(content);
  if (env.failed()) return;
  xmlrpc_value* package =
    xmlrpc_build_value(env.get(), "({s:i,s:V})", "eventID", static_cast<xmlrpc_int32>(eventID), "context", content);
  if (env.failed()) return;
  SDL_LockMutex(KSL_call_mutex);
  queueMethodCall(MethodCall{M_PUSHEVENTS, kPushPriority, package, 0, mPushCallback, ++mMethodCallUID});
}

void TKSLClient::BeginEventStack() const { SDL_LockMutex(KSL_call_mutex); }

void TKSLClient::EndEventStack() const { SDL_UnlockMutex(KSL_call_mutex); }

unsigned int TKSLClient::calculateApproximateWaitTime(int position) {
  const TMutexGuard lock(KSL_call_mutex);
  const int queueSize = static_cast<int>(mCallQueue.size());
  if (position < 0 || position > queueSize) position = queueSize;
  const ScopedLock averagesLock(mAverageMethodResponseTimes);
  float sum = 0;
  for (int n = 0; n < position; ++n) {
    const MethodType methodID = mCallQueue[static_cast<size_t>(n)].methodID;
    if (validMethod(methodID)) sum += (*mAverageMethodResponseTimes.operator->())[methodID];
  }
  const double rounded = std::roundf(sum);
  constexpr unsigned int longest = std::numeric_limits<unsigned int>::max();
  return rounded < longest ? static_cast<unsigned int>(rounded) : longest;
}
