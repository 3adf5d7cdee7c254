// Answers of the methods with one field made wrong.
#include <xmlrpc-c/xml.hpp>

#include "tools/kslsim/BadReplies.h"

namespace kslsim {
namespace {

// Stands where the wrong value goes until the answer is text: the library makes no wrong one.
const std::string MARK = "@kslsim-spoilt-field@";
const std::string MARK_XML = "<string>" + MARK + "</string>";

struct Spoiler {
  Bad bad;
  bool found = false;
  std::string xml;  // what takes the place of the mark

  xmlrpc_c::value replacement(const xmlrpc_c::value& old) {
    found = true;
    const bool wide = old.type() == xmlrpc_c::value::TYPE_I8;
    if (bad == Bad::Range)
      xml = wide ? "<i8>9223372036854775808</i8>" : "<int>99999999999</int>";
    else
      xml = old.type() == xmlrpc_c::value::TYPE_STRING ? "<int>7</int>" : "<string>of another type</string>";
    return xmlrpc_c::value_string(MARK);
  }

  // The value with the field at `path` below it made wrong.
  xmlrpc_c::value spoil(const xmlrpc_c::value& value, const std::string& path) {
    if (path.empty()) return replacement(value);
    const size_t slash = path.find('/');
    const std::string key = path.substr(0, slash);
    const std::string rest = slash == std::string::npos ? "" : path.substr(slash + 1);
    if (value.type() == xmlrpc_c::value::TYPE_STRUCT) {
      auto members = static_cast<xmlrpc_c::cstruct>(xmlrpc_c::value_struct(value));
      const auto member = members.find(key);
      if (member == members.end()) return value;
      const bool leaveOut = bad == Bad::Missing && rest.empty();
      found |= leaveOut;
      // A value of the library cannot be assigned to.
      const xmlrpc_c::value old = member->second;
      members.erase(member);
      if (!leaveOut) members.emplace(key, spoil(old, rest));
      return xmlrpc_c::value_struct(members);
    }
    if (value.type() == xmlrpc_c::value::TYPE_ARRAY) {
      xmlrpc_c::carray items;
      for (const xmlrpc_c::value& item : xmlrpc_c::value_array(value).vectorValueValue()) {
        const bool meant = key == "*" || key == std::to_string(items.size());
        const bool hasNoKey = bad == Bad::Missing && rest.empty();
        items.push_back(meant && !hasNoKey ? spoil(item, rest) : item);
      }
      return xmlrpc_c::value_array(items);
    }
    return value;
  }
};

}  // namespace

std::optional<std::string> spoilt(const std::string& answerXml, const BadReply& reply) {
  Spoiler spoiler{reply.bad, false, ""};
  std::string out;
  try {
    xmlrpc_c::rpcOutcome outcome;
    xmlrpc_c::xml::parseResponse(answerXml, &outcome);
    if (!outcome.succeeded()) return std::nullopt;
    const xmlrpc_c::value value = spoiler.spoil(outcome.getResult(), reply.field);
    if (!spoiler.found) return std::nullopt;
    xmlrpc_c::xml::generateResponse(xmlrpc_c::rpcOutcome(value), xmlrpc_dialect_i8, &out);
  } catch (const std::exception&) {
    return std::nullopt;  // larger than the library reads
  }
  for (size_t at = out.find(MARK_XML); at != std::string::npos; at = out.find(MARK_XML, at + 1))
    out.replace(at, MARK_XML.size(), spoiler.xml);
  return out;
}

}  // namespace kslsim
