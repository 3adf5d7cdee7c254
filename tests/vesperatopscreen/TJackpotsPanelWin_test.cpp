// The win, the idle sparkle and the overlays of the jackpot panel on the whole screen.
#include "tests/vesperatopscreen/JackpotsFixture.h"

#include <algorithm>
#include <filesystem>
#include <initializer_list>
#include <set>
#include <vector>

#include "components/TControlCyphers3.h"
#include "components/TGlyphLabel.h"
#include "components/TImageList.h"
#include "vendelo-sdl2/MyUtils.h"

using namespace jackpottest;
using xmlrpc_c::value_string;

TEST_F(Jackpots, TheSparkleWandersEvery2200Milliseconds) {
  start(4);
  Uint32 passed = 40;
  for (int round = 0; round < 12; ++round, passed = 0) {
    const std::vector<int> now = sparkles();
    ASSERT_EQ(1u, now.size()) << round;
    screen.skip(2200 - passed);
    EXPECT_EQ(std::vector<int>{}, sparkles()) << "played once, then hidden";
    screen.skip(1);
    const std::vector<int> next = sparkles();
    ASSERT_EQ(1u, next.size()) << round;
    EXPECT_NE(now, next) << "never twice on the same level";
  }
}

TEST_F(Jackpots, WithOneLevelTheSparkleRepeatsOnIt) {
  start(1);
  for (int round = 0; round < 4; ++round) {
    EXPECT_EQ(std::vector<int>{0}, sparkles()) << round;
    screen.skip(2180);
    screen.skip(30);
  }
}

TEST_F(Jackpots, AllLevelsSparkleLikeTheFirst) {
  data = levels(2);
  data[0].showCurrencySign = false;
  start(data);
  auto *first = screen.part<TSpriteAnimation>(0, "pIdleAnimation"),
       *second = screen.part<TSpriteAnimation>(1, "pIdleAnimation");
  EXPECT_EQ(30, second->GetNumFrames());
  EXPECT_EQ(first->GetNumFrames(), second->GetNumFrames());
  SDL_Texture *left = first->GetFrame(3), *right = second->GetFrame(3);
  EXPECT_TRUE(left && right);
  SDL_DestroyTexture(left);
  SDL_DestroyTexture(right);
}

TEST_F(Jackpots, AWinGoesOnWhereTheClockComesRound) {
  start(4);
  screen.clock().set(0u - 700u);
  screen.frames(40);
  win(1, true);
  screen.skip(201);
  ASSERT_TRUE(shown("JackpotWinPanel"));
  ASSERT_GT(SDL_GetTicks(), 0u - 600u);
  screen.skip(1001);
  ASSERT_LT(SDL_GetTicks(), 1000u);
  EXPECT_TRUE(shown("pParticleAnimation[1]")) << "particles with the arrival";
  SDL_Rect at = place("JackpotWinPanel");
  const SDL_Rect middle{506, 436, 908, 208};
  EXPECT_TRUE(SDL_RectEquals(&at, &middle));
  screen.skip(900);
  at = place("JackpotWinPanel");
  EXPECT_NEAR(1180, at.w, 2) << "it pulses";
}

// The win of the second of four levels.
class JackpotWin : public Jackpots {
 protected:
  JackpotWin() {
    start(4);
    win(1, true);
  }
  // The pauses between the frames, one after the other.
  void skip(std::initializer_list<Uint32> pauses) {
    for (const Uint32 milliseconds : pauses) screen.skip(milliseconds);
  }
  bool panelIsAt(const SDL_Rect& expected) {
    const SDL_Rect at = place("JackpotWinPanel");
    return SDL_RectEquals(&at, &expected);
  }
  const SDL_Rect from = TJackpotLayout(4).levelRect(1), middle{506, 436, 908, 208};
};

TEST_F(JackpotWin, IsNoticedAndBegins200MillisecondsLater) {
  EXPECT_EQ(1u, screen.app().linesOf("1|Jackpot LEVEL2 was won! Showing win animation!"));
  skip({200});
  EXPECT_FALSE(shown("pDarkBackground"));
  EXPECT_EQ(1u, sparkles().size());
  skip({1});
  EXPECT_TRUE(shown("pDarkBackground"));
  EXPECT_TRUE(shown("JackpotWinPanel"));
  EXPECT_TRUE(panelIsAt(from)) << "it starts at the level's place";
}

