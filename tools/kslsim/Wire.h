#pragma once

#include <cstdint>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>
#include <vector>
#include <xmlrpc-c/base.hpp>

namespace kslsim {

using Json = nlohmann::json;

// What the service is told or asked and cannot take. `path` is the JSON pointer of the culprit below the object
// that was given, so that a scenario can name the line.
class InputError : public std::runtime_error {
 public:
  InputError(const std::string& path, const std::string& text) : std::runtime_error(text), mPath(path) {}
  const std::string& path() const { return mPath; }

 private:
  std::string mPath;
};

// Wire form of a value. JSON has one kind of number and no nil inside structs that the client would accept, so the
// form always comes from a table here and never from the looks of the JSON value; only Any goes by the looks.
enum class Kind {
  Nil,
  Int,  // 32 bits
  I8,   // 64 bits: every amount of money
  Bool,
  String,
  Strings,  // array of string
  Game,     // struct of gameFields()
  Level,    // struct of levelFields()
  Levels,   // array of Level
  Bets,     // struct of betFields()
  Extra,    // struct of Any; nil when empty
  Struct,   // struct of Any; stays a struct when empty
  Any       // null, bool, int (i8 when it does not fit 32 bits), double, string, array, struct; {"$i8": n} is an i8
};

// One key of a struct: its name, its form, and the value with which a new struct starts.
struct Field {
  const char* name;
  Kind kind;
  Json start;
};

const std::vector<Field>& stateFields();  // reply of "platform.state"
const std::vector<Field>& levelFields();  // one jackpot level
const std::vector<Field>& gameFields();   // the active game
const std::vector<Field>& betFields();    // context of the bet limits
const std::vector<Field>& initFields();   // reply of "topscreen.init" but for its "ID"

// How the service itself behaves: whom it registers, which methods it knows, and what the methods of the system
// give.
const std::vector<Field>& serviceFields();

// The struct of these fields with their start values.
Json startOf(const std::vector<Field>& fields);

// The named field; null when there is none.
const Field* findField(const std::vector<Field>& fields, const std::string& name);

// Throws InputError unless the value can take that form. A struct has to be whole.
void check(const Json& value, Kind kind, const std::string& path);

// Throws InputError unless every key of `part` is one of the fields and fits its form; keys may be missing.
void checkPart(const Json& part, const std::vector<Field>& fields, const std::string& path);

// The value in its wire form; the value has passed `check`.
xmlrpc_c::value toWire(const Json& value, Kind kind);

// A value from the wire as JSON, with an i8 as {"$i8": n}, so that a log shows what type travelled.
Json fromWire(const xmlrpc_c::value& value);

// The struct by which the service reports an error of its own.
xmlrpc_c::value faultStruct(int code, const std::string& text);

}  // namespace kslsim
