#include <arpa/inet.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <net/if.h>
#include <netinet/ip_icmp.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstring>

#include "vendelo-sdl2/MyUtils.h"
#include "vendelo-sdl2/NetworkSeams.h"

namespace {

using Bytes = std::vector<uint8_t>;

// One interface of the machine that the tests play.
struct Interface {
  std::string name;
  std::string address;  // empty: the question fails
  bool hasMac = true;
};

std::vector<Interface> machine;
bool listFails = false;
int openSocket = -1;

int answerIoctl(int fd, unsigned long request, void* argument) {
  EXPECT_EQ(fd, openSocket);
  if (request == SIOCGIFCONF) {
    if (listFails) return -1;
    auto& conf = *static_cast<ifconf*>(argument);
    EXPECT_EQ(conf.ifc_len, 2560);
    conf.ifc_len = static_cast<int>(machine.size() * sizeof(ifreq));
    for (size_t i = 0; i < machine.size(); ++i) {
      conf.ifc_req[i] = {};
      std::strncpy(conf.ifc_req[i].ifr_name, machine[i].name.c_str(), IFNAMSIZ - 1);
    }
    return 0;
  }
  auto& question = *static_cast<ifreq*>(argument);
  for (size_t i = 0; i < machine.size(); ++i) {
    if (machine[i].name != question.ifr_name) continue;
    if (request == SIOCGIFADDR) {
      if (machine[i].address.empty()) return -1;
      sockaddr_in address{};
      address.sin_family = AF_INET;
      address.sin_addr.s_addr = inet_addr(machine[i].address.c_str());
      std::memcpy(&question.ifr_addr, &address, sizeof address);
      return 0;
    }
    if (request == SIOCGIFHWADDR && machine[i].hasMac) {
      const unsigned char mac[6] = {0x02, 0xab, 0, 0x0f, 0xff, static_cast<unsigned char>(i)};
      std::memcpy(question.ifr_hwaddr.sa_data, mac, sizeof mac);
      return 0;
    }
  }
  return -1;
}

int answerSocket(int domain, int type, int protocol) {
  EXPECT_EQ(domain, AF_INET);
  EXPECT_EQ(type, SOCK_DGRAM);
  EXPECT_EQ(protocol, 0);
  return openSocket = ::open("/dev/null", O_RDONLY);
}

// Plays a machine; every socket that was opened must be closed at the end of the call.
class InterfacesTest : public testing::Test {
 protected:
  void SetUp() override {
    previous = MyUtils::NetworkSeams;
    MyUtils::NetworkSeams.Socket = answerSocket;
    MyUtils::NetworkSeams.Ioctl = answerIoctl;
    machine = {{"lo", "127.0.0.1"}, {"wlan0", "10.0.0.7"}};
    listFails = false;
    openSocket = -1;
  }
  void TearDown() override {
    if (openSocket >= 0) {
      EXPECT_EQ(fcntl(openSocket, F_GETFD), -1) << "socket left open";
    }
    MyUtils::NetworkSeams = previous;
  }
  std::string first(const std::string& defName) {
    mac = "untouched";
    return MyUtils::GetFirstMacAddress(mac, hex, defName);
  }

