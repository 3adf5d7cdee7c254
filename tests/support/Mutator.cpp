#include "tests/support/Mutator.h"

#include <array>
#include <cstdint>
#include <iterator>

namespace {

constexpr size_t kNone = std::string::npos;

// Where counting, sizes and memory end.
const char* const NUMBERS[] = {"-1",
                               "0",
                               "1",
                               "00",
                               "-0",
                               "+5",
                               "255",
                               "256",
                               "16385",
                               "65536",
                               "1000000",
                               "16777216",
                               "2147483647",
                               "2147483648",
                               "-2147483648",
                               "4294967295",
                               "4294967296",
                               "1e309",
                               "-1e309",
                               "NaN",
                               "Infinity",
                               "0x7fffffff",
                               "1.5",
                               "1e-320",
                               "99999999999999999999",
                               "-9223372036854775808",
                               "",
                               " ",
                               "two"};

const char* const JSON_WORDS[] = {
  "null", "true", "\"\"", "\"\\u0000\"", "\"\\ud800\"", "\"\xff\"", "{}",
  "[]",   "[[[[", "}",    "\"do\"",      "\"id\"",      "\"$i8\"",  "{\"$i8\": 1e400}"};

const char* const ENTITIES[] = {"&amp;",    "&lt;",     "&#0;",  "&#10;",      "&#65;",
                                "&#x41;",   "&#xD800;", "&#-1;", "&#x110000;", "&#99999999999999;",
                                "&nosuch;", "&#;",      "&",     "&#x;"};

const char* const BAD_UTF8[] = {"\xff", "\xc0\x80", "\x80\x80\x80", "\xf5\x90\x80\x80", "\xed\xa0\x80", "\xe2\x82"};

const char* const XML_PIECES[] = {"<!-- ",
                                  "-->",
                                  "<![CDATA[",
                                  "]]>",
                                  "<?pi ?>",
                                  "<!DOCTYPE a [<!ENTITY b \"&b;&b;\">]>",
                                  "<!",
                                  "</",
                                  "/>",
                                  "<x>",
                                  "</x>",
                                  "\"",
                                  "'",
                                  "<a b=c>",
                                  "=\"\"",
                                  "<?xml version=\"1.0\" encoding=\"UTF-16\"?>",
                                  "\xef\xbb\xbf",
                                  "<>"};

bool isDigit(char c) { return c >= '0' && c <= '9'; }

uint32_t checksum(const std::string& bytes, size_t begin, size_t end) {
  uint32_t sum = ~0u;
  for (size_t i = begin; i < end; ++i) {
    sum ^= static_cast<unsigned char>(bytes[i]);
    for (int bit = 0; bit < 8; ++bit) sum = sum >> 1 ^ (sum & 1 ? 0xedb88320u : 0u);
  }
  return ~sum;
}

void store(std::string& bytes, size_t at, uint32_t value, int size) {
  for (int i = 0; i < size; ++i)
    bytes[at + static_cast<size_t>(i)] = static_cast<char>(value >> (8 * (size - 1 - i)));
}

// A range [begin, end) of a text; empty when begin is kNone.
struct Range {
  size_t begin = kNone, end = kNone;
  bool found() const { return begin != kNone && end != kNone; }
};

// The attribute that begins at or behind a place: name and value, or its value alone.
Range attributeFrom(const std::string& text, size_t from, bool valueOnly) {
  const size_t equals = text.find("=\"", from);
  if (equals == kNone) return {};
  const size_t close = text.find('"', equals + 2);
  if (close == kNone) return {};
  if (valueOnly) return {equals + 2, close};
  const size_t space = text.find_last_of(" \t\r\n<", equals);
  return {space == kNone ? equals : space, close + 1};
}

// An element that begins at or behind a place: an empty one whole, of another its opening tag.
Range tagFrom(const std::string& text, size_t from) {
  const size_t open = text.find('<', from);
  if (open == kNone) return {};
  const size_t close = text.find('>', open);
  return close == kNone ? Range{} : Range{open, close + 1};
}

}  // namespace

std::string Mutator::broken(const std::string& file, Format format) {
  std::string out = file;
  for (size_t changes = 1 + below(below(2) ? 4 : 1); changes > 0; --changes) {
    const bool known = below(3) != 0;  // of three changes two know the format
    if (known && format == PNG)
      changePngHeader(out);
    else if (known && format == JPEG)
      changeJpegHeader(out);
    else if (!known || !changeText(out, format))
      changeBytes(out);
  }
  return out;
}