TEST_F(JackpotWin, TakesThePlaceOfItsLevelAndOfTheSparkle) {
  skip({201});
  EXPECT_TRUE(screen.part(1, "pPanelAnimation")->isVisible());
  EXPECT_EQ(std::vector<int>{}, sparkles()) << "no sparkle during a win";
  for (const char* name :
       {"pJackpotFrame", "ControlCyphers", "pJackpotCurrency", "pJackpotInfo", "pJackpotInfoBackground"})
    EXPECT_FALSE(screen.part(1, name)->isVisible()) << name;
}

TEST_F(JackpotWin, FliesToTheMiddleAndHasParticlesThere) {
  skip({201, 500});
  const SDL_Rect at = place("JackpotWinPanel");
  EXPECT_EQ(908, at.w);
  const float half = move_to_center(TAnimation(), 0.5f);
  EXPECT_NEAR(99 + (506 - 99) * half, at.x, 1);
  EXPECT_NEAR(369 + (436 - 369) * half, at.y, 1);
  EXPECT_FALSE(shown("pParticleAnimation[1]"));
  skip({500});
  EXPECT_TRUE(shown("pParticleAnimation[1]")) << "with the arrival";
  EXPECT_TRUE(panelIsAt(middle));
}

TEST_F(JackpotWin, PulsesAboutTheMiddleAfterAPause) {
  skip({201, 500, 500, 400});
  EXPECT_TRUE(panelIsAt(middle)) << "the pause before the pulse";
  skip({500});
  EXPECT_TRUE(panelIsAt({506 - 136, 436 - 31, 1180, 270})) << "at most 30 per cent larger";
  skip({500});
  EXPECT_NEAR(908, place("JackpotWinPanel").w, 1);
}

TEST_F(JackpotWin, PulsesForAsLongAsTheStatusStays) {
  skip({201, 1000, 1400});
  int widest = 0;
  for (int i = 0; i < 150; ++i) {
    skip({20});
    const SDL_Rect now = place("JackpotWinPanel");
    EXPECT_GE(now.w, 908);
    EXPECT_LE(now.w, 1181);
    widest = std::max(widest, now.w);
  }
  EXPECT_GT(widest, 1170);
}

TEST_F(JackpotWin, GoesBackToIdleWithItsStatus) {
  skip({201, 1000, 700});
  win(1, false);
  EXPECT_EQ(1u, screen.app().linesOf("1|Hiding jackpot win animation."));
  for (const char* name : {"pDarkBackground", "JackpotWinPanel", "pParticleAnimation[1]"})
    EXPECT_FALSE(shown(name)) << name;
  for (const char* name : {"pJackpotFrame", "ControlCyphers", "pJackpotCurrency"})
    EXPECT_TRUE(screen.part(1, name)->isVisible()) << name;
  EXPECT_FALSE(screen.part(1, "pPanelAnimation")->isVisible());
  EXPECT_TRUE(historyShown(1));
  EXPECT_EQ(1u, sparkles().size());
  const SDL_Rect at = place("pJackpotPanel[1]");
  EXPECT_TRUE(SDL_RectEquals(&at, &from));
}

TEST_F(Jackpots, ASecondWinFliesLikeTheFirst) {
  start(4);
  win(1, true);
  screen.skip(201);
  for (Uint32 milliseconds : {1000, 700, 700}) screen.skip(milliseconds);  // it pulses
  win(1, false);
  win(2, true);
  screen.skip(201);
  SDL_Rect at = place("JackpotWinPanel"), from = TJackpotLayout(4).levelRect(2);
  EXPECT_TRUE(SDL_RectEquals(&at, &from));
  screen.skip(500);
  at = place("JackpotWinPanel");
  const float half = move_to_center(TAnimation(), 0.5f);
  EXPECT_NEAR(from.x + static_cast<float>(506 - from.x) * half, at.x, 1);
  EXPECT_EQ(908, at.w) << "it does not pulse yet";
  EXPECT_FALSE(shown("pParticleAnimation[2]"));
  screen.skip(500);
  at = place("JackpotWinPanel");
  EXPECT_EQ(506, at.x);
  EXPECT_TRUE(shown("pParticleAnimation[2]"));
}

TEST_F(Jackpots, AWinThatGoesBeforeItsStartLeavesTheSparkleWandering) {
  start(4);
  win(2, true);
  screen.skip(100);
  win(2, false);
  screen.skip(200);
  EXPECT_FALSE(shown("pDarkBackground"));
  for (int i = 0; i < 5; ++i) {
    EXPECT_EQ(1u, sparkles().size()) << i;
    screen.skip(2201);
  }
}

