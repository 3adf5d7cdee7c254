// The win, the sparkle and the history of the jackpot panel, step by step.
#include <climits>
#include <cmath>
#include <filesystem>

#include "tests/vesperatopscreen/JackpotStatesFixture.h"

using namespace jackpottest;

namespace {
class States : public JackpotStates {};
}  // namespace

TEST_F(States, TheWinnerShowsItsValueAtOnceAndTheOthersRoll) {
  start(3);
  clock.advance(60000);
  harness.frame();
  for (JackpotsData& level : data) level.potValue += 5000;
  data[1].status = "WIN";
  update(data, "");
  const auto now = [this](int id) {
    return part<TControlCyphers3>(id, "ControlCyphers")->CurrentValue(clock.now());
  };
  EXPECT_DOUBLE_EQ(1234567, now(0)) << "the run has just begun";
  EXPECT_DOUBLE_EQ(1234568 + 5000, now(1));
  EXPECT_DOUBLE_EQ(1234569, now(2)) << "behind the winner nothing changes";
  EXPECT_EQ(1234569, part<TControlCyphers3>(2, "ControlCyphers")->FinalValue());
  EXPECT_EQ("LAST WIN 100", part<TScrollingComponent>(1, "pJackpotInfo")->ContentAt<TGlyphLabel>(0)->GetText());
}

TEST_F(States, OnlyTheWholeWordIsAWin) {
  start(2);
  for (const char* text : {"", "win", "WIN ", " WIN", "WINNER", "WI", "Win"}) {
    status(1, text);
    EXPECT_EQ(0u, linesWith("was won!")) << text;
  }
  status(1, "WIN");
  EXPECT_EQ(1u, linesWith("Jackpot LEVEL2 was won! Showing win animation!"));
}

TEST_F(States, TheWinIsATaskOfTheDrawThread) {
  start(2);
  endTheSparkle();
  status(0, "WIN");
  TTimedTaskHandler* win = task();
  ASSERT_NE(nullptr, win);
  EXPECT_EQ("TJackpotsPanel::StartWinAnimation, 200", win->GetName());
  EXPECT_EQ(200u, win->GetInterval());
  EXPECT_EQ(TTimedTaskHandler::EXECUTE_ONCE, win->GetType());
  EXPECT_TRUE(drawn(win));
}

TEST_F(States, TheSparkleIsATaskOfTheDrawThreadUntilItIsStopped) {
  start(4);
  for (int i = 0; i < 3; ++i) {
    TTimedTaskHandler* idle = task();
    ASSERT_NE(nullptr, idle);
    EXPECT_EQ("TJackpotsPanel::StartIdleAnimation, 2000", idle->GetName());
    EXPECT_EQ(2200u, idle->GetInterval());
    EXPECT_EQ(TTimedTaskHandler::EXECUTE_ONCE, idle->GetType());
    EXPECT_TRUE(drawn(idle));
    clock.advance(2201);
    harness.frame();
  }
  int shown = 0;
  for (int id = 0; id < 4; ++id) shown += sprite(id, "pIdleAnimation").isVisible();
  EXPECT_EQ(1, shown);
  endTheSparkle();
  for (int id = 0; id < 4; ++id) EXPECT_FALSE(sprite(id, "pIdleAnimation").isVisible()) << id;
  clock.advance(5000);
  harness.frame();
  for (int id = 0; id < 4; ++id) EXPECT_FALSE(sprite(id, "pIdleAnimation").isVisible()) << id;
  panel->StartIdleAnimation();
  EXPECT_NE(nullptr, task());
}

