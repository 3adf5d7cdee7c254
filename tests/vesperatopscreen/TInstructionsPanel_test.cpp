#include "vesperatopscreen/TInstructionsPanel.h"

#include <gtest/gtest.h>

#include "components/TGlyphLabel.h"
#include "components/TImageList.h"
#include "tests/support/ComponentPeek.h"
#include "tests/support/TopScreenHarness.h"

using namespace vendelo_sdl2;

namespace {

class InstructionsPanel : public testing::Test {
 protected:
  explicit InstructionsPanel(int divisor = 4) : screen("instructions", divisor) {
    screen.status([](PlatformState& state) {
      state.ActiveGame = GAME_MENU;
      state.Instructions = {"SPIN", "", "MENU"};
    });
    screen.skip(600);
  }
  template <class T>
  T* row(const char* name, int n) {
    return screen.find<T>("pInstructionsPanel/" + std::string(name) + std::to_string(n));
  }
  std::string text(int n) { return row<TGlyphLabel>("InstructionButton", n)->GetText(); }
  bool enabled(int n) {
    const auto* image = row<TImageList>("InstructionImage", n);
    const int index = image->getCurrentImageIndex();
    EXPECT_EQ(image->getImages()->at(index == 0 ? 0 : 1), image->GetTargetTexture()) << "one of the two pictures";
    return index == 0;
  }
  void instruct(const std::vector<std::string>& texts) { screen.send(T_INSTRUCTIONS, paneldata::texts(texts)); }

  TopScreenHarness screen;
};

class InstructionPictures : public InstructionsPanel {
 protected:
  InstructionPictures() : InstructionsPanel(1) {}
};

}  // namespace

TEST_F(InstructionsPanel, HasEightRowsAtTheirPlaces) {
  EXPECT_EQ(1u, screen.app().linesOf("1|Loading instructions panel."));
  const struct {
    int x, y;
    const char *text, *caption;
  } rows[] = {{88, 856, "SPIN", "Auto Spin"},
              {300, 737, "", "Payout"},
              {512, 856, "MENU", "Game Select"},
              {730, 856, "Instruction4", "Service"},
              {952, 856, "Instruction5", "Bet- Red"},
              {1172, 856, "Instruction6", "Info"},
              {1388, 856, "Instruction1", "Bet+ Black"},
              {1670, 856, "Instruction1", "Spin"}};
  int n = 0;
  for (const auto& wanted : rows) {
    SCOPED_TRACE(++n);
    auto* image = row<TImageList>("InstructionImage", n);
    auto* button = row<TGlyphLabel>("InstructionButton", n);
    auto* caption = row<TGlyphLabel>("InstructionSmallLabel", n);
    ASSERT_TRUE(image && button && caption);
    const SDL_Rect place = image->getDestRect();
    EXPECT_TRUE(place.x == wanted.x && place.y == wanted.y && place.w == 177 && place.h == 179);
    EXPECT_EQ(wanted.x + 32, button->getX());
    EXPECT_EQ(wanted.y + 31, button->getY());
    EXPECT_EQ(101, button->getWidth());
    EXPECT_EQ(80, button->getHeight());
    EXPECT_EQ(wanted.x + 32, caption->getX());
    EXPECT_EQ(wanted.y + 117, caption->getY());
    EXPECT_EQ(101, caption->getWidth());
    EXPECT_EQ(20, caption->getHeight());
    EXPECT_EQ(wanted.text, button->GetText());
    EXPECT_EQ(wanted.caption, caption->GetText());
    EXPECT_EQ(2u, image->getImages()->size());
    EXPECT_EQ(row<TImageList>("InstructionImage", 1)->getImages()->at(1), image->getImages()->at(1))
      << "all rows share the two pictures";
  }
  EXPECT_EQ(nullptr, row<TImageList>("InstructionImage", 9));
}

TEST_F(InstructionsPanel, ItsTextsAreCentredAndShrinkToTheirPlaces) {
  auto* panel = screen.find("pInstructionsPanel");
  const std::vector<std::string> names = peek::Component::children(*panel);
  ASSERT_EQ(25u, names.size());
  EXPECT_EQ("integrityLabel", names[0]);
  const std::string skin = screen.folder() + "VESPERA/TOP_SKIN/";
  SDL_Texture *enabled = row<TImageList>("InstructionImage", 1)->getImages()->at(0),
              *disabled = row<TImageList>("InstructionImage", 1)->getImages()->at(1);
  EXPECT_TRUE(enabled && disabled && enabled != disabled);
  for (int n = 1; n <= 8; ++n) {
    SCOPED_TRACE(n);
    const auto at = static_cast<size_t>(3 * n - 2);
    EXPECT_EQ("InstructionImage" + std::to_string(n), names[at]);
    EXPECT_EQ("InstructionButton" + std::to_string(n), names[at + 1]);
    EXPECT_EQ("InstructionSmallLabel" + std::to_string(n), names[at + 2]);
    EXPECT_EQ("/Fonts/HelveticaBold26px_Instructions 4 shrinks",
              peek::Label::look(*row<TGlyphLabel>("InstructionButton", n), skin));
    EXPECT_EQ("/Fonts/HelveticaBold20px_SmallLabel 4 shrinks",
              peek::Label::look(*row<TGlyphLabel>("InstructionSmallLabel", n), skin));
    EXPECT_EQ((std::vector<SDL_Texture*>{enabled, disabled}), *row<TImageList>("InstructionImage", n)->getImages());
  }
  EXPECT_EQ("Fonts/jackpot_win_label 4 shrinks",
            peek::Label::look(*screen.find<TGlyphLabel>("pInstructionsPanel/integrityLabel"), skin));
}

