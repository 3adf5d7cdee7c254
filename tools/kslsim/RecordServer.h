#pragma once

#include <set>
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

  // False when the file cannot be written. Calls wait until it is open, so that whoever does not get the port first
  // leaves the file of another alone.
  bool open(const std::string& file, RecordingWriter::Form form);

 private:
  using Clients = std::vector<std::unique_ptr<httplib::Client>>;

  void addRoutes(httplib::Server& server) override;
  void breakOff() override;
  WireAnswer ask(const httplib::Request& request, std::string& contentType);

  const std::string mPath, mUpstream;
  std::string mHost, mUpstreamPath;
  const std::chrono::steady_clock::time_point mBegin;
  RecordingWriter mWriter;
  std::atomic<bool> mOpen{false};  // the file
  std::mutex mClientsMutex;        // guards the rest
  Clients mIdle;                   // connections to the service that wait for a call
  std::set<httplib::Client*> mBusy;
};

}  // namespace kslsim
