#pragma once

#include <xmlrpc-c/base.h>

#include <cstdarg>
#include <cstdint>
#include <memory>
#include <string>
#include <xmlrpc-c/base.hpp>

// The protocol's error codes. The service puts those from -1 to -101 into "faultCode"; the client itself makes
// only the last two. A KSLError may also hold a value that stands here for nothing (1: failed transport).
enum ErrorTypes : int {
  E_NO_ERROR = 0,
  E_NOT_REGISTERED = -1,
  E_ALREADY_REGISTERED = -2,
  E_INIT_REJECTED = -3,
  E_NOT_SUPPORTED = -4,
  E_UNKNOWN_GAME = -5,
  E_SERVER_FULL = -6,
  E_PROTOCOL_ERROR = -7,
  E_DUPLICATE = -8,
  E_UNSYNC = -9,
  E_UNNKNOWN_PARAMETER = -10,
  E_NO_ACTIVE_GAME = -101,
  E_INTERNAL_ERROR = -500,
  E_COMMUNICATION_ERROR = -501
};

// Events from the service to any client.
enum PlatformEvent : int {
  P_GAME_LOCK = 1,
  P_GAME_UNLOCK = 2,
  P_GAME_EXIT = 3,
  P_BALANCE_UPDATE = 4,
  P_DOOR_OPEN = 5,
  P_DOOR_CLOSE = 6,
  P_BUTTON_PRESS = 7,
  P_BUTTON_RELEASE = 8,
  P_BUTTON_REPEAT = 9,
  P_ADMINKEY_INSERTED = 10,
  P_ADMINKEY_REMOVED = 11,
  P_SHOW_MESSAGE = 12,
  P_JACKPOT_WON = 13,
  P_VIRTUAL_CREDIT_CHANGE = 14,
  P_EXECUTE_DEMONSTRATION = 15,
  P_GAMEROUND_PROCESSED = 16
};

// Events from the service to a client that registered as a top screen. Each renews one field of PlatformState.
enum TopScreenEvent : int {
  T_GAME_LOADING = 100,
  T_GAME_LOADED = 101,
  T_DEMO_MODE = 102,
  T_INTEGRITY_DATA = 103,
  T_BET_LIMITS = 104,
  T_GAME_EXITED = 105,
  T_INSTRUCTIONS = 106,
  T_PAYTABLE_STATE = 107,
  T_JACKPOT_ERROR = 108,
  T_JACKPOT_REFRESH = 109,
  T_JACKPOT_DATA = 110,
  T_EXTRA_DATA = 111,
  T_LANGUAGE = 112
};

