// Levels that come, go and are built anew under the sparkle, a win and the texts.
#include "tests/vesperatopscreen/JackpotStatesFixture.h"

using namespace jackpottest;

namespace {
class Rebuild : public JackpotStates {};
}  // namespace

TEST_F(Rebuild, ASparkleThatComesEarlyTakesThePlaceOfTheLast) {
  start(2);
  const auto shown = [this] {
    std::vector<int> ids;
    for (int id : {0, 1})
      if (sprite(id, "pIdleAnimation").isVisible()) ids.push_back(id);
    return ids;
  };
  for (int round = 0; round < 20; ++round) {
    const std::vector<int> before = shown();
    ASSERT_EQ(1u, before.size());
    panel->StartIdleAnimation();
    EXPECT_EQ(std::vector<int>{1 - before[0]}, shown()) << "alone, and on the other level";
  }
}

TEST_F(Rebuild, LevelsWithoutAPlaceSparkleOnTheLast) {
  data = levels(4);
  for (int id : {4, 5, 6, 7}) data.push_back(paneldata::level(id, 1));
  show(data);
  int visits[4] = {};
  for (int round = 0; round < 60; ++round) {
    panel->StartIdleAnimation();
    int shown = 0;
    for (int id = 0; id < 4; ++id)
      if (sprite(id, "pIdleAnimation").isVisible()) ++shown, ++visits[id];
    EXPECT_EQ(1, shown) << round;
  }
  for (int id : {0, 1, 2}) EXPECT_LT(0, visits[id]) << id;
  EXPECT_LT(visits[0] + visits[1] + visits[2], 3 * visits[3]) << "five of the eight stand for it";
}

TEST_F(Rebuild, NoLevelsLeaveARunningWinToTheNextOnes) {
  start(2);
  startWin(1);
  for (int i = 0; i < 15; ++i) show({});  // past all the retries of the panel that is not there
  EXPECT_EQ(0u, linesWith("Hiding jackpot win animation."));
  show(levels(2));
  EXPECT_EQ(1u, linesWith("Hiding jackpot win animation."));
}

TEST_F(Rebuild, AWinThatEndsBeforeItsPictureWasTakenMovesNothing) {
  for (int id : {0, 1}) {
    SCOPED_TRACE(id);
    start(2);
    TGuiComponent* level = find("pJackpotPanel[" + std::to_string(id) + "]");
    status(id, "WIN");
    status(id, "");
    EXPECT_EQ(placeText(TJackpotLayout(2).levelRect(id)), placeText(level->getDestRect()));
    startWin(id);
    status(id, "");
    level->setDestRect({700, 300, 908, 208});
    status(id, "WIN");
    status(id, "");
    EXPECT_EQ("700, 300, 908, 208", placeText(level->getDestRect()))
      << "the picture of an earlier win is no picture";
    show({});
  }
}

TEST_F(Rebuild, ALevelThatIsBuiltAnewDuringItsWinStandsAtItsNewPlace) {
  for (int id : {0, 1}) {
    SCOPED_TRACE(id);
    start(4);
    startWin(id);
    show(levels(2));
    EXPECT_EQ(placeText(TJackpotLayout(2).levelRect(id)),
              placeText(find("pJackpotPanel[" + std::to_string(id) + "]")->getDestRect()));
    EXPECT_TRUE(part(id, "pJackpotFrame")->isVisible());
    show({});
  }
}

TEST_F(Rebuild, ALoadBeginsWithoutLevels) {
  start(1);
  ASSERT_EQ(0, panel->load());
  data[0].potValue = 77;
  show(data);
  EXPECT_EQ(1234567, part<TControlCyphers3>(0, "ControlCyphers")->FinalValue());
  panel->OnHideHistory();
  EXPECT_TRUE(historyShown(0));
  panel->StopIdleAnimation();
  EXPECT_TRUE(part(0, "pIdleAnimation")->isVisible());
  const Names before = peek::Component::children(*panel);
  panel->ClearJackpotPanel();
  EXPECT_EQ(before, peek::Component::children(*panel)) << "what it does not know it leaves";
}

TEST_F(Rebuild, ATextBringsTheLogoAtOnceAlsoWithoutLevels) {
  EXPECT_FALSE(visible("logo"));
  update({}, "METER FAULT");
  EXPECT_TRUE(visible("logo"));
  harness.frame();
  EXPECT_TRUE(visible("logo"));
  update({}, "");
  EXPECT_FALSE(visible("logo"));
  integrity("CRC 1234");
  EXPECT_TRUE(visible("logo"));
  EXPECT_EQ("CRC 1234", find<TGlyphLabel>("integrityLabel")->GetText());
}

TEST_F(Rebuild, EachGameHasAStillOverlayOfItsOwn) {
  panel->OnShowOverlays("Reels");
  EXPECT_NE(nullptr, find("pImageOverlay[Reels]"));
  panel->OnShowOverlays("Wheels");
  EXPECT_EQ(nullptr, find("pImageOverlay[Reels]"));
  ASSERT_NE(nullptr, find("pImageOverlay[Wheels]"));
  panel->OnShowOverlays("");
  EXPECT_EQ(nullptr, find("pImageOverlay[Wheels]"));
}

TEST_F(Rebuild, LevelsThatAreAboutToGoKeepTheirHistoryAsItIs) {
  start(1);
  update({}, "");  // the levels stand until the next frame
  panel->OnHideHistory();
  EXPECT_TRUE(historyShown(0));
  harness.frame();
  start(1);
  panel->OnHideHistory();
  update({}, "");
  panel->ClearOverlay();
  EXPECT_FALSE(historyShown(0));
}
