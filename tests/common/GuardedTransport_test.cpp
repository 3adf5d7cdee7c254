#include "common/GuardedTransport.h"

#include <gtest/gtest.h>

#include <memory>
#include <xmlrpc-c/girerr.hpp>

#include "LinkTestSupport.h"

using linktest::replyXml;

namespace {

struct Case {
  const char* name;
  std::string xml;
  bool unreadable;
  std::string text;
};

void PrintTo(const Case& c, std::ostream* out) { *out << c.name; }

std::string utf16(const std::string& ascii, bool littleEndian, bool mark) {
  std::string out = mark ? (littleEndian ? "\xFF\xFE" : "\xFE\xFF") : "";
  for (const char c : ascii) out += littleEndian ? std::string{c, '\0'} : std::string{'\0', c};
  return out;
}

// An integer in a document of two bytes a character, of which the last one is not ASCII.
std::string utf16I8(char high, char low) {
  const std::string whole = utf16(replyXml("<i8>1@</i8>"), true, true);
  const size_t at = whole.find('@');
  return whole.substr(0, at) + low + high + whole.substr(at + 2);
}

std::string i8With(const std::string& reference) { return replyXml("<i8>1" + reference + "</i8>"); }

const std::string Bad = replyXml("<i8>abc</i8>");

const Case Cases[] = {
  {"Plain", replyXml("<i8>5</i8>"), false, ""},
  {"Largest", replyXml("<i8>9223372036854775807</i8>"), false, ""},
  {"Smallest", replyXml("<i8>-9223372036854775808</i8>"), false, ""},
  {"PlusSign", replyXml("<i8>+5</i8>"), false, ""},
  {"OneTooLarge", replyXml("<i8>9223372036854775808</i8>"), true, "9223372036854775808"},
  {"OneTooSmall", replyXml("<i8>-9223372036854775809</i8>"), true, "-9223372036854775809"},
  {"Letters", Bad, true, "abc"},
  {"PrefixedTooLarge", replyXml("<ex:i8>99999999999999999999</ex:i8>"), true, "99999999999999999999"},
  {"PrefixedGood", replyXml("<ex:i8>12</ex:i8>"), false, ""},
  {"TrailingSpace", replyXml("<i8>5 </i8>"), true, "5 "},
  {"LeadingSpace", replyXml("<i8> 5</i8>"), true, " 5"},
  {"LeadingTab", replyXml("<i8>\t5</i8>"), true, "\t5"},
  {"LeadingReturn", replyXml("<i8>\r5</i8>"), true, "\r5"},
  {"LeadingLineEnd", replyXml("<i8>\n5</i8>"), true, "\n5"},
  {"LeadingVerticalTab", replyXml("<i8>\v5</i8>"), true, "\v5"},
  {"LeadingFormFeed", replyXml("<i8>\f5</i8>"), true, "\f5"},
  {"Hexadecimal", replyXml("<i8>0x10</i8>"), true, "0x10"},
  {"Fraction", replyXml("<i8>5.0</i8>"), true, "5.0"},
  {"Empty", replyXml("<i8></i8>"), true, ""},
  {"SelfClosing", replyXml("<i8/>"), true, ""},
  {"SelfClosingWithSpace", replyXml("<i8 />"), true, ""},
  {"SpaceInTags", replyXml("<i8 \n>abc</i8\t>"), true, "abc"},
  {"LineEndsInTags", replyXml("<i8\r\n>abc</i8\r\n>"), true, "abc"},
  {"TabInTags", replyXml("<i8\ta='1'>abc</i8>"), true, "abc"},
  {"SpaceInTagsGood", replyXml("<i8 \n>7</i8\t>"), false, ""},
  {"Attribute", replyXml("<i8 a=\"1\">abc</i8>"), true, "abc"},
  {"AttributeWithGreater", replyXml("<i8 a='>' b=\"/>\">abc</i8>"), true, "abc"},
  {"AttributeWithGreaterGood", replyXml("<i8 a='>9x'>9</i8>"), false, ""},
  {"AttributeEndsInSlash", replyXml("<i8 a='/'>3</i8>"), false, ""},
  {"CData", replyXml("<i8><![CDATA[abc]]></i8>"), true, "abc"},
  {"CDataGood", replyXml("<i8><![CDATA[12]]></i8>"), false, ""},
  {"CDataInPieces", replyXml("<i8>1<![CDATA[2]]>3<![CDATA[x]]></i8>"), true, "123x"},
  {"CDataEmpty", replyXml("<i8>1<![CDATA[]]>3</i8>"), false, ""},
  {"CommentInside", replyXml("<i8>1<!-- x -->2</i8>"), false, ""},
  {"CommentInsideBad", replyXml("<i8>1<!-- 2 -->z</i8>"), true, "1z"},
  {"InstructionInside", replyXml("<i8>1<?x abc?>2</i8>"), false, ""},
  {"InstructionInsideWithSigns", replyXml("<i8>1<?x > ' \" ?>2</i8>"), false, ""},
  {"InstructionInsideBad", replyXml("<i8>1<?x > ' ?>z</i8>"), true, "1z"},
  {"CharacterReference", replyXml("<i8>&#49;&#x32;</i8>"), false, ""},
  {"CharacterReferenceBad", replyXml("<i8>1&#x61;</i8>"), true, "1a"},
  {"CharacterReferenceOfTheLastOne", i8With("&#127;"), true, "1\x7f"},
  {"CharacterReferenceBehindTheLastOne", i8With("&#128;"), true, "1?"},
  {"CharacterReferenceOfADigitAnd256", i8With("&#305;"), true, "1?"},
  {"CharacterReferenceOfNothing", i8With("&#0;"), true, "1?"},
  {"CharacterReferenceOfTheFirst", i8With("&#1;"), true, "1\x01"},
  {"CharacterReferenceWithACapitalX", i8With("&#X32;"), true, "1?"},
  {"CharacterReferenceWithoutANumber", i8With("&#;"), true, "1?"},
  {"CharacterReferenceWithZeros", i8With("&#" + std::string(60, '0') + "50;"), false, ""},
  {"CharacterReferenceWithTooManyZeros", i8With("&#" + std::string(61, '0') + "50;"), true,
   "1?#" + std::string(61, '0') + "50;"},
  {"Entity", replyXml("<i8>&lt;</i8>"), true, "?"},
  {"EntityOfASign", i8With("&amp;"), true, "1?"},
  {"EntityBesideGoodOnes", replyXml("<string>&amp;&lt;&#49;</string><i8>7</i8>"), false, ""},
  {"OverflowInPieces", replyXml("<i8>9223372036854775<!---->808</i8>"), true, "9223372036854775808"},
  {"SpaceBehind", replyXml("<i8>5</i8> \n"), false, ""},
  {"OtherElementInside", replyXml("<i8>1<b>2</b>x</i8>"), true, "12x"},
  {"Utf16BigEndianIsReadFromItsFirstSign", utf16("<!ENTITY", false, true), true, "<!ENTITY"},
  {"InAComment", replyXml("<int>1</int><!-- <i8>abc</i8> -->"), false, ""},
  {"InACommentThatBeginsWithASign", replyXml("<int>1</int><!--> <i8>abc</i8> -->"), false, ""},
  {"InACDataText", replyXml("<string><![CDATA[<i8>abc</i8>]]></string>"), false, ""},
  {"InAnEscapedText", replyXml("<string>&lt;i8>abc&lt;/i8></string>"), false, ""},
  {"InAnInstruction", "<?x <i8>abc</i8> ?>" + replyXml("<int>1</int>"), false, ""},
  {"InAnInstructionBehindItsGreater", "<?x > <i8>abc</i8> ?>" + replyXml("<int>1</int>"), false, ""},
  {"BehindAnInstructionWithQuotes", "<?x ' \" ?>" + Bad, true, "abc"},
  {"BehindADeclarationOfTheEncoding", "<?xml version='1.0' encoding=\"ISO-8859-1\"?><a>\xE4</a>" + Bad, true,
   "abc"},
  {"CommentLooksOpenInText", replyXml("<string>--></string><i8>abc</i8>"), true, "abc"},
  {"OtherElements", replyXml("<int>abc</int><i88>abc</i88><xi8>abc</xi8>"), false, ""},
  {"SecondOne", replyXml(linktest::arrayXml({"<i8>5</i8>", "<i8>x</i8>"})), true, "x"},
  {"Utf16LittleEndian", utf16(Bad, true, true), true, "abc"},
  {"Utf16BigEndian", utf16(Bad, false, true), true, "abc"},
  {"Utf16LittleEndianNoMark", utf16(Bad, true, false), true, "abc"},
  {"Utf16BigEndianNoMark", utf16(Bad, false, false), true, "abc"},
  {"Utf16Good", utf16(replyXml("<i8>5</i8>"), true, true), false, ""},
  {"Utf16LastAsciiSign", utf16I8('\0', '\x7f'), true, "1\x7f"},
  {"Utf16FirstOtherSign", utf16I8('\0', '\x80'), true, "1?"},
  {"Utf16OtherSignThatEndsLikeADigit", utf16I8('\x01', '2'), true, "1?"},
  {"Utf16BigEndianGood", utf16(replyXml("<i8>5</i8>"), false, true), false, ""},
  {"Utf16CutInACharacter", utf16(Bad, true, true) + "<", true, "abc"},
  {"HalfOfALittleEndianMark", "\xFF" + Bad, true, "abc"},
  {"OtherHalfOfALittleEndianMark", "x\xFE" + Bad, true, "abc"},
  {"HalfOfABigEndianMark", "\xFE" + Bad, true, "abc"},
  {"OtherHalfOfABigEndianMark", "x\xFF" + Bad, true, "abc"},
  {"BeginsWithZeros", std::string(2, '\0') + Bad, true, "abc"},
  {"Utf16BeginsWithTheFirstSign", std::string("\0\1", 2) + utf16(Bad, false, false), true, "abc"},
  {"BehindADeclarationWithoutAName", "<!><i8>abc</i8>", true, "abc"},
  {"DeclaresEntities", "<!DOCTYPE m [<!ENTITY a \"<i8>abc</i8>\">]>" + replyXml("&a;"), true, "<!ENTITY"},
  {"DeclaresParameterEntities", "<!DOCTYPE m [ <!ENTITY % p 'x'> ]>" + replyXml("<int>1</int>"), true, "<!ENTITY"},
  {"EntityDeclaredInAComment", "<!DOCTYPE m [<!-- <!ENTITY a 'b'> -->]>" + replyXml("<int>1</int>"), false, ""},
  {"DoctypeHidesACommentInQuotes", "<!DOCTYPE m SYSTEM '<!--'>" + Bad, true, "abc"},
  {"DoctypeQuotesABracket", "<!DOCTYPE m SYSTEM '>[' [<!ELEMENT m ANY>]>" + Bad, true, "abc"},
  {"AttributeListHidesAComment", "<!DOCTYPE m [<!ATTLIST m a CDATA \"<!--\">]>" + Bad, true, "abc"},
  {"NoXml", "hello", false, ""},
  {"Nothing", "", false, ""},
  {"OneByte", "<", false, ""},
  {"CutTag", "<i8", false, ""},
  {"CutText", "<i8>abc", false, ""},
  {"CutAttribute", "<i8 a=\"", false, ""},
  {"CutCData", "<i8><![CDATA[a", false, ""},
  {"CutComment", "<!-- <i8>abc</i8>", false, ""},
  {"CutReference", "<i8>&#4", false, ""},
};

class UnreadableI8 : public testing::TestWithParam<Case> {};

}  // namespace

