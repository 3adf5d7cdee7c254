#include "tools/kslsim/PatientServer.h"

#include <arpa/inet.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>
#include <algorithm>
#include <array>
#include <cstring>

namespace kslsim {
namespace {

constexpr int kPatienceMilliseconds = 5000;  // in the middle of a request or an answer

bool ready(socket_t socket, short event, int milliseconds) {
  pollfd watched{socket, event, 0};
  int result = 0;
  do result = poll(&watched, 1, milliseconds);
  while (result < 0 && errno == EINTR);
  return result > 0;
}

// One connection with a buffer: the library reads byte by byte.
class BufferedStream : public httplib::Stream {
 public:
  explicit BufferedStream(socket_t socket) : mSocket(socket) {}

  bool hasUnread() const { return mNext < mEnd; }

  bool is_readable() const override { return hasUnread() || ready(mSocket, POLLIN, kPatienceMilliseconds); }
  bool is_writable() const override { return ready(mSocket, POLLOUT, kPatienceMilliseconds); }

  ssize_t read(char* to, size_t size) override {
    if (!hasUnread()) {
      if (!is_readable()) return -1;
      const ssize_t count = recv(mSocket, mBuffer.data(), mBuffer.size(), 0);
      if (count <= 0) return count;
      mNext = 0;
      mEnd = static_cast<size_t>(count);
    }
    const size_t count = std::min(size, mEnd - mNext);
    std::memcpy(to, mBuffer.data() + mNext, count);
    mNext += count;
    return static_cast<ssize_t>(count);
  }

  ssize_t write(const char* from, size_t size) override {
    if (!is_writable()) return -1;
    return send(mSocket, from, size, MSG_NOSIGNAL);
  }

  void get_remote_ip_and_port(std::string& ip, int& port) const override { name(getpeername, ip, port); }
  void get_local_ip_and_port(std::string& ip, int& port) const override { name(getsockname, ip, port); }
  socket_t socket() const override { return mSocket; }

 private:
  template <typename Call>
  void name(Call call, std::string& ip, int& port) const {
    sockaddr_in address{};
    socklen_t length = sizeof(address);
    if (call(mSocket, reinterpret_cast<sockaddr*>(&address), &length) != 0 || address.sin_family != AF_INET) return;
    char text[INET_ADDRSTRLEN];
    if (inet_ntop(AF_INET, &address.sin_addr, text, sizeof(text))) ip = text;
    port = ntohs(address.sin_port);
  }

  const socket_t mSocket;
  std::array<char, 4096> mBuffer;
  size_t mNext = 0, mEnd = 0;
};

// The library would take a body of this type apart and refuse more than 8 KiB of it. Nobody here reads forms, but
// curl calls every body one.
void leaveFormsAlone(httplib::Request& request) {
  const auto type = request.headers.find("Content-Type");
  if (type != request.headers.end() && type->second.starts_with("application/x-www-form-urlencoded"))
    request.headers.erase(type);
}

}  // namespace

bool PatientServer::process_and_close_socket(socket_t socket) {
  BufferedStream connection(socket);
  bool good = true;
  for (size_t left = keep_alive_max_count_; good && left > 0 && svr_sock_ != INVALID_SOCKET; --left) {
    if (!connection.hasUnread() && !ready(socket, POLLIN, mIdleMilliseconds)) break;
    bool closed = false;
    good = process_request(connection, left == 1, closed, leaveFormsAlone);
    if (closed) break;
  }
  shutdown(socket, SHUT_RDWR);
  close(socket);
  return good;
}

}  // namespace kslsim