TEST_F(States, TheSparkleVisitsEveryLevelAndBeginsAnew) {
  start(4);
  int visits[4] = {};
  for (int round = 0; round < 60; ++round) {
    for (int id = 0; id < 4; ++id) {
      auto& idle = sprite(id, "pIdleAnimation");
      if (!idle.isVisible()) continue;
      ++visits[id];
      EXPECT_EQ(0, idle.GetCurrentFrame()) << round;
      EXPECT_EQ(clock.now(), peek::Sprite::lastRefresh(idle)) << round;
    }
    clock.advance(2201);
    panel->drawLogic();
    harness.application().ProcessTasks(TASK_DRAW);
  }
  for (int id = 0; id < 4; ++id) EXPECT_GT(visits[id], 3) << id;
}

TEST_F(States, AWinStandsBeforeEverythingInItsOrder) {
  start(4);
  startWin(1);
  const Names names = peek::Component::children(*panel);
  ASSERT_GE(names.size(), 4u);
  EXPECT_EQ((Names{"pDarkBackground", "pParticleAnimation[1]", "JackpotWinPanel", "pJackpotPanel[1]"}),
            Names(names.end() - 4, names.end()));
  EXPECT_TRUE(find("pJackpotPanel[1]")->isVisible()) << "its own animation goes on inside";
  EXPECT_TRUE(sprite(1, "pPanelAnimation").isVisible());
  for (int id : {0, 2, 3}) EXPECT_FALSE(sprite(id, "pPanelAnimation").isVisible()) << id;
  EXPECT_EQ(placeText(TJackpotLayout(4).levelRect(1)), placeText(find("JackpotWinPanel")->getSrcRect()));
}

TEST_F(States, TheHoursGoAndComeBackWithTheLevel) {
  data = levels(4);
  data[3].mode = 2;
  show(data);
  startWin(3);
  const char* names[] = {"pJackpotFrame", "pJackpotHours", "ControlCyphers", "pJackpotCurrency"};
  for (const char* name : names) EXPECT_FALSE(part(3, name)->isVisible()) << name;
  EXPECT_FALSE(historyShown(3));
  EXPECT_TRUE(historyShown(2));
  status(3, "");
  for (const char* name : names) EXPECT_TRUE(part(3, name)->isVisible()) << name;
  EXPECT_TRUE(historyShown(3));
}

TEST_F(States, TheFlightAndThePulseFollowTheirCurves) {
  start(4);
  startWin(2);
  const Uint32 begin = clock.now();
  const SDL_Rect from = TJackpotLayout(4).levelRect(2);
  const TAnimation any;
  const auto mix = [](int a, int b, float t) {
    return static_cast<int>(std::lround(static_cast<float>(a) + static_cast<float>(b - a) * t));
  };
  for (int i = 0; i < 150; ++i) {
    clock.advance(37);
    harness.frame();
    const int passed = static_cast<int>(clock.now() - begin);
    SCOPED_TRACE(passed);
    SDL_Rect wanted = from;
    double factor = 1;
    if (passed < 1000) {
      const float t = move_to_center(any, static_cast<float>(passed) / 1000.0f);
      wanted.x = mix(from.x, (1920 - 908) / 2, t);
      wanted.y = mix(from.y, (1080 - 208) / 2, t);
    } else {
      // The flight's end counts from the pulse's delay on: 200 ms more, and 200 ms of rest before each pulse.
      const int inPulse = passed % 1200 - 200;
      if (passed >= 1200 && inPulse > 0)
        factor += 0.3 * panel_grow_function(any, static_cast<float>(inPulse) / 1000.0f);
      wanted.w = static_cast<int>(std::lround(908 * factor));
      wanted.h = static_cast<int>(std::lround(208 * factor));
      wanted.x = 506 + static_cast<int>(std::lround(908 * (1 - factor) / 2));
      wanted.y = 436 + static_cast<int>(std::lround(208 * (1 - factor) / 2));
    }
    const SDL_Rect is = winPlace();
    EXPECT_NEAR(wanted.x, is.x, 1);
    EXPECT_NEAR(wanted.y, is.y, 1);
    EXPECT_NEAR(wanted.w, is.w, 1);
    EXPECT_NEAR(wanted.h, is.h, 1);
    const auto& around = sprite(2, "pPanelAnimation");
    EXPECT_NEAR(factor, peek::Sprite::factorX(around), 0.002);
    EXPECT_NEAR(factor, peek::Sprite::factorY(around), 0.002);
    EXPECT_EQ(is.x - from.x, peek::Sprite::offset(around).x);
    EXPECT_EQ(is.y - from.y, peek::Sprite::offset(around).y);
    EXPECT_EQ(passed >= 1000, find("pParticleAnimation[2]")->isVisible());
  }
  status(2, "");
  const SDL_Point offset = peek::Sprite::offset(sprite(2, "pPanelAnimation"));
  EXPECT_TRUE(offset.x == 0 && offset.y == 0);
  EXPECT_EQ(placeText(from), placeText(find("pJackpotPanel[2]")->getDestRect()));
}

