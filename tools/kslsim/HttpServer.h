#pragma once

#include <condition_variable>
#include <memory>
#include <thread>

#include "tools/kslsim/Methods.h"
#include "tools/kslsim/Recording.h"
#include "tools/kslsim/Screen.h"
#include "tools/kslsim/Sockets.h"

namespace httplib {
class Server;
struct Request;
struct Response;
}  // namespace httplib

namespace kslsim {

// The pattern of a route that is this path and no other.
std::string routeOf(const std::string& path);

// A listening HTTP server on the loopback interface with threads of its own. start() and stop() are called by one
// thread and may follow each other any number of times; each start makes a new server. What the routes do runs on
// the server's threads.
class HttpServer {
 public:
  HttpServer();
  virtual ~HttpServer();  // a derived class has stopped by then: its routes are gone
  HttpServer(const HttpServer&) = delete;
  HttpServer& operator=(const HttpServer&) = delete;

  // Listens on the port, or on any free one for 0. False when the port is taken.
  bool start(int port);

  // Shuts the port and every connection, waits for the threads. Without effect when not listening.
  void stop();

  bool listening() const { return mServer != nullptr; }

  // The port of the latest successful start; 0 before.
  int port() const { return mPort; }

 protected:
  virtual void addRoutes(httplib::Server& server) = 0;

  // Ends what the routes wait for, other than in pause(). Called again and again while the server is being stopped,
  // until no route runs any more.
  virtual void breakOff() {}

  // Waits so long on the calling thread. False at once when the server is being stopped.
  bool pause(int milliseconds);

 private:
  std::unique_ptr<httplib::Server> mServer;
  std::thread mThread;
  std::atomic<int> mPort{0};
  std::mutex mStopMutex;  // guards mStopping
  std::condition_variable mStopCondition;
  bool mStopping = false;
};

// The service's own port: XML-RPC calls by POST on one path, answered by the simulator's methods or badly.
class RpcServer : public HttpServer {
 public:
  // The simulator and the recording outlive the server. With a recording that answers, and not the methods.
  RpcServer(Simulator& simulator, const std::string& path, Replay* replay);
  ~RpcServer() override { stop(); }

 private:
  void addRoutes(httplib::Server& server) override;
  void answer(const httplib::Request& request, httplib::Response& response);
  std::string answerOf(const httplib::Request& request);
  void noteBadly(const BadReply& bad, const std::string& method);
  void answerBadly(const BadReply& bad, const httplib::Request& request, httplib::Response& response);
  void answerAltered(const BadReply& bad, const std::string& method, const httplib::Request& request,
                     httplib::Response& response);
  void keepSilent(int milliseconds, const Connection& connection);
  // Waits for so long, as long as the client does and the server is not being stopped.
  void linger(int64_t milliseconds, const Connection& connection);
  void drip(int milliseconds, const std::string& bytes, const Connection& connection);

  // The recording's answer, after the time that it took.
  WireAnswer replayed(const httplib::Request& request);

  Simulator& mSimulator;
  const std::string mPath;
  Replay* const mReplay;  // null without one
  xmlrpc_c::registry mRegistry;
};

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
