#include <cctype>

#include "vendelo-sdl2/MyUtils.h"

namespace MyUtils {

namespace {

using CaseMap = std::map<std::string, std::string>;

// Filled by the rows and by SpecialChars below, before anything else can look at them.
CaseMap& toUpperMap() {
  static CaseMap& map = *new CaseMap;
  return map;
}

CaseMap& toLowerMap() {
  static CaseMap& map = *new CaseMap;
  return map;
}

// All code points here have two bytes but those of ASCII.
std::string utf8(int codePoint) {
  if (codePoint < 0x80) return std::string(1, static_cast<char>(codePoint));
  return {static_cast<char>(0xc0 | (codePoint >> 6)), static_cast<char>(0x80 | (codePoint & 0x3f))};
}

// Lower-case letters first, first + step, ... last, whose capitals stand `distance` further on. The simple case
// mapping of Unicode for Latin-1, Latin Extended-A, Greek and Coptic, in code-point order.
struct TRun {
  int first, last, step, distance;
  TSpecialChars::TDirection direction;
};

constexpr auto kBoth = TSpecialChars::BOTH;
constexpr auto kOnlyToUpper = TSpecialChars::ONLY_TO_UPPER;

constexpr TRun kRuns[] = {
  {0x0e0, 0x0f6, 1, -32, kBoth},
  {0x0f8, 0x0fe, 1, -32, kBoth},
  {0x0ff, 0x0ff, 1, 121, kBoth},
  {0x101, 0x12f, 2, -1, kBoth},
  {0x131, 0x131, 1, 'I' - 0x131, kOnlyToUpper},  // dotless i
  {0x133, 0x137, 2, -1, kBoth},
  {0x13a, 0x148, 2, -1, kBoth},
  {0x14b, 0x177, 2, -1, kBoth},
  {0x17a, 0x17e, 2, -1, kBoth},
  {0x17f, 0x17f, 1, 'S' - 0x17f, kOnlyToUpper},  // long s
  {0x371, 0x373, 2, -1, kBoth},
  {0x377, 0x377, 1, -1, kBoth},
  {0x37b, 0x37d, 1, 130, kBoth},
  {0x3ac, 0x3ac, 1, -38, kBoth},
  {0x3ad, 0x3af, 1, -37, kBoth},
  {0x3b1, 0x3c1, 1, -32, kBoth},
  {0x3c2, 0x3c2, 1, -31, kOnlyToUpper},  // final sigma
  {0x3c3, 0x3cb, 1, -32, kBoth},
  {0x3cc, 0x3cc, 1, -64, kBoth},
  {0x3cd, 0x3ce, 1, -63, kBoth},
  {0x3d0, 0x3d0, 1, -62, kOnlyToUpper},  // from here on the symbol forms of Greek letters
  {0x3d1, 0x3d1, 1, -57, kOnlyToUpper},
  {0x3d5, 0x3d5, 1, -47, kOnlyToUpper},
  {0x3d6, 0x3d6, 1, -54, kOnlyToUpper},
  {0x3d7, 0x3d7, 1, -8, kBoth},
  {0x3d9, 0x3ef, 2, -1, kBoth},
  {0x3f0, 0x3f0, 1, -86, kOnlyToUpper},
  {0x3f1, 0x3f1, 1, -80, kOnlyToUpper},
  {0x3f2, 0x3f2, 1, 7, kBoth},
  {0x3f3, 0x3f3, 1, -116, kBoth},
  {0x3f5, 0x3f5, 1, -96, kOnlyToUpper},
  {0x3f8, 0x3f8, 1, -1, kBoth},
  {0x3fb, 0x3fb, 1, -1, kBoth},
};

std::vector<TSpecialChars>& makeRows() {
  auto& rows = *new std::vector<TSpecialChars>;
  for (const TRun& run : kRuns)
    for (int c = run.first; c <= run.last; c += run.step)
      rows.emplace_back(utf8(c), utf8(c + run.distance), run.direction);
  // Two capitals whose lower-case letters belong to other capitals.
  toLowerMap().emplace(utf8(0x130), "i");
  toLowerMap().emplace(utf8(0x3f4), utf8(0x3b8));
  return rows;
}

// Appends the character of Input at `at`, mapped, and returns the index behind it. What is no whole sequence goes
// over byte by byte as it stands.
size_t appendMapped(std::string& result, const std::string& Input, size_t at, int (*ascii)(int),
                    const CaseMap& map) {
  const auto byte = static_cast<unsigned char>(Input[at]);
  if (byte < 0x80) {
    result += static_cast<char>(ascii(byte));
    return at + 1;
  }
  const size_t length = static_cast<size_t>(utf8_strlen(Input[at]));
  if (length == 0 || length > Input.size() - at) {
    result += Input[at];
    return at + 1;
  }
  const std::string sequence = Input.substr(at, length);
  const auto found = map.find(sequence);
  result += found == map.end() ? sequence : found->second;
  return at + length;
}

}  // namespace

TSpecialChars::TSpecialChars(const std::string& lower, const std::string& upper, TDirection direction)
  : lower(lower), upper(upper) {
  toUpperMap().emplace(lower, upper);
  if (direction == kBoth) toLowerMap().emplace(upper, lower);
}

const std::vector<TSpecialChars>& SpecialChars = makeRows();
const std::map<std::string, std::string>& ToUpperSpecialCharMap = toUpperMap();
const std::map<std::string, std::string>& ToLowerSpecialCharMap = toLowerMap();

std::string ToUppercase(const std::string& Input, bool OnlyFirst) {
  const size_t s = OnlyFirst && !Input.empty() ? 1 : Input.size();
  std::string result;
  // With OnlyFirst nothing follows the first character: its capital alone is what the callers want.
  for (size_t i = 0; i < s;) i = appendMapped(result, Input, i, std::toupper, toUpperMap());
  return result;
}

std::string ToLowercase(const std::string& Input, bool SkipFirst) {
  const size_t start = SkipFirst && !Input.empty() ? 1 : 0;
  std::string result = Input.substr(0, start);
  for (size_t i = start; i < Input.size();) i = appendMapped(result, Input, i, std::tolower, toLowerMap());
  return result;
}

}  // namespace MyUtils
