// What the skin's check says about animations: each finding with its place, and nothing about a good one.
#include "tools/skincheck/AtlasCheck.h"

#include "CheckedFile.h"
#include "SkinFiles.h"

namespace {

// A place of 100 by 50, a picture of 64 by 64.
const std::string kAtlas = R"(<TextureAtlas imagePath="a.png" blendMode="ADD" backgroundColor="0,0,0,0">
  <sprite n="a_8" x="0" y="0" w="30" h="20" oX="10" oY="5" oW="100" oH="50"/>
  <sprite n="a_9" x="30" y="0" w="30" h="20" oX="70" oY="30" oW="100" oH="50"/>
  <sprite n="a_10" x="0" y="44" w="64" h="20" oX="0" oY="0" oW="100" oH="50"/>
</TextureAtlas>
)";

constexpr Severity kError = Severity::Error, kWarning = Severity::Warning;

const SpoiltFile kSpoilt[] = {
  {"NotClosed", "</TextureAtlas>\n", "", {kError, "xml", 5, 1}},
  {"OtherRoot", kAtlas, "<plist>\n</plist>", {kError, "atlas-form", 1, 1}},
  {"NoFrames", kAtlas, "\n<TextureAtlas imagePath=\"a.png\"/>", {kError, "atlas-form", 2, 1}},
  {"SubTextures",
   kAtlas,
   "<TextureAtlas imagePath=\"a.png\">\n <SubTexture name=\"a\" x=\"0\"/>\n</TextureAtlas>",
   {kError, "atlas-form", 2, 2}},
  {"NoPicture", " imagePath=\"a.png\"", "", {kError, "atlas-picture", 1, 1}},
  {"PictureMissing", "a.png", "none.png", {kError, "atlas-picture", 1, 15}},
  {"PictureUnreadable", "a.png", "words.png", {kError, "atlas-picture", 1, 15}},
  {"PictureByFallback", "a.png", "a.jpg", {kWarning, "fallback", 1, 15}},
  {"BlendMode", "ADD", "add", {kError, "atlas-blend", 1, 33}},
  {"Background", "0,0,0,0", "0,0,0", {kWarning, "atlas-background", 1, 49}},
  {"NoName", " n=\"a_8\"", "", {kError, "atlas-attribute", 2, 3}},
  {"NoX", " x=\"30\"", "", {kError, "atlas-attribute", 3, 3}},
  {"NoNumber", "oX=\"10\"", "oX=\"ten\"", {kError, "atlas-attribute", 2, 45}},
  {"Decimals", "oX=\"10\"", "oX=\"10.5\"", {kWarning, "atlas-attribute", 2, 45}},
  {"Turned", "oX=\"10\"", "r=\"y\" oX=\"10\"", {kError, "atlas-rotated", 2, 45}},
  {"OutsideRight", "x=\"30\"", "x=\"35\"", {kError, "atlas-rect", 3, 3}},
  {"OutsideBelow", "y=\"44\"", "y=\"45\"", {kError, "atlas-rect", 4, 3}},
  {"OutsideAbove", "y=\"44\"", "y=\"-1\"", {kError, "atlas-rect", 4, 3}},
  {"NoWidth", "w=\"30\"", "w=\"0\"", {kError, "atlas-rect", 2, 3}},
  {"FirstSize", "oW=\"100\"", "oW=\"110\"", {kError, "atlas-size", 2, 3}},
  {"LaterSize", "oX=\"0\" oY=\"0\" oW=\"100\"", "oX=\"0\" oY=\"0\" oW=\"110\"", {kWarning, "atlas-size", 4, 3}},
  {"OutOfItsWhole", "oX=\"70\"", "oX=\"71\"", {kWarning, "atlas-frame", 3, 3}},
  {"Order", "a_9", "a_11", {kWarning, "atlas-order", 4, 3}},
  {"OrderWithZeros", "a_9", "a_0011.png", {kWarning, "atlas-order", 4, 3}},
};

class AtlasCheck : public testing::Test {
 protected:
  AtlasCheck() {
    writePicture(folder + "a.png", 64, 64, paintAll);
    writeText(folder + "words.png", "no picture");
  }
  Findings check(const std::string& text) {
    Findings findings;
    writeText(path, text);
    checkAtlas(path, 100, 50, findings);
    return findings;
  }
  const ScratchFolder folder{"atlas-check"};
  std::string path = folder + "a.xml";
};

