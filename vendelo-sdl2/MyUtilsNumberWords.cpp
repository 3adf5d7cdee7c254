#include <cstring>

#include "vendelo-sdl2/MyUtils.h"

namespace MyUtils {

namespace {

constexpr char kUnits[10][11] = {"",      "ONE ", "TWO ",   "THREE ", "FOUR ",
                                 "FIVE ", "SIX ", "SEVEN ", "EIGHT ", "NINE "};
constexpr char kTeens[10][11] = {"TEN ",     "ELEVEN ",  "TWELVE ",    "THIRTEEN ", "FOURTEEN ",
                                 "FIFTEEN ", "SIXTEEN ", "SEVENTEEN ", "EIGHTEEN ", "NINETEEN "};
// "FOURTY " and "THOUNSAND " are spelt so in what reads the output.
constexpr char kTens[10][11] = {"",       "",       "TWENTY ",  "THIRTY ", "FOURTY ",
                                "FIFTY ", "SIXTY ", "SEVENTY ", "EIGHTY ", "NINETY "};
// Only the last five end in a blank.
constexpr char kBigWords[22][20] = {
  "VIGINTILLION",      "NOVEMDECILLION", "OCTODECILLION", "SEPTENDECILLION", "SEXDECILLION", "QUINDECILLION",
  "QUATTUORDECILLION", "TREDECILLION",   "DUODECILLION",  "UNDECILLION",     "DECILLION",    "NONILLION",
  "OCTILLION",         "SEPTILLION",     "SEXTILLION",    "QUINTILLION",     "QUADRILLION",  "TRILLION ",
  "BILLION ",          "MILLION ",       "THOUNSAND ",    "HUNDRED "};
constexpr int kHundred = 21;
constexpr int kThousand = 20;  // the scale of a number of 4 digits; each further one stands 3 digits higher
constexpr int kFirstScale = 4;
constexpr int kLastScale = 64;
constexpr int kMaxWords = 150;

// Appends words to a text, up to the number that the callers' buffers are made for.
class TWords {
 public:
  explicit TWords(char* out) : mOut(out) { *mOut = '\0'; }
  void add(const char* word) {
    if (mCount++ >= kMaxWords) return;
    const size_t length = std::strlen(word);
    std::memcpy(mOut, word, length + 1);
    mOut += length;
  }

 private:
  char* mOut;
  int mCount = 0;
};

// What is no digit counts as a zero.
int digitOf(char c) { return c >= '0' && c <= '9' ? c - '0' : 0; }

}  // namespace

void NumberToText(const char* only_number, char* outputString) {
  if (!outputString) return;
  TWords words(outputString);
  if (!only_number) return;
  if (std::strcmp(only_number, "0") == 0) return words.add("ZERO ");

  const int len = static_cast<int>(std::strlen(only_number));
  bool inGroup = false;  // a digit of the present group of three is not zero
  for (int pos = 0; pos < len; ++pos) {
    const int digit = digitOf(only_number[pos]);
    const int place = (len - pos) % 3;
    if (place == 0) inGroup = false;
    if (digit != 0) {
      inGroup = true;
      if (place == 1) {
        words.add(kUnits[digit]);
      } else if (place == 0) {
        words.add(kUnits[digit]);
        words.add(kBigWords[kHundred]);
      } else if (digit != 1) {
        words.add(kTens[digit]);
      } else {
        words.add(kTeens[digitOf(only_number[++pos])]);
      }
    }
    const int left = len - pos;
    if (inGroup && left >= kFirstScale && left <= kLastScale && left % 3 == 1)
      words.add(kBigWords[kThousand - (left - kFirstScale) / 3]);
  }
}

}  // namespace MyUtils
