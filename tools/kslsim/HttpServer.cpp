#include "tools/kslsim/HttpServer.h"

#include <sys/socket.h>

#include "common/GuardedTransport.h"
#include "tools/kslsim/GrowingPool.h"
#include "tools/kslsim/PatientServer.h"

namespace kslsim {
namespace {

constexpr size_t BODY_LIMIT = size_t{512} * 1024;
constexpr size_t WORKERS = 512;  // every connection that is kept open holds one
constexpr int KEEP_ALIVE_SECONDS = 60;
constexpr size_t KEEP_ALIVE_CALLS = 1000000;
const char* const LOOPBACK = "127.0.0.1";
const char* const XML_TYPE = "text/xml; charset=utf-8";
constexpr int LOOK_MILLISECONDS = 50;  // how soon a call that is held notices that it need not be any more

// The library would also let a second process share the port, and a forgotten simulator take half of the calls.
void socketOptions(int socket) {
  const int yes = 1;
  setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof(yes));
}

// An answer as it stands on the wire.
std::string httpAnswer(const std::string& body) {
  return "HTTP/1.1 200 OK\r\nContent-Type: " + std::string(XML_TYPE) +
         "\r\nContent-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body;
}

}  // namespace

std::string routeOf(const std::string& path) {
  std::string out;
  for (char c : path) {
    if (std::string_view("\\^$.|?*+()[]{}").find(c) != std::string_view::npos) out += '\\';
    out += c;
  }
  return out;
}

HttpServer::HttpServer() = default;
HttpServer::~HttpServer() = default;

bool HttpServer::start(int port) {
  auto server = std::make_unique<PatientServer>(KEEP_ALIVE_SECONDS);
  server->new_task_queue = [] { return new GrowingPool(WORKERS); };
  server->set_tcp_nodelay(true);
  server->set_payload_max_length(BODY_LIMIT);
  server->set_keep_alive_max_count(KEEP_ALIVE_CALLS);
  server->set_socket_options(socketOptions);
  addRoutes(*server);
  if (port == 0) {
    port = server->bind_to_any_port(LOOPBACK);
    if (port <= 0) return false;
  } else if (!server->bind_to_port(LOOPBACK, port)) {
    return false;
  }
  {
    std::lock_guard lock(mStopMutex);
    mStopping = false;
  }
  mPort = port;
  mServer = std::move(server);
  mThread = std::thread([raw = mServer.get()] { raw->listen_after_bind(); });
  // A stop before the loop has begun would be lost on the library.
  while (!mServer->is_running()) std::this_thread::sleep_for(std::chrono::milliseconds(1));
  return true;
}

