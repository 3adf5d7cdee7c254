#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "kslplatform/LocalUtils.h"
#include "vendelo-sdl2/MyUtils.h"

namespace {

using Strings = std::vector<std::string>;

TEST(Text, StringsAreSplitAtTheDelimiter) {
  const struct {
    const char* phrase;
    const char* delimiter;
    bool deleteEmpty;
    Strings expected;
  } rows[] = {{"a,b,c", ",", false, {"a", "b", "c"}},
              {"a,,c", ",", false, {"a", "", "c"}},
              {"a,,c", ",", true, {"a", "c"}},
              {",a", ",", false, {"", "a"}},
              {",a", ",", true, {"a"}},
              {"a,", ",", false, {"a", ""}},
              {"a,", ",", true, {"a", ""}},  // what is left at the end is kept always
              {"", ",", false, {""}},
              {"", ",", true, {""}},
              {",", ",", true, {""}},
              {"a<>b<>c", "<>", false, {"a", "b", "c"}},
              {"aaa", "aa", false, {"", "a"}},
              {"abc", "", false, {"abc"}},
              {"abc", "x", true, {"abc"}}};
  for (const auto& row : rows)
    EXPECT_EQ(MyUtils::string2vector(row.phrase, row.delimiter, row.deleteEmpty), row.expected)
      << row.phrase << " at " << row.delimiter;
}

TEST(Text, TrimTakesBlanksOnly) {
  const struct {
    const char* input;
    const char* expected;
  } rows[] = {{"", ""},    {"   ", ""}, {"a", "a"},         {"  a b  ", "a b"},
              {"a ", "a"}, {" a", "a"}, {"\ta\n", "\ta\n"}, {" \t ", "\t"}};
  for (const auto& row : rows) {
    EXPECT_EQ(MyUtils::trim(row.input), row.expected);
    std::string text = row.input;
    MyUtils::trimString(text);
    EXPECT_EQ(text, row.expected);
  }
}

TEST(Text, ReplacementsAreNotSearchedAgain) {
  const struct {
    const char* input;
    const char* from;
    const char* to;
    const char* expected;
  } rows[] = {
    {"aXbX", "X", "YY", "aYYbYY"}, {"aaa", "a", "aa", "aaaaaa"}, {"aaaa", "aa", "b", "bb"}, {"abc", "b", "", "ac"},
    {"aabb", "ab", "", "ab"},      {"abc", "x", "y", "abc"},     {"abc", "", "y", "abc"},   {"", "a", "b", ""}};
  for (const auto& row : rows) {
    std::string text = row.input;
    MyUtils::StringReplace(text, row.from, row.to);
    EXPECT_EQ(text, row.expected);
  }
}

TEST(Text, XmlEntitiesCollapseInTheirOrder) {
  const struct {
    const char* input;
    const char* expected;
  } rows[] = {{"&quot;&apos;&amp;&lt;&gt;", "\"'&<>"},
              {"&amp;lt;", "<"},
              {"&amp;gt;", ">"},
              {"&amp;quot;", "&quot;"},  // quotes were looked for before the ampersand
              {"&amp;apos;", "&apos;"},
              {"&amp;amp;", "&amp;"},
              {"a & b", "a & b"},
              {"&lt;b&gt;Win&lt;/b&gt;", "<b>Win</b>"},
              {"&LT;", "&LT;"}};
  for (const auto& row : rows) {
    std::string text = row.input;
    MyUtils::UnescapeXml(text);
    EXPECT_EQ(text, row.expected);
  }
}

TEST(Text, TicketNumbersAreMaskedAndKeepTheirDashes) {
  const struct {
    const char* input;
    const char* expected;
  } rows[] = {{"1234-5678", "****-5678"},
              {"12-3456-7890", "**-****-7890"},
              {"1234567-89", "*****67-89"},
              {"123456", "**3456"},
              {"1234", "1234"},
              {"12", "12"},
              {"", ""},
              {"--", ""},
              {"-1234-5678", "-****-5678"},
              {"1234--5678", "****-5678"},  // an empty part takes its dash along
              {"1234-5678-", "****-5678"}};
  for (const auto& row : rows) EXPECT_EQ(MyUtils::CreateLoggableTicketNumber(row.input), row.expected) << row.input;
}

TEST(Text, Base64Alphabet) {
  EXPECT_STREQ(base64_chars, "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/");
}

TEST(Text, ControlCharactersAndLineEndsBecomeEscapesAndAllElseStays) {
  const struct {
    std::string text, escaped;
  } rows[] = {
    {"", ""},
    {"plain \\n text: 100 %, caf\u00e9 \u20ac \U0001f3b0 \u00a0",
     "plain \\n text: 100 %, caf\u00e9 \u20ac \U0001f3b0 \u00a0"},
    {"a\nb\r\nc", "a\\nb\\r\\nc"},
    {"\a\b\t\v\f", "\\a\\b\\t\\v\\f"},
    {std::string(1, '\0') + "\x01\x06\x0e\x1b[31m\x1f \x7f~", "\\x00\\x01\\x06\\x0e\\x1b[31m\\x1f \\x7f~"},
    {"\u0080\u009b31m\u009f\u00a0", "\\u0080\\u009b31m\\u009f\u00a0"},  // a terminal takes them as commands, too
    {"x\u2028y\u2029z\u2027\u202a", "x\\u2028y\\u2029z\u2027\u202a"},
    {"no UTF-8: \xc2 \xff\x9b \xe2\x80", "no UTF-8: \xc2 \xff\x9b \xe2\x80"},
    {"\xc2", "\xc2"},
  };
  for (const auto& row : rows) EXPECT_EQ(MyUtils::EscapeControls(row.text), row.escaped);
}

}  // namespace