// Events from a client to the service. A number space of its own: 100 means another thing in each direction.
enum KSLGameEvent : int {
  G_GAME_TIMEOUT = -2,
  G_GAME_START = 1,
  G_GAME_END = 2,
  G_GAME_READY = 3,
  G_GAME_CLOSING = 300,
  G_GAME_CLOSE_CANCELED = 301,
  G_BUTTON_LIGHTS_UPDATE = 4,
  G_BALANCE_UPDATE = 5,
  G_BET_CHANGED = 6,
  G_GAME_STARTED = 7,
  G_SPIN_START = 8,
  G_SPIN_BOUNCE = 9,
  G_SPIN_RESULT = 10,
  G_SPIN_CAN_STOP = 11,
  G_SPIN_INSTANT_STOP = 12,
  G_SPIN_STOP_REEL = 13,
  G_GAME_COMPLETED = 14,
  G_REEL_REVEALS_SCATTER_FOR_TRIGGER = 15,
  G_WIN_UPDATE = 16,
  G_TAKE_WIN = 17,
  G_TAKE_OR_GAMBLE = 18,
  G_MAX_WIN_LIMIT_REACHED = 19,
  G_GAFF_REELS_MOVED = 20,
  G_CGW_PRESENTED = 21,
  G_INTRO_END = 22,
  G_PLUGIN_UPDATE = 23,
  G_JACKPOT_CHECKED = 24,
  G_PAYTABLE_CLOSE = 25,
  G_PAYTABLE_OPEN = 26,
  G_PAYTABLE_NEXT = 27,
  G_PAYTABLE_PREVIOUS = 28,
  G_RESUME_START = 29,
  G_RESUME_END = 30,
  G_REPLAY_START = 31,
  G_REPLAY_END = 32,
  G_CHILD_READY = 33,
  G_CHILD_NEW = 34,
  G_CHILD_START_FAILED = 35,
  G_CHILD_CLOSE = 36,
  G_CHILD_REQUEST_CLOSE = 37,
  G_CHILD_BALANCE_UPDATE = 38,
  G_KEY_PRESS = 39,
  G_RESOURCE_PHASE_COMPLETE = 40,
  G_RESOURCE_GROUP_COMPLETE = 41,
  G_RESOURCE_LOAD_GROUP_NOW = 42,
  G_RESOURCE_LOAD_GROUP_NOW_COMPLETE = 43,
  G_SOUND_COMPLETE = 44,
  G_SOUND_START = 45,
  G_SOUND_LOOP = 46,
  G_STATE_ENTER = 47,
  G_STATE_LEAVE = 48,
  G_ON_RESIZE = 49,
  G_ORIENTATION_CHANGED = 50,
  G_FREEROUND_ERROR = 51,
  G_FREEROUND_READY = 52,
  G_FREEROUND_SHOWN = 53,
  G_FREEROUND_ACTIVATED = 54,
  G_FREEROUND_DEACTIVATED = 55,
  G_JACKPOT_WIN = 56,
  G_JACKPOT_CELEBRATE = 57,
  G_JACKPOT_UPDATE = 58,
  G_JACKPOT_HISTORY_SHOW = 59,
  G_JACKPOT_HISTORY_HIDE = 60,
  G_JACKPOT_HISTORY_REFRESH = 61,
  G_JACKPOT_CHANGE_TITLE = 62,
  G_AUTOPLAY_ACTIVATED = 63,
  G_AUTOPLAY_DEACTIVATED = 64,
  G_BONUS_ENTER = 65,
  G_BONUS_ENTER_START = 66,
  G_BONUS_LEAVE = 67,
  G_BONUS_START = 68,
  G_BONUS_END = 69,
  G_BONUS_AFTER_LAST_SIDEBAND_MOVE = 70,
  G_BONUS_LAST_FIRST_WIN_LOOP = 71,
  G_BONUS_CUSTOM = 72,
  G_BONUS_DIALOG_SHOWN = 73,
  G_BONUS_DIALOG_HIDDEN = 74,
  G_BONUS_ANIM_SYMB_AFTER_BELL = 75,
  G_BUTTON_SPIN = 76,
  G_BUTTON_STOP = 77,
  G_BUTTON_COLLECT = 78,
  G_BUTTON_START = 79,
  G_BUTTON_START_BONUS = 80,
  G_BUTTON_STOP_WIN_SCROLL = 81,
  G_BUTTON_BET_MP_PLUS = 92,
  G_BUTTON_BET_MP_MINUS = 93,
  G_BUTTON_BET_MP_MAX = 94,
  G_BUTTON_GAMBLE = 95,
  G_BUTTON_GAMBLE_RED = 96,
  G_BUTTON_GAMBLE_BLACK = 97,
  G_BUTTON_STOP_WIN_SCROLL_GAMBLE = 98,
  G_BUTTON_AUTOPLAY = 99,
  G_BUTTON_FULLSCREEN = 100,
  G_BUTTON_WINDOW = 101,
  G_BUTTON_SOUND_ON = 102,
  G_BUTTON_SOUND_OFF = 103,
  G_BUTTON_HISTORY = 104,
  G_ERROR_SHOWN = 105,
  G_ERROR_HIDDEN = 106,
  G_GAMBLE_START = 107,
  G_GAMBLE_CHOOSE = 108,
  G_GAMBLE_RESULT = 109,
  G_GAMBLE_REVEAL = 110,
  G_GAMBLE_WIN_SCROLL_START = 111,
  G_GAMBLE_WIN_SCROLL_END = 112,
  G_GAMBLE_STOP_WIN_SCROLL = 113,
  G_GAMBLE_ENABLED = 114,
  G_GAMBLE_DISABLED = 115,
  G_GAMBLE_LIMIT_REACHED = 116,
  G_HISTORY_PREV_ROUND = 117,
  G_HISTORY_NEXT_ROUND = 118,
  G_HISTORY_CLOSE = 119,
  G_HISTORY_OPEN = 120,
  G_WINS_PRESENT = 121,
  G_WINS_PRESENT_FEATURE = 122,
  G_WINS_PRESENT_START = 123,
  G_WINS_PRESENT_STOP = 124,
  G_WINS_PRESENT_COMPLETE = 125,
  G_WINS_PRESENT_SCROLL_START = 126,
  G_WINS_PRESENT_SCROLL_END = 127,
  G_PRESENT_LINE_WIN = 128,
  G_PRESENT_SCATTER_WIN = 129,
  G_PRESENT_FIRST_SCATTER_WIN_COMPLETE = 130,
  G_PRESENT_ALL_WINS = 131,
  G_PRESENT_WIN_LOOP = 132,
  G_PRELUDE_START = 133,
  G_PRELUDE_END = 134,
  G_PRESENT_INSTANT_WIN = 135,
  G_PRESENT_MONEY_SHOWER = 136,
  G_PRESENT_FREESPINS_START = 137,
  G_PRESENT_FREESPINS_RETRIGGER = 138,
  G_PRESENT_WILD_WITHOUT_LINE_WIN = 139,
  G_AFT_JACKPOT_DIALOG_SHOWN = 140,
  G_AFT_JACKPOT_DIALOG_HIDDEN = 141,
  G_BET = 200,
  G_SAVE_POINT = 201,
  G_TOP_SCREEN_DATA = 202,
  G_GAMEROUND_COMPLETE = 203,
  G_SCREENSHOT_TAKEN = 204,
  G_LOG = 205,
  G_WIN_NUMBER_KNOWN = 206
};

