#include "tests/system/ConnectionCounter.h"

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>
#include <cerrno>
#include <random>

namespace systest {

ConnectionCounter::ConnectionCounter() : mSocket(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  // Below the range from which the kernel serves those who ask for any port, so that a port which was let go can be
  // taken again: several of these tests run at a time.
  std::uniform_int_distribution<uint16_t> ports(20000, 31999);
  std::random_device chance;
  do {
    mPort = ports(chance);
    address.sin_port = htons(static_cast<uint16_t>(mPort));
  } while (bind(mSocket, reinterpret_cast<sockaddr*>(&address), sizeof(address)) != 0 && errno == EADDRINUSE);
  if (listen(mSocket, 16) != 0) return;
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

int freePort() { return ConnectionCounter().port(); }

std::vector<std::chrono::steady_clock::time_point> ConnectionCounter::times() const {
  std::lock_guard lock(mMutex);
  return mTimes;
}

}  // namespace systest