TEST_P(UnreadableI8, IsFoundWhereTheLibraryWouldReadIt) {
  std::string text;
  EXPECT_EQ(GetParam().unreadable, findUnreadableI8(GetParam().xml, text));
  EXPECT_EQ(GetParam().text, text);
}

// What the guard lets through, the library must survive. (The other direction would end the test.)
TEST_P(UnreadableI8, WhatPassesTheGuardPassesTheParserAlive) {
  std::string text;
  if (!findUnreadableI8(GetParam().xml, text)) {
    XmlRpcEnv env;
    xmlrpc_value* value = nullptr;
    int faultCode = 0;
    const char* faultString = nullptr;
    xmlrpc_parse_response2(env.get(), GetParam().xml.c_str(), GetParam().xml.size(), &value, &faultCode,
                           &faultString);
    const XmlRpcReference reference(value);
    EXPECT_TRUE(env.failed() || value != nullptr);
  } else {
    EXPECT_TRUE(GetParam().unreadable);
  }
}

INSTANTIATE_TEST_SUITE_P(Documents, UnreadableI8, testing::ValuesIn(Cases),
                         [](const auto& info) { return std::string(info.param.name); });

TEST(GuardedTransport, EveryCutOfABadReplyIsSurvived) {
  const std::string whole =
    "<!DOCTYPE m SYSTEM 'x'>" + replyXml("<i8 a='b'>1<![CDATA[2]]><!-- c -->&#49;<?p q?>x</i8>");
  for (size_t length = 0; length < whole.size(); ++length) {
    std::string text;
    findUnreadableI8(whole.substr(0, length), text);
    XmlRpcEnv env;
    xmlrpc_value* value = nullptr;
    int faultCode = 0;
    const char* faultString = nullptr;
    xmlrpc_parse_response2(env.get(), whole.c_str(), length, &value, &faultCode, &faultString);
    EXPECT_TRUE(env.failed()) << length;
  }
  std::string text;
  EXPECT_TRUE(findUnreadableI8(whole, text));
  EXPECT_EQ("121x", text);
}