TEST_F(States, TheAnimationsOfAWinBeginAnewWithEachWin) {
  start(2);
  for (int win = 0; win < 2; ++win) {
    SCOPED_TRACE(win);
    status(1, "WIN");
    clock.advance(201);
    panel->StartWinAnimation();
    EXPECT_EQ(0, sprite(1, "pPanelAnimation").GetCurrentFrame());
    EXPECT_EQ(clock.now(), peek::Sprite::lastRefresh(sprite(1, "pPanelAnimation")));
    clock.advance(1000);
    panel->drawLogic();
    auto& particles = *find<TSpriteAnimation>("pParticleAnimation[1]");
    EXPECT_TRUE(particles.isVisible());
    EXPECT_EQ(0, particles.GetCurrentFrame());
    EXPECT_EQ(clock.now() - 100, peek::Sprite::lastRefresh(particles)) << "a tenth of a second ahead";
    clock.advance(500);
    panel->drawLogic();
    EXPECT_NE(clock.now() - 100, peek::Sprite::lastRefresh(particles)) << "once";
    harness.frame();
    status(1, "");
    EXPECT_FALSE(particles.isVisible());
  }
}

TEST_F(States, AWinGoesOnOverAChangeOfTheLevelsAndIsToldOnce) {
  start(4);
  startWin(0);
  data.pop_back();
  show(data);
  EXPECT_NE(nullptr, find("pJackpotPanel[2]"));
  EXPECT_EQ(nullptr, find("pJackpotPanel[3]"));
  show(data);
  clock.advance(500);
  harness.frame();
  EXPECT_EQ(1u, linesWith("was won!")) << "the level is still the one that wins";
  EXPECT_EQ(0u, linesWith("Hiding jackpot win animation."));
  status(0, "");
  EXPECT_EQ(1u, linesWith("Hiding jackpot win animation."));
  startWin(0);
  EXPECT_EQ(2u, linesWith("was won!"));
}

TEST_F(States, TheEndOfAWinIsToldOnlyWhenOneWasShown) {
  start(2);
  show(data);
  EXPECT_EQ(0u, linesWith("Hiding jackpot win animation."));
  startWin(1);
  show(data);
  EXPECT_EQ(0u, linesWith("Hiding jackpot win animation."));
  status(1, "");
  show(data);
  EXPECT_EQ(1u, linesWith("Hiding jackpot win animation."));
}

TEST_F(States, AHiddenHistoryStaysHiddenOverAWin) {
  panel->OnHideHistory();  // also before there is a level
  start(2);
  EXPECT_TRUE(historyShown(0));
  startWin(1);
  status(1, "");
  EXPECT_FALSE(historyShown(1));
  EXPECT_TRUE(historyShown(0));
  panel->OnHideHistory();
  EXPECT_FALSE(historyShown(0));
  EXPECT_FALSE(part<TScrollingComponent>(0, "pJackpotInfo")->ContentAt(0)->isVisible());
  part(0, "pJackpotInfo")->_setVisible(false);
  panel->OnShowInfoLabels();
  EXPECT_TRUE(part(0, "pJackpotInfo")->isVisible());
  EXPECT_FALSE(part(0, "pJackpotInfoBackground")->isVisible()) << "the texts alone";
  panel->OnShowHistory();
  for (int id : {0, 1}) EXPECT_TRUE(historyShown(id)) << id;
  startWin(0);
  status(0, "");
  EXPECT_TRUE(historyShown(0));
}

