#include "tools/kslsim/Errors.h"

namespace kslsim {

const std::vector<ErrorRow>& errorRows() {
  static const auto& rows =
    *new std::vector<ErrorRow>{{NOT_REGISTERED, "E_NOT_REGISTERED"},
                               {ALREADY_REGISTERED, "E_ALREADY_REGISTERED"},
                               {INIT_REJECTED, "E_INIT_REJECTED"},
                               {NOT_SUPPORTED, "E_NOT_SUPPORTED"},
                               {UNKNOWN_GAME, "E_UNKNOWN_GAME"},
                               {SERVER_FULL, "E_SERVER_FULL"},
                               {PROTOCOL_ERROR, "E_PROTOCOL_ERROR"},
                               {DUPLICATE, "E_DUPLICATE"},
                               {UNSYNC, "E_UNSYNC"},
                               {UNKNOWN_PARAMETER, "E_UNNKNOWN_PARAMETER"},  // the protocol spells it so
                               {NO_ACTIVE_GAME, "E_NO_ACTIVE_GAME"},
                               {INTERNAL_ERROR, "E_INTERNAL_ERROR"},
                               {COMMUNICATION_ERROR, "E_COMMUNICATION_ERROR"}};
  return rows;
}

std::optional<int> errorByName(const std::string& name) {
  for (const ErrorRow& row : errorRows())
    if (name == row.name) return row.code;
  return std::nullopt;
}

}  // namespace kslsim
