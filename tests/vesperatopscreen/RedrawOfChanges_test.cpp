// The same evening three times, with seeded events: each frame drawn by hand, by the module that draws everything,
// and by the one that draws what changes. What the screen shows is the same after each frame, pixel for pixel.
#include <gtest/gtest.h>
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/Glass.h"
#include "tests/support/PanelSkin.h"
#include "tests/support/TestFont.h"
#include "tests/support/TopScreenHarness.h"
#include "vendelo-sdl2/TAsyncJobs.h"

using namespace vendelo_sdl2;
using paneldata::gameValue;
using paneldata::Text;
using xmlrpc_c::value_boolean;
using xmlrpc_c::value_int;
using xmlrpc_c::value_string;
using xmlrpc_c::value_struct;

namespace {

class Evening {
 public:
  Evening(unsigned seed, DrawnBy drawnBy) : mDrawnBy(drawnBy), mScreen("redraw", drawnBy), mRandom(seed) {}

  // What the screen has shown after each of so many frames.
  std::vector<glass::Seen> live(int frames) {
    for (int i = 0; i < 4; ++i) pass(200, "the loader");
    begin();
    while (static_cast<int>(mShown.size()) < frames) {
      const char* const what = happen();
      settle();
      if (number(0, 2) == 0) backToTheLevels();
      some(6, what);
    }
    return mShown;
  }

 private:
  int number(int least, int most) {
    return least + static_cast<int>(mRandom() % static_cast<unsigned>(most - least + 1));
  }
  JackpotsData& anyLevel() { return mLevels[static_cast<size_t>(number(0, 3))]; }

  void begin() {
    mScreen.status([](PlatformState& state) {
      state.ActiveGame = GAME_MENU;
      state.CurrentBet = 100;
      state.ExtraData = pages(20);
    });
    mLevels = paneldata::levels(4);
    jackpots();
    settle();
  }

  // Which have most that moves, on a window as it should be.
  void backToTheLevels() {
    mScreen.app().deliver({{T_GAME_EXITED, xmlrpc_c::value_nil()},
                           {T_PAYTABLE_STATE, value_int(0)},
                           {T_INSTRUCTIONS, paneldata::texts({})},
                           {T_JACKPOT_ERROR, value_string("")},
                           {T_INTEGRITY_DATA, value_string("")}});
    SDL_SetWindowSize(mScreen.screen().getWindow(), 1920, 1080);
    mScreen.screen().RotateScreen(false);
    jackpots();
    settle();
  }

  void pass(Uint32 milliseconds, const char* what) {
    std::srand(mRandom());  // which the panel takes its chances from, also while it waits for pictures
    mScreen.skip(milliseconds);
    mShown.push_back({glass::sums(), what});
  }

  void some(int frames, const char* what) {
    for (int i = number(1, frames); i > 0; --i) pass(static_cast<Uint32>(number(0, 3) ? 16 : number(1, 400)), what);
  }

  // Pictures that are being decoded come at a moment that the machine chooses: the evening waits for them.
  void settle() {
    for (int i = 0; i < 3; ++i) {
      mScreen.joinSprites();
      ASSERT_TRUE(TAsyncJob::WaitForNone(60000));
      mScreen.frame();
    }
  }

  static xmlrpc_c::cstruct pages(int paylines) {
    return paneldata::setup({paneldata::page("paytable", {Text{}}), paneldata::page("paytableBonus", {Text{}})},
                            paylines, -1);
  }
  void jackpots() { mScreen.send(T_JACKPOT_DATA, paneldata::levelsValue(mLevels)); }
  void game(int event, const char* name, GameTypes type) { mScreen.send(event, gameValue(name, type)); }
  void push(Uint32 type, Uint8 windowEvent) {
    SDL_Event event{};
    event.type = type;
    event.window.event = windowEvent;
    event.window.windowID = SDL_GetWindowID(mScreen.screen().getWindow());
    SDL_PushEvent(&event);
  }

