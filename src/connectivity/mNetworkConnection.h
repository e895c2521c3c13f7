// Tests whether a network is available.
#pragma once

#include <cstdint>
#include <functional>

namespace quillmoor {

/// Kinds of network that are up, as bits.
inline constexpr std::uint32_t kNetworkLan = 1;
inline constexpr std::uint32_t kNetworkWan = 2;
inline constexpr std::uint32_t kNetworkOnlineService = 4;

/// Returns whether any network is up, and of which kinds; for this machine see
/// platform/network/NetworkAlive.h.
using NetworkSource = std::function<bool(std::uint32_t& kinds)>;

/// Whether a network of any kind is up.
bool IsNetworkAvailable(const NetworkSource& source);

/// Whether a LAN and nothing else is up. Deliberate: with a LAN and a WAN this returns false.
bool IsLanConnected(const NetworkSource& source);

}  // namespace quillmoor
