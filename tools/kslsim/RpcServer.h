#pragma once

#include "tools/kslsim/HttpServer.h"
#include "tools/kslsim/Methods.h"
#include "tools/kslsim/Recording.h"
#include "tools/kslsim/Sockets.h"

namespace kslsim {

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

}  // namespace kslsim
