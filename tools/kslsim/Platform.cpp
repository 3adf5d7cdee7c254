#include "tools/kslsim/Platform.h"

#include <algorithm>

namespace kslsim {
namespace {

// Puts what the event tells into the state.
void tell(Json& state, const EventRow& event, const Json& context) {
  for (const ToldField& told : event.fields)
    state[told.field] = told.always ? *told.always : told.key ? context.at(told.key) : context;
}

}  // namespace

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
  for (const Field& field : stateFields())
    if (const EventRow* event = eventOfField(field.name); event && part.contains(field.name)) changed(event->id);
  // The game and its loading flag have no event each: two events carry both.
  if (part.contains("ActiveGame") || part.contains("IsLoading"))
    changed(mState["IsLoading"].get<bool>() ? kGameLoading : kGameLoaded);
}

void Platform::setLevel(int id, const Json& part, const std::string& path) {
  Json& level = mState["JackpotData"][indexOf(id, "/id")];
  checkPart(part, levelFields(), path);
  if (part.contains("Id") && part["Id"] != id)
    throw InputError(path + "/Id", "a level keeps its \"Id\": remove it and add another");
  for (const auto& [key, value] : part.items()) level[key] = value;
  changed(kJackpotData);
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
  changed(kJackpotData);
}

void Platform::removeLevel(int id, const std::string& path) {
  mState["JackpotData"].erase(indexOf(id, path));
  changed(kJackpotData);
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

void Platform::game(const EventRow& what, const Json& game, const std::string& path) {
  check(game, what.context, path);
  tell(mState, what, game);
  changed(what.id);
}

void Platform::changed(int event) {
  if (std::find(mPending.begin(), mPending.end(), event) == mPending.end()) mPending.push_back(event);
}

PlatformEvent Platform::eventOf(int event) const {
  PlatformEvent out{event, contextKind(event), nullptr};
  for (const ToldField& told : findEvent(event)->fields)
    if (!told.always) (told.key ? out.context[told.key] : out.context) = mState.at(told.field);
  return out;
}

void Platform::applyTo(Json& state, const PlatformEvent& event) {
  const EventRow* row = findEvent(event.id);
  // An event of a form of its own was sent to see what the peer makes of it.
  if (state.is_object() && row && event.kind == row->context) tell(state, *row, event.context);
}

std::vector<PlatformEvent> Platform::takeEvents() {
  std::vector<PlatformEvent> out;
  for (int event : mPending) out.push_back(eventOf(event));
  mPending.clear();
  return out;
}

}  // namespace kslsim
