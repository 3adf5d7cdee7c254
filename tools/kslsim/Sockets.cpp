#include "tools/kslsim/Sockets.h"

#include <netinet/in.h>
#include <sys/socket.h>
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

void shutConnection(int serverPort, int peerPort) {
  for (int fd : connectionsOf(serverPort))
    if (portBy(getpeername, fd) == peerPort) shutdown(fd, SHUT_RDWR);
}

void shutConnections(int serverPort) {
  for (int fd : connectionsOf(serverPort)) shutdown(fd, SHUT_RDWR);
}

}  // namespace kslsim