TEST_F(Jackpots, ASecondWinnerWaitsForTheFirst) {
  start(4);
  data[2].status = "WIN";
  win(1, true);
  EXPECT_EQ(1u, screen.app().linesWith("was won!"));
  screen.skip(210);
  data[2].potValue = 77;
  data[3].potValue = 78;
  sendData();
  EXPECT_EQ(1234569, screen.part<TControlCyphers3>(2, "ControlCyphers")->FinalValue());
  EXPECT_EQ(1234570, screen.part<TControlCyphers3>(3, "ControlCyphers")->FinalValue());
  win(1, false);
  EXPECT_EQ(0u, screen.app().linesWith("Hiding jackpot win animation.")) << "another win is there";
  EXPECT_EQ(77, screen.part<TControlCyphers3>(2, "ControlCyphers")->FinalValue());
  win(2, false);
  EXPECT_EQ(1u, screen.app().linesOf("1|Hiding jackpot win animation."));
  EXPECT_EQ(78, screen.part<TControlCyphers3>(3, "ControlCyphers")->FinalValue());
}

TEST_F(Jackpots, AChangeOfLevelsDuringAWinTakesThePictureAway) {
  start(4);
  win(3, true);
  screen.skip(210);
  screen.skip(700);
  const std::vector<JackpotsData> before = data;
  data.pop_back();
  sendData();
  screen.skip(20);
  EXPECT_EQ(nullptr, screen.find(kPanel + "pJackpotPanel[3]"));
  EXPECT_FALSE(shown("pDarkBackground"));
  sendData();
  EXPECT_EQ(1u, screen.app().linesOf("1|Hiding jackpot win animation."));
  data = before;
  sendData();
  screen.skip(20);
  sendData();
  screen.skip(210);
  EXPECT_TRUE(shown("pDarkBackground")) << "a win on a panel that was built anew";
  EXPECT_NE(nullptr, screen.find(kPanel + "JackpotWinPanel")->GetTargetTexture());
}

TEST_F(Jackpots, TheToggledWinPlaysTheLevelOfItsNumber) {
  start(2);
  toggle(2);
  EXPECT_TRUE(shown("pDarkBackground"));
  EXPECT_FALSE(screen.part(1, "pJackpotFrame")->isVisible());
  screen.skip(1001);
  EXPECT_TRUE(shown("pParticleAnimation[1]"));
  toggle(1);
  EXPECT_FALSE(shown("pDarkBackground")) << "any number ends it";
  EXPECT_TRUE(screen.part(1, "pJackpotFrame")->isVisible());
  EXPECT_EQ(1u, sparkles().size());
  toggle(1);
  EXPECT_FALSE(screen.part(0, "pJackpotFrame")->isVisible());
}

TEST_F(Jackpots, TheToggleIsLoggedAndDoesNothingWithoutItsLevel) {
  start(0);
  toggle(1);
  data = levels(2);
  sendData();
  for (intptr_t number : {0, 5, -1, 3}) toggle(number);
  for (const char* number : {"0", "1", "5", "-1", "3"})
    EXPECT_EQ(1u, screen.app().linesOf(std::string("4|No win to toggle on jackpot level ") + number + "."));
  EXPECT_FALSE(shown("pDarkBackground"));
  EXPECT_EQ(1u, sparkles().size());
}

TEST_F(Jackpots, ALevelWithoutAPlaceIsWarnedOf) {
  start({paneldata::level(0, 100), paneldata::level(4, 200)});
  EXPECT_EQ(1u, screen.app().linesOf("4|Jackpot level with id 4 cannot be shown: ids are 0 to 3, each once."));
}

TEST_F(Jackpots, ThePictureOfTheLevelKeepsItsSoftEdges) {
  start(4);
  win(2, true);
  screen.skip(201);
  SDL_Renderer* renderer = screen.renderer();
  SDL_Texture* layer = screen.find(kPanel + "JackpotWinPanel")->GetTargetTexture();
  SDL_SetRenderTarget(renderer, layer);
  const auto at = [&](int x, int y) {
    Uint32 colour = 0;
    const SDL_Rect one{147 + x, 587 + y, 1, 1};
    SDL_RenderReadPixels(renderer, &one, SDL_PIXELFORMAT_ARGB8888, &colour, 4);
    return colour;
  };
  EXPECT_EQ(0x806e3c1eu, at(300, 2)) << "the frame's half transparent edge as it is in the picture";
  EXPECT_EQ(0xff6e3c1eu, at(300, 20));
  EXPECT_EQ(0x00000000u, at(300, -2)) << "nothing around it";
  SDL_SetRenderTarget(renderer, nullptr);
  EXPECT_EQ(1, screen.part(2, "pJackpotFrame")->getBlendMode()) << "the frame itself is blended as before";
}

