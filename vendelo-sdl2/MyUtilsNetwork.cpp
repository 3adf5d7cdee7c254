#include <arpa/inet.h>
#include <net/if.h>
#include <netinet/in.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>

#include "vendelo-sdl2/MyUtils.h"
#include "vendelo-sdl2/NetworkSeams.h"

namespace MyUtils {

const char* const ServiceNetworkAddress = "192.168.100.1";

namespace {

constexpr size_t kListBytes = 2560;  // 64 interfaces

constexpr const char* kMacInterfaces[] = {
  "eth0",   "eth1",   "enp3s0",  "enp4s0",  "enp1s0",  "enp2s0", "eno1", "eno0", "enp5s0", "enp6s0", "enp7s0",
  "enp8s0", "enp9s0", "enp10s0", "enp11s0", "enp12s0", "eth2",   "eth3", "eth4", "eth5",   "eth6",   "eth7"};

// The interfaces of the machine, and questions about them on one socket, which closes with the object.
class TInterfaces {
 public:
  TInterfaces() : mSocket(NetworkSeams.Socket(AF_INET, SOCK_DGRAM, 0)) {
    if (mSocket < 0) return;
    ifreq list[kListBytes / sizeof(ifreq)];
    ifconf conf{};
    conf.ifc_len = sizeof list;
    conf.ifc_req = list;
    if (NetworkSeams.Ioctl(mSocket, SIOCGIFCONF, &conf) < 0) return;
    mNames.assign(list, list + static_cast<size_t>(conf.ifc_len) / sizeof(ifreq));
    mGood = true;
  }
  ~TInterfaces() {
    if (mSocket >= 0) ::close(mSocket);
  }
  TInterfaces(const TInterfaces&) = delete;
  TInterfaces& operator=(const TInterfaces&) = delete;

  bool good() const { return mGood; }
  const std::vector<ifreq>& all() const { return mNames; }

  // The entry of that name, compared with at most 16 characters; null if there is none.
  const ifreq* named(const char* name) const {
    for (const ifreq& entry : mNames)
      if (std::strncmp(entry.ifr_name, name, IFNAMSIZ) == 0) return &entry;
    return nullptr;
  }

  // The address as text, as inet_ntoa writes it but without its static buffer; false when the question fails.
  bool address(const ifreq& entry, std::string& text) const {
    ifreq question = entry;
    if (NetworkSeams.Ioctl(mSocket, SIOCGIFADDR, &question) < 0) return false;
    sockaddr_in address{};
    std::memcpy(&address, &question.ifr_addr, sizeof address);
    char buffer[INET_ADDRSTRLEN] = "";
    inet_ntop(AF_INET, &address.sin_addr, buffer, sizeof buffer);
    text = buffer;
    return true;
  }

  // The hardware address to the outputs that are given; 0 or -1.
  int mac(const ifreq& entry, char* pStrMac, unsigned char* pHexMac) const {
    ifreq question = entry;
    if (NetworkSeams.Ioctl(mSocket, SIOCGIFHWADDR, &question) < 0) return -1;
    unsigned char hex[6];
    std::memcpy(hex, question.ifr_hwaddr.sa_data, sizeof hex);
    if (pStrMac)
      std::sprintf(pStrMac, "%02x:%02x:%02x:%02x:%02x:%02x", hex[0], hex[1], hex[2], hex[3], hex[4], hex[5]);
    if (pHexMac) std::memcpy(pHexMac, hex, sizeof hex);
    return 0;
  }

 private:
  int mSocket;
  bool mGood = false;
  std::vector<ifreq> mNames;
};

}  // namespace

int GetMacAddress(const char* IfName, char* pStrMac, unsigned char* pHexMac) {
  if (!IfName || (!pStrMac && !pHexMac)) return -1;
  const TInterfaces interfaces;
  if (!interfaces.good()) return -1;
  const ifreq* const entry = interfaces.named(IfName);
  return entry ? interfaces.mac(*entry, pStrMac, pHexMac) : 1;
}

int GetMacAddressForIP(const char* IPAddress, char* IfName, char* pStrMac, unsigned char* pHexMac) {
  if (!IPAddress || !IfName || (!pStrMac && !pHexMac)) return -1;
  const TInterfaces interfaces;
  if (!interfaces.good()) return -1;
  for (const ifreq& entry : interfaces.all()) {
    std::string address;
    if (!interfaces.address(entry, address)) return -1;
    if (address != IPAddress) continue;
    if (interfaces.mac(entry, pStrMac, pHexMac) != 0) return -1;
    std::memcpy(IfName, entry.ifr_name, IFNAMSIZ);
    IfName[IFNAMSIZ - 1] = '\0';
    return 0;
  }
  return 1;
}

std::string GetFirstMacAddress(std::string& MACAddress, unsigned char* pHexMac, std::string defName) {
  char mac[18] = "";
  std::string chosen;
  char found[IFNAMSIZ] = "";
  if (!defName.empty() && GetMacAddress(defName.c_str(), mac, pHexMac) == 0) {
    chosen = defName;
  } else if (GetMacAddressForIP(ServiceNetworkAddress, found, mac, pHexMac) == 0) {
    chosen = found;
  } else {
    for (const char* name : kMacInterfaces) {
      if (GetMacAddress(name, mac, pHexMac) != 0) continue;
      chosen = name;
      break;
    }
  }
  MACAddress = mac;
  return chosen;
}

int GetIPAddress(std::string adapter, std::string& IPAddress) {
  if (adapter.empty()) {
    std::string mac;
    adapter = GetFirstMacAddress(mac, nullptr, "");
  }
  if (adapter.empty()) return -1;
  const TInterfaces interfaces;
  if (!interfaces.good()) return -1;
  const ifreq* const entry = interfaces.named(adapter.c_str());
  if (!entry) return 1;
  return interfaces.address(*entry, IPAddress) ? 0 : -1;
}

std::vector<std::string> GetAllIPAddresses() {
  std::vector<std::string> addresses;
  const TInterfaces interfaces;
  for (const ifreq& entry : interfaces.all()) {
    std::string address;
    if (interfaces.address(entry, address)) addresses.push_back(address);
  }
  return addresses;
}

int ipv4_parse(const uint8_t* string, uint8_t string_length, ipv4_type* result) {
  constexpr int kNumDots = 3;
  ipv4_type parsed{};
  int dots = 0;
  int octet = -1;  // below 0 while there is no digit
  for (uint8_t i = 0; string && i < string_length; ++i) {
    const uint8_t c = string[i];
    if (c >= '0' && c <= '9') {
      octet = (octet < 0 ? 0 : octet * 10) + (c - '0');
      if (octet > 255) return -1;
      parsed.data[dots] = static_cast<uint8_t>(octet);
    } else if (c == '.') {
      if (octet < 0) return -2;
      if (dots == kNumDots) return -3;
      ++dots;
      octet = -1;
    } else {
      return -4;
    }
  }
  if (octet < 0) return -5;
  if (dots < kNumDots) return -6;
  if (result) *result = parsed;
  return 0;
}

}  // namespace MyUtils
