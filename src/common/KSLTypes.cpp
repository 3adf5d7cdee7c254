#include "common/KSLTypes.h"

KSLError::KSLError(ErrorTypes errCode, const std::string& errDesc)
  : errorCode(errCode), errorDescription(new std::string(errDesc)) {}

KSLError::~KSLError() { delete errorDescription; }

// Never destroyed: a communication thread may copy it while the process ends.
const MethodCall& NULL_CALL = *new const MethodCall{M_NULL, 0, nullptr, 0, KSLCallback(), 0};

int TKSLListener::getIDFromInitData(void*) { return -1; }

int TKSLListener::handleInitResponse(ErrorTypes, void*) { return 0; }

int TKSLListener::handlePlatformEvent(const Event&) { return 0; }

void TKSLListener::handleClientDied() {}

void TKSLListener::handleTimeout(bool) {}

int TKSLListener::handleError(MethodType inResponseToMethodID, KSLError* err) {
  if (err == nullptr) return 0;
  return handleError(inResponseToMethodID, err->errorCode, *err->errorDescription);
}
