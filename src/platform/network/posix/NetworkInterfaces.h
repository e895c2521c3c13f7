// What one network interface says about the networks this machine is on.
#pragma once

#include <cstdint>

namespace quillmoor {

struct NetworkInterface {
  unsigned flags = 0;  // IFF_...
  /// An IPv4 address, or an IPv6 address with which one gets further than the next machine.
  bool routableAddress = false;
};

/// 0: none. 1: a local area network. 2: a wide area network.
std::uint32_t networkKind(const NetworkInterface& interface);

}  // namespace quillmoor
