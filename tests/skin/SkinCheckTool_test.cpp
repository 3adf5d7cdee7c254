// The check of a skin as a script or a designer runs it: output, JSON, exit codes; and the demo skin.
#include <gtest/gtest.h>

#include <fstream>
#include <nlohmann/json.hpp>
#include <regex>
#include <sstream>

#include "SmallSkin.h"
#include "ToolRun.h"

namespace fs = std::filesystem;
using Json = nlohmann::json;
using smallskin::kIcons;
using smallskin::kSkin;

namespace {

ToolRun skincheck(const std::string& arguments) { return runTool("'" SKINCHECK "' " + arguments); }

std::string quoted(const std::string& path) { return "'" + path + "'"; }

std::vector<std::string> linesOf(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

// Written once, never changed.
const std::string& original() {
  static const ScratchFolder folder("skincheck-original");
  static const std::string& root = *new std::string(folder + "");
  if (fs::is_empty(root)) smallskin::write(root);
  return root;
}

// A small skin in a folder whose name has a blank and a letter of two bytes.
class SkinCheckTool : public testing::Test {
 protected:
  SkinCheckTool() : scratch("skin check \xc3\xa4"), root(scratch + "") {
    fs::copy(original(), root, fs::copy_options::recursive);
  }
  void addWarning() { smallskin::writeText(root + kSkin + "stray.txt", ""); }
  void addError() { smallskin::writeText(root + kSkin + "Fonts/uni_font.fnt", "<font>\n  <info padding=></font>"); }

  ScratchFolder scratch;
  const std::string root;
};

}  // namespace

TEST_F(SkinCheckTool, AGoodSkinIsOneLine) {
  const ToolRun run = skincheck(quoted(root) + " --games " + quoted(root + "Games"));
  EXPECT_EQ(0, run.code);
  ASSERT_EQ(1U, linesOf(run.text).size()) << run.text;
  EXPECT_TRUE(std::regex_search(
    run.text, std::regex("^0 errors, 0 warnings; decoded skin [0-9.]+ of 60.0 MB, Reels [0-9.]+ of 40.0 MB")))
    << run.text;
}

TEST_F(SkinCheckTool, ExitCodesAreWhatScriptsRelyOn) {
  const std::string dir = quoted(root);
  EXPECT_EQ(0, skincheck(dir + " --strict").code);
  addWarning();
  EXPECT_EQ(0, skincheck(dir).code);
  EXPECT_EQ(1, skincheck(dir + " --strict --json").code);
  addError();
  EXPECT_EQ(1, skincheck(dir).code);
  EXPECT_EQ(0, skincheck("--help").code);
  for (const std::string& wrong : {std::string(), dir + " --colour", dir + " --budget 0", dir + " --budget x",
                                   dir + " " + dir, dir + " --games", dir + " --games ''", dir + " >/dev/full",
                                   dir + " --json >/dev/full", quoted(root + "nothing"), quoted(root + kSkin)})
    EXPECT_EQ(2, skincheck(wrong).code) << wrong;
}

TEST_F(SkinCheckTool, AWrongFolderIsOneLine) {
  const ToolRun run = skincheck(quoted(root + kSkin));
  ASSERT_EQ(1U, linesOf(run.text).size()) << run.text;
  EXPECT_EQ(0U, run.text.rfind("skincheck: ", 0)) << run.text;
}

TEST_F(SkinCheckTool, LinesNameFileLineAndColumn) {
  addError();
  smallskin::writeText(root + kSkin + "a\nb\x1b.txt", "");
  const std::vector<std::string> lines = linesOf(skincheck(quoted(root)).text);
  ASSERT_EQ(4U, lines.size());
  EXPECT_EQ(0U, lines[0].rfind(root + kSkin + "Fonts/uni_font.fnt:2:17: error: this is no XML: ", 0)) << lines[0];
  EXPECT_NE(std::string::npos, lines[0].find(" [xml]"));
  EXPECT_EQ(root + kSkin +
              "Fonts/uni_font.png: warning: nothing asks for the file, as \"uni_font.fnt\" is missing, cannot " +
              "be used or names another [unused]",
            lines[1]);
  EXPECT_EQ(root + kSkin + "a\\x0Ab\\x1B.txt: warning: nothing asks for the file [unused]", lines[2]);
  EXPECT_EQ(0U, lines[3].rfind("1 error, 2 warnings; decoded skin ", 0)) << lines[3];
}

TEST_F(SkinCheckTool, WhatIsNotToldOneByOneIsCountedBehindTheOthers) {
  std::ifstream file(root + kSkin + "Fonts/uni_font.fnt");
  std::ostringstream text;
  int changed = 0;
  for (std::string line; std::getline(file, line); text << line << '\n')
    if (const size_t at = line.find("xoffset=\"0\""); at != std::string::npos && changed++ < 12)
      line.replace(at, 11, "xoffset=\"x\"");
  smallskin::writeText(root + kSkin + "Fonts/uni_font.fnt", text.str());
  const std::vector<std::string> lines = linesOf(skincheck(quoted(root)).text);
  ASSERT_EQ(12U, lines.size());
  const std::string name = root + kSkin + "Fonts/uni_font.fnt:";
  for (int i = 0; i < 10; ++i) EXPECT_EQ(0U, lines[i].rfind(name + std::to_string(i + 2) + ":", 0)) << lines[i];
  EXPECT_EQ(0U, lines[10].rfind(name + "12:", 0)) << "the place of the first of them: " << lines[10];
  EXPECT_NE(std::string::npos, lines[10].find("error: and 2 more of this kind in the same file [font-attribute]"));
}

TEST_F(SkinCheckTool, SizesListEveryPictureBeforeTheLastLine) {
  const std::vector<std::string> lines = linesOf(
    skincheck(quoted(root.substr(0, root.size() - 1)) + " --sizes --games " + quoted(root + "Games/")).text);
  size_t pictures = 0;
  for (const auto& entry : fs::recursive_directory_iterator(root))
    pictures += entry.path().extension() == ".png" || entry.path().extension() == ".jpg";
  ASSERT_EQ(pictures + 1, lines.size());
  EXPECT_EQ("   8.3 MB   1920 x 1080   " + root + kSkin + "Background.png", lines[0]);
}

TEST_F(SkinCheckTool, BudgetsAreOptions) {
  smallskin::paint(root + kIcons + "paytable/InfoPage_Paytable.png", 600, 500);
  const std::string text =
    skincheck(quoted(root) + " --games " + quoted(root + "Games") + " --budget 16 --file-budget 8 --game-budget 1")
      .text;
  for (const char* limit : {"above 16 [budget]", "above 8 [budget]", "above 1 [budget]"})
    EXPECT_NE(std::string::npos, text.find(limit)) << text;
}

TEST_F(SkinCheckTool, JsonHoldsTheSameFindings) {
  addError();
  addWarning();
  smallskin::writeText(root + kSkin + "\xff.txt", "");  // no UTF-8
  const std::string arguments = quoted(root) + " --games " + quoted(root + "Games");
  const std::vector<std::string> lines = linesOf(skincheck(arguments).text);
  const Json json = Json::parse(skincheck(arguments + " --json").text);
  ASSERT_EQ(4U, json["findings"].size());
  EXPECT_EQ(1, json["errors"]);
  EXPECT_EQ(3, json["warnings"]);
  for (size_t i = 0; i < 4; ++i) {
    const Json& finding = json["findings"][i];
    std::string line = finding["file"].get<std::string>() + ":";
    if (finding.contains("line"))
      line += std::to_string(finding["line"].get<int>()) + ":" + std::to_string(finding["column"].get<int>()) + ":";
    line += " " + finding["severity"].get<std::string>() + ": " + finding["text"].get<std::string>() + " [" +
            finding["code"].get<std::string>() + "]";
    if (line.find("\xef\xbf\xbd") == std::string::npos)
      EXPECT_EQ(lines[i], line);
    else
      EXPECT_EQ(lines[i].substr(lines[i].find(": ")), line.substr(line.find(": ")));
  }
  EXPECT_EQ((Json{{"severity", "warning"},
                  {"code", "unused"},
                  {"file", root + kSkin + "stray.txt"},
                  {"text", "nothing asks for the file"}}),
            json["findings"][2]);
  ASSERT_EQ(2U, json["parts"].size());
  EXPECT_EQ("skin", json["parts"][0]["name"]);
  EXPECT_EQ(root + kSkin, json["parts"][0]["folder"]);
  EXPECT_EQ(60000000, json["parts"][0]["budget"]);
  EXPECT_EQ(
    (Json{{"file", root + kSkin + "Background.png"}, {"width", 1920}, {"height", 1080}, {"bytes", 8294400}}),
    json["parts"][0]["files"][0]);
  int64_t sum = 0;
  for (const Json& file : json["parts"][0]["files"]) sum += file["bytes"].get<int64_t>();
  EXPECT_EQ(sum, json["parts"][0]["bytes"]);
  EXPECT_EQ("Reels", json["parts"][1]["name"]);
  EXPECT_EQ(root + kIcons, json["parts"][1]["folder"]);
}

TEST(SkinCheckOfTheDemoSkin, FindsNothing) {
  const ToolRun run = skincheck("'" SKIN_ROOT "' --games '" SKIN_ROOT "/Games' --strict");
  EXPECT_EQ(0, run.code) << run.text;
  EXPECT_EQ(1U, linesOf(run.text).size()) << run.text;
}
