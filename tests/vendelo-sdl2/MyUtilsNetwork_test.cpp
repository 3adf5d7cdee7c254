#include <arpa/inet.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <ifaddrs.h>
#include <net/if.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <thread>

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

// The kernel's own account of the machine: its interfaces, and their IPv4 addresses in the order of the list.
struct Kernel {
  Kernel() {
    ifaddrs* list = nullptr;
    EXPECT_EQ(getifaddrs(&list), 0);
    for (const ifaddrs* entry = list; entry; entry = entry->ifa_next) {
      if (!entry->ifa_addr || entry->ifa_addr->sa_family != AF_INET) continue;
      sockaddr_in address;
      std::memcpy(&address, entry->ifa_addr, sizeof address);
      char text[INET_ADDRSTRLEN] = "";
      inet_ntop(AF_INET, &address.sin_addr, text, sizeof text);
      addresses.emplace_back(entry->ifa_name, text);
    }
    freeifaddrs(list);
    for (const auto& entry : std::filesystem::directory_iterator("/sys/class/net"))
      if (entry.is_directory()) names.push_back(entry.path().filename());
  }
  // The first address of the interface; empty when it has none.
  std::string addressOf(const std::string& name) const {
    for (const auto& [itsName, address] : addresses)
      if (itsName == name) return address;
    return "";
  }
  // "" for an interface whose hardware address has not six bytes.
  static std::string macOf(const std::string& name) {
    const std::string file = "/sys/class/net/" + name.substr(0, name.find(':')) + "/address";
    std::ifstream stream(file);
    std::string mac;
    std::getline(stream, mac);
    return mac.size() == 17 ? mac : "";
  }

  std::vector<std::pair<std::string, std::string>> addresses;
  std::vector<std::string> names;
};

TEST(RealInterfaces, AllAddressesAreThoseOfTheKernel) {
  std::vector<std::string> expected;
  for (const auto& [name, address] : Kernel().addresses) expected.push_back(address);
  auto addresses = MyUtils::GetAllIPAddresses();
  EXPECT_NE(std::find(addresses.begin(), addresses.end(), "127.0.0.1"), addresses.end());
  std::sort(expected.begin(), expected.end());
  std::sort(addresses.begin(), addresses.end());
  EXPECT_EQ(addresses, expected);
}

TEST(RealInterfaces, AddressAndMacOfEachAreThoseOfTheKernel) {
  const Kernel kernel;
  int withAddress = 0;
  for (const auto& name : kernel.names) {
    const std::string expected = kernel.addressOf(name);
    std::string address = "untouched";
    char text[18] = "";
    unsigned char hex[6] = {};
    if (expected.empty()) {  // the list has only interfaces with an address
      EXPECT_EQ(MyUtils::GetIPAddress(name, address), 1) << name;
      EXPECT_EQ(address, "untouched");
      EXPECT_EQ(MyUtils::GetMacAddress(name.c_str(), text, hex), 1) << name;
      continue;
    }
    ++withAddress;
    EXPECT_EQ(MyUtils::GetIPAddress(name, address), 0) << name;
    EXPECT_EQ(address, expected) << name;
    if (Kernel::macOf(name).empty()) continue;
    EXPECT_EQ(MyUtils::GetMacAddress(name.c_str(), text, hex), 0) << name;
    EXPECT_EQ(text, Kernel::macOf(name)) << name;
    unsigned bytes[6] = {};
    ASSERT_EQ(std::sscanf(text, "%x:%x:%x:%x:%x:%x", bytes, bytes + 1, bytes + 2, bytes + 3, bytes + 4, bytes + 5),
              6);
    EXPECT_TRUE(std::equal(hex, hex + 6, bytes)) << name;
  }
  EXPECT_GE(withAddress, 1);  // loopback at least
}

TEST(RealInterfaces, AnAddressLeadsBackToItsInterface) {
  char name[IFNAMSIZ] = "";
  char text[18] = "";
  EXPECT_EQ(MyUtils::GetMacAddressForIP("127.0.0.1", name, text, nullptr), 0);
  EXPECT_STREQ(name, "lo");
  EXPECT_STREQ(text, "00:00:00:00:00:00");
  const Kernel kernel;
  const auto& [lastName, lastAddress] = kernel.addresses.back();
  EXPECT_EQ(MyUtils::GetMacAddressForIP(lastAddress.c_str(), name, text, nullptr), 0);
  EXPECT_EQ(name, lastName);
  EXPECT_EQ(text, Kernel::macOf(lastName));
  EXPECT_EQ(MyUtils::GetMacAddressForIP("0.0.0.0", name, text, nullptr), 1);
}

TEST(RealInterfaces, TheFirstMacIsThatOfTheInterfaceReturned) {
  std::string mac = "untouched";
  unsigned char hex[6] = {};
  EXPECT_EQ(MyUtils::GetFirstMacAddress(mac, hex, "lo"), "lo");
  EXPECT_EQ(mac, "00:00:00:00:00:00");
  const std::string chosen = MyUtils::GetFirstMacAddress(mac, hex, "no such name");
  EXPECT_EQ(mac, chosen.empty() ? "" : Kernel::macOf(chosen));
  std::string address = "untouched";
  EXPECT_EQ(MyUtils::GetIPAddress("", address), chosen.empty() ? -1 : 0);
  EXPECT_EQ(address, chosen.empty() ? "untouched" : Kernel().addressOf(chosen));
}

TEST(RealInterfaces, ScansFromManyThreadsLeaveNoSocketOpen) {
  const auto expected = MyUtils::GetAllIPAddresses();
  const int before = ::open("/dev/null", O_RDONLY);
  ::close(before);
  std::vector<std::thread> threads;
  std::atomic<int> wrong{0};
  for (int t = 0; t < 4; ++t)
    threads.emplace_back([&] {
      for (int i = 0; i < 100; ++i) {
        char text[18] = "";
        wrong += MyUtils::GetAllIPAddresses() != expected;
        wrong += MyUtils::GetMacAddress("lo", text, nullptr) != 0;
        wrong += MyUtils::GetMacAddress("no such name", text, nullptr) != 1;
      }
    });
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(wrong, 0);
  const int after = ::open("/dev/null", O_RDONLY);
  ::close(after);
  EXPECT_EQ(after, before);
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

}  // namespace