  const char* happen() {
    // Everything in its turn, in ever another order.
    if (mDeck.empty()) {
      for (int what = 0; what < kKinds; ++what) mDeck.push_back(what);
      for (int left = kKinds; left > 1; --left)
        std::swap(mDeck[static_cast<size_t>(number(0, left - 1))], mDeck[static_cast<size_t>(left - 1)]);
    }
    const int what = mDeck.back();
    mDeck.pop_back();
    return what < 10 ? levelsChange(what) : what < 16 ? gamesChange(what) : windowChanges(what);
  }

  const char* levelsChange(int what) {
    switch (what) {
      case 3:
        anyLevel().status = "WIN";
        jackpots();
        for (int i = number(0, 3); i > 0; --i) {
          settle();
          pass(250, "the notice of a win");
        }
        return "a win";
      case 4:
        for (JackpotsData& level : mLevels) level.status = "";
        jackpots();
        return "the end of the wins";
      case 5:
        anotherText(anyLevel());
        return "another text";
      case 6:
        mLevels = paneldata::levels(number(0, 1) ? 4 : number(1, 4));
        jackpots();
        mLevels = paneldata::levels(4);
        return "other levels";
      case 7:
        mScreen.send(number(0, 1) ? T_JACKPOT_ERROR : T_INTEGRITY_DATA, value_string(number(0, 1) ? "X 1" : ""));
        return "an error or the integrity text";
      case 8:
        mScreen.send(T_DEMO_MODE, value_boolean(number(0, 1) != 0));
        return "the demo mode";
      default:
        for (JackpotsData& level : mLevels) level.potValue += number(0, 5000);
        jackpots();
        return "the pots";
    }
  }

  // More than once, and often as long as the one before.
  void anotherText(JackpotsData& level) {
    // Longer than its bar a text scrolls.
    static constexpr const char* kTails[] = {
      "", " EUR, IN THIS HOUSE AND ON THIS VERY MACHINE, AT TWENTY TO TEN",
      " EUR, THE HIGHEST SINCE THE YEAR BEGAN, ON A MACHINE OF THE FIRST ROW"};
    const char* const tail = kTails[number(0, 2)];
    for (int i = 0; i < 3; ++i) {
      level.LastWinData = "LAST WIN " + std::to_string(number(1, 99999)) + tail;
      jackpots();
      some(2, "a text");
    }
  }

  const char* gamesChange(int what) {
    static constexpr const char* kGames[] = {"Reels", "Wheels"};
    const char* const name = kGames[number(0, 1)];
    switch (what) {
      case 10:
        game(number(0, 2) ? T_GAME_LOADED : T_GAME_LOADING, name, GAMETYPE_VESPERA_SLOTGAME);
        return "a game";
      case 11:
        game(T_GAME_LOADED, name, GAMETYPE_VESPERA_SLOTGAME);
        for (int pages = number(1, 3); pages > 0; --pages) {
          mScreen.send(T_PAYTABLE_STATE, value_int(number(1, 3)));
          settle();
          mScreen.skip(600);  // while it comes
          some(2, "a page of a paytable");
        }
        if (number(0, 1)) mScreen.send(T_PAYTABLE_STATE, value_int(0));
        return "a paytable";
      case 12:
        if (number(0, 1)) mScreen.send(T_EXTRA_DATA, value_struct(pages(number(1, 20))));
        mScreen.send(T_BET_LIMITS, paneldata::bets(number(1, 9) * 100, 20, 2000));
        return "the bet";
      case 13:
        // The line that it shows stands below a game.
        game(T_GAME_LOADED, name, GAMETYPE_VESPERA_SLOTGAME);
        settle();
        for (const char* const line : {"A", "B", "ABC"}) {
          mScreen.send(T_LANGUAGE, paneldata::texts({number(0, 1) ? "en" : "sl", "MIN", "MAX", line, line}));
          settle();
          some(2, "a language");
        }
        return "the language";
      case 14:
        for (const char* const text : {"SPIN", "", "STOP"}) {
          if (text[0] == 0 && number(0, 1)) continue;
          mScreen.send(T_INSTRUCTIONS, text[0] != 0 ? paneldata::texts({text, "", std::to_string(number(1, 9))})
                                                    : paneldata::texts({}));
          settle();
          some(3, "instructions");
        }
        return "the instructions";
      default:
        game(T_GAME_LOADED, "Wheel", GAMETYPE_ROULETTE);
        for (int i = number(0, 3); i > 0; --i) pass(40, "roulette");
        if (number(0, 1)) jackpots();
        mScreen.send(T_GAME_EXITED);
        return "roulette's end";
    }
  }

