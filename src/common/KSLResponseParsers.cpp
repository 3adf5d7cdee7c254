#include "common/KSLResponseParsers.h"

#include <new>

#include "common/TKSLReturnStructures.h"

void* parsePushEvents(const xmlrpc_c::value& toParse, int& parseStatus) {
  auto* response = new PushResponseData{-1};
  try {
    if (toParse.type() != xmlrpc_c::value::TYPE_INT) {
      parseStatus = 1;
    } else {
      response->numPushedEvents = xmlrpc_c::value_int(toParse);
      parseStatus = 0;
    }
  } catch (...) {
    parseStatus = 2;
  }
  return response;
}

void* parsePopEvents(const xmlrpc_c::value& toParse, int& parseStatus) {
  auto* response = new PopResponseData;
  try {
    if (toParse.type() == xmlrpc_c::value::TYPE_NIL) {
      parseStatus = 0;
      return response;
    }
    if (toParse.type() != xmlrpc_c::value::TYPE_ARRAY) {
      parseStatus = 1;
      return response;
    }
    const xmlrpc_c::carray items = xmlrpc_c::value_array(toParse).vectorValueValue();
    response->numEvents = static_cast<int>(items.size());
    response->events = new EventPtr[items.size()];
    for (size_t n = 0; n < items.size(); ++n) {
      // A missing key yields an empty value, on which int and Event throw.
      xmlrpc_c::cstruct members = xmlrpc_c::value_struct(items[n]);
      response->events[n] =
        std::make_shared<Event>(xmlrpc_c::value_int(members["eventID"]).cvalue(), members["context"]);
    }
    parseStatus = 0;
  } catch (...) {
    parseStatus = 2;
  }
  return response;
}

void* parseGetParam(const xmlrpc_c::value& toParse, int& parseStatus) {
  try {
    auto* response = new GetParamResponseData(toParse);
    parseStatus = 0;
    return response;
  } catch (...) {
    parseStatus = 1;
    return nullptr;
  }
}

void* parsePlatformState(const xmlrpc_c::value& toParse, int& parseStatus) {
  auto* response = new PlatformState;
  try {
    response->parse(toParse);
    parseStatus = 0;
  } catch (...) {
    parseStatus = 1;
  }
  return response;
}

void* parseSetParam(const xmlrpc_c::value&, int&) { return nullptr; }
void* parseGetCounter(const xmlrpc_c::value&, int&) { return nullptr; }
void* parseSetCounter(const xmlrpc_c::value&, int&) { return nullptr; }
void* parseShiftCounter(const xmlrpc_c::value&, int&) { return nullptr; }
void* parseBye(const xmlrpc_c::value&, int&) { return nullptr; }
void* parseVolume(const xmlrpc_c::value&, int&) { return nullptr; }
void* parseDenomination(const xmlrpc_c::value&, int&) { return nullptr; }

void destroyPushResponse(void* data) { delete static_cast<PushResponseData*>(data); }
void destroyPopResponse(void* data) { delete static_cast<PopResponseData*>(data); }
void destroyGetParamResponse(void* data) { delete static_cast<GetParamResponseData*>(data); }
void destroyPlatformState(void* data) { delete static_cast<PlatformState*>(data); }

// No parser makes anything for these, so there is no type whose destructor could run.
void destroySetParamResponse(void* data) { operator delete(data); }
void destroyGetCounterResponse(void* data) { operator delete(data); }
void destroySetCounterResponse(void* data) { operator delete(data); }
void destroyShiftCounterResponse(void* data) { operator delete(data); }
void destroyByeResponse(void* data) { operator delete(data); }
void destroyVolumeResponse(void* data) { operator delete(data); }
void destroyDenominationResponse(void* data) { operator delete(data); }
