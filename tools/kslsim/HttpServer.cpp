#include "tools/kslsim/HttpServer.h"

#include <sys/socket.h>

#include "tools/kslsim/GrowingPool.h"
#include "tools/kslsim/PatientServer.h"
#include "tools/kslsim/Sockets.h"

namespace kslsim {
namespace {

constexpr size_t kBodyLimit = size_t{512} * 1024;
constexpr size_t kWorkers = 512;  // every connection that is kept open holds one
constexpr int kKeepAliveSeconds = 60;
constexpr size_t kKeepAliveCalls = 1000000;
const char* const LOOPBACK = "127.0.0.1";

// The library would also let a second process share the port, and a forgotten simulator take half of the calls.
void socketOptions(int socket) {
  const int yes = 1;
  setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof(yes));
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
  auto server = std::make_unique<PatientServer>(kKeepAliveSeconds);
  server->new_task_queue = [] { return new GrowingPool(kWorkers); };
  server->set_tcp_nodelay(true);
  server->set_payload_max_length(kBodyLimit);
  server->set_keep_alive_max_count(kKeepAliveCalls);
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

}  // namespace kslsim
