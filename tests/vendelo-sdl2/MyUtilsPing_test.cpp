#include <arpa/inet.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <netinet/ip_icmp.h>
#include <sys/time.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <climits>
#include <cstring>
#include <ctime>
#include <thread>

#include "tests/support/WithoutRight.h"
#include "vendelo-sdl2/MyUtils.h"
#include "vendelo-sdl2/NetworkSeams.h"

namespace {

// What the clock says while there are any, the next one first.
std::vector<timeval> readings;

}  // namespace

// Linked in front of the C library's.
extern "C" int gettimeofday(timeval* time, void*) noexcept {
  if (!readings.empty()) {
    *time = readings.front();
    readings.erase(readings.begin());
    return 0;
  }
  timespec now{};
  clock_gettime(CLOCK_REALTIME, &now);
  *time = {now.tv_sec, now.tv_nsec / 1000};
  return 0;
}

namespace {

using Bytes = std::vector<uint8_t>;

TEST(Checksum, FollowsRfc1071) {
  const struct {
    Bytes bytes;
    uint16_t expected;  // as the bytes of the word lie in memory
  } rows[] = {{{}, 0xffff},
              // The RFC's figures: the sum ddf2 of the example, the f2dd of its words with their bytes swapped, and
              // the f201 and f0eb of its first three and last five bytes, all complemented.
              {{0x00, 0x01, 0xf2, 0x03, 0xf4, 0xf5, 0xf6, 0xf7}, htons(static_cast<uint16_t>(~0xddf2))},
              {{0x01, 0x00, 0x03, 0xf2, 0xf5, 0xf4, 0xf7, 0xf6}, htons(static_cast<uint16_t>(~0xf2dd))},
              {{0x00, 0x01, 0xf2}, htons(static_cast<uint16_t>(~0xf201))},
              {{0x03, 0xf4, 0xf5, 0xf6, 0xf7}, htons(static_cast<uint16_t>(~0xf0eb))},
              {{0xff, 0xff}, 0},
              {{0xff, 0xff, 0x00, 0x01}, htons(0xfffe)},
              {{0x12}, htons(static_cast<uint16_t>(~0x1200))},  // an odd byte and a zero
              {{0xff, 0xff, 0xff, 0xff, 0x01}, htons(static_cast<uint16_t>(~0x0100))}};
  for (const auto& row : rows) {
    uint16_t words[8] = {};
    std::copy(row.bytes.begin(), row.bytes.end(), reinterpret_cast<uint8_t*>(words));
    EXPECT_EQ(MyUtils::in_cksum(words, static_cast<unsigned>(row.bytes.size())), row.expected);
  }
}

TEST(Checksum, OfDataWithItsChecksumIsZero) {
  for (size_t size = 2; size <= 64; size += 2) {
    uint16_t words[33] = {};
    auto* const bytes = reinterpret_cast<uint8_t*>(words);
    for (size_t i = 0; i < size; ++i) bytes[i] = static_cast<uint8_t>(i * 89 + size);
    words[size / 2] = MyUtils::in_cksum(words, static_cast<unsigned>(size));
    EXPECT_EQ(MyUtils::in_cksum(words, static_cast<unsigned>(size + 2)), 0) << size;
  }
}

// A network of two sockets: Ping reads what the test has written before, and sends what the test looks at.
int pingSocket = -1;
Bytes sent;
ssize_t sendResult = 0;
sockaddr_in sentTo;

class PingTest : public testing::Test {
 protected:
  void SetUp() override {
    previous = MyUtils::NetworkSeams;
    int pair[2];
    ASSERT_EQ(socketpair(AF_UNIX, SOCK_DGRAM, 0, pair), 0);
    peer = pair[0];
    pingSocket = pair[1];
    sendResult = 64;
    sent.clear();
    MyUtils::NetworkSeams.Socket = [](int domain, int type, int protocol) {
      EXPECT_EQ(domain, AF_INET);
      EXPECT_EQ(type, SOCK_RAW);
      EXPECT_EQ(protocol, 1);
      return pingSocket;
    };
    MyUtils::NetworkSeams.SendTo = [](int fd, const void* data, size_t length, int, const sockaddr* to, socklen_t) {
      EXPECT_EQ(fd, pingSocket);
      sent.assign(static_cast<const uint8_t*>(data), static_cast<const uint8_t*>(data) + length);
      std::memcpy(&sentTo, to, sizeof sentTo);
      return sendResult;
    };
  }
  void TearDown() override {
    MyUtils::NetworkSeams = previous;
    ::close(peer);
    EXPECT_EQ(fcntl(pingSocket, F_GETFD), -1) << "socket left open";
  }
  // An ICMP packet behind an IP header of 20 bytes.
  static Bytes packet(uint8_t type, uint16_t sequence, uint16_t identifier, size_t size) {
    Bytes bytes(size, 0);
    bytes[20] = type;
    bytes[24] = static_cast<uint8_t>(identifier >> 8);
    bytes[25] = static_cast<uint8_t>(identifier);
    bytes[26] = static_cast<uint8_t>(sequence >> 8);
    bytes[27] = static_cast<uint8_t>(sequence);
    return bytes;
  }
  // Puts one in the way of Ping.
  void reply(uint8_t type, uint16_t sequence, uint16_t identifier, size_t size = 20 + 64) {
    const Bytes bytes = packet(type, sequence, identifier, size);
    ASSERT_EQ(::write(peer, bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
  }
  static uint16_t own() { return static_cast<uint16_t>(getpid()); }

  MyUtils::TNetworkSeams previous;
  int peer = -1;
  int duration = -7;
};

TEST_F(PingTest, TheRequestIsAnEchoWithAValidChecksum) {
  reply(0, 12345, own());
  EXPECT_EQ(MyUtils::Ping("10.1.2.3", duration), MyUtils::PING_OK);
  EXPECT_GE(duration, 0);
  EXPECT_LT(duration, 1000);
  ASSERT_EQ(sent.size(), 64u);
  EXPECT_EQ(sent[0], 8);
  EXPECT_EQ(sent[1], 0);
  EXPECT_EQ(sent[4] << 8 | sent[5], own());
  EXPECT_EQ(sent[6] << 8 | sent[7], 12345);
  uint16_t words[32];
  std::memcpy(words, sent.data(), sizeof words);
  EXPECT_EQ(MyUtils::in_cksum(words, sizeof words), 0);  // over the checksum as well
  EXPECT_EQ(sentTo.sin_family, AF_INET);
  EXPECT_EQ(sentTo.sin_addr.s_addr, inet_addr("10.1.2.3"));
}

TEST_F(PingTest, TheDurationIsRoundedToMilliseconds) {
  const struct {
    timeval start, end;
    int milliseconds;
  } rows[] = {{{100, 0}, {100, 0}, 0},
              {{100, 0}, {100, 499}, 0},
              {{100, 0}, {100, 500}, 1},
              {{100, 999600}, {101, 100}, 1},
              {{100, 700000}, {103, 200400}, 2500},
              {{100, 0}, {1100, 0}, 1000000},
              {{100, 0}, {99, 0}, -1000},  // a clock that was set meanwhile
              {{0, 0}, {1L << 40, 0}, INT_MAX},
              {{1L << 40, 0}, {0, 0}, INT_MIN}};
  for (const auto& row : rows) {
    const int again = dup(pingSocket);  // each ping closes its own
    reply(0, 12345, own());
    readings = {row.start, row.end};
    EXPECT_EQ(MyUtils::Ping("10.1.2.3", duration), MyUtils::PING_OK);
    EXPECT_TRUE(readings.empty());
    EXPECT_EQ(duration, row.milliseconds);
    pingSocket = again;
  }
  ::close(pingSocket);
}

TEST_F(PingTest, ForeignPacketsAreSkipped) {
  reply(8, 12345, own());                             // a request
  reply(3, 12345, own());                             // unreachable
  reply(0, 12346, own());                             // another sequence
  reply(0, 12345, static_cast<uint16_t>(own() + 1));  // another process
  reply(0, 12345, own());
  EXPECT_EQ(MyUtils::Ping("10.1.2.3", duration), MyUtils::PING_OK);
}

TEST_F(PingTest, RepliesToAnotherProcessDoNotProlongTheWait) {
  std::atomic<bool> over{false};
  std::thread others([&] {  // five seconds of them at most, which a wait that begins anew each time would take
    const Bytes bytes = packet(0, 12345, static_cast<uint16_t>(own() + 1), 84);
    for (int i = 0; i < 25 && !over; ++i) {
      (void)::send(peer, bytes.data(), bytes.size(), MSG_NOSIGNAL);  // nobody reads any more in the end
      std::this_thread::sleep_for(std::chrono::milliseconds(200));
    }
  });
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(MyUtils::Ping("10.1.2.3", duration), MyUtils::PING_TIMEOUT);
  const auto waited = std::chrono::steady_clock::now() - start;
  over = true;
  others.join();
  EXPECT_GE(waited, std::chrono::milliseconds(900));
  EXPECT_LT(waited, std::chrono::milliseconds(3000));
  EXPECT_EQ(duration, -7);
}

TEST_F(PingTest, ShortPacketsAreAnError) {
  ASSERT_EQ(::write(peer, "123456789012345678901234567", 27), 27);
  EXPECT_EQ(MyUtils::Ping("10.1.2.3", duration), MyUtils::PING_ERROR);
}

TEST_F(PingTest, TwoHeadersAreEnough) {
  reply(0, 12345, own(), 28);
  EXPECT_EQ(MyUtils::Ping("10.1.2.3", duration), MyUtils::PING_OK);
}

TEST_F(PingTest, ABrokenWaitIsAnError) {
  MyUtils::NetworkSeams.SendTo = [](int fd, const void*, size_t, int, const sockaddr*, socklen_t) -> ssize_t {
    ::close(fd);
    return 64;
  };
  EXPECT_EQ(MyUtils::Ping("10.1.2.3", duration), MyUtils::PING_ERROR);
}

TEST_F(PingTest, AFailedReadCountsAsABadHost) {
  MyUtils::NetworkSeams.SendTo = [](int fd, const void*, size_t, int, const sockaddr*, socklen_t) -> ssize_t {
    const int directory = ::open("/", O_RDONLY);  // always readable for select, never a socket
    dup2(directory, fd);
    ::close(directory);
    return 64;
  };
  EXPECT_EQ(MyUtils::Ping("10.1.2.3", duration), MyUtils::PING_BAD_HOST);
}

TEST_F(PingTest, WhatIsNotSentIsLost) {
  sendResult = -1;
  EXPECT_EQ(MyUtils::Ping("10.1.2.3", duration), MyUtils::PING_PACKET_LOSS);
}

TEST_F(PingTest, WhatIsSentInPartIsLost) {
  sendResult = 63;
  EXPECT_EQ(MyUtils::Ping("10.1.2.3", duration), MyUtils::PING_PACKET_LOSS);
}

TEST_F(PingTest, NamesAreResolved) {
  reply(0, 12345, own());
  EXPECT_EQ(MyUtils::Ping("localhost", duration), MyUtils::PING_OK);
  EXPECT_EQ(sentTo.sin_addr.s_addr, inet_addr("127.0.0.1"));
}

TEST(Ping, AnUnknownHostIsABadHost) {
  int duration = 0;
  EXPECT_EQ(MyUtils::Ping("", duration), MyUtils::PING_BAD_HOST);
  EXPECT_EQ(MyUtils::Ping("no host.invalid", duration), MyUtils::PING_BAD_HOST);
}

TEST(Ping, LoopbackAnswersWhereRawSocketsAreAllowed) {
  const int probe = ::socket(AF_INET, SOCK_RAW, 1);
  const bool allowed = probe >= 0;
  if (allowed) ::close(probe);
  for (const char* target : {"127.0.0.1", "localhost"}) {
    int duration = -7;
    EXPECT_EQ(MyUtils::Ping(target, duration), allowed ? MyUtils::PING_OK : MyUtils::PING_ERROR) << target;
    EXPECT_EQ(duration >= 0 && duration < 1000, allowed) << target;
  }
}

TEST(Ping, WithoutTheRightToARawSocketItIsAnError) {
  const WithoutRight refused(CAP_NET_RAW);
  int duration = -7;
  EXPECT_EQ(MyUtils::Ping("127.0.0.1", duration), MyUtils::PING_ERROR);
  EXPECT_EQ(duration, -7);
}

}  // namespace
