// Answers of the methods with one field made wrong.
#include <xmlrpc-c/xml.hpp>

#include "tools/kslsim/BadReplies.h"

namespace kslsim {
namespace {

// Stands where the wrong value goes until the answer is text: the library makes no wrong one.
const std::string MARK = "@kslsim-spoilt-field@";
const std::string MARK_XML = "<string>" + MARK + "</string>";

struct Spoiler {
  const BadRow& row;
  bool found = false;
  std::string xml = {};  // what takes the place of the mark

  // The value with the field at `path` below it made wrong.
  xmlrpc_c::value spoil(const xmlrpc_c::value& value, const std::string& path) {
    if (path.empty()) {
      found = true;
      xml = row.instead(value);
      return xmlrpc_c::value_string(MARK);
    }
    const size_t slash = path.find('/');
    const std::string key = path.substr(0, slash);
    const std::string rest = slash == std::string::npos ? "" : path.substr(slash + 1);
    const auto leavesOut = [&](const xmlrpc_c::value& old) { return rest.empty() && !row.instead(old); };
    if (value.type() == xmlrpc_c::value::TYPE_STRUCT) {
      auto members = static_cast<xmlrpc_c::cstruct>(xmlrpc_c::value_struct(value));
      const auto member = members.find(key);
      if (member == members.end()) return value;
      // A value of the library cannot be assigned to.
      const xmlrpc_c::value old = member->second;
      members.erase(member);
      if (leavesOut(old))
        found = true;
      else
        members.emplace(key, spoil(old, rest));
      return xmlrpc_c::value_struct(members);
    }
    if (value.type() == xmlrpc_c::value::TYPE_ARRAY) {
      xmlrpc_c::carray items;
      for (const xmlrpc_c::value& item : xmlrpc_c::value_array(value).vectorValueValue()) {
        const bool meant = key == "*" || key == std::to_string(items.size());
        // An item has no key that could be left out.
        items.push_back(meant && !leavesOut(item) ? spoil(item, rest) : item);
      }
      return xmlrpc_c::value_array(items);
    }
    return value;
  }
};

}  // namespace

std::optional<std::string> spoilt(const std::string& answerXml, const BadReply& reply) {
  Spoiler spoiler{*reply.row};
  std::string out;
  try {
    xmlrpc_c::rpcOutcome outcome;
    xmlrpc_c::xml::parseResponse(answerXml, &outcome);
    if (!outcome.succeeded()) return std::nullopt;
    const xmlrpc_c::value value = spoiler.spoil(outcome.getResult(), reply.field());
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
