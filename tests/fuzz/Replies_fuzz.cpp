// What the service answers, from the body of its HTTP answer on: the guard in front of the XML-RPC library, the
// library, the reader of each kind of record, and the state that events change.
#include <exception>
#include <memory>
#include <xmlrpc-c/client.hpp>
#include <xmlrpc-c/client_transport.hpp>

#include "common/Event.h"
#include "common/GuardedTransport.h"
#include "common/KSLResponseParsers.h"
#include "common/TKSLReturnStructures.h"
#include "src/vesperatopscreen/PaytableSetup.h"
#include "tests/fuzz/Target.h"
#include "vesperatopscreen/InitData.h"
#include "vesperatopscreen/PanelDecision.h"

namespace {

// A service that gives every call the same answer.
class Answer : public xmlrpc_c::clientXmlTransport {
 public:
  explicit Answer(std::string body) : mBody(std::move(body)) {}
  void call(xmlrpc_c::carriageParm*, const std::string&, std::string* response) override { *response = mBody; }

 private:
  const std::string mBody;
};

struct Row {
  void* (*parse)(const xmlrpc_c::value&, int&);
  void (*destroy)(void*);
};
constexpr Row kRows[] = {
  {ParseInitResponse, DestroyInitObject},
  {parsePushEvents, destroyPushResponse},
  {parsePopEvents, destroyPopResponse},
  {parseGetParam, destroyGetParamResponse},
  {parsePlatformState, destroyPlatformState},
  {parseSetParam, destroySetParamResponse},
  {parseGetCounter, destroyGetCounterResponse},
  {parseSetCounter, destroySetCounterResponse},
  {parseShiftCounter, destroyShiftCounterResponse},
  {parseBye, destroyByeResponse},
  {parseVolume, destroyVolumeResponse},
  {parseDenomination, destroyDenominationResponse},
};

// As the application reads the event, whatever its number.
void takeEvent(const Event& event) {
  event.asBool();
  event.asInt();
  event.asLong();
  event.asDouble();
  event.asString();
  xmlrpc_int64 current = 0, least = 0, most = 0;
  event.readEventIntoVariables("{s:I,s:I,s:I,*}", "current", &current, "min", &least, "max", &most);
  if (!event.context()) return;
  const xmlrpc_c::value value(event.context());
  try {
    gameFromXml(value);
  } catch (const std::exception&) {
  }
  try {
    PlatformState state;
    state.parseJackpotData(value);
  } catch (const std::exception&) {
  }
}

void takeState(const PlatformState& state) {
  decidePanel(state);
  try {
    const TPaytableSetup setup(state.ExtraData);
  } catch (const std::exception&) {
  }
  TPaytableSetup::contentOf(state.ExtraData);
  // What has been read can be written, and read again.
  int status = -1;
  void* again = parsePlatformState(state.toXml(), status);
  destroyPlatformState(again);
  fuzz::require(status == 0, "a state that was read is read again from what it writes");
}

void takeReply(const xmlrpc_c::value& reply) {
  for (const Row& row : kRows) {
    int status = 0;
    void* record = row.parse(reply, status);
    if (status == 0 && record && row.parse == parsePopEvents) {
      const auto* events = static_cast<PopResponseData*>(record);
      for (int n = 0; n < events->numEvents; ++n) takeEvent(*events->events[n]);
    }
    if (status == 0 && record && row.parse == parsePlatformState) takeState(*static_cast<PlatformState*>(record));
    row.destroy(record);
  }
  takeEvent(Event(110, reply));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  try {
    const xmlrpc_c::clientXmlTransportPtr answer(new Answer(fuzz::textOf(data, size)));
    const xmlrpc_c::clientXmlTransportPtr guard(new GuardedTransport(answer));
    xmlrpc_c::client_xml client(guard);
    xmlrpc_c::carriageParm_http0 service("http://127.0.0.1/KSL");
    xmlrpc_c::rpcPtr rpc("platform.state", xmlrpc_c::paramList());
    rpc->call(&client, &service);
    if (rpc->isSuccessful())
      takeReply(rpc->getResult());
    else
      rpc->getFault().getDescription();
  } catch (const std::exception&) {
    // What the link reports as a failed call.
  }
  return 0;
}
