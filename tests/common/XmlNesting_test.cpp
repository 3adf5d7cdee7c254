#include "common/XmlNesting.h"

#include <gtest/gtest.h>
#include <algorithm>
#include <rapidxml/rapidxml.hpp>
#include <string>
#include <vector>

namespace {

std::string many(int count, const std::string& piece) {
  std::string out;
  for (int i = 0; i < count; ++i) out += piece;
  return out;
}

int depthOf(const rapidxml::xml_node<char>& node) {
  int deepest = 0;
  for (const auto* child = node.first_node(); child; child = child->next_sibling())
    deepest = std::max(deepest, depthOf(*child));
  return deepest + (node.type() == rapidxml::node_element);
}

// How deep the parser itself finds the elements; 0 for no XML.
int parsedDepth(const std::string& xml) {
  std::vector<char> text(xml.begin(), xml.end());
  text.push_back('\0');
  rapidxml::xml_document<char> document;
  try {
    document.parse<0>(text.data());
  } catch (const rapidxml::parse_error&) {
    return 0;
  }
  return depthOf(document);
}

TEST(XmlNesting, SixtyFourElementsMayStandInEachOther) {
  EXPECT_FALSE(IsNestedTooDeep((many(64, "<a>") + many(64, "</a>")).c_str()));
  EXPECT_TRUE(IsNestedTooDeep((many(65, "<a>") + many(65, "</a>")).c_str()));
  EXPECT_TRUE(IsNestedTooDeep(many(100000, "<a>").c_str()));
  EXPECT_FALSE(IsNestedTooDeep((many(100000, "<a></a>") + many(100000, "<b x='1' />")).c_str()));
}

TEST(XmlNesting, NoSignHidesAnElementFromIt) {
  const struct {
    const char* name;
    std::string piece;
  } rows[] = {{"the end of an empty element in a text", "<a>/>"},
              {"in an attribute", "<a b='/>' c=\"</a>\">"},
              {"a quotation mark in a name", "<a'>"},
              {"in an attribute's name", "<a '=\"\">"},
              {"an equals sign in a name", "<a='>"},
              {"a comment", "<!-- </a></a> --><a>"},
              {"a comment that ends late", "<!--></a>--><a>"},
              {"data", "<![CDATA[</a>]]><a>"},
              {"something unknown", "<!x '><a>"},
              {"an instruction", "<?x </a>?><a>"},
              {"a document type", "<!DOCTYPE x [ <y '> ]><a>"},
              {"what stands in the brackets of a document type", "<!DOCTYPE x [ > <c> [ ] > <c> ]><a>"},
              {"a closing tag with a space", "<a><b></b ><c/>"}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    const auto nested = [&row](int depth) { return "<r>" + many(depth, row.piece) + many(depth, "</a>") + "</r>"; };
    EXPECT_EQ(11, parsedDepth(nested(10)) - (row.piece.find("<b>") != std::string::npos));
    EXPECT_FALSE(IsNestedTooDeep(nested(60).c_str()));
    EXPECT_TRUE(IsNestedTooDeep(nested(64).c_str()));
  }
}

TEST(XmlNesting, NamesEndWhereTheParserEndsThem) {
  for (int sign = 1; sign < 256; ++sign) {
    const char one = static_cast<char>(sign);
    for (const std::string& tag : {std::string("<a") + one + "b c='1'>", std::string("<a b") + one + "c='1'>",
                                   std::string("<a b='1'") + one + "c='1'>", std::string("<a b='1") + one + "'>"}) {
      const std::string deep = many(65, tag) + many(65, "</a>");
      EXPECT_EQ(parsedDepth(deep) == 65, IsNestedTooDeep(deep.c_str())) << tag << " " << sign;
    }
  }
}

TEST(XmlNesting, WhatIsNoXmlIsNotDeep) {
  for (const char* text : {"", "text", "<", "<a", "<a b", "<a b=", "<a b='", "</", "<!", "<!--", "<![CDATA[", "<?",
                           "<!DOCTYPE ", "<!DOCTYPE [[", "<a b=c>", "<>"})
    EXPECT_FALSE(IsNestedTooDeep(text)) << text;
  EXPECT_FALSE(IsNestedTooDeep(("<a b=c>" + many(100, "<a>")).c_str())) << "the parser stops at the first";
}

}  // namespace
