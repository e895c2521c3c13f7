// Classifies a network interface.
#pragma once

#include <cstdint>

namespace quillmoor {

struct NetworkInterface {
  unsigned flags = 0;  // IFF_...
  /// Has an IPv4 or IPv6 address that is not link-local.
  bool routableAddress = false;
};

/// The kind of network behind it. 0: none. 1: a local area network. 2: a wide area network.
std::uint32_t networkKind(const NetworkInterface& interface);

}  // namespace quillmoor
