#include "tools/kslsim/Wire.h"

#include <limits>

namespace kslsim {
namespace {

constexpr int64_t kIntLeast = std::numeric_limits<int32_t>::min();
constexpr int64_t kIntMost = std::numeric_limits<int32_t>::max();

bool fits64(const Json& value) {
  if (value.is_number_unsigned())
    return value.get<uint64_t>() <= static_cast<uint64_t>(std::numeric_limits<int64_t>::max());
  return value.is_number_integer();
}

bool fits32(const Json& value) {
  return fits64(value) && value.get<int64_t>() >= kIntLeast && value.get<int64_t>() <= kIntMost;
}

bool isTypedI8(const Json& value) { return value.is_object() && value.size() == 1 && value.contains("$i8"); }

// What no XML document can carry would make the peer refuse the whole reply. Null for a text that can be sent.
const char* faultOf(const std::string& text) {
  for (unsigned char c : text)
    if (c < 0x20 && c != '\t' && c != '\n' && c != '\r') return "a text without control characters";
  for (const char* none : {"\xEF\xBF\xBE", "\xEF\xBF\xBF"})
    if (text.find(none) != std::string::npos) return "a text without U+FFFE and U+FFFF, which are no characters";
  try {
    Json(text).dump();
  } catch (const Json::exception&) {
    return "a text in UTF-8";
  }
  return nullptr;
}

const std::vector<Field>* fieldsOf(Kind kind) {
  switch (kind) {
    case Kind::Game:
      return &gameFields();
    case Kind::Level:
      return &levelFields();
    case Kind::Bets:
      return &betFields();
    default:
      return nullptr;
  }
}

void demand(bool good, const std::string& path, const char* what) {
  if (!good) throw InputError(path, std::string("expected ") + what);
}

void checkText(const std::string& text, const std::string& path) {
  const char* fault = faultOf(text);
  demand(!fault, path, fault);
}

void checkString(const Json& value, const std::string& path) {
  demand(value.is_string(), path, "a text");
  checkText(value.get_ref<const std::string&>(), path);
}

std::string below(const std::string& path, const std::string& key) {
  return (Json::json_pointer(path) / key).to_string();
}

void checkItems(const Json& value, Kind kind, const std::string& path) {
  demand(value.is_array(), path, "a list");
  for (size_t i = 0; i < value.size(); ++i) check(value[i], kind, below(path, std::to_string(i)));
}

// The keys of these structs go out as they are.
void checkMembers(const Json& value, const std::string& path) {
  for (const auto& [key, item] : value.items()) {
    checkText(key, below(path, key));
    check(item, Kind::Any, below(path, key));
  }
}

void checkAny(const Json& value, const std::string& path) {
  if (isTypedI8(value)) return check(value["$i8"], Kind::I8, below(path, "$i8"));
  if (value.is_string()) return checkString(value, path);
  if (value.is_number() && !value.is_number_float()) demand(fits64(value), path, "a number of 64 bits");
  if (value.is_array()) return checkItems(value, Kind::Any, path);
  if (value.is_object()) checkMembers(value, path);
}

xmlrpc_c::value structToWire(const Json& value, const std::vector<Field>& fields) {
  xmlrpc_c::cstruct out;
  for (const Field& field : fields) out[field.name] = toWire(value.at(field.name), field.kind);
  return xmlrpc_c::value_struct(out);
}

xmlrpc_c::value itemsToWire(const Json& value, Kind kind) {
  xmlrpc_c::carray out;
  for (const Json& item : value) out.push_back(toWire(item, kind));
  return xmlrpc_c::value_array(out);
}

xmlrpc_c::value anyStructToWire(const Json& value) {
  xmlrpc_c::cstruct out;
  for (const auto& [key, item] : value.items()) out[key] = toWire(item, Kind::Any);
  return xmlrpc_c::value_struct(out);
}

xmlrpc_c::value anyToWire(const Json& value) {
  // A client may well have sent a struct of that one key.
  if (isTypedI8(value) && fits64(value["$i8"])) return toWire(value["$i8"], Kind::I8);
  switch (value.type()) {
    case Json::value_t::boolean:
      return toWire(value, Kind::Bool);
    case Json::value_t::number_integer:
    case Json::value_t::number_unsigned:
      return toWire(value, fits32(value) ? Kind::Int : Kind::I8);
    case Json::value_t::number_float:
      return xmlrpc_c::value_double(value.get<double>());
    case Json::value_t::string:
      return toWire(value, Kind::String);
    case Json::value_t::array:
      return itemsToWire(value, Kind::Any);
    case Json::value_t::object:
      return anyStructToWire(value);
    default:
      return xmlrpc_c::value_nil();
  }
}

}  // namespace

void check(const Json& value, Kind kind, const std::string& path) {
  switch (kind) {
    case Kind::Nil:
      return demand(value.is_null(), path, "nothing");
    case Kind::Int:
      return demand(fits32(value), path, "a number of 32 bits");
    case Kind::I8:
      return demand(fits64(value), path, "a number of 64 bits");
    case Kind::Bool:
      return demand(value.is_boolean(), path, "true or false");
    case Kind::String:
      return checkString(value, path);
    case Kind::Strings:
      return checkItems(value, Kind::String, path);
    case Kind::Levels:
      return checkItems(value, Kind::Level, path);
    case Kind::Extra:
    case Kind::Struct:
      demand(value.is_object(), path, "an object");
      return checkMembers(value, path);
    case Kind::Any:
      return checkAny(value, path);
    case Kind::Game:
    case Kind::Level:
    case Kind::Bets:
      checkPart(value, *fieldsOf(kind), path);
      for (const Field& field : *fieldsOf(kind))
        if (!value.contains(field.name)) throw InputError(path, std::string("\"") + field.name + "\" is missing");
      return;
  }
}

void checkPart(const Json& part, const std::vector<Field>& fields, const std::string& path) {
  demand(part.is_object(), path, "an object");
  for (const auto& [key, item] : part.items()) {
    const Field* field = findField(fields, key);
    if (!field) throw InputError(below(path, key), "unknown field \"" + key + "\"");
    check(item, field->kind, below(path, key));
  }
}

xmlrpc_c::value toWire(const Json& value, Kind kind) {
  switch (kind) {
    case Kind::Nil:
      return xmlrpc_c::value_nil();
    case Kind::Int:
      return xmlrpc_c::value_int(value.get<int>());
    case Kind::I8:
      return xmlrpc_c::value_i8(value.get<int64_t>());
    case Kind::Bool:
      return xmlrpc_c::value_boolean(value.get<bool>());
    case Kind::String:
      return xmlrpc_c::value_string(value.get<std::string>());
    case Kind::Strings:
      return itemsToWire(value, Kind::String);
    case Kind::Levels:
      return itemsToWire(value, Kind::Level);
    case Kind::Game:
    case Kind::Level:
    case Kind::Bets:
      return structToWire(value, *fieldsOf(kind));
    case Kind::Extra:
      if (value.empty()) return xmlrpc_c::value_nil();
      return anyStructToWire(value);
    case Kind::Struct:
      return anyStructToWire(value);
    case Kind::Any:
      break;
  }
  return anyToWire(value);
}

Json fromWire(const xmlrpc_c::value& value) {
  switch (value.type()) {
    case xmlrpc_c::value::TYPE_INT:
      return static_cast<int>(xmlrpc_c::value_int(value));
    case xmlrpc_c::value::TYPE_I8:
      return {{"$i8", static_cast<int64_t>(xmlrpc_c::value_i8(value))}};
    case xmlrpc_c::value::TYPE_BOOLEAN:
      return static_cast<bool>(xmlrpc_c::value_boolean(value));
    case xmlrpc_c::value::TYPE_DOUBLE:
      return static_cast<double>(xmlrpc_c::value_double(value));
    case xmlrpc_c::value::TYPE_STRING:
      return static_cast<std::string>(xmlrpc_c::value_string(value));
    case xmlrpc_c::value::TYPE_ARRAY: {
      Json out = Json::array();
      for (const auto& item : xmlrpc_c::value_array(value).vectorValueValue()) out.push_back(fromWire(item));
      return out;
    }
    case xmlrpc_c::value::TYPE_STRUCT: {
      Json out = Json::object();
      for (const auto& [key, item] : static_cast<xmlrpc_c::cstruct>(xmlrpc_c::value_struct(value)))
        out[key] = fromWire(item);
      return out;
    }
    case xmlrpc_c::value::TYPE_NIL:
      return nullptr;
    default:
      return "(a value of type " + std::to_string(value.type()) + ")";
  }
}

xmlrpc_c::value faultStruct(int code, const std::string& text) {
  return xmlrpc_c::value_struct(
    xmlrpc_c::cstruct{{"faultCode", xmlrpc_c::value_int(code)}, {"faultString", xmlrpc_c::value_string(text)}});
}

}  // namespace kslsim
