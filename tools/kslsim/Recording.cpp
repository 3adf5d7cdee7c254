#include "tools/kslsim/Recording.h"

#include <algorithm>
#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>
#include <xmlrpc-c/xml.hpp>

#include "common/GuardedTransport.h"
#include "tools/kslsim/Errors.h"
#include "tools/kslsim/RequestLog.h"
#include "tools/kslsim/Scenario.h"

namespace kslsim {
namespace {

using OrderedJson = nlohmann::ordered_json;

const std::string WHAT = "kslsim recording";
constexpr int kVersion = 1;
const std::string INIT = "topscreen.init", POP = "game.popEvents", STATE = "platform.state";

// Whether the log's form keeps the value whole.
bool canBeHeld(const xmlrpc_c::value& value) {
  switch (value.type()) {
    case xmlrpc_c::value::TYPE_ARRAY: {
      const auto items = xmlrpc_c::value_array(value).vectorValueValue();
      return std::all_of(items.begin(), items.end(), canBeHeld);
    }
    case xmlrpc_c::value::TYPE_STRUCT: {
      const auto members = static_cast<xmlrpc_c::cstruct>(xmlrpc_c::value_struct(value));
      return members.count("$i8") == 0 && std::all_of(members.begin(), members.end(),
                                                      [](const auto& member) { return canBeHeld(member.second); });
    }
    case xmlrpc_c::value::TYPE_INT:
    case xmlrpc_c::value::TYPE_I8:
    case xmlrpc_c::value::TYPE_BOOLEAN:
    case xmlrpc_c::value::TYPE_STRING:
    case xmlrpc_c::value::TYPE_NIL:
      return true;
    default:
      return false;  // a double loses digits on its way through the library
  }
}

bool isText(const std::string& bytes) {
  try {
    return !Json(bytes).dump().empty();
  } catch (const Json::exception&) {
    return false;
  }
}

std::string toHex(const std::string& bytes) {
  std::string out;
  for (unsigned char byte : bytes) {
    out += "0123456789abcdef"[byte >> 4];
    out += "0123456789abcdef"[byte & 15];
  }
  return out;
}

std::string fromHex(const std::string& hex) {
  std::string out;
  for (size_t i = 0; i + 1 < hex.size(); i += 2) out += static_cast<char>(std::stoi(hex.substr(i, 2), nullptr, 16));
  return out;
}

// Null when it cannot be read. Never copied: a success has no fault, and the library's copy reads one all the same.
std::unique_ptr<xmlrpc_c::rpcOutcome> outcomeOf(const WireAnswer& answer) {
  std::string unreadable;
  if (answer.status != 200 || !answer.error.empty() || findUnreadableI8(answer.body, unreadable)) return nullptr;
  try {
    auto outcome = std::make_unique<xmlrpc_c::rpcOutcome>();
    xmlrpc_c::xml::parseResponse(answer.body, outcome.get());
    return outcome;
  } catch (const std::exception&) {
    return nullptr;
  }
}

WireAnswer answerOf(const xmlrpc_c::rpcOutcome& outcome) {
  WireAnswer out;
  xmlrpc_c::xml::generateResponse(outcome, xmlrpc_dialect_i8, &out.body);
  return out;
}

// The bytes under one name where they are a text, under the other in hexadecimal digits where not.
void putBytes(OrderedJson& line, const char* name, const char* nameOfHex, const std::string& bytes) {
  if (isText(bytes))
    line[name] = bytes;
  else
    line[nameOfHex] = toHex(bytes);
}

// The members of a line that tell what came back.
void describe(OrderedJson& line, const WireAnswer& answer, bool asOnTheWire) {
  if (!answer.error.empty()) {
    line["error"] = answer.error;
    return;
  }
  if (const auto outcome = asOnTheWire ? nullptr : outcomeOf(answer)) {
    if (!outcome->succeeded()) {
      line["fault"] = {{"code", outcome->getFault().getCode()}, {"text", outcome->getFault().getDescription()}};
      return;
    }
    if (canBeHeld(outcome->getResult())) {
      line["answer"] = fromWire(outcome->getResult());
      return;
    }
  }
  line["status"] = answer.status;
  putBytes(line, "body", "hex", answer.body);
}

struct Member {
  const char* name;
  bool (Json::*has)() const noexcept;
  const char* form;
};
constexpr Member kMembers[] = {{"at", &Json::is_number_unsigned, "milliseconds, 0 or more"},
                               {"ms", &Json::is_number_unsigned, "milliseconds, 0 or more"},
                               {"method", &Json::is_string, "a text"},
                               {"params", &Json::is_array, "a list"},
                               {"status", &Json::is_number_unsigned, "a status of HTTP"},
                               {"body", &Json::is_string, "a text"},
                               {"hex", &Json::is_string, "hexadecimal digits"},
                               {"error", &Json::is_string, "a text"},
                               {"fault", &Json::is_object, "an object"}};

// What came back, from the members of a line. Throws InputError.
WireAnswer answerFrom(const Json& line) {
  WireAnswer out;
  if (line.contains("error")) {
    out.error = line["error"].get<std::string>();
  } else if (line.contains("answer")) {
    check(line["answer"], Kind::Any, "/answer");
    out = answerWith(line["answer"]);
  } else if (line.contains("fault")) {
    const Json& fault = line["fault"];
    check(fault.value("code", Json()), Kind::Int, "/fault");
    check(fault.value("text", Json()), Kind::String, "/fault");
    out = answerOf(xmlrpc_c::rpcOutcome(xmlrpc_c::fault(
      fault["text"].get<std::string>(), static_cast<xmlrpc_c::fault::code_t>(fault["code"].get<int>()))));
  } else if (line.contains("status") && (line.contains("body") || line.contains("hex"))) {
    check(line["status"], Kind::Int, "/status");
    out.status = line["status"].get<int>();
    if (out.status < 100 || out.status > 999) throw InputError("/status", "expected a status of HTTP, 100 to 999");
    const std::string hex = line.value("hex", "");
    if (hex.size() % 2 != 0 || hex.find_first_not_of("0123456789abcdefABCDEF") != std::string::npos)
      throw InputError("/hex", "expected hexadecimal digits");
    out.body = line.contains("hex") ? fromHex(hex) : line["body"].get<std::string>();
  } else {
    throw InputError("", "\"answer\", \"fault\", \"status\" with \"body\" or \"hex\", or \"error\" is missing");
  }
  return out;
}

Exchange exchangeFrom(const Json& line) {
  if (!line.is_object()) throw InputError("", "expected a call, an object");
  for (const Member& member : kMembers)
    if (line.contains(member.name) && !(line[member.name].*member.has)())
      throw InputError(std::string("/") + member.name, std::string("expected ") + member.form);
  for (const char* name : {"at", "ms", "method", "params"})
    if (!line.contains(name)) throw InputError("", std::string("\"") + name + "\" is missing");
  for (const char* name : {"at", "ms"}) check(line[name], Kind::I8, std::string("/") + name);
  Exchange out{line["at"].get<int64_t>(), line["method"].get<std::string>(), line["params"], "", answerFrom(line)};
  out.answer.took = line["ms"].get<int64_t>();
  return out;
}

// Calls of one client are answered apart from those of another.
std::string rowOf(const std::string& method, const Json& params) {
  const bool hasClient = method != INIT && method.rfind("game.", 0) == 0;
  return hasClient && !params.empty() ? method + " " + params[0].dump() : method;
}

}  // namespace

std::optional<Json> valueOf(const WireAnswer& answer) {
  const auto outcome = outcomeOf(answer);
  if (!outcome || !outcome->succeeded() || !canBeHeld(outcome->getResult())) return std::nullopt;
  return fromWire(outcome->getResult());
}

WireAnswer answerWith(const Json& value) { return answerOf(xmlrpc_c::rpcOutcome(toWire(value, Kind::Any))); }

bool readCall(const std::string& xml, std::string& method, Json& params) {
  std::string unreadable;
  if (findUnreadableI8(xml, unreadable)) return false;
  try {
    xmlrpc_c::paramList list;
    xmlrpc_c::xml::parseCall(xml, &method, &list);
    params = Json::array();
    for (unsigned i = 0; i < list.size(); ++i) params.push_back(fromWire(list[i]));
    return true;
  } catch (const std::exception&) {
    return false;
  }
}

bool RecordingWriter::open(const std::string& file, const std::string& service, Form form) {
  std::lock_guard lock(mMutex);
  mForm = form;
  mFile.open(file, std::ios::trunc);
  const OrderedJson first{{"what", WHAT}, {"version", kVersion}, {"service", service}, {"begun", wallClock()}};
  mFile << first.dump() << std::endl;
  return mFile.good();
}

void RecordingWriter::add(const Exchange& exchange) {
  OrderedJson line{
    {"at", exchange.at}, {"ms", exchange.answer.took}, {"method", exchange.method}, {"params", exchange.params}};
  const bool asOnTheWire = mForm == Form::Wire;
  if (asOnTheWire) putBytes(line, "call", "callHex", exchange.call);
  describe(line, exchange.answer, asOnTheWire);
  std::lock_guard lock(mMutex);
  const bool good = mFile.good();
  mFile << line.dump(-1, ' ', false, OrderedJson::error_handler_t::replace) << std::endl;
  if (good && !mFile) std::cerr << "kslsim: the recording cannot be written any more" << std::endl;
}

Replay::Replay(const std::string& text, Pace pace) {
  size_t number = 0;
  for (size_t begin = 0; begin < text.size();) {
    const size_t end = std::min(text.find('\n', begin), text.size());
    const std::string line = text.substr(begin, end - begin);
    begin = end + 1;
    ++number;
    if (line.find_first_not_of(" \t\r") == std::string::npos) continue;
    const auto fail = [&](Place place, const std::string& what) -> ScenarioError {
      return ScenarioError({number, place.column}, what);
    };
    PlacedJson json;
    try {
      json = PlacedJson::parse(line);
    } catch (const ScenarioError& error) {
      const std::string what = error.what();
      throw fail(error.place(), what.substr(what.find(": ") + 2));
    }
    if (number == 1) {
      if (!json.value.is_object() || json.value.value("what", Json()) != WHAT)
        throw fail({}, "this is no recording: the first line has no \"what\": \"" + WHAT + "\"");
      if (json.value.value("version", Json()) != kVersion) throw fail({}, "expected \"version\" 1");
      continue;
    }
    try {
      mExchanges.push_back(exchangeFrom(json.value));
      if (pace == Pace::AtOnce) mExchanges.back().answer.took = 0;
    } catch (const InputError& error) {
      throw fail(json.placeOf(error.path()), error.what());
    }
  }
  if (number == 0) throw ScenarioError({}, "this is no recording: the file is empty");
  std::stable_sort(mExchanges.begin(), mExchanges.end(),
                   [](const Exchange& a, const Exchange& b) { return a.at < b.at; });
  for (size_t i = 0; i < mExchanges.size(); ++i)
    mRows[rowOf(mExchanges[i].method, mExchanges[i].params)].push_back(i);
}

WireAnswer Replay::events(std::vector<size_t>& row, size_t& next, int64_t elapsed) {
  Json all = Json::array();
  const WireAnswer* only = nullptr;  // that goes out as it was
  int parts = 0;
  int64_t took = 0;
  for (; next < row.size() && mExchanges[row[next]].at - mExchanges.front().at <= elapsed; ++next) {
    const Exchange& exchange = mExchanges[row[next]];
    const auto value = valueOf(exchange.answer);
    const bool nothing = value && value->is_null();
    if (!nothing && (!value || !value->is_array())) {
      // Not events: a failure has a call of its own.
      if (parts > 0) break;
      ++next;
      return exchange.answer;
    }
    took = std::max(took, exchange.answer.took);
    if (nothing && parts > 0) continue;
    only = &exchange.answer;
    if (nothing) continue;
    ++parts;
    all.insert(all.end(), value->begin(), value->end());
  }
  WireAnswer out = parts > 1 ? answerWith(all) : only ? *only : answerWith(Json());
  out.took = took;
  return out;
}

WireAnswer Replay::answer(const std::string& method, const Json& params, int64_t now) {
  std::lock_guard lock(mMutex);
  if (mBegin < 0) mBegin = now;
  const int64_t elapsed = now - mBegin;
  const std::string name = rowOf(method, params);
  const auto found = mRows.find(name);
  if (found == mRows.end())
    return answerWith(
      {{"faultCode", kNotSupported}, {"faultString", "The recording has no call of " + name + "."}});
  std::vector<size_t>& row = found->second;
  size_t& next = mNext[name];
  if (method == POP) return events(row, next, elapsed);
  if (method == STATE) {
    while (next + 1 < row.size() && mExchanges[row[next + 1]].at - mExchanges.front().at <= elapsed) ++next;
    return mExchanges[row[next]].answer;
  }
  return mExchanges[row[next + 1 < row.size() ? next++ : next]].answer;
}

}  // namespace kslsim
