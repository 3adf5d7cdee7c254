// The texts that take the levels away, and the way back.
#include "tests/vesperatopscreen/JackpotsFixture.h"

#include "components/TControlCyphers3.h"
#include "components/TGlyphLabel.h"

using namespace jackpottest;
using xmlrpc_c::value_string;

namespace {

class Texts : public Jackpots {
 protected:
  Texts() : Jackpots("jackpottexts", 8) {}
  bool levelsStand() { return screen.find(kPanel + "pJackpotPanel[0]") != nullptr; }
  void integrity(const char* text) { screen.send(T_INTEGRITY_DATA, value_string(text)); }
  // The events without a frame, as while a game of roulette holds the drawing.
  void poll(const std::vector<std::pair<int, xmlrpc_c::value>>& events) { screen.app().deliver(events); }
};

}  // namespace

TEST_F(Texts, TheEndOfAnIntegrityTextBringsTheLevelsBack) {
  start(3);
  for (int i = 0; i < 3; ++i) {
    integrity("CRC 1234");
    EXPECT_FALSE(levelsStand());
    EXPECT_TRUE(shown("logo"));
    data[1].potValue = 100 + i;
    sendData();
    EXPECT_FALSE(levelsStand());
    integrity("");
    ASSERT_TRUE(levelsStand()) << i << ": in the frame after it, without another event";
    EXPECT_FALSE(shown("logo"));
    EXPECT_FALSE(shown("integrityLabel"));
    EXPECT_EQ(100 + i, screen.part<TControlCyphers3>(1, "ControlCyphers")->FinalValue());
  }
}

TEST_F(Texts, TheEndOfAnIntegrityTextBringsNoLevelsUnderAnError) {
  start(2);
  integrity("CRC 1234");
  screen.send(T_JACKPOT_ERROR, value_string("METER FAULT"));
  EXPECT_FALSE(shown("jackpotErrorLabel"));
  integrity("");
  EXPECT_FALSE(levelsStand());
  EXPECT_TRUE(shown("jackpotErrorLabel"));
  EXPECT_TRUE(shown("logo"));
  screen.send(T_JACKPOT_ERROR, value_string(""));
  EXPECT_TRUE(levelsStand());
}

TEST_F(Texts, AStateWithoutTheTextBringsTheLevelsBackToo) {
  start(2);
  screen.status([](PlatformState& state) { state.IntegrityCheckData = "CRC 1234"; });
  EXPECT_FALSE(levelsStand());
  EXPECT_TRUE(shown("integrityLabel"));
  for (const char* label : {"pJackpotsPanel/integrityLabel", "pInstructionsPanel/integrityLabel"})
    EXPECT_EQ("CRC 1234", screen.find<TGlyphLabel>(label)->GetText()) << label;
  EXPECT_TRUE(screen.visible("pInstructionsPanel/integrityLabel"));
  screen.status([](PlatformState& state) { state.IntegrityCheckData.clear(); });
  EXPECT_FALSE(shown("integrityLabel"));
  EXPECT_FALSE(screen.visible("pInstructionsPanel/integrityLabel"));
  EXPECT_TRUE(screen.app().updatedJp) << "after the poll that has brought it";
  screen.app().updatedJp = false;
  screen.status([](PlatformState&) {});
  EXPECT_FALSE(screen.app().updatedJp) << "no text has gone";
}

TEST_F(Texts, OneThatHasGoneBeforeTheNextFrameTakesNothingAway) {
  start(2);
  poll({{T_INTEGRITY_DATA, value_string("CRC 1234")}});
  poll({{T_INTEGRITY_DATA, value_string("")}});
  screen.frame();
  EXPECT_TRUE(levelsStand());
  EXPECT_FALSE(shown("logo"));
  poll({{T_JACKPOT_ERROR, value_string("METER FAULT")}});
  poll({{T_JACKPOT_ERROR, value_string("")}});
  screen.frame();
  EXPECT_TRUE(levelsStand());
  poll({{T_INTEGRITY_DATA, value_string("CRC 1234")}, {T_INTEGRITY_DATA, value_string("")}});
  screen.frame();
  EXPECT_TRUE(levelsStand()) << "also within one poll";
  poll({{T_INTEGRITY_DATA, value_string("CRC 1234")}});
  poll({{T_INTEGRITY_DATA, value_string("")}, {T_JACKPOT_ERROR, value_string("METER FAULT")}});
  screen.frame();
  EXPECT_FALSE(levelsStand()) << "the other text stands";
  EXPECT_TRUE(shown("jackpotErrorLabel"));
}

TEST_F(Texts, AnErrorTextIsAppliedOnlyWhenItIsAnother) {
  start(2);
  screen.send(T_JACKPOT_ERROR, value_string("METER FAULT"));
  auto* label = screen.find<TGlyphLabel>(kPanel + "jackpotErrorLabel");
  EXPECT_EQ("METER FAULT", label->GetText());
  label->SetText("KEPT");
  screen.send(T_JACKPOT_ERROR, value_string("METER FAULT"));
  EXPECT_EQ("KEPT", label->GetText());
  EXPECT_FALSE(levelsStand());
  screen.send(T_JACKPOT_ERROR, value_string("DOOR OPEN"));
  EXPECT_EQ("DOOR OPEN", label->GetText());
  screen.send(T_JACKPOT_ERROR, value_string(""));
  EXPECT_EQ("", label->GetText());
  EXPECT_TRUE(levelsStand());
}

TEST_F(Texts, EachTakesTheLogoAwayUnlessTheOtherStands) {
  start(2);
  TJackpotsPanel& jackpots = *panel();
  screen.app().asMainThread([&] {
    jackpots.SetIntegrityCheckData("CRC 1234");
    EXPECT_TRUE(shown("logo"));
    jackpots.SetJackpotErrorData("METER FAULT");
    EXPECT_TRUE(shown("logo"));
    jackpots.SetJackpotErrorData("");
    EXPECT_TRUE(shown("logo"));
    EXPECT_FALSE(shown("jackpotErrorLabel"));
    jackpots.SetJackpotErrorData("METER FAULT");
    jackpots.SetIntegrityCheckData("");
    EXPECT_TRUE(shown("logo"));
    EXPECT_FALSE(shown("integrityLabel"));
    jackpots.SetJackpotErrorData("");
    EXPECT_FALSE(shown("logo"));
  });
}