  const char* windowChanges(int what) {
    static constexpr SDL_Point kSizes[] = {{1280, 720}, {1024, 768}, {1920, 1200}, {640, 1080}, {1920, 1080}};
    PanelScreen& screen = mScreen.screen();
    switch (what) {
      case 16: {
        const SDL_Point size = kSizes[number(0, 4)];
        SDL_SetWindowSize(screen.getWindow(), size.x, size.y);
        return "another size of the window";
      }
      case 17:
        // The picture of a level that is won is taken anew, with the value that the level has come to meanwhile.
        for (JackpotsData& level : mLevels) level.status = "";
        if (number(0, 1)) backToTheLevels();
        jackpots();
        settle();
        // Whoever draws by hand knows nothing of it.
        if (mDrawnBy != DrawnBy::HAND) {
          glass::loseTargets(mScreen.renderer());
          push(number(0, 1) ? SDL_RENDER_TARGETS_RESET : SDL_RENDER_DEVICE_RESET, 0);
        } else {
          number(0, 1);
        }
        return "the loss of textures";
      case 18:
        glass::spoil();
        push(SDL_WINDOWEVENT, SDL_WINDOWEVENT_EXPOSED);
        return "another window";
      default:
        screen.RotateScreen(number(0, 3) == 0);
        return "a screen turned over";
    }
  }

  static constexpr int kKinds = 20;

  const DrawnBy mDrawnBy;
  TopScreenHarness mScreen;
  std::mt19937 mRandom;
  std::vector<int> mDeck;
  std::vector<JackpotsData> mLevels;
  std::vector<glass::Seen> mShown;
};

int told(const char* variable, int otherwise) {
  const char* const text = std::getenv(variable);
  return text ? std::atoi(text) : otherwise;
}

}  // namespace

TEST(RedrawOfChanges, ShowsWhatDrawingEverythingShows) {
  // Grounds of the screen's size, as skins have them: a scaled one would have to be drawn whole each time.
  const std::string skin = TopScreenHarness("redraw").folder() + "VESPERA/TOP_SKIN/";
  testfont::writePicture(skin + "Background.png", 1920, 1080, {20, 30, 60, 255});
  testfont::writePicture(skin + "ClientDemo.png", 1920, 1080, {90, 0, 60, 40});
  // And pages of one size, which come in each other's place.
  const std::string bonus = "Games/Reels/Icons/paytable/InfoPage_Paytable_Bonus.png";
  panelskin::writeCard(skin + "../../" + bonus, 700, 400, {60, 200, 90, 255});
  const int frames = told("REDRAW_FRAMES", 100), first = told("REDRAW_SEED", 1);
  for (int seed = first; seed < first + told("REDRAW_EVENINGS", 3); ++seed) {
    const auto evening = [&](DrawnBy drawnBy) {
      return Evening(static_cast<unsigned>(seed), drawnBy).live(frames);
    };
    const std::vector<glass::Seen> due = evening(DrawnBy::HAND);
    for (const DrawnBy drawnBy : {DrawnBy::CHANGES, DrawnBy::ALL}) {
      if (drawnBy == DrawnBy::ALL && seed % 3 != 1) continue;
      const std::vector<glass::Seen> is = evening(drawnBy);
      if (testing::Test::HasFatalFailure()) return;
      ASSERT_EQ("", glass::difference(due, is))
        << "evening " << seed << (drawnBy == DrawnBy::ALL ? ", all drawn" : "");
    }
    const size_t pictures = glass::pictures(due);
    EXPECT_GT(pictures, due.size() / 5) << "an evening in which something happens";
    EXPECT_LT(pictures, due.size());
  }
}
