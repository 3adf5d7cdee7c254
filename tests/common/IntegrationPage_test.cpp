// The examples on the integrators' page are what the program takes.
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>
#include <vector>
#include <xmlrpc-c/xml.hpp>

#include "common/TKSLReturnStructures.h"
#include "tests/support/TestPaths.h"
#include "vesperatopscreen/InitData.h"

namespace {

// The documents of this kind, such as "methodCall", in the order of the page.
std::vector<std::string> documents(const std::string& kind) {
  std::ifstream file(std::string(testpaths::source) + "/docs/INTEGRATION.md");
  std::vector<std::string> found;
  std::string document;
  for (std::string line; std::getline(file, line);) {
    if (line.rfind("    ", 0) != 0) {
      document.clear();
      continue;
    }
    line.erase(0, 4);
    if (line.rfind("<?xml", 0) == 0) document.clear();
    document += line + "\n";
    if (line == "</" + kind + ">") found.push_back(document);
  }
  return found;
}

std::vector<xmlrpc_c::value> answers() {
  std::vector<xmlrpc_c::value> found;
  for (const std::string& text : documents("methodResponse")) {
    xmlrpc_c::rpcOutcome outcome;
    xmlrpc_c::xml::parseResponse(text, &outcome);
    found.push_back(outcome.getResult());
  }
  return found;
}

}  // namespace

TEST(IntegrationPage, CallsAreTwoOfTheThree) {
  std::vector<std::string> methods;
  for (const std::string& text : documents("methodCall")) {
    std::string method;
    xmlrpc_c::paramList parameters;
    xmlrpc_c::xml::parseCall(text, &method, &parameters);
    methods.push_back(method + " " + std::to_string(parameters.size()));
  }
  EXPECT_EQ((std::vector<std::string>{"topscreen.init 2", "game.popEvents 1"}), methods);
}

TEST(IntegrationPage, AnswersAreTakenByTheProgram) {
  const std::vector<xmlrpc_c::value> all = answers();
  ASSERT_EQ(5U, all.size());

  int code = 0;
  void* init = ParseInitResponse(all[0], code);
  EXPECT_EQ(0, code);
  EXPECT_EQ(1, static_cast<InitData*>(init)->ID);
  EXPECT_STREQ("de_DE.UTF-8", static_cast<InitData*>(init)->Locale);
  EXPECT_STREQ(",", static_cast<InitData*>(init)->DecimalSeparator);
  DestroyInitObject(init);

  EXPECT_EQ(xmlrpc_c::value::TYPE_NIL, all[1].type());

  const std::vector<xmlrpc_c::value> events = xmlrpc_c::value_array(all[2]).vectorValueValue();
  ASSERT_EQ(2U, events.size());
  const xmlrpc_c::cstruct game = xmlrpc_c::value_struct(events[0]), bet = xmlrpc_c::value_struct(events[1]);
  EXPECT_EQ(101, xmlrpc_c::value_int(game.at("eventID")).cvalue());
  EXPECT_EQ("VesperCrown", gameFromXml(game.at("context")).name);
  EXPECT_EQ(104, xmlrpc_c::value_int(bet.at("eventID")).cvalue());
  EXPECT_EQ(
    5, xmlrpc_c::value_i8(xmlrpc_c::cstruct(xmlrpc_c::value_struct(bet.at("context"))).at("current")).cvalue());

  PlatformState state;
  state.parse(all[3]);
  EXPECT_FALSE(state.IsLoading);
  EXPECT_EQ(500, state.MaxBet);
  EXPECT_EQ(5U, state.LanguageMessages.size());
  ASSERT_EQ(1U, state.JackpotData.size());
  EXPECT_EQ("GOLD", state.JackpotData[0].name);
  EXPECT_EQ(124837519, state.JackpotData[0].potValue);

  const xmlrpc_c::cstruct fault = xmlrpc_c::value_struct(all[4]);
  EXPECT_EQ(-1, xmlrpc_c::value_int(fault.at("faultCode")).cvalue());
  EXPECT_EQ("Client 77 is not registered.", std::string(xmlrpc_c::value_string(fault.at("faultString"))));
}
