// The numbers of the protocol, each of them.
#include <gtest/gtest.h>

#include <vector>

#include "common/Event.h"
#include "common/KSLTypes.h"

namespace {

struct Run {
  int first;  // the numbers go on from here without a gap
  std::vector<int> names;
};

void expectRuns(const std::vector<Run>& runs) {
  for (const Run& run : runs)
    for (size_t n = 0; n < run.names.size(); ++n)
      EXPECT_EQ(run.first + static_cast<int>(n), run.names[n]) << "name " << n << " from " << run.first;
}

}  // namespace

TEST(EventNumbers, OfErrors) {
  expectRuns({{-10,
               {E_UNNKNOWN_PARAMETER, E_UNSYNC, E_DUPLICATE, E_PROTOCOL_ERROR, E_SERVER_FULL, E_UNKNOWN_GAME,
                E_NOT_SUPPORTED, E_INIT_REJECTED, E_ALREADY_REGISTERED, E_NOT_REGISTERED, E_NO_ERROR}},
              {-101, {E_NO_ACTIVE_GAME}},
              {-501, {E_COMMUNICATION_ERROR, E_INTERNAL_ERROR}}});
}

TEST(EventNumbers, OfMethods) {
  expectRuns({{0,
               {M_PUSHEVENTS, M_POPEVENTS, M_GETPARAM, M_SETPARAM, M_GETCOUNTER, M_SETCOUNTER, M_SHIFTCOUNTER,
                M_INIT, M_BYE, M_PLATFORM_STATUS, M_VOLUME, M_DENOMINATION, M_NULL}}});
}

TEST(EventNumbers, OfEventsToAnyClient) {
  expectRuns(
    {{1,
      {P_GAME_LOCK, P_GAME_UNLOCK, P_GAME_EXIT, P_BALANCE_UPDATE, P_DOOR_OPEN, P_DOOR_CLOSE, P_BUTTON_PRESS,
       P_BUTTON_RELEASE, P_BUTTON_REPEAT, P_ADMINKEY_INSERTED, P_ADMINKEY_REMOVED, P_SHOW_MESSAGE, P_JACKPOT_WON,
       P_VIRTUAL_CREDIT_CHANGE, P_EXECUTE_DEMONSTRATION, P_GAMEROUND_PROCESSED}}});
}

TEST(EventNumbers, OfEventsToATopScreen) {
  expectRuns(
    {{100,
      {T_GAME_LOADING, T_GAME_LOADED, T_DEMO_MODE, T_INTEGRITY_DATA, T_BET_LIMITS, T_GAME_EXITED, T_INSTRUCTIONS,
       T_PAYTABLE_STATE, T_JACKPOT_ERROR, T_JACKPOT_REFRESH, T_JACKPOT_DATA, T_EXTRA_DATA, T_LANGUAGE}}});
}

