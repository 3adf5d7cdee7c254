#pragma once

#include <gtest/gtest.h>
#include <map>
#include <stdexcept>
#include <string>
#include <vector>

#include "common/Event.h"
#include "vendelo-sdl2/MyUtils.h"
#include "vesperatopscreen/TopScreenApp.h"
#include "vesperatopscreen/TopScreenScreen.h"

// What the tests of the application share.
namespace apptest {

using namespace vendelo_sdl2;

// The application without a window and without a service. What it logs is kept; what it defers to the draw thread
// stays queued, since the application is never running here.
class TestApp : public TopScreenApp {
 public:
  using TopScreenApp::getState;
  using TopScreenApp::hasNoData;
  using TopScreenApp::lastInitError;
  using TopScreenApp::pKSL;
  using TopScreenApp::screen;
  using TopScreenApp::serverUrl;
  using TopScreenApp::updatedGame;
  using TopScreenApp::updatedJp;

  int _WriteLog(char, TLogType type, unsigned long gameId, const std::string& text) override {
    EXPECT_EQ(0UL, gameId) << "the program's own lines belong to no game: " << text;
    if (throwsInLog) throw std::runtime_error(text);
    lines.push_back({type, text});
    return 0;
  }
  size_t deferred() const { return mDeferToDrawQueue.size(); }

  struct Line {
    TLogType type;
    std::string text;
  };
  std::vector<Line> lines;
  bool throwsInLog = false;
};

// Answers every call with the reply that stands for its method; a missing one is a refused connection.
class ScriptedTransport : public xmlrpc_c::clientXmlTransport {
 public:
  void call(xmlrpc_c::carriageParm*, std::string const& request, std::string* reply) override {
    for (const auto& [method, xml] : replies)
      if (request.find("<methodName>" + method + "</methodName>") != std::string::npos) {
        *reply = "<?xml version=\"1.0\"?><methodResponse><params><param><value>" + xml +
                 "</value></param></params></methodResponse>";
        return;
      }
    throw girerr::error("Failed to connect");
  }
  std::map<std::string, std::string> replies;
};

class TopScreenAppTest : public testing::Test {
 protected:
  TopScreenAppTest() {
    app.screen = &screen;
    MyUtils::decimal_separator = ',';
    MyUtils::thousand_separator = '.';
  }
  ~TopScreenAppTest() override { app.screen = nullptr; }

  void send(int id, const xmlrpc_c::value& value) { app.handlePlatformEvent(Event(id, value)); }
  PlatformState state() { return app.getState().getCopy(); }
  int statusError(const char* text) {
    KSLError error(E_INTERNAL_ERROR, text);
    return app.StatusReceived(&error, true);
  }
  int initError(const char* text) {
    KSLError error(E_INIT_REJECTED, text);
    return app.handleInitResponse(E_INIT_REJECTED, &error);
  }
  static xmlrpc_c::value game(int id, const char* name, GameTypes type) {
    return xmlrpc_c::value_struct({{"ID", xmlrpc_c::value_int(id)},
                                   {"Name", xmlrpc_c::value_string(name)},
                                   {"Type", xmlrpc_c::value_int(type)}});
  }
  static xmlrpc_c::value texts(std::initializer_list<const char*> list) {
    xmlrpc_c::carray items;
    for (const char* text : list) items.push_back(xmlrpc_c::value_string(text));
    return xmlrpc_c::value_array(items);
  }

  TestApp app;
  TopScreenScreen screen;
};

}  // namespace apptest
