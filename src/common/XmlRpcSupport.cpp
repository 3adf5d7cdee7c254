#include "common/XmlRpcSupport.h"

xmlrpc_value* buildXmlRpcValue(xmlrpc_env* env, const char* format, va_list& params) {
  xmlrpc_value* value = nullptr;
  const char* rest = nullptr;
  xmlrpc_build_value_va(env, format, params, &value, &rest);
  if (env->fault_occurred) {
    // The library has released the value by itself; what it left in the pointer is stale.
    return nullptr;
  }
  if (rest != nullptr && *rest != '\0') {
    xmlrpc_env_set_fault_formatted(env, XMLRPC_INTERNAL_ERROR,
                                   "Junk after the format specifier: '%s'.  "
                                   "The format string must describe exactly one XML-RPC value "
                                   "(but it might be a compound value such as an array)",
                                   rest);
    xmlrpc_DECREF(value);
    return nullptr;
  }
  return value;
}