TEST_F(Jackpots, ThePictureOfTheLevelIsTakenAnewAfterLostTextures) {
  start(4);
  win(2, true);
  screen.skip(201);
  SDL_Renderer* renderer = screen.renderer();
  SDL_Texture* layer = screen.find(kPanel + "JackpotWinPanel")->GetTargetTexture();
  const auto picture = [&] {
    std::vector<Uint32> pixels(480 * 270);
    SDL_SetRenderTarget(renderer, layer);
    const SDL_Rect middle{140, 580, 480, 270};
    SDL_RenderReadPixels(renderer, &middle, SDL_PIXELFORMAT_ARGB8888, pixels.data(), 480 * 4);
    SDL_SetRenderTarget(renderer, nullptr);
    return pixels;
  };
  const auto lose = [&] {
    SDL_SetRenderTarget(renderer, layer);
    SDL_SetRenderDrawColor(renderer, 255, 0, 255, 255);
    SDL_RenderClear(renderer);
    SDL_SetRenderTarget(renderer, nullptr);
  };
  const auto taken = picture();
  lose();
  ASSERT_NE(taken, picture());
  panel()->OnTexturesLost();
  EXPECT_EQ(taken, picture());
  EXPECT_FALSE(screen.part(2, "pJackpotFrame")->isVisible()) << "it flies on";

  data.pop_back();  // other levels during the win: nothing has been taken of them
  for (JackpotsData& level : data) level.status = "";
  sendData();
  screen.skip(201);
  layer = screen.find(kPanel + "JackpotWinPanel")->GetTargetTexture();
  ASSERT_TRUE(layer);
  const auto empty = picture();
  EXPECT_EQ(empty, std::vector<Uint32>(empty.size()));
  lose();
  panel()->OnTexturesLost();
  EXPECT_EQ(empty, picture());
}

TEST_F(Jackpots, AnOverlayHidesTheHistoryAndItsEndShowsItAgain) {
  start(4);
  EXPECT_TRUE(historyShown(0));
  screen.send(T_GAME_LOADED, gameValue("Reels", GAMETYPE_VESPERA_SLOTGAME));
  EXPECT_EQ(1u, screen.app().linesOf("1|Loading overlay for game 'Reels' inside Games/Reels/Icons/"));
  EXPECT_TRUE(shown("pAnimationOverlay[Reels]"));
  EXPECT_TRUE(panel()->isOverlayVisible());
  const SDL_Rect at = place("pAnimationOverlay[Reels]");
  EXPECT_TRUE(at.x == 1110 && at.y == 90 && at.w == 810 && at.h == 900);
  EXPECT_FALSE(historyShown(0));
  for (int i = 0; i < 3; ++i) screen.send(T_BET_LIMITS, paneldata::bets(100, 20, 200));
  EXPECT_EQ(1u, screen.app().linesWith("1|Loading overlay")) << "the name is active already";

  win(1, true);
  screen.skip(201);
  win(1, false);
  EXPECT_FALSE(historyShown(1)) << "a win leaves the hidden history hidden";

  screen.send(T_GAME_LOADED, gameValue("Wheels", GAMETYPE_VESPERA_SLOTGAME));
  EXPECT_EQ(nullptr, screen.find(kPanel + "pAnimationOverlay[Reels]"));
  EXPECT_TRUE(shown("pAnimationOverlay[Wheels]"));
  screen.send(T_GAME_EXITED);
  EXPECT_EQ(nullptr, screen.find(kPanel + "pAnimationOverlay[Wheels]"));
  EXPECT_FALSE(panel()->isOverlayVisible());
  EXPECT_TRUE(historyShown(0));
  EXPECT_TRUE(historyShown(1));
}

TEST_F(Jackpots, TheOverlayLoopsFromItsThirtiethFrame) {
  start(1);
  screen.send(T_GAME_LOADED, gameValue("Reels", GAMETYPE_VESPERA_SLOTGAME));
  screen.joinSprites();
  auto* overlay = screen.find<TSpriteAnimation>(kPanel + "pAnimationOverlay[Reels]");
  ASSERT_NE(nullptr, overlay);
  screen.frame();
  std::set<int> first, later;
  for (int i = 0; i < 39; ++i) {
    screen.skip(40);
    first.insert(overlay->GetCurrentFrame());
  }
  EXPECT_EQ(1, *first.begin());
  for (int i = 0; i < 60; ++i) {
    screen.skip(40);
    later.insert(overlay->GetCurrentFrame());
  }
  EXPECT_EQ(30, *later.begin());
  EXPECT_EQ(39, *later.rbegin());
}

