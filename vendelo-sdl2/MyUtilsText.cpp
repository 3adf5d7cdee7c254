#include <algorithm>
#include <utility>

#include "vendelo-sdl2/MyUtils.h"

namespace MyUtils {

std::vector<std::string> string2vector(const std::string& phrase, const std::string& delimiter,
                                       bool bDeleteEmptyEntries) {
  std::vector<std::string> parts;
  size_t start = 0;
  while (!delimiter.empty()) {
    const size_t at = phrase.find(delimiter, start);
    if (at == std::string::npos) break;
    if (at > start || !bDeleteEmptyEntries) parts.push_back(phrase.substr(start, at - start));
    start = at + delimiter.size();
  }
  parts.push_back(phrase.substr(start));  // even if empty and empty parts are to be dropped
  return parts;
}

std::string trim(std::string str) {
  const size_t first = str.find_first_not_of(' ');
  if (first == std::string::npos) return "";
  return str.substr(first, str.find_last_not_of(' ') - first + 1);
}

void trimString(std::string& str) { str = trim(std::move(str)); }

void StringReplace(std::string& str, const std::string& from, const std::string& to) {
  if (from.empty()) return;
  for (size_t at = str.find(from); at != std::string::npos; at = str.find(from, at + to.size()))
    str.replace(at, from.size(), to);
}

void UnescapeXml(std::string& xml) {
  static constexpr const char* kEntities[][2] = {
    {"&quot;", "\""}, {"&apos;", "'"}, {"&amp;", "&"}, {"&lt;", "<"}, {"&gt;", ">"}};
  for (const auto& [entity, character] : kEntities) StringReplace(xml, entity, character);
}

std::string CreateLoggableTicketNumber(const std::string& ticketValidationNumber) {
  constexpr size_t kShownCharacters = 4;
  std::string masked = ticketValidationNumber;
  StringReplace(masked, "-", "");
  const size_t endOfStarsIndex = std::max(kShownCharacters, masked.size()) - kShownCharacters;
  masked.replace(0, endOfStarsIndex, endOfStarsIndex, '*');

  std::string result;
  size_t taken = 0;
  const std::vector<std::string> parts = string2vector(ticketValidationNumber, "-", false);
  for (size_t i = 0; i < parts.size(); ++i) {
    if (parts[i].empty()) continue;
    if (i != 0) result += '-';
    result += masked.substr(taken, parts[i].size());
    taken += parts[i].size();
  }
  return result;
}

}  // namespace MyUtils