// One piece of news between the program and the platform service: a number and a context value of any XML-RPC
// type. Made on one thread and read on another, never at the same time; it has no lock of its own. The event owns
// one reference to its context; who needs the content beyond the event's life copies it. A context of another
// type than the reader expects is no error here: the readers then answer zero, false or an empty text.
class Event {
 public:
  // Takes a reference of its own. Throws girerr::error when the value is only a placeholder.
  Event(int id, const xmlrpc_c::value& v);

  // Adds a reference of its own; null means that there is no context.
  Event(int id, xmlrpc_value* v);

  // Builds the context from a format of the xmlrpc_build_value family. With a faulty format the context stays
  // null, and nobody is told.
  Event(int id, const char* format, ...);

  ~Event();
  Event(const Event&) = delete;
  Event& operator=(const Event&) = delete;

  int id() const;
  KSLGameEvent gameEventID() const;
  PlatformEvent platformEventID() const;

  // The borrowed pointer; null without a context.
  xmlrpc_value* context() const;

  bool asBool() const;
  int asInt() const;
  double asDouble() const;

  // Reads an i8; an int will not do.
  int64_t asLong() const;

  // The text with its XML entities turned into characters. The other ways to read a text leave them alone.
  std::string asString() const;

  // Decomposes the context into the variables that follow the format. A fault is swallowed; variables that were
  // not reached keep their values.
  void readEventIntoVariables(const char* format, ...) const;

  // The same with the fault left in env, which the caller initialised and cleans.
  void readEventIntoVariables(xmlrpc_env* env, const char* format, ...) const;
  void readEventIntoVariables_va(xmlrpc_env* env, const char* format, va_list& params) const;

 private:
  int id_;
  xmlrpc_value* context_;
};

using EventPtr = std::shared_ptr<Event>;