void HttpServer::stop() {
  if (!mServer) return;
  {
    std::lock_guard lock(mStopMutex);
    mStopping = true;
  }
  mStopCondition.notify_all();
  mServer->stop();
  // The library ends once every connection has; a kept one is told, and one that was accepted meanwhile as well.
  std::atomic<bool> ended = false;
  std::thread shutter([&] {
    while (!ended) {
      shutConnections(mPort);
      breakOff();
      std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
  });
  mThread.join();
  ended = true;
  shutter.join();
  mServer.reset();
}

bool HttpServer::pause(int milliseconds) {
  std::unique_lock lock(mStopMutex);
  return !mStopCondition.wait_for(lock, std::chrono::milliseconds(milliseconds), [this] { return mStopping; });
}

RpcServer::RpcServer(Simulator& simulator, const std::string& path, Replay* replay)
  : mSimulator(simulator), mPath(path), mReplay(replay) {
  addMethods(mRegistry, mSimulator);
}

void RpcServer::addRoutes(httplib::Server& server) {
  server.set_pre_routing_handler([this](const httplib::Request& request, httplib::Response&) {
    if (mSimulator.wantsToListen()) return httplib::Server::HandlerResponse::Unhandled;
    Connection(port(), request.remote_port).shut();
    return httplib::Server::HandlerResponse::Handled;
  });
  server.Post(routeOf(mPath),
              [this](const httplib::Request& request, httplib::Response& response) { answer(request, response); });
}

void RpcServer::answer(const httplib::Request& request, httplib::Response& response) {
  const std::string method = methodNameIn(request.body);
  const auto bad = mSimulator.takeBadReply(method);
  if (bad && !alters(*bad)) return answerBadly(*bad, request, response);
  if (std::string text; findUnreadableI8(request.body, text)) {
    mSimulator.log().add(mSimulator.now(),
                         {{"method", method}, {"refused", "unreadable <i8>: " + text.substr(0, 64)}});
    response.status = 400;
    return;
  }
  if (bad) return answerAltered(*bad, method, request, response);
  if (!mReplay) return response.set_content(answerOf(request), XML_TYPE);
  const WireAnswer answer = replayed(request);
  if (!answer.error.empty()) return Connection(port(), request.remote_port).shut();
  response.status = answer.status;
  response.set_content(answer.body, XML_TYPE);
}

WireAnswer RpcServer::replayed(const httplib::Request& request) {
  std::string method;
  Json params;
  readCall(request.body, method, params);
  const WireAnswer answer = mReplay->answer(method, params, mSimulator.now());
  Json entry{{"method", method}, {"params", params}, {"replayed", true}};
  if (!answer.error.empty()) entry["refused"] = answer.error;
  if (const auto value = valueOf(answer)) entry["answer"] = *value;
  mSimulator.log().add(mSimulator.now(), std::move(entry));
  if (answer.took > 0) linger(answer.took, Connection(port(), request.remote_port));
  return answer;
}

std::string RpcServer::answerOf(const httplib::Request& request) {
  if (mReplay) return replayed(request).body;
  std::string out;
  mRegistry.processCall(request.body, &out);
  return out;
}

void RpcServer::answerAltered(const BadReply& bad, const std::string& method, const httplib::Request& request,
                              httplib::Response& response) {
  if (bad.bad == Bad::Slow || bad.bad == Bad::Drip) noteBadly(bad, method);
  if (bad.bad == Bad::Slow) linger(bad.ms, Connection(port(), request.remote_port));
  std::string out = answerOf(request);
  if (bad.bad == Bad::Drip) return drip(bad.ms, httpAnswer(out), Connection(port(), request.remote_port));
  if (bad.bad != Bad::Slow) {
    if (auto changed = spoilt(out, bad)) {
      noteBadly(bad, method);
      out = std::move(*changed);
    } else {
      mSimulator.giveBackBadReply(method, bad);
    }
  }
  response.set_content(out, XML_TYPE);
}

void RpcServer::noteBadly(const BadReply& bad, const std::string& method) {
  Json entry{{"method", method}, {"bad", bad.name}};
  if (!bad.field.empty()) entry["field"] = bad.field;
  mSimulator.log().add(mSimulator.now(), std::move(entry));
}

void RpcServer::answerBadly(const BadReply& bad, const httplib::Request& request, httplib::Response& response) {
  noteBadly(bad, methodNameIn(request.body));
  const Connection connection(port(), request.remote_port);
  const std::string body = badBody(bad);
  switch (bad.bad) {
    case Bad::Refuse:
      return connection.shut();
    case Bad::Silent:
      return keepSilent(bad.ms, connection);
    case Bad::Http500:
      response.status = 500;
      return;
    case Bad::Html:
      return response.set_content(body, "text/html");
    case Bad::Cut: {
      const std::string whole = httpAnswer(body);
      const size_t half = whole.size() - body.size() / 2;
      connection.send(whole.substr(0, bad.bytes < 0 ? half : static_cast<size_t>(bad.bytes)));
      return connection.shut();
    }
    case Bad::Raw:
      connection.send(bad.text);
      return connection.shut();
    case Bad::Body:
      response.status = bad.status;
      return response.set_content(body, XML_TYPE);
    default:
      return response.set_content(body, XML_TYPE);
  }
}

void RpcServer::linger(int64_t milliseconds, const Connection& connection) {
  const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds);
  while (!connection.peerGone()) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - std::chrono::steady_clock::now()).count();
    if (left <= 0 || !pause(static_cast<int>(std::min<int64_t>(left, LOOK_MILLISECONDS)))) return;
  }
}

void RpcServer::keepSilent(int milliseconds, const Connection& connection) {
  const uint64_t orders = mSimulator.goodOrders();
  const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds);
  while (pause(LOOK_MILLISECONDS) && !connection.peerGone() && mSimulator.goodOrders() == orders &&
         (milliseconds == 0 || std::chrono::steady_clock::now() < end)) {
  }
  connection.shut();
}

void RpcServer::drip(int milliseconds, const std::string& bytes, const Connection& connection) {
  const uint64_t orders = mSimulator.goodOrders();
  for (char byte : bytes) {
    if (mSimulator.goodOrders() != orders || !connection.send(std::string(1, byte))) break;
    for (int waited = 0; waited < milliseconds && mSimulator.goodOrders() == orders; waited += LOOK_MILLISECONDS)
      if (!pause(std::min(LOOK_MILLISECONDS, milliseconds - waited))) return connection.shut();
  }
  connection.shut();
}

}  // namespace kslsim
