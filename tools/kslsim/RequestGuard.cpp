#include "tools/kslsim/RequestGuard.h"

#include <charconv>
#include <cstdint>
#include <string_view>

namespace kslsim {
namespace {

bool isNumber64(std::string_view text) {
  int64_t number = 0;
  const char* end = text.data() + text.size();
  const auto result = std::from_chars(text.data(), end, number);
  return result.ec == std::errc() && result.ptr == end;
}

}  // namespace

bool isSafeForLibrary(const std::string& xml) {
  const std::string_view text(xml);
  if (text.find("<!DOCTYPE") != text.npos) return false;
  for (size_t open = text.find('<'); open != text.npos; open = text.find('<', open + 1)) {
    std::string_view name = text.substr(open + 1, text.find_first_of(" \t\r\n/>", open + 1) - open - 1);
    if (const size_t colon = name.rfind(':'); colon != name.npos) name.remove_prefix(colon + 1);
    if (name != "i8") continue;
    const size_t begin = text.find('>', open);
    if (begin == text.npos) return false;
    const size_t end = text.find('<', begin);
    if (end == text.npos || text.substr(end, 2) != "</") return false;
    if (!isNumber64(text.substr(begin + 1, end - begin - 1))) return false;
  }
  return true;
}

}  // namespace kslsim
