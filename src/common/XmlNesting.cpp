#include "common/XmlNesting.h"

#include <cstring>

namespace {

constexpr int kMaxDepth = 64;
const char* const kSpace = " \t\r\n";

bool startsWith(const char* text, const char* with) { return std::strncmp(text, with, std::strlen(with)) == 0; }

// Behind the mark, or at the end of the text.
const char* behind(const char* text, const char* mark) {
  const char* found = std::strstr(text, mark);
  return found ? found + std::strlen(mark) : text + std::strlen(text);
}

// Behind a document type, whose square brackets may hold a ">".
const char* behindDocumentType(const char* text) {
  while (*text && *text != '>') {
    if (*text++ != '[') continue;
    for (int depth = 1; *text && depth > 0; ++text) depth += *text == '[' ? 1 : *text == ']' ? -1 : 0;
  }
  return *text ? text + 1 : text;
}

// Behind an attribute's name, its "=" and its value; null when there is none.
const char* behindAttribute(const char* text) {
  const size_t name = std::strcspn(text, " \t\r\n/<>=?!");
  if (name == 0) return nullptr;
  text += name;
  text += std::strspn(text, kSpace);
  if (*text++ != '=') return nullptr;
  text += std::strspn(text, kSpace);
  if (*text != '"' && *text != '\'') return nullptr;
  const char* close = std::strchr(text + 1, *text);
  return close ? close + 1 : nullptr;
}

// The sign that ends an element's tag: ">" when it has contents, "/" when it is empty, another one when the parser
// takes no more of it. The text moves there.
char endOfTag(const char*& text) {
  text += std::strcspn(text, " \t\r\n/>?");
  for (;;) {
    text += std::strspn(text, kSpace);
    const char* next = behindAttribute(text);
    if (!next) return *text;
    text = next;
  }
}

}  // namespace

bool IsNestedTooDeep(const char* text) {
  int depth = 0;
  while ((text = std::strchr(text, '<'))) {
    ++text;
    if (startsWith(text, "!--")) {
      text = behind(text + 3, "-->");
    } else if (startsWith(text, "![CDATA[")) {
      text = behind(text + 8, "]]>");
    } else if (startsWith(text, "!DOCTYPE") && text[8] && std::strchr(kSpace, text[8])) {
      text = behindDocumentType(text);
    } else if (*text == '!') {
      text = behind(text, ">");
    } else if (*text == '?') {
      text = behind(text, "?>");
    } else if (*text == '/') {
      if (depth > 0) --depth;
    } else {
      const char end = endOfTag(text);
      if (end == '>' && ++depth > kMaxDepth) return true;
      if (end != '>' && end != '/') return false;
    }
  }
  return false;
}
