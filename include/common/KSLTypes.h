#pragma once

#include <xmlrpc-c/base.h>

#include <cstdint>
#include <functional>
#include <string>

#include "common/Event.h"

// The index into the client's method table. Extra rows of a client begin at M_NULL.
enum MethodType : int {
  M_PUSHEVENTS = 0,
  M_POPEVENTS = 1,
  M_GETPARAM = 2,
  M_SETPARAM = 3,
  M_GETCOUNTER = 4,
  M_SETCOUNTER = 5,
  M_SHIFTCOUNTER = 6,
  M_INIT = 7,
  M_BYE = 8,
  M_PLATFORM_STATUS = 9,
  M_VOLUME = 10,
  M_DENOMINATION = 11,
  M_NULL = 12
};

// Told of a finished call, on the thread that polls: the reply's record, or a KSLError with isError. Either is
// freed as soon as the callback returns. Empty means that nobody is told.
using KSLCallback = std::function<int(void* responseData, bool isError)>;

// Turns a reply into a record; a nonzero error result means that the reply was rejected. Runs on the
// communication thread and throws nothing.
using ResponseParser = void* (*)(const xmlrpc_c::value& toParse, int& parseStatus);

// Frees what the parser of the same row made.
using DestroyDataObjectFunction = void (*)(void* data);

// What every failed call carries. The code may lie outside the enumeration. Owns its description.
struct KSLError {
  const ErrorTypes errorCode;
  const std::string* errorDescription;

  KSLError(ErrorTypes errCode, const std::string& errDesc);
  ~KSLError();
  KSLError(const KSLError&) = delete;
  KSLError& operator=(const KSLError&) = delete;
};

// One queued call. The plain struct does not count references: whoever holds the call releases the one reference
// to its parameters.
struct MethodCall {
  MethodType methodID;
  int priority;              // higher goes first
  xmlrpc_value* parameters;  // as a rule an array; may be null
  int sendingAttempts;       // 0 while the call waits in the queue
  KSLCallback callback;
  uint64_t requestUID;
};

// No call.
extern const MethodCall& NULL_CALL;

// One finished call. Whoever takes it out of the queue frees responseData: a KSLError with isError, else what the
// method's DestroyData takes.
struct MethodResponse {
  MethodType respondingToMethodID;
  KSLCallback callback;
  void* responseData;
  bool isError;
  uint64_t requestUID;
};

// The application's side of the client. All operations run on the thread that polls, but for getIDFromInitData,
// which runs on the communication thread and only reads. Records are valid during the operation alone.
class TKSLListener {
 public:
  virtual ~TKSLListener() = default;

  // The identifier that the service gave; 0 or below: none.
  virtual int getIDFromInitData(void* data);

  // One registration attempt is over. responseData is the registration's record, or a KSLError when response is
  // not E_NO_ERROR; it may be null.
  virtual int handleInitResponse(ErrorTypes response, void* responseData);
  virtual int handlePlatformEvent(const Event& ev);
  virtual int handleError(MethodType inResponseToMethodID, ErrorTypes err, const std::string& description) = 0;
  virtual void handleClientDied();

  // Once when the service has fallen silent, once when it is back.
  virtual void handleTimeout(bool timedOut);

  // Forwards code and description; 0 for null.
  int handleError(MethodType inResponseToMethodID, KSLError* err);
};
