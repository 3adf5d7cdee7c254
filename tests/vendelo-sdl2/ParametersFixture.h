#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "vendelo-sdl2/Parameters.h"

// What the tests of the parameter values share.
namespace parametertest {

using namespace vendelo_sdl2;

// Writes the reports down.
class Watcher : public Parameter {
 public:
  using Parameter::Parameter;
  Watcher() = default;
  Watcher(const Watcher& other) : Parameter(other) {}  // without its record
  Watcher& operator=(const Watcher& other) {
    Parameter::operator=(other);
    return *this;
  }
  void OnValueChanged(int changes) override {
    reports.push_back(changes);
    if (onChange) onChange();
  }
  std::vector<int> reports;
  std::function<void()> onChange;
};

using Reports = std::vector<int>;

}  // namespace parametertest
