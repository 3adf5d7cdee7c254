#include "tools/kslsim/BadReplies.h"

namespace kslsim {
namespace {

struct BadName {
  const char* name;
  Bad bad;
};
constexpr BadName NAMES[] = {
  {"refuse", Bad::Refuse}, {"http500", Bad::Http500}, {"html", Bad::Html},   {"cut", Bad::Cut},
  {"type", Bad::Type},     {"empty", Bad::Empty},     {"fault", Bad::Fault}, {"rpcfault", Bad::RpcFault},
  {"large", Bad::Large},   {"deep", Bad::Deep},       {"i8", Bad::I8},       {"slow", Bad::Slow}};

constexpr size_t LARGE_BYTES = 600 * 1024;
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

}  // namespace

std::optional<Bad> badByName(const std::string& name) {
  for (const BadName& entry : NAMES)
    if (name == entry.name) return entry.bad;
  return std::nullopt;
}

std::string badNames() {
  std::string out;
  for (const BadName& entry : NAMES) out += (out.empty() ? "" : ", ") + std::string(entry.name);
  return out;
}

std::string badBody(const BadReply& reply) {
  switch (reply.bad) {
    case Bad::Html:
      return "<!DOCTYPE html><html><head><title>Bad gateway</title></head><body>No.<br></body></html>";
    case Bad::Type:
      return answer("<string>not what you asked for</string>");
    case Bad::Cut:
    case Bad::Empty:
      return answer("<struct></struct>");
    case Bad::Fault:
      return answer(faultMembers(reply));
    case Bad::RpcFault:
      return HEAD + "<fault><value>" + faultMembers(reply) + "</value></fault></methodResponse>\r\n";
    case Bad::Large:
      return answer("<string>" + std::string(LARGE_BYTES, 'x') + "</string>");
    case Bad::Deep:
      return answer(nested(DEEP_LEVELS));
    case Bad::I8:
      return answer("<i8>9223372036854775808</i8>");
    default:
      return "";
  }
}

void BadReplies::plan(const std::string& method, const BadReply& reply, int calls) {
  mPlans[method].push_back({reply, calls});
}

void BadReplies::clear(const std::string& method) {
  if (method == "*")
    mPlans.clear();
  else
    mPlans.erase(method);
}

std::optional<BadReply> BadReplies::take(const std::string& method) {
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

Json BadReplies::toJson() const {
  Json out = Json::object();
  for (const auto& [method, plans] : mPlans)
    for (const Plan& plan : plans) out[method].push_back({{"reply", plan.reply.name}, {"calls", plan.calls}});
  return out;
}

}  // namespace kslsim
