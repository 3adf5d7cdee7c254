#include "XmlFile.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace {

// More elements inside each other would take the parser's stack.
constexpr int kMaxDepth = 64;
// Told of one kind before the rest is only counted.
constexpr int kTold = 10;
// Bytes of a sentence, however much of the file it repeats.
constexpr size_t kLongest = 500;
// No number of a font or of an atlas is larger.
constexpr long kLargest = 1 << 24;

// How far the parser may be let into the text, which ends with a zero: the place of the first element too deep.
const char* tooDeep(const char* text) {
  int depth = 0;
  while ((text = std::strpbrk(text, "</"))) {
    const char sign = *text++;
    if (sign == '/' ? *text == '>' : *text == '/')
      depth = std::max(0, depth - 1);
    else if (sign == '<' && *text != '!' && *text != '?' && ++depth > kMaxDepth)
      return text - 1;
  }
  return nullptr;
}

// A text of the file in a sentence: not too much of it.
std::string quoted(const std::string& text) {
  return "\"" + text.substr(0, 40) + (text.size() > 40 ? "...\"" : "\"");
}

// Length of the UTF-8 sequence at `at`, 0 when none begins there.
size_t sequence(const std::string& text, size_t at) {
  const auto byte = static_cast<unsigned char>(text[at]);
  const size_t length = byte < 0x80 ? 1 : byte < 0xc2 ? 0 : byte < 0xe0 ? 2 : byte < 0xf0 ? 3 : byte < 0xf5 ? 4 : 0;
  if (length == 0 || at + length > text.size()) return 0;
  for (size_t i = 1; i < length; ++i)
    if ((static_cast<unsigned char>(text[at + i]) & 0xc0) != 0x80) return 0;
  const auto second = length > 1 ? static_cast<unsigned char>(text[at + 1]) : 0;
  const bool bad = (byte == 0xe0 && second < 0xa0) || (byte == 0xed && second > 0x9f) ||
                   (byte == 0xf0 && second < 0x90) || (byte == 0xf4 && second > 0x8f);
  return bad ? 0 : length;
}

// What stands in a file may be anything, what is said about it is UTF-8 on one line.
std::string readable(const std::string& text) {
  std::string out;
  for (size_t at = 0; at < text.size();) {
    const size_t length = sequence(text, at);
    const bool control = static_cast<unsigned char>(text[at]) < 32 || text[at] == '\x7f';
    out += length == 0 ? "?" : control ? " " : text.substr(at, length);
    at += std::max<size_t>(length, 1);
  }
  return out;
}

}  // namespace

XmlFile::XmlFile(std::string path, Findings& findings) : mPath(std::move(path)), mFindings(findings) {
  std::error_code code;
  if (!std::filesystem::is_regular_file(mPath, code)) {
    error("missing", "the file is missing");
    return;
  }
  mFindings.used.push_back(mPath);
  std::ifstream stream(mPath, std::ios::binary);
  if (!stream) {
    error("missing", "the file cannot be read");
    return;
  }
  mText.assign(std::istreambuf_iterator<char>(stream), {});
  mLines.push_back(0);
  for (size_t i = 0; i < mText.size(); ++i)
    if (mText[i] == '\n') mLines.push_back(i + 1);
  parse();
}

XmlFile::~XmlFile() {
  for (const auto& [code, count] : mCounts)
    if (count.untold > 0)
      mFindings.list.push_back({count.worst, code, mPath, count.firstUntold.line, count.firstUntold.column,
                                "and " + std::to_string(count.untold) + " more of this kind in the same file"});
}

void XmlFile::parse() {
  mBuffer.assign(mText.begin(), mText.end());
  mBuffer.push_back('\0');
  if (const char* place = tooDeep(mBuffer.data())) {
    error("xml", "the elements are nested deeper than " + std::to_string(kMaxDepth),
          placeAt(static_cast<size_t>(place - mBuffer.data())));
    return;
  }
  try {
    mDocument.parse<0>(mBuffer.data());
    mParsed = true;
  } catch (const rapidxml::parse_error& fault) {
    mDocument.clear();
    const char* where = fault.where<char>();
    const bool inside = where && where >= mBuffer.data() && where <= mBuffer.data() + mText.size();
    error("xml", std::string("this is no XML: ") + fault.what(),
          inside ? placeAt(static_cast<size_t>(where - mBuffer.data())) : TextPlace{});
  }
}

