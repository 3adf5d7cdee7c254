#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

#include "SmallSkin.h"
#include "ToolRun.h"
#include "tools/skincheck/GameCheck.h"
#include "tools/skincheck/SkinCheck.h"

// A small skin in which there is nothing to find, spoilt in one way or the other, and what is found then.
namespace spoiltskin {

namespace fs = std::filesystem;
using smallskin::kIcons;
using smallskin::kSkin;
using smallskin::paint;
using smallskin::writeText;

// A finding as a test expects it: "E code file: words of the text", the file from the root on.
using Lines = std::vector<std::string>;

struct Case {
  const char* name;
  std::function<void(const std::string& root)> spoil;
  Lines expected;
};

// Written once for all tests of this program, never changed.
inline const std::string& original() {
  static const ScratchFolder folder("skincheck-original");
  static const std::string& root = *new std::string(folder + "");
  if (fs::is_empty(root)) smallskin::write(root);
  return root;
}

inline std::string lineOf(const Finding& finding, const std::string& root) {
  EXPECT_EQ(0U, finding.file.rfind(root, 0)) << finding.file;
  return std::string(finding.severity == Severity::Error ? "E " : "W ") + finding.code + " " +
         finding.file.substr(std::min(root.size(), finding.file.size())) + ": " + finding.text;
}

// Exactly the findings that are expected, in any order; each begins and holds what is expected of it.
inline void expectFindings(const CheckReport& report, const std::string& root, const Lines& expected) {
  Lines found;
  for (const Finding& finding : report.findings) found.push_back(lineOf(finding, root));
  for (const std::string& line : expected) {
    const std::string head = line.substr(0, line.find(": ") + 2), words = line.substr(head.size());
    const auto match = std::find_if(found.begin(), found.end(), [&](const std::string& other) {
      return other.rfind(head, 0) == 0 && other.find(words) != std::string::npos;
    });
    if (match == found.end())
      ADD_FAILURE() << "not found: " << line;
    else
      found.erase(match);
  }
  for (const std::string& line : found) ADD_FAILURE() << "found besides: " << line;
}

inline CheckReport check(const std::string& root, bool games) {
  CheckOptions options;
  options.folder = root;
  if (games) options.games = root + "Games";
  return checkSkin(options);
}

// The cases of one group, each of which spoils another file, on one copy of the skin.
inline void runTogether(const std::vector<Case>& cases, bool games = false) {
  const ScratchFolder scratch("skincheck-cases");
  const std::string root = scratch + "";
  fs::copy(original(), root, fs::copy_options::recursive);
  Lines expected;
  for (const Case& c : cases) {
    c.spoil(root);
    expected.insert(expected.end(), c.expected.begin(), c.expected.end());
  }
  expectFindings(check(root, games), root, expected);
}

// Each case on a copy of the game.
inline void runGameCases(const std::vector<Case>& cases) {
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    const ScratchFolder scratch("skincheck-case");
    const std::string root = scratch + "";
    fs::copy(original() + "Games", root + "Games", fs::copy_options::recursive);
    c.spoil(root);
    CheckReport report;
    Findings findings;
    int64_t bytes = 0;
    checkGame(root + kIcons, findings, bytes);
    report.findings = findings.list;
    expectFindings(report, root, c.expected);
  }
}

inline void cutShort(const std::string& path) { fs::resize_file(path, fs::file_size(path) / 2); }

// A case that spoils one file, which is named from the root on.
inline std::function<void(const std::string&)> removed(const std::string& file) {
  return [file](const std::string& root) { ASSERT_TRUE(fs::remove(root + file)); };
}
inline std::function<void(const std::string&)> renamed(const std::string& file, const std::string& to) {
  return [file, to](const std::string& root) { fs::rename(root + file, root + to); };
}
inline std::function<void(const std::string&)> painted(const std::string& file, int width, int height,
                                                       Uint8 alpha = 255) {
  return [=](const std::string& root) { paint(root + file, width, height, alpha); };
}
// A picture saved in the format of one extension and renamed.
inline std::function<void(const std::string&)> renamedAfter(const std::string& extension, const std::string& file,
                                                            int width, int height) {
  return [=](const std::string& root) {
    paint(root + file + extension, width, height);
    fs::rename(root + file + extension, root + file);
  };
}
inline std::function<void(const std::string&)> written(const std::string& file,
                                                       const std::string& text = "no picture") {
  return [=](const std::string& root) { writeText(root + file, text); };
}
// Outlines that no character leads to.
inline std::function<void(const std::string&)> blind(const std::string& file) {
  return [file](const std::string& root) {
    std::ifstream stream(smallskin::kOutlines, std::ios::binary);
    std::string bytes{std::istreambuf_iterator<char>(stream), {}};
    for (const char* table : {"cmap", "post"}) {  // the characters' glyphs, and the glyphs' names
      const size_t entry = bytes.find(table);
      ASSERT_LT(entry, 400U);
      bytes.replace(entry, 4, "none");
    }
    writeText(root + file, bytes);
  };
}

inline const std::string kLogo = "VESPERA/TOP_SKIN/logo.png";

}  // namespace spoiltskin
