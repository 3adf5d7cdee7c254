// The steps: what each takes, and what it does.
#include <algorithm>

#include "tools/kslsim/Methods.h"

namespace kslsim {
namespace {

enum class Form { Number, Flag, Text, Object, Anything };

struct Argument {
  const char* name;
  Form form;
  bool needed;
  int64_t least = INT64_MIN;
  int64_t most = INT64_MAX;
};

constexpr int64_t kDay = int64_t{24} * 60 * 60 * 1000;

// What the replies of "bad" take, each of them some.
const std::vector<Argument>& badArguments() {
  static const auto& arguments = *new std::vector<Argument>{{"ms", Form::Number, false, 0, kDay},
                                                            {"code", Form::Anything, false},
                                                            {"text", Form::Text, false},
                                                            {"field", Form::Text, false},
                                                            {"bytes", Form::Number, false, 0, 1 << 20},
                                                            {"count", Form::Number, false, 0, 1000000},
                                                            {"status", Form::Number, false, 200, 599}};
  return arguments;
}

std::vector<Argument> joined(std::vector<Argument> some, const std::vector<Argument>& more) {
  some.insert(some.end(), more.begin(), more.end());
  return some;
}

bool hasForm(const Json& value, const Argument& argument) {
  switch (argument.form) {
    case Form::Number: {
      if (!value.is_number_integer() || (value.is_number_unsigned() && value > uint64_t(INT64_MAX))) return false;
      const int64_t number = value.get<int64_t>();
      return number >= argument.least && number <= argument.most;
    }
    case Form::Flag:
      return value.is_boolean();
    case Form::Text:
      return value.is_string();
    case Form::Object:
      return value.is_object();
    case Form::Anything:
      return true;
  }
  return false;
}

std::string formText(const Argument& argument) {
  switch (argument.form) {
    case Form::Number:
      if (argument.least == INT64_MIN) return "a number of 64 bits";
      return "a number from " + std::to_string(argument.least) + " to " + std::to_string(argument.most);
    case Form::Flag:
      return "true or false";
    case Form::Text:
      return "a text";
    case Form::Object:
      return "an object";
    case Form::Anything:
      break;
  }
  return "a value";
}

int64_t number(const Json& step, const char* name, int64_t otherwise) {
  return step.contains(name) ? step[name].get<int64_t>() : otherwise;
}

std::string text(const Json& step, const char* name, const std::string& otherwise) {
  return step.contains(name) ? step[name].get<std::string>() : otherwise;
}

bool flag(const Json& step, const char* name, bool otherwise) {
  return step.contains(name) ? step[name].get<bool>() : otherwise;
}

std::string listed(const std::vector<std::string>& names) {
  std::string out;
  for (const std::string& name : names) out += (out.empty() ? "" : ", ") + name;
  return out;
}

// Of a number or the name of an error.
int errorCode(const Json& code) {
  if (code.is_string()) {
    if (const auto found = errorByName(code.get<std::string>())) return *found;
    throw InputError("/code", "there is no error of this name");
  }
  check(code, Kind::Int, "/code");
  return code.get<int>();
}

bool isMethod(const std::string& name) {
  const std::vector<std::string> known = methodNames();
  return std::find(known.begin(), known.end(), name) != known.end();
}

// A plan for a name that the service does not have would never be met.
void checkMethod(const Json& step) {
  const std::string name = text(step, "method", "*");
  if (name != "*" && !isMethod(name)) throw InputError("/method", "expected * or one of " + listed(methodNames()));
}

int levelId(const Json& step) { return step["id"].get<int>(); }

}  // namespace

struct Simulator::StepKind {
  const char* name;
  Handler handler;
  std::vector<Argument> arguments;
};

const std::vector<Simulator::StepKind>& Simulator::stepKinds() {
  const Argument id{"id", Form::Number, true, INT32_MIN, INT32_MAX};
  const Argument silent{"silent", Form::Flag, false};
  const Argument every{"every", Form::Number, false, 10, kDay};
  const Argument method{"method", Form::Text, true};
  static const auto& kinds = *new std::vector<StepKind>{
    {"set", &Simulator::doSet, {{"state", Form::Object, true}, silent}},
    {"level", &Simulator::doLevel, {id, {"set", Form::Object, true}, silent}},
    {"add", &Simulator::doAdd, {{"level", Form::Object, false}, {"index", Form::Number, false, 0, 1000}, silent}},
    {"remove", &Simulator::doRemove, {id, silent}},
    {"pot", &Simulator::doPot, {id, {"value", Form::Number, false}, {"raise", Form::Number, false}, silent}},
    {"ramp", &Simulator::doRamp, {id, {"to", Form::Number, true}, {"ms", Form::Number, true, 1, kDay}, every}},
    {"grow",
     &Simulator::doGrow,
     {id,
      every,
      {"min", Form::Number, false, 0, INT32_MAX},
      {"max", Form::Number, false, 0, INT32_MAX},
      {"seed", Form::Number, false, 0, INT64_MAX}}},
    {"play",
     &Simulator::doPlay,
     {id,
      every,
      {"bets", Form::Number, false, 0, 1000000},
      {"bet", Form::Number, false, 1, 1000000000},
      {"share", Form::Number, false, 0, 1000},
      {"show", Form::Number, false, 0, kDay},
      {"seed", Form::Number, false, 0, INT64_MAX}}},
    {"stop", &Simulator::doStop, {{"id", Form::Number, false, INT32_MIN, INT32_MAX}}},
    {"win", &Simulator::doWin, {id, {"on", Form::Flag, false}, {"text", Form::Text, false}, silent}},
    {"game",
     &Simulator::doGame,
     {{"event", Form::Text, true},
      {"ID", Form::Number, false, INT32_MIN, INT32_MAX},
      {"Name", Form::Text, false},
      {"Type", Form::Number, false, INT32_MIN, INT32_MAX},
      silent}},
    {"station", &Simulator::doStation, {{"name", Form::Text, true}}},
    {"event", &Simulator::doEvent, {id, {"value", Form::Anything, false}, {"raw", Form::Anything, false}}},
    {"init", &Simulator::doInit, {{"set", Form::Object, true}}},
    {"service", &Simulator::doService, {{"set", Form::Object, true}}},
    {"params", &Simulator::doParams, {{"set", Form::Object, true}}},
    {"counters", &Simulator::doCounters, {{"set", Form::Object, true}}},
    {"down", &Simulator::doDown, {{"ms", Form::Number, false, 1, kDay}, {"keep", Form::Flag, false}}},
    {"up", &Simulator::doUp, {}},
    {"forget", &Simulator::doForget, {}},
    {"bad", &Simulator::doBad,
     joined({method,
             {"reply", Form::Text, true},
             {"calls", Form::Number, false, -1, INT32_MAX},
             {"for", Form::Number, false, 1, kDay}},
            badArguments())},
    {"good", &Simulator::doGood, {{"method", Form::Text, false}}}};
  return kinds;
}

void Simulator::run(const Json& step) {
  if (!step.is_object()) throw InputError("", "expected a step, an object");
  if (!step.contains("do")) throw InputError("", "\"do\" is missing");
  for (const StepKind& kind : stepKinds()) {
    if (step["do"] != kind.name) continue;
    for (const auto& [key, value] : step.items()) {
      if (key == "do" || key == "note") continue;
      const Argument* found = nullptr;
      for (const Argument& argument : kind.arguments)
        if (key == argument.name) found = &argument;
      const std::string path = (Json::json_pointer() / key).to_string();
      if (!found) throw InputError(path, "\"" + std::string(kind.name) + "\" takes no \"" + key + "\"");
      if (!hasForm(value, *found)) throw InputError(path, "expected " + formText(*found));
    }
    for (const Argument& argument : kind.arguments)
      if (argument.needed && !step.contains(argument.name))
        throw InputError("", "\"" + std::string(argument.name) + "\" is missing");
    (this->*kind.handler)(step);
    tellClients(flag(step, "silent", false));
    return;
  }
  throw InputError("/do", "there is no such step");
}

void Simulator::doSet(const Json& step) { mPlatform.set(step["state"], "/state"); }

void Simulator::doLevel(const Json& step) { mPlatform.setLevel(levelId(step), step["set"], "/set"); }

void Simulator::doAdd(const Json& step) {
  mPlatform.addLevel(step.contains("level") ? step["level"] : Json::object(),
                     static_cast<int>(number(step, "index", -1)), "/level");
}

void Simulator::doRemove(const Json& step) {
  mPlatform.removeLevel(levelId(step), "/id");
  mStatusBeforeWin.erase(levelId(step));
}

void Simulator::doPot(const Json& step) {
  if (step.contains("value") == step.contains("raise"))
    throw InputError("", "\"pot\" takes either \"value\" or \"raise\"");
  int64_t pot = mPlatform.level(levelId(step), "/id")["CurrentPot"].get<int64_t>();
  if (step.contains("value"))
    pot = step["value"].get<int64_t>();
  else if (__builtin_add_overflow(pot, step["raise"].get<int64_t>(), &pot))
    throw InputError("/raise", "the pot would not fit 64 bits");
  mPlatform.setLevel(levelId(step), {{"CurrentPot", pot}}, "");
}

void Simulator::doRamp(const Json& step) {
  const Json& level = mPlatform.level(levelId(step), "/id");
  mHouse.close(levelId(step));
  mPots.ramp(levelId(step), level["CurrentPot"].get<int64_t>(), step["to"].get<int64_t>(), now(),
             step["ms"].get<int64_t>(), number(step, "every", 200));
}

void Simulator::doGrow(const Json& step) {
  mPlatform.level(levelId(step), "/id");
  const int64_t least = number(step, "min", 1);
  const int64_t most = number(step, "max", 100);
  if (most < least) throw InputError(step.contains("max") ? "/max" : "/min", "\"max\" is below \"min\"");
  mHouse.close(levelId(step));
  mPots.grow(levelId(step), now(), number(step, "every", 500), least, most,
             static_cast<uint64_t>(number(step, "seed", 1)));
}

void Simulator::doPlay(const Json& step) {
  mPlatform.level(levelId(step), "/id");
  mPots.stop(levelId(step));
  mHouse.open(
    levelId(step),
    {number(step, "every", 300), number(step, "bets", 300), number(step, "bet", 100), number(step, "share", 10),
     number(step, "show", 8000), static_cast<uint64_t>(number(step, "seed", 1))},
    now());
}

void Simulator::doStop(const Json& step) {
  if (!step.contains("id")) {
    mPots.stopAll();
    return mHouse.closeAll();
  }
  mPlatform.level(levelId(step), "/id");
  mPots.stop(levelId(step));
  mHouse.close(levelId(step));
}

void Simulator::doWin(const Json& step) {
  const int id = levelId(step);
  const Json& level = mPlatform.level(id, "/id");
  const std::string status = level["Status"].get<std::string>();
  Json part = Json::object();
  if (flag(step, "on", true)) {
    part = {{"Status", "WIN"}, {"NumWins", oneMoreWin(level)}};
    if (status != "WIN") mStatusBeforeWin[id] = status;
  } else {
    const auto before = mStatusBeforeWin.find(id);
    part["Status"] = before == mStatusBeforeWin.end() ? std::string("ACTIVE") : before->second;
  }
  if (step.contains("text")) part["LastWinData"] = step["text"];
  mPlatform.setLevel(id, part, "");
}

void Simulator::doGame(const Json& step) {
  const std::string event = step["event"].get<std::string>();
  Json game = Json::object();
  for (const Field& field : gameFields())
    if (step.contains(field.name)) game[field.name] = step[field.name];
  std::vector<std::string> names;
  for (const EventRow& row : eventRows()) {
    if (!row.game) continue;
    names.push_back(row.game);
    if (event != row.game) continue;
    if (row.context != Kind::Nil) return mPlatform.game(row, game, "");
    if (!game.empty()) throw InputError("", "a game that is left needs no \"ID\", \"Name\" or \"Type\"");
    return mPlatform.game(row, nullptr, "");
  }
  const std::string last = names.back();
  names.pop_back();
  throw InputError("/event", "expected " + listed(names) + " or " + last);
}

void Simulator::doEvent(const Json& step) {
  const int id = levelId(step);
  if (step.contains("value") && step.contains("raw"))
    throw InputError("", "\"event\" takes \"value\" or \"raw\", not both");
  PlatformEvent event{id, Kind::Any, nullptr};
  std::string path;
  if (step.contains("raw")) {
    event.context = step["raw"];
    path = "/raw";
  } else {
    event.kind = contextKind(id);
    if (step.contains("value")) event.context = step["value"];
    if (step.contains("value")) path = "/value";
  }
  check(event.context, event.kind, path);
  mClients.pushToAll(event);
}

void Simulator::doInit(const Json& step) {
  checkPart(step["set"], initFields(), "/set");
  mInit.update(step["set"]);
}

void Simulator::doService(const Json& step) {
  checkPart(step["set"], serviceFields(), "/set");
  if (step["set"].value("MaxClients", 1) < 1) throw InputError("/set/MaxClients", "expected 1 or more");
  const Json unsupported = step["set"].value("Unsupported", Json::array());
  for (size_t i = 0; i < unsupported.size(); ++i)
    if (!isMethod(unsupported[i].get<std::string>()))
      throw InputError("/set/Unsupported/" + std::to_string(i), "expected one of " + listed(methodNames()));
  mService.update(step["set"]);
}

void Simulator::doParams(const Json& step) {
  check(step["set"], Kind::Struct, "/set");
  mParams.update(step["set"]);
}

void Simulator::doCounters(const Json& step) {
  for (const auto& [name, value] : step["set"].items())
    check(value, Kind::I8, (Json::json_pointer("/set") / name).to_string());
  for (const auto& [name, value] : step["set"].items()) mCounters[name] = value.get<int64_t>();
}

void Simulator::doDown(const Json& step) {
  if (!flag(step, "keep", false)) mClients.forgetAll();
  mUpAt = step.contains("ms") ? now() + step["ms"].get<int64_t>() : -1;
  mListening = false;
}

void Simulator::doUp(const Json&) {
  mUpAt = -1;
  mListening = true;
}

void Simulator::doForget(const Json&) { mClients.forgetAll(); }

void Simulator::doBad(const Json& step) {
  const std::string name = step["reply"].get<std::string>();
  const BadRow* row = findBadRow(name);
  if (!row) {
    std::vector<std::string> names;
    for (const BadRow& one : badRows()) names.push_back(one.name);
    throw InputError("/reply", "expected one of " + listed(names));
  }
  checkMethod(step);
  for (const Argument& argument : badArguments())
    if (step.contains(argument.name) && !takes(*row, argument.name))
      throw InputError(std::string("/") + argument.name, "\"" + name + "\" takes no \"" + argument.name + "\"");
  for (const BadArgument& argument : row->arguments)
    if (argument.needed && text(step, argument.name, "").empty())
      throw InputError("", "\"" + name + "\" needs a \"" + argument.name + "\"");
  const int calls = static_cast<int>(number(step, "calls", step.contains("for") ? -1 : 1));
  if (calls == 0) throw InputError("/calls", "expected 1 or more, or -1 for all calls to come");
  BadReply reply{row, Json::object()};
  for (const BadArgument& argument : row->arguments)
    reply.values[argument.name] = step.contains(argument.name) ? step[argument.name] : argument.otherwise;
  if (reply.values.contains("code")) reply.values["code"] = errorCode(reply.values["code"]);
  mBadReplies.plan(step["method"].get<std::string>(), reply, calls,
                   step.contains("for") ? now() + step["for"].get<int64_t>() : -1);
}

// For whoever plays the scenario: it says where to look.
void Simulator::doStation(const Json&) {}

void Simulator::doGood(const Json& step) {
  checkMethod(step);
  mBadReplies.clear(text(step, "method", "*"));
  ++mGoodOrders;
}

}  // namespace kslsim
