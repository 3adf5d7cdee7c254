#include "tools/kslsim/HttpServer.h"

#include <httplib.h>
#include <sys/socket.h>
#include <charconv>

#include "common/GuardedTransport.h"
#include "tools/kslsim/Sockets.h"

namespace kslsim {
namespace {

constexpr size_t BODY_LIMIT = 512 * 1024;
constexpr int WORKERS = 64;  // every connection that is kept open holds one
constexpr int KEEP_ALIVE_SECONDS = 60;
constexpr size_t KEEP_ALIVE_CALLS = 1000000;
const char* const LOOPBACK = "127.0.0.1";

// The library would also let a second process share the port, and a forgotten simulator take half of the calls.
void socketOptions(int socket) {
  const int yes = 1;
  setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof(yes));
}

}  // namespace

HttpServer::HttpServer() = default;
HttpServer::~HttpServer() = default;

bool HttpServer::start(int port) {
  auto server = std::make_unique<httplib::Server>();
  server->new_task_queue = [] { return new httplib::ThreadPool(WORKERS); };
  server->set_tcp_nodelay(true);
  server->set_payload_max_length(BODY_LIMIT);
  server->set_keep_alive_timeout(KEEP_ALIVE_SECONDS);
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
      std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
  });
  mThread.join();
  ended = true;
  shutter.join();
  mServer.reset();
}

void HttpServer::pause(int milliseconds) {
  std::unique_lock lock(mStopMutex);
  mStopCondition.wait_for(lock, std::chrono::milliseconds(milliseconds), [this] { return mStopping; });
}

RpcServer::RpcServer(Simulator& simulator, const std::string& path) : mSimulator(simulator), mPath(path) {
  addMethods(mRegistry, mSimulator);
}

void RpcServer::addRoutes(httplib::Server& server) {
  server.set_pre_routing_handler([this](const httplib::Request& request, httplib::Response&) {
    if (mSimulator.wantsToListen()) return httplib::Server::HandlerResponse::Unhandled;
    shutConnection(port(), request.remote_port);
    return httplib::Server::HandlerResponse::Handled;
  });
  server.Post(mPath,
              [this](const httplib::Request& request, httplib::Response& response) { answer(request, response); });
}

void RpcServer::answer(const httplib::Request& request, httplib::Response& response) {
  const std::string method = methodNameIn(request.body);
  if (const auto bad = mSimulator.takeBadReply(method))
    if (answerBadly(*bad, request, response)) return;
  if (std::string text; findUnreadableI8(request.body, text)) {
    mSimulator.log().add(mSimulator.now(),
                         {{"method", method}, {"refused", "unreadable <i8>: " + text.substr(0, 64)}});
    response.status = 400;
    return;
  }
  std::string out;
  mRegistry.processCall(request.body, &out);
  response.set_content(out, "text/xml; charset=utf-8");
}

bool RpcServer::answerBadly(const BadReply& bad, const httplib::Request& request, httplib::Response& response) {
  mSimulator.log().add(mSimulator.now(), {{"method", methodNameIn(request.body)}, {"bad", bad.name}});
  const std::string body = badBody(bad);
  switch (bad.bad) {
    case Bad::Slow:
      pause(bad.ms);
      return false;
    case Bad::Refuse:
      shutConnection(port(), request.remote_port);
      return true;
    case Bad::Http500:
      response.status = 500;
      return true;
    case Bad::Html:
      response.set_content(body, "text/html");
      return true;
    case Bad::Cut:
      response.set_content_provider(body.size(), "text/xml", [body](size_t, size_t, httplib::DataSink& sink) {
        sink.write(body.data(), body.size() / 2);
        return false;
      });
      return true;
    default:
      response.set_content(body, "text/xml; charset=utf-8");
      return true;
  }
}

void ControlServer::addRoutes(httplib::Server& server) {
  const auto give = [](httplib::Response& response, const Json& json) {
    response.set_content(json.dump(-1, ' ', false, Json::error_handler_t::replace), "application/json");
  };
  server.Get("/api/state", [this, give](const auto&, auto& response) { give(response, mSimulator.report()); });
  server.Get("/api/log", [this, give](const auto& request, auto& response) {
    const std::string text = request.get_param_value("since");
    uint64_t since = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), since);
    if (!text.empty() && (result.ec != std::errc() || result.ptr != text.data() + text.size())) {
      response.status = 400;
      return give(response, {{"error", "\"since\" is the \"n\" of an entry"}});
    }
    give(response, mSimulator.log().since(since));
  });
  server.Post("/api/do", [this, give](const auto& request, auto& response) {
    try {
      const PlacedJson json = PlacedJson::parse(request.body);
      try {
        mSimulator.apply(json.value);
        give(response, {{"ok", true}});
      } catch (const InputError& error) {
        throw ScenarioError(json.placeOf(error.path()), error.what());
      }
    } catch (const ScenarioError& error) {
      response.status = 400;
      give(response, {{"error", error.what()}});
    }
  });
}

}  // namespace kslsim
