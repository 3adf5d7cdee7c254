#pragma once

#include <map>
#include <optional>

#include "tools/kslsim/Wire.h"

namespace kslsim {

// What becomes of a call that is answered badly.
enum class Way {
  Shut,  // the connection is shut before a byte of the answer
  Hold,  // nothing is answered; after "ms" milliseconds the connection is shut, with 0 not by itself
  Http,  // an HTTP answer with a body of the row's
  Cut,   // so many "bytes" of such an answer, -1: half of its body; then the connection is shut
  Raw,   // the body in the place of an HTTP answer, then the connection is shut
  Late,  // the method's own answer, "ms" milliseconds late
  Drip   // the method's own answer, a byte each "ms" milliseconds
};

// Of the console, in the order of the page.
enum class BadGroup { NoAnswer, NotXmlRpc, WrongContents, TooMuch, ErrorsAndTexts };

// What a "bad" step may say of a reply beside the method, the calls and the time.
struct BadArgument {
  const char* name;
  Json otherwise = nullptr;  // the value where the step gives none
  bool needed = false;       // the step has to give one, and not an empty one
  bool asked = true;         // the console's switch sends what stands in the input of this name
};

struct BadReply;

// How a call can be answered instead of by its method. The step "bad", the service and the console go by these rows
// alone, so that one more reply is one more row.
struct BadRow {
  const char* name;  // as the step gives it
  Way way = Way::Http;
  std::vector<BadArgument> arguments = {};
  int status = 0;                                        // of the HTTP answer; 0: that of a good one
  const char* type = nullptr;                            // of its body; null: that of a good one
  std::string (*body)(const BadReply& reply) = nullptr;  // null for none
  // For a reply with a "field", which is the method's own answer but for that: the XML in the place of the field's
  // value, null to leave its key out.
  const char* (*instead)(const xmlrpc_c::value& value) = nullptr;
  BadGroup group;
  int place = 0;      // in its group: lower ones first, equal ones in the order of the rows
  const char* tells;  // what comes of it, for people
};

// One that has been ordered.
struct BadReply {
  const BadRow* row;  // never null
  Json values;        // of all arguments of the row, by their names

  // 0 and "" for arguments that the row does not have.
  int number(const char* argument) const { return values.value(argument, 0); }
  std::string text(const char* argument) const { return values.value(argument, std::string()); }

  // Keys and indices with "/" between, "*" for every item of a list; empty for the whole answer.
  std::string field() const { return text("field"); }

  std::string body() const { return row->body ? row->body(*this) : std::string(); }

  // Whether the call is answered by its method first.
  bool alters() const { return row->way == Way::Late || row->way == Way::Drip || !field().empty(); }
};

// Which calls are to be answered badly. A call that is answered badly does not reach its method, those apart that
// carry the method's own answer (alters()): the events that wait for its client go on waiting. No lock of its own;
// the simulator's covers it. Times in milliseconds of the simulator's clock.
class BadReplies {
 public:
  // The next `calls` calls of the method, after those planned before; -1 for all that follow. From the time `until`
  // on the plan counts for nothing; -1 for no end. The name "*" stands for every method that has no plan of its
  // own.
  void plan(const std::string& method, const BadReply& reply, int calls, int64_t until);

  // Drops what is planned for the method; "*" drops everything.
  void clear(const std::string& method);

  // What the call that has come in at `now` meets; nothing when it is to be answered well.
  std::optional<BadReply> take(const std::string& method, int64_t now);

  // The call could not be answered so: its plan gets it back.
  void giveBack(const std::string& method, const BadReply& reply);

  // For each method its plans, with the milliseconds that are left of those with an end.
  Json toJson(int64_t now) const;

 private:
  struct Plan {
    BadReply reply;
    int calls;
    int64_t until;
  };
  std::map<std::string, std::vector<Plan>> mPlans;
};

// All replies, in the order of the documentation.
const std::vector<BadRow>& badRows();

// The row with this name; null when there is none.
const BadRow* findBadRow(const std::string& name);

bool takes(const BadRow& row, const std::string& argument);

// The method's answer with the reply's field spoilt; nothing when the answer has no such field.
std::optional<std::string> spoilt(const std::string& answerXml, const BadReply& reply);

}  // namespace kslsim