bool Mutator::changeText(std::string& text, Format format) {
  if (format != JSON && format != XML) return false;
  if (below(3) == 0)
    changeNumber(text);
  else if (format == JSON)
    changeJson(text);
  else
    changeXml(text);
  return true;
}

// Flips, cuts, and pieces that are doubled, swapped, left out or overwritten.
void Mutator::changeBytes(std::string& text) {
  const size_t at = below(text.size() + 1), length = 1 + below(below(8) == 0 ? 400 : 20);
  switch (below(11)) {
    case 0:
      if (at < text.size()) text[at] = static_cast<char>(text[at] ^ (1 << below(8)));
      break;
    case 1:
      if (at < text.size()) text[at] = static_cast<char>(mRandom());
      break;
    case 2:
      text.erase(at, length);
      break;
    case 3: {
      const std::string piece = text.substr(below(text.size() + 1), length);
      text.insert(at, piece);
      break;
    }
    case 4: {
      const size_t other = below(text.size() + 1);
      const std::string one = text.substr(at, length), two = text.substr(other, length);
      text.replace(at, two.size(), two);
      if (other <= text.size()) text.replace(other, one.size(), one);
      break;
    }
    case 5:
      text.insert(at, length, '\0');
      break;
    case 6:
      for (size_t i = at; i < text.size() && i < at + length; ++i) text[i] = '\xff';
      break;
    case 7:
      text.insert(at, BAD_UTF8[below(std::size(BAD_UTF8))]);
      break;
    case 8:
      for (size_t i = at; i < text.size() && i < at + length; ++i) text[i] = static_cast<char>(mRandom());
      break;
    case 9:
      if (below(3) == 0) text.resize(at);
      break;
    default:
      if (below(3) == 0) text.erase(0, at);
  }
}

void Mutator::changeNumber(std::string& text) {
  size_t begin = below(text.size() + 1);
  while (begin < text.size() && !isDigit(text[begin])) ++begin;
  size_t end = begin;
  while (end < text.size() && isDigit(text[end])) ++end;
  while (begin > 0 && isDigit(text[begin - 1])) --begin;
  if (begin < end) text.replace(begin, end - begin, NUMBERS[below(std::size(NUMBERS))]);
}

void Mutator::changeJson(std::string& text) {
  const size_t at = below(text.size() + 1);
  const auto word = [this] {
    return std::string(below(3) ? JSON_WORDS[below(std::size(JSON_WORDS))] : NUMBERS[below(std::size(NUMBERS))]);
  };
  switch (below(8)) {
    case 0:
    case 1: {  // another value behind a colon
      const size_t colon = text.find(':', at);
      const size_t end = text.find_first_of(",}]", colon == kNone ? at : colon);
      if (colon != kNone && end != kNone) text.replace(colon + 1, end - colon - 1, " " + word());
      break;
    }
    case 2:
      text.insert(at, word());
      break;
    case 3: {  // a key left out, with its value
      const size_t comma = text.find(", \"", at);
      if (comma != kNone) text.erase(comma, text.find_first_of(",}]", comma + 1) - comma);
      break;
    }
    case 4: {  // a key twice
      const size_t comma = text.find(", \"", at);
      const size_t end = comma == kNone ? kNone : text.find_first_of(",}]", comma + 1);
      if (end != kNone) {
        const std::string pair = text.substr(comma, end - comma);
        text.insert(end, pair);
      }
      break;
    }
    case 5:
      text.insert(at, std::string(below(2) ? 200 : 100000, below(2) ? '[' : '{'));
      break;
    case 6: {  // a long text
      const size_t quote = text.find('"', at);
      if (quote != kNone) text.insert(quote + 1, std::string(below(2) ? 300 : 70000, 'x'));
      break;
    }
    default: {  // a step again, elsewhere
      const Range row{text.rfind('{', at), text.find('}', at)};
      if (row.found()) {
        const std::string piece = text.substr(row.begin, row.end + 1 - row.begin);
        text.insert(row.end + 1, ", " + piece);
      }
    }
  }
}

void Mutator::changeXml(std::string& text) {
  switch (below(4)) {
    case 0:
    case 1:
      changeAttribute(text);
      break;
    case 2:
      changeElement(text);
      break;
    default:
      text.insert(below(text.size() + 1), XML_PIECES[below(std::size(XML_PIECES))]);
  }
}

