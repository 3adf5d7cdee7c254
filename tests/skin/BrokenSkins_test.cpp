// Descriptions that a seeded hand has broken: the check says what is wrong, at a place that the file has.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <vector>

#include "CheckedFile.h"
#include "tests/support/Mutator.h"
#include "tools/skincheck/AtlasCheck.h"
#include "tools/skincheck/FontCheck.h"

namespace {

const std::string kFont = R"(<?xml version="1.0" encoding="UTF-8"?>
<font>
  <info face="Any &amp; bold" size="42" padding="0,0,0,4" backgroundColor="9,6,3,0"/>
  <common lineHeight="91" base="78"/>
  <pages>
    <page id="0" file="a.png"/>
  </pages>
  <chars count="9">
    <char id="36" x="0" y="0" width="40" height="60" xoffset="0" yoffset="20" xadvance="41"/>
    <char id="44" x="0" y="0" width="9" height="61" xoffset="-1" yoffset="30" xadvance="9"/>
    <char id="46" x="0" y="0" width="9" height="61" xoffset="-1" yoffset="30" xadvance="9"/>
    <char id="48" x="0" y="0" width="40" height="64" xoffset="0" yoffset="0" xadvance="41"/>
    <char id="49" x="8" y="0" width="40" height="64" xoffset="-2" yoffset="0" xadvance="41"/>
    <char id="50" x="16" y="0" width="40" height="64" xoffset="0" yoffset="0" xadvance="41"/>
    <char id="69" x="0" y="0" width="40" height="64" xoffset="0" yoffset="0" xadvance="41"/>
    <char id="82" x="0" y="0" width="40" height="64" xoffset="0" yoffset="0" xadvance="41"/>
    <char id="85" x="0" y="0" width="40" height="64" xoffset="0" yoffset="0" xadvance="41"/>
    <char id="8364" x="0" y="0" width="40" height="64" xoffset="0" yoffset="0" xadvance="41"/>
  </chars>
  <kernings count="2">
    <kerning first="49" second="50" amount="-1"/>
    <kerning first="69" second="85" amount="1"/>
  </kernings>
</font>
)";

const std::string kAtlas = R"(<?xml version="1.0" encoding="UTF-8"?>
<!-- four frames -->
<TextureAtlas imagePath="a.png" blendMode="ADD" backgroundColor="0,0,0,0">
  <sprite n="overlay_0.png" x="0" y="0" w="30" h="20" pX="0.5" pY="0.5" oX="10" oY="5" oW="100" oH="50"/>
  <sprite n="overlay_1.png" x="30" y="0" w="30" h="20" pX="0.5" pY="0.5" oX="70" oY="30" oW="100" oH="50"/>
  <sprite n="overlay_2.png" x="0" y="44" w="64" h="20" oX="0" oY="0" oW="100" oH="50"/>
  <sprite n="overlay_3.png" x="0" y="44" w="64" h="20" oX="0" oY="0" oW="100" oH="50"/>
</TextureAtlas>
)";

// The variable BROKEN_FILES asks for more of them.
int files() {
  const char* wanted = std::getenv("BROKEN_FILES");
  return wanted ? std::atoi(wanted) : 1000;
}

// The places of all findings lie in the file, a sentence is short and on one line.
void expectSense(const Findings& findings, const std::string& text, unsigned seed) {
  std::vector<size_t> lengths(1);
  for (const char c : text)
    if (c == '\n')
      lengths.push_back(0);
    else
      ++lengths.back();
  for (const Finding& finding : findings.list) {
    ASSERT_FALSE(finding.code.empty());
    ASSERT_FALSE(finding.text.empty());
    ASSERT_LT(finding.text.size(), 600U) << "seed " << seed;
    ASSERT_EQ(std::string::npos, finding.text.find_first_of("\r\n")) << "seed " << seed;
    ASSERT_GE(finding.line, 0);
    ASSERT_LE(static_cast<size_t>(finding.line), lengths.size()) << "seed " << seed;
    ASSERT_EQ(finding.line > 0, finding.column > 0) << "seed " << seed;
    if (finding.line == 0) continue;
    ASSERT_LE(static_cast<size_t>(finding.column), lengths[static_cast<size_t>(finding.line) - 1] + 1)
      << "seed " << seed;
  }
  EXPECT_LT(findings.list.size(), 200U) << "seed " << seed;
}

// How many of them had other findings than the good file.
template <typename Check>
int tryAll(const ScratchFolder& folder, const std::string& good, Check check) {
  writePicture(folder + "a.png", 64, 64, paintAll);
  Findings before;
  writeText(folder + "a", good);
  check(folder + "a", before);
  int changed = 0;
  for (int seed = 0; seed < files(); ++seed) {
    const std::string text = Mutator(static_cast<unsigned>(seed)).broken(good, Mutator::XML);
    writeText(folder + "a", text);
    Findings findings;
    check(folder + "a", findings);
    expectSense(findings, text, static_cast<unsigned>(seed));
    changed += describe(findings) != describe(before);
  }
  return changed;
}

TEST(BrokenSkins, FontsAreCheckedWhateverStandsInThem) {
  const ScratchFolder folder("broken-fonts");
  const int changed = tryAll(folder, kFont, [](const std::string& path, Findings& findings) {
    checkFont(path, "Fonts/currency", findings);
  });
  EXPECT_GT(changed, files() / 2);
  EXPECT_LT(changed, files()) << "some changes make no difference";
}

TEST(BrokenSkins, AnimationsAreCheckedWhateverStandsInThem) {
  const ScratchFolder folder("broken-animations");
  const int changed = tryAll(
    folder, kAtlas, [](const std::string& path, Findings& findings) { checkAtlas(path, 100, 50, findings); });
  EXPECT_GT(changed, files() / 2);
  EXPECT_LT(changed, files()) << "some changes make no difference";
}

}  // namespace
