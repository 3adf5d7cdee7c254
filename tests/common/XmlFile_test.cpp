// An XML file of the skin, or what is wrong with it.
#include "common/XmlFile.h"

#include <gtest/gtest.h>
#include <unistd.h>
#include <cstdio>
#include <fstream>
#include <string>

namespace {

using Fault = XmlFile::Fault;

class XmlFiles : public testing::Test {
 protected:
  ~XmlFiles() override { std::remove(path.c_str()); }
  const std::string& written(const std::string& text) {
    std::ofstream(path, std::ios::binary) << text;
    return path;
  }
  const std::string path = testing::TempDir() + "XmlFile_" + std::to_string(getpid()) + ".xml";
};

TEST_F(XmlFiles, DocumentStandsInIt) {
  const XmlFile file(written("<font face=\"a\"><page id='7'/></font>"));
  EXPECT_EQ(file.fault(), Fault::NONE);
  EXPECT_EQ(file.problem(), "");
  const auto* font = file.document().first_node("font");
  ASSERT_TRUE(font);
  EXPECT_STREQ(font->first_attribute("face")->value(), "a");
  EXPECT_STREQ(font->first_node("page")->first_attribute("id")->value(), "7");
}

TEST_F(XmlFiles, MissingFileIsUnreadable) {
  const XmlFile file(path);
  EXPECT_EQ(file.fault(), Fault::UNREADABLE);
  EXPECT_EQ(file.problem(), "the file cannot be read");
  EXPECT_FALSE(file.document().first_node());
}

TEST_F(XmlFiles, EmptyFileIsAnEmptyDocument) {
  const XmlFile file(written(""));
  EXPECT_EQ(file.fault(), Fault::NONE);
  EXPECT_FALSE(file.document().first_node());
}

TEST_F(XmlFiles, DeepNestingIsNotGivenToTheParser) {
  std::string deep;
  for (int i = 0; i < 100000; ++i) deep += "<a>";
  const XmlFile file(written(deep));
  EXPECT_EQ(file.fault(), Fault::NESTED_TOO_DEEP);
  EXPECT_EQ(file.problem(), "its elements are nested too deep");
  EXPECT_FALSE(file.document().first_node());
}

TEST_F(XmlFiles, WhatTheParserRefusesIsNoXml) {
  const XmlFile file(written("<a><b></a>"));
  EXPECT_EQ(file.fault(), Fault::NO_XML);
  EXPECT_FALSE(file.problem().empty());
  EXPECT_EQ(XmlFile(written("<a b=>")).fault(), Fault::NO_XML);
}

TEST_F(XmlFiles, TextEndsAtAZero) {
  const XmlFile file(written(std::string("<a/>\0<b>", 8)));
  EXPECT_EQ(file.fault(), Fault::NONE);
  EXPECT_TRUE(file.document().first_node("a"));
  EXPECT_FALSE(file.document().first_node("b"));
}

}  // namespace
