#pragma once

#include <optional>
#include <string>
#include <vector>

namespace kslsim {

// The error codes of the protocol: what the service puts into "faultCode". The service gives those from
// NOT_REGISTERED to NO_ACTIVE_GAME by itself where a call earns them; every code can be ordered by a "bad" step.
constexpr int NOT_REGISTERED = -1;
constexpr int ALREADY_REGISTERED = -2;
constexpr int INIT_REJECTED = -3;
constexpr int NOT_SUPPORTED = -4;
constexpr int UNKNOWN_GAME = -5;
constexpr int SERVER_FULL = -6;
constexpr int PROTOCOL_ERROR = -7;
constexpr int DUPLICATE = -8;
constexpr int UNSYNC = -9;
constexpr int UNKNOWN_PARAMETER = -10;
constexpr int NO_ACTIVE_GAME = -101;
constexpr int INTERNAL_ERROR = -500;
constexpr int COMMUNICATION_ERROR = -501;

struct ErrorRow {
  int code;
  const char* name;  // as the protocol writes it
};

// All of them but "no error", in the order of the protocol.
const std::vector<ErrorRow>& errorRows();

// The code with this name; nothing when there is none.
std::optional<int> errorByName(const std::string& name);

}  // namespace kslsim
