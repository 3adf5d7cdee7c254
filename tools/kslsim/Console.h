#pragma once

#include <cstddef>

#include "tools/kslsim/Wire.h"

namespace kslsim {

// One file of the console, the page by which people steer the simulator: its path on the control port and its text.
struct ConsoleFile {
  const char* path;
  const char* text;
};
extern const ConsoleFile CONSOLE_FILES[];
extern const size_t CONSOLE_FILE_COUNT;

// What the console makes its forms of: the events with the form of their context, the fields that they tell of and
// a sensible value; the methods, the errors, and what can go wrong.
Json consoleForms();

}  // namespace kslsim