TEST_F(States, AnOverlayThatStandsOnlySetsTheLogo) {
  std::filesystem::current_path(skin() + "../../");
  start(2);
  panel->OnShowOverlays("Reels");
  auto* overlay = find<TSpriteAnimation>("pAnimationOverlay[Reels]");
  ASSERT_NE(nullptr, overlay);
  EXPECT_TRUE(overlay->isVisible());
  EXPECT_EQ("1110, 90, 810, 900", placeText(peek::Component::place(*overlay)));
  EXPECT_EQ(TSpriteAnimation::LOOP, peek::Sprite::mode(*overlay));
  EXPECT_EQ(25.0f, peek::Sprite::rate(*overlay));
  EXPECT_EQ(30, peek::Sprite::loopStart(*overlay));
  EXPECT_EQ("Games/Reels/Icons/overlay_atlas.png", peek::Sprite::file(*overlay));
  EXPECT_FALSE(historyShown(0));

  panel->OnShowHistory();
  find("logo")->_setVisible(true);
  panel->OnShowOverlays("Reels");
  EXPECT_FALSE(visible("logo"));
  EXPECT_TRUE(historyShown(0)) << "nothing is hidden again";
  EXPECT_EQ(overlay, find("pAnimationOverlay[Reels]"));
  EXPECT_EQ(1u, linesWith("Loading overlay"));

  overlay->Hide();
  find("logo")->_setVisible(true);
  panel->OnShowOverlays("Reels");
  EXPECT_TRUE(overlay->isVisible());
  EXPECT_FALSE(historyShown(0));
  EXPECT_TRUE(visible("logo")) << "the frame that shows the overlay leaves the logo";

  panel->OnShowOverlays("");
  EXPECT_EQ(nullptr, find("pAnimationOverlay[Reels]"));
  EXPECT_TRUE(historyShown(0));
  EXPECT_FALSE(visible("logo"));
  panel->OnShowOverlays("Reels");
  EXPECT_EQ(2u, linesWith("Loading overlay"));
}

TEST_F(States, NumbersOfThePlatformFaultNothing) {
  const struct {
    int64_t value;
    int number;
  } rows[] = {{INT64_MIN, INT_MIN},
              {INT64_MIN + 1, INT_MIN + 1},
              {-1, -1},
              {0, 0},
              {999999999999999999, 17},
              {1000000000000000000, 18},
              {INT64_MAX - 1, 100},
              {1, 101},
              {INT64_MAX, INT_MAX}};
  for (const auto& [value, number] : rows) {
    SCOPED_TRACE(std::to_string(value) + ", " + std::to_string(number));
    data = levels(4);
    for (JackpotsData& level : data) {
      level.potValue = value;
      level.decimalPlaces = number;
      level.mode = number;
      level.NumWins = number;
      level.minPot = level.maxPot = level.minBet = level.maxBet = value;
    }
    data[3].id = number;
    data[1].status = "WIN";
    update(data, "METER FAULT");
    harness.frame();
    show(data);
    clock.advance(201);
    harness.frame();
    data[0].potValue = ~value;
    show(data);
    clock.advance(1100);
    harness.frame();
    ASSERT_NE(nullptr, part(0, "ControlCyphers"));
    EXPECT_EQ(~value, part<TControlCyphers3>(0, "ControlCyphers")->FinalValue());
    data[1].status.clear();
    show(data);
  }
  const std::vector<JackpotsData> many(5000, paneldata::level(0, 1));
  show(many);
  framesFor(60);
  EXPECT_NE(nullptr, find("pJackpotPanel[0]"));
}
