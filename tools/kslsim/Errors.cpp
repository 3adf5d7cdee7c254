#include "tools/kslsim/Errors.h"

namespace kslsim {

const std::vector<ErrorRow>& errorRows() {
  static const auto& rows =
    *new std::vector<ErrorRow>{{kNotRegistered, "E_NOT_REGISTERED"},
                               {kAlreadyRegistered, "E_ALREADY_REGISTERED"},
                               {kInitRejected, "E_INIT_REJECTED"},
                               {kNotSupported, "E_NOT_SUPPORTED"},
                               {kUnknownGame, "E_UNKNOWN_GAME"},
                               {kServerFull, "E_SERVER_FULL"},
                               {kProtocolError, "E_PROTOCOL_ERROR"},
                               {kDuplicate, "E_DUPLICATE"},
                               {kUnsync, "E_UNSYNC"},
                               {kUnknownParameter, "E_UNNKNOWN_PARAMETER"},  // the protocol spells it so
                               {kNoActiveGame, "E_NO_ACTIVE_GAME"},
                               {kInternalError, "E_INTERNAL_ERROR"},
                               {kCommunicationError, "E_COMMUNICATION_ERROR"}};
  return rows;
}

std::optional<int> errorByName(const std::string& name) {
  for (const ErrorRow& row : errorRows())
    if (name == row.name) return row.code;
  return std::nullopt;
}

}  // namespace kslsim
