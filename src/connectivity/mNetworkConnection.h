// Is there a network?
#pragma once

#include <cstdint>
#include <functional>

namespace quillmoor {

/// Kinds of network that are up, as bits.
inline constexpr std::uint32_t kNetworkLan = 1;
inline constexpr std::uint32_t kNetworkWan = 2;
inline constexpr std::uint32_t kNetworkOnlineService = 4;

/// Tells whether some network is up and of which kinds; platform/network/NetworkAlive.h has the machine's
/// own.
using NetworkSource = std::function<bool(std::uint32_t& kinds)>;

/// Some network is up, of whatever kind.
bool IsNetworkAvailable(const NetworkSource& source);

/// A local area network is up and nothing else: a machine that is on a LAN and a WAN at once counts as not
/// connected here, on purpose.
bool IsLanConnected(const NetworkSource& source);

}  // namespace quillmoor
