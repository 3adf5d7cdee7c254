#include "tools/kslsim/Platform.h"

#include <algorithm>

namespace kslsim {
namespace {

// Which event tells of which field.
struct FieldEvent {
  const char* field;
  EventId id;
};
constexpr FieldEvent FIELD_EVENTS[] = {{"IntegrityCheckData", INTEGRITY_DATA},
                                       {"ShowingPaytable", PAYTABLE_STATE},
                                       {"LanguageMessages", LANGUAGE},
                                       {"DemoMode", DEMO_MODE},
                                       {"Instructions", INSTRUCTIONS},
                                       {"CurrentBet", BET_LIMITS},
                                       {"MinBet", BET_LIMITS},
                                       {"MaxBet", BET_LIMITS},
                                       {"ExtraData", EXTRA_DATA},
                                       {"JackpotData", JACKPOT_DATA},
                                       {"JackpotErrorString", JACKPOT_ERROR}};

constexpr int TYPE_MENU = 1;

Json menu() { return {{"ID", 0}, {"Name", ""}, {"Type", TYPE_MENU}}; }

}  // namespace

Kind contextKind(int eventId) {
  switch (eventId) {
    case GAME_LOADING:
    case GAME_LOADED:
      return Kind::Game;
    case DEMO_MODE:
      return Kind::Bool;
    case INTEGRITY_DATA:
    case JACKPOT_ERROR:
      return Kind::String;
    case BET_LIMITS:
      return Kind::Bets;
    case GAME_EXITED:
    case JACKPOT_REFRESH:
      return Kind::Nil;
    case INSTRUCTIONS:
    case LANGUAGE:
      return Kind::Strings;
    case PAYTABLE_STATE:
      return Kind::Int;
    case JACKPOT_DATA:
      return Kind::Levels;
    case EXTRA_DATA:
      return Kind::Struct;
    default:
      return Kind::Any;
  }
}

Platform::Platform() : mState(startOf(stateFields())) {}

xmlrpc_c::value Platform::toWire() const {
  xmlrpc_c::cstruct out;
  for (const Field& field : stateFields()) out[field.name] = kslsim::toWire(mState.at(field.name), field.kind);
  return xmlrpc_c::value_struct(out);
}

void Platform::set(const Json& part, const std::string& path) {
  checkPart(part, stateFields(), path);
  if (part.contains("JackpotData")) {
    std::set<int> ids;
    for (const Json& level : part["JackpotData"])
      if (!ids.insert(level["Id"].get<int>()).second)
        throw InputError(path + "/JackpotData", "two levels have one \"Id\"");
  }
  for (const auto& [key, value] : part.items()) mState[key] = value;
  for (const FieldEvent& entry : FIELD_EVENTS)
    if (part.contains(entry.field)) changed(entry.id);
  // The game and its loading flag have no event each: two events carry both.
  if (part.contains("ActiveGame") || part.contains("IsLoading"))
    changed(mState["IsLoading"].get<bool>() ? GAME_LOADING : GAME_LOADED);
}

void Platform::setLevel(int id, const Json& part, const std::string& path) {
  Json& level = mState["JackpotData"][indexOf(id, "/id")];
  checkPart(part, levelFields(), path);
  if (part.contains("Id") && part["Id"] != id)
    throw InputError(path + "/Id", "a level keeps its \"Id\": remove it and add another");
  for (const auto& [key, value] : part.items()) level[key] = value;
  changed(JACKPOT_DATA);
}

void Platform::addLevel(const Json& part, int index, const std::string& path) {
  checkPart(part, levelFields(), path);
  Json& levels = mState["JackpotData"];
  const auto taken = [&levels](int id) {
    return std::any_of(levels.begin(), levels.end(), [id](const Json& level) { return level["Id"] == id; });
  };
  Json level = startOf(levelFields());
  int id = 0;
  while (taken(id)) ++id;
  level["Id"] = id;
  level["Name"] = "LEVEL " + std::to_string(id + 1);
  for (const auto& [key, value] : part.items()) level[key] = value;
  if (taken(level["Id"].get<int>())) throw InputError(path + "/Id", "a level with this \"Id\" exists");
  if (index < -1 || index > static_cast<int>(levels.size())) throw InputError("/index", "no such place");
  levels.insert(index < 0 ? levels.end() : levels.begin() + index, level);
  changed(JACKPOT_DATA);
}

void Platform::removeLevel(int id, const std::string& path) {
  mState["JackpotData"].erase(indexOf(id, path));
  changed(JACKPOT_DATA);
}

const Json& Platform::level(int id, const std::string& path) const {
  return mState["JackpotData"][indexOf(id, path)];
}

size_t Platform::indexOf(int id, const std::string& path) const {
  const Json& levels = mState["JackpotData"];
  for (size_t i = 0; i < levels.size(); ++i)
    if (levels[i]["Id"] == id) return i;
  throw InputError(path, "no level has the \"Id\" " + std::to_string(id));
}

void Platform::game(EventId what, const Json& game, const std::string& path) {
  if (what == GAME_EXITED) {
    mState["ActiveGame"] = menu();
    mState["IsLoading"] = false;
  } else {
    check(game, Kind::Game, path);
    mState["ActiveGame"] = game;
    mState["IsLoading"] = what == GAME_LOADING;
  }
  changed(what);
}

void Platform::changed(EventId id) {
  if (std::find(mPending.begin(), mPending.end(), id) == mPending.end()) mPending.push_back(id);
}

PlatformEvent Platform::eventOf(EventId id) const {
  const auto whole = [&](Json context) { return PlatformEvent{id, contextKind(id), std::move(context)}; };
  switch (id) {
    case GAME_LOADING:
    case GAME_LOADED:
      return whole(mState["ActiveGame"]);
    case BET_LIMITS:
      return whole({{"current", mState["CurrentBet"]}, {"min", mState["MinBet"]}, {"max", mState["MaxBet"]}});
    default:
      break;
  }
  for (const FieldEvent& entry : FIELD_EVENTS)
    if (entry.id == id) return whole(mState[entry.field]);
  return whole(nullptr);
}

void Platform::applyTo(Json& state, const PlatformEvent& event) {
  // An event of a form of its own was sent to see what the peer makes of it.
  if (!state.is_object() || event.kind != contextKind(event.id) || event.kind == Kind::Any) return;
  switch (event.id) {
    case GAME_LOADING:
    case GAME_LOADED:
      state["ActiveGame"] = event.context;
      state["IsLoading"] = event.id == GAME_LOADING;
      return;
    case GAME_EXITED:
      state["ActiveGame"] = menu();
      state["IsLoading"] = false;
      return;
    case BET_LIMITS:
      state["CurrentBet"] = event.context["current"];
      state["MinBet"] = event.context["min"];
      state["MaxBet"] = event.context["max"];
      return;
    default:
      break;
  }
  for (const FieldEvent& entry : FIELD_EVENTS)
    if (entry.id == event.id) state[entry.field] = event.context;
}

std::vector<PlatformEvent> Platform::takeEvents() {
  std::vector<PlatformEvent> out;
  for (EventId id : mPending) out.push_back(eventOf(id));
  mPending.clear();
  return out;
}

}  // namespace kslsim