TEST_F(InstructionsPanel, TheIntegrityTextIsAsWideAsThePanel) {
  TInstructionsPanel narrow(screen.renderer(), 0, 0, 700, 500, "narrow");
  EXPECT_EQ("0, 100, 700, 150", placeText(peek::Component::place(*narrow.FindComponentByName("integrityLabel"))));
}

TEST_F(InstructionsPanel, RowsShowTheirDefaultTextsUntilThePlatformNamesThem) {
  auto* panel = new TInstructionsPanel(screen.renderer(), 0, 0, 1920, 1080, "another");
  screen.screen().AddComponent(panel);
  const char* texts[] = {"Instruction1", "Instruction2", "Instruction3", "Instruction4",
                         "Instruction5", "Instruction6", "Instruction1", "Instruction1"};
  for (int n = 1; n <= 8; ++n) {
    const std::string number = std::to_string(n);
    EXPECT_EQ(texts[n - 1], screen.find<TGlyphLabel>("another/InstructionButton" + number)->GetText());
    EXPECT_EQ(0, screen.find<TImageList>("another/InstructionImage" + number)->getCurrentImageIndex());
  }
}

TEST_F(InstructionsPanel, ADisabledButtonLooksLikeOne) {
  const auto corner = [this](int n) {
    return screen.pixel(n == 2 ? 304 : 92 + 212 * (n - 1), n == 2 ? 900 : 1024);
  };
  const Uint32 enabledColour = corner(1), disabledColour = corner(2);
  EXPECT_NE(enabledColour, disabledColour);
  instruct({"", "BACK"});
  EXPECT_EQ(disabledColour, corner(1));
  EXPECT_EQ(enabledColour, corner(2));
}

TEST_F(InstructionsPanel, AStateBringsItsTextsAlsoWhileAGameRuns) {
  screen.status([](PlatformState& state) {
    state.ActiveGame = paneldata::game("Reels");
    state.Instructions = {"HOLD"};
  });
  EXPECT_EQ("HOLD", text(1));
}

TEST_F(InstructionsPanel, AnEmptyTextShowsTheDisabledButton) {
  EXPECT_TRUE(enabled(1));
  EXPECT_FALSE(enabled(2));
  instruct({"", "BACK"});
  EXPECT_FALSE(enabled(1));
  EXPECT_EQ("", text(1));
  EXPECT_TRUE(enabled(2));
  EXPECT_EQ("BACK", text(2));
}

TEST_F(InstructionsPanel, RowsWithoutATextStayAsTheyAre) {
  instruct({"ONE"});
  EXPECT_EQ("ONE", text(1));
  EXPECT_EQ("MENU", text(3));
  EXPECT_FALSE(enabled(2));
  screen.status([](PlatformState& state) { state.Instructions.clear(); });
  EXPECT_EQ(0, screen.find<TInstructionsPanel>("pInstructionsPanel")->UpdateData());
  EXPECT_EQ("ONE", text(1)) << "an empty list changes nothing";
}

TEST_F(InstructionsPanel, TheNinthTextIsIgnored) {
  instruct({"1", "2", "3", "4", "5", "6", "7", "8", "9", "10"});
  for (int n = 1; n <= 8; ++n) EXPECT_EQ(std::to_string(n), text(n));
}

TEST_F(InstructionsPanel, AnIntegrityTextStandsAboveTheRowsAndLeavesThem) {
  EXPECT_FALSE(screen.visible("pInstructionsPanel/integrityLabel"));
  screen.send(T_INTEGRITY_DATA, xmlrpc_c::value_string("CRC 1234"));
  auto* label = screen.find<TGlyphLabel>("pInstructionsPanel/integrityLabel");
  EXPECT_TRUE(label->isVisible());
  EXPECT_EQ("CRC 1234", label->GetText());
  EXPECT_EQ(100, label->getY());
  EXPECT_EQ(1920, label->getWidth());
  for (int n = 1; n <= 8; ++n) EXPECT_TRUE(row<TImageList>("InstructionImage", n)->isVisible());
  screen.send(T_INTEGRITY_DATA, xmlrpc_c::value_string(""));
  EXPECT_FALSE(label->isVisible());
}

TEST_F(InstructionPictures, LookLikeThis) {
  EXPECT_EQ("", screen.picture("vesperatopscreen/Instructions", TopScreenHarness::whole(), 4));
  EXPECT_EQ("", screen.picture("vesperatopscreen/Instructions_Buttons", {80, 720, 640, 320}, 2));
  screen.send(T_INTEGRITY_DATA, xmlrpc_c::value_string("CRC 1234"));
  screen.frame();
  EXPECT_EQ("", screen.picture("vesperatopscreen/Instructions_Integrity", TopScreenHarness::whole(), 4));
}