TEST(GuardedTransport, AMegabyteOfAmpersandsIsLookedThroughOnce) {
  std::string text;
  EXPECT_FALSE(findUnreadableI8(std::string(1 << 20, '&'), text));
}

namespace {

struct Wrapped {
  linktest::FakeTransport* inner = new linktest::FakeTransport;
  xmlrpc_c::clientXmlTransportPtr guard{new GuardedTransport(xmlrpc_c::clientXmlTransportPtr(inner))};

  std::string call(const std::string& request) {
    std::string reply;
    xmlrpc_c::carriageParm_http0 carriageParm("http://127.0.0.1:1/KSL");
    guard->call(&carriageParm, request, &reply);
    return reply;
  }
};

}  // namespace

TEST(GuardedTransport, HandsRequestAndGoodReplyOn) {
  Wrapped wrapped;
  wrapped.inner->answer("m", replyXml("<i8>5</i8>"));
  EXPECT_EQ(replyXml("<i8>5</i8>"), wrapped.call("<methodName>m</methodName>"));
  EXPECT_EQ((std::vector<std::string>{"<methodName>m</methodName>"}), wrapped.inner->requests());
}

TEST(GuardedTransport, ABadReplyIsAnErrorThatQuotesIt) {
  Wrapped wrapped;
  wrapped.inner->answer("m", replyXml("<i8>" + std::string(100, 'x') + "</i8>"));
  try {
    wrapped.call("<methodName>m</methodName>");
    FAIL() << "not thrown";
  } catch (const girerr::error& error) {
    EXPECT_EQ("The reply holds an unreadable <i8>: \"" + std::string(64, 'x') + "\"", error.what());
  }
}

TEST(GuardedTransport, ErrorsOfTheInnerTransportPassThrough) {
  Wrapped wrapped;
  wrapped.inner->answer("m", [](const std::string&) -> std::string { throw girerr::error("refused"); });
  try {
    wrapped.call("<methodName>m</methodName>");
    FAIL() << "not thrown";
  } catch (const girerr::error& error) {
    EXPECT_STREQ("refused", error.what());
  }
}

TEST(GuardedTransport, TheInterruptReachesTheInnerTransport) {
  class Interruptible : public linktest::FakeTransport {
   public:
    void setInterrupt(int* const interruptP) override { seen = interruptP; }
    int* seen = nullptr;
  };
  auto* inner = new Interruptible;
  const xmlrpc_c::clientXmlTransportPtr guard(new GuardedTransport(xmlrpc_c::clientXmlTransportPtr(inner)));
  int flag = 0;
  guard->setInterrupt(&flag);
  EXPECT_EQ(&flag, inner->seen);
}
