#include <arpa/inet.h>
#include <netdb.h>
#include <netinet/in.h>
#include <netinet/ip_icmp.h>
#include <sys/select.h>
#include <sys/time.h>
#include <unistd.h>

#include <cmath>
#include <cstring>
#include <memory>
#include <new>

#include "vendelo-sdl2/MyUtils.h"
#include "vendelo-sdl2/NetworkSeams.h"
#include "vendelo-sdl2/Saturate.h"

namespace MyUtils {

namespace {

constexpr size_t DataLength = 56;
constexpr size_t kIcmpHeader = 8;
constexpr size_t kIpHeader = 20;  // taken as fixed
constexpr size_t kPacketLength = DataLength + 136;
constexpr uint16_t kSequence = 12345;
constexpr int kIcmpProtocol = 1;

class TSocket {
 public:
  explicit TSocket(int fd) : mFd(fd) {}
  ~TSocket() {
    if (mFd >= 0) ::close(mFd);
  }
  TSocket(const TSocket&) = delete;
  TSocket& operator=(const TSocket&) = delete;
  int fd() const { return mFd; }

 private:
  int mFd;
};

uint16_t ownIdentifier() { return static_cast<uint16_t>(getpid()); }

bool resolve(const std::string& target, sockaddr_in& to) {
  to = {};
  to.sin_family = AF_INET;
  to.sin_addr.s_addr = inet_addr(target.c_str());
  if (to.sin_addr.s_addr != INADDR_NONE) return true;
  hostent host{};
  hostent* found = nullptr;
  char buffer[4096];
  int error = 0;
  if (gethostbyname_r(target.c_str(), &host, buffer, sizeof buffer, &found, &error) != 0 || !found) return false;
  if (found->h_addrtype != AF_INET || !found->h_addr_list[0]) return false;
  std::memcpy(&to.sin_addr, found->h_addr_list[0], sizeof to.sin_addr);
  return true;
}

bool sendEcho(int fd, const sockaddr_in& to) {
  union {
    icmphdr header;
    uint16_t words[(kIcmpHeader + DataLength) / 2];
    uint8_t bytes[kIcmpHeader + DataLength];
  } packet{};
  std::memset(packet.bytes, 0, sizeof packet.bytes);
  packet.header.type = ICMP_ECHO;
  packet.header.un.echo.sequence = htons(kSequence);
  packet.header.un.echo.id = htons(ownIdentifier());
  packet.header.checksum = in_cksum(packet.words, sizeof packet.bytes);
  const ssize_t sent = NetworkSeams.SendTo(fd, packet.bytes, sizeof packet.bytes, 0,
                                           reinterpret_cast<const sockaddr*>(&to), sizeof to);
  return sent == static_cast<ssize_t>(sizeof packet.bytes);
}

bool isOwnReply(const uint8_t* packet) {
  icmphdr header;
  std::memcpy(&header, packet + kIpHeader, sizeof header);
  return header.type == ICMP_ECHOREPLY && header.un.echo.sequence == htons(kSequence) &&
         header.un.echo.id == htons(ownIdentifier());
}

int elapsedMilliseconds(const timeval& start, const timeval& end) {
  const long long microseconds = (end.tv_sec - start.tv_sec) * 1000000LL + (end.tv_usec - start.tv_usec);
  return saturated<int>(roundf(static_cast<float>(microseconds) / 1000.0f));
}

}  // namespace

uint16_t in_cksum(uint16_t* addr, unsigned int len) {
  const auto* bytes = reinterpret_cast<const uint8_t*>(addr);
  uint32_t sum = 0;
  for (; len > 1; len -= 2, bytes += 2) {
    uint16_t word;
    std::memcpy(&word, bytes, sizeof word);
    sum += word;
  }
  if (len == 1) sum += *bytes;
  sum = (sum >> 16) + (sum & 0xffff);
  sum += sum >> 16;
  return static_cast<uint16_t>(~sum);
}

PingResult Ping(const std::string& target, int& durationOut) {
  sockaddr_in to;
  if (!resolve(target, to)) return PING_BAD_HOST;
  const std::unique_ptr<uint8_t[]> packet(new (std::nothrow) uint8_t[kPacketLength]);
  if (!packet) return PING_ERROR;
  const TSocket socket(NetworkSeams.Socket(AF_INET, SOCK_RAW, kIcmpProtocol));
  if (socket.fd() < 0 || socket.fd() >= FD_SETSIZE) return PING_ERROR;

  timeval start{};
  gettimeofday(&start, nullptr);
  if (!sendEcho(socket.fd(), to)) return PING_PACKET_LOSS;

  timeval timeout{1, 0};  // for the whole loop: select counts it down
  for (;;) {
    fd_set readable;
    FD_ZERO(&readable);
    FD_SET(socket.fd(), &readable);
    const int ready = select(socket.fd() + 1, &readable, nullptr, nullptr, &timeout);
    if (ready < 0) return PING_ERROR;
    if (ready == 0) return PING_TIMEOUT;
    const ssize_t received = recvfrom(socket.fd(), packet.get(), kPacketLength, 0, nullptr, nullptr);
    if (received < 0) return PING_BAD_HOST;
    if (received < static_cast<ssize_t>(kIpHeader + kIcmpHeader)) return PING_ERROR;
    if (!isOwnReply(packet.get())) continue;
    timeval end{};
    gettimeofday(&end, nullptr);
    durationOut = elapsedMilliseconds(start, end);
    return PING_OK;
  }
}

}  // namespace MyUtils
