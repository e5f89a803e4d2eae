#include "LumoRTCLocal/sdk/MachineAddress.h"

#include <arpa/inet.h>
#include <ifaddrs.h>
#include <net/if.h>
#include <netinet/in.h>

#include <array>
#include <cstring>
#include <memory>

namespace lumo {

std::string machineAddress() {
  std::string address = "127.0.0.1";
  ifaddrs* first = nullptr;
  if (getifaddrs(&first) != 0) return address;
  const std::unique_ptr<ifaddrs, void (*)(ifaddrs*)> list(first, &freeifaddrs);
  for (const ifaddrs* entry = first; entry; entry = entry->ifa_next) {
    if (!entry->ifa_addr || entry->ifa_addr->sa_family != AF_INET) continue;
    if ((entry->ifa_flags & IFF_LOOPBACK) != 0 || (entry->ifa_flags & IFF_UP) == 0) continue;
    sockaddr_in internet;
    std::memcpy(&internet, entry->ifa_addr, sizeof internet);
    std::array<char, INET_ADDRSTRLEN> text{};
    if (inet_ntop(AF_INET, &internet.sin_addr, text.data(), text.size())) return text.data();
  }
  return address;
}

}  // namespace lumo
