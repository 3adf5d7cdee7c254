#include "tools/kslsim/Console.h"

#include "tools/kslsim/BadReplies.h"
#include "tools/kslsim/Errors.h"
#include "tools/kslsim/Events.h"
#include "tools/kslsim/Methods.h"
#include "tools/kslsim/UsualLevels.h"

namespace kslsim {
namespace {

struct ReplyRow {
  const char* name;
  const char* group;
  const char* tells;
};

// In the order of the page.
constexpr ReplyRow REPLIES[] = {{"refuse", "No answer", "hangs up before the answer"},
                                {"silent", "No answer", "takes the call, never answers"},
                                {"slow", "No answer", "the right answer, late"},
                                {"drip", "No answer", "the right answer, byte by byte"},
                                {"cut", "No answer", "hangs up in the middle"},
                                {"http500", "Not XML-RPC", "HTTP status 500"},
                                {"html", "Not XML-RPC", "a web page"},
                                {"notxml", "Not XML-RPC", "a text that is no XML"},
                                {"utf8", "Not XML-RPC", "a text that is not UTF-8"},
                                {"empty", "Wrong contents", "a struct without keys"},
                                {"type", "Wrong contents", "another type: the field, or all"},
                                {"missing", "Wrong contents", "the field is left out"},
                                {"range", "Wrong contents", "a number too large for its type"},
                                {"i8", "Wrong contents", "an i8 too large for 64 bits"},
                                {"large", "Too much", "600 KiB"},
                                {"flood", "Too much", "so many events"},
                                {"deep", "Too much", "arrays nested 200 deep"},
                                {"fault", "Errors and texts", "the service's own error"},
                                {"rpcfault", "Errors and texts", "a fault of XML-RPC"},
                                {"body", "Errors and texts", "the text, with the HTTP status"},
                                {"raw", "Errors and texts", "the text alone, no HTTP"}};

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

}  // namespace

Json consoleForms() {
  Json out;
  for (const EventRow& row : eventRows()) out["events"].push_back(formOf(row));
  out["methods"] = methodNames();
  for (const ErrorRow& row : errorRows()) out["errors"].push_back({{"code", row.code}, {"name", row.name}});
  for (const ReplyRow& row : REPLIES) {
    const Bad bad = *badByName(row.name);
    out["replies"].push_back({{"name", row.name},
                              {"takes", argumentsOf(bad)},
                              {"needs", neededBy(bad)},
                              {"group", row.group},
                              {"tells", row.tells}});
  }
  out["levels"] = houseSteps(HOUSE_LEVELS, 1);
  return out;
}

}  // namespace kslsim