  MyUtils::TNetworkSeams previous;
  std::string mac;
  unsigned char hex[6] = {};
};

TEST_F(InterfacesTest, MacOfAName) {
  char text[18] = "";
  EXPECT_EQ(MyUtils::GetMacAddress("wlan0", text, hex), 0);
  EXPECT_STREQ(text, "02:ab:00:0f:ff:01");
  EXPECT_EQ(Bytes(hex, hex + 6), (Bytes{0x02, 0xab, 0, 0x0f, 0xff, 1}));
  EXPECT_EQ(MyUtils::GetMacAddress("lo", text, nullptr), 0);
  EXPECT_STREQ(text, "02:ab:00:0f:ff:00");
  EXPECT_EQ(MyUtils::GetMacAddress("lo", nullptr, hex), 0);
  EXPECT_EQ(hex[5], 0);
}

TEST_F(InterfacesTest, MacErrors) {
  char text[18] = "";
  EXPECT_EQ(MyUtils::GetMacAddress("eth9", text, hex), 1);
  EXPECT_EQ(MyUtils::GetMacAddress("wlan", text, hex), 1);  // the whole name counts
  EXPECT_EQ(MyUtils::GetMacAddress(nullptr, text, hex), -1);
  EXPECT_EQ(MyUtils::GetMacAddress("lo", nullptr, nullptr), -1);
  machine[1].hasMac = false;
  EXPECT_EQ(MyUtils::GetMacAddress("wlan0", text, hex), -1);
  listFails = true;
  EXPECT_EQ(MyUtils::GetMacAddress("lo", text, hex), -1);
  openSocket = -1;
  MyUtils::NetworkSeams.Socket = [](int, int, int) { return -1; };
  EXPECT_EQ(MyUtils::GetMacAddress("lo", text, hex), -1);
}

TEST_F(InterfacesTest, NamesAreComparedInSixteenCharacters) {
  machine.push_back({"enx0123456789ab", "10.0.0.8"});  // fifteen: the longest that there is
  char text[18] = "";
  EXPECT_EQ(MyUtils::GetMacAddress("enx0123456789ab", text, hex), 0);
  EXPECT_EQ(MyUtils::GetMacAddress("enx0123456789abc", text, hex), 1);
}

TEST_F(InterfacesTest, MacOfAnAddress) {
  char name[IFNAMSIZ] = "";
  char text[18] = "";
  EXPECT_EQ(MyUtils::GetMacAddressForIP("10.0.0.7", name, text, hex), 0);
  EXPECT_STREQ(name, "wlan0");
  EXPECT_STREQ(text, "02:ab:00:0f:ff:01");
  EXPECT_EQ(hex[5], 1);
  EXPECT_EQ(MyUtils::GetMacAddressForIP("10.0.0.9", name, text, hex), 1);
  EXPECT_EQ(MyUtils::GetMacAddressForIP(nullptr, name, text, hex), -1);
  EXPECT_EQ(MyUtils::GetMacAddressForIP("10.0.0.7", nullptr, text, hex), -1);
  EXPECT_EQ(MyUtils::GetMacAddressForIP("10.0.0.7", name, nullptr, nullptr), -1);
  machine[0].address.clear();  // one interface without an address ends the walk
  EXPECT_EQ(MyUtils::GetMacAddressForIP("10.0.0.7", name, text, hex), -1);
}

TEST_F(InterfacesTest, TheFirstMacIsThatOfTheNameGiven) {
  EXPECT_EQ(first("wlan0"), "wlan0");
  EXPECT_EQ(mac, "02:ab:00:0f:ff:01");
  EXPECT_EQ(hex[5], 1);
}

TEST_F(InterfacesTest, ElseThatOfTheServiceNetwork) {
  machine.push_back({"eth0", "10.0.0.8"});
  machine.push_back({"usb7", MyUtils::ServiceNetworkAddress});
  EXPECT_EQ(first(""), "usb7");
  EXPECT_EQ(mac, "02:ab:00:0f:ff:03");
  EXPECT_EQ(first("eth9"), "usb7");
}

TEST_F(InterfacesTest, ElseTheFirstOfTheList) {
  // From the last of the list to the first: each one added is preferred to those before it.
  const char* const order[] = {"eth7",    "eth6",   "eth5",   "eth4",   "eth3",   "eth2",   "enp12s0", "enp11s0",
                               "enp10s0", "enp9s0", "enp8s0", "enp7s0", "enp6s0", "enp5s0", "eno0",    "eno1",
                               "enp2s0",  "enp1s0", "enp4s0", "enp3s0", "eth1",   "eth0"};
  for (const char* name : order) {
    machine.push_back({name, "10.0.0.8"});
    EXPECT_EQ(first(""), name);
  }
  machine.back().hasMac = false;  // eth0 cannot be used
  EXPECT_EQ(first(""), "eth1");
}

TEST_F(InterfacesTest, WithoutAnyOfTheListResultAndOutputsAreEmpty) {
  EXPECT_EQ(first(""), "");
  EXPECT_EQ(mac, "");
  EXPECT_EQ(Bytes(hex, hex + 6), Bytes(6, 0));
}

TEST_F(InterfacesTest, AddressOfAnAdapter) {
  std::string address;
  EXPECT_EQ(MyUtils::GetIPAddress("wlan0", address), 0);
  EXPECT_EQ(address, "10.0.0.7");
  EXPECT_EQ(MyUtils::GetIPAddress("eth9", address), 1);
  EXPECT_EQ(MyUtils::GetIPAddress("", address), -1);  // none of the list is there
  EXPECT_EQ(address, "10.0.0.7");
  machine.push_back({"eno1", "10.0.0.8"});
  EXPECT_EQ(MyUtils::GetIPAddress("", address), 0);
  EXPECT_EQ(address, "10.0.0.8");
  machine[1].address.clear();
  EXPECT_EQ(MyUtils::GetIPAddress("wlan0", address), -1);
}

TEST_F(InterfacesTest, AllAddressesThatThereAre) {
  machine = {{"lo", "127.0.0.1"}, {"eth0", ""}, {"eth1", "10.0.0.8"}};
  EXPECT_EQ(MyUtils::GetAllIPAddresses(), (std::vector<std::string>{"127.0.0.1", "10.0.0.8"}));
  listFails = true;
  EXPECT_TRUE(MyUtils::GetAllIPAddresses().empty());
}

TEST(RealInterfaces, LoopbackIsFound) {
  const auto addresses = MyUtils::GetAllIPAddresses();
  EXPECT_NE(std::find(addresses.begin(), addresses.end(), "127.0.0.1"), addresses.end());
  char text[18] = "";
  EXPECT_EQ(MyUtils::GetMacAddress("lo", text, nullptr), 0);
  EXPECT_STREQ(text, "00:00:00:00:00:00");
  std::string address;
  EXPECT_EQ(MyUtils::GetIPAddress("lo", address), 0);
  EXPECT_EQ(address, "127.0.0.1");
}

TEST(Ipv4Parse, AddressesAndErrors) {
  const struct {
    const char* text;
    int result;
    Bytes data;
  } rows[] = {{"1.2.3.4", 0, {1, 2, 3, 4}},
              {"255.255.255.255", 0, {255, 255, 255, 255}},
              {"0.0.0.0", 0, {0, 0, 0, 0}},
              {"010.001.000.09", 0, {10, 1, 0, 9}},
              {"1.2.3.256", -1, {}},
              {"999.2.3.4", -1, {}},
              {"1.2.3.99999999999999999999", -1, {}},
              {".1.2.3", -2, {}},
              {"1..2.3", -2, {}},
              {"1.2.3..", -2, {}},
              {"1.2.3.4.", -3, {}},
              {"1.2.3.4.5", -3, {}},
              {"1.2.3.x", -4, {}},
              {"1.2.3.4 ", -4, {}},
              {"-1.2.3.4", -4, {}},
              {"1.2.3.", -5, {}},
              {"1.", -5, {}},
              {"", -5, {}},
              {"1.2.3", -6, {}},
              {"7", -6, {}}};
  for (const auto& row : rows) {
    MyUtils::ipv4_type result{{9, 9, 9, 9}};
    const auto* bytes = reinterpret_cast<const uint8_t*>(row.text);
    EXPECT_EQ(MyUtils::ipv4_parse(bytes, static_cast<uint8_t>(std::strlen(row.text)), &result), row.result)
      << row.text;
    if (row.result == 0) {
      EXPECT_EQ(Bytes(result.data, result.data + 4), row.data) << row.text;
    }
  }
  MyUtils::ipv4_type result{};
  EXPECT_EQ(MyUtils::ipv4_parse(reinterpret_cast<const uint8_t*>("1.2.3.45"), 7, &result), 0);
  EXPECT_EQ(result.data[3], 4);  // exactly the bytes given
  EXPECT_EQ(MyUtils::ipv4_parse(nullptr, 7, &result), -5);
}

TEST(Checksum, FollowsRfc1071) {
  const struct {
    Bytes bytes;
    uint16_t expected;  // as the bytes of the word lie in memory
  } rows[] = {{{}, 0xffff},
              {{0x00, 0x01, 0xf2, 0x03, 0xf4, 0xf5, 0xf6, 0xf7}, htons(0x220d)},  // the RFC's example
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
  // Puts an ICMP packet behind an IP header of 20 bytes in the way of Ping.
  void reply(uint8_t type, uint16_t sequence, uint16_t identifier) {
    Bytes packet(20 + 64, 0);
    packet[20] = type;
    packet[24] = static_cast<uint8_t>(identifier >> 8);
    packet[25] = static_cast<uint8_t>(identifier);
    packet[26] = static_cast<uint8_t>(sequence >> 8);
    packet[27] = static_cast<uint8_t>(sequence);
    ASSERT_EQ(::write(peer, packet.data(), packet.size()), static_cast<ssize_t>(packet.size()));
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

TEST_F(PingTest, ForeignPacketsAreSkipped) {
  reply(8, 12345, own());                             // a request
  reply(3, 12345, own());                             // unreachable
  reply(0, 12346, own());                             // another sequence
  reply(0, 12345, static_cast<uint16_t>(own() + 1));  // another process
  reply(0, 12345, own());
  EXPECT_EQ(MyUtils::Ping("10.1.2.3", duration), MyUtils::PING_OK);
}

TEST_F(PingTest, RepliesToAnotherProcessDoNotEndTheWait) {
  reply(0, 12345, static_cast<uint16_t>(own() + 1));
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(MyUtils::Ping("10.1.2.3", duration), MyUtils::PING_TIMEOUT);
  const auto waited = std::chrono::steady_clock::now() - start;
  EXPECT_GE(waited, std::chrono::milliseconds(900));
  EXPECT_EQ(duration, -7);
}

TEST_F(PingTest, ShortPacketsAreAnError) {
  ASSERT_EQ(::write(peer, "123456789012345678901234567", 27), 27);
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
  int duration = -7;
  EXPECT_EQ(MyUtils::Ping("127.0.0.1", duration), allowed ? MyUtils::PING_OK : MyUtils::PING_ERROR);
  EXPECT_EQ(duration >= 0, allowed);
}

}  // namespace
