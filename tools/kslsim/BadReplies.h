#pragma once

#include <map>
#include <optional>

#include "tools/kslsim/Wire.h"

namespace kslsim {

// How a call is answered instead of by its method.
enum class Bad {
  Refuse,    // the connection is shut before a byte of the answer
  Http500,   // HTTP status 500
  Html,      // a page, as a proxy in between would give
  Cut,       // the connection is shut in the middle of the announced body
  Type,      // a well-formed answer of a type that no method gives
  Empty,     // a well-formed answer: a struct without any key
  Fault,     // the service's own error report: a struct with "faultCode" and "faultString"
  RpcFault,  // a fault in the sense of XML-RPC
  Large,     // a well-formed answer of 600 KiB
  Deep,      // arrays nested 200 deep
  I8,        // a 64-bit integer that does not fit 64 bits
  Slow       // the method's own answer, `ms` milliseconds late
};

struct BadReply {
  Bad bad;
  std::string name;  // as the step gives it: for the log
  int ms;            // Slow
  int code;          // Fault, RpcFault
  std::string text;  // Fault, RpcFault
};

// Which calls are to be answered badly. A call that is answered badly does not reach its method, Slow ones apart:
// the events that wait for its client go on waiting. No lock of its own; the simulator's covers it.
class BadReplies {
 public:
  // The next `calls` calls of the method, after those planned before; -1 for all that follow. The name "*" stands
  // for every method that has no plan of its own.
  void plan(const std::string& method, const BadReply& reply, int calls);

  // Drops what is planned for the method; "*" drops everything.
  void clear(const std::string& method);

  // What the call that has just come in meets; nothing when it is to be answered well.
  std::optional<BadReply> take(const std::string& method);

  Json toJson() const;

 private:
  struct Plan {
    BadReply reply;
    int calls;
  };
  std::map<std::string, std::vector<Plan>> mPlans;
};

// The kind with this name; nothing when there is none.
std::optional<Bad> badByName(const std::string& name);

// The names of all kinds, for a complaint about a wrong one.
std::string badNames();

// The body of the answer: XML for all kinds that have one.
std::string badBody(const BadReply& reply);

}  // namespace kslsim
