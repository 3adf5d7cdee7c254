#include "tools/kslsim/Methods.h"

#include <chrono>

namespace kslsim {
namespace {

using Parameters = xmlrpc_c::paramList;
using Call = xmlrpc_c::value (*)(Simulator&, const Parameters&);

// A whole number in either of its two wire types.
int64_t wholeNumber(const Parameters& parameters, unsigned index) {
  if (index < parameters.size() && parameters[index].type() == xmlrpc_c::value::TYPE_INT)
    return parameters.getInt(index);
  return parameters.getI8(index);
}

std::optional<int64_t> atMostOneNumber(const Parameters& parameters) {
  if (parameters.size() == 0) return std::nullopt;
  const int64_t out = wholeNumber(parameters, 0);
  parameters.verifyEnd(1);
  return out;
}

struct MethodRow {
  const char* name;
  bool hasClient;  // the first parameter is the client's identifier
  Call call;
};

const MethodRow ROWS[] = {
  {"topscreen.init", false,
   [](Simulator& simulator, const Parameters& parameters) {
     const std::string name = parameters.getString(0);
     const std::string version = parameters.getString(1);
     parameters.verifyEnd(2);
     return simulator.init(name, version);
   }},
  {"game.popEvents", true,
   [](Simulator& simulator, const Parameters& parameters) {
     const int client = parameters.getInt(0);
     parameters.verifyEnd(1);
     return simulator.popEvents(client);
   }},
  {"game.pushEvents", true,
   [](Simulator& simulator, const Parameters& parameters) {
     const int client = parameters.getInt(0);
     const int package = parameters.getInt(1);
     const auto events = parameters.getArray(2);
     parameters.verifyEnd(3);
     return simulator.pushEvents(client, package, events);
   }},
  {"platform.state", false,
   [](Simulator& simulator, const Parameters& parameters) {
     parameters.verifyEnd(0);
     return simulator.platformState();
   }},
  {"game.getParam", true,
   [](Simulator& simulator, const Parameters& parameters) {
     parameters.verifyEnd(2);
     return simulator.getParam(parameters.getInt(0), parameters.getString(1));
   }},
  {"game.setParam", true,
   [](Simulator& simulator, const Parameters& parameters) {
     parameters.verifyEnd(3);
     return simulator.setParam(parameters.getInt(0), parameters.getString(1), parameters[2]);
   }},
  {"game.getCounter", true,
   [](Simulator& simulator, const Parameters& parameters) {
     parameters.verifyEnd(2);
     return simulator.getCounter(parameters.getInt(0), parameters.getString(1));
   }},
  {"game.setCounter", true,
   [](Simulator& simulator, const Parameters& parameters) {
     parameters.verifyEnd(3);
     return simulator.setCounter(parameters.getInt(0), parameters.getString(1), wholeNumber(parameters, 2));
   }},
  {"game.shiftCounter", true,
   [](Simulator& simulator, const Parameters& parameters) {
     parameters.verifyEnd(3);
     return simulator.shiftCounter(parameters.getInt(0), parameters.getString(1), wholeNumber(parameters, 2));
   }},
  {"game.bye", true,
   [](Simulator& simulator, const Parameters& parameters) {
     const int client = parameters.getInt(0);
     parameters.verifyEnd(1);
     return simulator.bye(client);
   }},
  {"system.volume", false,
   [](Simulator& simulator, const Parameters& parameters) {
     return simulator.volume(atMostOneNumber(parameters));
   }},
  {"system.denomination", false, [](Simulator& simulator, const Parameters& parameters) {
     return simulator.denomination(atMostOneNumber(parameters));
   }}};

Json entryOf(const std::string& method, bool hasClient, const Parameters& parameters) {
  Json entry{{"method", method}, {"params", Json::array()}};
  for (unsigned i = 0; i < parameters.size(); ++i) entry["params"].push_back(fromWire(parameters[i]));
  if (hasClient && !entry["params"].empty()) entry["client"] = entry["params"][0];
  return entry;
}

class ServiceMethod : public xmlrpc_c::method {
 public:
  ServiceMethod(const MethodRow& row, Simulator& simulator) : mRow(row), mSimulator(simulator) {}

  void execute(const Parameters& parameters, xmlrpc_c::value* result) override {
    Json entry = entryOf(mRow.name, mRow.hasClient, parameters);
    const auto begin = std::chrono::steady_clock::now();
    const auto took = [begin] {
      return std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now() - begin)
        .count();
    };
    try {
      *result = mSimulator.supports(mRow.name)
                  ? mRow.call(mSimulator, parameters)
                  : faultStruct(kNotSupported, std::string(mRow.name) + " is not supported.");
      entry["us"] = took();
      entry["answer"] = fromWire(*result);
    } catch (const xmlrpc_c::fault& fault) {
      entry["fault"] = {{"code", fault.getCode()}, {"text", fault.getDescription()}};
      mSimulator.log().add(mSimulator.now(), entry);
      throw;
    }
    mSimulator.log().add(mSimulator.now(), entry);
  }

 private:
  const MethodRow& mRow;
  Simulator& mSimulator;
};

class UnknownMethod : public xmlrpc_c::defaultMethod {
 public:
  explicit UnknownMethod(Simulator& simulator) : mSimulator(simulator) {}

  void execute(const std::string& name, const Parameters& parameters, xmlrpc_c::value*) override {
    Json entry = entryOf(name, false, parameters);
    entry["fault"] = {{"code", static_cast<int>(xmlrpc_c::fault::CODE_NO_SUCH_METHOD)}, {"text", "no such method"}};
    mSimulator.log().add(mSimulator.now(), entry);
    throw xmlrpc_c::fault("Method '" + name + "' not defined", xmlrpc_c::fault::CODE_NO_SUCH_METHOD);
  }

 private:
  Simulator& mSimulator;
};

}  // namespace

void addMethods(xmlrpc_c::registry& registry, Simulator& simulator) {
  registry.disableIntrospection();
  registry.setDialect(xmlrpc_dialect_i8);
  for (const MethodRow& row : ROWS)
    registry.addMethod(row.name, xmlrpc_c::methodPtr(new ServiceMethod(row, simulator)));
  registry.setDefaultMethod(xmlrpc_c::defaultMethodPtr(new UnknownMethod(simulator)));
}

std::vector<std::string> methodNames() {
  std::vector<std::string> out;
  for (const MethodRow& row : ROWS) out.push_back(row.name);
  return out;
}

std::string methodNameIn(const std::string& callXml) {
  static const std::string open = "<methodName>";
  const size_t begin = callXml.find(open);
  if (begin == std::string::npos) return "";
  const size_t end = callXml.find('<', begin + open.size());
  if (end == std::string::npos) return "";
  const std::string name = callXml.substr(begin + open.size(), end - begin - open.size());
  const size_t first = name.find_first_not_of(" \t\r\n");
  if (first == std::string::npos) return "";
  return name.substr(first, name.find_last_not_of(" \t\r\n") - first + 1);
}

}  // namespace kslsim
