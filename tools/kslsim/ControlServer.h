#pragma once

#include "tools/kslsim/HttpServer.h"
#include "tools/kslsim/Screen.h"
#include "tools/kslsim/Simulator.h"

namespace kslsim {

// The port by which people and tests steer the simulator: the console, and what it is made of. Only pages that this
// port itself has served are let in, by the names of the loopback interface.
class ControlServer : public HttpServer {
 public:
  // The simulator and the screen outlive the server.
  ControlServer(Simulator& simulator, Screen& screen) : mSimulator(simulator), mScreen(screen) {}
  ~ControlServer() override { stop(); }

 private:
  void addRoutes(httplib::Server& server) override;
  void addConsole(httplib::Server& server);
  void addSteering(httplib::Server& server);

  Simulator& mSimulator;
  Screen& mScreen;
};

}  // namespace kslsim
