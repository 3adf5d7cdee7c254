#pragma once

#include <map>
#include <optional>

#include "tools/kslsim/Wire.h"

namespace kslsim {

// How a call is answered instead of by its method.
enum class Bad {
  Refuse,    // the connection is shut before a byte of the answer
  Silent,    // nothing is answered; the connection stays open
  Http500,   // HTTP status 500
  Html,      // a page, as a proxy in between would give
  NotXml,    // a text that is no XML
  Cut,       // the connection is shut in the middle of the answer
  Type,      // a value of another type, in one field or instead of all
  Missing,   // a key is left out
  Range,     // a number that does not fit its type, in one field or instead of all
  Empty,     // a well-formed answer: a struct without any key
  Fault,     // the service's own error report: a struct with "faultCode" and "faultString"
  RpcFault,  // a fault in the sense of XML-RPC
  Large,     // a well-formed answer of 600 KiB
  Flood,     // a well-formed answer of many events
  Deep,      // arrays nested 200 deep
  I8,        // a 64-bit integer that does not fit 64 bits
  Utf8,      // a text that is not UTF-8
  Body,      // any text as the body, with any HTTP status
  Raw,       // any bytes in the place of an HTTP answer
  Slow,      // the method's own answer, `ms` milliseconds late
  Drip       // the method's own answer, a byte each `ms` milliseconds
};

struct BadReply {
  Bad bad;
  std::string name;   // as the step gives it: for the log
  int ms;             // Slow, Drip; Silent: after so long the connection is shut, 0: not by itself
  int code;           // Fault, RpcFault
  std::string text;   // Fault, RpcFault, Body, Raw
  std::string field;  // Type, Missing, Range: keys and indices with "/" between, "*" for every item of a list
  int bytes;          // Cut: so many of the HTTP answer are sent; -1: half of the body
  int count;          // Flood: events
  int status;         // Body
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

// The kind with this name; nothing when there is none.
std::optional<Bad> badByName(const std::string& name);

// The names of all kinds.
std::vector<std::string> badNames();

// What a step may say of this kind beside the method, the calls and the time: names of arguments.
std::vector<std::string> argumentsOf(Bad bad);
bool takes(Bad bad, const std::string& argument);

// The argument without which there is no such reply; empty for none.
std::string neededBy(Bad bad);

// Whether the call is answered by its method first.
bool alters(const BadReply& reply);

// The body of the answer: XML for all kinds that have one.
std::string badBody(const BadReply& reply);

// The method's answer with the reply's field spoilt; nothing when the answer has no such field.
std::optional<std::string> spoilt(const std::string& answerXml, const BadReply& reply);

}  // namespace kslsim
