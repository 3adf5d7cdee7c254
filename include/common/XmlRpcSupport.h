#pragma once

#include <xmlrpc-c/base.h>

#include <cstdarg>
#include <string>
#include <xmlrpc-c/base.hpp>

// An XML-RPC error state for one scope. One thread.
class XmlRpcEnv {
 public:
  XmlRpcEnv() { xmlrpc_env_init(&mEnv); }
  ~XmlRpcEnv() { xmlrpc_env_clean(&mEnv); }
  XmlRpcEnv(const XmlRpcEnv&) = delete;
  XmlRpcEnv& operator=(const XmlRpcEnv&) = delete;

  xmlrpc_env* get() { return &mEnv; }
  bool failed() const { return mEnv.fault_occurred != 0; }

 private:
  xmlrpc_env mEnv;
};

// One reference to an XML-RPC value, dropped at the end of the scope; null holds nothing.
class XmlRpcReference {
 public:
  explicit XmlRpcReference(xmlrpc_value* value) : mValue(value) {}
  ~XmlRpcReference() {
    if (mValue != nullptr) xmlrpc_DECREF(mValue);
  }
  XmlRpcReference(const XmlRpcReference&) = delete;
  XmlRpcReference& operator=(const XmlRpcReference&) = delete;

  xmlrpc_value* get() const { return mValue; }

 private:
  xmlrpc_value* mValue;
};

// Builds one value from a format of the xmlrpc_build_value family. The caller owns the reference. On a fault, which
// stays in env, null; a format with more than one value is a fault.
xmlrpc_value* buildXmlRpcValue(xmlrpc_env* env, const char* format, va_list& params);
