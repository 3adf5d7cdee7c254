#include <algorithm>
#include <cstdio>
#include <string_view>
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

std::string EscapeControls(const std::string& text) {
  static constexpr std::string_view kLetters = "abtnvfr";  // from 7 on
  std::string escaped;
  char number[8];
  for (size_t at = 0; at < text.size(); ++at) {
    const auto byte = static_cast<unsigned char>(text[at]);
    const auto next = static_cast<unsigned char>(at + 1 < text.size() ? text[at + 1] : 0);
    const std::string_view three = std::string_view(text).substr(at, 3);
    if (byte >= 7 && byte < 7 + kLetters.size()) {
      escaped += {'\\', kLetters[byte - 7u]};
    } else if (byte < 0x20 || byte == 0x7f) {
      std::snprintf(number, sizeof number, "\\x%02x", byte);
      escaped += number;
    } else if (byte == 0xc2 && next >= 0x80 && next < 0xa0) {  // U+0080 to U+009F
      std::snprintf(number, sizeof number, "\\u%04x", next);
      escaped += number;
      ++at;
    } else if (three == "\u2028" || three == "\u2029") {  // ends of a line and of a paragraph
      escaped += three == "\u2028" ? "\\u2028" : "\\u2029";
      at += 2;
    } else {
      escaped += text[at];
    }
  }
  return escaped;
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
