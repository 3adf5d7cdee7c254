#include "common/LinkFigures.h"

#include <string_view>

namespace {

// Of errors without a name, which a service may make up without end.
constexpr ErrorTypes kOther = static_cast<ErrorTypes>(1);

}  // namespace

const char* nameOf(ErrorTypes error) {
  switch (error) {
    case E_NO_ERROR:
      return "none";
    case E_NOT_REGISTERED:
      return "not_registered";
    case E_ALREADY_REGISTERED:
      return "already_registered";
    case E_INIT_REJECTED:
      return "init_rejected";
    case E_NOT_SUPPORTED:
      return "not_supported";
    case E_UNKNOWN_GAME:
      return "unknown_game";
    case E_SERVER_FULL:
      return "server_full";
    case E_PROTOCOL_ERROR:
      return "protocol_error";
    case E_DUPLICATE:
      return "duplicate";
    case E_UNSYNC:
      return "unsync";
    case E_UNNKNOWN_PARAMETER:
      return "unknown_parameter";
    case E_NO_ACTIVE_GAME:
      return "no_active_game";
    case E_INTERNAL_ERROR:
      return "internal_error";
    case E_COMMUNICATION_ERROR:
      return "communication_error";
  }
  return "other";
}

void LinkFigures::count(MethodType method, ErrorTypes error) {
  const bool named = std::string_view(nameOf(error)) != nameOf(kOther);
  ++answers[{method, named ? error : kOther}];
}
