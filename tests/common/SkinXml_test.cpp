// An XML file of the skin, or what is wrong with it.
#include "common/SkinXml.h"

#include <gtest/gtest.h>
#include <unistd.h>
#include <cstdio>
#include <fstream>
#include <string>

namespace {

using Fault = SkinXml::Fault;

class SkinXmls : public testing::Test {
 protected:
  ~SkinXmls() override { std::remove(path.c_str()); }
  const std::string& written(const std::string& text) {
    std::ofstream(path, std::ios::binary) << text;
    return path;
  }
  const std::string path = testing::TempDir() + "SkinXml_" + std::to_string(getpid()) + ".xml";
};

TEST_F(SkinXmls, DocumentStandsInIt) {
  const SkinXml file(written("<font face=\"a\"><page id='7'/></font>"));
  EXPECT_EQ(file.fault(), Fault::NONE);
  EXPECT_EQ(file.problem(), "");
  const auto* font = file.document().first_node("font");
  ASSERT_TRUE(font);
  EXPECT_STREQ(font->first_attribute("face")->value(), "a");
  EXPECT_STREQ(font->first_node("page")->first_attribute("id")->value(), "7");
}

TEST_F(SkinXmls, MissingFileIsUnreadable) {
  const SkinXml file(path);
  EXPECT_EQ(file.fault(), Fault::UNREADABLE);
  EXPECT_EQ(file.problem(), "the file cannot be read");
  EXPECT_FALSE(file.document().first_node());
}

TEST_F(SkinXmls, FolderInItsPlaceIsUnreadable) {
  const SkinXml file(testing::TempDir());
  EXPECT_EQ(file.fault(), Fault::UNREADABLE);
  EXPECT_EQ(file.problem(), "the file cannot be read");
  EXPECT_FALSE(file.document().first_node());
}

TEST_F(SkinXmls, LongFileIsReadToItsEnd) {
  for (const size_t length : {4095u, 4096u, 4097u, 8192u, 100000u}) {
    const std::string start = "<a b='", end = "'/>";
    const std::string text(length - start.size() - end.size(), 'x');
    const SkinXml file(written(start + text + end));
    ASSERT_EQ(file.fault(), Fault::NONE) << length;
    EXPECT_EQ(file.document().first_node("a")->first_attribute("b")->value(), text);
  }
}

TEST_F(SkinXmls, EmptyFileIsAnEmptyDocument) {
  const SkinXml file(written(""));
  EXPECT_EQ(file.fault(), Fault::NONE);
  EXPECT_FALSE(file.document().first_node());
}

TEST_F(SkinXmls, DeepNestingIsNotGivenToTheParser) {
  std::string deep;
  for (int i = 0; i < 100000; ++i) deep += "<a>";
  const SkinXml file(written(deep));
  EXPECT_EQ(file.fault(), Fault::NESTED_TOO_DEEP);
  EXPECT_EQ(file.problem(), "its elements are nested too deep");
  EXPECT_FALSE(file.document().first_node());
}

TEST_F(SkinXmls, WhatTheParserRefusesIsNoXml) {
  const SkinXml file(written("<a><b></a>"));
  EXPECT_EQ(file.fault(), Fault::NO_XML);
  EXPECT_FALSE(file.problem().empty());
  EXPECT_EQ(SkinXml(written("<a b=>")).fault(), Fault::NO_XML);
}

TEST_F(SkinXmls, TextEndsAtAZero) {
  const SkinXml file(written(std::string("<a/>\0<b>", 8)));
  EXPECT_EQ(file.fault(), Fault::NONE);
  EXPECT_TRUE(file.document().first_node("a"));
  EXPECT_FALSE(file.document().first_node("b"));
}

}  // namespace
