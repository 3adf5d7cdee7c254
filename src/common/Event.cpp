#include "common/Event.h"

#include <cstdlib>
#include <xmlrpc-c/girerr.hpp>

#include "common/XmlRpcSupport.h"
#include "vendelo-sdl2/MyUtils.h"

Event::Event(int id, const xmlrpc_c::value& v) : id_(id), context_(nullptr) {
  if (!v.isInstantiated()) throw girerr::error("An event without a context");
  context_ = v.cValue();
}

Event::Event(int id, xmlrpc_value* v) : id_(id), context_(v) {
  if (context_ != nullptr) xmlrpc_INCREF(context_);
}

Event::Event(int id, const char* format, ...) : id_(id), context_(nullptr) {
  XmlRpcEnv env;
  va_list params;
  va_start(params, format);
  context_ = buildXmlRpcValue(env.get(), format, params);
  va_end(params);
}

Event::~Event() {
  if (context_ != nullptr) xmlrpc_DECREF(context_);
}

int Event::id() const { return id_; }

KSLGameEvent Event::gameEventID() const { return static_cast<KSLGameEvent>(id_); }

PlatformEvent Event::platformEventID() const { return static_cast<PlatformEvent>(id_); }

xmlrpc_value* Event::context() const { return context_; }

bool Event::asBool() const {
  xmlrpc_bool value = 0;
  if (context_ != nullptr) {
    XmlRpcEnv env;
    xmlrpc_read_bool(env.get(), context_, &value);
  }
  return value != 0;
}

int Event::asInt() const {
  xmlrpc_int32 value = 0;
  if (context_ != nullptr) {
    XmlRpcEnv env;
    xmlrpc_read_int(env.get(), context_, &value);
  }
  return value;
}

double Event::asDouble() const {
  double value = 0;
  if (context_ != nullptr) {
    XmlRpcEnv env;
    xmlrpc_read_double(env.get(), context_, &value);
  }
  return value;
}

int64_t Event::asLong() const {
  xmlrpc_int64 value = 0;
  if (context_ != nullptr) {
    XmlRpcEnv env;
    xmlrpc_read_i8(env.get(), context_, &value);
  }
  return value;
}

std::string Event::asString() const {
  if (context_ == nullptr) return "";
  XmlRpcEnv env;
  const char* buffer = nullptr;  // the library leaves it alone on a fault
  xmlrpc_read_string(env.get(), context_, &buffer);
  if (env.failed() || buffer == nullptr) return "";
  std::string text(buffer);
  std::free(const_cast<char*>(buffer));
  MyUtils::UnescapeXml(text);
  return text;
}

void Event::readEventIntoVariables(const char* format, ...) const {
  XmlRpcEnv env;
  va_list params;
  va_start(params, format);
  readEventIntoVariables_va(env.get(), format, params);
  va_end(params);
}

void Event::readEventIntoVariables(xmlrpc_env* env, const char* format, ...) const {
  va_list params;
  va_start(params, format);
  readEventIntoVariables_va(env, format, params);
  va_end(params);
}

void Event::readEventIntoVariables_va(xmlrpc_env* env, const char* format, va_list& params) const {
  if (context_ == nullptr) {
    xmlrpc_env_set_fault(env, XMLRPC_TYPE_ERROR, "The event has no context");
    return;
  }
  xmlrpc_decompose_value_va(env, context_, format, params);
}