void Mutator::changeAttribute(std::string& text) {
  const size_t at = below(text.size() + 1);
  const Range whole = attributeFrom(text, at, false), value = attributeFrom(text, at, true);
  if (!whole.found()) return;
  const std::string piece = text.substr(whole.begin, whole.end - whole.begin);
  switch (below(9)) {
    case 0:
    case 1:
      text.replace(value.begin, value.end - value.begin, NUMBERS[below(std::size(NUMBERS))]);
      break;
    case 2:
      text.erase(whole.begin, piece.size());
      break;
    case 3:
      text.insert(whole.end, piece);
      break;
    case 4: {  // on another element
      text.erase(whole.begin, piece.size());
      const Range tag = tagFrom(text, below(text.size() + 1));
      if (tag.found()) text.insert(tag.end - 1, piece);
      break;
    }
    case 5:
      text.insert(value.begin, std::string(below(2) ? 300 : 70000, below(2) ? '9' : 'x'));
      break;
    case 6:
      text.insert(value.begin, ENTITIES[below(std::size(ENTITIES))]);
      break;
    case 7:
      text.insert(value.begin, BAD_UTF8[below(std::size(BAD_UTF8))]);
      break;
    default:
      text.replace(value.begin, value.end - value.begin, below(2) ? "../" : ",,,");
  }
}

void Mutator::changeElement(std::string& text) {
  const Range tag = tagFrom(text, below(text.size() + 1));
  if (!tag.found()) return;
  const std::string piece = text.substr(tag.begin, tag.end - tag.begin);
  switch (below(6)) {
    case 0:
      text.erase(tag.begin, piece.size());
      break;
    case 1: {
      std::string many;
      for (size_t i = 1 + below(30); i > 0; --i) many += piece;
      text.insert(tag.end, many);
      break;
    }
    case 2: {  // swapped with the one behind it
      const Range next = tagFrom(text, tag.end);
      if (!next.found()) break;
      const std::string other = text.substr(next.begin, next.end - next.begin);
      text.replace(next.begin, other.size(), piece);
      text.replace(tag.begin, piece.size(), other);
      break;
    }
    case 3: {  // inside itself, rarely deeper than any stack
      const size_t depth = below(8) == 0 ? 50000 : 1 + below(80);
      std::string open, close;
      for (size_t i = 0; i < depth; ++i) {
        open += "<n>";
        close += "</n>";
      }
      text.insert(tag.end, below(2) ? close : "");
      text.insert(tag.begin, open);
      break;
    }
    case 4: {  // an empty one opened, and so around what follows
      if (piece.size() > 2 && piece[piece.size() - 2] == '/') text.erase(tag.end - 2, 1);
      break;
    }
    default: {  // under another name
      const size_t end = piece.find_first_of(" />", 1);
      if (end != kNone) text.replace(tag.begin + 1, end - 1, below(2) ? "" : "other");
    }
  }
}

void Mutator::changePngHeader(std::string& file) {
  constexpr size_t width = 16, height = 20, depth = 24, sum = 29;
  static const std::array<uint32_t, 10> sizes{0, 1, 2, 255, 16384, 16385, 46341, 999999, 0x7fffffff, 0xffffffff};
  if (file.size() < sum + 4) return changeBytes(file);
  const uint32_t size = sizes[below(sizes.size())];
  const size_t which = below(6);
  if (which != 1) store(file, width, size, 4);
  if (which <= 1) store(file, height, size, 4);
  if (which == 2) store(file, height, sizes[below(sizes.size())], 4);
  if (which == 3) file[depth + below(5)] = static_cast<char>(below(2) ? below(17) : mRandom());
  store(file, sum, checksum(file, 12, sum), 4);
}

void Mutator::changeJpegHeader(std::string& file) {
  static const std::array<uint32_t, 7> sizes{0, 1, 255, 16384, 46341, 65500, 65535};
  size_t frame = kNone;  // the baseline or the progressive frame's header
  for (size_t i = 0; i + 9 < file.size() && frame == kNone; ++i)
    if (file[i] == '\xff' && (file[i + 1] == '\xc0' || file[i + 1] == '\xc2')) frame = i;
  if (frame == kNone) return changeBytes(file);
  const size_t which = below(5);
  if (which <= 2) store(file, frame + 5, sizes[below(sizes.size())], 2);
  if (which <= 1) store(file, frame + 7, sizes[below(sizes.size())], 2);
  if (which == 3) file[frame + 4 + below(6)] = static_cast<char>(mRandom());
  if (which == 4) file[frame + 1] = file[frame + 1] == '\xc0' ? '\xc2' : '\xc0';
}