const XmlFile::Node* XmlFile::root(const char* name) const {
  return mParsed ? mDocument.first_node(name) : nullptr;
}

const XmlFile::Node* XmlFile::anyRoot() const {
  const Node* node = mParsed ? mDocument.first_node() : nullptr;
  while (node && node->type() != rapidxml::node_element) node = node->next_sibling();
  return node;
}

TextPlace XmlFile::placeAt(size_t offset) const {
  if (mLines.empty()) return {};
  const auto next = std::upper_bound(mLines.begin(), mLines.end(), offset);
  const size_t begin = *(next - 1);
  const auto characters = std::count_if(mText.begin() + static_cast<ptrdiff_t>(begin),
                                        mText.begin() + static_cast<ptrdiff_t>(std::min(offset, mText.size())),
                                        [](char c) { return (static_cast<unsigned char>(c) & 0xc0) != 0x80; });
  return {static_cast<int>(next - mLines.begin()), static_cast<int>(characters) + 1};
}

// The bracket before the name.
TextPlace XmlFile::placeOf(const Node& node) const {
  const ptrdiff_t at = node.name() - mBuffer.data();
  if (node.name_size() == 0 || at < 1 || at > static_cast<ptrdiff_t>(mText.size())) return {};
  return placeAt(static_cast<size_t>(at) - 1);
}

TextPlace XmlFile::placeOf(const Attribute& attribute) const {
  return placeAt(static_cast<size_t>(attribute.name() - mBuffer.data()));
}

void XmlFile::add(Severity severity, const std::string& code, const std::string& text, TextPlace place) {
  Count& count = mCounts[code];
  if (count.told < kTold) {
    ++count.told;
    const std::string cut = text.size() > kLongest ? text.substr(0, kLongest) + "..." : text;
    mFindings.list.push_back({severity, code, mPath, place.line, place.column, readable(cut)});
    return;
  }
  if (count.untold++ == 0) count.firstUntold = place;
  if (severity == Severity::Error) count.worst = Severity::Error;
}

void XmlFile::error(const std::string& code, const std::string& text, TextPlace place) {
  add(Severity::Error, code, text, place);
}

void XmlFile::warn(const std::string& code, const std::string& text, TextPlace place) {
  add(Severity::Warning, code, text, place);
}

const XmlFile::Attribute* XmlFile::attribute(const Node& node, const char* name, const std::string& code) {
  const Attribute* found = node.first_attribute(name);
  if (!found)
    error(code,
          "the element \"" + std::string(node.name(), node.name_size()) + "\" has no attribute \"" + name + "\"",
          placeOf(node));
  return found;
}

int XmlFile::number(const Node& node, const char* name, const std::string& code, std::optional<int> fallback) {
  const Attribute* found = fallback ? node.first_attribute(name) : attribute(node, name, code);
  if (!found) return fallback.value_or(0);
  return number(found->value(), name, code, placeOf(*found));
}

int XmlFile::number(const std::string& text, const std::string& name, const std::string& code, TextPlace place) {
  const std::string what = "\"" + name + "\" is " + quoted(text);
  char* end = nullptr;
  errno = 0;
  const long value = std::strtol(text.c_str(), &end, 10);
  if (end == text.c_str()) {
    error(code, what + ", which is no number: the program takes 0", place);
    return 0;
  }
  if (errno == ERANGE || value > kLargest || value < -kLargest) {
    error(code, what + ", which is no number of pixels", place);
    return value < 0 ? -static_cast<int>(kLargest) : static_cast<int>(kLargest);
  }
  const char* rest = end;
  while (std::isspace(static_cast<unsigned char>(*rest))) ++rest;
  if (*rest == '.')
    warn(code, what + ": the program cuts the digits behind the point off", place);
  else if (*rest != '\0')
    error(code, what + ": the program takes " + std::to_string(value), place);
  return static_cast<int>(value);
}
