#pragma once

#include <xmlrpc-c/base.hpp>

// The rows of the client's method table: what reads a reply and what frees the record. Parsers run on the
// communication thread and throw nothing; a nonzero parseStatus rejects the reply, and the record that came back
// with it, if any, is to be destroyed all the same. Destroyers do nothing for null.
void* parsePushEvents(const xmlrpc_c::value& toParse, int& parseStatus);
void* parsePopEvents(const xmlrpc_c::value& toParse, int& parseStatus);
void* parseGetParam(const xmlrpc_c::value& toParse, int& parseStatus);
void* parsePlatformState(const xmlrpc_c::value& toParse, int& parseStatus);

// These look at nothing, return null and leave the status alone.
void* parseSetParam(const xmlrpc_c::value& toParse, int& parseStatus);
void* parseGetCounter(const xmlrpc_c::value& toParse, int& parseStatus);
void* parseSetCounter(const xmlrpc_c::value& toParse, int& parseStatus);
void* parseShiftCounter(const xmlrpc_c::value& toParse, int& parseStatus);
void* parseBye(const xmlrpc_c::value& toParse, int& parseStatus);
void* parseVolume(const xmlrpc_c::value& toParse, int& parseStatus);
void* parseDenomination(const xmlrpc_c::value& toParse, int& parseStatus);

void destroyPushResponse(void* data);
void destroyPopResponse(void* data);
void destroyGetParamResponse(void* data);
void destroyPlatformState(void* data);
void destroySetParamResponse(void* data);
void destroyGetCounterResponse(void* data);
void destroySetCounterResponse(void* data);
void destroyShiftCounterResponse(void* data);
void destroyByeResponse(void* data);
void destroyVolumeResponse(void* data);
void destroyDenominationResponse(void* data);
