#include "tools/kslsim/BadReplies.h"

#include <algorithm>

#include "tools/kslsim/Events.h"

namespace kslsim {
namespace {

struct BadName {
  const char* name;
  Bad bad;
  const char* arguments[2];
};
constexpr BadName NAMES[] = {{"refuse", Bad::Refuse, {}},
                             {"silent", Bad::Silent, {"ms"}},
                             {"http500", Bad::Http500, {}},
                             {"html", Bad::Html, {}},
                             {"notxml", Bad::NotXml, {}},
                             {"cut", Bad::Cut, {"bytes"}},
                             {"type", Bad::Type, {"field"}},
                             {"missing", Bad::Missing, {"field"}},
                             {"range", Bad::Range, {"field"}},
                             {"empty", Bad::Empty, {}},
                             {"fault", Bad::Fault, {"code", "text"}},
                             {"rpcfault", Bad::RpcFault, {"code", "text"}},
                             {"large", Bad::Large, {}},
                             {"flood", Bad::Flood, {"count"}},
                             {"deep", Bad::Deep, {}},
                             {"i8", Bad::I8, {}},
                             {"utf8", Bad::Utf8, {}},
                             {"body", Bad::Body, {"status", "text"}},
                             {"raw", Bad::Raw, {"text"}},
                             {"slow", Bad::Slow, {"ms"}},
                             {"drip", Bad::Drip, {"ms"}}};

constexpr size_t LARGE_BYTES = size_t{600} * 1024;
constexpr int DEEP_LEVELS = 200;

const std::string HEAD = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n<methodResponse>";

std::string answer(const std::string& value) {
  return HEAD + "<params><param><value>" + value + "</value></param></params></methodResponse>\r\n";
}

std::string escaped(const std::string& text) {
  std::string out;
  for (char c : text) {
    switch (c) {
      case '&':
        out += "&amp;";
        break;
      case '<':
        out += "&lt;";
        break;
      case '>':
        out += "&gt;";
        break;
      default:
        out += c;
    }
  }
  return out;
}

std::string faultMembers(const BadReply& reply) {
  return "<struct><member><name>faultCode</name><value><int>" + std::to_string(reply.code) +
         "</int></value></member><member><name>faultString</name><value><string>" + escaped(reply.text) +
         "</string></value></member></struct>";
}

std::string nested(int levels) {
  std::string out;
  for (int i = 0; i < levels; ++i) out += "<array><data><value>";
  out += "<int>1</int>";
  for (int i = 0; i < levels; ++i) out += "</value></data></array>";
  return out;
}

std::string flood(int events) {
  const std::string event = "<value><struct><member><name>eventID</name><value><int>" +
                            std::to_string(JACKPOT_REFRESH) +
                            "</int></value></member><member><name>context</name><value><nil/></value></member>"
                            "</struct></value>";
  std::string out = "<array><data>";
  for (int i = 0; i < events; ++i) out += event;
  return out + "</data></array>";
}

}  // namespace

std::optional<Bad> badByName(const std::string& name) {
  for (const BadName& entry : NAMES)
    if (name == entry.name) return entry.bad;
  return std::nullopt;
}

std::vector<std::string> badNames() {
  std::vector<std::string> out;
  for (const BadName& entry : NAMES) out.push_back(entry.name);
  return out;
}

std::vector<std::string> argumentsOf(Bad bad) {
  std::vector<std::string> out;
  for (const BadName& entry : NAMES)
    for (const char* argument : entry.arguments)
      if (entry.bad == bad && argument) out.push_back(argument);
  return out;
}

bool takes(Bad bad, const std::string& argument) {
  const std::vector<std::string> all = argumentsOf(bad);
  return std::find(all.begin(), all.end(), argument) != all.end();
}

std::string neededBy(Bad bad) { return bad == Bad::Missing ? "field" : bad == Bad::Raw ? "text" : ""; }

bool alters(const BadReply& reply) {
  return reply.bad == Bad::Slow || reply.bad == Bad::Drip || (takes(reply.bad, "field") && !reply.field.empty());
}

std::string badBody(const BadReply& reply) {
  switch (reply.bad) {
    case Bad::Html:
      return "<!DOCTYPE html><html><head><title>Bad gateway</title></head><body>No.<br></body></html>";
    case Bad::NotXml:
      return "this is no XML";
    case Bad::Type:
      return answer("<string>not what you asked for</string>");
    case Bad::Range:
      return answer("<int>99999999999</int>");
    case Bad::Cut:
      // Long enough that the place of the cut lies inside.
      if (reply.bytes >= 0)
        return answer("<string>" + std::string(static_cast<size_t>(reply.bytes), 'x') + "</string>");
      return answer("<struct></struct>");
    case Bad::Empty:
      return answer("<struct></struct>");
    case Bad::Fault:
      return answer(faultMembers(reply));
    case Bad::RpcFault:
      return HEAD + "<fault><value>" + faultMembers(reply) + "</value></fault></methodResponse>\r\n";
    case Bad::Large:
      return answer("<string>" + std::string(LARGE_BYTES, 'x') + "</string>");
    case Bad::Flood:
      return answer(flood(reply.count));
    case Bad::Deep:
      return answer(nested(DEEP_LEVELS));
    case Bad::I8:
      return answer("<i8>9223372036854775808</i8>");
    case Bad::Utf8:
      return answer("<string>\xC3\x28 \xFF</string>");
    case Bad::Body:
      return reply.text;
    default:
      return "";
  }
}

void BadReplies::plan(const std::string& method, const BadReply& reply, int calls, int64_t until) {
  mPlans[method].push_back({reply, calls, until});
}

void BadReplies::clear(const std::string& method) {
  if (method == "*")
    mPlans.clear();
  else
    mPlans.erase(method);
}

std::optional<BadReply> BadReplies::take(const std::string& method, int64_t now) {
  for (auto& [name, plans] : mPlans)
    std::erase_if(plans, [now](const Plan& plan) { return plan.until >= 0 && now >= plan.until; });
  std::erase_if(mPlans, [](const auto& entry) { return entry.second.empty(); });
  auto found = mPlans.find(method);
  if (found == mPlans.end()) found = mPlans.find("*");
  if (found == mPlans.end()) return std::nullopt;
  Plan& plan = found->second.front();
  BadReply reply = plan.reply;
  if (plan.calls > 0 && --plan.calls == 0) {
    found->second.erase(found->second.begin());
    if (found->second.empty()) mPlans.erase(found);
  }
  return reply;
}

void BadReplies::giveBack(const std::string& method, const BadReply& reply) {
  for (const std::string& name : {method, std::string("*")}) {
    const auto found = mPlans.find(name);
    if (found == mPlans.end()) continue;
    Plan& plan = found->second.front();
    if (plan.reply.name != reply.name || plan.reply.field != reply.field) continue;
    if (plan.calls > 0) ++plan.calls;
    return;
  }
  auto& plans = mPlans[method];
  plans.insert(plans.begin(), {reply, 1, -1});
}

Json BadReplies::toJson(int64_t now) const {
  Json out = Json::object();
  for (const auto& [method, plans] : mPlans)
    for (const Plan& plan : plans) {
      if (plan.until >= 0 && now >= plan.until) continue;
      Json entry{{"reply", plan.reply.name}, {"calls", plan.calls}};
      if (!plan.reply.field.empty()) entry["field"] = plan.reply.field;
      if (plan.until >= 0) entry["left"] = plan.until - now;
      out[method].push_back(std::move(entry));
    }
  return out;
}

}  // namespace kslsim
