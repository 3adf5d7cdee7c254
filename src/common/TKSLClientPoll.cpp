// What the main thread does with the replies: TKSLClient::Poll and what it calls.
#include <atomic>
#include <cstdio>

#include "common/TKSLClient.h"
#include "common/TKSLReturnStructures.h"
#include "vendelo-sdl2/TLogManager.h"
#include "vendelo-sdl2/TMutexGuard.h"

using vendelo_sdl2::TMutexGuard;

namespace {

constexpr Uint32 kSilenceLimit = 5000;
constexpr int kPopPriority = 2;
constexpr vendelo_sdl2::TLogType kLogWarning = 4;

}  // namespace

bool TKSLClient::IsTimedOut() const { return mPopEnabled && SDL_GetTicks() - mLastPopResponse >= kSilenceLimit; }

std::optional<Uint32> TKSLClient::SinceGoodAnswer() const {
  const Uint32 last = mLastGoodResponse.getCopy();
  if (last == 0) return std::nullopt;
  return SDL_GetTicks() - last;
}

void TKSLClient::handleTimeoutEdge() {
  TKSLListener* listener = mListener;
  if (IsTimedOut()) {
    if (!mLockedTimeout) {
      if (listener != nullptr) listener->handleTimeout(true);
      mLockedTimeout = true;
    }
  } else if (mLockedTimeout && mPopEnabled) {
    if (listener != nullptr) listener->handleTimeout(false);
    mLockedTimeout = false;
  }
}

void TKSLClient::interruptLongCall() {
  if (mCallTimeout == 0) return;
  const std::lock_guard<std::mutex> lock(mCallWatchMutex);
  if (mCallIsInTheAir && SDL_GetTicks() - mCallBegan >= mCallTimeout) std::atomic_ref<int>{mInterrupt}.store(1);
}

int TKSLClient::Poll(unsigned int handleMaxResponses) {
  int result = 0;
  unsigned int handled = 0;
  interruptLongCall();
  try {
    handleTimeoutEdge();
    TMutexGuard lock(KSL_response_mutex);
    while (!mResponseQueue.empty()) {
      const MethodResponse response = mResponseQueue.front();
      mResponseQueue.pop();
      lock.release();
      handleResponse(response);
      ++handled;
      lock.lock();
      if (handleMaxResponses != 0 && handled >= handleMaxResponses) break;
    }
    result = static_cast<int>(handled);
  } catch (...) {
    std::printf("!!!! KSLCLIENT:: ERROR handling method response!\n");
    result = -1;
  }

  const Uint32 now = SDL_GetTicks();
  if (mPopEnabled && now - mLastPopRequest > mPopTargetFrequency) {
    mLastPopRequest = now;
    SendRequest(M_POPEVENTS, kPopPriority, mPopCallback, "");
  }
  return result;
}

int TKSLClient::handleResponse(const MethodResponse& response) {
  struct TFreeAtEnd {
    TKSLClient& client;
    const MethodResponse& response;
    ~TFreeAtEnd() { client.freeResponseData(response); }
  };
  const TFreeAtEnd freeAtEnd{*this, response};

  TKSLListener* listener = mListener;
  auto* error = response.isError ? static_cast<KSLError*>(response.responseData) : nullptr;
  mFigures.count(response.respondingToMethodID, error != nullptr ? error->errorCode : E_NO_ERROR);
  if (response.callback) return response.callback(response.responseData, response.isError);
  if (response.respondingToMethodID == M_INIT && listener != nullptr)
    return listener->handleInitResponse(error != nullptr ? error->errorCode : E_NO_ERROR, response.responseData);
  if (response.isError && listener != nullptr) listener->handleError(response.respondingToMethodID, error);
  return 0;
}

void TKSLClient::freeResponseData(const MethodResponse& response) {
  if (response.responseData == nullptr) return;
  if (response.isError) {
    delete static_cast<KSLError*>(response.responseData);
    return;
  }
  const MethodInfo& method = getMethodInfo(response.respondingToMethodID);
  if (method.DestroyData != nullptr) method.DestroyData(response.responseData);
}

int TKSLClient::handlePushResponse(void* returnData, bool isError) {
  TKSLListener* listener = mListener;
  if (listener != nullptr && isError) listener->handleError(M_PUSHEVENTS, static_cast<KSLError*>(returnData));
  return 0;
}

int TKSLClient::handlePopResponse(void* returnData, bool isError) {
  if (!isError) mLastPopResponse = SDL_GetTicks();
  TKSLListener* listener = mListener;
  if (listener == nullptr) return 0;
  if (isError) {
    listener->handleError(M_POPEVENTS, static_cast<KSLError*>(returnData));
    return 0;
  }
  const auto* data = static_cast<PopResponseData*>(returnData);
  for (int n = 0; n < data->numEvents; ++n) {
    const EventPtr& event = data->events[n];
    try {
      listener->handlePlatformEvent(*event);
      ++mFigures.eventsHandled;
    } catch (...) {
      ++mFigures.eventsRefused;
      logman::WriteLog(kLogWarning, 0UL, "KSL: Exception thrown handling platform event (%d)", event->id());
    }
  }
  return 0;
}
