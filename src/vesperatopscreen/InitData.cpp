#include "vesperatopscreen/InitData.h"

#include <xmlrpc-c/base.h>
#include <cstdlib>

InitData::InitData()
  : ID(0),
    Locale(nullptr),
    Language(nullptr),
    DecimalSeparator(nullptr),
    ThousandSeparator(nullptr),
    ThousandGrouping(0) {}

InitData::~InitData() {
  for (const char* text : {Locale, Language, DecimalSeparator, ThousandSeparator})
    std::free(const_cast<char*>(text));
}

void* ParseInitResponse(const xmlrpc_c::value& value, int& errorCode) {
  auto* data = new InitData;
  xmlrpc_env env;
  xmlrpc_env_init(&env);
  xmlrpc_value* reply = value.cValue();
  xmlrpc_decompose_value(&env, reply, "{s:i,s:s,s:s,s:s,s:i,s:s,*}", "ID", &data->ID, "Locale", &data->Locale,
                         "DecimalSeparator", &data->DecimalSeparator, "ThousandSeparator", &data->ThousandSeparator,
                         "ThousandGrouping", &data->ThousandGrouping, "Language", &data->Language);
  xmlrpc_DECREF(reply);
  if (env.fault_occurred) {
    errorCode = 1;
    // The library has released the texts that it had read before the fault.
    data->Locale = data->Language = data->DecimalSeparator = data->ThousandSeparator = nullptr;
  }
  xmlrpc_env_clean(&env);
  return data;
}

void DestroyInitObject(void* data) { delete static_cast<InitData*>(data); }
