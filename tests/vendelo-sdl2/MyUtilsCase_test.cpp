#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "vendelo-sdl2/MyUtils.h"

namespace {

using MyUtils::ToLowercase;
using MyUtils::ToUppercase;

// Every lower-case letter with the capital that maps back to it, from the Unicode character data.
const char* const Pairs =
  "àÀáÁâÂãÃäÄåÅæÆçÇèÈéÉêÊëËìÌíÍîÎïÏðÐñÑòÒóÓôÔõÕöÖøØùÙúÚûÛüÜýÝþÞÿŸāĀăĂąĄćĆĉĈ"
  "ċĊčČďĎđĐēĒĕĔėĖęĘěĚĝĜğĞġĠģĢĥĤħĦĩĨīĪĭĬįĮĳĲĵĴķĶĺĹļĻľĽŀĿłŁńŃņŅňŇŋŊōŌŏŎőŐœŒŕŔ"
  "ŗŖřŘśŚŝŜşŞšŠţŢťŤŧŦũŨūŪŭŬůŮűŰųŲŵŴŷŶźŹżŻžŽͱͰͳͲͷͶͻϽͼϾͽϿάΆέΈήΉίΊαΑβΒγΓδΔεΕζΖ"
  "ηΗθΘιΙκΚλΛμΜνΝξΞοΟπΠρΡσΣτΤυΥφΦχΧψΨωΩϊΪϋΫόΌύΎώΏϗϏϙϘϛϚϝϜϟϞϡϠϣϢϥϤϧϦϩϨϫϪϭϬϯϮ"
  "ϲϹϳͿϸϷϻϺ";

// Lower-case letters whose capital belongs to another letter.
const char* const UpperOnly = "ıIſSςΣϐΒϑΘϕΦϖΠϰΚϱΡϵΕ";

std::vector<std::pair<std::string, std::string>> pairs(const std::string& text) {
  std::vector<std::string> letters;
  for (size_t i = 0; i < text.size();) {
    const size_t length = static_cast<size_t>(MyUtils::utf8_strlen(text[i]));
    letters.push_back(text.substr(i, length));
    i += length;
  }
  std::vector<std::pair<std::string, std::string>> result;
  for (size_t i = 0; i + 1 < letters.size(); i += 2) result.emplace_back(letters[i], letters[i + 1]);
  return result;
}

TEST(Case, EveryPairMapsInBothDirections) {
  const auto rows = pairs(Pairs);
  ASSERT_EQ(rows.size(), 148u);
  EXPECT_EQ(rows.front().first, "à");
  EXPECT_EQ(rows.back().first, "\u03fb");
  for (const auto& [lower, upper] : rows) {
    EXPECT_EQ(ToUppercase(lower, false), upper);
    EXPECT_EQ(ToLowercase(upper, false), lower);
    EXPECT_EQ(ToUppercase(upper, false), upper);
    EXPECT_EQ(ToLowercase(lower, false), lower);
  }
}

TEST(Case, FormsOfALetterHaveItsCapitalButAreNotItsLowerCase) {
  const auto rows = pairs(UpperOnly);
  ASSERT_EQ(rows.size(), 10u);
  for (const auto& [lower, upper] : rows) {
    EXPECT_EQ(ToUppercase(lower, false), upper);
    EXPECT_NE(ToLowercase(upper, false), lower);
  }
  EXPECT_EQ(ToLowercase("Σ", false), "σ");
  EXPECT_EQ(ToLowercase("ϴ", false), "θ");
  EXPECT_EQ(ToLowercase("İ", false), "i");
  EXPECT_EQ(ToLowercase("I", false), "i");
}

TEST(Case, TableHoldsTheLettersInCodePointOrder) {
  const auto& rows = MyUtils::SpecialChars;
  ASSERT_EQ(rows.size(), 158u);
  EXPECT_EQ(rows.front().lower, "à");
  EXPECT_EQ(rows.front().upper, "À");
  EXPECT_EQ(rows.back().lower, "\u03fb");
  EXPECT_EQ(rows.back().upper, "\u03fa");
  for (size_t i = 1; i < rows.size(); ++i) EXPECT_LT(rows[i - 1].lower, rows[i].lower);
  EXPECT_EQ(MyUtils::ToUpperSpecialCharMap.size(), 158u);
  EXPECT_EQ(MyUtils::ToLowerSpecialCharMap.size(), 150u);
}

TEST(Case, UppercaseOfTexts) {
  const struct {
    const char* input;
    const char* expected;
  } rows[] = {{"", ""},
              {"abc xyz 123", "ABC XYZ 123"},
              {"ěščřžýáíé", "ĚŠČŘŽÝÁÍÉ"},
              {"Grüße", "GRÜßE"},    // no single capital
              {"привет", "привет"},  // outside the table
              {"\u1e01", "\u1e01"},  // three bytes, outside the table
              {"😀a", "😀A"},
              {"\xe4\x62", "\xe4\x42"},  // a sequence cut by the end
              {"\x80g\xff", "\x80G\xff"},
              {"ΐŉ", "ΐŉ"}};
  for (const auto& row : rows) EXPECT_EQ(ToUppercase(row.input, false), row.expected) << row.input;
}

TEST(Case, UppercaseOfOnlyTheFirstIsThatCharacterAlone) {
  EXPECT_EQ(ToUppercase("hello", true), "H");
  EXPECT_EQ(ToUppercase("čau", true), "Č");
  EXPECT_EQ(ToUppercase("😀x", true), "😀");
  EXPECT_EQ(ToUppercase("\xc4", true), "\xc4");
  EXPECT_EQ(ToUppercase("", true), "");
}

TEST(Case, LowercaseOfTexts) {
  EXPECT_EQ(ToLowercase("ABC Ž 1", false), "abc ž 1");
  EXPECT_EQ(ToLowercase("HELLO", true), "Hello");
  EXPECT_EQ(ToLowercase("ŽLUŤOUČKÝ", true), "Žluťoučký");
  EXPECT_EQ(ToLowercase("ПРИВЕТ", false), "ПРИВЕТ");
  EXPECT_EQ(ToLowercase("\xc5", false), "\xc5");
  EXPECT_EQ(ToLowercase("", true), "");
  EXPECT_EQ(ToLowercase("X", true), "X");
}

}  // namespace
