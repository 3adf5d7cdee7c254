#include "vesperatopscreen/GamePath.h"

#include <filesystem>

#include "common/TBitmapFont.h"
#include "tests/vesperatopscreen/PaytablesFixture.h"
#include "vesperatopscreen/TJackpotsPanel.h"

using namespace paytabletest;
namespace fs = std::filesystem;

namespace {

class GamePaths : public Paytables {
 protected:
  GamePaths() : Paytables("gamepaths") {}

  bool hasFont(const std::string& name) {
    TGlyphLabel* const text = label(name);
    return text && text->Font() && text->Font()->FindGlyph('0');
  }
  TTF_Font* betFont() {
    auto* minimum = screen.find<Tlabel>(kPanel + "minBetLabel");
    return minimum ? minimum->GetFont() : nullptr;
  }
};

Text inFont(const char* symbol, const std::string& font) {
  Text entry = text(symbol, "line", 50, 3);
  entry.font = font;
  return entry;
}

}  // namespace

TEST(GamePath, StandsInTheFolderOfTheGamesPictures) {
  EXPECT_EQ("Games/Reels/Icons/", gamePath("Reels"));
  EXPECT_EQ("Games/Reels/Icons/digits", gamePath("Reels", "digits"));
  EXPECT_EQ("Games/A.B/Icons/.c.d", gamePath("A.B", ".c.d")) << "a single dot leads nowhere";
}

TEST(GamePath, IsEmptyForANameThatLeadsOut) {
  for (const char* name : {"..", "../x", "x/..", "a..b", "/", "/etc", "x/", "x/y", "/x"}) {
    SCOPED_TRACE(name);
    EXPECT_EQ("", gamePath(name));
    EXPECT_EQ("", gamePath(name, "digits"));
    EXPECT_EQ("", gamePath("Reels", name));
  }
}

TEST_F(GamePaths, AFontThatLeadsOutCountsAsMissingAndIsToldOnce) {
  // Both kinds of file are there for each.
  fs::create_directories("Games/Reels/Icons/sub");
  fs::copy("Games/Reels/Icons/digits.fnt", "Games/Reels/Icons/sub/digits.fnt");
  fs::copy("Games/Reels/Icons/digits.ttf", "Games/Reels/Icons/sub/digits.ttf");
  fs::copy("Games/Reels/Icons/digits.fnt", "Games/Reels/Icons/a..b.fnt");
  fs::copy("Games/Reels/Icons/digits.ttf", "Games/Reels/Icons/a..b.ttf");
  for (const char* font : {"../../Wheels/Icons/digits", "sub/digits", "a..b"}) {
    SCOPED_TRACE(font);
    ASSERT_TRUE(fs::exists(std::string("Games/Reels/Icons/") + font + ".fnt"));
    ASSERT_TRUE(fs::exists(std::string("Games/Reels/Icons/") + font + ".ttf"));
    screen.app().forgetLines();
    const std::string output =
      opened(setup({page("paytable", {inFont("A", "digits"), inFont("B", font), inFont("C", font)})}, 20, -1));
    EXPECT_TRUE(hasFont("A_3"));
    EXPECT_EQ("250", shown("B_3")) << "the label stands";
    EXPECT_FALSE(hasFont("B_3"));
    EXPECT_FALSE(hasFont("C_3"));
    EXPECT_EQ(nullptr, betFont());
    EXPECT_EQ(1u, screen.app().linesOf(std::string("4|The font '") + font +
                                       "' of game 'Reels' leads out of the game folders: it counts as missing."));
    EXPECT_NE(std::string::npos,
              output.find(std::string("WARNING: Could not find font \"Games/Reels/Icons/") + font + "\"!\n"));
    turnTo(2);
    turnTo(1);
    EXPECT_EQ(1u, screen.app().linesWith("leads out"));
    panel()->clearPaytable();
    turnTo(0);
    screen.skip(600);
  }
}

TEST_F(GamePaths, AGameThatLeadsOutHasNoFontsEither) {
  for (const char* game : {"Reels/../Reels", "../Games/Reels"}) {
    SCOPED_TRACE(game);
    ASSERT_TRUE(fs::exists(std::string("Games/") + game + "/Icons/digits.fnt"));
    const std::string leadsOut = std::string("4|The game name '") + game + "' leads out of the game folders: ";
    screen.app().forgetLines();
    open(setup({page("paytable", {inFont("A", "digits")})}, 20, -1), game);
    EXPECT_EQ("250", shown("A_3"));
    EXPECT_FALSE(hasFont("A_3"));
    EXPECT_EQ(nullptr, betFont());
    EXPECT_EQ(nullptr, texture());
    EXPECT_EQ(nullptr, screen.find("pPaytablesPanel/Background")->GetTargetTexture());
    EXPECT_EQ(1u, screen.app().linesOf(leadsOut + "no paytable."));
    EXPECT_EQ(0u, screen.app().linesWith("The font"));
    EXPECT_EQ(1u, screen.app().linesOf(leadsOut + "no overlay."));
    EXPECT_EQ(0u, screen.app().linesWith("Loading"));
    turnTo(0);
    screen.skip(600);
    EXPECT_EQ(nullptr, screen.find(std::string("pJackpotsPanel/pImageOverlay[") + game + "]"));
  }
}

TEST_F(GamePaths, ALanguageThatLeadsOutGetsThePagesOfNone) {
  fs::create_directories("Games/Reels/Icons/paytable_x");
  for (const char* language : {"x/../paytable_sl", "x/", "sl/../paytable_sl"}) {
    SCOPED_TRACE(language);
    ASSERT_TRUE(fs::is_directory(std::string("Games/Reels/Icons/paytable_") + language));
    screen.app().forgetLines();
    screen.send(T_LANGUAGE, paneldata::texts({language, "MIN", "MAX", "HINT", "PRIZES"}));
    open({});
    EXPECT_EQ(
      1u, screen.app().linesOf("1|Loading paytable images for game Reels in folder Games/Reels/Icons/paytable."));
    EXPECT_EQ(rgb(panelskin::kPage), screen.pixel(960, 640));
    turnTo(0);
    screen.skip(600);
  }
}
