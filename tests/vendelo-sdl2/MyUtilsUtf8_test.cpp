#include <gtest/gtest.h>

#include "vendelo-sdl2/MyUtils.h"

namespace {

TEST(Utf8, LengthFollowsTheFirstByte) {
  for (int byte = 0; byte < 256; ++byte) {
    const int expected = byte < 0x80   ? 1
                         : byte < 0xc0 ? 0
                         : byte < 0xe0 ? 2
                         : byte < 0xf0 ? 3
                         : byte < 0xf8 ? 4
                         : byte < 0xfc ? 5
                         : byte < 0xfe ? 6
                                       : 0;
    EXPECT_EQ(MyUtils::utf8_strlen(static_cast<char>(byte)), expected) << byte;
  }
}

TEST(Utf8, CodePoints) {
  const struct {
    const char* text;
    int codePoint;
    int length;
  } rows[] = {{"A", 'A', 1},
              {"", 0, 1},
              {"\x7f", 127, 1},
              {"\u0080", 0x80, 2},
              {"é", 0xe9, 2},
              {"\u07ff", 0x7ff, 2},
              {"\u0800", 0x800, 3},
              {"€", 0x20ac, 3},
              {"\ud7ff"
               "",
               0xd7ff, 3},
              {"\uffff", 0xffff, 3},
              {"\xed\xa0\x80", -1, 3},  // surrogates
              {"\xed\xbf\xbf", -1, 3},
              {"\U00010000", 0x10000, 4},
              {"😀", 0x1f600, 4},
              {"\U0010ffff", 0x10ffff, 4},
              {"\xf7\xbf\xbf\xbf", 0x1fffff, 4},
              {"\xf8\x88\x80\x80\x80", -1, 5},
              {"\xfc\x84\x80\x80\x80\x80", -1, 6},
              {"\x80", -1, 0},
              {"\xbf", -1, 0},
              {"\xff", -1, 0},
              {"\xc3\x29", (0xc3 - 192) * 64 + (0x29 - 128), 2},  // continuation bytes are taken as they are
              {"\xc3", -1, 2},                                    // cut by the end of the text
              {"\xe2\x82", -1, 3},
              {"\xf0\x9f\x98", -1, 4}};
  for (const auto& row : rows) {
    const char* end = nullptr;
    EXPECT_EQ(MyUtils::GetUTF8CodePoint(row.text, &end), row.codePoint) << row.text;
    EXPECT_EQ(end - row.text, row.length) << row.text;
    EXPECT_EQ(MyUtils::GetUTF8CodePoint(row.text, nullptr), row.codePoint) << row.text;
  }
  const char* end = "";
  EXPECT_EQ(MyUtils::GetUTF8CodePoint(nullptr, &end), -1);
  EXPECT_EQ(end, nullptr);
}

}  // namespace
