#include "tools/kslsim/Sockets.h"

#include <netinet/in.h>
#include <sys/socket.h>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <vector>

namespace kslsim {
namespace {

template <typename Call>
int portBy(Call call, int fd) {
  sockaddr_in address{};
  socklen_t length = sizeof(address);
  if (call(fd, reinterpret_cast<sockaddr*>(&address), &length) != 0 || address.sin_family != AF_INET) return -1;
  return ntohs(address.sin_port);
}

std::vector<int> connectionsOf(int serverPort) {
  std::vector<int> out;
  std::error_code error;
  for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd", error)) {
    const int fd = std::atoi(entry.path().filename().c_str());
    if (portBy(getsockname, fd) == serverPort && portBy(getpeername, fd) >= 0) out.push_back(fd);
  }
  return out;
}

}  // namespace

Connection::Connection(int serverPort, int peerPort) {
  for (int fd : connectionsOf(serverPort))
    if (portBy(getpeername, fd) == peerPort) mSocket = fd;
}

void Connection::shut() const {
  if (mSocket >= 0) shutdown(mSocket, SHUT_RDWR);
}

bool Connection::send(const std::string& bytes) const {
  for (size_t sent = 0; sent < bytes.size();) {
    const ssize_t count = ::send(mSocket, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL);
    if (count <= 0) return false;
    sent += static_cast<size_t>(count);
  }
  return true;
}

bool Connection::peerGone() const {
  char byte = 0;
  const ssize_t count = recv(mSocket, &byte, 1, MSG_PEEK | MSG_DONTWAIT);
  return count == 0 || (count < 0 && errno != EAGAIN && errno != EWOULDBLOCK && errno != EINTR);
}

void shutConnections(int serverPort) {
  for (int fd : connectionsOf(serverPort)) shutdown(fd, SHUT_RDWR);
}

}  // namespace kslsim
