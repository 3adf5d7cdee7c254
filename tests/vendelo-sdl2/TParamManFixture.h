#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <list>
#include <string>
#include <vector>

#include "tests/support/LogLines.h"
#include "vendelo-sdl2/TActionMan.h"
#include "vendelo-sdl2/TParamMan.h"

// What the tests of the parameter store share.
namespace paramtest {

using namespace vendelo_sdl2;

// A store with an identifier of its own, a persistent side in a map and a record of what it was asked for.
class Store : public TParamMan, public TActionMan {
 public:
  using TParamMan::AddParamToCache;
  using TParamMan::ParametersThatTriggerAction;
  using TParamMan::ParamList;

  Parameter OnRequestValue(const std::string& address, const std::string& name) override {
    requests.push_back(address + "/" + name);
    if (throwOnRequest) throw 1;
    return answer;
  }
  void OnStoreValue(TAppParam* param, int mode) override {
    stored.push_back(param->Name() + ":" + std::to_string(mode));
  }
  void OnDeleteValue(const TAppParam* param) override { deleted.push_back(param->Name()); }
  void OnStoreValues(const std::list<TAppParam*>& params) override {
    std::string names;
    for (const auto* param : params)
      names += param->GetRawDomain() + "/" + param->Name() + "=" + param->Value() + ";";
    storeRounds.push_back(names);
  }
  void OnRebootRequired() override { ++reboots; }

  // What would be a global value of the persistent side.
  void answerWith(const std::string& domain, const std::string& value) {
    answer = Parameter();
    answer = Parameter(domain);
    answer.SetValue(value);
  }

  std::string id = "hall_7";
  std::vector<std::string> requests;
  std::vector<std::string> stored;
  std::vector<std::string> deleted;
  std::vector<std::string> storeRounds;
  int reboots = 0;
  bool throwOnRequest = false;
  Parameter answer;

 protected:
  std::string LookUpClientID() const override { return id; }
};

class Params : public testing::Test {
 protected:
  TAppParam* set(const std::string& name, const std::string& value, ParameterDomain domain) {
    return store.SetParam(name, value, domain, "", "", false);
  }
  Store store;
};

// What the action printed.
inline std::string Captured(const std::function<void()>& action) {
  testing::internal::CaptureStdout();
  action();
  return testing::internal::GetCapturedStdout();
}

}  // namespace paramtest
