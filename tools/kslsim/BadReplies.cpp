#include "tools/kslsim/BadReplies.h"

#include <algorithm>

#include "tools/kslsim/Errors.h"
#include "tools/kslsim/Events.h"

namespace kslsim {
namespace {

constexpr size_t kLargeBytes = size_t{600} * 1024;
constexpr int kDeepLevels = 200;

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
  return "<struct><member><name>faultCode</name><value><int>" + std::to_string(reply.number("code")) +
         "</int></value></member><member><name>faultString</name><value><string>" + escaped(reply.text("text")) +
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
                            std::to_string(kJackpotRefresh) +
                            "</int></value></member><member><name>context</name><value><nil/></value></member>"
                            "</struct></value>";
  std::string out = "<array><data>";
  for (int i = 0; i < events; ++i) out += event;
  return out + "</data></array>";
}

// For a cut: its place lies inside.
std::string longEnough(const BadReply& reply) {
  const int bytes = reply.number("bytes");
  return answer(bytes < 0 ? "<struct></struct>"
                          : "<string>" + std::string(static_cast<size_t>(bytes), 'x') + "</string>");
}

std::string textAlone(const BadReply& reply) { return reply.text("text"); }

const char* ofAnotherType(const xmlrpc_c::value& value) {
  return value.type() == xmlrpc_c::value::TYPE_STRING ? "<int>7</int>" : "<string>of another type</string>";
}

const char* tooLarge(const xmlrpc_c::value& value) {
  return value.type() == xmlrpc_c::value::TYPE_I8 ? "<i8>9223372036854775808</i8>" : "<int>99999999999</int>";
}

std::vector<BadRow> makeRows() {
  const BadArgument field{.name = "field", .otherwise = ""}, late{.name = "ms", .otherwise = 1000};
  const BadArgument code{.name = "code", .otherwise = kInternalError};
  const BadArgument text{.name = "text", .otherwise = "The simulator was told so."};
  return {{.name = "refuse", .way = Way::Shut, .group = BadGroup::NoAnswer, .tells = "hangs up before the answer"},
          {.name = "silent",
           .way = Way::Hold,
           .arguments = {{.name = "ms", .otherwise = 0, .asked = false}},  // until it is switched off
           .group = BadGroup::NoAnswer,
           .tells = "takes the call, never answers"},
          {.name = "http500", .status = 500, .group = BadGroup::NotXmlRpc, .tells = "HTTP status 500"},
          {.name = "html",
           .type = "text/html",
           .body = [](const BadReply&) -> std::string {
             return "<!DOCTYPE html><html><head><title>Bad gateway</title></head><body>No.<br></body></html>";
           },
           .group = BadGroup::NotXmlRpc,
           .tells = "a web page"},
          {.name = "notxml",
           .body = [](const BadReply&) -> std::string { return "this is no XML"; },
           .group = BadGroup::NotXmlRpc,
           .tells = "a text that is no XML"},
          {.name = "cut",
           .way = Way::Cut,
           .arguments = {{.name = "bytes", .otherwise = -1}},
           .body = longEnough,
           .group = BadGroup::NoAnswer,
           .place = 1,
           .tells = "hangs up in the middle"},
          {.name = "type",
           .arguments = {field},
           .body = [](const BadReply&) { return answer("<string>not what you asked for</string>"); },
           .instead = ofAnotherType,
           .group = BadGroup::WrongContents,
           .tells = "another type: the field, or all"},
          {.name = "missing",
           .arguments = {{.name = "field", .needed = true}},
           .instead = [](const xmlrpc_c::value&) -> const char* { return nullptr; },
           .group = BadGroup::WrongContents,
           .tells = "the field is left out"},
          {.name = "range",
           .arguments = {field},
           .body = [](const BadReply&) { return answer("<int>99999999999</int>"); },
           .instead = tooLarge,
           .group = BadGroup::WrongContents,
           .tells = "a number too large for its type"},
          {.name = "empty",
           .body = [](const BadReply&) { return answer("<struct></struct>"); },
           .group = BadGroup::WrongContents,
           .place = -1,
           .tells = "a struct without keys"},
          {.name = "fault",
           .arguments = {code, text},
           .body = [](const BadReply& reply) { return answer(faultMembers(reply)); },
           .group = BadGroup::ErrorsAndTexts,
           .tells = "the service's own error"},
          {.name = "rpcfault",
           .arguments = {code, text},
           .body =
             [](const BadReply& reply) {
               return HEAD + "<fault><value>" + faultMembers(reply) + "</value></fault></methodResponse>\r\n";
             },
           .group = BadGroup::ErrorsAndTexts,
           .tells = "a fault of XML-RPC"},
          {.name = "large",
           .body = [](const BadReply&) { return answer("<string>" + std::string(kLargeBytes, 'x') + "</string>"); },
           .group = BadGroup::TooMuch,
           .tells = "600 KiB"},
          {.name = "flood",
           .arguments = {{.name = "count", .otherwise = 100000}},
           .body = [](const BadReply& reply) { return answer(flood(reply.number("count"))); },
           .group = BadGroup::TooMuch,
           .tells = "so many events"},
          {.name = "deep",
           .body = [](const BadReply&) { return answer(nested(kDeepLevels)); },
           .group = BadGroup::TooMuch,
           .tells = "arrays nested 200 deep"},
          {.name = "i8",
           .body = [](const BadReply&) { return answer("<i8>9223372036854775808</i8>"); },
           .group = BadGroup::WrongContents,
           .tells = "an i8 too large for 64 bits"},
          {.name = "utf8",
           .body = [](const BadReply&) { return answer("<string>\xC3\x28 \xFF</string>"); },
           .group = BadGroup::NotXmlRpc,
           .tells = "a text that is not UTF-8"},
          {.name = "body",
           .arguments = {{.name = "status", .otherwise = 200}, {.name = "text", .otherwise = ""}},
           .body = textAlone,
           .group = BadGroup::ErrorsAndTexts,
           .tells = "the text, with the HTTP status"},
          {.name = "raw",
           .way = Way::Raw,
           .arguments = {{.name = "text", .needed = true}},
           .body = textAlone,
           .group = BadGroup::ErrorsAndTexts,
           .tells = "the text alone, no HTTP"},
          {.name = "slow",
           .way = Way::Late,
           .arguments = {late},
           .group = BadGroup::NoAnswer,
           .tells = "the right answer, late"},
          {.name = "drip",
           .way = Way::Drip,
           .arguments = {late},
           .group = BadGroup::NoAnswer,
           .tells = "the right answer, byte by byte"}};
}

}  // namespace

const std::vector<BadRow>& badRows() {
  static const auto& rows = *new std::vector<BadRow>(makeRows());
  return rows;
}

const BadRow* findBadRow(const std::string& name) {
  for (const BadRow& row : badRows())
    if (name == row.name) return &row;
  return nullptr;
}

bool takes(const BadRow& row, const std::string& argument) {
  return std::any_of(row.arguments.begin(), row.arguments.end(),
                     [&argument](const BadArgument& one) { return argument == one.name; });
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
    if (plan.reply.row != reply.row || plan.reply.field() != reply.field()) continue;
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
      Json entry{{"reply", plan.reply.row->name}, {"calls", plan.calls}};
      if (!plan.reply.field().empty()) entry["field"] = plan.reply.field();
      if (plan.until >= 0) entry["left"] = plan.until - now;
      out[method].push_back(std::move(entry));
    }
  return out;
}

}  // namespace kslsim
