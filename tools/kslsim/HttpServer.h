#pragma once

#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

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

}  // namespace kslsim
