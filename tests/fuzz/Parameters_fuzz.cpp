// The limits of a parameter in the first line, and in each further one a value for it.
#include <sstream>
#include <stdexcept>

#include "tests/fuzz/Target.h"
#include "vendelo-sdl2/Parameters.h"

using namespace vendelo_sdl2;

namespace {

// A number that is too long throws, as the declaration tells; what it was given to is as it was then.
template <class Function>
bool inRange(const Function& function) {
  try {
    function();
    return true;
  } catch (const std::out_of_range&) {
    return false;
  }
}

void check(const ParameterLimits& limits, const std::string& value) {
  isIntOrDouble(value);
  inRange([&] {
    fuzz::require(limits.SatisfiesLimit(value) == (limits.Check(value) == value), "what fits is its own nearest");
  });
}

void set(Parameter& parameter, const std::string& value) {
  const std::string before = parameter.Value();
  bool fits = false;
  const bool known = inRange([&] { fits = parameter.IsValueOK(value); });
  const bool set = inRange([&] { parameter.SetValue(value); });
  fuzz::require(set == known || value == before, "a value is looked at in one way");
  fuzz::require(parameter.Value() == (set && fits ? value : before), "a value is taken when it fits");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  std::istringstream lines(fuzz::textOf(data, size));
  std::string rule, value;
  std::getline(lines, rule);
  const ParameterLimits limits(rule);
  fuzz::require(limits.OriginalString() == rule, "the expression stays as it was written");
  Parameter parameter;
  parameter.Instantiate();
  parameter.SetLimits(rule);
  while (std::getline(lines, value)) {
    check(limits, value);
    set(parameter, value);
    parameter.AsInteger(1);
    parameter.AsFloat(1);
    parameter.IsInteger();
    parameter.IsDouble();
    parameter.UpdateOldValue();
    parameter.SetCaption(value);
    parameter.Domain(value);
    inRange([&] { parameter.Reset(); });
  }
  return 0;
}
