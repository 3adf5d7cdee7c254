#include "tools/kslsim/Console.h"

#include <algorithm>

#include "tools/kslsim/BadReplies.h"
#include "tools/kslsim/Errors.h"
#include "tools/kslsim/Events.h"
#include "tools/kslsim/Methods.h"
#include "tools/kslsim/UsualLevels.h"

namespace kslsim {
namespace {

// The inputs that the page makes for a context.
const char* formOf(Kind context) {
  switch (context) {
    case Kind::Nil:
      return "nothing";
    case Kind::Int:
    case Kind::I8:
      return "number";
    case Kind::Bool:
      return "flag";
    case Kind::String:
      return "text";
    case Kind::Strings:
      return "texts";
    case Kind::Game:
      return "game";
    case Kind::Bets:
      return "numbers";
    default:
      return "json";
  }
}

Json formOf(const EventRow& row) {
  Json out{
    {"id", row.id},           {"name", row.name},     {"form", formOf(row.context)}, {"fields", Json::array()},
    {"parts", Json::array()}, {"sample", row.sample}, {"tells", row.tells}};
  for (const ToldField& told : row.fields) {
    out["fields"].push_back(told.field);
    if (told.key) out["parts"].push_back({{"field", told.field}, {"key", told.key}, {"caption", told.caption}});
  }
  if (row.game) out["game"] = row.game;
  return out;
}

const char* titleOf(BadGroup group) {
  switch (group) {
    case BadGroup::NoAnswer:
      return "No answer";
    case BadGroup::NotXmlRpc:
      return "Not XML-RPC";
    case BadGroup::WrongContents:
      return "Wrong contents";
    case BadGroup::TooMuch:
      return "Too much";
    case BadGroup::ErrorsAndTexts:
      return "Errors and texts";
  }
  return "";
}

Json formOf(const BadRow& row) {
  Json out{{"name", row.name},
           {"asks", Json::array()},
           {"needs", Json::array()},
           {"group", titleOf(row.group)},
           {"tells", row.tells}};
  for (const BadArgument& argument : row.arguments) {
    if (argument.asked) out["asks"].push_back(argument.name);
    if (argument.needed) out["needs"].push_back(argument.name);
  }
  return out;
}

// In the order of the page.
std::vector<BadRow> repliesOnPage() {
  std::vector<BadRow> out = badRows();
  std::stable_sort(out.begin(), out.end(), [](const BadRow& one, const BadRow& other) {
    return std::pair(one.group, one.place) < std::pair(other.group, other.place);
  });
  return out;
}

}  // namespace

Json consoleForms() {
  Json out;
  for (const EventRow& row : eventRows()) out["events"].push_back(formOf(row));
  out["methods"] = methodNames();
  for (const ErrorRow& row : errorRows()) out["errors"].push_back({{"code", row.code}, {"name", row.name}});
  for (const BadRow& row : repliesOnPage()) out["replies"].push_back(formOf(row));
  out["levels"] = houseSteps(kHouseLevels, 1);
  return out;
}

}  // namespace kslsim