TEST_F(AtlasCheck, SaysNothingOfAGoodOne) {
  const Findings findings = check(kAtlas);
  EXPECT_EQ("", describe(findings));
  EXPECT_EQ((std::vector<std::string>{path, folder + "a.png"}), findings.used);
  ASSERT_EQ(1U, findings.decoded.size());
  EXPECT_EQ(64 * 64 * 4, findings.decoded[0].bytes);
}

TEST_F(AtlasCheck, NamesWhatIsWrongAndWhere) {
  for (const SpoiltFile& file : kSpoilt) {
    SCOPED_TRACE(file.name);
    expectOne(check(replaced(kAtlas, file.from, file.to)), path, file.expected);
  }
}

TEST_F(AtlasCheck, AllFramesOfAnotherSizeAreOneFinding) {
  std::string text = kAtlas;
  for (int i = 0; i < 3; ++i) text = replaced(text, "oW=\"100\"", "oW=\"90\"");
  // The second frame stands out of the smaller whole.
  const Findings findings = check(replaced(text, "oX=\"70\"", "oX=\"60\""));
  expectOne(findings, path, {kError, "atlas-size", 2, 3});
}

TEST_F(AtlasCheck, AFrameLargerThanItsWholeIsAnError) {
  const Findings findings = check(replaced(kAtlas, "oX=\"0\" oY=\"0\" oW=\"100\"", "oX=\"0\" oY=\"0\" oW=\"60\""));
  ASSERT_EQ(2U, findings.list.size()) << describe(findings);
  EXPECT_EQ("atlas-frame", findings.list[0].code);
  EXPECT_EQ(kError, findings.list[0].severity);
  EXPECT_EQ("atlas-size", findings.list[1].code);
}

TEST_F(AtlasCheck, WithoutASizeOfTheWholeTheFrameIsTheWhole) {
  const std::string text = replaced(kAtlas, " oW=\"100\" oH=\"50\"", "");
  const Findings findings = check(text);
  ASSERT_FALSE(findings.list.empty());
  EXPECT_NE(describe(findings).find("30 x 20"), std::string::npos) << describe(findings);
}

TEST_F(AtlasCheck, NamesWithoutNumbersHaveNoOrder) {
  EXPECT_EQ("", describe(check(replaced(replaced(kAtlas, "a_9", "z"), "a_10", "b"))));
  EXPECT_EQ("", describe(check(replaced(replaced(kAtlas, "a_9", "b_9"), "a_10", "a_1")))) << "other stems";
}

TEST_F(AtlasCheck, AnOverlayNeedsFramesToRepeat) {
  const auto overlay = [](int frames) {
    std::string text = "<TextureAtlas imagePath=\"a.png\">\n";
    for (int i = 0; i < frames; ++i)
      text += "<sprite n=\"" + std::to_string(i) + "\" x=\"0\" y=\"0\" w=\"9\" h=\"9\" oW=\"100\" oH=\"50\"/>\n";
    return text + "</TextureAtlas>";
  };
  EXPECT_EQ("", describe(check(overlay(30)))) << "of another name";
  path = folder + "overlay.xml";
  expectOne(check(overlay(30)), path, {kWarning, "atlas-loop", 1, 1});
  EXPECT_EQ("", describe(check(overlay(31))));
}

TEST_F(AtlasCheck, AMissingFileIsOneFinding) {
  Findings findings;
  checkAtlas(folder + "none.xml", 100, 50, findings);
  expectOne(findings, folder + "none.xml", {kError, "missing", 0, 0});
}

TEST_F(AtlasCheck, DeepNestingIsRefused) {
  std::string text = "<TextureAtlas>";
  for (int i = 0; i < 200000; ++i) text += "<a>";
  expectOne(check(text), path, {kError, "xml", 1, 1 + 14 + 3 * 63});
}

TEST(DemoAnimationFiles, AreWithoutAFinding) {
  Findings findings;
  const std::string folder = skinfiles::kSkin + "Animation/";
  for (const char* name : {"GoldPnlWin", "SilverPnlWin", "BronzePnlWin", "EmeraldPnlWin"})
    checkAtlas(folder + name + ".xml", 1600, 600, findings);
  checkAtlas(folder + "GoldPrtclWin.xml", 1920, 1080, findings);
  for (const char* name : {"IdleRight", "IdleLeft"}) checkAtlas(folder + name + ".xml", 1000, 380, findings);
  for (const char* game : {"VesperCrown", "SevenOrchards"})
    checkAtlas(skinfiles::kRoot + "Games/" + game + "/Icons/overlay.xml", 810, 900, findings);
  EXPECT_EQ("", describe(findings));
  EXPECT_EQ(9U, findings.decoded.size());
}

}  // namespace
