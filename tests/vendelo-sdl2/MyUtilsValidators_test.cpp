#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "vendelo-sdl2/MyUtils.h"

namespace {

TEST(Email, AddressesAreValidOrNot) {
  const struct {
    const char* address;
    int expected;
  } rows[] = {{"a@b.c", 1},
              {"first.last@example.com", 1},
              {"o'neil+tag@mail.example.org", 1},
              {"\"John Doe\"@example.com", 1},
              {"\"a@b\"@example.com", 1},
              {"a.\"b c\"@example.com", 1},
              {"\"a\".b@example.com", 1},
              {"\"a\\ b\"@example.com", 1},
              {"", 0},
              {"a", 0},
              {"a@", 0},
              {"@b.c", 0},
              {"a.@b.c", 0},
              {"a@bc", 0},
              {"a@.bc", 0},
              {"a@b..c", 0},
              {"a@b.", 0},
              {"a@b@c.d", 0},
              {"a b@c.d", 0},
              {"a@b c.d", 0},
              {"a\x01@b.c", 0},
              {"a\x7f@b.c", 0},
              {"a@b\x7f.c", 0},
              {"a\"b\"@c.d", 0},   // quotes begin the address or follow a '.'
              {"\"ab\"c@d.e", 0},  // and end before '@' or '.'
              {"\"ab@c.d", 0},     // never closed
              {"\"a\x02\"@c.d", 0},
              {"\"a\x7f\"@c.d", 0},
              {"\"ab\"", 0},
              {"\"ab\".@c.d", 0}};
  for (const auto& row : rows) EXPECT_EQ(MyUtils::IsEmailAddressValid(row.address), row.expected) << row.address;
  for (const char special : std::string("()<>@,;:\\\"[]")) {
    EXPECT_EQ(MyUtils::IsEmailAddressValid((std::string("a") + special + "b@c.d").c_str()), 0) << special;
    EXPECT_EQ(MyUtils::IsEmailAddressValid((std::string("a@b") + special + "c.d").c_str()), 0) << special;
  }
  EXPECT_EQ(MyUtils::IsEmailAddressValid(nullptr), 0);
}

TEST(ValidateNumber, LeadingDigitsAreCopiedAndCounted) {
  const struct {
    const char* number;
    const char* digits;
  } rows[] = {{"123", "123"}, {"12a34", "12"}, {"", ""}, {"-5", ""}, {" 1", ""}, {"007.5", "007"}};
  for (const auto& row : rows) {
    std::string number = row.number;
    char digits[100] = "#";
    EXPECT_EQ(MyUtils::ValidateNumber(number.data(), digits), static_cast<int>(std::strlen(row.digits)));
    EXPECT_STREQ(digits, row.digits);
  }
}

TEST(ValidateNumber, StopsAtItsBuffer) {
  std::string number(250, '7');
  char digits[101];
  digits[100] = '#';
  EXPECT_EQ(MyUtils::ValidateNumber(number.data(), digits), 99);
  EXPECT_EQ(std::string(digits), std::string(99, '7'));
  EXPECT_EQ(digits[100], '#');
  EXPECT_EQ(MyUtils::ValidateNumber(nullptr, digits), 0);
  EXPECT_STREQ(digits, "");
  EXPECT_EQ(MyUtils::ValidateNumber(number.data(), nullptr), 0);
}

std::string words(const std::string& number) {
  char text[4000] = "#";
  MyUtils::NumberToText(number.c_str(), text);
  return text;
}

TEST(NumberToText, Numbers) {
  const struct {
    const char* number;
    const char* expected;
  } rows[] = {{"0", "ZERO "},
              {"", ""},
              {"00", ""},
              {"1", "ONE "},
              {"2", "TWO "},
              {"3", "THREE "},
              {"4", "FOUR "},
              {"5", "FIVE "},
              {"6", "SIX "},
              {"7", "SEVEN "},
              {"8", "EIGHT "},
              {"9", "NINE "},
              {"10", "TEN "},
              {"11", "ELEVEN "},
              {"12", "TWELVE "},
              {"13", "THIRTEEN "},
              {"14", "FOURTEEN "},
              {"15", "FIFTEEN "},
              {"16", "SIXTEEN "},
              {"17", "SEVENTEEN "},
              {"18", "EIGHTEEN "},
              {"19", "NINETEEN "},
              {"20", "TWENTY "},
              {"34", "THIRTY FOUR "},
              {"40", "FOURTY "},
              {"56", "FIFTY SIX "},
              {"60", "SIXTY "},
              {"78", "SEVENTY EIGHT "},
              {"80", "EIGHTY "},
              {"99", "NINETY NINE "},
              {"100", "ONE HUNDRED "},
              {"212", "TWO HUNDRED TWELVE "},
              {"705", "SEVEN HUNDRED FIVE "},
              {"1000", "ONE THOUNSAND "},
              {"1001", "ONE THOUNSAND ONE "},
              {"10000", "TEN THOUNSAND "},
              {"12345", "TWELVE THOUNSAND THREE HUNDRED FOURTY FIVE "},
              {"100000", "ONE HUNDRED THOUNSAND "},
              {"1000000", "ONE MILLION "},
              {"1000001", "ONE MILLION ONE "},
              {"1010000", "ONE MILLION TEN THOUNSAND "},
              {"0001000", "ONE THOUNSAND "},
              {"2000000000", "TWO BILLION "},
              {"3000000000000", "THREE TRILLION "},
              {"4000000000000005", "FOUR QUADRILLIONFIVE "}};  // no blank from here upward
  for (const auto& row : rows) EXPECT_EQ(words(row.number), row.expected) << row.number;
}

TEST(NumberToText, ScaleWordsUpToTheLargest) {
  const char* const scales[] = {
    "THOUNSAND ",    "MILLION ",       "BILLION ",          "TRILLION ",     "QUADRILLION",  "QUINTILLION",
    "SEXTILLION",    "SEPTILLION",     "OCTILLION",         "NONILLION",     "DECILLION",    "UNDECILLION",
    "DUODECILLION",  "TREDECILLION",   "QUATTUORDECILLION", "QUINDECILLION", "SEXDECILLION", "SEPTENDECILLION",
    "OCTODECILLION", "NOVEMDECILLION", "VIGINTILLION"};
  size_t zeros = 3;
  for (const char* scale : scales) {
    EXPECT_EQ(words("1" + std::string(zeros, '0')), std::string("ONE ") + scale);
    EXPECT_EQ(words("11" + std::string(zeros, '0')), std::string("ELEVEN ") + scale);
    zeros += 3;
  }
  EXPECT_EQ(words("1" + std::string(66, '0')), "ONE ");  // nothing beyond
}

TEST(NumberToText, StopsAtItsSlotsAndSkipsWhatIsNoDigit) {
  std::string expected;  // 150 words: 37 groups of four and two more
  for (int group = 0; group < 37; ++group) expected += "THREE HUNDRED THIRTY THREE ";
  EXPECT_EQ(words(std::string(300, '3')), expected + "THREE HUNDRED ");
  EXPECT_EQ(words("1x2"), "ONE HUNDRED TWO ");
  char text[10] = "#";
  MyUtils::NumberToText(nullptr, text);
  EXPECT_STREQ(text, "");
  MyUtils::NumberToText("5", nullptr);
}

TEST(Hex, TextToBytes) {
  const struct {
    const char* text;
    unsigned room;
    std::vector<unsigned char> expected;
  } rows[] = {{"00ff", 8, {0x00, 0xff}},
              {"ABCdef", 8, {0xab, 0xcd, 0xef}},
              {"ABC", 8, {0x0a, 0xbc}},
              {"7", 8, {0x07}},
              {"", 8, {}},
              {"112233", 2, {0x22, 0x33}},
              {"112233", 0, {}}};
  for (const auto& row : rows) {
    unsigned char bytes[8];
    std::memset(bytes, 0x5a, sizeof bytes);
    unsigned length = row.room;
    EXPECT_EQ(MyUtils::ASCIIHexToBinHex(row.text, bytes, &length), bytes);
    ASSERT_EQ(length, row.expected.size()) << row.text;
    EXPECT_EQ(std::vector<unsigned char>(bytes, bytes + length), row.expected) << row.text;
    EXPECT_EQ(bytes[length], 0x5a);
  }
  unsigned char bytes[8];
  unsigned length = 8;
  EXPECT_EQ(MyUtils::ASCIIHexToBinHex(nullptr, bytes, &length), nullptr);
  EXPECT_EQ(MyUtils::ASCIIHexToBinHex("00", nullptr, &length), nullptr);
  EXPECT_EQ(MyUtils::ASCIIHexToBinHex("00", bytes, nullptr), nullptr);
}

TEST(Hex, BytesToText) {
  unsigned char bytes[] = {0x00, 0x1f, 0xa0, 0xff};
  char text[9] = "#";
  unsigned length = 4;
  EXPECT_EQ(MyUtils::BinHexToASCIIHex(bytes, text, &length), text);
  EXPECT_STREQ(text, "001FA0FF");
  EXPECT_EQ(length, 8u);
  length = 0;
  MyUtils::BinHexToASCIIHex(bytes, text, &length);
  EXPECT_STREQ(text, "");
  EXPECT_EQ(length, 0u);
  EXPECT_EQ(MyUtils::BinHexToASCIIHex(nullptr, text, &length), nullptr);
  EXPECT_EQ(MyUtils::BinHexToASCIIHex(bytes, nullptr, &length), nullptr);
  EXPECT_EQ(MyUtils::BinHexToASCIIHex(bytes, text, nullptr), nullptr);
}

}  // namespace
