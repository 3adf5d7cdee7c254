#pragma once

#include <vector>

#include "tools/kslsim/HttpServer.h"
#include "tools/kslsim/Recording.h"

namespace httplib {
class Client;
}

namespace kslsim {

// Stands between a program and a real service: hands every call on as it came, hands back what came back, byte by
// byte, and writes both down. A service that cannot be reached, or breaks off, shows to the program as a connection
// that is shut. Nothing else passes: only calls by POST on the one path.
class RecordServer : public HttpServer {
 public:
  // `upstream` is "http://HOST:PORT/PATH". Throws std::invalid_argument when it is not.
  RecordServer(const std::string& path, const std::string& upstream);
  ~RecordServer() override;

  // False when the file cannot be written. Before start().
  bool open(const std::string& file, RecordingWriter::Form form);

 private:
  using Clients = std::vector<std::unique_ptr<httplib::Client>>;

  void addRoutes(httplib::Server& server) override;
  WireAnswer ask(const httplib::Request& request, std::string& contentType);

  const std::string mPath, mUpstream;
  std::string mHost, mUpstreamPath;
  const std::chrono::steady_clock::time_point mBegin;
  RecordingWriter mWriter;
  std::mutex mClientsMutex;  // guards mIdle
  Clients mIdle;             // connections to the service that wait for a call
};

}  // namespace kslsim