TEST_F(Jackpots, WithoutLevelsTheStillOverlayTakesTheScreen) {
  start(0);
  screen.send(T_GAME_LOADED, gameValue("Reels", GAMETYPE_VESPERA_SLOTGAME));
  EXPECT_TRUE(shown("pImageOverlay[Reels]"));
  EXPECT_EQ(nullptr, screen.find(kPanel + "pAnimationOverlay[Reels]"));
  EXPECT_FALSE(panel()->isOverlayVisible());
  EXPECT_TRUE(shown("logo"));
  const SDL_Rect at = place("pImageOverlay[Reels]");
  EXPECT_TRUE(at.x == 0 && at.y == 0 && at.w == 1920 && at.h == 1080);
  EXPECT_NE(nullptr, screen.find(kPanel + "pImageOverlay[Reels]")->GetTargetTexture());
  screen.send(T_GAME_EXITED);
  EXPECT_EQ(nullptr, screen.find(kPanel + "pImageOverlay[Reels]"));
}

TEST_F(Jackpots, NoOverlayUnderATextAndTheLevelsComeBackWhenItGoes) {
  start(3);
  screen.send(T_JACKPOT_ERROR, value_string("METER FAULT"));
  screen.send(T_GAME_LOADED, gameValue("Reels", GAMETYPE_VESPERA_SLOTGAME));
  EXPECT_EQ(0u, screen.app().linesWith("Loading overlay"));
  EXPECT_EQ(nullptr, screen.find(kPanel + "pJackpotPanel[0]"));
  EXPECT_TRUE(shown("logo"));
  screen.app().forgetLines();
  screen.send(T_JACKPOT_ERROR, value_string("METER FAULT"));
  EXPECT_TRUE(shown("jackpotErrorLabel")) << "the same text again changes nothing";
  screen.send(T_JACKPOT_ERROR, value_string(""));
  EXPECT_NE(nullptr, screen.find(kPanel + "pJackpotPanel[2]"));
  EXPECT_FALSE(shown("logo"));
  EXPECT_FALSE(shown("jackpotErrorLabel"));

  screen.send(T_INTEGRITY_DATA, value_string("CRC 1234"));
  EXPECT_EQ(nullptr, screen.find(kPanel + "pJackpotPanel[0]"));
  screen.send(T_JACKPOT_ERROR, value_string("METER FAULT"));
  EXPECT_FALSE(shown("jackpotErrorLabel")) << "the integrity text goes before everything";
  screen.send(T_INTEGRITY_DATA, value_string(""));
  EXPECT_EQ(nullptr, screen.find(kPanel + "pJackpotPanel[0]"));
  EXPECT_TRUE(shown("jackpotErrorLabel")) << "its end brings what has waited";
  screen.send(T_INTEGRITY_DATA, value_string("CRC 1234"));
  EXPECT_TRUE(shown("integrityLabel"));
  EXPECT_TRUE(shown("jackpotErrorLabel"));
  screen.send(T_INTEGRITY_DATA, value_string(""));
  EXPECT_TRUE(shown("logo")) << "the error text still wants it";
  screen.send(T_JACKPOT_ERROR, value_string(""));
  EXPECT_NE(nullptr, screen.find(kPanel + "pJackpotPanel[2]"));
  EXPECT_FALSE(shown("logo"));
}

TEST_F(Jackpots, AnErrorTextDuringAWinEndsItAndTheNextWinShows) {
  start(2);
  win(0, true);
  screen.skip(201);
  screen.send(T_JACKPOT_ERROR, value_string("METER FAULT"));
  screen.skip(500);
  EXPECT_EQ(nullptr, screen.find(kPanel + "pDarkBackground"));
  screen.send(T_JACKPOT_ERROR, value_string(""));
  screen.skip(20);
  win(0, false);
  win(1, true);
  screen.skip(210);
  EXPECT_TRUE(shown("pDarkBackground"));
  EXPECT_FALSE(screen.part(1, "pJackpotFrame")->isVisible());
}

TEST_F(Jackpots, IdsWithGapsEndTheRotationWithoutHarm) {
  data = {paneldata::level(0, 100), paneldata::level(3, 200)};
  start(data);
  for (int i = 0; i < 10; ++i) screen.skip(2201);
  EXPECT_LE(sparkles().size(), 1u);
  EXPECT_NE(nullptr, screen.part(3, "pJackpotFrame"));
}