TEST(EventNumbers, OfEventsFromAGame) {
  expectRuns({{-2, {G_GAME_TIMEOUT}},
              {1,
               {G_GAME_START,
                G_GAME_END,
                G_GAME_READY,
                G_BUTTON_LIGHTS_UPDATE,
                G_BALANCE_UPDATE,
                G_BET_CHANGED,
                G_GAME_STARTED,
                G_SPIN_START,
                G_SPIN_BOUNCE,
                G_SPIN_RESULT,
                G_SPIN_CAN_STOP,
                G_SPIN_INSTANT_STOP,
                G_SPIN_STOP_REEL,
                G_GAME_COMPLETED,
                G_REEL_REVEALS_SCATTER_FOR_TRIGGER,
                G_WIN_UPDATE,
                G_TAKE_WIN,
                G_TAKE_OR_GAMBLE,
                G_MAX_WIN_LIMIT_REACHED,
                G_GAFF_REELS_MOVED,
                G_CGW_PRESENTED,
                G_INTRO_END,
                G_PLUGIN_UPDATE,
                G_JACKPOT_CHECKED,
                G_PAYTABLE_CLOSE,
                G_PAYTABLE_OPEN,
                G_PAYTABLE_NEXT,
                G_PAYTABLE_PREVIOUS,
                G_RESUME_START,
                G_RESUME_END,
                G_REPLAY_START,
                G_REPLAY_END,
                G_CHILD_READY,
                G_CHILD_NEW,
                G_CHILD_START_FAILED,
                G_CHILD_CLOSE,
                G_CHILD_REQUEST_CLOSE,
                G_CHILD_BALANCE_UPDATE,
                G_KEY_PRESS,
                G_RESOURCE_PHASE_COMPLETE,
                G_RESOURCE_GROUP_COMPLETE,
                G_RESOURCE_LOAD_GROUP_NOW,
                G_RESOURCE_LOAD_GROUP_NOW_COMPLETE,
                G_SOUND_COMPLETE,
                G_SOUND_START,
                G_SOUND_LOOP,
                G_STATE_ENTER,
                G_STATE_LEAVE,
                G_ON_RESIZE,
                G_ORIENTATION_CHANGED,
                G_FREEROUND_ERROR,
                G_FREEROUND_READY,
                G_FREEROUND_SHOWN,
                G_FREEROUND_ACTIVATED,
                G_FREEROUND_DEACTIVATED,
                G_JACKPOT_WIN,
                G_JACKPOT_CELEBRATE,
                G_JACKPOT_UPDATE,
                G_JACKPOT_HISTORY_SHOW,
                G_JACKPOT_HISTORY_HIDE,
                G_JACKPOT_HISTORY_REFRESH,
                G_JACKPOT_CHANGE_TITLE,
                G_AUTOPLAY_ACTIVATED,
                G_AUTOPLAY_DEACTIVATED,
                G_BONUS_ENTER,
                G_BONUS_ENTER_START,
                G_BONUS_LEAVE,
                G_BONUS_START,
                G_BONUS_END,
                G_BONUS_AFTER_LAST_SIDEBAND_MOVE,
                G_BONUS_LAST_FIRST_WIN_LOOP,
                G_BONUS_CUSTOM,
                G_BONUS_DIALOG_SHOWN,
                G_BONUS_DIALOG_HIDDEN,
                G_BONUS_ANIM_SYMB_AFTER_BELL,
                G_BUTTON_SPIN,
                G_BUTTON_STOP,
                G_BUTTON_COLLECT,
                G_BUTTON_START,
                G_BUTTON_START_BONUS,
                G_BUTTON_STOP_WIN_SCROLL}},
              {92,
               {G_BUTTON_BET_MP_PLUS,
                G_BUTTON_BET_MP_MINUS,
                G_BUTTON_BET_MP_MAX,
                G_BUTTON_GAMBLE,
                G_BUTTON_GAMBLE_RED,
                G_BUTTON_GAMBLE_BLACK,
                G_BUTTON_STOP_WIN_SCROLL_GAMBLE,
                G_BUTTON_AUTOPLAY,
                G_BUTTON_FULLSCREEN,
                G_BUTTON_WINDOW,
                G_BUTTON_SOUND_ON,
                G_BUTTON_SOUND_OFF,
                G_BUTTON_HISTORY,
                G_ERROR_SHOWN,
                G_ERROR_HIDDEN,
                G_GAMBLE_START,
                G_GAMBLE_CHOOSE,
                G_GAMBLE_RESULT,
                G_GAMBLE_REVEAL,
                G_GAMBLE_WIN_SCROLL_START,
                G_GAMBLE_WIN_SCROLL_END,
                G_GAMBLE_STOP_WIN_SCROLL,
                G_GAMBLE_ENABLED,
                G_GAMBLE_DISABLED,
                G_GAMBLE_LIMIT_REACHED,
                G_HISTORY_PREV_ROUND,
                G_HISTORY_NEXT_ROUND,
                G_HISTORY_CLOSE,
                G_HISTORY_OPEN,
                G_WINS_PRESENT,
                G_WINS_PRESENT_FEATURE,
                G_WINS_PRESENT_START,
                G_WINS_PRESENT_STOP,
                G_WINS_PRESENT_COMPLETE,
                G_WINS_PRESENT_SCROLL_START,
                G_WINS_PRESENT_SCROLL_END,
                G_PRESENT_LINE_WIN,
                G_PRESENT_SCATTER_WIN,
                G_PRESENT_FIRST_SCATTER_WIN_COMPLETE,
                G_PRESENT_ALL_WINS,
                G_PRESENT_WIN_LOOP,
                G_PRELUDE_START,
                G_PRELUDE_END,
                G_PRESENT_INSTANT_WIN,
                G_PRESENT_MONEY_SHOWER,
                G_PRESENT_FREESPINS_START,
                G_PRESENT_FREESPINS_RETRIGGER,
                G_PRESENT_WILD_WITHOUT_LINE_WIN,
                G_AFT_JACKPOT_DIALOG_SHOWN,
                G_AFT_JACKPOT_DIALOG_HIDDEN}},
              {200,
               {G_BET, G_SAVE_POINT, G_TOP_SCREEN_DATA, G_GAMEROUND_COMPLETE, G_SCREENSHOT_TAKEN, G_LOG,
                G_WIN_NUMBER_KNOWN}},
              {300, {G_GAME_CLOSING, G_GAME_CLOSE_CANCELED}}});
}
