#pragma once

#include <xmlrpc-c/base.hpp>

// The parsed reply of the registration: under which number the service knows us and how it writes numbers.
// Made by ParseInitResponse on the communication thread, read on the main thread during the callback, freed by
// DestroyInitObject. The four texts are owned (malloc) and may be null when the reply could not be read.
struct InitData {
  int ID;
  const char* Locale;
  const char* Language;
  const char* DecimalSeparator;
  const char* ThousandSeparator;
  int ThousandGrouping;

  InitData();
  ~InitData();
  InitData(const InitData&) = delete;
  InitData& operator=(const InitData&) = delete;
};

// Reads the reply of "topscreen.init". Never null; `errorCode` becomes 1 when a key is missing or mistyped.
// Communication thread.
void* ParseInitResponse(const xmlrpc_c::value& value, int& errorCode);

// Frees what ParseInitResponse returned; null is allowed. Any thread.
void DestroyInitObject(void* data);
