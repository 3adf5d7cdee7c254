#pragma once

#include <optional>
#include <string>
#include <vector>

namespace kslsim {

// The error codes of the protocol: what the service puts into "faultCode". The service gives those from
// kNotRegistered to kNoActiveGame by itself where a call earns them; every code can be ordered by a "bad" step.
constexpr int kNotRegistered = -1;
constexpr int kAlreadyRegistered = -2;
constexpr int kInitRejected = -3;
constexpr int kNotSupported = -4;
constexpr int kUnknownGame = -5;
constexpr int kServerFull = -6;
constexpr int kProtocolError = -7;
constexpr int kDuplicate = -8;
constexpr int kUnsync = -9;
constexpr int kUnknownParameter = -10;
constexpr int kNoActiveGame = -101;
constexpr int kInternalError = -500;
constexpr int kCommunicationError = -501;

struct ErrorRow {
  int code;
  const char* name;  // as the protocol writes it
};

// All of them but "no error", in the order of the protocol.
const std::vector<ErrorRow>& errorRows();

// The code with this name; nothing when there is none.
std::optional<int> errorByName(const std::string& name);

}  // namespace kslsim
