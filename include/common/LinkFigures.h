#pragma once

#include <map>
#include <utility>

#include "common/KSLTypes.h"

// How the calls of a client went, since it was made.
struct LinkFigures {
  // By method and by error; E_NO_ERROR is a good answer. Errors that have no name are one, whatever their number.
  std::map<std::pair<MethodType, ErrorTypes>, unsigned long> answers;
  unsigned long eventsHandled = 0;
  unsigned long eventsRefused = 0;  // the listener threw

  void count(MethodType method, ErrorTypes error);
};

// The names of errors that a service may give; "other" for what has none.
const char* nameOf(ErrorTypes error);
