#include "platform/network/NetworkAlive.h"

#include <arpa/inet.h>
#include <ifaddrs.h>
#include <net/if.h>
#include <netinet/in.h>

#include <memory>

#include "platform/network/posix/NetworkInterfaces.h"

namespace quillmoor {
namespace {

bool isRoutable(const sockaddr& address) {
  if (address.sa_family == AF_INET) {
    const auto host = ntohl(reinterpret_cast<const sockaddr_in&>(address).sin_addr.s_addr);
    return (host >> 16) != 0xA9FE;  // 169.254.x.x: self-assigned without DHCP
  }
  if (address.sa_family != AF_INET6) return false;
  const auto& ipv6 = reinterpret_cast<const sockaddr_in6&>(address).sin6_addr;
  // Every interface has a link-local address, connected or not.
  return !IN6_IS_ADDR_LINKLOCAL(&ipv6);
}

}  // namespace

std::uint32_t networkKind(const NetworkInterface& interface) {
  constexpr unsigned kWorking = IFF_UP | IFF_RUNNING;
  if ((interface.flags & kWorking) != kWorking || (interface.flags & IFF_LOOPBACK) != 0) return 0;
  if (!interface.routableAddress) return 0;
  return (interface.flags & IFF_POINTOPOINT) != 0 ? 2 : 1;
}

bool IsNetworkAlive(std::uint32_t& kinds) {
  ifaddrs* list = nullptr;
  if (::getifaddrs(&list) != 0) return false;
  const std::unique_ptr<ifaddrs, decltype(&::freeifaddrs)> owner(list, ::freeifaddrs);
  std::uint32_t found = 0;
  for (const ifaddrs* entry = list; entry; entry = entry->ifa_next) {
    const bool routable = entry->ifa_addr && isRoutable(*entry->ifa_addr);
    found |= networkKind({entry->ifa_flags, routable});
  }
  if (found == 0) return false;
  kinds = found;
  return true;
}

}  // namespace quillmoor
