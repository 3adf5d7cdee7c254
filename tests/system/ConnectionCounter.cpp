#include "tests/system/ConnectionCounter.h"

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace systest {

ConnectionCounter::ConnectionCounter() : mSocket(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t length = sizeof(address);
  if (bind(mSocket, reinterpret_cast<sockaddr*>(&address), length) != 0 || listen(mSocket, 16) != 0) return;
  getsockname(mSocket, reinterpret_cast<sockaddr*>(&address), &length);
  mPort = ntohs(address.sin_port);
  mThread = std::thread([this] {
    for (int peer; (peer = accept(mSocket, nullptr, nullptr)) >= 0; close(peer)) {
      std::lock_guard lock(mMutex);
      mTimes.push_back(std::chrono::steady_clock::now());
    }
  });
}

ConnectionCounter::~ConnectionCounter() {
  shutdown(mSocket, SHUT_RDWR);
  if (mThread.joinable()) mThread.join();
  close(mSocket);
}

std::vector<std::chrono::steady_clock::time_point> ConnectionCounter::times() const {
  std::lock_guard lock(mMutex);
  return mTimes;
}

}  // namespace systest
