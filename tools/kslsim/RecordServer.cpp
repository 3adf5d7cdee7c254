#include "tools/kslsim/RecordServer.h"

#include <httplib.h>

#include "tools/kslsim/Methods.h"
#include "tools/kslsim/Sockets.h"

namespace kslsim {
namespace {

// Longer than any client waits: a service that is silent has to look silent.
constexpr int kPatienceSeconds = 3600;
constexpr int kConnectSeconds = 10;

}  // namespace

RecordServer::RecordServer(const std::string& path, const std::string& upstream)
  : mPath(path), mUpstream(upstream), mBegin(std::chrono::steady_clock::now()) {
  const std::string scheme = "http://";
  const size_t slash = upstream.find('/', scheme.size());
  if (upstream.rfind(scheme, 0) != 0 || slash == std::string::npos || slash == scheme.size())
    throw std::invalid_argument("expected http://HOST:PORT/PATH");
  mHost = upstream.substr(0, slash);
  mUpstreamPath = upstream.substr(slash);
}

RecordServer::~RecordServer() { stop(); }

bool RecordServer::open(const std::string& file, RecordingWriter::Form form) {
  mOpen = mWriter.open(file, mUpstream, form);
  return mOpen;
}

void RecordServer::breakOff() {
  std::lock_guard lock(mClientsMutex);
  for (httplib::Client* client : mBusy) client->stop();
}

void RecordServer::addRoutes(httplib::Server& server) {
  server.Post(routeOf(mPath), [this](const httplib::Request& request, httplib::Response& response) {
    const auto milliseconds = [](std::chrono::steady_clock::duration time) {
      return std::chrono::duration_cast<std::chrono::milliseconds>(time).count();
    };
    while (!mOpen)
      if (!pause(1)) return;
    const auto begin = std::chrono::steady_clock::now();
    std::string contentType;
    Exchange exchange;
    exchange.answer = ask(request, contentType);
    exchange.at = milliseconds(begin - mBegin);
    exchange.answer.took = milliseconds(std::chrono::steady_clock::now() - begin);
    exchange.call = request.body;
    exchange.params = Json::array();
    if (!readCall(request.body, exchange.method, exchange.params)) exchange.method = methodNameIn(request.body);
    mWriter.add(exchange);
    if (!exchange.answer.error.empty()) return Connection(port(), request.remote_port).shut();
    response.status = exchange.answer.status;
    response.set_content(exchange.answer.body, contentType);
  });
}

WireAnswer RecordServer::ask(const httplib::Request& request, std::string& contentType) {
  std::unique_ptr<httplib::Client> client;
  {
    std::lock_guard lock(mClientsMutex);
    if (!mIdle.empty()) {
      client = std::move(mIdle.back());
      mIdle.pop_back();
    }
  }
  if (!client) {
    client = std::make_unique<httplib::Client>(mHost);
    client->set_keep_alive(true);
    client->set_tcp_nodelay(true);
    client->set_connection_timeout(kConnectSeconds);
    client->set_read_timeout(kPatienceSeconds);
  }
  {
    std::lock_guard lock(mClientsMutex);
    mBusy.insert(client.get());
  }
  WireAnswer out;
  const auto answer = client->Post(mUpstreamPath, request.body, request.get_header_value("Content-Type"));
  std::lock_guard lock(mClientsMutex);
  mBusy.erase(client.get());
  if (!answer) {
    out.error = httplib::to_string(answer.error());
    return out;
  }
  out.status = answer->status;
  out.body = answer->body;
  contentType = answer->get_header_value("Content-Type");
  mIdle.push_back(std::move(client));
  return out;
}

}  // namespace kslsim
